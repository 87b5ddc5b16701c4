"""What docs/python.md and bench/python/README.md say of tesk in Python is so in the tables of the second page."""

import re
import unittest

from bench_case import SOURCE

RESULTS = (SOURCE / "bench/python/README.md").read_text()
PAGE = (SOURCE / "docs/python.md").read_text()
TESK, UNVERIFIED, ZSTD, LZ4, JPEG2000 = "tesk", "tesk, unverified", "Blosc zstd 5, bits", "Blosc LZ4 5, bits", "JPEG 2000"
LABELS, COUNTS, RGB = "labels, 16 bits", "diffraction, counts", "photographs, RGB"


def table_below(page, words):
    """Returns: the cells of the first table below these words, by stack and codec."""
    lines = page[page.index(words):].splitlines()
    first = next(i for i, line in enumerate(lines) if line.startswith("|"))
    rows = []
    for line in lines[first:]:
        if not line.startswith("|"):
            break
        rows.append([cell.strip() for cell in line.strip("|").split("|")])
    heads, _, *body = rows
    return {(row[0], codec): cell for row in body for codec, cell in zip(heads[1:], row[1:])}


RATIO = table_below(RESULTS, "How many times smaller:")
ENCODING = table_below(RESULTS, "Encoding, MB of samples in a second:")
DECODING = table_below(RESULTS, "Decoding, MB of samples in a second:")
STACKS = list(dict.fromkeys(stack for stack, _ in RATIO))
CAMERA = [stack for stack in STACKS if stack not in (LABELS, COUNTS)]


def quotients(table, codec, other, stacks=STACKS):
    return [float(table[stack, codec]) / float(table[stack, other]) for stack in stacks]


def smaller(codec, other, stacks):
    """Returns: by how many per cent streams of a codec are smaller, the least and the most."""
    saved = [100 * (1 - quotient) for quotient in quotients(RATIO, other, codec, stacks)]
    return f"{min(saved):.0f}", f"{max(saved):.0f}"


def ends(values, digits):
    return " to ".join(f"{end:.{digits}f}" for end in (min(values), max(values)))


class Tables(unittest.TestCase):
    def test_ratios_of_the_page_are_those_of_the_results(self):
        for place, cell in table_below(PAGE, "How many times smaller:").items():
            self.assertEqual(cell, RATIO[place], place)

    def test_speeds_of_the_page_are_those_of_the_results(self):
        shown = table_below(PAGE, "Encoding / decoding, MB of samples per second")
        self.assertGreater(len(shown), 20)
        for (stack, codec), cell in shown.items():
            both = [ENCODING[stack, codec], DECODING.get((stack, codec))]
            self.assertEqual(cell, " / ".join(filter(None, both)), (stack, codec))


class Sentences(unittest.TestCase):
    def say(self, page, words):
        if words not in re.sub(r"\s+", " ", page):
            self.fail(f"the page does not say: {words}")

    def test_beside_blosc_zstd(self):
        least, most = smaller(TESK, ZSTD, [stack for stack in CAMERA if stack != RGB])
        self.say(RESULTS, f"tesk is {least} to {most} % smaller, RGB photographs {smaller(TESK, ZSTD, [RGB])[0]} %")
        self.say(RESULTS, f"tesk is {ends(quotients(ENCODING, UNVERIFIED, ZSTD, CAMERA), 1)} times as fast; verified "
                          f"{ends(quotients(ENCODING, TESK, ZSTD, CAMERA), 1)} times")  # fmt: skip
        self.say(RESULTS, f"tesk has {ends(quotients(DECODING, TESK, ZSTD, CAMERA), 2)} of the speed")
        self.say(RESULTS, f"Sparse counts take {smaller(ZSTD, TESK, [COUNTS])[0]} % less with Blosc zstd")

    def test_beside_blosc_lz4(self):
        faster = quotients(ENCODING, LZ4, UNVERIFIED)
        self.say(RESULTS, f"LZ4 is up to {max(faster):.1f} times as fast; labels: tesk is {1 / min(faster):.1f} times as fast")
        self.say(RESULTS, f"LZ4 is {ends(quotients(DECODING, LZ4, TESK), 1)} times as fast")
        self.assertGreater(min(quotients(RATIO, TESK, LZ4)), 1)
        slower = [stack for stack, quotient in zip(STACKS, faster) if quotient < 1]
        self.assertEqual(slower, [LABELS])
        self.say(PAGE, "Blosc LZ4 also encodes faster, except labels without verification")
        self.assertGreater(min(quotients(ENCODING, LZ4, TESK)), 1)

    def test_beside_jpeg_2000(self):
        least, most = smaller(JPEG2000, TESK, CAMERA)
        labels, counts = (smaller(JPEG2000, TESK, [stack])[0] for stack in (LABELS, COUNTS))
        encoding = ends(quotients(ENCODING, UNVERIFIED, JPEG2000), 0)
        for page in (PAGE, RESULTS):
            self.say(page, f"JPEG 2000 is {least} to {most} % smaller for camera images, {labels} % for labels and {counts} % for sparse counts")
        decoding = ends(quotients(DECODING, TESK, JPEG2000), 0)
        self.say(PAGE, f"It takes {encoding} times the encoding time of tesk, unverified")
        self.say(RESULTS, f"it takes {encoding} times the time of tesk | it takes {decoding} times the time |")

    def test_what_is_not_smooth_belongs_elsewhere(self):
        zlib, png, own = (RATIO[LABELS, codec] for codec in ("zlib 6, bytes", "PNG 6", TESK))
        self.say(RESULTS, f"Labels: zlib and PNG 6 make them {zlib} and {png} times smaller, tesk {own}")
        self.say(PAGE, f"PNG 6 makes labels {png} times smaller")
        sky = smaller("zlib 6, bytes", TESK, ["astronomy, 16 bits"])[0]
        self.say(RESULTS, f"A sky with 16 bits of noise takes {sky} % less with zlib")

    def test_verification(self):
        shares = [100 * (1 - quotient) for quotient in quotients(ENCODING, TESK, UNVERIFIED)]
        self.say(RESULTS, f"Verification takes {ends(shares, 0)} % of the time of an encoding")
        self.assertTrue(50 < min(shares) and max(shares) < 70)
        self.say(PAGE, "Verification takes half to two thirds of the time of an encoding")


if __name__ == "__main__":
    unittest.main()
