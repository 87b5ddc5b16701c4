"""The codec for zarr 2: every layout of a chunk, and arrays of zarr."""

import itertools
import subprocess
import sys

import numcodecs
import numpy
import pytest
import tesk
import zarr
from conftest import picture
from tesk.numcodecs import Tesk

numcodecs.register_codec(Tesk)

SHAPES = [(40, 30), (1, 40, 30), (5, 40, 30), (2, 3, 20, 16), (1, 2, 1, 20, 16), (40, 30, 1)]
TYPES = ["u1", "u2", "i1", "i2"]


def filled(shape, dtype, seed=1):
    """Returns: an array in which every sample tells its place."""
    count = int(numpy.prod(shape))
    noise = numpy.random.default_rng(seed).integers(0, 7, count)
    return ((numpy.arange(count) * 3 + noise) % 251).astype(dtype).reshape(shape)


@pytest.mark.parametrize("shape, dtype, order", itertools.product(SHAPES, TYPES, "CF"))
def test_arrays_of_zarr_come_back(shape, dtype, order):
    values = filled(shape, dtype)
    codec = Tesk(signed=dtype[0] == "i")
    stored = zarr.array(values, chunks=shape, compressor=codec, order=order)
    numpy.testing.assert_array_equal(stored[...], values)
    numpy.testing.assert_array_equal(stored[..., 3:11, :], values[..., 3:11, :])


@pytest.mark.parametrize("shape, chunks, order", [
    ((50, 70), (32, 32), "C"), ((50, 70), (32, 32), "F"), ((7, 50, 70), (4, 32, 32), "C"),
    ((7, 50, 70), (4, 32, 32), "F"), ((3, 33, 41), (2, 17, 40), "C"), ((3, 33, 41), (2, 17, 40), "F"),
])
def test_odd_last_chunks_come_back(shape, chunks, order):
    values = filled(shape, "u2")
    stored = zarr.array(values, chunks=chunks, compressor=Tesk(), order=order)
    numpy.testing.assert_array_equal(stored[...], values)
    stored[..., 5:20, 7:30] = 9
    values[..., 5:20, 7:30] = 9
    numpy.testing.assert_array_equal(stored[...], values)


@pytest.mark.parametrize("shape", [(40, 30, 3), (4, 40, 30, 3), (1, 40, 30, 3)])
@pytest.mark.parametrize("order", "CF")
def test_colour_comes_back(shape, order):
    values = filled(shape, "u1")
    stored = zarr.array(values, chunks=shape, compressor=Tesk(), order=order)
    numpy.testing.assert_array_equal(stored[...], values)


def test_a_last_axis_of_three_bytes_is_colour():
    assert tesk.probe(Tesk().encode(picture(40, 30, "u1", 8, colour=True))).shape == (40, 30, 3)
    assert tesk.probe(Tesk().encode(filled((2, 40, 30, 3), "u1"))).shape == (80, 30, 3)
    assert tesk.probe(Tesk().encode(filled((40, 3), "u1"))).shape == (40, 3)
    assert tesk.probe(Tesk().encode(filled((5, 40, 3), "u2"))).shape == (200, 3)


def test_leading_axes_are_stacked():
    chunk = filled((2, 3, 20, 16), "u2")
    assert tesk.probe(Tesk().encode(chunk)).shape == (120, 16)
    assert Tesk().encode(chunk) == tesk.encode(chunk.reshape(120, 16))


def test_signed_samples_take_no_more_than_unsigned_ones():
    image = picture(200, 200)
    signed = Tesk(signed=True).encode((image.astype("i4") - 32768).astype("i2"))
    assert signed == tesk.encode(image)


def test_bits_and_verify_go_through():
    image = picture(40, 30, bits=10)
    assert tesk.probe(Tesk(bits=14).encode(image)).bits == 14
    assert Tesk(verify=False).encode(image) == Tesk().encode(image)


@pytest.mark.parametrize("verify", [True, False])
def test_verify_goes_through(monkeypatch, verify):
    given = []
    monkeypatch.setattr("tesk.numcodecs.encode", lambda picture, **options: given.append(options) or b"")
    Tesk(bits=12, verify=verify).encode(picture(40, 30))
    assert given == [{"bits": 12, "verify": verify}]


