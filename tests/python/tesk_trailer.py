"""Trailers of files, read and written from docs/trailer.md alone."""

import struct
import zlib

import tesk_decode

MAGIC, END_MAGIC = b"TKTRAIL1", b"TKT1"
SHORTEST = 28
MOST_BOXES = 64


class NoTrailer(Exception):
    """A rule of the page does not hold."""


def require(holds):
    if not holds:
        raise NoTrailer


def stream_bytes(file):
    """The size of the complete stream that a file begins with."""
    header = tesk_decode.read_header(file, "file")
    require(header)
    found = tesk_decode.read_sections(header, tesk_decode.Bits(file))
    require(found.result == tesk_decode.COMPLETE)
    last = found.sections[-1] if found.sections else None
    end_mark = last.payload_at + last.length if last else 8
    return tesk_decode.HEADER_BYTES + (end_mark + 2 + 9 + 7) // 8


def take(data, count):
    require(len(data) >= count)
    return data[:count], data[count:]


def read_boxes(data):
    """Name and data of every box, and the bytes of all behind the first."""
    boxes = []
    behind_first = b""
    while data:
        name, data = take(data, 4)
        length, data = take(data, 4)
        content, data = take(data, int.from_bytes(length, "little"))
        boxes.append((name, content))
        behind_first = behind_first if len(boxes) > 1 else data
    return boxes, behind_first


def read(file):
    """The boxes of a file behind the checksum, and whether that is right."""
    require(len(file) >= SHORTEST and file.endswith(END_MAGIC))
    length = int.from_bytes(file[-8:-4], "little")
    require(SHORTEST <= length <= len(file))
    stream, trailer = file[:-length], file[-length:]
    require(trailer.startswith(MAGIC))
    boxes, summed = read_boxes(trailer[len(MAGIC) : -8])
    names = [name for name, _ in boxes]
    require(names and names[0] == b"crc " and len(boxes[0][1]) == 4)
    require(len(names) <= MOST_BOXES and len(set(names)) == len(names))
    require(stream_bytes(file) == len(stream))
    return boxes[1:], zlib.crc32(stream + summed) == int.from_bytes(boxes[0][1], "little")


def box(name, data):
    return name + struct.pack("<I", len(data)) + data


def write(stream, boxes):
    """The trailer for a complete stream."""
    summed = b"".join(box(name, data) for name, data in boxes)
    checksum = struct.pack("<I", zlib.crc32(stream + summed))
    front = MAGIC + box(b"crc ", checksum) + summed
    return front + struct.pack("<I", len(front) + 8) + END_MAGIC
