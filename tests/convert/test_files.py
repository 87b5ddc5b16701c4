"""Which files tesk-convert reads, and how its outputs are named."""

import os
import unittest

from convert_case import FilesCase, npy, picture, png, png_chunk, pnm, tiff


class Names(FilesCase):
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
        self.refuse("c.jpeg.tk: 'c.jpeg' would have no ending of a format: name an OUTPUT, as png:c.jpeg, or say "
                    "--to png", "c.jpeg.tk")
        self.path("c.jpeg.tk").rename(self.path("d"))
        self.refuse("d: is a stream whose name does not end in .tk: name an OUTPUT, or say --to png", "d")

    def test_all_images_get_the_format_that_is_asked_for(self):
        self.convert("a.png", "whole.tk")
        for stream, ending, image in (
                ("s.tif.tk", "png", "s.tif.png"), ("s.png.tk", "png", "s.png"), ("s.PNG.TK", "png", "s.PNG"),
                ("s.tk", "png", "s.png"), ("s.tk", "tif", "s.tif"), ("s.tiff.tk", "tif", "s.tiff"),
                ("s.tk", "tiff", "s.tiff"), ("s.jpeg.tk", "npy", "s.jpeg.npy"), ("s", "pgm", "s.pgm"), ("s.tk", "pnm", "s.pnm"),
                ("s.tk", "pam", "s.pam"), ("s.pgm.tk", "raw", "s.pgm.raw")):
            with self.subTest(stream=stream, ending=ending):
                self.write(f"in/{stream}", self.path("whole.tk").read_bytes())
                self.convert("-d", "out", "--to", ending, f"in/{stream}")
                self.assertEqual(self.files_below("out"), [image])
                if ending != "raw":
                    self.require_samples(f"out/{image}", self.samples)
                self.path(f"out/{image}").unlink()
                self.path(f"in/{stream}").unlink()
        self.convert("--to", "png", "a.png")
        self.assertTrue(self.path("a.png.tk").exists())
        self.convert("whole.tk", "--to", "png", "--resume")
        self.assertEqual(self.convert("-v", "whole.tk", "--to", "png", "--resume"),
                         ["whole.tk: passed over, whole.png"])

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
        self.refuse("a.tk: has more than 1 bit for each pixel, which PBM does not hold: PGM and PPM do", "a.tk",
                    "x.pbm")
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


class Folders(FilesCase):
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
        self.assertEqual(said[0], "in/a.png: its output would be the input 'in/a.png.tk'")
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

    def test_outputs_that_are_inputs(self):
        self.convert("in/a.png", "in/a.png.tk")
        before = self.path("in/a.png").read_bytes()
        os.symlink("a.png", self.path("in/link.png"))
        for names in (["in/a.png", "in/a.png.tk"], ["in/a.png.tk", "in/link.png"], ["in/../in/a.png.tk", "in/a.png"]):
            said = self.convert("-f", "-d", "in", *names, status=1)
            stream, image = sorted(names, key=lambda name: not name.endswith(".tk"))
            self.assertIn(f"{stream}: its output would be the input '{image}'", said)
            self.assertEqual(self.path("in/a.png").read_bytes(), before)
        self.convert("--resume", "-d", "in", "in/a.png", "in/a.png.tk")

    def test_an_output_folder_that_is_in_an_input_folder(self):
        os.symlink("in/b", self.path("link"))
        for folder, source in (("in", "in"), ("in/new", "in"), (".", "."), ("x", "."), ("link", "in"),
                               ("in/b/../b", "in")):
            self.refuse(f"the output folder '{folder}' is in the input folder '{source}': the next run would take its "
                        "outputs for inputs; --help says more", "-r", "-d", folder, source, status=2)
        self.convert("-r", "-d", "in", "in/a.png")
        self.convert("-r", "-d", "in2", "in")
        self.convert("-r", "--resume", "-d", "..", ".", cwd=self.path("in"))

    def test_damaged_streams_are_none_the_less_checked(self):
        self.convert("-r", "-d", "out", "in")
        for name in ("out/empty.tk", "out/EMPTY.TK", "out/text.txt"):
            self.write(name, b"")
        data = bytearray(self.path("out/a.png.tk").read_bytes())
        data[0] ^= 1
        self.write("out/a.png.tk", data)
        for arguments in (["--check"], ["-d", "back"]):
            said = self.convert(*arguments, "-r", "--only", "streams", "out", status=1)
            self.assertEqual(said[:3], [f"out/{name}: is no stream" for name in ("EMPTY.TK", "a.png.tk", "empty.tk")])
            self.assertEqual(len(said), 4)

    def test_endings_of_any_case(self):
        self.convert("a.png", "b.TK")
        self.convert("a.png", "tk:C.PNG.Tk")
        self.convert("-d", "out", "b.TK", "C.PNG.Tk")
        self.assertEqual(self.files_below("out"), ["C.PNG", "b.png"])

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

    def test_two_inputs_with_one_output_are_no_finished_run(self):
        self.convert("-d", "out", "a.png")
        said = self.convert("-d", "out", "--resume", "a.png", "in/a.png", status=1)
        self.assertEqual(said[0], "in/a.png: would have the same output as 'a.png'")

    def test_one_file_by_two_names(self):
        said = self.convert("-j2", "-r", "in/b/d", "in/b/../b/d", status=1)
        self.assertEqual(said[0], "in/b/../b/d/e.png: would have the same output as 'in/b/d/e.png'")
        self.assertEqual(self.files_below("in/b/d"), ["e.png", "e.png.tk"])


if __name__ == "__main__":
    unittest.main()
