"""The examples are run as users run them: as programs, with the module that the tests use."""

import importlib.util
import os
import subprocess
import sys
from pathlib import Path

import pytest

EXAMPLES = Path(__file__).resolve().parents[2] / "examples/python"


class Example:
    """A program of examples/python, in a folder of its own."""

    def __init__(self, folder):
        self.folder = folder

    def environment(self):
        """With the folders of PYTHONPATH as seen from here: programs start elsewhere."""
        folders = os.environ.get("PYTHONPATH", "").split(os.pathsep)
        return dict(os.environ, PYTHONPATH=os.pathsep.join(map(os.path.abspath, filter(None, folders))))

    def command(self, name, *arguments):
        return [sys.executable, "-B", str(EXAMPLES / name), *map(str, arguments)]

    def start(self, name, *arguments):
        return subprocess.Popen(
            self.command(name, *arguments),
            cwd=self.folder,
            text=True,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            env=self.environment(),
        )

    def run(self, name, *arguments, status=0):
        """Returns: what the program printed, on standard error too."""
        with self.start(name, *arguments) as process:
            printed, _ = process.communicate(timeout=120)
        assert process.returncode == status, printed
        return printed

    def module(self, name):
        """Returns: the program as a module, for its functions."""
        place = importlib.util.spec_from_file_location(name, EXAMPLES / f"{name}.py")
        module = importlib.util.module_from_spec(place)
        place.loader.exec_module(module)
        return module


@pytest.fixture
def example(tmp_path):
    return Example(tmp_path)
