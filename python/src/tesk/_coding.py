"""Whole images in memory: encode, decode."""

from __future__ import annotations

import operator
from typing import Any

from ._info import cut_error, geometry_of_stream, require_pixels
from ._native import (
    Array,
    Buffer,
    Error,
    bytes_of,
    codec_of_thread,
    error_of,
    loss_words,
    new_struct,
    take_block,
)
from ._pixels import declared_bits, picture_for, pixels_of, require_apart
from ._tesk import ffi, lib

DEFAULT_MAX_PIXELS = 2**28
_HEAD_BYTES = 16
# More halvings than any image has.
_TOO_OFTEN = 99
# No stream is longer, and size_t holds it.
_ENDLESS_BYTES = 2**62


def checked_budget(budget: int | None) -> int:
    """Returns: the budget for a call, 0 for none."""
    if budget is None:
        return 0
    budget = operator.index(budget)
    if budget < _HEAD_BYTES:
        raise ValueError(f"budget is {budget}; a stream has at least {_HEAD_BYTES} bytes")
    return min(budget, _ENDLESS_BYTES)


def require_faithful(status: int, result: Any) -> None:
    """Raises: Error for a compression without a result, or with one that neither restores nor approximates."""
    if status not in (lib.TESK_OK, lib.TESK_CUT):
        raise error_of(status, result)
    if result.loss not in (lib.TESK_LOSS_NONE, lib.TESK_LOSS_BUDGET):
        raise Error(f"no stream restores this image: {loss_words(result.loss)}", lib.TESK_NOT_RESTORABLE)


def encode(
    image: Any, *, bits: int | None = None, budget: int | None = None, verify: bool = True
) -> bytes:
    """Encodes an image: uint8 of shape (h, w) or (h, w, 3), or uint16 of shape (h, w), in any memory layout.

    bits: how many low bits of a sample are used; found from the samples unless given.
    budget: the most bytes of the stream, 16 or more. A longer stream is cut there, and decodes to an approximation.
    verify: decode the new stream and compare it with the image before it is returned. Not with a budget.

    Returns: the stream. Without a budget it restores the image exactly.
    Raises: TypeError for other arrays; ValueError for bits or a budget that do not fit; Error where a side is above
        65535, and where a side is 1, unless all samples are 0: no stream restores that."""
    pixels = pixels_of(image)
    pixels.geometry.bits_per_pixel = declared_bits(bits, pixels)
    codec = codec_of_thread(verify)
    block, result = ffi.new("void **"), new_struct("result")
    status = lib.tesk_compress_to_block(
        codec, pixels.geometry, pixels.address, pixels.row_stride_bytes, checked_budget(budget), block, result
    )
    stream = take_block(codec, block, result)
    require_faithful(status, result)
    return stream


def decode(
    stream: Buffer,
    *,
    out: Array | None = None,
    partial: bool = False,
    reduce: int = 0,
    max_pixels: int = DEFAULT_MAX_PIXELS,
) -> Array:
    """Decodes a stream, which may be any buffer. Bytes after the stream are ignored.

    out: a writable array of the right shape and type to decode into. Gaps between its rows stay as they are.
    partial: accept a cut stream, and return an approximation.
    reduce: divide both sides by 2**reduce, 0 to 5, which takes less time.
    max_pixels: the most pixels of the result.

    Raises: Error where it is no stream, is cut (unless partial) or has too many pixels; ValueError and TypeError for
        arguments that do not fit."""
    picture, is_complete = decode_prefix(stream, out=out, reduce=reduce, max_pixels=max_pixels)
    if not is_complete and not partial:
        raise cut_error()
    return picture


def decode_prefix(
    stream: Buffer, *, out: Array | None = None, reduce: int = 0, max_pixels: int = DEFAULT_MAX_PIXELS
) -> tuple[Array, bool]:
    """Decodes a stream or any prefix of 16 bytes or more. The arguments are those of decode.

    Returns: the image, and whether the stream is complete. If not, the image is an approximation.
    Raises: as decode."""
    view = bytes_of(stream)
    geometry = reduced_geometry(geometry_of_stream(stream), reduce)
    require_pixels(geometry, max_pixels)
    pixels = picture_for(out, geometry)
    require_apart(pixels, view)
    status = lib.tesk_decompress_reduced(
        codec_of_thread(),
        view,
        len(view),
        reduce,
        pixels.address,
        pixels.size_bytes,
        pixels.row_stride_bytes,
        ffi.NULL,
    )
    if status not in (lib.TESK_OK, lib.TESK_CUT):
        raise error_of(status)
    return pixels.array, status == lib.TESK_OK


def reduced_geometry(geometry: Any, reduce: int) -> Any:
    """Raises: ValueError where the image cannot be halved so often."""
    reduce = operator.index(reduce)
    if reduce < 0:
        raise ValueError(f"reduce is {reduce}; it counts halvings")
    reduced = new_struct("image")
    if lib.tesk_reduced_image(geometry, min(reduce, _TOO_OFTEN), reduced) != lib.TESK_OK:
        sides = f"{geometry.width} x {geometry.height}"
        raise ValueError(f"reduce is {reduce}; a picture of {sides} pixels has {levels_of(geometry)} halvings")
    return reduced


def levels_of(geometry: Any) -> int:
    """Returns: how often a picture can be halved."""
    reduced = new_struct("image")
    levels = 0
    while lib.tesk_reduced_image(geometry, levels + 1, reduced) == lib.TESK_OK:
        levels += 1
    return levels
