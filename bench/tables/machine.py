"""What the figures were measured on, and of what."""

import os
import subprocess
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]


def answer_of(*command):
    """Returns: what a command prints, without the end of its line."""
    return subprocess.run(command, cwd=SOURCE, check=True, text=True, stdout=subprocess.PIPE).stdout.strip()


def colon_fields(path, divider):
    """Returns: the fields of a file that has one on each line; of those with one name the last."""
    lines = (line.partition(divider) for line in Path(path).read_text().splitlines() if divider in line)
    return {name.strip(): value.strip().strip('"') for name, _, value in lines}


def processor():
    fields = colon_fields("/proc/cpuinfo", ":")
    return {
        "name": fields.get("model name", os.uname().machine),
        "family": fields.get("cpu family", "?"),
        "model": fields.get("model", "?"),
        "count": len(os.sched_getaffinity(0)),
    }


def revision():
    """Returns: the commit, and what tells that the working tree is another one."""
    changed = answer_of("git", "status", "--porcelain", "--untracked-files=no")
    return answer_of("git", "rev-parse", "--short=10", "HEAD") + (" and changes" if changed else "")


def compiler(build):
    """Returns: name and version of the compiler of a build folder."""
    cache = colon_fields(build / "CMakeCache.txt", "=")
    program = next(value for name, value in cache.items() if name.startswith("CMAKE_CXX_COMPILER:"))
    return answer_of(program, "--version").splitlines()[0]


def describe(build):
    return {
        "date": answer_of("date", "-u", "+%F"),
        "commit": revision(),
        "compiler": compiler(build),
        "system": colon_fields("/etc/os-release", "=").get("PRETTY_NAME", "?"),
        "kernel": os.uname().release,
        "processor": processor(),
    }
