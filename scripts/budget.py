"""Runs the commands on every file of a folder and compares their CPU time and peak memory with the budget."""
import json
import os
import pathlib
import shutil
import subprocess
import sys

tool, folder = sys.argv[1:3]
work = pathlib.Path(folder) / "out"
failed = False

# Of each command: seconds to begin with, nanoseconds a pixel of the canvas and a byte of the file, and MiB to begin
# with and bytes a pixel. `render` draws rows and holds no picture; the module's verdict of `check` and `report` takes
# its canvas and the bitmap of a segment.
BUDGETS = {
    "render": (2, 50, 1000, 160, 0),
    "info": (1, 0, 500, 96, 0),
    "check": (2.5, 100, 2000, 160, 6),
    "report": (5, 150, 3000, 256, 9),
    "extract": (4, 50, 2000, 256, 8),
    "graphic": (3, 50, 1500, 96, 0),
}


def run(*command):
    """Exit code, CPU seconds and peak KiB of a command, and the last line of what it says."""
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        os.dup2(writing, 2)
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
        os.execv(command[0], command)
    os.close(writing)
    with os.fdopen(reading, errors="replace") as pipe:
        words = pipe.read().strip().splitlines()[-1:]
    _, status, usage = os.wait4(child, 0)
    return os.waitstatus_to_exitcode(status), usage.ru_utime + usage.ru_stime, usage.ru_maxrss, words


def commands(path, has_graphics):
    path = str(path)
    yield "render", ("render", path, "-o", str(work / "out.ppm"))
    yield "info", ("info", "--json", path)
    yield "check", ("check", path)
    yield "report", ("report", path, "-o", str(work / "out.html"))
    yield "extract", ("extract", path, "--all", "-O", str(work / "all"))
    if has_graphics:
        yield "graphic", ("graphic", path, "0", "-o", str(work / "out.png"))
        yield "graphic", ("graphic", path, "0", "-o", str(work / "out.svg"))


def facts(path):
    """Pixels of the canvas, bytes of the largest image's bitmap, and whether there is a drawing."""
    out = subprocess.run([tool, "info", "--json", path], capture_output=True).stdout
    info = json.loads(out) if out else {}
    canvas = info.get("canvas") or {}
    segment = 0
    for image in info.get("images", []):
        fields = {k: int(image[k]) for k in ("NPPBH", "NBPR", "NPPBV", "NBPC", "NBPP") if k in image}
        bands = 3 if len(image.get("bands", [])) > 1 else 1
        if len(fields) == 5:
            area = fields["NPPBH"] * fields["NBPR"] * fields["NPPBV"] * fields["NBPC"]
            segment = max(segment, area * fields["NBPP"] * bands // 8)
    return canvas.get("width", 0) * canvas.get("height", 0), segment, bool(info.get("graphics"))


if folder == "--facts":
    print(json.dumps(facts(sys.argv[3])))
    sys.exit(0)
for path in sorted(pathlib.Path(folder).glob("*.ntf")):
    # In a process of its own: what this one takes would count as a command's memory.
    asked = subprocess.run([sys.executable, __file__, tool, "--facts", path], capture_output=True, check=True)
    pixels, segment, has_graphics = json.loads(asked.stdout)
    size = path.stat().st_size
    samples = pixels if path.name.startswith("j2k") else 0
    for name, command in commands(path, has_graphics):
        shutil.rmtree(work, ignore_errors=True)
        work.mkdir()
        base, per_pixel, per_byte, base_mib, bytes_per_pixel = BUDGETS[name]
        code, seconds, kib, words = run(tool, *command)
        most_seconds = base + 1e-9 * (per_pixel * pixels + per_byte * size) + 150e-9 * samples
        held = bytes_per_pixel * pixels + segment if bytes_per_pixel else 0
        most_mib = held / 2**20 + base_mib
        disk = sum(f.stat().st_size for f in work.rglob("*") if f.is_file())
        most_disk = 2**31 + 300 * size
        within = seconds <= most_seconds and kib / 1024 <= most_mib and code in (0, 1) and disk <= most_disk
        failed |= not within
        if within and "--all" not in sys.argv:
            continue
        print(f"{name:8} {path.name:28} {size:9} bytes {seconds:7.2f} of {most_seconds:6.2f} s "
              f"{kib / 1024:7.0f} of {most_mib:6.0f} MiB {'' if within else 'OVER '}exit {code} "
              f"{' '.join(words).rpartition('.ntf: ')[2]}", flush=True)
shutil.rmtree(work, ignore_errors=True)
print("every command kept its budget" if not failed else "some commands went over their budget")
sys.exit(failed)
