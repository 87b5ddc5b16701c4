"""Arrays come back, whatever their type, rank and chunks."""

import h5py
import numpy as np
import pytest
from case import FILTER, create, decoded_by_tool, noise, path, pictures, stored  # noqa: F401

TYPES = ["u1", "i1", "<u2", "<i2"]
SHAPES = [  # array, chunk
    ((100, 80), (100, 80)),
    ((100, 83), (32, 24)),  # chunks at the edges have other samples than those of the array
    ((7, 40, 50), (1, 40, 50)),
    ((7, 40, 50), (3, 16, 50)),
    ((2, 3, 20, 30), (1, 2, 20, 16)),
    ((2, 2, 2, 20, 30), (2, 1, 2, 10, 30)),
    ((60, 50, 1), (20, 50, 1)),  # axes of length 1 count nowhere
    ((60, 1, 50), (20, 1, 50)),
    ((50, 40, 2), (50, 40, 2)),
    ((70000, 5), (65535, 5)),
    ((3, 70000), (3, 65535)),
    ((2, 2), (2, 2)),
]


@pytest.mark.parametrize("mandatory", [True, False])
@pytest.mark.parametrize("shape, chunks", SHAPES)
@pytest.mark.parametrize("dtype", TYPES)
def test_arrays_come_back(path, dtype, shape, chunks, mandatory):
    for array in (pictures(shape, dtype), noise(shape, dtype), np.zeros(shape, dtype),
                  np.full(shape, np.iinfo(dtype).min, dtype), np.full(shape, np.iinfo(dtype).max, dtype)):
        with h5py.File(path, "w") as file:
            create(file, "d", shape, dtype, chunks, mandatory=mandatory)[...] = array
        back, _, _ = stored(path)
        assert back.dtype == array.dtype
        np.testing.assert_array_equal(back, array)


@pytest.mark.parametrize("shape, chunks, sides", [
    ((40, 50, 3), (40, 50, 3), (50, 40)), ((4, 40, 50, 3), (2, 40, 25, 3), (25, 80)),
    ((1, 40, 50, 3), (1, 40, 50, 3), (50, 40))])
def test_a_last_axis_of_three_is_colour(path, tmp_path, shape, chunks, sides):
    array = pictures(shape, "u1")
    with h5py.File(path, "w") as file:
        data = create(file, "d", shape, "u1", chunks)
        data[...] = array
        assert data.id.get_create_plist().get_filter(0)[2] == (1, 3, *sides, 0, 0)
    back, _, _ = stored(path)
    np.testing.assert_array_equal(back, array)


@pytest.mark.parametrize("shape, dtype", [((40, 50, 3), "i1"), ((40, 50, 3), "<u2"), ((400, 3), "u1")])
def test_other_last_axes_of_three_are_columns(path, shape, dtype):
    array = pictures(shape, dtype)
    with h5py.File(path, "w") as file:
        data = create(file, "d", shape, dtype, shape)
        data[...] = array
        assert data.id.get_create_plist().get_filter(0)[2][2] == 3
    np.testing.assert_array_equal(stored(path)[0], array)


def test_the_picture_of_a_chunk_has_all_axes_but_the_last_as_rows(path, tmp_path):
    array = pictures((4, 30, 40), "<u2")
    with h5py.File(path, "w") as file:
        data = create(file, "d", array.shape, "<u2", (2, 30, 40))
        data[...] = array
        file.flush()
        for first in (0, 2):
            mask, stream = data.id.read_direct_chunk((first, 0, 0))
            assert mask == 0
            assert decoded_by_tool(tmp_path, stream) == array[first:first + 2].tobytes()


def test_signed_samples_are_stored_from_their_lowest(path, tmp_path):
    array = pictures((30, 40), "<i2")
    with h5py.File(path, "w") as file:
        data = create(file, "d", array.shape, "<i2", array.shape)
        data[...] = array
        file.flush()
        raw = np.frombuffer(decoded_by_tool(tmp_path, data.id.read_direct_chunk((0, 0))[1]), "<u2")
    np.testing.assert_array_equal(raw.reshape(array.shape), array.astype("i4") + 32768)


