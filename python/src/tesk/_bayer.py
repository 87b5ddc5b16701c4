"""The mosaic of a Bayer filter, and its four planes, which compress better."""

from __future__ import annotations

import numpy

from ._native import Array

_PLACES = ((0, 0), (0, 1), (1, 0), (1, 1))


def split_bayer(mosaic: Array) -> Array:
    """Splits the mosaic of a camera into planes of one colour, whose neighbours are more alike.

    mosaic: shape (h, w), both even. The order of its colours does not matter.
    Returns: an array of shape (2 * h, w / 2): the four planes, one below the other."""
    if mosaic.ndim != 2 or mosaic.shape[0] % 2 or mosaic.shape[1] % 2:
        raise ValueError(f"a mosaic has two even sides; this has the shape {mosaic.shape}")
    return numpy.concatenate([mosaic[top::2, left::2] for top, left in _PLACES])


def merge_bayer(planes: Array) -> Array:
    """Undoes split_bayer. Returns: the mosaic, of shape (h, w), from planes of shape (2 * h, w / 2)."""
    if planes.ndim != 2 or planes.shape[0] % 4:
        raise ValueError(f"four planes have four times the rows of one; this has the shape {planes.shape}")
    height, width = planes.shape[0] // 2, planes.shape[1] * 2
    mosaic = numpy.empty((height, width), planes.dtype)
    for (top, left), plane in zip(_PLACES, numpy.split(planes, 4)):
        mosaic[top::2, left::2] = plane
    return mosaic
