#!/usr/bin/env bash
# Arrays, cloud-optimised TIFF and world files of samples and pictures, by readers of their own. Arguments: the tool, the
# project's folder, a scratch folder. Ends with 77 without those readers.
set -euo pipefail
tool=$1
. "$(dirname "$0")/support/tifffile.sh" "$3"
"$python3" - "$tool" <<'PYTHON'
import json, os, subprocess, sys
import numpy, tifffile

tool = sys.argv[1]
random = numpy.random.default_rng(20261126)

def run(*words, code=0):
    done = subprocess.run([tool, *words], capture_output=True, text=True)
    assert done.returncode == code, (words, done.returncode, done.stderr)
    return done.stdout if code == 0 else done.stderr

# Directories and what they point to come first, then the data, the smallest picture's in front.
def pages(name):
    with tifffile.TiffFile(name) as tiff:
        data = [min(page.dataoffsets) for page in tiff.pages]
        assert data == sorted(data, reverse=True), data
        for page in tiff.pages:
            assert page.is_tiled and page.offset < min(data)
            assert all(tag.valueoffset < min(data) for tag in page.tags.values())
        assert [page.is_reduced for page in tiff.pages] == [i > 0 for i in range(len(tiff.pages))]
        return [page.asarray() for page in tiff.pages], tiff.geotiff_metadata, tiff.pages[0].tags.get(270)

# Each picture is the mean of 2 x 2 pixels of the one before; of those that are there at its edges.
def means(picture, whole):
    rows, columns = picture.shape[:2]
    odd = numpy.pad(picture, ((0, rows % 2), (0, columns % 2)) + ((0, 0),) * (picture.ndim - 2), "edge").astype("longdouble" if picture.dtype.kind != "c" else "clongdouble")
    mean = (odd[0::2, 0::2] + odd[1::2, 0::2] + odd[0::2, 1::2] + odd[1::2, 1::2]) / 4
    return numpy.floor(mean + 0.5).astype(picture.dtype) if whole else mean.astype(picture.dtype)

for kind, shape in (("uint8", (1, 700, 901)), ("uint16", (3, 1030, 1100)), ("int16", (1, 513, 5)), ("float32", (2, 520, 600)),
                    ("float64", (1, 600, 520)), ("complex64", (1, 515, 520))):
    array = random.normal(0, 100, shape).astype(kind) if kind[0] != "u" else random.integers(0, 250, shape).astype(kind)
    numpy.save("in.npy", array)
    run("new", "-o", "in.ntf", "--station", "S", "--image", "in.npy", "--lossless", "--block", "256")
    run("extract", "in.ntf", "image:0", "-o", "out.npy")
    assert numpy.array_equal(numpy.load("out.npy"), array), kind
    run("extract", "in.ntf", "image:0", "-o", "out.tif", "--cog")
    all_pages = pages("out.tif")[0]
    assert len(all_pages) == 1 + max(0, max(shape[1:]) - 1).bit_length() - 9, (kind, len(all_pages))
    assert numpy.array_equal(all_pages[0], numpy.moveaxis(array, 0, 2).reshape(all_pages[0].shape)), kind
    for larger, smaller in zip(all_pages, all_pages[1:]):
        assert numpy.array_equal(smaller, means(larger, kind[0] in "ui")), kind
    run("extract", "in.ntf", "image:0", "-o", "piece.npy", "--region", "10,2,500,3")
    assert numpy.array_equal(numpy.load("piece.npy"), array[:, 10:510, 2:5])

# A mask's value is no part of a mean; numbers that are none neither.
array = numpy.full((1, 600, 600), 200, "uint8")
array[0, ::2, :] = 0
array[0, :256, :256] = 0
tifffile.imwrite("in.tif", array[0], extratags=[(42113, "s", 2, "0", True)], photometric="minisblack")
run("new", "-o", "in.ntf", "--station", "S", "--image", "in.tif", "--lossless", "--block", "256", "--masked")
run("extract", "in.ntf", "image:0", "-o", "out.tif", "--cog")
smaller = pages("out.tif")[0][1]
assert (smaller[:128, :128] == 0).all() and (smaller[128:, 128:] == 200).all(), smaller
array = numpy.full((1, 600, 600), 7, "float32")
array[0, 1::2, 1::2] = numpy.nan
numpy.save("in.npy", array)
run("new", "-o", "in.ntf", "--station", "S", "--image", "in.npy", "--lossless")
run("extract", "in.ntf", "image:0", "-o", "out.tif", "--cog")
assert (pages("out.tif")[0][1] == 7).all()

# The greatest whole numbers stay what they are.
array = numpy.full((1, 520, 520), 2**64 - 1, "uint64")
numpy.save("in.npy", array)
run("new", "-o", "in.ntf", "--station", "S", "--image", "in.npy", "--lossless")
run("extract", "in.ntf", "image:0", "-o", "out.tif", "--cog")
assert all((page == 2**64 - 1).all() for page in pages("out.tif")[0])

