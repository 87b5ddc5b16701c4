#!/usr/bin/env python3
"""Compares tesk_decode.py with the tool on prefixes, damaged streams and headers, and made ones.

    check_tool.py TOOL

Which streams are taken is random with a fixed seed, so that every run takes the same ones.
"""

import random
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

import tesk_decode
from check_golden import GOLDEN, decode
from made_streams import made_stream

SEED = 20261121
STREAMS = (
    "g8_photo_64x64.c.tk",
    "g8_photo_3x100.c.tk",
    "g8_flat_5x5.c.tk",
    "g16_noise16_32x32.c.tk",
    "g16_photo12_64x64.C_0.2.tk",
    "rgb_noise_16x16.c.tk",
    "rgb_photo_33x65.c.tk",
)
PREFIXES = 8  # of each stream, besides those that end in or next to the header
DAMAGED = 12  # of each stream
MADE = 300
HEADER_LENGTHS = (0, 3, 4, 5, 7, 9, 12, 16, 17, 18)
WORDS = {"d": "file", "dc": "memory"}

# Offset in the header and value: magic, bytes and bits per pixel, sides, reserved bytes.
HEADER_CHANGES = (
    [(0, 0), (3, 0xFF), (4, 0), (4, 4)]
    + [(4, bytes_per_pixel) for bytes_per_pixel in (1, 2, 3)]
    + [(5, bits) for bits in (0, 1, 7, 10, 11, 12, 13, 16, 31, 32, 33, 255)]
    + [(6, 0), (6, 1), (6, 3), (8, 0), (8, 2), (8, 5), (10, 0xFF), (15, 0xFF)]
)


def with_byte(stream, offset, value):
    return stream[:offset] + bytes([value]) + stream[offset + 1 :]


def with_flipped_bits(stream, dice):
    """Few bits flipped, mostly at the front, where more hangs on them."""
    damaged = bytearray(stream)
    first = 8 * tesk_decode.HEADER_BYTES
    for _ in range(dice.choice((1, 1, 2, 5))):
        last = 8 * (len(stream) if dice.random() < 0.5 else min(len(stream), 60))
        bit = dice.randrange(first, last)
        damaged[bit // 8] ^= 1 << bit % 8
    return bytes(damaged)


def variants(stream, dice):
    """A name and a stream for each thing that is done to a stream."""
    for length in HEADER_LENGTHS:
        yield f"{length} bytes", stream[:length]
    for _ in range(PREFIXES):
        length = dice.randrange(tesk_decode.HEADER_BYTES, len(stream))
        yield f"{length} bytes", stream[:length]
    for i in range(DAMAGED):
        yield f"damage {i}", with_flipped_bits(stream, dice)
    for offset, value in HEADER_CHANGES:
        yield f"byte {offset} = {value}", with_byte(stream, offset, value)


def all_streams(dice):
    for name in STREAMS:
        for what, stream in variants((GOLDEN / name).read_bytes(), dice):
            yield f"{name}, {what}", stream
    for i in range(MADE):
        stream = made_stream(dice)
        yield f"made {i}: {stream.hex()}", stream


def exit_status(result, word, stream):
    """Of the tool, by section 13.4."""
    if result != tesk_decode.NO_IMAGE or word == "dc":
        return 0
    unknown_samples = stream[4:5] not in (b"\1", b"\2", b"\3")
    return 0 if stream[:4] == tesk_decode.MAGIC and unknown_samples else 1


def run(tool, word, stream, folder):
    """The tool's exit status and image."""
    source, image = folder / "stream", folder / "image"
    source.write_bytes(stream)
    image.write_bytes(b"")
    call = subprocess.run([tool, word, source, image], capture_output=True, check=False)
    return call.returncode, image.read_bytes()


def main():
    tool = Path(sys.argv[1]).resolve()
    dice = random.Random(SEED)
    wrong = 0
    results = Counter()
    with tempfile.TemporaryDirectory() as folder:
        for name, stream in all_streams(dice):
            for word, profile in WORDS.items():
                result, image = decode(stream, profile)
                expected = exit_status(result, word, stream), image
                results[result] += 1
                if run(tool, word, stream, Path(folder)) != expected:
                    wrong += 1
                    print(f"WRONG: {word} {name}: not as the tool")
    counts = ", ".join(f"{count} of result {result}" for result, count in sorted(results.items()))
    print(f"{sum(results.values())} compared: {counts}; {wrong} wrong")
    return 0 if len(results) == 3 and wrong == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
