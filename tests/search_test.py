"""Holds searches against a plain reading of the rules (query_rules.py): generated queries on a generated tree, from the disk and
from a saved scan; the order of what is found; its exports; and what the command line refuses.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
VANTREL_QUERIES and VANTREL_QUERIES_SEED turn the test into a long run.
"""

import calendar
import csv
import io
import os
import pathlib
import random
import re
import shutil
import subprocess
import tempfile
import time
import unittest

import program_test
import query_rules
import wine

TIMEOUT = 120  # only there to catch a hang
OK, INCOMPLETE, WRONG_COMMAND_LINE, PATH_NOT_FOUND = range(4)
OUTPUT_FAILED = 5
QUERIES = int(os.environ.get("VANTREL_QUERIES", "120"))
SEED = int(os.environ.get("VANTREL_QUERIES_SEED", "1"))

NAMES = ("report", "Report final", "photo", "IMG_0001", "notes", "a", "b", "x y z", "größe", "archive.tar", "data-2024", ".hidden",
         "read me", "Ärger", "лог", "cache", "1,5", "(copy)", "it's", "50%")
EXTENSIONS = ("", ".txt", ".TXT", ".jpg", ".iso", ".zip", ".tmp", ".c", ".mp3", ".tar.gz", ".pdf")
TEXTS = ("", "needle", "a Needle in the hay", "nothing here", "größe", "error 404", "warning: x", "abc abc abd")
KB = 1024
SIZES = (0, 1, 5, 1000, KB - 1, KB, KB + 1, 10 * KB, 999_999, KB * KB, KB * KB + 1, 5 * KB * KB, 300 * KB * KB)
YEAR = 365 * 86400


def make_tree(top, seed):
    """A few hundred files and folders. Large files are holes behind their text."""
    chance = random.Random(seed)
    now = int(time.time())
    folders = [pathlib.Path(top)]
    folders[0].mkdir()
    for _ in range(25):
        folder = chance.choice(folders) / f"{chance.choice(NAMES)}{chance.choice(('', '.d', ' 2'))}"
        if not folder.exists():
            folder.mkdir()
            folders.append(folder)
    for _ in range(220):
        path = chance.choice(folders) / f"{chance.choice(NAMES)}{chance.choice(EXTENSIONS)}"
        if path.exists():
            continue
        text = chance.choice(TEXTS).encode()
        with open(path, "wb") as file:
            file.write(text)
            file.truncate(max(len(text), chance.choice(SIZES)))
        # Away from the edges of ages and days, so that none passes while the test runs.
        age = chance.choice((3600 * 5, 86400 * 3, 86400 * 40, YEAR, YEAR * 2, YEAR * 6))
        changed = (now - age) // 3600 * 3600 + 1830
        os.utime(path, (changed - 7200, changed))
    for folder in reversed(folders):
        os.utime(folder, (now - YEAR * 3, now - YEAR * 3))


def read_tree(top, shown=lambda path: path, delimiter="/"):
    """The entries as query_rules has them, under the paths that the program shows."""
    entries = []
    read = {}
    for folder, folders, files in os.walk(top):
        relative = os.path.relpath(folder, top)
        level = 1 if relative == "." else relative.count("/") + 2
        for name in folders + files:
            path = f"{folder}/{name}"
            status = os.lstat(path)
            is_folder = name in folders
            # Of a long file the text in front is all that is no zero.
            contents = "" if is_folder else pathlib.Path(path).read_bytes()[:100].rstrip(b"\0").decode()
            read[path] = (status.st_atime_ns, status.st_mtime_ns)
            entries.append({
                "name": name, "folder": shown(folder), "level": level, "is_folder": is_folder,
                "size": 0 if is_folder else status.st_size, "accessed": int(status.st_atime), "created": None,
                "modified": int(status.st_mtime), "attributes": "D" * is_folder, "owner": "", "contents": contents,
                "keywords": [], "path": f"{shown(folder)}{delimiter}{name}",
                "sorted": 1 if is_folder else -status.st_size})
    for path, times in read.items():
        os.utime(path, ns=times)  # reading has changed the dates of access
    return entries


