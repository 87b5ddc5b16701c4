"""Figures that are made up, and the modules that are tested."""

import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(SOURCE / "bench/tables"), str(SOURCE / "bench/report")]

from figure_file import program  # noqa: E402, F401


def codec(name, compress, decompress, bits=4):
    """Of a picture of 1000 samples; times in ns per sample."""
    return {"name": name, "streamBytes": bits * 125, "compressSeconds": compress * 1e-6, "decompressSeconds": decompress * 1e-6}


def picture(group, name, kind, codecs, level="avx2"):
    return {"level": level, "group": group, "name": name, "kind": kind, "width": 100, "height": 10,
            "samples": 1000, "codecs": codecs}  # fmt: skip


def two_photographs():
    """tesk takes 2 and 8 ns for two photographs, another codec 10 and 80, and one refuses; all of it in gray8."""
    refusal = {"name": "WebP", "refusal": "has 8 bits at most"}
    pictures = [
        picture("photographs", name, "gray8",
                [codec("tesk", ns, 2), codec("tesk, unverified", ns / 2, 2), codec("OpenJPH", other, 6), refusal,
                 codec("memcpy", 0.1, 0.1, 8)])
        for name, ns, other in (("a", 2, 10), ("b", 8, 80))]  # fmt: skip
    # Lower levels have no other codecs.
    lower = [picture("photographs", name, "gray8", [codec("tesk", ns, 4), codec("tesk, unverified", ns, 4)], "scalar")
             for name, ns in (("a", 4), ("b", 16))]  # fmt: skip
    return {"peers": pictures + lower}
