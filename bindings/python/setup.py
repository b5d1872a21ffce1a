"""The wheel: setuptools with CMake for the module itself."""

import os
import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

TOP = pathlib.Path(__file__).resolve().parents[2]
VERSION = re.findall(r"VIDPROC_VERSION_[A-Z]+ +(\d+)\n", (TOP / "include/vidproc/vidproc.h").read_text())


class CMakeBuild(build_ext):
    def build_extension(self, ext: Extension) -> None:
        others = [f"-D{name}=OFF" for name in ("BUILD_TESTING", "VIDPROC_BUILD_TOOL", "VIDPROC_BUILD_BENCH")]
        build = pathlib.Path(self.build_temp).resolve()
        subprocess.check_call(
            ["cmake", "-S", TOP, "-B", build, "-DCMAKE_BUILD_TYPE=Release", f"-DPython_EXECUTABLE={sys.executable}"]
            + others
        )
        subprocess.check_call(["cmake", "--build", build, "--target", "vidproc_python", "-j", str(os.cpu_count())])
        target = pathlib.Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        self.copy_file(build / "bindings/python/vidproc" / target.name, target)


setup(
    version=".".join(VERSION),
    ext_modules=[Extension("vidproc._vidproc", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)
