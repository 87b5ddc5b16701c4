"""Streams that no encoder writes, for check_tool.py.

They reach what prefixes and flipped bits hardly ever reach: escapes (docs/format.md, 11.3),
sections in any order and with wrong lengths, orders that no image has, and every kind of top
plane (13.1).
"""

import tesk_decode
from tesk_decode import ESCAPE_ZEROS, HEADER_BYTES

# Width and height: sides of 0 to 3, odd ones, and one with coefficients behind a run of 41.
SIDES = ((0, 5), (1, 9), (2, 2), (3, 3), (3, 9), (9, 3), (4, 4), (5, 5), (8, 8), (17, 40))
BITS_PER_PIXEL = (0, 1, 8, 10, 11, 12, 13, 16, 31, 32, 40, 255)
TOP_PLANES = (0, 1, 3, 7, 13, 14, 15, 16, 29, 30, 31, 32, 61, 64, 254, 255)
MAX_SECTIONS = 16
MAX_PIECES = 12

ESCAPE = "0" * ESCAPE_ZEROS + "1"


def field(value, bits):
    """An unsigned field in stream order, of the low bits of the value."""
    return "".join(str(value >> k & 1) for k in range(bits))


def run_code(run):
    """Section 11.1."""
    if run == 0:
        return "1"
    low = run.bit_length() - 1
    return "0" * (low + 1) + "1" + field(run - (1 << low), low)


def payload(dice):
    """Runs and signs, escapes among them, or nothing at all."""
    pieces = []
    for _ in range(dice.randrange(MAX_PIECES)):
        piece = run_code(dice.choice((0, 0, 1, 2, 3, 5, 11, 44)))
        if dice.random() < 0.2:
            piece = dice.choice((ESCAPE, 2 * ESCAPE, ESCAPE + piece, "0" * (ESCAPE_ZEROS + 1)))
        pieces.append(piece + dice.choice("01"))
    return "".join(pieces)


def section(header, dice):
    """A section of any plane and order that the image has, sometimes with a wrong length."""
    content = payload(dice)
    order = dice.randrange(max(header.levels, 0) + 1)
    length = len(content)
    if dice.random() < 0.05:
        length += dice.choice((-1, 1, 40))
    return (
        field(dice.randrange(header.planes), 2)
        + field(order, 3)
        + dice.choice("001")
        + field(length, header.length_bits(order))
        + content
    )


def ending(header, dice):
    """The end mark, no end, or a section of an order beyond all, which may end in its length."""
    order = dice.choice((6, 7))
    length_bits = header.length_bits(order) % 64 - dice.randrange(10)
    beyond = "00" + field(order, 3) + "0" + dice.choice("01") * max(length_bits, 0)
    return dice.choice((field(tesk_decode.END_MARK, 2), "", beyond))


def made_stream(dice):
    width, height = dice.choice(SIDES)
    bytes_per_pixel = dice.choice((1, 2, 3))
    head = tesk_decode.MAGIC + bytes((bytes_per_pixel, dice.choice(BITS_PER_PIXEL)))
    head += width.to_bytes(2, "little") + height.to_bytes(2, "little")
    head = head.ljust(HEADER_BYTES, b"\0")
    header = tesk_decode.read_header(head, "file")
    text = field(dice.choice(TOP_PLANES), 8)
    text += "".join(section(header, dice) for _ in range(dice.randrange(MAX_SECTIONS)))
    text += ending(header, dice)
    size = (len(text) + 7) // 8
    return head + int(text[::-1], 2).to_bytes(size, "little")
