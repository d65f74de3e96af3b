"""The history of scans, recorded by several processes at once, some of them killed, and read back by Python's sqlite3.

VANTREL_RECORD_HISTORY and VANTREL_RECORD_HISTORY_WINDOWS name the programs that record made-up scans, VANTREL_WINE what runs
the latter; tests of what is unset are skipped.
"""

import datetime
import os
import pathlib
import re
import resource
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import unittest
import zoneinfo

import wine
from program_test import ordinary_user

TIMEOUT = 300  # only there to catch a hang

TABLES = (
    "CREATE TABLE ROOTS (ID\tINTEGER NOT NULL UNIQUE,PATH TEXT NOT NULL UNIQUE,PRIMARY KEY(ID AUTOINCREMENT))",
    "CREATE TABLE SCANS (ID\tINTEGER NOT NULL UNIQUE,ROOT_ID\tINTEGER NOT NULL,\tDATE\tREAL NOT NULL,\tVERSION\tTEXT NULL, "
    "SIZE\tINTEGER NOT NULL,\tALLOCATED\tINTEGER NOT NULL,\tFILES\tINTEGER NOT NULL,\tFREE_SPACE\tINTEGER NOT NULL,"
    "PATTERN_ID INTEGER,EXCLUDED_OBJECTS INTEGER, PRIMARY KEY(ID AUTOINCREMENT),\tFOREIGN KEY(ROOT_ID) REFERENCES ROOTS(ID),"
    "FOREIGN KEY(PATTERN_ID) REFERENCES PATTERNS(ID))",
    "CREATE TABLE PATTERNS (ID\tINTEGER NOT NULL UNIQUE, PATTERN\tTEXT NOT NULL UNIQUE, PRIMARY KEY(ID AUTOINCREMENT))",
    "CREATE INDEX INDEX_1 ON SCANS (ROOT_ID ASC)",
    "CREATE INDEX INDEX_2 ON SCANS (ROOT_ID ASC ,PATTERN_ID ASC)",
    "CREATE INDEX INDEX_3 ON ROOTS (PATH ASC)",
    "CREATE INDEX INDEX_4 ON PATTERNS (PATTERN ASC)")


def exact(text):
    """The units of a recorded text, with those that UTF-8 cannot hold."""
    return re.sub("\x1a([0-9A-F]{4})", lambda match: chr(int(match[1], 16)), text)


