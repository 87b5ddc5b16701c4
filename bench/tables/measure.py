"""Runs the programs of a build and gathers what they print."""

import json
import os
import re
import subprocess
import sys
import time
from pathlib import Path

import machine

SOURCE = machine.SOURCE
BUILD = SOURCE / "build/release"
TARGETS = ("tesk", "tesk_peers", "tesk_calls", "tesk_bench", "tesk_cold_run", "sample_image")
LEVELS = ("avx512", "avx2", "scalar")
# The status of a program whose processor lacks the level.
SKIPPED = 77
# The photograph of README.md, in its stream.
CAT = SOURCE / "docs/images/cat.tk"
COLD_LINE = re.compile(
    r"(?P<word>\w+) +(?P<wall_ms>[\d.]+) ms +[\d.]+ ns/sample +cpu +(?P<cpu_ms>[\d.]+) ms +peak +(?P<peak_mb>[\d.]+) MB"
    r" +(?P<faults>\d+) faults +in process +(?P<in_process_ms>[\d.]+) ms"
)


def say(step, began=None):
    took = "" if began is None else f": {time.monotonic() - began:.0f} s"
    print(f"{step}{took}", file=sys.stderr, flush=True)


def output_of(*command, **options):
    """Returns: what a program prints on standard output. Its end with another status than 0 ends all."""
    began = time.monotonic()
    done = subprocess.run([*map(str, command)], text=True, stdout=subprocess.PIPE, check=True, **options)
    say(" ".join(map(str, command))[:100], began)
    return done.stdout


def build():
    """What it prints goes to standard error."""
    for command in (["cmake", "--preset", "release", "-DTESK_BUILD_TESTS=OFF"],
                    ["cmake", "--build", BUILD, "--target", *TARGETS]):  # fmt: skip
        subprocess.run(command, cwd=SOURCE, check=True, stdout=sys.stderr)


def kind_of(picture):
    """Returns: gray8, rgb8, gray12 and so on."""
    if picture["bytesPerPixel"] == 3:
        return "rgb8"
    return f"gray{picture['bitsPerPixel']}"


def labelled(picture, group):
    """Returns: a picture as the programs print it, with its kind, in a group of pictures."""
    name = Path(picture["name"]).stem
    kind = kind_of(picture)
    rest = {key: value for key, value in picture.items() if key not in ("name", "bytesPerPixel", "bitsPerPixel")}
    return {"group": group, "name": name.removesuffix(f"-{kind}"), "kind": kind, **rest}


def pictures(groups, program, *arguments):
    """Runs a program on the pictures of each group. Returns: what it printed, without its pictures, and these."""
    head, found = {}, []
    for group, images in groups.items():
        head = json.loads(output_of(BUILD / "bench" / program, *arguments, "--json", *images))
        found += [labelled(picture, group) for picture in head.pop("pictures")]
    return head, found


def has_level(level):
    probe = [BUILD / "bench/peers", f"--cpu-level={level}", "--no-such-option"]
    return subprocess.run(probe, stderr=subprocess.DEVNULL).returncode != SKIPPED


def peers(groups, rounds):
    """Returns: versions of the codecs, and figures: of all codecs at the best level, of tesk at the others."""
    best, *others = filter(has_level, LEVELS)
    head, found = pictures(groups, "peers", f"--cpu-level={best}", f"--rounds={rounds}")
    figures = [{"level": best, **picture} for picture in found]
    measured = {name: images for name, images in groups.items() if name != "page"}
    for level in others:
        _, found = pictures(measured, "peers", f"--cpu-level={level}", f"--rounds={rounds}", "--own")
        figures += [{"level": level, **picture} for picture in found]
    return head["versions"], figures


def least_times(printed):
    """Returns: the least processor time of each benchmark of tesk_bench, in ms, and the memory that its call held."""
    least = {}
    for run in json.loads(printed)["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        work, kind, *levels = run["name"].split("/")
        samples = run["time/sample"] and run["cpu_time"] / 1e3 / run["time/sample"]
        figures = {"work": work, "kind": kind, "levels": int(levels[0]) if levels else 0,
                   "ms": round(run["cpu_time"], 5), "memory_bytes": round(run["memory/sample"] * samples)}  # fmt: skip
        known = least.setdefault(run["name"], figures)
        known["ms"] = min(known["ms"], figures["ms"])
    return list(least.values())


def warm(rounds):
    """Row by row, and reduced pictures."""
    return least_times(
        output_of(BUILD / "bench/tesk_bench", "--benchmark_format=json", f"--benchmark_repetitions={rounds}",
                  "--benchmark_min_time=0.05", "--benchmark_enable_random_interleaving=true"))  # fmt: skip


def cold_figures(printed):
    kind, found = None, []
    for line in printed.splitlines():
        match = COLD_LINE.search(line)
        if match is None:
            kind = line.strip()
            continue
        numbers = {key: float(value) for key, value in match.groupdict().items() if key != "word"}
        found.append({"kind": kind, "word": match["word"], **numbers, "faults": int(match["faults"])})
    return found


def cold(rounds):
    return cold_figures(output_of(SOURCE / "tools/bench-cold", BUILD, env=dict(os.environ, RUNS=str(rounds))))


def photographs(folder, names):
    made = output_of(SOURCE / "tools/bench-photographs", folder, *names).split()
    raw = folder / "cat-rgb8.raw"
    output_of(BUILD / "tesk", "d", CAT, raw)
    return {"generated": [], "photographs": made, "page": [f"--image={raw},3,8,451,300"]}


def everything(folder, names, rounds):
    """Returns: all figures, after some minutes."""
    load = os.getloadavg()[0]
    build()
    about = machine.describe(BUILD)
    groups = photographs(folder, names)
    versions, codecs = peers(groups, rounds)
    _, calls = pictures({name: groups[name] for name in ("generated", "photographs")}, "calls", f"--rounds={rounds}")
    return {**about, "rounds": rounds, "versions": versions, "peers": codecs, "calls": calls,
            "warm": warm(rounds), "cold": cold(rounds), "load": [round(load, 2), round(os.getloadavg()[0], 2)]}  # fmt: skip
