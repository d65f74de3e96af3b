"""Says what a list of patterns takes in of a tree, by a plain and slow reading of the rules, as the reference that scans
are held against. For Linux: the path delimiter is "/", and a path that begins with it is rooted.

    tree = read_tree("/data")
    choice = choose(tree, [parse("(-)*.tmp"), parse("*.jpg;*.png")])
    choice.taken, choice.left_out

Names are text in which each byte that is not UTF-8 stands as U+DC00 + byte. Wildcards count UTF-16 units, so "?" takes half
of a character beyond the first plane; regular expressions count characters.

What is not read here: %DATE%, columns that hold no text, and regular expressions in which a class such as [^a] or \\s would
have to stop at a byte that is not UTF-8.
"""

import array
import functools
import os
import pathlib
import re

import walk

DELIMITER = "/"
NAME, FULL_PATH, PARENT_PATH, EXTENSION, OWNER = COLUMNS = ("name", "fullpath", "parentpath", "extension", "owner")
OTHER_COLUMNS = ("size", "allocated", "lastaccess", "lastchange", "creation", "attributes", "pathlength", "depth")
LONGEST_EXTENSION = 32
GROUPS = pathlib.Path(__file__).resolve().parent / "model/statistics/standard_file_types.txt"


# --- Text --------------------------------------------------------------------------------------------------------------


def units(text):
    """One character per UTF-16 unit."""
    if text.isascii() or max(text) <= "\uffff":
        return text
    return "".join(map(chr, array.array("H", text.encode("utf-16-le", "surrogatepass"))))


@functools.lru_cache(maxsize=None)
def fold_unit(unit):
    """One to one, there and back: the final sigma and the dotless i are letters of their own, as Windows has it."""
    upper = unit.upper()
    return upper if len(upper) == 1 and upper <= "\uffff" and upper.lower() == unit else unit


def fold(text):
    """The units of a text without letter case, one for one."""
    return text.upper() if text.isascii() else "".join(map(fold_unit, units(text)))


def fold_ascii(text):
    return re.sub("[a-z]+", lambda match: match[0].upper(), text)


def expand_variables(text):
    return re.sub("%([^%]+)%", lambda match: os.environ.get(match[1], match[0]), text)


# --- Wildcards. All texts and masks of this section are folded. --------------------------------------------------------


@functools.lru_cache(maxsize=None)
def parts_of(mask):
    """What stands between the "*" of a mask, each as an expression."""
    return [re.compile("".join("." if unit == "?" else re.escape(unit) for unit in part), re.DOTALL)
            for part in mask.split("*")]


def matches_mask(text, mask):
    """Taking each inner part where it first fits leaves the most for those behind it, so there is nothing to go back to."""
    first, *inner = parts_of(mask)
    if not inner:
        return first.fullmatch(text) is not None
    found = first.match(text)
    last = inner.pop()
    last_length = len(mask) - mask.rindex("*") - 1
    for part in inner:
        found = found and part.search(text, found.end())
    return bool(found) and len(text) - last_length >= found.end() and bool(last.fullmatch(text, len(text) - last_length))


def matches_masks(text, masks, leading_blanks_count=True):
    if masks == "*.*":
        return True
    # An empty mask matches an empty value, as an extension can be. Behind the last ";" there is none.
    return any(matches_mask(text, mask if leading_blanks_count else mask.lstrip(" "))
               for mask in masks.removesuffix(";").split(";") if masks)


def longer_text_could_match(beginning, mask):
    """Whether the mask matches some text that begins so and goes on."""
    for end in range(len(mask) + 1):
        # The rest of a mask matches some text, unless there is neither a rest nor a "*" that may take more.
        if (end < len(mask) or mask.endswith("*")) and matches_mask(beginning, mask[:end]):
            return True
    return False


# --- Patterns ----------------------------------------------------------------------------------------------------------


