"""The codec of zarr 2: chunks that are streams of tesk. zarr finds it by its name, "tesk".

What lies in memory is encoded: leading axes are stacked, so that a chunk of (8, 512, 512) is a picture of 4096 rows.
Axes of length 1 do not count. A last axis of 3 with uint8 is colour."""

from __future__ import annotations

from typing import Any

import numpy
from numcodecs.abc import Codec
from numcodecs.compat import ensure_ndarray, ndarray_copy

from ._coding import DEFAULT_MAX_PIXELS, decode, encode
from ._info import measure
from ._native import Array, Error, bytes_view
from ._tesk import lib

_SIGN = {1: numpy.uint8(0x80), 2: numpy.uint16(0x8000)}


class Tesk(Codec):  # type: ignore[misc]
    """bits: significant bits of a sample; found for each chunk unless given.
    signed: samples are int8 or int16; their sign bit is flipped, which costs nothing.
    verify: decode each chunk and compare it before it is stored."""

    codec_id = "tesk"

    def __init__(self, bits: int | None = None, signed: bool = False, verify: bool = True) -> None:
        self.bits = bits
        self.signed = signed
        self.verify = verify

    def encode(self, buf: Any) -> bytes:
        """Raises: TypeError, ValueError, Error for chunks that are no pictures."""
        return encode(_picture(self._unsigned(_in_memory_order(ensure_ndarray(buf)))), bits=self.bits, verify=self.verify)

    def decode(self, buf: Any, out: Any = None) -> Any:
        """Returns: the samples, flat. Raises: Error unless the chunk is a complete stream and nothing else."""
        stream = bytes_view(ensure_ndarray(buf))
        if measure(stream) != (len(stream), True):
            raise Error("the chunk is not a complete stream and nothing else", lib.TESK_CUT)
        samples = decode(stream, max_pixels=DEFAULT_MAX_PIXELS).reshape(-1)
        if self.signed:
            samples ^= _SIGN[samples.itemsize]
            samples = samples.view(f"i{samples.itemsize}")
        return samples if out is None else ndarray_copy(samples, out)

    def _unsigned(self, array: Array) -> Array:
        if array.dtype.byteorder == ">":
            raise TypeError(f"a chunk of {array.dtype.str}: store big-endian samples as little-endian ones")
        if (array.dtype.kind == "i") != self.signed:
            raise TypeError(f"a chunk of {array.dtype.name} with signed={self.signed}")
        if not self.signed or array.itemsize > 2:
            return array
        unsigned: Array = array.view(f"u{array.itemsize}") ^ _SIGN[array.itemsize]
        return unsigned


def _in_memory_order(array: Array) -> Array:
    """A chunk of order "F" comes as its array. What lies in memory is the transposed one, and zarr takes the
    decoded samples as they lie in memory."""
    if array.flags.f_contiguous and not array.flags.c_contiguous:
        return array.T
    return array


def _picture(array: Array) -> Array:
    shape = [length for length in array.shape if length != 1]
    is_colour = len(shape) > 2 and shape[-1] == 3 and array.dtype == numpy.uint8
    if len(shape) < 2:
        raise ValueError(f"a chunk of shape {array.shape} has no two sides above 1: no stream restores that")
    return array.reshape(-1, *shape[-2:]) if is_colour else array.reshape(-1, shape[-1])
