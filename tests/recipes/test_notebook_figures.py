"""examples/python/notebook.py, and its figures in docs/images/python"""

import re
from pathlib import Path

import pytest

matplotlib = pytest.importorskip("matplotlib")
pytest.importorskip("skimage")

import numpy  # noqa: E402
from PIL import Image  # noqa: E402

SOURCE = Path(__file__).resolve().parents[2]
FIGURES = SOURCE / "docs/images/python"
# Letters are drawn otherwise by others.
DRAWN_WITH = "3.6.3"


def test_the_figures_are_those_of_the_pages(example):
    assert "5 prefixes of one stream; bits per sample: 2.81 to 16.80" in example.run("notebook.py", ".")
    names = sorted(path.name for path in FIGURES.glob("*.png"))
    assert names == sorted(path.name for path in example.folder.glob("*.png"))
    for name in names if matplotlib.__version__ == DRAWN_WITH else ():
        drawn, shown = (numpy.asarray(Image.open(folder / name)) for folder in (example.folder, FIGURES))
        assert numpy.array_equal(drawn, shown), name


def test_cells_are_those_of_a_notebook():
    """Editors cut at these lines; each cell of code must compile on its own."""
    cells = re.split("^# %%", (SOURCE / "examples/python/notebook.py").read_text(), flags=re.M)[1:]
    code = [cell for cell in cells if not cell.startswith(" [markdown]")]
    assert len(code) == 4
    for cell in code:
        compile(cell, "cell", "exec")
