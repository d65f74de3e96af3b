"""Checks that clang-format, with the project's settings, would change no tracked C++ file.

Usage: format.py [FOLDER]. Prints a line per file that it would change; exit code 1 when there is one.
"""

import concurrent.futures
import os
import pathlib
import subprocess
import sys

FILES_PER_RUN = 25


def tracked_sources(root):
    listing = subprocess.run(["git", "-c", "safe.directory=*", "-C", root, "ls-files", "-z", "*.h", "*.cpp"], check=True,
                             capture_output=True, text=True)
    return [name for name in listing.stdout.split("\0") if name and (root / name).exists()]


def wrongly_formatted(root, names):
    """Those of the files that would be changed."""
    run = subprocess.run(["clang-format", "--dry-run", "-Werror", *names], cwd=root, capture_output=True, text=True,
                         check=False)
    found = {line.split(":")[0] for line in run.stderr.splitlines() if "error:" in line}
    if run.returncode != 0 and not found:
        raise RuntimeError(f"clang-format failed: {run.stderr}")
    return found


def check(root):
    """Returns the violations in a project as lines of text."""
    names = tracked_sources(root)
    if not names:
        return [f"{root}: no source file found, so nothing was checked"]
    parts = [names[i:i + FILES_PER_RUN] for i in range(0, len(names), FILES_PER_RUN)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = set().union(*pool.map(lambda part: wrongly_formatted(root, part), parts))
    return [f"{name}: is not formatted; run clang-format -i {name}" for name in sorted(found)]


if __name__ == "__main__":
    violations = check(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2]).resolve())
    sys.stdout.write("".join(line + "\n" for line in violations))
    sys.exit(1 if violations else 0)
