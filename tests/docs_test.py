"""Runs what README.md and docs/*.md show: docs_test.py PROJECT TOOL INCLUDE LIBRARIES SCRATCH.

In blocks of "console" the lines behind "$ " are run and what stands below them is compared; an ellipsis stands
for the rest of a line. Blocks of "sh" are run as they are, but for scripts and builds of the project, which must
be there. Blocks of "c" and "cpp" are built against the library and run on a demo file. A file's blocks share a
folder in which out/ holds what scripts/demo.sh makes, and archive/ some files.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

project, tool, include, libraries, scratch = (pathlib.Path(word).resolve() for word in sys.argv[1:])
FENCE = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)
OWN = ("scripts/", "build/", "fuzz/", "cmake ", "ctest ", "python3 scripts/", "apt ")
RECIPES = ("README.md", "python.md", "scale.md")
SBATCH = """#!/bin/bash
last=${1##*-} wrap=$3
for SLURM_ARRAY_TASK_ID in $(seq 0 "$last"); do export SLURM_ARRAY_TASK_ID; bash -c "$wrap"; done
"""


def fail(page, words):
    sys.exit(f"docs_test: {page.relative_to(project)}: {words}")


def run(command, folder, environment):
    return subprocess.run(["bash", "-c", command], cwd=folder, env=environment, text=True,
                          capture_output=True)


def make_folder(page, environment):
    """A folder as the pages suppose it."""
    folder = scratch / page.stem
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "out").mkdir(parents=True)
    (folder / "bin").mkdir()
    (folder / "bin/orbntf").symlink_to(tool)
    (folder / "bin/sbatch").write_text(SBATCH)
    (folder / "bin/sbatch").chmod(0o755)
    demo = (project / "scripts/demo.sh").read_text()
    commands = demo[demo.index('"$bin/make_demo"'):].replace("$bin/make_demo", str(tool.parent / "make_demo"))
    done = run(commands.replace("$bin/orbntf", str(tool)), folder, environment)
    if done.returncode != 0:
        fail(page, done.stderr)
    (folder / "archive/deeper").mkdir(parents=True)
    shutil.copy(folder / "out/demo.ntf", folder / "archive/one.ntf")
    shutil.copy(folder / "out/demo.ntf", folder / "archive/deeper/two.ntf")
    return folder


def check_console(page, block, folder, environment):
    for shown in re.split(r"^\$ ", block, flags=re.M)[1:]:
        command, _, expected = shown.partition("\n")
        done = run(command, folder, environment)
        if done.returncode != 0:
            fail(page, f"{command}: exit {done.returncode}: {done.stderr}")
        pattern = re.escape(expected).replace("…", ".*")
        if not re.fullmatch(pattern, done.stdout):
            fail(page, f"{command} prints\n{done.stdout}where the page shows\n{expected}")


def check_shell(page, block, folder, environment):
    own = [line for line in block.splitlines() if line.startswith(OWN)]
    for line in own:
        word = line.split()[0] if not line.startswith("python3") else line.split()[1]
        if word.startswith(("scripts/", "fuzz/")) and not os.access(project / word, os.R_OK):
            fail(page, f"{word} is not there")
    rest = "\n".join(line for line in block.splitlines() if line not in own)
    done = run("set -e\n" + rest, folder, environment)
    if done.returncode != 0:
        fail(page, f"{rest}: exit {done.returncode}: {done.stderr}")


def check_program(page, language, block, folder, environment):
    source, program = folder / f"program.{language}", folder / "program"
    source.write_text(block)
    compiler = ["cc", "-std=c99"] if language == "c" else ["c++", "-std=c++17"]
    flags = os.environ.get("DOCS_FLAGS", "").split()
    built = subprocess.run([*compiler, *flags, "-pedantic", "-Wall", "-Wextra", "-Werror", f"-I{include}", source, "-o",
                            program, f"-L{libraries}", f"-Wl,-rpath,{libraries}", "-lorbntf", "-lhostkit", "-lorbntf-core"],
                           text=True, capture_output=True)
    if built.returncode != 0:
        fail(page, built.stderr)
    done = run("./program out/demo.ntf", folder, environment)
    if done.returncode != 0 or not done.stdout:
        fail(page, f"the program ends with {done.returncode}: {done.stderr}")


blocks = 0
for page in [project / "README.md", *sorted((project / "docs").glob("*.md"))]:
    environment = dict(os.environ, PATH=f"{scratch / page.stem}/bin:{os.environ['PATH']}",
                       ASAN_OPTIONS="detect_leaks=0", SOURCE_DATE_EPOCH="1700000000")
    found = FENCE.findall(page.read_text())
    if not found:
        continue
    folder = make_folder(page, environment)
    for language, block in found:
        blocks += 1
        if language == "console":
            check_console(page, block, folder, environment)
        elif language == "sh":
            check_shell(page, block, folder, environment)
        elif language in ("c", "cpp"):
            check_program(page, language, block, folder, environment)
        elif language == "python" and page.name in RECIPES:
            pass  # the tests of the Python package run them
        elif language != "text":
            fail(page, f"a block of {language or 'no language'}")
    shutil.rmtree(folder)
print(f"docs_test: {blocks} blocks")
