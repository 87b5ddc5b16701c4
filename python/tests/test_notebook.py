"""What streams and arrays show in a notebook."""

import base64
import io
import re
import sys
import tracemalloc

import numpy
import pytest
import tesk
from conftest import picture
from PIL import Image
from tesk import notebook


def shown_picture(page):
    data = re.search(r"src='data:image/png;base64,([^']+)'", page)
    return numpy.asarray(Image.open(io.BytesIO(base64.b64decode(data[1])))) if data else None


def test_an_info_shows_numbers_and_a_picture(image):
    stream = tesk.encode(image)
    page = tesk.probe(stream)._repr_html_()
    assert str(image.shape) in page and image.dtype.name in page and f"{len(stream):,}" in page
    numpy.testing.assert_array_equal(shown_picture(page), tesk.thumbnail(stream, 192))


def test_an_info_of_a_prefix_shows_what_has_come():
    stream = tesk.encode(picture(300, 300))
    assert shown_picture(tesk.probe(stream[:2000])._repr_html_()).shape == (192, 192)
    assert shown_picture(tesk.probe(stream[:16])._repr_html_()) is not None


def test_an_info_without_its_bytes_shows_words():
    stream = bytearray(tesk.encode(picture(30, 30)))
    info = tesk.probe(stream)
    stream.clear()
    page = info._repr_html_()
    assert "(30, 30)" in page and shown_picture(page) is None


def test_an_info_without_pixels_shows_words():
    page = tesk.probe(tesk.encode(numpy.zeros((0, 5), "u1")))._repr_html_()
    assert "(0, 5)" in page and "bits per sample" in page and shown_picture(page) is None


def test_words_are_no_html():
    assert "<td style='text-align:left'>&lt;b&gt;</td>" in notebook._as_html([("name", "<b>")], None)


@pytest.mark.parametrize("array", [picture(300, 200), picture(30, 20, "u1", 8), picture(300, 200, "u1", 8, colour=True)])
def test_arrays_show_numbers_and_a_picture(array):
    page = notebook.array_as_html(array)
    shown = shown_picture(page)
    assert f"{array.min()} to {array.max()}" in page and max(shown.shape) <= 192
    assert shown.std() > 10


@pytest.mark.parametrize("array", [
    numpy.zeros(5, "u1"), numpy.zeros((4, 4)), numpy.zeros((4, 4, 4), "u1"), numpy.zeros((0, 4), "u1"),
    numpy.zeros((4, 4, 3), "u2"), numpy.zeros((4, 4), "i2"), numpy.ma.masked_array(picture(30, 20), mask=True),
])
def test_other_arrays_keep_their_words(array):
    assert notebook.array_as_html(array) is None


def test_flat_arrays_and_those_with_a_side_of_one_are_shown():
    for array in (numpy.full((9, 9), 700, "u2"), numpy.zeros((1, 9), "u2"), numpy.zeros((9, 1), "u1")):
        assert shown_picture(notebook.array_as_html(array)) is not None


def test_without_pillow_there_are_words(monkeypatch):
    monkeypatch.setitem(sys.modules, "PIL", None)
    page = notebook.array_as_html(picture(30, 20))
    assert "(30, 20)" in page and "<img" not in page


class Formatter(dict):
    def for_type(self, kind, function):
        self[kind] = function


class Shell:
    def __init__(self):
        self.display_formatter = type("Display", (), {"formatters": {"text/html": Formatter()}})()


def test_the_extension_registers_arrays():
    shell = Shell()
    tesk.load_ipython_extension(shell)
    formatter = shell.display_formatter.formatters["text/html"]
    assert formatter[numpy.ndarray](picture(30, 20)).startswith("<div")


def test_large_arrays_take_little_memory():
    array = picture(3000, 3000)
    tracemalloc.start()
    notebook.array_as_html(array)
    _, peak = tracemalloc.get_traced_memory()
    tracemalloc.stop()
    assert peak < array.nbytes
