"""tesk.read, write, read_metadata and the trailer."""

import json
import os
import subprocess
import zlib
from concurrent.futures import ThreadPoolExecutor

import numpy
import pytest
import tesk
from conftest import picture
from tesk import trailer

STREAM = tesk.encode(picture(20, 20))
METADATA = {
    "icc": b"a profile",
    "exif": b"II*\0",
    "xmp": "<x/>",
    "desc": "Grün",
    "res": (2835, 2836),
    "max": 1000,
    "raw": "int16",
}


def test_files_come_back_with_their_metadata(tmp_path, image):
    path = tmp_path / "a.tk"
    tesk.write(path, image, metadata=METADATA)
    numpy.testing.assert_array_equal(tesk.read(path), image)
    assert tesk.read_metadata(path) == METADATA
    assert os.listdir(tmp_path) == ["a.tk"]
    tesk.write(str(path), image)
    assert tesk.read_metadata(str(path)) == {}
    assert path.stat().st_size == len(tesk.encode(image)) + 28


def test_arguments_of_encode_and_decode_go_through(tmp_path):
    image, path = picture(60, 40), tmp_path / "a.tk"
    tesk.write(path, image, budget=500)
    assert path.read_bytes() == tesk.encode(image, budget=500)
    assert tesk.read(path, partial=True, reduce=1).shape == (30, 20)
    with pytest.raises(tesk.Error, match="cut"):
        tesk.read(path)
    with pytest.raises(ValueError, match="with a budget a file has no metadata"):
        tesk.write(path, image, budget=500, metadata={"desc": "x"})


def test_the_example_of_the_page_is_made():
    # docs/trailer.md shows it byte by byte.
    stream = bytes.fromhex("544b3330 01080100 01000000 00000000 070300")
    shown = (
        "544b545241494c31 63726320 04000000 2242c52f 64657363 0a000000 41206772657920646f74"
        "72657320 08000000 130b0000 130b0000 3e000000 544b5431"
    )
    assert trailer.join(stream, {"desc": "A grey dot", "res": (2835, 2835)}) == stream + bytes.fromhex(shown)


def test_every_flipped_bit_is_found():
    file = trailer.join(tesk.encode(picture(20, 20)), {"desc": "x"})
    for place in range(len(file)):
        for bit in range(8):
            damaged = bytearray(file)
            damaged[place] ^= 1 << bit
            try:
                stream, _ = trailer.split(bytes(damaged))
            except tesk.Error:
                continue
            # Without its trailer it is a stream and something else.
            assert tesk.measure(stream)[0] < len(stream)


def test_surplus_bytes_are_no_image(tmp_path):
    path = tmp_path / "a.tk"
    path.write_bytes(tesk.encode(picture(20, 20)) + b"surplus")
    with pytest.raises(tesk.Error, match="7 bytes behind the stream are no trailer"):
        tesk.read(path)
    assert tesk.read(path, partial=True).shape == (20, 20)


def test_files_that_are_cut_lose_the_trailer_first(tmp_path):
    image = picture(20, 20)
    file = trailer.join(tesk.encode(image), METADATA)
    path = tmp_path / "a.tk"
    for length in [*range(16, len(file), 7), *range(len(file) - 40, len(file))]:
        path.write_bytes(file[:length])
        assert tesk.read_metadata(path) == {}
        assert tesk.read(path, partial=True).shape == image.shape


def with_boxes(boxes, stream=tesk.encode(picture(9, 9))):
    checksum = zlib.crc32(boxes, zlib.crc32(stream)).to_bytes(4, "little")
    body = b"TKTRAIL1crc \x04\0\0\0" + checksum + boxes
    return stream + body + (len(body) + 8).to_bytes(4, "little") + b"TKT1"


def test_other_boxes_are_passed_over():
    boxes = b"what\1\0\0\0?" + b"res \3\0\0\0" + b"123" + b"desc\1\0\0\0\xff" + b"max \4\0\0\0\7\0\0\0"
    assert trailer.split(with_boxes(boxes))[1] == {"max": 7}


@pytest.mark.parametrize("boxes", [b"desc\x09\0\0\0x", b"des", b"desc\0\0\0\0desc\0\0\0\0", b"crc \0\0\0\0"])
def test_boxes_out_of_form_are_no_trailer(boxes):
    file = with_boxes(boxes)
    assert trailer.split(file) == (file, {})


@pytest.mark.parametrize("stream", [STREAM + b"x", STREAM[:-9], b"TK30"], ids=["longer", "cut", "none"])
def test_a_trailer_stands_where_a_stream_ends(stream):
    """Also where its checksum is that of what stands before it."""
    with pytest.raises(tesk.Error) as caught:
        trailer.split(with_boxes(b"", stream))
    assert caught.value.status == 3


