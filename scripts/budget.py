"""Runs a command on every file of a folder and compares its CPU time and peak memory with the budget."""
import json
import os
import pathlib
import subprocess
import sys

tool, folder = sys.argv[1:3]
output = str(pathlib.Path(folder) / "out.ppm")
failed = False


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


for path in sorted(pathlib.Path(folder).glob("*.ntf")):
    out = subprocess.run([tool, "info", "--json", path], capture_output=True).stdout
    info = json.loads(out) if out else {}
    canvas = info.get("canvas") or {}
    pixels = canvas.get("width", 0) * canvas.get("height", 0)
    segment = 0
    for image in info.get("images", []):
        fields = {k: int(image[k]) for k in ("NPPBH", "NBPR", "NPPBV", "NBPC", "NBPP") if k in image}
        bands = 3 if len(image.get("bands", [])) > 1 else 1
        if len(fields) == 5:
            area = fields["NPPBH"] * fields["NBPR"] * fields["NPPBV"] * fields["NBPC"]
            segment = max(segment, area * fields["NBPP"] * bands // 8)
    size = path.stat().st_size
    samples = pixels if path.name.startswith("j2k") else 0
    code, seconds, kib, words = run(tool, "render", str(path), "-o", output)
    most_seconds = 2 + 50e-9 * pixels + 150e-9 * samples + 1e-6 * size
    most_mib = (3 * pixels + segment) / 2**20 + 128
    within = seconds <= most_seconds and kib / 1024 <= most_mib and code in (0, 1)
    failed |= not within
    print(f"{path.name:28} {size:9} bytes {seconds:7.2f} of {most_seconds:6.2f} s {kib / 1024:7.0f} of "
          f"{most_mib:6.0f} MiB  {'' if within else 'OVER  '}{' '.join(words).rpartition('.ntf: ')[2]}")
sys.exit(failed)
