"""What bench/tables reads out of what the programs print."""

import json
import unittest

from bench_case import SOURCE, program

import measure


class Printed(unittest.TestCase):
    def test_runs_of_the_tool_belong_to_the_picture_above_them(self):
        printed = """gray8
  c       11.6 ms     1.93 ns/sample  cpu     11.5 ms  peak    6.0 MB     808 faults  in process      7.0 ms
gray16
  dc      37.8 ms     6.30 ns/sample  cpu     37.7 ms  peak   45.6 MB    5375 faults  in process     19.4 ms
"""
        self.assertEqual(measure.cold_figures(printed), [
            {"kind": "gray8", "word": "c", "wall_ms": 11.6, "cpu_ms": 11.5, "peak_mb": 6.0, "faults": 808,
             "in_process_ms": 7.0},
            {"kind": "gray16", "word": "dc", "wall_ms": 37.8, "cpu_ms": 37.7, "peak_mb": 45.6, "faults": 5375,
             "in_process_ms": 19.4}])  # fmt: skip

    def test_the_lines_are_those_that_bench_cold_prints(self):
        script = (SOURCE / "tools/bench-cold").read_text()
        self.assertIn('"  %-3s %8.1f ms %8.2f ns/sample  cpu %8.1f ms  peak %6.1f MB  %6d faults"', script)

    def test_the_least_time_of_a_benchmark_counts(self):
        def run(name, ms, kind="iteration"):
            return {"name": name, "run_type": kind, "cpu_time": ms, "time/sample": ms / 1e3 / 6e6, "memory/sample": 0.5}

        printed = json.dumps({"benchmarks": [
            run("reduce/gray8/3", 5), run("reduce/gray8/3", 4), run("reduce/gray8/3", 6),
            run("reduce/gray8/3", 1, "aggregate"), run("compressRows/rgb8", 30)]})  # fmt: skip
        self.assertEqual(measure.least_times(printed), [
            {"work": "reduce", "kind": "gray8", "levels": 3, "ms": 4, "memory_bytes": 3000000},
            {"work": "compressRows", "kind": "rgb8", "levels": 0, "ms": 30, "memory_bytes": 3000000}])  # fmt: skip

    def test_pictures_are_named_after_their_files(self):
        picture = {"name": "/tmp/camera-gray12.raw", "bytesPerPixel": 2, "bitsPerPixel": 12, "samples": 9}
        self.assertEqual(measure.labelled(picture, "photographs"),
                         {"group": "photographs", "name": "camera", "kind": "gray12", "samples": 9})  # fmt: skip
        generated = {"name": "rgb8", "bytesPerPixel": 3, "bitsPerPixel": 8}
        self.assertEqual(measure.labelled(generated, "generated"), {"group": "generated", "name": "rgb8", "kind": "rgb8"})


class Arguments(unittest.TestCase):
    def test_photographs_are_those_that_there_are(self):
        chosen = program("bench-figures").arguments(["--rounds=2", "--photographs=camera,coffee"])
        self.assertEqual((chosen.rounds, chosen.photographs), (2, ["camera", "coffee"]))


if __name__ == "__main__":
    unittest.main()
