#!/usr/bin/env python3
"""A second decoder of tesk streams, written from docs/format.md alone.

It shares nothing with the library but that page. It is kept as an independent check: if this
program, the page and the library agree on every stream, a reader can rely on the page. It follows
the page in its order and its words, and prefers plain code to speed; section numbers in the
comments are those of the page.

More than 400 lines in one file, on purpose: it is the page as a program, read beside it from top to
bottom, and copied as one file by whoever needs a decoder to start from.

    tesk_decode.py STREAM OUT [--profile file|memory] [--reduce K]

The exit status is the result of section 13.4: 0 complete, 4 cut, 128 no image; OUT is then empty.
"""

import argparse
import sys
from dataclasses import dataclass
from pathlib import Path

COMPLETE, CUT, NO_IMAGE = 0, 4, 128

HEADER_BYTES = 16
MAGIC = b"TK30"
MAX_LEVELS = 5
END_MARK = 3
N_SECTION, U_SECTION = 0, 1

ESCAPE_ZEROS = 40
END_ZEROS = 41
END_RUN = 2**30 + 1
SECOND_ESCAPE_RUN = 41

WIDE_PITCH = 512
TALL_STEPS = 512


class EndOfData(Exception):
    """A field needs bits behind the last bit of the stream."""


def wrap(value, bits):
    """The low `bits` bits of the value, read as two's complement."""
    half = 1 << (bits - 1)
    return ((value + half) & ((1 << bits) - 1)) - half


