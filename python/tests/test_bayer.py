"""Mosaics and their planes."""

import numpy
import pytest
import tesk
from conftest import picture


def test_mosaics_come_back():
    mosaic = picture(40, 60)
    planes = tesk.split_bayer(mosaic)
    assert planes.shape == (80, 30) and planes.dtype == mosaic.dtype
    numpy.testing.assert_array_equal(planes[20:40], mosaic[0::2, 1::2])
    numpy.testing.assert_array_equal(tesk.merge_bayer(planes), mosaic)


def test_planes_take_fewer_bytes():
    mosaic = picture(200, 200)
    mosaic[0::2, 0::2] //= 3
    mosaic[1::2, 1::2] //= 2
    assert len(tesk.encode(tesk.split_bayer(mosaic))) < 0.9 * len(tesk.encode(mosaic))


@pytest.mark.parametrize("shape", [(5, 4), (4, 5), (4, 4, 3), (4,)])
def test_odd_sides_are_refused(shape):
    with pytest.raises(ValueError, match="two even sides"):
        tesk.split_bayer(numpy.zeros(shape, "u2"))
    with pytest.raises(ValueError, match="four times the rows"):
        tesk.merge_bayer(numpy.zeros((6, 4), "u2"))
