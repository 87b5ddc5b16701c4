"""Streams that the command line tool made, and must not change."""

import numpy
import pytest
import tesk
from conftest import GOLDEN

TYPES = {"g8": "uint8", "g16": "<u2", "rgb": "uint8"}


def restored_images():
    """Returns: the names of the images that their streams restore. A ditto mark repeats the value above it."""
    names, above = [], []
    for line in (GOLDEN / "MANIFEST.tsv").read_text().splitlines()[1:]:
        row = line.split("\t")
        above = [old if new == '"' else new for new, old in zip(row, above or row)]
        stream, mode, same = above[0], above[3], above[7]
        if stream.endswith(".c.tk") and mode == "d" and same == "exact":
            names.append(stream.removesuffix(".c.tk"))
    return [name for name in names if (GOLDEN / f"{name}.raw").exists()]


def raw_image(name):
    kind, _, sides = name.split("_")
    width, height = map(int, sides.split("x"))
    shape = (height, width, 3) if kind == "rgb" else (height, width)
    return numpy.fromfile(GOLDEN / f"{name}.raw", TYPES[kind]).reshape(shape)


@pytest.mark.parametrize("name", restored_images())
def test_streams_are_those_of_the_tool(name):
    stream = (GOLDEN / f"{name}.c.tk").read_bytes()
    image = raw_image(name)
    info = tesk.probe(stream)
    assert (info.shape, info.dtype) == (image.shape, image.dtype)
    numpy.testing.assert_array_equal(tesk.decode(stream), image)
    assert tesk.encode(image, bits=info.bits) == stream


def test_images_of_all_types_are_there():
    assert {name.split("_")[0] for name in restored_images()} == set(TYPES)
