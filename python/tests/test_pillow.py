"""The plugin for Pillow."""

import io
import pickle
import warnings

import numpy
import pytest
import tesk
import tesk.pillow
from conftest import picture, pictures
from PIL import Image
from tesk import trailer

MODES = {"gray8": "L", "rgb8": "RGB", "gray12": "I;16", "gray16": "I;16"}


@pytest.mark.parametrize("name", MODES)
def test_streams_open(tmp_path, name):
    image, path = pictures()[name], tmp_path / "a.tk"
    tesk.write(path, image)
    with Image.open(path) as opened:
        assert (opened.format, opened.mode, opened.size) == ("TESK", MODES[name], image.shape[1::-1])
        assert opened.info["complete"] and opened.get_format_mimetype() == "image/x-tesk"
        numpy.testing.assert_array_equal(numpy.asarray(opened), image)


@pytest.mark.parametrize("name", MODES)
def test_images_are_saved(tmp_path, name):
    image, path = pictures()[name], tmp_path / "a.tk"
    Image.fromarray(image).save(path)
    numpy.testing.assert_array_equal(tesk.read(path), image)


def test_big_endian_samples_are_saved(tmp_path):
    image = picture(20, 30)
    Image.frombytes("I;16B", (30, 20), image.astype(">u2").tobytes()).save(tmp_path / "a.tk")
    numpy.testing.assert_array_equal(tesk.read(tmp_path / "a.tk"), image)


def test_arguments_of_encode_go_through():
    file = io.BytesIO()
    Image.fromarray(picture(60, 40)).save(file, "TESK", budget=500, bits=14)
    assert len(file.getvalue()) == 500 and tesk.probe(file.getvalue()).bits == 14


@pytest.mark.parametrize("mode", ["1", "P", "LA", "RGBA", "CMYK", "F", "I"])
def test_other_modes_are_refused_in_words(tmp_path, mode):
    with pytest.raises(OSError, match=f"cannot write mode {mode} as TESK"):
        Image.new(mode, (8, 8)).save(tmp_path / "a.tk")
    assert not (tmp_path / "a.tk").exists()


