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
import pattern_rules
import program_test
from pattern_rules import choose, parse, read_tree

TIMEOUT = 120  # only there to catch a hang
OK, _, WRONG_COMMAND_LINE = range(3)

# A word in the environment of every program below, for patterns that name the variable.
os.environ["VANTREL_TEST_WORD"] = "report"

# Files for lists that look at paths, extensions, letter case and signs with a meaning in patterns. "/" at the end: a folder.
FILES = """
Data/a/Logs/one.log|Data/a/Logs/two.txt|Data/a/Other/three.log|Data/b/logs/four.LOG|Data/b/deep/er/Logs/five.log|Data/c/
Data/b/c.d/plain|Other/Logs/six.log|Other/x/Data/a/Logs/seven.log|Data2/a/Logs/eight.log|data/a/Logs/nine.log|Data.log/a/ten
src/main.c|src/Makefile|src/README|src/.htaccess|src/test/main.c|src/test/main.h|src/build/main.o|src/build/keep/main.o
src.old/main.c|src.old/build/out|cache-1/x|Cache-2/y|my-cache/z|cache-file|precache-file.tmp|empty/in/side/
photo.JPG|photo.jpeg|clip.mp4|notes.txt|archive.tar.gz|script.ps1|page.phtml|mail.eml.bak|mbox|users-mbox|old.~1|sheet.xlsx|x.xls
noext|ends.|.hidden|.hidden.txt|two  blanks|semi;colon.txt|star*|q?mark|[a-z]|(Foo)bar|(Name)bar|x(-)y|%s%n|%VANTREL_TEST_WORD%
quo"ted/in"side.txt|quo"ted/plain.txt|say "hello"|my report.doc|VANTREL_TEST_WORD|~tilde|a+b|c:\\d|<||bar|dotted.dir/inner.dir/leaf
(+)(-)y|  two blanks|old Logs|e.xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx
\u00c4pfel|\u00e4pfel.txt|\u00c4PFEL.TXT|a\u0308pfel.txt|\u03c3\u03af\u03c3\u03c5\u03c6\u03bf\u03c2.txt|\u03a3\u038a\u03a3\u03a5\u03a6\u039f\u03a3.TXT
\u0436\u0443\u043a.dat|\u0416\u0423\u041a.DAT|\ud83d\ude00.txt|\ud83d\ude00\ud83d\ude00|stra\u00dfe|STRASSE|\u65e5\u672c/\u8a9e.txt|2024-01-31.csv
owned/by-two|owned/by-nobody-known|owned/by-me|owned/folder-of-two/by-me
""".replace("\n", "|")
OWNERS = {"owned/by-two": 2, "owned/by-nobody-known": 54_321, "owned/folder-of-two": 2}

