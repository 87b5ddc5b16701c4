"""What bench/report makes of curves, and that a page or curves of other numbers are noticed."""

import json
import math
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from bench_case import SOURCE

import report_page
import report_tables
import report_words
from report_tables import PSNR, SSIM, Curves


def line(first_decibels):
    """A curve that gains 6 dB whenever the bits double."""
    return [[0.05 * 2**step, first_decibels + 6 * step, 1 - 0.5 ** (step + 1)] for step in range(8)]


def compared(names=("a", "b"), other=3):
    """tesk, and a codec that is so many dB better, with photographs that differ by 2 dB, and a scene that is far off."""
    def picture(name, shift):
        return {"name": name, "kind": "gray8", "width": 6, "height": 4,
                "points": {"tesk": line(20 + shift), "X": line(20 + shift + other)}}  # fmt: skip

    def drawing(name, planes, own, png, best):
        return {"name": name, "width": 9, "height": 9, "planes": planes, "bytes": {"tesk": own, "PNG": png, "X": best}}

    return {"curves": [*(picture(name, 2 * i) for i, name in enumerate(names)), picture("generated", 30)],
            "drawings": [drawing("text", 1, 800, 100, 50), drawing("map", 3, 600, 200, 300)]}  # fmt: skip


class Lines(unittest.TestCase):
    def test_streams_that_are_larger_and_no_better_are_not_in_front(self):
        points = [[0.5, 30, 0.9], [0.2, 25, 0.7], [0.4, 31, 0.8], [0.6, 30.5, 0.95]]
        self.assertEqual(report_tables.front(points, PSNR), [(0.2, 25), (0.4, 31)])
        self.assertEqual(report_tables.front(points, SSIM), [(0.2, 0.7), (0.4, 0.8), (0.5, 0.9), (0.6, 0.95)])

    def test_between_points_quality_rises_with_the_logarithm_of_bits(self):
        self.assertAlmostEqual(report_tables.quality_at(line(20), 0.1 * math.sqrt(2), PSNR), 29)
        self.assertAlmostEqual(report_tables.bits_for(line(20), 29, PSNR), 0.1 * math.sqrt(2))

    def test_nothing_is_said_beyond_the_ends_of_a_curve(self):
        self.assertIsNone(report_tables.quality_at(line(20), 0.049, PSNR))
        self.assertIsNone(report_tables.quality_at(line(20), 6.5, PSNR))
        self.assertIsNone(report_tables.bits_for(line(20), 19, PSNR))


class Tables(unittest.TestCase):
    def test_means_are_those_of_the_photographs_without_the_scene(self):
        self.assertAlmostEqual(Curves(compared()).mean("gray8", "tesk", 0.1, PSNR), 27)

    def test_a_mean_lacks_no_photograph(self):
        short = compared()
        short["curves"][1]["points"]["X"] = line(25)[2:]
        self.assertIsNone(Curves(short).mean("gray8", "X", 0.1, PSNR))
        self.assertAlmostEqual(Curves(short).mean("gray8", "X", 0.25, PSNR), 27 + 3 + 6 * math.log2(2.5))

    def test_below_zero_tesk_is_worse(self):
        row = report_tables.rates(compared(), "gray8", PSNR).splitlines()[3]
        self.assertTrue(row.startswith("| X | 30.0 (−3.0) | 37.9 (−3.0) |"), row)
        same = report_tables.rates(compared(other=0), "gray8", PSNR).splitlines()[3]
        self.assertTrue(same.startswith("| X | 27.0 (0.0) |"), same)

    def test_three_decibels_are_the_bytes_of_half_a_doubling(self):
        self.assertAlmostEqual(Curves(compared()).times_the_bytes("gray8", "X", 35), math.sqrt(2))
        self.assertIn("| X | 1.41 | 1.41 | 1.41 | – | – | – |", report_tables.same_quality(compared()))

    def test_drawings_are_told_by_how_many_times_the_bytes_tesk_takes(self):
        rows = report_tables.drawings(compared()).splitlines()[2:]
        self.assertEqual(rows, ["| text | 9 x 9, gray | **800** | 100 (8.0) | 50 (16.0) |",
                                "| map | 9 x 9, colours | **600** | 200 (3.0) | 300 (2.0) |"])  # fmt: skip
        self.assertIn("3 to 8 times the bytes of PNG, and 3 to 16 times those", report_words.drawing_words(compared()))

    def test_a_codec_that_does_not_go_so_far_is_no_better_and_no_worse(self):
        three = compared()
        for picture in three["curves"]:
            picture["points"]["Y"] = line(picture["points"]["tesk"][0][1] + 5)[:3]
        rows = report_tables.differences(three).splitlines()
        self.assertEqual(rows[0], "| dB of tesk beside | X | Y |")
        self.assertEqual([rows[2], rows[4]], ["| gray, 0.25 bits per sample | −3.0 | – |", "| gray, 2 bits per sample | −3.0 | – |"])

    def test_versions_are_those_of_the_makers(self):
        made = {"processor": {"name": "P", "family": 6, "model": 1, "count": 2}, "system": "S", "compiler": "C", "date": "D",
                "commit": "12", "versions": {"X": "0.9.0-3+b1", "Y": "2.5.0"}}  # fmt: skip
        self.assertTrue(report_words.version_words(made).endswith("; X 0.9.0, Y 2.5.0."))


class Pages(unittest.TestCase):
    """Of a copy of the page, its numbers and its curves."""

    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = Path(place.name)
        for path in ("bench/tables", "bench/report", "docs/images/comparison"):
            shutil.copytree(SOURCE / path, self.folder / path)
        for path in ("bench/figures.json", "bench/comparison.json", "tools/report", *report_page.COMPARISON.pages):
            (self.folder / path).parent.mkdir(exist_ok=True)
            shutil.copy(SOURCE / path, self.folder / path)

    def found(self):
        """Returns: the exit status of --check, and the lines below the first. -S and -E leave only Python itself."""
        done = subprocess.run([sys.executable, "-BSE", self.folder / "tools/report", "--check"],
                              text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)  # fmt: skip
        return done.returncode, done.stdout.splitlines()[1:]

    def test_a_page_of_its_numbers_is_right(self):
        self.assertEqual(self.found(), (0, []))

    def test_another_digit_in_the_page_is_noticed(self):
        page = self.folder / report_page.PAGE
        page.write_text(page.read_text().replace("| **tesk** | **", "| **tesk** | **1", 1))
        self.assertEqual(self.found(), (1, [f"{report_page.PAGE}: psnr-gray8"]))

    def test_other_drawings_and_other_speeds_are_noticed(self):
        numbers = self.folder / "bench/comparison.json"
        comparison = json.loads(numbers.read_text())
        comparison["drawings"][0]["bytes"]["PNG"] -= 1
        numbers.write_text(json.dumps(comparison))
        figures = json.loads((self.folder / "bench/figures.json").read_text())
        figures["load"][0] += 1
        (self.folder / "bench/figures.json").write_text(json.dumps(figures))
        drawings = [f"{path}: drawings" for path in report_page.COMPARISON.pages]
        self.assertEqual(self.found(), (1, [*drawings, f"{report_page.PAGE}: machine"]))

    def test_curves_of_other_numbers_are_noticed(self):
        curve = self.folder / report_page.CURVES[1]
        curve.write_text(curve.read_text().replace("<!-- numbers: ", "<!-- numbers: 0"))
        self.assertEqual(self.found(), (1, [f"{report_page.CURVES[1]}: drawn of other numbers"]))


if __name__ == "__main__":
    unittest.main()
