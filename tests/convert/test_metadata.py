"""What tesk-convert keeps besides the samples, there and back, and the bytes of raw files."""

import struct
import unittest
import zlib

import numpy
import tifffile
from PIL import Image, ImageCms

from convert_case import ConvertCase, npy, pam, picture, png, png_chunk, pnm, tiff


class MetadataAndBack(ConvertCase):
    icc = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
    xmp = b"<x:xmpmeta xmlns:x='adobe:ns:meta/'/>"
    exif = b"MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0"
    words = "Zellen, 40 \u00b5m"

    def chunks(self):
        texts = ((b"XML:com.adobe.xmp", self.xmp), (b"Description", self.words.encode()))
        chunks = [png_chunk(b"iCCP", b"profile\0\0" + zlib.compress(self.icc)),
                  png_chunk(b"pHYs", struct.pack(">IIB", 11811, 5906, 1)), png_chunk(b"eXIf", self.exif)]
        return b"".join(chunks + [png_chunk(b"iTXt", key + b"\0\0\0\0\0" + text) for key, text in texts])

    def require_png(self, name, has_exif):
        with Image.open(self.path(name)) as image:
            image.load()
            self.assertEqual(image.info["icc_profile"], self.icc)
            self.assertEqual(image.info["XML:com.adobe.xmp"], self.xmp.decode())
            self.assertEqual(image.info["Description"], self.words)
            self.assertAlmostEqual(image.info["dpi"][0], 300, delta=0.02)
            self.assertAlmostEqual(image.info["dpi"][1], 150, delta=0.02)
            self.assertEqual(image.info.get("exif", b"").removeprefix(b"Exif\0\0"), self.exif if has_exif else b"")

    def require_tiff(self, name):
        with tifffile.TiffFile(self.path(name)) as file:
            tags = {tag.code: tag.value for tag in file.pages[0].tags}
        self.assertEqual(tags[34675], self.icc)
        self.assertEqual(bytes(tags[700]), self.xmp)
        self.assertEqual(tags[270], self.words)
        self.assertEqual(tags[296], 3)
        for tag, expected in ((282, 118.11), (283, 59.06)):
            self.assertAlmostEqual(tags[tag][0] / tags[tag][1], expected, places=3)

    def test_png(self):
        self.write("in.png", png(picture(9, 8, colour=True), before=self.chunks()))
        self.assertEqual(self.convert("in.png", "out.tk"), [])
        self.assertEqual(self.convert("out.tk", "back.png"), [])
        self.require_png("back.png", has_exif=True)
        self.assertEqual(self.convert("out.tk", "back.tif"), ["out.tk: note: the EXIF data is not kept"])
        self.require_tiff("back.tif")

    def test_tiff(self):
        tags = [(34675, 7, len(self.icc), self.icc, True), (700, 1, len(self.xmp), self.xmp, True),
                (270, 2, None, self.words.encode(), True)]
        data = tiff(picture(9, 8, colour=True), extratags=tags, resolution=(300, 150), resolutionunit=2)
        self.write("in.tif", data)
        self.assertEqual(self.convert("in.tif", "out.tk"), [])
        self.assertEqual(self.convert("out.tk", "back.tif") + self.convert("out.tk", "back.png"), [])
        self.require_tiff("back.tif")
        self.require_png("back.png", has_exif=False)

    def test_a_profile_that_no_png_may_have_is_left_out_and_named(self):
        self.write("in.tif", tiff(picture(9, 8), extratags=[(34675, 7, 200, b"x" * 200, True)]))
        self.assertEqual(self.convert("in.tif", "out.tk"), [])
        self.assertEqual(self.convert("out.tk", "back.tif"), [])
        self.assertEqual(self.convert("out.tk", "back.png"),
                         ["out.tk: note: the colour profile, which libpng refuses, is not kept"])
        self.assertEqual(self.convert("--drop-metadata", "out.tk", "dropped.png"), [])
        self.require_same("back.png", "in.tif")

    def test_other_formats_say_what_they_lose(self):
        self.write("in.png", png(picture(9, 8, colour=True), before=self.chunks()))
        self.convert("in.png", "out.tk")
        lost = "the colour profile, the EXIF data, the XMP data, the description, the resolution"
        for name in ("back.ppm", "back.npy", "back.raw", "back.pam"):
            self.assertEqual(self.convert("out.tk", name), [f"out.tk: note: {lost} are not kept"])
        self.refuse(f"out.tk: {lost} would not be kept, which --strict refuses", "--strict", "out.tk", "x.ppm")
        self.assertEqual(self.convert("--drop-metadata", "out.tk", "dropped.ppm"), [])
        self.assertEqual(self.convert("--bare", "in.png", "bare.tk"), [f"in.png: note: {lost} are not kept"])
        self.assertEqual(self.convert("--bytes", "50", "in.png", "cut.tk"), [f"in.png: note: {lost} are not kept"])

    def test_the_maximum_value_of_a_pnm(self):
        for maximum in (1, 5, 100, 255, 256, 1000, 4095, 65535):
            samples = picture(9, 8, 16) % (maximum + 1)
            samples = samples.astype("u1" if maximum < 256 else "<u2")
            self.write("in.pgm", pnm(samples, maximum))
            self.convert("-f", "in.pgm", "out.tk")
            for name, write in (("back.pgm", pnm(samples, maximum)), ("back.pam", pam(samples, maximum, "GRAYSCALE"))):
                self.convert("-f", "out.tk", name)
                self.assertEqual(self.path(name).read_bytes(), write, maximum)


