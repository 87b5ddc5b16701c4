"""Sentences of docs/comparison.md with numbers in them, so that none is out of date."""

from summary import FIRST
from words import machine_line, wrapped

def drawing_words(comparison):
    pictures = comparison["drawings"]
    times = [picture["bytes"][FIRST] / picture["bytes"]["PNG"] for picture in pictures]
    best = [picture["bytes"][FIRST] / min(picture["bytes"].values()) for picture in pictures]
    return wrapped(f"On the drawings below tesk takes {min(times):.0f} to {max(times):.0f} times the bytes of PNG, and "
                   f"{min(best):.0f} to {max(best):.0f} times those of the best codec.")  # fmt: skip


def version_words(comparison):
    # The part behind the hyphen is Debian's.
    versions = ", ".join(f"{name} {version.partition('-')[0]}" for name, version in comparison["versions"].items())
    return wrapped(f"{machine_line(comparison)}; commit {comparison['commit']}; {versions}.")
