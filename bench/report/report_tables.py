"""The tables of docs/comparison.md that tools/report measured. They need nothing but Python."""

import math

from peer_tables import LABELS, table
from summary import FIRST, geometric_mean

KIND_NAMES = {"gray8": "gray", "rgb8": "colours"}
# Which number of a point; the number in front of them is bits per sample.
PSNR, SSIM = 1, 2
METRICS = {"psnr": PSNR, "ssim": SSIM}
RATES = (0.1, 0.25, 0.5, 1, 2)
TWO_RATES = (0.25, 2)
DECIBELS = (30, 35, 40)
GENERATED = "generated"
EACH_AT = 0.5
NONE = "–"


def front(points, metric):
    """Returns: (bits, quality) of the points to which no smaller stream is equal. A codec that was tried with two
    settings is as good as the better one."""
    best, found = -math.inf, []
    for point in sorted(points):
        if point[metric] > best:
            best = point[metric]
            found.append((point[0], best))
    return found


def between(pairs, x):
    """Returns: y at x, on straight lines between pairs with rising x; None beyond their ends."""
    for (x0, y0), (x1, y1) in zip(pairs, pairs[1:]):
        if x0 <= x <= x1:
            return y0 + (y1 - y0) * (x - x0) / (x1 - x0)
    return None


def quality_at(points, bits, metric):
    """Returns: the quality of a stream of so many bits per sample, or None: straight lines over the logarithm of bits."""
    return between([(math.log(b), quality) for b, quality in front(points, metric)], math.log(bits))


def bits_for(points, quality, metric):
    """Returns: bits per sample that a quality takes, or None."""
    found = between([(q, math.log(b)) for b, q in front(points, metric)], quality)
    return None if found is None else math.exp(found)


class Curves:
    """What the codecs did at all of their settings."""

    def __init__(self, comparison):
        self.pictures = comparison["curves"]
        self.codecs = list(self.pictures[0]["points"])

    def photographs(self, kind):
        return [p["points"] for p in self.pictures if p["kind"] == kind and p["name"] != GENERATED]

    def mean(self, kind, codec, bits, metric):
        """Returns: the mean of the photographs; None where a curve does not go so far."""
        found = [quality_at(points[codec], bits, metric) for points in self.photographs(kind)]
        return None if None in found or not found else sum(found) / len(found)

    def times_the_bytes(self, kind, codec, quality):
        """Returns: bytes of tesk over bytes of a codec for a PSNR, mean of the photographs; None where one lacks it."""
        pairs = [[bits_for(points[name], quality, PSNR) for name in (FIRST, codec)] for points in self.photographs(kind)]
        if not pairs or any(None in pair for pair in pairs):
            return None
        return geometric_mean([own / other for own, other in pairs])


def signed(value, digits):
    """Returns: a number with its sign, if it is not 0; the minus is as wide as the plus."""
    shown = f"{value:+.{digits}f}"
    return shown.replace("-", "−") if float(shown) else shown[1:]


def rate_cell(curves, kind, codec, bits, metric, digits):
    mean, own = (curves.mean(kind, name, bits, metric) for name in (codec, FIRST))
    if mean is None:
        return NONE
    bare = f"{mean:.{digits}f}"
    return f"**{bare}**" if codec == FIRST else f"{bare} ({signed(own - mean, digits)})"


def rates(comparison, kind, metric):
    """Quality at sizes, in brackets how far tesk is above or below."""
    curves, digits = Curves(comparison), 1 if metric == PSNR else 3
    rows = [[LABELS.get(codec, codec), *(rate_cell(curves, kind, codec, bits, metric, digits) for bits in RATES)]
            for codec in curves.codecs]  # fmt: skip
    unit = "PSNR in dB" if metric == PSNR else "SSIM"
    return table([f"{unit}, {KIND_NAMES[kind]}, at bits per sample", *map(str, RATES)], rows)


def differences(comparison):
    """How far tesk is above or below the others in two sizes."""
    curves = Curves(comparison)
    others = [codec for codec in curves.codecs if codec != FIRST]

    def cell(kind, codec, bits):
        other, own = (curves.mean(kind, name, bits, PSNR) for name in (codec, FIRST))
        return NONE if None in (other, own) else signed(own - other, 1)

    rows = [[f"{KIND_NAMES[kind]}, {bits} bits per sample", *(cell(kind, codec, bits) for codec in others)]
            for bits in TWO_RATES for kind in KIND_NAMES]  # fmt: skip
    return table(["dB of tesk beside", *others], rows)


def same_quality(comparison):
    """Bytes of tesk over those of others for a PSNR."""
    curves = Curves(comparison)

    def cell(kind, codec, quality):
        found = curves.times_the_bytes(kind, codec, quality)
        return NONE if found is None else f"{found:.2f}"

    places = [(kind, quality) for kind in KIND_NAMES for quality in DECIBELS]
    rows = [[codec, *(cell(kind, codec, quality) for kind, quality in places)]
            for codec in curves.codecs if codec != FIRST]  # fmt: skip
    return table(["bytes of tesk / bytes of", *(f"{KIND_NAMES[kind]}, {quality} dB" for kind, quality in places)], rows)


def each_picture(comparison):
    """PSNR of all pictures at one size."""
    curves, rows = Curves(comparison), []
    for picture in curves.pictures:
        found = [quality_at(picture["points"][codec], EACH_AT, PSNR) for codec in curves.codecs]
        cells = [NONE if decibels is None else f"{decibels:.1f}" for decibels in found]
        name, sides = f"{picture['name']}, {KIND_NAMES[picture['kind']]}", f"{picture['width']} x {picture['height']}"
        rows.append([name, sides, *cells])
    return table([f"dB at {EACH_AT} bits per sample", "pixels", *curves.codecs], rows, left=2)


def drawing_cell(picture, codec):
    size, own = (picture["bytes"][name] for name in (codec, FIRST))
    return f"**{size}**" if codec == FIRST else f"{size} ({own / size:.1f})"


def drawings(comparison):
    """Bytes, and how many times those of others tesk takes."""
    pictures = comparison["drawings"]
    codecs = list(pictures[0]["bytes"])
    rows = [[p["name"], f"{p['width']} x {p['height']}, {'gray' if p['planes'] == 1 else 'colours'}",
             *(drawing_cell(p, codec) for codec in codecs)] for p in pictures]  # fmt: skip
    return table(["bytes, lossless", "pixels", *codecs], rows, left=2)
