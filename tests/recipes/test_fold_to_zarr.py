"""examples/python/fold_to_zarr.py, whose workers and whose whole run are killed while it works."""

import os
import re
import signal
import time
from collections import Counter

import numpy
import pytest

for module in ("zarr", "distributed", "tifffile", "PIL", "psutil"):
    pytest.importorskip(module)

import numcodecs  # noqa: E402
import psutil  # noqa: E402
import tifffile  # noqa: E402
import zarr  # noqa: E402
from PIL import Image  # noqa: E402

import tesk  # noqa: E402
from tesk.numcodecs import Tesk  # noqa: E402

SHAPE = (300, 400)
SECONDS = 60


def picture(number, shape=SHAPE):
    return numpy.random.default_rng(number).poisson(200 + number, shape).astype("uint16")


def write_tiff(path, image):
    tifffile.imwrite(path, image, byteorder=">")


def write_png(path, image):
    Image.fromarray(image).save(path, compress_level=1)


WRITERS = {"npy": numpy.save, "tif": write_tiff, "png": write_png, "tk": tesk.write}


def make_files(folder, count, writers=WRITERS):
    """Two folders, and one below them. The images have the order of the names."""
    for number in range(count):
        place = folder / ("a/more" if number < count // 2 else "b")
        place.mkdir(parents=True, exist_ok=True)
        kind = list(writers)[number % len(writers)]
        writers[kind](place / f"{number:04}.{kind}", picture(number))


def images_of(folder):
    numcodecs.register_codec(Tesk)
    return zarr.open_group(str(folder / "all.zarr"), mode="r")["images"]


def chunks_of(folder):
    """Returns: names of chunks, without zarr's own files and parts."""
    return [path.name for path in folder.glob("all.zarr/images/*") if re.fullmatch(r"[\d.]+", path.name)]


def require_all(folder, count):
    images = images_of(folder)
    assert sorted(chunks_of(folder)) == sorted(f"{number}.0.0" for number in range(count))
    for number in range(count):
        assert numpy.array_equal(images[number], picture(number)), number


def totals(printed):
    """Returns: the outcomes of the last line, and how many files it names."""
    files, outcomes = re.search(r"^(\d+) files: (.*)$", printed, flags=re.M).groups()
    return int(files), Counter({word: int(count) for count, word in re.findall(r"(\d+) (\w+)", outcomes)})


def wait_for_chunks(example, process, count):
    end = time.monotonic() + SECONDS
    while len(chunks_of(example.folder)) <= count:
        assert process.poll() is None and time.monotonic() < end
        time.sleep(0.005)


def workers_of(process):
    return [child for child in psutil.Process(process.pid).children() if "spawn_main" in " ".join(child.cmdline())]


def fold(example, *more, status=0):
    return totals(example.run("fold_to_zarr.py", "all.zarr", "a", "b", "-j", 2, *more, status=status))


def fold_here(example, *, only_verify=False):
    """Does the tasks one by one, without a cluster. Returns: the outcomes, and all words."""
    program, store = example.module("fold_to_zarr"), str(example.folder / "all.zarr")
    names, paths = program.files_below([example.folder / "a", example.folder / "b"])
    program.prepare(store, names, paths, only_verify)
    done = [program.fold(number, path, store, only_verify) for number, path in enumerate(paths)]
    return Counter(outcome for outcome, _ in done), "\n".join(words for _, words in done)


def start(example):
    return example.start("fold_to_zarr.py", "all.zarr", "a", "b", "-j", 2)


def test_files_of_all_kinds_come_back_from_their_chunks(example):
    make_files(example.folder, 8)
    assert fold(example) == (8, {"written": 8})
    require_all(example.folder, 8)
    names = zarr.open_group(str(example.folder / "all.zarr"), mode="r")["files"][:]
    assert [name[:2] for name in names] == ["a/"] * 4 + ["b/"] * 4
    assert [re.search(r"(\d+)\.", name)[1] for name in names] == [f"{number:04}" for number in range(8)]


def test_nothing_is_lost_or_done_twice_when_a_worker_dies(example):
    count = 160
    make_files(example.folder, count, {"npy": numpy.save})
    with start(example) as process:
        wait_for_chunks(example, process, 10)
        killed = workers_of(process)[0]
        killed.send_signal(signal.SIGKILL)
        done = len(chunks_of(example.folder))
        printed, _ = process.communicate(timeout=SECONDS)
    assert process.returncode == 0, printed
    assert done < count - 20, "the worker died too late to show anything"
    files, outcomes = totals(printed)
    assert files == count and sum(outcomes.values()) == count
    # What the dead worker had written, but not said, was found and kept.
    assert set(outcomes) <= {"written", "kept"}
    require_all(example.folder, count)
    print(f"\nworker {killed.pid} killed after {done} of {count} chunks: {dict(outcomes)}")


def test_a_run_that_was_killed_is_finished_by_the_next(example):
    count = 160
    make_files(example.folder, count, {"npy": numpy.save})
    with start(example) as process:
        wait_for_chunks(example, process, 10)
        workers = workers_of(process)
        process.send_signal(signal.SIGKILL)
        process.communicate()
    psutil.wait_procs(workers, timeout=SECONDS)
    done = len(chunks_of(example.folder))
    assert 10 < done < count - 20
    # What a writer leaves that was killed between writing and moving.
    part = example.folder / "all.zarr/images/200.0.0.0123456789abcdef.partial"
    part.write_bytes(b"half a chunk")
    files, outcomes = fold(example)
    assert outcomes == {"kept": done, "written": count - done}
    assert not part.exists()
    require_all(example.folder, count)
    print(f"\nrun killed after {done} of {count} chunks; the next: {dict(outcomes)}")


def test_a_file_that_kills_its_workers_is_named_and_the_others_are_done(example, monkeypatch):
    make_files(example.folder, 12, {"npy": numpy.save})
    tifffile.imwrite(example.folder / "b/deadly.tif", picture(0))
    (example.folder / "fake").mkdir()
    (example.folder / "fake/tifffile.py").write_text("import os\ndef imread(path): os.kill(os.getpid(), 9)\n")
    monkeypatch.setenv("PYTHONPATH", str(example.folder / "fake"), prepend=os.pathsep)
    files, outcomes = fold(example, status=1)
    assert (files, outcomes["failed"], outcomes["written"] + outcomes["kept"]) == (13, 1, 12)
    assert len(chunks_of(example.folder)) == 12


def flip_a_bit_unseen(path, image):
    """A bare stream has no checksum: looks for a bit whose flip decodes without an error, to another picture."""
    stream = bytearray(path.read_bytes())
    for place in range(len(stream) // 2, len(stream)):
        stream[place] ^= 1
        try:
            if tesk.measure(stream) == (len(stream), True) and not numpy.array_equal(tesk.decode(stream), image):
                path.write_bytes(stream)
                return
        except tesk.Error:
            pass
        stream[place] ^= 1
    raise AssertionError("every flip is an error")


def test_what_has_been_damaged_is_found_and_mended(example):
    make_files(example.folder, 6, {"npy": numpy.save})
    fold_here(example)
    images = example.folder / "all.zarr/images"
    flip_a_bit_unseen(images / "1.0.0", picture(1))
    (images / "3.0.0").write_bytes((images / "3.0.0").read_bytes()[:-4])
    (images / "5.0.0").unlink()
    damaged = {path.name: path.read_bytes() for path in images.glob("*.0.0")}
    assert fold(example, "--verify", status=1) == (6, {"kept": 3, "differs": 2, "missing": 1})
    assert {path.name: path.read_bytes() for path in images.glob("*.0.0")} == damaged
    assert fold_here(example)[0] == {"kept": 3, "mended": 2, "written": 1}
    assert fold_here(example, only_verify=True)[0] == {"kept": 6}
    require_all(example.folder, 6)


def test_a_bad_file_is_named_and_ends_nothing(example):
    make_files(example.folder, 4, {"npy": numpy.save})
    numpy.save(example.folder / "b/other.npy", picture(1, (3, 4)))
    (example.folder / "b/words.png").write_text("no picture")
    outcomes, words = fold_here(example)
    assert outcomes == {"written": 4, "failed": 2}
    assert "other.npy: uint16 of shape (3, 4)" in words and "words.png: Unidentified" in words


def test_an_array_of_other_files_is_left_alone(example):
    make_files(example.folder, 2, {"npy": numpy.save})
    fold_here(example)
    numpy.save(example.folder / "a/more/0000a.npy", picture(7))
    with pytest.raises(SystemExit, match="made of other files: 2 then, 3 now"):
        fold_here(example)
    require_all(example.folder, 2)


def test_a_run_that_ended_before_its_array_was_there_begins_again(example):
    make_files(example.folder, 2, {"npy": numpy.save})
    fold_here(example)
    (example.folder / "all.zarr/images/.zarray").unlink()
    (example.folder / "all.zarr/files/0").unlink()
    fold_here(example)
    require_all(example.folder, 2)


def test_verification_begins_nothing(example):
    make_files(example.folder, 2, {"npy": numpy.save})
    assert "has no array of images" in example.run("fold_to_zarr.py", "all.zarr", "a", "b", "--verify", status=1)
    assert not (example.folder / "all.zarr").exists()


def test_black_images_and_signed_samples_have_chunks(example):
    for number, folder in enumerate("ab"):
        (example.folder / folder).mkdir()
        numpy.save(example.folder / folder / "image.npy", numpy.full((8, 8), -number, "int16"))
    assert fold_here(example)[0] == {"written": 2}
    assert (images_of(example.folder)[:] == [[[0]], [[-1]]]).all()
    assert fold_here(example)[0] == {"kept": 2}
