#!/usr/bin/env python3
"""Compares the reduced pictures of tesk_decode.py with those of the library, called directly.

    check_reduced.py LIBTESK.SO

The streams are those of check_tool.py, and all golden ones.
"""

import ctypes
import random
import sys
from collections import Counter
from pathlib import Path

import tesk_decode
from check_golden import GOLDEN
from check_tool import SEED, all_streams

RESULTS = {0: tesk_decode.COMPLETE, 1: tesk_decode.CUT, 3: tesk_decode.NO_IMAGE}
LARGEST = 100_000  # samples of a golden stream that are worth the time


class Codec:
    """A codec of the C interface."""

    def __init__(self, library):
        self.library = ctypes.CDLL(library)
        self.codec = ctypes.c_void_p()
        if self.library.tesk_create(None, ctypes.byref(self.codec)) != 0:
            raise MemoryError

    def reduce(self, stream, levels, size):
        """As tesk_decode.decode; size is that of the picture in bytes."""
        out = ctypes.create_string_buffer(size)
        status = self.library.tesk_decompress_reduced(
            self.codec,
            ctypes.c_char_p(stream),
            ctypes.c_size_t(len(stream)),
            ctypes.c_uint32(levels),
            out,
            ctypes.c_size_t(size),
            ctypes.c_size_t(0),
            None,
        )
        result = RESULTS[status]
        return result, b"" if result == tesk_decode.NO_IMAGE else out.raw


def picture_bytes(header, levels):
    width, height = (-(-side >> levels) for side in (header.width, header.height))
    return width * height * header.bytes_per_pixel


def golden_streams():
    for path in sorted(GOLDEN.glob("*.tk")):
        yield path.name, path.read_bytes()


def reducible(streams):
    """The streams that have an image with levels in the C interface, and its header."""
    for name, stream in streams:
        header = tesk_decode.read_header(stream, "memory")
        if header and stream[:4] == tesk_decode.MAGIC and header.levels > 0:
            if header.width * header.height * header.planes < LARGEST:
                yield name, stream, header


def main():
    codec = Codec(str(Path(sys.argv[1]).resolve()))
    dice = random.Random(SEED)
    wrong = 0
    results = Counter()
    for streams in (golden_streams(), all_streams(dice)):
        for name, stream, header in reducible(streams):
            for levels in range(1, header.levels + 1):
                expected = tesk_decode.decode(stream, "memory", levels)
                results[expected[0]] += 1
                if codec.reduce(stream, levels, picture_bytes(header, levels)) != expected:
                    wrong += 1
                    print(f"WRONG: 1 : {1 << levels} of {name}: not as the library")
    counts = ", ".join(f"{count} of result {result}" for result, count in sorted(results.items()))
    print(f"{sum(results.values())} compared: {counts}; {wrong} wrong")
    return 0 if len(results) == 3 and wrong == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
