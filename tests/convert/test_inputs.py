"""What tesk-convert takes: every kind of input becomes a stream that holds its samples, and says what it must."""

import struct
import subprocess
import unittest

import numpy
import tifffile

from convert_case import ConvertCase, npy, pam, pbm, picture, plain_pnm, png, png_chunk, pnm, tiff

# Where a stream says how many bits its samples have.
BITS_OF_SAMPLE = 5
PALETTE = numpy.random.default_rng(1).integers(0, 256, (256, 3)).astype("u1")


class Inputs(ConvertCase):
    def require(self, samples, data, *notes, bits=None, arguments=()):
        """data becomes a stream, with these notes, whose image has these samples, and these bits if given."""
        self.write("in", data)
        said = self.convert("-f", *arguments, "in", "out.tk")
        self.assertEqual(said, [f"in: note: {note}" for note in notes])
        self.assertEqual(self.convert("-f", "--drop-metadata", "out.tk", "out.npy"), [])
        self.require_samples("out.npy", samples)
        if bits:
            self.assertEqual(self.path("out.tk").read_bytes()[BITS_OF_SAMPLE], bits)


class Gray(Inputs):
    def test_png_of_every_depth(self):
        for depth in (1, 2, 4, 8, 16):
            with self.subTest(depth=depth):
                samples = picture(37, 21, depth)
                self.require(samples, png(samples, depth), bits=depth)

    def test_interlaced_png_of_every_depth_and_small_sides(self):
        for depth in (1, 2, 4, 8, 16):
            for width, height in ((37, 21), (2, 2), (3, 5), (5, 2)):
                with self.subTest(depth=depth, width=width):
                    samples = picture(width, height, depth)
                    self.require(samples, png(samples, depth, interlaced=True))

    def test_bitmaps_are_0_and_1_with_white_as_1(self):
        samples = picture(37, 21, 1)
        for data in (pbm(samples), plain_pnm(samples, 0), pam(samples, 1, "BLACKANDWHITE")):
            self.require(samples, data, bits=1)

    def test_the_digits_of_a_plain_bitmap_need_no_space(self):
        self.require(numpy.array([[0, 1, 1], [1, 0, 1]]), b"P1 3 2\n100\n010")

    def test_pgm_and_pam_of_every_number_of_bits(self):
        for bits in range(1, 17):
            with self.subTest(bits=bits):
                samples, maximum = picture(19, 23, bits), 2**bits - 1
                for data in (pnm(samples, maximum), plain_pnm(samples, maximum), pam(samples, maximum, "GRAYSCALE")):
                    self.require(samples, data, bits=bits)

    def test_comments_in_a_head_are_named(self):
        samples = picture(9, 8)
        data = pnm(samples).replace(b"P5\n", b"P5 # one\n# two\n")
        self.require(samples, data, "comments are not kept")

    def test_other_maximum_values_are_kept_in_the_trailer(self):
        samples = numpy.minimum(picture(9, 8, 10), 1000)
        self.require(samples, pnm(samples, 1000), "maximum value 1000 is kept in the trailer only", bits=10)

    def test_bits_of_16_bit_samples_are_found(self):
        for bits in range(1, 17):
            samples = picture(19, 23, bits).astype("<u2")
            self.require(samples, png(samples), bits=bits)
            self.require(samples, npy(samples), bits=bits)

    def test_npy_of_each_type_and_order(self):
        for kind in ("u1", "<u2", ">u2"):
            for order in "CF":
                with self.subTest(kind=kind, order=order):
                    samples = picture(37, 21, 8 if kind == "u1" else 12)
                    self.require(samples, npy(numpy.array(samples, dtype=kind, order=order)))

    def test_npy_of_each_version(self):
        samples = picture(7, 5)
        text = npy(samples)[10:128]
        for version in (2, 3):
            head = b"\x93NUMPY" + bytes((version, 0)) + struct.pack("<I", len(text))
            self.require(samples, head + text + samples.tobytes())


