"""Figures of many pictures in few numbers."""

import math

KINDS = ("gray8", "rgb8", "gray12", "gray16")
# What a caller gets who asks for nothing: all else is compared with it.
FIRST = "tesk"
# The same, but not compared with its image, as all others are.
UNVERIFIED = "tesk, unverified"
MEMCPY = "memcpy"
# Those whose speed is not what they are for. They run in one round.
SLOW = ("libjxl e3", "libjxl e7", "WebP", "PNG")


def geometric_mean(values):
    return math.exp(sum(map(math.log, values)) / len(values))


def number(value):
    """Returns: three digits, or all in front of the point; two for the smallest."""
    if value >= 99.95:
        return f"{value:.0f}"
    if value >= 9.995:
        return f"{value:.1f}"
    return f"{value:.2f}" if value >= 0.0995 else f"{value:.3f}"


def factor(value):
    """Returns: two digits, or all in front of the point."""
    if value >= 9.95:
        return f"{value:.0f}"
    return f"{value:.1f}" if value >= 0.995 else f"{value:.2f}"


def rounded(value):
    """Returns: all digits in front of the point, two at least."""
    return f"{value:.0f}" if value >= 9.95 else f"{value:.1f}"


def with_range(values, form):
    """Returns: the geometric mean, with the least and the greatest where there are several."""
    mean = form(geometric_mean(values))
    if len(values) == 1:
        return mean
    return f"{mean} ({form(min(values))} to {form(max(values))})"


class PeerFigures:
    """What the codecs did with the pictures."""

    def __init__(self, figures):
        self.pictures = figures["peers"]
        self.levels = list(dict.fromkeys(picture["level"] for picture in self.pictures))
        self.codecs = [codec["name"] for codec in self.pictures[0]["codecs"]]
        self.others = [name for name in self.codecs if name not in (FIRST, UNVERIFIED, MEMCPY)]
        self.fast_others = [name for name in self.others if name not in SLOW]

    def of(self, group, kind, level=None):
        """Returns: the codecs of each picture, by their names; those that refuse are not there."""
        found = [p for p in self.pictures
                 if (p["group"], p["kind"], p["level"]) == (group, kind, level or self.levels[0])]  # fmt: skip
        return [(p, {c["name"]: c for c in p["codecs"] if "refusal" not in c}) for p in found]

    def nanoseconds(self, group, kind, name, direction, level=None):
        """Returns: the time per sample for each picture; nothing for a codec that does not take them."""
        return [1e9 * codecs[name][f"{direction}Seconds"] / picture["samples"]
                for picture, codecs in self.of(group, kind, level) if name in codecs]  # fmt: skip

    def bits(self, group, kind, name):
        """Returns: bits per sample of each picture."""
        return [8 * codecs[name]["streamBytes"] / picture["samples"]
                for picture, codecs in self.of(group, kind) if name in codecs]  # fmt: skip

    def mean_bits(self, group, kind, name):
        """Returns: what stands in a table."""
        bits = self.bits(group, kind, name)
        return f"{geometric_mean(bits):.2f}" if bits else "–"

    def times(self, group, kind, name, direction, level=None):
        """Returns: how many times as fast the first codec is, for each picture. Other codecs ran at one level."""
        seconds = f"{direction}Seconds"
        others = {picture["name"]: codecs[name][seconds] for picture, codecs in self.of(group, kind) if name in codecs}
        return [others[picture["name"]] / codecs[FIRST][seconds]
                for picture, codecs in self.of(group, kind, level) if picture["name"] in others]  # fmt: skip
