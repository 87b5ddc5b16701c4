"""Files that are cut, damaged or made to annoy: tesk-convert refuses them or gives the image, and never ends by a signal.

Damage is random with a fixed seed. Many files go through one process; the log says which of them were taken.
"""

import random
import struct
import subprocess
import unittest
import zlib

import numpy

from convert_case import ConvertCase, npy, pam, pbm, picture, plain_pnm, png, png_chunk, pnm, tiff
from same_pixels import read_pixels

SEED = 20261122
FLIPPED_FILES = 120  # of each input
RESULT, INPUT = 1, 2


def last_digit_alone(samples):
    """A number that is cut in the end of a file is another number, unless it has one digit."""
    samples[-1, -1] = 5
    return samples


def flipped(data, dice):
    """Few bits flipped, mostly at the front, where more hangs on them."""
    damaged = bytearray(data)
    for _ in range(dice.choice((1, 1, 2, 4))):
        last = len(data) if dice.random() < 0.5 else min(len(data), 100)
        damaged[dice.randrange(last)] ^= 1 << dice.randrange(8)
    return bytes(damaged)


def trailer(stream, *boxes):
    """A trailer whose checksum is right."""
    packed = b"".join(name + struct.pack("<I", len(data)) + data for name, data in boxes)
    check = b"crc " + struct.pack("<II", 4, zlib.crc32(stream + packed))
    length = 8 + len(check) + len(packed) + 8
    return b"TKTRAIL1" + check + packed + struct.pack("<I", length) + b"TKT1"


class Damage(ConvertCase):
    def results(self, *arguments, statuses):
        """What became of each input: its word in the log."""
        log = self.path("log")
        log.unlink(missing_ok=True)
        done = self.run_program("-q", "-j2", "--max-pixels", "1M", "--log", log, *arguments)
        self.assertIn(done.returncode, statuses, done.stderr[-1000:])
        fields = [line.split("\t") for line in log.read_bytes().decode(errors="replace").split("\n")[:-1]]
        return {line[INPUT].rpartition("/")[2]: line[RESULT] for line in fields}

    def require_results(self, results, expected):
        self.assertEqual(set(results), set(expected))
        self.assertEqual({name: (result, expected[name]) for name, result in results.items()
                          if result != expected[name]}, {})

    def require_sound(self, status, errors):
        # Where a batch died, its log says how far it was.
        last = self.path("log").read_bytes()[-300:] if status not in (0, 1, 2, 3) else b""
        super().require_sound(status, errors + last)


