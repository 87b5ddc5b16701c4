"""Streams and trailers that are cut, damaged or made to annoy: tesk-convert says so, or gives the image."""

import struct
import subprocess
import unittest
import zlib

import numpy

from convert_case import TOOL, npy, picture
from damage_case import DamageCase, flipped, new_dice
from same_pixels import read_pixels


def trailer(stream, *boxes):
    """A trailer whose checksum is right."""
    packed = b"".join(name + struct.pack("<I", len(data)) + data for name, data in boxes)
    check = b"crc " + struct.pack("<II", 4, zlib.crc32(stream + packed))
    length = 8 + len(check) + len(packed) + 8
    return b"TKTRAIL1" + check + packed + struct.pack("<I", length) + b"TKT1"


class Streams(DamageCase):
    def setUp(self):
        super().setUp()
        self.samples = picture(7, 5)
        self.write("a.npy", npy(self.samples))
        self.convert("a.npy", "a.tk")
        self.whole = self.path("a.tk").read_bytes()
        self.stream = self.whole.partition(b"TKTRAIL1")[0]

    def test_every_flipped_bit_is_found(self):
        for bit in range(8 * len(self.whole)):
            damaged = bytearray(self.whole)
            damaged[bit // 8] ^= 1 << bit % 8
            self.write(f"in/{bit}", bytes(damaged))
        results = self.results("--check", "-r", "in", statuses=[1])
        self.require_results(results, {str(bit): "refused" for bit in range(8 * len(self.whole))})
        self.assertEqual(self.results("--check", "a.tk", statuses=[0]), {"a.tk": "checked"})

    def test_every_cut_stream_is_an_approximation(self):
        # What is behind the end mark is padding: 9 to 16 bits.
        cut = len(self.stream) - 2
        for length in range(cut):
            self.write(f"in/{length}.npy.tk", self.stream[:length])
        cut = [f"{length}.npy.tk" for length in range(16, cut)]
        short = {f"{length}.npy.tk": "refused" for length in range(16)}
        for arguments in (["--check", "-r", "in"], ["-r", "--only", "streams", "-d", "out", "in"]):
            results = self.results(*arguments, statuses=[1])
            self.require_results(results, {**short, **{name: "approximated" for name in cut}})
            results = self.results("--strict", "-f", *arguments, statuses=[1])
            self.require_results(results, {**short, **{name: "refused" for name in cut}})
        for length in range(16, 16 + len(cut)):
            self.assertEqual(read_pixels(self.path(f"out/{length}.npy")).shape, (5, 7))

    def test_every_cut_trailer_is_named(self):
        for length in range(len(self.stream) + 1, len(self.whole)):
            self.write(f"in/{length}.npy.tk", self.whole[:length])
        count = len(self.whole) - len(self.stream) - 1
        results = self.results("--check", "-r", "in", statuses=[1])
        self.assertEqual(list(results.values()), ["refused"] * count)
        results = self.results("-r", "-d", "out", "in", statuses=[3])
        self.assertEqual(list(results.values()), ["approximated"] * count)
        for name in self.names("out"):
            self.require_samples(f"out/{name}", self.samples)

    def test_bytes_behind_a_stream(self):
        for data in (self.stream + b"x", self.whole + b"xy", self.stream * 2):
            self.write("b.tk", data)
            strange = len(data) - len(self.stream)
            words = (f"b.tk: %s{strange} byte{'s' * (strange > 1)} behind its end are no trailer: it is damaged, or "
                     "something was added")
            self.refuse(words % "", "--check", "b.tk")
            self.assertEqual(self.convert("-f", "b.tk", "b.npy", status=3), [words % "note: "])
            self.require_samples("b.npy", self.samples)
            self.convert("--strict", "b.tk", "strict.npy", status=1)
            self.assertFalse(self.path("strict.npy").exists())

    def test_a_trailer_that_begins_elsewhere(self):
        words = "b.tk: is damaged: its trailer does not begin where its stream ends"
        for data in (self.stream + self.whole, self.stream[:50] + self.whole[len(self.stream) :]):
            self.write("b.tk", data)
            self.refuse(words, "--check", "b.tk")
            self.refuse(words, "b.tk", "b.npy")

    def test_a_stream_without_a_trailer(self):
        self.write("b.tk", self.stream)
        self.assertEqual(self.convert("--check", "b.tk"),
                         ["b.tk: note: has no checksum: nothing can be said but that it decodes"])
        self.assertEqual(self.convert("b.tk", "b.npy"), [])

    def test_flipped_bits_never_end_the_program(self):
        dice = new_dice()
        for number in range(600):
            self.write(f"in/{number}.png.tk", flipped(self.stream, dice))
        self.results("--check", "-r", "in", statuses=[1])
        for option in (["--reduce", "1"], ["--thumbnail", "3"], []):
            self.results("-f", "-r", *option, "--only", "streams", "-d", "out", "in", statuses=[1, 3])


class Headers(DamageCase):
    """A stream may declare any number of bits for its samples, which may have more and fewer."""

    def require(self, samples, bits):
        self.write("in.npy", npy(samples))
        self.convert("-f", "--bare", "in.npy", "in.tk")
        stream = bytearray(self.path("in.tk").read_bytes())
        stream[5] = bits
        self.write("in.tk", bytes(stream))
        done = subprocess.run([TOOL, "dc", "in.tk", "raw"], cwd=self.folder, check=False, capture_output=True)
        if done.returncode != 0:
            self.convert("-f", "in.tk", "out.png", status=1)
            return
        raw = numpy.frombuffer(self.path("raw").read_bytes(), samples.dtype).reshape(samples.shape)
        for output in ("out.png", "out.tif", "out.npy", "out.pam", "out.ppm" if samples.ndim == 3 else "out.pgm"):
            self.convert("-f", "in.tk", output)
            self.require_samples(output, raw)
            self.convert("-f", "--reduce", "1", "in.tk", output)
            self.convert("-f", "--thumbnail", "3", "in.tk", output)

    def test_any_number_of_bits(self):
        for samples in (picture(12, 10), picture(12, 10, 12), picture(12, 10, colour=True)):
            for bits in (0, 1, 3, 7, 9, 12, 17, 33, 255):
                with self.subTest(size=samples.itemsize, bits=bits):
                    self.require(samples, bits)

    def test_a_bitmap_in_name_only_is_none(self):
        self.write("raw", picture(12, 10).tobytes())
        subprocess.run([TOOL, "cc", "raw", "1", "1", "12", "10", "in.tk"], cwd=self.folder, check=True,
                       capture_output=True)
        self.refuse("in.tk: has more than 1 bit for each pixel, which PBM does not hold: PGM and PPM do", "in.tk",
                    "x.pbm")


class Trailers(DamageCase):
    """What a trailer says against its image is passed over, as if it said nothing."""

    def require(self, samples, output, *boxes):
        self.write("in.npy", npy(samples))
        self.convert("-f", "--bare", "in.npy", "bare.tk")
        stream = self.path("bare.tk").read_bytes()
        self.write("in.tk", stream + trailer(stream, *boxes))
        self.convert("--check", "in.tk")
        self.convert("-f", "in.tk", output)
        self.require_samples(output, samples)

    def test_maximum_values_that_do_not_fit(self):
        for samples in (picture(7, 5), picture(7, 5, 12), picture(7, 5, colour=True)):
            for maximum in (0, 1, 100, 254, 256, 1000, 4094, 65536, 2**32 - 1):
                box = b"max ", struct.pack("<I", maximum)
                self.require(samples, "out.ppm" if samples.ndim == 3 else "out.pgm", box)
                self.convert("-f", "out.ppm" if samples.ndim == 3 else "out.pgm", "again.tk")

    def test_types_of_raw_samples_that_do_not_fit(self):
        for samples in (picture(7, 4), picture(8, 6, colour=True)):
            for kind in (b"gray16be", b"int16", b"rgb8", b"\0"):
                self.require(samples, "out.npy", (b"raw ", kind))
                self.convert("-f", "in.tk", "out.raw")
                self.assertEqual(self.path("out.raw").read_bytes(), samples.tobytes())

    def test_metadata_that_is_none(self):
        noise = new_dice().randbytes(300)
        for name in (b"icc ", b"exif", b"xmp ", b"desc", b"res ", b"max ", b"raw ", b"x\0\xff\n"):
            for data in (b"", b"\0", bytes(8), b"\xff" * 8, noise):
                for output in ("out.png", "out.tif"):
                    self.require(picture(7, 5), output, (name, data))


if __name__ == "__main__":
    unittest.main()
