#!/usr/bin/env python3
"""Counts lines of code that are neither blank nor comment: of the product, and of what tests it (lines.py [FOLDER])."""
import pathlib
import sys

PRODUCT = ["Common", "core", "host", "hostkit", "include", "media", "tools"]
TESTS = ["tests", "fuzz"]
ENDINGS = {".c", ".h", ".cpp", ".hpp"}
LEFT_OUT = {"core.hpp"}  # a header of declarations and their documentation


def code_lines(path):
    lines, in_comment = 0, False
    for line in path.read_text(errors="replace").splitlines():
        text = line.strip()
        if in_comment:
            in_comment = "*/" not in text
        elif text.startswith("/*"):
            in_comment = "*/" not in text
        elif text and not text.startswith("//"):
            lines += 1
    return lines


def count(root, folders):
    return sum(code_lines(path) for folder in folders for path in (root / folder).rglob("*")
               if path.suffix in ENDINGS and path.name not in LEFT_OUT)


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    product, tests = count(root, PRODUCT), count(root, TESTS)
    print(f"product {product}, tests {tests}: {100 * tests / (product + tests):.0f} % of all lines are tests")


if __name__ == "__main__":
    main()
