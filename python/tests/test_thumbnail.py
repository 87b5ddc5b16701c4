"""tesk.thumbnail."""

import os
import subprocess

import numpy
import pytest
import tesk
from conftest import picture


@pytest.mark.parametrize("height, width, side, shape", [
    (100, 200, 50, (25, 50)),
    (200, 100, 50, (50, 25)),
    (1000, 7, 100, (100, 1)),
    (50, 40, 64, (50, 40)),
    (333, 333, 332, (332, 332)),
    (64, 64, 1, (1, 1)),
])
def test_the_longer_side_is_the_one_asked_for(height, width, side, shape):
    small = tesk.thumbnail(tesk.encode(picture(height, width)), side)
    assert (small.shape, small.dtype) == (shape, numpy.uint8)
    colour = tesk.thumbnail(tesk.encode(picture(height, width, "uint8", 8, colour=True)), side)
    assert (colour.shape, colour.dtype) == ((*shape, 3), numpy.uint8)


def test_samples_are_scaled_by_their_bits():
    image = picture(200, 200, bits=10)
    bright = tesk.thumbnail(tesk.encode(image, bits=10), 50).mean()
    dark = tesk.thumbnail(tesk.encode(image, bits=14), 50).mean()
    assert abs(bright - image.mean() / 4) < 1 and abs(dark - image.mean() / 64) < 1


def test_it_looks_like_the_average():
    image = picture(256, 256, "uint8", 8)
    averages = image.reshape(32, 8, 32, 8).mean(axis=(1, 3))
    assert numpy.abs(tesk.thumbnail(tesk.encode(image), 32) - averages).mean() < 4


def test_a_prefix_has_one_too():
    stream = tesk.encode(picture(300, 300))
    small = tesk.thumbnail(stream[: len(stream) // 20], 64)
    assert numpy.abs(small.astype(int) - tesk.thumbnail(stream, 64)).mean() < 4


def test_an_image_without_pixels_has_none():
    assert tesk.thumbnail(tesk.encode(numpy.zeros((0, 9), "u1")), 5).size == 0


def test_what_cannot_be_made_is_refused():
    stream = tesk.encode(picture(100, 100))
    with pytest.raises(ValueError, match="side is 0"):
        tesk.thumbnail(stream, 0)
    with pytest.raises(tesk.Error, match="max_pixels is 10"):
        tesk.thumbnail(stream, 50, max_pixels=10)


@pytest.mark.skipif("TESK_TOOLS" not in os.environ, reason="TESK_TOOLS names no folder with the programs")
@pytest.mark.parametrize("height, width", [(130, 301), (40, 30), (601, 77)])
def test_it_is_the_picture_of_the_program(tmp_path, height, width):
    for name, source in {"gray": picture(height, width), "colour": picture(height, width, "u1", 8, colour=True)}.items():
        path = tmp_path / f"{name}.tk"
        path.write_bytes(tesk.encode(source))
        convert = [f"{os.environ['TESK_TOOLS']}/tesk-convert", "-q", "-f", "--thumbnail", "64", path]
        small = tmp_path / ("a.ppm" if name == "colour" else "a.pgm")
        subprocess.run([*convert, small], check=True)
        pixels = small.read_bytes()
        own = tesk.thumbnail(path.read_bytes(), 64)
        assert pixels.endswith(own.tobytes()) and len(pixels) < own.size + 20


@pytest.mark.skipif("TESK_TOOLS" not in os.environ, reason="TESK_TOOLS names no folder with the programs")
@pytest.mark.parametrize("dtype", ["u1", "u2"])
@pytest.mark.parametrize("bits", [0, 1, 4, 8, 9, 12, 16, 17, 32, 64, 255])
def test_any_declared_bits_give_the_picture_of_the_program(tmp_path, dtype, bits):
    stream = bytearray(tesk.encode(picture(20, 30, dtype, 8 if dtype == "u1" else 12)))
    stream[5] = bits
    (tmp_path / "a.tk").write_bytes(stream)
    convert = [f"{os.environ['TESK_TOOLS']}/tesk-convert", "-q", "--thumbnail", "64"]
    subprocess.run([*convert, tmp_path / "a.tk", tmp_path / "a.pgm"], check=True)
    assert (tmp_path / "a.pgm").read_bytes().endswith(tesk.thumbnail(stream, 64).tobytes())


def test_samples_above_their_declared_bits_are_not_darker():
    image = picture(40, 40, bits=11)
    image[0, 0] = 2047
    small = tesk.thumbnail(tesk.encode(image, bits=8), 40)
    numpy.testing.assert_array_equal(small, tesk.thumbnail(tesk.encode(image, bits=11), 40))
