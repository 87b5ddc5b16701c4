"""What no stream holds is refused in words when a dataset is created, for optional filters, too."""

import h5py
import numpy as np
import pytest
from case import FILTER, create, path, stored  # noqa: F401

INTEGERS = "tesk holds integers of 8 and 16 bits"
SIDES = "tesk holds chunks of up to 65535 rows"
TWO = "a chunk needs two axes that are longer than 1, and has "
REFUSED = [  # type, chunk, words
    ("<f4", (20, 30), INTEGERS + ", and these elements are floating-point numbers"),
    ("<f2", (20, 30), INTEGERS + ", and these elements are floating-point numbers"),
    ("<u4", (20, 30), INTEGERS + ", and these have 32"),
    ("<i8", (20, 30), INTEGERS + ", and these have 64"),
    (">u2", (20, 30), INTEGERS + " in little-endian order, and these are big-endian"),
    (">i2", (20, 30), INTEGERS + " in little-endian order, and these are big-endian"),
    ("S2", (20, 30), INTEGERS + ", and these elements are strings"),
    ("?", (20, 30), "names of an enumeration (bool is one)"),
    ("c8", (20, 30), "compounds (complex numbers are, too)"),
    ([("a", "u1"), ("b", "u1")], (20, 30), "compounds"),
    (("u1", (3,)), (20, 30), "arrays"),
    ("V2", (20, 30), "of another kind"),
    ("u1", (30,), TWO + "1"),
    ("<u2", (70000,), TWO + "1"),
    ("u1", (1, 30), TWO + "1"),
    ("u1", (30, 1), TWO + "1"),
    ("u1", (1, 1, 30), TWO + "1"),
    ("u1", (1, 1), TWO + "0"),
    ("<u2", (70000, 3), SIDES + " (all axes but the last together) of up to 65535 columns, and these have 70000 rows of 3"),
    ("<u2", (3, 70000), "and these have 3 rows of 70000"),
    ("<u2", (700, 100, 5), "and these have 70000 rows of 5"),
    ("u1", (256, 256, 4), "and these have 65536 rows of 4"),
    ("u1", (70000, 2, 3), "and these have 70000 rows of 2"),
]


def refusal(file, *arguments, **more):
    """Returns: the words of the refusal."""
    with pytest.raises(ValueError) as error:
        create(file, "d", *arguments, **more)
    assert "d" not in file
    return str(error.value)


@pytest.mark.parametrize("mandatory", [True, False])
@pytest.mark.parametrize("dtype, chunk, words", REFUSED)
def test_types_and_shapes(path, dtype, chunk, words, mandatory):
    with h5py.File(path, "w") as file:
        assert words in refusal(file, chunk, np.dtype(dtype), chunk, mandatory=mandatory)


@pytest.mark.parametrize("dtype, values, words", [
    ("<u2", (17,), "tesk is told of 17 bits, and these samples have 16"),
    ("u1", (9,), "tesk is told of 9 bits, and these samples have 8"),
    ("<i2", (12,), "tesk is told of 12 bits, and signed samples always use all: leave the value away"),
    ("<u2", (0, 1), "tesk takes up to two values: bits, and 2 for no comparison or 0"),
    ("<u2", (0, 4), "tesk takes up to two values"),
    ("<u2", (0, 0, 0), "tesk takes up to two values"),
    ("<u2", (2, 2, 30, 20, 0, 0), "tesk takes up to two values"),
    ("<u2", (1, 2, 30, 20, 17, 0), "tesk takes up to two values"),
    ("<u2", (0,) * 9, "tesk takes up to two values"),
])
def test_values(path, dtype, values, words):
    with h5py.File(path, "w") as file:
        assert words in refusal(file, (20, 30), dtype, (20, 30), values)


@pytest.mark.parametrize("before", [
    lambda plan: plan.set_shuffle(), lambda plan: plan.set_deflate(4), lambda plan: plan.set_fletcher32(),
    lambda plan: plan.set_filter(FILTER, 0, ())])
def test_filters_in_front(path, before):
    plan = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    plan.set_chunk((20, 30))
    before(plan)
    plan.set_filter(FILTER, h5py.h5z.FLAG_OPTIONAL, ())
    with h5py.File(path, "w") as file, pytest.raises(ValueError, match="it has to be the first filter"):
        h5py.h5d.create(file.id, b"d", h5py.h5t.STD_U16LE, h5py.h5s.create_simple((20, 30)), plan)


def test_filters_behind(path):
    """They see a stream."""
    array = np.arange(600, dtype="<u2").reshape(20, 30)
    plan = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    plan.set_chunk((20, 30))
    plan.set_filter(FILTER, 0, ())
    plan.set_deflate(9)
    plan.set_fletcher32()
    with h5py.File(path, "w") as file:
        h5py.h5d.create(file.id, b"d", h5py.h5t.STD_U16LE, h5py.h5s.create_simple((20, 30)), plan)
        file["d"][...] = array
    np.testing.assert_array_equal(stored(path)[0], array)


def test_hdf5_asks_no_filter_about_strings_of_any_length(path):
    """It passes over optional filters, and stores them as they are."""
    with h5py.File(path, "w") as file:
        file.create_dataset("d", (4, 4), h5py.string_dtype(), chunks=(4, 4), compression=FILTER)[...] = "words"
        with pytest.raises(ValueError, match="not suitable for filters"):
            plan = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
            plan.set_chunk((4, 4))
            plan.set_filter(FILTER, 0, ())
            h5py.h5d.create(file.id, b"e", h5py.h5t.py_create(h5py.string_dtype(), logical=True),
                            h5py.h5s.create_simple((4, 4)), plan)
    back, _, past = stored(path)
    assert past == 1 and (back == b"words").all()
