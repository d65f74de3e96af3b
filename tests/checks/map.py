"""Checks that ARCHITECTURE.md names every source file that git tracks, and no file that is gone.

A heading that holds a folder in backticks and ends with "/" (## `platform/`) opens that folder's section; the root's is
`./`. In it, each backticked name in the first column of a table is one entry, relative to the folder:
  `Text.h`  one file;
  `Text`    the unit of that name: whichever there are of Text.h, Text.cpp, Text_posix.* and Text_win32.*, or a script
            without a suffix.
Each source file has exactly one entry. Elsewhere in the document, a path in backticks that begins with one of the
project's folders must exist as well.

Usage: map.py [FOLDER]. Prints a line per violation; exit code 1 when there is one.
"""

import pathlib
import re
import subprocess
import sys

MAP = "ARCHITECTURE.md"
SOURCE_SUFFIXES = {".h", ".cpp", ".py", ".sh", ".cmake"}
UNIT_ENDINGS = ("", ".h", ".cpp", "_posix.h", "_posix.cpp", "_win32.h", "_win32.cpp")


def tracked_files(root):
    """What git tracks, without what was deleted but not committed yet."""
    # The folder may belong to another user, as in a container; reading the list of names is harmless.
    listing = subprocess.run(["git", "-c", "safe.directory=*", "-C", root, "ls-files", "-z"], check=True,
                             capture_output=True, text=True)
    return [name for name in listing.stdout.split("\0") if name and (root / name).exists()]


def is_source(root, name):
    path = root / name
    if path.suffix:
        return path.suffix in SOURCE_SUFFIXES
    with open(path, "rb") as file:
        return file.read(2) == b"#!"


def resolve(entry, files):
    """The files that an entry, given from the project's root, stands for."""
    return [entry + ending for ending in UNIT_ENDINGS if entry + ending in files]


def entries(text):
    """Yields (line number, path from the root) for each name in the first column of a folder's table."""
    folder = None
    for number, line in enumerate(text.splitlines(), 1):
        if line.startswith("#"):
            heading = re.search(r"`([^`]+)/`", line)
            folder = heading[1] if heading else None
        elif folder and line.startswith("|"):
            for name in re.findall(r"`([^`]+)`", line.split("|")[1]):
                yield number, name if folder == "." else f"{folder}/{name}"


def check(root):
    """Returns the violations in a project as lines of text."""
    files = tracked_files(root)
    wanted = {name for name in files if is_source(root, name)}
    text = (root / MAP).read_text(encoding="utf-8")
    violations, named_at = [], {}
    for number, entry in entries(text):
        found = resolve(entry, files)
        if not found:
            violations.append(f"{MAP}:{number}: {entry} is not there")
        for name in found:
            if name in named_at:
                violations.append(f"{MAP}:{number}: {name} is named in line {named_at[name]} already")
            named_at.setdefault(name, number)
    violations += [f"{name}: {MAP} does not name it" for name in sorted(wanted - named_at.keys())]
    violations += dangling_paths(text, files)
    if not wanted:
        violations.append(f"{root}: no source file found, so nothing was checked")
    return violations


def dangling_paths(text, files):
    """Violations for paths in the prose and in other tables that lead nowhere."""
    folders = {str(parent) for name in files for parent in pathlib.PurePath(name).parents} - {"."}
    for number, line in enumerate(text.splitlines(), 1):
        for path in re.findall(r"`([\w.-]+/[\w./-]*)`", line):
            path = path.rstrip("/")
            if path.split("/")[0] in folders and path not in folders and not resolve(path, files):
                yield f"{MAP}:{number}: {path} is not there"


if __name__ == "__main__":
    found = check(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2]).resolve())
    sys.stdout.write("".join(line + "\n" for line in found))
    sys.exit(1 if found else 0)
