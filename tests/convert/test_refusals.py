"""What tesk-convert refuses, in which words. Nothing is written then, and the status is 1."""

import io
import struct
import unittest

import numpy
from PIL import Image

from convert_case import ConvertCase, npy, pam, pbm, picture, plain_pnm, png, png_chunk, pnm, tiff

ALPHA = "has an alpha channel, which a stream cannot hold; an opaque one is left out with --opaque"
SEEN_THROUGH = "has an alpha channel that is not opaque everywhere, which a stream cannot hold"
DEEP_COLOUR = ("is 16-bit RGB; a stream holds 8-bit RGB or 16-bit gray: convert its three planes one by one")
SIDE_OF_1 = "has a side of 1, which no stream restores: put rows or columns beside it"
CONVERT_FIRST = "convert it to unsigned samples of 8 or 16 bits first"
TO_UINT = "convert it to uint8 or uint16 first"
LOSSY = "which is lossy: its stream would be several times as long"


def holds(what, instead):
    return f"has {what}; a stream holds whole numbers of 1 to 16 bits: {instead}"


def colours(what):
    return f"is {what}; a stream holds gray or RGB: convert it to one of them first"


def saved(samples, kind, **options):
    file = io.BytesIO()
    Image.fromarray(samples).save(file, kind, **options)
    return file.getvalue()


class Refusals(ConvertCase):
    def require(self, words, data, *arguments):
        self.write("in", data)
        with self.subTest(words=words):
            self.refuse(f"in: {words}", *arguments, "in", "out.tk")


class Kinds(Refusals):
    def test_alpha(self):
        for bits, channels in ((8, 2), (8, 4), (16, 2)):
            samples = numpy.full((8, 9, channels), 2**bits - 1, "u1" if bits == 8 else "<u2")
            samples[7, 8, -1] -= 1
            kind = "GRAYSCALE_ALPHA" if channels == 2 else "RGB_ALPHA"
            options = {"photometric": "minisblack" if channels == 2 else "rgb", "extrasamples": [2]}
            for data in (png(samples), pam(samples, 2**bits - 1, kind), tiff(samples, **options)):
                self.require(ALPHA, data)
                self.require(SEEN_THROUGH, data, "--opaque")

    def test_transparent_colours(self):
        samples = picture(9, 8)
        data = png(samples, before=png_chunk(b"tRNS", struct.pack(">H", samples[3, 4])))
        self.require(ALPHA, data)
        self.require(SEEN_THROUGH, data, "--opaque")
        indices = picture(9, 8, 2)
        chunks = png_chunk(b"PLTE", bytes(range(12))) + png_chunk(b"tRNS", b"\xff\xff\xfe")
        self.require(SEEN_THROUGH, png(indices, 2, 3, before=chunks), "--opaque")

    def test_alpha_of_an_array_has_no_way(self):
        """--opaque is offered for files that say that a channel is alpha, and an array does not."""
        for channels in (2, 4):
            data = npy(numpy.full((8, 9, channels), 255, "u1"))
            self.require(colours(f"an array of {channels} channels"), data)
            self.require(colours(f"an array of {channels} channels"), data, "--opaque")

    def test_colours_of_16_bits(self):
        samples = picture(9, 8, 16, colour=True)
        for data in (png(samples), pnm(samples), plain_pnm(samples, 65535), pam(samples, 65535, "RGB"),
                     tiff(samples), npy(samples)):
            self.require(DEEP_COLOUR, data)
        fine = numpy.full((3, 256), 0x1234, "u2")
        self.require("has a palette of 16-bit colours; a stream holds 8-bit RGB",
                     tiff(picture(9, 8), photometric="palette", colormap=fine))

    def test_samples_of_other_types(self):
        shape = (8, 9)
        for kind, what in (("i1", "signed samples"), ("<i2", "signed samples"), ("<f4", "floating-point samples"),
                           ("<f8", "floating-point samples"), ("<u4", "samples of 32 bits")):
            self.require(holds(what, CONVERT_FIRST), tiff(numpy.zeros(shape, kind)))
        self.require(holds("complex samples", CONVERT_FIRST), tiff(numpy.zeros(shape, "<c8")))
        for kind, what in (("i1", "signed samples"), (">i2", "signed samples"), ("<i4", "signed samples"),
                           ("<f2", "floating-point samples"), ("<f8", "floating-point samples"),
                           ("?", "samples that are no numbers")):
            self.require(holds(what, TO_UINT), npy(numpy.zeros(shape, kind)))
        self.require(holds("signed samples", "--raw 9x8:int16+128 keeps their sign"), npy(numpy.zeros(shape, "<i2")))
        self.require(holds("samples of more than 16 bits", "convert it to uint16 first"), npy(numpy.zeros(shape, "u4")))
        self.require(holds("complex samples", "save real and imaginary part one by one"), npy(numpy.zeros(shape, "c8")))
        self.require("has floating-point samples; a stream holds whole numbers of 1 to 16 bits",
                     b"Pf\n9 8\n-1.0\n" + bytes(9 * 8 * 4))

    def test_packed_samples(self):
        plain = tiff(numpy.zeros((8, 9), "<u2"))
        for bits in (10, 12, 14):
            entry = struct.pack("<HHI", 258, 3, 1)
            data = plain.replace(entry + struct.pack("<I", 16), entry + struct.pack("<I", bits))
            self.assertNotEqual(data, plain)
            self.require(holds(f"samples packed to {bits} bits", "unpack them to 16 bits first"), data)

    def test_several_images(self):
        self.require("has 12 pages; a stream holds one image: tiffsplit makes files of them",
                     tiff(numpy.zeros((12, 8, 9), "u1"), photometric="minisblack"))
        frames = [Image.fromarray(numpy.full((8, 9), i, "u1")) for i in (0, 1)]
        file = io.BytesIO()
        frames[0].save(file, "PNG", save_all=True, append_images=frames[1:])
        self.require("has 2 pages; a stream holds one image: save its frames one by one", file.getvalue())
        self.require("has several images; a stream holds one: pamsplit makes files of them", pnm(picture(9, 8)) * 2)
        self.require("has 5 pages; a stream holds one image: save its planes one by one",
                     npy(numpy.zeros((5, 8, 9), "u1")))
        self.require("has 6 pages; a stream holds one image: save its planes one by one",
                     npy(numpy.zeros((2, 3, 8, 9), "u1")))
        self.require("is an array of fewer than two dimensions", npy(numpy.zeros(8, "u1")))
        self.require("has records; a stream holds gray or RGB", npy(numpy.zeros((8, 9), [("a", "u1"), ("b", "u1")])))

    def test_other_colours(self):
        four = numpy.zeros((8, 9, 4), "u1")
        self.require(colours("CMYK"), tiff(four, photometric="separated"))
        self.require(colours("YCbCr"), tiff(four[..., :3], photometric="ycbcr"))
        self.require(colours("CIE Lab"), tiff(four[..., :3], photometric="cielab"))
        self.require(colours("an image of 5 channels"), pam(numpy.zeros((8, 9, 5), "u1"), 255, "RGB"))
        self.require(colours("CMYK"), pam(four, 255, "CMYK"))

    def test_other_formats(self):
        samples = picture(16, 16, colour=True)
        for kind, name in (("JPEG", "a JPEG"), ("WEBP", "a WebP")):
            self.require(f"is {name} file, {LOSSY}", saved(samples, kind))
        perhaps = "save it as PNG first where it is lossless; of a lossy one the stream would be several times as long"
        self.require(f"is a WebP file: {perhaps}", saved(samples, "WEBP", lossless=True))
        self.require(f"is a JPEG 2000 file: {perhaps}", saved(samples, "JPEG2000"))
        self.require(f"is JPEG within TIFF, {LOSSY}", saved(samples, "TIFF", compression="jpeg"))
        self.require("is a GIF file: save its picture as PNG first", saved(samples, "GIF"))
        self.require("is a BMP file: save it as PNG first", saved(samples, "BMP"))
        self.require("is compressed by gzip: gunzip it first", b"\x1f\x8b\x08\0")
        self.require("is empty", b"")
        unknown = "is neither PNM, PAM, PNG, TIFF, NPY nor a stream; for samples without a head there is --raw"
        for data in (b"x", b"P8 2 2 255\n", b"just a text that says nothing", bytes(100)):
            self.require(unknown, data)


