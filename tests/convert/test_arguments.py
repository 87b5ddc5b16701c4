"""What tesk-convert says to arguments: status 2 and one line where they are wrong."""

import re
import unittest

from convert_case import ConvertCase, npy, picture, png, png_chunk

MORE = "; --help says more"
PAIR = "--reduce and --thumbnail do not go together"


class Wrong(ConvertCase):
    def setUp(self):
        super().setUp()
        self.write("a.npy", npy(picture(9, 8)))

    def require(self, words, *arguments):
        with self.subTest(arguments=arguments):
            self.refuse(words + MORE, *arguments, status=2)

    def test_files(self):
        self.require("no file is named")
        self.require("no file is named", "-v")
        self.require("several inputs need -d FOLDER: -d . writes into this one", "a.npy", "b.tk", "c.tk")
        self.require("the standard input has no name to give its output in a folder", "-d", "out", "-")
        self.require("the standard input has no name to give its output in a folder", "-r", "-")
        self.require("--rm cannot remove the standard input", "--rm", "-", "b.tk")
        self.require("the output 'b' has no ending of a format: begin it with one, as png:b", "a.npy", "b")
        self.require("the output 'b.xyz' has no ending of a format: begin it with one, as png:b.xyz", "a.npy", "b.xyz")
        self.require("there is no name behind 'png:'", "a.npy", "png:")

    def test_options_that_do_not_go_together(self):
        for option in (["--bytes", "100"], ["--rate", "0.5"], ["--bits-per-sample", "1"], ["--reduce", "1"],
                       ["--thumbnail", "9"]):
            self.require("--rm does not go with an output that is an approximation: the image would be lost", "--rm",
                         *option, "a.npy")
        self.require("--rm -r without -d needs --only images or --only streams: run again, it would turn round", "--rm",
                     "-r", ".")
        self.require(PAIR, "--reduce", "1", "--thumbnail", "9", "a.npy", "b.tk")
        self.require("-q and -v do not go together", "-q", "-v", "a.npy")
        for option in (["-d", "x"], ["--rm"], ["--raw", "9x8:gray8"]):
            self.require("--check writes nothing: it does not go with -d, --rm and --raw", "--check", *option, "a.npy")
        budgets = (["--bytes", "100"], ["--rate", "0.5"], ["--bits-per-sample", "1"])
        for first in budgets:
            for second in budgets:
                if first != second:
                    said = self.convert(*first, *second, "a.npy", "b.tk", status=2)
                    self.assertRegex(said[0], "^--[a-z-]+ excludes --[a-z-]+; --help says more$")

    def test_formats_of_images(self):
        for value in ("tk", "jpeg", "pbm", "PNG", "png:"):
            self.require(f"--to: '{value}' is none of png, tif, pgm, ppm, pnm, pam, npy and raw", f"--to={value}",
                         "a.npy")
        self.require("--to does not go with OUTPUT, which says its format itself", "--to", "png", "a.tk", "b.tif")

    def test_values(self):
        for option in ("--bytes", "--max-pixels"):
            for value in ("0", "0K"):
                self.require(f"{option}: must be above 0", option, value, "a.npy", "b.tk")
        for value in ("x", "1.5", "-1", "10X", "1KK", "99999999999999999999", "99999999999G", ""):
            for option in ("--bytes", "--max-pixels"):
                said = self.convert(f"{option}={value}", "a.npy", "b.tk", status=2)
                if value:
                    words = f"'{value}' is neither a number nor one with K, M or G behind it"
                    self.assertEqual(said, [f"{option}: {words}{MORE}"])
        self.require("--bytes: a stream has at least 16 bytes", "--bytes", "15", "a.npy", "b.tk")
        for value in ("0", "17", "x", "8.0", "Auto"):
            self.require(f"--bits: '{value}' is neither 1 to 16 nor auto", "--bits", value, "a.npy", "b.tk")
        self.require("--only: 'files' is neither 'images' nor 'streams'", "--only", "files", "a.npy")
        for value in ("9x8", "9x8:", "9x8:gray7", "9x8:gray17", "9x8:rgb16", "9x8:gray8+", "9x8:gray8+-1", "x8:gray8",
                      "9X8:gray8", "-9x8:gray8", "9x8:gray8+1 ", "9x99999999999:gray8", "9x8:gray8be", "9x8:GRAY8"):
            self.require(f"--raw: '{value}' is not as 640x480:gray12 or 640x480:rgb8+16", f"--raw={value}", "a.npy")

    def test_values_out_of_range(self):
        for arguments in (["-j", "-1"], ["-j", "1025"], ["-j", "x"], ["-j"], ["--rate", "0"], ["--rate", "-1"],
                          ["--rate", "nan"], ["--rate", "inf"], ["--rate", "x"], ["--bits-per-sample", "0"],
                          ["--reduce", "17"], ["--reduce", "-1"], ["--thumbnail", "0"], ["--thumbnail", "65536"],
                          ["-j", "1", "-j", "2"], ["--unknown"], ["-x"], ["--jobs=1=2"], ["--chec"], ["-d"]):
            with self.subTest(arguments=arguments):
                said = self.convert("a.npy", "b.tk", *arguments, status=2)
                self.assertEqual(len(said), 1)
                self.assertTrue(said[0].endswith(MORE), said)
                self.assertRegex(said[0], re.escape(arguments[0].partition("=")[0]) + "|--jobs|--directory")

    def test_an_argument_that_says_nothing_of_its_own(self):
        """"++" would end the options of some programs."""
        self.refuse("++: cannot be read: No such file or directory", "++", "b.tk")
        self.require("several inputs need -d FOLDER: -d . writes into this one", "a.npy", "++", "b.tk")


