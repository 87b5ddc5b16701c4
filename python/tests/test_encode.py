"""tesk.encode: what goes in, and that all of it comes back."""

import threading

import numpy
import pytest
import tesk
from conftest import picture
from hypothesis import given, settings
from hypothesis import strategies
from hypothesis.extra import numpy as arrays
from tesk._native import error_of
from tesk._native import lib as _native_lib

SHAPES = arrays.array_shapes(min_dims=2, max_dims=2, min_side=2, max_side=40)
IMAGES = strategies.one_of(
    arrays.arrays(numpy.uint8, SHAPES),
    arrays.arrays(numpy.uint16, SHAPES),
    arrays.arrays(numpy.uint16, SHAPES, elements=strategies.integers(0, 4095)),
    arrays.arrays(numpy.uint8, SHAPES.map(lambda shape: (*shape, 3))),
)


def assert_restored(image, **as_encode):
    back = tesk.decode(tesk.encode(image, **as_encode))
    assert back.dtype == image.dtype.newbyteorder("=")
    numpy.testing.assert_array_equal(back, image)


@settings(max_examples=300, deadline=None)
@given(IMAGES)
def test_random_arrays_come_back(image):
    assert_restored(image)


@settings(max_examples=100, deadline=None)
@given(IMAGES, strategies.integers(1, 8))
def test_arrays_come_back_whatever_bits_are_declared(image, bits):
    assert_restored(image, bits=bits)


VIEWS = {
    "every second column": lambda image: image[:, ::2],
    "every second row": lambda image: image[::2],
    "a window": lambda image: image[5:40, 7:33],
    "backwards": lambda image: image[::-1],
    "mirrored": lambda image: image[:, ::-1],
    "column-major": lambda image: numpy.asfortranarray(image),
    "other byte order": lambda image: image.astype(image.dtype.newbyteorder(">")),
    "other byte order, a window": lambda image: image.astype(image.dtype.newbyteorder(">"))[3:, 2:],
    "read-only": lambda image: numpy.frombuffer(image.tobytes(), image.dtype).reshape(image.shape),
    "unaligned": lambda image: unaligned(image),
    "the same row": lambda image: numpy.broadcast_to(image[3], image.shape),
}


def unaligned(image):
    memory = bytearray(image.nbytes + 1)
    view = numpy.frombuffer(memory, image.dtype, image.size, offset=1).reshape(image.shape)
    view[...] = image
    return view


@pytest.mark.parametrize("name", VIEWS)
def test_views_come_back(image, name):
    assert_restored(VIEWS[name](image))


@pytest.mark.parametrize("name", VIEWS)
def test_views_have_the_stream_of_their_copy(image, name):
    view = VIEWS[name](image)
    assert tesk.encode(view) == tesk.encode(numpy.array(view, dtype=image.dtype, order="C"))


def test_transposed_arrays_come_back():
    assert_restored(picture(40, 60).T)
    assert_restored(picture(40, 60, "uint8", 8, colour=True).transpose(1, 0, 2))


def test_the_last_row_needs_no_gap_behind_it():
    from tesk._pixels import pixels_of

    wide = picture(40, 60)
    assert pixels_of(wide[:, :50]).size_bytes == 39 * 120 + 100
    assert pixels_of(wide).size_bytes == wide.nbytes


def test_rows_with_gaps_are_not_copied():
    from tesk._pixels import pixels_of

    wide = picture(40, 60)
    assert pixels_of(wide[:, :50]).array.base is wide
    assert pixels_of(wide[::2]).array.base is wide
    assert pixels_of(wide[:, ::2]).array.base is not wide


@pytest.mark.parametrize("shape", [(0, 0), (0, 5), (5, 0), (0, 5, 3)])
def test_arrays_without_pixels_come_back(shape):
    assert_restored(numpy.zeros(shape, numpy.uint8))


@pytest.mark.parametrize(
    "array, words",
    [
        (numpy.zeros((4, 4)), "float64 of shape (4, 4)"),
        (numpy.zeros((4, 4), "int16"), "view it as unsigned"),
        (numpy.zeros((4, 4), "uint32"), "uint32"),
        (numpy.zeros((4, 4), bool), "view it as uint8"),
        (numpy.zeros((4, 4, 4), "uint8"), "alpha"),
        (numpy.zeros((4, 4, 2), "uint8"), "alpha"),
        (numpy.zeros((4, 4, 3), "uint16"), "planes one by one"),
        (numpy.zeros((4, 4, 1), "uint8"), "(4, 4, 1)"),
        (numpy.zeros((4, 4, 4), "float32"), "float32 of shape (4, 4, 4)$"),
        (numpy.zeros((4, 4, 3), "float16"), "float16 of shape (4, 4, 3)$"),
        (numpy.zeros((4, 4, 4), "int16"), "view it as unsigned"),
        (numpy.zeros(4, "uint8"), "shape (4,)"),
        (numpy.zeros((2, 4, 4), "uint16"), "(2, 4, 4)"),
        (numpy.uint8(3), "shape ()"),
        ([[1, 2], [3, 4]], "int64"),
        (numpy.array([["a", "b"]]), "shape (1, 2)"),
        (numpy.ma.masked_array(numpy.zeros((4, 4), "uint8")), "mask"),
        (None, "object"),
    ],
)
def test_other_arrays_are_refused_in_words(array, words):
    with pytest.raises(TypeError) as caught:
        tesk.encode(array)
    assert words in f"{caught.value}$"


