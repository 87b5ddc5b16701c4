"""The codec of zarr 2: chunks that are streams of tesk. zarr finds it by its name, "tesk"."""

from __future__ import annotations

import operator
from typing import Any

from numcodecs.abc import Codec
from numcodecs.compat import ensure_ndarray, ndarray_copy

from ._chunks import as_picture, samples_of
from ._coding import DEFAULT_MAX_PIXELS, encode
from ._native import Array

_MOST_BITS = 16


class Tesk(Codec):  # type: ignore[misc]
    """bits: how many low bits of a sample are used; found for each chunk unless given.
    signed: samples are int8 or int16. They are stored with the sign bit flipped, at no cost.
    verify: decode each chunk and compare it with its samples before it is stored."""

    codec_id = "tesk"

    def __init__(self, bits: int | None = None, signed: bool = False, verify: bool = True) -> None:
        if bits is not None and not 1 <= operator.index(bits) <= _MOST_BITS:
            raise ValueError(f"bits is {bits}; samples have 1 to {_MOST_BITS}")
        # The configuration goes into JSON.
        self.bits = None if bits is None else operator.index(bits)
        self.signed = signed
        self.verify = verify

    def encode(self, buf: Any) -> bytes:
        """Raises: TypeError, ValueError, Error for chunks that cannot be images, or are larger than decode allows."""
        chunk = _in_memory_order(ensure_ndarray(buf))
        if (chunk.dtype.kind == "i") != self.signed:
            raise TypeError(f"a chunk of {chunk.dtype.name} with signed={self.signed}")
        picture = as_picture(chunk)
        rows, columns = picture.shape[:2]
        if rows * columns > DEFAULT_MAX_PIXELS:
            raise ValueError(f"a chunk of {rows} x {columns} samples; decode allows up to {DEFAULT_MAX_PIXELS}")
        return encode(picture, bits=self.bits, verify=self.verify)

    def decode(self, buf: Any, out: Any = None) -> Any:
        """Returns: the samples, flat. Raises: Error unless the chunk is a complete stream and nothing else."""
        samples = samples_of(ensure_ndarray(buf), self.signed, DEFAULT_MAX_PIXELS)
        return samples if out is None else ndarray_copy(samples, out)


def _in_memory_order(array: Array) -> Array:
    """zarr passes a chunk of order "F" as its array, whose samples are transposed in memory, and expects decoded
    samples in the order of memory."""
    if array.flags.f_contiguous and not array.flags.c_contiguous:
        return array.T
    return array