class HistoryTest:
    command = None

    def setUp(self):
        if not self.command:
            self.skipTest("no program to run")
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vantrel-history-")).resolve()
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.file = self.folder / "history.db"

    def start(self, *arguments, **settings):
        command = [*self.command, *map(self.native, arguments)]
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   **settings)
        process.started_again = lambda: self.start(*arguments, **settings)
        self.addCleanup(self.end, process)
        return process

    def finish(self, process):
        """The exit code, and what was written."""
        for starts_left in reversed(range(wine.STARTS)):
            output, error = process.communicate(timeout=TIMEOUT)
            if not starts_left or not wine.broke_down(process.args, process.returncode, output + error):
                break
            process = process.started_again()
        return process.returncode, output, wine.without_remarks(error).decode().strip()

    @staticmethod
    def end(process):
        process.kill()
        process.communicate()

    @staticmethod
    def native(argument):
        return argument if isinstance(argument, bytes) else str(argument)

    def recorded(self, process, code=0):
        """The sizes that a process says it has recorded."""
        found, output, error = self.finish(process)
        self.assertEqual(found, code, error)
        return [int(size) for size in output.split()]

    def message(self, process):
        code, _, error = self.finish(process)
        self.assertEqual(code, 1)
        return error

    def rows(self, sql, file=None):
        """Also finds out whether the file is sound, once what a killed process has left is rolled back."""
        connection = sqlite3.connect(file or self.file, timeout=TIMEOUT)
        try:
            self.assertEqual(connection.execute("PRAGMA integrity_check").fetchall(), [("ok",)])
            self.assertEqual(connection.execute("PRAGMA foreign_key_check").fetchall(), [])
            return connection.execute(sql).fetchall()
        finally:
            connection.close()

    def sizes(self, file=None):
        return sorted(size for size, in self.rows("SELECT SIZE FROM SCANS", file))

    def test_eight_processes_lose_no_row(self):
        processes = [self.start(self.file, f"root {i % 3}", 200, 1000 * i) for i in range(8)]
        expected = [self.recorded(process) for process in processes]
        self.assertEqual(expected, [list(range(1000 * i, 1000 * i + 200)) for i in range(8)])
        self.assertEqual(self.sizes(), sorted(size for sizes in expected for size in sizes))
        counts = self.rows("SELECT COUNT(*) FROM SCANS JOIN ROOTS ON ROOTS.ID = ROOT_ID GROUP BY PATH ORDER BY PATH")
        self.assertEqual(counts, [(600,), (600,), (400,)])
        self.assertEqual(self.rows("SELECT COUNT(*) FROM SCANS WHERE ALLOCATED <> 2 * SIZE OR FILES <> 7 OR VERSION <> '1.2.3'"),
                         [(0,)])

    def test_a_killed_process_takes_no_row_along(self):
        others = [self.start(self.file, f"root {i}", 100, 1000 * i) for i in range(2)]
        killed = {}
        for number in range(6):
            victim = self.start(self.file, "root 0", 10**6, 10**9 * (number + 1))
            printed = [int(victim.stdout.readline()) for _ in range(1 + 7 * number)]
            victim.kill()
            # Not by communicate(), which passes over what readline() has read ahead. A line is written in one piece.
            printed += [int(size) for size in victim.stdout.read().split()]
            killed[number] = printed
        expected = [size for process in others for size in self.recorded(process)]
        self.assertEqual(len(expected), 200)
        sizes = self.sizes()
        self.assertEqual([size for size in sizes if size < 10**9], sorted(expected))
        for number, printed in killed.items():
            begin = 10**9 * (number + 1)
            own = [size for size in sizes if begin <= size < begin + 10**9]
            # The last one may have been recorded, but not told any more.
            self.assertIn(own, (printed, [*printed, printed[-1] + 1]))
        # And the next one goes on where they were killed.
        self.assertEqual(self.recorded(self.start(self.file, "root 0", 1, 5)), [5])

    def test_an_export_is_sound_while_others_record(self):
        writers = [self.start(self.file, "root", 10**6, 10**9 * i) for i in range(3)]
        for writer in writers:
            writer.stdout.readline()
        for number in range(4):
            copy = self.folder / f"copy {number}.db"
            before = len(self.sizes())
            self.recorded(self.start("export", self.file, copy))
            sizes = self.sizes(copy)
            self.assertGreaterEqual(len(sizes), before)
            for i in range(3):
                own = [size for size in sizes if 10**9 * i <= size < 10**9 * (i + 1)]
                self.assertEqual(own, list(range(10**9 * i, 10**9 * i + len(own))))
            fresh = self.folder / f"fresh {number}.db"
            self.assertEqual(self.recorded(self.start("import", copy, fresh)), [len(sizes)])
            self.assertEqual(self.recorded(self.start("import", copy, fresh)), [0])
            self.assertEqual(self.sizes(fresh), sizes)
        for writer in writers:
            self.end(writer)

    def test_tables_and_indexes(self):
        self.recorded(self.start(self.file, "root", 1, 1))
        found = self.rows("SELECT sql FROM sqlite_master WHERE sql IS NOT NULL AND name NOT LIKE 'sqlite_%' ORDER BY rootpage")
        self.assertCountEqual([sql for sql, in found], TABLES)

    def test_dates_are_local_day_counts(self):
        for name in self.zones:
            with self.subTest(zone=name):
                def now():
                    local = datetime.datetime.now(zoneinfo.ZoneInfo(name)).replace(tzinfo=None)
                    return (local - datetime.datetime(1899, 12, 30)) / datetime.timedelta(days=1)

                before = now()
                self.recorded(self.start(self.file, name, 1, 1, env={**os.environ, "TZ": name}))
                after = now()
                date, = self.rows("SELECT DATE FROM SCANS ORDER BY ID DESC")[0]
                millisecond = 1 / 86_400_000
                self.assertLessEqual(before - millisecond, date)
                self.assertLessEqual(date, after + millisecond)


