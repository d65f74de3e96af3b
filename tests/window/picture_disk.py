"""Makes the disk that the pictures of the window show: python3 picture_disk.py FOLDER.

Some 9,000 files with the sizes and dates of a home server, from a fixed seed. Blocks are set aside and not written, so it is quick
and takes 12 GB for a moment.
"""

import os
import pathlib
import random
import sys
import time

KB, MB = 1 << 10, 1 << 20
DAY = 86400
PLACES = (  # folder, extension, number of files, smallest and largest size, oldest in days
    ("films/Documentaries", "mkv", 5, 300 * MB, 700 * MB, 900),
    ("films/Family", "mp4", 14, 20 * MB, 180 * MB, 2500),
    ("music/Albums/Concerts", "flac", 60, 8 * MB, 30 * MB, 2000),
    ("music/Albums/Songs", "mp3", 120, 2 * MB, 7 * MB, 3000),
    ("photos/2019 Coast", "jpg", 140, 2 * MB, 5 * MB, 2600),
    ("photos/2022 Mountains", "jpg", 120, 3 * MB, 7 * MB, 1500),
    ("photos/2024 Garden", "heic", 90, 1 * MB, 3 * MB, 700),
    ("photos/2026 Snow/raw", "dng", 22, 22 * MB, 28 * MB, 40),
    ("photos/2026 Snow", "jpg", 44, 4 * MB, 8 * MB, 40),
    ("backup/laptop", "tar.gz", 6, 120 * MB, 420 * MB, 180),
    ("backup/database", "sql.gz", 30, 4 * MB, 14 * MB, 30),
    ("mail/anna", "mbox", 7, 5 * MB, 120 * MB, 300),
    ("vm/images", "qcow2", 2, 500 * MB, 1100 * MB, 60),
    ("vm/images", "iso", 2, 350 * MB, 650 * MB, 500),
    ("documents/Taxes", "pdf", 90, 60 * KB, 3 * MB, 2400),
    ("documents/Letters", "odt", 160, 12 * KB, 200 * KB, 2900),
    ("documents/Scans", "png", 80, 400 * KB, 6 * MB, 1200),
    ("projects/shop/src", "ts", 900, 1 * KB, 40 * KB, 400),
    ("projects/shop/node_modules/lib", "js", 4200, 1 * KB, 120 * KB, 500),
    ("projects/shop/target", "o", 300, 20 * KB, 2 * MB, 10),
    ("projects/thesis", "tex", 40, 3 * KB, 60 * KB, 1800),
    ("log", "log", 24, 200 * KB, 60 * MB, 25),
)


def put(path, size, changed):
    with open(path, "wb") as file:
        os.posix_fallocate(file.fileno(), 0, size)
    os.utime(path, (changed, changed))


def plant(top):
    numbers, now = random.Random(20261123), time.time()
    for folder, extension, count, least, most, oldest in PLACES:
        (top / folder).mkdir(parents=True, exist_ok=True)
        for number in range(1, count + 1):
            size = int(least * (most / least) ** numbers.random())
            put(top / folder / f"{folder.rpartition('/')[2].split()[-1].lower()}-{number:04}.{extension}", size,
                now - DAY * oldest * numbers.random())
    # Copies, of a few hundred bytes each to compare: blocks that were never written are all alike.
    for number in range(1, 25):
        name = f"letters-{number:04}.odt"
        target = top / "backup/old desktop" / name
        target.parent.mkdir(exist_ok=True)
        target.write_bytes((top / "documents/Letters" / name).read_bytes())


if __name__ == "__main__":
    plant(pathlib.Path(sys.argv[1]))