class Colour(Inputs):
    def test_rgb_of_8_bits(self):
        samples = picture(37, 21, colour=True)
        inputs = (png(samples), png(samples, interlaced=True), pnm(samples), plain_pnm(samples, 255),
                  pam(samples, 255, "RGB"), tiff(samples), npy(samples), npy(numpy.asfortranarray(samples)))
        for data in inputs:
            self.require(samples, data, bits=8)

    def test_a_ppm_may_have_another_maximum(self):
        samples = picture(9, 8, 6, colour=True)
        self.require(samples, pnm(samples, 63), bits=8)

    def test_palettes_become_rgb(self):
        for depth in (1, 2, 4, 8):
            indices = picture(37, 21, depth)
            colours = PALETTE[: 2**depth]
            data = png(indices, depth, kind=3, before=png_chunk(b"PLTE", colours.tobytes()))
            self.require(colours[indices], data, "the palette becomes RGB")
        shifted = {"PALETTE * 257": PALETTE.astype("u2") * 257, "PALETTE << 8": PALETTE.astype("u2") << 8}
        for name, colours in shifted.items():
            with self.subTest(colours=name):
                data = tiff(indices, photometric="palette", colormap=colours.T)
                self.require(PALETTE[indices], data, "the palette becomes RGB")


class OpaqueAlpha(Inputs):
    def test_an_opaque_channel_is_left_out(self):
        for bits, channels in ((8, 2), (8, 4), (16, 2)):
            samples = picture(9, 8, bits, colour=channels == 4)
            alpha = numpy.full((8, 9, 1), 2**bits - 1, samples.dtype)
            whole = numpy.concatenate([samples.reshape(8, 9, -1), alpha], axis=2)
            kind = "GRAYSCALE_ALPHA" if channels == 2 else "RGB_ALPHA"
            options = {"photometric": "minisblack" if channels == 2 else "rgb"}
            for data in (png(whole), pam(whole, 2**bits - 1, kind), tiff(whole, extrasamples=[2], **options)):
                self.require(samples, data, arguments=["--opaque"])

    def test_a_transparent_colour_that_no_pixel_has_is_left_out(self):
        samples = picture(9, 8, 8, colour=True) // 2
        data = png(samples, before=png_chunk(b"tRNS", struct.pack(">HHH", 1, 2, 255)))
        self.require(samples, data, arguments=["--opaque"])
        gray = picture(9, 8, 12)
        self.require(gray, png(gray, before=png_chunk(b"tRNS", b"\xff\xff")), arguments=["--opaque"])

    def test_an_opaque_palette_stays_a_palette(self):
        indices = picture(9, 8, 2)
        chunks = png_chunk(b"PLTE", PALETTE[:4].tobytes()) + png_chunk(b"tRNS", b"\xff\xff\xff")
        self.require(PALETTE[indices], png(indices, 2, 3, before=chunks), "the palette becomes RGB",
                     arguments=["--opaque"])


