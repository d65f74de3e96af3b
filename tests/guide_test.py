"""Runs every command of the user's guide, in its order, and compares what it prints with what the guide shows.

How the guide is written:

- A block "sh" holds a command. A block "text" right behind it shows all that it prints, on both outputs. Without one it prints
  nothing. "sh exit=1" ends with that code, "sh terminal" runs on a terminal. A block "crontab" runs without its five fields.
- "bat" and "sh elsewhere" cannot run here. Their switches are looked up in the help.
- A comment such as "<!-- a week passes -->" changes the disk, as STEPS says.

The guide scans /srv/data, which guide_tree.py makes in a folder whose path is as long, at noon by the clock of these runs. What
differs between two runs is made the same on both sides by RULES, the column of the free space is left out, and dates count from the
day that the guide names. Commands on /usr and / differ with the system: of these the kinds of lines are compared, and totals with a walk.

    VANTREL_LINUX=build/release/vantrel python3 tests/guide_test.py --write

puts what the commands print into the guide. Read the difference before you keep it.
"""

import csv
import datetime
import fnmatch
import io
import os
import pathlib
import pty
import random
import re
import shutil
import stat
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock
import xml.etree.ElementTree

import guide_tree
import walk
from program_test import ordinary_user

ROOT = pathlib.Path(__file__).parents[1]
GUIDE = ROOT / "docs/guide.md"
DISK, REPORTS, WORK = "/srv/data", "/srv/reports", "/home/anna"
PART = re.compile(r"^```(?P<kind>\w+)(?: (?P<how>\S+))?\n(?P<text>.*?)^```\n(?:\n```text\n(?P<shown>.*?)^```\n)?"
                  r"|^<!-- (?P<step>.*?) -->\n", re.M | re.S)
RULES = (  # what differs between two runs of one command on one disk
    (r"\b12:0\d:\d\d\b", "12:00:00"),  # when it ran
    (r"in \d+\.\d+ seconds(?: \(.*? entries per second\))?", "in 0.00 seconds"),
    (r"(?m)^     Drive: .*$", "     Drive: ..."),
)
ELSEWHERE = 4  # blocks that cannot be run; a further one needs a reason


def noon_clock():
    """A time zone in which it is noon, so that no run meets midnight and times of runs differ from those of files."""
    seconds = int(time.time()) % 86400
    east = 43200 - seconds
    return f"GDE{'-' if east >= 0 else '+'}{abs(east) // 3600:02}:{abs(east) // 60 % 60:02}:{abs(east) % 60:02}"


def short_folder(name):
    """A new folder in /tmp with a path as long as the given one, so that columns are as wide."""
    while True:
        path = pathlib.Path("/tmp", "".join(random.choices("abcdefghijklmnopqrstuvwxyz", k=len(name) - len("/tmp/"))))
        try:
            path.mkdir()
            return path
        except FileExistsError:
            pass


def without_free_space(text):
    """Tables without the column of the free space, whose width depends on the disk."""
    lines = text.split("\n")
    for number, line in enumerate(lines):
        if "  Free Space" not in line or number + 1 == len(lines):
            continue
        begin, end = next(match.span() for match in re.finditer("-+", lines[number + 1]) if match.end() >= line.index("Free Space") + 10)
        for row in range(number, len(lines)):
            if not lines[row]:
                break
            lines[row] = lines[row][:begin - 2] + lines[row][end:]
    return "\n".join(lines)


def compared(text):
    for pattern, same in RULES:
        text = re.sub(pattern, same, text)
    return without_free_space(text)


def shape(text):
    """The kinds of lines, without names and figures, each kind once in a row."""
    kinds = []
    # What could not be read, or is open, depends on rights and on the moment.
    text = re.sub(r"(?m)^incomplete: .*\n(?:  .*\n)*| - incomplete$|(?<=Not in this tree).*"
                  r"|^.* \|.*\n|^\? is an incomplete scan.*\n|  Not Read", "", text)
    for line in text.splitlines():
        kind = re.sub(r"/[^ \"]*", "/PATH", line)
        kind = re.sub(r"[+-]?\d[\d,.:/-]*(?: (?:B|KB|MB|GB|TB)\b)?", "0", kind)
        if re.search(r"(?<!Report, )\b0 {2,}0\b", kind) or "…" in kind:
            kind = "ROW"
        kind = re.sub(r"--[- ]*", "--", re.sub(r" +", " ", kind)).strip()
        if kind and kinds[-1:] != [kind]:
            kinds.append(kind)
    return kinds


