"""Holds scans with patterns against a plain reading of the rules (pattern_rules.py): which files and folders they take in,
entry by entry; that what is excluded is never opened; and the switches of the command line, with all that may be wrong.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter, VANTREL_LIST_SCAN the program that
prints the tree of a scan; tests of what is unset are skipped.
"""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import hostile_tree
import pattern_lists
import pattern_rules
import program_test
from pattern_lists import HOSTILE_LISTS, LISTS, OWNERS, lists_for, make_files
from pattern_rules import choose, parse, read_tree

TIMEOUT = 120  # only there to catch a hang
OK, _, WRONG_COMMAND_LINE = range(3)

class TreeTest(unittest.TestCase):
    """What a scan takes in, entry by entry."""

    program = os.environ.get("VANTREL_LIST_SCAN")

    def setUp(self):
        if not self.program:
            self.skipTest("no program to run")
        os.environ.update(pattern_lists.VARIABLES)
        self.folder = os.path.realpath(tempfile.mkdtemp(prefix="vantrel-patterns-"))
        self.addCleanup(hostile_tree.remove, os.fsencode(self.folder))
        self.top = f"{self.folder}/tree"

    def scanned(self, lines):
        """The identities that the program lists."""
        path = pathlib.Path(self.folder, "patterns")
        path.write_text("".join(line + "\n" for line in lines), encoding="utf-8")
        process = subprocess.run([self.program, self.top, path], stdin=subprocess.DEVNULL, capture_output=True,
                                 timeout=TIMEOUT, check=False)
        self.assertEqual((process.returncode, process.stderr), (0, b""))
        listed = [(entry[:1].decode(), entry[1:]) for entry in process.stdout.split(b"\0")[:-1]]
        self.assertEqual(len(listed), len(set(listed)), "an entry is there twice")
        return set(listed)

    def check(self, tree, lists, insisting):
        for kind, lines in lists_for(self.top, lists):
            with self.subTest(patterns=" | ".join(lines)):
                choice = choose(tree, [parse(line) for line in lines])
                scanned = self.scanned(lines)
                for what, entries in (("missing", choice.taken - scanned), ("too many", scanned - choice.taken)):
                    self.assertEqual(sorted(entries)[:8], [], f"{len(entries)} are {what}")
                if insisting:
                    files_taken = any(kind == "f" for kind, _ in choice.taken)
                    self.assertEqual((files_taken, bool(choice.left_out)), (kind != "none", kind != "all"), "of no use")

    def test_lists_over_paths_extensions_and_signs(self):
        make_files(self.top)
        lists = LISTS
        if os.geteuid() == 0:
            for name, owner in OWNERS.items():
                os.chown(f"{self.top}/{name}", owner, owner)
        else:
            lists = "\n".join(line for line in LISTS.splitlines() if "(Owner)" not in line)
        self.check(read_tree(self.top), lists, insisting=True)

    def test_lists_over_hostile_names_links_and_depths(self):
        hostile_tree.make_readable(self.top)
        tree = read_tree(self.top)
        self.check(tree, HOSTILE_LISTS, insisting=True)
        self.check(tree, LISTS, insisting=False)


