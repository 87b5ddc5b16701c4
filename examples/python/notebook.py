# %% [markdown]
# # What the first bytes of a stream show, and what a stream of each kind of image takes
#
# Run cell by cell in an editor that knows `# %%`, or as a program: `notebook.py [FOLDER]` writes the figures there.

# %%
import sys
from pathlib import Path

import matplotlib

matplotlib.use("Agg")

import matplotlib.pyplot as pyplot  # noqa: E402
import numpy  # noqa: E402
import tesk  # noqa: E402
from PIL import Image  # noqa: E402
from skimage import data  # noqa: E402

FOLDER = Path(sys.argv[1] if len(sys.argv) > 1 else ".")
pyplot.rcParams.update({"font.family": "DejaVu Sans", "font.size": 10, "figure.dpi": 100})


def save(figure, name):
    """As few colours as there are, and without the version of matplotlib: the same figure is the same file."""
    figure.canvas.draw()
    picture = Image.fromarray(numpy.asarray(figure.canvas.buffer_rgba())[..., :3])
    is_gray = not numpy.ptp(numpy.asarray(picture), axis=2).any()
    picture.convert("L" if is_gray else "RGB").save(FOLDER / name, optimize=True)
    pyplot.close(figure)


# %% [markdown]
# ## A prefix of a stream is a picture
#
# There are no layers to ask for: the stream is made once, and cut anywhere.

# %%
SHARES = (1, 3, 10, 30, 100)
photograph = data.camera()
stream = tesk.encode(photograph)


def decibels(picture, original):
    """Returns: the ratio of the largest value to the root of the mean squared error."""
    error = numpy.mean((picture.astype("float64") - original) ** 2)
    return 10 * numpy.log10(255**2 / error) if error else numpy.inf


# A pixel of the picture is a pixel of the figure.
SIDE, GAP, ABOVE, BELOW = 180, 12, 30, 26
size = (len(SHARES) * (SIDE + GAP) + GAP, ABOVE + SIDE + BELOW)
figure = pyplot.figure(figsize=(size[0] / 100, size[1] / 100))
for place, share in enumerate(SHARES):
    prefix = stream[: len(stream) * share // 100]
    picture, _ = tesk.decode_prefix(prefix)
    quality = decibels(picture, photograph)
    left = GAP + place * (SIDE + GAP)
    axis = figure.add_axes((left / size[0], BELOW / size[1], SIDE / size[0], SIDE / size[1]))
    axis.imshow(picture[60 : 60 + SIDE, 170 : 170 + SIDE], cmap="gray", vmin=0, vmax=255, interpolation="nearest")
    axis.set_title(f"{share} %: {len(prefix):,} bytes", fontsize=10)
    axis.text(0.5, -0.03, "exact" if numpy.isinf(quality) else f"{quality:.1f} dB",
              transform=axis.transAxes, ha="center", va="top")  # fmt: skip
    axis.set_axis_off()
save(figure, "prefix-ladder.png")

# %% [markdown]
# ## How many bits a sample takes
#
# Noise is what takes bits: a smooth picture of 16 bits may take fewer than a noisy one of 8.

# %%
random = numpy.random.default_rng(1)
rows, columns = numpy.mgrid[0:512, 0:512] / 512
smooth = 0.5 + 0.25 * numpy.sin(9 * rows) + 0.25 * numpy.cos(7 * columns)
kinds = {
    "photograph, 8 bits": photograph,
    "photograph, RGB of 8 bits": data.coffee(),
    "text, 8 bits": data.text(),
    "photons, 12 bits, dark": random.poisson(smooth * 10).astype("uint16"),
    "photons, 12 bits, bright": random.poisson(smooth * 2000).astype("uint16"),
    "smooth, 16 bits": numpy.rint(smooth * 65535).astype("uint16"),
    "noise in all of 16 bits": random.integers(0, 65536, (512, 512)).astype("uint16"),
}
bits = {name: 8 * len(tesk.encode(image)) / image.size for name, image in kinds.items()}
raw_bits = {name: 8 * image.itemsize for name, image in kinds.items()}

figure, axis = pyplot.subplots(figsize=(8, 3.2))
names = list(reversed(kinds))
axis.barh(names, [raw_bits[name] for name in names], color="#e4e4e4", label="as it lies in memory")
axis.barh(names, [bits[name] for name in names], color="#2a6f97", label="as a stream")
for place, name in enumerate(names):
    axis.text(17.2, place, f"{raw_bits[name] / bits[name]:.2g} : 1", va="center")
axis.set_xlabel("bits per sample")
axis.set_xlim(0, 19)
axis.set_xticks(range(0, 17, 4))
axis.spines[["top", "right", "left"]].set_visible(False)
axis.tick_params(axis="y", length=0)
axis.legend(loc="upper center", bbox_to_anchor=(0.4, 1.16), ncol=2, frameon=False)
figure.tight_layout()
save(figure, "bits-per-sample.png")

# %%
print(f"{len(SHARES)} prefixes of one stream; bits per sample: {min(bits.values()):.2f} to {max(bits.values()):.2f}")