def sized(size):
    """As reports write it."""
    unit = next(power for power in range(5) if size < 1024 ** (power + 1))
    return f"{size} B" if unit == 0 else f"{size / 1024**unit:.1f} {'BKMGT'[unit]}B"


def tables(text):
    """Each table as (title, captions, rows); a row is a list of cells, the first with its indentation."""
    lines = text.split("\n")
    for number, line in enumerate(lines):
        if number and re.fullmatch(r"-+(?:  -+)+", line):
            spans = [match.span() for match in re.finditer("-+", line)]
            spans[-1] = (spans[-1][0], None)
            cut = lambda row: [row[begin:end].rstrip() if begin == 0 else row[begin:end].strip() for begin, end in spans]
            rows = [cut(row) for row in iter_until_blank(lines[number + 1:])]
            title = next((before for before in reversed(lines[:number - 1]) if before), "")
            yield title, cut(lines[number - 1]), rows


def iter_until_blank(lines):
    for line in lines:
        if not line:
            return
        yield line


def is_on_whole_system(command):
    return re.search(r" /usr\b| / ", command) is not None


def count_usr():
    """What a walk says of /usr: allocated size, files, folders, size."""
    allocated = size = files = folders = 0
    for path, inner, names in os.walk("/usr"):
        for status in (os.lstat(os.path.join(path, name)) for name in inner + names):
            if stat.S_ISDIR(status.st_mode):
                folders += 1
            else:
                files, size, allocated = files + 1, size + status.st_size, allocated + 512 * status.st_blocks // status.st_nlink
    return allocated, files, folders, size


class Disk:
    """What a walk says of the folders and files of the disk, by path."""

    def __init__(self, top):
        self.top = walk.walk(str(top))
        self.folders = {os.fsdecode(node.path): node for node in walk.folders_of(self.top)}
        self.files = {os.fsdecode(file.path): file for node in self.folders.values() for file in node.own_files}

    def named(self, path):
        parent = path.removesuffix("/[Files]")
        return self.folders[parent].group() if parent != path else self.folders.get(path) or self.files.get(path)


