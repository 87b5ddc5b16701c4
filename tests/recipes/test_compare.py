"""bench/python/compare.py, on small images"""

import importlib
from pathlib import Path

import pytest

for module in ("skimage", "scipy", "numcodecs"):
    pytest.importorskip(module)

import numpy  # noqa: E402

BENCH = Path(__file__).resolve().parents[2] / "bench/python"


@pytest.fixture
def bench(monkeypatch):
    """Returns: a module of the folder by its name."""
    monkeypatch.syspath_prepend(str(BENCH))
    stacks = importlib.import_module("stacks")
    monkeypatch.setattr(stacks, "SIDE", 256)
    monkeypatch.setattr(stacks, "GRAY_PHOTOGRAPHS", ("camera",))
    monkeypatch.setattr(stacks, "COLOUR_PHOTOGRAPHS", ("chelsea",))
    return importlib.import_module


def test_every_codec_gives_every_image_back(bench, capsys):
    # measure() compares all images.
    bench("compare").main(1)
    printed = capsys.readouterr().out
    for name in list(bench("stacks").GENERATED) + ["photographs, 8 bits", "photographs, RGB"]:
        assert printed.count(f"\n| {name} |") == 3
    assert printed.count("tesk, unverified") == 1
    assert "\n`bench/python/compare.py 1`, load " in printed


def test_an_image_that_does_not_come_back_ends_the_run(bench):
    class Broken:
        def encode(self, image):
            return b"stream"

        def decode(self, stream, like):
            return like + 1

    compare = bench("compare")
    with pytest.raises(ValueError, match="does not come back"):
        compare.measure(Broken(), [numpy.zeros((2, 2), "uint8")], compare.Figures())


def test_stacks_have_the_types_that_they_name(bench):
    stacks = dict(bench("stacks").stacks())
    assert {images[0].dtype.name for images in stacks.values()} == {"uint8", "uint16", "int16"}
    for name, images in stacks.items():
        assert all(image.dtype == images[0].dtype and image.std() > 0 for image in images), name
    assert max(image.max() for image in stacks["fluorescence, 12 bits"]) < 4096
