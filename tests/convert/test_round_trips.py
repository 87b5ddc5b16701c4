"""Images through tesk-convert and back: samples are the same, streams those of the tool, sizes as asked for."""

import subprocess
import sys
import unittest
from pathlib import Path

import numpy
from PIL import Image

from convert_case import TOOL, ConvertCase, npy, pam, pbm, picture, plain_pnm, png, pnm, tiff
from same_pixels import difference_of_folders, read_pixels

COMPARE = Path(__file__).with_name("same_pixels.py")
SIDES = range(2, 71)
# Each height once, since 37 has no divisor in common with the number of sides.
SIZES = [(width, 2 + (width - 2) * 37 % len(SIDES)) for width in SIDES]


class AllSizes(ConvertCase):
    maxDiff = None

    def write_all(self, width, height):
        """One image of this size in every format and kind that comes back in its own format."""
        name = f"in/{width}x{height}"
        for bits in (1, 2, 4, 8, 12, 16):
            samples = picture(width, height, bits)
            self.write(f"{name}-{bits}.png", png(samples, bits if bits < 12 else 16, interlaced=bits == 4))
        bitmap, gray, deep = (picture(width, height, bits) for bits in (1, 8, 13))
        colour = picture(width, height, colour=True)
        self.write(f"{name}.pbm", pbm(bitmap) if width % 2 else plain_pnm(bitmap, 0))
        self.write(f"{name}.ppm", pnm(colour) if width % 2 else plain_pnm(colour, 255))
        self.write(f"{name}-rgb.png", png(colour))
        self.write(f"{name}-1.tiff", tiff(bitmap.astype(bool)))
        for kind, samples in (("gray", gray), ("deep", deep)):
            self.write(f"{name}-{kind}.pgm", pnm(samples))
            self.write(f"{name}-{kind}.pam", pam(samples, 2**(8 * samples.itemsize) - 1, "GRAYSCALE"))
        for kind, samples in (("gray", gray), ("deep", deep), ("rgb", colour)):
            self.write(f"{name}-{kind}.tif", tiff(samples))
            self.write(f"{name}-{kind}.npy", npy(samples))

    def test_every_format_of_every_size(self):
        for width, height in SIZES:
            self.write_all(width, height)
        self.assertEqual(len({height for _, height in SIZES}), len(SIDES))
        self.assertEqual(len(self.convert("-r", "-j2", "-d", "out", "in")), 1)
        self.assertEqual(len(self.convert("-r", "-j2", "-d", "back", "out")), 1)
        done = subprocess.run([sys.executable, "-B", COMPARE, self.path("in"), self.path("back")], check=False,
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, f"{20 * len(SIDES)} images are the same\n")

    def test_the_comparison_finds_one_wrong_sample(self):
        for name, write in (("a.png", png), ("a.tif", tiff), ("a.npy", npy), ("a.pgm", pnm)):
            samples = picture(9, 8)
            self.write(f"in/{name}", write(samples))
            samples[7, 8] ^= 1
            self.write(f"back/{name}", write(samples))
            self.assertIn("at (7, 8)", difference_of_folders(self.path("in"), self.path("back")))
            self.path(f"back/{name}").rename(self.path("back/other"))
            self.assertIn("in one folder only", difference_of_folders(self.path("in"), self.path("back")))
            self.path("back/other").unlink()
            self.path(f"in/{name}").unlink()