def is_within(path, folder):
    folder = folder.rstrip(DELIMITER)
    return path == folder or path.startswith(folder + DELIMITER)


class Pattern:
    """One pattern: what it looks at, and what its subclasses say of a value."""

    def __init__(self, text, target):
        self.text = text
        self.target = target or (FULL_PATH if DELIMITER in text else NAME)
        self.excludes = False
        self.active = True
        self.line = ""

    def matches(self, item):
        return self.matches_value(item.value(self.target), item.folded(self.target))

    def reaches(self, folder):
        """For a pattern on the full path: whether something within the folder, or the folder itself, could match."""
        return any(not text.startswith(DELIMITER) or self.text_reaches(folder, text, match_text)
                   for text, match_text in self.alternatives())

    def text_reaches(self, folder, text, match_text):
        directory, _, last = text.rpartition(DELIMITER)
        own_name = folder.rpartition(DELIMITER)[2]
        cut = DELIMITER.join(text.split(DELIMITER)[:folder.count(DELIMITER) + 1])
        return (is_within(folder, text) or folder.startswith(self.beginning(text))
                or is_within(folder, directory) and self.part_matches(own_name, last)
                or self.part_matches(folder, cut) or self.goes_on(folder + DELIMITER, match_text))


class Wildcard(Pattern):
    def __init__(self, text, target, masks=None):
        super().__init__(text, target)
        self.without_extension = masks is None and text.endswith("*.")
        self.masks = fold(text[:-1] if self.without_extension else masks or self.widened(text))

    def widened(self, text):
        if self.target != FULL_PATH:
            text = expand_variables(text)
        if "*" in text or "?" in text:
            return text
        if self.target == FULL_PATH and text.startswith(DELIMITER):
            return text + "*"
        return ("" if text.startswith(";") else "*") + text + ("" if text.endswith(";") else "*")

    def matches_value(self, _, folded):
        if not self.without_extension:
            return matches_masks(folded, self.masks)
        if "." in folded and (self.target != FULL_PATH or "." in folded.rpartition(DELIMITER)[2]):
            return False
        return matches_masks(folded, self.masks, leading_blanks_count=False)

    def alternatives(self):
        return zip(fold(self.text).split(";"), self.masks.split(";"))

    @staticmethod
    def beginning(text):
        return text.partition("*")[0]

    @staticmethod
    def part_matches(value, mask):
        return bool(mask) and matches_masks(value, mask, leading_blanks_count=False)

    @staticmethod
    def goes_on(beginning, mask):
        return longer_text_could_match(beginning, mask)


class Exact(Pattern):
    def matches_value(self, value, _):
        return fold_ascii(value) == fold_ascii(self.text)

    def alternatives(self):
        return [(fold(self.text), fold(self.text))]

    @staticmethod
    def beginning(text):
        return text

    @staticmethod
    def part_matches(value, text):
        return value == text

    @staticmethod
    def goes_on(beginning, text):
        return text.startswith(beginning)


class RegularExpression(Pattern):
    def __init__(self, text, target, ignore_case):
        super().__init__(text, target)
        self.expression = re.compile(text, re.IGNORECASE if ignore_case else 0)

    def matches_value(self, value, _):
        """A byte that is not UTF-8 matches nothing, so a match lies between two of them."""
        bounds = [match.start() for match in re.finditer("[\ud800-\udfff]", value)] + [len(value)]
        start = 0
        for end in bounds:
            # Behind all but the last piece "$" must not match either, and "." must stop: two line breaks do both.
            piece = value if end == len(value) else value[:end] + "\n\n"
            found = self.expression.search(piece, start)
            if found and found.end() <= end:
                return True
            start = end + 1
        return False

    def reaches(self, _):
        return True


@functools.lru_cache(maxsize=None)
def group_masks():
    rows = (line.split("\t") for line in GROUPS.read_text(encoding="utf-8").splitlines())
    return {caption: masks for caption, _, _, masks in rows}


