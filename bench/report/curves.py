"""Draws the curves of docs/comparison.md as SVG: the same file each time, for pages with a light or a dark ground."""

import math

import matplotlib
from report_tables import KIND_NAMES, METRICS, PSNR, SSIM, Curves

matplotlib.use("svg")
import matplotlib.pyplot as plot  # noqa: E402

STYLE = {"svg.hashsalt": "tesk", "svg.fonttype": "none", "font.size": 10, "font.family": "sans-serif",
         "axes.spines.top": False, "axes.spines.right": False, "axes.grid": True, "grid.color": "#dddddd"}  # fmt: skip
# Opaque, so that the text is dark on light in all pages.
GROUND = "#fbfbf8"
# Told apart by people who see few colours, too; tesk is black and thick.
LINES = {
    "tesk": ("#000000", "-"),
    "OpenJPEG 5/3": ("#0072b2", "--"),
    "OpenJPEG 9/7": ("#0072b2", "-"),
    "OpenJPH 9/7": ("#56b4e9", "-"),
    "libjxl": ("#d55e00", "-"),
    "WebP": ("#009e73", "-"),
    "JPEG": ("#cc79a7", "-"),
}
MEAN_RATES = [0.05 * 2 ** (step / 3) for step in range(18)]
RATE_TICKS = (0.05, 0.1, 0.25, 0.5, 1, 2)
SSIM_TICKS = (0.6, 0.8, 0.9, 0.95, 0.98, 0.99, 0.995)


def height(quality, metric):
    """Returns: where a quality is drawn. Near 1, SSIM has room for what is left to lose."""
    return quality if metric == PSNR else -math.log10(1 - quality)


def draw_line(axes, codec, points, metric, lines):
    colour, dashes = lines[codec]
    axes.plot([bits for bits, _ in points], [height(quality, metric) for _, quality in points], label=codec, color=colour,
              linestyle=dashes, linewidth=2.6 if codec == "tesk" else 1.5, zorder=3 if codec == "tesk" else 2)  # fmt: skip


def label_axes(axes, title, metric):
    axes.set_title(title)
    axes.set_xscale("log")
    axes.set_xticks(RATE_TICKS, [str(tick) for tick in RATE_TICKS])
    axes.minorticks_off()
    axes.set_xlabel("bits per sample")
    axes.set_ylabel("PSNR in dB" if metric == PSNR else "SSIM")
    if metric == SSIM:
        axes.set_yticks([height(tick, SSIM) for tick in SSIM_TICKS], [str(tick) for tick in SSIM_TICKS])


def mean_points(curves, kind, codec, metric):
    found = ((bits, curves.mean(kind, codec, bits, metric)) for bits in MEAN_RATES)
    return [pair for pair in found if pair[1] is not None]


def draw(curves, metric, path, lines):
    """Means of the photographs: gray on the left, colours on the right."""
    with matplotlib.rc_context(STYLE):
        figure, both = plot.subplots(1, 2, figsize=(10, 4.8), facecolor=GROUND, layout="constrained")
        for axes, kind in zip(both, KIND_NAMES):
            axes.set_facecolor(GROUND)
            for codec in curves.codecs:
                draw_line(axes, codec, mean_points(curves, kind, codec, metric), metric, lines)
            label_axes(axes, f"photographs, {KIND_NAMES[kind]}", metric)
        both[0].legend(frameon=False, fontsize=9)
        figure.savefig(path, facecolor=GROUND, metadata={"Date": None, "Creator": None})
        plot.close(figure)


def draw_all(comparison, folder, mark, names=METRICS, lines=LINES):
    """Each file ends with a mark, by which others tell of what numbers it was drawn."""
    for name, metric in names.items():
        path = folder / f"{name}.svg"
        draw(Curves(comparison), metric, path, lines)
        text = "\n".join(line.rstrip() for line in path.read_text().splitlines())
        path.write_text(f"{text}\n{mark}\n")
