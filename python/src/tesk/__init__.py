"""Fast lossless compression of raw sensor images, readable from any prefix.

stream = tesk.encode(image); image = tesk.decode(stream). docs/python.md in the sources has the rest."""

from ._bayer import merge_bayer, split_bayer
from ._coding import decode, decode_prefix, encode
from ._files import read, read_metadata, write
from ._info import Info, measure, probe
from ._native import Error, version
from ._rows import Decoder, Encoder
from ._thumbnail import thumbnail

__version__ = version()
__all__ = [
    "Decoder",
    "Encoder",
    "Error",
    "Info",
    "decode",
    "decode_prefix",
    "encode",
    "measure",
    "merge_bayer",
    "probe",
    "read",
    "read_metadata",
    "split_bayer",
    "thumbnail",
    "write",
]


def load_ipython_extension(ipython: object) -> None:
    """`%load_ext tesk`: arrays that tesk can hold show themselves as images in a notebook."""
    from .notebook import load_ipython_extension as load

    load(ipython)
