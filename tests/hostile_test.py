"""Scans trees of everything that goes wrong in real ones and holds the report's totals, to the byte, against a slow
recount (recount.py), against find and du, or against sums made by hand. hostile_tree.py makes the largest of the trees.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped,
and so are those that want root's rights when an ordinary user runs them. VANTREL_ORDINARY_USER is the user id for the scans
that root's rights would spoil.
"""

import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest

import hostile_tree
import recount
import wine
from program_test import ordinary_user

TIMEOUT = 120  # only there to catch a hang
HERE = pathlib.Path(__file__).resolve().parent
OK, INCOMPLETE, _, PATH_NOT_FOUND = range(4)
COLUMNS = "name,size,allocated,files,folders,percentofparent,lastchange"
ROW = re.compile(r"  (.*?) +([\d,]+) +([\d,]+) +([\d,]+) +([\d,]+) +[\d.]+ +(?:[-\d]{10} [:\d]{8} *)?$")
RAW_CONTROL = "[\x00-\x1f\x7f-\x9f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]"


class Report:
    """One report with sizes in bytes. A row is (size, allocated, files, folders); top is the root's, rows are those of
    what is directly in it, by name as shown."""

    def __init__(self, process):
        self.code = process.returncode
        self.text = process.stdout.decode("utf-8").replace("\r\n", "\n")
        self.error = wine.without_remarks(process.stderr).decode("utf-8").replace("\r\n", "\n")
        self.lines = self.text.split("\n")
        self.names, self.values = [], []
        for line in self.lines:
            # The root's row has no indent and the same columns; a table's rows all show a share.
            match = ROW.match(line) or (line.startswith("/") or line[1:2] == ":") and ROW.match("  " + line)
            if match:
                self.names.append(match[1])
                self.values.append(tuple(int(number.replace(",", "")) for number in match.groups()[1:5]))
        self.top = self.values[0] if self.values else None
        self.rows = dict(zip(self.names[1:], self.values[1:]))

    def unreadable(self):
        """The paths named as such, each with its reason."""
        start = next((i for i, line in enumerate(self.lines) if line.startswith("incomplete: ")), None)
        if start is None:
            return {}
        listed = (line[2:].rsplit(": ", 1) for line in self.lines[start + 1:] if line.startswith("  "))
        return {path: reason for path, reason in listed}

    def without_times(self):
        return [re.sub(r"( in )[\d.]+ seconds.*", r"\1", line) for line in self.lines[1:] if "   Drive: " not in line]


def totals_of(recounted):
    return tuple(recounted[key] for key in ("size", "allocated", "files", "folders"))


class HostileTest(unittest.TestCase):
    command = None

    @classmethod
    def setUpClass(cls):
        if not cls.command:
            raise unittest.SkipTest("no program to run")
        # Everything that an ordinary user has to start is copied to where anyone may read.
        cls.folder = os.path.realpath(tempfile.mkdtemp(prefix="vantrel-hostile-"))
        cls.addClassCleanup(hostile_tree.remove, os.fsencode(cls.folder))
        os.chmod(cls.folder, 0o755)

    def run_command(self, command, **keywords):
        return wine.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT, **keywords)

    def scan(self, *arguments, **keywords):
        switches = ["--SizeUnit", "B", "--TextColumns", COLUMNS, "--NumberOfListedErrors", "1000000", "--top", "0"]
        return Report(self.run_command([*self.command, *switches, *arguments], **keywords))

    def recount(self, path, user=None):
        """In a process of its own, since it may need other rights and raises its limit of open files."""
        list(recount.mounts())  # loads a codec from where an ordinary user might not be allowed to read
        reader, writer = os.pipe()
        child = os.fork()
        if child == 0:
            try:
                if user is not None:
                    os.setgroups([])
                    os.setgid(user)
                    os.setuid(user)
                with open(writer, "w", encoding="ascii") as pipe:
                    json.dump(recount.recount(path), pipe)
            finally:
                os._exit(0)
        os.close(writer)
        with open(reader, encoding="ascii") as pipe:
            text = pipe.read()
        os.waitpid(child, 0)
        return json.loads(text)

    def assert_same_totals(self, report, recounted):
        """The root and each folder directly in it."""
        self.assertEqual(report.top, totals_of(recounted))
        for name, inner in recounted["first_levels"].items():
            self.assertEqual(report.rows[name], totals_of(inner), name)
        self.assertEqual(set(report.rows) - {"[Files]"}, set(recounted["first_levels"]))


