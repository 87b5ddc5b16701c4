#!/usr/bin/env python3
"""Makes the annotated stream of docs/format.md: each bit of a small stream, and what it tells.

    annotate.py TOOL PAGE            compares with the page; exit status 1 if it differs
    annotate.py TOOL PAGE --write    puts the text into the page

The tool compresses IMAGE, the sections are found and read with tesk_decode.py, and the text
stands between two comments of the page. As a test this keeps page, tool and decoder together.
"""

import argparse
import difflib
import subprocess
import sys
import tempfile
import textwrap
from pathlib import Path

import tesk_decode
from tesk_decode import HEADER_BYTES, N_SECTION, Bits, Coefficients, RunReader

BEGIN = "<!-- begin: made by tests/python/annotate.py -->\n"
END = "<!-- end -->\n"

# Few levels and few bit planes, so that all sections fit on a page: a ramp, which has few
# details, with a bright and a dark place.
IMAGE = (
    (4, 5, 6, 7, 8, 9, 10, 11, 12),
    (4, 5, 6, 7, 8, 9, 10, 11, 12),
    (4, 5, 6, 7, 8, 9, 10, 11, 12),
    (4, 5, 6, 7, 8, 9, 10, 11, 12),
    (4, 5, 6, 7, 8, 9, 10, 11, 12),
    (4, 5, 6, 7, 8, 9, 10, 2, 12),
    (4, 5, 14, 7, 8, 9, 10, 11, 12),
    (4, 5, 6, 7, 8, 9, 10, 11, 12),
)
BITS_PER_PIXEL = 8

LISTING_NOTE = """\
Its bits: the stream bit, the byte and the bit in it, and the fields, their first bit on the left.
A section header is plane, order, type and length; its payload is indented. `(y,x)` is the row and
column of a coefficient; behind it is what the decoder knows of it by then: sign and magnitude in
binary, a dot for each bit that is still to come. Coefficients that are not new yet count as 0."""

PADDING_BITS = 9
LINE = 100
MEANING_COLUMN = 36
NO_BREAK = "\u00a0"  # a space at which no line is broken


def compressed(tool):
    """The complete stream of IMAGE."""
    with tempfile.TemporaryDirectory() as folder:
        raw, stream = Path(folder, "raw"), Path(folder, "stream")
        raw.write_bytes(bytes(sample for row in IMAGE for sample in row))
        geometry = [str(n) for n in (1, BITS_PER_PIXEL, len(IMAGE[0]), len(IMAGE))]
        subprocess.run([tool, "c", raw, *geometry, stream], check=True, capture_output=True)
        return stream.read_bytes()


class Recorder(RunReader):
    """Keeps where each run and each sign begins, its bits, and the number of a run."""

    def __init__(self, bits, section):
        super().__init__(bits, section)
        self.runs = []
        self.signs = []

    def record(self, read, into):
        begin = self.at
        value = read()
        into.append((begin, self.bits.text[begin : self.at], value))
        return value

    def run(self):
        return self.record(super().run, self.runs)

    def sign(self):
        return self.record(super().sign, self.signs)


