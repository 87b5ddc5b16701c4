"""The codecs whose cut or lossy streams are compared: each gives streams of an image at its settings, and images back.

An image is an array of uint8, of shape (rows, columns) for gray and (rows, columns, 3) for colours."""

import io
import subprocess
import tempfile
from pathlib import Path

import numpy
import tesk
from PIL import Image, features

# Bits per sample, for codecs that take a size.
RATES = (0.04, 0.1, 0.18, 0.25, 0.35, 0.5, 0.75, 1, 1.5, 2, 3)
QUALITIES = (1, 4, 10, 20, 40, 60, 78, 86, 92, 97, 99)
DISTANCES = (22, 12, 7, 4.5, 3, 2, 1.3, 0.8, 0.5, 0.25, 0.1)
STEPS = (0.4, 0.22, 0.12, 0.07, 0.04, 0.024, 0.014, 0.008, 0.005, 0.0025, 0.0012)


class Tesk:
    """One stream, cut: all rates are prefixes of it."""

    def coded(self, image):
        stream = tesk.encode(image)
        for rate in RATES:
            cut = stream[: int(rate * image.size / 8)]
            yield len(cut), tesk.decode_prefix(cut)[0]


class PillowCodec:
    """A codec of Pillow at several settings, each a dictionary of options of Image.save."""

    def __init__(self, kind, settings, needs_colours=False):
        self.kind, self.settings, self.needs_colours = kind, settings, needs_colours

    def coded(self, image):
        picture = Image.fromarray(image)
        picture = picture.convert("RGB") if self.needs_colours else picture
        for options in self.settings(image):
            file = io.BytesIO()
            picture.save(file, self.kind, **options)
            yield file.tell(), numpy.asarray(Image.open(file).convert("L" if image.ndim == 2 else "RGB"))


class ProgramCodec:
    """Two programs that read and write PGM and PPM; `commands` gives their arguments for a setting and three files."""

    def __init__(self, suffix, settings, commands):
        self.suffix, self.settings, self.commands = suffix, settings, commands

    def coded(self, image):
        with tempfile.TemporaryDirectory() as folder:
            suffix = "pgm" if image.ndim == 2 else "ppm"
            original, back = (Path(folder) / f"{name}.{suffix}" for name in ("original", "back"))
            Image.fromarray(image).save(original)
            for setting in self.settings:
                stream = Path(folder) / f"stream.{self.suffix}"
                for command in self.commands(setting, original, stream, back):
                    quietly(*command)
                yield stream.stat().st_size, numpy.asarray(Image.open(back))


def quietly(*command):
    """Raises: CalledProcessError where the program fails."""
    subprocess.run([*map(str, command)], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def libjxl_commands(distance, original, stream, back):
    """At distance 0 it is lossless. One thread."""
    yield "cjxl", original, stream, "-d", distance, "-e", 7, "--num_threads=0", "--quiet"
    yield "djxl", stream, back, "--num_threads=0", "--quiet"


def openjph_commands(step, original, stream, back):
    yield "ojph_compress", "-i", original, "-o", stream, "-reversible", "false", "-qstep", step
    yield "ojph_expand", "-i", stream, "-o", back


def jpeg2000_settings(irreversible):
    """Sizes are given as divisors of the raw size."""
    def settings(image):
        for rate in RATES:
            yield {"irreversible": irreversible, "mct": int(image.ndim == 3),
                   "quality_mode": "rates", "quality_layers": [8 / rate]}  # fmt: skip

    return settings


def jpeg_settings(image):
    """Colours at half of the sides, and at all of them."""
    for quality in QUALITIES:
        for subsampling in (2, 0) if image.ndim == 3 else (0,):
            yield {"quality": quality, "subsampling": subsampling, "optimize": True}


def webp_settings(_image):
    return ({"quality": quality} for quality in QUALITIES)


def lossy_codecs():
    """Returns: the codecs by their names in tables and curves."""
    return {
        "tesk": Tesk(),
        "OpenJPEG 5/3": PillowCodec("JPEG2000", jpeg2000_settings(False)),
        "OpenJPEG 9/7": PillowCodec("JPEG2000", jpeg2000_settings(True)),
        "OpenJPH 9/7": ProgramCodec("j2c", STEPS, openjph_commands),
        "libjxl": ProgramCodec("jxl", DISTANCES, libjxl_commands),
        "WebP": PillowCodec("WEBP", webp_settings, needs_colours=True),
        "JPEG": PillowCodec("JPEG", jpeg_settings),
    }


def package_version(package):
    """Returns: the version of a package of Debian, for programs that do not tell theirs."""
    query = ["dpkg-query", "--show", "--showformat=${Version}", package]
    return subprocess.run(query, check=True, text=True, stdout=subprocess.PIPE).stdout


def codec_versions():
    return {
        "tesk": tesk.__version__,
        "OpenJPEG": features.version("jpg_2000"),
        "OpenJPH": package_version("openjph-tools"),
        "libjxl": package_version("libjxl-tools"),
        "libwebp": features.version("webp"),
        "libjpeg-turbo": features.version("libjpeg_turbo") or features.version("jpg"),
        "Pillow": Image.__version__,
    }
