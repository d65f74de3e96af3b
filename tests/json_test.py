"""Holds JSON exports against a walk of the same tree by Python, files for ncdu against what ncdu itself reads and writes, and
what comes back when files are opened against what was exported; also files of QDirStat and du, and damaged ones.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
"""

import csv
import datetime
import gzip
import io
import json
import os
import shutil
import subprocess
import unittest

import hostile_tree
import program_test
from program_test import INCOMPLETE, OK, OUTPUT_FAILED, PATH_NOT_FOUND, WRONG_COMMAND_LINE
from walk import FILES, FOLDERS, folders_of, walk

HEAD = '{"format":"vantrel","version":1,"kind":"tree","path":"/x","rows":['
TOP = '{"type":"folder","path":"/x","size":5,"allocated":5,"files":1,"folders":0}'
FILE = '{"type":"file","path":"/x/a","size":5,"allocated":5}'
NCDU = '[1,2,{"progname":"x","progver":"1","timestamp":1},[{"name":"/x"}'


def nanoseconds(text):
    """Of an ISO date, in whole ticks of 100."""
    whole, _, fraction = text.removesuffix("Z").partition(".")
    seconds = datetime.datetime.fromisoformat(whole + "+00:00").timestamp()
    return int(seconds) * 10**9 + int(fraction.ljust(9, "0") or "0")


def table_of(content):
    """The rows of a CSV file, whose names may hold any character, also those that Python takes for line ends."""
    return list(csv.DictReader(io.StringIO(content.decode("utf-8-sig"), newline="")))


def lines_of(content):
    """The objects of a file with one object in each line."""
    return [json.loads(line) for line in content.decode("utf-8").removesuffix("\n").split("\n")]


def ncdu_items(node, path=b""):
    """(path, asize, dsize) of all files of ncdu's form; folders have sizes of their own there."""
    own = path + b"/" * bool(path) + os.fsencode(node[0]["name"])
    for item in node[1:]:
        if isinstance(item, list):
            yield from ncdu_items(item, own)
        else:
            yield own + b"/" + os.fsencode(item["name"]), item.get("asize", 0), item.get("dsize", 0)


def read_ncdu(content):
    return json.loads(content.decode("utf-8", "surrogateescape"))[3]


class RoundTripTests:
    """What holds on both platforms."""

    def test_a_scan_is_written_opened_and_written_again(self):
        sizes = {"a/b/c.txt": 1000, "a/größe.jpg": 5000, "g": 3}
        for name, size in sizes.items():
            self.make(f"tree/{name}", size)
        top = self.native(self.folder / "tree")
        for switch in ("--json", "--jsonlines", "--ncdu"):
            with self.subTest(switch=switch):
                run = self.run_program(top, switch, "first", "--filesintree")
                self.assertEqual((run.code, run.out, run.err), (OK, "", ""))
                first = (self.folder / "first").read_bytes()
                if switch == "--ncdu":
                    found = {path.decode(): size for path, size, _ in ncdu_items(json.loads(first)[3])}
                else:
                    rows = lines_of(first) if switch == "--jsonlines" else json.loads(first)["rows"]
                    found = {row["path"]: row["size"] for row in rows if row.get("type") == "file"}
                delimiter = "/" if switch == "--ncdu" else self.delimiter
                self.assertEqual(found, {top + delimiter + name.replace("/", delimiter): size for name, size in sizes.items()})
                (self.folder / "packed").write_bytes(gzip.compress(first))
                run = self.run_program("--open", "packed", switch, "second", "--filesintree")
                self.assertEqual((run.code, run.err), (OK, ""))
                self.assertTrue((self.folder / "second").read_bytes() == first, "the opened file gives other bytes")

    def test_text_of_du_is_opened(self):
        (self.folder / "du.txt").write_bytes(b"4\t/x/a/f\n12\t/x/a\n8\t/x/g\n24\t/x\n")
        run = self.run_program("--open", "du.txt", "--csv", "-", "--usecolumns", "fullpath,size,files")
        self.assertEqual((run.code, run.err), (OK, ""))
        self.assertEqual([line.split(",") for line in run.out.splitlines()[1:]],
                         [["/x", "12288", "2"], ["/x/[Files]", "8192", "1"], ["/x/a", "4096", "1"]])
        # Without -a, two folders with 10 MB of files between them would look like two small files.
        (self.folder / "du.txt").write_bytes(b"4\t/x/a\n4\t/x/b\n10000\t/x\n")
        run = self.run_program("--open", "du.txt", "--csv", "-")
        self.assertIn("write it with du -ak", run.err)