# One list a paragraph; {tree} is the scanned path. A paragraph that begins with "all" takes everything in, one that begins with
# "none" takes no file: for every other, the test insists that something is taken in and something left out.
LISTS = r'''
(-)*.txt

(-)main

(-)*.TMP;*.log;*.O

(-)cache*

(-)*-file

(-)*a*i*

(-)????

(-)*.?

(-)?.txt

(-)??.txt

none
(-)*.*

(-)*.

(-)c*.

(-)*.tar.*

(-)ends.

(-).hidden

(-);noext;.hidden

(-)noext;

(-)photo*;;*~1;

(-)  *blanks

(-) Logs

(-)(Foo)bar

(-)(Name)(Name)bar

(-)x(-)y

(+)(-)y

(-)(+)(-)y

(-)~tilde;a+b;[a-z]

(-)c:\d

(-)%VANTREL_TEST_WORD%

(-)(FullPath)%VANTREL_TEST_WORD%

(-)%s%

(-)äpfel

(-)ΣΊΣΥΦΟΣ

(-)жук.dat

(-)STRASSE

(-)日本

(-)"noext"

(-)"NoExt"
(-)"äpfel.txt"

(-)"say ""Hello"""

(-)"in""side.txt

(-)"*.txt"
(-)"star*"

(-)/^cache-/

(-)/^CACHE-/i

(-)/^[0-9]{4}-[0-9]{2}-[0-9]{2}\.csv$/

(-)/^.\.txt$/

(-)/^..$/

(-)/-.$/

(-)/(^|\.)h/

(-)/\.(jpe?g|mp4)$/i

(-)/^ÄPFEL/i

(-)/"|'/

*.txt

*.JPG;*.jpeg

main.*
(-)*.o

(+)main.*
(+)*.log
(-)build
(-)/^t/

"main.c"
/^t.*\.txt$/

all
*

all
*.*

*.

<||(-)*.txt
(-)*.log
<||(+)main.*

all
<||(-)*
<||*.jpg

none
nothing-is-called-so

(-)(Extension);txt;

(-)(Extension)t

(-)(extension)"LOG"

(-)(Extension)/^[A-Z]+$/

(-)(EXTENSION)x*x?x

(-)(Extension)"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"

none
(Extension)"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"

(Extension)?*
(-)(Extension)txt

all
(Extension)*.

(Owner)root

(-)(Owner)/^bin$/

(-)(Owner)"54321"

(Owner)b?n;543*

(-)(ParentPath)*/build

(-)(ParentPath)"{tree}/src"

(ParentPath)*/Logs

(-)(ParentPath)/\/a$/

(-)(Group)Images

(Group)Audio
(Group)Videos
(Group)Text
(Group)Temporary

(-)(Group)Internet
(-)(Group)Mail
(-)(Group)Office
(-)(group)Software Development

(Group)Images
(-)*.jpeg

none
(-)(Group)Miscellaneous Files

(-)src/build

(-)*/build

(-)*/test/*

(-){tree}/Data

(-){tree}/Data/*

(-){tree}/data/?

(-)"{tree}/Data"

(-)"{tree}/DATA/A"
(-)"{tree}/src/"

(-)*/Logs/*.log;*.jpg

(-)*/b*.

(-)*/c*.

(-)(FullPath)*.

(-)(FullPath)Makefile

all
(-)(Name)*/build

(-)/Data\/a/

(-)/\/B\/|hidden/i

(-)/^{tree}\/[a-m]/

(-)/src/

{tree}/Data

{tree}/Data/

{tree}/Data/*

{tree}/Data/*/Logs/*.log

{tree}/?ata/*/Logs/*.log

{tree}/src/*.c
(-)*/test

{tree}/src/*.C;{tree}/Data/b/*

{tree}/src*

{tree}/src/build/main.o

{tree}/s*/b*

"{tree}/src/build/main.o"

"{tree}/SRC/build/Main.O"
"{tree}/noext"

none
"{tree}/src"

none
{tree}/nowhere/*

{tree}/Data*
(-)*.txt

{tree}/Data/b
*.c

{tree}/*/build/*

*/Logs/*

src/test

/\/Logs\//
{tree}/src/main.c

{tree}/Data/*.

{tree}/src/*.
(-)"{tree}/src/README"

none
(FullPath)/nothing/

all
/
'''

# More of them for the hostile tree.
HOSTILE_LISTS = r'''
(-)lone-?
(-)latin1-caf?.TXT

(-)?

(-)???

(-)/^lone-$/
(-)/^lone-./
(-)/^latin1-caf/

(-)/^.$/

(-)/caf.\.txt$/
(-)/\.txt$/

(-)*[*

none
(-)*;*

(-)*"*

(-)"double""quote"
(-)"CASE"

(-)composed*

(-) leading
(-)"trailing "

(-)(Extension)?;gz

(-)back\

(-){tree}/named-folders/b*

(-)*/named-folders/?/*

{tree}/named-folders/=1+1
{tree}/named-folders/*/inside.txt

{tree}/long-chain/long-*

{tree}/deep-chain/d/d/d

{tree}/deep-chain/*/bottom.*

(-)*/below

(-)/(\/d){30}$/

{tree}/many/file-1?.*;{tree}/sizes*
(-)*.3

(-)*.png
(-)to-*

none
*.nothing
'''


