"""The plugin for Pillow: `import tesk.pillow`, then Image.open and Image.save know .tk files.

Modes are L, RGB and I;16. A cut stream opens as an approximation; info["complete"] says whether it is complete."""

from __future__ import annotations

from typing import IO, Any

import numpy
from PIL import Image, ImageFile

from . import trailer
from ._coding import decode_prefix, encode, levels_of, reduced_geometry
from ._info import geometry_of_stream, measure
from ._native import Array, Error

_MAGIC = b"TK30"
_MODES = {1: "L", 2: "I;16", 3: "RGB"}
_INCHES_PER_METRE = 39.37007874


def _accept(prefix: bytes) -> bool:
    return prefix[:4] == _MAGIC


class TeskImageFile(ImageFile.ImageFile):  # type: ignore[misc]
    format = "TESK"
    format_description = "tesk stream"
    fp: Any
    # Until _open says otherwise: pickle makes images that are loaded, without it.
    _is_loaded = True

    def _open(self) -> None:
        try:
            self._stream, metadata = trailer.split(self.fp.read())
            self._geometry = geometry_of_stream(self._stream)
            _, self.info["complete"] = measure(self._stream)
        except Error as error:
            raise SyntaxError(str(error)) from error
        self._reduce = 0
        self._size = (self._geometry.width, self._geometry.height)
        self._set_mode(_MODES[self._geometry.bytes_per_pixel])
        self.info["bits"] = int(self._geometry.bits_per_pixel)
        self.info.update(_info_of(metadata))
        self.tile: list[Any] = []
        self._is_loaded = False

    def _set_mode(self, mode: str) -> None:
        # A property since Pillow 10.1, which reads this attribute.
        self._mode = mode
        if not isinstance(getattr(type(self), "mode", None), property):
            self.mode = mode

    def draft(self, mode: str | None, size: tuple[int, int] | None) -> tuple[str, tuple[float, ...]] | None:
        """Chooses a reduced image before anything is decoded. Image.thumbnail calls it."""
        if self._is_loaded or size is None:
            return None
        self._reduce = _halvings(self._geometry, size)
        reduced = reduced_geometry(self._geometry, self._reduce)
        box = (0, 0, self._geometry.width / 2**self._reduce, self._geometry.height / 2**self._reduce)
        self._size = (reduced.width, reduced.height)
        return self.mode, box

    def load(self) -> Any:
        if not self._is_loaded:
            # Pillow has looked at the number of pixels before.
            picture, _ = decode_prefix(self._stream, reduce=self._reduce, max_pixels=self.width * self.height)
            self.im = Image.fromarray(picture).im
            self._is_loaded = True
            del self._stream
            self._close_own_file()
        return super().load()

    def _close_own_file(self) -> None:
        """Pillow does so only for images that it decodes itself. verify has done it before."""
        if self.fp and self._exclusive_fp:
            self.fp.close()
        self.fp = None


def _halvings(geometry: Any, size: tuple[int, int]) -> int:
    for halvings in range(levels_of(geometry), 0, -1):
        reduced = reduced_geometry(geometry, halvings)
        if reduced.width >= size[0] and reduced.height >= size[1]:
            return halvings
    return 0


def _info_of(metadata: dict[str, Any]) -> dict[str, Any]:
    """Returns: the metadata by the names that Pillow has for them."""
    names = {"icc": "icc_profile", "exif": "exif", "xmp": "xmp", "desc": "description"}
    info = {names[name]: value for name, value in metadata.items() if name in names}
    if "res" in metadata:
        info["dpi"] = tuple(pixels / _INCHES_PER_METRE for pixels in metadata["res"])
    return info


def _metadata_of(image: Any, options: dict[str, Any]) -> dict[str, Any]:
    metadata = {}
    icc = options.get("icc_profile", image.info.get("icc_profile"))
    if icc:
        metadata["icc"] = icc
    exif = options.get("exif")
    if exif:
        data = exif.tobytes() if isinstance(exif, Image.Exif) else exif
        metadata["exif"] = data[6:] if data.startswith(b"Exif\0\0") else data
    if "dpi" in options:
        metadata["res"] = tuple(round(dots * _INCHES_PER_METRE) for dots in options["dpi"])
    return metadata


def _samples(image: Any) -> Array:
    if image.mode not in ("L", "RGB", "I;16", "I;16B"):
        raise OSError(f"cannot write mode {image.mode} as TESK: a stream holds L, RGB and I;16")
    return numpy.asarray(image)


def _save(image: Any, file: IO[bytes], filename: str | bytes) -> None:
    options = image.encoderinfo
    as_encode = {name: options[name] for name in ("bits", "budget", "verify") if name in options}
    stream = encode(_samples(image), **as_encode)
    if options.get("budget") is None:
        stream = trailer.join(stream, _metadata_of(image, options))
    file.write(stream)


Image.register_open(TeskImageFile.format, TeskImageFile, _accept)
Image.register_save(TeskImageFile.format, _save)
Image.register_extension(TeskImageFile.format, ".tk")
Image.register_mime(TeskImageFile.format, "image/x-tesk")
