"""Puts the tables into the pages, between comments: <!-- figures: NAME --> and <!-- end of figures -->."""

import re

from functools import partial

import call_tables
import peer_tables
from words import front_words, machine_words

TABLES = {
    "machine": machine_words,
    "photographs": peer_tables.photographs,
    **{f"{direction}-{group}": partial(peer_tables.speeds, group=group, direction=direction)
       for group in peer_tables.GROUPS for direction in peer_tables.DIRECTIONS},
    "levels": peer_tables.levels,
    "sizes": peer_tables.sizes,
    "calls": call_tables.calls,
    "small-calls": call_tables.small_calls,
    "reduced": call_tables.reduced,
    "rows": call_tables.by_rows,
    "cold": call_tables.cold,
    "front-words": front_words,
    **{f"front-{group}": partial(peer_tables.front, group=group) for group in peer_tables.GROUPS},
}  # fmt: skip
FRONT = ("front-words", "front-photographs", "front-generated", "sizes")
# Which tables a page must have.
PAGES = {"bench/README.md": tuple(name for name in TABLES if not name.startswith("front")), "README.md": FRONT}
PLACE = re.compile(r"(?P<begin><!-- figures: (?P<name>[\w-]+) -->\n).*?(?P<end><!-- end of figures -->)", re.S)


class PageError(Exception):
    """A page lacks a place, or has one that nobody knows."""


def filled(text, figures):
    """Returns: a page with its tables made again."""
    def fill(place):
        if place["name"] not in TABLES:
            raise PageError(f"nobody makes the table {place['name']}")
        return f"{place['begin']}\n{TABLES[place['name']](figures)}\n\n{place['end']}"

    return PLACE.sub(fill, text)


def contents(text):
    """Returns: what stands in the places of a page, by name."""
    return {place["name"]: place[0] for place in PLACE.finditer(text)}


def require_places(path, text):
    places = [place["name"] for place in PLACE.finditer(text)]
    if sorted(places) != sorted(PAGES[path]):
        raise PageError(f"{path} has places for {', '.join(places)}; they must be {', '.join(PAGES[path])}")


def write(source, figures):
    for path in PAGES:
        page = source / path
        require_places(path, page.read_text())
        page.write_text(filled(page.read_text(), figures))


def differences(source, figures):
    """Returns: page and name of each table that is not what the figures give."""
    found = []
    for path in PAGES:
        text = (source / path).read_text()
        require_places(path, text)
        new = contents(filled(text, figures))
        found += [f"{path}: {name}" for name, table in contents(text).items() if table != new[name]]
    return found
