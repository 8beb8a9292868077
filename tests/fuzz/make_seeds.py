#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes what the fuzz targets start from: make_seeds.py <repository> <folder> [folder of real files]

In <folder> there is then a folder for each target. Files are made up here, or are the small ones of the real files, which
may be absent, and the GLSL files of the repository. Before each stands the byte that chooses how it is loaded."""
import hashlib
import pathlib
import struct
import sys

LARGEST = 8191  # bytes; larger ones only slow the fuzzer down
PLAIN, SRGB, REFUSE, ANISOTROPY, ODD, REMAP, PROCESS = 0, 1, 2, 4, 8, 16, 0xE0
OPTIONS = (PLAIN, SRGB | ANISOTROPY | ODD, PROCESS | REMAP | SRGB, REFUSE)


class Seeds:
    def __init__(self, folder):
        self.folder = folder
        self.count = {}

    def add(self, targets, options, data):
        if len(data) > LARGEST:
            return
        for target in targets:
            folder = self.folder / target
            folder.mkdir(parents=True, exist_ok=True)
            content = bytes([options]) + data
            (folder / hashlib.sha1(content).hexdigest()).write_bytes(content)
            self.count[target] = self.count.get(target, 0) + 1

    def add_texture(self, target, data):
        for options in OPTIONS:
            self.add((target,), options, data)
        self.add(("identify",), PLAIN, data)
        self.add(("identify",), PROCESS | REMAP | SRGB, data)


# ---- KTX -------------------------------------------------------------------------------------------------------------

RED, RGB, RGBA, RG, DEPTH_STENCIL = 0x1903, 0x1907, 0x1908, 0x8227, 0x84F9
UNSIGNED_BYTE, UNSIGNED_SHORT_5_6_5, FLOAT, HALF_FLOAT, UNSIGNED_INT_24_8 = 0x1401, 0x8363, 0x1406, 0x140B, 0x84FA
FORMATS = (  # format, type, bytes of a texel, of the type, internal format
    (RED, UNSIGNED_BYTE, 1, 1, 0x8229),
    (RGB, UNSIGNED_BYTE, 3, 1, 0x8051),
    (RGBA, UNSIGNED_BYTE, 4, 1, 0x8058),
    (RG, HALF_FLOAT, 4, 2, 0x822F),
    (RGB, UNSIGNED_SHORT_5_6_5, 2, 2, 0x8D62),
    (RGBA, FLOAT, 16, 4, 0x8814),
    (DEPTH_STENCIL, UNSIGNED_INT_24_8, 4, 4, 0x88F0),
    (0x1909, UNSIGNED_BYTE, 1, 1, 0x1909),
)
METADATA = (b"", struct.pack("<I", 13) + b"KTXorientatio" + b"\0" * 3,
            struct.pack("<I", 8) + b"key\0val\0" + struct.pack("<I", 6) + b"k\0v\0\0\0", b"\0\0\0\0\0", b"\0" * 8)


def padded(data, to=4):
    return data + b"\0" * (-len(data) % to)


def ktx(format_row, size, levels=1, faces=1, elements=0, metadata=b"", order="<"):
    form, kind, texel, of_type, internal = format_row
    width, height, depth = size
    words = (0x04030201, kind, of_type, form, internal, form, width, height, depth, elements, faces, levels,
             len(metadata))
    body = b""
    for level in range(max(levels, 1)):
        w, h, d = (max(side >> level, 1) for side in size)
        if texel == 0:
            pixels = bytes(8 * ((w + 3) // 4) * ((h + 3) // 4) * d)
        else:
            pixels = padded(bytes(range(texel)) * w) * h * d
        body += struct.pack(order + "I", len(pixels)) + padded(pixels) * faces
    return b"\xabKTX 11\xbb\r\n\x1a\n" + struct.pack(order + "13I", *words) + metadata + body


def add_ktx(seeds):
    etc2 = (0, 0, 0, 1, 0x9274)
    for row in FORMATS + (etc2,):
        seeds.add_texture("ktx", ktx(row, (5, 3, 0), 0))
        seeds.add_texture("ktx", ktx(row, (4, 4, 0), 3))
    for size in ((7, 0, 0), (5, 4, 3), (4, 4, 1), (0, 0, 0), (4, 0, 4), (0x80000000, 1, 0), (1, 0xFFFFFFFF, 0)):
        small = tuple(side if side < 16 else 1 for side in size)
        whole = ktx(FORMATS[2], small, 3)
        seeds.add_texture("ktx", whole[:36] + struct.pack("<3I", *size) + whole[48:])
        seeds.add_texture("ktx", ktx(etc2, small, 2))
    for faces, elements in ((6, 0), (6, 2), (1, 2), (0, 0), (7, 0)):
        seeds.add_texture("ktx", ktx(FORMATS[1], (3, 3, 0), 2, faces, elements))
        seeds.add_texture("ktx", ktx(etc2, (4, 4, 0), 1, faces, elements))
    for metadata in METADATA:
        seeds.add_texture("ktx", ktx(FORMATS[2], (2, 2, 0), metadata=metadata))
    seeds.add_texture("ktx", ktx(FORMATS[3], (2, 2, 0), order=">"))
    whole = ktx(FORMATS[1], (3, 3, 0), 2)
    for length in (0, 11, 12, 63, 64, 67, 68, 69, len(whole) - 1, len(whole) + 1):
        seeds.add_texture("ktx", (whole + b"\0")[:length])


# ---- Radiance --------------------------------------------------------------------------------------------------------

def hdr(rows, resolution, lines=b"FORMAT=32-bit_rle_rgbe\n"):
    return b"#?RADIANCE\n" + lines + b"\n" + resolution + b"\n" + rows


def flat(width):
    return b"".join(bytes((x & 255, 2 * x & 255, 3, 130)) for x in range(width))


def runs(width):
    row = struct.pack(">BBH", 2, 2, width)
    for channel in range(4):
        left = width
        if left > 3:
            row += bytes((3, 7, 8, 9))
            left -= 3
        while left:
            count = min(left, 127)
            row += bytes((128 + count, channel + 126))
            left -= count
    return row


def old_runs(width):
    return b"\1\1\1" + bytes((width & 255,)) + (b"\1\1\1" + bytes((width >> 8,)) if width > 255 else b"") + b"\x10\x20\x30\x80"


def add_hdr(seeds):
    for width, height in ((1, 1), (3, 2), (8, 4), (300, 3), (128, 2)):
        for axes in (b"-Y %d +X %d", b"+Y %d +X %d", b"-X %d -Y %d"):
            for row in (flat, runs, old_runs):
                seeds.add_texture("hdr", hdr(row(width) * height, axes % (height, width)))
    mixed = runs(8) + flat(8) + old_runs(8) + runs(9)
    seeds.add_texture("hdr", hdr(mixed, b"-Y 5 +X 8", b"EXPOSURE=1.5\nEXPOSURE= 2e-3\nGAMMA=1\n"))
    seeds.add_texture("hdr", hdr(mixed, b"-Y 3 +X 8", b"# text\nFORMAT=32-bit_rle_xyze\n"))
    for resolution in (b"-Y 0 +X 4", b"-Y 70000 +X 1", b"-Y 4294967295 +X 4294967295", b"-Y -1 +X -1", b"-Y +X", b"+Z 1 +X 1",
                       b"-Y 99999999999999999999 +X 1"):
        seeds.add_texture("hdr", hdr(flat(8), resolution))
    seeds.add_texture("hdr", hdr(b"\2\2\0\x08\x89\0", b"-Y 1 +X 8"))
    for lines in (b"FORMAT=other\n", b"EXPOSURE=x\n", b"\0\n", b"FORMAT=32-bit_rle_rgbe"):
        seeds.add_texture("hdr", hdr(flat(2), b"-Y 1 +X 2", lines))
    seeds.add_texture("hdr", b"#?RGBE\n\n-Y 1 +X 1\n\1\2\3\4")
    seeds.add_texture("hdr", b"#?RADIANCE\n")


# ---- ASTC ------------------------------------------------------------------------------------------------------------

BLOCKS = ((4, 4), (5, 4), (5, 5), (6, 5), (6, 6), (8, 5), (8, 6), (8, 8), (10, 5), (10, 6), (10, 8), (10, 10), (12, 10),
          (12, 12), (4, 5), (255, 1))


def astc(block, size, extra=0):
    header = b"\x13\xab\xa1\x5c" + bytes(block) + b"".join(struct.pack("<I", side)[:3] for side in size)
    blocks = 1
    for side, of_block in zip(size, block):
        blocks *= (side + of_block - 1) // of_block if of_block else 1
    return header + bytes(16 * min(blocks, 64) + extra)


def add_astc(seeds):
    for block in BLOCKS:
        seeds.add_texture("astc", astc(block + (1,), (13, 9, 1)))
    seeds.add_texture("astc", astc((3, 3, 3), (4, 4, 4)))
    seeds.add_texture("astc", astc((4, 4, 0), (4, 4, 1)))
    for size in ((0, 0, 0), (0, 4, 1), (0xFFFFFF, 0xFFFFFF, 0xFFFFFF), (1, 1, 0)):
        seeds.add_texture("astc", astc((4, 4, 1), size))
    seeds.add_texture("astc", astc((4, 4, 1), (4, 4, 1), 1))
    seeds.add_texture("astc", astc((4, 4, 1), (4, 4, 1), -1))
    seeds.add_texture("astc", b"\x13\xab\xa1\x5c")


# ---- GLSL ------------------------------------------------------------------------------------------------------------

STANDARD, SMALL = 1, 2
TEXTS = (
    "#version 150\n#include \"VrkUtilities.glslh\"\n#include \"TextureManager.glslh\"\nvoid main() {}\n",
    "#include \"self.glslh\"\n", "#include \"outer.glslh\"\r\n#include \"noend.glslh\"", "#include \"empty.glslh\"\n",
    "#include \"\"\n#include \"missing\"\n#include \"../x\"\n#instancedata \"P\"\n#instancedata \"Q\"\n",
    "#macro A text\n   #macro\tB\t#version 330\n#macro X\n#macroX\n#macro",
    "a # b\n# include \"self.glslh\"\n //#include \"self.glslh\"\n#define X #Y\n",
    "#version 150\n#version 150\n\x01dA 1\x01dB 2\x01DA x\x01d\x01dlong " + "y" * 200,
    "#macro A\n\x01mA #macro B #macro C \x01mB #macro A x\n#macro A y\x01mC #include \"self.glslh\"\x01MC",
    "#macro A \n\x01mA #macro B \n#macro B \x01mB #macro C \n#macro C \x01mC #macro D \n#macro D \x01mD xxxxxxxx",
    "#include \"outer.glslh\"\n\x01mINNER #instancedata \"P\"\x01mOUTER #include \"outer.glslh\"\x01dZ #include",
    "\u00e4\u4e2d\U0001f600#macro \u00e4 \u00f6\n", "",
)


def add_glsl(seeds, repository):
    texts = [text.encode() for text in TEXTS] + [b"#macro \xff\xfe \xc3\n\xed\xa0\x80#", b"\0#\0include \"\0\"\n"]
    for pattern in ("GLSL/**/*", "examples/**/shaders/*"):
        texts += [path.read_bytes() for path in sorted(repository.glob(pattern)) if path.is_file()]
    for text in texts:
        for options in (0, STANDARD, SMALL):
            seeds.add(("glsl",), options, text)


# ---- all -------------------------------------------------------------------------------------------------------------

def add_real(seeds, folder):
    for target in ("ktx", "hdr", "astc"):
        for path in sorted((folder / target).glob("*." + target)):
            seeds.add_texture(target, path.read_bytes())


def main():
    repository, folder = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    seeds = Seeds(folder)
    add_ktx(seeds)
    add_hdr(seeds)
    add_astc(seeds)
    add_glsl(seeds, repository)
    if len(sys.argv) > 3 and pathlib.Path(sys.argv[3]).is_dir():
        add_real(seeds, pathlib.Path(sys.argv[3]))
    else:
        print("There is no folder of real files (VRK_TEST_DATA): the seeds are the made-up ones alone.")
    print("Seeds:", ", ".join(f"{target} {count}" for target, count in seeds.count.items()))


main()
