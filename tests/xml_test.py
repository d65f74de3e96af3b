"""Holds XML scan files against a walk of the same tree by Python, against the grammar in docs/, and against what comes back
when they are opened.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
"""

import datetime
import os
import pathlib
import re
import shutil
import subprocess
import unittest
import xml.etree.ElementTree as etree
import zipfile

import hostile_tree
import program_test
import recount
from walk import folders_of, walk

HERE = pathlib.Path(__file__).resolve().parent
GRAMMAR = HERE.parent / "docs" / "xml-scan-file.rng"
TIMEOUT = 120
LONGEST_EXTENSION = 1 + 32
TICKS_OF_1970 = 116_444_736_000_000_000
OK, INCOMPLETE, _, PATH_NOT_FOUND = range(4)


def unescaped(text):
    """The exact text of an escaped form."""
    return re.sub(r"\\(\\|u([0-9A-F]{4}))", lambda match: chr(int(match[2], 16)) if match[2] else "\\", text)


def exact(attributes, name):
    escaped = attributes.get(name + "Escaped")
    return attributes[name] if escaped is None else unescaped(escaped)


def joined(high, low):
    return (int(high) << 32) + int(low)


class Folder:
    """What the file says of one folder."""

    def __init__(self, attributes):
        self.path = exact(attributes, "fullpath")
        self.is_files_node = attributes["IsFilesNode"] != "0"
        self.numbers = self.attributes = self.owner = None
        self.dates = {}
        self.extensions = {}


def read_file(path):
    """The header's texts, the folders by (path, whether the files node) and the largest files, as (path, size, allocated,
    last change), without recursion: trees are deep."""
    header, folders, largest, stack, inside = {}, {}, [], [], []
    for event, element in etree.iterparse(path, events=("start", "end")):
        if event == "start":
            inside.append(element.tag)
            if element.tag == "Folder":
                stack.append(Folder(element.attrib))
            continue
        inside.pop()
        if not stack:
            if len(inside) == 1:
                header[element.tag] = element.text or ""
            if element.tag == "TopFile":
                of = element.attrib
                largest.append((exact(of, "Path").rstrip("/") + "/" + exact(of, "name"), int(of["Size"]),
                                int(of["Allocated"]), joined(of["LastChangeHigh"], of["LastChangeLow"])))
            continue
        folder = stack[-1]
        if element.tag == "SizeData":
            folder.numbers = tuple(int(element.attrib[name]) for name in ("Size", "Allocated", "Files", "Folders"))
        elif element.tag == "Attributes":
            folder.attributes = int(element.text)
        elif element.tag == "Owner":
            folder.owner = element.text
        elif element.tag in ("LastAccessDate", "LastChangeDate", "CreationDate"):
            folder.dates[element.tag] = joined(element.attrib["High"], element.attrib["Low"])
        elif element.tag == "Item" and inside[-1] == "TExtensionSizeArray":
            folder.extensions[exact(element.attrib, "name")] = tuple(
                int(element.attrib[name]) for name in ("Size", "Allocated", "Files"))
        elif element.tag == "Folder":
            folders[folder.path, folder.is_files_node] = stack.pop()
            element.clear()
    return header, folders, largest


def ticks(nanoseconds):
    return nanoseconds // 100 + TICKS_OF_1970


def extensions_of(folder):
    """Size and number of its own files by extension."""
    extensions = {}
    for file in folder.own_files:
        key = recount.extension_of(file.name)[:LONGEST_EXTENSION] or "<no extension>"
        size, files = extensions.get(key, (0, 0))
        extensions[key] = (size + file.size, files + 1)
    return extensions


