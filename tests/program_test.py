"""What the tests of the built program share; and what a user sees of single files, full disks and folders without permission.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
VANTREL_ORDINARY_USER is a user id for tests that root's rights would spoil.
"""

import fcntl
import os
import pathlib
import pty
import re
import shutil
import signal
import stat
import struct
import subprocess
import tempfile
import termios
import unittest

import wine

TIMEOUT = 60

OK, INCOMPLETE, WRONG_COMMAND_LINE, PATH_NOT_FOUND, CANCELLED, OUTPUT_FAILED = range(6)


def ordinary_user():
    """Keywords that make a subprocess run without root's rights."""
    if os.geteuid() != 0:
        return {}
    user = int(os.environ.get("VANTREL_ORDINARY_USER", "65534"))
    return {"user": user, "group": user, "extra_groups": []}


def require_strace(test):
    if not shutil.which("strace") or subprocess.run(["strace", "-f", "-o", "/dev/null", "true"], capture_output=True,
                                                    check=False).returncode != 0:
        test.skipTest("strace is not installed, or this system does not let it trace")


def obey_interrupts():
    """In a child: a test run in a script's background ignores them, and what it starts would do the same."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)


class Run:
    """What a run of the program left behind. The report's rows by name: (bytes, files, folders)."""

    def __init__(self, process):
        self.code = process.returncode
        self.out = process.stdout.decode("utf-8").replace("\r\n", "\n")
        self.err = wine.without_remarks(process.stderr).decode("utf-8").replace("\r\n", "\n")
        self.lines = self.out.split("\n")
        self.rows = {}
        row = re.compile(r"\s*(\S.*?) +([\d,]+) +[\d,]+ +([\d,]+) +([\d,]+) +[\d.]+ ")
        for match in filter(None, map(row.match, self.lines)):
            self.rows[match[1]] = tuple(int(number.replace(",", "")) for number in (match[2], match[3], match[4]))

    def titles(self):
        return sum(" Report, " in line for line in self.lines)


class ProgramTest(unittest.TestCase):
    """The cases for one platform's program; the classes below say which."""

    command = None
    delimiter = "/"

    def setUp(self):
        if not self.command:
            self.skipTest("no program to run")
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vantrel-program-"))
        self.folder.chmod(0o755)
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def make(self, name, size=0):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(b"x" * size)
        return path

    def native(self, path):
        return str(path)

    def run_program(self, *arguments, **keywords):
        keywords.setdefault("stdout", subprocess.PIPE)
        process = wine.run([*self.command, *arguments], stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=TIMEOUT,
                           cwd=self.folder, **keywords)
        process.stdout = process.stdout or b""
        return Run(process)

    def scan(self, *arguments, **keywords):
        columns = "name,size,allocated,files,folders,percentofparent,lastchange"
        return self.run_program("--SizeUnit", "B", "--TextColumns", columns, *arguments, **keywords)


class CommonTests:
    """What holds on both platforms."""

    def test_a_file_is_reported_as_that_file(self):
        path = self.make("single", 77)
        run = self.scan(self.native(path))
        self.assertEqual((run.code, run.err), (OK, ""))
        self.assertEqual(list(run.rows.values()), [(77, 1, 0)])

    def test_a_path_may_end_in_a_delimiter_and_hold_blanks(self):
        self.make("my folder/x", 9)
        run = self.scan(self.native(self.folder / "my folder") + self.delimiter)
        self.assertEqual((run.code, run.err), (OK, ""))
        self.assertEqual(list(run.rows.values()), [(9, 1, 0)])


