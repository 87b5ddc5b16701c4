"""The calls of the library: a codec for each thread, structs with their size, statuses as errors."""

from __future__ import annotations

import threading
from typing import Any, Union

import numpy
import numpy.typing

from ._tesk import ffi, lib

Array = numpy.typing.NDArray[Any]
Buffer = Union[bytes, bytearray, memoryview, Array]


class Error(ValueError):
    """What tesk refuses. `status` is the number in tesk.h: 1 a cut stream, 3 no stream or a damaged one, 4 an image
    that no stream can hold, 5 more than a limit, 9 an image that no stream restores. Without memory it is a MemoryError."""

    def __init__(self, message: str, status: int) -> None:
        # Both are arguments, so that the error comes through pickle to another process.
        super().__init__(message, status)
        self.message = message
        self.status = status

    def __str__(self) -> str:
        return self.message


# Of each codec: a pool of threads has many. Enough for chunks and for images of 10 megapixels.
MOST_KEPT_BYTES = 16 << 20

_codecs = threading.local()


def version() -> str:
    return str(ffi.string(lib.tesk_version()).decode())


def new_struct(kind: str) -> Any:
    struct = ffi.new(f"tesk_{kind} *")
    struct.struct_bytes = ffi.sizeof(f"tesk_{kind}")
    return struct


def new_codec(verify: bool) -> Any:
    """Returns: a codec that is destroyed with the last reference to it."""
    options = new_struct("options")
    options.flags = 0 if verify else lib.TESK_UNVERIFIED
    options.most_kept_bytes = MOST_KEPT_BYTES
    codec = ffi.new("tesk_codec **")
    require_ok(lib.tesk_create(options, codec))
    return ffi.gc(codec[0], lib.tesk_destroy)


def codec_of_thread(verify: bool = True) -> Any:
    """Returns: the codec of this thread, for one call. Between calls it holds MOST_KEPT_BYTES at most."""
    name = "verifying" if verify else "trusting"
    codec = getattr(_codecs, name, None)
    if codec is None:
        codec = new_codec(verify)
        setattr(_codecs, name, codec)
    return codec


def error_of(status: int, result: Any = None) -> Error | MemoryError:
    words = ffi.string(lib.tesk_status_message(status)).decode()
    if status == lib.TESK_OUT_OF_MEMORY:
        return MemoryError(words)
    if status == lib.TESK_NOT_RESTORABLE and result is not None:
        words = f"no stream restores this image: {loss_words(result.loss)}"
    return Error(words, status)


def require_ok(status: int) -> None:
    if status != lib.TESK_OK:
        raise error_of(status)


def loss_words(loss: int) -> str:
    return str(ffi.string(lib.tesk_loss_message(loss)).decode())


def bytes_of(stream: Buffer) -> Any:
    """Returns: a buffer that the library can read, without a copy."""
    if isinstance(stream, str) or hasattr(stream, "__fspath__"):
        raise TypeError("a stream is bytes; tesk.read takes the path of a file")
    return ffi.from_buffer(stream)


def bytes_view(stream: Any) -> memoryview:
    """Returns: the bytes of any buffer, without a copy."""
    return memoryview(stream).cast("B")


def take_block(codec: Any, block: Any, result: Any) -> bytes:
    """Returns: the stream of a block, which is released."""
    try:
        return bytes(ffi.buffer(block[0], result.stream_bytes))
    finally:
        lib.tesk_release_block(codec, block[0])
