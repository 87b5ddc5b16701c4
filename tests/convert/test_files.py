"""Which files tesk-convert reads and writes, what it removes, and what it says of them."""

import os
import unittest

import numpy

from convert_case import ConvertCase, npy, picture, png, png_chunk, pnm, tiff

THERE = "is there already: -f writes over it"


class Files(ConvertCase):
    def setUp(self):
        super().setUp()
        self.samples = picture(30, 20)
        self.write("a.png", png(self.samples))

    def files_below(self, folder):
        return sorted(str(path.relative_to(self.path(folder))) for path in self.path(folder).rglob("*")
                      if not path.is_dir())


class Names(Files):
    def test_an_ending_is_appended_and_taken_off(self):
        self.convert("a.png")
        self.path("a.png").rename(self.path("original.png"))
        self.convert("a.png.tk")
        self.assertEqual(self.names(), ["a.png", "a.png.tk", "original.png"])
        self.require_same("a.png", "original.png")

    def test_the_content_decides_and_not_the_name(self):
        for name, data in (("x.tif", png(self.samples)), ("x.txt", pnm(self.samples)), ("x", npy(self.samples)),
                           ("x.tk", tiff(self.samples))):
            self.write(name, data)
            self.convert(name)
            self.convert(f"{name}.tk", f"png:{name}.back")
            self.require_samples(f"{name}.back", self.samples)

    def test_a_stream_without_another_ending_becomes_a_png(self):
        self.convert("a.png", "b.tk")
        self.convert("b.tk")
        self.require_same("b.png", "a.png")
        self.path("b.tk").rename(self.path("c.jpeg.tk"))
        self.refuse("c.jpeg.tk: 'c.jpeg' would have no ending of a format: name an OUTPUT, as png:c.jpeg", "c.jpeg.tk")
        self.path("c.jpeg.tk").rename(self.path("d"))
        self.refuse("d: is a stream whose name does not end in .tk: name an OUTPUT", "d")

    def test_endings_and_formats_in_front(self):
        self.convert("a.png", "a.tk")
        for name in ("o.PNG", "o.tif", "o.TIFF", "o.pgm", "o.pnm", "o.pam", "o.npy", "png:o", "tif:o.x", "npy:o.png"):
            self.convert("-f", "a.tk", name)
            self.require_samples(name.partition(":")[2] or name, self.samples)
        self.convert("a.tk", "o.raw")
        self.assertEqual(self.path("o.raw").read_bytes(), self.samples.tobytes())
        self.convert("a.png", "tk:stream")
        self.assertEqual(self.path("stream").read_bytes(), self.path("a.tk").read_bytes())

    def test_formats_that_do_not_hold_the_image(self):
        self.convert("a.png", "a.tk")
        self.write("rgb.npy", npy(picture(9, 8, colour=True)))
        self.convert("rgb.npy", "rgb.tk")
        self.refuse("a.tk: is gray, which PPM does not hold: PGM does", "a.tk", "x.ppm")
        self.refuse("rgb.tk: is RGB, which PGM does not hold: PPM does", "rgb.tk", "x.pgm")
        self.refuse("a.tk: has more than 1 bit for each pixel, which PBM does not hold: PGM and PPM do", "a.tk", "x.pbm")
        self.refuse("a.png: is an image, and so would be its output: a stream must be one of them", "a.png", "x.tif")
        self.refuse("a.tk: is a stream already: head -c cuts one, and an OUTPUT as png:x decodes it", "a.tk", "x.tk")

    def test_names_of_any_bytes(self):
        plain = [b"two words", b"new\nline", b"-dash", b"--rm", b"\xff\xfe", b"\xc3\xa4\xe2\x82\xac", b"%s%n",
                 b"*?[a]{b}", b"a=b,c", b"'\"\\$`", b"[x]", b"\x1b[31m", b"++", b".hidden", b"~"]
        for name in plain:
            with open(os.path.join(os.fsencode(self.folder), name + b".png"), "wb") as file:
                file.write(png(self.samples))
        names = [name + b".png" for name in plain]
        self.convert("-v", "--", *names, status=2)
        self.assertEqual(len(self.convert("-d", "out", "--", *names)), 1)
        self.assertEqual(sorted(os.listdir(os.fsencode(self.path("out")))), sorted(name + b".tk" for name in names))
        for name in names:
            self.assertEqual(self.convert("--", name), [])
            self.convert("--", name + b".tk", b"png:" + name + b".back")

    def test_lines_of_strange_names_stay_lines(self):
        name = b"new\nline\x1b[31m\xff.png"
        with open(os.path.join(os.fsencode(self.folder), name), "wb"):
            pass
        self.assertEqual(self.convert(name, status=1), ["new\\u000aline\\u001b[31m\udcff.png: is empty"])

    def test_the_longest_names(self):
        for length in (251, 252):
            name = "n" * (length - 4) + ".png"
            self.write(name, png(self.samples))
            self.convert(name)
            self.convert(f"{name}.tk", "back.png", "-f")
            self.require_same("back.png", "a.png")
        longest = "n" * 249 + ".png"
        self.write(longest, png(self.samples))
        self.refuse(f"{longest}: cannot write '{longest}.tk': File name too long", longest)


