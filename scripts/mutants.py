"""Changes one token of Common, core or media at a time and tells what no test notices: mutants.py COUNT [SEED].

Works in the coverage build, whose tests are quick to build and run. A report, not a gate: the source is put back.
"""
import pathlib
import random
import re
import subprocess
import sys

CHANGES = [("<=", "<"), (">=", ">"), ("==", "!="), ("!=", "=="), (" < ", " <= "), (" > ", " >= "), (" + ", " - "),
           (" - ", " + "), ("&&", "||"), ("||", "&&"), ("true", "false"), ("false", "true"), ("return s;", ";")]
BUILD = "build/coverage"


def run(*command):
    return subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=600).returncode == 0


def places():
    for path in sorted(path for folder in ("Common", "core", "media") for path in pathlib.Path(folder).rglob("*.cpp")):
        offset = 0
        for line in path.read_text().splitlines(keepends=True):
            if not re.match(r"\s*(//|#|namespace|static_assert|template)", line):
                for old, new in CHANGES:
                    for found in re.finditer(re.escape(old), line.split("//")[0]):
                        yield path, offset + found.start(), old, new
            offset += len(line)


def is_noticed(path, at, old, new):
    text = path.read_text()
    path.write_text(text[:at] + new + text[at + len(old):])
    try:
        if not run("cmake", "--build", BUILD, "--target", "orbntf_tests"):
            return True
        return not run(f"{BUILD}/bin/orbntf_tests", "--gtest_filter=-*StreamsBeyond*:*NineHundred*")
    except subprocess.TimeoutExpired:
        return True
    finally:
        path.write_text(text)


count, seed = int(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else 1
chosen = random.Random(seed).sample(list(places()), count)
noticed = 0
for path, at, old, new in chosen:
    caught = is_noticed(path, at, old, new)
    noticed += caught
    if not caught:
        line = path.read_text()[:at].count("\n") + 1
        print(f"not noticed: {path}:{line}: {old.strip()} to {new.strip()}")
print(f"{noticed} of {count} changes noticed")
