#!/usr/bin/env bash
# Where extracted TIFF files lie, by a reader of their own. Arguments: the tool, the project's folder, a scratch folder.
# Ends with 77 without that reader.
set -euo pipefail
tool=$1
. "$(dirname "$0")/support/tifffile.sh" "$3"
"$python3" - "$tool" <<'PYTHON'
import json, random, subprocess, sys
import tifffile

tool = sys.argv[1]
random.seed(20261126)

def run(*words):
    return subprocess.run([tool, *words], check=True, capture_output=True, text=True).stdout

def place(file, row, column):
    at = json.loads(run("locate", file, "--pixel", f"{row!r},{column!r}"))
    return at["longitude"], at["latitude"]

def page(file, *options):
    run("extract", file, "image:0", "-o", "out.tif", *options)
    with tifffile.TiffFile("out.tif") as tiff:
        rational = tiff.pages[0].tags.get(50844)
        return tiff.geotiff_metadata, rational.value if rational else None, tiff.pages[0].shape

# The middle of a pixel by the tags; rows and columns of the file.
def by_tags(keys, row, column):
    if "ModelPixelScale" in keys:
        scale, tie = keys["ModelPixelScale"], keys["ModelTiepoint"]
        return tie[3] + (column + 0.5) * scale[0], tie[4] - (row + 0.5) * scale[1]
    east, north = keys["ModelTransformation"][:2]
    return [line[0] * (column + 0.5) + line[1] * (row + 0.5) + line[3] for line in (east, north)]

def close(a, b, most):
    assert all(abs(x - y) <= most for x, y in zip(a, b)), (list(a), list(b), most)

with open("ramp.pgm", "wb") as picture:
    picture.write(b"P5 64 48 255\n" + bytes(i % 251 for i in range(64 * 48)))
run("new", "-o", "plain.ntf", "--station", "S", "--image", "ramp.pgm", "--lossless")
keys, rational, _ = page("plain.ntf")
assert keys is None and rational is None, "nothing tells a place"

# Degrees, upright and turned; a piece and a smaller picture of it.
corners = ["+52.000+010.000+52.000+011.000+51.000+011.000+51.000+010.000",
           "+52.000+010.500+51.500+011.000+51.000+010.500+51.500+010.000",
           "+52.000+179.500+52.000-179.500+51.000-179.500+51.000+179.500"]
for text in corners:
    run("set", "plain.ntf", "-o", "d.ntf", "image:0", "ICORDS=D", f"IGEOLO={text}")
    for options, row, column, size in ([], 0, 0, 1), (["--region", "8,16,24,32"], 8, 16, 1), (["--reduce", "1"], 0, 0, 2):
        keys, _, _ = page("d.ntf", *options)
        assert keys["GeographicTypeGeoKey"] == 4326 and keys["GTRasterTypeGeoKey"] == 1, keys
        for r, c in ((0, 0), (5, 7), (20, 11)):
            east, north = place("d.ntf", row + (r + 0.5) * size - 0.5, column + (c + 0.5) * size - 0.5)
            x, y = by_tags(keys, r, c)
            close(((x + 180) % 360, y), ((east + 180) % 360, north), 1e-9)

# Pictures: pieces and sizes of one image, by itself and at its place on the canvas.
run("set", "d.ntf", "-o", "moved.ntf", "image:0", "IGEOLO=" + corners[0], "ILOC=10,20")
for options, row, column, down, across in ([], -10, -20, 1, 1), (["--region", "10,20,48,64", "--scale", "1/2"], 0, 0, 2, 2), \
        (["--segment", "image:0", "--size", "16"], 0, 0, 4, 4):
    run("render", "moved.ntf", "-o", "picture.tif", *options)
    with tifffile.TiffFile("picture.tif") as tiff:
        keys = tiff.geotiff_metadata
    for r, c in ((0, 0), (11, 15)):
        close(by_tags(keys, r, c), place("moved.ntf", row + (r + 0.5) * down - 0.5, column + (c + 0.5) * across - 0.5), 1e-9)

# There and back: a picture that comes out is taken again with its place, in every form that can say it.
def corners_of(file):
    image = json.loads(run("info", "--json", file))["images"][0]
    return image["ICORDS"], image.get("IGEOLO")