class Sides(Refusals):
    def test_sides_of_1(self):
        for shape in ((1, 9), (8, 1), (1, 1)):
            samples = numpy.ones(shape, "u1")
            for data in (png(samples), pnm(samples), pbm(samples), plain_pnm(samples, 1), tiff(samples), npy(samples),
                         pam(samples, 255, "GRAYSCALE")):
                self.require(SIDE_OF_1, data)
        self.require(SIDE_OF_1, b"12", "--raw", "1x2:gray8")

    def test_sides_of_0(self):
        self.require("has no pixels", b"P5 0 5 255\n")
        self.require("has no pixels", npy(numpy.zeros((8, 0), "u1")))

    def test_sides_above_65535(self):
        """They are refused by the head alone: nothing is allocated for them."""
        for width, height in ((70000, 300), (300, 70000), (65536, 2), (4000000000, 4000000000)):
            words = f"is {width} x {height} pixels; a stream holds up to 65535 x 65535"
            self.require(words, b"P5 %d %d 255\n" % (width, height))
            if width < 2**31:
                flat = numpy.lib.stride_tricks.as_strided(numpy.zeros(1, "u1"), (2, 2), (0, 0))
                data = bytearray(png(flat))
                data[16:24] = struct.pack(">II", width, height)
                chunk = png_chunk(b"IHDR", bytes(data[16:29]))
                self.require(words, bytes(data[:8]) + chunk + bytes(data[33:]))
        self.require("is 70000 x 2 pixels; a stream holds up to 65535 x 65535", tiff(numpy.zeros((2, 70000), "u1")))
        self.require("is 2 x 70000 pixels; a stream holds up to 65535 x 65535", npy(numpy.zeros((70000, 2), "u1")))

    def test_more_pixels_than_allowed(self):
        self.require("is 30000 x 30000 pixels, more than the 500000000 of --max-pixels", b"P5 30000 30000 255\n")
        data = png(picture(50, 21))
        self.require("is 50 x 21 pixels, more than the 1049 of --max-pixels", data, "--max-pixels", "1049")
        self.require("is 50 x 21 pixels, more than the 1000 of --max-pixels", data, "--max-pixels", "1K")
        self.convert("--max-pixels", "1050", "in", "out.tk")
        self.refuse("out.tk: is 50 x 21 pixels, more than the 1049 of --max-pixels", "--max-pixels", "1049", "out.tk",
                    "out.png")


