"""Draws every file of the benchmark and prints time, speed, peak memory and the ratio to the floor."""
import argparse
import json
import math
import os
import pathlib
import platform
import statistics
import subprocess
import sys
import time

BIN = pathlib.Path("build/bench/bin")
PAGE = pathlib.Path("docs/performance.md")
PLOT = pathlib.Path("docs/performance.svg")
MARKS = ("<!-- table -->", "<!-- /table -->")
# The most wall time that a case may take of its floor; "floor" is what the bare commands or libraries take. Cases of
# plain reading and writing may take three times the floor's processor time.
MOST_CPU = 3.0
IO_CASES = {
    **dict.fromkeys(("mono_one", "mono_256", "mono_1024"), 1.5),
    **{f"rgb_{m}_{b}": 1.5 for m in "bprs" for b in ("one", "256", "1024")},
    **{f"rgb_{m}_masked": None for m in "bpr"},
    **dict.fromkeys(("bilevel", "mono_12", "mono_16", "lookup_table"), 1.5),
    "vector_quantised": 1.5,
}
CODEC_CASES = {
    "facsimile": ("facsimile", "tif", 1.2),
    "jpeg_256": ("jpeg", "streams", 1.2),
    "jpeg_one_colour": ("jpeg", "streams", 1.2),
    "jpeg2000_1024": ("jpeg2000", "streams", 1.2),
}
MOST_SECONDS = {"images_999": 0.3}
MOST_MIB = 48  # and two rows of blocks
# Parts and small pictures, which have no floor.
PART_FILES = ("mono_1024", "rgb_p_one", "jpeg_256", "jpeg_one_colour", "jpeg2000_1024", "growth_16384")
PARTS = {"512 x 512 in the middle": ["--region", "4000,4000,512,512"], "overview": ["--size", "1024", "--fast"],
         "mean of areas": ["--size", "1024"]}


def run(command, output=None):
    """Wall seconds, CPU seconds and peak MiB of a command."""
    start = time.perf_counter()
    child = os.fork()
    if child == 0:
        if output is not None:
            os.dup2(os.open(output, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o666), 1)
        os.execv(command[0], [str(word) for word in command])
    _, status, usage = os.wait4(child, 0)
    if status != 0:
        sys.exit(f"bench: {command} ended with {status}")
    return time.perf_counter() - start, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


class Bench:
    def __init__(self, side, runs):
        self.runs = runs
        self.folder = pathlib.Path(f"build/bench/files-{side}")
        if not (self.folder / "growth_done").exists():
            self.folder.mkdir(parents=True, exist_ok=True)
            subprocess.run([BIN / "make_files", self.folder, str(side)], check=True)
            (self.folder / "growth_done").touch()
        self.out = pathlib.Path("/dev/shm" if os.path.isdir("/dev/shm") else self.folder) / f"orbntf-bench-{os.getpid()}.ppm"

    def measure(self, *commands):
        """Median wall and processor seconds of each command, run in turn, and the peak memory of the first."""
        taken = [[] for _ in commands]
        peak = 0
        for _ in range(self.runs):
            for i, (command, output) in enumerate(commands):
                self.out.unlink(missing_ok=True)
                seconds, cpu, memory = run(command, output)
                taken[i].append((seconds, cpu))
                peak = max(peak, memory if i == 0 else 0)
        self.out.unlink(missing_ok=True)
        return [tuple(map(statistics.median, zip(*times))) for times in taken], peak

    def render(self, file, more=()):
        return [BIN / "orbntf", "render", file, "--format", "ppm", "-o", "-", *more], self.out

    def part(self, name, words, more):
        """What a part or a small picture takes."""
        [(seconds, cpu)], peak = self.measure(self.render(self.folder / f"{name}.ntf", more))
        print(f"{name:18} {words:26} {seconds * 1000:8.0f} ms {cpu * 1000:8.0f} ms CPU {peak:6.0f} MiB", flush=True)
        return {"case": name, "part": words, "seconds": seconds, "cpu": cpu, "peak": peak}

    def case(self, name):
        file = self.folder / f"{name}.ntf"
        canvas = json.loads(subprocess.run([BIN / "orbntf", "info", "--json", file], check=True,
                                           capture_output=True).stdout)["canvas"]
        pixels = canvas["width"] * canvas["height"]
        kind, ending, most = CODEC_CASES.get(name, ("io", "ntf", IO_CASES.get(name)))
        floor = [BIN / "floor", kind, self.folder / f"{name}.{ending}", self.out, pixels]
        [(seconds, cpu), (least, least_cpu)], peak = self.measure(self.render(file), ([*floor, 0], None))
        ratio, cpu_ratio = seconds / least, cpu / least_cpu
        allowed = MOST_MIB + 2 * 1024 * canvas["width"] * 3 / 2**20
        within = ((most is None or ratio <= most) and seconds <= MOST_SECONDS.get(name, math.inf)
                  and (most is None or kind != "io" or cpu_ratio <= MOST_CPU) and peak <= allowed)
        row = {"case": name, "seconds": seconds, "cpu": cpu, "bytes": file.stat().st_size, "pixels": pixels,
               "peak": peak, "floor": least, "ratio": ratio, "cpu_ratio": cpu_ratio, "within": within}
        print(f"{name:18} {seconds * 1000:8.0f} ms {cpu * 1000:8.0f} ms CPU {row['bytes'] / seconds / 1e6:7.0f} MB/s "
              f"{peak:6.0f} MiB {ratio:6.2f} of {most or '-'} CPU {cpu_ratio:6.2f}{'' if within else '  OVER'}",
              flush=True)
        return row


