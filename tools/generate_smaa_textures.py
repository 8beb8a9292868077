#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the two tables that SMAA.glslh reads, the area texture and the search texture.

Usage: generate_smaa_textures.py [--raw] DIR

  DIR/smaa-area.ktx      160 x 560, two channels of a byte (RG8)
  DIR/smaa-search.ktx    64 x 16, one channel of a byte (R8)

With --raw the names end in .raw, and the files hold the bytes alone. The first row in a file is the one at texture
coordinate 0. So a loader of pictures must not turn them upside down, and must not take them for sRGB. The shader wants
clamping to the edge, and linear filtering for the area texture at least.

The area texture answers: an edge between two rows of pixels runs on for `left` pixels to one side and `right` pixels
to the other, and at its ends certain edges cross it. Which parts of the two pixels does the line cut off that the
picture had before it was made of pixels? The line goes through the middle of the crossing edges at the ends.

The search texture answers: of the four pixels that one fetch mixes, by how many does the edge go on?
"""
import argparse
import struct
from pathlib import Path

# ---- areas beside horizontal edges -------------------------------------------------------------------------------
#
# Each pair of crossings has a square of 16 x 16 texels. Distances are kept as their square roots, so the texel (x, y)
# stands for x * x pixels to the left and y * y to the right. Squares stand at (crossing left, crossing right) in units
# of 16 texels, where a crossing is a sum of quarters: 3 for an edge below the line, 1 for one above. The squares at 2
# stay empty.

SQUARE = 16
BELOW, ABOVE = 3, 1

# Rows of 80 texels, one for each shift of the picture by a part of a pixel; the first has none.
SHIFTS = (0.0, -0.25, 0.25, -0.125, 0.125, -0.375, 0.375)

# Where both ends turn to one side the line is a shallow vee. Up to this length it is rounded.
SMOOTHING_LENGTH = 32


def area_between(start, end, pixel):
    """The areas between a line and the axis over [pixel, pixel + 1]: below the axis, above it."""
    (x1, y1), (x2, y2) = start, end
    low, high = max(x1, pixel), min(x2, pixel + 1)
    if low >= high:
        return 0.0, 0.0

    def height(x):
        return y1 + (y2 - y1) * (x - x1) / (x2 - x1)

    a, b = height(low), height(high)
    if a * b >= 0.0:
        signed = (a + b) / 2 * (high - low)
        return max(-signed, 0.0), max(signed, 0.0)
    # Two triangles, which meet where the line goes through the axis.
    zero = low + (high - low) * a / (a - b)
    first, second = a * (zero - low) / 2, b * (high - zero) / 2
    return (-first, second) if first < 0.0 else (-second, first)


def added(a, b):
    return a[0] + b[0], a[1] + b[1]


def mean(a, b):
    return (a[0] + b[0]) / 2, (a[1] + b[1]) / 2


def rounded(area, length):
    """Short vees get more than their share, like the arc of a circle."""
    part = min(max(length / SMOOTHING_LENGTH, 0.0), 1.0)
    return tuple((1 - part) * ((2 * a) ** 0.5 / 2) + part * a for a in area)


def end_height(crossing, other_crossing, shift):
    """Where the line ends: above, below, or None where it doesn't leave the axis there."""
    above, below = 0.5 + shift, shift - 0.5
    if crossing == BELOW + ABOVE:
        # Both: taken for the one that makes a slope with the other end.
        return {BELOW: above, ABOVE: below}.get(other_crossing)
    return {BELOW: below, ABOVE: above}.get(crossing)


def horizontal_area(crossing1, crossing2, left, right, shift):
    both = BELOW + ABOVE
    start, end = end_height(crossing1, crossing2, shift), end_height(crossing2, crossing1, shift)
    # An end with both crossings beside one that tells nothing could be either.
    if (crossing1 == both and start is None) or (crossing2 == both and end is None):
        return 0.0, 0.0
    length = left + right + 1
    middle = (length / 2, 0.0)
    to_middle = area_between((0.0, start), middle, left) if start is not None else (0.0, 0.0)
    from_middle = area_between(middle, (length, end), left) if end is not None else (0.0, 0.0)
    if start is None or end is None:
        return added(to_middle, from_middle)
    if (start < 0.0) == (end < 0.0):
        return added(rounded(to_middle, length), rounded(from_middle, length))
    slope = area_between((0.0, start), (length, end), left)
    if shift != 0.0 and both not in (crossing1, crossing2):
        # A shifted slope doesn't go through the middle any more; the mean with one that does looks better.
        return mean(slope, added(to_middle, from_middle))
    return slope


