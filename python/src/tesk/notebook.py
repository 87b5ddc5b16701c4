"""How streams and arrays show themselves in notebooks. Pictures need Pillow; without it there are words alone."""

from __future__ import annotations

import base64
import html
import io
from typing import Any

import numpy

from ._info import Info
from ._native import Array, Error, bytes_view
from ._thumbnail import averaged, thumbnail

_SIDE = 192
# Few bright samples, as of stars or hot pixels, would leave all others black.
_DARKEST_SHARE, _BRIGHTEST_SHARE = 0.1, 99.9


def load_ipython_extension(ipython: Any) -> None:
    """Registers arrays with IPython. Arrays that are no images keep their words."""
    ipython.display_formatter.formatters["text/html"].for_type(numpy.ndarray, array_as_html)


def array_as_html(array: Array) -> str | None:
    """Returns: a small picture and words on an array that tesk can hold, of two pixels or more; else nothing."""
    is_gray = array.ndim == 2 and array.dtype in (numpy.uint8, numpy.uint16)
    is_colour = array.ndim == 3 and array.shape[2] == 3 and array.dtype == numpy.uint8
    if not (is_gray or is_colour) or array.size < 2 or isinstance(array, numpy.ma.MaskedArray):
        return None
    rows: list[tuple[str, Any]] = [
        ("shape", array.shape),
        ("type", array.dtype.name),
        ("samples", f"{array.min()} to {array.max()}, mean {array.mean():.4g}"),
    ]
    return _as_html(rows, _windowed(averaged(array, _SIDE)))


def info_as_html(info: Info, stream: Any) -> str:
    """Returns: words on a stream, with the picture of what there is of it."""
    rows: list[tuple[str, Any]] = [("shape", info.shape), ("type", info.dtype.name), ("bits", info.bits)]
    picture = None
    try:
        size = bytes_view(stream).nbytes
        rows += [("bytes", f"{size:,}"), ("bits per sample", f"{8 * size / _samples(info):.3f}")]
        picture = thumbnail(stream, _SIDE)
    except (Error, TypeError, ValueError):
        # The buffer may be gone, changed, or the head alone.
        pass
    return _as_html(rows, picture)


def _samples(info: Info) -> int:
    return max(info.nbytes // info.dtype.itemsize, 1)


def _windowed(array: Array) -> Array:
    """Brings 16-bit samples to 8 bits, between the darkest and the brightest that many pixels have."""
    if array.dtype == numpy.uint8:
        return array
    low, high = numpy.percentile(array, (_DARKEST_SHARE, _BRIGHTEST_SHARE))
    scaled = (array - low) * (255.0 / max(high - low, 1))
    bytes_: Array = numpy.clip(numpy.rint(scaled), 0, 255).astype(numpy.uint8)
    return bytes_


def _as_html(rows: list[tuple[str, Any]], picture: Array | None) -> str:
    cells = "".join(
        f"<tr><th style='text-align:left'>{html.escape(name)}</th><td style='text-align:left'>{html.escape(str(value))}</td></tr>"
        for name, value in rows
    )
    return f"<div style='display:flex;gap:1em'>{_image(picture)}<table>{cells}</table></div>"


def _image(picture: Array | None) -> str:
    png = None if picture is None or picture.size == 0 else as_png(picture)
    if png is None:
        return ""
    data = base64.b64encode(png).decode()
    return f"<img alt='a small picture' src='data:image/png;base64,{data}'>"


def as_png(picture: Array) -> bytes | None:
    """Returns: a PNG of an array of 8 bits; nothing where there is no Pillow."""
    try:
        from PIL import Image
    except ImportError:
        return None
    file = io.BytesIO()
    Image.fromarray(picture).save(file, "PNG")
    return file.getvalue()
