"""tesk.decode, decode_prefix, probe and measure: streams, prefixes, damage."""

import copy
import mmap
import pickle

import numpy
import pytest
import tesk
from conftest import picture
from hypothesis import given, settings
from hypothesis import strategies

STREAM = tesk.encode(picture(33, 45))
COLOUR = tesk.encode(picture(20, 31, "uint8", 8, colour=True))


def test_every_prefix_is_a_picture_or_an_error():
    for length in range(len(STREAM)):
        prefix = STREAM[:length]
        if length < 16:
            with pytest.raises(tesk.Error) as caught:
                tesk.decode_prefix(prefix)
            assert caught.value.status == 3
            continue
        image, is_complete = tesk.decode_prefix(prefix)
        assert image.shape == (33, 45) and image.dtype == numpy.uint16
        assert tesk.measure(prefix) == (length, is_complete) or is_complete
        if not is_complete:
            with pytest.raises(tesk.Error, match="the stream is cut") as caught:
                tesk.decode(prefix)
            assert caught.value.status == 1
            numpy.testing.assert_array_equal(tesk.decode(prefix, partial=True), image)


def test_longer_prefixes_are_closer():
    image = picture(200, 200)
    stream = tesk.encode(image)
    errors = [
        numpy.abs(tesk.decode(stream[: len(stream) * percent // 100], partial=True).astype(int) - image).mean()
        for percent in (2, 10, 30, 60)
    ]
    assert errors == sorted(errors, reverse=True) and errors[-1] < errors[0] / 4


@settings(max_examples=400, deadline=None)
@given(strategies.data())
def test_damaged_streams_are_pictures_or_errors(data):
    stream = bytearray(data.draw(strategies.sampled_from([STREAM, COLOUR])))
    for _ in range(data.draw(strategies.integers(1, 4))):
        place = data.draw(strategies.integers(0, len(stream) - 1))
        stream[place] = data.draw(strategies.integers(0, 255))
    try:
        image, _ = tesk.decode_prefix(bytes(stream), max_pixels=2**20)
    except (tesk.Error, MemoryError):
        return
    info = tesk.probe(stream)
    assert image.shape == info.shape and image.dtype == info.dtype


@settings(max_examples=200, deadline=None)
@given(strategies.binary(max_size=200))
def test_other_bytes_are_errors(junk):
    with pytest.raises(tesk.Error):
        tesk.decode(b"\0" + junk)


@pytest.mark.parametrize("kind", [bytes, bytearray, memoryview, lambda data: numpy.frombuffer(data, "u1")])
def test_streams_are_any_buffer(kind):
    numpy.testing.assert_array_equal(tesk.decode(kind(STREAM)), tesk.decode(STREAM))
    assert tesk.probe(kind(STREAM)) == tesk.probe(STREAM)
    assert tesk.measure(kind(STREAM)) == (len(STREAM), True)


def test_streams_may_be_mapped_files(tmp_path):
    path = tmp_path / "a.tk"
    path.write_bytes(STREAM)
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
        info = tesk.probe(mapped)
        numpy.testing.assert_array_equal(tesk.decode(mapped), tesk.decode(STREAM))
    assert info.shape == (33, 45)


def test_what_is_no_buffer_is_refused(tmp_path):
    for path in ("a.tk", tmp_path / "a.tk"):
        with pytest.raises(TypeError, match="tesk.read takes the path"):
            tesk.decode(path)
    with pytest.raises(TypeError):
        tesk.decode(3)
    with pytest.raises(BufferError):
        tesk.decode(memoryview(STREAM)[::2])


def test_out_is_filled_and_returned(image):
    stream = tesk.encode(image)
    out = numpy.empty_like(image)
    assert tesk.decode(stream, out=out) is out
    numpy.testing.assert_array_equal(out, image)


def test_gaps_between_the_rows_of_out_stay_as_they_are(image):
    wide = numpy.full((image.shape[0] * 2, image.shape[1] + 5, *image.shape[2:]), 77, image.dtype)
    inner = wide[::2, 2 : 2 + image.shape[1]]
    tesk.decode(tesk.encode(image), out=inner)
    numpy.testing.assert_array_equal(inner, image)
    assert (wide[1::2] == 77).all() and (wide[:, :2] == 77).all() and (wide[:, 2 + image.shape[1] :] == 77).all()


def read_only():
    array = numpy.empty((33, 45), numpy.uint16)
    array.flags.writeable = False
    return array


@pytest.mark.parametrize(
    "out, error, words",
    [
        (numpy.empty((45, 33), "u2"), ValueError, "the picture is <u2 of shape (33, 45)"),
        (numpy.empty((33, 45), "u1"), ValueError, "out is |u1"),
        (numpy.empty((33, 45), ">u2"), ValueError, "out is >u2"),
        (numpy.empty((33, 45), "i2"), ValueError, "out is <i2"),
        (numpy.empty((33, 90), "u2")[:, ::2], ValueError, "not adjacent"),
        (numpy.empty((33, 45), "u2")[::-1], ValueError, "backwards"),
        (numpy.asfortranarray(numpy.empty((33, 45), "u2")), ValueError, "not adjacent"),
        (read_only(), ValueError, "not writable"),
        (numpy.ma.masked_array(numpy.empty((33, 45), "u2"), mask=True), TypeError, "out is MaskedArray"),
        (bytearray(33 * 45 * 2), TypeError, "bytearray"),
    ],
)
def test_an_out_that_does_not_fit_is_refused(out, error, words):
    with pytest.raises(error) as caught:
        tesk.decode(STREAM, out=out)
    assert words in str(caught.value)


def test_an_out_that_holds_the_stream_is_refused():
    """It would be overwritten while it is read."""
    memory = numpy.zeros(33 * 45 * 2 + len(STREAM), numpy.uint8)
    memory[-len(STREAM) :] = numpy.frombuffer(STREAM, numpy.uint8)
    out, stream = memory[: 33 * 45 * 2].view("u2").reshape(33, 45), memory[-len(STREAM) :]
    numpy.testing.assert_array_equal(tesk.decode(stream, out=out), tesk.decode(STREAM))
    inside = memory[1 : 1 + len(STREAM)]
    inside[:] = numpy.frombuffer(STREAM, numpy.uint8)
    with pytest.raises(ValueError, match="out is where the stream is"):
        tesk.decode(inside, out=out)
    with tesk.Decoder(inside) as decoder:
        with pytest.raises(ValueError, match="out is where the stream is"):
            decoder.read(33, out=out)


def test_max_pixels_names_both_numbers():
    with pytest.raises(tesk.Error, match=r"45 x 33 = 1485 pixels; max_pixels is 1484") as caught:
        tesk.decode(STREAM, max_pixels=1484)
    assert caught.value.status == 5
    assert tesk.decode(STREAM, max_pixels=1485).size == 1485


def test_a_head_alone_allocates_nothing_large():
    head = bytearray(STREAM[:16])
    head[6:10] = b"\xff\xff\xff\xff"
    info = tesk.probe(bytes(head))
    with pytest.raises(tesk.Error, match="max_pixels is 268435456"):
        tesk.decode(bytes(head), partial=True)
    assert info.shape == (65535, 65535)


def test_probe_says_what_a_stream_holds(image):
    info = tesk.probe(tesk.encode(image)[:16])
    assert (info.shape, info.dtype, info.nbytes) == (image.shape, image.dtype, image.nbytes)
    with pytest.raises(tesk.Error):
        tesk.probe(b"TK30")


@pytest.mark.parametrize("kind", [bytes, memoryview])
def test_an_info_goes_through_pickle_without_its_stream(kind):
    info = tesk.probe(kind(STREAM))
    pickled = pickle.dumps(info)
    assert pickle.loads(pickled) == info and len(pickled) < 500 < len(STREAM)
    assert copy.deepcopy(info) == info
    assert pickle.loads(pickled)._repr_html_().startswith("<div")


def test_streams_behind_each_other_are_told_apart():
    both = STREAM + COLOUR
    length, is_complete = tesk.measure(both)
    assert (length, is_complete) == (len(STREAM), True)
    assert tesk.measure(both[length:]) == (len(COLOUR), True)
    numpy.testing.assert_array_equal(tesk.decode(both), tesk.decode(STREAM))


def test_reduced_pictures_have_halved_sides(image):
    stream = tesk.encode(image)
    for reduce in range(5):
        small = tesk.decode(stream, reduce=reduce)
        assert small.shape[:2] == tuple(-(-side // 2**reduce) for side in image.shape[:2])
    out = numpy.empty_like(small)
    assert tesk.decode(stream, reduce=reduce, out=out) is out
    numpy.testing.assert_array_equal(out, small)
    sides = "x".join(f" {side} " for side in image.shape[1::-1]).strip()
    with pytest.raises(ValueError, match=f"reduce is 5; a picture of {sides} pixels has 4 halvings"):
        tesk.decode(stream, reduce=5)
    for other in (2**32, 2**32 + 1, 2**100):
        with pytest.raises(ValueError, match=f"reduce is {other}; a picture of"):
            tesk.decode(stream, reduce=other)
    with pytest.raises(ValueError, match="reduce is -1"):
        tesk.decode(stream, reduce=-1)


def test_reduced_pictures_look_like_averages():
    image = picture(256, 256)
    small = tesk.decode(tesk.encode(image), reduce=2)
    averages = image.reshape(64, 4, 64, 4).mean(axis=(1, 3))
    assert numpy.abs(small - averages).mean() < 100


def test_a_reduced_picture_counts_its_own_pixels():
    assert tesk.decode(STREAM, reduce=1, max_pixels=17 * 23).shape == (17, 23)


def test_errors_go_through_pickle():
    with pytest.raises(tesk.Error) as caught:
        tesk.decode(b"nothing")
    back = pickle.loads(pickle.dumps(caught.value))
    assert (str(back), back.status) == (str(caught.value), 3)
    assert isinstance(back, tesk.Error) and isinstance(back, ValueError)