# ---- areas beside diagonals ----------------------------------------------------------------------------------------
#
# A diagonal goes up to the right by stairs of one pixel, whose corners are at (k, k). The pixel in question is
# (left + 1, left), the other one that above it. Squares are 20 x 20 texels and hold distances as they are. They stand
# at (crossing left, crossing right), where a crossing is 1, 2 or 3 for one edge, the other or both.

DIAGONAL_SQUARE = 20
DIAGONAL_SHIFTS = ((0.0, 0.0), (0.25, -0.25), (-0.25, 0.25), (0.125, -0.125), (-0.125, 0.125))

# The two ways in which the line may begin and end, by the crossing there. The result is the mean over both.
DIAGONAL_STARTS = {0: ((0, 0), (1, 0)), 1: ((1, 0), (1, 0)), 2: ((1, 1), (1, 1)), 3: ((1, 1), (1, 0))}
DIAGONAL_ENDS = {0: ((0, 0), (1, 0)), 1: ((1, 1), (1, 1)), 2: ((1, 0), (1, 0)), 3: ((1, 1), (1, 0))}


def area_right_of(start, end, x, y):
    """How much of the pixel at (x, y) lies to the right of the line through two points; all of it without a line."""
    if start == end:
        return 1.0
    dx, dy = end[0] - start[0], end[1] - start[1]

    def side(point):
        return dy * (point[0] - start[0]) - dx * (point[1] - start[1])

    corners = [(x, y), (x + 1, y), (x + 1, y + 1), (x, y + 1)]
    inside = []
    for here, there in zip(corners, corners[1:] + corners[:1]):
        a, b = side(here), side(there)
        if a >= 0.0:
            inside.append(here)
        if a * b < 0.0:
            t = a / (a - b)
            inside.append((here[0] + t * (there[0] - here[0]), here[1] + t * (there[1] - here[1])))
    return sum(p[0] * q[1] - q[0] * p[1] for p, q in zip(inside, inside[1:] + inside[:1])) / 2


def diagonal_area(crossing1, crossing2, left, right, shift):
    length = left + right + 1
    result = (0.0, 0.0)
    for start, end in zip(DIAGONAL_STARTS[crossing1], DIAGONAL_ENDS[crossing2]):
        end = (end[0] + length, end[1] + length)
        if crossing1:
            start = (start[0] + shift[0], start[1] + shift[1])
        if crossing2:
            end = (end[0] + shift[0], end[1] + shift[1])
        result = added(result, (1.0 - area_right_of(start, end, left + 1, left),
                                area_right_of(start, end, left + 1, left + 1)))
    return result[0] / 2, result[1] / 2


# ---- the area texture ------------------------------------------------------------------------------------------------

AREA_WIDTH, AREA_HEIGHT = 160, 560
BLOCK = 80


def area_texture():
    pixels = bytearray(2 * AREA_WIDTH * AREA_HEIGHT)

    def put(x, y, area):
        place = 2 * (y * AREA_WIDTH + x)
        pixels[place:place + 2] = bytes(int(255.0 * a + 0.5) for a in area)

    for block, shift in enumerate(SHIFTS):
        for c1 in (0, ABOVE, BELOW, ABOVE + BELOW):
            for c2 in (0, ABOVE, BELOW, ABOVE + BELOW):
                for y in range(SQUARE):
                    for x in range(SQUARE):
                        put(c1 * SQUARE + x, block * BLOCK + c2 * SQUARE + y,
                            horizontal_area(c1, c2, x * x, y * y, shift))
    for block, shift in enumerate(DIAGONAL_SHIFTS):
        for c1 in range(4):
            for c2 in range(4):
                for y in range(DIAGONAL_SQUARE):
                    for x in range(DIAGONAL_SQUARE):
                        put(BLOCK + c1 * DIAGONAL_SQUARE + x, block * BLOCK + c2 * DIAGONAL_SQUARE + y,
                            diagonal_area(c1, c2, x, y, shift))
    return bytes(pixels)


