"""Pictures for the tests."""

import sys
from pathlib import Path

import hypothesis
import numpy
import pytest

# What is tested is the staged or installed module, never the sources.
assert "tesk" not in sys.modules

# Failures are printed, and nothing is kept in the sources.
hypothesis.settings.register_profile("tesk", database=None)
hypothesis.settings.load_profile("tesk")

GOLDEN = Path(__file__).resolve().parents[2] / "tests" / "golden"


def picture(height, width, dtype="uint16", bits=12, colour=False, seed=1):
    """Returns: a smooth picture with noise."""
    random = numpy.random.default_rng(seed)
    rows, columns = numpy.mgrid[0:height, 0:width]
    most = (1 << bits) - 1
    smooth = (numpy.sin(rows / 17) + numpy.cos(columns / 23) + 2) / 4 * most * 0.9
    shape = (height, width, 3) if colour else (height, width)
    noisy = (smooth[..., None] if colour else smooth) + random.normal(0, max(most / 200, 1), shape)
    return numpy.clip(noisy, 0, most).astype(dtype)


def pictures():
    """Returns: one picture of each type."""
    return {
        "gray8": picture(70, 50, "uint8", 8),
        "rgb8": picture(70, 50, "uint8", 8, colour=True),
        "gray12": picture(70, 50),
        "gray16": picture(70, 50, bits=16),
    }


@pytest.fixture(params=sorted(pictures()))
def image(request):
    return pictures()[request.param]
