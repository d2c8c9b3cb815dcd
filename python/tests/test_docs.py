"""The recipes of the documentation, one behind the other as they stand there, and the archive job."""

import os
import pathlib
import re

import numpy
import pytest

import orbntf

PAGES = pathlib.Path(__file__).parents[2] / "docs"


def blocks(page):
    return re.findall(r"^```python\n(.*?)^```", (PAGES.parent / page if page == "README.md" else PAGES / page).read_text(), re.M | re.S)


def archive(folder):
    array = numpy.random.default_rng(3).integers(0, 255, (3, 200, 150)).astype("uint8")
    os.mkdir(folder / "archive")
    for number in range(4):
        orbntf.new(folder / "archive" / f"{number}.ntf", images=[array], fields={"FTITLE": f"Number {number}"})
    (folder / "archive" / "broken.nitf").write_bytes(b"no file of this kind")
    orbntf.open(folder / "archive" / "0.ntf").edit().set("image:0", "ICORDS", "D").set(
        "image:0", IGEOLO="+52.000+010.000+52.000+011.000+51.000+011.000+51.000+010.000").save(folder / "scene.ntf")
    orbntf.open(folder / "scene.ntf").edit().set_record("image:0", "MADEUP", b"1").save(folder / "archive" / "4.ntf")


@pytest.mark.parametrize("page", ["README.md", "python.md", "scale.md"])
def test_recipes_run(page, tmp_path, monkeypatch):
    for module in ("PIL", "dask"):
        pytest.importorskip(module)
    archive(tmp_path)
    monkeypatch.chdir(tmp_path)
    names = {}
    assert blocks(page)
    for number, block in enumerate(blocks(page)):
        exec(compile(block, f"{page}, block {number}", "exec"), names)  # noqa: S102
    assert page != "python.md" or len(list((tmp_path / "archive").glob("*.png"))) == 5
    assert page != "python.md" or "MADEUP" not in (tmp_path / "records.csv").read_text()


def test_the_stubs_are_those_of_the_package():
    import ast
    import inspect
    tree = ast.parse((pathlib.Path(orbntf.__file__).parent / "__init__.pyi").read_text())
    names = set()
    for node in tree.body:
        if isinstance(node, (ast.ClassDef, ast.FunctionDef)):
            names.add(node.name)
            real = getattr(orbntf, node.name)
            assert real.__doc__, node.name
        if isinstance(node, ast.FunctionDef):
            assert [a.arg for a in node.args.args] == list(inspect.signature(real).parameters), node.name
        for method in (m for m in getattr(node, "body", []) if isinstance(node, ast.ClassDef) and isinstance(m, ast.FunctionDef)):
            found = getattr(real, method.name)
            if callable(found):
                arguments = [a.arg for a in method.args.args] + [a.arg for a in (method.args.vararg, method.args.kwarg) if a]
                assert arguments == list(inspect.signature(found).parameters), (node.name, method.name)
    assert names == set(orbntf.__all__)
    for name in ("File", "Image", "Edit"):
        for member, value in vars(getattr(orbntf, name)).items():
            assert member.startswith("_") or getattr(value, "__doc__", None) or member == "significant_bits", (name, member)
