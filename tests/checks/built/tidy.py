"""Runs clang-tidy, with the project's short list of checks, over every source of the program in the compile database.

A file whose source, headers, command and settings are as they were when it was last found clean is not looked at again; the
build folder keeps their hashes. The headers come from Ninja's record of the build.

Usage: tidy.py BUILD_FOLDER. Prints the findings; exit code 1 when there is one.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
FINDING = re.compile(r"^\S+:\d+:\d+: (?:warning|error): .*\[\S+\]$", re.MULTILINE)


def own_sources(folder, root):
    """The compile commands of the program's sources, by file."""
    entries = json.loads((folder / "compile_commands.json").read_text(encoding="utf-8"))
    return {entry["file"]: entry["command"] for entry in entries
            if pathlib.Path(entry["file"]).is_relative_to(root) and not pathlib.Path(entry["file"]).is_relative_to(root / "tests")}


def headers(folder):
    """What each object was made from, by object, as Ninja recorded it."""
    listing = subprocess.run(["ninja", "-C", folder, "-t", "deps"], check=True, capture_output=True, text=True).stdout
    return {block.split(":", 1)[0]: re.findall(r"^    (.+)$", block, re.MULTILINE) for block in listing.split("\n\n") if block}


def state(folder, root, file, command, made_from, hashes):
    """A hash over all that a finding can depend on."""
    def hash_of(path):
        if path not in hashes:
            hashes[path] = hashlib.sha256((folder / path).read_bytes()).digest()
        return hashes[path]

    # A system's headers change with its packages, and with them their paths or the compiler's version.
    read = {file, str(root / ".clang-tidy")} | {path for path in made_from if not path.startswith("/usr/")}
    return hashlib.sha256(b"".join([command.encode(), *(hash_of(path) for path in sorted(read))])).hexdigest()


def findings(folder, file):
    run = subprocess.run(["clang-tidy", "-p", folder, "--quiet", "--warnings-as-errors=*", file], capture_output=True, text=True,
                         check=False)
    found = set(FINDING.findall(run.stdout))
    return found or ({f"{file}: clang-tidy failed: {run.stderr.strip()[-500:]}"} if run.returncode else set())


def check(folder, root=ROOT):
    """Returns the findings as lines of text."""
    sources, record = own_sources(folder, root), folder / "tidy.json"
    if not sources:
        return [f"{folder}: no source found, so nothing was checked"]
    made_from, hashes = headers(folder), {}
    version = subprocess.run(["clang-tidy", "--version"], check=True, capture_output=True, text=True).stdout
    clean = set(json.loads(record.read_text())) if record.exists() else set()
    states = {}
    for file, command in sources.items():
        made = re.search(r" -o (\S+)", command)[1]
        states[file] = state(folder, root, file, version + command, made_from.get(made, []), hashes)
    files = [file for file in sources if states[file] not in clean]
    found, clean = set(), clean & set(states.values())
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for file, lines in zip(files, pool.map(lambda file: findings(folder, file), files)):
            found |= lines
            if not lines:  # kept at once, for a run that is interrupted
                record.write_text(json.dumps(sorted(clean := clean | {states[file]})))
    return sorted(found)


if __name__ == "__main__":
    violations = check(pathlib.Path(sys.argv[1]).resolve())
    sys.stdout.write("".join(line + "\n" for line in violations))
    sys.exit(1 if violations else 0)
