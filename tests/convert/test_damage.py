"""Images that are cut or damaged: tesk-convert refuses them or gives the image, and never ends by a signal."""

import subprocess
import unittest

import numpy

from convert_case import npy, pam, pbm, picture, plain_pnm, png, png_chunk, pnm, tiff
from damage_case import DamageCase, flipped, new_dice

FLIPPED_FILES = 120  # of each input


def last_digit_alone(samples):
    """A number that is cut in the end of a file is another number, unless it has one digit."""
    samples[-1, -1] = 5
    return samples


class Inputs(DamageCase):
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
        colours = numpy.arange(48).reshape(16, 3)
        yield "palette.png", png(picture(7, 5, 4), 4, 3, before=palette), colours[picture(7, 5, 4)]
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
        dice = new_dice()
        for name, data, _ in self.inputs():
            for number in range(FLIPPED_FILES):
                self.write(f"in/{number}.{name}", flipped(data, dice))
        results = self.results("-r", "-d", "out", "in", statuses=[1])
        self.assertEqual(len(results), FLIPPED_FILES * 20)
        self.results("-r", "--check", "out", statuses=[0])

    def test_noise_behind_every_beginning(self):
        dice = new_dice()
        for name, data, _ in self.inputs():
            for number in range(20):
                self.write(f"in/{number}.{name}", data[: dice.randrange(4, 60)] + dice.randbytes(dice.randrange(300)))
        self.results("-r", "--opaque", "-d", "out", "in", statuses=[0, 1])


if __name__ == "__main__":
    unittest.main()
