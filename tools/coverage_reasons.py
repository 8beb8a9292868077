#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the lines of src that no test reaches with tools/coverage_reasons.tsv, which has a reason for each block.

Usage: coverage_reasons.py [--write] <repository> <lines.json of gcovr>

A block is a run of lines without counts, and of lines without code between them. The table has a row for each: file, the text
of the line before the block and of its first one, how many lines with code it has, reason. So a row is lost as soon as
its block changes or is reached, and a new block needs a row. A reason that begins with "sometimes:" is for
what only the timing of threads decides; its block may be reached.
With --write the tables of docs/quality.md are written anew, from the table and the counts.
"""

import collections
import csv
import json
import pathlib
import re
import sys

MARK = re.compile(r"(<!-- coverage: (\w+) -->\n).*?(<!-- end of coverage -->)", re.DOTALL)


def begin_of(source, number):
    """The text of a line, behind that of the line before it that says something."""
    before = number - 1
    while before > 0 and source[before - 1].strip() in ("", "{", "}"):
        before -= 1
    texts = [source[line - 1].strip().split(" //")[0] for line in (before, number) if line > 0]
    return " ".join(texts)


def blocks_of(source, lines):
    """Yields (its begin, number of lines with code) for each block. `lines` is a sorted list of (number, count)."""
    block = []
    for number, count in lines + [(None, 1)]:
        if count == 0:
            block.append(number)
            continue
        if block:
            yield begin_of(source, block[0]), len(block)
        block = []


def uncovered(root, report):
    found = collections.Counter()
    for entry in report["files"]:
        lines = sorted((line["line_number"], line["count"]) for line in entry["lines"] if not line["gcovr/noncode"])
        source = (root / entry["file"]).read_text().splitlines()
        for text, length in blocks_of(source, lines):
            found[entry["file"], text, length] += 1
    return found


def read_reasons(path):
    reasons = {}
    counts = collections.Counter()
    with open(path, newline="") as table:
        for row in csv.reader(table, delimiter="\t", quoting=csv.QUOTE_NONE):
            if not row or row[0].startswith("#"):
                continue
            file, text, length, reason = row
            key = file, text, int(length)
            reasons[key] = reason
            counts[key] += 1
    return reasons, counts


def totals(report):
    """(lines, reached) of each file."""
    result = {}
    for entry in report["files"]:
        counts = [line["count"] for line in entry["lines"] if not line["gcovr/noncode"]]
        if counts:
            result[entry["file"]] = len(counts), sum(count > 0 for count in counts)
    return result


def share(lines, reached):
    return f"{100 * reached / lines:.1f} %"


def table_of_files(report):
    """Files without all of their lines; the others in one row."""
    files = totals(report)
    whole = [lines for lines, reached in files.values() if lines == reached]
    rows = ["| File | Lines | Reached | |", "|---|---|---|---|"]
    for file, (lines, reached) in sorted(files.items(), key=lambda entry: entry[1][1] / entry[1][0]):
        if reached < lines:
            rows.append(f"| `{file.removeprefix('src/')}` | {lines:,} | {reached:,} | {share(lines, reached)} |")
    rows.append(f"| the other {len(whole)} files | {sum(whole):,} | {sum(whole):,} | 100.0 % |")
    lines, reached = (sum(column) for column in zip(*files.values()))
    rows.append(f"| all {len(files)} files | {lines:,} | {reached:,} | {share(lines, reached)} |")
    return rows


def table_of_reasons(reasons, counts):
    rows = ["| File | Block begins with | Lines | Reason |", "|---|---|---|---|"]
    for (file, text, length), reason in reasons.items():
        number = length * counts[file, text, length]
        begin = text.replace("|", "\\|")
        rows.append(f"| `{file.removeprefix('src/')}` | `{begin}` | {number} | {reason} |")
    return rows


def write(path, tables):
    text = path.read_text()
    for name in tables:
        if not re.search(rf"<!-- coverage: {name} -->", text):
            sys.exit(f"{path} has no place for the table of {name}")
    text = MARK.sub(lambda mark: mark[1] + "\n".join(tables[mark[2]]) + "\n" + mark[3], text)
    path.write_text(text)


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--write"]
    root = pathlib.Path(arguments[0])
    report = json.loads(pathlib.Path(arguments[1]).read_text())
    table = root / "tools/coverage_reasons.tsv"
    found = uncovered(root, report)
    reasons, counts = read_reasons(table)

    problems = []
    for key, number in sorted(found.items()):
        if counts[key] < number:
            file, text, length = key
            problems.append(f"no reason: {file}\t{text}\t{length}")
    for key, number in counts.items():
        if found[key] < number and not reasons[key].startswith("sometimes:"):
            file, text, length = key
            problems.append(f"reason without a block: {file}\t{text}\t{length}")
    for problem in problems:
        print(problem)
    if "--write" in sys.argv[1:]:
        write(root / "docs/quality.md", {"files": table_of_files(report), "reasons": table_of_reasons(reasons, counts)})
    lines, reached = (sum(column) for column in zip(*totals(report).values()))
    print(f"{reached} of {lines} lines reached ({share(lines, reached)}); {sum(counts.values())} blocks with a reason, "
          f"{len(problems)} problems")
    sys.exit(1 if problems else 0)


main()