def test_long_sides_are_refused_with_the_numbers():
    with pytest.raises(tesk.Error, match="3 x 70000 pixels; a stream holds up to 65535 x 65535") as caught:
        tesk.encode(numpy.zeros((70000, 3), "uint8"))
    assert caught.value.status == 4


def test_a_side_of_one_is_refused_unless_it_comes_back():
    with pytest.raises(tesk.Error, match="no stream restores this image") as caught:
        tesk.encode(numpy.ones((1, 20), "uint8"))
    assert caught.value.status == 9
    with pytest.raises(tesk.Error, match="no stream restores this image"):
        tesk.encode(numpy.ones((20, 1), "uint16"), budget=100)
    assert_restored(numpy.zeros((1, 20), "uint8"))


def test_bits_are_found_from_the_samples():
    for bits in range(1, 17):
        image = picture(20, 20, bits=max(bits, 4))
        image[3, 3] = (1 << bits) - 1
        image &= (1 << bits) - 1
        # 13 where the decoders of 12 bits would not agree on the image.
        assert tesk.probe(tesk.encode(image)).bits in ([12, 13] if bits == 12 else [bits])
    assert tesk.probe(tesk.encode(numpy.zeros((4, 4), "uint16"))).bits == 1


@pytest.mark.parametrize("bits, dtype", [(0, "uint16"), (17, "uint16"), (9, "uint8"), (-1, "uint8")])
def test_bits_that_no_sample_has_are_refused(bits, dtype):
    with pytest.raises(ValueError, match=f"bits is {bits}; samples of {dtype} have 1 to"):
        tesk.encode(numpy.zeros((4, 4), dtype), bits=bits)


def test_a_budget_is_kept_exactly(image):
    whole = tesk.encode(image)
    # A stream that lacks its padding alone is complete.
    for budget in (16, 17, 100, len(whole) - 4):
        stream = tesk.encode(image, budget=budget)
        assert len(stream) == budget
        assert not tesk.decode_prefix(stream)[1]
    assert tesk.encode(image, budget=len(whole)) == whole


@pytest.mark.parametrize("budget", [0, 15, -1])
def test_a_budget_below_the_head_is_refused(budget):
    with pytest.raises(ValueError, match="at least 16 bytes"):
        tesk.encode(picture(9, 9), budget=budget)


def test_any_larger_budget_is_enough(image):
    whole = tesk.encode(image)
    for budget in (2**31, 2**63, 2**64, 2**100):
        assert tesk.encode(image, budget=budget) == whole
        with tesk.Encoder(image.shape, image.dtype, budget=budget) as encoder:
            encoder.write(image)
            assert tesk.decode_prefix(encoder.finish())[1]


@pytest.mark.parametrize("number", [12.0, numpy.float32(12.5), "12", [12]])
def test_numbers_that_are_not_whole_are_refused(number):
    image = picture(20, 20)
    calls = [
        lambda: tesk.encode(image, bits=number),
        lambda: tesk.encode(image, budget=number),
        lambda: tesk.Encoder(image.shape, "u2", bits=number),
        lambda: tesk.Encoder(image.shape, "u2", budget=number),
        lambda: tesk.decode(tesk.encode(image), reduce=number),
    ]
    for call in calls:
        with pytest.raises(TypeError, match="integer"):
            call()


def test_numbers_of_numpy_are_numbers():
    image = picture(64, 64)
    assert tesk.encode(image, bits=numpy.int64(12)) == tesk.encode(image, bits=12)
    assert len(tesk.encode(image, budget=numpy.uint16(900))) == 900
    assert tesk.decode(tesk.encode(image), reduce=numpy.uint8(2)).shape == (16, 16)


def test_verify_is_what_the_library_is_told(monkeypatch):
    flags = []

    class Library:
        def __getattr__(self, name):
            return getattr(_native_lib, name)

        def tesk_create(self, options, codec):
            flags.append(options.flags)
            return _native_lib.tesk_create(options, codec)

    monkeypatch.setattr("tesk._native.lib", Library())
    monkeypatch.setattr("tesk._native._codecs", threading.local())
    image = picture(20, 20)
    tesk.encode(image)
    tesk.encode(image, verify=False)
    tesk.encode(image)
    assert flags == [0, _native_lib.TESK_UNVERIFIED]
    tesk.Encoder(image.shape, "u2", verify=False)
    assert flags[2:] == [_native_lib.TESK_UNVERIFIED]


def test_no_memory_is_a_memory_error():
    error = error_of(_native_lib.TESK_OUT_OF_MEMORY)
    assert isinstance(error, MemoryError) and "memory" in str(error)


def test_unverified_streams_are_the_same(image):
    assert tesk.encode(image, verify=False) == tesk.encode(image)
