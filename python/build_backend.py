"""Builds wheels and source distributions with setuptools, from the network's packages or from the system's.

pip builds in an environment that sees no package of the system, and fetches what pyproject.toml asks for. Where
there is no network that fails, although Debian's packages are all that is needed. So what is asked for depends
on what the interpreter's own folders hold."""

import importlib.util
import sys
import sysconfig

# What the build imports, and what a network is asked for where the interpreter lacks it.
_NEEDED = {"setuptools": "setuptools>=61", "wheel": "wheel", "cffi": "cffi>=1.15"}


def _add_folders_of_the_interpreter():
    folders = [sysconfig.get_path("purelib"), sysconfig.get_path("platlib"), "/usr/lib/python3/dist-packages"]
    sys.path.extend(folder for folder in dict.fromkeys(folders) if folder not in sys.path)


def _missing():
    return [wanted for module, wanted in _NEEDED.items() if importlib.util.find_spec(module) is None]


_add_folders_of_the_interpreter()


def get_requires_for_build_wheel(config_settings=None):
    return _missing()


def get_requires_for_build_sdist(config_settings=None):
    return _missing()


def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None):
    from setuptools import build_meta

    return build_meta.prepare_metadata_for_build_wheel(metadata_directory, config_settings)


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    from setuptools import build_meta

    return build_meta.build_wheel(wheel_directory, config_settings, metadata_directory)


def build_sdist(sdist_directory, config_settings=None):
    from setuptools import build_meta

    return build_meta.build_sdist(sdist_directory, config_settings)
