"""Sentences of docs/comparison.md with numbers in them, so that none is out of date."""

from report_tables import KIND_NAMES, PSNR, Curves, signed
from summary import FIRST
from words import machine_line, wrapped

LOW_RATE = 0.25
HIGH_RATE = 2


def differences(comparison, kind, bits):
    """Returns: dB that tesk is above each other codec at a size, by its name."""
    curves = Curves(comparison)
    means = {codec: curves.mean(kind, codec, bits, PSNR) for codec in curves.codecs}
    own = means.pop(FIRST)
    return {} if own is None else {codec: own - mean for codec, mean in means.items() if mean is not None}


def listed(found):
    return ", ".join(f"{signed(decibels, 1)} beside {codec}" for codec, decibels in found)


def rate_words(comparison, kind, bits):
    found = sorted(differences(comparison, kind, bits).items(), key=lambda pair: pair[1])
    return f"Photographs in {KIND_NAMES[kind]} at {bits} bits per sample, dB of tesk: {listed(found)}."


def lossy_words(comparison):
    """Two sizes of both kinds, worst first."""
    lines = [rate_words(comparison, kind, bits) for bits in (LOW_RATE, HIGH_RATE) for kind in KIND_NAMES]
    return "\n".join("- " + wrapped(line).replace("\n", "\n  ") for line in lines)


def drawing_words(comparison):
    pictures = comparison["drawings"]
    times = [picture["bytes"][FIRST] / picture["bytes"]["PNG"] for picture in pictures]
    best = [picture["bytes"][FIRST] / min(picture["bytes"].values()) for picture in pictures]
    return wrapped(f"On the drawings below tesk takes {min(times):.0f} to {max(times):.0f} times the bytes of PNG, and "
                   f"{min(best):.0f} to {max(best):.0f} times those of the best codec.")  # fmt: skip


def version_words(comparison):
    versions = ", ".join(f"{name} {version}" for name, version in comparison["versions"].items())
    return wrapped(f"{machine_line(comparison)}; commit {comparison['commit']}; {versions}.")