def test_cut_streams_open_as_approximations():
    image = picture(200, 100, "u1", 8)
    stream = tesk.encode(image)
    opened = Image.open(io.BytesIO(stream[: len(stream) // 3]))
    assert not opened.info["complete"]
    assert numpy.abs(numpy.asarray(opened).astype(int) - image).mean() < 8


def test_other_files_are_not_opened():
    for junk in (b"", b"TK30", b"TK30" + b"\xff" * 30, b"nothing" * 9):
        with pytest.raises(Image.UnidentifiedImageError):
            Image.open(io.BytesIO(junk))


def test_damaged_files_are_not_opened():
    file = bytearray(trailer.join(tesk.encode(picture(20, 20)), {"desc": "x"}))
    file[-9] ^= 1
    with pytest.raises(Image.UnidentifiedImageError):
        Image.open(io.BytesIO(file))


def test_bombs_are_refused_by_pillows_own_limit():
    head = bytearray(tesk.encode(picture(9, 9)))
    head[6:10] = b"\xff\xff\xff\xff"
    with pytest.raises(Image.DecompressionBombError):
        Image.open(io.BytesIO(head))
    head[6:10] = b"\x00\x30\x00\x30"
    with pytest.warns(Image.DecompressionBombWarning):
        Image.open(io.BytesIO(head))


def test_thumbnails_decode_a_reduced_picture():
    image = picture(400, 300, "u1", 8)
    opened = Image.open(io.BytesIO(tesk.encode(image)))
    opened.thumbnail((50, 50))
    assert opened.size in ((38, 50), (37, 50))
    averages = numpy.asarray(Image.fromarray(image).resize(opened.size, Image.Resampling.BOX))
    assert numpy.abs(numpy.asarray(opened).astype(int) - averages).mean() < 4


def test_draft_is_the_picture_of_reduce():
    stream = tesk.encode(picture(400, 300, "u1", 8, colour=True))
    opened = Image.open(io.BytesIO(stream))
    mode, box = opened.draft("L", (60, 60))
    assert (mode, box) == ("RGB", (0, 0, 75.0, 100.0)) and opened.size == (75, 100)
    numpy.testing.assert_array_equal(numpy.asarray(opened), tesk.decode(stream, reduce=2))
    assert opened.draft("L", (1, 1)) is None


@pytest.mark.parametrize("size, drafted", [((10, 390), (300, 400)), ((290, 10), (300, 400)), ((150, 200), (150, 200))])
def test_no_side_of_a_draft_is_shorter_than_asked(size, drafted):
    opened = Image.open(io.BytesIO(tesk.encode(picture(400, 300))))
    opened.draft(None, size)
    assert opened.size == drafted


def test_metadata_goes_through():
    file = io.BytesIO()
    exif = Image.Exif()
    exif[0x010E] = "a description"
    Image.fromarray(picture(20, 20)).save(file, "TESK", icc_profile=b"profile", exif=exif, dpi=(300, 72))
    info = Image.open(file).info
    assert info["icc_profile"] == b"profile"
    assert tuple(round(dots) for dots in info["dpi"]) == (300, 72)
    assert Image.open(file).getexif()[0x010E] == "a description"
    # What begins an Exif block in a JPEG file is no part of the box.
    assert trailer.split(file.getvalue())[1]["exif"][:2] in (b"II", b"MM")


def test_the_colour_profile_of_an_image_is_kept_unless_another_is_given():
    first, again, without = io.BytesIO(), io.BytesIO(), io.BytesIO()
    Image.fromarray(picture(20, 20)).save(first, "TESK", icc_profile=b"profile")
    Image.open(first).save(again, "TESK")
    assert Image.open(again).info["icc_profile"] == b"profile"
    Image.open(first).save(without, "TESK", icc_profile=None)
    assert "icc_profile" not in Image.open(without).info


def test_copies_and_pixels_work_like_others():
    image = picture(20, 30)
    opened = Image.open(io.BytesIO(tesk.encode(image)))
    assert opened.getpixel((3, 4)) == image[4, 3]
    numpy.testing.assert_array_equal(numpy.asarray(opened.copy()), image)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        numpy.testing.assert_array_equal(numpy.asarray(opened.crop((2, 3, 12, 13))), image[3:13, 2:12])


def test_files_are_closed_when_they_are_loaded(tmp_path):
    """As those of other formats: else an image that is not closed warns when it goes."""
    path = tmp_path / "a.tk"
    Image.fromarray(picture(20, 20)).save(path)
    opened = Image.open(path)
    file = opened.fp
    opened.load()
    assert file.closed and opened.getpixel((3, 4)) == picture(20, 20)[4, 3]
    with open(path, "rb") as own:
        Image.open(own).load()
        assert not own.closed


def test_images_are_loaded_when_their_file_is_gone():
    file = io.BytesIO(tesk.encode(picture(20, 20)))
    opened = Image.open(file)
    file.close()
    numpy.testing.assert_array_equal(numpy.asarray(opened), picture(20, 20))
    checked = Image.open(io.BytesIO(tesk.encode(picture(20, 20))))
    checked.verify()
    numpy.testing.assert_array_equal(numpy.asarray(checked), picture(20, 20))


@pytest.mark.parametrize("name", MODES)
def test_images_go_through_pickle(name):
    image = pictures()[name]
    back = pickle.loads(pickle.dumps(Image.open(io.BytesIO(tesk.encode(image)))))
    assert back.getpixel((0, 0)) is not None and back.draft(None, (9, 9)) is None
    numpy.testing.assert_array_equal(numpy.asarray(back), image)


def test_a_draft_without_a_size_is_the_image():
    opened = Image.open(io.BytesIO(tesk.encode(picture(100, 100))))
    assert opened.draft("L", None) is None and opened.size == (100, 100)
