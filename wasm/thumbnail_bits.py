#!/usr/bin/python3
"""What a thumbnail is worth that comes from the first bytes of a stream: `thumbnail_bits.py PHOTOGRAPH...`.

For each number of bits for each sample of the thumbnail: decibels against the thumbnail of the whole stream, the median
of all photographs, and in brackets what nine of ten have at least. Bytes are counted as wasm/package/thumbnail.mjs
does it. It needs the module tesk (build/dev/python), numpy and Pillow."""

import math
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "build/dev/python"))
import numpy as np
import tesk
from PIL import Image

SIDES = (128, 256, 512)
BITS = (1, 2, 3, 4, 6)
FIRST_BYTES = 4096


def decibels(picture, whole):
    error = ((picture.astype(float) - whole) ** 2).mean()
    return 10 * math.log10(255**2 / error) if error else math.inf


def reduction(image, side):
    reduce = 0
    while reduce < 5 and max(image.shape[:2]) > side << reduce:
        reduce += 1
    return reduce


def values(stream, reduce):
    """Returns: decibels for each number of bits."""
    whole = tesk.decode(stream, reduce=reduce)
    counts = (max(FIRST_BYTES, math.ceil(whole.size * bits / 8)) for bits in BITS)
    return [decibels(tesk.decode(stream[:count], reduce=reduce, partial=True), whole) for count in counts]


def pictures(path):
    """Yields: the image in gray, and in RGB if it has colours."""
    image = Image.open(path)
    yield "gray", np.asarray(image.convert("L"))
    if image.mode not in ("L", "I;16"):
        yield "RGB", np.asarray(image.convert("RGB"))


rows = {}
for path in sys.argv[1:]:
    for kind, image in pictures(path):
        stream = tesk.encode(image, verify=False)
        for side in SIDES:
            if reduction(image, side) > 0:
                rows.setdefault((kind, side), []).append(values(stream, reduction(image, side)))

print("| bits |", " | ".join(map(str, BITS)), "|")
for (kind, side), found in sorted(rows.items()):
    cells = (f"{np.median(column):.0f} ({np.quantile(column, 0.1):.0f})" for column in zip(*found))
    print(f"| {kind}, side {side} |", " | ".join(cells), f"|  {len(found)} photographs")
