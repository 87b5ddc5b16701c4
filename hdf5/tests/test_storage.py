"""What is in a file: optional and mandatory filters, chunks past the filter, and by hand."""

import os
import subprocess
import sys

import h5py
import numpy as np
import pytest
from case import FILTER, create, decoded_by_tool, made_by_tool, noise, path, pictures, stored  # noqa: F401


def test_the_filter_is_known():
    assert h5py.h5z.filter_avail(FILTER)
    assert h5py.h5z.get_filter_info(FILTER) == h5py.h5z.FILTER_CONFIG_ENCODE_ENABLED | h5py.h5z.FILTER_CONFIG_DECODE_ENABLED


@pytest.mark.parametrize("dtype", ["u1", "<i2"])
def test_noise_is_stored_past_an_optional_filter_and_as_a_longer_stream_by_a_mandatory_one(path, dtype):
    array = noise((100, 100), dtype)
    for mandatory in (False, True):
        with h5py.File(path, "w") as file:
            create(file, "d", array.shape, dtype, array.shape, mandatory=mandatory)[...] = array
        back, size, past = stored(path)
        np.testing.assert_array_equal(back, array)
        assert past == (0 if mandatory else 1)
        assert size > array.nbytes if mandatory else size == array.nbytes
        assert size < 1.25 * array.nbytes


def test_streams_of_the_tool_are_chunks(path, tmp_path):
    frames = pictures((3, 60, 80), "<u2")
    with h5py.File(path, "w") as file:
        data = create(file, "d", frames.shape, "<u2", (1, 60, 80))
        for i, frame in enumerate(frames):
            data.id.write_direct_chunk((i, 0, 0), made_by_tool(tmp_path, frame, 16))
    np.testing.assert_array_equal(stored(path)[0], frames)


def test_chunks_are_streams_of_the_tool(path, tmp_path):
    frames = pictures((3, 60, 80), "<u2")
    with h5py.File(path, "w") as file:
        data = create(file, "d", frames.shape, "<u2", (1, 60, 80), (16,))
        data[...] = frames
        file.flush()
        for i, frame in enumerate(frames):
            mask, stream = data.id.read_direct_chunk((i, 0, 0))
            assert mask == 0 and stream == made_by_tool(tmp_path, frame, 16)
            assert decoded_by_tool(tmp_path, stream) == frame.tobytes()


def test_a_mask_marks_a_chunk_of_samples(path):
    frames = noise((2, 60, 80), "<u2")
    with h5py.File(path, "w") as file:
        data = create(file, "d", frames.shape, "<u2", (1, 60, 80))
        data.id.write_direct_chunk((0, 0, 0), frames[0].tobytes(), filter_mask=1)
        data[1] = frames[1]
    back, _, past = stored(path)
    np.testing.assert_array_equal(back, frames)
    assert past == 1


def test_the_values_in_the_file(path):
    with h5py.File(path, "w") as file:
        for name, dtype, values, found in (("a", "u1", (), (1, 1, 30, 20, 0, 0)), ("b", "<i2", (0, 2), (1, 2, 30, 20, 0, 3)),
                                           ("c", "<u2", (12,), (1, 2, 30, 20, 12, 0)), ("d", "i1", (8,), (1, 1, 30, 20, 8, 1))):
            data = create(file, name, (20, 30), dtype, (20, 30), values)
            assert data.id.get_create_plist().get_filter(0)[:3] == (FILTER, 0, found)


@pytest.mark.parametrize("mandatory", [True, False])
def test_fletcher32_stands_behind_the_stream(path, mandatory):
    array = pictures((60, 80), "<u2")
    with h5py.File(path, "w") as file:
        create(file, "d", array.shape, "<u2", array.shape, mandatory=mandatory, fletcher32=True)[...] = array
        create(file, "bare", array.shape, "<u2", array.shape)[...] = array
        file.flush()
        stream, bare = (file[name].id.read_direct_chunk((0, 0))[1] for name in ("d", "bare"))
        assert stream[:-4] == bare
    np.testing.assert_array_equal(stored(path)[0], array)


def test_chunks_that_are_not_compared_are_the_same(path):
    array = pictures((200, 300), "<u2")
    with h5py.File(path, "w") as file:
        for name, values in (("d", ()), ("unverified", (0, 2))):
            create(file, name, array.shape, "<u2", array.shape, values)[...] = array
        file.flush()
        assert file["d"].id.read_direct_chunk((0, 0)) == file["unverified"].id.read_direct_chunk((0, 0))


def test_without_the_plugin_the_filter_is_named(path, tmp_path):
    array = pictures((60, 80), "<u2")
    with h5py.File(path, "w") as file:
        create(file, "d", array.shape, "<u2", array.shape)[...] = array
    done = subprocess.run([sys.executable, "-c", "import h5py, sys; h5py.File(sys.argv[1])['d'][...]", path], text=True,
                          stderr=subprocess.PIPE, env=dict(os.environ, HDF5_PLUGIN_PATH=str(tmp_path)))
    assert done.returncode == 1 and "filter 'tesk: lossless pictures' is not registered" in done.stderr


def test_the_plugin_shows_what_hdf5_looks_for_and_nothing_else():
    folder = os.environ["HDF5_PLUGIN_PATH"]
    symbols = subprocess.run(["nm", "-D", "--defined-only", f"{folder}/libh5tesk.so"], text=True, check=True,
                             stdout=subprocess.PIPE).stdout
    assert sorted(line.split()[2] for line in symbols.splitlines()) == ["H5PLget_plugin_info", "H5PLget_plugin_type"]
    assert os.listdir(folder) == ["libh5tesk.so"]
