#!/usr/bin/env python3
"""Compares trailers as tesk_trailer.py writes them with the page and with tesk-info.

    check_trailer.py TESK_INFO TRAILER.MD

The example of the page is read, written again, and damaged. The golden streams that restore their
image do so with a trailer behind them, which tesk-info knows.
"""

import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

import tesk_decode
import tesk_trailer
from check_golden import GOLDEN

LARGEST = 100_000  # bytes of a raw image that are worth the time
BOXES = [(b"desc", "Ein Bär".encode()), (b"ones", b"\xff" * 40), (b"more", b"")]


def require(holds, what):
    if not holds:
        sys.exit(f"WRONG: {what}")


def example_of(page):
    """The bytes of the lines that begin with their place, each of which must be right."""
    example = b""
    for place, digits in re.findall(r"^ ?(\d+)  ((?:[0-9a-f]{2} )+) ", page.read_text(), re.M):
        require(int(place) == len(example), f"{place} in {page}")
        example += bytes.fromhex(digits)
    return example


def info(program, file):
    """The document of tesk-info about a file, and its exit status."""
    with tempfile.NamedTemporaryFile() as named:
        named.write(file)
        named.flush()
        run = subprocess.run([program, "--check", "--json", named.name], capture_output=True)
    return json.loads(run.stdout), run.returncode


def check_info(program, file, boxes):
    document, status = info(program, file)
    require(status == 0 and document["status"] == "complete", "tesk-info finds damage")
    named = [(box["name"].encode(), box["bytes"]) for box in document["trailer"]["boxes"]]
    require(named == [(name, len(data)) for name, data in boxes], "tesk-info finds other boxes")


def is_found(program, file):
    """Whether a damaged file is known as one by both."""
    try:
        if tesk_trailer.read(file)[1]:
            return False
    except tesk_trailer.NoTrailer:
        pass
    return info(program, file)[1] != 0


def check_example(program, example):
    boxes, is_right = tesk_trailer.read(example)
    stream = example[:19]
    require(is_right and [name for name, _ in boxes] == [b"desc", b"res "], "the example")
    require(stream + tesk_trailer.write(stream, boxes) == example, "the example is written otherwise")
    check_info(program, example, boxes)
    for place in range(4, len(example)):
        damaged = bytearray(example)
        damaged[place] ^= 1 << place % 8
        require(is_found(program, bytes(damaged)), f"damage at {place}")


def exact_streams():
    """Stream and image of the golden streams that restore it."""
    for path in sorted(GOLDEN.glob("*.c.tk")):
        raw = path.with_name(path.name.replace(".c.tk", ".raw"))
        if raw.exists() and raw.stat().st_size < LARGEST:
            stream, image = path.read_bytes(), raw.read_bytes()
            if tesk_decode.decode(stream) == (tesk_decode.COMPLETE, image):
                yield path.name, stream, image


def main():
    program = sys.argv[1]
    check_example(program, example_of(Path(sys.argv[2])))
    count = 0
    for name, stream, image in exact_streams():
        file = stream + tesk_trailer.write(stream, BOXES)
        require(tesk_decode.decode(file) == (tesk_decode.COMPLETE, image), f"{name}: other pixels")
        require(tesk_trailer.read(file) == (BOXES, True), f"{name}: other boxes")
        check_info(program, file, BOXES)
        count += 1
    require(count > 12, f"only {count} streams restore their image")
    print(f"the example, and {count} streams with trailers")


if __name__ == "__main__":
    main()