for text in corners:
    run("set", "plain.ntf", "-o", "d.ntf", "image:0", "ICORDS=D", f"IGEOLO={text}")
    run("extract", "d.ntf", "image:0", "-o", "out.tif")
    run("new", "-o", "again.ntf", "--station", "S", "--image", "out.tif", "--lossless")
    assert corners_of("again.ntf") == ("D", text), corners_of("again.ntf")
    for form, most in ("G", 1 / 3600), ("U", 0.01), ("N", 0.01):
        run("new", "-o", "again.ntf", "--station", "S", "--image", "out.tif", "--lossless", "--icords", form)
        assert corners_of("again.ntf")[0] == form
        close(place("again.ntf", 20, 30), place("d.ntf", 20, 30), most)
refused = subprocess.run([tool, "new", "-o", "no.ntf", "--station", "S", "--image", "out.tif", "--icords", "S"],
                         capture_output=True, text=True)
assert refused.returncode == 1 and "cannot be told in the form S" in refused.stderr, refused.stderr

# Keys of another kind than they should be: numbers and texts where a code stands.
import numpy
for kind, where in (34736, "d"), (34737, "s"):
    for key in 1024, 1025, 2048:
        values = {1024: 2, 1025: 1, 2048: 4326}
        directory = [1, 1, 0, 3] + [n for k in values for n in ((k, kind, 1, 0) if k == key else (k, 0, 1, values[k]))]
        tags = [(33550, "d", 3, (0.01, 0.01, 0), True), (33922, "d", 6, (0, 0, 0, 10, 52, 0), True),
                (34735, "H", len(directory), directory, True),
                (kind, where, 1 if where == "d" else 0, (1e300,) if where == "d" else "x" * 200 + "|", True)]
        tifffile.imwrite("hostile.tif", numpy.zeros((4, 4), "uint8"), extratags=tags, photometric="minisblack")
        answer = subprocess.run([tool, "new", "-o", "no.ntf", "--station", "S", "--image", "hostile.tif", "--lossless"],
                                capture_output=True, text=True)
        assert answer.returncode in (0, 1) and "ERROR" not in answer.stderr, answer.stderr

# Metres of a zone, south.
run("set", "plain.ntf", "-o", "s.ntf", "image:0", "ICORDS=S",
    "IGEOLO=" + "335000008000000335063008000000335063007995300335000007995300")
keys, _, _ = page("s.ntf")
assert keys["ProjectedCSTypeGeoKey"] == 32733, keys
close(by_tags(keys, 0, 0), (500000, 8000000), 1e-6)
close(by_tags(keys, 47, 63), (506300, 7995300), 1e-6)
run("new", "-o", "again.ntf", "--station", "S", "--image", "out.tif", "--lossless")
assert corners_of("again.ntf") == corners_of("s.ntf"), corners_of("again.ntf")

# Polynomials, of a whole image, a piece, and a chip of every second pixel.
def term(number):
    text = f"{number:+.6E}"
    return text[:-2] + text[-1:]

terms = [[random.uniform(-.01, .01) for _ in range(20)] for _ in range(4)]
terms[0][2], terms[1][0], terms[2][1], terms[3][0] = -1, 1, 1, 1
front = "1" + "0003.00" + "0004.00" + "012345" + "06789" + "+48.2500" + "+016.3700" + "+0200" + "012000" + "06500" + "+00.1000" + "+000.1500" + "+0500"
with open("rpc", "w") as record:
    record.write(front + "".join(term(number) for list_ in terms for number in list_))
points = [(0.5, 0.5), (0.5, 63.5), (47.5, 0.5), (47.5, 63.5)]
with open("chip", "w") as record:
    record.write("00" + "0001.00000" + "0000" + "".join(f"{r:012.3f}{c:012.3f}" for r, c in points)
                 + "".join(f"{9000 + 2 * (r - .5) + .5:012.3f}{5000 + 2 * (c - .5) + .5:012.3f}" for r, c in points)
                 + "0002000000020000")
run("set", "plain.ntf", "-o", "r.ntf", "image:0", "record:RPC00B=@rpc")
run("set", "r.ntf", "-o", "c.ntf", "image:0", "record:ICHIPB=@chip")
_, rational, _ = page("r.ntf", "--region", "8,16,24,32")
assert len(rational) == 92 and rational[2:4] == (12345 - 8, 6789 - 16), rational[:12]
close(rational[12:], [float(term(number)) for list_ in terms for number in list_], 1e-15)
_, rational, _ = page("r.ntf", "--reduce", "2")
close(rational[2:4] + rational[7:9], ((12345 + .5) / 4 - .5, (6789 + .5) / 4 - .5, 3000, 1625), 1e-9)
keys, rational, _ = page("c.ntf")
close(rational[2:4] + rational[7:9], ((12345 - 9000) / 2, (6789 - 5000) / 2, 6000, 3250), 1e-6)
for r, c in ((0, 0), (47, 63), (11, 50)):
    x, y = place("c.ntf", r, c)
    close(by_tags(keys, r, c), (x, y), 2e-5)

