"""Checks that ARCHITECTURE.md names every room, and that every source file says what it holds.

A room is a folder of a floor that holds source files: `scan/engine/`, or `app/` where the floor itself does. The map names it in
backticks, with the "/" at its end. Every path in backticks that begins with one of the project's folders must exist; a path
without a suffix (`scan/engine/ScanJob`) stands for any of ScanJob.h, ScanJob.cpp, ScanJob_posix.* and ScanJob_win32.*.

A header opens with a comment after "#pragma once", and so does a source file without a header of its name. A Python file opens with a docstring, another script with a comment.

Usage: map.py [FOLDER]. Prints a line per violation; exit code 1 when there is one.
"""

import pathlib
import re
import subprocess
import sys

MAP = "ARCHITECTURE.md"
FLOORS = ("platform", "model", "scan", "search", "presentation", "export", "automation", "window", "app")
UNIT_ENDINGS = ("", ".h", ".cpp", "_posix.h", "_posix.cpp", "_win32.h", "_win32.cpp")


def tracked_files(root):
    """What git tracks, without what was deleted but not committed yet."""
    # The folder may belong to another user, as in a container; reading the list of names is harmless.
    listing = subprocess.run(["git", "-c", "safe.directory=*", "-C", root, "ls-files", "-z"], check=True,
                             capture_output=True, text=True)
    return [name for name in listing.stdout.split("\0") if name and (root / name).exists()]


def rooms(files):
    """The folders of floors that hold source files."""
    return {str(pathlib.PurePath(name).parent) for name in files
            if name.endswith((".h", ".cpp")) and name.split("/")[0] in FLOORS}


def check_rooms(text, files):
    for room in sorted(rooms(files)):
        if f"`{room}/`" not in text:
            yield f"{MAP}: the room {room}/ is not named"


def check_paths(text, files):
    """Violations for paths that lead nowhere."""
    folders = {str(parent) for name in files for parent in pathlib.PurePath(name).parents} - {"."}
    known = set(files)
    for number, line in enumerate(text.splitlines(), 1):
        for path in re.findall(r"`([\w.-]+/[\w./-]*)`", line):
            path = path.rstrip("/")
            exists = path in folders or any(path + ending in known for ending in UNIT_ENDINGS)
            if path.split("/")[0] in folders and not exists:
                yield f"{MAP}:{number}: {path} is not there"


def opens_with_comment(root, name, files):
    """Whether a source file says what it holds, or need not: X.cpp and X_posix.cpp leave that to X.h."""
    path = root / name
    if name.endswith((".h", ".cpp")):
        text = path.read_text(encoding="utf-8").removeprefix("#pragma once\n").lstrip("\n")
        unit = re.sub(r"(_posix|_win32)?\.(h|cpp)$", "", name)
        says_it = {unit + ending for ending in (".h", "_posix.h", "_win32.h", ".cpp")} - {name}
        return text.startswith("// ") or not name.endswith(".h") and not says_it.isdisjoint(files)
    if name.endswith(".py"):
        return path.read_text(encoding="utf-8").removeprefix("#!/usr/bin/env python3\n").startswith('"""')
    if name.endswith((".sh", ".cmake")) or not path.suffix and path.read_bytes().startswith(b"#!"):
        lines = path.read_text(encoding="utf-8").splitlines() + ["", ""]
        return lines[lines[0].startswith("#!")].startswith(("# ", '"""'))
    return True


def check(root):
    """Returns the violations in a project as lines of text."""
    files = set(tracked_files(root))
    text = (root / MAP).read_text(encoding="utf-8")
    violations = list(check_rooms(text, files)) + list(check_paths(text, files))
    violations += [f"{name}: does not open with a comment that says what it holds"
                   for name in sorted(files) if not opens_with_comment(root, name, files)]
    if not rooms(files):
        violations.append(f"{root}: no source file found, so nothing was checked")
    return violations


if __name__ == "__main__":
    found = check(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2]).resolve())
    sys.stdout.write("".join(line + "\n" for line in found))
    sys.exit(1 if found else 0)