class Streams(ConvertCase):
    def write_raw(self, samples):
        self.write("raw", samples.tobytes())
        height, width = samples.shape[:2]
        bits = 8 if samples.ndim == 3 else self.bits
        return [str(number) for number in (samples.nbytes // (width * height), bits, width, height)]

    def test_streams_are_those_of_the_tool(self):
        for bits, colour in ((1, False), (8, False), (8, True), (12, False), (16, False)):
            self.bits = bits
            samples = picture(83, 61, bits, colour)
            layout = self.write_raw(samples)
            for word in ("c", "cc"):
                options = {"cwd": self.folder, "check": True, "capture_output": True}
                subprocess.run([TOOL, word, "raw", *layout, "tool.tk"], **options)
                subprocess.run([TOOL, word.replace("c", "d", 1), "tool.tk", "back"], **options)
                if self.path("back").read_bytes() == samples.tobytes():
                    break
            else:
                self.fail("the image comes back by neither way")
            self.write("in.npy", npy(samples))
            self.convert("-f", "--bare", "--bits", str(bits), "in.npy", "bare.tk")
            self.assertEqual(self.path("bare.tk").read_bytes(), self.path("tool.tk").read_bytes(), bits)
            self.convert("-f", "--bits", str(bits), "in.npy", "whole.tk")
            stream, mark, _ = self.path("whole.tk").read_bytes().partition(b"TKTRAIL1")
            self.assertEqual((stream, mark), (self.path("tool.tk").read_bytes(), b"TKTRAIL1"))

    def test_every_format_gives_the_same_stream_with_any_number_of_jobs(self):
        samples = picture(83, 61)
        for number, data in enumerate((png(samples), pnm(samples), tiff(samples), npy(samples),
                                       pam(samples, 255, "GRAYSCALE"), plain_pnm(samples, 255))):
            self.write(f"in/{number}", data)
        for jobs in ("1", "2", "8", "0"):
            self.convert("-q", "--bare", "-j", jobs, "-r", "-d", jobs, "in")
            streams = {path.read_bytes() for path in self.path(jobs).iterdir()}
            self.assertEqual(len(streams), 1)
            self.assertEqual(streams, {path.read_bytes() for path in self.path("1").iterdir()})

    def test_budgets_are_met_to_the_byte(self):
        samples = picture(200, 100, 12)
        self.write("in.npy", npy(samples))
        self.convert("in.npy", "whole.tk")
        raw, whole = samples.nbytes, self.path("whole.tk").read_bytes().partition(b"TKTRAIL1")[0]
        for option, value, size in (("--bytes", "16", 16), ("--bytes", "5000", 5000), ("--bytes", "1K", 1024),
                                    ("--rate", "0.1", raw // 10), ("--rate", "0.25", raw // 4),
                                    ("--bits-per-sample", "1.5", 20000 * 1.5 // 8), ("--bytes", "1M", len(whole)),
                                    ("--rate", "100", len(whole)), ("--bits-per-sample", "1e6", len(whole))):
            with self.subTest(option=option, value=value):
                self.convert("-f", option, value, "in.npy", "out.tk")
                self.assertEqual(self.path("out.tk").stat().st_size, size)
                self.convert("-f", "out.tk", "out.npy", status=0 if size == len(whole) else 3)

    def test_a_cut_stream_says_so(self):
        self.write("in.npy", npy(picture(200, 100)))
        self.convert("--bytes", "5000", "in.npy", "cut.tk")
        self.assertEqual(self.convert("cut.tk", "cut.png", status=3),
                         ["cut.tk: note: is cut: its image is an approximation"])
        self.assertEqual(self.convert("--strict", "cut.tk", "strict.png", status=1)[-1],
                         "cut.tk: is cut: its image is an approximation, which --strict refuses")
        error = numpy.abs(read_pixels(self.path("cut.png")) - picture(200, 100)).mean()
        self.assertLess(error, 20)

    def test_bits(self):
        self.write("in.npy", npy(picture(9, 8, 5)))
        for bits in (5, 6, 8):
            self.convert("-f", "--bits", str(bits), "in.npy", "out.tk")
            self.assertEqual(self.path("out.tk").read_bytes()[5], bits)
        for bits, words in (("4", "5 bits, more than the 4 that were announced"),
                            ("9", "8 bits, fewer than --bits says")):
            self.refuse(f"in.npy: has samples of {words}", "--bits", bits, "in.npy", "x.tk")
        self.convert("--bits", "auto", "in.npy", "auto.tk")
        self.assertEqual(self.path("auto.tk").read_bytes()[5], 8)


class Pictures(ConvertCase):
    def setUp(self):
        super().setUp()
        for name, samples in (("gray", picture(300, 200, 12)), ("rgb", picture(300, 200, colour=True))):
            self.write(f"{name}.npy", npy(samples))
            self.convert(f"{name}.npy", f"{name}.tk")

    def test_reduced_sides_are_rounded_up(self):
        for name in ("gray", "rgb"):
            for levels in range(6):
                self.convert("-f", "--reduce", str(levels), f"{name}.tk", "out.npy")
                side = 2**levels
                self.assertEqual(read_pixels(self.path("out.npy")).shape[:2], (-(-200 // side), -(-300 // side)))
        self.refuse("gray.tk: cannot be reduced to 1 : 2^6: its stream has fewer levels", "--reduce", "6", "gray.tk",
                    "x.npy")

    def test_reduced_samples_stay_below_the_maximum(self):
        """The averages of the transform may exceed the samples that they stand for."""
        samples = numpy.random.default_rng(1).integers(0, 2, (64, 64)).astype("<u2") * 1000
        self.write("in.pgm", pnm(samples, 1000))
        self.convert("in.pgm", "in.tk")
        for levels in range(6):
            self.convert("-f", "--drop-metadata", "--reduce", str(levels), "in.tk", "out.pgm")
            self.convert("-f", "out.pgm", "again.tk")

    def test_thumbnails_fit_and_have_8_bits(self):
        for name, channels in (("gray", ()), ("rgb", (3,))):
            for side in (1, 7, 64, 100, 150, 299, 300, 1000):
                self.convert("-f", "--thumbnail", str(side), f"{name}.tk", "out.png")
                found = read_pixels(self.path("out.png"))
                height, width = found.shape[:2]
                self.assertEqual(width, min(side, 300))
                self.assertLessEqual(abs(height - width * 2 / 3), 1)
                self.assertEqual(found.shape[2:], channels)
                with Image.open(self.path("out.png")) as image:
                    self.assertEqual(image.mode, "RGB" if channels else "L")

    def test_a_thumbnail_looks_like_its_image(self):
        rows, columns = numpy.indices((200, 300))
        self.write("ramp.npy", npy((rows * 8 + columns * 8).astype("<u2")))
        self.convert("ramp.npy", "ramp.tk")
        self.convert("--thumbnail", "75", "ramp.tk", "ramp.png")
        found = read_pixels(self.path("ramp.png"))
        expected = (rows * 8 + columns * 8).reshape(50, 4, 75, 4).mean(axis=(1, 3)) / 4095 * 255
        self.assertLess(numpy.abs(found - expected).max(), 3)


if __name__ == "__main__":
    unittest.main()