class Damage(Refusals):
    """The row is named in which a file ends, from 1."""

    def test_pnm(self):
        for samples in (picture(40, 300), picture(40, 300, 12), picture(40, 300, colour=True)):
            data = pnm(samples)
            size = samples[0].nbytes
            self.require("ends in row 17 of 300", data[: len(data) - 284 * size])
            self.require("ends in row 17 of 300", data[: len(data) - 283 * size - 1])
            self.require("ends in row 300 of 300", data[:-1])
        self.require("ends in row 17 of 300", pbm(picture(41, 300, 1))[: -284 * 6])
        lines = plain_pnm(picture(40, 300, 12), 4095).splitlines(keepends=True)
        self.require("ends in row 17 of 300", b"".join(lines[: 3 + 16]) + b" " * 100000)
        self.require("is a damaged PNM: no width", b"P5\n")
        self.require("is a damaged PNM: no height", b"P5 9 x")
        self.require("is a damaged PNM: no maximum value from 1 to 65535", b"P5 9 8 65536\n")
        self.require("is a damaged PNM: its maximum value is 0", b"P5 9 8 0\n")
        self.require("is a damaged PNM: a sample above its maximum value 100 in row 3", pnm(
            numpy.array([[1, 2], [3, 100], [101, 0]], "u1"), 100))
        self.require("is a damaged PNM: no number up to its maximum value in row 2", b"P2 2 2 9\n1 2 3 10\n")
        self.require("is a damaged PAM: its head has no end", b"P7\nWIDTH 9\n")
        self.require("is a damaged PAM: no maximum value", b"P7\nWIDTH 9\nHEIGHT 8\nDEPTH 1\nENDHDR\n")

    def test_npy(self):
        samples = picture(40, 300, 12)
        self.require("ends in row 17 of 300", npy(samples)[: -284 * 80])
        self.require("ends in row 300 of 300", npy(samples)[:-1])
        self.require("is a damaged NPY: its head has no end", npy(samples)[:100])
        self.require("is a damaged NPY: its version is unknown", b"\x93NUMPY\x04\0" + bytes(100))

    def test_png(self):
        # libpng takes 8192 bytes at once: a row has more of them.
        noise = numpy.random.default_rng(1).integers(0, 256, (30, 40000)).astype("u1")
        data = png(noise)
        at = data.index(b"IDAT") + 4
        self.require("ends in row 17 of 30", data[: at + int(16.5 * 40000)])
        self.require("is a damaged PNG: IDAT: incorrect data check, in row 30 of 30",
                     data[: at + 100] + b"x" + data[at + 101 :])
        self.require("is a damaged PNG: the file ends early", data[:-1])
        self.require("is a damaged PNG: IHDR: CRC error", data[:20] + b"x" + data[21:])

    def test_numbers_beyond_a_palette(self):
        colours = png_chunk(b"PLTE", bytes(3 * 100))
        self.require("is a damaged PNG: its palette lacks a colour that pixels have",
                     png(numpy.full((8, 9), 100, "u1"), kind=3, before=colours))

    def test_tiff(self):
        samples = picture(40, 300)
        data = tiff(samples, rowsperstrip=1)
        self.require("ends in row 17 of 300", data[: -284 * 40])
        self.require("ends in row 300 of 300", data[:-1])
        self.require("is a damaged TIFF: it does not say what its colours are",
                     data.replace(struct.pack("<HHI", 262, 3, 1), struct.pack("<HHI", 261, 3, 1)))

    def test_streams(self):
        self.write("in.npy", npy(picture(40, 30)))
        self.convert("in.npy", "in.tk")
        data = self.path("in.tk").read_bytes()
        at = data.index(b"TKTRAIL1") - 20
        self.write("bad.tk", data[:at] + bytes([data[at] ^ 1]) + data[at + 1 :])
        words = "bad.tk: is damaged: its checksum is another than that of its bytes"
        self.refuse(words, "bad.tk", "bad.png")
        self.refuse(words, "--check", "bad.tk")
        self.refuse("in.npy: is no stream", "--check", "in.npy")


if __name__ == "__main__":
    unittest.main()
