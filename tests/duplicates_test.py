"""Holds the search for duplicates against a hash of every byte: files, names, dates, hard links, whole folders, on generated trees;
its exports, and what the command line refuses.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
"""

import collections
import contextlib
import csv
import hashlib
import io
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import time
import unittest

import program_test
import wine

TIMEOUT = 120  # only there to catch a hang
OK, INCOMPLETE, WRONG_COMMAND_LINE, PATH_NOT_FOUND, CANCELLED = range(5)
SEEDS = 4
KB = 1024
# What the passes treat differently, and what lies beside it.
SIZES = (0, 1, 5, 4 * KB, 16 * KB, 64 * KB, 64 * KB + 1, 100 * KB, KB * KB, 17 * KB * KB)
NAMES = ("a", "b", "c.txt", "größe", "x y", "лог", ".hidden")


def make_tree(top, seed, has_links):
    """Files with few contents of few sizes, copies of folders, hard links; links, which Wine shows as what they lead to."""
    chance = random.Random(seed)
    folders = [pathlib.Path(top)]
    folders[0].mkdir()
    for _ in range(12):
        folder = chance.choice(folders) / chance.choice(NAMES)
        if not folder.exists():
            folder.mkdir()
            folders.append(folder)
    files = []
    for number in range(60):
        path = chance.choice(folders) / f"{chance.choice(NAMES)}{number % 7}"
        if path.exists():
            continue
        if files and chance.random() < 0.15:
            os.link(chance.choice(files), path)
        else:
            size = chance.choice(SIZES)
            contents = bytearray(size)
            if size:
                # One byte differs: at the beginning, at the end, or somewhere.
                contents[chance.choice((0, size - 1, size // 2, size // 3))] = chance.choice((0, 0, 1, 2))
            path.write_bytes(contents)
            os.utime(path, (1_600_000_000, 1_600_000_000 + chance.choice((0, 0, 5))))
        files.append(path)
    for number in range(5):
        source = chance.choice(folders[1:])
        target = chance.choice(folders) / f"copy{number}"
        if source in target.parents:
            continue
        shutil.copytree(source, target)
        if chance.random() < 0.4:
            (target / "more").write_bytes(b"more")
    # A folder with a copy of itself inside.
    shutil.copytree(folders[1], f"{top}/inside")
    shutil.copytree(f"{top}/inside", f"{top}/inside/again")
    if has_links:
        os.symlink(folders[1], f"{top}/link to a folder")
        os.symlink(files[0], f"{top}/link to a file")


class Entry:
    def __init__(self, path):
        status = os.lstat(path)
        self.path = path
        self.name = os.path.basename(path)
        self.size = status.st_size
        self.changed = status.st_mtime_ns
        self.identity = (status.st_dev, status.st_ino)
        self.digest = hashlib.sha1(pathlib.Path(path).read_bytes()).hexdigest()


def read_files(top):
    paths = [f"{folder}/{name}" for folder, _, files in os.walk(top) for name in files]
    return [Entry(path) for path in paths if not os.path.islink(path)]


def equal_files(entries, key):
    """The groups as sets of paths, with what each wastes."""
    by_key = collections.defaultdict(list)
    for entry in entries:
        by_key[key(entry)].append(entry)
    groups = {}
    for group in by_key.values():
        different = len({entry.identity for entry in group})
        if different > 1:
            groups[frozenset(entry.path for entry in group)] = (different - 1) * group[0].size
    return groups


def folder_digests(top):
    """A text for each folder that says all that is in it. None: it has a link in it, so nobody knows."""
    digests = {}
    for folder, folders, files in os.walk(top, topdown=False):
        parts = []
        for name in sorted(folders + files):
            path = f"{folder}/{name}"
            if os.path.islink(path):
                parts.append(None)
            elif name in folders:
                parts.append(digests[path] and ("folder", name, digests[path]))
            else:
                parts.append(("file", name, hashlib.sha1(pathlib.Path(path).read_bytes()).hexdigest()))
        digests[folder] = None if None in parts else hashlib.sha1(repr(parts).encode()).hexdigest()
    return digests


def has_files(folder):
    return any(files for _, _, files in os.walk(folder))


def equal_folders(top):
    by_digest = collections.defaultdict(set)
    for folder, digest in folder_digests(top).items():
        if digest and has_files(folder):
            by_digest[digest].add(folder)
    groups = [group for group in by_digest.values() if len(group) > 1]

    def lies_in_another(group):
        parents = [os.path.dirname(folder) for folder in group]
        return len(set(parents)) == len(parents) and any(set(parents) <= other for other in groups)

    return {frozenset(group) for group in groups if not lies_in_another(group)}


class DuplicatesTest(unittest.TestCase):
    program = os.environ.get("VANTREL_LINUX")
    on_windows = False
    seeds = SEEDS

    @classmethod
    def setUpClass(cls):
        if not cls.program:
            raise unittest.SkipTest("no program to run")
        cls.command = [os.environ["VANTREL_WINE"], cls.program] if cls.on_windows else [cls.program]
        cls.folder = os.path.realpath(tempfile.mkdtemp(prefix="vantrel-duplicates-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.trees = [f"{cls.folder}/tree{seed}" for seed in range(cls.seeds)]
        for seed, tree in enumerate(cls.trees):
            make_tree(tree, seed, not cls.on_windows)
        if cls.on_windows:
            wine.keep_running(cls)

    def shown(self, path):
        return "Z:" + path.replace("/", "\\") if self.on_windows else path

    def run_program(self, *arguments, code=OK, **settings):
        environment = os.environ | {"TZ": "UTC", "LC_ALL": "C.UTF-8"}
        process = wine.run([*self.command, "--nooptions", *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                           timeout=TIMEOUT, env=environment, **settings)
        errors = wine.without_remarks(process.stderr).decode()
        self.assertEqual(process.returncode, code, errors)
        return process.stdout, errors

    def found(self, *arguments, code=OK):
        """The groups as sets of paths, with what each wastes, and the names that are told to be hard links."""
        output, _ = self.run_program(*arguments, "--csv", "-", code=code)
        groups = collections.defaultdict(set)
        wasted, links = {}, set()
        for row in csv.DictReader(io.StringIO(output.decode("utf-8-sig"), newline="")):
            groups[int(row["Group"])].add(row["Full Path"])
            wasted[int(row["Group"])] = int(row["Wasted"])
            if row["Link"]:
                links.add(row["Full Path"])
        self.assertEqual(list(wasted.values()), sorted(wasted.values(), reverse=True), "the most wasteful comes first")
        return {frozenset(self.plain(path) for path in group): wasted[number] for number, group in groups.items()}, {
            self.plain(path) for path in links}

    def plain(self, path):
        return path[2:].replace("\\", "/") if self.on_windows else path

    def check(self, found, expected):
        for what, groups in (("missing", expected.keys() - found.keys()), ("too many", found.keys() - expected.keys())):
            self.assertEqual([sorted(group) for group in groups][:2], [], f"{len(groups)} groups are {what}")
        self.assertEqual(found, expected, "another waste")

    def test_groups_are_those_of_a_hash_of_every_byte(self):
        told = 0
        for tree in self.trees:
            entries = read_files(tree)
            full = [entry for entry in entries if entry.size]
            for arguments, candidates, key in (
                    ([], full, lambda entry: entry.digest),
                    (["--emptyfiles", "--verify"], entries, lambda entry: entry.digest),
                    (["--duplicatechecksum", "md5"], full, lambda entry: entry.digest),
                    (["--duplicatechecksum", "sha256", "--MaximumThreads", "1"], full, lambda entry: entry.digest),
                    (["--duplicateby", "name,contents"], full, lambda entry: (entry.name, entry.digest)),
                    (["--duplicateby", "contents,date"], full, lambda entry: (entry.changed, entry.digest)),
                    (["--duplicateby", "size,date"], full, lambda entry: (entry.size, entry.changed)),
                    (["--duplicateby", "name;size"], full, lambda entry: (entry.name, entry.size)),
                    (["--search", "size:>10KB"], [entry for entry in full if entry.size > 10 * KB], lambda entry: entry.digest),
                    (["--exclude", "copy*"], [entry for entry in full if "/copy" not in entry.path], lambda entry: entry.digest)):
                with self.subTest(tree=tree, arguments=arguments):
                    expected = equal_files(candidates, key)
                    found, links = self.found("--duplicates", *arguments, self.shown(tree))
                    self.check(found, expected)
                    told += len(found)
                    identities = {entry.path: entry.identity for entry in entries}
                    for group in found:
                        others = {identities[path] for path in group - links}
                        self.assertEqual(len(others), len(group - links), "two names of one file are not told as such")
                        self.assertTrue({identities[path] for path in group & links} <= others, "a link to nothing")
        self.assertGreater(told, 50)

    def test_unique_files_are_in_no_group(self):
        for tree in self.trees:
            entries = [entry for entry in read_files(tree) if entry.size]
            grouped = frozenset().union(*equal_files(entries, lambda entry: entry.digest))
            output, _ = self.run_program("--duplicates", "unique", "--pathlist", "-", "--null", self.shown(tree))
            found = sorted(self.plain(path.decode()) for path in output.split(b"\0")[:-1])
            self.assertEqual(found, sorted(entry.path for entry in entries if entry.path not in grouped))

    def test_folders_are_equal_by_all_that_is_in_them(self):
        told = 0
        for tree in self.trees:
            with self.subTest(tree=tree):
                found, _ = self.found("--duplicates", "folders", self.shown(tree))
                expected = equal_folders(tree)
                self.assertEqual(sorted(map(sorted, found)), sorted(map(sorted, expected)))
                told += len(found)
        self.assertGreater(told, 5)

    def test_searched_paths_are_folders_as_well(self):
        for name in ("one", "two"):
            os.makedirs(f"{self.folder}/{name}/deep/deeper")
            pathlib.Path(f"{self.folder}/{name}/deep/deeper/file").write_bytes(b"12345")
        paths = [self.shown(f"{self.folder}/{name}") for name in ("one", "two", "one/deep", "one")]
        found, _ = self.found("--duplicates", "folders", *paths)
        self.assertEqual(found, {frozenset((f"{self.folder}/one", f"{self.folder}/two")): 5})
        # The same file by several paths is no duplicate of itself.
        found, _ = self.found("--duplicates", *paths)
        self.assertEqual(found, {frozenset(f"{self.folder}/{name}/deep/deeper/file" for name in ("one", "two")): 5})

    def test_folders_of_hard_links_waste_nothing(self):
        top = f"{self.folder}/linked"
        os.makedirs(f"{top}/a")
        pathlib.Path(f"{top}/a/file").write_bytes(b"12345")
        shutil.copytree(f"{top}/a", f"{top}/b", copy_function=os.link)
        shutil.copytree(f"{top}/a", f"{top}/c")
        found, _ = self.found("--duplicates", "folders", self.shown(top))
        self.assertEqual(found, {frozenset(f"{top}/{name}" for name in "abc"): 5})

    def test_an_unreadable_folder_is_equal_to_nothing(self):
        if self.on_windows or os.geteuid() == 0 and not os.environ.get("VANTREL_ORDINARY_USER"):
            self.skipTest("root reads everything")
        top = f"{self.folder}/denied"
        for name in "ab":
            os.makedirs(f"{top}/{name}/closed")
            os.makedirs(f"{top}/{name}/open")
            pathlib.Path(f"{top}/{name}/open/file").write_bytes(b"12345")
            pathlib.Path(f"{top}/{name}/closed/file").write_bytes(b"123")
            os.chmod(f"{top}/{name}/closed", 0)
        self.addCleanup(lambda: [os.chmod(f"{top}/{name}/closed", 0o755) for name in "ab"])
        user = int(os.environ.get("VANTREL_ORDINARY_USER", os.geteuid()))
        os.chmod(self.folder, 0o755)
        run = subprocess.run([*self.command, "--nooptions", "--duplicates", "folders", "--pathlist", "-", top], user=user,
                             capture_output=True, timeout=TIMEOUT, check=False)
        self.assertEqual((run.returncode, sorted(run.stdout.decode().split())),
                         (INCOMPLETE, [f"{top}/a/open", f"{top}/b/open"]))

    def test_text_and_path_list_hold_the_groups(self):
        top = f"{self.folder}/text"
        os.makedirs(top)
        for name, contents in (("a", b"1"), ("b", b"1"), ("c", b"22"), ("d", b"22"), ("e", b"22"), ("f", b"33")):
            pathlib.Path(top, name).write_bytes(contents)
        os.link(f"{top}/d", f"{top}/g")
        output, _ = self.run_program("--duplicates", self.shown(top))
        name = lambda letter: f"  {self.shown(top)}{chr(92) if self.on_windows else '/'}{letter}"
        lines = output.decode().splitlines()
        self.assertEqual(lines[:-1], ["3 files of 2 B, 4 B wasted", name("c"), name("d"), name("e"), name("g") + " (hard link)", "",
                                      "2 files of 1 B, 1 B wasted", name("a"), name("b"), ""])
        self.assertTrue(lines[-1].startswith("2 groups of equal files with 6 names, 5 B wasted, among 7 files in "), lines[-1])
        output, _ = self.run_program("--duplicates", self.shown(top), "--pathlist", "-", "--null")
        self.assertEqual([self.plain(path.decode())[-1] for path in output.split(b"\0")[:-1]], list("cdegab"))

    def wait_until_it_has_read(self, process, length):
        """Until the process has read so many bytes by system calls."""
        end = time.monotonic() + TIMEOUT
        while True:
            self.assertIsNone(process.poll(), "the run has ended by itself")
            self.assertLess(time.monotonic(), end, "the run hangs")
            counts = pathlib.Path(f"/proc/{process.pid}/io").read_text(encoding="ascii")
            if int(re.search(r"rchar: (\d+)", counts)[1]) >= length:
                return

    def test_an_interrupt_keeps_what_was_found(self):
        """The run is caught while it reads two sparse files, which would take it many minutes."""
        if self.on_windows:
            self.skipTest("Wine passes no signal on as Ctrl+C")
        top = f"{self.folder}/interrupted"
        for folder in "ab":
            os.makedirs(f"{top}/{folder}")
            pathlib.Path(f"{top}/{folder}/small").write_bytes(b"12345")
            pathlib.Path(f"{top}/{folder}/large").touch()
            os.truncate(f"{top}/{folder}/large", 1 << 42)
        earlier = f"{self.folder}/earlier.csv"
        pathlib.Path(earlier).write_bytes(b"earlier")
        group = f"2 files of 5 B, 5 B wasted\n  {top}/a/small\n  {top}/b/small\n\n"
        for arguments, shown, told in (
                ([], group + "1 group of equal files with 2 names, 5 B wasted, among 4 files", ""),
                # The bytes of this group have not been compared yet.
                (["--verify"], "0 groups of equal files", ""),
                (["folders"], "0 groups of equal folders", ""),
                (["unique"], "0 ", ""),
                (["--csv", earlier], "", f'Stopped: "{earlier}" was not written, an earlier one is untouched\n')):
            with self.subTest(arguments=arguments):
                process = subprocess.Popen([*self.command, "--nooptions", "--duplicates", *arguments, top],
                                           stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                           preexec_fn=program_test.obey_interrupts)
                self.addCleanup(lambda process=process: (process.kill(), process.communicate()))
                # Neither the start of the program nor the small checksums read as much.
                self.wait_until_it_has_read(process, 256 * KB * KB)
                process.send_signal(signal.SIGINT)
                output, errors = (text.decode().replace("\r\n", "\n") for text in process.communicate(timeout=TIMEOUT))
                self.assertEqual((process.returncode, errors), (CANCELLED, told))
                self.assertEqual(output[:len(shown)], shown)
                if shown:
                    self.assertTrue(output.endswith(" - cancelled\n"), output)
        self.assertEqual(pathlib.Path(earlier).read_bytes(), b"earlier")

    def kept(self, database, query="SELECT COUNT(*) FROM CHECKSUMS"):
        with contextlib.closing(sqlite3.connect(database)) as connection:
            return connection.execute(query).fetchall()[0][0]

    def test_kept_checksums_are_those_of_unchanged_files(self):
        tree, database = f"{self.folder}/kept", f"{self.folder}/sums.db"
        make_tree(tree, 11, False)
        # What has just been written may change again within one tick of the clock, so it would not be kept.
        time.sleep(max(0, 2.2 - (time.time() - max(os.lstat(entry.path).st_ctime for entry in read_files(tree)))))
        arguments = ["--duplicates", "--checksumcache", self.shown(database), self.shown(tree)]

        def check():
            expected = equal_files([entry for entry in read_files(tree) if entry.size], lambda entry: entry.digest)
            found, _ = self.found(*arguments)
            self.check(found, expected)
            return expected

        groups = check()
        rows = self.kept(database)
        self.assertGreater(rows, 20)
        self.assertEqual(check(), groups)
        self.assertEqual(self.kept(database), rows)
        # Other contents, with the size and the date of before.
        largest = max(groups, key=groups.get)
        path = max(largest)
        status = os.lstat(path)
        with open(path, "r+b") as file:
            file.write(b"changed"[:status.st_size])
        os.utime(path, ns=(status.st_atime_ns, status.st_mtime_ns))
        self.assertNotIn(largest, check())

    def test_a_cache_that_cannot_be_used_stops_no_search(self):
        tree, database = self.trees[0], f"{self.folder}/bad.db"
        expected = equal_files([entry for entry in read_files(tree) if entry.size], lambda entry: entry.digest)

        def full():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (8192, 8192))

        for name, contents, sql, problem, limit in (
                ("a newer version", b"", "PRAGMA user_version=7", "another version of the program made the file", None),
                ("another database", b"", "PRAGMA application_id=7", "the file holds no checksums", None),
                ("damaged", b"x" * 5000, None, "file is not a database", None),
                ("a full disk", b"", None, "(disk is full|disk I/O error)", full),
                ("locked", b"", "BEGIN EXCLUSIVE", "database is locked", None)):
            if limit and self.on_windows:
                continue
            with self.subTest(name), contextlib.ExitStack() as stack:
                pathlib.Path(database).unlink(missing_ok=True)
                if contents:
                    pathlib.Path(database).write_bytes(contents)
                elif not limit:
                    self.run_program("--duplicates", "--checksumcache", self.shown(database), self.shown(tree))
                if sql:
                    connection = stack.enter_context(contextlib.closing(sqlite3.connect(database)))
                    connection.execute(sql)
                # Closing the file would give up the lock that this process has on it.
                comparable = not limit and name != "locked"
                before = pathlib.Path(database).read_bytes() if comparable else b""
                output, errors = self.run_program("--duplicates", "--checksumcache", self.shown(database), "--pathlist", "-",
                                                  "--null", self.shown(tree), preexec_fn=limit)
                self.assertEqual(sorted(self.plain(path.decode()) for path in output.split(b"\0")[:-1]),
                                 sorted(path for group in expected for path in group))
                self.assertRegex(errors, rf"^Warning: checksums are computed anew, or not kept\. The database .*: .*{problem}"
                                         r".*\r?\n$")
                if comparable:
                    self.assertEqual(pathlib.Path(database).read_bytes(), before)

    def test_what_cannot_be_compared_is_refused(self):
        tree = self.shown(self.trees[0])
        for arguments, text in (
                (["--duplicates", "folders", "--search", "x", tree], "--search does not go with --duplicates folders"),
                (["--duplicates", "folders", "--duplicateby", "date", tree], "Folders are equal by the names and contents"),
                (["--duplicates", "--duplicateby", "name,colour", tree], "expected name, size, date and contents"),
                (["--duplicates", "--duplicatechecksum", "crc", tree], "expected fast|md5|sha256"),
                (["--duplicates", "--verify", "--duplicateby", "name", tree], "--verify compares contents"),
                (["--duplicates=twins", tree], "expected files|folders|unique"),
                (["--verify", tree], "--verify is for duplicates"),
                (["--duplicates", "--xml", "x.xml", tree], "--xml does not go with --duplicates"),
                (["--duplicates", "--nogui"], "Nothing to search was given")):
            with self.subTest(arguments=arguments):
                _, errors = self.run_program(*arguments, code=WRONG_COMMAND_LINE)
                self.assertIn(text, errors)
        _, errors = self.run_program("--duplicates", self.shown(f"{self.folder}/missing"), code=PATH_NOT_FOUND)
        self.assertIn("Cannot search", errors)


@unittest.skipUnless(os.environ.get("VANTREL_WINDOWS") and os.environ.get("VANTREL_WINE"), "no program for Windows to run")
class WindowsDuplicatesTest(DuplicatesTest):
    program = os.environ.get("VANTREL_WINDOWS")
    on_windows = True
    seeds = 2


if __name__ == "__main__":
    unittest.main()
