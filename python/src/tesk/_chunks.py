"""Chunks of zarr and HDF5 as images: both store the same streams.

Axes of length 1 are dropped. uint8 with a last axis of 3 is RGB. The last axis (RGB: the last but one) has the
columns, and all axes before it become rows: a chunk of (8, 512, 512) is an image of 4096 rows. Signed samples are
stored with the sign bit flipped."""

from __future__ import annotations

from typing import Any

import numpy

from ._coding import decode
from ._info import measure
from ._native import Array, Buffer, Error, bytes_view
from ._tesk import lib

_SIGN = {1: numpy.uint8(0x80), 2: numpy.uint16(0x8000)}


def picture_shape(shape: tuple[int, ...], dtype: numpy.dtype[Any]) -> tuple[int, ...]:
    """Returns: the shape of a chunk as an image. Raises: TypeError, ValueError where it cannot be one."""
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
    """Returns: a chunk of any integers as an image. It does not check their type: encode does."""
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
