#!/usr/bin/env python3
"""Folds folders of image files into one array of zarr 2, a chunk for each file, on a cluster of dask.

    fold_to_zarr.py scans.zarr FOLDER...                       processes of this machine
    fold_to_zarr.py scans.zarr FOLDER... --scheduler tcp://head:8786
    fold_to_zarr.py scans.zarr FOLDER... --verify              compare all chunks with their files, write nothing

TIFF, PNG, NPY and .tk, all of one shape and type. The group has the array `images` and, in the same order, the names
in `files`. Each chunk is read back and compared. The run may be ended at any moment, by SIGKILL too, and begun again:
chunks that are there are compared with their files and kept. One run at a time for each array."""

import argparse
import collections
import os
import sys
import tempfile
import time
from pathlib import Path

import dask
import numcodecs
import numpy
import tesk
import zarr
from dask.distributed import Client, KilledWorker, as_completed
from tesk.numcodecs import Tesk

# So many tasks are known to the scheduler at a time: a million at once would take memory and minutes.
TASKS_AHEAD = 1000


def read_png(path):
    from PIL import Image

    with Image.open(path) as image:
        if image.mode not in ("L", "RGB", "I", "I;16"):
            raise ValueError(f"a PNG of mode {image.mode}")
        # Pillow has 16 bits of gray in 32.
        return numpy.asarray(image).astype("uint16" if image.mode.startswith("I") else "uint8")


def read_tiff(path):
    import tifffile

    return tifffile.imread(path)


READERS = {
    ".npy": lambda path: numpy.load(path, allow_pickle=False),
    ".png": read_png,
    ".tif": read_tiff,
    ".tiff": read_tiff,
    ".tk": tesk.read,
}


def read(path):
    """Returns: the samples of a file, in the order of bytes that chunks have."""
    image = READERS[Path(path).suffix.lower()](path)
    return image.astype(image.dtype.newbyteorder("="), copy=False)


def open_images(store):
    """Workers register the codec themselves: an installed tesk is found by its name, a tesk on PYTHONPATH is not."""
    numcodecs.register_codec(Tesk)
    # A black image is a chunk like others. Without this it would be none, and look like one that is not done.
    return zarr.open_array(store, path="images", mode="r+", write_empty_chunks=True)


def has_chunk(images, number):
    return f"images/{number}" + ".0" * (images.ndim - 1) in images.chunk_store


def holds(images, number, image):
    """Returns: whether a chunk is there, can be decoded, and is the image."""
    try:
        return has_chunk(images, number) and numpy.array_equal(images[number], image)
    except ValueError:
        # tesk.Error is one.
        return False


def fold(number, path, store, only_verify):
    """The task of a worker. Done twice, or by two workers at once, it leaves the same chunk: zarr writes beside the
    place of a chunk and moves it there when it is complete.

    Returns: what became of the file, and words on it."""
    try:
        images, image = open_images(store), read(path)
        if (image.shape, image.dtype) != (images.shape[1:], images.dtype):
            return "failed", f"{path}: {image.dtype} of shape {image.shape}"
        if holds(images, number, image):
            return "kept", ""
        outcome = "differs" if has_chunk(images, number) else "missing"
        if only_verify:
            return outcome, path
        # Of a chunk that is named by slices nothing is read before: what is there may be damaged.
        images[number : number + 1] = image[numpy.newaxis]
        if not holds(images, number, image):
            return "failed", f"{path}: its chunk does not come back"
        return ("mended", path) if outcome == "differs" else ("written", "")
    except Exception as error:
        # Whatever is wrong with a file does not end the work on all others.
        return "failed", f"{path}: {type(error).__name__}: {error}"


def files_below(folders):
    """Returns: names, which begin with that of their folder, and paths, in the order of their chunks."""
    names, paths = [], []
    for folder in (Path(word).resolve() for word in folders):
        found = sorted(path for path in folder.rglob("*") if path.suffix.lower() in READERS and path.is_file())
        names += [str(path.relative_to(folder.parent)) for path in found]
        paths += [str(path) for path in found]
    return names, paths


