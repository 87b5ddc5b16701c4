"""How bench/report measures, and that its curves are the same each time."""

import tempfile
import unittest
from pathlib import Path

import numpy
from bench_case import SOURCE

import curves
import quality
from report_page import CURVES
from report_tables import PSNR, SSIM
from test_report import compared


def noise(shape=(32, 32)):
    return numpy.random.default_rng(1).integers(0, 256, shape).astype("u1")


class Quality(unittest.TestCase):
    def test_an_error_of_one_everywhere_is_48_decibels(self):
        image = noise() // 2
        self.assertAlmostEqual(quality.psnr(image, image + 1), 48.1308, places=4)
        # 255 of 8 bits is not -1.
        self.assertAlmostEqual(quality.psnr(image * 0, image * 0 + 255), 0)

    def test_nothing_lost_is_no_point_of_a_curve(self):
        self.assertIsNone(quality.point(noise(), 100, noise()))

    def test_a_point_has_bits_per_sample_of_all_planes(self):
        image = noise((16, 32, 3))
        bits, decibels, similarity = quality.point(image, 96, image ^ 1)
        self.assertEqual((bits, round(decibels, 2)), (0.5, 48.13))
        self.assertTrue(0.99 < similarity < 1)

    def test_similarity_falls_with_structure_and_not_with_light(self):
        image = noise() // 2 + 20
        self.assertGreater(quality.ssim(image, image + 10), 0.95)
        self.assertLess(quality.ssim(image, image[::-1]), 0.2)

    def test_an_image_of_another_shape_is_refused(self):
        with self.assertRaisesRegex(ValueError, "came back"):
            quality.point(noise(), 1, noise((32, 31)))


class Drawn(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = Path(place.name)

    def drawn(self, metric=PSNR):
        lines = {"tesk": ("#000000", "-"), "X": ("#d55e00", "-")}
        curves.draw_all(compared(), self.folder, "<!-- mark -->", {"x": metric}, lines)
        return (self.folder / "x.svg").read_text()

    def test_curves_are_the_same_each_time_and_end_with_their_mark(self):
        first = self.drawn()
        self.assertEqual(first, self.drawn())
        self.assertTrue(first.endswith("</svg>\n<!-- mark -->\n"))
        self.assertNotIn("<dc:date>", first)

    def test_similarity_has_more_room_near_one(self):
        heights = [curves.height(value, SSIM) for value in (0.9, 0.99, 0.999)]
        self.assertEqual([round(height, 6) for height in heights], [1, 2, 3])
        self.assertEqual(curves.height(31.5, PSNR), 31.5)

    def test_those_of_the_page_are_small(self):
        sizes = [(SOURCE / path).stat().st_size for path in CURVES]
        self.assertLess(max(sizes), 60000)


if __name__ == "__main__":
    unittest.main()
