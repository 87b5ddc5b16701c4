"""tesk.hdf5: chunks past the filter. The filter itself is tested beside its sources."""

import h5py
import numpy
import pytest
import tesk
from conftest import picture, pictures
from tesk import hdf5


@pytest.fixture
def file():
    with h5py.File("a.h5", "w", driver="core", backing_store=False) as opened:
        yield opened


def test_frames_come_back(file):
    frames = [picture(40, 30, seed=i) for i in range(4)]
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30))
    for i, frame in enumerate(frames):
        hdf5.write_chunk(dataset, (i, 0, 0), frame, bits=12)
    for i, frame in enumerate(frames):
        numpy.testing.assert_array_equal(hdf5.read_chunk(dataset, (i, 0, 0)), frame[None])
        assert dataset.id.read_direct_chunk((i, 0, 0)) == (0, tesk.encode(frame, bits=12))


def test_images_of_all_types_come_back(file):
    for name, image in pictures().items():
        dataset = hdf5.create_dataset(file, name, image.shape, image.dtype, image.shape)
        hdf5.write_chunk(dataset, (0,) * image.ndim, image)
        numpy.testing.assert_array_equal(hdf5.read_chunk(dataset, (0,) * image.ndim), image)


@pytest.mark.parametrize("dtype", ["i1", "i2"])
def test_signed_samples_come_back(file, dtype):
    samples = numpy.arange(2 * 40 * 30).reshape(2, 40, 30).astype(dtype)
    dataset = hdf5.create_dataset(file, "frames", samples.shape, dtype, samples.shape)
    hdf5.write_chunk(dataset, (0, 0, 0), samples)
    numpy.testing.assert_array_equal(hdf5.read_chunk(dataset, (0, 0, 0)), samples)


def test_datasets_grow(file):
    dataset = hdf5.create_dataset(file, "frames", (0, 40, 30), "u2", (1, 40, 30), maxshape=(None, 40, 30), bits=12)
    for i in range(3):
        dataset.resize(i + 1, axis=0)
        hdf5.write_chunk(dataset, (i, 0, 0), picture(40, 30, seed=i))
    numpy.testing.assert_array_equal(hdf5.read_chunk(dataset, (2, 0, 0))[0], picture(40, 30, seed=2))


@pytest.mark.parametrize("chunks, dtype, values", [
    ((1, 40, 30), "u2", (1, 2, 30, 40, 0, 0)), ((8, 40, 30), "i2", (1, 2, 30, 320, 0, 1)),
    ((40, 30, 3), "u1", (1, 3, 30, 40, 0, 0)), ((40, 30, 3), "i1", (1, 1, 3, 1200, 0, 1)),
])
def test_the_file_says_what_the_filter_would_say(file, chunks, dtype, values):
    dataset = hdf5.create_dataset(file, "frames", chunks, dtype, chunks)
    number, _, written, _ = dataset.id.get_create_plist().get_filter(0)
    assert (number, written) == (hdf5.FILTER, values)


@pytest.mark.parametrize("chunks, dtype, words", [
    ((40, 30), "f4", "float32"), ((40, 30), ">u2", "big-endian"), ((40, 30), "u4", "uint32"),
    ((40,), "u2", "two sides"), ((1, 40, 1), "u2", "two sides"), ((4, 20000, 4), "u2", "80000 pixels"),
])
def test_other_datasets_are_refused_in_words(file, chunks, dtype, words):
    with pytest.raises((TypeError, ValueError), match=words):
        hdf5.create_dataset(file, "frames", chunks, dtype, chunks)


def test_bits_that_no_sample_has_are_refused(file):
    for dtype, bits in (("u1", 9), ("i1", 9), ("u2", 17), ("u2", -1)):
        with pytest.raises(ValueError, match=f"bits is {bits}"):
            hdf5.create_dataset(file, "frames", (40, 30), dtype, (40, 30), bits=bits)


@pytest.mark.parametrize("verify", [True, False])
def test_arguments_of_encode_go_through(file, monkeypatch, verify):
    given = []
    monkeypatch.setattr(hdf5, "encode", lambda _, **options: given.append(options) or tesk.encode(picture(40, 30)))
    dataset = hdf5.create_dataset(file, "frames", (40, 30), "u2", (40, 30))
    hdf5.write_chunk(dataset, (0, 0), picture(40, 30), bits=12, verify=verify)
    assert given == [{"bits": 12, "verify": verify}]


