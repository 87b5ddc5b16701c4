"""What the first 16 bytes of a stream say."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any

import numpy

from ._native import Buffer, Error, bytes_of, new_struct, require_ok
from ._pixels import dtype_of, shape_of
from ._tesk import ffi, lib


@dataclass(frozen=True)
class Info:
    """What a stream holds. In a notebook it shows itself, with a small image of as much of the stream as there is."""

    shape: tuple[int, ...]
    """(height, width), or (height, width, 3) for colour."""
    dtype: numpy.dtype[Any]
    """uint8 or uint16."""
    bits: int
    """Declared bits: how many low bits of a sample are used."""
    _stream: Any = field(default=None, repr=False, compare=False)

    @property
    def nbytes(self) -> int:
        """Bytes of the pixels."""
        count = 1
        for length in self.shape:
            count *= length
        return count * self.dtype.itemsize

    def __reduce__(self) -> Any:
        # The stream stays behind: it may be large, or a buffer that pickle does not take.
        return Info, (self.shape, self.dtype, self.bits)

    def _repr_html_(self) -> str:
        from .notebook import info_as_html

        return info_as_html(self, self._stream)


def geometry_of_stream(stream: Buffer) -> Any:
    """Raises: Error for what is no stream, or has pixels of which there are none."""
    view = bytes_of(stream)
    geometry = new_struct("image")
    require_ok(lib.tesk_probe(view, len(view), geometry))
    return geometry


def probe(stream: Buffer) -> Info:
    """Reads shape, type and bits from the first 16 bytes of a stream. Decodes nothing.

    Raises: Error where they are no stream."""
    geometry = geometry_of_stream(stream)
    return info_of(geometry, stream)


def info_of(geometry: Any, stream: Buffer) -> Info:
    return Info(shape_of(geometry), dtype_of(geometry), int(geometry.bits_per_pixel), stream)


def cut_error() -> Error:
    return Error("the stream is cut: partial=True decodes it to an approximation", lib.TESK_CUT)


def measure(stream: Buffer) -> tuple[int, bool]:
    """Finds where a stream ends, without decoding it. Other bytes may follow it.

    Returns: the length of the stream in bytes, and whether it is complete. Of a cut stream: the length of the buffer.
    Raises: Error where it is no stream."""
    view = bytes_of(stream)
    length = ffi.new("size_t *")
    status = lib.tesk_measure(view, len(view), length)
    if status == lib.TESK_CUT:
        return len(view), False
    require_ok(status)
    return int(length[0]), True


def require_pixels(geometry: Any, max_pixels: int) -> None:
    """Raises: Error where a picture has more pixels than a caller allows."""
    pixels = geometry.width * geometry.height
    if pixels > max_pixels:
        raise Error(
            f"the picture has {geometry.width} x {geometry.height} = {pixels} pixels; max_pixels is {max_pixels}",
            lib.TESK_LIMIT_EXCEEDED,
        )
