"""tesk-convert with the standard input and output, devices, full disks, what may not be read, and other processes."""

import os
import pty
import resource
import shutil
import subprocess
import unittest
from pathlib import Path

import numpy

from convert_case import ENVIRONMENT, NOBODY, PROGRAM, ConvertCase, npy, picture, png, pnm

NO_ROOM = "No space left on device"


class Outputs(ConvertCase):
    def setUp(self):
        super().setUp()
        self.samples = picture(30, 20)
        self.write("a.png", png(self.samples))
        self.write("large.npy", npy(numpy.random.default_rng(1).integers(0, 65536, (300, 400)).astype("<u2")))


class Pipes(Outputs):
    def test_standard_input_and_output(self):
        stream = self.run_program("-", "-", input=pnm(self.samples)).stdout
        self.assertEqual(self.run_program("-", input=pnm(self.samples)).stdout, stream)
        self.assertEqual(self.run_program("a.png", "-").stdout, stream)
        self.write("a.tk", stream)
        self.convert("--check", "a.tk")
        self.convert("--check", "-", input=stream)
        for output in ("png:-", "tif:-", "npy:-", "pgm:-", "pam:-"):
            for arguments, given in ((["-", output], stream), (["a.tk", output], b"")):
                self.write("back", self.run_program(*arguments, input=given).stdout)
                self.require_samples("back", self.samples)
        self.assertEqual(self.run_program("a.tk", "raw:-").stdout, self.samples.tobytes())
        self.convert("-", "b.png", input=stream)
        self.require_same("b.png", "a.png")

    def test_a_stream_on_the_standard_input_needs_a_format(self):
        stream = self.run_program("a.png", "-").stdout
        self.refuse("-: has no name to make that of an image from: name an OUTPUT, as png:-", "-", input=stream)

    def test_a_file_named_as_the_standard_input(self):
        self.write("-", b"something else")
        self.convert("-", "b.tk", input=pnm(self.samples))
        self.convert("b.tk", "b.png")
        self.require_same("b.png", "a.png")

    def test_a_pipe_as_input_and_output(self):
        os.mkfifo(self.path("pipe"))
        with subprocess.Popen(["sh", "-c", "cat a.png >pipe"], cwd=self.folder):
            self.convert("pipe", "b.tk")
        process = self.start("-f", "b.tk", "png:pipe")
        self.write("back", self.path("pipe").read_bytes())
        self.assertEqual(process.communicate()[1], b"")
        self.require_same("back", "a.png")

    def test_a_reader_that_went_away_is_an_error_with_words(self):
        for arguments in (["a.png", "-"], ["large.npy", "-"]):
            reader, writer = os.pipe()
            os.close(reader)
            done = self.run_program(*arguments, stdout=writer)
            os.close(writer)
            words = f"tesk-convert: {arguments[0]}: cannot write the standard output: Broken pipe\n"
            self.assertEqual((done.returncode, done.stderr.decode()), (1, words))
        with self.start("large.npy", "-", stdout=subprocess.PIPE) as process:
            self.assertEqual(len(process.stdout.read(1)), 1)
            process.stdout.close()
            self.assertIn(b"Broken pipe", process.stderr.read())
        self.assertEqual(process.returncode, 1)

    def test_nothing_goes_to_a_terminal_unless_it_must(self):
        master, terminal = pty.openpty()
        self.refuse("a.png: its output would go to a terminal: -f lets it", "a.png", "-", stdout=terminal)
        self.convert("-f", "a.png", "-", stdout=terminal)
        self.assertIn(b"TKTRAIL1", os.read(master, 10000))
        os.close(terminal)
        os.close(master)

    def test_a_terminal_sees_how_far_the_work_is(self):
        master, terminal = pty.openpty()
        self.run_program("-d", "out", "a.png", "large.npy", stderr=terminal)
        self.assertRegex(os.read(master, 10000).decode(), r"2 of 2 files, 240\.6 KB of pixels, ")
        os.close(terminal)
        os.close(master)

    def test_closed_descriptors_do_no_harm(self):
        """What is opened must not take the place of a standard output, which others write to."""
        for number in (0, 1, 2):
            shell = ["sh", "-c", f'exec "$@" {number}>&-', "sh", PROGRAM]
            subprocess.run([*shell, "-v", "-f", "--log", f"log{number}", "a.png", f"{number}.tk"], cwd=self.folder,
                           env=ENVIRONMENT, check=True, capture_output=True, timeout=100)
            self.convert("-f", f"{number}.tk", "back.png")
            self.require_same("back.png", "a.png")
            self.assertEqual(len(self.path(f"log{number}").read_text().splitlines()), 1)


