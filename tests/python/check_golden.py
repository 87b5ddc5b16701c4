#!/usr/bin/env python3
"""Decodes every golden stream with tesk_decode.py and compares with golden/MANIFEST.tsv.

    check_golden.py

The columns of the list are explained in golden/check. The words d and D are the file profile, dc
is the memory profile; section 13.4 of docs/format.md gives their exit status for each result.
"""

import hashlib
import sys
from functools import lru_cache
from pathlib import Path

import tesk_decode

GOLDEN = Path(__file__).resolve().parent.parent / "golden"
PROFILES = {"d": "file", "D": "file", "dc": "memory"}
DITTO = '"'


def rows():
    """The rows of the list with the ditto marks filled in."""
    above = []
    for line in (GOLDEN / "MANIFEST.tsv").read_text().splitlines()[1:]:
        fields = line.split("\t")
        above = [above[i] if field == DITTO else field for i, field in enumerate(fields)]
        yield above


@lru_cache(maxsize=2)
def decode_image(stream, header):
    return tesk_decode.decode_image(stream, header)


def decode(stream, profile):
    """As tesk_decode.decode. The profiles differ in nothing but how they read the header, so that
    most streams need decoding only once.
    """
    header = tesk_decode.read_header(stream, profile)
    return decode_image(stream, header) if header else (tesk_decode.NO_IMAGE, b"")


def exit_status(result, mode):
    return 1 if result == tesk_decode.NO_IMAGE and mode != "dc" else 0


@lru_cache(maxsize=1)
def raw_image(name):
    """The raw file, or, as golden/check explains, what the complete stream decodes to."""
    file = GOLDEN / (name + ".raw")
    if file.exists():
        return file.read_bytes()
    return decode((GOLDEN / (name + ".c.tk")).read_bytes(), "file")[1]


def check(name, stream_bytes, mode, status, image_bytes, digest, against):
    """The differences from one row of the list, as texts."""
    stream = (GOLDEN / name).read_bytes()
    raw = raw_image(name.split(".")[0])
    result, image = decode(stream, PROFILES[mode])
    compared = {
        "stream bytes": (len(stream), int(stream_bytes)),
        "exit status": (exit_status(result, mode), int(status)),
        "image bytes": (len(image), int(image_bytes)),
        "hash": (hashlib.sha256(image).hexdigest()[: len(digest)], digest),
        "against the raw file": ("exact" if image == raw else "differs", against),
    }
    return [
        f"{what}: {got} instead of {want}"
        for what, (got, want) in compared.items()
        if got != want
    ]


def main():
    decoded = wrong = 0
    for name, _, stream_bytes, mode, *expected in rows():
        differences = check(name, stream_bytes, mode, *expected)
        decoded += 1
        wrong += bool(differences)
        for difference in differences:
            print(f"WRONG: {mode} {name}: {difference}")
    print(f"{decoded} decoded, {wrong} wrong")
    return 0 if decoded > 0 and wrong == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
