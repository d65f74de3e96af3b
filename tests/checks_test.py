"""The checks find what they are there for: each violation is planted in a small project of its own."""

import pathlib
import subprocess
import tempfile
import unittest

from checks import floors
from checks import map as architecture_map


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
    ALLOWED = [
        ("model/Node.h", '#include "platform/Text.h"'),
        ("model/Node.cpp", '#include "model/Node.h"\n#include <vector>\n#include <boost/smart_ptr/intrusive_ptr.hpp>'),
        ("scan/ntfs/Reader.cpp", '#include "scan/Engine.h"'),
        ("app/Main_posix.cpp", '#include "automation/Parser.h"\n#include <unistd.h>'),
        ("platform/Text_win32.cpp", '#include "platform/Handle_win32.h"\n#include <windows.h>'),
        ("platform/Handle_win32.h", "#include <windows.h>"),
        ("platform/Clock.h", "#ifdef _WIN32"),
        ("scan/Pool.cpp", "#if defined(__linux__)"),
        ("export/History.cpp", "#include <sqlite3.h>"),
        ("model/Guard.h", "#ifndef MODEL_GUARD"),
        ("tests/model/NodeTest.cpp", '#include "app/Program.h"\n#include <sys/stat.h>\n#ifdef __linux__'),
        ("build/release/generated.h", '#include "app/Program.h"'),
    ]
    FORBIDDEN = [
        ("platform/Text.h", '#include "model/Node.h"', "lies above"),
        ("platform/Text.h", "  #  include <model/Node.h>", "lies above"),
        ("automation/Parser.cpp", '#include "app/Program.h"', "lies above"),
        ("export/Csv.cpp", '#include "presentation/Treemap.h"', "lies beside"),
        ("presentation/Treemap.h", '#include "export/Csv.h"', "lies beside"),
        ("scan/Engine.cpp", '#include "tests/support/Tree.h"', "does not know its tests"),
        ("scan/Engine.cpp", '#include "Engine.h"', "does not begin with the folder"),
        ("scan/Engine.cpp", '#include "scan/Directory_posix.h"', "private"),
        ("scan/Engine_win32.cpp", '#include "scan/Directory_posix.h"', "private"),
        ("scan/Engine.cpp", "#include <dirent.h>", "belongs to a system"),
        ("platform/Text.h", "#include <windows.h>", "belongs to a system"),
        ("export/Csv_posix.h", "#include <sys/stat.h>", "belongs to a system"),
        ("model/Node.cpp", "#include <sqlite3.h>", "is not for model/"),
        ("model/Node.cpp", "#if defined(_WIN32) && 1", "choose the platform by file"),
        ("app/Program.cpp", "#ifndef __linux__", "choose the platform by file"),
        ("stray/Thing.cpp", "", "lies on no floor"),
    ]

    def test_includes_that_point_down_pass(self):
        for name, text in self.ALLOWED:
            self.write(name, text)
        self.assertEqual(floors.check(self.root), [])

    def test_each_violation_is_found_at_its_line(self):
        for name, text, message in self.FORBIDDEN:
            with self.subTest(name=name, text=text):
                self.write(name, "#pragma once\n" + text)
                found = floors.check(self.root)
                self.assertEqual(len(found), 1, found)
                self.assertRegex(found[0], f"^{name}:[12]: .*{message}")
                (self.root / name).unlink()

    def test_an_empty_project_does_not_pass(self):
        self.assertRegex(floors.check(self.root)[0], "nothing was checked")


class MapTest(ProjectTest):
    MAP = """# Map
Data flows from `scan/Engine.h` to `platform/`; output goes to `build/release/thing`.
## The root: `./`
| file | what |
|---|---|
| `run` | builds |
## `platform/`
| file | what |
|---|---|
| `Text` | names |
| `Old.h`, `Guess.py` | the rest; uses `Nothing` |
## `scan/`
| file | what |
|---|---|
| `Engine` | the engine |
## Where to go
| I want to change | open |
|---|---|
| text | `platform/Text_posix.cpp` |
"""
    FILES = ["platform/Text.h", "platform/Text.cpp", "platform/Text_posix.cpp", "platform/Old.h", "platform/Guess.py",
             "scan/Engine.h", "scan/Engine.cpp", "notes.txt"]

    def setUp(self):
        super().setUp()
        for name in self.FILES:
            self.write(name, "text\n")
        self.write("run", "#!/bin/sh\n")
        self.write("LICENSE", "not a script\n")
        self.write("ARCHITECTURE.md", self.MAP)
        subprocess.run(["git", "init", "-q", self.root], check=True)
        self.track()

    def track(self):
        subprocess.run(["git", "-C", self.root, "add", "-A"], check=True)

    def change_map(self, old, new):
        self.assertIn(old, self.MAP)
        self.write("ARCHITECTURE.md", self.MAP.replace(old, new))

    def test_a_true_map_passes(self):
        self.assertEqual(architecture_map.check(self.root), [])

    def test_a_new_file_has_to_be_named(self):
        for name, text in (("scan/Pool.cpp", ""), ("Engine.h", ""), ("scan/Engine_extra.cpp", ""), ("go", "#!/bin/sh")):
            with self.subTest(name=name):
                self.write(name, text)
                self.assertEqual(architecture_map.check(self.root), [])  # git does not track it yet
                self.track()
                self.assertEqual(architecture_map.check(self.root), [f"{name}: ARCHITECTURE.md does not name it"])
                (self.root / name).unlink()

    def test_a_file_that_is_gone_may_not_be_named(self):
        (self.root / "platform/Guess.py").unlink()
        self.assertEqual(architecture_map.check(self.root), ["ARCHITECTURE.md:11: platform/Guess.py is not there"])

    def test_wrong_entries_are_found(self):
        self.change_map("`Old.h`,", "`Old.h`, `Text.cpp`,")
        self.assertEqual(architecture_map.check(self.root),
                         ["ARCHITECTURE.md:11: platform/Text.cpp is named in line 10 already"])
        self.change_map("`Engine` |", "`Engine.h` |")
        self.assertEqual(architecture_map.check(self.root), ["scan/Engine.cpp: ARCHITECTURE.md does not name it"])
        self.change_map("| `platform/Text_posix.cpp`", "| `platform/Text_win32.cpp`")
        self.assertEqual(architecture_map.check(self.root),
                         ["ARCHITECTURE.md:19: platform/Text_win32.cpp is not there"])


if __name__ == "__main__":
    unittest.main()