class Queries:
    """Makes queries at random: conditions, and lists and groups of them."""

    def __init__(self, seed, on_disk):
        self.chance = random.Random(seed)
        self.on_disk = on_disk

    def pick(self, *values):
        return self.chance.choice(values)

    def word(self):
        word = self.pick("re", "report", "a", "IMG", "note", "größe", "ä", "e", "data-2024", "*.txt", "*a*", "?", "R*t*", "лог",
                         "*.tar.*", "x y", "cache", "(copy)")
        return f'"{word}"' if set(word) & set(' ,;()') or self.chance.random() < 0.1 else word

    def number(self):
        return self.pick("1", "0B", "1KB", "1024B", "1,000KB", "10kib", "5MB", "1000B", "1GB", "1MB-300MB", "1KB-10KB")

    def date(self):
        return self.pick("2024", "2023", "today", "yesterday", "2025-03", "2020-2024", '"10 days"', '"1 year"', '"2 months"', "2024-02-29")

    def condition(self):
        operator = self.pick("", "", "=", "!=", "<", "<=", ">", ">=")
        kind = self.chance.random()
        if kind < 0.3:
            return self.word() if self.chance.random() < 0.5 else f"name:{self.pick('', '=', '!=')}{self.word()}"
        if kind < 0.4:
            return f"ext:{self.pick('', '!=')}{self.pick('txt', 'jpg;iso', 'tar.gz', 'TMP', '*')}"
        if kind < 0.45:
            return f"name:{self.pick('~', '!~')}{self.pick('^[a-z]+$', 'o+', '[0-9]{2,}', 'e.*t')}"
        if kind < 0.62:
            value = self.number()
            return f"size:{self.pick('', '=') if '-' in value else operator}{value}"
        if kind < 0.78 and self.on_disk:  # a scan gives a folder the newest date of what lies beneath
            value = self.date()
            return f"{self.pick('modified', 'modified', 'accessed')}:{self.pick('', '=', '!=') if value == '2020-2024' else operator}{value}"
        if kind < 0.83:
            return f"path:{self.pick('', '!=')}{self.pick('report', 'cache', 'a', 'x*')}"
        if kind < 0.88:
            return f"mdata:depth:{self.pick('<=', '=', '>')}{self.pick('1', '2', '3')}"
        if kind < 0.92:
            return self.pick("attribute:D", "attribute:!=D", "filetype:Images", "filetype:!=Images")
        if self.on_disk:
            return f"content:{self.pick('', '!=', '~', '!~')}{self.pick('needle', 'Needle', 'abc', 'größe', 'err', 'x')}"
        return self.word()

    def query(self, depth=0):
        count = self.pick(1, 1, 2, 2, 3)
        parts = []
        for _ in range(count):
            nested = depth < 3 and self.chance.random() < 0.25
            parts.append(f"({self.query(depth + 1)})" if nested else self.condition())
        query = parts[0]
        for part in parts[1:]:
            query += self.pick(" ", " AND ", " OR ") + part
        return query


