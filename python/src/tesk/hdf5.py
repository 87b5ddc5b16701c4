"""HDF5 files whose chunks are streams of tesk, with and without the filter plugin of HDF5.

With the plugin, h5py reads such datasets by itself, and `compression=tesk.hdf5.FILTER` makes them (docs/hdf5.md). This
module does not use the plugin: it writes and reads chunk by chunk, from any number of threads, and with an h5py that
cannot load the plugin. Both make the same files."""

from __future__ import annotations

from typing import Any

import h5py
import numpy

from ._chunks import as_picture, is_signed, picture_shape, samples_of
from ._coding import DEFAULT_MAX_PIXELS, encode
from ._info import probe
from ._native import Array, Error
from ._pixels import bytes_per_pixel, checked_bits, geometry_of
from ._tesk import lib

FILTER = 32799
"""The number of the filter, for use inside one organisation until The HDF Group registers one."""

_VERSION = 1
_SIGNED = 1


def create_dataset(
    parent: Any,
    name: str,
    shape: tuple[int, ...],
    dtype: Any,
    chunks: tuple[int, ...],
    *,
    maxshape: tuple[int | None, ...] | None = None,
    bits: int | None = None,
) -> Any:
    """Creates a dataset with the filter, whether or not the plugin is there.

    parent: a file or group of h5py. bits: how many low bits of a sample are used; found for each chunk unless given.
    Returns: the dataset. Raises: TypeError, ValueError where no stream can hold such chunks."""
    kind = numpy.dtype(dtype)
    creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
    creation.set_chunk(chunks)
    creation.set_filter(FILTER, h5py.h5z.FLAG_OPTIONAL, _filter_values(chunks, kind, bits))
    limits = None if maxshape is None else tuple(h5py.h5s.UNLIMITED if side is None else side for side in maxshape)
    space = h5py.h5s.create_simple(shape, limits)
    return h5py.Dataset(h5py.h5d.create(parent.id, name.encode(), h5py.h5t.py_create(kind), space, creation))


def write_chunk(
    dataset: Any, offset: tuple[int, ...], samples: Any, *, bits: int | None = None, verify: bool = True
) -> None:
    """Encodes the chunk of a dataset that begins at `offset`, and stores it.

    samples: an array of the dataset's type, of the shape of its chunks; axes of length 1 may be missing.
    bits: those of the dataset unless given. verify: as for tesk.encode.
    Raises: ValueError where the dataset has other chunks, or another filter besides, as fletcher32."""
    bits_of_dataset = _filter_bits(dataset)
    if isinstance(samples, numpy.ma.MaskedArray):
        raise TypeError("a chunk has no place for the mask of a masked array: write its .data")
    array = numpy.asarray(samples)
    if _longer_axes(dataset.chunks) != _longer_axes(array.shape) or dataset.dtype != array.dtype:
        raise ValueError(
            f"the samples are {array.dtype} of shape {array.shape}; "
            f"chunks are {dataset.dtype} of shape {dataset.chunks}"
        )
    picture = as_picture(array.reshape(dataset.chunks))
    dataset.id.write_direct_chunk(offset, encode(picture, bits=bits or bits_of_dataset, verify=verify))


def read_chunk(dataset: Any, offset: tuple[int, ...], *, max_pixels: int = DEFAULT_MAX_PIXELS) -> Array:
    """Returns: the samples of the chunk that begins at `offset`, in the shape of the dataset's chunks.
    Raises: Error unless it is a complete stream of such a chunk and nothing else; ValueError where it was never
        written, and where the dataset has another filter besides."""
    _filter_bits(dataset)
    info = dataset.id.get_chunk_info_by_coord(offset)
    if info.byte_offset is None:
        raise ValueError(f"chunk {offset} was never written")
    _, chunk = dataset.id.read_direct_chunk(offset)
    # Chunks that do not shrink may be stored as they are. (h5py 3.7 gives no mask of filters with the chunk.)
    if info.filter_mask:
        return _plain_samples(chunk, dataset)
    _require_picture(chunk, dataset)
    return samples_of(chunk, is_signed(dataset.dtype), max_pixels).reshape(dataset.chunks)


def _plain_samples(chunk: bytes, dataset: Any) -> Array:
    samples = numpy.empty(dataset.chunks, dataset.dtype)
    if len(chunk) != samples.nbytes:
        raise Error(f"the chunk has {len(chunk)} bytes; its samples have {samples.nbytes}", lib.TESK_INVALID_STREAM)
    samples.reshape(-1).view(numpy.uint8)[:] = numpy.frombuffer(chunk, numpy.uint8)
    return samples


def _require_picture(chunk: bytes, dataset: Any) -> None:
    """A stream of another picture may have as many samples, in other places."""
    found = probe(chunk)
    shape, dtype = picture_shape(dataset.chunks, dataset.dtype), _unsigned(dataset.dtype)
    if found.shape != shape or found.dtype != dtype:
        raise Error(
            f"the chunk is {found.dtype} of shape {found.shape}, not {dtype} of shape {shape}",
            lib.TESK_INVALID_STREAM,
        )


def _unsigned(dtype: numpy.dtype[Any]) -> numpy.dtype[Any]:
    """Returns: the type of the samples in a stream."""
    return numpy.dtype(f"u{dtype.itemsize}") if is_signed(dtype) else dtype


def _filter_values(chunks: tuple[int, ...], dtype: numpy.dtype[Any], bits: int | None) -> tuple[int, ...]:
    """Returns: version, bytes per pixel, columns, rows, bits, flags: what the plugin writes."""
    unsigned = _unsigned(dtype)
    shape = picture_shape(chunks, dtype)
    geometry = geometry_of(shape, bytes_per_pixel(numpy.broadcast_to(numpy.zeros((), unsigned), shape)))
    found = 0 if bits is None else checked_bits(bits, unsigned)
    flags = _SIGNED if is_signed(dtype) else 0
    return (_VERSION, geometry.bytes_per_pixel, geometry.width, geometry.height, found, flags)


def _filter_bits(dataset: Any) -> int | None:
    """Returns: the bits of a sample that the dataset was created with. Raises: ValueError where its chunks go through
    anything but the filter."""
    creation = dataset.id.get_create_plist()
    filters = [creation.get_filter(i) for i in range(creation.get_nfilters())]
    numbers = [number for number, *_ in filters]
    if numbers != [FILTER]:
        raise ValueError(f"the dataset has the filters {numbers}, not {FILTER} alone")
    values = filters[0][2]
    return values[4] or None


def _longer_axes(shape: tuple[int, ...]) -> list[int]:
    return [length for length in shape if length != 1]
