"""Thumbnails of 8 bits, as tesk-convert --thumbnail makes them."""

from __future__ import annotations

from typing import Any

import numpy

from ._coding import DEFAULT_MAX_PIXELS, decode_prefix, levels_of, reduced_geometry
from ._info import geometry_of_stream
from ._native import Array, Buffer


def thumbnail(stream: Buffer, side: int, *, max_pixels: int = DEFAULT_MAX_PIXELS) -> Array:
    """Decodes a stream or any prefix of it to an image whose sides have at most `side` pixels.

    Returns: uint8 of shape (h, w) or (h, w, 3). An image that is smaller keeps its size. Gray samples are scaled to 8
        bits from their declared bits, or from more if they use more.
    Raises: as tesk.decode, except that it accepts a cut stream. max_pixels limits the pixels that are decoded: up to
        4 * side * side, or more if the image is more than 64 times as long as side."""
    if side < 1:
        raise ValueError(f"side is {side}; a picture has at least a pixel")
    geometry = geometry_of_stream(stream)
    picture, _ = decode_prefix(stream, reduce=_halvings(geometry, side), max_pixels=max_pixels)
    if picture.dtype == numpy.uint8 and picture.ndim == 3:
        return averaged(picture, side)
    return averaged(as_bytes(picture, int(geometry.bits_per_pixel)), side)


def _halvings(geometry: Any, side: int) -> int:
    """Returns: as many as leave at least twice the pixels to a side: their average is sharper than a reduced picture."""
    for halvings in range(levels_of(geometry), 0, -1):
        reduced = reduced_geometry(geometry, halvings)
        if max(reduced.width, reduced.height) >= 2 * side:
            return halvings
    return 0


def settled_bits(picture: Array, declared: int) -> int:
    """Returns: those that the samples have, at least: a stream may declare any number."""
    most = 8 * picture.itemsize
    used = int(picture.max(initial=0)).bit_length()
    return max(declared if 1 <= declared <= most else most, used)


def as_bytes(picture: Array, declared_bits: int) -> Array:
    """Brings samples to 0 to 255 by the largest value that their bits can have."""
    most = (1 << settled_bits(picture, declared_bits)) - 1
    if most == 255:
        return picture.astype(numpy.uint8)
    return ((picture.astype(numpy.uint32) * 255 + most // 2) // most).astype(numpy.uint8)


def averaged(picture: Array, side: int) -> Array:
    """Returns: the picture with its longer side brought to `side`, each pixel the average of a block."""
    height, width = picture.shape[:2]
    longer = max(height, width)
    if longer <= side or 0 in (height, width):
        return picture
    rows = _edges(height, _scaled(height, longer, side))
    columns = _edges(width, _scaled(width, longer, side))
    # One after the other: reduceat would take a copy of the picture in 64 bits.
    bands = (picture[top:bottom] for top, bottom in zip(rows, numpy.append(rows[1:], height)))
    sums = numpy.stack([band.sum(axis=0, dtype=numpy.uint64) for band in bands])
    sums = numpy.add.reduceat(sums, columns, axis=1)
    counts = numpy.outer(numpy.diff(rows, append=height), numpy.diff(columns, append=width)).astype(numpy.uint64)
    counts = counts.reshape(counts.shape + (1,) * (picture.ndim - 2))
    result: Array = ((sums + counts // numpy.uint64(2)) // counts).astype(picture.dtype)
    return result


def _scaled(own: int, longer: int, side: int) -> int:
    return max((own * side + longer // 2) // longer, 1)


def _edges(length: int, count: int) -> Array:
    """Returns: where each of `count` blocks begins."""
    return numpy.arange(count) * length // count
