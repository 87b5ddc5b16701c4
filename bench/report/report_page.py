"""Puts tables and sentences of tools/report into docs/comparison.md, and draws its curves."""

import hashlib
import json
from functools import partial

import report_tables
import report_words
from pages import FIGURES, Places
from report_tables import KIND_NAMES, METRICS

PAGE = "docs/comparison.md"
CURVES = tuple(f"docs/images/comparison/{name}.svg" for name in METRICS)
TABLES = {
    "lossy-differences": report_tables.differences,
    "drawing-words": report_words.drawing_words,
    "versions": report_words.version_words,
    "same-quality": report_tables.same_quality,
    "drawings": report_tables.drawings,
    "pictures": report_tables.each_picture,
    **{f"{name}-{kind}": partial(report_tables.rates, kind=kind, metric=metric)
       for name, metric in METRICS.items() for kind in KIND_NAMES},
}  # fmt: skip
COMPARISON = Places("comparison", TABLES, {PAGE: tuple(TABLES), "docs/questions.md": ("drawings",)})


def mark_of(comparison):
    """Returns: what stands at the end of a curve: the numbers of which it was drawn, in short."""
    digest = hashlib.sha256(json.dumps(comparison["curves"]).encode()).hexdigest()
    return f"<!-- numbers: {digest[:16]} -->"


def write(source, comparison, figures):
    # The only part that needs more than Python.
    import curves

    (source / CURVES[0]).parent.mkdir(parents=True, exist_ok=True)
    curves.draw_all(comparison, (source / CURVES[0]).parent, mark_of(comparison))
    COMPARISON.write(source, comparison)
    FIGURES.write(source, figures, only=PAGE)


def differences(source, comparison, figures):
    """Returns: what is not as the numbers give it."""
    found = COMPARISON.differences(source, comparison) + FIGURES.differences(source, figures, only=PAGE)
    return found + [f"{path}: drawn of other numbers" for path in CURVES
                    if not (source / path).read_text().endswith(mark_of(comparison) + "\n")]  # fmt: skip
