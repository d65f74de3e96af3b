"""Compares what is compiled with what is linked into the program. The linker drops a function that no caller reaches; such a
function is to go from the sources as well.

Works on a build without optimisation, with a section for each function, whose unused sections the linker drops: the preset
"clang". unlinked.txt lists the functions that wait for a caller. A virtual function counts as linked when its class is.

Usage: linked.py BUILD_FOLDER. Prints a line per violation; exit code 1 when there is one.
"""

import pathlib
import re
import subprocess
import sys

ALLOWED = pathlib.Path(__file__).with_name("unlinked.txt")


def functions(path):
    """The functions that a library or program defines for others to call, by demangled name."""
    listing = subprocess.run(["nm", "--demangle", "--defined-only", path], check=True, capture_output=True, text=True)
    # "T" is a function with one definition. Templates and inline functions ("W") are made where they are used.
    return set(re.findall(r"^[0-9a-f]+ T (.*\bVantrel::.*)$", listing.stdout, re.MULTILINE))


def allowed_names(text):
    """The list without its comments: each line is a function's name, or the beginning of several."""
    return [line.strip() for line in text.splitlines() if line.strip() and not line.startswith("#")]


def check(compiled, linked, allowed):
    """Returns the violations as lines of text."""
    if not compiled or not linked:
        return ["no function found, so nothing was checked"]
    missing = sorted(compiled - linked)
    plain = {name: re.sub(r"\bVantrel::|\[abi:cxx11\]", "", name) for name in missing}
    violations = [f"{plain[name]}: nothing in the program calls it" for name in missing
                  if not any(plain[name].startswith(entry) for entry in allowed)]
    return violations + [f"{ALLOWED.name}: {entry} is linked, or is no more" for entry in allowed
                         if not any(name.startswith(entry) for name in plain.values())]


def main(folder):
    compiled = set().union(*map(functions, pathlib.Path(folder).glob("libvantrel_*.a")))
    found = check(compiled, functions(pathlib.Path(folder) / "vantrel"), allowed_names(ALLOWED.read_text(encoding="utf-8")))
    sys.stdout.write("".join(line + "\n" for line in found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
