"""Metadata and a checksum after a stream, as docs/trailer.md in the sources describes them."""

from __future__ import annotations

import operator
import struct
import zlib
from collections.abc import Callable, Mapping
from typing import Any

from ._info import measure
from ._native import Buffer, Error, bytes_view
from ._tesk import lib

_HEAD, _TAIL = b"TKTRAIL1", b"TKT1"
_MOST_BOXES = 64
_CHECKSUM_BOX_BYTES = 12
_LEAST_BYTES = len(_HEAD) + _CHECKSUM_BOX_BYTES + 4 + len(_TAIL)
_PAIR = struct.Struct("<II")
_NUMBER = struct.Struct("<I")


def _bytes(value: Any) -> bytes:
    return bytes(memoryview(value))


def _text(value: Any, encoding: str = "utf-8") -> bytes:
    if not isinstance(value, str):
        raise TypeError(f"text is needed, not {type(value).__name__}")
    return value.encode(encoding)


def _number(value: Any) -> bytes:
    return _NUMBER.pack(operator.index(value))


def _pair(values: Any) -> bytes:
    across, down = values
    return _number(across) + _number(down)


_WRITERS: dict[str, Callable[[Any], bytes]] = {
    "icc": _bytes,
    "exif": _bytes,
    "xmp": _text,
    "desc": _text,
    "res": _pair,
    "max": _number,
    "raw": lambda value: _text(value, "ascii"),
}
_READERS: dict[str, Callable[[memoryview], Any]] = {
    "icc": bytes,
    "exif": bytes,
    "xmp": lambda data: str(data, "utf-8"),
    "desc": lambda data: str(data, "utf-8"),
    "res": _PAIR.unpack,
    "max": lambda data: _NUMBER.unpack(data)[0],
    "raw": lambda data: str(data, "ascii"),
}


def join(stream: Buffer, metadata: Mapping[str, Any] | None = None) -> bytes:
    """Returns: a complete stream, and after it the trailer: a checksum, and metadata by name:

    icc, exif: bytes; xmp, desc: text; res: pixels per metre across and down; max: the largest value that a sample may
    have; raw: text, the type of the raw file that the image comes from.

    Raises: KeyError for another name; TypeError and ValueError for a value that does not fit; Error where the stream is
        cut, since only a complete one can have a trailer."""
    view = bytes_view(stream)
    if measure(view) != (len(view), True):
        raise Error("only a complete stream has a trailer", lib.TESK_CUT)
    boxes = b"".join(_box(name, _data(name, value)) for name, value in (metadata or {}).items())
    checksum = _NUMBER.pack(zlib.crc32(boxes, zlib.crc32(view)))
    trailer = _HEAD + _box("crc", checksum) + boxes
    return b"".join((view, trailer, _NUMBER.pack(len(trailer) + 4 + len(_TAIL)), _TAIL))


def _data(name: str, value: Any) -> bytes:
    try:
        return _WRITERS[name](value)
    except TypeError as error:
        raise TypeError(f"{name}: {error}") from error
    except (ValueError, struct.error) as error:
        raise ValueError(f"{name}: {error}") from error


def _box(name: str, data: bytes) -> bytes:
    return name.encode().ljust(4) + _NUMBER.pack(len(data)) + data


def split(file: Buffer) -> tuple[memoryview, dict[str, Any]]:
    """Returns: the stream of a file, and the metadata of its trailer. Without a trailer: all of the file, and none.
    Raises: Error where the checksum is wrong, or the stream does not end where the trailer begins."""
    view = bytes_view(file)
    boxes = _boxes(view)
    if boxes is None:
        return view, {}
    stream = view[: len(view) - _length(view)]
    if measure(stream) != (len(stream), True):
        raise Error("the file is damaged: its stream does not end where its trailer begins", lib.TESK_INVALID_STREAM)
    checksum_ends = len(stream) + len(_HEAD) + _CHECKSUM_BOX_BYTES
    covered = view[checksum_ends : len(view) - 4 - len(_TAIL)]
    if _NUMBER.pack(zlib.crc32(covered, zlib.crc32(stream))) != boxes["crc"]:
        raise Error("the file is damaged: its checksum is another", lib.TESK_INVALID_STREAM)
    return stream, _metadata(boxes)


def _length(view: memoryview) -> int:
    return int(_NUMBER.unpack(view[-8:-4])[0])


def _boxes(view: memoryview) -> dict[str, memoryview] | None:
    """Returns: the data of each box, or nothing where the file has no trailer."""
    if len(view) < _LEAST_BYTES or view[-4:] != _TAIL:
        return None
    length = _length(view)
    if not _LEAST_BYTES <= length <= len(view) or view[len(view) - length :][: len(_HEAD)] != _HEAD:
        return None
    left = view[len(view) - length + len(_HEAD) : len(view) - 8]
    boxes: dict[str, memoryview] = {}
    while left:
        if len(left) < 8:
            return None
        name, size = bytes(left[:4]).decode("latin-1").rstrip(" "), _NUMBER.unpack(left[4:8])[0]
        if size > len(left) - 8 or name in boxes or len(boxes) == _MOST_BOXES:
            return None
        boxes[name], left = left[8 : 8 + size], left[8 + size :]
    is_checksum_first = next(iter(boxes), None) == "crc" and len(boxes["crc"]) == 4
    return boxes if is_checksum_first else None


def _metadata(boxes: dict[str, memoryview]) -> dict[str, Any]:
    """Boxes that are unknown, or whose data are not as their name says, are passed over."""
    metadata = {}
    for name, data in boxes.items():
        try:
            if name in _READERS:
                metadata[name] = _READERS[name](data)
        except (ValueError, struct.error):
            continue
    return metadata