class GuideTest(unittest.TestCase):
    def setUp(self):
        self.maxDiff = None
        os.umask(0o022)
        self.top, self.reports, self.work = map(short_folder, (DISK, REPORTS, WORK))
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="vantrel-guide-"))
        for folder in (self.top, self.reports, self.work, self.home):
            self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        self.program = self.home / "bin/vantrel"
        self.program.parent.mkdir()
        shutil.copy(os.environ["VANTREL_LINUX"], self.program)
        zone = unittest.mock.patch.dict(os.environ, TZ=noon_clock())
        self.addCleanup(time.tzset)
        zone.start()
        self.addCleanup(zone.stop)
        time.tzset()
        self.now = time.time()
        self.environment = {"PATH": f"{self.program.parent}:{os.environ['PATH']}", "TZ": os.environ["TZ"], "LC_ALL": "C.UTF-8",
                            "HOME": str(self.home), "XDG_DATA_HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home)}
        self.text = GUIDE.read_text(encoding="utf-8")
        day = re.search(r"from (\d+ \w+ \d{4})\b", self.text)[1]
        self.days = (datetime.date.fromtimestamp(self.now) - datetime.datetime.strptime(day, "%d %B %Y").date()).days
        guide_tree.plant(self.top, self.now)
        self.hand_over()
        self.disk, self.before, self.usr = Disk(self.top), None, (0, 0, 0, 0)

    def hand_over(self):
        """The commands run without root's rights, for which no folder is closed."""
        user = ordinary_user().get("user")
        if user is not None:
            subprocess.run(["chown", "-R", "-h", f"{user}:{user}", self.top, self.reports, self.work, self.home], check=True)

    # --- from the guide to this machine and back ---

    def dates_moved(self, text, days):
        def moved(match):
            form = "%Y-%m-%d" if "-" in match[0] else "%m/%d/%y"
            return (datetime.datetime.strptime(match[0], form) + datetime.timedelta(days=days)).strftime(form)
        return re.sub(r"(?<!\d)(?:\d{4}-\d\d-\d\d|\d\d/\d\d/\d\d)(?!\d)", moved, text)

    def here(self, text):
        return self.dates_moved(text.replace(DISK, str(self.top)).replace(REPORTS, str(self.reports)), self.days)

    def as_in_guide(self, text):
        for here, there in ((self.top, DISK), (self.reports, REPORTS), (self.work, WORK)):
            text = text.replace(str(here), there)
        return self.dates_moved(text, -self.days)

    def run_command(self, command, on_terminal=False):
        """What it prints on both outputs, and its exit code. The small disk is scanned without root's rights."""
        user = {} if is_on_whole_system(command) else ordinary_user()
        keywords = dict(cwd=self.work, env=self.environment, stdin=subprocess.DEVNULL, **user)
        if not on_terminal:
            process = subprocess.run(["sh", "-c", command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **keywords)
            return process.stdout.decode(), process.returncode
        master, slave = pty.openpty()
        process = subprocess.Popen(["sh", "-c", command], stdout=slave, stderr=slave, **keywords)
        os.close(slave)
        output = b""
        try:
            while data := os.read(master, 65536):
                output += data
        except OSError:  # the end of a terminal
            pass
        os.close(master)
        text = re.sub(r"\x1b\[[\d;?]*[A-Za-z]", "", output.decode(errors="ignore")).replace("\r\n", "\n")
        # Progress is written over itself: the last that was seen, and what took its place.
        progress, _, text = text.rpartition("\r")
        last = next((part for part in reversed(progress.split("\r")) if part.strip()), "(no progress)")
        return last + "\n" + text, process.wait()

    STEPS = {"a week passes": lambda self: self.let_a_week_pass(), "a folder is closed": lambda self: self.close_a_folder(),
             "an image is made": lambda self: guide_tree.make_image(self.work / "disk.img", self.now)}

    def let_a_week_pass(self):
        self.before = Disk(self.top)
        guide_tree.let_a_week_pass(self.top, self.now, (self.work, self.reports), self.home / "vantrel/history.db")
        self.hand_over()
        self.disk = Disk(self.top)
        self.run_command(self.nightly)

    def close_a_folder(self):
        (self.top / "mail").chmod(0)
        self.addCleanup((self.top / "mail").chmod, 0o755)
        self.disk = None  # what is left of it is compared as text only

    def parts(self):
        """Runs the guide: (part, output, exit code); the latter are None for what is not run."""
        for part in PART.finditer(self.text):
            if part["step"]:
                if not part["step"].startswith("place: "):  # for what is to be written
                    self.STEPS[part["step"]](self)
                continue
            command, how = self.here(part["text"]).strip(), part["how"] or ""
            if part["kind"] == "crontab":
                command = self.nightly = command.split(maxsplit=5)[5]
            if part["kind"] not in ("sh", "crontab") or how == "elsewhere":
                yield part, None, None
            else:
                yield part, *self.run_command(command, how == "terminal")

    # --- the tests ---

    def test_the_guide_shows_what_its_commands_print(self):
        unrun = self.text.count("\n```bat") + self.text.count("\n```sh elsewhere")
        self.assertEqual(unrun, ELSEWHERE)
        ran = 0
        for part, output, code in self.parts():
            command = part["text"]
            with self.subTest(command=command):
                if code is None:
                    self.check_switches(command)
                    continue
                ran += 1
                how = part["how"] or ""
                expected = how.removeprefix("exit=").split(",") if how.startswith("exit=") else ["0"]
                if is_on_whole_system(command) and "incomplete: " in output:
                    expected.append("1")
                self.assertIn(str(code), expected, output)
                shown = part["shown"] or ""
                if is_on_whole_system(command):
                    self.assertEqual(shape(shown), shape(output))
                    self.check_usr(output, " -xa" in command)
                else:
                    self.assertEqual(compared(shown), compared(self.as_in_guide(output)))
                    self.check_figures(command, output)
                self.check_files(command)
        self.assertGreater(ran, 25)

    def check_usr(self, output, is_size):
        """The totals of each report, unless /usr has changed since it was walked."""
        for line in re.finditer(r"(?m)^  /usr - (\S+ \wB) - (\S+) files - (\S+) folders", output):
            shown = lambda: (sized(self.usr[3 if is_size else 0]), f"{self.usr[1]:,}", f"{self.usr[2]:,}")
            if line.groups() != shown():
                self.usr = count_usr()
            self.assertEqual(line.groups(), shown())

    def check_switches(self, command):
        """Of a command that cannot run here: each of its switches is known."""
        indicator = "/|--?" if "vantrel.exe" in command else "--?"
        arguments = re.search("vantrel(?:[.]exe)?( .*)", command, re.S)[1] if "schtasks" not in command else ""
        for name in re.findall(rf"(?:^|\s)(?:{indicator})([A-Za-z][\w-]*)", arguments):
            run = subprocess.run([self.program, "--help", name], capture_output=True, check=False)
            self.assertEqual((run.returncode, run.stderr), (0, b""), name)

    def check_files(self, command):
        """What it has written is what its name says."""
        for name in re.findall(r"[\w./-]+\.svg\b", self.here(command)):
            xml.etree.ElementTree.parse(self.work / name)

    def check_figures(self, command, output):
        """Figures against the walk, whatever the guide shows."""
        if not self.disk:
            return
        left_out = [mask for masks in re.findall(r"--exclude '?([^ '\n]+)", command) for mask in masks.split(";")]
        for line in re.finditer(r"(?m)^  (/.*) - (\S+ \wB) - (\S+) files - \S+ folders", output):
            files = [file for path, file in self.disk.files.items() if path.startswith(line[1] + "/") and
                     not any(fnmatch.fnmatch(part, mask) for part in path.split("/") for mask in left_out)]
            self.assertEqual(line.groups()[1:], (sized(sum(file.allocated for file in files)), f"{len(files):,}"), command)
        for title, captions, rows in tables(output) if not left_out else ():
            columns = {caption: number for number, caption in enumerate(captions)}
            if "Full Path" in columns:
                self.check_items(title, columns, rows)
            elif captions[0] in ("Extension", "Age"):
                self.check_sums(columns, rows)
            elif title.startswith("History"):
                for row, disk in zip(rows, (self.before, self.disk), strict=True):
                    self.check_node(columns, row, disk.top, None)
            elif captions[0] == "Name" and "ntfs:" not in command:
                self.check_tree(columns, rows)

        if output.startswith("Full Path,"):
            for row in csv.DictReader(io.StringIO(output)):
                node = self.disk.named(row["Full Path"])
                self.assertEqual([int(row[name] or 0) for name in ("Size", "Allocated", "Files", "Folders")],
                                 [node.size, node.allocated, node.files, node.folders], row)
        for group in re.finditer(r"(?m)^\d+ files of (.*), (.*) wasted\n((?:  .*\n)+)", output):
            paths = group[3].split("\n  ")
            self.assertEqual(len({pathlib.Path(path.strip()).read_bytes() for path in paths}), 1, paths)
            size = self.disk.files[paths[0].strip()].size
            self.assertEqual((group[1], group[2]), (sized(size), sized(size * (len(paths) - 1))))

    AGES = {"up to 1 day": 1, "1 day - 1 week": 7, "1 week - 1 month": 30, "1 month - 6 months": 182, "6 months - 1 year": 365,
            "1 year - 2 years": 730}

    def check_sums(self, columns, rows):
        """Rows by extension or age: all files count in one of them."""
        def age_of(file):
            days = (self.now - file.lastchange / 1e9) / 86400
            return next((age for age, limit in self.AGES.items() if days <= limit), "over 2 years")

        for row in rows:
            if not row[0].startswith("… and "):
                files = [file for path, file in self.disk.files.items() if row[0] in (pathlib.Path(path).suffix, age_of(file))]
                sums = [sized(sum(file.size for file in files)), sized(sum(file.allocated for file in files)), str(len(files))]
                self.assertEqual([row[columns[name]].strip() for name in ("Size", "Allocated", "Files")], sums, row)

    def check_node(self, columns, row, node, earlier, folder_list=False):
        own = sum(file.size for file in node.own_files), sum(file.allocated for file in node.own_files), len(node.own_files)
        size, allocated, files = own if folder_list else (node.size, node.allocated, node.files)
        change = lambda now, then: ("+" if now > then else "-" if now < then else "") + sized(abs(now - then))
        expected = {"Size": sized(size), "Allocated": sized(allocated), "Files": f"{files:,}", "Folders": f"{node.folders:,}"}
        if earlier or self.before:
            before = (earlier.size, earlier.allocated) if earlier else (0, 0)
            expected |= {"Size Change": change(size, before[0]), "Allocated Change": change(allocated, before[1])}
        for caption in expected.keys() & columns.keys():
            self.assertEqual(row[columns[caption]].strip(), expected[caption], (row, caption))

    def check_tree(self, columns, rows):
        path = []
        for row in rows:
            name = re.sub(r" \((?:new|gone)\)$", "", row[0].strip())
            if name.startswith("… and "):
                continue
            level = (len(row[0]) - len(row[0].lstrip())) // 2
            path[level:] = [name]
            full = "/".join(path)
            node, earlier = self.disk.named(full), self.before.named(full) if self.before else None
            if node:
                self.check_node(columns, row, node, earlier)
            else:
                self.assertIn("(gone)", row[0])

    def check_items(self, title, columns, rows):
        for row in rows:
            if row[0].startswith("… and "):
                continue
            node = self.disk.named(row[columns["Full Path"]])
            self.assertIsNotNone(node, row)
            self.check_node(columns, row, node, None, folder_list=title.startswith("Folders"))

    # --- what is checked beyond the small disk ---

    def test_totals_of_usr_are_those_of_a_walk(self):
        before = count_usr()
        output, _ = self.run_command("vantrel -x /usr -d 0 --csv - --usecolumns allocated,files,folders,size 2> /dev/null")
        if count_usr() != before:
            self.skipTest("/usr has changed meanwhile")
        self.assertEqual(tuple(int(cell) for cell in output.split("\n")[1].split(",")), before)

    def test_the_readme_is_true(self):
        text = (ROOT / "README.md").read_text(encoding="utf-8")
        command, shown = re.search(r"`./run (.*)` prints:\n\n((?:    .*\n|\n)+)", text).groups()
        output, _ = self.run_command(f"vantrel {command} 2> /dev/null")
        self.assertEqual(shape(re.sub("(?m)^    ", "", shown)), shape(output))
        commands = re.findall(r"(?m)(?:^    |`)(?:vantrel|./run) ([^`#\n]*)", text)
        self.assertGreater(len(commands), 8)
        for command in commands:
            self.check_switches("vantrel " + command.split("|")[0] + " ")

    def test_every_switch_in_the_docs_is_known(self):
        foreign = {"NAME", "max-depth"}  # a placeholder, and a name of other programs
        for page in sorted((ROOT / "docs").glob("*.md")):
            lines = [line for line in page.read_text(encoding="utf-8").split("\n") if "xmllint" not in line]
            names = set(re.findall(r"(?m)(?:(?<=[\s`(])|^)--([A-Za-z][\w:-]*)", "\n".join(lines))) - foreign
            for name in sorted(names):
                with self.subTest(page=page.name):
                    self.check_switches(f"vantrel --{name}")

    def test_every_link_leads_somewhere(self):
        for page in [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]:
            text = page.read_text(encoding="utf-8")
            for target in re.findall(r"\]\(([^)#\s]*)(?:#[^)]*)?\)", text):
                with self.subTest(page=page.name, target=target):
                    self.assertTrue(not target or (page.parent / target).exists())

    def write(self):
        """Puts what the commands print into the guide."""
        written, end = [], 0
        for part, output, code in self.parts():
            if code is None:
                continue
            fence = part[0].split("```\n")[0]
            shown = f"\n```text\n{self.as_in_guide(output)}```\n" if output else ""
            written += [self.text[end:part.start()], f"{fence}```\n{shown}"]
            end = part.end()
        GUIDE.write_text("".join(written) + self.text[end:], encoding="utf-8")


if __name__ == "__main__":
    if sys.argv[1:] == ["--write"]:
        unittest.TextTestRunner().run(GuideTest("write"))
    else:
        unittest.main()
