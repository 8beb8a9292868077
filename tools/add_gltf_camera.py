#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Copies a glTF 2 file with a camera added that sees all of it, for renderers that are to look from the same place.

    tools/add_gltf_camera.py model.glb copy.glb azimuth elevation aspect

The angles are degrees: where the eye stands around the model, 0 on +z, and how far above it. The aspect is the picture's
width by its height. The camera is the file's first one afterwards and is called "compared". Files that the model names
are not copied.
"""
import json
import math
import struct
import sys

HALF_FIELD = 0.2  # radians, from the middle to the upper edge


def read(path):
    """The JSON and what follows it in a binary file."""
    with open(path, "rb") as file:
        data = file.read()
    if data[:4] != b"glTF":
        return json.loads(data), None
    size = struct.unpack("<I", data[12:16])[0]
    return json.loads(data[20:20 + size]), data[20 + size:]


def write(path, root, rest):
    text = json.dumps(root).encode()
    if rest is not None:
        text += b" " * (-len(text) % 4)
        total = 20 + len(text) + len(rest)
        text = struct.pack("<4sIII4s", b"glTF", 2, total, len(text), b"JSON") + text + rest
    with open(path, "wb") as file:
        file.write(text)


def times(a, b):
    return [[sum(a[r][k] * b[k][c] for k in range(4)) for c in range(4)] for r in range(4)]


def matrix_of(node):
    """Rows of the node's matrix to its parent."""
    if "matrix" in node:
        return [[node["matrix"][4 * c + r] for c in range(4)] for r in range(4)]
    x, y, z, w = node.get("rotation", (0, 0, 0, 1))
    scale = node.get("scale", (1, 1, 1))
    turn = [[1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)],
            [2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)],
            [2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)]]
    move = node.get("translation", (0, 0, 0))
    return [[turn[r][c] * scale[c] for c in range(3)] + [move[r]] for r in range(3)] + [[0, 0, 0, 1]]


def corners(root, index, matrix):
    """Of the boxes of all meshes at a node and below it."""
    node = root["nodes"][index]
    matrix = times(matrix, matrix_of(node))
    if "mesh" in node:
        for primitive in root["meshes"][node["mesh"]]["primitives"]:
            box = root["accessors"][primitive["attributes"]["POSITION"]]
            for corner in range(8):
                place = [(box["max"] if corner >> axis & 1 else box["min"])[axis] for axis in range(3)] + [1]
                yield [sum(matrix[r][k] * place[k] for k in range(4)) for r in range(3)]
    for child in node.get("children", []):
        yield from corners(root, child, matrix)


def main():
    if len(sys.argv) != 6:
        sys.exit("usage: add_gltf_camera.py model copy azimuth elevation aspect")
    root, rest = read(sys.argv[1])
    azimuth, elevation = (math.radians(float(angle)) for angle in sys.argv[3:5])
    identity = [[float(r == c) for c in range(4)] for r in range(4)]
    scene = root["scenes"][root.get("scene", 0)]
    places = [place for index in scene["nodes"] for place in corners(root, index, identity)]
    low, high = ([pick(place[axis] for place in places) for axis in range(3)] for pick in (min, max))
    middle = [(a + b) / 2 for a, b in zip(low, high)]
    radius = math.dist(low, high) / 2
    distance = radius / math.sin(HALF_FIELD)
    back = (math.cos(elevation) * math.sin(azimuth), math.sin(elevation), math.cos(elevation) * math.cos(azimuth))
    # First around y, then downwards around the camera's own x.
    ay, ax = azimuth / 2, -elevation / 2
    turn = [math.cos(ay) * math.sin(ax), math.sin(ay) * math.cos(ax), -math.sin(ay) * math.sin(ax),
            math.cos(ay) * math.cos(ax)]
    lens = {"yfov": 2 * HALF_FIELD, "aspectRatio": float(sys.argv[5]), "znear": distance - 0.99 * radius,
            "zfar": distance + 2 * radius}
    root.setdefault("cameras", []).insert(0, {"type": "perspective", "perspective": lens})
    for node in root["nodes"]:
        if "camera" in node:
            node["camera"] += 1
    scene["nodes"].append(len(root["nodes"]))
    root["nodes"].append({"name": "compared", "camera": 0, "rotation": turn,
                          "translation": [middle[axis] + distance * back[axis] for axis in range(3)]})
    write(sys.argv[2], root, rest)


if __name__ == "__main__":
    main()