def test_samples_that_are_no_chunk_are_refused(file):
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30))
    for image in (picture(30, 40), picture(40, 30, "u1", 8), picture(20, 30)):
        with pytest.raises(ValueError, match="chunks are uint16 of shape"):
            hdf5.write_chunk(dataset, (0, 0, 0), image)


def test_datasets_with_other_filters_are_refused(file):
    plain = file.create_dataset("plain", (4, 40, 30), "u2", chunks=(1, 40, 30), fletcher32=True)
    with pytest.raises(ValueError, match="not 32799 alone"):
        hdf5.write_chunk(plain, (0, 0, 0), picture(40, 30))
    with pytest.raises(ValueError, match="not 32799 alone"):
        hdf5.read_chunk(plain, (0, 0, 0))
    creation = hdf5.create_dataset(file, "alone", (40, 30), "u2", (40, 30)).id.get_create_plist().copy()
    creation.set_fletcher32()
    space = h5py.h5s.create_simple((40, 30))
    both = h5py.Dataset(h5py.h5d.create(file.id, b"both", h5py.h5t.NATIVE_UINT16, space, creation))
    with pytest.raises(ValueError, match=r"\[32799, 3\], not 32799 alone"):
        hdf5.write_chunk(both, (0, 0), picture(40, 30))


@pytest.mark.parametrize("image", [
    picture(30, 40), picture(80, 30), picture(40, 60, "u1", 8), picture(40, 30, "u1", 8), picture(20, 20, "u1", 8, colour=True)
], ids=["turned", "longer", "as many bytes", "as many samples", "as many bytes in colour"])
def test_streams_of_other_pictures_are_errors(file, image):
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30))
    dataset.id.write_direct_chunk((0, 0, 0), tesk.encode(image))
    with pytest.raises(tesk.Error, match=r"the chunk is .* uint16 of shape \(40, 30\)") as caught:
        hdf5.read_chunk(dataset, (0, 0, 0))
    assert caught.value.status == 3


def test_chunks_that_were_stored_as_they_are_are_read(file):
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30))
    image = picture(40, 30)
    dataset.id.write_direct_chunk((1, 0, 0), image.tobytes(), filter_mask=1)
    samples = hdf5.read_chunk(dataset, (1, 0, 0))
    numpy.testing.assert_array_equal(samples[0], image)
    # As those that were decoded.
    samples[0, 3, 4] = 5
    dataset.id.write_direct_chunk((2, 0, 0), b"123", filter_mask=1)
    with pytest.raises(tesk.Error, match="3 bytes; its samples have 2400"):
        hdf5.read_chunk(dataset, (2, 0, 0))


def test_max_pixels_limits_a_chunk(file):
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30))
    hdf5.write_chunk(dataset, (0, 0, 0), picture(40, 30))
    assert hdf5.read_chunk(dataset, (0, 0, 0), max_pixels=1200).size == 1200
    with pytest.raises(tesk.Error, match="max_pixels is 1199"):
        hdf5.read_chunk(dataset, (0, 0, 0), max_pixels=1199)


def test_damaged_chunks_are_errors(file):
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30))
    stream = tesk.encode(picture(40, 30))
    for damaged in (stream[:-5], stream + b"x", b"nothing"):
        dataset.id.write_direct_chunk((0, 0, 0), damaged)
        with pytest.raises(tesk.Error):
            hdf5.read_chunk(dataset, (0, 0, 0))


def test_chunks_have_the_bits_of_their_dataset(file):
    image = picture(40, 30, bits=9)
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30), bits=14)
    for offset, bits, declared in (((0, 0, 0), None, 14), ((1, 0, 0), 11, 11)):
        hdf5.write_chunk(dataset, offset, image, bits=bits)
        assert tesk.probe(dataset.id.read_direct_chunk(offset)[1]).bits == declared


def test_chunks_that_were_never_written_are_named(file):
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30))
    with pytest.raises(ValueError, match=r"chunk \(2, 0, 0\) was never written"):
        hdf5.read_chunk(dataset, (2, 0, 0))


def test_masks_are_not_lost_without_a_word(file):
    dataset = hdf5.create_dataset(file, "frames", (4, 40, 30), "u2", (1, 40, 30))
    with pytest.raises(TypeError, match="mask"):
        hdf5.write_chunk(dataset, (0, 0, 0), numpy.ma.masked_array(picture(40, 30)))
