"""The checks find what they are there for: each violation is planted in a small project of its own."""

import pathlib
import subprocess
import tempfile
import unittest
import unittest.mock

from checks import floors
from checks import format as format_check
from checks import map as architecture_map
from checks.built import linked


class ProjectTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


class FloorsTest(ProjectTest):
    FORBIDDEN = [
        ("platform/Text.h", '#include "model/Node.h"', "lies above"),
        ("platform/Text.h", "  #  include <model/Node.h>", "lies above"),
        ("automation/Parser.cpp", '#include "app/Program.h"', "lies above"),
        ("presentation/Treemap.h", '#include "export/Csv.h"', "lies above"),
        ("scan/Engine.cpp", '#include "tests/support/Tree.h"', "does not know its tests"),
        ("scan/Engine.cpp", '#include "Engine.h"', "does not begin with the folder"),
        ("scan/Engine.cpp", '#include "scan/Directory_posix.h"', "private"),
        ("scan/Engine_win32.cpp", '#include "scan/Directory_posix.h"', "private"),
        ("scan/Engine.cpp", "#include <dirent.h>", "belongs to a system"),
        ("platform/Text.h", "#include <windows.h>", "belongs to a system"),
        ("export/Csv_posix.h", "#include <sys/stat.h>", "belongs to a system"),
        ("model/Node.cpp", "#include <sqlite3.h>", "is not for model/"),
        ("export/Picture.cpp", "#include <QImage>", "knows no window library"),
        ("app/Program.cpp", "#include <QtGui/QImage>", "knows no window library"),
        ("model/Node.cpp", "#if defined(_WIN32) && 1", "choose the platform by file"),
        ("app/Program.cpp", "#ifndef __linux__", "choose the platform by file"),
        ("stray/Thing.cpp", "", "lies on no floor"),
    ]

    def test_each_violation_is_found_at_its_line(self):
        for name, text, message in self.FORBIDDEN:
            with self.subTest(name=name, text=text):
                self.write(name, "#pragma once\n" + text)
                found = floors.check(self.root)
                self.assertEqual(len(found), 1, found)
                self.assertRegex(found[0], f"^{name}:[12]: .*{message}")
                (self.root / name).unlink()

    def test_the_window_may_use_its_library(self):
        for name in ("window/panes/Pane.h", "app/gui/Main_posix.cpp"):
            self.write(name, "#include <QWidget>\n#include <QtGui/QImage>\n")
        self.assertEqual(floors.check(self.root), [])

    def test_an_empty_project_does_not_pass(self):
        self.assertRegex(floors.check(self.root)[0], "nothing was checked")


class MapTest(ProjectTest):
    MAP = """# Map
Data flows from `scan/engine/Engine.h` to `platform/`; output goes to `build/release/thing`.
| `scan/engine/` | the engine |
| text | `platform/Text_posix.cpp`, `platform/Text` |
"""
    FILES = {"platform/Text.h": "#pragma once\n\n// Names.\n", "platform/Text_posix.cpp": "int a;", "platform/guess.py": '"""Guesses."""',
             "scan/engine/Engine.h": "// The engine.", "scan/engine/Engine.cpp": "int b;", "tests/scan/EngineTest.cpp": "// Tests.",
             "run": "#!/bin/sh\n# Runs.\n", "LICENSE": "not a script\n", "notes.txt": "text", "ARCHITECTURE.md": MAP}

    def setUp(self):
        super().setUp()
        for name, text in self.FILES.items():
            self.write(name, text)
        subprocess.run(["git", "init", "-q", self.root], check=True)
        self.track()

    def track(self):
        subprocess.run(["git", "-C", self.root, "add", "-A"], check=True)

    def test_each_violation_is_found(self):
        says_nothing = "does not open with a comment that says what it holds"
        for name, text, message in (
                ("scan/ntfs/Reader.h", "// Reads.", "ARCHITECTURE.md: the room scan/ntfs/ is not named"),
                ("scan/engine/Pool.cpp", "int c;", f"scan/engine/Pool.cpp: {says_nothing}"),
                ("scan/engine/Pool.h", "#pragma once\n\n#include <vector>\n// Late.", f"scan/engine/Pool.h: {says_nothing}"),
                ("tests/scan/PoolTest.cpp", "int d;", f"tests/scan/PoolTest.cpp: {says_nothing}"),
                ("tests/pool.py", "import sys", f"tests/pool.py: {says_nothing}"),
                ("go", "#!/bin/sh\nexit\n", f"go: {says_nothing}")):
            with self.subTest(name=name):
                self.write(name, text)
                self.assertEqual(architecture_map.check(self.root), [])  # git does not track it yet
                self.track()
                self.assertEqual(architecture_map.check(self.root), [message])
                (self.root / name).unlink()

    def test_a_path_that_leads_nowhere_is_found(self):
        (self.root / "platform/Text_posix.cpp").unlink()
        self.assertEqual(architecture_map.check(self.root), ["ARCHITECTURE.md:4: platform/Text_posix.cpp is not there"])


class FormatTest(ProjectTest):
    def test_a_file_that_would_be_changed_is_found(self):
        self.write(".clang-format", "BasedOnStyle: Google\n")
        self.write("model/Node.h", "int a;\n")
        self.write("model/Wrong.h", "int  a ;\n")
        subprocess.run(["git", "init", "-q", self.root], check=True)
        subprocess.run(["git", "-C", self.root, "add", "-A"], check=True)
        self.assertEqual(format_check.check(self.root), ["model/Wrong.h: is not formatted; run clang-format -i model/Wrong.h"])


class LinkedTest(ProjectTest):
    def test_a_function_without_a_caller_is_found(self):
        self.write("Floor.cpp", "namespace Vantrel { int Used() { return 0; }\nint Waits(int) { return 1; }\nint Dead() { return 2; } }\n")
        self.write("Main.cpp", "namespace Vantrel { int Used(); }\nint main() { return Vantrel::Used(); }\n")
        for command in (["g++", "-O0", "-ffunction-sections", "-c", "Floor.cpp", "Main.cpp"],
                        ["ar", "rc", "libvantrel_floor.a", "Floor.o"],
                        ["g++", "-Wl,--gc-sections", "-o", "vantrel", "Main.o", "libvantrel_floor.a"]):
            subprocess.run(command, cwd=self.root, check=True)
        for allowed, found in (("# Why.\nWaits(\nDead()\n", ""), ("Waits(\n", "Dead(): nothing in the program calls it\n"),
                               ("Waits(\nDead()\nUsed()\n", "allowed.txt: Used() is linked, or is no more\n")):
            self.write("allowed.txt", allowed)
            with self.subTest(found=found), unittest.mock.patch.object(linked, "ALLOWED", self.root / "allowed.txt"), \
                    unittest.mock.patch("sys.stdout.write") as written:
                self.assertEqual(linked.main(self.root), int(bool(found)))
                written.assert_called_once_with(found)


if __name__ == "__main__":
    unittest.main()
