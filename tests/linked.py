"""Compares what is compiled with what is linked into the program: a function that no caller reaches is dropped by the linker, and
is to go from the sources as well.

Works on a build without optimisation, with a section for each function, whose unused sections the linker drops: the preset
"clang". Functions that wait for a caller are listed in tests/unlinked.txt, each group with its reason.

Usage: linked.py BUILD_FOLDER. Prints a line per violation; exit code 1 when there is one.
"""

import pathlib
import re
import subprocess
import sys

ALLOWED = pathlib.Path(__file__).with_name("unlinked.txt")
OWN = re.compile(r"\bVantrel::")


def functions(path):
    """The demangled names of the functions that a library or program defines for others to call."""
    listing = subprocess.run(["nm", "--demangle", "--defined-only", path], check=True, capture_output=True, text=True)
    # "T" is a function with one definition. Templates and inline functions ("W") are made where they are used.
    return {line.split(" ", 2)[2] for line in listing.stdout.splitlines() if re.match(r"[0-9a-f]+ T ", line)}


def allowed_functions(text):
    """The functions of the list: each line that is no comment begins one's name, up to its parameters or wholly."""
    return [line.strip() for line in text.splitlines() if line.strip() and not line.startswith("#")]


def check(compiled, linked, allowed):
    """Returns the violations as lines of text."""
    missing = sorted(name for name in compiled - linked if OWN.search(name))
    violations = [f"{name}: nothing in the program calls it" for name in missing
                  if not any(name.startswith(entry) for entry in allowed)]
    violations += [f"{ALLOWED.name}: {entry} is linked, or is no more" for entry in allowed
                   if not any(name.startswith(entry) for name in missing)]
    if not compiled or not linked:
        violations.append("no function found, so nothing was checked")
    return violations


def main(folder):
    libraries = [path for path in pathlib.Path(folder).glob("libvantrel_*.a")]
    compiled = set().union(*map(functions, libraries)) if libraries else set()
    found = check(compiled, functions(pathlib.Path(folder) / "vantrel"), allowed_functions(ALLOWED.read_text(encoding="utf-8")))
    sys.stdout.write("".join(line + "\n" for line in found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