class Tiff(Inputs):
    def test_both_byte_orders_and_both_sizes_of_offsets(self):
        for bits in (8, 12, 16):
            samples = picture(37, 21, bits)
            for order in "<>":
                for big in (False, True):
                    with self.subTest(bits=bits, order=order, big=big):
                        kind = samples.dtype.newbyteorder(order)
                        self.require(samples, tiff(samples.astype(kind), byteorder=order, bigtiff=big))

    def test_tiles(self):
        for samples in (picture(70, 37), picture(70, 37, 12), picture(70, 37, colour=True)):
            for tile in ((16, 16), (32, 64), (128, 128)):
                self.require(samples, tiff(samples, tile=tile))

    def test_channels_apart(self):
        samples = picture(70, 37, colour=True)
        planes = numpy.ascontiguousarray(numpy.moveaxis(samples, -1, 0))
        for options in ({}, {"tile": (16, 16)}, {"rowsperstrip": 5}):
            self.require(samples, tiff(planes, planarconfig="separate", **options))

    def test_strips_of_any_height(self):
        for rows in (1, 7, 37, 100):
            self.require(picture(70, 37), tiff(picture(70, 37), rowsperstrip=rows))

    def test_min_is_white_is_kept_as_it_is(self):
        samples = picture(9, 8)
        self.require(samples, tiff(samples, photometric="miniswhite"),
                     "0 is white in this file: the samples are kept as they are, their meaning is not")

    def test_orientation_is_kept_as_it_is(self):
        data = tiff(picture(9, 8), extratags=[(274, "H", 1, 6, True)])
        self.require(picture(9, 8), data, "orientation 6 is neither applied nor kept: the rows are as they were")

    def test_what_tiffcp_writes(self):
        """All ways to write that lose nothing."""
        ways = [["-c", method] for method in ("none", "lzw", "lzw:2", "zip", "zip:2", "packbits")]
        ways += [["-f", "lsb2msb"], ["-f", "lsb2msb", "-c", "lzw"], ["-B"], ["-L"], ["-8"], ["-r", "3"],
                 ["-t", "-w", "16", "-l", "16"], ["-t", "-w", "48", "-l", "16", "-c", "zip"]]
        for samples in (picture(70, 37), picture(70, 37, 12), picture(70, 37, colour=True)):
            for way in ways + ([["-p", "separate"]] if samples.ndim == 3 else []):
                with self.subTest(way=way, kind=samples.dtype):
                    self.require(samples, self.copy(tiff(samples), *way))

    def copy(self, data, *way):
        plain, copy = self.write("plain.tif", data), self.path("copy.tif")
        done = subprocess.run(["tiffcp", *way, plain, copy], capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, f"tiffcp {way}: {done.stderr}")
        return copy.read_bytes()

    def test_bitmaps_of_fax_machines(self):
        samples = picture(70, 37, 1)
        plain = tiff(samples.astype(bool))
        for method in ("none", "g3", "g3:2d", "g4", "lzw", "packbits"):
            for order in ("lsb2msb", "msb2lsb"):
                with self.subTest(method=method, order=order):
                    self.require(samples, self.copy(plain, "-c", method, "-f", order), bits=1)

    def test_tags_that_are_not_kept_are_named(self):
        tags = [(305, "s", 0, "somebody", True), (33432, "s", 0, "whose", True)]
        self.require(picture(9, 8), tiff(picture(9, 8), extratags=tags), "TIFF tags 305, 33432 are not kept")

    def test_images_below_the_page_are_named(self):
        """They may be what the file is for, as in raw files of cameras."""
        options = {"photometric": "minisblack", "resolution": (100, 100), "resolutionunit": 3}
        with tifffile.TiffWriter(self.path("pages")) as file:
            for count in (1, 0):
                file.write(picture(9, 8), subifds=count, software=False, metadata=None, **options)
        self.require(picture(9, 8), self.path("pages").read_bytes(), "TIFF tag 330 is not kept")


class Notes(Inputs):
    def test_samples_that_stand_too_far_left(self):
        samples = picture(19, 23, 12) << 4
        self.require(samples, npy(samples), "the low 4 bits of all samples are 0: shifted right, the stream would be "
                     "much shorter, by about 4 bits for each sample", bits=16)
        samples = picture(19, 23, 7) << 1
        self.require(samples, npy(samples), "the lowest bit of all samples is 0: shifted right, the stream would be "
                     "much shorter, by about 1 bit for each sample")

    def test_bayer_mosaics(self):
        rows, columns = numpy.indices((64, 64))
        samples = (1000 + 10 * rows + 7 * columns + 500 * (rows % 2) + 900 * (columns % 2)).astype("<u2")
        self.write("in", npy(samples))
        said = self.convert("in", "out.tk")
        self.assertEqual(len(said), 1)
        self.assertRegex(said[0], "^in: note: looks like a Bayer mosaic: as four planes, one below the other, "
                                  r"its middle takes \d+\.\d\d instead of \d+\.\d\d bits for each sample$")

    def test_chunks_of_a_png_that_are_not_kept(self):
        chunks = png_chunk(b"gAMA", struct.pack(">I", 45455)) + png_chunk(b"prIv", b"x")
        self.require(picture(9, 8), png(picture(9, 8), before=chunks), "PNG chunks gAMA, prIv are not kept")

    def test_bytes_behind_an_image(self):
        for data in (png(picture(9, 8)), pnm(picture(9, 8))):
            self.require(picture(9, 8), data + b"xyz", "3 bytes behind the image are not kept")
        self.require(picture(9, 8), npy(picture(9, 8)) + b"xy", "2 bytes behind the image are not kept")


if __name__ == "__main__":
    unittest.main()
