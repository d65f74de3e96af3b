"""Scans NTFS images that mkntfs made and ntfs-3g filled, and holds every file against what other programs say of it: a walk
over the mounted volume (names, sizes, storage, links, dates), fls (names, dates, streams) and ntfsinfo (allocated sizes).

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
A volume can be mounted only by root with /dev/fuse; without it ntfscp fills a smaller one.
"""

import csv
import datetime
import io
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import wine

TIMEOUT = 120  # only there to catch a hang
COLUMNS = "fullpath;size;allocated;creation;lastchange;lastaccess;attributes"
MEGABYTE = 1 << 20


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, timeout=TIMEOUT, **options).stdout


def can_mount():
    return os.geteuid() == 0 and os.access("/dev/fuse", os.R_OK | os.W_OK) and shutil.which("ntfs-3g")


def scan(program, path, *switches, launcher=()):
    """The process, and by path inside the volume a dict of the columns for each row."""
    target = pathlib.Path(tempfile.mkdtemp()) / "out.csv"
    name = wine_path(target) if launcher else str(target)
    environment = dict(os.environ, TZ="UTC")
    process = subprocess.run([*launcher, program, path, "--nogui", "--csv", name, "--usecolumns", COLUMNS, "--filesintree",
                              "--CSVNeutralizeFormulas", "false", *switches], capture_output=True, timeout=TIMEOUT,
                             env=environment, check=False)
    text = target.read_bytes().decode("utf-8-sig") if target.exists() else ""
    shutil.rmtree(target.parent)
    rows = {}
    for row in csv.DictReader(io.StringIO(text)):
        full = row["Full Path"]
        inside = full.split("|", 1)[1] if full.startswith("ntfs:") else full[len(path):]
        inside = (inside.replace("\\x5C", "\\").replace("\\", "/") if launcher else inside).strip("/")
        if inside and not inside.endswith("[Files]"):
            rows[inside] = row
    return process, rows


def wine_path(path):
    return "Z:" + str(path).replace("/", "\\")


class Mounted:
    """A volume mounted by ntfs-3g, unmounted at the end of the block."""

    def __init__(self, image, folder, *options):
        self.image, self.folder, self.options = image, folder, options

    def __enter__(self):
        self.folder.mkdir(exist_ok=True)
        run("ntfs-3g", str(self.image), str(self.folder), "-o", ",".join(("streams_interface=xattr", *self.options)))
        return self.folder

    def __exit__(self, *_):
        run("umount", str(self.folder))


def fill(top):
    """Everything that a mounted volume can be given."""
    docs = top / "docs"
    docs.mkdir()
    (docs / "small").write_bytes(b"x" * 300)
    (docs / "über 😀 = long name.txt").write_bytes(b"x" * 10_000)
    (docs / "empty").touch()
    # More names than fit into one record, in several folders.
    for i in range(60):
        folder = top / f"links{i % 3}"
        folder.mkdir(exist_ok=True)
        os.link(docs / "small", folder / f"a rather long name for link number {i}")
    (docs / "linked").write_bytes(b"y" * 9_000)
    os.link(docs / "linked", top / "also linked")
    # Many files, so that the table grows; some deleted again.
    many = top / "many"
    many.mkdir()
    for i in range(1500):
        (many / f"file{i:05}").write_bytes(b"z" * (i % 1200))
    for i in range(0, 1500, 7):
        (many / f"file{i:05}").unlink()
    # Pieces with holes between, so many that the runs need extension records.
    with open(docs / "pieces", "wb") as file:
        for i in range(1000):
            file.seek(i * 8192)
            file.write(b"p" * 4096)
    with open(docs / "sparse", "wb") as sparse:
        sparse.write(b"s" * 5000)
        sparse.seek(30 * MEGABYTE)
        sparse.write(b"e")
    for name, size in (("short stream", 40), ("long stream", 50_000)):
        os.setxattr(docs / "small", f"user.{name}", b"a" * size)
    os.setxattr(docs / "linked", "user.more", b"b" * 20_000)
    # Attribute bits in the byte order of the machine: whatever is made in here is compressed.
    packed = top / "packed"
    packed.mkdir()
    os.setxattr(packed, "system.ntfs_attrib", (0x800 | 0x10).to_bytes(4, sys.byteorder))
    (packed / "compressed").write_bytes(b"c" * MEGABYTE)
    deep = top
    for i in range(40):
        deep = deep / f"level {i}"
        deep.mkdir()
    (deep / "bottom").write_bytes(b"d")
    os.setxattr(docs / "empty", "system.ntfs_dos_name", b"EMPTY~1.XXX")
    os.symlink("docs/small", top / "symbolic")
    os.utime(docs / "small", ns=(1_234_567_890_123_456_700, 1_111_111_111_987_654_300))


