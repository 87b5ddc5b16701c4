"""Measures what docs/comparison.md says of cut streams and of drawings."""

import io
import subprocess
import sys
import time

import machine
import numpy
import tesk
from drawings import drawings
from lossy_codecs import ProgramCodec, codec_versions, libjxl_commands, lossy_codecs
from PIL import Image
from quality import point

# Of the photographs of tools/bench-photographs those that did not come as JPEG files. JPEG finds its own blocks in these
# again: it loses next to nothing that was not lost before.
PHOTOGRAPHS = ("astronaut", "camera", "coffee", "ihc", "motorcycle")
SCENE = (600, 400)


def say(text):
    print(text, file=sys.stderr, flush=True)


def photographs(bench_photographs, folder, names):
    """Yields: kind, name and samples, as `tools/bench-photographs` makes them."""
    for name in names:
        with Image.open(bench_photographs.path_of(name, folder)) as image:
            for kind, bits, samples in bench_photographs.kinds(name, bench_photographs.middle(image)):
                if bits == 8:
                    yield kind, name, numpy.ascontiguousarray(samples)


def scenes(sample_image, folder):
    """Yields: the same of the generated picture, smaller than in other measurements."""
    columns, rows = SCENE
    for kind, shape in (("gray8", (rows, columns)), ("rgb8", (rows, columns, 3))):
        raw = folder / f"scene-{kind}.raw"
        subprocess.run([sample_image, *map(str, SCENE), raw, str(len(shape) * 2 - 3), "8"], check=True)
        yield kind, "generated", numpy.fromfile(raw, "u1").reshape(shape)


def curve(codec, image):
    """Returns: the points of a codec that lose something, the smallest first."""
    points = [point(image, size, back) for size, back in codec.coded(image)]
    return sorted(filter(None, points))


def curves(codecs, pictures):
    """Returns: a list of pictures, each with the points of each codec."""
    found = []
    for kind, name, image in pictures:
        began = time.monotonic()
        points = {codec_name: curve(codec, image) for codec_name, codec in codecs.items()}
        rows, columns = image.shape[:2]
        found.append({"name": name, "kind": kind, "width": columns, "height": rows, "points": points})
        say(f"{name}, {kind}: {time.monotonic() - began:.0f} s")
    return found


def same(image, back):
    if not numpy.array_equal(image, back):
        raise ValueError("an image does not come back")


def pillow_bytes(image, kind, **options):
    file = io.BytesIO()
    Image.fromarray(image).save(file, kind, **options)
    same(image, numpy.asarray(Image.open(file).convert("L" if image.ndim == 2 else "RGB")))
    return file.tell()


def libjxl_bytes(image):
    ((size, back),) = ProgramCodec("jxl", [0], libjxl_commands).coded(image)
    same(image, back)
    return size


def lossless_bytes(image):
    """Returns: bytes of the complete stream of each codec, which gave the image back."""
    stream = tesk.encode(image)
    same(image, tesk.decode(stream))
    return {
        "tesk": len(stream),
        "PNG": pillow_bytes(image, "PNG"),
        "WebP": pillow_bytes(image, "WEBP", lossless=True),
        "libjxl e7": libjxl_bytes(image),
        "OpenJPEG": pillow_bytes(image, "JPEG2000", irreversible=False, mct=int(image.ndim == 3)),
    }


def sizes_of_drawings():
    return [{"name": name, "samples": image.size, "width": image.shape[1], "height": image.shape[0],
             "planes": image.size // (image.shape[0] * image.shape[1]), "bytes": lossless_bytes(image)}
            for name, image in drawings().items()]  # fmt: skip


def everything(build, bench_photographs, folder, names):
    """Returns: what goes to bench/comparison.json, after some minutes."""
    pictures = [*photographs(bench_photographs, folder, names), *scenes(build / "tools/sample_image", folder)]
    return {**machine.describe(build), "versions": codec_versions(), "drawings": sizes_of_drawings(),
            "curves": curves(lossy_codecs(), pictures)}  # fmt: skip
