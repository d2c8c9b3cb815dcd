"""Sums the coverage of Common/, of hostkit/ and media/ together, and of core/, and holds it against the least that is wanted:
coverage.py LCOV JSON.

Constant expressions that only the compiler runs (the field tables and what builds them) are left out."""
import collections
import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# Per cent of lines and branches. The stand-in and what does its work below are one sum.
LEAST = {"Common": (98, 92), "hostkit+media": (95, 85), "core": (94, 80)}


def constant_lines(path):
    """Lines of functions and tables that are declared constexpr."""
    lines, depth = set(), None
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        if depth is None and re.match(r"\s*(static |inline )*constexpr\b", line):
            depth = 0
        if depth is not None:
            lines.add(number)
            depth += line.count("{") - line.count("}")
            if depth <= 0 and re.search(r"[;}]\s*(//.*)?$", line):
                depth = None
    return lines


lines_of, branches_of = collections.defaultdict(collections.Counter), collections.defaultdict(collections.Counter)
for record in open(sys.argv[1]):
    key, _, value = record.strip().partition(":")
    if key == "SF":
        name = value
    elif key == "DA":
        line, count = map(int, value.split(",")[:2])
        lines_of[name][line] += count
# Branches of a template count once, whatever it was made for.
for entry in json.load(open(sys.argv[2]))["data"][0]["files"]:
    for line, column, end_line, end_column, true, false, *_ in entry["branches"]:
        branches_of[entry["filename"]][line, column, end_line, end_column, True] += true
        branches_of[entry["filename"]][line, column, end_line, end_column, False] += false

rows, sums = [], {part: [[0, 0], [0, 0]] for part in LEAST}
for name, counts_of in lines_of.items():
    own = pathlib.Path(name).relative_to(ROOT) if pathlib.Path(name).is_relative_to(ROOT) else pathlib.Path("other")
    part = next((r for r in LEAST if own.parts[0] in r.split("+")), None)
    if part is None:
        continue
    constant = constant_lines(name)
    lines = [count for line, count in counts_of.items() if count or line not in constant]
    branches = [count for place, count in branches_of[name].items() if count or place[0] not in constant]
    missed = []
    for total, counts in zip(sums[part], (lines, branches)):
        covered = sum(count > 0 for count in counts)
        total[0] += covered
        total[1] += len(counts)
        missed.append(len(counts) - covered)
    rows.append((missed[0], missed[1], str(own)))
for lines, branches, name in sorted(rows, reverse=True):
    if lines or branches:
        print(f"{lines:6} lines {branches:6} branches missed  {name}")
failed = False
for part, least in LEAST.items():
    for wanted, (covered, count), kind in zip(least, sums[part], ("lines", "branches")):
        share = 100 * covered / count
        failed |= share < wanted
        print(f"{part}: {share:.1f} % of {count} {kind} (at least {wanted})")
sys.exit(failed)
