"""Chunks that are not what was written are errors, never a picture, and never the end of the process."""

import struct

import h5py
import numpy as np
import pytest
from case import create, path, pictures  # noqa: F401

ARRAY = pictures((64, 48), "<u2")
OTHER = pictures((48, 64), "<u2")


def make_file(path, **how):
    """Returns: the stream of the chunk of "d", in which ARRAY is."""
    with h5py.File(path, "w") as file:
        create(file, "d", ARRAY.shape, "<u2", ARRAY.shape, **how)[...] = ARRAY
        create(file, "other", OTHER.shape, "<u2", OTHER.shape)[...] = OTHER
        file.flush()
        return file["d"].id.read_direct_chunk((0, 0))[1]


def reads(path, chunk=None):
    """Reads "d", with another chunk where one is given. Returns: the array, None after an error."""
    with h5py.File(path, "a") as file:
        if chunk is not None:
            file["d"].id.write_direct_chunk((0, 0), chunk)
    with h5py.File(path) as file:
        try:
            return file["d"][...]
        except OSError:
            return None


def test_what_was_written_is_read(path):
    stream = make_file(path)
    np.testing.assert_array_equal(reads(path), ARRAY)
    np.testing.assert_array_equal(reads(path, stream), ARRAY)


def test_cut_chunks(path):
    stream = make_file(path)
    for length in [*range(1, 60), *range(60, len(stream) - 2, 97), len(stream) - 3]:
        assert reads(path, stream[:length]) is None, length


@pytest.mark.parametrize("behind", [b"\0", b"\0" * 4, b"x" * 100000])
def test_oversized_chunks(path, behind):
    stream = make_file(path)
    assert reads(path, stream + behind) is None
    assert reads(path, stream + stream) is None


def test_swapped_chunks(path):
    make_file(path)
    with h5py.File(path) as file:
        other = file["other"].id.read_direct_chunk((0, 0))[1]
    assert reads(path, other) is None


def test_foreign_chunks(path):
    stream = make_file(path)
    for chunk in (ARRAY.tobytes(), b"TK30", b"\0" * 16, stream[1:], stream[:16] * 9):
        assert reads(path, chunk) is None


@pytest.mark.parametrize("place", range(16))
def test_damaged_headers(path, place):
    """What is left may come back: the bits, which say nothing about the samples of a whole stream."""
    stream = bytearray(make_file(path))
    for bit in range(8):
        stream[place] ^= 1 << bit
        back = reads(path, bytes(stream))
        assert back is None or (back == ARRAY).all(), (place, bit)
        stream[place] ^= 1 << bit


def test_fletcher32_finds_every_flipped_bit(path):
    stored = make_file(path, fletcher32=True)
    np.testing.assert_array_equal(reads(path), ARRAY)
    for place in [*range(0, len(stored), 41), *range(len(stored) - 6, len(stored))]:
        damaged = bytearray(stored)
        damaged[place] ^= 1 << place % 8
        assert reads(path, bytes(damaged)) is None, place


@pytest.mark.parametrize("values", [
    (2, 2, 48, 64, 0, 0), (1, 1, 48, 64, 0, 0), (1, 3, 48, 64, 0, 0), (1, 2, 64, 48, 0, 0), (1, 2, 48, 63, 0, 0),
    (1, 2, 65535, 65535, 0, 0), (1, 2, 0, 0, 0, 0), (1, 2, 2**32 - 1, 64, 0, 0), (1, 2, 48, 64, 99, 0),
    (1, 2, 48, 64, 0, 4), (1, 0, 48, 64, 0, 0)])
def test_damaged_values(path, values):
    make_file(path)
    content, known = path.read_bytes(), struct.pack("<6I", 1, 2, 48, 64, 0, 0)
    assert content.count(known) == 1
    path.write_bytes(content.replace(known, struct.pack("<6I", *values)))
    assert reads(path) is None
