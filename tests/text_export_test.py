"""Holds the text exports, CSV, tab-separated text, path list and report, against a walk of the same tree by Python, cell by
cell, as Python's csv module reads them back.

VANTREL_LINUX names the program; without it the tests are skipped.
"""

import codecs
import csv
import datetime
import fractions
import os
import re
import subprocess
import time
import unicodedata
import unittest

import hostile_tree
import program_test
from walk import FILES, FOLDERS, GROUPS, walk

OK = 0
ALL_LEVELS = 1 << 30
DEFAULT_COLUMNS = ("fullpath", "size", "allocated", "files", "folders", "percentofparent", "lastchange", "lastaccess", "error")
CAPTIONS = {"name": "Name", "fullpath": "Full Path", "parentpath": "Parent Path", "extension": "Extension",
            "owner": "Owner", "size": "Size", "allocated": "Allocated", "files": "Files", "folders": "Folders",
            "items": "Items", "percentofparent": "% of Parent", "percentofroot": "% of Root",
            "lastchange": "Last Change", "lastaccess": "Last Access", "depth": "Depth", "pathlength": "Path Length", "error": "Error"}
UNITS = {"B": 1, "KB": 1 << 10, "MB": 1 << 20, "GB": 1 << 30, "TB": 1 << 40}
# Clocks that change at one minute past midnight, in a zone that no machine has to know.
ZONE = "NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01"
CLOCK_CHANGE = 1_173_583_860

codecs.register_error("visible", lambda error: ("".join(f"\\x{byte:02X}" for byte in error.object[error.start:error.end]),
                                                error.end))


def shown(path, kind=FOLDERS):
    """The path or name as exports for programs show it: what looks like an escape, or like the group of files, is told apart."""
    literal = re.sub(rb"\\(?=x([89A-F][0-9A-F]|5[BC])|uD[89A-F][0-9A-F]{2})", rb"\\x5C", path)
    parts = literal.decode("utf-8", "visible").split("/")
    own = parts.pop() if kind == GROUPS else None
    return "/".join([re.sub(r"^\[(?=Files\]$)", r"\\x5B", part) for part in parts] + ([own] if own else []))


def code_units(name):
    """What names are ordered by; a byte that is no UTF-8 counts as U+DC00 + byte."""
    return name.decode("utf-8", "surrogateescape").encode("utf-16-be", "surrogatepass")


def leading_size(node):
    """What orders rows, and what percentages refer to, unless --apparent-size is given."""
    return node.allocated


def rows_of(node, types, levels=ALL_LEVELS, order=None, smallest=0, lead=leading_size):
    """The nodes that an export shows, in its order."""
    def ordered(nodes):
        by_size = sorted((child for child in nodes if lead(child) >= smallest), key=lambda child: (-child.size, code_units(child.name)))
        return order(by_size) if order else sorted(by_size, key=lead, reverse=True)  # equal ones stay as they are

    rows = [node] if types & node.kind else []
    if levels == 0:
        return rows
    below = list(node.below)
    has_group = types & GROUPS and node.below and node.own_files
    if has_group:
        below.append(node.group())
    for child in ordered(below):
        rows += rows_of(child, types, levels - 1, order, smallest, lead)
    if types & FILES and not has_group:
        for file in ordered(node.own_files):
            file.parent = node
            rows.append(file)
    return rows


def half_up(fraction):
    return int(fraction + fractions.Fraction(1, 2))


def tenths(fraction):
    number = half_up(fraction * 10)
    return f"{number // 10:,}.{number % 10}"


