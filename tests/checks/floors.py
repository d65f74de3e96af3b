"""Checks that every #include points down: from a floor to itself or to one below it, never up. Keeps
the operating systems' headers and macros in the few files made for them, and third-party libraries on their floors.

Usage: floors.py [FOLDER]. Prints a line per violation; exit code 1 when there is one.
"""

import pathlib
import re
import sys

# The lower the number, the lower the floor.
FLOORS = {"platform": 1, "model": 2, "scan": 3, "search": 4, "presentation": 5, "export": 6, "automation": 7, "window": 8,
          "app": 9}
FREE_FOLDERS = {"tests", "bench"}  # may see every floor and the system
PLATFORM_FOLDERS = {"platform", "scan"}  # may ask which system they are compiled for, and share system headers
HIDDEN = {"build", "docs"}  # and everything that begins with a dot

# Which floors may use a third-party library, by the beginning of its headers' names. "*" is every floor.
LIBRARIES = {
    "boost/": {"*"},
    "fmt/": {"*"},
    "sqlite3.h": {"export"},
    "expat.h": {"search", "export"},
    "zip.h": {"search", "export"},
    "libexif/": {"search"},
    "taglib/": {"search"},
    "zlib.h": {"export"},
    "pcre2.h": {"search"},
    "openssl/": {"search"},
    "xxhash.h": {"search"},
    "curl/": {"automation"},
}

# Headers of the window's library, <QWidget> and <QtTest/QTest>, and the folders that may see them.
WINDOW_LIBRARY = re.compile(r"Qt?[A-Z]\w*(/|$)")
WINDOW_FOLDERS = ("window/", "app/gui/")

INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')
PLATFORM_CONDITION = re.compile(
    r"\s*#\s*(?:if|ifdef|ifndef|elif|elifdef|elifndef)\b.*\b(_WIN32|_WIN64|WIN32|__MINGW\w*|_MSC_VER|__CYGWIN__|"
    r"__linux__|__linux|linux|__unix__|__unix|unix|__APPLE__)\b")


def is_platform_file(path):
    """X_posix.cpp and X_win32.cpp, and private headers of that name on the floors that deal with the system."""
    platform_name = path.stem.endswith(("_posix", "_win32"))
    return platform_name and (path.suffix == ".cpp" or path.parts[0] in PLATFORM_FOLDERS)


def check_include(path, quote, name):
    """What is wrong with one #include in a file of a floor, or nothing. The path is relative to the project."""
    floor, target = path.parts[0], name.split("/")[0]
    if target in FREE_FOLDERS:
        return f"{floor}/ includes {name}: the program does not know its tests and benchmarks"
    if target in FLOORS:
        if FLOORS[target] > FLOORS[floor]:
            return f"{floor}/ includes {name}, which lies above it"
        private = re.search(r"_(posix|win32)\.h$", name)
        if private and not path.stem.endswith("_" + private[1]):
            return f"{name} is private to files of its own platform"
        return None
    if quote == '"':
        return f'"{name}" does not begin with the folder it lies in'
    for library, floors in LIBRARIES.items():
        if name.startswith(library):
            return None if floors & {"*", floor} else f"<{name}> is not for {floor}/"
    if WINDOW_LIBRARY.match(name):
        if path.as_posix().startswith(WINDOW_FOLDERS):
            return None
        return f"<{name}> is for {' and '.join(WINDOW_FOLDERS)} alone: the console program knows no window library"
    # Headers of the standard library have no suffix; whatever else comes in angle brackets belongs to a system.
    if "." not in name and "/" not in name or is_platform_file(path):
        return None
    return f"<{name}> belongs to a system: move what needs it to a file named *_posix.cpp or *_win32.cpp"


def check_file(root, path):
    """Yields (line number, message) for each violation in one file."""
    for number, line in enumerate((root / path).read_text(encoding="utf-8").splitlines(), 1):
        include = INCLUDE.match(line)
        message = check_include(path, include[1], include[2]) if include else None
        condition = PLATFORM_CONDITION.match(line)
        if condition and path.parts[0] not in PLATFORM_FOLDERS:
            message = f"asks for {condition[1]}: choose the platform by file, X_posix.cpp and X_win32.cpp"
        if message:
            yield number, message


def sources(root):
    """All C++ files, relative to the project, but those of hidden and generated folders."""
    for path in sorted(root.rglob("*")):
        path = path.relative_to(root)
        if path.suffix in (".h", ".cpp") and path.parts[0] not in HIDDEN and not path.parts[0].startswith("."):
            yield path


def check(root):
    """Returns the violations in a project as lines of text."""
    violations, checked = [], 0
    for path in sources(root):
        checked += 1
        if path.parts[0] in FREE_FOLDERS:
            continue
        if path.parts[0] not in FLOORS:
            violations.append(f"{path}:1: lies on no floor")
            continue
        violations += [f"{path}:{number}: {message}" for number, message in check_file(root, path)]
    if not checked:
        violations.append(f"{root}: no source file found, so nothing was checked")
    return violations


if __name__ == "__main__":
    found = check(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2]).resolve())
    sys.stdout.write("".join(line + "\n" for line in found))
    sys.exit(1 if found else 0)