class FirstBytes(Outputs):
    """What they tell is said before the rest is there: the other end of each pipe stays open."""

    def refuse_early(self, words, begin, *arguments):
        reader, writer = os.pipe()
        os.write(writer, begin.ljust(300, b"\0"))
        self.refuse(words, *arguments, stdin=reader, timeout=20)
        os.close(reader)
        os.close(writer)

    def test_what_is_no_image_is_refused_by_them(self):
        self.refuse_early("-: is a GIF file: save its picture as PNG first", b"GIF89a", "-", "x.tk")
        self.refuse_early("-: is a DICOM file: its samples can be read with --raw, where they are not compressed",
                          bytes(128) + b"DICM", "-", "x.tk")
        self.refuse_early("-: is no stream", b"something else", "--check", "-")
        self.refuse_early("-: is an image, and so would be its output: a stream must be one of them", png(self.samples),
                          "-", "x.png")

    def test_resume_needs_no_more(self):
        self.write("b.tk", b"old")
        reader, writer = os.pipe()
        os.write(writer, png(self.samples)[:300])
        said = self.convert("-v", "--resume", "-", "b.tk", stdin=reader, timeout=20)
        self.assertEqual(said, ["-: passed over, b.tk"])
        os.close(reader)
        os.close(writer)

    def test_the_length_of_a_raw_file_is_compared_first(self):
        self.write("a.raw", b"")
        os.truncate(self.path("a.raw"), 2**40)
        self.refuse("a.raw: has 1099511627776 bytes; 72 of samples behind 0 were announced by --raw", "--max-pixels",
                    "1K", "--raw", "9x8:gray8", "a.raw", "x.tk")
        self.refuse("a.raw: is neither PNM, PAM, PNG, TIFF, NPY nor a stream; for samples without a head there is "
                    "--raw", "a.raw", "x.tk")


class FullDisks(Outputs):
    def test_a_full_device(self):
        self.convert("a.png", "a.tk")
        for arguments in (["a.png", "tk:/dev/full"], ["a.tk", "png:/dev/full"], ["a.tk", "tif:/dev/full"]):
            self.refuse(f"{arguments[0]}: cannot write '/dev/full': {NO_ROOM}", *arguments)
        with open("/dev/full", "wb") as full:
            self.refuse(f"a.png: cannot write the standard output: {NO_ROOM}", "a.png", "-", stdout=full)
            self.refuse("cannot write the standard output", "--help", stdout=full)
            self.refuse("cannot write the standard output", "--version", stdout=full)

    @unittest.skipUnless(os.geteuid() == 0, "only root makes file systems")
    def test_a_full_file_system(self):
        disk = self.path("disk")
        disk.mkdir()
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "none", disk], capture_output=True,
                                 check=False)
        if mounted.returncode != 0:
            self.skipTest(mounted.stderr.decode())
        self.addCleanup(subprocess.run, ["umount", disk], check=True)
        self.convert("large.npy", "large.tk")
        for name, output in (("large.npy", "disk/x.tk"), ("large.tk", "disk/x.png"), ("large.tk", "disk/x.tif"),
                             ("large.tk", "disk/x.raw"), ("large.tk", "disk/x.npy")):
            self.refuse(f"{name}: cannot write '{output}': {NO_ROOM}", name, output)
        self.convert("--rm", "large.npy", "disk/x.tk", status=1)
        self.assertTrue(self.path("large.npy").exists())
        self.convert("a.png", "disk/a.tk")
        self.assertEqual(os.listdir(disk), ["a.tk"])


