"""Images row by row: memory holds the stream and a few rows."""

from __future__ import annotations

import functools
import threading
from collections.abc import Callable, Iterator
from types import TracebackType
from typing import Any, TypeVar, cast

import numpy

from ._coding import DEFAULT_MAX_PIXELS, checked_budget, require_faithful
from ._info import cut_error, geometry_of_stream, info_of, measure, require_pixels
from ._native import Array, Buffer, Error, bytes_of, error_of, new_codec, new_struct, require_ok, take_block
from ._pixels import (
    Pixels,
    bytes_per_pixel,
    checked_bits,
    geometry_of,
    picture_for,
    pixels_of,
    require_apart,
)
from ._tesk import ffi, lib


_Call = TypeVar("_Call", bound=Callable[..., Any])


def _one_at_a_time(call: _Call) -> _Call:
    """A call of a _RowCodec that waits until those of other threads have ended: the library does not look."""

    @functools.wraps(call)
    def waiting(self: _RowCodec, *args: Any, **named: Any) -> Any:
        with self._lock:
            return call(self, *args, **named)

    return cast(_Call, waiting)


class _RowCodec:
    """A codec that works on one image from the beginning to the end, for one thread at a time."""

    def __init__(self, verify: bool) -> None:
        # A handler of a signal may call what its thread is in the middle of.
        self._lock = threading.RLock()
        self._codec = new_codec(verify)
        self._rows_done = 0
        self._is_open = True

    @_one_at_a_time
    def close(self) -> None:
        """Ends the work without a result. Does nothing where it has ended."""
        lib.tesk_abandon(self._codec)
        self._is_open = False

    def _require_open(self) -> None:
        if not self._is_open:
            raise ValueError(f"the {type(self).__name__} is closed")

    def _require_rows(self, count: int, height: int) -> None:
        if self._rows_done + count > height:
            raise ValueError(f"{self._rows_done} + {count} rows; the image has {height}")

    def _end_with(self, status: int) -> None:
        self.close()
        raise error_of(status)

    def __exit__(
        self, kind: type[BaseException] | None, value: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()


class Encoder(_RowCodec):
    """Encodes an image row by row. Write any number of rows at a time:

        with tesk.Encoder((height, width), "uint16", bits=12) as encoder:
            for rows in camera:
                encoder.write(rows)
            stream = encoder.finish()

    shape: (height, width), or (height, width, 3) for colour, which is uint8.
    bits: how many low bits of a sample are used. All bits of the type unless given: it cannot look ahead.
    budget, verify: as for tesk.encode. With the same bits the stream is that of tesk.encode."""

    def __init__(
        self,
        shape: tuple[int, ...],
        dtype: Any = numpy.uint8,
        *,
        bits: int | None = None,
        budget: int | None = None,
        verify: bool = True,
    ) -> None:
        # An array without memory says whether there are such images.
        example = numpy.broadcast_to(numpy.zeros((), dtype), shape)
        self.shape, self.dtype = example.shape, example.dtype.newbyteorder("=")
        geometry = geometry_of(self.shape, bytes_per_pixel(example))
        geometry.bits_per_pixel = 8 * self.dtype.itemsize if bits is None else checked_bits(bits, self.dtype)
        super().__init__(verify)
        require_ok(lib.tesk_compress_begin(self._codec, geometry, checked_budget(budget)))

    def __enter__(self) -> Encoder:
        return self

    @_one_at_a_time
    def write(self, rows: Any) -> None:
        """Takes the next rows: an array of shape (n, width) or (n, width, 3)."""
        self._require_open()
        pixels = pixels_of(rows)
        array = pixels.array
        if array.dtype != self.dtype or array.shape[1:] != self.shape[1:]:
            raise ValueError(
                f"rows are {array.dtype.name} of shape {array.shape}; "
                f"the image is {self.dtype.name} of shape {self.shape}"
            )
        self._require_rows(len(array), self.shape[0])
        status = lib.tesk_compress_rows(self._codec, pixels.address, pixels.row_stride_bytes, len(array))
        if status != lib.TESK_OK:
            self._end_with(status)
        self._rows_done += len(array)

    @_one_at_a_time
    def finish(self) -> bytes:
        """Returns: the stream. Raises: ValueError where rows are missing; otherwise as tesk.encode."""
        self._require_open()
        if self._rows_done < self.shape[0]:
            raise ValueError(f"{self._rows_done} rows have come; the image has {self.shape[0]}")
        block, result = ffi.new("void **"), new_struct("result")
        status = lib.tesk_compress_end(self._codec, block, result)
        stream = take_block(self._codec, block, result)
        self.close()
        require_faithful(status, result)
        return stream


class Decoder(_RowCodec):
    """Decodes a stream row by row, from the top:

        with tesk.Decoder(stream) as decoder:
            for rows in decoder.blocks(256):
                ...

    `info` says what the stream holds, `is_complete` whether it is all there.
    partial, max_pixels: as for tesk.decode."""

    def __init__(self, stream: Buffer, *, partial: bool = False, max_pixels: int = DEFAULT_MAX_PIXELS) -> None:
        geometry = geometry_of_stream(stream)
        require_pixels(geometry, max_pixels)
        self.info = info_of(geometry, stream)
        _, self.is_complete = measure(stream)
        if not self.is_complete and not partial:
            raise cut_error()
        super().__init__(verify=True)
        self._geometry = geometry
        # The library reads the stream until the end.
        self._view = bytes_of(stream)
        begun = new_struct("image")
        require_ok(lib.tesk_decompress_begin(self._codec, self._view, len(self._view), begun))
        # Rows of another width would not fit into their arrays.
        if (begun.width, begun.height, begun.bytes_per_pixel) != (geometry.width, geometry.height, geometry.bytes_per_pixel):
            raise Error("the stream has changed while it was opened", lib.TESK_INVALID_STREAM)

    def __enter__(self) -> Decoder:
        return self

    def close(self) -> None:
        super().close()
        self._view = None

    @_one_at_a_time
    def read(self, count: int, *, out: Array | None = None) -> Array:
        """Returns: the next rows, fewer at the end of the image, and none after it. out: as for tesk.decode."""
        self._require_open()
        if count < 0:
            raise ValueError(f"count is {count}")
        height = self.info.shape[0]
        part = new_struct("image")
        part.width, part.bytes_per_pixel = self._geometry.width, self._geometry.bytes_per_pixel
        part.height = min(count, height - self._rows_done)
        pixels: Pixels = picture_for(out, part)
        require_apart(pixels, self._view)
        status = lib.tesk_decompress_rows(self._codec, pixels.address, pixels.row_stride_bytes, part.height)
        if status != lib.TESK_OK:
            self._end_with(status)
        self._rows_done += part.height
        return pixels.array

    def blocks(self, row_count: int) -> Iterator[Array]:
        """Returns: the rows that are left, row_count at a time; the last block may have fewer."""
        if row_count < 1:
            raise ValueError(f"row_count is {row_count}; a block has at least a row")
        return self._blocks(row_count)

    def _blocks(self, row_count: int) -> Iterator[Array]:
        while self._rows_done < self.info.shape[0]:
            yield self.read(row_count)
