"""What tools/bench-photographs makes of pictures."""

import contextlib
import io
import tempfile
import unittest
from pathlib import Path

import numpy
from bench_case import program
from PIL import Image

photographs = program("bench-photographs")


def random():
    return numpy.random.default_rng(1)


def colours():
    return Image.fromarray(random().integers(0, 256, (20, 30, 3)).astype("u1"))


class Cameras(unittest.TestCase):
    def test_black_and_white_are_the_ends_of_light_and_gray_is_darker_than_its_number(self):
        gray = numpy.repeat([0, 118, 255], 10000).reshape(3, -1)
        black, middle, white = photographs.linear_light(gray, random()).mean(axis=1)
        self.assertLess(black, 1e-4)
        self.assertGreater(white, 0.995)
        # A gray card: 18 per cent of the light.
        self.assertAlmostEqual(middle, 0.181, places=3)

    def test_a_dither_of_half_a_step_fills_the_gaps_between_values(self):
        light = photographs.linear_light(numpy.full((100, 100), 100), random())
        darker, brighter = ((((g / 255) + 0.055) / 1.055) ** 2.4 for g in (99.5, 100.5))
        self.assertTrue(darker <= light.min() < light.max() <= brighter)
        self.assertGreater(light.max() - light.min(), 0.99 * (brighter - darker))
        self.assertGreater(len(numpy.unique(light)), 9000)

    def test_noise_is_that_of_photons_and_of_reading(self):
        for bits, well in photographs.FULL_WELL.items():
            for light in (0.001, 0.25):
                samples = photographs.camera_samples(numpy.full((300, 300), light), bits, random())
                electrons = samples.astype(float) * well / (2**bits - 1)
                # Counting in steps adds a twelfth of the square of a step.
                expected = well * light + photographs.READ_NOISE**2 + (well / (2**bits - 1)) ** 2 / 12
                self.assertAlmostEqual(electrons.mean() / (well * light), 1, delta=0.005)
                self.assertAlmostEqual(electrons.var() / expected, 1, delta=0.02)

    def test_no_sample_is_beyond_the_bits(self):
        samples = photographs.camera_samples(numpy.array([[-0.0, 1.0, 3.0]]), 12, random())
        self.assertEqual((samples.dtype, samples[0, 2]), ("<u2", 4095))


class Files(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = Path(place.name)

    def test_a_photograph_becomes_four_files_and_the_arguments_that_name_them(self):
        arguments = photographs.write_raw(self.folder, "x", colours())
        kinds = {"gray8": "1,8", "rgb8": "3,8", "gray12": "2,12", "gray16": "2,16"}
        self.assertEqual(arguments, [f"--image={self.folder}/x-{kind}.raw,{layout},30,20" for kind, layout in kinds.items()])
        sizes = [(self.folder / f"x-{kind}.raw").stat().st_size for kind in kinds]
        self.assertEqual(sizes, [600, 1800, 1200, 1200])
        self.assertEqual((self.folder / "x-rgb8.raw").read_bytes(), numpy.asarray(colours()).tobytes())

    def test_a_gray_photograph_has_no_colours(self):
        arguments = photographs.write_raw(self.folder, "x", colours().convert("L"))
        self.assertEqual(len(arguments), 3)

    def test_files_are_the_same_each_time_and_noise_is_that_of_the_photograph(self):
        def made(name):
            photographs.write_raw(self.folder, name, colours())
            return (self.folder / f"{name}-gray12.raw").read_bytes()

        self.assertEqual(made("x"), made("x"))
        self.assertNotEqual(made("x"), made("y"))

    def test_wide_pictures_are_cropped_from_the_middle(self):
        wide = Image.new("L", (2600, 10))
        wide.putpixel((100, 0), 255)
        middle = photographs.middle(wide)
        self.assertEqual((middle.size, middle.getpixel((0, 0))), ((2400, 10), 255))

    def test_a_name_that_is_none_of_the_photographs_ends_with_status_2(self):
        with self.assertRaises(SystemExit) as end, contextlib.redirect_stderr(io.StringIO()) as printed:
            photographs.main([str(self.folder), "cat"])
        self.assertEqual(end.exception.code, 2)
        self.assertIn("no such photographs: cat", printed.getvalue())


if __name__ == "__main__":
    unittest.main()