class LinuxTest(HostileTest):
    @classmethod
    def setUpClass(cls):
        program = os.environ.get("VANTREL_LINUX")
        cls.command = [program] if program else None
        super().setUpClass()
        cls.command = [shutil.copy(program, os.path.join(cls.folder, "vantrel"))]
        os.chmod(cls.command[0], 0o755)
        cls.tree = os.path.join(cls.folder, "tree")
        hostile_tree.make(os.fsencode(cls.tree), levels=10_000, many=20_000, mounts=False)

    def make_folder(self):
        folder = tempfile.mkdtemp(dir=self.folder)
        os.chmod(folder, 0o755)
        return folder

    @staticmethod
    def write(path, size):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(b"x" * size)

    # --- the hostile tree ---

    def test_every_total_of_the_hostile_tree(self):
        report = self.scan(self.tree)
        code, reason = (OK, "root reads everything") if os.geteuid() == 0 else (INCOMPLETE, "denied folders")
        self.assertEqual((report.code, report.error), (code, ""), reason)
        self.assert_same_totals(report, self.recount(self.tree))

    def test_what_an_ordinary_user_may_not_read_is_named_and_the_rest_is_right(self):
        user = ordinary_user()
        report, recounted = self.scan(self.tree, **user), self.recount(self.tree, user.get("user"))
        self.assertEqual((report.code, report.error), (INCOMPLETE, ""))
        self.assert_same_totals(report, recounted)
        denied = {f"{self.tree}/denied/{name}": "Permission denied" for name in ("unlistable", "unreadable", "unsearchable")}
        self.assertEqual(report.unreadable(), denied)
        self.assertEqual(recounted["unreadable_folders"] + recounted["unsearchable_folders"], len(denied))
        # Of what is in the one that can be listed, but not searched, nothing but the names can be had.
        self.assertEqual((recounted["unasked_files"], recounted["unasked_folders"]), (1, 1))
        self.assert_agrees_with_find_and_du(report, self.tree, **user)

    def test_a_denied_folder_as_the_root(self):
        user = ordinary_user()
        for name in ("unreadable", "unsearchable", "unlistable"):
            path = f"{self.tree}/denied/{name}"
            report = self.scan(path, **user)
            self.assertEqual((report.code, report.top), (INCOMPLETE, (0, 0, 0, 0)), name)
            self.assertEqual(report.unreadable(), {path: "Permission denied"})
        report = self.scan(f"{self.tree}/denied/unsearchable/below", **user)
        self.assertEqual((report.code, report.text), (PATH_NOT_FOUND, ""))
        self.assertTrue(report.error.endswith(": Permission denied\n"), report.error)
        # Its names cannot be listed, but who knows one may go on.
        report = self.scan(f"{self.tree}/denied/unlistable/below", **user)
        self.assertEqual((report.code, report.top[0], report.top[2:]), (OK, 800, (1, 0)))

    def test_any_number_of_threads_gives_the_same_report(self):
        for user in ({}, ordinary_user()):
            reports = [self.scan("--MaximumThreads", threads, self.tree, **user) for threads in ("1", "2", "16")]
            self.assertIsNotNone(reports[0].top)
            for other in reports[1:]:
                self.assertEqual(other.without_times(), reports[0].without_times())

    def test_find_and_du_agree(self):
        real = [path for path in ("/usr/share", "/usr/include") if os.path.isdir(path)]
        for path in [self.tree, *real]:
            with self.subTest(path=path):
                report = self.scan(path)
                self.assert_agrees_with_find_and_du(report, path)
                if path in real:
                    self.assert_same_totals(report, self.recount(path))

    def assert_agrees_with_find_and_du(self, report, path, **user):
        """du counts folders' own blocks, and each file once, however many names it has; the program gives each name its
        share, rounded down. The difference is worked out name by name from what find tells."""
        listing = self.run_command(["find", path, "-mindepth", "1", "-printf", r"%y %s %b %n %D:%i\0"], **user).stdout
        entries = [line.split() for line in listing.decode().split("\0") if line]
        files = [(int(size), 512 * int(blocks), int(links), identity)
                 for kind, size, blocks, links, identity in entries if kind != "d"]
        self.assertEqual(report.top[2:], (len(files), len(entries) - len(files)))
        self.assertEqual(report.top[0], sum(size for size, _, _, _ in files))
        once = {identity: blocks for _, blocks, _, identity in files}
        remainder = sum(once.values()) - sum(blocks // links for _, blocks, links, _ in files)
        own = 512 * (os.stat(path).st_blocks + sum(int(entry[2]) for entry in entries if entry[0] == "d"))
        du = int(self.run_command(["du", "-s", "-B1", path], **user).stdout.split()[0])
        self.assertEqual(report.top[1], du - own - remainder)

    def test_hard_links_met_in_part_or_not_shared(self):
        # Two names of each file with 2, 3, 4 or 8 of them, and one whose other name is elsewhere.
        blocks = {count: os.stat(f"{self.tree}/links/a/across-{count}-0").st_blocks * 512 for count in (2, 3, 4, 8)}
        others = [os.lstat(f"{self.tree}/links/a/{name}") for name in ("below", "linked-symlink")]
        report = self.scan(f"{self.tree}/links/a")
        self.assertEqual(report.top[1], sum(blocks[count] // count * ((count + 1) // 2)
                                            for count in blocks) + sum(other.st_blocks * 256 for other in others))
        report = self.scan(f"{self.tree}/links-outside")
        self.assertEqual(report.top[:3], (12289, os.stat(f"{self.tree}/links-outside/outside").st_blocks * 256, 1))
        report = self.scan("--ShareHardLinks", "false", f"{self.tree}/links")
        self.assertEqual(report.top[1], sum(os.lstat(os.path.join(folder, name)).st_blocks * 512
                                            for folder, _, names in os.walk(f"{self.tree}/links") for name in names))

    def test_hostile_names_are_shown_without_a_raw_control_character(self):
        names = [name for _, name in sorted(enumerate(hostile_tree.HOSTILE_NAMES, 1), reverse=True)]
        report = self.scan("--apparent-size", f"{self.tree}/named-folders")
        self.assertEqual([values[0] for values in report.values[1:]], list(range(len(names), 0, -1)))
        self.assertEqual({values[2:] for values in report.values[1:]}, {(1, 0)})
        self.assertNotRegex(report.text.replace("\n", ""), RAW_CONTROL)
        for shown, name in zip(report.names[1:], names):
            if re.fullmatch(rb"[!-\[\]-~]+", name):  # plain text is shown as it is
                self.assertEqual(shown, name.decode())
        self.assertEqual(len(set(report.names)), len(report.names), "two names look the same")
        # And given one by one on the command line.
        for size, name in enumerate(hostile_tree.HOSTILE_NAMES, 1):
            report = self.scan("--", name, cwd=f"{self.tree}/named-folders")
            self.assertEqual((report.code, report.error, report.top and (report.top[0], *report.top[2:])),
                             (OK, "", (size, 1, 0)), name)
            self.assertNotRegex(report.text.replace("\n", ""), RAW_CONTROL)

    def test_paths_beyond_the_systems_limit(self):
        names = 300 * [hostile_tree.LONG_CHAIN_NAME.decode()]
        beyond = "/".join([self.tree, "long-chain", *names])
        self.assertEqual(self.brief(self.scan(beyond)), (OK, (123, 1, 100)))
        self.assertEqual(self.brief(self.scan(beyond + "/", "--FollowSymbolicLinks")), (OK, (123, 1, 100)))
        bottom = "/".join([beyond, *names[:100], "bottom.txt"])
        self.assertEqual(self.brief(self.scan(bottom)), (OK, (123, 1, 0)))
        deep = "/".join([self.tree, "deep-chain", *(5_000 * ["d"])])
        self.assertEqual(self.brief(self.scan(deep)), (OK, (321, 1, 5_000)))
        missing = self.scan(beyond + "/missing")
        self.assertEqual((missing.code, missing.text), (PATH_NOT_FOUND, ""))
        self.assertTrue(missing.error.endswith(": No such file or directory\n"))
        name_too_long = self.scan(f"{self.tree}/{'n' * 5_000}")
        self.assertEqual((name_too_long.code, name_too_long.text), (PATH_NOT_FOUND, ""))

        def enter_the_chain():
            os.chdir(f"{self.tree}/long-chain")
            for name in names:
                os.chdir(name)

        inside = self.run_command([*self.command, "--SizeUnit", "B", "--TextColumns", COLUMNS, "."], preexec_fn=enter_the_chain)
        self.assertEqual(self.brief(Report(inside)), (OK, (123, 1, 100)))

    @staticmethod
    def brief(report):
        return report.code, report.top and (report.top[0], *report.top[2:])

    def test_roots_that_are_no_folder(self):
        for name, expected in (("special/pipe", (0, 1, 0)), ("special/socket", (0, 1, 0)), ("sparse/terabyte", (1 << 40, 1, 0)),
                               ("symlinks/to-file", (1000, 1, 0)), ("symlinks/to-folder", (13825, 8, 0))):
            report = self.scan(f"{self.tree}/{name}")
            self.assertEqual((*self.brief(report), report.error), (OK, expected, ""), name)
        for name, reason in (("symlinks/self", "Too many levels of symbolic links"),
                             ("symlinks/dangling", "No such file or directory"),
                             ("sizes/size-1.bin/below", "Not a directory"), ("", "No such file or directory")):
            report = self.scan(f"{self.tree}/{name}" if name else f"{self.tree}-missing")
            self.assertEqual((report.code, report.text), (PATH_NOT_FOUND, ""), name)
            self.assertRegex(report.error, rf'^Cannot scan ".*": {reason}\n$')
        for path in ("/proc", "/sys/kernel"):
            report = self.scan(path)
            self.assertEqual((report.code, report.text), (PATH_NOT_FOUND, ""), path)
            self.assertEqual(report.error, f'Cannot scan "{path}": It belongs to a pseudo file system of the kernel, where nothing is '
                                           "stored\n")

    # --- links to folders ---

    def test_links_out_of_the_tree_are_followed_once_and_loops_end(self):
        folder = self.make_folder()
        root, one, two = (os.path.join(folder, name) for name in ("root", "one", "two"))
        self.write(f"{root}/a/x", 3)
        self.write(f"{one}/below/y", 100)
        self.write(f"{two}/z", 20)
        links = {f"{root}/a/loop": "..", f"{root}/a/self": "self", f"{root}/a/above": folder, f"{root}/a/file": f"{one}/below/y",
                 f"{two}/back": one, f"{two}/home": root, f"{one}/below/up": "..", f"{root}/gone": f"{folder}/gone"}
        followed = {f"{root}/out": "../one", f"{one}/to-two": two}
        for path, target in (links | followed).items():
            os.symlink(target, path)
        plain = 3 + len("..") + len("self") + len(folder) + len(f"{one}/below/y") + len(f"{folder}/gone") + len("../one")
        report = self.scan(root)
        self.assertEqual((*self.brief(report), report.error), (OK, (plain, 7, 1), ""))
        # The folders behind the two links count, the links themselves are folders then: a, out, below, to-two; and so is "back",
        # an empty one, since the folder that it leads to has been entered already.
        expected = plain - len("../one") + 100 + len("..") + 20 + len(root)
        for threads in ("1", "2", "16"):
            report = self.scan("/FollowSymbolicLinks", "true", "--MaximumThreads", threads, root)
            self.assertEqual((*self.brief(report), report.error), (OK, (expected, 10, 5), ""))
        # In the hostile tree nothing leads to a folder outside but what leads above it or to /usr.
        report = self.scan("/FollowSymbolicLinks", "true", f"{self.tree}/links")
        self.assertEqual(report.top, totals_of(self.recount(f"{self.tree}/links")))

    def test_any_net_of_links_counts_each_folder_once(self):
        for seed in range(12):
            folder = self.make_folder()
            generator = random.Random(seed)
            self.make_net(generator, folder)
            os.symlink("root", f"{folder}/name")
            for root in ("root", "name"):
                expected = totals_of(recount.recount_following(f"{folder}/{root}"))
                for threads in ("1", "16"):
                    report = self.scan("--FollowSymbolicLinks", "--MaximumThreads", threads, f"{folder}/{root}")
                    self.assertEqual((report.code, report.top, report.error), (OK, expected, ""), f"seed {seed}, {folder}/{root}")

    def make_net(self, generator, folder):
        """Folders whose files are powers of two, so that each sum tells which of them it holds, and links among them."""
        folders, links = [f"{folder}/root"], []
        self.write(f"{folder}/root/f", 1)
        for number in range(1, 16):
            folders.append(f"{generator.choice([folder, *folders])}/d{number}")
            self.write(f"{folders[-1]}/f", 1 << number)
        for number in range(16):
            place = generator.choice(folders)
            target = generator.choice(folders + links)
            inner = [entry.path for entry in os.scandir(target) if entry.is_dir()] if os.path.isdir(target) else []
            target = generator.choice([target, *inner])
            links.append(f"{place}/l{number}")
            os.symlink(os.path.relpath(target, place) if number % 2 else target, links[-1])

    # --- mounts ---

    def test_mounts_within_the_tree(self):
        """Everything happens in a mount namespace of its own, which takes the mounts along when it ends."""
        unshare = ["unshare", "--mount", "--propagation", "private"]
        if self.run_command([*unshare, "mount", "-t", "tmpfs", "tmpfs", self.make_folder()]).returncode != 0:
            self.skipTest("no right to mount")
        folder = self.make_folder()
        # The whole; a folder that is shown again in the scan's root and outside it; scans that start within a mount.
        roots = ["", "/mounts", "/mounts/sibling", "/mounts/sibling-again", "/mounts/ancestor", "/mounts/ancestor/mounts",
                 "/mounts/ancestor/mounts/sibling-again", "/mounts/tmpfs"]
        script = '''
            set -e
            python=$1 tests=$2 program=$3 folder=$4; shift 4
            "$python" "$tests/hostile_tree.py" "$folder/tree" --mounts --levels 20 --many 30
            scan() { "$program" --SizeUnit B --TextColumns name,size,allocated,files,folders,percentofparent,lastchange "$@"; echo $? >&2; }
            number=0
            for root; do
              "$python" "$tests/recount.py" "$folder/tree$root" >"$folder/$number.json"
              scan "$folder/tree$root" >"$folder/$number" 2>"$folder/$number.code"
              scan --StayOnFileSystem "$folder/tree$root" >"$folder/$number-stay" 2>"$folder/$number-stay.code"
              number=$((number + 1))
            done
        '''
        run = self.run_command([*unshare, "sh", "-c", script, "sh", sys.executable, HERE, *self.command, folder, *roots])
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        for number, root in enumerate(roots):
            with self.subTest(root=root), open(f"{folder}/{number}.json", encoding="ascii") as file:
                recounted = json.load(file)
                report = self.report_in(f"{folder}/{number}")
                self.assertEqual((report.code, report.error), (OK, ""))
                self.assert_same_totals(report, recounted)
                # The only other file system holds one file, which goes when its folder is not entered.
                on_memory = root != "/mounts/tmpfs" and "sibling" not in root
                expected = totals_of(recounted)
                stay = self.report_in(f"{folder}/{number}-stay")
                self.assertEqual((stay.top[0], stay.top[2]), (expected[0] - 70_000 * on_memory, expected[2] - on_memory))

    @staticmethod
    def report_in(path):
        code, out = (pathlib.Path(path + suffix).read_bytes() for suffix in (".code", ""))
        return Report(subprocess.CompletedProcess([], int(code.split()[-1]), out, b"".join(code.splitlines(True)[:-1])))

    # --- change ---

    def test_a_tree_that_changes_during_the_scan(self):
        folder = self.make_folder()
        for number in range(200):
            self.write(f"{folder}/stable/{number % 20}/{number}", number)
        stable = totals_of(self.recount(f"{folder}/stable"))
        os.mkdir(f"{folder}/churn")
        stop = threading.Event()
        churn = [threading.Thread(target=self.change_until, args=(stop, f"{folder}/churn/{number}")) for number in range(2)]
        for thread in churn:
            thread.start()
        try:
            reports = [self.scan("--MaximumThreads", threads, folder) for threads in 10 * ("1", "2", "16")]
        finally:
            stop.set()
            for thread in churn:
                thread.join()
        for report in reports:
            self.assertIn(report.code, (OK, INCOMPLETE))
            self.assertEqual((report.error, report.rows["stable"]), ("", stable))
            self.assertTrue(all(path.startswith(f"{folder}/churn/") for path in report.unreadable()), report.text)
            self.assertEqual(report.code == INCOMPLETE, bool(report.unreadable()))
        quiet = self.scan(folder)
        self.assertEqual(quiet.code, OK)
        self.assert_same_totals(quiet, self.recount(folder))

    def change_until(self, stop, base):
        """Makes folders and files, turns folders into files and links under the same name, moves and removes them."""
        turn = 0
        while not stop.is_set():
            turn += 1
            top = f"{base}-{turn % 5}"
            for number in range(8):
                self.write(f"{top}/{number}/{turn % 3}/file", number)
            os.rename(f"{top}/0", f"{base}-moved-{turn}")
            shutil.rmtree(f"{top}/1")
            self.write(f"{top}/1", 10)
            shutil.rmtree(f"{top}/2")
            os.symlink("/", f"{top}/2")
            shutil.rmtree(f"{base}-moved-{turn}")
            shutil.rmtree(top)


class WindowsTest(HostileTest):
    @classmethod
    def setUpClass(cls):
        program, wine = os.environ.get("VANTREL_WINDOWS"), os.environ.get("VANTREL_WINE")
        cls.command = [wine, program] if program and wine else None
        super().setUpClass()

    def test_totals_of_a_plain_tree(self):
        for number in range(400):
            path = pathlib.Path(self.folder, "tree", f"top {number % 7}", *("inner" for _ in range(number % 5)), f"{number}.bin")
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(b"x" * (number * number % 9973))
        pathlib.Path(self.folder, "tree", "caf\u00e9 \u0448 \u65e5").mkdir()
        pathlib.Path(self.folder, "tree", "in the root.txt").write_bytes(b"root")
        recounted = self.recount(f"{self.folder}/tree")
        for threads in ("1", "4"):
            report = self.scan("--MaximumThreads", threads, "Z:" + self.folder.replace("/", "\\") + "\\tree")
            self.assertEqual((report.code, report.error), (OK, ""))
            self.assertEqual(self.without_allocated(report.top), self.without_allocated(totals_of(recounted)))
            expected = {name: self.without_allocated(totals_of(inner)) for name, inner in recounted["first_levels"].items()}
            self.assertEqual({name: self.without_allocated(values) for name, values in report.rows.items()},
                             expected | {"[Files]": (4, 1, 0)})

    @staticmethod
    def without_allocated(values):
        # What is allocated is for Wine to say, not for the file system beneath it.
        return values[0], values[2], values[3]


if __name__ == "__main__":
    unittest.main()
