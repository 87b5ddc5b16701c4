"""What the tests of tesk-convert share: runs of the program, a folder for each test, and images.

The images are made here by hand or by numpy, so that what is read was not written by tesk. TESK_CONVERT and TESK
in the environment name the programs.
"""

import io
import os
import shutil
import struct
import subprocess
import tempfile
import unittest
import zlib
from pathlib import Path

import numpy
import tifffile

from same_pixels import difference, read_pixels

PROGRAM = os.environ["TESK_CONVERT"]
TOOL = os.environ["TESK"]
# What a sanitizer finds must not look like a refusal.
SANITIZER_STATUS = 99
ENVIRONMENT = dict(os.environ, LC_ALL="C.UTF-8")
for variable in ("ASAN_OPTIONS", "UBSAN_OPTIONS"):
    ENVIRONMENT[variable] = f"{os.environ.get(variable, '')}:exitcode={SANITIZER_STATUS}"
NOBODY = 65534


class ConvertCase(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="tesk-convert-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def path(self, name):
        return self.folder / name

    def write(self, name, data):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
        return path

    def names(self, folder="."):
        """Names of the files in a folder, without those in folders below it."""
        return sorted(path.name for path in self.path(folder).iterdir() if not path.is_dir())

    def part_names(self):
        return [path.name for path in self.folder.rglob("*.part-*")]

    def start(self, *arguments, **options):
        options = {"stdin": subprocess.DEVNULL, "stderr": subprocess.PIPE, "cwd": self.folder, **options}
        return subprocess.Popen([PROGRAM, *arguments], env=ENVIRONMENT, **options)

    def run_program(self, *arguments, **options):
        """Runs the program, which must neither crash nor be found guilty by a sanitizer."""
        if "input" not in options:
            options.setdefault("stdin", subprocess.DEVNULL)
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "cwd": self.folder, "timeout": 100, **options}
        done = subprocess.run([PROGRAM, *arguments], env=ENVIRONMENT, check=False, **options)
        self.require_sound(done.returncode, done.stderr or b"")
        return done

    def require_sound(self, status, errors):
        text = errors.decode(errors="replace")
        self.assertIn(status, (0, 1, 2, 3), text)
        self.assertNotIn("Sanitizer", text)
        self.assertNotIn("runtime error:", text)

    def convert(self, *arguments, status=0, **options):
        """Runs the program, which must end with a status. Returns: the lines that it said, without its name."""
        done = self.run_program(*arguments, **options)
        text = (done.stderr or b"").decode(errors="surrogateescape")
        self.assertEqual(done.returncode, status, text)
        for line in text.splitlines():
            self.assertTrue(line.startswith("tesk-convert: "), line)
        return [line.removeprefix("tesk-convert: ") for line in text.splitlines()]

    def refuse(self, words, *arguments, status=1, **options):
        """Runs the program, which must say these words alone, and leave no new file."""
        before = sorted(self.folder.rglob("*"))
        self.assertEqual(self.convert(*arguments, status=status, **options), [words])
        self.assertEqual(sorted(self.folder.rglob("*")), before)

    def require_same(self, name, back):
        self.assertEqual(difference(self.path(name), self.path(back)), "")

    def require_samples(self, name, samples):
        found = read_pixels(self.path(name))
        self.assertEqual(found.shape, samples.shape)
        self.assertTrue((found == samples).all(), name)


