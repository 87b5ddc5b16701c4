"""What the pages say about figures in words."""

import textwrap

from summary import FIRST, KINDS, PeerFigures, factor, geometric_mean


COLUMNS = 118
# The processor levels in sentences.
LEVELS = {"avx512": "with AVX-512", "avx2": "with AVX2", "scalar": "in plain C++"}
# What tables call by its format.
LIBRARIES = {"WebP": "libwebp", "PNG": "libpng"}


def wrapped(text):
    return textwrap.fill(text, COLUMNS, break_on_hyphens=False)


def machine_line(figures):
    processor = figures["processor"]
    return (f"{processor['name']} (family {processor['family']}, model {processor['model']}, {processor['count']} "
            f"processors), {figures['system']}, {figures['compiler']}, {figures['date']}")  # fmt: skip


def versions(figures):
    """Returns: the other codecs, each library once."""
    named = {name.split(" e")[0]: version for name, version in figures["versions"].items() if version}
    return ", ".join(f"{LIBRARIES.get(name, name)} {version}" for name, version in named.items() if not name.startswith(FIRST))


def machine_words(figures):
    before, after = figures["load"]
    return wrapped(f"{machine_line(figures)}, Linux {figures['kernel']}; tesk {figures['versions'][FIRST]} of commit "
                   f"{figures['commit']} {LEVELS[level_of(figures)]}, {versions(figures)}. {figures['rounds']} rounds. Load "
                   f"average: {before} before, {after} after; the benchmark itself counts 1.{busy_words(figures)}")  # fmt: skip


def busy_words(figures):
    """Returns: a warning, where the load says that others used the machine."""
    before, after = figures["load"]
    return " Other work ran at the same time: all of it is faster on a quiet machine." if before > 1 or after > 2 else ""


def level_of(figures):
    return PeerFigures(figures).levels[0]


def margins(peers, way, level):
    """Returns: how many times as fast tesk is as the fastest other codec: the worst and the best kind of photographs."""
    def means(kind):
        times = (peers.times("photographs", kind, name, way, level) for name in peers.others)
        return [geometric_mean(found) for found in times if found]

    least = sorted(min(means(kind)) for kind in KINDS if peers.of("photographs", kind))
    return f"{factor(least[0])} to {factor(least[-1])}"


def speed_words(figures):
    """The list of docs/comparison.md, an entry for each level of the processor."""
    peers = PeerFigures(figures)
    each = ([LEVELS[level], *(margins(peers, way, level) for way in ("compress", "decompress"))] for level in peers.levels)
    return "\n".join(f"- {name}: compression {compress}, decompression {decompress}" for name, compress, decompress in each)


def front_words(figures):
    """The sentences of README.md."""
    peers = PeerFigures(figures)
    best, *others = [(LEVELS[level], *(margins(peers, way, level) for way in ("compress", "decompress")))
                     for level in peers.levels]  # fmt: skip
    rest = ", ".join(f"{compress} and {decompress} {name}" for name, compress, decompress in others)
    return wrapped(f"tesk compresses and verifies {best[1]} times as fast as the next fastest image codec that we measured, "
                   f"and decompresses {best[2]} times as fast, {best[0]}. The factors are {rest}: below 1 the other codec is "
                   "faster.")  # fmt: skip


def front_machine(figures):
    """The sentence below the table of README.md."""
    return wrapped(f"{machine_line(figures)}; tesk {LEVELS[level_of(figures)]}.{busy_words(figures)}")
