# SPDX-License-Identifier: Apache-2.0
"""Lets CMake build the extension of the Python package; pyproject.toml says the rest."""

import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent
# The libraries are linked into the extension.
OPTIONS = ["BUILD_SHARED_LIBS=OFF", "CMAKE_BUILD_TYPE=Release", "VESKAR_BUILD_EXAMPLES=OFF",
           "VESKAR_BUILD_TESTS=OFF", "VESKAR_INSTALL=OFF", "VESKAR_PYTHON=ON",
           "VESKAR_QUICK_BUILD=ON"]


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        tree = pathlib.Path(self.build_temp).resolve()
        options = [*OPTIONS, f"Python_EXECUTABLE={sys.executable}"]
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        subprocess.run(["cmake", "-S", ROOT, "-B", tree, *generator,
                        *(f"-D{option}" for option in options)], check=True)
        subprocess.run(["cmake", "--build", tree, "--target", "veskar_python", "--parallel"],
                       check=True)
        made = pathlib.Path(self.get_ext_fullpath(extension.name))
        made.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(tree / "python" / "veskar" / made.name, made)


def version():
    return re.search(r"^  VERSION (.*)$", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)[1]


setup(version=version(), ext_modules=[Extension("veskar._veskar", [])],
      cmdclass={"build_ext": CMakeBuild})