def test_bits_are_found_or_declared(path):
    array = pictures((64, 64), "<u2") // 8  # 9 bits
    for values, bits in (((), 9), ((0,), 9), ((12,), 12), ((16, 2), 16), ((9, 0), 9)):
        with h5py.File(path, "w") as file:
            data = create(file, "d", array.shape, "<u2", array.shape, values)
            data[...] = array
            file.flush()
            assert data.id.read_direct_chunk((0, 0))[1][5] == bits


@pytest.mark.parametrize("bits", [1, 8, 11, 12, 15])
def test_samples_with_more_bits_than_declared_come_back(path, bits):
    for array in (pictures((64, 64), "<u2"), noise((64, 64), "<u2")):
        with h5py.File(path, "w") as file:
            create(file, "d", array.shape, "<u2", array.shape, (bits,))[...] = array
        np.testing.assert_array_equal(stored(path)[0], array)


def test_frames_are_appended(path):
    frames = pictures((11, 40, 50), "<u2")
    for frame in frames:
        with h5py.File(path, "a") as file:
            data = file.require_dataset("d", (0, 40, 50), "<u2", maxshape=(None, 40, 50), chunks=(4, 40, 50),
                                        compression=FILTER) if "d" not in file else file["d"]
            data.resize(len(data) + 1, axis=0)
            data[-1] = frame
    back, size, past = stored(path)
    np.testing.assert_array_equal(back, frames)
    assert past == 0 and size < frames.nbytes


@pytest.mark.parametrize("fill", [0, 7, 65535])
def test_fill_values_fill_the_rest(path, fill):
    with h5py.File(path, "w") as file:
        data = file.create_dataset("d", (5, 30, 40), "<u2", chunks=(2, 20, 32), maxshape=(None, None, None),
                                   compression=FILTER, compression_opts=(8,), fillvalue=fill)
        data[1, 3:6, 4:9] = 100
        data.resize((6, 50, 40))
    expected = np.full((6, 50, 40), fill)
    expected[1, 3:6, 4:9] = 100
    np.testing.assert_array_equal(stored(path)[0], expected)


def test_pictures_shrink(path):
    array = pictures((4, 256, 256), "<u2")
    with h5py.File(path, "w") as file:
        create(file, "d", array.shape, "<u2", (1, 256, 256), mandatory=False)[...] = array
    _, size, past = stored(path)
    assert past == 0 and size < 0.4 * array.nbytes


def test_another_array_takes_over_the_list_of_the_first(path):
    first, second = pictures((4, 40, 50), "<u2"), pictures((64, 64), "u1")
    with h5py.File(path, "w") as file:
        data = create(file, "first", first.shape, "<u2", (2, 40, 50), (8, 2))
        plan = data.id.get_create_plist()
        plan.set_chunk((64, 32))
        h5py.h5d.create(file.id, b"d", h5py.h5t.STD_U8LE, h5py.h5s.create_simple(second.shape), plan)
        file["d"][...] = second
        assert file["d"].id.get_create_plist().get_filter(0)[2] == (1, 1, 32, 64, 8, 2)
    np.testing.assert_array_equal(stored(path)[0], second)


def test_the_list_of_a_signed_array_serves_an_unsigned_one(path):
    array = pictures((64, 64), "<u2")
    with h5py.File(path, "w") as file:
        plan = create(file, "first", array.shape, "<i2", array.shape, (0, 2)).id.get_create_plist()
        h5py.h5d.create(file.id, b"d", h5py.h5t.STD_U16LE, h5py.h5s.create_simple(array.shape), plan)
        file["d"][...] = array
        assert file["d"].id.get_create_plist().get_filter(0)[2] == (1, 2, 64, 64, 0, 2)
    np.testing.assert_array_equal(stored(path)[0], array)