@dataclass(frozen=True)
class Header:
    """Section 3, and what follows from it."""

    bytes_per_pixel: int
    bits_per_pixel: int
    width: int
    height: int
    coefficient_bits: int

    @property
    def planes(self):
        return 3 if self.bytes_per_pixel == 3 else 1

    @property
    def levels(self):
        """Section 6.3."""
        shorter = min(self.width // 2, self.height // 2)
        return min(MAX_LEVELS, shorter.bit_length() - 1)

    def length_bits(self, order):
        """Wlen of section 10.1."""
        return (self.width * self.height).bit_length() + 1 - 2 * order


def read_header(stream, profile):
    """The header, or None if it says that there is no image."""
    if profile == "memory" and len(stream) <= HEADER_BYTES:
        return None
    head = stream[:HEADER_BYTES].ljust(HEADER_BYTES, b"\0")
    if profile == "file" and head[:4] != MAGIC:
        return None
    bytes_per_pixel, bits_per_pixel = head[4], head[5]
    if bytes_per_pixel not in (1, 2, 3):
        return None
    wide_from = 13 if profile == "file" else 12
    wide = bytes_per_pixel == 2 and bits_per_pixel >= wide_from
    return Header(
        bytes_per_pixel,
        bits_per_pixel,
        width=int.from_bytes(head[6:8], "little"),
        height=int.from_bytes(head[8:10], "little"),
        coefficient_bits=32 if wide else 16,
    )


class Bits:
    """The bits behind the header in stream order (section 4), as a text of 0 and 1."""

    def __init__(self, stream):
        body = stream[HEADER_BYTES:]
        count = 8 * len(body)
        self.text = format(int.from_bytes(body, "little"), f"0{count}b")[::-1] if body else ""

    def field(self, at, count):
        """An unsigned field, first bit lowest. Raises EndOfData if a bit is missing."""
        if at + count > len(self.text):
            raise EndOfData
        return int(self.text[at : at + count][::-1] or "0", 2)

    def padded(self, at, count):
        """The text of `count` bits; there are zeros behind the end of the data."""
        return self.text[at : at + count].ljust(count, "0")


class RunReader:
    """Reads the runs and signs of one n section (10.2, 11.2, 11.3)."""

    def __init__(self, bits, section):
        # Of a section of length 0 there are only zeros, which also stand behind the data.
        self.bits = bits
        self.at = section.payload_at if section.length > 0 else len(bits.text)
        self.ended = False

    def take(self, count):
        text = self.bits.padded(self.at, count)
        self.at += count
        return text

    def sign(self):
        return -1 if self.take(1) == "1" else 1

    def run(self):
        one = self.bits.text.find("1", self.at, self.at + END_ZEROS)
        if one < 0:
            self.at += END_ZEROS
            return END_RUN
        zeros = one - self.at
        self.at = one + 1
        if zeros == 0:
            return 0
        if zeros < ESCAPE_ZEROS:
            low = zeros - 1
            return (1 << low) + int(self.take(low)[::-1] or "0", 2)
        if self.ended:
            return SECOND_ESCAPE_RUN
        self.ended = True
        return self.run()


@dataclass(frozen=True)
class Section:
    """A section as its header tells (10.1); `bit_plane` may have no coefficients (13.1)."""

    header_at: int
    plane: int
    order: int
    kind: int
    length: int
    payload_at: int
    bit_plane: int


@dataclass
class Sections:
    """All that section 13.1 finds in a stream."""

    result: int
    top: int
    sections: list
    next_plane: dict

    def next_n(self, plane, order):
        return self.next_plane.get((plane, order, N_SECTION), self.top)

    def next_u(self, plane, order):
        return self.next_plane.get((plane, order, U_SECTION), self.top - 1)


def read_sections(header, bits):
    """Walks over the section headers as section 13.1 says."""
    found = Sections(result=CUT, top=-1, sections=[], next_plane={})
    try:
        top = bits.field(0, 8)
        found.top = -1 if top == 255 else top
        found.result = walk(header, bits, found)
    except EndOfData:
        pass
    return found


def walk(header, bits, found):
    at = 8
    while True:
        header_at = at
        plane = bits.field(at, 2)
        if plane == END_MARK:
            return COMPLETE
        order = bits.field(at + 2, 3)
        kind = bits.field(at + 5, 1)
        length_bits = header.length_bits(order) % 64
        length = bits.field(at + 6, length_bits)
        if plane >= header.planes or order > header.levels:
            return NO_IMAGE
        at += 6 + length_bits
        bit_plane = (found.next_n if kind == N_SECTION else found.next_u)(plane, order)
        found.next_plane[plane, order, kind] = bit_plane - 1
        found.sections.append(Section(header_at, plane, order, kind, length, at, bit_plane))
        at += length


def scan_order(header, order):
    """The places y * W + x of the coefficients of an order, in scan order (section 7)."""
    levels, width = header.levels, header.width
    step = 1 << order
    places = []
    for y in range(0, header.height, step):
        if order == levels or y % (2 * step) != 0:
            columns = range(0, width, step)
        else:
            columns = range(step, width, 2 * step)
        places.extend(y * width + x for x in columns)
    return places


class Coefficients:
    """What is known of the coefficients of one (plane, order), in scan order (13.2, 13.3)."""

    def __init__(self, count):
        self.significance = [-1] * count
        self.signs = [1] * count
        self.magnitudes = [0] * count
        self.left = range(count)

    def read_n(self, reader, s):
        """Reads the n section of bit plane s; those of the planes above must have been read."""
        at = reader.run()
        while at < len(self.left):
            i = self.left[at]
            self.significance[i] = s
            self.signs[i] = reader.sign()
            self.magnitudes[i] = 1 << s
            at += 1 + reader.run()
        self.left = [i for i in self.left if self.significance[i] < 0]

    def refined_by(self, q):
        """The coefficients that have a bit in the u section of bit plane q."""
        return [i for i, s in enumerate(self.significance) if s > q]

    def read_u(self, bits, payload_at, q):
        """Reads the u section of bit plane q, when the n sections above it have been read."""
        refined = self.refined_by(q)
        for i, bit in zip(refined, bits.padded(payload_at, len(refined))):
            if bit == "1":
                self.magnitudes[i] |= 1 << q

    def values(self, next_u, width):
        """The coefficients; bit planes from next_u down have not been refined."""
        rounded = []
        for s, sign, m in zip(self.significance, self.signs, self.magnitudes):
            missing = min(s - 1, next_u)
            if missing >= 1:
                m |= 1 << (missing - 1)
            rounded.append(wrap(sign * m, width))
        return rounded


def decode_order(header, bits, found, plane, order, count):
    """The `count` coefficients of (plane, order) in scan order (13.2)."""
    coefficients = Coefficients(count)
    payloads = {
        (section.kind, section.bit_plane): section
        for section in found.sections
        if (section.plane, section.order) == (plane, order)
    }
    for p in reversed(range(header.coefficient_bits)):
        if (N_SECTION, p) in payloads:
            coefficients.read_n(RunReader(bits, payloads[N_SECTION, p]), p)
    for p in reversed(range(header.coefficient_bits)):
        if (U_SECTION, p) in payloads:
            coefficients.read_u(bits, payloads[U_SECTION, p].payload_at, p)
    return coefficients.values(found.next_u(plane, order), header.coefficient_bits)


def decode_planes(header, bits, found, reduction=0):
    """The coefficients of every colour plane, each as one list in raster order. Those of the orders
    below `reduction` are left out (section 17).
    """
    planes = [[0] * (header.width * header.height) for _ in range(header.planes)]
    for order in range(reduction, header.levels + 1):
        places = scan_order(header, order)
        for c, values in enumerate(planes):
            coefficients = decode_order(header, bits, found, c, order, len(places))
            for place, value in zip(places, coefficients):
                values[place] = value
    return planes


def half(s):
    """Section 6.1; sums wrap to 32 bits."""
    s = wrap(s, 32)
    return wrap(s + 1, 32) >> 1 if s >= 0 else s >> 1


def quarter(s):
    s = wrap(s, 32)
    return wrap(s + 2, 32) >> 2 if s >= 0 else (s + 1) >> 2


def inverse_line(a, bits):
    """Section 6.2, from transformed to plain; the line is changed in place."""
    n = len(a)
    if n < 4:
        return
    for k in range(0, n, 2):
        if k == 0:
            low = half(a[1])
        elif k < n - 1:
            low = quarter(a[k - 1] + a[k + 1])
        else:
            low = half(a[k - 1])
        a[k] = wrap(a[k] - low, bits)
    for k in range(1, n, 2):
        detail = half(a[k - 1] + a[k + 1]) if k + 1 < n else a[k - 1]
        a[k] = wrap(a[k] + detail, bits)


def transformed_columns(header, step):
    """How many of the columns 0, step, 2 * step, .. are filtered vertically (6.5)."""
    pitch = (header.width + 7) // 8 * 8
    if pitch * step > WIDE_PITCH and (header.height - 1) // step >= TALL_STEPS:
        return header.width // step
    return (header.width + step - 1) // step


def inverse_wavelet(header, values, reduction=0):
    """Section 6.6; the steps below 2^reduction are left out (section 17)."""
    width, bits = header.width, header.coefficient_bits
    levels = header.levels if reduction > 0 else max(header.levels, 1)
    for level in reversed(range(reduction, levels)):
        step = 1 << level
        lines = [
            slice(step * column, None, width * step)
            for column in range(transformed_columns(header, step))
        ]
        lines += [
            slice(y * width, (y + 1) * width, step) for y in range(0, header.height, step)
        ]
        for line in lines:
            samples = values[line]
            inverse_line(samples, bits)
            values[line] = samples


def every_nth(header, values, step):
    """Every step-th sample of every step-th row (section 17)."""
    return [
        values[y * header.width + x]
        for y in range(0, header.height, step)
        for x in range(0, header.width, step)
    ]


def inverse_colour(planes):
    """Section 5: R, G and B from Y, Dr and Db."""
    pixels = []
    for luma, red, blue in zip(*planes):
        green = luma - ((red + blue) >> 2)
        pixels.append((wrap(green + red, 16), wrap(green, 16), wrap(green + blue, 16)))
    return [list(plane) for plane in zip(*pixels)] if pixels else planes


def clamp(header, values):
    """The samples of a cut stream (section 14), or of a reduced picture (section 17)."""
    if header.bits_per_pixel == 0:
        return values
    limit = 1 << (header.bits_per_pixel % 32)
    mask = -limit & ((1 << header.coefficient_bits) - 1)
    return [v if v & mask == 0 else 0 if v < 0 else limit - 1 for v in values]


def raw_bytes(header, planes):
    """Interleaves the samples (section 2) and keeps their low bits (section 14)."""
    sample_bytes = 2 if header.bytes_per_pixel == 2 else 1
    mask = (1 << (8 * sample_bytes)) - 1
    samples = (value & mask for pixel in zip(*planes) for value in pixel)
    return b"".join(sample.to_bytes(sample_bytes, "little") for sample in samples)


def decode_image(stream, header, reduction=0):
    """Decodes a stream whose header has been read; with a reduction of 1 to header.levels, to the
    picture at 1 : 2^reduction (section 17).
    """
    bits = Bits(stream)
    found = read_sections(header, bits)
    if found.result == NO_IMAGE:
        return NO_IMAGE, b""
    planes = decode_planes(header, bits, found, reduction)
    for values in planes:
        inverse_wavelet(header, values, reduction)
    planes = [every_nth(header, values, 1 << reduction) for values in planes]
    if header.planes == 3:
        planes = inverse_colour(planes)
    if found.result == CUT or reduction > 0:
        planes = [clamp(header, values) for values in planes]
    return found.result, raw_bytes(header, planes)


def decode(stream, profile="file", reduction=0):
    """The result (COMPLETE, CUT or NO_IMAGE) and the raw image of a stream. There is none with more
    reduction than levels.
    """
    header = read_header(stream, profile)
    if not header or reduction > max(header.levels, 0):
        return NO_IMAGE, b""
    return decode_image(stream, header, reduction)


def main():
    parser = argparse.ArgumentParser(description="Decodes a tesk stream to a raw image.")
    parser.add_argument("stream", type=Path)
    parser.add_argument("out", type=Path)
    parser.add_argument("--profile", choices=("file", "memory"), default="file")
    parser.add_argument("--reduce", type=int, default=0, metavar="K", help="picture at 1 : 2^K")
    arguments = parser.parse_args()
    result, image = decode(arguments.stream.read_bytes(), arguments.profile, arguments.reduce)
    arguments.out.write_bytes(image)
    return result


if __name__ == "__main__":
    sys.exit(main())