class Annotation:
    """The lines of the listing, made section by section."""

    def __init__(self, stream):
        self.header = tesk_decode.read_header(stream, "file")
        self.bits = Bits(stream)
        self.found = tesk_decode.read_sections(self.header, self.bits)
        self.lines = []
        self.places = [
            tesk_decode.scan_order(self.header, order) for order in range(self.header.levels + 1)
        ]
        self.known = [Coefficients(len(places)) for places in self.places]

    def line(self, at, field, meaning):
        """Bit and byte of the stream, the bits, and what they say."""
        byte = HEADER_BYTES + at // 8
        front = f"{at:4}  {byte:02x}.{at % 8}  {field}  "
        wrapped = textwrap.wrap(
            meaning,
            LINE,
            initial_indent=front.ljust(MEANING_COLUMN),
            subsequent_indent=" " * MEANING_COLUMN,
            break_on_hyphens=False,
        )
        self.lines += [text.replace(NO_BREAK, " ") for text in wrapped]

    def text_of(self, at, *widths):
        """Fields that follow each other, with spaces between them."""
        fields = []
        for width in widths:
            fields.append(self.bits.text[at : at + width])
            at += width
        return " ".join(fields)

    def what_is_known(self, order, i, p):
        """A coefficient with a dot for each bit below plane p; the value when all are known."""
        y, x = divmod(self.places[order][i], self.header.width)
        known = self.known[order]
        digits = format(known.magnitudes[i] >> p, "b") + "." * p
        text = f"({y},{x}) {'-' if known.signs[i] < 0 else '+'}{digits}"
        if p == 0:
            text += f" = {known.signs[i] * known.magnitudes[i]}"
        return text.replace(" ", NO_BREAK)

    def annotate_header_of(self, section):
        length_bits = self.header.length_bits(section.order)
        kind = "n" if section.kind == N_SECTION else "u"
        nothing = "nothing new" if section.kind == N_SECTION else "no bits"
        empty = f": {nothing}" if section.length == 0 else ""
        self.line(
            section.header_at,
            self.text_of(section.header_at, 2, 3, 1, length_bits),
            f"{kind} section, order {section.order}, p = {section.bit_plane}, "
            f"length {section.length}{empty}",
        )

    def annotate_n(self, section):
        known, p = self.known[section.order], section.bit_plane
        recorder = Recorder(self.bits, section)
        known.read_n(recorder, p)
        if section.length == 0:
            return
        new = [i for i, s in enumerate(known.significance) if s == p]
        for i, (begin, code, count), (_, sign, _) in zip(new, recorder.runs, recorder.signs):
            meaning = f"run {count}, sign {sign}: {self.what_is_known(section.order, i, p)}"
            self.line(begin, f"  {code} {sign}", meaning)
        begin, code, count = recorder.runs[-1]
        self.line(begin, f"  {code}", f"run {count}: no more")

    def annotate_u(self, section):
        known, q = self.known[section.order], section.bit_plane
        known.read_u(self.bits, section.payload_at, q)
        refined = known.refined_by(q)
        if refined:
            text = self.text_of(section.payload_at, *[1] * len(refined))
            values = ", ".join(self.what_is_known(section.order, i, q) for i in refined)
            self.line(section.payload_at, f"  {text}", values)

    def annotate(self):
        self.line(0, self.text_of(0, 8), f"top plane {self.found.top}")
        at = 8
        for section in self.found.sections:
            self.annotate_header_of(section)
            (self.annotate_n if section.kind == N_SECTION else self.annotate_u)(section)
            at = section.payload_at + section.length
        self.line(at, self.text_of(at, 2), "end mark")
        at += 2
        self.line(at, self.text_of(at, PADDING_BITS), "padding")
        at += PADDING_BITS
        if at < len(self.bits.text):
            self.line(at, self.bits.text[at:], "up to the end of the byte")
        return self.lines


def hex_dump(stream):
    rows = [(at, stream[at : at + 16]) for at in range(0, len(stream), 16)]
    return [f"{at:02x}: {row.hex(' ')}" for at, row in rows]


def table(values, width):
    """A plane with one row of it on each line."""
    rows = [values[at : at + width] for at in range(0, len(values), width)]
    return [" ".join(f"{value:3}" for value in row) for row in rows]


def fenced(lines):
    return ["```", *lines, "```", ""]


def page_text(stream):
    """What stands in the page between BEGIN and END."""
    header = tesk_decode.read_header(stream, "file")
    bits = Bits(stream)
    found = tesk_decode.read_sections(header, bits)
    plane = tesk_decode.decode_planes(header, bits, found)[0]
    result, image = tesk_decode.decode(stream)
    assert result == tesk_decode.COMPLETE and image == bytes(sum(IMAGE, ()))
    lengths = ", ".join(str(header.length_bits(order)) for order in range(header.levels + 1))
    lines = [
        f"The stream has {len(stream)} bytes:",
        "",
        *fenced(hex_dump(stream)),
        "Its header:",
        "",
        *fenced(
            [
                "54 4b 33 30        magic",
                f"{stream[4]:02x}                 bytes per pixel: {header.bytes_per_pixel}",
                f"{stream[5]:02x}                 bits per pixel: {header.bits_per_pixel}"
                f", so B = {header.coefficient_bits}",
                f"{stream[6:8].hex(' ')}              W = {header.width}",
                f"{stream[8:10].hex(' ')}              H = {header.height}"
                f", so L = {header.levels} and Wlen = {lengths} for the orders from 0",
                f"{stream[10:16].hex(' ')}  nothing",
            ]
        ),
        LISTING_NOTE,
        "",
        *fenced(Annotation(stream).annotate()),
        "The coefficients, and the samples after the inverse transform:",
        "",
        *fenced(table(plane, header.width)),
        *fenced(table(image, header.width)),
    ]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description="The annotated stream of docs/format.md.")
    parser.add_argument("tool", type=Path)
    parser.add_argument("page", type=Path)
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()

    page = arguments.page.read_text()
    before, rest = page.split(BEGIN)
    old, after = rest.split(END)
    new = page_text(compressed(arguments.tool.resolve()))
    if arguments.write:
        arguments.page.write_text(before + BEGIN + new + END + after)
        return 0
    sys.stdout.writelines(
        difflib.unified_diff(old.splitlines(True), new.splitlines(True), "page", "made again")
    )
    return 0 if old == new else 1


if __name__ == "__main__":
    sys.exit(main())
