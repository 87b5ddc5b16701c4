#!/usr/bin/env python3
"""Compares tesk with what people store image stacks with: `compare.py [ROUNDS]`. Prints Markdown.

One thread, memory to memory. In each round every codec encodes and decodes each stack, one after another, so that
other work on the machine hits all of them. The figures are the least processor time of all rounds."""

import os

# Before libraries read it.
os.environ["OMP_NUM_THREADS"] = "1"

import datetime  # noqa: E402
import platform  # noqa: E402
import sys  # noqa: E402
import time  # noqa: E402
from dataclasses import dataclass, field  # noqa: E402
from importlib.metadata import PackageNotFoundError, version  # noqa: E402

import numpy  # noqa: E402
import tesk  # noqa: E402
from numcodecs import blosc  # noqa: E402
from peers import peers  # noqa: E402
from PIL import features  # noqa: E402
from stacks import stacks  # noqa: E402


@dataclass
class Figures:
    """What one codec does with one stack."""

    size_bytes: int = 0
    encode_seconds: list = field(default_factory=list)
    decode_seconds: list = field(default_factory=list)


def timed(work):
    began = time.process_time()
    result = work()
    return result, time.process_time() - began


def measure(codec, images, figures):
    """Adds a round to the figures. Raises: ValueError where an image does not come back."""
    streams, seconds = timed(lambda: [codec.encode(image) for image in images])
    figures.encode_seconds.append(seconds)
    back, seconds = timed(lambda: [codec.decode(stream, image) for stream, image in zip(streams, images)])
    figures.decode_seconds.append(seconds)
    figures.size_bytes = sum(map(len, streams))
    if not all(numpy.array_equal(*pair) for pair in zip(images, back)):
        raise ValueError("an image does not come back")


def run(named_stacks, codecs, rounds):
    """Returns: figures by the names of stack and codec."""
    table = {(stack, name): Figures() for stack in named_stacks for name in codecs}
    for number in range(rounds):
        for stack, images in named_stacks.items():
            for name, codec in codecs.items():
                measure(codec, images, table[stack, name])
        print(f"round {number + 1} of {rounds}", file=sys.stderr)
    return table


def print_table(title, stack_names, codec_names, cell):
    print(f"\n{title}\n\n| stack | {' | '.join(codec_names)} |\n|---|{'---:|' * len(codec_names)}")
    for stack in stack_names:
        print(f"| {stack} | {' | '.join(cell(stack, name) for name in codec_names)} |")


def package_version(name):
    try:
        return version(name)
    except PackageNotFoundError:
        return "none"


def processor():
    with open("/proc/cpuinfo") as lines:
        fields = dict(line.split(":", 1) for line in lines if ":" in line)
    names = {name.strip(): value.strip() for name, value in fields.items()}
    return f"{names.get('model name', platform.machine())} (family {names.get('cpu family')}, model {names.get('model')})"


def print_machine(rounds, load_before):
    print(f"{datetime.date.today()}: {processor()}, {len(os.sched_getaffinity(0))} processors, {platform.platform()},")
    print(f"Python {platform.python_version()}, numpy {numpy.__version__}, tesk {tesk.__version__},", end=" ")
    print(f"numcodecs {package_version('numcodecs')} with Blosc {blosc.VERSION_STRING},", end=" ")
    print(f"bitshuffle {package_version('bitshuffle')}, zlib {features.version('zlib')},", end=" ")
    print(f"Pillow {package_version('pillow')} with OpenJPEG {features.version('jpg_2000')}.")
    loads = " to ".join(f"{load:.1f}" for load in (load_before, os.getloadavg()[0]))
    print(f"`bench/python/compare.py {rounds}`, load {loads}.")


def main(rounds=7):
    load_before = os.getloadavg()[0]
    named_stacks, codecs = dict(stacks()), peers()
    raw_bytes = {name: sum(image.nbytes for image in images) for name, images in named_stacks.items()}
    table = run(named_stacks, codecs, int(rounds))

    def speed(stack, seconds):
        return f"{raw_bytes[stack] / min(seconds) / 1e6:.0f}"

    print_machine(rounds, load_before)
    once = [name for name in codecs if name != "tesk, unverified"]
    print_table("How many times smaller:", named_stacks, once,
                lambda stack, name: f"{raw_bytes[stack] / table[stack, name].size_bytes:.2f}")  # fmt: skip
    print_table("Encoding, MB of samples in a second:", named_stacks, list(codecs),
                lambda stack, name: speed(stack, table[stack, name].encode_seconds))  # fmt: skip
    print_table("Decoding, MB of samples in a second:", named_stacks, once,
                lambda stack, name: speed(stack, table[stack, name].decode_seconds))  # fmt: skip


if __name__ == "__main__":
    main(*sys.argv[1:])