class Format:
    def __init__(self, unit=None, grouped=False, neutral=True, lead=leading_size):
        self.unit, self.grouped, self.neutral, self.lead = unit, grouped, neutral, lead

    def text(self, text):
        return "'" + text if self.neutral and text[:1] in ("=", "+", "-", "@", "\t", "\r") and text else text

    def size(self, number):
        if self.unit is None:
            return str(number)
        value = tenths(fractions.Fraction(number, UNITS[self.unit])) if self.unit != "B" else f"{number:,}"
        return value if self.grouped else value.replace(",", "")

    def count(self, number):
        return f"{number:,}" if self.grouped else str(number)

    def caption(self, column):
        unit = f" ({self.unit})" if self.unit and column in ("size", "allocated") else ""
        return CAPTIONS[column] + unit

    def cell(self, node, column):
        if column in ("size", "allocated"):
            return self.size(getattr(node, column))
        if column in ("lastchange", "lastaccess"):
            return datetime.datetime.fromtimestamp(getattr(node, column) // 10**9).strftime("%Y-%m-%d %H:%M:%S")
        if column == "percentofparent":
            whole = self.lead(node.place) if node.place else 0
            return tenths(fractions.Fraction(100 * self.lead(node), whole) if whole else fractions.Fraction(0 if node.place else 100))
        if column == "percentofroot":
            return tenths(fractions.Fraction(100 * self.lead(node), self.lead(node.top())))
        if column == "files":
            return self.count(node.files)
        if column == "folders":
            return "" if node.kind == FILES else self.count(node.folders)
        if column == "items":
            return self.count(node.files + (0 if node.kind == FILES else node.folders))
        if column == "depth":
            return self.count(node.place.depth + 1 if node.place else 0)
        if column == "pathlength":
            # The group's row has a path by which it is told from its folder, but on the storage there is none of that name.
            path = node.place.path if node.kind == GROUPS else node.path
            return self.count(len(path.decode("utf-8", "surrogateescape").encode("utf-16-le", "surrogatepass")) // 2)
        return self.text({"name": lambda: shown(node.name, node.kind),
                          "fullpath": lambda: shown(node.path, node.kind),
                          "parentpath": lambda: shown(node.place.path) if node.place else "",
                          "extension": lambda: extension_of(node) if node.kind == FILES else "",
                          "error": lambda: "",  # all can be read
                          "owner": lambda: node.owner}[column]())

    def table(self, nodes, columns):
        return [[self.cell(node, column) for column in columns] for node in nodes]


def extension_of(node):
    _, dot, extension = node.name.decode("utf-8", "surrogateescape").rpartition(".")
    return shown(extension[:32].encode("utf-8", "surrogateescape")) if dot else ""


def read_csv(text, separator):
    # Lines end with LF here as they do in a file opened without translation: a lone CR or a form feed ends none.
    return list(csv.reader(re.findall("[^\n]*\n", text), delimiter=separator, strict=True))


def parse(text, separator):
    """Fields between separators of any length, as RFC 4180 has it."""
    rows, position = [[]], 0
    while position < len(text):
        if text[position] == '"':
            field, position = "", position + 1
            while text[position] != '"' or text[position + 1:position + 2] == '"':
                field += text[position]
                position += 1 if text[position] != '"' else 2
            position += 1
        else:
            end = min(index for index in (text.find(separator, position), text.find("\r\n", position)) if index >= 0)
            field, position = text[position:end], end
        rows[-1].append(field)
        if text.startswith(separator, position):
            position += len(separator)
        else:
            assert text.startswith("\r\n", position), text[position:position + 20]
            position += 2
            rows.append([])
    assert rows.pop() == []
    return rows


class TextExportTest(program_test.ProgramTest):
    command = program_test.LinuxTest.command
    maxDiff = 2000

    def setUp(self):
        super().setUp()
        os.environ["TZ"] = ZONE
        time.tzset()
        self.addCleanup(time.tzset)
        self.addCleanup(os.environ.pop, "TZ")
        self.tree = self.folder / "hostile"
        self.addCleanup(hostile_tree.remove, os.fsencode(self.tree))
        hostile_tree.make_readable(self.tree)
        for number, name in enumerate(("plain/a<b>.TXT", "plain/line\nbreak\t.txt", "plain/sub/ends:", "plain/sub/::",
                                       "plain/\r", 'plain/"', "plain/sub/x\t", "=top", "plain/-", "plain/12:30",
                                       "plain/[Files]/[Files]", "plain/\\xFF", "plain/\udcff", "plain/\\x5C")):
            path = self.make(f"hostile/{name}", 3000 * number)
            date = CLOCK_CHANGE + number * 600 - 3000
            os.utime(path, (date + 86_400, date))
        self.walked = walk(self.tree)

    def export(self, switch, name, *arguments):
        run = self.run_program(str(self.tree), switch, name, *arguments)
        self.assertEqual((run.code, run.out, run.err), (OK, "", ""))
        return (self.folder / name).read_bytes().decode("utf-8")

    def assert_same_rows(self, found, expected):
        """Tells the first row that differs: whole tables of long paths are no message."""
        for index, (row, wanted) in enumerate(zip(found, expected)):
            self.assertEqual([cell[-200:] for cell in row], [cell[-200:] for cell in wanted], f"row {index}")
            self.assertEqual(row, wanted)
        self.assertEqual(len(found), len(expected))

    def check(self, *arguments, types=FOLDERS | GROUPS, levels=ALL_LEVELS, columns=DEFAULT_COLUMNS, form=Format(),
              order=None, smallest=0, separator=",", header=True, mark=True):
        with self.subTest(arguments=arguments):
            text = self.export("--csv", "out.csv", *arguments)
            self.assertEqual(text.startswith("\ufeff"), mark)
            text = text.removeprefix("\ufeff")
            rows = read_csv(text, separator) if len(separator) == 1 else parse(text, separator)
            expected = form.table(rows_of(self.walked, types, levels, order, smallest, form.lead), columns)
            captions = [[form.caption(column) for column in columns]] if header else []
            self.assert_same_rows(rows, captions + expected)

    def test_every_cell_is_what_a_walk_finds(self):
        self.check()
        self.check("--filesintree", types=7)
        self.check("--exportedelements", "1", types=FOLDERS)
        self.check("--exportedelements", "5", types=FOLDERS | FILES)
        self.check("--exportedelements", "4", types=FILES, header=False)
        self.check("--exportedelements", "2", types=GROUPS, header=False)
        self.check("--exportedelements", "6", types=GROUPS | FILES, header=False)
        self.check("--apparent-size", "--filesintree", types=7, form=Format(lead=lambda node: node.size))

    def test_levels_and_small_folders(self):
        for levels in (0, 1, 2, 3):
            self.check("--expand", str(levels), "--filesintree", types=7, levels=levels)
        self.check("--CSVSmallestFolder", "4097", "--filesintree", types=7, smallest=4097)

    def test_separators_headers_and_the_byte_order_mark(self):
        columns = ("name", "size", "lastchange", "percentofparent", "fullpath", "name")
        for separator, argument in ((";", ";"), ("\t", "TAB"), ("::", "::"), (" ", " "), (".", "."), ("-", "-"), (":", ":"),
                                    ("  ", "  "), ("1", "1"), ("§", "§"), ("'", "'")):
            self.check("--filesintree", f"--listseparator={argument}", "--usecolumns", ";".join(columns), types=7,
                       separator=separator, columns=columns)
        self.check("--noheaders", header=False)
        self.check("--CSVByteOrderMark", "false", mark=False)
        self.check("--CSVByteOrderMark", "false", "--noheaders", mark=False, header=False)

    def test_columns(self):
        columns = ("name", "parentpath", "extension", "owner", "items", "percentofroot", "depth", "pathlength")
        self.check("--usecolumns", ";".join(columns), "--filesintree", types=7, columns=columns)
        self.check("--usecolumns", "name", columns=("name",))

    def test_units(self):
        columns = ("name", "size", "allocated", "files", "items")
        for unit in UNITS:
            for separator in (",", ";"):
                self.check("--CSVSizeUnit", unit, f"--listseparator={separator}", "--usecolumns", ";".join(columns),
                           "--filesintree", types=7, columns=columns, separator=separator,
                           form=Format(unit, grouped=separator == ";"))

    def test_formulas(self):
        columns = ("name", "fullpath")
        arguments = ("--usecolumns", "name;fullpath", "--filesintree")
        self.check(*arguments, types=7, columns=columns)
        self.check(*arguments, "--CSVNeutralizeFormulas", "false", types=7, columns=columns, form=Format(neutral=False))

    def test_orders(self):
        def sorted_by(key, reverse):
            return lambda nodes: sorted(nodes, key=key, reverse=reverse)  # a reversed sort is stable as well

        for argument, key, reverse in (("name", lambda node: code_units(node.name), False),
                                       ("name,descending", lambda node: code_units(node.name), True),
                                       ("size,ascending", lambda node: node.size, False),
                                       ("size", lambda node: node.size, True),
                                       ("files", lambda node: node.files, True),
                                       ("allocated,ascending", lambda node: node.allocated, False),
                                       ("lastchange", lambda node: node.lastchange // 100, True)):
            self.check("--sortby", argument, "--filesintree", types=7, order=sorted_by(key, reverse))

    def test_tab_separated_text(self):
        for arguments, form in (((), Format()), (("--TextSizeUnit", "KB"), Format("KB", grouped=True, neutral=False))):
            for switch, name in (("--text", "out.tsv"), ("--csv", "out.tsv"), ("--csv", "out.TAB")):
                text = self.export(switch, name, "--filesintree", *arguments)
                self.assertFalse(text.startswith("\ufeff"))
                rows = read_csv(text, "\t")
                self.assert_same_rows(rows, [[form.caption(column) for column in DEFAULT_COLUMNS]] +
                                      form.table(rows_of(self.walked, 7), DEFAULT_COLUMNS))

    def test_the_path_list_is_what_find_lists(self):
        for elements, condition in ((7, []), (1, ["-type", "d"]), (4, ["!", "-type", "d"])):
            text = self.export("--pathlist", "paths.txt", "--exportedelements", str(elements))
            listed = subprocess.run(["find", str(self.tree), *condition, "-print0"], check=True, capture_output=True).stdout
            expected = sorted(safe(path) for path in listed.split(b"\0")[:-1])
            self.assertEqual(sorted(text.split("\n")[:-1]), expected)
            run = self.run_program(str(self.tree), "--pathlist", "paths0", "--null", "--exportedelements", str(elements),
                                   "--usecolumns", "fullpath;size")
            self.assertEqual((run.code, run.err), (OK, ""))
            self.assertEqual(sorted((self.folder / "paths0").read_bytes().split(b"\0")), sorted(listed.split(b"\0")))
            # A folder stands before what is in it.
            lines = text.split("\n")[:-1]
            if elements == 7:
                place = {line: index for index, line in enumerate(lines)}
                for line, index in place.items():
                    self.assertLessEqual(place.get(line.rpartition("/")[0], -1), index)

    def test_the_columns_of_the_report_stand_below_each_other(self):
        text = self.export("--text", "out.txt", "--title", "T", "--expand", "2", "--filesintree", "--SizeUnit", "KB")
        lines = text.split("\r\n")
        rule = next(index for index, line in enumerate(lines) if re.fullmatch("-+(  -+)+", line))
        self.assertRegex(lines[1] + lines[rule - 1], r" [\d,.]+ KB - .*Allocated \(KB\) +Size \(KB\)")
        spans = [match.span() for match in re.finditer("-+", lines[rule])]
        table = [as_columns(line) for line in lines[rule + 1:lines.index("", rule)]]
        form = Format("KB", grouped=True)
        # Without the tree of sub-folders beneath: two levels, files of the second not among them.
        expected = rows_of(self.walked, 7, 2)
        self.assertEqual(len(table), len(expected))
        for line, node in zip(table, expected):
            self.assertEqual(len(line), spans[-1][1], node.name)
            cells = ["".join(line[start:end]).strip() for start, end in spans]
            name = safe(node.path if node.parent is None else node.name)
            wanted = [form.cell(node, column) for column in ("allocated", "size", "files", "folders", "percentofparent",
                                                             "lastchange")]
            self.assertEqual(cells, [name.strip(), *wanted], name)

    def test_threads_make_no_difference(self):
        arguments = ["--csv", "tree.csv", "--text", "tree.tsv", "--text", "tree.txt", "--pathlist", "paths.txt", "--xml",
                     "tree.xml", "--filesintree", "--topfileslist", "--extensionslist", "--filetypeslist",
                     "--userslist", "--ageoffiles", "--title", "T"]
        runs = []
        for threads in ("1", "8", "1", "8"):
            run = self.run_program(str(self.tree), *arguments, "--MaximumThreads", threads)
            self.assertEqual((run.code, run.err), (OK, ""))
            files = {path.name: path.read_bytes() for path in self.folder.iterdir() if path.is_file()}
            files["tree.xml"] = re.sub(b"<(DateISO|FreeBytesOnDrive)>.*", b"", files["tree.xml"])
            files["tree.txt"] = re.sub(b"(?m)^(Scanned |     Drive: ).*", b"", files["tree.txt"])
            runs.append(files)
        self.assertEqual(len(runs[0]), 5 + 2 * 5)
        for files in runs[1:]:
            self.assertEqual(files.keys(), runs[0].keys())
            for name, data in files.items():
                self.assertTrue(data == runs[0][name], name)


class SystemCallsTest(program_test.ProgramTest):
    command = program_test.LinuxTest.command

    def test_a_file_takes_its_place_once_it_is_on_the_disk(self):
        """Otherwise a crash of the system could leave the name with nothing in it."""
        program_test.require_strace(self)
        self.make("data/file", 10)
        run = subprocess.run(["strace", "-f", "-y", "-o", "calls", "-e", "trace=write,fsync,rename,renameat,renameat2",
                              *self.command, "data", "--csv", "out.csv"], cwd=self.folder, capture_output=True,
                             timeout=program_test.TIMEOUT, check=False)
        self.assertEqual((run.returncode, run.stderr), (OK, b""))
        calls = (self.folder / "calls").read_text(encoding="utf-8", errors="backslashreplace").splitlines()
        renamed = next(index for index, call in enumerate(calls) if "rename" in call and "out.csv" in call)
        temporary = re.search(r"\.vantrel-[0-9a-f]+\.tmp", calls[renamed])[0]
        on_file = [call.split("(")[0].split()[-1] for call in calls[:renamed] if f"{temporary}>" in call]
        self.assertEqual((on_file[0], on_file[-1]), ("write", "fsync"), "no fsync between the last write and the rename")
        self.assertTrue(any("fsync" in call and f"<{self.folder}>" in call for call in calls[renamed:]), "the name is not synced")


SHORT = {"\n": "\\n", "\r": "\\r", "\t": "\\t"}


def safe(name):
    """The name as terminals and lists for people show it: no control character, no change of direction."""
    text = ""
    for character in name.decode("utf-8", "surrogateescape"):
        code = ord(character)
        if 0xDC80 <= code <= 0xDCFF:
            text += f"\\x{code - 0xDC00:02X}"
        elif character in SHORT:
            text += SHORT[character]
        elif code < 0x20 or code == 0x7F:
            text += f"\\x{code:02X}"
        elif re.match("[\x80-\x9f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]", character):
            text += f"\\u{code:04X}"
        else:
            text += character
    return text


def as_columns(line):
    """A list with the text of each column of a terminal; wide characters take two, combining ones none."""
    columns = []
    for character in line:
        if unicodedata.category(character) in ("Mn", "Me", "Cf") and columns:
            columns[-1] += character
        else:
            columns.append(character)
            # Unicode's table has U+FFFE and U+FFFF as full-width, though they are no characters.
            wide = unicodedata.east_asian_width(character) in "WF" and unicodedata.category(character) != "Cn"
            columns += [""] * wide
    return columns


if __name__ == "__main__":
    unittest.main()
