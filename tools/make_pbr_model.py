#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a glTF binary in which each part of a physically based material can be seen by itself.

    tools/make_pbr_model.py board.glb

Rows of spheres, from above: plastics, half metals and metals, each from smooth to rough; then spheres with pictures: a
normal map of bumps, metal and roughness, occlusion in rings, emission in stripes, and all of them at once. A camera
looks at the middle.
"""
import json
import math
import struct
import sys
import zlib

SIDE = 256  # of each picture, in pixels
STEPS = 48  # of a sphere, from pole to pole


def png(texel):
    """The file of a picture whose texels `texel(u, v)` gives as bytes; v counts from the top."""
    rows = b""
    for y in range(SIDE):
        rows += b"\0" + b"".join(bytes(texel((x + 0.5) / SIDE, (y + 0.5) / SIDE)) for x in range(SIDE))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", SIDE, SIDE, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")


def byte(value):
    return max(0, min(255, round(255 * value)))


def cell(u, v, columns, rows):
    """Where a place lies in its cell of a grid, from -1 to 1, and whether the cell is one of the dark ones."""
    x, y = u * columns, v * rows
    return 2 * (x % 1) - 1, 2 * (y % 1) - 1, (int(x) + int(y)) % 2 == 1


def bumps(u, v):
    """Half spheres in a grid; x to the right, y upwards."""
    x, y, _ = cell(u, v, 12, 6)
    if x * x + y * y > 0.6:
        return (128, 128, 255)
    slope = (x, -y)
    up = math.sqrt(1 - x * x - y * y)
    return tuple(byte(0.5 + 0.5 * part) for part in (*slope, up))


def rings(v):
    return 0.25 + 0.75 * abs(math.cos(6 * math.pi * v))


def metal_and_rough(u, v):
    _, _, dark = cell(u, v, 12, 6)
    return (255, byte(0.15 if dark else 0.7), 255 if dark else 0)


def occlusion_metal_rough(u, v):
    return (byte(rings(v)), *metal_and_rough(u, v)[1:])


def stripes(u, v):
    return (255, 140, 20) if (u * 12) % 1 < 0.25 else (0, 0, 0)


def paint(u, v):
    _, _, dark = cell(u, v, 12, 6)
    return (235, 190, 100) if dark else (40, 90, 190)


class File:
    """The glTF file as it grows."""

    def __init__(self):
        self.data = b""
        self.root = {"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": []}]}

    def add(self, kind, entry):
        entries = self.root.setdefault(kind, [])
        entries.append(entry)
        return len(entries) - 1

    def view(self, data):
        self.data += b"\0" * (-len(self.data) % 4)
        index = self.add("bufferViews", {"buffer": 0, "byteOffset": len(self.data), "byteLength": len(data)})
        self.data += data
        return index

    def accessor(self, values, kind, code, size):
        flat = [part for value in values for part in (value if size > 1 else (value,))]
        entry = {"bufferView": self.view(struct.pack("<%d%s" % (len(flat), code), *flat)), "type": kind,
                 "componentType": 5126 if code == "f" else 5125, "count": len(values)}
        if kind == "VEC3":
            entry["min"] = [min(value[axis] for value in values) for axis in range(3)]
            entry["max"] = [max(value[axis] for value in values) for axis in range(3)]
        return self.add("accessors", entry)

    def picture(self, texel):
        image = self.add("images", {"bufferView": self.view(png(texel)), "mimeType": "image/png"})
        return {"index": self.add("textures", {"source": image})}

    def node(self, **entry):
        self.root["scenes"][0]["nodes"].append(self.add("nodes", entry))

    def bytes(self):
        self.data += b"\0" * (-len(self.data) % 4)
        self.root["buffers"] = [{"byteLength": len(self.data)}]
        text = json.dumps(self.root, separators=(",", ":")).encode()
        text += b" " * (-len(text) % 4)
        chunks = struct.pack("<I4s", len(text), b"JSON") + text + struct.pack("<I4s", len(self.data), b"BIN\0") + self.data
        return struct.pack("<4sII", b"glTF", 2, 12 + len(chunks)) + chunks


def sphere(file):
    """Attributes and indices of a sphere of radius 1; the pictures go once around, from the top downwards."""
    normals, tangents, places, indices = [], [], [], []
    for row in range(STEPS + 1):
        for column in range(2 * STEPS + 1):
            theta = math.pi * row / STEPS
            phi = math.pi * column / STEPS
            normals.append((-math.sin(theta) * math.cos(phi), math.cos(theta), math.sin(theta) * math.sin(phi)))
            tangents.append((math.sin(phi), 0.0, math.cos(phi), 1.0))
            places.append((column / (2 * STEPS), row / STEPS))
    for row in range(STEPS):
        for column in range(2 * STEPS):
            a = row * (2 * STEPS + 1) + column
            b = a + 2 * STEPS + 1
            indices += [a, b, b + 1, a, b + 1, a + 1]
    attributes = {"POSITION": file.accessor(normals, "VEC3", "f", 3), "NORMAL": file.accessor(normals, "VEC3", "f", 3),
                  "TANGENT": file.accessor(tangents, "VEC4", "f", 4), "TEXCOORD_0": file.accessor(places, "VEC2", "f", 2)}
    return attributes, file.accessor(indices, "SCALAR", "I", 1)


def materials(file):
    """A list of them for each row of spheres."""
    roughnesses = (0.1, 0.3, 0.5, 0.75, 1.0)
    colors = {0.0: (0.75, 0.12, 0.08), 0.5: (0.6, 0.6, 0.62), 1.0: (1.0, 0.77, 0.34)}
    for metallic, color in colors.items():
        yield [{"pbrMetallicRoughness": {"baseColorFactor": [*color, 1.0], "metallicFactor": metallic,
                                         "roughnessFactor": roughness}} for roughness in roughnesses]

    # Some renderers want a picture of the colour before they look at any other.
    grey = file.picture(lambda u, v: (218, 218, 218))
    normal = file.picture(bumps)
    surface = file.picture(metal_and_rough)
    packed = file.picture(occlusion_metal_rough)
    glow = file.picture(stripes)

    def plain(metallic, roughness, **more):
        return {"baseColorTexture": grey, "metallicFactor": metallic, "roughnessFactor": roughness, **more}

    yield [{"pbrMetallicRoughness": plain(0.0, 0.4), "normalTexture": normal},
           {"pbrMetallicRoughness": plain(1.0, 1.0, metallicRoughnessTexture=surface)},
           {"pbrMetallicRoughness": plain(0.0, 0.9, metallicRoughnessTexture=packed), "occlusionTexture": packed},
           {"pbrMetallicRoughness": plain(0.0, 0.6), "emissiveTexture": glow, "emissiveFactor": [1.0, 1.0, 1.0]},
           {"pbrMetallicRoughness": {"baseColorTexture": file.picture(paint), "metallicRoughnessTexture": packed},
            "normalTexture": normal, "occlusionTexture": packed, "emissiveTexture": glow,
            "emissiveFactor": [0.6, 0.6, 0.6]}]


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: make_pbr_model.py file.glb")
    file = File()
    attributes, indices = sphere(file)
    for row, entries in enumerate(materials(file)):
        for column, material in enumerate(entries):
            primitive = {"attributes": attributes, "indices": indices, "material": file.add("materials", material)}
            mesh = file.add("meshes", {"primitives": [primitive]})
            file.node(mesh=mesh, translation=[2.3 * (column - 2), 2.3 * (1.5 - row), 0.0])
    lens = {"type": "perspective", "perspective": {"yfov": 0.5, "aspectRatio": 1.2, "znear": 1.0, "zfar": 100.0}}
    file.node(name="front", camera=file.add("cameras", lens), translation=[0.0, 0.0, 20.0])
    with open(sys.argv[1], "wb") as out:
        out.write(file.bytes())


if __name__ == "__main__":
    main()