def lists_for(tree, lists):
    """Yields (what the list must take in: "all", "none" or "some", its lines) for each paragraph."""
    for paragraph in lists.strip("\n").split("\n\n"):
        lines = paragraph.replace("{tree}", tree).split("\n")
        yield (lines[0], lines[1:]) if lines[0] in ("all", "none") else ("some", lines)


def make_files(top):
    for name in filter(None, FILES.split("|")):
        name = name.encode("utf-16-le", "surrogatepass").decode("utf-16-le")
        path = pathlib.Path(top, name)
        if name.endswith("/"):
            path.mkdir(parents=True)
        else:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(b"x")


class ReadingTest(unittest.TestCase):
    """The reading itself, against answers worked out by hand."""

    def matches(self, line, name, path="/top", is_folder=False):
        item = pattern_rules.Item(path, name.encode("utf-8", "surrogateescape"), is_folder, "someone")
        return parse(line).matches(item)

    def test_matches(self):
        for line, matching, others in (
                ("foo", ("xfooy.txt", "FOO"), ("fo o",)),
                ("*.jpg;*.png", ("a.JPG", ".png"), ("ajpg", "a.jpg;")),
                ("a?c", ("abc", "A?C"), ("ac", "a\U0001f600c")),
                ("*ab*ab", ("abab", "xabyab"), ("ab", "aab")),
                ("a*a", ("aa", "aba"), ("a",)),
                ("*.", ("noext", " "), ("a.b", "a.")),
                ("*.*", ("noext", "a.b"), ()),
                (";a;", ("a",), ("ab", "")),
                ("/abc", (), ("/abc", "abc")),  # the full path is /top/abc
                ("/b/", ("abc",), ("aBc",)),
                ("/^B/i", ("bc",), ("ab",)),
                ("/^a.$/", ("ab", "a\U0001f600"), ("a\udcff", "abc")),
                ("/^a$/", ("a",), ("a\udcff", "\udcffa")),
                ('"ABC"', ("abc",), ("abcd",)),
                ('"\u00c4"', ("\u00c4",), ("\u00e4",)),
                ("\u00c4", ("\u00e4",), ("a\u0308",)),
                ("(Extension)t", ("a.txt",), ("txt", "txt.")),
                ("(Foo)a", ("x(foo)a",), ("a",)),
                ("/top/a", ("a", "ab"), ("ba",)),
                ("*/t*.", ("a", "t"), ("a.b",))):
            for name in matching + others:
                with self.subTest(line=line, name=name):
                    self.assertEqual(self.matches(line, name), name in matching)

    def test_what_can_be_reached(self):
        for line, reached, others in (
                ("/C/Data/*/Logs/*.log", ("/C", "/C/Data", "/C/Data/X", "/c/data/X/Other"), ("/C/Other", "/D", "/C/Dat")),
                ("/C/Data", ("/C", "/C/Data", "/C/Data/x", "/C/Data2"), ("/C/Dat", "/C/x")),
                ("/C/?/x", ("/C", "/C/a"), ("/C/aa", "/D")),
                ('"/C/Data/x"', ("/C", "/C/Data", "/C/Data/x/y"), ("/C/D", "/C/Data/y")),
                ("/C/a;/D/b", ("/C", "/D", "/D/b/c"), ("/E",)),
                ("*/C/a", ("/E",), ()), ("/^\\/C\\/a/", ("/E",), ())):
            for folder in reached + others:
                with self.subTest(line=line, folder=folder):
                    self.assertEqual(parse("(FullPath)" + line).reaches(pattern_rules.fold(folder)), folder in reached)


