#!/usr/bin/python3
"""Compares the images of two folders by their pixels, with readers that share no code with tesk.

    same_pixels.py FOLDER BACK

Both folders must hold images of the same names, with folders below them. Samples are compared as they
are in the files, palettes by their colours, and an alpha channel that is opaque everywhere counts for nothing.
Ends with status 1 at the first difference, which it names.
"""

import sys
from pathlib import Path

import numpy
import tifffile
from PIL import Image

Image.MAX_IMAGE_PIXELS = None


def pnm_head(data):
    """The fields of a PNM head: magic, numbers, and where the samples begin."""
    count = 3 if data[1:2] in (b"1", b"4") else 4
    fields, at = [], 0
    while len(fields) < count:
        while data[at : at + 1].isspace():
            at += 1
        if data[at : at + 1] == b"#":
            at = data.index(b"\n", at)
            continue
        end = at
        while end < len(data) and not data[end : end + 1].isspace():
            end += 1
        fields.append(data[at:end])
        at = end
    numbers = [int(field) for field in fields[1:]]
    return fields[0], numbers[0], numbers[1], (numbers[2] if count == 4 else 1), at + 1


def pam_head(data):
    text, _, _ = data.partition(b"ENDHDR\n")
    lines = [line.split() for line in text.splitlines()[1:] if not line.startswith(b"#")]
    fields = {line[0]: line[1] for line in lines}
    numbers = [int(fields[name]) for name in (b"WIDTH", b"HEIGHT", b"DEPTH", b"MAXVAL")]
    return (*numbers, len(text) + len(b"ENDHDR\n"))


def plain_samples(magic, text):
    lines = [line.partition(b"#")[0] for line in text.splitlines()]
    words = b" ".join(lines)
    return list(words.replace(b" ", b"")) if magic == b"P1" else [int(word) for word in words.split()]


def read_pnm(data):
    """White is 1 in what is returned for bitmaps, as it is for gray."""
    if data[:2] == b"P7":
        width, height, channels, maximum, at = pam_head(data)
        magic = b"P7"
    else:
        magic, width, height, maximum, at = pnm_head(data)
        channels = 3 if magic in (b"P3", b"P6") else 1
    if magic == b"P4":
        rows = numpy.frombuffer(data, "u1", (width + 7) // 8 * height, at).reshape(height, -1)
        return 1 - numpy.unpackbits(rows, axis=1)[:, :width]
    count = width * height * channels
    if magic in (b"P1", b"P2", b"P3"):
        samples = numpy.array(plain_samples(magic, data[at:])[:count])
        samples = 1 - (samples - ord("0")) if magic == b"P1" else samples
    else:
        samples = numpy.frombuffer(data, "u1" if maximum < 256 else ">u2", count, at)
    return samples.reshape((height, width) if channels == 1 else (height, width, channels))


def read_tiff(path):
    with tifffile.TiffFile(path) as file:
        page = file.pages[0]
        bits, colours = page.bitspersample, page.colormap
        # tifffile needs more packages for most compressions.
        if bits not in (2, 4) and page.compression in (1, 8, 32773, 32946):
            samples = page.asarray()
            if page.planarconfig == 2 and samples.ndim == 3:
                samples = numpy.moveaxis(samples, 0, -1)
            return samples if colours is None else numpy.moveaxis(colours[:, samples.astype("u1")] >> 8, 0, -1)
    samples = read_with_pillow(path, bits)
    # Pillow turns gray round where 0 is white.
    return (2**bits - 1) - samples if page.photometric == 0 else samples


def read_png(path):
    with open(path, "rb") as file:
        depth = file.read(25)[24]
    return read_with_pillow(path, depth)


def read_with_pillow(path, bits):
    """Pillow scales samples of 2 and 4 bits to 8."""
    with Image.open(path) as image:
        if image.mode == "P":
            return numpy.asarray(image.convert("RGBA" if "transparency" in image.info else "RGB"))
        samples = numpy.asarray(image)
    return samples // (255 // (2**bits - 1)) if bits in (2, 4) else samples


def without_opaque_alpha(samples):
    has_alpha = samples.ndim == 3 and samples.shape[2] in (2, 4)
    if not has_alpha or (samples[..., -1] != samples[..., -1].max()).any():
        return samples
    return samples[..., 0] if samples.shape[2] == 2 else samples[..., :3]


def read_pixels(path):
    """The samples of an image, as an array of whole numbers: (height, width) or (height, width, channels)."""
    data = Path(path).read_bytes()
    if data[:4] in (b"II*\0", b"MM\0*", b"II+\0", b"MM\0+"):
        samples = read_tiff(path)
    elif data[:1] == b"P":
        samples = read_pnm(data)
    elif data[:6] == b"\x93NUMPY":
        samples = numpy.load(path)
    else:
        samples = read_png(path)
    return without_opaque_alpha(samples).astype(numpy.int64)


def difference(path, back):
    """What differs between two images, in words; empty for nothing."""
    first, second = read_pixels(path), read_pixels(back)
    if first.shape != second.shape:
        return f"{path} has the shape {first.shape}, {back} {second.shape}"
    places = numpy.argwhere(first != second)
    if len(places) == 0:
        return ""
    at = tuple(places[0])
    return f"{path} has {first[at]} at {tuple(map(int, at))}, {back} has {second[at]}"


def files_below(folder):
    return {path.relative_to(folder) for path in Path(folder).rglob("*") if path.is_file()}


def difference_of_folders(folder, back):
    alone = files_below(folder) ^ files_below(back)
    if alone:
        return f"{sorted(alone)[0]} is in one folder only"
    names = sorted(files_below(folder))
    if not names:
        return "there is no image"
    return next(filter(None, (difference(Path(folder, name), Path(back, name)) for name in names)), "")


def main(arguments):
    if len(arguments) != 2:
        sys.exit(__doc__)
    words = difference_of_folders(*arguments)
    if words:
        sys.exit(f"same_pixels.py: {words}")
    print(f"{len(files_below(arguments[0]))} images are the same")


if __name__ == "__main__":
    main(sys.argv[1:])
