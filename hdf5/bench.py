#!/usr/bin/env -S python3 -B
"""Measures the HDF5 filter beside others, as users meet them: h5py writes stacks into a file in memory and reads them
back. `bench.py [--rounds N] [PICTURES ...]` prints the tables of docs/hdf5.md.

HDF5_PLUGIN_PATH leads to the plugin of tesk and, behind a colon, to those of Debian: /usr/lib/x86_64-linux-gnu/hdf5/
serial/plugins, where the packages bitshuffle and hdf5-filter-plugin-blosc-serial put theirs. Real pictures come from
python3-skimage; what is not there is left out. Times are processor time, the least of several rounds."""

import argparse
import time

import h5py
import numpy as np

TESK = 32799
SIDE = 1024


def waves(random, count, low, high):
    """Returns: a plane of count blobs of any size."""
    y, x = np.mgrid[0:SIDE, 0:SIDE].astype("f4")
    plane = np.zeros((SIDE, SIDE), "f4")
    for _ in range(count):
        (cy, cx), size = random.uniform(0, SIDE, 2), random.uniform(low, high)
        plane += np.float32(random.uniform(0.1, 1)) * np.exp(-((y - cy) ** 2 + (x - cx) ** 2) / np.float32(2 * size**2))
    return plane


def fluorescence(random):
    """12 bits: cells on a dark ground, photons counted, a camera's offset and noise."""
    cells = waves(random, 60, 5, 60)
    frames = [random.poisson(20 + 900 * cells) + random.normal(100, 2, cells.shape) for _ in range(6)]
    return np.clip(np.round(frames), 0, 4095).astype("<u2"), (1, SIDE, SIDE)


def detector(random):
    """16 bits: rings of scattered light over some decades, photons counted."""
    y, x = np.mgrid[0:SIDE, 0:SIDE].astype("f4") - SIDE / 2.1
    r = np.hypot(y, x)
    mean = 30000 * np.exp(-r / 120) * (1.1 + np.cos(r / 11)) + 200
    return np.minimum([random.poisson(mean) for _ in range(6)], 65535).astype("<u2"), (1, SIDE, SIDE)


def tomography(random):
    """Signed, 11 bits: discs of tissue in air, noise that is not white."""
    body = np.full((SIDE, SIDE), -1000, "f4")
    y, x = np.mgrid[0:SIDE, 0:SIDE].astype("f4") / SIDE - 0.5
    for cy, cx, ry, rx, value in ((0, 0, .45, .38, 40), (.05, .12, .2, .1, -850), (.05, -.12, .2, .1, -850),
                                  (-.3, 0, .06, .06, 700), (.2, 0, .1, .2, 90)):
        body[((y - cy) / ry) ** 2 + ((x - cx) / rx) ** 2 < 1] = value
    noise = random.normal(0, 25, (6, SIDE, SIDE))
    noise = (noise + np.roll(noise, 1, 1) + np.roll(noise, 1, 2)) / 1.7
    return np.clip(body + noise, -1024, 1023).astype("<i2"), (1, SIDE, SIDE)


def labels(_):
    """Numbers of cells, constant over each."""
    y, x = np.mgrid[0:SIDE, 0:SIDE]
    plane = (y // 50 * 21 + (x + y // 9) // 50).astype("<u2")
    plane[(y % 50 - 25) ** 2 + (x % 50 - 25) ** 2 > 500] = 0
    return np.stack([plane] * 3), (1, SIDE, SIDE)


def counts(random):
    """Few photons: nearly all samples are 0."""
    return random.poisson(0.02, (3, SIDE, SIDE)).astype("<u2"), (1, SIDE, SIDE)


def photographs():
    from skimage import data
    return {"photograph, 8-bit gray": (data.camera(), (512, 512)),
            "photograph, RGB": (data.astronaut(), (512, 512, 3))}


def all_pictures():
    """Yields: a name, an array and its chunks."""
    made = {"fluorescence, 12 bits": fluorescence, "detector, 16 bits": detector, "CT, signed 11 bits": tomography,
            "labels": labels, "sparse counts": counts}
    for name, make in list(made.items())[:3]:
        yield name, *make(np.random.default_rng(1))
    try:
        for name, (array, chunks) in photographs().items():
            yield name, np.ascontiguousarray(array), chunks
    except ImportError:
        print("no photographs: python3-skimage is not there\n")
    for name, make in list(made.items())[3:]:
        yield name, *make(np.random.default_rng(1))


def all_filters():
    """Returns: how create_dataset is called, by the name of the filter."""
    filters = {"tesk": (TESK, ()), "tesk, unverified": (TESK, (0, 2)), "gzip 4, shuffle": ("gzip", 4), "lzf, shuffle": ("lzf", None),
               "bitshuffle, LZ4": (32008, (0, 2)), "Blosc-zstd 5, bitshuffle": (32001, (0, 0, 0, 0, 5, 2, 5))}
    there = {name: how for name, how in filters.items() if not isinstance(how[0], int) or h5py.h5z.filter_avail(how[0])}
    for name in filters.keys() - there.keys():
        print(f"There is no filter for: {name}")
    return {name: dict(compression=number, compression_opts=values, shuffle="shuffle" in name.split(" "))
            for name, (number, values) in there.items()}


def timed(work):
    started = time.process_time()
    result = work()
    return time.process_time() - started, result


def once(array, chunks, how):
    """Returns: seconds to write and to read, and the ratio."""
    with h5py.File("memory", "w", driver="core", backing_store=False, rdcc_nbytes=0) as file:
        def write():
            data = file.create_dataset("d", array.shape, array.dtype, chunks=chunks, **how)
            data[...] = array
            file.flush()
            return data
        seconds, data = timed(write)
        back = np.empty_like(array)
        reading, _ = timed(lambda: data.read_direct(back))
        assert (back == array).all()
        return seconds, reading, array.nbytes / data.id.get_storage_size()


def measure(array, chunks, how, rounds):
    """Returns: ratio, MB/s to write and to read."""
    results = [once(array, chunks, how) for _ in range(rounds)]
    megabytes = array.nbytes / 1e6
    return results[0][2], *(megabytes / min(result[i] for result in results) for i in (0, 1))


def cell(figures):
    return "{:.2f}, {:.0f} / {:.0f}".format(*figures)


def compare(filters, rounds, wanted):
    print(f"| | {' | '.join(filters)} |\n|---|{'---|' * len(filters)}")
    for name, array, chunks in all_pictures():
        if not wanted or any(word in name for word in wanted):
            cells = [cell(measure(array, chunks, how, rounds)) for how in filters.values()]
            print(f"| {name} | {' | '.join(cells)} |", flush=True)


def compare_chunks(rounds):
    array, _ = fluorescence(np.random.default_rng(1))
    shapes = [(1, side, side) for side in (32, 64, 128, 256, 512, 1024)] + [(6, 512, 512), (6, 64, 64)]
    print("\n| chunk | tesk |\n|---|---|")
    for chunks in shapes:
        figures = cell(measure(array, chunks, dict(compression=TESK), rounds))
        print(f"| {' x '.join(map(str, chunks))} | {figures} |", flush=True)


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--rounds", type=int, default=5)
    arguments.add_argument("pictures", nargs="*", help="parts of names; all without any, and chunk shapes")
    given = arguments.parse_args()
    compare(all_filters(), given.rounds, given.pictures)
    if not given.pictures:
        compare_chunks(given.rounds)


main()
