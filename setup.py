"""Builds the package's module by CMake, with the library inside it."""

import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        source, build = pathlib.Path(__file__).parent.resolve(), pathlib.Path(self.build_temp).resolve()
        target = pathlib.Path(self.get_ext_fullpath(ext.name)).resolve()
        subprocess.run(["cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DORBNTF_TESTS=OFF",
                        "-DORBNTF_INSTALL=OFF", "-DORBNTF_PYTHON_ALONE=ON", f"-DPython3_EXECUTABLE={sys.executable}"],
                       check=True)
        subprocess.run(["cmake", "--build", build, "--target", "orbntf_python"], check=True)
        made = next((build / "python" / "orbntf").glob("_core.*"))
        target.parent.mkdir(parents=True, exist_ok=True)
        self.copy_file(str(made), str(target))
        self.plugins = made.parent / f"orbntf-{self.distribution.get_version()}"
        self.copy_plugins(target.parent)

    def copy_plugins(self, folder):
        if self.plugins.is_dir():
            self.copy_tree(str(self.plugins), str(folder / self.plugins.name))

    def copy_extensions_to_source(self):
        super().copy_extensions_to_source()
        self.copy_plugins(pathlib.Path(__file__).parent / "python" / "orbntf")


lists = (pathlib.Path(__file__).parent / "CMakeLists.txt").read_text()
setup(version=re.search(r"project\(orbntf VERSION ([0-9.]+)", lists).group(1), ext_modules=[Extension("orbntf._core", sources=[])], cmdclass={"build_ext": CMakeBuild})