def create(store, names, example):
    """The array of images comes last: where it is, the names are complete."""
    group = zarr.open_group(store, mode="a")
    as_objects = numpy.array(names, dtype=object)
    group.create_dataset("files", data=as_objects, object_codec=numcodecs.VLenUTF8(), overwrite=True)
    shape, chunks = (len(names), *example.shape), (1, *example.shape)
    codec = Tesk(signed=example.dtype.kind == "i")
    group.create_dataset("images", shape=shape, chunks=chunks, dtype=example.dtype, compressor=codec)


def prepare(store, names, paths, only_verify):
    """Raises: SystemExit where the array was begun with other files: their chunks have the places of these."""
    numcodecs.register_codec(Tesk)
    if not paths:
        sys.exit("there are no TIFF, PNG, NPY or .tk files")
    if not Path(store, "images/.zarray").exists():
        if only_verify:
            sys.exit(f"{store} has no array of images")
        create(store, names, read(paths[0]))
    folded = list(zarr.open_group(store, mode="r")["files"][:])
    if folded != names:
        sys.exit(f"{store} was made of other files: {len(folded)} then, {len(names)} now")


def remove_parts(store):
    """Removes what writers that were killed have left beside their chunks."""
    for part in Path(store, "images").glob("*.partial"):
        part.unlink(missing_ok=True)


class Tally:
    """How many files had each outcome; tells of those that want attention, and of the progress."""

    def __init__(self, file_count):
        self.counts, self.file_count, self.shown = collections.Counter(), file_count, 0.0

    def add(self, outcome, words):
        self.counts[outcome] += 1
        if words:
            print(f"\r{outcome}: {words}", file=sys.stderr)
        if time.monotonic() > self.shown + 0.2:
            self.shown = time.monotonic()
            print(f"\r{sum(self.counts.values())} of {self.file_count}", end="", file=sys.stderr, flush=True)


def run(client, store, paths, only_verify):
    """Returns: how many files had each outcome."""
    tally, suspects = Tally(len(paths)), []

    def submit(number):
        # Not pure: dask would take the task of an earlier run for this one.
        future = client.submit(fold, number, paths[number], store, only_verify, pure=False)
        future.number = number
        return future

    numbers = iter(range(len(paths)))
    under_way = as_completed([submit(number) for number, _ in zip(numbers, range(TASKS_AHEAD))])
    for future in under_way:
        try:
            tally.add(*future.result())
        except KilledWorker:
            suspects.append(future.number)
        for number, _ in zip(numbers, range(1)):
            under_way.add(submit(number))
    # Several workers have died with these, for lack of memory perhaps; some were only near the one to blame.
    for number in suspects:
        try:
            tally.add(*submit(number).result())
        except KilledWorker as error:
            tally.add("failed", f"{paths[number]}: {error}")
    print(file=sys.stderr)
    return tally.counts


def arguments():
    parser = argparse.ArgumentParser(description="Folds folders of image files into one array of zarr 2.")
    parser.add_argument("store", type=os.path.abspath, help="the folder of the array, on storage that all workers see")
    parser.add_argument("folders", nargs="+", help="folders of image files")
    parser.add_argument("--scheduler", help="the address of a cluster; without it, processes of this machine")
    parser.add_argument("-j", "--processes", type=int, default=len(os.sched_getaffinity(0)))
    parser.add_argument("--verify", action="store_true", help="compare all chunks with their files, write nothing")
    return parser.parse_args()


def connect(asked):
    if asked.scheduler:
        return Client(asked.scheduler)
    # Else workers of this machine leave a folder where they were started.
    dask.config.set({"temporary-directory": tempfile.gettempdir()})
    return Client(n_workers=asked.processes, threads_per_worker=1, dashboard_address=None)


def main():
    asked = arguments()
    names, paths = files_below(asked.folders)
    prepare(asked.store, names, paths, asked.verify)
    if not asked.verify:
        remove_parts(asked.store)
    with connect(asked) as client:
        counts = run(client, asked.store, paths, asked.verify)
    print(f"{len(paths)} files: " + ", ".join(f"{count} {outcome}" for outcome, count in sorted(counts.items())))
    sys.exit(bool(counts["failed"] + counts["differs"] + counts["missing"]))


# Workers of a local cluster import this file.
if __name__ == "__main__":
    main()
