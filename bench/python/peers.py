"""The codecs that are compared, each with one thread: an array to bytes, and bytes to an array of its shape and type."""

import io
import zlib

import numpy
from numcodecs import Blosc, Shuffle, blosc
from PIL import Image

import tesk
from tesk.numcodecs import Tesk

# Hounsfield units begin here; codecs of pictures have no signs.
LEAST_SIGNED = -1024


class TeskPeer:
    def __init__(self, verify):
        self.verify = verify

    def encode(self, image):
        if image.dtype.kind == "i":
            return Tesk(signed=True, verify=self.verify).encode(image)
        return tesk.encode(image, verify=self.verify)

    def decode(self, stream, like):
        if like.dtype.kind == "i":
            return Tesk(signed=True).decode(stream).reshape(like.shape)
        return tesk.decode(stream)


class BloscPeer:
    def __init__(self, codec, shuffle):
        self.codec = Blosc(codec, clevel=5, shuffle=shuffle)

    def encode(self, image):
        return self.codec.encode(image)

    def decode(self, stream, like):
        return numpy.frombuffer(self.codec.decode(stream), like.dtype).reshape(like.shape)


class ZlibPeer:
    """With the bytes of a kind together, as HDF5 does it."""

    def encode(self, image):
        return zlib.compress(Shuffle(image.itemsize).encode(image), 6)

    def decode(self, stream, like):
        samples = Shuffle(like.itemsize).decode(zlib.decompress(stream))
        return numpy.frombuffer(samples, like.dtype).reshape(like.shape)


class BitshufflePeer:
    def __init__(self):
        import bitshuffle

        self.module = bitshuffle

    def encode(self, image):
        return self.module.compress_lz4(image)

    def decode(self, stream, like):
        return self.module.decompress_lz4(stream, like.shape, like.dtype)


class PillowPeer:
    def __init__(self, kind, **options):
        self.kind, self.options = kind, options

    def encode(self, image):
        if image.dtype.kind == "i":
            image = (image - LEAST_SIGNED).astype("uint16")
        file = io.BytesIO()
        Image.fromarray(image).save(file, self.kind, **self.options)
        return file.getvalue()

    def decode(self, stream, like):
        samples = numpy.asarray(Image.open(io.BytesIO(stream)))
        if like.dtype.kind == "i":
            return (samples.astype("int16") + LEAST_SIGNED).astype("int16")
        return samples.astype(like.dtype, copy=False)


def peers():
    """Returns: the codecs by their names in tables. bitshuffle is left out where it is not installed."""
    blosc.use_threads = False
    found = {
        "tesk": TeskPeer(verify=True),
        "tesk, unverified": TeskPeer(verify=False),
        "Blosc zstd 5, bits": BloscPeer("zstd", Blosc.BITSHUFFLE),
        "Blosc LZ4 5, bits": BloscPeer("lz4", Blosc.BITSHUFFLE),
        "Blosc LZ4 5, bytes": BloscPeer("lz4", Blosc.SHUFFLE),
    }
    try:
        found["bitshuffle LZ4"] = BitshufflePeer()
    except ImportError:
        pass
    found["zlib 6, bytes"] = ZlibPeer()
    found["JPEG 2000"] = PillowPeer("JPEG2000", irreversible=False, mct=1)
    found["PNG 1"] = PillowPeer("PNG", compress_level=1)
    found["PNG 6"] = PillowPeer("PNG", compress_level=6)
    return found