class Unprivileged(Outputs):
    """Options for runs as a user who is not root."""

    def setUp(self):
        super().setUp()
        self.options = {}
        if os.geteuid() == 0:
            self.options = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
            self.folder.chmod(0o777)
        probe = subprocess.run([PROGRAM, "--version"], check=False, capture_output=True, cwd="/") \
            if not self.options else self.probe()
        if probe is None or probe.returncode != 0:
            self.skipTest("others may not run the program")

    def probe(self):
        try:
            return subprocess.run([PROGRAM, "--version"], check=False, capture_output=True, cwd="/", **self.options)
        except PermissionError:
            return None


class Permissions(Unprivileged):
    def close_to_others(self, name, mode=0):
        self.path(name).chmod(mode)
        self.addCleanup(self.path(name).chmod, 0o755)

    def test_a_file_that_may_not_be_read(self):
        self.close_to_others("a.png")
        self.refuse("a.png: cannot be read: Permission denied", "a.png", **self.options)

    def test_folders_that_are_made_reach_the_disk_before_an_input_goes(self):
        """What may not be read cannot be synced."""
        self.path("in").mkdir()
        self.path("in").chmod(0o777)
        shutil.copy(self.path("a.png"), self.path("in/a.png"))
        self.path("closed").mkdir()
        self.close_to_others("closed", 0o333)
        self.assertEqual(self.convert("--rm", "-d", "closed/x/y", "in/a.png", status=1, **self.options),
                         ["in/a.png: cannot write 'closed': Permission denied"])
        self.assertTrue(self.path("in/a.png").exists())
        self.convert("--rm", "-d", "open/x/y", "in/a.png", **self.options)
        self.assertFalse(self.path("in/a.png").exists())

    def test_a_stream_that_may_not_be_read_is_not_passed_over(self):
        self.write("in/a.png.tk", b"")
        self.close_to_others("in/a.png.tk")
        self.refuse("in/a.png.tk: cannot be read: Permission denied", "--check", "-r", "--only", "streams", "in",
                    **self.options)

    def test_a_folder_that_may_not_be_written(self):
        self.path("closed").mkdir()
        self.close_to_others("closed", 0o555)
        self.refuse("a.png: cannot write 'closed/a.tk': Permission denied", "a.png", "closed/a.tk", **self.options)
        self.refuse("a.png: no folder 'closed/x': Permission denied", "-d", "closed/x", "a.png", **self.options)
        shutil.copy(self.path("a.png"), self.path("closed/b.png"))
        said = self.convert("--rm", "closed/b.png", "b.tk", status=1, **self.options)
        self.assertEqual(said, ["closed/b.png: cannot be removed: Permission denied"])

    def test_a_folder_that_may_not_be_read_hides_no_other(self):
        for name in ("in/a/a.png", "in/b/b.png", "in/c/c.png"):
            self.write(name, png(self.samples))
        self.close_to_others("in/b")
        said = self.convert("-r", "-d", "out", "in", status=1, **self.options)
        self.assertEqual(said[0], "in/b: cannot be read: Permission denied")
        self.assertEqual(sorted(path.name for path in self.path("out").rglob("*.tk")), ["a.png.tk", "c.png.tk"])


