"""Looks at the pictures that the program writes: xmllint reads the SVG files of a tree with hostile names, Python's XML
parser measures what is in them.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
"""

import importlib.util
import os
import re
import struct
import subprocess
import sys
import unittest
from xml.etree import ElementTree

import program_test
SVG = "{http://www.w3.org/2000/svg}"
SWITCHES = ("treemap", "chart", "piechart", "barchart", "extensionschart", "extensionspiechart", "filetypeschart", "userschart",
            "userspiechart", "fileageschart")
# Names that both systems can hold, and names of Linux alone.
NAMES = ("a & b", "x" * 200, "\u05e9\u05dc\u05d5\u05dd.txt", "\u4e2d" * 80, "'quote'", "]]_&amp;_&#0;", "\ufffe\uffff.bin", "\U0001F600")
LINUX_NAMES = (b"<svg>\"'", b"line\nbreak\ttab", b"\x1b[31m", b"\xff\xfe.bin", b"\xed\xa0\x80", b"back\\slash", b"\xe2\x80\xaeexe.txt")


def hint(element):
    title = element.find(f"{SVG}title")
    return "" if title is None else title.text


class PictureTest(program_test.ProgramTest):
    def draw(self, *arguments):
        run = self.run_program("--nooptions", "--collectowners", *arguments)
        self.assertEqual((run.code, run.err), (program_test.OK, ""))

    def parse(self, name):
        path = self.folder / name
        subprocess.run(["xmllint", "--noout", "--huge", path], check=True)
        return ElementTree.parse(path).getroot()

    def test_hostile_names_stay_text(self):
        folder = self.folder / "data"
        folder.mkdir()
        for size, name in enumerate(NAMES, 50_000):
            self.make(f"data/{name}", size)
        if self.delimiter == "/":
            for size, name in enumerate(LINUX_NAMES, 60_000):
                with open(os.path.join(os.fsencode(folder), name), "wb") as file:
                    file.write(b"x" * size)
        for dark in ("false", "true"):
            for size in ("1000x700", "64x40", "1x1"):
                self.draw("data", "--dark", dark, "--picturesize", size,
                          *(word for name in SWITCHES for word in (f"--{name}", f"{name}.svg")))
                for name in SWITCHES:
                    with self.subTest(name=name, size=size, dark=dark):
                        root = self.parse(f"{name}.svg")
                        self.assertEqual(f"{root.get('width')}x{root.get('height')}", size)
                        # Nothing but the elements of pictures: no name has become one.
                        kinds = {element.tag.removeprefix(SVG) for element in root.iter()}
                        self.assertLessEqual(kinds, {"svg", "style", "title", "rect", "path", "polyline", "polygon", "text", "image"})
        self.draw("data", "--treemap", "treemap.svg")
        root = self.parse("treemap.svg")
        hints = "\n".join(hint(element) for element in root.iter(f"{SVG}rect"))
        self.assertIn("a & b", hints)
        self.assertIn("]]_&amp;_&#0;", hints)
        if self.delimiter == "/":
            for shown in ("<svg>\"'", "line\\nbreak\\ttab", "\\x1B[31m", "\\xFF\\xFE.bin", "back\\slash", "\\u202Eexe.txt"):
                self.assertIn(shown, hints)

    def test_a_treemap_shows_every_file_in_proportion(self):
        sizes = {f"{name}.bin": 100_000 * parts for name, parts in zip("abcdefg", (64, 32, 16, 8, 4, 2, 1))}
        for name, size in sizes.items():
            self.make(f"data/{name}", size)
        self.draw("data", "--treemap", "t.svg", "--picturesize", "900x800", "--sizeunit", "B")
        areas = {}
        for rect in self.parse("t.svg").iter(f"{SVG}rect"):
            path = hint(rect).split("\n")[0]
            name = re.split(r"[/\\]", path)[-1]
            if name in sizes:
                areas[name] = float(rect.get("width")) * float(rect.get("height"))
                self.assertIn(f"{sizes[name]:,} B", hint(rect))
        self.assertEqual(areas.keys(), sizes.keys())
        whole, total = sum(areas.values()), sum(sizes.values())
        for name, area in areas.items():
            # Edges lie on whole pixels: each side is off by less than one.
            expected = whole * sizes[name] / total
            self.assertAlmostEqual(area, expected, delta=4 * expected ** 0.5 + 2, msg=name)

    def test_bars_are_in_proportion_and_wedges_are_labelled(self):
        for name, size in (("one", 60_000), ("two", 30_000), ("three", 10_000)):
            self.make(f"data/{name}/file", size)
        self.draw("data", "--apparent-size", "--barchart", "b.svg", "--piechart", "p.svg")
        widths = {hint(rect).split("\n")[0]: float(rect.get("width")) for rect in self.parse("b.svg").iter(f"{SVG}rect") if hint(rect)}
        self.assertEqual(list(widths), ["one", "two", "three"])
        self.assertAlmostEqual(widths["one"] / widths["two"], 2, delta=0.01)
        self.assertAlmostEqual(widths["one"] / widths["three"], 6, delta=0.02)
        texts = [text.text for text in self.parse("p.svg").iter(f"{SVG}text")]
        for text in ("one", "two", "three", "60.0 %", "30.0 %", "10.0 %"):
            self.assertIn(text, texts)

    def test_a_bitmap_has_its_size(self):
        self.make("data/a.txt", 50_000)
        self.run_program("--nooptions", "data", "--treemap", "t.png", "--picturesize", "123x77")
        self.assertEqual(struct.unpack(">II", (self.folder / "t.png").read_bytes()[16:24]), (123, 77))

    def test_a_mail_takes_pictures_along(self):
        self.make("data/a.txt", 5000)
        inbox = self.folder / "inbox"
        inbox.mkdir()
        script = os.path.join(os.path.dirname(__file__), "mail_server.py")
        # Debian's package for mail servers is for Debian's Python only.
        python = sys.executable if importlib.util.find_spec("aiosmtpd") else "/usr/bin/python3"
        with subprocess.Popen([python, script, inbox, "{}"], stdout=subprocess.PIPE, text=True) as server:
            try:
                port = server.stdout.readline().strip()
                self.draw("data", "--treemap", "--extensionschart", "--piechart", "pie.svg", "--email", "a@example.org", "--MailServer",
                          "127.0.0.1", "--MailPort", port, "--MailSecurity", "none", "--MailFrom", "b@example.org")
            finally:
                server.terminate()
        mail = (inbox / "0.eml").read_bytes()
        for name in (b"Treemap.svg", b"Extensions.svg", b"pie.svg"):
            self.assertIn(name, mail)
        self.assertIn(b"Extensions of ", mail)  # the report has it in characters


class LinuxTest(PictureTest):
    command = program_test.LinuxTest.command


class WindowsTest(PictureTest):
    command = program_test.WindowsTest.command
    delimiter = "\\"


del PictureTest


if __name__ == "__main__":
    unittest.main()
