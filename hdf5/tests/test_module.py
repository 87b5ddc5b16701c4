"""The Python module goes past the filter: its chunks and those of the filter are the same."""

import h5py
import numpy as np
import pytest
from case import FILTER, create, path, pictures, stored  # noqa: F401
from tesk import hdf5 as module

CHUNKS = [((1, 40, 50), "<u2"), ((3, 40, 50), "<i2"), ((40, 50, 3), "u1"), ((40, 50, 1), "i1"), ((40, 50, 3), "i1"),
          ((2, 20, 1, 30), "u1"), ((1, 400, 3), "u1")]


@pytest.mark.parametrize("chunk, dtype", CHUNKS)
def test_both_make_the_same_dataset(path, chunk, dtype):
    array = pictures(chunk, dtype)
    with h5py.File(path, "w") as file:
        mine = create(file, "d", chunk, dtype, chunk, mandatory=False)
        other = module.create_dataset(file, "module", chunk, dtype, chunk)
        values = [data.id.get_create_plist().get_filter(0) for data in (mine, other)]
        assert values[0] == values[1] and module.FILTER == FILTER
        mine[...] = array
        module.write_chunk(other, (0,) * len(chunk), array)
        file.flush()
        assert mine.id.read_direct_chunk((0,) * len(chunk)) == other.id.read_direct_chunk((0,) * len(chunk))
        np.testing.assert_array_equal(module.read_chunk(mine, (0,) * len(chunk)), array)
    np.testing.assert_array_equal(stored(path, "module")[0], array)