def exponent(rows):
    """Slope of log time over log pixels, least squares."""
    points = [(math.log(row["pixels"]), math.log(row["seconds"])) for row in rows]
    x, y = (statistics.mean(axis) for axis in zip(*points))
    return sum((a - x) * (b - y) for a, b in points) / sum((a - x) ** 2 for a, _ in points)


def plot(rows):
    """The growth of time with pixels as SVG, both axes logarithmic."""
    width, height, left, bottom = 560, 340, 70, 50
    xs = [math.log10(row["pixels"]) for row in rows]
    ys = [math.log10(row["seconds"]) for row in rows]
    low, high = math.floor(min(ys)), math.ceil(max(ys))
    start, end = math.floor(min(xs)), math.ceil(max(xs))

    def at(x, y):
        return (left + (x - start) / (end - start) * (width - left - 20),
                height - bottom - (y - low) / (high - low) * (height - bottom - 20))

    def text(x, y, words, anchor="middle"):
        return f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}">{words}</text>'

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             'font-family="sans-serif" font-size="12"><rect width="100%" height="100%" fill="#fff"/>']
    for decade in range(start, end + 1):
        x, y = at(decade, low)
        parts.append(f'<path d="M{x:.0f} {y:.0f}V20" stroke="#ddd"/>' + text(x, y + 18, f"10^{decade}"))
    for decade in range(low, high + 1):
        x, y = at(start, decade)
        parts.append(f'<path d="M{x:.0f} {y:.0f}H{width - 20}" stroke="#ddd"/>'
                     + text(x - 8, y + 4, f"{10.0 ** decade:g} s", "end"))
    points = [at(x, y) for x, y in zip(xs, ys)]
    parts.append('<polyline fill="none" stroke="#06c" stroke-width="2" points="'
                 + " ".join(f"{x:.1f},{y:.1f}" for x, y in points) + '"/>')
    parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="4" fill="#06c"/>' for x, y in points]
    parts.append(text(width / 2, height - 12, "pixels of one band, blocks of 1024") + "</svg>\n")
    return "\n".join(parts)


def write_page(rows, parts, growth, side):
    commit = subprocess.run(["git", "rev-parse", "--short", "HEAD"], capture_output=True,
                            text=True).stdout.strip()
    lines = [f"Commit {commit}, {os.cpu_count()} cores ({platform.machine()}), {side} x {side} pixels; "
             "medians of the runs. The ratios are those of wall and processor time.", "",
             "| case | ms | CPU ms | MB/s of the file | peak MiB | floor ms | ratio | CPU ratio |",
             "|---|---:|---:|---:|---:|---:|---:|---:|"]
    for row in rows:
        lines.append(f"| {row['case']} | {row['seconds'] * 1000:.0f} | {row['cpu'] * 1000:.0f} | "
                     f"{row['bytes'] / row['seconds'] / 1e6:.0f} | {row['peak']:.0f} | "
                     f"{row['floor'] * 1000:.0f} | {row['ratio']:.2f} | {row['cpu_ratio']:.2f} |")
    lines += ["", "Parts and small pictures of the same files (growth_16384 has 16384 x 16384 pixels):", "",
              "| file | what | ms | CPU ms | peak MiB |", "|---|---|---:|---:|---:|"]
    for row in parts:
        lines.append(f"| {row['case']} | {row['part']} | {row['seconds'] * 1000:.0f} | {row['cpu'] * 1000:.0f} | "
                     f"{row['peak']:.0f} |")
    if growth:
        lines += ["", f"Growth: time is pixels to the power of {exponent(growth):.2f}."]
        PLOT.write_text(plot(growth))
    page = PAGE.read_text()
    before, rest = page.split(MARKS[0])
    PAGE.write_text(before + MARKS[0] + "\n" + "\n".join(lines) + "\n" + MARKS[1] + rest.split(MARKS[1])[1])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--side", type=int, default=8192)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("cases", nargs="*")
    options = parser.parse_args()
    bench = Bench(options.side, options.runs)
    names = options.cases or [*IO_CASES, *CODEC_CASES, "images_999", "graphics_500"]
    rows = [bench.case(name) for name in names if name != "growth"]
    parts = [] if options.cases else [bench.part(name, words, more) for name in PART_FILES
                                      for words, more in PARTS.items()]
    growth = []
    if not options.cases or "growth" in options.cases:
        side = options.side // 8
        while side <= 2 * options.side:
            growth.append(bench.case(f"growth_{side}"))
            side *= 2
        print(f"growth exponent {exponent(growth):.3f} of 1.05")
    if options.write:
        write_page(rows + growth, parts, growth, options.side)
    late = [row["case"] for row in rows if not row["within"]]
    if growth and exponent(growth) > 1.05:
        late.append("growth")
    print("over: " + " ".join(late) if late else "all within")
    return 1 if late else 0


sys.exit(main())