def picture(width, height, bits=8, colour=False):
    """Something between a ramp and noise, with the least and the greatest sample."""
    shape = (height, width, 3) if colour else (height, width)
    noise = numpy.random.default_rng(width * 1000 + height).integers(0, 2**bits // 8 + 2, shape)
    ramp = sum(numpy.indices(shape)) * 2**bits // (width + height + 2)
    samples = (ramp + noise) % 2**bits
    samples.flat[0], samples.flat[1] = 2**bits - 1, 0
    return samples.astype("u1" if bits <= 8 else "<u2")


def pnm(samples, maximum=None):
    maximum = maximum or (2**16 - 1 if samples.itemsize == 2 else 255)
    head = b"P%d\n%d %d\n%d\n" % (5 + samples.ndim - 2, samples.shape[1], samples.shape[0], maximum)
    return head + samples.astype("u1" if maximum < 256 else ">u2").tobytes()


def pbm(samples):
    """samples: 1 is white."""
    head = b"P4\n%d %d\n" % (samples.shape[1], samples.shape[0])
    return head + numpy.packbits(1 - samples, axis=1).tobytes()


def plain_pnm(samples, maximum):
    """maximum: 0 for a bitmap."""
    digit = 1 if maximum == 0 else samples.ndim
    values = (1 - samples if maximum == 0 else samples).reshape(samples.shape[0], -1)
    rows = "\n".join(" ".join(map(str, row)) for row in values.tolist())
    limit = f"{maximum}\n" if maximum else ""
    return f"P{digit}\n{samples.shape[1]} {samples.shape[0]}\n{limit}{rows}\n".encode()


def pam(samples, maximum, kind):
    depth = 1 if samples.ndim == 2 else samples.shape[2]
    head = (f"P7\nWIDTH {samples.shape[1]}\nHEIGHT {samples.shape[0]}\nDEPTH {depth}\n"
            f"MAXVAL {maximum}\nTUPLTYPE {kind}\nENDHDR\n")
    return head.encode() + samples.astype("u1" if maximum < 256 else ">u2").tobytes()


def npy(samples):
    file = io.BytesIO()
    numpy.save(file, samples)
    return file.getvalue()


def tiff(samples, **options):
    """A TIFF without tags that a stream does not keep."""
    file = io.BytesIO()
    options = {"photometric": "rgb" if samples.ndim == 3 else "minisblack", **options}
    resolution = {"resolution": (100, 100), "resolutionunit": 3}
    tifffile.imwrite(file, samples, software=False, metadata=None, **{**resolution, **options})
    return file.getvalue()


def png_chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def png_rows(samples, depth):
    """Rows with the filter byte of "none"."""
    if samples.size == 0:
        return b""
    rows = samples.reshape(samples.shape[0], -1)
    if depth < 8:
        bits = (rows[..., None] >> numpy.arange(depth - 1, -1, -1)) & 1
        rows = numpy.packbits(bits.reshape(len(rows), -1).astype("u1"), axis=1)
    packed = rows.astype("u1" if depth <= 8 else ">u2")
    return b"".join(b"\0" + row.tobytes() for row in packed)


# Where each pass of an interlaced PNG begins, and its steps: row, column, rows, columns.
PASSES = ((0, 0, 8, 8), (0, 4, 8, 8), (4, 0, 8, 4), (0, 2, 4, 4), (2, 0, 4, 2), (0, 1, 2, 2), (1, 0, 2, 1))


def png(samples, depth=None, kind=None, interlaced=False, before=b"", behind=b""):
    """before, behind: chunks on either side of the pixels."""
    depth = depth or 8 * samples.itemsize
    channels = 1 if samples.ndim == 2 else samples.shape[2]
    kind = kind if kind is not None else {1: 0, 2: 4, 3: 2, 4: 6}[channels]
    head = struct.pack(">IIBBBBB", samples.shape[1], samples.shape[0], depth, kind, 0, 0, interlaced)
    parts = [samples[r::dr, c::dc] for r, c, dr, dc in PASSES] if interlaced else [samples]
    rows = zlib.compress(b"".join(png_rows(part, depth) for part in parts))
    return (b"\x89PNG\r\n\x1a\n" + png_chunk(b"IHDR", head) + before + png_chunk(b"IDAT", rows) + behind +
            png_chunk(b"IEND", b""))


class FilesCase(ConvertCase):
    """Begins with a picture, a.png, in an empty folder."""

    def setUp(self):
        super().setUp()
        self.samples = picture(30, 20)
        self.write("a.png", png(self.samples))

    def files_below(self, folder):
        return sorted(str(path.relative_to(self.path(folder))) for path in self.path(folder).rglob("*")
                      if not path.is_dir())
