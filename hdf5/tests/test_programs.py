"""Other programs: those of HDF5, and two processes with one file."""

import subprocess
import sys

import h5py
import numpy as np
import pytest
from case import FILTER, create, noise, path, pictures, stored  # noqa: F401


def run(*words):
    return subprocess.run([str(word) for word in words], text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def test_h5dump_shows_the_samples_and_the_filter(path):
    with h5py.File(path, "w") as file:
        create(file, "d", (4, 5), "<u2", (4, 5))[...] = np.arange(20).reshape(4, 5) + 100
    done = run("h5dump", "-p", path)
    assert done.returncode == 0, done.stdout
    assert "FILTER_ID 32799" in done.stdout and "COMMENT tesk: lossless pictures" in done.stdout
    assert "(2,0): 110, 111, 112, 113, 114" in done.stdout


@pytest.mark.parametrize("words, values, flag", [
    ("UD=32799,0,0", (1, 2, 40, 30, 0, 0), 0), ("UD=32799,1,0", (1, 2, 40, 30, 0, 0), 1),
    ("UD=32799,0,1,12", (1, 2, 40, 30, 12, 0), 0), ("UD=32799,0,2,0,2", (1, 2, 40, 30, 0, 2), 0)])
def test_h5repack_brings_the_filter(path, tmp_path, words, values, flag):
    frames = pictures((5, 60, 80), "<u2")
    with h5py.File(path, "w") as file:
        file.create_dataset("d", data=frames, chunks=(1, 30, 40), compression="gzip")
    done = run("h5repack", "-f", words, path, tmp_path / "packed.h5")
    assert done.returncode == 0, done.stdout
    back, size, _ = stored(tmp_path / "packed.h5")
    np.testing.assert_array_equal(back, frames)
    assert size < 0.6 * frames.nbytes
    with h5py.File(tmp_path / "packed.h5") as file:
        assert file["d"].id.get_create_plist().get_filter(0)[:3] == (FILTER, flag, values)


def test_h5repack_changes_chunks_and_takes_the_filter_away(path, tmp_path):
    frames = pictures((5, 60, 80), "<u2")
    with h5py.File(path, "w") as file:
        create(file, "d", frames.shape, "<u2", (1, 30, 40), (12, 2))[...] = frames
    for words, found in ((["-l", "CHUNK=2x60x80"], (FILTER, 0, (1, 2, 80, 120, 12, 2))), (["-f", "NONE"], None)):
        done = run("h5repack", *words, path, tmp_path / "packed.h5")
        assert done.returncode == 0, done.stdout
        np.testing.assert_array_equal(stored(tmp_path / "packed.h5")[0] if found else
                                      h5py.File(tmp_path / "packed.h5")["d"][...], frames)
        with h5py.File(tmp_path / "packed.h5") as file:
            plan = file["d"].id.get_create_plist()
            assert (plan.get_filter(0)[:3] == found) if found else plan.get_nfilters() == 0


def test_h5repack_of_noise_succeeds(path, tmp_path):
    """Its filter is mandatory."""
    array = noise((60, 80), "<u2")
    with h5py.File(path, "w") as file:
        file.create_dataset("d", data=array, chunks=array.shape)
    assert run("h5repack", "-f", "UD=32799,0,0", path, tmp_path / "packed.h5").returncode == 0
    np.testing.assert_array_equal(stored(tmp_path / "packed.h5")[0], array)


def test_h5repack_leaves_as_they_are_what_tesk_does_not_hold_and_says_why(path, tmp_path):
    with h5py.File(path, "w") as file:
        file["d"] = np.zeros((60, 80))
        file["picture"] = pictures((60, 80), "<u2")
    done = run("h5repack", "-v", "--enable-error-stack", "-f", "UD=32799,0,0", path, tmp_path / "packed.h5")
    assert done.returncode == 0 and "these elements are floating-point numbers" in done.stdout
    assert "could not create dataset </d>. Applying original settings" in done.stdout
    with h5py.File(tmp_path / "packed.h5") as file:
        assert [file[name].id.get_create_plist().get_nfilters() for name in ("d", "picture")] == [0, 1]


READER = """
import hashlib, h5py, sys
for _ in range(5):
    with h5py.File(sys.argv[1]) as file:
        print(hashlib.sha256(file["d"][...].tobytes()).hexdigest(), flush=True)
"""


def test_two_processes_read(path):
    frames = pictures((20, 200, 200), "<u2")
    with h5py.File(path, "w") as file:
        create(file, "d", frames.shape, "<u2", (1, 200, 200))[...] = frames
    readers = [subprocess.Popen([sys.executable, "-c", READER, path], text=True, stdout=subprocess.PIPE)
               for _ in range(2)]
    outputs = [reader.communicate()[0].split() for reader in readers]
    assert [reader.returncode for reader in readers] == [0, 0]
    assert len(outputs[0]) == 5 and len({*outputs[0], *outputs[1]}) == 1