@pytest.mark.parametrize("array, words", [
    (numpy.zeros((4, 4), "f4"), "float32"),
    (numpy.zeros((4, 4), "u4"), "uint32"),
    (numpy.zeros((4, 4), ">u2"), "big-endian"),
    (numpy.zeros((4, 4), "i2"), "signed=False"),
    (numpy.zeros(16, "u1"), "two sides"),
    (numpy.zeros((1, 16), "u1"), "two sides"),
    (numpy.zeros((16, 1), "u1"), "two sides"),
    (numpy.zeros((4, 20000, 4), "u1"), "80000 pixels"),
    (b"bytes", "two sides"),
])
def test_other_chunks_are_refused_in_words(array, words):
    with pytest.raises((TypeError, ValueError), match=words):
        Tesk().encode(array)


def test_unsigned_chunks_are_refused_by_a_signed_codec():
    for dtype in ("u1", "u2"):
        with pytest.raises(TypeError, match="signed=True"):
            Tesk(signed=True).encode(numpy.zeros((4, 4), dtype))
    with pytest.raises(TypeError, match="int32"):
        Tesk(signed=True).encode(numpy.zeros((4, 4), "i4"))


def test_damaged_chunks_are_errors_never_pictures():
    stream = Tesk().encode(picture(40, 30))
    for damaged in (stream[:-5], stream[:20], stream[:5], b"", stream + b"x", b"x" + stream):
        with pytest.raises(tesk.Error):
            Tesk().decode(damaged)
    values = picture(40, 30)
    store = {}
    array = zarr.array(values, chunks=(40, 30), compressor=Tesk(), store=store)
    store["0.0"] = store["0.0"][:-5]
    with pytest.raises(tesk.Error, match="not a complete stream"):
        array[...]


def test_chunks_that_decode_would_refuse_are_not_written():
    chunk = numpy.broadcast_to(numpy.uint8(3), (2**14 + 1, 2**14))
    with pytest.raises(ValueError, match="16385 x 16384 samples; decode allows up to 268435456"):
        Tesk().encode(chunk)


def test_out_is_filled():
    values = picture(40, 30)
    for out in (numpy.empty((40, 30), "u2"), bytearray(values.nbytes)):
        Tesk().decode(Tesk().encode(values), out=out)
        assert bytes(memoryview(out).cast("B")) == values.tobytes()
    with pytest.raises(ValueError):
        Tesk().decode(Tesk().encode(values), out=numpy.empty((40, 29), "u2"))


def test_the_configuration_makes_the_codec_again():
    codec = Tesk(bits=12, signed=True, verify=False)
    assert codec.get_config() == {"id": "tesk", "bits": 12, "signed": True, "verify": False}
    assert numcodecs.get_codec(codec.get_config()) == codec
    assert numcodecs.get_codec({"id": "tesk"}) == Tesk()


def test_bits_are_looked_at_when_the_codec_is_made():
    for bits in (0, 17):
        with pytest.raises(ValueError, match=f"bits is {bits}"):
            Tesk(bits=bits)
    assert type(Tesk(bits=numpy.int64(12)).get_config()["bits"]) is int


@pytest.mark.parametrize("threads", [4])
def test_threads_may_share_an_array(threads):
    from concurrent.futures import ThreadPoolExecutor

    values = filled((16, 64, 64), "u2")
    stored = zarr.zeros(values.shape, chunks=(1, 64, 64), dtype="u2", compressor=Tesk())

    def put(i):
        stored[i] = values[i]

    with ThreadPoolExecutor(threads) as pool:
        list(pool.map(put, range(16)))
        for i, plane in enumerate(pool.map(lambda i: stored[i], range(16))):
            numpy.testing.assert_array_equal(plane, values[i])


def test_a_new_process_finds_the_codec_by_its_name(tmp_path):
    """Where the module is installed; a staged one has no entry point."""
    from importlib import metadata

    if not any(entry.name == "tesk" for entry in metadata.entry_points().select(group="numcodecs.codecs")):
        pytest.skip("the module is staged, not installed")
    values = picture(40, 30)
    zarr.save_array(str(tmp_path / "a.zarr"), values, compressor=Tesk())
    code = "import sys, zarr; print(zarr.open(sys.argv[1], 'r')[...].sum(), 'tesk.numcodecs' in sys.modules)"
    run = subprocess.run([sys.executable, "-c", code, str(tmp_path / "a.zarr")], check=True, capture_output=True, text=True)
    assert run.stdout.split() == [str(values.sum()), "True"]