# A grid of a projection without a code, whose datum the file's own records tell.
def padded(*texts):
    return "".join(f"{text:{width}}" for text, width in texts)

def projected(code, parameters, grid, datum="WGE"):
    records = {"GEOPSB": padded(("MAP", 3), ("M", 3), ("", 80), (datum, 4), ("", 80), ("WE", 3), ("", 168), ("0" * 15, 15),
                                ("", 83), ("0000", 4)),
               "PRJPSB": padded(("", 80), (code, 2)) + str(len(parameters)) + "".join(f"{p:+015.8f}" for p in parameters)
                         + f"{500000:+015.3f}{-200000:+015.3f}",
               "MAPLOB": "M  0002000030" + "".join(f"{n:+015.3f}" for n in grid)}
    for tag, text in records.items():
        with open(tag, "w") as record:
            record.write(text)
    run("set", "plain.ntf", "-o", "p1.ntf", "file", "record:GEOPSB=@GEOPSB")
    run("set", "p1.ntf", "-o", "p2.ntf", "file", "record:PRJPSB=@PRJPSB")
    run("set", "p2.ntf", "-o", "p.ntf", "image:0", "record:MAPLOB=@MAPLOB")
    return page("p.ntf")[0]

for code, parameters, transform, named in (
        ("LE", (10, 49, 44, 46), 8, {"ProjStdParallel1GeoKey": 49, "ProjStdParallel2GeoKey": 44, "ProjFalseOriginEastingGeoKey": 500000}),
        ("AC", (10, 29.5, 45.5, 23), 11, {"ProjStdParallel1GeoKey": 29.5, "ProjStdParallel2GeoKey": 45.5}),
        ("TC", (9, 0.9999, 5), 1, {"ProjScaleAtNatOriginGeoKey": 0.9999, "ProjNatOriginLatGeoKey": 5, "ProjNatOriginLongGeoKey": 9}),
        ("PG", (-45, 71), 15, {"ProjNatOriginLatGeoKey": 71, "ProjStraightVertPoleLongGeoKey": -45}),
        ("MC", (30, 40), 7, {}), ("AK", (10, 52), 10, {}), ("AL", (10, 52), 12, {}), ("GN", (10, 52), 19, {}), ("OD", (10, 52), 21, {})):
    for datum, geographic in (("WGE", 4326), ("EUR", 4230))[:2 if code in ("LE", "TC") else 1]:
        keys = projected(code, parameters, (600000, -100000), datum)
        assert keys["GTModelTypeGeoKey"] == 1 and keys["ProjectedCSTypeGeoKey"] == 32767, keys
        assert keys["GeographicTypeGeoKey"] == geographic, keys
        assert keys["ProjCoordTransGeoKey"] == transform, keys
        for key, value in named.items():
            assert abs(keys[key] - value) < 1e-9, (key, keys)
        close(by_tags(keys, 0, 0), (600000, -100000), 1e-3)
        close(by_tags(keys, 47, 63), (600000 + 63 * 20, -100000 - 47 * 30), 1e-3)

# Grids of degrees, corners of a block, and the other order of polynomials.
for tag, text, most in (("GEOLOB", "000036000000072000+000000010.0000+000000050.0000", 1e-9),
                        ("BLOCKA", "01" + "00000" + "00048" + " " * 22 + "+50.000000+010.100000+49.900000+010.100000+49.900000+010.000000+50.000000+010.000000" + " " * 5, 1e-9),
                        ("RPC00A", front + "".join(term(number) for list_ in terms for number in list_), 2e-5)):
    with open(tag, "w") as record:
        record.write(text)
    run("set", "plain.ntf", "-o", "m.ntf", "image:0", f"record:{tag}=@{tag}")
    keys, rational, _ = page("m.ntf")
    assert (rational is None) == (tag != "RPC00A")
    for r, c in ((0, 0), (47, 63), (11, 50)):
        if "ModelTransformation" in keys or "ModelPixelScale" in keys:
            close(by_tags(keys, r, c), place("m.ntf", r, c), most)
PYTHON
