#!/usr/bin/env python3
"""Records a camera into HDF5, a chunk for each frame, without the filter plugin: `record_hdf5.py FILE [FRAMES]`.

The main thread only takes frames. A pool encodes them, one thread writes the streams in their order, and no more than
AHEAD frames are under way: where the disk is too slow, frames are taken later, and memory stays as it is."""

import collections
import os
import sys
import time
import zlib
from concurrent.futures import ThreadPoolExecutor

import h5py
import numpy
import tesk
import tesk.hdf5

AHEAD = 32
SHAPE = (2048, 2048)
PROCESSORS = len(os.sched_getaffinity(0))
NOISE = numpy.random.default_rng(1).poisson(400, SHAPE).astype("uint16")
SHOWN = [numpy.roll(NOISE, 97 * number) for number in range(8)]


def camera(number):
    """A simulated one. The memory of a frame may be used again when its stream is there."""
    return SHOWN[number % len(SHOWN)]


def encode(frame):
    """Returns: a checksum and the stream of a frame."""
    # Not verified: that takes about twice as long, and the camera does not wait. verify() does it.
    return zlib.crc32(frame), tesk.encode(frame, bits=16, verify=False)


def record(dataset):
    """Returns: the bytes of all streams, and the checksums of the frames."""
    waiting, done = collections.deque(), []

    def write(number, encoded):
        checksum, stream = encoded.result()
        dataset.id.write_direct_chunk((number, 0, 0), stream)
        return len(stream), checksum

    with ThreadPoolExecutor(PROCESSORS) as encoders, ThreadPoolExecutor(1) as writer:
        for number in range(len(dataset)):
            if len(waiting) == AHEAD:
                done.append(waiting.popleft().result())
            waiting.append(writer.submit(write, number, encoders.submit(encode, camera(number))))
        done += [written.result() for written in waiting]
    sizes, checksums = zip(*done)
    return sum(sizes), checksums


def verify(dataset, checksums):
    """Raises: ValueError for a frame that is not what the camera showed."""

    def compare(number):
        if zlib.crc32(tesk.hdf5.read_chunk(dataset, (number, 0, 0))[0]) != checksums[number]:
            raise ValueError(f"frame {number} is not what the camera showed")

    with ThreadPoolExecutor(PROCESSORS) as pool:
        list(pool.map(compare, range(len(dataset))))


def timed(words, work, dataset, *arguments):
    began = time.perf_counter()
    result = work(dataset, *arguments)
    rate = len(dataset) / (time.perf_counter() - began)
    print(f"{words}: {len(dataset)} frames, {rate:.0f} frames/s, {rate * SHOWN[0].nbytes / 1e6:.0f} MB/s")
    return result


def main(path, frames=200):
    with h5py.File(path, "x") as file:
        # Names the filter, so that readers with the plugin see an ordinary dataset.
        dataset = tesk.hdf5.create_dataset(file, "frames", (int(frames), *SHAPE), "uint16", (1, *SHAPE))
        total, checksums = timed("recorded", record, dataset)
        print(f"{dataset.nbytes / total:.2f} times smaller")
    with h5py.File(path, "r") as file:
        timed("read back, all equal", verify, file["frames"], checksums)


if __name__ == "__main__":
    main(*sys.argv[1:])
