#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes docs/conformance.md: for every unit of cmake/layers.cmake its rules and the tests that hold them.

A rule is the name of a test, read as a sentence. The unit of a suite is told by the name of the suite, then by that of its
file, then by the one unit whose header the file includes, itself or through the header of tools that it shares; SUBJECTS names the
few suites whose names say less than their tests. A suite that finds no place is an error, so that none gets lost.

With --check nothing is written; the exit code is 1 when the committed document differs.
"""
import re
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import check_layers  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs" / "conformance.md"
LAYER_TITLES = {
    "CORE": "Core",
    "RUNTIME": "Runtime",
    "OBJECTS": "Objects",
    "TEXTURES": "Textures",
    "MANAGERS": "Managers",
    "SCENE": "Scene",
    "LIGHTING": "Lighting",
}
# What is no unit of the library has sections of its own behind the layers.
GLSL, HARNESS, QT = "GLSL that the library carries", "The harness of the tests", "Contexts of Qt and GLX"
EXAMPLES, THREADS = "Examples", "Several threads at once"
# Prefix of a suite -> (part, section). The longest prefix counts; one that fits no suite is an error.
SUBJECTS = {
    "ASTCFiles": (None, "ASTCReader"),
    "Array2D": (None, "Array2DTextureManager"),
    "Array2DAnisotropy": (None, "Array2DSlots"),
    "Array2DDifferential": (None, "Array2DSlots"),
    "Array2DExamining": (None, "Array2DSlots"),
    "Array2DOrderedTokens": (None, "Array2DSlots"),
    "Array2DPlacing": (None, "Array2DSlots"),
    "Array2DRevokedSet": (None, "Array2DSlots"),
    "Array2DSearching": (None, "Array2DSlots"),
    "Array2DSlot": (None, "Array2DSlots"),
    "Array2DTokensOfSlots": (None, "Array2DSlots"),
    "BindlessGLSL": (None, "BindlessTextureManager"),
    "Capability": (None, "AutoEnabler"),
    "ContextTracker": (None, "GLContextTracker"),
    "CycleStreamers": (None, "ColorCycleTextureStreamer"),
    "EmbeddedGLSL": (GLSL, "What is embedded"),
    "FXAA": (GLSL, "FXAA"),
    "GLRuntime": (None, "GLUtilities"),
    "HDRFiles": (None, "HDRReader"),
    "Harness": (HARNESS, "tests/support"),
    "HeapCounting": (HARNESS, "tests/support"),
    "ImageCubemap": (None, "ZelImageCubemapUtils"),
    "ImageCubemapMatrices": (None, "ZelRenderCubemap"),
    "ImageCubemapRenderer": (None, "ZelRenderCubemap"),
    "ImportanceSample": (GLSL, "ImportanceSample"),
    "KTXFiles": (None, "KTXReader"),
    "LogCapturing": (HARNESS, "tests/support"),
    "LoggingSwitch": (None, "Diagnostics"),
    "ManagedTextureGLSL": (None, "SamplerTextureManager"),
    "MandelbrotBindless": (None, "MandelbrotGPUTextureStreamer"),
    "MandelbrotInManagers": (None, "MandelbrotTextureStreamer"),
    "MandelbrotStreamer": (None, "MandelbrotTextureStreamer"),
    "Noise": (GLSL, "noise2D"),
    "PictureComparison": (HARNESS, "tests/support"),
    "PreintegratedBRDF": (None, "PrefilteredEnvMap"),
    "QImageToTexture": (None, "TextureIO"),
    "SMAA": (GLSL, "SMAA"),
    "ShadowMapGLSL": (None, "ShadowMapManager"),
    "ShadowMapSeams": (None, "ShadowMapManager"),
    "TextureLoader2DHelper": (None, "TextureLoader"),
    "TextureUnitRecords": (None, "TextureUnits"),
    "Thread": (THREADS, "What is told to be safe"),
    "VisibilityBuffer": (GLSL, "VisibilityBuffer"),
}
TEST = re.compile(r"^[ \t]*(TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.M)
INCLUDE = re.compile(r'^\s*#\s*include\s*["<](?:VrkGL/|VrkCore/)?([\w./]+)[">]', re.M)
WORD = re.compile(r"\d+[A-Z]?(?![a-z])|[A-Z]+(?=[A-Z][a-z])|[A-Z]?[a-z]+|[A-Z]+\d*|_+")
NAMES = {("open", "GL"): "OpenGL", ("open", "GLs"): "OpenGL's", ("q", "image"): "QImage", ("q", "string"): "QString"}


def sources_without_driver():
    """The files of tests/viewer whose program has the label unit."""
    text = (ROOT / "tests" / "viewer" / "CMakeLists.txt").read_text(encoding="utf-8")
    return {source for files in re.findall(r"vrk_viewer_tests\(\w+ unit\s([^)]*)\)", text) for source in files.split()}


FREE_OF_DRIVERS = sources_without_driver()


class Suite:
    """A suite in one file: a suite that several files share stands once for each."""

    def __init__(self, name, path):
        self.name = name
        self.path = path
        self.rules = []
        self.rows = False
        # tests/CMakeLists.txt goes by the name too; the other folders label their programs.
        self.on_driver = name.endswith("GL") if path.parent.name == "tests" else path.name not in FREE_OF_DRIVERS


def sentence(name):
    """KeepsA2DImage -> "Keeps a 2D image"; abbreviations stay as they are."""
    words = []
    for word in WORD.findall(name):
        plain = word if len(word) > 1 and word.isupper() or word[0].isdigit() else word.lower()
        if words and (words[-1], plain) in NAMES:
            words[-1] = NAMES[(words[-1], plain)]
        elif plain.strip("_"):
            words.append(plain)
    text = " ".join(words)
    return text[:1].upper() + text[1:]


def read_suites():
    suites = []
    for folder in ("tests", "tests/qt", "tests/viewer"):
        for path in sorted((ROOT / folder).glob("*.cpp")):
            found = {}
            for kind, name, rule in TEST.findall(path.read_text(encoding="utf-8")):
                suite = found.setdefault(name, Suite(name, path))
                suite.rules.append(rule)
                suite.rows |= kind == "TEST_P"
            suites += found.values()
    return suites


def stem_of(name):
    return re.sub(r"(Death)?Test$|GL$", "", name)


def unit_by_name(name, rank):
    """The unit that a name begins with, its plural too, or the only one that begins with the name."""
    stem = stem_of(name)
    units = [check_layers.unit_of(one, rank) or "" for one in (stem, re.sub(r"s$", "", stem))]
    if any(units):
        return max(units, key=len)
    longer = [other for other in rank if other.startswith(stem)]
    return longer[0] if len(longer) == 1 else None


def units_by_includes(path, rank):
    """The units whose headers the file includes; if none, those of its headers of tools."""
    headers = INCLUDE.findall(path.read_text(encoding="utf-8"))
    units = [Path(header).stem for header in headers if Path(header).stem in rank]
    for header in headers:
        tools = path.parent / header
        if not units and header.endswith("Tools.h") and tools.is_file():
            units = units_by_includes(tools, rank)
    return units


def unit_of_suite(suite, rank):
    of_suite, of_file = unit_by_name(suite.name, rank), unit_by_name(suite.path.stem, rank)
    # A file often stands for a narrower subject than the first word of the suite: Texture, in TextureIOTest.cpp.
    if of_suite and not (of_file and of_file.startswith(of_suite)):
        return of_suite
    if of_file:
        return of_file
    included = units_by_includes(suite.path, rank)
    return included[0] if len(set(included)) == 1 else None


def place(suites, rank):
    """(part, section) -> suites; the part of a unit is None."""
    places, problems, used = {}, [], set()
    for suite in suites:
        prefixes = [prefix for prefix in SUBJECTS if suite.name.startswith(prefix)]
        if prefixes:
            prefix = max(prefixes, key=len)
            used.add(prefix)
            key = SUBJECTS[prefix]
        elif suite.path.parent.name == "viewer":
            key = (EXAMPLES, stem_of(suite.path.stem))
        elif suite.path.parent.name == "qt":
            key = (QT, stem_of(suite.path.stem))
        else:
            key = (None, unit_of_suite(suite, rank))
        if key[0] is None and key[1] not in rank:
            problems.append(f"{suite.path.relative_to(ROOT)}: the suite {suite.name} has no unit; name it in SUBJECTS")
            continue
        places.setdefault(key, []).append(suite)
    problems += [f"SUBJECTS: no suite begins with {prefix}" for prefix in SUBJECTS.keys() - used]
    return places, problems


def owners_of_units(rank):
    """unit -> units whose files include its header."""
    owners = {unit: set() for unit in rank}
    for path in sorted([*(ROOT / "src" / "Core").glob("*.*"), *(ROOT / "src" / "GL").glob("*.*")]):
        unit = check_layers.unit_of(path.stem, rank) if path.suffix in (".h", ".cpp") else None
        if unit is None:
            continue
        for header in INCLUDE.findall(path.read_text(encoding="utf-8")):
            other = check_layers.unit_of(Path(header).stem, rank)
            if other and other != unit:
                owners[other].add(unit)
    return owners


def tested_owners(unit, owners, tested, rank):
    """The nearest units with tests of their own that include the unit; the unit of UnitTopic.cpp is its owner."""
    if unit_files(unit)[0].endswith(".cpp"):
        longer = [one for one in rank if one != unit and unit.startswith(one)]
        if longer:
            unit = max(longer, key=len)
    seen, front = {unit}, {unit}
    while front:
        front = set().union(*(owners[one] for one in front)) - seen
        if front & tested:
            return sorted(front & tested, key=lambda one: (rank[one], one))
        seen |= front
    if unit_files(unit)[0].endswith(".h"):
        return []
    # Without a header: what it implements stands in one that it includes.
    return sorted((one for one in rank if unit in owners[one] and one in tested), key=lambda one: (rank[one], one))


def tests_that_include(unit):
    """The files of tests that include the header of the unit."""
    found = []
    for path in sorted((ROOT / "tests").glob("*.*")):
        if path.suffix in (".cpp", ".h"):
            if f"{unit}.h" in INCLUDE.findall(path.read_text(encoding="utf-8")):
                found.append(path)
    return found


def unit_files(unit):
    files = [ROOT / "src" / folder / f"{unit}{suffix}" for folder in ("Core", "GL") for suffix in (".h", ".cpp")]
    return [str(path.relative_to(ROOT)) for path in files if path.is_file()][:1]


def section(title, intro, suites):
    lines = [f"### {title}", ""]
    if intro:
        lines += [intro, ""]
    for suite in suites:
        marks = ["**on a driver**"] * suite.on_driver + ["for each row of a table"] * suite.rows
        tail = f" ({', '.join(marks)})" if marks else ""
        lines += [f"`{suite.name}` in [{suite.path.name}](../{suite.path.relative_to(ROOT)}){tail}", ""]
        lines += [f"- {sentence(rule)}" for rule in suite.rules]
        lines.append("")
    return lines


def joined(links, most=6):
    return ", ".join(links[:most]) + (f" and {len(links) - most} more" if len(links) > most else "")


def document(text, suites):
    rank, private, problems = check_layers.read_layers(text)
    places, misplaced = place(suites, rank)
    problems += misplaced
    owners = owners_of_units(rank)
    tested = {unit for (part, unit) in places if part is None}
    layers = re.findall(r"set\(VRK_LAYERS ([^)]*)\)", text)[0].split()
    parts = []
    for position, layer in enumerate(layers):
        units = sorted((unit for unit in rank if rank[unit] == position), key=str.lower)
        parts.append((LAYER_TITLES.get(layer, layer), [(unit, places.get((None, unit), [])) for unit in units]))
    for part in (GLSL, QT, THREADS, EXAMPLES, HARNESS):
        parts.append((part, sorted((name, held) for (of, name), held in places.items() if of == part)))

    lines = [
        "# What holds, and which test says so",
        "",
        "Written by `tools/make_conformance.py` from the names of the tests; a test fails when this page is not what the tests",
        "are. Each line is a rule, and the test of that name, in the suite above it, holds it. Suites marked **on a driver**",
        "need OpenGL; those of the library run twice, with all that the driver offers and on the 3.2 floor, but for what needs",
        "bindless textures, which runs where there are any. All others run without a driver.",
        "",
        "| Part | Sections | with tests of their own | Suites | on a driver | Rules |",
        "|---|---:|---:|---:|---:|---:|",
    ]
    for title, sections in parts:
        held = [suite for _, found in sections for suite in found]
        counts = (len(sections), sum(1 for _, found in sections if found), len({suite.name for suite in held}),
                  len({suite.name for suite in held if suite.on_driver}), sum(len(suite.rules) for suite in held))
        lines.append(f"| [{title}](#{title.lower().replace(' ', '-')}) | {' | '.join(map(str, counts))} |")
    lines.append("")
    for title, sections in parts:
        lines += [f"## {title}", ""]
        for name, found in sections:
            files = ", ".join(f"[{path}](../{path})" for path in unit_files(name)) if title in LAYER_TITLES.values() else ""
            if files and f"{name}.h" in private:
                files += ", not installed"
            if not found:
                by = joined([f"[{one}](#{one.lower()})" for one in tested_owners(name, owners, tested, rank)])
                direct = joined([f"[{path.name}](../tests/{path.name})" for path in tests_that_include(name)])
                files += ". No test of its own" + (f"; held by those of {by}" if by else "")
                files += f". Used by {direct}" if direct else ""
            lines += section(name, files + ("." if files else ""), found)
    return "\n".join(lines).rstrip("\n") + "\n", problems


def main():
    text = (ROOT / "cmake" / "layers.cmake").read_text(encoding="utf-8")
    written, problems = document(text, read_suites())
    for problem in problems:
        print(problem, file=sys.stderr)
    if "--check" not in sys.argv:
        DOCUMENT.write_text(written, encoding="utf-8")
    elif not DOCUMENT.is_file() or DOCUMENT.read_text(encoding="utf-8") != written:
        print("docs/conformance.md is not what the tests are: run tools/make_conformance.py", file=sys.stderr)
        return 1
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
