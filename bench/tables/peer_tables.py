"""The tables of codecs side by side."""

from summary import (FIRST, KINDS, MEMCPY, UNVERIFIED, PeerFigures, factor, geometric_mean, number, rounded,
                     with_range)  # fmt: skip

GROUPS = ("photographs", "generated")
DIRECTIONS = ("compress", "decompress")
LABELS = {FIRST: f"**{FIRST}**"}
LONG_KINDS = ("8-bit gray", "8-bit RGB", "12-bit gray", "16-bit gray")


def table(heads, rows, left=1):
    """Returns: the lines of a table whose first columns are words, the others numbers."""
    rule = "|" + "---|" * left + "---:|" * (len(heads) - left)
    return "\n".join([f"| {' | '.join(heads)} |", rule, *(f"| {' | '.join(row)} |" for row in rows)])


def speed_cell(peers, group, kind, name, direction):
    nanoseconds = peers.nanoseconds(group, kind, name, direction)
    if not nanoseconds:
        return "–"
    if name in (FIRST, MEMCPY):
        return with_range(nanoseconds, number)
    return f"{number(geometric_mean(nanoseconds))}: {with_range(peers.times(group, kind, name, direction), factor)}"


def speeds(figures, group, direction):
    """ns per sample, and how many times as fast the first codec is."""
    peers = PeerFigures(figures)
    # A stream is decoded in one way, compared or not.
    names = [name for name in peers.codecs if (name, direction) != (UNVERIFIED, "decompress")]
    rows = [[LABELS.get(name, name), *(speed_cell(peers, group, kind, name, direction) for kind in KINDS)]
            for name in names]  # fmt: skip
    return table([f"{direction}, {group}", *KINDS], rows)


def both_ways(values):
    """Returns: compression / decompression in a cell."""
    return " / ".join(values)


def level_row(peers, group, kind, level):
    def means(name):
        return [number(geometric_mean(peers.nanoseconds(group, kind, name, way, level))) for way in DIRECTIONS]

    unverified, _ = means(UNVERIFIED)
    factors = [both_ways(factor(geometric_mean(peers.times(group, kind, name, way, level))) for way in DIRECTIONS)
               for name in peers.fast_others]  # fmt: skip
    compress, decompress = means(FIRST)
    bits = peers.mean_bits(group, kind, FIRST)
    return [f"{group}, {kind}, {bits}", level, compress, unverified, decompress, *factors]


def levels(figures):
    """tesk at each level, and how many times as fast as others it is there."""
    peers = PeerFigures(figures)
    heads = ["images, bits per sample", "processor level", "compress", "unverified", "decompress", *peers.fast_others]
    rows = [level_row(peers, group, kind, level) for group in GROUPS for kind in KINDS for level in peers.levels
            if peers.of(group, kind)]  # fmt: skip
    return table(heads, rows, left=2)


def sizes(figures):
    """Bits per sample."""
    peers = PeerFigures(figures)
    names = [FIRST, *peers.others]
    places = [("page", "rgb8", "the photograph of the front page")]
    places += [(group, kind, f"{group}, {kind}") for group in GROUPS for kind in KINDS]
    rows = [[label, *(peers.mean_bits(group, kind, name) for name in names)] for group, kind, label in places]
    return table(["bits per sample", *names], rows)


def size_difference(peers, kind, name):
    """Returns: how much larger streams of tesk are, in per cent, geometric mean of the photographs."""
    times = [codecs[FIRST]["streamBytes"] / codecs[name]["streamBytes"]
             for _, codecs in peers.of("photographs", kind) if name in codecs]  # fmt: skip
    return f"{100 * (geometric_mean(times) - 1):+.1f} %".replace("-", "−") if times else "–"


def size_differences(figures):
    """Above zero: tesk is worse."""
    peers = PeerFigures(figures)
    rows = [[name, *(size_difference(peers, kind, name) for kind in KINDS)] for name in peers.others]
    return table(["tesk beside", *KINDS], rows)


def photographs(figures):
    """What the photographs are: bits per sample with tesk."""
    peers = PeerFigures(figures)
    bits, sides = {}, {}
    for kind in KINDS:
        for picture, codecs in peers.of("photographs", kind):
            sides[picture["name"]] = f"{picture['width']} x {picture['height']}"
            bits[picture["name"], kind] = f"{8 * codecs[FIRST]['streamBytes'] / picture['samples']:.2f}"
    rows = [[name, sides[name], *(bits.get((name, kind), "–") for kind in KINDS)] for name in sides]
    return table(["photograph", "pixels", *KINDS], rows, left=2)


def rates(peers, kind, name):
    """Returns: million samples in a second, over the photographs, both ways."""
    # A stream is decoded in one way, compared or not.
    names = (name, FIRST if name == UNVERIFIED else name)
    times = [peers.nanoseconds("photographs", kind, *codec) for codec in zip(names, DIRECTIONS)]
    return both_ways(rounded(1e3 / geometric_mean(nanoseconds)) for nanoseconds in times) if all(times) else "–"


def front(figures):
    """The table of README.md: speeds both ways, and one size."""
    peers = PeerFigures(figures)
    rows = []
    for name in (FIRST, UNVERIFIED, *peers.others):
        cells = [name, *(rates(peers, kind, name) for kind in KINDS), peers.mean_bits("photographs", "rgb8", name)]
        rows.append([f"**{cell}**" for cell in cells] if name == FIRST else cells)
    return table(["compress / decompress", *LONG_KINDS, "size, RGB"], rows)
