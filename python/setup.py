"""Builds the C++ library with CMake and links it into the extension module.

The sources are those of the checkout around this folder, or the copy that a source distribution has in `core`.
Where the environment names a build tree of tesk in TESK_BUILD_TREE, its static library is taken instead."""

import os
import re
import shutil
import subprocess
from pathlib import Path

from setuptools import setup
from setuptools.command.build_ext import build_ext
from setuptools.command.sdist import sdist

HERE = Path(__file__).resolve().parent
CORE = HERE / "core" if (HERE / "core").is_dir() else HERE.parent
CORE_PARTS = ["CMakeLists.txt", "cmake", "src", "LICENSE"]


def version():
    header = (CORE / "src/api/Version.h").read_text()
    return ".".join(re.findall(r"define TESK_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", header))


def build_library(folder):
    """Returns: the build tree with the static library."""
    if os.environ.get("TESK_BUILD_TREE"):
        return Path(os.environ["TESK_BUILD_TREE"]).resolve()
    if shutil.which("cmake") is None:
        raise SystemExit("tesk is built with CMake, and there is no command cmake: apt-get install cmake g++ make")
    settings = ["-DCMAKE_BUILD_TYPE=Release", "-DBUILD_SHARED_LIBS=OFF", "-DTESK_BUILD_TOOLS=OFF", "-DTESK_INSTALL=OFF",
                "-DCMAKE_UNITY_BUILD=ON"]  # a third of the compiler's time
    subprocess.run(["cmake", "-S", CORE, "-B", folder, *settings], check=True)
    jobs = str(os.cpu_count() or 1)
    subprocess.run(["cmake", "--build", folder, "--target", "tesk_static", "--parallel", jobs], check=True)
    return folder


class BuildExtension(build_ext):
    def run(self):
        tree = build_library(Path(self.build_temp).resolve() / "core")
        for extension in self.extensions:
            extension.include_dirs.append(str(tree / "include"))
            extension.extra_objects.append(str(tree / "libtesk.a"))
            extension.depends.append(str(tree / "libtesk.a"))
        super().run()


class SourceDistribution(sdist):
    """A source distribution holds the C++ sources, too."""

    def make_release_tree(self, base_dir, files):
        super().make_release_tree(base_dir, files)
        for part in CORE_PARTS:
            copy = shutil.copytree if (CORE / part).is_dir() else shutil.copy
            target = Path(base_dir) / "core" / part
            target.parent.mkdir(exist_ok=True)
            copy(CORE / part, target)


setup(
    version=version(),
    packages=["tesk"],
    package_dir={"": "src"},
    package_data={"tesk": ["py.typed", "*.pyi"]},
    cffi_modules=["build_tesk.py:builder"],
    cmdclass={"build_ext": BuildExtension, "sdist": SourceDistribution},
)
