"""Chunks of zarr and HDF5 as pictures: both store the same streams.

Axes of length 1 do not count. A last axis of 3 with uint8 is colour. All axes but the last (two, with colour) are
stacked: a chunk of (8, 512, 512) is a picture of 4096 rows. Signed samples have their sign bit flipped."""

from __future__ import annotations

from typing import Any

import numpy

from ._coding import decode
from ._info import measure
from ._native import Array, Buffer, Error, bytes_view
from ._tesk import lib

_SIGN = {1: numpy.uint8(0x80), 2: numpy.uint16(0x8000)}


def picture_shape(shape: tuple[int, ...], dtype: numpy.dtype[Any]) -> tuple[int, ...]:
    """Returns: the shape of the picture of a chunk. Raises: TypeError, ValueError where it has none."""
    if dtype.byteorder == ">":
        raise TypeError(f"a chunk of {dtype.str}: store big-endian samples as little-endian ones")
    sides = [length for length in shape if length != 1]
    colours = [3] if len(sides) > 2 and shape[-1] == 3 and dtype == numpy.uint8 else []
    if colours:
        sides.pop()
    if len(sides) < 2:
        raise ValueError(f"a chunk of shape {shape} has no two sides above 1: no stream restores that")
    rows = int(numpy.prod(sides[:-1], dtype=object))
    return (rows, sides[-1], *colours)


def is_signed(dtype: numpy.dtype[Any]) -> bool:
    return dtype.kind == "i" and dtype.itemsize <= 2


def as_picture(chunk: Array) -> Array:
    """Returns: the picture of a chunk of any integers; encode looks at their type."""
    picture = chunk.reshape(picture_shape(chunk.shape, chunk.dtype))
    if not is_signed(chunk.dtype):
        return picture
    unsigned: Array = picture.view(f"u{chunk.itemsize}") ^ _SIGN[chunk.itemsize]
    return unsigned


def samples_of(stream: Buffer, signed: bool, max_pixels: int) -> Array:
    """Returns: the samples of a chunk, flat. Raises: Error unless it is a complete stream and nothing else."""
    view = bytes_view(stream)
    if measure(view) != (len(view), True):
        raise Error("the chunk is not a complete stream and nothing else", lib.TESK_CUT)
    samples = decode(view, max_pixels=max_pixels).reshape(-1)
    if not signed:
        return samples
    samples ^= _SIGN[samples.itemsize]
    return samples.view(f"i{samples.itemsize}")