class Raw(ConvertCase):
    def test_raw_bytes_of_every_type_come_back(self):
        noise = numpy.random.default_rng(1).integers(0, 256, 30 * 20 * 3).astype("u1").tobytes()
        kinds = [("gray8", 1), ("rgb8", 3), ("gray16", 2), ("gray16be", 2), ("int16", 2)]
        kinds += [(f"gray{bits}", 2) for bits in range(9, 16)]
        for kind, size in kinds:
            for skip in (0, 1, 352):
                data = noise[: 30 * 20 * size]
                if kind[4:].isdigit() and size == 2:
                    data = (numpy.frombuffer(data, "<u2") % 2 ** int(kind[4:])).astype("<u2").tobytes()
                self.write("in", b"h" * skip + data)
                said = self.convert("-f", "--raw", f"30x20:{kind}+{skip}", "in", "out.tk")
                words = {0: [], 1: ["in: note: the first byte is not kept"]}
                self.assertEqual(said, words.get(skip, [f"in: note: the first {skip} bytes are not kept"]), kind)
                self.convert("-f", "out.tk", "back.raw")
                self.assertEqual(self.path("back.raw").read_bytes(), data, kind)

    def test_signed_samples_become_a_signed_array(self):
        samples = numpy.random.default_rng(1).integers(-2000, 2000, (20, 30)).astype("<i2")
        self.write("in.npy", npy(samples))
        self.convert("--drop-metadata", "--raw", "30x20:int16+128", "in.npy", "out.tk")
        self.assertEqual(self.convert("out.tk", "back.npy"), [])
        back = numpy.load(self.path("back.npy"))
        self.assertEqual(back.dtype, samples.dtype)
        self.assertTrue((back == samples).all())
        lost = "the sign, as 32768 added to each sample, is not kept"
        self.assertEqual(self.convert("out.tk", "back.png"), [f"out.tk: note: {lost}"])
        self.require_samples("back.png", samples.astype(int) + 32768)

    def test_wrong_sizes(self):
        self.write("in", bytes(599))
        self.refuse("in: has 599 bytes; 600 of samples behind 0 were announced by --raw", "--raw", "30x20:gray8", "in",
                    "out.tk")
        self.refuse("in: has 599 bytes; 600 of samples behind 18446744073709551615 were announced by --raw", "--raw",
                    "30x20:gray8+18446744073709551615", "in", "out.tk")

    def test_arrays_come_back_byte_for_byte(self):
        for samples in (picture(30, 20), picture(30, 20, 12), picture(30, 20, colour=True)):
            self.write("in.npy", npy(samples))
            self.convert("-f", "in.npy", "out.tk")
            self.convert("-f", "out.tk", "back.npy")
            self.assertEqual(self.path("back.npy").read_bytes(), npy(samples))


if __name__ == "__main__":
    unittest.main()