class Right(ConvertCase):
    def test_help_and_version(self):
        done = self.run_program("--help")
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertTrue(done.stdout.startswith(b"Usage: tesk-convert [OPTION]... INPUT [OUTPUT]\n"))
        self.assertEqual([line for line in done.stdout.decode().splitlines() if len(line) > 80], [])
        done = self.run_program("--version")
        self.assertRegex(done.stdout.decode(), r"^tesk-convert \d+\.\d+\.\d+\n$")
        self.assertEqual(self.run_program("--help", "-x").returncode, 0)

    def test_h_is_help(self):
        self.assertEqual(self.run_program("-h").stdout, self.run_program("--help").stdout)

    def test_names_are_taken_as_they_are(self):
        for name in ("[a]", "[x,y]", "a,b", "{a}", "-5", "a"):
            self.write(f"in/{name}.npy", npy(picture(9, 8)))
            self.write(name, npy(picture(9, 8)))
        self.convert("-d", "[o,p]", "[a]", "-v", "[x,y]", "--", "--", "-v", status=1)
        self.assertEqual(self.names("[o,p]"), ["[a].tk", "[x,y].tk"])
        self.convert("[a]", "-f", "tk:[b]")
        self.convert("-5", "--log", "[l]")
        self.convert("a,b", "{a}", "-d", "out", "--", "a", "[a]")
        self.assertEqual(self.names("out"), ["[a].tk", "a,b.tk", "a.tk", "{a}.tk"])
        self.assertEqual(self.names(), ["-5", "-5.tk", "[a]", "[b]", "[l]", "[x,y]", "a", "a,b", "{a}"])
        self.path("a").unlink()
        self.path("a").mkdir()
        self.convert("-r", "-d", "out2", "[a]")
        self.assertEqual(self.names("out2"), ["[a].tk"])

    def test_one_byte_is_one(self):
        self.write("a.raw", b"x" + bytes(72))
        self.assertEqual(self.convert("--raw", "9x8:gray8+1", "a.raw", "b.tk"),
                         ["a.raw: note: the first byte is not kept"])
        self.write("a.raw", b"x")
        self.refuse("a.raw: has 1 byte; 72 of samples behind 0 were announced by --raw", "--raw", "9x8:gray8", "a.raw")

    def test_lower_case_letters_behind_numbers(self):
        self.write("a.npy", npy(picture(900, 80)))
        self.convert("--max-pixels", "72k", "--bytes", "1k", "a.npy", "b.tk")
        self.assertEqual(self.path("b.tk").stat().st_size, 1024)

    def test_options_may_stand_anywhere_and_together(self):
        self.write("in/a.npy", npy(picture(9, 8)))
        self.convert("in", "-rvj2", "-d", "out")
        self.convert("in", "--directory=out", "-r", "--jobs=2", "--resume")
        self.convert("-rj2", "--check", "out", "--")
        self.assertEqual(self.names("out"), ["a.npy.tk"])

    def test_a_batch_goes_on_after_a_refusal(self):
        for name in ("a", "c"):
            self.write(name, npy(picture(9, 8)))
        self.write("b", b"")
        self.convert("-d", "out", "a", "b", "c", status=1)
        self.assertEqual(self.names("out"), ["a.tk", "c.tk"])

    def test_the_worst_status_of_a_batch_counts(self):
        self.write("a", npy(picture(9, 8)))
        self.convert("a", "whole.npy.tk")
        self.convert("--bytes", "40", "a", "cut.npy.tk")
        self.convert("-d", "1", "whole.npy.tk", "cut.npy.tk", status=3)
        self.convert("-d", "2", "whole.npy.tk", "cut.npy.tk", "none", status=1)
        self.convert("--check", "whole.npy.tk", "cut.npy.tk", status=3)
        self.convert("--strict", "--check", "whole.npy.tk", "cut.npy.tk", status=1)

    def test_strict_refuses_what_would_be_lost(self):
        self.write("a.png", png(picture(9, 8), before=png_chunk(b"prIv", b"x")))
        for option in ([], ["--drop-metadata"]):
            self.refuse("a.png: PNG chunk prIv would not be kept, which --strict refuses", "--strict", *option, "a.png")


if __name__ == "__main__":
    unittest.main()
