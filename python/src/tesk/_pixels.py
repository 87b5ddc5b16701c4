"""Arrays that are images, and images as the library sees them."""

from __future__ import annotations

import operator
import sys
from dataclasses import dataclass
from typing import Any

import numpy

from ._native import Array, Error, new_struct
from ._tesk import ffi, lib

_LONGEST_SIDE = 65535
_HOLDS = "tesk holds uint8 arrays of shape (h, w) or (h, w, 3), and uint16 arrays of shape (h, w)"


def bytes_per_pixel(array: Array) -> int:
    """Returns: 1, 2 or 3. Raises: TypeError where the array is no image that a stream holds."""
    kind, size = array.dtype.kind, array.dtype.itemsize
    if kind == "u" and size <= 2 and array.ndim == 2:
        return size
    if kind == "u" and size == 1 and array.ndim == 3 and array.shape[2] == 3:
        return 3
    raise TypeError(f"{_HOLDS}; this is {array.dtype.name} of shape {array.shape}{_advice(array)}")


def _advice(array: Array) -> str:
    if array.dtype.kind == "b":
        return ": view it as uint8"
    if array.dtype.kind not in "iu" or array.dtype.itemsize > 2:
        return ""
    if array.dtype.kind == "i":
        return ": view it as unsigned and flip the sign bit"
    if array.ndim == 3 and array.shape[2] in (2, 4):
        return ": leave the alpha channel out, or encode it as an image of its own"
    if array.ndim == 3 and array.dtype.itemsize == 2:
        return ": encode its planes one by one"
    return ""


def shape_of(geometry: Any) -> tuple[int, ...]:
    sides = (int(geometry.height), int(geometry.width))
    return (*sides, 3) if geometry.bytes_per_pixel == 3 else sides


def dtype_of(geometry: Any) -> numpy.dtype[Any]:
    return numpy.dtype(numpy.uint16 if geometry.bytes_per_pixel == 2 else numpy.uint8)


def has_adjacent_pixels(array: Array) -> bool:
    """Whether the pixels of each row follow each other, and rows come in order."""
    if array.flags.c_contiguous:
        return True
    row_bytes = array[:1].nbytes
    inner_is_adjacent = bool(array[:1].flags.c_contiguous)
    return inner_is_adjacent and array.strides[0] >= row_bytes


def has_native_order(array: Array) -> bool:
    return array.dtype.isnative


@dataclass(frozen=True)
class Pixels:
    """An image in memory, as calls take it. The array stays alive with it."""

    array: Array
    geometry: Any

    @property
    def address(self) -> Any:
        return ffi.cast("void *", self.array.__array_interface__["data"][0])

    @property
    def row_stride_bytes(self) -> int:
        return 0 if self.array.flags.c_contiguous else int(self.array.strides[0])

    @property
    def size_bytes(self) -> int:
        """Bytes from the first to behind the last pixel."""
        rows = self.array.shape[0]
        return self.row_stride_bytes * (rows - 1) + self.array[:1].nbytes if self.row_stride_bytes else self.array.nbytes

    def used_bits(self) -> int:
        """Returns: the least declared bits that hold all samples."""
        used = ffi.new("uint32_t *")
        lib.tesk_used_bits(self.geometry, self.address, self.row_stride_bytes, used)
        return max(int(used[0]).bit_length(), 1)


def geometry_of(shape: tuple[int, ...], pixel_bytes: int) -> Any:
    """Raises: Error where a side is too long for a stream."""
    height, width = shape[:2]
    if max(height, width) > _LONGEST_SIDE:
        raise Error(
            f"the image has {width} x {height} pixels; a stream holds up to {_LONGEST_SIDE} x {_LONGEST_SIDE}",
            lib.TESK_UNSUPPORTED_FORMAT,
        )
    geometry = new_struct("image")
    geometry.width, geometry.height = width, height
    geometry.bytes_per_pixel = pixel_bytes
    return geometry


def pixels_of(image: Any) -> Pixels:
    """Returns: the pixels of an image, copied only where rows are not as the library reads them."""
    if isinstance(image, numpy.ma.MaskedArray):
        raise TypeError("a stream has no place for the mask of a masked array: encode its .data")
    array = numpy.asarray(image)
    pixel_bytes = bytes_per_pixel(array)
    if not (has_adjacent_pixels(array) and has_native_order(array)):
        array = numpy.ascontiguousarray(array, dtype=array.dtype.newbyteorder("="))
    return Pixels(array, geometry_of(array.shape, pixel_bytes))


def declared_bits(bits: int | None, pixels: Pixels) -> int:
    """Returns: the bits that a caller names, or those that the samples use."""
    if bits is None:
        return pixels.used_bits()
    return checked_bits(bits, pixels.array.dtype)


def checked_bits(bits: int, dtype: numpy.dtype[Any]) -> int:
    bits = operator.index(bits)
    most = 8 * dtype.itemsize
    if not 1 <= bits <= most:
        raise ValueError(f"bits is {bits}; samples of {dtype.name} have 1 to {most}")
    return bits


def picture_for(out: Array | None, geometry: Any) -> Pixels:
    """Returns: the array that a picture goes into, that of the caller or a new one."""
    shape, dtype = shape_of(geometry), dtype_of(geometry)
    if out is None:
        return Pixels(numpy.empty(shape, dtype), geometry)
    if not isinstance(out, numpy.ndarray) or isinstance(out, numpy.ma.MaskedArray):
        raise TypeError(f"out is {type(out).__name__}, not a numpy array")
    if out.shape != shape or out.dtype != dtype:
        raise ValueError(
            f"out is {out.dtype.str} of shape {out.shape}; the picture is {dtype.str} of shape {shape}"
        )
    if not out.flags.writeable:
        raise ValueError("out is not writable")
    if not has_adjacent_pixels(out):
        raise ValueError("the pixels of a row of out are not adjacent, or its rows stand backwards")
    return Pixels(out, geometry)


def require_apart(pixels: Pixels, stream: Any) -> None:
    """Raises: ValueError where a picture would overwrite its stream. stream: what bytes_of returns."""
    if numpy.may_share_memory(pixels.array, numpy.frombuffer(ffi.buffer(stream), numpy.uint8)):
        raise ValueError("out is where the stream is")


assert sys.byteorder == "little", "the library is for little-endian processors"