class Limits(Unprivileged):
    """Threads and memory that cannot be had."""

    @unittest.skipUnless(os.geteuid() == 0, "only for root there is a user without processes")
    def test_without_threads_the_work_is_done_all_the_same(self):
        for name in "bcde":
            shutil.copy(self.path("a.png"), self.path(f"{name}.png"))
        # The leak checker of a sanitizer needs a process.
        environment = dict(ENVIRONMENT, ASAN_OPTIONS=f"{ENVIRONMENT['ASAN_OPTIONS']}:detect_leaks=0")
        for most in (1, 2, 3, 4):
            done = subprocess.run(
                [PROGRAM, "-q", "-j", "8", "-d", f"out{most}", *(f"{name}.png" for name in "abcde")], check=False,
                cwd=self.folder, env=environment, capture_output=True, timeout=100, **self.options,
                preexec_fn=lambda most=most: resource.setrlimit(resource.RLIMIT_NPROC, (most, most)))
            self.assertEqual((done.returncode, done.stderr), (0, b""))
            self.assertEqual(self.names(f"out{most}"), [f"{name}.png.tk" for name in "abcde"])

    def test_with_little_memory_files_are_refused(self):
        if b"__asan_init" in Path(PROGRAM).read_bytes() or b"__tsan_init" in Path(PROGRAM).read_bytes():
            self.skipTest("sanitizers need memory")
        # No PNG: libpng has words of its own.
        names = [f"{number}.npy" for number in range(200)]
        for name in names:
            self.write(name, npy(self.samples))
        for megabytes in (30, 60, 100, 300, 1000):
            most = megabytes << 20
            said = self.run_program("-q", "-f", "-j", "600", "-d", "out", *names,
                                    preexec_fn=lambda most=most: resource.setrlimit(resource.RLIMIT_AS, (most, most)))
            for line in said.stderr.decode().splitlines():
                self.assertIn("there is not enough memory", line)
            if said.stderr == b"":
                self.assertEqual(self.names("out"), sorted(f"{name}.tk" for name in names))


class OtherProcesses(Outputs):
    def test_two_processes_with_one_output(self):
        """One gives it its name, the other says that it is there."""
        for _ in range(10):
            processes = [self.start("large.npy", "x.tk") for _ in range(2)]
            said = sorted(process.communicate()[1].decode() for process in processes)
            words = "tesk-convert: large.npy: 'x.tk' is there already: -f writes over it\n"
            self.assertEqual(said, ["", words])
            self.assertEqual(sorted(process.returncode for process in processes), [0, 1])
            self.convert("--check", "x.tk")
            self.path("x.tk").unlink()
        self.assertEqual(self.part_names(), [])

    def test_a_file_that_appears_while_the_output_is_written_is_kept(self):
        """Between the look for it and the name there is time to write a large stream."""
        self.write("noise.npy", npy(numpy.random.default_rng(1).integers(0, 65536, (2000, 2000)).astype("<u2")))
        for _ in range(5):
            process = self.start("noise.npy", "x.tk")
            while not self.part_names() and process.poll() is None:
                pass
            try:
                self.path("x.tk").touch(exist_ok=False)
                expected = 1, b"tesk-convert: noise.npy: 'x.tk' is there already: -f writes over it\n", 0
            except FileExistsError:
                expected = 0, b"", self.path("x.tk").stat().st_size
            errors = process.communicate()[1]
            self.assertEqual((process.returncode, errors, self.path("x.tk").stat().st_size), expected)
            self.path("x.tk").unlink()
        self.assertEqual(self.part_names(), [])

    def test_two_processes_that_write_over_one_output(self):
        processes = [self.start("-f", "large.npy", "x.tk") for _ in range(2)]
        for process in processes:
            self.assertEqual((process.communicate()[1], process.returncode), (b"", 0))
        self.convert("--check", "x.tk")
        self.assertEqual(self.part_names(), [])

    def test_what_a_killed_process_of_the_same_number_left_is_no_obstacle(self):
        """In a container, processes often have the same number."""
        def leave():
            with open(f".x.tk.part-{os.getpid()}", "wb"):
                pass
        # preexec_fn runs in the folder, under the number of the process that follows.
        self.convert("a.png", "x.tk", preexec_fn=leave)
        self.convert("--check", "x.tk")


if __name__ == "__main__":
    unittest.main()