class SearchTest(unittest.TestCase):
    program = os.environ.get("VANTREL_LINUX")
    on_windows = False
    queries = QUERIES

    @classmethod
    def setUpClass(cls):
        if not cls.program:
            raise unittest.SkipTest("no program to run")
        cls.command = [os.environ["VANTREL_WINE"], cls.program] if cls.on_windows else [cls.program]
        cls.folder = os.path.realpath(tempfile.mkdtemp(prefix="vantrel-query-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.top = f"{cls.folder}/tree"
        make_tree(cls.top, SEED)
        cls.delimiter = "\\" if cls.on_windows else "/"
        cls.entries = read_tree(cls.top, cls.shown, cls.delimiter)
        if cls.on_windows:
            wine.keep_running(cls)

    @classmethod
    def shown(cls, path):
        return "Z:" + path.replace("/", "\\") if cls.on_windows else path

    def run_program(self, *arguments, code=OK):
        environment = os.environ | {"TZ": "UTC", "LC_ALL": "C.UTF-8"}
        process = wine.run([*self.command, "--nooptions", *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                           timeout=TIMEOUT, env=environment)
        errors = wine.without_remarks(process.stderr).decode()
        self.assertEqual(process.returncode, code, errors)
        return process.stdout, errors

    def found(self, query, *targets, told=""):
        output, errors = self.run_program(f"--search={query}", "--pathlist", "-", "--null", *targets)
        self.assertEqual(errors[:len(told)], told)
        self.assertEqual(bool(errors), bool(told), errors)
        return [path.decode() for path in output.split(b"\0")[:-1]]

    def expected(self, query):
        settings = query_rules.Settings(now=int(time.time()), delimiter=self.delimiter)
        finds = query_rules.parse(query, settings)
        return [entry for entry in self.entries if finds(entry)]

    def check(self, seed, on_disk, count, *targets):
        queries = Queries(seed, on_disk)
        useful = 0
        for _ in range(count):
            query = queries.query()
            with self.subTest(query=query):
                # Single files are not in scan files.
                expected = sorted(entry["path"] for entry in self.expected(query) if on_disk or entry["is_folder"])
                useful += 0 < len(expected) < len(self.entries)
                found = sorted(self.found(query, *targets, told="" if on_disk else "Only folders are searched"))
                for what, paths in (("missing", set(expected) - set(found)), ("too many", set(found) - set(expected))):
                    self.assertEqual(sorted(paths)[:5], [], f"{len(paths)} are {what}")
                self.assertEqual(len(found), len(expected), "a path is there twice")
        self.assertGreater(useful, count // 3, "most queries find nothing or all")

    def test_generated_queries_find_what_the_rules_say_on_the_disk(self):
        self.check(SEED, True, self.queries, self.shown(self.top))

    def test_generated_queries_find_the_same_in_a_saved_scan(self):
        scan = f"{self.folder}/scan.xml"
        self.run_program("--xml", self.shown(scan), self.shown(self.top))
        self.check(SEED + 1, False, self.queries // 2, "--open", self.shown(scan))

    def test_the_largest_come_first_and_folders_last(self):
        ordered = sorted(self.entries, key=lambda entry: (entry["sorted"], entry["path"].encode("utf-16-be")))
        self.assertEqual(self.found("", self.shown(self.top)), [entry["path"] for entry in ordered])

    def test_csv_holds_sizes_and_dates(self):
        output, _ = self.run_program("--search", "size:>1MB", "--csv", "-", self.shown(self.top))
        rows = list(csv.DictReader(io.StringIO(output.decode("utf-8-sig"), newline="")))
        large = {entry["path"]: entry for entry in self.entries if entry["size"] > KB * KB}
        self.assertEqual([row["Full Path"] for row in rows], sorted(large, key=lambda path: (
            large[path]["sorted"], path.encode("utf-16-be"))))
        for row in rows:
            entry = large[row["Full Path"]]
            self.assertEqual(int(row["Size"]), entry["size"])
            self.assertEqual(row["Last Change"], time.strftime("%Y-%m-%d %H:%M:%S", time.gmtime(entry["modified"])))

    def test_text_names_the_count_and_the_total(self):
        output, _ = self.run_program("--search", "size:300MB", self.shown(self.top))
        large = [entry for entry in self.entries if entry["size"] == 300 * KB * KB]
        lines = output.decode().splitlines()
        self.assertTrue(lines[-1].startswith(f"{len(large)} files found, "), lines[-1])
        self.assertEqual([line for line in lines if line.endswith(large[0]["path"])], [lines[4 + sorted(
            entry["path"] for entry in large).index(large[0]["path"])]])

    def test_a_search_for_names_asks_nothing_of_other_files(self):
        if self.on_windows:
            self.skipTest("Linux' calls")
        program_test.require_strace(self)
        log = pathlib.Path(self.folder, "calls")
        for query, asked in (("notes", ["notes"]), ("size:>1MB", [""])):
            run = subprocess.run(["strace", "-f", "-o", log, *self.command, "--nooptions", "--search", query, "--pathlist", "-", self.top],
                                 stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT, check=False)
            self.assertEqual((run.returncode, run.stderr), (OK, b""))
            names = {entry["name"] for entry in self.entries}
            calls = re.findall(r' statx\(\d+, "([^"/]+)"', log.read_text(encoding="utf-8", errors="backslashreplace"))
            called = [name for name in names if name.isascii() and name in calls]
            self.assertEqual([name for name in called if asked[0] not in name], [], "asked for its values")
            self.assertTrue(called, "nothing was traced")

    def test_unicode_forms_the_limit_and_a_reader_that_leaves(self):
        folder = pathlib.Path(self.folder, "forms")
        folder.mkdir(exist_ok=True)
        for name in ("cafe\u0301 one", "caf\u00E9 two", "cafe three"):
            (folder / name).write_bytes(b"")
        for arguments, expected in (([], ["two"]), (["--NormalizeUnicode"], ["one", "two"])):
            output, _ = self.run_program("--search", "name:caf\u00E9", *arguments, "--pathlist", "-", self.shown(str(folder)))
            self.assertEqual(sorted(line.split()[-1] for line in output.decode().splitlines()), expected)
        output, _ = self.run_program("--search", "", "--SearchLimit", "7", self.shown(self.top))
        self.assertRegex(output.decode().splitlines()[-1], r"^\d.* found, .* - ended at the limit$")
        output, _ = self.run_program("--search", "", "--SearchLimit", "7", "--pathlist", "-", self.shown(self.top))
        self.assertEqual(len(output.splitlines()), 7)

    def test_hostile_expressions_end_with_one_warning_each(self):
        folder = pathlib.Path(self.folder, "hostile")
        folder.mkdir(exist_ok=True)
        for number in range(3):
            (folder / f"{'a' * 60}{number}").write_bytes(2 * (b"a" * 60 + b"!\n"))
        for query, warning in (('name:~"^(a+)+$"', "^(a+)+$"), ('content:~"^(a+)+$"', "The regular expression for contents needed")):
            with self.subTest(query=query):
                output, errors = self.run_program(f"--search={query}", "--pathlist", "-", self.shown(str(folder)))
                self.assertEqual((output, errors.count("Warning: ")), (b"", 1), errors)
                self.assertIn(warning, errors)

    def test_names_that_are_not_text_are_found_and_listed_as_they_are(self):
        if self.on_windows:
            self.skipTest("Wine hides such files")
        folder = os.path.join(self.folder, "bytes").encode()
        names = [b"\xff\xfe.txt", b"a\xe4b", b"line\nbreak", b"\xed\xa0\x80", b"plain"]
        os.makedirs(folder, exist_ok=True)
        for name in names:
            with open(folder + b"/" + name, "wb") as file:
                file.write(b"needle")
        for query, expected in (("", names), ("ext:txt", names[:1]), ("name:a", [names[1], names[2], names[4]]), ("name:a?b", names[1:2]),
                                ("content:needle", names)):
            with self.subTest(query=query):
                output, _ = self.run_program(f"--search={query}", "--pathlist", "-", "--null", folder.decode())
                self.assertEqual(sorted(output.split(b"\0")[:-1]), sorted(folder + b"/" + name for name in expected))

    def test_results_by_the_million(self):
        """The scan file is written here; head leaves when it has read enough."""
        if self.on_windows:
            self.skipTest("the same code, and Wine is slow")
        groups, members = 1000, 1000
        scan = pathlib.Path(self.folder, "many.xml")
        sizes = {}
        with open(scan, "w", encoding="utf-8") as file:
            file.write('<?xml version="1.0"?><Root Type="TCustomUnixRoot"><Path>/made</Path><Folder fullpath="/made">')
            for group in range(groups):
                file.write(f'<Folder fullpath="/made/d{group}"><SizeData Size="{members * 7}"/>')
                for member in range(members):
                    path = f"/made/d{group}/f{member}"
                    sizes[path] = (member + group) % 7
                    file.write(f'<Folder fullpath="{path}"><SizeData Size="{sizes[path]}"/></Folder>')
                file.write("</Folder>")
            file.write("</Folder></Root>")
        expected = sorted(sizes, key=lambda path: (-sizes[path], path))
        csv_file, report = (pathlib.Path(self.folder, name) for name in ("many.csv", "many.txt"))
        command = [*self.command, "--nooptions", "--search", "name:f", "--open", scan, "--pathlist", "-"]
        exports = ["--null", "--csv", csv_file, "--usecolumns", "fullpath;size", "--text", report, "--TextSizeUnit", "B"]
        run = subprocess.run([*command, *exports], capture_output=True, timeout=TIMEOUT, check=False)
        self.assertEqual((run.returncode, run.stderr), (OK, b""))
        self.assertTrue(run.stdout.decode().split("\0") == [*expected, ""], "the list of paths differs")
        rows = csv_file.read_text(encoding="utf-8-sig").splitlines()[1:]
        self.assertTrue(rows == [f"{path},{sizes[path]}" for path in expected], f"the CSV rows differ: {rows[:3]}")
        lines = report.read_text(encoding="utf-8-sig").splitlines()
        self.assertTrue([line.split()[0] for line in lines if "/made/" in line] == expected, f"the report differs: {lines[:6]}")
        self.assertTrue(lines[-1].startswith(f"0 files and {groups * members:,} folders found, "), lines[-1])
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as program:
            program.stdout.readline()
            program.stdout.close()
            self.assertEqual((program.stderr.read(), program.wait(TIMEOUT)), (b"", OUTPUT_FAILED))

    def test_a_saved_scan_answers_each_class_of_condition(self):
        """The scan is written by hand, so that its dates, owners and attributes are known."""
        folders = [  # path, attributes, allocated, owner, year of change, access, creation
            ("a", 16, 4096, "anna", 2020, 2024, 2019), ("a/archive.d", 18, 0, "root", 2021, 2022, 2018),
            ("a/archive.d/deep inside", 16, 8192, "", 2022, 2023, 2020), ("photo", 2064, 5 << 20, "Anna B", 2024, 2025, 2023)]
        scan = pathlib.Path(self.folder, "classes.xml")
        windows_root, delimiter = ("C:", "\\") if self.on_windows else ("", "/")
        top = f"{windows_root}{delimiter}made"

        def date(name, year):
            ticks = (calendar.timegm((year, 6, 15, 12, 0, 0)) + 11_644_473_600) * 10**7
            return f'<{name} Low="{ticks & 0xFFFFFFFF}" High="{ticks >> 32}"/>'

        def element(path):
            entry = next((folder for folder in folders if folder[0] == path), None)
            inside = sum(folder[0].startswith(f"{path}/") for folder in folders) if path else len(folders)
            values = "" if entry is None else (
                f"<Attributes>{entry[1]}</Attributes>{date('LastAccessDate', entry[5])}{date('LastChangeDate', entry[4])}"
                f"{date('CreationDate', entry[6])}" + (f"<Owner>{entry[3]}</Owner>" if entry[3] else "") +
                f'<SizeData Size="7" Allocated="{entry[2]}" Folders="{inside}"/>')
            inner = [folder[0] for folder in folders if str(pathlib.PurePosixPath(folder[0]).parent) == (path or ".")]
            full = top + "".join(delimiter + part for part in path.split("/") if part)
            return f'<Folder fullpath="{full}">{values}{"".join(element(name) for name in inner)}</Folder>'

        kind = "TFileSystemRoot" if self.on_windows else "TCustomUnixRoot"
        scan.write_text(f'<?xml version="1.0"?><Root Type="{kind}"><Path>{top}</Path>{element("")}</Root>', encoding="utf-8")
        all_folders = ["a", "a/archive.d", "a/archive.d/deep inside", "photo"]
        for query, expected in (
                ("name:photo", ["photo"]), ("name:~^a", ["a", "a/archive.d"]), ('"deep inside"', ["a/archive.d/deep inside"]),
                ("path:archive", ["a/archive.d/deep inside"]), ("path:=made", ["a", "photo"]), ("ext:d", []), ("filetype:Images", []),
                ("size:>1B", []), ("allocated:>1KB", []), ("attribute:D", all_folders), ("attribute:H", ["a/archive.d"]),
                ("attribute:C", ["photo"]), ("owner:anna", ["a", "photo"]), ("owner:=root", ["a/archive.d"]),
                ('owner:=""', ["a/archive.d/deep inside"]), ("created:<2020", ["a", "a/archive.d"]), ("created:2023", ["photo"]),
                ("accessed:2025-06-15", ["photo"]), ("mdata:depth:=2", ["a/archive.d"]),
                (f"mdata:pathlength:={len(top) + 6}", ["photo"]), ("mdata:emptyfolder:yes", ["a/archive.d/deep inside", "photo"])):
            with self.subTest(query=query):
                found = self.found(query, "--open", self.shown(str(scan)))
                self.assertEqual(sorted(path[len(top) + 1:].replace("\\", "/") for path in found), expected)

    def test_what_cannot_be_searched_is_refused_before_the_search(self):
        scan = f"{self.folder}/empty.xml"
        self.run_program("--xml", self.shown(scan), self.shown(self.top))
        missing = self.shown(f"{self.folder}/missing")
        for arguments, code, text in (
                (["--search", "content:x", "--open", self.shown(scan)], WRONG_COMMAND_LINE,
                 "Expression type not supported in this configuration: TFileContentExpression"),
                (["--search", "mdata:Artist:x", "--open", self.shown(scan)], WRONG_COMMAND_LINE,
                 "Expression type not supported in this configuration: TMetaDataExpression"),
                (["--search", "size:1.5GB", self.shown(self.top)], WRONG_COMMAND_LINE,
                 ' is a decimal value and not supported.'),
                (["--search", "x", "--nogui"], WRONG_COMMAND_LINE, "Nothing to search was given"),
                (["--search", "x", "--xml", "y.xml", self.shown(self.top)], WRONG_COMMAND_LINE, "--xml does not go with --search"),
                (["--find", "everything", self.shown(self.top)], WRONG_COMMAND_LINE, "There are largest, oldest,"),
                (["--search", "x", missing], PATH_NOT_FOUND, "Cannot search")):
            with self.subTest(arguments=arguments):
                _, errors = self.run_program(*arguments, code=code)
                self.assertIn(text, errors)


@unittest.skipUnless(os.environ.get("VANTREL_WINDOWS") and os.environ.get("VANTREL_WINE"), "no program for Windows to run")
class WindowsSearchTest(SearchTest):
    program = os.environ.get("VANTREL_WINDOWS")
    on_windows = True
    queries = max(1, QUERIES // 10)


if __name__ == "__main__":
    unittest.main()
