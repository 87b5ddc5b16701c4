"""Figures in a file, and programs of tools/ that make them as modules."""

import importlib.machinery
import importlib.util
import json

from machine import SOURCE


def member_text(member):
    if isinstance(member, list) and member and isinstance(member[0], dict):
        return "[\n" + ",\n".join(map(json.dumps, member)) + "\n]"
    return json.dumps(member)


def text_of(figures):
    """Returns: one line for each member, and for each picture or run of a list."""
    return "{\n" + ",\n".join(f"{json.dumps(name)}: {member_text(member)}" for name, member in figures.items()) + "\n}\n"


def program(name):
    """Returns: a program of tools/ as a module, for its functions."""
    loader = importlib.machinery.SourceFileLoader(name.replace("-", "_"), str(SOURCE / "tools" / name))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module