class SystemCallsTest(unittest.TestCase):
    """That the program leaves alone what it is told to leave out, as strace shows it."""

    def setUp(self):
        self.program = os.environ.get("VANTREL_LINUX")
        if not self.program:
            self.skipTest("no program to run")
        program_test.require_strace(self)
        self.folder = os.path.realpath(tempfile.mkdtemp(prefix="vantrel-calls-"))
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ("secret/inside-1", "secret/below/inside-2", "open/deep/secret/inside-3", "open/public",
                     "second/secret-file"):
            path = pathlib.Path(self.folder, "tree", name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(b"x")

    def calls(self, *arguments):
        """Every system call of a scan, with the paths of the descriptors that it is given and returns."""
        log = pathlib.Path(self.folder, "calls")
        strace = ["strace", "-f", "-y", "-s", "4096", "-o", log]
        run = subprocess.run([*strace, self.program, f"{self.folder}/tree", *arguments], stdin=subprocess.DEVNULL,
                             capture_output=True, timeout=TIMEOUT, check=False)
        self.assertEqual((run.returncode, run.stderr), (OK, b""))
        lines = log.read_text(encoding="utf-8", errors="backslashreplace").splitlines()
        # The call that starts the program holds the patterns, and the report that it writes is no look into a folder.
        calls = [line for line in lines if not re.search(r"\b(execve|write|writev)\(", line)]
        listed = [call for call in calls if "getdents64(" in call and f"{self.folder}/tree/open>" in call]
        self.assertTrue(listed, "nothing was traced")
        return calls

    @staticmethod
    def inside(calls, name="secret"):
        """The calls that open a folder of the name, are given its descriptor, or name something in it."""
        opens = rf'\b(open|openat|openat2)\(.*"([^"]*/)?{name}/?"'
        has_it_open = f"/{name}(/[^>]*)?>"
        names_content = f'"([^"]*/)?{name}/[^"]+"|inside-[0-9]'
        looks = re.compile(f"{opens}|{has_it_open}|{names_content}")
        return [call for call in calls if looks.search(call)]

    def test_an_excluded_folder_is_never_opened(self):
        # Without the pattern the same look at the calls finds each of the folders opened, and each file asked.
        found = self.inside(self.calls())
        for sign in ("getdents64(", "openat", "inside-1", "inside-2", "inside-3"):
            self.assertTrue(any(sign in call for call in found), sign)
        for pattern in ("secret", '"SECRET"', "/^secret$/", f"{self.folder}/tree/secret*;*/deep/secret", "*/secret"):
            with self.subTest(pattern=pattern):
                self.assertEqual(self.inside(self.calls("--exclude", pattern)), [])

    def test_what_no_path_can_reach_is_never_opened(self):
        pattern = f"{self.folder}/tree/open/pub*"
        calls = self.calls("--filter", pattern)
        self.assertEqual([self.inside(calls), self.inside(calls, "second"), self.inside(calls, "below")], [[], [], []])
        self.assertTrue(self.inside(calls, "open"))


class CommandLineTests:
    """The switches, what the report says of them, and every way to get a pattern wrong; on both platforms."""

    names = ("photo.JPG", "photo.jpeg", "notes.txt", "a/Cache-1/x.jpg", "a/cache-2/y.txt", "a/b/old.bak", "a/b/new.tmp",
             "a/b/holiday.jpg", "empty.tmp/z.jpg", "a/my-cache/keep.jpg", "with blank.jpg")

    def make_tree(self):
        for size, name in enumerate(self.names, 1):
            self.make(f"tree/{name}", size)
        return read_tree(self.folder / "tree")

    def scan_tree(self, *arguments):
        return self.scan(self.native(self.folder / "tree"), *arguments)

    def totals(self, choice):
        sizes = [os.lstat(path).st_size for kind, path in choice.taken if kind == "f"]
        return sum(sizes), len(sizes), len(choice.taken) - len(sizes)

    def pattern_file(self, name, *lines):
        path = self.folder / name
        path.write_text("".join(line + "\n" for line in lines), encoding="utf-8")
        return name

    def check(self, tree, arguments, patterns):
        """The report's totals, and how many objects it says each exclude pattern kept out."""
        choice = choose(tree, patterns)
        run = self.scan_tree(*arguments)
        self.assertEqual((run.code, run.err), (OK, ""))
        self.assertEqual(run.rows[self.native(self.folder / "tree")], self.totals(choice))
        # Beside include patterns a file may be left out for two reasons, and which one counts is not laid down.
        if all(pattern.excludes for pattern in patterns):
            excluded = [pattern for _, pattern in choice.left_out]
            for pattern in set(excluded):
                self.assert_a_line_counts(run, pattern.text, excluded.count(pattern))
        return run, choice

    def assert_a_line_counts(self, run, text, count):
        lines = [line for line in run.lines if text in line]
        self.assertEqual(len(lines), 1, f"{text} in {run.lines}")
        self.assertEqual(re.findall(r"[\d,]+", lines[0].replace(text, "")), [str(count)], lines[0])

    def test_each_switch_once_and_repeated(self):
        tree = self.make_tree()
        first = self.pattern_file("first.txt", "(-)*.tmp", "<||(-)photo*", "*.txt")
        second = self.pattern_file("second.txt", "(-)notes*", '"old.bak"')
        from_first = [parse("(-)*.tmp"), parse("*.txt")]
        from_second = [parse("(-)notes*"), parse('"old.bak"')]
        excludes = [parse(text, excludes=True) for text in ("*.tmp;*.bak", "/^cache-/i")]
        filters = [parse(text) for text in ("*.jpg", "/^photo/")]
        for arguments, patterns in (
                (("--exclude", "*.tmp;*.bak"), excludes[:1]),
                (("--exclude", "*.tmp;*.bak", "--exclude", "/^cache-/i"), excludes),
                (("--filter", "*.jpg"), filters[:1]),
                (("--FILTER", "*.jpg", "/filter", "/^photo/"), filters),
                (("--importpatterns", first), from_first),
                (("/IMPORTPATTERNS", first, "--importpatterns", second), from_first + from_second),
                (("--exclude", "/^cache-/i", "--filter", "*.jpg", "--importpatterns", second),
                 [excludes[1], filters[0], *from_second]),
                (("--exclude", "(+)*.jpg", "--filter", "(-)photo"), [parse("(+)*.jpg"), parse("(-)photo")]),
                (("--exclude", "<||*"), []),
                (("/EXCLUDE", "/^cache-/i"), excludes[1:]), (("/FILTER", "/^photo/"), filters[1:])):
            with self.subTest(arguments=arguments):
                self.check(tree, arguments, patterns)

    def test_a_path_means_the_folder_alone(self):
        self.make_tree()
        self.make("tree/a/b2/beside.txt", 100)
        self.make("tree/other/a/b/deep.txt", 1000)
        folder = self.native(self.folder / "tree/a/b")
        inside = [path for path in (self.folder / "tree/a/b").iterdir()]
        all_sizes = sum(path.stat().st_size for path in (self.folder / "tree").rglob("*") if path.is_file())
        inside_sizes = sum(path.stat().st_size for path in inside)
        patterns = [(folder, inside_sizes), (folder + self.delimiter, inside_sizes), ("(FullPath)" + folder, inside_sizes),
                    ("a/b", inside_sizes + 1000), ("other/a/b/", 1000)]
        for pattern, size in patterns:
            with self.subTest(pattern=pattern):
                left = self.scan_tree("--exclude", pattern)
                taken = self.scan_tree("--filter", pattern)
                self.assertEqual((left.code, left.err, taken.code, taken.err), (OK, "", OK, ""))
                top = self.native(self.folder / "tree")
                self.assertEqual((left.rows[top][0], taken.rows[top][0]), (all_sizes - size, size))

    def assert_refused(self, arguments, *named):
        """One message that names all that, the usage, and no report."""
        run = self.scan_tree(*arguments)
        self.assertEqual((run.code, run.out), (WRONG_COMMAND_LINE, ""))
        message, usage, _ = run.err.partition("Usage: ")
        self.assertTrue(usage, run.err)
        self.assertEqual(len(message.strip().splitlines()), 1, message)
        for text in named:
            self.assertIn(text, message)
        return message

    def test_patterns_that_are_wrong(self):
        self.make_tree()
        good = self.pattern_file("good.txt", "*.jpg")
        for switch in ("--exclude", "--filter"):
            for pattern in ("/(unclosed/", "/[a-/i", "(Group)Nonsense", "(Name)/*/"):
                with self.subTest(switch=switch, pattern=pattern):
                    self.assert_refused((switch, pattern), pattern)
                    self.assert_refused(("--filter", "*.jpg", "--importpatterns", good, switch, pattern), pattern)
            with self.subTest(switch=switch, pattern="empty"):
                self.assert_refused((switch, ""))

    def test_pattern_files_that_are_wrong(self):
        self.make_tree()
        good = self.pattern_file("good.txt", "*.jpg", "(-)*.bak")
        (self.folder / "folder.txt").mkdir()
        (self.folder / "binary.txt").write_bytes(b"*.jpg\n*.p\0ng\n")
        (self.folder / "latin.txt").write_bytes(b"*.jpg\n(-)caf\xe9*\n")
        for name in ("missing.txt", "folder.txt", "binary.txt", "latin.txt"):
            with self.subTest(file=name):
                self.assert_refused(("--importpatterns", name), name)
                self.assert_refused(("--importpatterns", good, "--importpatterns", name), name)
        for pattern in ("/(unclosed/", "(Group)Nonsense", "(-)/[/i"):
            with self.subTest(line=pattern):
                name = self.pattern_file("bad.txt", "*.jpg", "(-)*.bak", pattern, "*.png")
                text = pattern.removeprefix("(-)")
                message = self.assert_refused(("--importpatterns", name), text, name)
                self.assertRegex(message.replace(text, ""), r"\b3\b")
                self.assert_refused(("--filter", "*.txt", "--importpatterns", good, "--importpatterns", name), text, name)


class LinuxCommandLineTest(CommandLineTests, program_test.ProgramTest):
    command = program_test.LinuxTest.command


class WindowsCommandLineTest(CommandLineTests, program_test.ProgramTest):
    command = program_test.WindowsTest.command
    delimiter = "\\"
    native = program_test.WindowsTest.native


if __name__ == "__main__":
    unittest.main()
