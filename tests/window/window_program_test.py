"""The window program from outside: command lines that need no window, pictures with text, and the window on a display.

VANTREL_WINDOW_PROGRAM and VANTREL_CONSOLE_PROGRAM name the two programs, which are in one folder; VANTREL_WINE is what
runs them, if they are for Windows."""

import os
import pathlib
import re
import shutil
import subprocess
import time
import unittest
from xml.etree import ElementTree

import program_test
import wine
from window import display

SVG = "{http://www.w3.org/2000/svg}"
CHARTS = ("chart", "piechart", "barchart", "extensionschart", "extensionspiechart", "filetypeschart", "userschart",
          "userspiechart", "fileageschart")
PATIENCE = 60  # seconds; only there to catch a hang
WINE = [os.environ["VANTREL_WINE"]] if os.environ.get("VANTREL_WINE") else []


def program(name):
    return [*WINE, os.environ[name]] if os.environ.get(name) else None


class WindowProgramTest(program_test.ProgramTest):
    command = program("VANTREL_WINDOW_PROGRAM")
    console = program("VANTREL_CONSOLE_PROGRAM")

    def setUp(self):
        super().setUp()
        self.make("data/folder/large.iso", 300_000)
        self.make("data/\u0639\u0631\u0628\u064a <&\".txt" if not WINE else "data/\u0639\u0631\u0628\u064a &.txt", 200_000)
        self.make("data/\u4e2d\u6587 \U0001F600.bin", 100_000)

    def run_console(self, *arguments):
        window, self.command = self.command, self.console
        try:
            return self.run_program(*arguments)
        finally:
            self.command = window

    def test_runs_without_a_window_are_those_of_the_console_program(self):
        environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        seconds = re.compile(r"in [\d.]+ seconds.*")
        for arguments in (("--version",), ("--help",), ("/NOGUI", "--nooptions", "data"), ("--nooptions", "data", "--csv", "-"),
                          ("--nogiu", "data"), ("/NOGUI",)):
            with self.subTest(arguments=arguments):
                run = self.run_program(*arguments, env=environment)
                console = self.run_console(*arguments)
                self.assertEqual((run.code, seconds.sub("", run.out), run.err), (console.code, seconds.sub("", console.out), console.err))

    def test_a_window_wants_a_display(self):
        if WINE:
            self.skipTest("Windows always has one")
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        for arguments in ((), ("data",), ("--gui", "data", "--csv", "x.csv")):
            run = self.run_program("--nooptions", *arguments, env=environment)
            self.assertEqual((run.code, run.out), (program_test.WRONG_COMMAND_LINE, ""))
            self.assertIn("There is no display", run.err)
        run = self.run_program("--gui", "/NOGUI", "data")
        self.assertEqual(run.code, program_test.WRONG_COMMAND_LINE)
        self.assertIn("leave out one of them", run.err)

    # Both programs give the same file, and what the SVG file holds is at the same place in the bitmap.
    def test_png_files_show_what_svg_files_show(self):
        for dark in ("false", "true"):
            common = ("--nooptions", "data", "--collectowners", "--dark", dark, "--picturesize", "640x400")
            for name in ("treemap", *CHARTS):
                with self.subTest(name=name, dark=dark):
                    run = self.run_program(*common, f"--{name}", "a.png", f"--{name}", "a.svg")
                    self.assertEqual((run.code, run.err), (program_test.OK, ""))
                    run = self.run_console(*common, f"--{name}", "b.png")
                    self.assertEqual((run.code, run.err), (program_test.OK, ""))
                    self.assertEqual((self.folder / "a.png").read_bytes(), (self.folder / "b.png").read_bytes())
                    self.check_shapes(*display.read_png(self.folder / "a.png"),
                                      ElementTree.parse(self.folder / "a.svg").getroot())

    def check_shapes(self, width, height, pixels, drawing):
        self.assertEqual((str(width), str(height)), (drawing.get("width"), drawing.get("height")))

        def pixel(x, y):
            at = (int(y) * width + int(x)) * 3
            return "#" + pixels[at:at + 3].hex()
        texts = [(float(text.get("x")), float(text.get("y")), float(text.get("font-size"))) for text in drawing.iter(f"{SVG}text")]
        self.assertTrue(texts)
        # The corners of filled rectangles, where no text stands.
        filled = 0
        for rect in drawing.iter(f"{SVG}rect"):
            if rect.get("fill-opacity") == "0" or rect.get("fill") == "none" or float(rect.get("width")) < 6 or not rect.get("x"):
                continue
            x, y = float(rect.get("x")) + 3, float(rect.get("y")) + 3
            if float(rect.get("height")) >= 6 and not any(abs(y - b) < size and x > a - 200 for a, b, size in texts):
                self.assertEqual(pixel(x, y), rect.get("fill"), rect.attrib)
                filled += 1
        # Every text has left its colour near its base line.
        for text in drawing.iter(f"{SVG}text"):
            x, y, size = (float(text.get(key)) for key in ("x", "y", "font-size"))
            if not text.text.strip():
                continue
            room = len(text.text) * size
            left = {"middle": x - room / 2, "end": x - room}.get(text.get("text-anchor"), x)
            wanted = bytes.fromhex(text.get("fill")[1:])
            near = any(max(abs(p - q) for p, q in zip(pixels[at:at + 3], wanted)) < 60
                       for row in range(max(0, int(y - size)), min(height, int(y) + 2))
                       for at in range((row * width + max(0, int(left))) * 3,
                                       (row * width + min(width, int(left + room) + 1)) * 3, 3))
            self.assertTrue(near, f"{text.text} cannot be seen")
        return filled

    def test_the_console_program_alone_says_what_is_missing(self):
        alone = self.folder / pathlib.Path(self.console[-1]).name
        shutil.copy(self.console[-1], alone)
        if WINE:
            for library in pathlib.Path(self.console[-1]).parent.glob("*.dll"):
                shutil.copy(library, self.folder)
        self.console = [*self.console[:-1], str(alone)]
        run = self.run_console("--nooptions", "data", "--piechart", "p.png")
        self.assertEqual(run.code, program_test.WRONG_COMMAND_LINE)
        self.assertIn("only the window program, vantrel-gui, has fonts", run.err)
        run = self.run_console("--nooptions", "data", "--treemap", "t.png")
        self.assertEqual(run.code, program_test.OK)
        self.assertIn("the window program, which has, is not there", run.err)
        run = self.run_console("--nooptions", "data", "--gui")
        self.assertEqual(run.code, program_test.WRONG_COMMAND_LINE)
        self.assertIn("There is no window", run.err)

    def test_the_window_opens_and_shows_something(self):
        with display.Display() as screen:
            environment = {**os.environ, **screen.environment}
            environment.pop("QT_QPA_PLATFORM", None)
            for started in (self.command, self.console):
                with self.subTest(program=started[-1]):
                    arguments = ["--nooptions", "data"] if started is self.command else ["--gui", "--nooptions", "data"]
                    process = subprocess.Popen([*started, *arguments], cwd=self.folder, env=environment, stdin=subprocess.DEVNULL,
                                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
                    try:
                        self.assertTrue(self.appears(screen, process), "nothing was seen on the display")
                    finally:
                        if WINE:
                            wine.run([*WINE, "taskkill", "/F", "/IM", "vantrel-gui.exe"], env=environment, stdin=subprocess.DEVNULL,
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=PATIENCE)
                        process.kill()
                        process.wait(PATIENCE)

    def appears(self, screen, process):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            width, height, pixels = screen.grab()
            # A window has a ground and texts, whose edges have many colours.
            if len(display.colors(pixels)) > 20:
                name = os.environ.get("VANTREL_WINDOW_PICTURE")
                if name:
                    time.sleep(5)
                    display.write_png(name, *screen.grab())
                return True
            if process.poll() not in (None, 0):
                self.fail(f"the program ended with code {process.returncode}")
            time.sleep(0.2)
        return False


if __name__ == "__main__":
    unittest.main()
