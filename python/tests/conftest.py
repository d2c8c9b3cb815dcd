"""What the tests share: the tool, files of every kind, and a scratch folder."""

import os
import pathlib
import subprocess

import numpy
import pytest

import orbntf

TOOL = os.environ["ORBNTF_TOOL"]


def run(*words, code=0):
    done = subprocess.run([TOOL, *map(str, words)], capture_output=True)
    assert done.returncode == code, (words, done.stderr)
    return done.stdout


def arrays():
    random = numpy.random.default_rng(20261126)
    for kind, shape in (("uint8", (1, 40, 50)), ("uint16", (3, 33, 70)), ("int16", (2, 20, 20)), ("uint32", (1, 9, 11)),
                        ("float32", (1, 31, 17)), ("float64", (4, 12, 12)), ("complex64", (1, 20, 30))):
        values = random.normal(0, 50, shape) if kind[0] != "u" else random.integers(0, 250, shape)
        yield kind, values.astype(kind)


@pytest.fixture(scope="session")
def made(tmp_path_factory):
    """Files that the package wrote, and the samples where there are any."""
    folder = tmp_path_factory.mktemp("made")
    for kind, array in arrays():
        orbntf.new(folder / f"{kind}.ntf", images=[array], texts=["some words"])
    orbntf.new(folder / "colour.ntf", images=[arrays_colour()], jpeg2000=True)
    orbntf.new(folder / "jpeg.ntf", images=[arrays_colour()], jpeg=90, block=16)
    samples = os.environ.get("ORBNTF_SAMPLES")
    paths = sorted(folder.iterdir())
    if samples:
        paths += [path for path in sorted(pathlib.Path(samples).iterdir()) if path.suffix in (".ntf", ".nsf")]
    return paths


def arrays_colour():
    rows, columns = numpy.mgrid[0:60, 0:80]
    return numpy.stack([rows * 4, columns * 3, rows + columns]).astype("uint8")
