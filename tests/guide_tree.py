"""The disk that the user's guide scans, its growth within a week, and what an independent walk says of it.

Sizes are whole blocks, except where a list shows the difference between size and allocated size. No sum lies half-way
between two figures of a report. Dates are given as days
before the day of the run, so that lists by age always read the same.
"""

import datetime
import os
import random
import sqlite3
import subprocess
import zipfile

KB, MB = 1 << 10, 1 << 20

FILES = (  # path, bytes, days since the last change
    ("notes.txt", 2560, 400.2),
    ("backup/old-server.tar", 22 * MB, 1100.2),
    ("backup/shop-1.sql.gz", 12 * MB, 20.4),
    ("backup/shop-2.sql.gz", 12 * MB + 512 * KB, 13.4),
    ("backup/shop-3.sql.gz", 13 * MB, 6.4),
    ("log/access.log", 9 * MB, 0.2),
    ("log/access.log.1", 7 * MB + 512 * KB, 7.2),
    ("log/error.log", 300 * KB, 1.3),
    ("mail/anna.mbox", 6 * MB + 300 * KB, 2.2),
    ("mail/ben.mbox", 3 * MB + 512 * KB, 40.2),
    ("photos/2019/beach.jpg", 3 * MB, 2600.2),
    ("photos/2019/harbour.jpg", 2 * MB + 512 * KB, 2601.2),
    ("photos/2024/garden.jpg", 4 * MB, 700.2),
    ("photos/2024/house.jpg", 2 * MB + 800 * KB, 701.2),
    ("photos/copy of 2019/beach.jpg", 3 * MB, 2600.2),
    ("photos/copy of 2019/harbour.jpg", 2 * MB + 512 * KB, 2601.2),
    ("vm/disk.img", 2 * MB, 3.2),
    ("vm/test/test.img", 3 * MB, 30.4),
    ("web/app.js", 40 * KB, 90.2),
    ("web/index.html", 12 * KB, 90.2),
    ("web/uploads/film.mp4", 5 * MB + 512 * KB, 200.2),
    ("web/cache/1.tmp", 1 * MB, 1.4),
    ("web/cache/2.tmp", 768 * KB, 1.4),
)
SPARSE = {"vm/disk.img": 32 * MB}  # the length; the bytes above are stored
TEXTS = {"web/app.js": b"const apiKey = 'k-1234';\n"}
EMPTY_FOLDERS = ("mail/archive",)
WEEK = (("log/access.log", 21 * MB, 0.2), ("backup/shop-4.sql.gz", 13 * MB + 512 * KB, 0.4), ("mail/anna.mbox", 6 * MB + 812 * KB, 0.3),
        ("photos/2026/snow.jpg", 5 * MB + 200 * KB, 3.3))
WEEK_GONE = ("backup/shop-1.sql.gz", "vm/test/test.img", "vm/test")


def put(top, now, name, size, days):
    path = top / name
    path.parent.mkdir(parents=True, exist_ok=True)
    seed = name.rpartition("/")[2]  # copies have the same contents; random ones, which no file system compresses
    path.write_bytes((TEXTS.get(name, b"") + random.Random(seed).randbytes(size))[:size])
    if name in SPARSE:
        os.truncate(path, SPARSE[name])
    os.utime(path, (now - days * 86400,) * 2)


def date_folders(top, now):
    """Folders are older than what lies in them, so that dates of change in reports are those of files."""
    for folder, _, _ in os.walk(top, topdown=False):
        os.utime(folder, (now, now - 3000 * 86400))


def plant(top, now):
    for entry in FILES:
        put(top, now, *entry)
    for name in EMPTY_FOLDERS:
        (top / name).mkdir()
    date_folders(top, now)


def let_a_week_pass(top, now, work, database):
    """Grows the disk, and moves the dates of what was kept back by a week: scan files, their names, and the history."""
    for entry in WEEK:
        put(top, now, *entry)
    for name in WEEK_GONE:
        (top / name).rmdir() if (top / name).is_dir() else (top / name).unlink()
    date_folders(top, now)
    today = datetime.date.fromtimestamp(now)
    for path in [path for folder in work for path in sorted(folder.glob("*.xml.zip"))]:
        earlier = (today - datetime.timedelta(days=7)).isoformat()
        with zipfile.ZipFile(path) as archive:
            parts = [(info.filename, archive.read(info)) for info in archive.infolist()]
        path.unlink()
        with zipfile.ZipFile(path.with_name(path.name.replace(today.isoformat(), earlier)), "w", zipfile.ZIP_DEFLATED) as archive:
            for name, contents in parts:
                archive.writestr(name, contents.replace(f"<DateISO>{today}".encode(), f"<DateISO>{earlier}".encode()))
    with sqlite3.connect(database) as connection:
        connection.execute("UPDATE SCANS SET DATE = DATE - 7")


def make_image(path, now):
    """An NTFS disk with two files in its root, that no one has mounted."""
    os.truncate(os.open(path, os.O_CREAT | os.O_RDWR), 16 * MB)
    subprocess.run(["mkntfs", "-F", "-q", "-L", "old disk", path], check=True, capture_output=True)
    for name, size in (("letter.doc", 40 * KB), ("holiday.mpg", 3 * MB)):
        source = path.with_name(name)
        source.write_bytes(random.Random(name).randbytes(size))
        subprocess.run(["ntfscp", "-q", path, source, name], check=True, capture_output=True)
        source.unlink()
    path.chmod(0o644)
