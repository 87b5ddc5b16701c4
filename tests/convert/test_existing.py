"""Files that are there: tesk-convert writes over none and removes none without being asked to, and says what it did."""

import os
import unittest

import numpy

from convert_case import FilesCase, picture, png, png_chunk

THERE = "is there already: -f writes over it"


class Existing(FilesCase):
    def test_a_file_that_is_there_is_kept(self):
        self.write("a.png.tk", b"old")
        self.refuse(f"a.png: 'a.png.tk' {THERE}", "a.png")
        self.assertEqual(self.path("a.png.tk").read_bytes(), b"old")
        self.convert("-f", "a.png")
        self.assertGreater(self.path("a.png.tk").stat().st_size, 3)

    def test_a_link_that_leads_nowhere_is_kept(self):
        os.symlink("nowhere", self.path("a.png.tk"))
        self.refuse(f"a.png: 'a.png.tk' {THERE}", "a.png")
        self.convert("-f", "a.png")
        self.assertFalse(self.path("nowhere").exists())

    def test_an_output_that_is_the_input(self):
        os.link(self.path("a.png"), self.path("hard.tk"))
        os.symlink("a.png", self.path("soft.tk"))
        for name in ("tk:a.png", "hard.tk", "soft.tk", "tk:./a.png"):
            self.refuse("a.png: is its own output", "-f", "a.png", name)

    def test_resume_passes_over_what_is_there(self):
        self.write("b.png", png(self.samples))
        self.write("a.png.tk", b"old")
        said = self.convert("--resume", "-v", "-d", ".", "a.png", "b.png")
        self.assertEqual(said[0], "a.png: passed over, ./a.png.tk")
        self.assertRegex(said[1], r"^b.png: converted, ./b.png.tk, 600 bytes of pixels, \d+ of stream, \d\.\d\d:1$")
        self.assertRegex(said[2], r"^1 of 2 files, 0.6 KB of pixels, .*, 1 passed over$")
        self.assertEqual(self.path("a.png.tk").read_bytes(), b"old")

    def test_a_failure_leaves_the_old_file(self):
        for name, data in (("bad.png", png(self.samples)[:-40]), ("bad.tk", b"")):
            self.write(name, data)
            self.write("old.tk", b"old")
            self.convert("-f", name, "old.tk", status=1)
            self.assertEqual(self.path("old.tk").read_bytes(), b"old")
        self.assertEqual(self.part_names(), [])


class Removal(FilesCase):
    def test_an_input_goes_when_its_output_is_there(self):
        self.convert("--rm", "a.png")
        self.assertEqual(self.names(), ["a.png.tk"])
        self.convert("--rm", "a.png.tk")
        self.assertEqual(self.names(), ["a.png"])
        self.require_samples("a.png", self.samples)

    def test_an_input_stays_when_it_was_refused_or_passed_over(self):
        self.write("a.png.tk", b"old")
        self.convert("--rm", "a.png", status=1)
        self.convert("--rm", "--resume", "a.png")
        self.write("b.png", png(self.samples)[:-20])
        self.convert("--rm", "b.png", status=1)
        self.assertEqual(self.names(), ["a.png", "a.png.tk", "b.png"])

    def test_an_input_stays_when_its_metadata_is_lost(self):
        self.write("b.png", png(self.samples, before=png_chunk(b"prIv", b"x")))
        self.assertEqual(self.convert("--rm", "b.png"), [
            "b.png: note: PNG chunk prIv is not kept",
            "b.png: note: is not removed, because not all of it is in its output: --drop-metadata lets it go"])
        self.convert("--rm", "-f", "--drop-metadata", "b.png")
        self.assertEqual(self.names(), ["a.png", "b.png.tk"])

    def test_a_cut_stream_stays(self):
        self.convert("--bytes", "100", "a.png", "cut.tk")
        self.convert("--rm", "cut.tk", "cut.png", status=3)
        self.assertEqual(self.names(), ["a.png", "cut.png", "cut.tk"])

    def test_another_file_under_the_name_of_the_input_stays(self):
        os.mkfifo(self.path("in"))
        with self.start("--rm", "in", "out.tk") as process:
            with open(self.path("in"), "wb") as pipe:
                self.path("in").rename(self.path("elsewhere"))
                self.write("in", b"another")
                pipe.write(self.path("a.png").read_bytes())
            self.assertEqual(process.stderr.read(),
                             b"tesk-convert: in: is not removed: it is another file than the one that was read\n")
        self.assertEqual(process.returncode, 1)
        self.assertEqual(self.path("in").read_bytes(), b"another")
        self.convert("--check", "out.tk")

    def test_an_output_that_is_no_file_removes_nothing(self):
        words = "a.png: its output is no file, which --rm needs"
        for output in ("tk:-", "tk:/dev/null", "tk:/dev/stdout"):
            self.refuse(words, "--rm", "a.png", output)
        self.assertEqual(self.names(), ["a.png"])


