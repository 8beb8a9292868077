#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fails when a unit includes a unit of a higher layer, or stands in no layer.

The layers are those of cmake/layers.cmake, lowest first. Nothing of VrkCore may include from VrkGL. Public headers must
not include private ones either, and the list of private headers must be true: each is there, and each header that calls
itself "Not installed" is in it.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# (unit, included unit): the exceptions that the design names.
ALLOWED_UPWARD = {
    ("FramebufferObject", "Texture"),
    ("FramebufferObject", "TextureManager"),
    ("GLUtilities", "TextureFileFormats"),
    ("GLSLMacroProcessor", "InstanceDataPlan"),
    ("GLSLMacroProcessor", "InstanceDataRegistry"),
}
GENERATED = {"GLBuildInfo"}


def read_layers(text):
    text = re.sub(r"#.*", "", text)
    lists = {name: body.split() for name, body in re.findall(r"set\((\w+)\s+([^)]*)\)", text)}
    order = lists["VRK_LAYERS"]
    rank = {}
    problems = []
    for position, layer in enumerate(order):
        for unit in lists[f"VRK_LAYER_{layer}"]:
            if unit in rank:
                problems.append(f"cmake/layers.cmake: {unit} is listed twice")
            if unit != "Export":
                rank.setdefault(unit, position)
    return rank, set(lists["VRK_PRIVATE_HEADERS"]), problems


def unit_of(stem, rank):
    """The unit of a file: its own name, or the longest listed unit that it begins with (UnitTopic.cpp)."""
    if stem in rank:
        return stem
    candidates = [unit for unit in rank if stem.startswith(unit) and stem[len(unit) :][:1].isupper()]
    return max(candidates, key=len) if candidates else None


def private_header_problems(private):
    problems = []
    for header in sorted(private):
        if not (ROOT / "src" / "GL" / header).is_file():
            problems.append(f"cmake/layers.cmake: the private header {header} does not exist")
    for path in sorted([*(ROOT / "src" / "Core").glob("*.h"), *(ROOT / "src" / "GL").glob("*.h")]):
        # The words may stand on two lines of a comment.
        text = re.sub(r"\s*\n\s*(///?|\*)?\s*", " ", path.read_text(encoding="utf-8"))
        if re.search(r"\bNot installed\b", text) and (path.parent.name != "GL" or path.name not in private):
            problems.append(f"{path.relative_to(ROOT)}: says 'Not installed' but is no private header")
    return problems


def main():
    rank, private, problems = read_layers((ROOT / "cmake" / "layers.cmake").read_text(encoding="utf-8"))
    problems += private_header_problems(private)
    for path in sorted([*(ROOT / "src" / "Core").glob("*.*"), *(ROOT / "src" / "GL").glob("*.*")]):
        if path.suffix not in (".h", ".cpp") or path.stem == "Export":
            continue
        name = path.relative_to(ROOT)
        unit = unit_of(path.stem, rank)
        if unit is None:
            problems.append(f"{name}: stands in no layer of cmake/layers.cmake")
            continue
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            match = re.match(r'\s*#\s*include\s*(?:"|<VrkCore/|<VrkGL/)([\w.]+)', line)
            if not match:
                continue
            header = match.group(1)
            if path.parent.name == "Core" and "<VrkGL/" in match.group(0):
                problems.append(f"{name}:{number}: VrkCore includes {header} of VrkGL")
                continue
            stem = Path(header).stem
            if stem == "Export" or stem in GENERATED or header.endswith(".moc"):
                continue
            other = unit_of(stem, rank)
            if other is None:
                problems.append(f"{name}:{number}: {header} stands in no layer")
            elif rank[other] > rank[unit] and (unit, other) not in ALLOWED_UPWARD:
                problems.append(f"{name}:{number}: {unit} includes {other} of a higher layer")
            if path.suffix == ".h" and path.name not in private and header in private:
                problems.append(f"{name}:{number}: a public header includes the private {header}")
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