class Inputs(Damage):
    def inputs(self):
        """Small files of every format, and what they hold."""
        gray, deep, bitmap = picture(7, 5), picture(7, 5, 12), picture(7, 5, 1)
        colour = picture(7, 5, colour=True)
        palette = png_chunk(b"PLTE", bytes(range(48)))
        plain = last_digit_alone(picture(7, 5))
        big = picture(40, 33)
        yield "pgm", pnm(gray), gray
        yield "deep.pgm", pnm(deep), deep
        yield "ppm", pnm(colour), colour
        yield "pbm", pbm(bitmap), bitmap
        yield "plain.pgm", plain_pnm(plain, 255), plain
        yield "plain.pbm", plain_pnm(bitmap, 0), bitmap
        yield "pam", pam(gray, 255, "GRAYSCALE"), gray
        yield "npy", npy(gray), gray
        yield "fortran.npy", npy(numpy.asfortranarray(deep)), deep
        yield "png", png(gray), gray
        yield "bits.png", png(bitmap, 1), bitmap
        yield "interlaced.png", png(deep, interlaced=True), deep
        yield "palette.png", png(picture(7, 5, 4), 4, 3, before=palette), numpy.arange(48).reshape(16, 3)[picture(7, 5, 4)]
        yield "tif", tiff(gray), gray
        yield "deep.tif", tiff(deep.astype(">u2"), byteorder=">", rowsperstrip=2), deep
        yield "big.tif", tiff(colour, bigtiff=True), colour
        yield "tiles.tif", tiff(big, tile=(16, 16)), big
        yield "lzw.tif", self.compressed(big, "lzw:2"), big
        yield "zip.tif", self.compressed(colour, "zip"), colour
        yield "g4.tif", self.compressed(bitmap.astype(bool), "g4"), bitmap

    def compressed(self, samples, method):
        self.write("plain.tif", tiff(samples))
        subprocess.run(["tiffcp", "-c", method, "plain.tif", "copy.tif"], cwd=self.folder, check=True)
        return self.path("copy.tif").read_bytes()

    def test_every_prefix_is_refused_or_gives_the_image(self):
        expected = {}
        for name, data, samples in self.inputs():
            # Tiles that are cut are all alike.
            for length in range(0, len(data) + 1, 1 if len(data) < 1000 else 7):
                self.write(f"in/{length}.{name}", data[:length])
                expected[f"{length}.{name}"] = samples
            self.write(f"in/{len(data)}.{name}", data)
            expected[f"{len(data)}.{name}"] = samples
        results = self.results("-r", "-d", "out", "in", statuses=[1])
        self.assertEqual(set(results), set(expected))
        taken = [name for name, result in results.items() if result == "converted"]
        self.assertTrue({f"{len(data)}.{name}" for name, data, _ in self.inputs()} <= set(taken))
        for name in taken:
            self.path(f"out/{name}.tk").rename(self.path(f"out/{name}.npy.tk"))
        self.results("-r", "--drop-metadata", "-d", "back", "out", statuses=[0])
        for name in taken:
            self.require_samples(f"back/{name}.npy", expected[name])
        # Few bytes may be missing: spaces, padding.
        self.assertLess(len(taken), 200)

    def test_flipped_bits_never_end_the_program(self):
        dice = random.Random(SEED)
        for name, data, _ in self.inputs():
            for number in range(FLIPPED_FILES):
                self.write(f"in/{number}.{name}", flipped(data, dice))
        results = self.results("-r", "-d", "out", "in", statuses=[1])
        self.assertEqual(len(results), FLIPPED_FILES * 20)
        self.results("-r", "--check", "out", statuses=[0])

    def test_noise_behind_every_beginning(self):
        dice = random.Random(SEED)
        for name, data, _ in self.inputs():
            for number in range(20):
                self.write(f"in/{number}.{name}", data[: dice.randrange(4, 60)] + dice.randbytes(dice.randrange(300)))
        self.results("-r", "--opaque", "-d", "out", "in", statuses=[0, 1])


class Streams(Damage):
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
            with_short = {} if "--only" in arguments else short
            results = self.results(*arguments, statuses=[3] if "--only" in arguments else [1])
            self.require_results(results, {**with_short, **{name: "approximated" for name in cut}})
            results = self.results("--strict", "-f", *arguments, statuses=[1])
            self.require_results(results, {**with_short, **{name: "refused" for name in cut}})
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
        dice = random.Random(SEED)
        for number in range(600):
            self.write(f"in/{number}.png.tk", flipped(self.stream, dice))
        self.results("--check", "-r", "in", statuses=[1])
        for option in (["--reduce", "1"], ["--thumbnail", "3"], []):
            self.results("-f", "-r", *option, "--only", "streams", "-d", "out", "in", statuses=[1, 3])


class Trailers(Damage):
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
        noise = random.Random(SEED).randbytes(300)
        for name in (b"icc ", b"exif", b"xmp ", b"desc", b"res ", b"max ", b"raw ", b"x\0\xff\n"):
            for data in (b"", b"\0", bytes(8), b"\xff" * 8, noise):
                for output in ("out.png", "out.tif"):
                    self.require(picture(7, 5), output, (name, data))


if __name__ == "__main__":
    unittest.main()