class Folders(Files):
    def setUp(self):
        super().setUp()
        for name in ("in/a.png", "in/b/c.png", "in/b/d/e.png"):
            self.write(name, png(self.samples))

    def test_a_folder_is_made_and_gets_all_outputs(self):
        self.convert("-d", "x/y", "a.png", "in/b/c.png")
        self.assertEqual(self.files_below("x"), ["y/a.png.tk", "y/c.png.tk"])
        self.refuse("a.png: no folder 'a.png': Not a directory", "-d", "a.png", "a.png")

    def test_folders_below_are_made_again(self):
        for name in ("in", "in/", "./in", "in/b/.."):
            self.convert("-r", "-d", "out", name, "-f")
            self.assertEqual(self.files_below("out"), ["a.png.tk", "b/c.png.tk", "b/d/e.png.tk"])
        self.convert("-r", "-d", "../back", ".", cwd=self.path("out"))
        self.assertEqual(self.files_below("back"), self.files_below("in"))

    def test_without_a_folder_outputs_stand_beside_inputs(self):
        self.convert("-r", "in")
        self.assertEqual(len(self.files_below("in")), 6)
        said = self.convert("-r", "in", status=1)
        self.assertEqual(said[0], f"in/a.png: 'in/a.png.tk' {THERE}")
        self.assertEqual(said[-1], "0 of 6 files, 6 refused")

    def test_a_second_run_does_not_write_over_the_images(self):
        """With -f it would make all of them again from their streams, without what these do not hold."""
        data = png(self.samples, before=png_chunk(b"prIv", b"x"))
        self.write("in/a.png", data)
        self.convert("-r", "in")
        self.refuse("-f -r without -d needs --only images or --only streams: it would write over its inputs; --help "
                    "says more", "-f", "-r", "in", status=2)
        self.convert("-f", "-r", "--only", "images", "in")
        self.assertEqual(self.path("in/a.png").read_bytes(), data)

    def test_a_folder_needs_r(self):
        self.refuse("in: is a folder: -r takes what is in it", "in")
        self.refuse("a.png: 'in' is a folder: -d writes there", "a.png", "tk:in")
        self.path("empty").mkdir()
        self.refuse("there is no file to convert", "-r", "empty")

    def test_only(self):
        self.convert("-r", "in/b")
        self.write("in/b/text", b"something else")
        self.convert("-r", "--only", "streams", "-d", "images", "in")
        self.assertEqual(self.files_below("images"), ["b/c.png", "b/d/e.png"])
        self.convert("-r", "--only", "images", "-d", "streams", "in", status=1)
        self.assertEqual(self.files_below("streams"), ["a.png.tk", "b/c.png.tk", "b/d/e.png.tk"])

    def test_links(self):
        """Links to files are followed, those to folders are not: they may lead round in circles."""
        os.symlink("../../a.png", self.path("in/b/link.png"))
        os.symlink("..", self.path("in/b/loop"))
        os.symlink("nowhere", self.path("in/b/nowhere.png"))
        os.symlink("itself.png", self.path("in/b/itself.png"))
        self.convert("-r", "-d", "out", "in")
        self.assertEqual(self.files_below("out"), ["a.png.tk", "b/c.png.tk", "b/d/e.png.tk", "b/link.png.tk"])

    def test_two_inputs_with_one_output(self):
        said = self.convert("-j2", "-d", "out", "a.png", "in/a.png", status=1)
        self.assertEqual(said[0], "in/a.png: would have the same output as 'a.png'")
        self.assertEqual(self.files_below("out"), ["a.png.tk"])

    def test_one_file_by_two_names(self):
        said = self.convert("-j2", "-r", "in/b/d", "in/b/../b/d", status=1)
        self.assertEqual(said[0], "in/b/../b/d/e.png: would have the same output as 'in/b/d/e.png'")
        self.assertEqual(self.files_below("in/b/d"), ["e.png", "e.png.tk"])


class Existing(Files):
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


class Removal(Files):
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

    def test_an_output_that_is_no_file_removes_nothing(self):
        words = "a.png: its output is no file, which --rm needs"
        for output in ("tk:-", "tk:/dev/null", "tk:/dev/stdout"):
            self.refuse(words, "--rm", "a.png", output)
        self.assertEqual(self.names(), ["a.png"])


class Reports(Files):
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
