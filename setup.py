"""Builds the Python package: its module and libraries are CMake's, the rest is setuptools'.

VESK_BUILD_DIR names a folder that CMake has configured already, with -DVESK_PYTHON=ON, to take
them from.
"""

import os
import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent


class CMakeBuild(build_ext):
    """Has CMake build the module and put it and its libraries where the wheel is made of."""

    def build_extension(self, extension):
        target = pathlib.Path(self.get_ext_fullpath(extension.name)).resolve().parent.parent
        folder = os.environ.get("VESK_BUILD_DIR")
        if not folder:
            folder = str(pathlib.Path(self.build_temp).resolve())
            self.spawn_cmake("-S", str(ROOT), "-B", folder, "-DCMAKE_BUILD_TYPE=Release",
                             "-DVESK_PYTHON=ON", "-DVESK_BUILD_TOOLS=OFF", "-DBUILD_TESTING=OFF",
                             f"-DVESK_PYTHON_EXECUTABLE={sys.executable}")
        self.spawn_cmake("--build", folder, "--target", "vesk_python", "--parallel",
                         str(os.cpu_count()))
        self.spawn_cmake("--install", folder, "--component", "wheel", "--strip", "--prefix",
                         str(target))
        # A wheel has no links: the libraries bear the names that are looked for.
        for link in (target / "vesk").glob("lib*.so.*"):
            if link.is_symlink():
                link.resolve().replace(link)

    @staticmethod
    def spawn_cmake(*arguments):
        subprocess.run(["cmake", *arguments], check=True)


def version():
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"VERSION (\d+\.\d+\.\d+)", text).group(1)


setup(version=version(), ext_modules=[Extension("vesk._vesk", [])],
      cmdclass={"build_ext": CMakeBuild})