class LinuxFileTest(program_test.ProgramTest):
    command = program_test.LinuxTest.command

    def make_tree(self):
        """Without links: their sharing of allocated size is for other tests."""
        top = self.folder / "hostile"
        self.addCleanup(hostile_tree.remove, os.fsencode(top))
        hostile_tree.make_readable(top)
        for path, folder_names, names in os.walk(os.fsencode(top)):
            for name in names:
                entry = os.path.join(path, name)
                if os.lstat(entry).st_nlink > 1:
                    os.unlink(entry)
        for name, size in (("plain & simple/a<b>.TXT", 10), ("plain & simple/line\nbreak\t.txt", 20),
                           ("plain & simple/sub/\x01.\uffff", 30), ("no-extension/README", 0)):
            self.make(f"hostile/{name}", size)
        return top

    def write(self, *arguments):
        run = self.run_program(*arguments)
        self.assertEqual((run.code, run.out, run.err), (OK, "", ""))

    def test_the_file_says_what_a_walk_finds(self):
        top = self.make_tree()
        self.write(str(top), "--xml", "scan.xml")
        header, folders, largest = read_file(self.folder / "scan.xml")
        # Names that are no UTF-8 as the program has them.
        walked = {os.fsdecode(folder.path): folder for folder in folders_of(walk(top))}
        self.assertEqual(header["Path"], str(top))
        self.assertEqual(int(header["FoldersCount"]), len(walked) - 1)
        self.assertEqual({path for path, is_files_node in folders if not is_files_node}, set(walked))
        for path, expected in walked.items():
            folder = folders[path, False]
            self.assertEqual(folder.numbers, (expected.size, expected.allocated, expected.files, expected.folders), path)
            self.assertEqual(folder.dates["LastChangeDate"], ticks(expected.lastchange), path)
            self.assertEqual(folder.dates["LastAccessDate"], ticks(expected.lastaccess), path)
            self.assertEqual(folder.owner, expected.owner, path)
            self.assertTrue(folder.attributes & 16, path)
            holder = folders.get((path, True)) if expected.folders else folder
            self.assertEqual(holder is not None and holder.numbers[2] or 0, len(expected.own_files), path)
            found = {key: (size, files) for key, (size, _, files) in holder.extensions.items()} if holder else {}
            self.assertEqual(found, extensions_of(expected), path)
        files = {(os.fsdecode(file.path), file.size, file.allocated, ticks(file.lastchange))
                 for folder in walked.values() for file in folder.own_files}
        self.assertLessEqual(set(largest), files)
        self.assertEqual([size for _, size, _, _ in largest], sorted((file[1] for file in files), reverse=True)[:100])

    def test_the_grammar_accepts_every_file(self):
        top = self.make_tree()
        for arguments in ([], ["--exclude", "*.txt;\x01*", "--filter", '<||"x\ty"', "--filter", "/[a-z]/i", "--filter", "*"],
                          ["--CollectOwners", "false", "--CollectExtensions", "false", "--NumberOfTopFiles", "0"]):
            with self.subTest(arguments=arguments):
                self.write(str(top), "--xml", "scan.xml", *arguments)
                check = subprocess.run(["xmllint", "--huge", "--noout", "--relaxng", GRAMMAR, "scan.xml"], check=False,
                                       cwd=self.folder, capture_output=True, timeout=TIMEOUT)
                self.assertEqual((check.returncode, check.stderr.splitlines()[:3]), (0, [b"scan.xml validates"]))

    def test_an_opened_file_is_written_to_the_same_bytes(self):
        top = self.make_tree()
        self.write(str(top), "--xml", "scan.xml", "--exclude", "README")
        self.write("--open", "scan.xml", "--xml", "again.xml")
        self.assertEqual((self.folder / "again.xml").read_bytes(), (self.folder / "scan.xml").read_bytes())
        self.write("--open", "scan.xml", "--xml", "sc\u00e4n.xml.zip")
        with zipfile.ZipFile(self.folder / "sc\u00e4n.xml.zip") as archive:
            self.assertIsNone(archive.testzip())
            self.assertEqual(archive.namelist(), ["sc\u00e4n.xml"])
            packed = datetime.datetime(*archive.infolist()[0].date_time)
            self.assertLess(abs(datetime.datetime.now() - packed), datetime.timedelta(hours=1))
            self.assertEqual(archive.read("sc\u00e4n.xml"), (self.folder / "scan.xml").read_bytes())
        self.write("--open", "sc\u00e4n.xml.zip", "--xml", "third.xml")
        self.assertEqual((self.folder / "third.xml").read_bytes(), (self.folder / "scan.xml").read_bytes())


