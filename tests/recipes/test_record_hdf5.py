"""examples/python/record_hdf5.py"""

import re
import time

import pytest

h5py = pytest.importorskip("h5py")
import numpy  # noqa: E402
import tesk.hdf5  # noqa: E402


def test_frames_are_recorded_and_come_back(example):
    # More than wait at a time, so that the bound is reached.
    printed = example.run("record_hdf5.py", "frames.h5", 40)
    assert re.search(r"recorded: 40 frames, \d+ frames/s, \d+ MB/s", printed)
    assert re.search(r"read back, all equal: 40 frames", printed)


def test_readers_with_the_plugin_see_an_ordinary_dataset(example):
    example.run("record_hdf5.py", "frames.h5", 2)
    with h5py.File(example.folder / "frames.h5") as file:
        frames = file["frames"]
        assert frames.chunks == (1, 2048, 2048)
        assert frames.id.get_create_plist().get_filter(0)[0] == tesk.hdf5.FILTER
        # Filters were passed: none of them is masked out.
        assert frames.id.read_direct_chunk((1, 0, 0))[0] == 0


def test_a_recording_is_never_written_over(example):
    (example.folder / "frames.h5").write_bytes(b"another")
    example.run("record_hdf5.py", "frames.h5", 1, status=1)
    assert (example.folder / "frames.h5").read_bytes() == b"another"


def test_a_frame_that_differs_is_found(example):
    example.run("record_hdf5.py", "frames.h5", 2)
    recorder = example.module("record_hdf5")
    checksums = [recorder.encode(recorder.camera(number))[0] for number in range(2)]
    with h5py.File(example.folder / "frames.h5", "r+") as file:
        recorder.verify(file["frames"], checksums)
        tesk.hdf5.write_chunk(file["frames"], (1, 0, 0), recorder.camera(0))
        with pytest.raises(ValueError, match="frame 1"):
            recorder.verify(file["frames"], checksums)


class SlowDisk:
    """A dataset of 100 frames that takes chunks, but slowly."""

    def __init__(self):
        self.id, self.written = self, []

    def __len__(self):
        return 100

    def write_direct_chunk(self, offset, stream):
        time.sleep(0.004)
        self.written.append(offset)


def test_no_more_frames_wait_than_the_bound_says(example, monkeypatch):
    recorder, disk, under_way = example.module("record_hdf5"), SlowDisk(), []

    def camera(number):
        under_way.append(number - len(disk.written))
        return numpy.zeros((8, 8), "uint16")

    monkeypatch.setattr(recorder, "camera", camera)
    recorder.record(disk)
    assert disk.written == [(number, 0, 0) for number in range(100)]
    assert recorder.AHEAD // 2 < max(under_way) < recorder.AHEAD


def test_a_disk_that_is_full_ends_the_recording(example, monkeypatch):
    recorder, disk = example.module("record_hdf5"), SlowDisk()
    monkeypatch.setattr(disk, "write_direct_chunk", lambda *_: numpy.zeros(1).reshape(2), raising=True)
    with pytest.raises(ValueError, match="reshape"):
        recorder.record(disk)
