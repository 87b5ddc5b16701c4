"""What bench/tables makes of figures, and that pages with other figures are noticed."""

import json
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from bench_case import SOURCE, two_photographs

import pages
import peer_tables
from summary import PeerFigures, factor, number
from words import margins, speed_words


class Numbers(unittest.TestCase):
    def test_numbers_have_three_digits_or_all_in_front_of_the_point(self):
        shown = {0.01634: "0.016", 0.1: "0.10", 1.956: "1.96", 9.999: "10.0", 56.78: "56.8", 99.97: "100", 1043.2: "1043"}
        self.assertEqual({value: number(value) for value in shown}, shown)

    def test_factors_below_one_are_seen_to_be_below_one(self):
        self.assertEqual([factor(value) for value in (0.474, 0.99, 1.04, 9.94, 9.96, 168.4)],
                         ["0.47", "0.99", "1.0", "9.9", "10", "168"])  # fmt: skip


class Tables(unittest.TestCase):
    def setUp(self):
        self.peers = PeerFigures(two_photographs())

    def cell(self, name, kind="gray8"):
        return peer_tables.speed_cell(self.peers, "photographs", kind, name, "compress")

    def test_photographs_are_told_by_their_geometric_mean_least_and_greatest(self):
        self.assertEqual(self.cell("tesk"), "4.00 (2.00 to 8.00)")

    def test_others_are_compared_photograph_by_photograph(self):
        # 5 and 10 times as long.
        self.assertEqual(self.cell("OpenJPH"), "28.3: 7.1 (5.0 to 10)")

    def test_a_codec_that_refuses_has_no_figures(self):
        self.assertEqual(self.cell("WebP"), "–")

    def test_lower_levels_are_compared_with_the_others_at_their_best(self):
        row = peer_tables.level_row(self.peers, "photographs", "gray8", "scalar")
        self.assertEqual(row, ["photographs, gray8, 4.00", "scalar", "8.00", "8.00", "4.00", "3.5 / 1.5"])

    def test_the_nearest_codec_counts_for_what_is_said_of_speed(self):
        # Of compression 5 and 10 times beside OpenJPH, at the lower level 2.5 and 5 times.
        self.assertEqual([margins(self.peers, "compress", level) for level in ("avx2", "scalar")],
                         ["7.1 to 7.1", "3.5 to 3.5"])  # fmt: skip

    def test_speeds_are_told_for_each_level(self):
        self.assertEqual(speed_words(two_photographs()).splitlines(),
                         ["- with AVX2: compression 7.1 to 7.1, decompression 3.0 to 3.0",
                          "- in plain C++: compression 3.5 to 3.5, decompression 1.5 to 1.5"])  # fmt: skip

    def test_the_front_page_has_million_samples_in_a_second(self):
        # 4 ns in the mean are 250 million, 28.3 ns are 35, 6 ns are 167; what a codec does not take is –.
        self.assertEqual([peer_tables.rates(self.peers, "gray8", name) for name in ("tesk", "OpenJPH", "WebP")],
                         ["250 / 500", "35 / 167", "–"])  # fmt: skip

    def test_larger_streams_of_tesk_are_above_zero(self):
        for picture in self.peers.pictures[:2]:
            picture["codecs"][2]["streamBytes"] = 400
        self.assertEqual([peer_tables.size_difference(self.peers, "gray8", name) for name in ("OpenJPH", "WebP")],
                         ["+25.0 %", "–"])  # fmt: skip

    def test_a_table_has_a_cell_for_each_column(self):
        lines = peer_tables.table(["a", "b"], [["1", "2"]]).splitlines()
        self.assertEqual(lines, ["| a | b |", "|---|---:|", "| 1 | 2 |"])


class Pages(unittest.TestCase):
    """Of a copy of the project's pages."""

    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = Path(place.name)
        shutil.copytree(SOURCE / "bench/tables", self.folder / "bench/tables")
        for path in ("bench/figures.json", "tools/bench-figures", *pages.PAGES):
            (self.folder / path).parent.mkdir(exist_ok=True)
            shutil.copy(SOURCE / path, self.folder / path)

    def run_figures(self, option):
        """Returns: the exit status, and what was printed."""
        done = subprocess.run([sys.executable, "-B", self.folder / "tools/bench-figures", option],
                              text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)  # fmt: skip
        return done.returncode, done.stdout

    def change(self, path, old, new):
        text = (self.folder / path).read_text()
        self.assertIn(old, text)
        (self.folder / path).write_text(text.replace(old, new, 1))

    def test_another_digit_in_a_page_is_noticed_and_written_again(self):
        before = (self.folder / "README.md").read_text()
        self.change("README.md", "| **tesk** | **", "| **tesk** | **1")
        status, printed = self.run_figures("--check")
        self.assertEqual((status, printed.splitlines()[1:]), (1, ["README.md: front-speeds"]))
        self.assertEqual(self.run_figures("--tables"), (0, ""))
        self.assertEqual((self.folder / "README.md").read_text(), before)

    def test_other_figures_are_noticed(self):
        figures = json.loads((self.folder / "bench/figures.json").read_text())
        figures["cold"][0]["cpu_ms"] *= 2
        (self.folder / "bench/figures.json").write_text(json.dumps(figures))
        status, printed = self.run_figures("--check")
        self.assertEqual((status, printed.splitlines()[1:]), (1, ["bench/FIGURES.md: cold"]))

    def test_a_table_that_is_gone_is_noticed(self):
        self.change("bench/FIGURES.md", "<!-- figures: levels -->", "")
        status, printed = self.run_figures("--check")
        self.assertEqual(status, 1)
        self.assertIn("bench/FIGURES.md has places for", printed)

    def test_every_table_is_on_a_page(self):
        self.assertEqual(set().union(*pages.PAGES.values()), set(pages.TABLES))


if __name__ == "__main__":
    unittest.main()
