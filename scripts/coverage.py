"""Sums the coverage of Common/ and hostkit/ and holds it against the least that is wanted."""
import json
import sys

LEAST = {"Common": (98, 92), "hostkit": (95, 85)}  # per cent of lines and branches

rows = []
sums = {room: {"lines": [0, 0], "branches": [0, 0]} for room in LEAST}
for entry in json.load(sys.stdin)["data"][0]["files"]:
    name = entry["filename"]
    room = next((r for r in LEAST if f"/{r}/" in name), None)
    if room is None:
        continue
    row = [name[name.index(f"/{room}/") + 1:]]
    for kind in ("lines", "branches"):
        summary = entry["summary"][kind]
        sums[room][kind][0] += summary["covered"]
        sums[room][kind][1] += summary["count"]
        row.append(summary["count"] - summary["covered"])
    rows.append(row)
for name, lines, branches in sorted(rows, key=lambda row: -row[1]):
    print(f"{lines:6} lines {branches:6} branches missed  {name}")
failed = False
for room, least in LEAST.items():
    for wanted, (kind, (covered, count)) in zip(least, sums[room].items()):
        share = 100 * covered / count
        failed |= share < wanted
        print(f"{room}: {share:.1f} % of {count} {kind} (at least {wanted})")
sys.exit(failed)