# Single bits: the nearest ones.
bits = random.integers(0, 2, (601, 530)).astype("uint8")
with open("in.pbm", "wb") as picture:
    picture.write(b"P4 530 601\n" + numpy.packbits(bits, axis=1).tobytes())
run("new", "-o", "in.ntf", "--station", "S", "--image", "in.pbm", "--lossless")
run("extract", "in.ntf", "image:0", "-o", "out.npy")
stored = numpy.load("out.npy")[0]
run("extract", "in.ntf", "image:0", "-o", "out.tif", "--cog")
full, half = pages("out.tif")[0]
assert numpy.array_equal(full.astype("uint8"), stored) and numpy.array_equal(half, full[::2, ::2])

# Pictures, and what lies beside them.
numpy.save("in.npy", random.integers(0, 255, (3, 600, 800)).astype("uint8"))
run("new", "-o", "plain.ntf", "--station", "S", "--image", "in.npy", "--lossless")
assert "nothing tells where" in run("render", "plain.ntf", "-o", "no.png", "--world", code=2)
run("set", "plain.ntf", "-o", "in.ntf", "image:0", "ICORDS=N",
    "IGEOLO=" + "335000005000000335079905000000335079904994010335000004994010")
run("render", "in.ntf", "-o", "out.tif", "--cog")
run("render", "in.ntf", "-o", "plain.tif")
(full, half), keys, _ = pages("out.tif")
assert numpy.array_equal(full, tifffile.imread("plain.tif")) and numpy.array_equal(half, means(full, True))
assert keys["ProjectedCSTypeGeoKey"] == 32633 and all(abs(side - 10) < 1e-9 for side in keys["ModelPixelScale"][:2]), keys
for command, picture, world in (("render", "p.png", "p.pgw"), ("render", "p.jpg", "p.jgw"), ("extract", "s.npy", "s.nyw"), ("extract", "s.png", "s.pgw")):
    part = ["image:0"] if command == "extract" else []
    run(command, "in.ntf", *part, "-o", picture, "--world", "--region", "20,30,100,200")
    with open(world) as lines:
        numbers = [float(line) for line in lines]
    assert all(abs(a - b) < 1e-6 for a, b in zip(numbers, (10, 0, 0, -10, 500300, 4999800))), numbers
    with open(os.path.splitext(picture)[0] + ".prj") as system:
        text = system.read()
    assert text.startswith('PROJCS["WGS_1984_UTM_Zone_33N",GEOGCS["GCS_WGS_1984"'), text
for words, sentence in ((("extract", "in.ntf", "image:0", "-o", "x.png", "--cog"), "--cog is for .tif"),
                        (("extract", "in.ntf", "image:0", "-o", "-", "--format", "png", "--world"), "get a name"),
                        (("render", "in.ntf", "-o", "x.png", "--cog"), "--cog is for .tif")):
    assert sentence in run(*words, code=2), words
os.rename("in.ntf", "v.pgw")
assert "is an input" in run("render", "v.pgw", "-o", "v.png", "--world", code=2)
assert not os.path.exists("v.png")
assert "the picture itself" in run("render", "v.pgw", "-o", "x.prj", "--format", "png", "--world", code=2)
assert "the picture itself" in run("extract", "v.pgw", "image:0", "-o", "x.xww", "--format", "png", "--world", code=2)
os.mkfifo("pipe")
assert "no file" in run("extract", "v.pgw", "image:0", "-o", "pipe", "--format", "png", "--world", code=2)
os.mkdir("batch")
for name in "b.ntf", "b.ntf.pgw":
    os.link("v.pgw", os.path.join("batch", name))
assert "is an input" in run("render", "batch/b.ntf", "batch/b.ntf.pgw", "-O", "batch", "--world", "--keep-ending", code=2)
run("info", "batch/b.ntf.pgw")
run("info", "v.pgw")

# A composite lies where its lowest image with a place does; bands are described.
run("set", "v.pgw", "-o", "in.ntf", "image:0", "ILOC=5,7", "ISUBCAT2=00550")
run("append", "in.ntf", "-o", "two.ntf", "--image", "in.npy", "--lossless", "--at", "100,100")
run("render", "two.ntf", "-o", "two.png", "--world")
with open("two.pgw") as lines:
    numbers = [float(line) for line in lines]
assert all(abs(a - b) < 1e-6 for a, b in zip(numbers, (10, 0, 0, -10, 500000 - 70, 5000000 + 50))), numbers
run("extract", "in.ntf", "image:0", "-o", "out.tif", "--bands", "1,0")
with tifffile.TiffFile("out.tif") as tiff:
    assert tiff.pages[0].description.split("\n")[0] == "band 0: 00550 nm", tiff.pages[0].description
PYTHON