def test_64_boxes_are_a_trailer_and_65_none():
    def boxes(count):
        return b"".join(b"b%03d\0\0\0\0" % i for i in range(count))

    stream, _ = trailer.split(with_boxes(boxes(63)))
    assert tesk.measure(stream) == (len(stream), True)
    file = with_boxes(boxes(64))
    assert trailer.split(file)[0] == file


@pytest.mark.parametrize("metadata", [
    {"icc": 5}, {"icc": "a profile"}, {"exif": [1, 2]}, {"desc": b"bytes"}, {"xmp": None}, {"raw": 16}, {"res": 72},
    {"res": "ab"}, {"res": (72.5, 72)}, {"max": 1.0}, {"max": "1"},
])
def test_values_of_another_type_are_refused(metadata):
    name, value = next(iter(metadata.items()))
    with pytest.raises(TypeError, match=name):
        trailer.join(STREAM, metadata)


@pytest.mark.parametrize("metadata", [
    {"res": (1,)}, {"res": (1, 2, 3)}, {"res": (-1, 1)}, {"res": (1, 2**32)}, {"max": -1}, {"max": 2**32}, {"raw": "ü"},
])
def test_values_that_have_no_place_are_refused(metadata):
    with pytest.raises(ValueError, match=next(iter(metadata))):
        trailer.join(STREAM, metadata)


def test_other_objects_with_the_same_values_are_taken():
    metadata = {"icc": bytearray(b"i"), "exif": memoryview(b"e"), "res": [numpy.int64(1), 2], "max": numpy.uint16(9)}
    assert trailer.split(trailer.join(STREAM, metadata))[1] == {"icc": b"i", "exif": b"e", "res": (1, 2), "max": 9}


@pytest.mark.parametrize("kind", [bytearray, memoryview, lambda data: numpy.frombuffer(data, "u1")])
def test_a_stream_of_any_buffer_gets_another_trailer(kind):
    file = trailer.join(kind(STREAM), {"desc": "old"})
    stream, metadata = trailer.split(file)
    assert trailer.join(stream, {**metadata, "desc": "new"}) == trailer.join(STREAM, {"desc": "new"})


def test_only_complete_streams_have_a_trailer():
    stream = tesk.encode(picture(20, 20))
    for other in (stream[:100], stream + b"x"):
        with pytest.raises(tesk.Error, match="only a complete stream"):
            trailer.join(other)
    with pytest.raises(KeyError):
        trailer.join(stream, {"what": b""})


def test_names_may_be_as_long_as_the_file_system_lets_them(tmp_path):
    path = tmp_path / ("ü" * 126 + ".tk")
    tesk.write(path, picture(20, 20))
    assert tesk.read(path).shape == (20, 20)


def test_nothing_is_lost_where_the_disk_is_full(tmp_path, monkeypatch):
    image, path = picture(20, 20), tmp_path / "a.tk"
    tesk.write(path, image)

    def full(*_):
        raise OSError(28, "No space left on device")

    monkeypatch.setattr(os, "replace", full)
    with pytest.raises(OSError, match="No space"):
        tesk.write(path, picture(30, 30))
    assert os.listdir(tmp_path) == ["a.tk"]
    numpy.testing.assert_array_equal(tesk.read(path), image)


def test_threads_may_write_the_same_file(tmp_path):
    image, path = picture(40, 30), tmp_path / "a.tk"
    with ThreadPoolExecutor(4) as pool:
        list(pool.map(lambda _: tesk.write(path, image), range(40)))
    assert os.listdir(tmp_path) == ["a.tk"]
    numpy.testing.assert_array_equal(tesk.read(path), image)


def test_what_an_ended_process_left_is_in_nobodys_way(tmp_path):
    left = tmp_path / f".a.tk.part-{os.getpid()}"
    left.write_bytes(b"of another process with this number")
    tesk.write(tmp_path / "a.tk", picture(20, 20))
    assert left.read_bytes() == b"of another process with this number"


@pytest.mark.skipif("TESK_TOOLS" not in os.environ, reason="TESK_TOOLS names no folder with the programs")
def test_the_programs_read_what_python_writes(tmp_path):
    tools, image, path = os.environ["TESK_TOOLS"], picture(50, 40), tmp_path / "a.tk"
    # With raw, int16 samples would come back.
    metadata = {name: value for name, value in METADATA.items() if name != "raw"}
    tesk.write(path, image, metadata=metadata)
    info = subprocess.run([f"{tools}/tesk-info", "--json", "--check", path], check=True, capture_output=True)
    boxes = [box["name"].strip() for box in json.loads(info.stdout)["trailer"]["boxes"]]
    assert boxes == list(metadata)
    subprocess.run([f"{tools}/tesk-convert", "-q", path, tmp_path / "a.npy"], check=True)
    numpy.testing.assert_array_equal(numpy.load(tmp_path / "a.npy"), image)
    subprocess.run([f"{tools}/tesk-convert", "-q", "-f", tmp_path / "a.npy", tmp_path / "b.tk"], check=True)
    numpy.testing.assert_array_equal(tesk.read(tmp_path / "b.tk"), image)
