"""tesk-convert is ended at random moments: what has its name is whole, and --resume does the rest."""

import os
import random
import signal
import time
import unittest

import numpy

from convert_case import ConvertCase, npy

SEED = 20261122
FILES = 100
ROUNDS = 6


class Interruption(ConvertCase):
    def setUp(self):
        super().setUp()
        self.dice = random.Random(SEED)
        noise = numpy.random.default_rng(SEED)
        for number in range(FILES):
            samples = noise.integers(0, 4096, (100 + number, 200)).astype("<u2")
            self.write(f"in/{number % 5}/{number}.npy", npy(samples))
        begin = time.monotonic()
        self.convert("-j2", "-r", "-d", "whole", "in")
        self.seconds = time.monotonic() - begin
        self.whole = self.contents("whole")
        self.assertEqual(len(self.whole), FILES)

    def contents(self, folder):
        """The files below a folder that are not temporary ones."""
        root = self.path(folder)
        return {str(path.relative_to(root)): path.read_bytes() for path in root.rglob("*")
                if path.is_file() and ".part-" not in path.name}

    def interrupt(self, number, *arguments, **options):
        """Starts a batch and sends it a signal at a random moment. Returns: its status."""
        process = self.start("-j2", "-r", *arguments, **options)
        time.sleep(self.dice.random() * self.seconds)
        process.send_signal(number)
        errors = process.communicate(timeout=100)[1]
        self.assertNotIn(b"Sanitizer", errors)
        return process.returncode

    def require_whole(self, folder):
        """Returns: how many files are there, each as if nothing had happened."""
        found = self.contents(folder)
        for name, data in found.items():
            self.assertEqual(data, self.whole[name], name)
        return len(found)

    def test_kill_leaves_no_half_file_and_resume_does_the_rest(self):
        for round_number in range(ROUNDS):
            folder = f"out{round_number}"
            status = self.interrupt(signal.SIGKILL, "-d", folder, "in")
            self.assertIn(status, (0, -signal.SIGKILL))
            there = self.require_whole(folder)
            self.convert("-q", "--log", f"log{round_number}", "--resume", "-j2", "-r", "-d", folder, "in")
            self.assertEqual(self.require_whole(folder), FILES)
            words = [line.split("\t")[1] for line in self.path(f"log{round_number}").read_text().splitlines()]
            self.assertEqual((words.count("passed over"), words.count("converted")), (there, FILES - there))

    def test_a_batch_that_is_killed_again_and_again_comes_to_its_end(self):
        self.seconds /= 3
        status = None
        while status != 0:
            status = self.interrupt(signal.SIGKILL, "--resume", "-d", "out", "in")
            self.assertIn(status, (0, -signal.SIGKILL))
            self.require_whole("out")
            self.seconds *= 1.2
        self.assertEqual(self.require_whole("out"), FILES)

    def test_what_kill_leaves_is_passed_over(self):
        self.interrupt(signal.SIGKILL, "-d", "out", "in")
        self.write("out/0/.0.npy.tk.part-4711", b"TK30 and so on")
        self.convert("-q", "-r", "--check", "out")
        self.convert("-q", "-r", "-d", "back", "out")
        self.assertEqual(len(self.contents("back")), len(self.contents("out")))
        for name in self.contents("back"):
            self.require_same(f"in/{name}", f"back/{name}")

    def test_signals_leave_nothing_but_whole_files(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP) * (ROUNDS // 2):
            status = self.interrupt(number, "--resume", "-d", "out", "in")
            self.assertIn(status, (0, -number))
            self.assertEqual(self.part_names(), [])
            if self.require_whole("out") == FILES:
                self.path("out").rename(self.path(f"out-{len(list(self.folder.iterdir()))}"))

    def test_images_are_as_safe_as_streams(self):
        for number in (signal.SIGTERM, signal.SIGKILL):
            self.interrupt(number, "-f", "-d", "back", "whole")
            for name in self.contents("back"):
                self.require_same(f"in/{name}", f"back/{name}")
            self.assertTrue(number == signal.SIGKILL or self.part_names() == [])

    def test_a_signal_that_is_ignored_stays_ignored(self):
        """As under nohup."""
        def ignore():
            signal.signal(signal.SIGHUP, signal.SIG_IGN)
        self.assertEqual(self.interrupt(signal.SIGHUP, "-d", "out", "in", preexec_fn=ignore), 0)
        self.assertEqual(self.require_whole("out"), FILES)

    def test_a_signal_ends_what_waits_for_its_input(self):
        reader, writer = os.pipe()
        process = self.start("-", "x.tk", stdin=reader)
        time.sleep(0.2)
        process.terminate()
        self.assertEqual(process.wait(timeout=100), -signal.SIGTERM)
        process.stderr.close()
        for number in (reader, writer):
            os.close(number)

    def test_a_signal_of_another_kind_takes_no_protection(self):
        reader, writer = os.pipe()
        process = self.start("-", "x.tk", stdin=reader)
        time.sleep(0.2)
        process.send_signal(signal.SIGUSR1)
        time.sleep(0.1)
        process.terminate()
        try:
            self.assertIn(process.wait(timeout=5), (-signal.SIGTERM, -signal.SIGUSR1))
        finally:
            process.kill()
            process.communicate()
            for number in (reader, writer):
                os.close(number)


if __name__ == "__main__":
    unittest.main()