class LinuxTest(HistoryTest, unittest.TestCase):
    command = [os.environ["VANTREL_RECORD_HISTORY"]] if "VANTREL_RECORD_HISTORY" in os.environ else None
    zones = ("UTC", "Europe/Berlin", "America/St_Johns", "Pacific/Kiritimati")

    def test_one_folder_has_one_path(self):
        (self.folder / "real").mkdir()
        (self.folder / "link").symlink_to("real")
        for typed in ("real", "link", "link/", "link/../real/.", "./link"):
            self.recorded(self.start(self.file, self.folder / typed if typed != "./link" else typed, 1, 1, cwd=self.folder))
        self.recorded(self.start(self.file, self.folder / "link/gone/*.txt", 1, 1))
        self.assertEqual(self.rows("SELECT PATH FROM ROOTS ORDER BY ID"),
                         [(str(self.folder / "real"),), (str(self.folder / "real/gone/*.txt"),)])

    def test_names_that_are_no_text(self):
        names = [b"it's", b"\xff\xfe", b"\xc3\xa9\xc3", b"\x1aDCFF", b"\xed\xa0\x80", b"'; DROP TABLE SCANS; --"]
        for name in names:
            self.recorded(self.start(self.file, os.fsencode(self.folder) + b"/" + name, 1, 1))
        recorded = [exact(path) for path, in self.rows("SELECT PATH FROM ROOTS ORDER BY ID")]
        # Python, too, keeps a byte that does not decode as U+DC00 + byte.
        self.assertEqual([path.encode("utf-8", "surrogateescape") for path in recorded],
                         [os.fsencode(self.folder) + b"/" + name for name in names])

    def test_a_full_disk_leaves_what_was_recorded(self):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (65536, 65536))

        process = self.start(self.file, "root", 10**6, 0, preexec_fn=limit)
        output, error = process.communicate(timeout=TIMEOUT)
        self.assertEqual(process.returncode, 1)
        self.assertRegex(error.decode(), rf'^The database "{self.file}": .* on sql: .*\n$')
        sizes = [int(size) for size in output.split()]
        self.assertGreater(len(sizes), 100)
        self.assertEqual(self.sizes(), sizes)

    def test_a_file_that_may_not_be_written(self):
        self.recorded(self.start(self.file, "root", 2, 1))
        self.folder.chmod(0o755)
        self.file.chmod(0o444)
        user = ordinary_user()
        message = self.message(self.start(self.file, "root", 1, 1, **user))
        self.assertRegex(message, rf'^The database "{self.file}": attempt to write a readonly database on sql: INSERT INTO ')
        # A history that is read only can still be looked at, and taken in elsewhere.
        shared = self.folder / "shared"
        shared.mkdir()
        shared.chmod(0o777)
        self.assertEqual(self.recorded(self.start("import", self.file, shared / "own.db", **user)), [2])
        missing = self.message(self.start("import", self.folder / "missing.db", shared / "own.db", **user))
        self.assertEqual(missing, f'The database "{self.folder}/missing.db" cannot be opened: No such file or directory')


class WindowsTest(HistoryTest, unittest.TestCase):
    command = ([os.environ["VANTREL_WINE"], os.environ["VANTREL_RECORD_HISTORY_WINDOWS"]]
               if {"VANTREL_WINE", "VANTREL_RECORD_HISTORY_WINDOWS"} <= os.environ.keys() else None)
    zones = ("UTC", "Europe/Berlin")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if cls.command:
            wine.keep_running(cls)

    @staticmethod
    def native(argument):
        return "Z:" + str(argument).replace("/", "\\") if isinstance(argument, pathlib.Path) else str(argument)

    def test_one_folder_has_one_path(self):
        (self.folder / "Real Folder").mkdir()
        path = self.native(self.folder / "Real Folder")
        for typed in (path, path.lower(), path + "\\", path.replace("\\", "/"), "\\\\?\\" + path):
            self.recorded(self.start(self.file, typed, 1, 1))
        # A share that is away is known by its name.
        for typed in (path.lower() + "\\gone\\*.txt", r"\\nobody\share", "\\\\nobody\\share\\", r"\\nobody\share\folder"):
            self.recorded(self.start(self.file, typed, 1, 1))
        self.assertEqual([path for path, in self.rows("SELECT PATH FROM ROOTS ORDER BY ID")],
                         [path, path + "\\gone\\*.txt", r"\\nobody\share", r"\\nobody\share\folder"])


if __name__ == "__main__":
    unittest.main()
