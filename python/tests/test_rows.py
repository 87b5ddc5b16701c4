"""tesk.Encoder and tesk.Decoder: images by rows."""

import numpy
import pytest
import tesk
from conftest import picture, pictures


@pytest.mark.parametrize("row_count", [1, 7, 70, 100])
def test_rows_have_the_stream_of_the_image(image, row_count):
    bits = 8 * image.itemsize
    with tesk.Encoder(image.shape, image.dtype, bits=bits) as encoder:
        for top in range(0, len(image), row_count):
            encoder.write(image[top : top + row_count])
        assert encoder.finish() == tesk.encode(image, bits=bits)


@pytest.mark.parametrize("row_count", [1, 7, 70, 100])
def test_blocks_are_the_image(image, row_count):
    with tesk.Decoder(tesk.encode(image)) as decoder:
        assert decoder.info.shape == image.shape and decoder.is_complete
        blocks = list(decoder.blocks(row_count))
    assert [len(block) for block in blocks[:-1]] == [row_count] * (len(blocks) - 1)
    numpy.testing.assert_array_equal(numpy.concatenate(blocks), image)


def test_rows_of_any_layout_are_taken():
    image = picture(60, 40)
    with tesk.Encoder(image.shape, ">u2", bits=12) as encoder:
        encoder.write(image[:20].astype(">u2"))
        encoder.write(numpy.asfortranarray(image[20:40]))
        encoder.write(numpy.repeat(image[40:], 2, axis=0)[::2])
        assert encoder.finish() == tesk.encode(image, bits=12)


def test_the_bits_of_the_type_are_declared_unless_given():
    for name, image in pictures().items():
        with tesk.Encoder(image.shape, image.dtype) as encoder:
            encoder.write(image)
            assert tesk.probe(encoder.finish()).bits == 8 * image.itemsize, name


def test_a_budget_cuts():
    image = picture(60, 40)
    with tesk.Encoder(image.shape, "u2", bits=12, budget=500) as encoder:
        encoder.write(image)
        assert encoder.finish() == tesk.encode(image, bits=12, budget=500)


def test_read_gives_what_is_left():
    image = picture(60, 40)
    with tesk.Decoder(tesk.encode(image)) as decoder:
        numpy.testing.assert_array_equal(decoder.read(50), image[:50])
        assert decoder.read(0).shape == (0, 40)
        out = numpy.empty((10, 40), numpy.uint16)
        assert decoder.read(99, out=out) is out
        numpy.testing.assert_array_equal(out, image[50:])
        assert decoder.read(5).shape == (0, 40)
        assert list(decoder.blocks(5)) == []
        with pytest.raises(ValueError, match="count is -1"):
            decoder.read(-1)
        with pytest.raises(ValueError, match="at least a row"):
            decoder.blocks(0)


def test_wrong_rows_are_refused_and_the_image_goes_on():
    image = picture(60, 40)
    with tesk.Encoder(image.shape, "u2", bits=12) as encoder:
        encoder.write(image[:50])
        for rows in (image[50:, :39], image[50:].astype("u1")):
            with pytest.raises(ValueError, match="rows are"):
                encoder.write(rows)
        with pytest.raises(TypeError):
            encoder.write(image[50])
        with pytest.raises(ValueError, match=r"50 \+ 60 rows; the image has 60"):
            encoder.write(image)
        with pytest.raises(ValueError, match="50 rows have come; the image has 60"):
            encoder.finish()
        encoder.write(image[50:])
        assert encoder.finish() == tesk.encode(image, bits=12)


def test_what_is_closed_stays_closed():
    image = picture(20, 20)
    encoder = tesk.Encoder(image.shape, "u2")
    with encoder:
        encoder.write(image)
    with pytest.raises(ValueError, match="the Encoder is closed"):
        encoder.finish()
    decoder = tesk.Decoder(tesk.encode(image))
    decoder.close()
    decoder.close()
    with pytest.raises(ValueError, match="the Decoder is closed"):
        decoder.read(1)


@pytest.mark.parametrize("shape, dtype", [((4, 4), "f4"), ((4, 4, 3), "u2"), ((4,), "u1"), ((4, 4, 4), "u1")])
def test_other_images_are_refused(shape, dtype):
    with pytest.raises(TypeError, match="tesk holds"):
        tesk.Encoder(shape, dtype)


def test_the_first_call_refuses_what_the_image_lacks():
    with pytest.raises(tesk.Error, match="65535"):
        tesk.Encoder((70000, 4), "u1")
    with pytest.raises(ValueError, match="bits is 9"):
        tesk.Encoder((4, 4), "u1", bits=9)
    with pytest.raises(ValueError, match="16 bytes"):
        tesk.Encoder((4, 4), "u1", budget=3)


def test_cut_streams_need_partial():
    stream = tesk.encode(picture(60, 40))[:600]
    with pytest.raises(tesk.Error, match="the stream is cut"):
        tesk.Decoder(stream)
    with tesk.Decoder(stream, partial=True) as decoder:
        assert not decoder.is_complete
        rows = numpy.concatenate(list(decoder.blocks(16)))
    numpy.testing.assert_array_equal(rows, tesk.decode(stream, partial=True))
    with pytest.raises(tesk.Error, match="max_pixels is 10"):
        tesk.Decoder(stream, partial=True, max_pixels=10)


@pytest.mark.parametrize("shape, budget", [((1, 20), None), ((20, 1), 100)])
def test_an_image_that_no_stream_restores_is_refused_in_the_end(shape, budget):
    encoder = tesk.Encoder(shape, "u1", budget=budget)
    encoder.write(numpy.ones(shape, "u1"))
    with pytest.raises(tesk.Error, match="no stream restores this image") as caught:
        encoder.finish()
    assert caught.value.status == 9


def test_an_encoder_gives_its_stream_once():
    encoder = tesk.Encoder((20, 20), "u2")
    encoder.write(picture(20, 20))
    encoder.finish()
    for call in (encoder.finish, lambda: encoder.write(picture(20, 20))):
        with pytest.raises(ValueError, match="the Encoder is closed"):
            call()


def test_close_lets_go_of_the_stream_and_of_the_rows(monkeypatch):
    abandoned = []
    stream = bytearray(tesk.encode(picture(20, 20)))
    decoder = tesk.Decoder(stream)
    with pytest.raises(BufferError):
        stream.append(0)
    monkeypatch.setattr("tesk._rows.lib", type("Library", (), {"tesk_abandon": abandoned.append}))
    decoder.close()
    monkeypatch.undo()
    assert abandoned == [decoder._codec]
    stream.append(0)


def test_the_stream_stays_alive_with_its_decoder():
    image = picture(60, 40)
    decoder = tesk.Decoder(bytearray(tesk.encode(image)))
    numpy.testing.assert_array_equal(decoder.read(60), image)


def test_a_stream_that_changes_before_its_first_row_is_refused(monkeypatch):
    """Rows would be longer than the arrays that they go into."""
    stream = bytearray(tesk.encode(picture(60, 40)))

    def measure_and_change(view):
        stream[6] += 1
        return len(stream), True

    monkeypatch.setattr("tesk._rows.measure", measure_and_change)
    with pytest.raises(tesk.Error, match="the stream has changed"):
        tesk.Decoder(stream)


def test_images_without_pixels_go_through():
    with tesk.Encoder((0, 5), "u1") as encoder:
        stream = encoder.finish()
    with tesk.Decoder(stream) as decoder:
        assert list(decoder.blocks(3)) == []
