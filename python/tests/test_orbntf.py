"""The package against the tool, and on its own: arrays, pictures, findings, places, changes, errors."""

import json
import pathlib
import pickle
import signal
import subprocess
import sys
import threading
import time
import warnings

import numpy
import pytest
from conftest import arrays, arrays_colour, run

import orbntf


def png(path):
    """Rows of red, green and blue of a PPM file."""
    data = pathlib.Path(path).read_bytes()
    mark, width, height, most, pixels = data.split(maxsplit=4)[:4] + [data[-1 * numpy.prod([int(n) for n in data.split(maxsplit=3)[1:3]]) * 3:]]
    assert (mark, most) == (b"P6", b"255")
    return numpy.frombuffer(pixels, "u1").reshape(int(height), int(width), 3)


def test_arrays_are_those_that_the_tool_extracts(made, tmp_path):
    for path in made:
        for image in orbntf.open(path).images:
            run("extract", path, f"image:{image.index}", "-o", tmp_path / "a.npy")
            wanted = numpy.load(tmp_path / "a.npy")
            assert image.shape == wanted.shape and image.dtype == wanted.dtype, path
            assert numpy.array_equal(image.read(), wanted), path
            rows, columns = image.shape[1:]
            window = (rows // 3, columns // 4, rows // 2, columns // 2)
            piece = wanted[:, window[0]:window[0] + window[2], window[1]:window[1] + window[3]]
            assert numpy.array_equal(image.read(window), piece), path
            assert image.mask(window).shape == piece.shape[1:]
            half = image.read(reduce=1)
            run("extract", path, f"image:{image.index}", "-o", tmp_path / "h.npy", "--reduce", "1")
            assert numpy.array_equal(half, numpy.load(tmp_path / "h.npy")), path


def test_pictures_are_those_that_the_tool_draws(made, tmp_path):
    for path in made:
        f = orbntf.open(path)
        for options, words in (({}, []), ({"scale": 2}, ["--scale", "1/2"]), ({"size": 33}, ["--size", "33"]),
                               ({"window": (1, 2, 5, 7), "stretch": "none"}, ["--region", "1,2,5,7", "--stretch", "none"]),
                               ({"size": 20, "fast": True, "stretch": ("percent", 5, 90)},
                                ["--size", "20", "--fast", "--stretch", "percent:5,90"])):
            run("render", path, "-o", tmp_path / "a.ppm", *words)
            assert numpy.array_equal(f.render(**options), png(tmp_path / "a.ppm")), (path, options)
        if f.images:
            run("render", path, "-o", tmp_path / "a.ppm", "--segment", "image:0")
            assert numpy.array_equal(f.render(segment=f.images[0]), png(tmp_path / "a.ppm")), path


def test_findings_fields_and_places_are_those_of_the_tool(made):
    for path in made:
        f = orbntf.open(path)
        told = json.loads(run("check", path, "--json", code=1 if any(x.severity == "error" for x in f.check()) else 0))
        assert [(x.rule, x.severity, x.part, x.field, x.offset) for x in f.check()] == \
            [(x["rule"], x["severity"], x["part"], x["field"], x["offset"]) for x in told["findings"]], path
        told = json.loads(run("info", path, "--json"))
        for name, text in told["fileHeader"].items():
            if isinstance(text, str) and name in f.fields and name not in ("FBKGC", "FSDWNG"):
                assert f.fields[name].rstrip() == text.rstrip() or "\\x" in text, (path, name)
        for image, known in zip(f.images, told["images"]):
            assert image.values["NROWS"] == known["values"]["NROWS"]
            if "location" in known:
                place = image.locate((image.shape[1] - 1) / 2, (image.shape[2] - 1) / 2)
                assert place.model == known["location"]["model"]
                assert abs(place.latitude - known["location"]["latitude"]) < 1e-9
                back = image.locate_ground(*place[:2])
                assert abs(back.row - (image.shape[1] - 1) / 2) < 1e-6


def test_indexing_reads_what_an_array_has():
    array = numpy.arange(3 * 40 * 50).reshape(3, 40, 50).astype("uint16")
    f = orbntf.open(saved(images=[array]))
    im = f.images[0]
    for key in (0, -1, (slice(None), 3), (..., slice(5, 20), slice(7, 30)), (1, 2, 3), (..., 4), ([2, 0], slice(None, None, 3), slice(40, 10, -2)),
                (slice(1, 1),), (slice(None), slice(30, 2, -7), [5, 1, 1]), Ellipsis):
        assert numpy.array_equal(im[key], array[key]), key
    assert numpy.array_equal(numpy.asarray(im), array) and len(im) == 3
    for key in (3, (0, 40), (0, 0, 0, 0)):
        with pytest.raises(IndexError):
            im[key]


def saved(tmp=[], **options):
    import tempfile
    tmp.append(tempfile.TemporaryDirectory())
    path = pathlib.Path(tmp[-1].name) / "made.ntf"
    orbntf.new(path, **options)
    return path


def test_arrays_come_back_as_they_were_stored():
    for kind, array in arrays():
        f = orbntf.open(saved(images=[array, array[0]]))
        assert [x for x in f.check() if x.severity == "error"] == [], kind
        assert numpy.array_equal(f.images[0].read(), array) and numpy.array_equal(f.images[1].read()[0], array[0]), kind
    bits = numpy.random.default_rng(1).integers(0, 2, (20, 33)).astype(bool)
    f = orbntf.open(saved(images=[bits]))
    assert f.images[0].bits == 1 and numpy.array_equal(f.images[0].read()[0], bits)
    big = numpy.arange(12, dtype=">u2").reshape(3, 4)
    assert numpy.array_equal(orbntf.open(saved(images=[big])).images[0].read()[0], big)
    colour = arrays_colour()
    assert numpy.array_equal(orbntf.open(saved(images=[colour], jpeg2000=True)).images[0].read(), colour)
    close = numpy.moveaxis(orbntf.open(saved(images=[colour], jpeg=95)).render(), 2, 0)
    assert abs(close.astype(int) - colour).mean() < 3
    for wrong in (numpy.zeros((2, 0)), numpy.zeros(3), numpy.zeros((2, 2), "float16"), numpy.zeros((2, 2), "U1")):
        with pytest.raises(orbntf.Error):
            saved(images=[wrong])


def test_edits_change_what_they_name(tmp_path):
    first = saved(images=[arrays_colour()], texts=["one"])
    edit = orbntf.open(first).edit()
    edit.set("file", FTITLE="A title").set("image:0", "IID1", "SCENE").set_record("image:0", "MADEUP", b"abc")
    assert edit.append_image(arrays_colour()[0], at=(3, 4), fields={"IID1": "SECOND"}) == 1
    assert edit.append_text("two") == 1
    edit.remove("text:0")
    edit.save(tmp_path / "b.ntf")
    f = orbntf.open(tmp_path / "b.ntf")
    assert f.fields["FTITLE"].rstrip() == "A title" and f.images[0].fields["IID1"].rstrip() == "SCENE"
    assert [(r.tag, r.bytes) for r in f.images[0].records] == [("MADEUP", b"abc")]
    assert f.images[1].values["ILOC"] == (3, 4) and [t.text for t in f.texts] == ["two"]
    names = {(d.kind, d.name) for d in orbntf.diff(first, tmp_path / "b.ntf")}
    assert ("field", "FTITLE") in names and ("field", "IID1") in names
    assert orbntf.diff(first, first) == []
    with pytest.raises(orbntf.Error) as error:
        f.edit().set("image:0", ICAT="NONSENSE")
    assert error.value.field == "ICAT" and error.value.status == "invalid"
    with pytest.raises(orbntf.Error) as error:
        f.edit().save(tmp_path / "b.ntf")
    assert error.value.status == "invalid"
    f.report(tmp_path / "page.html")
    assert b"<html" in (tmp_path / "page.html").read_bytes()
    with pytest.raises(orbntf.Error):
        f.report(tmp_path / "b.ntf")
    assert orbntf.open(tmp_path / "b.ntf").size == f.size


def test_inputs_are_kept_and_edits_saved_again(tmp_path, monkeypatch):
    path = tmp_path / "in" / "a.ntf"
    path.parent.mkdir()
    orbntf.new(path, images=[arrays_colour()])
    before = path.read_bytes()
    monkeypatch.chdir(path.parent)
    f = orbntf.open("a.ntf")
    edit = f.edit().set("image:0", ICORDS="D", IGEOLO="52,10 52,11 51,11 51,10")
    monkeypatch.chdir(tmp_path)
    for write in (lambda: edit.save("in/a.ntf"), lambda: f.report("in/a.ntf")):
        with pytest.raises(orbntf.Error):
            write()
    assert path.read_bytes() == before
    for name in ("one.ntf", "two.ntf"):
        edit.save(name)
    assert (tmp_path / "one.ntf").read_bytes() == (tmp_path / "two.ntf").read_bytes()
    f.report("page.html")
    assert (tmp_path / "page.html").stat().st_size > 1000 and not list(tmp_path.glob(".orbntf-*"))
    # A picture that is taken in is an input as well.
    run("render", path, "-o", "z.png")
    picture = (tmp_path / "z.png").read_bytes()
    with pytest.raises(orbntf.Error):
        orbntf.new("z.png", images=["z.png"])
    assert (tmp_path / "z.png").read_bytes() == picture
    # What is refused leaves nothing behind.
    edit = orbntf.open(path).edit()
    with pytest.raises(orbntf.Error):
        edit.append_image(arrays_colour(), fields={"NOPE": "x"})
    edit.save("same.ntf")
    assert (tmp_path / "same.ntf").read_bytes() == before
    # Values go back as they came.
    values = orbntf.open(path).values
    edit.set("file", FDT=values["FDT"]).set("image:0", ILOC=(3, 4)).save("values.ntf")
    assert orbntf.open("values.ntf").images[0].values["ILOC"] == (3, 4) and orbntf.open("values.ntf").values["FDT"] == values["FDT"]
    # A file that becomes shorter is not taken for one with a hole.
    long = tmp_path / "long.ntf"
    orbntf.new(long, images=[numpy.ones((1000, 1000), "u1")])
    edit = orbntf.open(long).edit().set("file", FTITLE="x")
    with open(long, "r+b") as cut:
        cut.truncate(5000)
    with pytest.raises(orbntf.Error):
        edit.save("short.ntf")
    assert not (tmp_path / "short.ntf").exists()


def test_places_and_values(tmp_path):
    f = orbntf.open(saved(images=[arrays_colour()], date="20260102030405"))
    assert f.values["FDT"].year == 2026 and f.version == "NITF02.10"
    with pytest.raises(orbntf.Error) as error:
        f.locate(0, 0)
    assert "nothing that is used" in str(error.value) and error.value.segment == "image 0"
    f.edit().set("image:0", "ICORDS", "D").set(
        "image:0", IGEOLO="+52.000+010.000+52.000+011.000+51.000+011.000+51.000+010.000").save(tmp_path / "p.ntf")
    f = orbntf.open(tmp_path / "p.ntf")
    place = f.locate(0, 0)
    assert abs(place.latitude - 52) < 1e-9 and abs(place.longitude - 10) < 1e-9 and place.model == "IGEOLO"
    assert abs(f.locate_ground(51.5, 10.5).column - 39.5) < 1e-6
    assert f.images[0].values["IGEOLO"]


def test_what_cannot_be_done_is_told(tmp_path):
    for source, status in ((tmp_path / "none.ntf", "unreadable"), (tmp_path, "unreadable"), (b"NITF02.10" + b" " * 400, None),
                           (bytearray(b"GIF89a"), "not_nitf")):
        try:
            orbntf.open(source).check()
            assert status is None
        except orbntf.Error as error:
            assert error.status == status or status is None
    path = saved(images=[arrays_colour()])
    im = orbntf.open(path).images[0]
    for window in ((0, 0, 0, 5), (-1, 0, 5, 5), (0, 0, 61, 5), (0, 79, 5, 2)):
        with pytest.raises(orbntf.Error):
            im.read(window)
    with pytest.raises(orbntf.Error):
        im.read(bands=[3])
    for wrong in (lambda: im.read(window=(0.5, 0, 1, 1)), lambda: im.read((1, 2, 3)), lambda: im.read(reduce=-1), lambda: im.read(bands=[]),
                  lambda: im.read(bands=0), lambda: im.mask(bands=[-1]), lambda: im.data(-1), lambda: orbntf.open(path).render(size=-1),
                  lambda: orbntf.open(path).render(scale=0), lambda: orbntf.open(path).render(stretch=None), lambda: orbntf.open(path).locate(0, 0, 7),
                  lambda: orbntf.open(path).render(segment=orbntf.open(path).header), lambda: orbntf.open(str(path) + "\0.x"),
                  lambda: orbntf.open(""), lambda: orbntf.open(path).edit().set("image:²", IID1="x"), lambda: orbntf.open(path).edit().set(None, IID1="x"),
                  lambda: saved(images=[arrays_colour()], mode="BXX"), lambda: saved(images=[arrays_colour()], jpeg=0),
                  lambda: saved(images=[numpy.zeros((2, 2), "complex128")])):
        with pytest.raises(orbntf.Error):
            wrong()
    for wrong in ([True, False, True], True, numpy.zeros(3, bool), 0.5):
        with pytest.raises(IndexError):
            im[wrong]
    assert numpy.array_equal(im[numpy.array(1)], im[1])
    assert numpy.array_equal(orbntf.open(path).render(bands=numpy.array([0])), orbntf.open(path).render(bands=[0]))
    with pytest.raises(orbntf.Error) as error:
        orbntf.open(tmp_path / "none.ntf")
    assert "none.ntf" in str(error.value) and "no such file" in str(error.value).lower()
    with pytest.raises(orbntf.Error):
        orbntf.open(path).check("nonsense")
    f = orbntf.open(path)
    f.close()
    with pytest.raises(orbntf.Error):
        f.images[0].read()
    cut = pathlib.Path(path).read_bytes()[:-2000]
    with pytest.raises(orbntf.Error) as error:
        orbntf.open(bytearray(cut)).images[0].read()
    assert error.value.status == "truncated"
    with warnings.catch_warnings(record=True) as told:
        warnings.simplefilter("always")
        orbntf.open(bytearray(cut)).render()
    assert [w.category for w in told] == [orbntf.MissingSegmentWarning]


def test_hostile_files_end_in_errors():
    random = numpy.random.default_rng(5)
    bytes_ = numpy.frombuffer(pathlib.Path(saved(images=[arrays_colour()], jpeg=80, texts=["x"])).read_bytes(), "u1")
    for _ in range(300):
        broken = bytes_.copy()
        broken[random.integers(0, 2000, 4)] = random.integers(0, 256, 4)
        try:
            with warnings.catch_warnings():
                warnings.simplefilter("ignore")
                f = orbntf.open(bytearray(broken.tobytes()))
                f.check(), f.fields, f.values, f.render(size=20)
                [(im.records, im.values, im.read((0, 0, 1, 1)), im.mask((0, 0, 1, 1))) for im in f.images]
        except orbntf.Error:
            pass


def test_threads_share_a_file_and_processes_a_path():
    path = saved(images=[numpy.arange(500 * 400).reshape(500, 400).astype("uint16")])
    f = orbntf.open(path)
    wanted = f.images[0].read()
    failed = []

    def work(number):
        for i in range(30):
            window = (number * 10 + i, i, 50, 60)
            piece = wanted[:, window[0]:window[0] + 50, window[1]:window[1] + 60]
            if not numpy.array_equal(f.images[0].read(window), piece):
                failed.append(window)

    threads = [threading.Thread(target=work, args=(number,)) for number in range(8)]
    [thread.start() for thread in threads]
    [thread.join() for thread in threads]
    assert not failed
    again = pickle.loads(pickle.dumps(f))
    assert numpy.array_equal(again.images[0].read(), wanted)
    memory = orbntf.open(bytearray(pathlib.Path(path).read_bytes()))
    assert numpy.array_equal(pickle.loads(pickle.dumps(memory)).images[0].read(), wanted)


def test_signals_end_long_work():
    noise = numpy.random.default_rng(1).integers(0, 255, (1500, 1500), "uint8")
    f = orbntf.open(saved(images=[noise], jpeg2000=True))
    other = orbntf.open(saved(images=[noise[:, ::-1]], jpeg2000=True))
    tried = []

    def ring(*_):
        try:
            f.images[0].read((0, 0, 1, 1))
            signal.setitimer(signal.ITIMER_REAL, 0.005)  # the work has not begun yet
        except orbntf.Error as error:
            tried.append(error.status)
            raise KeyboardInterrupt from None

    before = signal.signal(signal.SIGALRM, ring)
    try:
        for work in (lambda: f.images[0].read(), lambda: f.render(), lambda: orbntf.diff(f, other)):
            begun = time.process_time()
            work()
            whole = time.process_time() - begun
            begun = time.process_time()
            signal.setitimer(signal.ITIMER_REAL, 0.01)
            with pytest.raises(KeyboardInterrupt):
                for _ in range(20):
                    work()
            assert time.process_time() - begun < 5 * whole
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)
    assert tried == ["invalid"] * 3
    assert f.images[0].read((0, 0, 2, 2)).shape == (1, 2, 2)


def test_a_thread_that_reads_does_not_hinder_the_end():
    path = saved(images=[numpy.zeros((2000, 2000), "uint8")])
    script = ("import sys, threading, time, orbntf\nf = orbntf.open(sys.argv[1])\n"
              "def work():\n    while True: f.check()\n"
              "threading.Thread(target=work, daemon=True).start()\ntime.sleep(0.2)\n")
    ended = subprocess.run([sys.executable, "-c", script, str(path)], capture_output=True, text=True, timeout=60)
    assert ended.returncode == 0, ended.stderr


def test_nothing_is_kept():
    path = saved(images=[numpy.zeros((1000, 1000), "uint16")])

    def held():
        for line in open("/proc/self/status"):
            if line.startswith("VmRSS"):
                return int(line.split()[1])

    for turn in range(60):
        f = orbntf.open(path)
        f.images[0].read(), f.render(size=100), f.check(), f.edit()
        if turn == 20:
            before = held()
    assert held() - before < 20000, "kilobytes of 40 turns that hold 4 MB each"