def parse(line, excludes=False):
    """The pattern of a line in the text form."""
    text = line.strip()
    inactive, text = text.startswith("<||"), text.removeprefix("<||")
    for prefix, means_exclude in (("(+)", False), ("(-)", True)):
        if text.startswith(prefix):
            text, excludes = text.removeprefix(prefix), means_exclude
            break
    pattern = parse_body(*split_target(text))
    pattern.active, pattern.excludes, pattern.line = not inactive, excludes, line
    return pattern


def split_target(text):
    named = re.match(r"\((\w+)\)", text)
    name = named[1].lower() if named else None
    if name in OTHER_COLUMNS:
        raise NotImplementedError(f"no reading of patterns on {named[1]}")
    return (name, text[named.end():]) if name in (*COLUMNS, "group") else (None, text)


def parse_body(target, body):
    if not body:
        raise ValueError("an empty pattern")
    if target == "group":
        return Wildcard(body, NAME, group_masks()[body])
    expression = re.fullmatch("/(.*)/(i?)", body)
    if expression:
        return RegularExpression(expression[1], target, bool(expression[2]))
    if body.startswith('"'):
        return Exact(body[1:].removesuffix('"').replace('""', '"'), target)
    return Wildcard(body, target)


# --- Trees -------------------------------------------------------------------------------------------------------------


class Item:
    """A file or folder. What the patterns of one list ask for is kept for those of the next."""

    def __init__(self, parent_path, name, is_folder, owner):
        self.name = name.decode("utf-8", "surrogateescape")
        self.parent_path = parent_path
        self.path = parent_path + DELIMITER + self.name
        self.is_folder = is_folder
        self.owner = owner
        self.children = []
        self.kept = {}

    def value(self, column):
        if column == EXTENSION:
            return "" if self.is_folder else self.name.rpartition(".")[2][:LONGEST_EXTENSION] if "." in self.name else ""
        return {NAME: self.name, FULL_PATH: self.path, PARENT_PATH: self.parent_path, OWNER: self.owner}[column]

    def folded(self, column):
        if column not in self.kept:
            self.kept[column] = fold(self.value(column))
        return self.kept[column]

    def identity(self):
        """What a listing of the tree shows of it: ("d", b"/path") for a folder, ("f", b"/path") for all else."""
        return "d" if self.is_folder else "f", self.path.encode("utf-8", "surrogateescape")


def read_tree(path):
    """The items directly in a folder, each folder's own in its children. Links are files and not followed."""
    return items_in(walk.walk(os.path.realpath(path)))


def items_in(folder):
    path = folder.path.decode("utf-8", "surrogateescape")
    items = [Item(path, node.name, node.kind == walk.FOLDERS, node.owner) for node in folder.below + folder.own_files]
    for item, below in zip(items, folder.below):
        item.children = items_in(below)
    return items


class Choice:
    """What a list takes in: identities; and what it leaves out: items, each with the first exclude pattern that matches,
    or None. What lies within a folder that is left out is in neither."""

    def __init__(self):
        self.taken = set()
        self.left_out = []


def choose(tree, patterns):
    includes = [pattern for pattern in patterns if pattern.active and not pattern.excludes]
    excludes = [pattern for pattern in patterns if pattern.active and pattern.excludes]
    on_path = [pattern for pattern in includes if pattern.target == FULL_PATH]
    choice, to_judge = Choice(), list(tree)
    while to_judge:
        item = to_judge.pop()
        excluded_by = next((pattern for pattern in excludes if pattern.matches(item)), None)
        if item.is_folder:
            included = not on_path or any(pattern.reaches(item.folded(FULL_PATH)) for pattern in on_path)
        else:
            included = not includes or any(pattern.matches(item) for pattern in includes)
        if excluded_by or not included:
            choice.left_out.append((item, excluded_by))
        else:
            choice.taken.add(item.identity())
            to_judge += item.children
    return choice
