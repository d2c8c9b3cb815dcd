#!/usr/bin/env python3
"""Refuses includes that point upwards, between folders and between those of the core and of the tool, and circles of files."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# What each folder may include beside itself.
MAY = {
    "media": set(),
    "core": {"media"},
    "host": {"include"},
    "hostkit": {"media", "host", "include"},
    "Common": {"host", "include"},
    "include": set(),
    "python": {"include"},
    "tools": {"media", "core", "host", "hostkit", "Common", "include"},
}
# A folder within one of them may use those in front of it.
WITHIN = {
    "core": (1, ["format", "samples", "pictures", "place", "view", "check", "edit", "compare", "report"]),
    "tools": (2, ["inspect", "output", "commands"]),
}


def includes(path):
    """The files of the repository that a file includes."""
    for name in re.findall(r'^#include [<"]([^">]+)[">]', path.read_text(), re.M):
        for candidate in (ROOT / name, ROOT / "include" / name):
            if candidate.is_file():
                yield candidate.relative_to(ROOT)


def upward(file, included):
    """Why a file may not include another one; empty where it may."""
    here, there = file.parts[0], included.parts[0]
    if here == "core" and included.name == "core.hpp":
        return ""
    if here != there:
        return "" if there in MAY[here] else f"{here} may not use {there}"
    at, order = WITHIN.get(here, (1, []))
    if len(file.parts) > at + 1 and len(included.parts) > at + 1:
        mine, other = file.parts[at], included.parts[at]
        if order and order.index(other) > order.index(mine):
            return f"{mine} comes before {other}"
    return ""


def circles(uses):
    """Units that use each other, a header and what defines its declarations being one unit."""
    state, path, found = {}, [], []

    def visit(unit):
        state[unit] = "open"
        path.append(unit)
        for other in sorted(uses.get(unit, ())):
            if state.get(other) == "open":
                found.append(" -> ".join(map(str, path[path.index(other):] + [other])))
            elif other not in state:
                visit(other)
        path.pop()
        state[unit] = "done"

    for unit in sorted(uses):
        if unit not in state:
            visit(unit)
    return found


def main():
    problems, uses = [], {}
    for folder in MAY:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix not in (".h", ".hpp", ".cpp"):
                continue
            file = path.relative_to(ROOT)
            for included in includes(path):
                if why := upward(file, included):
                    problems.append(f"{file} includes {included}: {why}")
                if included.with_suffix("") != file.with_suffix(""):
                    uses.setdefault(file.with_suffix(""), set()).add(included.with_suffix(""))
    problems += [f"circle: {circle}" for circle in circles(uses)]
    for problem in problems:
        print(f"includes.py: {problem}", file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
