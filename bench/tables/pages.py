"""Puts the tables into the pages, between comments: <!-- figures: NAME --> and <!-- end of figures -->."""

import re

from functools import partial

import call_tables
import peer_tables
from words import front_machine, front_words, machine_words, speed_words

TABLES = {
    "machine": machine_words,
    "photographs": peer_tables.photographs,
    **{f"{direction}-{group}": partial(peer_tables.speeds, group=group, direction=direction)
       for group in peer_tables.GROUPS for direction in peer_tables.DIRECTIONS},
    "levels": peer_tables.levels,
    "sizes": peer_tables.sizes,
    "size-differences": peer_tables.size_differences,
    "calls": call_tables.calls,
    "small-calls": call_tables.small_calls,
    "reduced": call_tables.reduced,
    "rows": call_tables.by_rows,
    "cold": call_tables.cold,
    "front-words": front_words,
    "front-speeds": peer_tables.front,
    "front-machine": front_machine,
    "speed-words": speed_words,
}  # fmt: skip
FRONT = ("front-words", "front-speeds", "front-machine")
BESIDE = ("size-differences", "speed-words")
BENCH = ("machine", "compress-photographs", "decompress-photographs")
# Which tables a page must have. tools/report puts others into the last one.
PAGES = {
    "bench/README.md": BENCH,
    "bench/FIGURES.md": tuple(name for name in TABLES if not name.startswith("front") and name not in (*BESIDE, *BENCH)),
    "README.md": FRONT,
    "docs/comparison.md": (*BESIDE, "machine", "sizes", "compress-photographs", "decompress-photographs"),
}


class PageError(Exception):
    """A page lacks a place, or has one that nobody knows."""


class Places:
    """Places of pages: between <!-- WORD: NAME --> and <!-- end of WORD -->, each for a table by its name."""

    def __init__(self, word, tables, pages):
        self.tables, self.pages = tables, pages
        begin, end = rf"(?P<begin><!-- {word}: (?P<name>[\w-]+) -->\n)", rf"(?P<end><!-- end of {word} -->)"
        self.pattern = re.compile(f"{begin}.*?{end}", re.S)

    def filled(self, text, figures):
        """Returns: a page with its tables made again."""
        def fill(place):
            if place["name"] not in self.tables:
                raise PageError(f"nobody makes the table {place['name']}")
            return f"{place['begin']}\n{self.tables[place['name']](figures)}\n\n{place['end']}"

        return self.pattern.sub(fill, text)

    def contents(self, text):
        """Returns: what stands in the places of a page, by name."""
        return {place["name"]: place[0] for place in self.pattern.finditer(text)}

    def text_of(self, source, path):
        """Returns: a page that has the places that it must have."""
        text = (source / path).read_text()
        places = [place["name"] for place in self.pattern.finditer(text)]
        if sorted(places) != sorted(self.pages[path]):
            raise PageError(f"{path} has places for {', '.join(places)}; they must be {', '.join(self.pages[path])}")
        return text

    def write(self, source, figures, only=None):
        """All pages, or only one."""
        for path in [only] if only else self.pages:
            (source / path).write_text(self.filled(self.text_of(source, path), figures))

    def differences(self, source, figures, only=None):
        """Returns: page and name of each table that is not what the figures give."""
        found = []
        for path in [only] if only else self.pages:
            text = self.text_of(source, path)
            new = self.contents(self.filled(text, figures))
            found += [f"{path}: {name}" for name, table in self.contents(text).items() if table != new[name]]
        return found


FIGURES = Places("figures", TABLES, PAGES)