# ---- the search texture ---------------------------------------------------------------------------------------------
#
# The fetch of a search lies a quarter along and an eighth across, so its four pixels have other shares each: in 32nds,
# with the pixel nearest to the start of the search first in each row.
#
#     the row itself          21   7
#     the row on the far side  3   1
#
# From the sum follows which of them have an edge. Columns are the sums of the edges that cross, rows those of the edge
# that is followed. The left half is for searches towards smaller coordinates, the right half for the others. What is
# in the file is turned upside down and cut to the part that is not 0 everywhere.

NEAR, FAR, NEAR_BESIDE, FAR_BESIDE = 21, 7, 3, 1
SUMS = 33
SEARCH_WIDTH, SEARCH_HEIGHT = 64, 16
PER_PIXEL = 127  # of 255; two pixels are the most


def edges_of(total):
    """Which shares make the sum, or None where it can't come up."""
    edges = set()
    for share in (NEAR, FAR, NEAR_BESIDE, FAR_BESIDE):
        if total >= share:
            total -= share
            edges.add(share)
    return edges if total == 0 else None


def search_length(crossing, along, forward):
    if NEAR not in along:
        return 0
    near_side, far_side = {NEAR, NEAR_BESIDE}, {FAR, FAR_BESIDE}
    # Edges that cross are those on the side of smaller coordinates of their pixel. Forward, the near pixel's is the
    # first that is met; backward, it lies behind the near pixel already.
    if forward and crossing & near_side:
        return 0
    between = far_side if forward else near_side
    return 2 if FAR in along and not crossing & between else 1


def search_texture():
    full = [bytearray(2 * SUMS) for _ in range(SUMS)]
    for y in range(SUMS):
        for x in range(SUMS):
            crossing, along = edges_of(x), edges_of(y)
            if crossing is None or along is None:
                continue
            full[y][x] = PER_PIXEL * search_length(crossing, along, False)
            full[y][SUMS + x] = PER_PIXEL * search_length(crossing, along, True)
    rows = full[::-1][:SEARCH_HEIGHT]
    return b"".join(bytes(row[:SEARCH_WIDTH]) for row in rows)


# ---- files -----------------------------------------------------------------------------------------------------------

GL_UNSIGNED_BYTE = 0x1401
GL_RED, GL_R8 = 0x1903, 0x8229
GL_RG, GL_RG8 = 0x8227, 0x822B


def ktx(width, height, external, internal, pixels):
    """A KTX 1.1 file of one level. Its rows are multiples of four bytes here, as the format wants them."""
    assert len(pixels) % height == 0 and len(pixels) // height % 4 == 0
    identifier = b"\xabKTX 11\xbb\r\n\x1a\n"
    fields = (0x04030201, GL_UNSIGNED_BYTE, 1, external, internal, external, width, height, 0, 0, 1, 1, 0)
    return identifier + struct.pack("<13I", *fields) + struct.pack("<I", len(pixels)) + pixels


def main():
    parser = argparse.ArgumentParser(description="Writes the area and the search texture of SMAA.")
    parser.add_argument("--raw", action="store_true", help="the bytes alone, without a header")
    parser.add_argument("folder", type=Path, help="where the two files go")
    arguments = parser.parse_args()
    arguments.folder.mkdir(parents=True, exist_ok=True)
    for name, width, height, external, internal, pixels in (
            ("smaa-area", AREA_WIDTH, AREA_HEIGHT, GL_RG, GL_RG8, area_texture()),
            ("smaa-search", SEARCH_WIDTH, SEARCH_HEIGHT, GL_RED, GL_R8, search_texture())):
        file = arguments.folder / (name + (".raw" if arguments.raw else ".ktx"))
        file.write_bytes(pixels if arguments.raw else ktx(width, height, external, internal, pixels))


if __name__ == "__main__":
    main()