class OpenTests:
    """What a user sees who opens files, on both platforms."""

    def small_scan(self):
        self.make("tree/a/b/c.txt", 1000)
        self.make("tree/a/d.jpg", 500)
        self.make("tree/e/f.txt", 200)
        self.make("tree/g.txt", 3)
        run = self.run_program(self.native(self.folder / "tree"), "--xml", "scan.xml")
        self.assertEqual((run.code, run.out, run.err), (OK, "", ""))
        return self.folder / "scan.xml"

    def assert_refused(self, data, *named):
        (self.folder / "bad.xml").write_bytes(data)
        run = self.run_program("--open", "bad.xml")
        self.assertEqual((run.code, run.out), (PATH_NOT_FOUND, ""), data[-200:])
        self.assertEqual(len(run.err.strip().splitlines()), 1, run.err)
        for text in ("bad.xml", *named):
            self.assertIn(text, run.err)

    def test_damaged_files_are_refused_with_the_line(self):
        good = self.small_scan().read_bytes()
        self.assertGreater(good.count(b"\r\n<Folder "), 3)
        for cut in (0, len(good) // 2):
            with self.subTest(cut=cut):
                self.assert_refused(good[:cut])
        self.assertIn(b' Size="1000"', good)
        self.assert_refused(good.replace(b' Size="1000"', b' Size="-1"', 1), "Size is out of range: -1", "ine ")

    def test_what_is_no_scan_file(self):
        (self.folder / "folder.xml").mkdir()
        run = self.run_program("--open", "folder.xml")
        self.assertEqual((run.code, run.out), (PATH_NOT_FOUND, ""))
        self.assertIn("folder.xml", run.err)
        self.assert_refused(b"<html><body/></html>", "html")
        with zipfile.ZipFile(self.folder / "bomb.zip", "w", zipfile.ZIP_DEFLATED) as archive:
            with archive.open("bomb.xml", "w") as entry:
                for _ in range(300):
                    entry.write(b" " * (1 << 20))
        run = self.run_program("--open", "bomb.zip")
        self.assertEqual((run.code, run.out), (PATH_NOT_FOUND, ""))
        self.assertRegex(run.err, "bomb.zip.*unpacks to [0-9]+ times its size")

    def test_a_comparison_shows_what_changed(self):
        self.make("tree/grown/f", 100)
        self.make("tree/shrunk/deep/f", 5000)
        self.make("tree/gone/below/f", 700)
        self.make("tree/same/below/f", 300)
        for name, size in (("a", 500), ("b", 600)):
            self.make(f"tree/moved/{name}/f", size)
        tree = self.native(self.folder / "tree")
        self.assertEqual(self.run_program(tree, "--xml", "old.xml").code, OK)
        self.make("tree/grown/f", 900)
        self.make("tree/shrunk/deep/f", 50)
        shutil.rmtree(self.folder / "tree/gone")
        self.make("tree/came/f", 40)
        self.make("tree/came/g", 2)
        for name, size in (("a", 600), ("b", 500)):
            self.make(f"tree/moved/{name}/f", size)

        def compared(*arguments):
            run = self.run_program("--SizeUnit", "B", "--TextColumns", "name,sizechange,filechange", tree, "--compare", "old.xml",
                                   "--apparent-size", *arguments)
            self.assertEqual((run.code, run.err), (OK, ""))
            self.assertTrue(any("Compared with the scan of 2" in line for line in run.lines))
            rows = [re.match(r" +(\S.*?)  +([-+\d,]+) +([-+\d]+)$", line) for line in run.lines]
            return [(row[1], row[2], row[3]) for row in rows if row], [line for line in run.lines if "without a change" in line]

        # Largest change first. What moved from one sub-folder to another is a change, although the sum is the same.
        changes = [("shrunk", "-4,950", "0"), ("grown", "+800", "0"), ("gone (gone)", "-700", "-1"), ("came (new)", "+42", "+2"),
                   ("moved", "0", "0")]
        self.assertEqual(compared(), (changes, ["Not shown: 1 row without a change. --unchanged shows all."]))
        self.assertEqual(compared("--unchanged"), (changes + [("same", "0", "0")], []))
        self.assertEqual(compared("--top", "2")[0], changes[:2])
        rows, notes = compared("--expand")
        self.assertEqual(rows, [changes[0], ("deep", "-4,950", "0"), changes[1], changes[2], ("below (gone)", "-700", "-1"),
                                changes[3], changes[4], ("a", "+100", "0"), ("b", "-100", "0")])
        self.assertEqual(len(notes), 1)
        for arguments, left in (((), {"grown", "shrunk", "deep", "came", "moved", "a", "b", "tree"}),
                                (("--unchanged",), {"grown", "shrunk", "deep", "came", "moved", "a", "b", "tree", "same", "below"})):
            run = self.run_program(tree, "--compare", "old.xml", "--pathlist", "-", *arguments)
            self.assertEqual({line.split(self.delimiter)[-1] for line in run.out.splitlines()}, left, arguments)
        # Scan files are complete.
        self.run_program(tree, "--compare", "old.xml", "--xml", "new.xml")
        self.assertTrue(any(path.endswith("same") for path, _ in read_file(self.folder / "new.xml")[1]))

    def test_of_a_folder_the_newest_whole_scan_of_the_path_from_before_today_is_compared(self):
        self.make("tree/f", 100)
        self.make("other/f", 100)
        tree, other = (self.native(self.folder / name) for name in ("tree", "other"))
        (self.folder / "scans").mkdir()
        note = 'Nothing is compared: "scans" holds no whole scan of "%s" from before today\n'
        run = self.run_program(tree, "--compare", "scans", "--xml", "scans/today.xml")
        self.assertEqual((run.code, run.err), (OK, note % tree))
        good = (self.folder / "scans/today.xml").read_text(encoding="utf-8")
        days = [(datetime.datetime.now(datetime.timezone.utc) - datetime.timedelta(days=age)).strftime("%Y-%m-%dT%H:%M:%SZ")
                for age in range(9)]

        def dated(age):
            return re.sub("<DateISO>.*?<", f"<DateISO>{days[age]}<", good)

        (self.folder / "scans/a week ago.xml").write_text(dated(7), encoding="utf-8")
        with zipfile.ZipFile(self.folder / "scans/wanted.xml.zip", "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("wanted.xml", dated(5))
        for age, name, text in ((4, "stopped.xml", dated(4).replace("</Title>", "</Title><Terminated>-1</Terminated>")),
                                (3, "compared.xml", dated(3).replace("<IsCompared>0", "<IsCompared>-1")),
                                (2, "other.xml", re.sub("<Path>.*?<", lambda _: f"<Path>{other}<", dated(2))),
                                (2, "no scan.xml", "<html/>"), (2, "kept.txt", dated(2)), (2, "damaged.xml", dated(2)[:300])):
            (self.folder / "scans" / name).write_text(text, encoding="utf-8")
        self.make("tree/f", 150)
        run = self.run_program("--SizeUnit", "B", tree, other, "--compare", "scans", "--xml", "new.xml", "--text", "-")
        self.assertEqual((run.code, run.err), (OK, ""))
        then = datetime.datetime.fromisoformat(days[5]).astimezone().strftime("%Y-%m-%d %H:%M:%S")
        self.assertIn(f"     Compared with the scan of {then}", run.lines)
        # What makes a comparison show more than changes is told.
        run = self.run_program(other, "--exclude", "*.tmp", "--compare", "scans/a week ago.xml")
        self.assertEqual((run.code, run.err), (OK, f'The scan to compare with is of another path: "{tree}"\nThe scan to compare with '
                                                   "had other filters, so files may seem to have come or gone\n"
                                                   "Warning: the pattern *.tmp matched nothing\n"))
        run = self.run_program(tree, "--compare", "no folder")
        self.assertIn("no folder", run.err)
        self.assertEqual(run.code, PATH_NOT_FOUND)

    def test_one_file_serves_a_comparison_every_week(self):
        scan = self.small_scan()
        tree = self.native(self.folder / "tree")
        for week, size, change in ((1, 2000, "1,000"), (2, 2500, "500")):
            self.make("tree/a/b/c.txt", size)
            self.make(f"tree/new{week}/x", 1)
            run = self.run_program("--SizeUnit", "B", tree, "--compare", "scan.xml", "--xml", "scan.xml", "--expand", "1",
                                   "--apparent-size", "--text", "report.txt")
            self.assertEqual((run.code, run.err), (OK, ""), f"week {week}")
            report = (self.folder / "report.txt").read_text(encoding="utf-8-sig")
            self.assertRegex(report, rf"\n  a +\+{change} ")
            self.assertIn(f"  new{week} (new) ", report)
            header, folders, _ = read_file(scan)
            self.assertEqual((header["IsCompared"], header["IsFullExport"]), ("0", "-1"))
            self.assertIn(tree + self.delimiter.join(("", "a", "b")), [path for path, _ in folders])

    def test_a_file_says_what_it_lacks_also_when_written_again(self):
        self.small_scan()
        self.assertEqual(self.run_program(self.native(self.folder / "tree"), "--XMLLevels", "1", "--xml", "limited.xml").code, OK)
        header, folders, largest = read_file(self.folder / "limited.xml")
        self.assertEqual((header["IsFullExport"], len(folders), len(largest)), ("0", 4, 4))
        full = (self.folder / "scan.xml").read_bytes()
        (self.folder / "stopped.xml").write_bytes(
            full.replace(b"<IsFullExport>", b"<Terminated>-1</Terminated>\r\n<IsFullExport>"))
        for name, code in (("limited.xml", OK), ("stopped.xml", INCOMPLETE)):
            with self.subTest(name=name):
                run = self.run_program("--open", name, "--xml", "again.xml", "--csv", "again.csv")
                self.assertEqual(run.code, code, run.err)
                self.assertIn(name, run.err)
                self.assertEqual((self.folder / "again.xml").read_bytes(), (self.folder / name).read_bytes())
                self.assertTrue((self.folder / "again.csv").exists())
                check = subprocess.run(["xmllint", "--noout", "--relaxng", GRAMMAR, "again.xml"], check=False,
                                       cwd=self.folder, capture_output=True, timeout=TIMEOUT)
                self.assertEqual(check.returncode, 0, check.stderr)
                run = self.run_program(self.native(self.folder / "tree"), "--compare", "again.xml")
                self.assertEqual(run.code, PATH_NOT_FOUND)

    def test_an_opened_file_tells_of_its_own_machine_and_time(self):
        scan = self.small_scan().read_bytes()
        for old, new in ((rb"<DateISO>.*?<", b"<DateISO>2001-02-03T04:05:06Z<"),
                         (rb"<Filesystem.*?</Filesystem>|<Filesystem/>", b"<Filesystem>elsewherefs</Filesystem>"),
                         (rb"<TotalBytesOnDrive>.*?<", b"<TotalBytesOnDrive>2048<"),
                         (rb"<FreeBytesOnDrive>.*?<", b"<FreeBytesOnDrive>512<"),
                         (rb"\r\n<FolderState>", b'\r\n<ErrorMessage Code="5" Kind="1" Partial="0">Zugriff verweigert'
                                                b'</ErrorMessage>\r\n<FolderState>')):
            scan, count = re.subn(old, new, scan, count=1)
            self.assertEqual(count, 1, old)
        (self.folder / "other.xml").write_bytes(scan)
        run = self.run_program("--open", "other.xml", "--record-history", "--HistoryFile", "history.db",
                               env={**os.environ, "TZ": "UTC"})
        self.assertEqual(run.code, INCOMPLETE)
        self.assertIn("     Drive: elsewherefs  Total: 2.0 KB  Free: 512 B (25.0 %)", run.lines)
        self.assertIn("Scanned 4 files and 3 folders on 2001-02-03 04:05:06.", run.lines)
        self.assertIn(f"  {self.native(self.folder / 'tree')}: Zugriff verweigert", run.lines)
        self.assertIn("Not recorded in the history", run.err)
        self.assertFalse((self.folder / "history.db").exists())
        self.assertEqual(self.run_program("--open", "other.xml", "--xml", "again.xml").code, INCOMPLETE)
        self.assertEqual((self.folder / "again.xml").read_bytes(), scan)


class LinuxOpenTest(OpenTests, program_test.ProgramTest):
    command = program_test.LinuxTest.command


class WindowsOpenTest(OpenTests, program_test.ProgramTest):
    command = program_test.WindowsTest.command
    delimiter = "\\"
    native = program_test.WindowsTest.native


if __name__ == "__main__":
    unittest.main()
