#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Joins PNG pictures of one height side by side into one:  tools/join_pictures.py out.png left.png right.png...

Reads what renderers write: 8 bits a channel, RGB or RGBA, not interlaced. Wants nothing but Python.
"""
import struct
import sys
import zlib

GAP = 8  # pixels of white between two of them
CHANNELS = {2: 3, 6: 4}


def chunks(data):
    at = 8
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        yield kind, data[at + 8:at + 8 + size]
        at += size + 12


def paeth(left, above, corner):
    estimate = left + above - corner
    distances = (abs(estimate - left), abs(estimate - above), abs(estimate - corner))
    return (left, above, corner)[distances.index(min(distances))]


def unfilter(kind, row, above, pixel):
    """Undoes one of PNG's five filters, in place."""
    for i in range(len(row)):
        left = row[i - pixel] if i >= pixel else 0
        corner = above[i - pixel] if i >= pixel else 0
        guess = (0, left, above[i], (left + above[i]) // 2, paeth(left, above[i], corner))[kind]
        row[i] = (row[i] + guess) & 255


def rows(path):
    """The picture's width and its rows as RGB."""
    with open(path, "rb") as file:
        data = file.read()
    header = next(content for kind, content in chunks(data) if kind == b"IHDR")
    width, height, depth, color, _, _, interlace = struct.unpack(">IIBBBBB", header)
    if depth != 8 or color not in CHANNELS or interlace:
        sys.exit("join_pictures.py: '%s' is a PNG of another kind" % path)
    pixel = CHANNELS[color]
    packed = zlib.decompress(b"".join(content for kind, content in chunks(data) if kind == b"IDAT"))
    above = bytearray(width * pixel)
    result = []
    for y in range(height):
        at = y * (width * pixel + 1)
        row = bytearray(packed[at + 1:at + 1 + width * pixel])
        unfilter(packed[at], row, above, pixel)
        above = row
        result.append(row if pixel == 3 else bytearray(b for i, b in enumerate(row) if i % 4 != 3))
    return width, result


def write(path, lines):
    def chunk(kind, content):
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

    packed = bytearray()
    above = bytes(len(lines[0]))
    for line in lines:  # each as its difference to the one above, which packs well
        packed += b"\2" + bytes((a - b) & 255 for a, b in zip(line, above))
        above = line
    header = struct.pack(">IIBBBBB", len(lines[0]) // 3, len(lines), 8, 2, 0, 0, 0)
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(packed), 9)) +
                   chunk(b"IEND", b""))


def main():
    if len(sys.argv) < 3:
        sys.exit("usage: join_pictures.py out.png left.png right.png...")
    pictures = [rows(path)[1] for path in sys.argv[2:]]
    if len({len(picture) for picture in pictures}) > 1:
        sys.exit("join_pictures.py: the pictures differ in height")
    gap = b"\xff" * (3 * GAP)
    write(sys.argv[1], [gap.join(bytes(part) for part in line) for line in zip(*pictures)])


if __name__ == "__main__":
    main()
