"""What docs/comparison.md says without numbers is so in the numbers of bench/comparison.json and bench/figures.json. A test
that fails here asks for other words on the page."""

import json
import unittest

from bench_case import SOURCE

from report_tables import DECIBELS, KIND_NAMES, PSNR, RATES, SSIM, Curves
from summary import FIRST, KINDS, UNVERIFIED, PeerFigures, geometric_mean

CURVES = Curves(json.loads((SOURCE / "bench/comparison.json").read_text()))
PEERS = PeerFigures(json.loads((SOURCE / "bench/figures.json").read_text()))


def gains(kind, codec, metric=PSNR):
    """Returns: how far tesk is above a codec, at the sizes of the tables that it has."""
    pairs = [[CURVES.mean(kind, name, bits, metric) for name in (FIRST, codec)] for bits in RATES]
    return [own - other for own, other in pairs if other is not None]


def times_the_size(kind, codec):
    """Returns: for each photograph, lossless bytes of tesk over those of a codec."""
    return [codecs[FIRST]["streamBytes"] / codecs[codec]["streamBytes"]
            for _, codecs in PEERS.of("photographs", kind) if codec in codecs]  # fmt: skip


class Cut(unittest.TestCase):
    def test_openjpeg_and_openjph_are_better_at_all_sizes(self):
        for kind in KIND_NAMES:
            for codec in ("OpenJPEG 5/3", "OpenJPEG 9/7", "OpenJPH 9/7"):
                for metric in (PSNR, SSIM):
                    self.assertLess(max(gains(kind, codec, metric)), 0, (kind, codec, metric))
        self.assertLess(max(CURVES.mean(kind, "OpenJPEG 5/3", bits, PSNR) - best for kind in KIND_NAMES for bits in RATES
                            if (best := CURVES.mean(kind, "OpenJPEG 9/7", bits, PSNR))), 0)  # fmt: skip

    def test_libjxl_and_webp_are_better_in_gray_and_in_colours_at_most_sizes(self):
        for codec in ("libjxl", "WebP"):
            for metric in (PSNR, SSIM):
                self.assertLess(max(gains("gray8", codec, metric)), 0, codec)
                below = [gain < 0 for gain in gains("rgb8", codec, metric)]
                self.assertGreater(sum(below), len(below) / 2, codec)

    def test_beside_jpeg_the_psnr_is_the_same_or_better_and_the_ssim_about_the_same(self):
        for kind in KIND_NAMES:
            self.assertGreater(min(gains(kind, "JPEG")), -0.05)
            lowest, *others = gains(kind, "JPEG", SSIM)
            self.assertGreater(lowest, 0.02)
            self.assertLess(max(map(abs, others)), 0.01)
        self.assertEqual(f"{max(gains('gray8', 'JPEG') + gains('rgb8', 'JPEG')):.1f}", "1.1")

    def test_for_the_same_psnr_all_take_fewer_bytes_and_jpeg_mostly_more(self):
        for codec in CURVES.codecs[1:]:
            times = [CURVES.times_the_bytes(kind, codec, quality) for kind in KIND_NAMES for quality in DECIBELS]
            above = [found > 1 for found in times if found is not None]
            self.assertTrue(sum(above) < len(above) / 2 if codec == "JPEG" else all(above), codec)


class Lossless(unittest.TestCase):
    def test_those_that_make_smaller_files_are_named(self):
        for codec in ("libjxl e7", "CharLS", "OpenJPEG"):
            for kind in KINDS:
                self.assertGreater(geometric_mean(times_the_size(kind, codec)), 1, (codec, kind))
        self.assertGreater(geometric_mean(times_the_size("gray8", "WebP")), 1)
        self.assertGreater(geometric_mean(times_the_size("rgb8", "WebP")), 1)

    def test_files_are_about_as_small_as_those_of_fast_codecs_and_png_is_larger_but_for_gray(self):
        for kind in KINDS:
            for codec in ("OpenJPH", "libjxl e1"):
                self.assertAlmostEqual(geometric_mean(times_the_size(kind, codec)), 1, delta=0.03)
        self.assertAlmostEqual(geometric_mean(times_the_size("gray8", "PNG")), 1, delta=0.03)
        for kind in ("rgb8", "gray12", "gray16"):
            self.assertLess(geometric_mean(times_the_size(kind, "PNG")), 1)

    def test_tesk_is_the_fastest_on_vectors_and_takes_half_of_the_time_unverified(self):
        for level in PEERS.levels[:-1]:
            for kind, codec, way in ((k, c, w) for k in KINDS for c in PEERS.others for w in ("compress", "decompress")):
                times = PEERS.times("photographs", kind, codec, way, level)
                self.assertTrue(not times or geometric_mean(times) > 1, (level, kind, codec, way))
        for kind in KINDS:
            share = geometric_mean(PEERS.times("photographs", kind, UNVERIFIED, "compress"))
            self.assertTrue(0.3 < share < 0.65, (kind, share))


if __name__ == "__main__":
    unittest.main()
