"""The tables of tesk alone: calls, rows, reduced pictures, cold runs."""

from peer_tables import table
from summary import KINDS, geometric_mean, number

CALLS = {"compress": "compress", "compress, unverified": "unverified", "decompress": "decompress"}
WHOLE = "3000 x 2000"
MOST_LEVELS = 5


def sides(picture):
    return f"{picture['width']} x {picture['height']}"


def calls_of(picture):
    """Returns: the three calls, in the order of the tables."""
    named = {call["name"]: call for call in picture["calls"]}
    return [named[name] for name in CALLS]


def whole(picture):
    """Returns: whether it is not a part of a larger picture. Those stand behind the picture that they are of."""
    return picture["group"] == "generated" and sides(picture) == WHOLE


def first_of_each(pictures):
    """Returns: the whole photographs: the first of each name."""
    found = {}
    for picture in pictures:
        if picture["group"] == "photographs":
            found.setdefault((picture["name"], picture["kind"]), picture)
    return list(found.values())


def call_cells(pictures):
    """Returns: for each kind of call ns per sample of the first and of later ones."""
    cells = []
    for place in range(len(CALLS)):
        calls = [(picture["samples"], calls_of(picture)[place]) for picture in pictures]
        first, later = (geometric_mean([1e9 * call[f"{when}Seconds"] / samples for samples, call in calls])
                        for when in ("first", "later"))  # fmt: skip
        cells.append(f"{number(first)} / {number(later)}")
    return cells


def mean_faults(pictures):
    """Returns: page faults of the first calls and of later ones, compression and decompression."""
    def mean(place, when):
        return round(sum(calls_of(picture)[place][f"{when}Faults"] for picture in pictures) / len(pictures))

    return [f"{mean(place, 'first')} / {mean(place, 'later')}" for place in (0, 2)]


def calls(figures):
    """Whole pictures, ns per sample."""
    rows = []
    for group, chosen in (("photographs", first_of_each(figures["calls"])),
                          ("generated", [p for p in figures["calls"] if whole(p)])):  # fmt: skip
        for kind in KINDS:
            pictures = [picture for picture in chosen if picture["kind"] == kind]
            if pictures:
                rows.append([f"{group}, {kind}", *call_cells(pictures), *mean_faults(pictures)])
    return table(["ns per sample, first / later", *CALLS.values(), "faults, compress", "faults, decompress"], rows)


def small_calls(figures):
    """Parts of the generated pictures, in microseconds."""
    rows = []
    for picture in figures["calls"]:
        if picture["group"] == "generated" and not whole(picture):
            cells = [f"{number(1e6 * call['firstSeconds'])} / {number(1e6 * call['laterSeconds'])}"
                     for call in calls_of(picture)]  # fmt: skip
            rows.append([f"{picture['kind']}, {sides(picture)}", *cells])
    return table(["µs, first / later", *CALLS.values()], rows)


def warm_figures(figures):
    """Returns: what tesk_bench found, by work, kind and levels."""
    return {(found["work"], found["kind"], found["levels"]): found for found in figures["warm"]}


def reduced(figures):
    """Milliseconds and the share of the whole, below it kB."""
    found, rows = warm_figures(figures), []
    for kind in KINDS:
        every = [found["decompress", kind, 0], *(found["reduce", kind, n] for n in range(1, MOST_LEVELS + 1))]
        times = [every[0]["ms"] / one["ms"] for one in every[1:]]
        shares = [f"{number(one['ms'])} (1/{share:.0f})" for one, share in zip(every[1:], times)]
        rows.append([f"{kind}, ms", number(every[0]["ms"]), *shares])
        rows.append([f"{kind}, kB", *(f"{one['memory_bytes'] / 1000:.0f}" for one in every)])
    return table(["image", "whole", *(f"1:{2**n}" for n in range(1, MOST_LEVELS + 1))], rows)


def by_rows(figures):
    """Whole images and row by row: milliseconds and kB."""
    found, rows = warm_figures(figures), []
    for kind in KINDS:
        cells = []
        for work in ("compress", "decompress"):
            pair = [found[work, kind, 0], found[f"{work}Rows", kind, 0]]
            cells += [number(one["ms"]) for one in pair]
            cells += [f"{one['memory_bytes'] / 1000:.0f}" for one in pair]
        rows.append([kind, *cells])
    heads = ["ms, whole", "ms, rows", "kB, whole", "kB, rows"]
    return table(["image", *(f"{work}: {head}" for work in ("compress", "decompress") for head in heads)], rows)


def cold(figures):
    """Single runs of the tool."""
    rows = []
    for run in figures["cold"]:
        samples = (18 if run["kind"] == "rgb8" else 6) * 1e6
        rows.append([run["kind"], f"`{run['word']}`", number(run["wall_ms"]), number(run["cpu_ms"]),
                     number(run["cpu_ms"] * 1e6 / samples), number(run["in_process_ms"]),
                     f"{run['cpu_ms'] / run['in_process_ms']:.2f}", f"{run['peak_mb']:.1f}",
                     f"{run['peak_mb'] * 2**20 / samples:.2f}", str(run["faults"])])  # fmt: skip
    heads = ["image", "command", "wall ms", "CPU ms", "CPU ns/sample", "warm ms", "CPU / warm", "peak MiB",
             "peak bytes/sample", "page faults"]  # fmt: skip
    return table(heads, rows, left=2)