class TreeTest(unittest.TestCase):
    """What a scan takes in, entry by entry."""

    program = os.environ.get("VANTREL_LIST_SCAN")

    def setUp(self):
        if not self.program:
            self.skipTest("no program to run")
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
                    self.assertEqual((files_taken, bool(choice.left_out)), (kind != "none", kind != "all"), "a list of no use")

    def test_lists_over_paths_extensions_and_signs(self):
        make_files(self.top)
        lists = LISTS
        if os.geteuid() == 0:
            for name, owner in OWNERS.items():
                os.chown(f"{self.top}/{name}", owner, owner)
        else:
            lists = "\n\n".join(paragraph for paragraph in LISTS.split("\n\n") if "(Owner)" not in paragraph)
        self.check(read_tree(self.top), lists, insisting=True)

    def test_lists_over_hostile_names_links_and_depths(self):
        hostile_tree.make(os.fsencode(self.top), levels=60, many=300, mounts=False)
        # What cannot be read is for other tests.
        for name in os.listdir(f"{self.top}/denied"):
            os.chmod(f"{self.top}/denied/{name}", 0o755)
        tree = read_tree(self.top)
        self.check(tree, HOSTILE_LISTS, insisting=True)
        self.check(tree, LISTS, insisting=False)


class SystemCallsTest(unittest.TestCase):
    """That the program leaves alone what it is told to leave out, as strace shows it."""

    def setUp(self):
        self.program = os.environ.get("VANTREL_LINUX")
        if not self.program:
            self.skipTest("no program to run")
        if not shutil.which("strace") or subprocess.run(["strace", "-f", "-o", "/dev/null", "true"], capture_output=True,
                                                        check=False).returncode != 0:
            self.skipTest("strace is not installed, or this system does not let it trace: the package is called strace")
        self.folder = os.path.realpath(tempfile.mkdtemp(prefix="vantrel-calls-"))
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ("secret/inside-1", "secret/below/inside-2", "open/deep/secret/inside-3", "open/public", "second/secret-file"):
            path = pathlib.Path(self.folder, "tree", name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(b"x")

    def calls(self, *arguments):
        """Every system call of a scan, with the paths of the descriptors that it is given and returns."""
        log = pathlib.Path(self.folder, "calls")
        run = subprocess.run(["strace", "-f", "-y", "-s", "4096", "-o", log, self.program, f"{self.folder}/tree", *arguments],
                             stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT, check=False)
        self.assertEqual((run.returncode, run.stderr), (OK, b""))
        lines = log.read_text(encoding="utf-8", errors="backslashreplace").splitlines()
        # The call that starts the program holds the patterns, and the report that it writes is no look into a folder.
        calls = [line for line in lines if not re.search(r"\b(execve|write|writev)\(", line)]
        self.assertTrue(any("getdents64(" in call and f"{self.folder}/tree/open>" in call for call in calls), "nothing was traced")
        return calls

    @staticmethod
    def inside(calls, name="secret"):
        """The calls that open a folder of the name, are given its descriptor, or name something in it."""
        quoted = re.escape(name)
        looks = re.compile(rf'\b(open|openat|openat2)\(.*"([^"]*/)?{quoted}/?"|/{quoted}(/[^>]*)?>|"([^"]*/)?{quoted}/[^"]+"|inside-[0-9]')
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
                (("--exclude", "/^cache-/i", "--filter", "*.jpg", "--importpatterns", second), [excludes[1], filters[0], *from_second]),
                (("--exclude", "(+)*.jpg", "--filter", "(-)photo"), [parse("(+)*.jpg"), parse("(-)photo")]),
                (("--exclude", "<||*"), []),
                (("/EXCLUDE", "/^cache-/i"), excludes[1:]), (("/FILTER", "/^photo/"), filters[1:])):
            with self.subTest(arguments=arguments):
                self.check(tree, arguments, patterns)

    def test_the_report_counts_what_was_left_out(self):
        # Two folders and, outside them, two files; what lies in the folders is not counted.
        run, choice = self.check(self.make_tree(), ("--exclude", "/^cache-/i", "--exclude", "*.bak;new.*"),
                                 [parse("(-)/^cache-/i"), parse("(-)*.bak;new.*")])
        self.assertEqual(len(choice.left_out), 4)
        line, = (line for line in run.lines if re.search("objects? (was|were) excluded|excluded objects?", line))
        self.assertEqual(re.findall(r"[\d,]+", line), ["4"], line)

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
