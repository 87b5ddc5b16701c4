"""Streams in files."""

from __future__ import annotations

import os
import secrets
from collections.abc import Mapping
from pathlib import Path
from typing import Any, Union

from . import trailer
from ._coding import decode, encode
from ._info import measure
from ._native import Array, Error
from ._tesk import lib

PathLike = Union[str, "os.PathLike[str]"]


def read(path: PathLike, *, partial: bool = False, **as_decode: Any) -> Array:
    """Decodes the stream of a file. The other arguments are those of tesk.decode.

    Raises: Error where the file is damaged, is cut (unless partial), or has bytes after its stream that are no trailer."""
    stream, _ = trailer.split(Path(path).read_bytes())
    if not partial:
        length, is_complete = measure(stream)
        if is_complete and length < len(stream):
            surplus = len(stream) - length
            raise Error(f"{path}: {surplus} bytes behind the stream are no trailer", lib.TESK_INVALID_STREAM)
    return decode(stream, partial=partial, **as_decode)


def read_metadata(path: PathLike) -> dict[str, Any]:
    """Returns: the metadata of a file, by the names of tesk.trailer.join; empty without a trailer.
    Raises: Error where the file has a trailer and is damaged."""
    return trailer.split(Path(path).read_bytes())[1]


def write(path: PathLike, image: Any, *, metadata: Mapping[str, Any] | None = None, **as_encode: Any) -> None:
    """Encodes an image into a file. Writes under another name first: the file is complete when it gets its name. A file
    of that name is replaced.

    metadata: a dict, with the names of tesk.trailer.join.
    The other arguments are those of tesk.encode. With a budget the file is the stream alone, and has no metadata."""
    stream = encode(image, **as_encode)
    if as_encode.get("budget") is None:
        stream = trailer.join(stream, metadata)
    elif metadata:
        raise ValueError("with a budget a file has no metadata")
    _write_at_once(Path(path), stream)


def _write_at_once(path: Path, data: bytes) -> None:
    # Other threads may write the same file, and processes in containers often have the same number. 50 characters
    # of the name: with what is added it must not become too long for a name.
    part = path.with_name(f".{path.name[:50]}.part-{os.getpid()}-{secrets.token_hex(4)}")
    file = open(part, "xb")
    try:
        with file:
            file.write(data)
        os.replace(part, path)
    except BaseException:
        part.unlink(missing_ok=True)
        raise