class WindowsJSONTest(RoundTripTests, program_test.ProgramTest):
    command = program_test.WindowsTest.command
    delimiter = "\\"
    native = program_test.WindowsTest.native


class JSONTest(RoundTripTests, program_test.ProgramTest):
    command = program_test.LinuxTest.command
    maxDiff = 2000

    def make_hostile(self):
        tree = self.folder / "hostile"
        self.addCleanup(hostile_tree.remove, os.fsencode(tree))
        hostile_tree.make_readable(tree)
        for name in ('plain/a"b\\c', "plain/\udcff\x01\x7f", "plain/line\nbreak", "plain/größe 😀", "plain/[Files]", "plain/sub/[Files]/x"):
            self.make(f"hostile/{name}", 3000)
        return tree

    def run_ok(self, *arguments, code=OK):
        run = self.run_program(*map(str, arguments))
        self.assertEqual((run.code, run.err), (code, ""))
        return run

    def export(self, name, *arguments):
        self.run_ok(*arguments, self.folder / name)
        return (self.folder / name).read_bytes()

    def rows(self, *arguments):
        return json.loads(self.export("out.json", *arguments, "--json"))["rows"]

    def files_of(self, rows):
        return {(os.fsencode(row["path"]), row["size"], row["allocated"]) for row in rows if row["type"] == "file"}

    # --- trees -----------------------------------------------------------------------------------------------------------

    def test_rows_are_what_a_walk_finds(self):
        tree = self.make_hostile()
        walked = walk(tree)
        content = self.export("tree.json", tree, "--filesintree", "--json")
        document = json.loads(content)
        self.assertEqual((document["format"], document["version"], document["kind"], document["whole"]), ("vantrel", 1, "tree", True))
        head, *rows = lines_of(self.export("tree.jsonl", tree, "--filesintree", "--jsonlines"))
        self.assertEqual((head["kind"], rows), ("tree", document["rows"]))
        found = {(row["type"], os.fsencode(row["path"])): row for row in document["rows"]}
        self.assertEqual(len(found), len(document["rows"]))
        seen = {os.fsencode(tree)}
        for row in document["rows"][1:]:
            path = os.fsencode(row["path"])
            self.assertIn(path if row["type"] == "files" else os.path.dirname(path), seen, "a row comes before its folder")
            seen.add(path)
        expected = 0
        for folder in folders_of(walked):
            groups = [folder.group()] if folder.own_files and folder.below else []
            for node, kind in [(folder, "folder"), *((group, "files") for group in groups), *((file, "file") for file in folder.own_files)]:
                expected += 1
                row = found[kind, folder.path if kind == "files" else node.path]
                self.assertEqual((row["size"], row["allocated"]), (node.size, node.allocated), row["path"][-200:])
                self.assertEqual(nanoseconds(row["lastchange"]), node.lastchange // 100 * 100, row["path"][-200:])
                self.assertEqual(row.get("owner", ""), node.owner)
                if node.kind != FILES:
                    self.assertEqual((row["files"], row["folders"]), (node.files, node.folders))
        self.assertEqual(len(found), expected)
        self.assertEqual(walked.kind, FOLDERS)

    def test_the_settings_of_csv_apply(self):
        tree = self.make_hostile()
        for arguments in (("--expand", "1"), ("--exportedelements", "5", "--sortby", "name"), ("--min", "4K", "--filesintree"),
                          ("--usecolumns", "name;size;percentofparent;depth", "--filesintree")):
            with self.subTest(arguments=arguments):
                rows = self.rows(tree, *arguments)
                cells = table_of(self.export("out.csv", tree, *arguments, "--csv"))
                self.assertEqual([str(row["size"]) for row in rows], [row["Size"] for row in cells])
                if "percentofparent" in rows[0]:
                    self.assertEqual([f'{row["depth"]}' for row in rows], [row["Depth"] for row in cells])
                    for row, wanted in zip(rows, cells):
                        self.assertAlmostEqual(row["percentofparent"], float(wanted["% of Parent"]), delta=0.051)

    def test_what_is_opened_is_written_again_byte_for_byte(self):
        tree = self.make_hostile()
        for switch, *arguments in (("--json", "--filesintree"), ("--json",), ("--jsonlines", "--filesintree"), ("--ncdu",),
                                   ("--json", "--expand", "2"), ("--json", "--exportedelements", "5"), ("--json", "--sortby", "name")):
            with self.subTest(switch=switch, arguments=arguments):
                first = self.export("first", tree, *arguments, switch)
                options = arguments if arguments != ["--expand", "2"] else []
                run = self.run_program("--open", str(self.folder / "first"), *options, switch, str(self.folder / "second"))
                self.assertEqual(run.code, OK, run.err)
                self.assertEqual("does not hold all folders" in run.err, "--expand" in arguments)
                second = (self.folder / "second").read_bytes()
                self.assertTrue(first == second, "the opened file gives other bytes")

    def test_an_opened_file_behaves_as_a_scan(self):
        tree = self.make_hostile()
        self.export("a.json", tree, "--filesintree", "--json")
        opened = ("--open", self.folder / "a.json")
        for lists in ("extensions", "filetypes", "users", "ages", "topfiles", "topfolders"):
            with self.subTest(list=lists):
                switch = {"ages": "--ageoffiles"}.get(lists, f"--{lists}list")
                self.export("live.csv", tree, switch, "--csv")
                self.export("kept.csv", *opened, switch, "--csv")
                live = (self.folder / f"live-{lists}.csv").read_bytes()
                self.assertEqual((self.folder / f"kept-{lists}.csv").read_bytes(), live)
        query = ("--search", "size:>2000", "--csv")
        self.assertEqual(self.export("kept.csv", *opened, *query).count(b"\n"), self.export("live.csv", tree, *query).count(b"\n"))
        self.make("hostile/plain/new.bin", 9000)
        compared = (tree, "--compare", self.folder / "a.json", "--filesintree", "--json")
        self.export("b.json", *compared[:-1], "--unchanged", "--json")
        document = json.loads((self.folder / "b.json").read_bytes())
        part = json.loads(self.export("part.json", *compared))
        changed = {row["path"].rsplit("/", 1)[-1]: row for row in document["rows"] if row.get("sizechange")}
        self.assertEqual(changed["new.bin"]["state"], "new")
        self.assertEqual(changed["hostile"]["sizechange"], 9000)
        self.assertEqual((document["whole"], part["whole"]), (True, False))
        self.assertEqual([row for row in part["rows"] if row["type"] != "files"],
                         [row for row in document["rows"] if row["path"].rsplit("/", 1)[-1] in ("hostile", "plain", "new.bin") and row["type"] != "files"])
        # Filters come back, so that a comparison tells when they differ, and only then.
        kept = self.export("f.json", tree, "--exclude", "a\"*", "--exclude", "gr*", "--json")
        self.assertEqual(self.export("g.json", "--open", self.folder / "f.json", "--json"), kept)
        self.run_ok(tree, "--exclude", "gr*", "--exclude", "a\"*", "--compare", self.folder / "f.json", "--csv", self.folder / "h.csv")
        run = self.run_program(str(tree), "--compare", str(self.folder / "f.json"), "--csv", str(self.folder / "h.csv"))
        self.assertIn("had other filters", run.err)
        # What has gone has rows, which are left out when the file is opened.
        os.remove(tree / "plain/new.bin")
        run = self.run_program(str(tree), "--compare", str(self.folder / "b.json"), "--unchanged", "--json", str(self.folder / "c.json"))
        self.assertEqual((run.code, run.err), (OK, ""))
        run = self.run_program("--open", str(self.folder / "c.json"), "--json", "-")
        self.assertEqual(json.loads(run.out)["rows"][0]["size"], walk(tree).size)
        self.assertIn("comparison with an earlier scan, which is left out", run.err)

    def test_unreadable_folders_come_back(self):
        tree = self.make("tree/open/file", 100).parents[1]
        (tree / "closed").mkdir(0)
        self.addCleanup((tree / "closed").chmod, 0o755)
        user = program_test.ordinary_user()
        for switch in ("--json", "--jsonlines", "--ncdu"):
            with self.subTest(switch=switch):
                command = [*self.command, str(tree), switch, "-"]
                run = subprocess.run(command, capture_output=True, check=False, cwd="/", **user)
                self.assertEqual(run.returncode, INCOMPLETE, run.stderr)
                self.assertIn(b"read_error" if switch == "--ncdu" else b'"error":"Permission denied"', run.stdout)
                (self.folder / "kept").write_bytes(run.stdout)
                again = subprocess.run([*self.command, "--open", str(self.folder / "kept"), switch, "-"], capture_output=True, check=False)
                self.assertEqual((again.returncode, again.stdout), (INCOMPLETE, run.stdout))

    # --- ncdu ------------------------------------------------------------------------------------------------------------

    def require_ncdu(self):
        if not shutil.which("ncdu"):
            self.skipTest("ncdu is not installed")

    def test_ncdu_reads_what_is_written_for_it(self):
        self.require_ncdu()
        tree = self.make_hostile()
        written = self.export("a.ncdu", tree, "--ncdu")
        run = subprocess.run(["ncdu", "-0", "-e", "-f", self.folder / "a.ncdu", "-o", "-"], capture_output=True, check=False)
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        expected = {(file.path, file.size, file.allocated) for folder in folders_of(walk(tree)) for file in folder.own_files}
        self.assertEqual(set(ncdu_items(read_ncdu(run.stdout))), expected)
        self.assertEqual(set(ncdu_items(read_ncdu(written))), expected)
        self.assertEqual(run.stdout.count(b'"mtime"'), written.count(b'"mtime"'))

    def test_what_ncdu_writes_is_opened(self):
        self.require_ncdu()
        tree = self.make_hostile()
        expected = self.files_of(self.rows(tree, "--filesintree"))
        for extended in ((), ("-e",)):
            subprocess.run(["ncdu", "-0", *extended, "-o", self.folder / "ncdu.out", tree], check=True)
            rows = self.rows("--open", self.folder / "ncdu.out", "--filesintree")
            self.assertEqual(self.files_of(rows), expected)
            self.assertEqual(sum(row.get("attributes", 0) & 1024 > 0 for row in rows) > 0, bool(extended))
        (self.folder / "ncdu.gz").write_bytes(gzip.compress((self.folder / "ncdu.out").read_bytes()))
        self.assertEqual(self.files_of(self.rows("--open", self.folder / "ncdu.gz", "--filesintree")), expected)

    def test_members_of_ncdu(self):
        (self.folder / "x").write_text(
            NCDU + ',{"name":"a","asize":7,"dsize":8192,"ino":18446744073709551615,"nlink":2,"hlnkc":true}'
            ',{"name":"old","asize":1,"dsize":4096,"ino":5,"hlnkc":true},[{"name":"sub","dev":9,"read_error":true}'
            ',{"name":"new","asize":1,"dsize":4096,"ino":5,"hlnkc":true}]'
            ',{"name":"old2","asize":1,"dsize":4096,"ino":5,"hlnkc":true}'
            ',{"name":"out","dsize":99,"excluded":"pattern"},{"name":"dev","notreg":true,"more":{"x":[1,{}]}}]]')
        run = self.run_program("--open", str(self.folder / "x"), "--filesintree", "--json", "-")
        self.assertEqual(run.code, INCOMPLETE)
        document = json.loads(run.out)
        self.assertEqual(document["excluded"], 1)
        allocated = {row["path"]: row["allocated"] for row in document["rows"] if row["type"] == "file"}
        self.assertEqual(allocated, {"/x/a": 4096, "/x/old": 4096, "/x/sub/new": 4096, "/x/old2": 0, "/x/dev": 0})

    def test_ten_thousand_levels(self):
        levels = 10_000
        (self.folder / "deep").write_text(NCDU + ',[{"name":"d"}' * levels + ',{"name":"f","asize":5}' + "]" * levels + "]]")
        rows = self.rows("--open", self.folder / "deep", "--expand", "1")
        self.assertEqual((rows[0]["folders"], rows[0]["size"]), (levels, 5))

    # --- other programs ----------------------------------------------------------------------------------------------------

    def test_cache_files_of_qdirstat(self):
        (self.folder / "cache").write_text(
            "[qdirstat 1.0 cache file]\n# Do not edit!\n\nD /data/my%20files\t4096\t0x43aea3d3\nF\ta%25b\t2K\t0x43ae9a3b\n"
            "F\tsparse\t1M\t1136123456\tblocks: 8\nL\tlink\t5\t0x1\nfifo\tpipe\t0\t0x1\nF\thard\t8192\t0x1\tlinks: 2\n"
            "D /data/my%20files/sub\t4096\t0x43aea73b\nF inner 10 0x43ae9a3c\nD /data/my%20files/sub/deep 4096 0x1\n"
            "F /data/my%20files/late 1 0x1\n")
        for name in ("cache", "cache.gz"):
            if name == "cache.gz":
                (self.folder / name).write_bytes(gzip.compress((self.folder / "cache").read_bytes()))
            rows = self.rows("--open", self.folder / name, "--filesintree")
            self.assertEqual(self.files_of(rows), {
                (b"/data/my files/a%b", 2048, 4096), (b"/data/my files/sparse", 1 << 20, 4096), (b"/data/my files/link", 5, 0),
                (b"/data/my files/pipe", 0, 0), (b"/data/my files/hard", 8192, 4096), (b"/data/my files/sub/inner", 10, 4096),
                (b"/data/my files/late", 1, 4096)})
            self.assertEqual(rows[0]["folders"], 2)
            dates = {row["path"].rsplit("/", 1)[-1]: row["lastchange"] for row in rows}
            self.assertEqual(nanoseconds(dates["inner"]), 0x43ae9a3c * 10**9)

    def test_text_of_du(self):
        tree = self.folder / "tree"
        for number in range(40):
            self.make(f"tree/{number % 3}/{number % 7}/file {number}", 5000 * number)
        (self.folder / "du.txt").write_bytes(subprocess.run(["du", "-ak", tree], capture_output=True, check=True).stdout)
        found = {(path, allocated) for path, _, allocated in self.files_of(self.rows("--open", self.folder / "du.txt", "--filesintree"))}
        expected = {(file.path, 1024 * -(-file.allocated // 1024)) for folder in folders_of(walk(tree)) for file in folder.own_files}
        self.assertEqual(found, expected)

    # --- lists -----------------------------------------------------------------------------------------------------------

    def test_lists_are_those_of_csv(self):
        tree = self.make_hostile()
        self.make("hostile/plain/same", 3000)
        environment = dict(os.environ, XDG_DATA_HOME=str(self.folder), XDG_CONFIG_HOME=str(self.folder))
        program = [*self.command, str(tree)]
        for _ in range(2):
            subprocess.run([*program, "--record-history", "--csv", str(self.folder / "none.csv")], env=environment, check=True)
        history = [*self.command, "--history", str(tree)]
        for kind, command, json_switch, csv_switch, size in (
                ("search", [*program, "--search", "size:>2000"], "--json", "--csv", "Size"),
                ("search", [*program, "--search", "size:>900TB"], "--json", "--csv", "Size"),
                ("duplicates", [*program, "--duplicates"], "--json", "--csv", "Wasted"),
                ("history", history, "--history-json", "--history-csv", "Size"),
                ("topfiles", [*program, "--topfileslist"], "--json", "--csv", "Size"),
                ("extensions", [*program, "--extensionslist"], "--json", "--csv", "Size"),
                ("ages", [*program, "--ageoffiles"], "--json", "--csv", "Size"),
                ("drives", self.command, "--exportdrivelist", "--exportdrivelist", "Total")):
            for ending in ("json", "jsonl"):
                with self.subTest(kind=kind, ending=ending):
                    for switch, name in ((json_switch, f"l.{ending}"), (csv_switch, "l.csv")):
                        subprocess.run([*command, switch, str(self.folder / name)], env=environment, check=True)
                    beside = f"-{kind}" if kind in ("topfiles", "extensions", "ages") else ""
                    content = (self.folder / f"l{beside}.{ending}").read_bytes()
                    head, *rows = lines_of(content) if ending == "jsonl" else [json.loads(content)]
                    rows = head.get("rows", rows)
                    self.assertEqual(head["kind"], kind)
                    cells = table_of((self.folder / f"l{beside}.csv").read_bytes())
                    self.assertEqual([str(row[size.lower()]) for row in rows], [row[size] for row in cells])

    # --- what goes wrong ---------------------------------------------------------------------------------------------------

    def refusal(self, content, *switches):
        (self.folder / "bad").write_bytes(content)
        run = self.run_program(*switches or ("--open",), str(self.folder / "bad"), *(("--csv", "-") if switches else ()))
        if run.code == OK:
            return None
        self.assertEqual((run.code, run.out), (PATH_NOT_FOUND, ""), run.err)
        prefix = f'The file "{self.folder}/bad" '
        self.assertEqual((run.err[:len(prefix)], run.err.count("\n")), (prefix, 1), run.err)
        return run.err[len(prefix):]

    def test_no_part_of_a_file_is_taken_for_the_whole(self):
        tree = self.make("t/sub/a", 10).parents[1]
        self.make("t/b", 7)
        wholes = [self.export("whole", tree, "--filesintree", switch) for switch in ("--json", "--jsonlines", "--ncdu")]
        wholes.append(b"[qdirstat 1.0 cache file]\nD /t 4096 0x1\nF b 7 0x1\n")
        wholes.append(gzip.compress(wholes[0]))
        for number, whole in enumerate(wholes):
            lengths = range(len(whole)) if number != 0 else range(0, len(whole), 3)
            for length in lengths:
                if whole[:length].startswith(b"[qdirstat") and whole[:length].endswith(b"\n"):
                    continue  # lines say nothing of those that follow
                if whole[length:].isspace():
                    continue
                (self.folder / "bad").write_bytes(whole[:length])
                run = self.run_program("--open", str(self.folder / "bad"), "--csv", "-")
                self.assertEqual((run.code, run.out), (PATH_NOT_FOUND, ""), whole[:length][-60:])

    def test_damaged_files_are_refused(self):
        row = '{"type":"folder","path":"/x/d","size":1}'
        for content, message in (
                ("{}", "does not begin with"),
                ('{"format":"other"}', "does not begin with"),
                ('{"format":"vantrel","version":2,"kind":"tree"}', "version 2"),
                ('{"format":"vantrel","version":1,"kind":"search","rows":[]}', 'holds "search"'),
                (HEAD + "]}", "holds no folder"),
                (HEAD.replace('"rows"', '"filter":"(-)","rows"') + TOP + "]}", '"filter" cannot be read'),
                (HEAD + TOP + "]} x", "after the end"),
                (HEAD + TOP + ",5]}", "A row is no object"),
                (HEAD + TOP + ',["path","/x/a"]]}', "A row is no object"),
                (HEAD + FILE + "]}", "The first row is no folder"),
                (HEAD + TOP + ',{"type":"file"}]}', "A row has no path"),
                (HEAD + TOP + ',{"type":"link","path":"/x/a"}]}', "unknown type"),
                (HEAD + TOP + ',{"type":"file","path":"/y/a"}]}', '"/y/a" does not lie in "/x"'),
                (HEAD + TOP + ',{"type":"file","path":"/x/b/a"}]}', "The folder of"),
                (HEAD + TOP + ',{"type":"file","path":"/x/"}]}', "is no name"),
                (HEAD + TOP + f",{row},{row}]}}", "is there twice"),
                (HEAD + TOP.replace('"size":5', '"size":-5') + "]}", '"size" is out of range'),
                (HEAD + TOP.replace('"size":5', '"size":5.5') + "]}", '"size" is no whole number'),
                (HEAD + TOP.replace('"size":5', '"size":1e30') + "]}", '"size" is no whole number'),
                (HEAD + TOP.replace('"size":5', '"size":"5"') + "]}", '"size" is no whole number'),
                (HEAD + TOP.replace('"size":5', '"lastchange":"tomorrow"') + "]}", '"lastchange" is no date'),
                (HEAD + TOP.replace('"folders":0', '"folders":2') + "]}", "holds 0 of 2 folders"),
                (HEAD.replace('"path"', '"singlefiles":true,"path"') + TOP + "]}", "holds 0 of 1 files"),
                (HEAD + TOP + "," + FILE.replace("5,", str(2**62 - 1) + ",") + "," + FILE.replace("x/a", "x/b").replace("5,", "4611686018427387903,") + "]}", "more than any storage"),
                (HEAD + TOP + ',{"a":' + "[" * 100 + "]" * 100 + "}]}", "nested too deep"),
                (HEAD + TOP + ',{' + ",".join(f'"k{i}":1' for i in range(1001)) + "}]}", "more than 1000 members"),
                (HEAD + "\n\n" + TOP + ",\n  }", "Line 4, column 3"),
                ('{"format":"vantrel","version":1,"kind":"tree","path":"/x","whole":true}\n' + TOP + '\n{"type"', "ends too early"),
                ("[1,2", "ends too early"),
                ('[2,0,{},[{"name":"/x"}]]', "version 2 of ncdu's format"),
                (NCDU + "]] []", "after the end"),
                (NCDU + ',{"asize":1}]]', "An item has no name"),
                (NCDU + ',{"name":"a/b"}]]', "is no name"),
                (NCDU + ',{"name":""}]]', "is no name"),
                (NCDU + ',[{"name":"d"}],[{"name":"d"}]]]', "is there twice"),
                (NCDU + ',{"name":"a","dsize":-1}]]', '"dsize" is out of range'),
                (NCDU + ' {"name":"a"}]]', '"," was expected'),
                (NCDU + ',{"name":"' + "n" * 40000 + '"}]]', "A name is too long"),
                (NCDU + ',{"name":"' + "n" * 2_000_000 + '"}]]', "A text is too long"),
                ("[qdirstat 1.0 cache file]\nF a 1 0x1\n", "before the first folder"),
                ("[qdirstat 1.0 cache file]\nD /x 1 0x1\nD /y 1 0x1\n", "does not come before it"),
                ("[qdirstat 1.0 cache file]\nD /x 1 0x1\nF a 1.5 0x1\n", "The size is no number"),
                ("[qdirstat 1.0 cache file]\nD /x 1 0x1\nW a 1 0x1\n", "Line 3: The type is unknown"),
                ("[qdirstat 1.0 cache file]\n", "holds no folder"),
                ("4\t/x/a\nfour\t/x\n", "Line 2: A line has a number of kilobytes"),
                ("4\t/x/a\n4\t/y\n", "does not lie in"),
                ("4\t/x/a\n8\t/x", "was cut off")):
            with self.subTest(content=content[:200]):
                for switches in ((), ("--compare",)):
                    if switches:
                        (self.folder / "bad").write_text(content)
                        run = self.run_program(str(self.make("t/a").parent), "--compare", str(self.folder / "bad"))
                        self.assertEqual(run.code, PATH_NOT_FOUND, run.err)
                        self.assertIn(message, run.err)
                    else:
                        self.assertIn(message, self.refusal(content.encode()) or "nothing")
        self.assertIn("damaged", self.refusal(b"\x1f\x8bnonsense"))

    def test_parts_are_not_compared(self):
        tree = self.make("t/sub/a", 10).parents[1]
        self.export("part.json", tree, "--expand", "0", "--json")
        run = self.run_program(str(tree), "--compare", str(self.folder / "part.json"))
        self.assertEqual(run.code, PATH_NOT_FOUND)
        self.assertIn("Only whole scans can be used for comparison", run.err)

    def test_outputs_that_fail(self):
        tree = self.make("t/sub/a", 10).parents[1]
        for switch in ("--json", "--jsonlines", "--ncdu"):
            with self.subTest(switch=switch):
                self.assertEqual(self.run_program(str(tree), switch, "/dev/full").code, OUTPUT_FAILED)
                target = self.folder / "one"
                run = self.run_program(str(tree), switch, str(target), "--csv", str(target))
                self.assertEqual(run.code, WRONG_COMMAND_LINE)
                self.assertIn("Two exports would go into the same file", run.err)
                self.assertFalse(target.exists())
                reader, writer = os.pipe()
                os.close(reader)
                run = subprocess.run([*self.command, str(tree), switch, "-"], stdout=writer, stderr=subprocess.PIPE, check=False)
                os.close(writer)
                self.assertEqual((run.returncode, run.stderr), (OUTPUT_FAILED, b""))

    def test_several_scans(self):
        paths = [str(self.make(f"{name}/file", 10).parent) for name in ("one", "two")]
        self.run_ok(*paths, "--json", self.folder / "all.json")
        for name, path in zip(("one", "two"), paths):
            self.assertEqual(json.loads((self.folder / f"all_{name}.json").read_bytes())["path"], path)
        lines = self.run_ok(*paths, "--jsonlines", "-").out.splitlines()
        self.assertEqual([json.loads(line).get("kind") for line in lines], ["tree", None] * 2)
        run = self.run_program(*paths, "--ncdu", "-")
        self.assertEqual(run.code, WRONG_COMMAND_LINE)


if __name__ == "__main__":
    unittest.main()
