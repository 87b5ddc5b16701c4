"""What the tests of the filter share. HDF5_PLUGIN_PATH leads to the plugin, TESK is the program tesk."""

import os
import subprocess

import h5py
import numpy as np
import pytest

FILTER = 32799


def pictures(shape, dtype, seed=1):
    """Returns: an array that looks like pictures: slow waves and some noise, of signed types around 0."""
    random = np.random.default_rng(seed)
    dtype = np.dtype(dtype)
    top = 120 if dtype.itemsize == 1 else 3000
    waves = sum(np.sin(np.arange(n) / 9).reshape([-1 if a == axis else 1 for a in range(len(shape))])
                for axis, n in enumerate(shape))
    values = top * (0.5 + waves / (2 * len(shape))) + random.normal(0, 2, shape)
    values = np.clip(values, 0, None) - (top // 2 if dtype.kind == "i" else 0)
    return values.astype(dtype)


def noise(shape, dtype, seed=2):
    info = np.iinfo(dtype)
    return np.random.default_rng(seed).integers(info.min, info.max, shape, dtype=dtype, endpoint=True)


def create(file, name, shape, dtype, chunks, values=(), mandatory=True, fletcher32=False, **more):
    """As create_dataset, whose filters are optional, but a mandatory one."""
    if not mandatory:
        return file.create_dataset(name, shape, dtype, chunks=chunks, compression=FILTER, compression_opts=values,
                                   fletcher32=fletcher32, **more)
    plan = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    plan.set_chunk(chunks)
    plan.set_filter(FILTER, 0, values)
    if fletcher32:
        plan.set_fletcher32()
    h5py.h5d.create(file.id, name.encode(), h5py.h5t.py_create(np.dtype(dtype)),
                    h5py.h5s.create_simple(shape), plan)
    return file[name]


def stored(path, name="d"):
    """Opens a file anew. Returns: the array; the bytes of its chunks; how many chunks went past the filter."""
    with h5py.File(path) as file:
        data = file[name]
        chunks = [data.id.get_chunk_info(i) for i in range(data.id.get_num_chunks())]
        return data[...], sum(chunk.size for chunk in chunks), sum(chunk.filter_mask != 0 for chunk in chunks)


def tesk(*words):
    """Runs the tool, which has the runtime of a sanitizer inside where there is one."""
    environment = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
    subprocess.run([os.environ["TESK"], *map(str, words)], check=True, stdout=subprocess.DEVNULL, env=environment)


def decoded_by_tool(folder, stream):
    (folder / "chunk.tk").write_bytes(stream)
    tesk("d", folder / "chunk.tk", folder / "chunk.raw")
    return (folder / "chunk.raw").read_bytes()


def made_by_tool(folder, array, bits):
    """Returns: the stream of an array of two axes."""
    array.tofile(folder / "picture.raw")
    tesk("c", folder / "picture.raw", array.itemsize, bits, array.shape[1], array.shape[0], folder / "picture.tk")
    return (folder / "picture.tk").read_bytes()


@pytest.fixture
def path(tmp_path):
    return tmp_path / "file.h5"