def contents():
    """Files by path with different contents, for each way in which a volume keeps them."""
    chance = random.Random(16)
    words = [chance.randbytes(chance.randrange(2, 9)) for _ in range(300)]

    def text(length):
        return b" ".join(chance.choice(words) for _ in range(length // 4 + 4))[:length]

    files = {}
    for place in ("plain", "packed"):
        for length in (9, 300, 4095, 4096, 65_536, 65_537, 300_000):
            files[f"{place}/text {length}"] = text(length)
        files[f"{place}/noise"] = chance.randbytes(200_001)
        # In the compressed folder: units that are packed, plain, and holes.
        files[f"{place}/mixed"] = b"".join(chance.choice((text, chance.randbytes, bytes))(chance.randrange(1, 150_000)) for _ in range(12))
        files[f"{place}/zeros"] = bytes(100_000 if place == "plain" else 200_000)
    files["plain/\u00fcber \U0001f600"] = text(30_000)
    return files


def fill_with_contents(top):
    """Writes the files of contents(), more that are made by seeking and in turn, and hard links. Returns what each holds."""
    (top / "plain").mkdir()
    (top / "packed").mkdir()
    os.setxattr(top / "packed", "system.ntfs_attrib", (0x800 | 0x10).to_bytes(4, sys.byteorder))
    files = contents()
    for name, data in files.items():
        (top / name).write_bytes(data)
    for place in ("plain", "packed"):
        with open(top / place / "sparse", "wb") as sparse:
            sparse.write(b"s" * 5000)
            sparse.seek(3 * MEGABYTE)
            sparse.write(place.encode())
        with open(top / place / "grown", "wb") as grown:  # what is behind was never written
            grown.write(b"g" * 70_000 + place.encode())
            grown.truncate(500_000)
    # So many pieces that the runs need extension records.
    pieces = b"".join(f"piece {i}".encode().ljust(4096, b".") + bytes(4096) for i in range(1500))
    with open(top / "plain/pieces", "wb") as file:
        for place in range(0, len(pieces), 8192):
            file.seek(place)
            file.write(pieces[place:place + 4096])
    files["plain/pieces"] = pieces[:-4096]
    os.link(top / "plain/text 65537", top / "packed/linked")
    for place in ("plain", "packed"):
        files[f"{place}/sparse"] = b"s" * 5000 + bytes(3 * MEGABYTE - 5000) + place.encode()
        files[f"{place}/grown"] = (b"g" * 70_000 + place.encode()).ljust(500_000, b"\0")
    files["packed/linked"] = files["plain/text 65537"]
    return files


def walk(top, cluster):
    """What the mount says: by path, (is a folder, size, allocated, links, seconds of change and access)."""
    found = {}
    for folder, folders, files in os.walk(top):
        for name in folders + files:
            path = pathlib.Path(folder, name)
            status = path.lstat()
            # Data inside the file record takes some bytes there, but no cluster.
            blocks = status.st_blocks * 512
            found[str(path.relative_to(top))] = (path.is_dir() and not path.is_symlink(), status.st_size,
                                                 blocks if blocks >= cluster else 0, status.st_nlink,
                                                 status.st_mtime_ns // 10**9, status.st_atime_ns // 10**9)
    return found


def seconds(text):
    return int(datetime.datetime.fromisoformat(text + "+00:00").timestamp())


def allocated_by_ntfsinfo(image, number):
    """Bytes of the unnamed data, and of all alternate streams outside the record."""
    text = run("ntfsinfo", "-f", "-v", "-i", str(number), str(image)).decode(errors="replace")
    own = streams = 0
    for part in re.split(r"(?=Dumping attribute )", text):
        if not part.startswith("Dumping attribute $DATA") or "Resident: \t\t No" not in part:
            continue
        if int(re.search(r"Lowest VCN\s+(\d+)", part)[1]) != 0:
            continue
        size = re.search(r"Compressed size:\s+(\d+)", part) or re.search(r"Allocated size:\s+(\d+)", part)
        if "Attribute name:" in part:
            streams += int(size[1])
        else:
            own += int(size[1])
    return own, streams


class NtfsTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.linux = os.environ.get("VANTREL_LINUX")
        cls.windows = os.environ.get("VANTREL_WINDOWS")
        cls.launcher = [os.environ["VANTREL_WINE"]] if os.environ.get("VANTREL_WINE") else []
        if not shutil.which("mkntfs") or not shutil.which("fls"):
            raise unittest.SkipTest("mkntfs or fls is missing")
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.images = {}

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def setUp(self):
        if not self.linux:
            self.skipTest("VANTREL_LINUX is not set")

    def image(self, cluster):
        """A filled volume with clusters of this size, made once, and what the mount said of it."""
        if cluster in self.images:
            return self.images[cluster]
        image = self.folder / f"volume{cluster}.img"
        with open(image, "wb") as file:
            file.truncate(96 * MEGABYTE)
        run("mkntfs", "-F", "-q", "-c", str(cluster), "-L", "label of it", str(image))
        if can_mount():
            with Mounted(image, self.folder / "mount") as top:
                fill(top)
            with Mounted(image, self.folder / "mount", "ro") as top:
                self.images[cluster] = image, walk(top, cluster)
        else:
            contents = self.folder / "contents"
            contents.write_bytes(b"c" * 12_345)
            run("ntfscp", "-f", str(image), str(contents), "copied")
            self.images[cluster] = image, {}
        return self.images[cluster]

    def check_walk(self, image, expected):
        process, rows = scan(self.linux, f"ntfs:{image}")
        self.assertEqual(process.returncode, 0, process.stderr)
        self.assertEqual(sorted(rows), sorted(expected))
        for path, (is_folder, size, allocated, links, changed, accessed) in expected.items():
            row = rows[path]
            if is_folder or "symbolic" in path:
                continue
            self.assertEqual(int(row["Size"]), size, path)
            if path.endswith(("small", "linked")) or links > 1:
                continue  # streams count, too: see the test of hard links
            if size > 1024:  # smaller ones may lie inside their record, where the mount counts blocks of 512 bytes
                self.assertEqual(int(row["Allocated"]), allocated, path)
            self.assertEqual(seconds(row["Last Change"]), changed, path)
            self.assertEqual(seconds(row["Last Access"]), accessed, path)

    def test_every_file_is_as_the_mounted_volume_shows_it(self):
        for cluster in (512, 4096, 65_536):
            with self.subTest(cluster=cluster):
                image, expected = self.image(cluster)
                if not expected:
                    self.skipTest("no volume can be mounted here")
                self.check_walk(image, expected)

    def test_fls_finds_the_same_files_with_the_same_dates(self):
        image, _ = self.image(4096)
        _, rows = scan(self.linux, f"ntfs:{image}")
        compared = 0
        for line in run("fls", "-r", "-p", "-F", "-m", "/", str(image)).decode("utf-8").splitlines():
            _, name, number, _, _, _, size, accessed, changed, _, created = line.split("|")
            path = name.lstrip("/")
            # fls lists each stream as one more file, and short names beside the long ones.
            if path.startswith("$") or ":" in path or "deleted" in path or "$FILE_NAME" in path or "EMPTY~1" in path:
                continue
            row = rows.pop(path)
            compared += 1
            self.assertEqual(int(row["Size"]) if "symbolic" not in path else int(size), int(size), path)
            dates = [seconds(row[column]) for column in ("Creation", "Last Change", "Last Access")]
            self.assertEqual(dates, [int(created), int(changed), int(accessed)], path)
        self.assertGreater(compared, 0)
        folders = {path for path in rows if any(other.startswith(path + "/") for other in rows)}
        listed = run("fls", "-r", "-p", "-D", str(image)).decode("utf-8")
        self.assertEqual([path for path in rows if f"\t{path}\n" not in listed and path not in folders], [])

    def test_ntfsinfo_tells_the_same_storage_and_streams(self):
        image, _ = self.image(4096)
        numbers = {}
        for line in run("fls", "-r", "-p", "-F", str(image)).decode("utf-8").splitlines():
            match = re.match(r"\S+ (\d+)-128-\d+:\t(.*)$", line)
            if match and ":" not in match[2]:
                numbers[match[2]] = int(match[1])
        _, own = scan(self.linux, f"ntfs:{image}", "--ShareHardLinks", "false")
        _, shared = scan(self.linux, f"ntfs:{image}", "--ShareHardLinks", "true")
        interesting = [path for path in numbers if not path.startswith("$") and "many/" not in path]
        self.assertGreater(len(interesting), 0)
        links = {}
        for path in interesting:
            links[numbers[path]] = links.get(numbers[path], 0) + 1
        known = {}
        for path in interesting:
            number = numbers[path]
            if number not in known:
                known[number] = allocated_by_ntfsinfo(image, number)
            data, streams = known[number]
            self.assertEqual(int(own[path]["Allocated"]), data, path)
            self.assertEqual(int(shared[path]["Allocated"]), (data + streams) // links[number], path)
        if can_mount():
            self.assertEqual(max(links.values()), 61)

    def check_contents(self, image, copies, files, program, launcher=()):
        """Each file of the image is a duplicate of its copy, byte for byte, and of no other."""
        shown = wine_path if launcher else str
        table = self.folder / "groups.csv"
        process = subprocess.run([*launcher, program, "--nooptions", "--duplicates", "--verify", f"ntfs:{shown(image)}", shown(copies),
                                  "--csv", shown(table), "--usecolumns", "fullpath"], capture_output=True, timeout=TIMEOUT, check=False)
        self.assertEqual(process.returncode, 0, process.stderr)
        groups = {}
        for row in csv.DictReader(io.StringIO(table.read_text(encoding="utf-8-sig"))):
            path = row["Full Path"].replace("\\", "/")
            inside = "image:" + path.split("|/")[1] if path.startswith("ntfs:") else path.split(f"/{copies.name}/")[1]
            groups.setdefault(row["Group"], []).append(inside)
        linked = {"packed/linked", "plain/text 65537"}
        expected = [sorted([name, f"image:{name}"]) for name in files if name not in linked]
        expected.append(sorted(prefix + name for name in linked for prefix in ("", "image:")))
        self.assertEqual(sorted(map(sorted, groups.values())), sorted(expected))

    def test_contents_of_files_are_the_bytes_that_were_written(self):
        if not can_mount():
            self.skipTest("no volume can be mounted here")
        for cluster in (512, 4096):
            with self.subTest(cluster=cluster):
                image, copies = self.folder / "contents.img", self.folder / "copies"
                with open(image, "wb") as file:
                    file.truncate(64 * MEGABYTE)
                run("mkntfs", "-F", "-q", "-c", str(cluster), str(image))
                with Mounted(image, self.folder / "mount", "compression") as top:
                    files = fill_with_contents(top)
                for name, data in files.items():
                    (copies / name).parent.mkdir(parents=True, exist_ok=True)
                    (copies / name).write_bytes(data)
                self.assertIn(b"Compressed size", run("ntfsinfo", "-v", "-F", "/packed/mixed", str(image)))
                self.assertIn(b"Dumping attribute $ATTRIBUTE_LIST", run("ntfsinfo", "-F", "/plain/pieces", str(image)))
                self.check_contents(image, copies, files, self.linux)
                if self.windows and cluster == 4096:
                    self.check_contents(image, copies, files, self.windows, self.launcher)
                found = run(self.linux, "--nooptions", "--search", "content:piece ext:.", f"ntfs:{image}", "--pathlist", "-").decode()
                self.assertEqual(sorted(path.split("|/")[1] for path in found.splitlines()), ["plain/pieces"])
                with open(image, "r+b") as file:  # behind the table, in front of what was written last
                    file.truncate(image.stat().st_size // 3)
                process = subprocess.run([self.linux, "--nooptions", "--search", "content:~no.such.text", f"ntfs:{image}"],
                                         capture_output=True, timeout=TIMEOUT, check=False)
                self.assertEqual(process.returncode, 1, process.stderr)
                self.assertIn(b"The image ends inside its data", process.stderr)
                shutil.rmtree(copies)

    def test_a_mounted_volume_is_read_through_its_table(self):
        if not can_mount():
            self.skipTest("no volume can be mounted here")
        image, _ = self.image(4096)
        with Mounted(image, self.folder / "mount", "ro") as top:
            report = run(self.linux, str(top), "--nogui", "--text", "-").decode()
            _, indexed = scan(self.linux, str(top), "--ShareHardLinks", "false")
            _, ordinary = scan(self.linux, str(top), "--ShareHardLinks", "false", "--ScanMFT", "false")
        self.assertIn("Read from the file table of the volume", report)
        self.assertEqual(sorted(indexed), sorted(ordinary))
        self.assertEqual({path: row["Size"] for path, row in indexed.items() if "symbolic" not in path},
                         {path: row["Size"] for path, row in ordinary.items() if "symbolic" not in path})

    def test_the_windows_program_reads_the_same(self):
        if not self.windows:
            self.skipTest("VANTREL_WINDOWS is not set")
        image, _ = self.image(4096)
        switches = ("--ShareHardLinks", "true", "--CollectOwners", "false")
        _, linux = scan(self.linux, f"ntfs:{image}", *switches)
        process, windows = scan(self.windows, "ntfs:" + wine_path(image), *switches, launcher=self.launcher)
        self.assertEqual(process.returncode, 0, wine.without_remarks(process.stderr))
        without_path = [{path: {**row, "Full Path": ""} for path, row in rows.items()} for rows in (linux, windows)]
        self.assertEqual(*without_path)

    def test_a_disk_offers_its_ntfs_partitions_and_a_folder_can_be_named(self):
        image, _ = self.image(4096)
        disk = self.folder / "disk.img"
        sectors = image.stat().st_size // 512
        # Two entries: no start flag, a type (NTFS, Linux), first sector, number of sectors.
        entries = b"".join(bytes(4) + bytes([kind]) + bytes(3) + first.to_bytes(4, "little") + count.to_bytes(4, "little")
                           for kind, first, count in ((7, 2048, sectors), (0x83, 64, 1024)))
        with open(disk, "wb") as file, open(image, "rb") as volume:
            file.write(bytes(446) + entries + bytes(32) + b"\x55\xaa")
            file.seek(2048 * 512)
            shutil.copyfileobj(volume, file)
        self.assertIn(b"NTFS", run("mmls", str(disk)))
        _, alone = scan(self.linux, f"ntfs:{image}")
        _, partitioned = scan(self.linux, f"ntfs:{disk}")
        self.assertEqual(sorted(partitioned), sorted(["Partition 1"] + [f"Partition 1/{path}" for path in alone]))
        if "docs" in alone:
            _, part = scan(self.linux, f"ntfs:{disk}|/Partition 1/DOCS")
            self.assertEqual(sorted(path.removeprefix("Partition 1/DOCS").lstrip("/") for path in part),
                             [""] + sorted(path[5:] for path in alone if path.startswith("docs/")))
        report = run(self.linux, f"ntfs:{disk}", "--nogui", "--text", "-").decode()
        self.assertIn("Partitions without NTFS are not shown: 2.", report)
        disk.unlink()

    def test_the_report_tells_the_volume_and_how_it_was_read(self):
        image, _ = self.image(4096)
        report = run(self.linux, f"ntfs:{image}", "--nogui", "--text", "-", "--TextSizeUnit", "B").decode()
        self.assertIn("(NTFS, label of it)", report)
        clusters = re.search(r"Free Clusters: (\d+)", run("ntfsinfo", "-m", str(image)).decode())
        self.assertIn(f"Free: {int(clusters[1]) * 4096:,} ", report)
        self.assertRegex(report, r"Read from the file table of the volume: [\d,]+ records\.")

    def test_what_is_no_volume_is_refused(self):
        empty = self.folder / "empty.img"
        empty.touch()
        for path, reason in ((empty, "It is empty"), (self.folder / "none", "No such file or directory"),
                             (self.folder, "Is a directory"), ("/dev/null", "Block device required")):
            process, _ = scan(self.linux, f"ntfs:{path}")
            self.assertEqual(process.returncode, 3, path)
            self.assertIn(reason, process.stderr.decode())


if __name__ == "__main__":
    unittest.main()
