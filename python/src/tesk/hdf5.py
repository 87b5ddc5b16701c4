"""HDF5 files whose chunks are streams of tesk, with and without the filter plugin of HDF5.

Where the plugin is installed, `compression=tesk.hdf5.FILTER` is all it takes (docs/hdf5.md). The two functions here
go past the filter: chunk by chunk, from any number of threads that encode, and with a h5py that cannot load it."""

from __future__ import annotations

from typing import Any

from ._coding import decode, encode
from ._info import measure
from ._native import Array, Error
from ._tesk import lib

FILTER = 32799
"""The number of the filter, for use inside a house until The HDF Group gives it one."""


def write_chunk(dataset: Any, offset: tuple[int, ...], image: Any, **as_encode: Any) -> None:
    """Encodes an image and stores it as the chunk of a dataset that begins at `offset`. The shape of the image is
    that of the chunk without its axes of length 1. The other arguments are those of tesk.encode.

    Raises: ValueError where the dataset has other chunks."""
    if tuple(length for length in dataset.chunks if length != 1) != image.shape or dataset.dtype != image.dtype:
        raise ValueError(
            f"the image is {image.dtype} of shape {image.shape}; "
            f"chunks are {dataset.dtype} of shape {dataset.chunks}"
        )
    dataset.id.write_direct_chunk(offset, encode(image, **as_encode))


def read_chunk(dataset: Any, offset: tuple[int, ...], **as_decode: Any) -> Array:
    """Returns: the picture of the chunk that begins at `offset`, without the filter. Raises: Error unless it is a
    complete stream and nothing else."""
    _, stream = dataset.id.read_direct_chunk(offset)
    if measure(stream) != (len(stream), True):
        raise Error(f"chunk {offset} is not a complete stream and nothing else", lib.TESK_CUT)
    return decode(stream, **as_decode)
