"""Checks that the bitmaps of the program's icon show its drawing, app/gui/icons/vantrel.svg.

Usage: icons.py. Prints the names of those that do not; exit code 1 when there is one.
"""

import importlib.util
import pathlib
import sys

SCRIPT = pathlib.Path(__file__).parents[2] / "app/gui/icons/render.py"


def stale():
    specification = importlib.util.spec_from_file_location("render", SCRIPT)
    render = importlib.util.module_from_spec(specification)
    specification.loader.exec_module(render)
    return render.stale()


if __name__ == "__main__":
    found = stale()
    sys.stdout.write("".join(f"{name} is out of date: run {SCRIPT.name} beside it\n" for name in found))
    sys.exit(1 if found else 0)