class LinuxTest(CommonTests, ProgramTest):
    command = [os.environ["VANTREL_LINUX"]] if os.environ.get("VANTREL_LINUX") else None

    def on_terminal(self, *arguments, columns=80, **environment):
        """What the program writes to a terminal of this width, as lines."""
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("4H", 24, columns, 0, 0))
        variables = {name: value for name, value in os.environ.items()
                     if name not in ("NO_COLOR", "LC_ALL", "LC_CTYPE", "LANG", "TERM")}
        with os.fdopen(master, "rb") as terminal:
            with subprocess.Popen([*self.command, *arguments], stdin=subprocess.DEVNULL, stdout=slave, stderr=subprocess.PIPE,
                                  cwd=self.folder, env={**variables, "TERM": "xterm", "LANG": "C.UTF-8", **environment}) as process:
                os.close(slave)
                text = b""
                try:
                    while piece := terminal.read1(65536):
                        text += piece
                except OSError:  # the end of a terminal
                    pass
                self.assertEqual((process.wait(TIMEOUT), process.stderr.read()), (OK, b""))
        return text.decode("utf-8").replace("\r\n", "\n").split("\n")

    def test_colours_and_bars_are_for_terminals(self):
        for name, size in (("large", 60_000), ("small", 20_000)):
            self.make(f"tree/{name}/f", size)
        report = ("-a", "tree", "--title", "T")
        colours, plain = "\033[", "no colours"
        for arguments, environment, bar, color in (
                ((), {}, "█", colours), ((), {"NO_COLOR": "1"}, "█", plain), ((), {"NO_COLOR": ""}, "█", colours),
                ((), {"TERM": "dumb"}, "█", plain), (("--color", "never"), {}, "█", plain),
                (("--colour", "always"), {"NO_COLOR": "1"}, "█", colours), ((), {"LANG": "C"}, "###", colours),
                ((), {"LC_ALL": "de_DE"}, "###", colours), ((), {"TERM": "linux"}, "█", colours)):
            with self.subTest(arguments=arguments, environment=environment):
                lines = self.on_terminal(*report, *arguments, **environment)
                row = next(line for line in lines if " large" in line)
                self.assertIn(bar, row)
                self.assertEqual("\033" in "".join(lines), color == colours)
        for columns in (40, 60, 80, 132):
            for line in self.on_terminal(*report, "--color", "never", columns=columns)[3:-2]:
                self.assertLessEqual(len(line), columns, line)
        # Neither a pipe nor a file has them, unless it is told so.
        run = self.run_program(*report)
        self.assertNotRegex(run.out, "[\033█#]")
        always = self.run_program(*report, "--color", "always")
        self.assertIn("\033[91m75.0 %\033[0m", always.out)
        self.run_program(*report, "--color", "always", "--text", "file.txt")
        self.assertNotRegex((self.folder / "file.txt").read_text(encoding="utf-8"), "[\033█#]")
        self.assertEqual(self.run_program(*report, "--color", "sometimes").code, WRONG_COMMAND_LINE)

    def test_a_full_disk_is_told(self):
        self.make("x", 1)
        for arguments in ((".",), ("--help",)):
            with open("/dev/full", "wb") as full:
                run = self.run_program(*arguments, stdout=full)
            self.assertEqual(run.code, OUTPUT_FAILED, arguments)
        # Nor does a closed standard output go unnoticed.
        run = self.run_program(".", preexec_fn=lambda: os.close(1))
        self.assertEqual(run.code, OUTPUT_FAILED)

    def test_folders_that_cannot_be_read(self):
        self.make("open/x", 10)
        for i in range(3):
            (self.folder / f"closed{i}").mkdir(mode=0)
        user = ordinary_user()
        if user:
            program = shutil.copy(self.command[0], self.folder.parent / f"{self.folder.name}-program")
            self.addCleanup(os.unlink, program)
            os.chmod(program, stat.S_IRWXU | stat.S_IRGRP | stat.S_IXGRP | stat.S_IROTH | stat.S_IXOTH)
            self.command = [program]
        run = self.scan("--NumberOfListedErrors", "2", self.native(self.folder), **user)
        exported = self.run_program("--NumberOfListedErrors", "2", self.native(self.folder), "--csv", "-", **user)
        for i in range(3):
            (self.folder / f"closed{i}").chmod(0o700)
        self.assertEqual((run.code, run.err), (INCOMPLETE, ""))
        self.assertIn(" - incomplete\n", run.out)
        expected = ["incomplete: 3 folders could not be read", f"  {self.folder}/closed0: Permission denied",
                    f"  {self.folder}/closed1: Permission denied", "  … and 1 more"]
        first = run.lines.index(expected[0])
        self.assertEqual(run.lines[first:first + 4], expected)
        self.assertEqual(run.rows[str(self.folder)][:2], (10, 1))
        # Where no report is shown it is told all the same.
        self.assertEqual((exported.code, exported.err.splitlines()), (INCOMPLETE, expected))
        for i in range(3):
            row = next(line for line in exported.lines if line.startswith(f"{self.folder}/closed{i},"))
            self.assertEqual(row.split(",")[-1], "Permission denied")


class WindowsTest(CommonTests, ProgramTest):
    command = ([os.environ["VANTREL_WINE"], os.environ["VANTREL_WINDOWS"]]
               if os.environ.get("VANTREL_WINDOWS") and os.environ.get("VANTREL_WINE") else None)
    delimiter = "\\"

    def native(self, path):
        return "Z:" + str(path).replace("/", "\\")

    def test_a_slash_token_is_a_switch_known_or_not(self):
        run = self.run_program("/usr")
        self.assertEqual(run.code, WRONG_COMMAND_LINE)
        self.assertIn("Unknown Command line option: /usr", run.err)