class Likeness(FilesCase):
    def mode(self, name):
        return self.path(name).stat().st_mode & 0o7777

    def test_an_output_has_the_permissions_of_its_input(self):
        for mode in (0o600, 0o640, 0o664, 0o444, 0o777, 0o4755):
            self.path("a.png").chmod(mode)
            self.convert("-f", "a.png", "b.tk")
            self.assertEqual(self.mode("b.tk"), mode & 0o777)
            self.convert("-f", "b.tk", "b.png")
            self.assertEqual(self.mode("b.png"), mode & 0o777)

    def test_what_is_written_over_has_no_say(self):
        self.path("a.png").chmod(0o600)
        self.write("b.tk", b"old").chmod(0o666)
        self.convert("-f", "a.png", "b.tk")
        self.assertEqual(self.mode("b.tk"), 0o600)

    def test_an_input_that_is_no_file_gives_none(self):
        data = self.path("a.png").read_bytes()
        self.convert("-", "b.tk", input=data, preexec_fn=lambda: os.umask(0o027))
        self.assertEqual(self.mode("b.tk"), 0o640)

    def test_what_takes_the_place_of_a_file_has_its_times(self):
        times = (1_000_000_000_123_456_789, 1_100_000_000_987_654_321)
        os.utime(self.path("a.png"), ns=times)
        self.convert("a.png", "b.tk")
        self.assertGreater(self.path("b.tk").stat().st_mtime_ns, times[1])
        os.utime(self.path("a.png"), ns=times)
        self.convert("--rm", "a.png", "c.tk")
        # That of access has changed by then, on most systems.
        self.assertEqual(self.path("c.tk").stat().st_mtime_ns, times[1])


class Reports(FilesCase):
    def test_quiet_and_verbose(self):
        self.write("b.png", png(numpy.array(self.samples) & 0xFE))
        note = ("b.png: note: the lowest bit of all samples is 0: shifted right, the stream would be much shorter, by "
                "about 1 bit for each sample")
        said = self.convert("-f", "-d", ".", "a.png", "b.png", "c.png", status=1)
        self.assertEqual(said[:2], [note, "c.png: cannot be read: No such file or directory"])
        self.assertRegex(said[2], r"^2 of 3 files, 1.2 KB of pixels, \d\.\d KB of streams \(\d\.\d\d:1\), 1 refused$")
        self.assertEqual(self.convert("-q", "-f", "-d", ".", "a.png", "b.png", "c.png", status=1), said[1:2])
        said = self.convert("-v", "-f", "a.png")
        self.assertRegex(said[0], r"^a.png: converted, a.png.tk, 600 bytes of pixels, \d+ of stream, \d\.\d\d:1$")
        said = self.convert("-v", "--check", "a.png.tk")
        self.assertRegex(said[0], r"^a.png.tk: checked, 600 bytes of pixels, \d+ of stream, \d\.\d\d:1$")

    def test_the_log_gets_a_line_for_each_file(self):
        for arguments in (["a.png", "no.png"], ["a.png"]):
            self.convert("-q", "--log", "log", "-d", "out", *arguments, status=1)
        lines = [line.split("\t") for line in self.path("log").read_text().splitlines()]
        self.assertEqual([line[1:4] for line in lines], [
            ["converted", "a.png", "out/a.png.tk"], ["refused", "no.png", ""], ["refused", "a.png", "out/a.png.tk"]])
        for line in lines:
            self.assertRegex(line[0], r"^20\d\d-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
            self.assertEqual(len(line), 7)
        self.assertEqual(lines[0][4], "600")
        self.assertEqual(lines[1][6], "cannot be read: No such file or directory")

    def test_a_log_is_no_other_file(self):
        os.symlink("a.png", self.path("link"))
        self.write("text", b"something else")
        data = self.path("a.png").read_bytes()
        for log, words in (("a.png", "the log 'a.png' is an input, too"), ("link", "the log 'link' is an input, too"),
                           ("./a.png.tk", "the log './a.png.tk' would be an output, too"),
                           ("text", "'text' is there and no log: none begins so")):
            self.refuse(f"{words}; --help says more", "--log", log, "a.png", status=2)
        self.refuse("the log 'x.tk' would be an output, too; --help says more", "-f", "--log", "x.tk", "a.png", "x.tk",
                    status=2)
        self.assertEqual(self.path("a.png").read_bytes(), data)
        self.write("empty", b"")
        self.convert("--log", "empty", "a.png")
        self.convert("-f", "--log", "empty", "a.png")
        self.assertEqual(len(self.path("empty").read_text().splitlines()), 2)

    def test_quiet_says_why_the_status_is_3(self):
        self.convert("--bytes", "100", "a.png", "cut.tk")
        words = "cut.tk: note: is cut: its image is an approximation"
        self.assertEqual(self.convert("-q", "cut.tk", status=3), [words])
        self.assertEqual(self.convert("-q", "--check", "cut.tk", status=3), [words])
        self.convert("a.png", "strange.tk", "--bare")
        self.write("strange.tk", self.path("strange.tk").read_bytes() + b"xyz")
        said = self.convert("-q", "strange.tk", status=3)
        self.assertEqual(len(said), 1)
        self.assertIn("3 bytes behind its end are no trailer", said[0])

    def test_a_log_that_cannot_be_written(self):
        self.refuse("cannot write the log 'no/log': No such file or directory", "--log", "no/log", "a.png")
        self.assertEqual(self.convert("--log", "/dev/full", "a.png", status=1),
                         ["the log '/dev/full' could not be written"])

    def test_any_number_of_jobs_gives_the_same_files_and_lines(self):
        for number in range(40):
            samples = picture(20 + 7 * (number * 7 % 40), 30) & (0xFE if number % 3 else 0xFF)
            data = png(samples)
            self.write(f"in/{number}.png", data if number % 5 else data[:-30])
        said = {}
        for jobs in ("1", "8", "0"):
            said[jobs] = self.convert("-j", jobs, "-v", "-r", "-d", "out", "in", status=1)
            found = {path.name: path.read_bytes() for path in self.path("out").iterdir()}
            self.assertEqual(len(found), 32)
            said[jobs].append(found)
            self.path("out").rename(self.path(f"out-{jobs}"))
        self.assertGreater(len(said["1"]), 60)
        self.assertEqual(said["1"], said["8"])
        self.assertEqual(said["1"], said["0"])


if __name__ == "__main__":
    unittest.main()
