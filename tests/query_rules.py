"""Says which entries a query finds, by a plain and slow reading of the rules in docs/search.md, as the reference that searches
are held against.

    finds = parse("size:>1MB name:*.iso", Settings(now=1718454896))
    [entry for entry in entries if finds(entry)]

An entry is a dictionary: name, folder, level, is_folder, size, allocated, accessed, created, modified (seconds since 1970, or
None), attributes (letters), owner, contents, keywords (a list). Regular expressions are Python's, so tests use what means the
same in both. Times are computed in whole seconds, as the entries have them.
"""

import calendar
import dataclasses
import datetime
import re
import zoneinfo

from pattern_rules import GROUPS, LONGEST_EXTENSION, fold, matches_mask

TEXT_OPERATORS = (None, "=", "!=", "~", "!~")
NUMBER_OPERATORS = (None, "=", "!=", "<", "<=", ">", ">=")
OPERATORS = ("!=", "!~", "<=", ">=", "=", "<", ">", "~")  # the longer ones first
UNITS = {"B": 0, "BYTE": 0, "BYTES": 0} | {
    name: power for power, prefix, long in ((1, "K", "KI"), (2, "M", "ME"), (3, "G", "GI"), (4, "T", "TE"))
    for name in (prefix + "B", prefix + "IB", long + "BIBYTE",
                 {"K": "KILO", "M": "MEGA", "G": "GIGA", "T": "TERA"}[prefix] + "BYTE")}
LARGEST = 2 ** 63 - 1


class QueryError(Exception):
    """The query is not valid."""


@dataclasses.dataclass
class Settings:
    now: int
    zone: str = "UTC"
    delimiter: str = "/"
    extended: bool = True


def read_groups():
    lines = GROUPS.read_text(encoding="utf-8").splitlines()
    return {line.split("\t")[0].lower(): line.split("\t")[3] for line in lines if line}


GROUP_MASKS = read_groups()


# --- Values ------------------------------------------------------------------------------------------------------------


def read_size(text):
    text = text.strip(" ")
    match = re.fullmatch(r"(.*?) *([A-Za-z]*)", text, re.DOTALL)
    number, unit = match[1], match[2].upper()
    if unit and unit not in UNITS:
        raise QueryError(f"unit {unit}")
    if not re.fullmatch(r"\d+|\d{1,3}(?:([., ])\d{3})(?:\1\d{3})*", number, re.ASCII):
        raise QueryError(f"number {number}")
    size = int(re.sub("[., ]", "", number)) * 1024 ** (UNITS[unit] if unit else 2)
    if size > LARGEST:
        raise QueryError("too large")
    return size


def is_size(text):
    try:
        read_size(text)
    except QueryError:
        return False
    return text[:1].isdigit()


def begin_of(day, settings):
    """The first second of a local day."""
    return int(datetime.datetime(day.year, day.month, day.day, tzinfo=zoneinfo.ZoneInfo(settings.zone)).timestamp())


def read_one_date(text, settings):
    """The first second, the last one, and whether it is an age; None if it is no date."""
    zone = zoneinfo.ZoneInfo(settings.zone)
    today = datetime.datetime.fromtimestamp(settings.now, zone)
    day = datetime.timedelta(days=1)
    words = {"today": today.date(), "yesterday": today.date() - day}
    if text.lower() in words and text.isascii():
        first = words[text.lower()]
        return begin_of(first, settings), begin_of(first + day, settings) - 1, False
    if match := re.fullmatch(r"(\d{4})(?:-(\d\d)(?:-(\d\d))?)?", text, re.ASCII):
        try:
            first = datetime.date(int(match[1]), int(match[2] or 1), int(match[3] or 1))
        except ValueError:
            return None
        if first.year < 1601:
            return None
        if match[3]:
            behind = first + day
        elif match[2]:
            behind = first + day * calendar.monthrange(first.year, first.month)[1]
        else:
            behind = datetime.date(first.year + 1, 1, 1)
        return begin_of(first, settings), begin_of(behind, settings) - 1, False
    match = re.fullmatch(r"(\d{1,6}) ?(h|hours?|d|days?|w|weeks?|months?|y|years?)", text, re.ASCII | re.IGNORECASE)
    if not match:
        return None
    number, unit = int(match[1]), match[2][0].lower()
    if unit in "hdw":
        return settings.now - number * {"h": 3600, "d": 86400, "w": 604800}[unit], settings.now, True
    months = today.year * 12 + today.month - 1 - number * (12 if unit == "y" else 1)
    year, month = months // 12, months % 12 + 1
    if year < 1625:
        return -10 ** 11, settings.now, True
    last = calendar.monthrange(year, month)[1]
    earlier = today.replace(year=year, month=month, day=min(today.day, last))
    return int(earlier.timestamp()), settings.now, True


def read_date(text, settings):
    if one := read_one_date(text, settings):
        return one
    for dash in (at for at, character in enumerate(text) if character == "-"):
        first, last = read_one_date(text[:dash], settings), read_one_date(text[dash + 1:], settings)
        if first and last:
            return first[0], last[0] if last[2] else last[1], False
    return None


# --- Conditions. Each function takes the operator and the value as typed and returns a function of an entry. -------------


def unquote(text):
    return text[1:-1].replace('""', '"') if text.startswith('"') else text


def alternatives(value):
    """The parts between "," and ";" outside quotes."""
    parts = re.findall(r'("(?:[^"]|"")*"|[^,;"][^,;]*)', value)
    if not parts:
        raise QueryError("no value")
    return [unquote(part) for part in parts]


def compare(operator, value, limit):
    return {"<": value < limit, "<=": value <= limit, ">": value > limit, ">=": value >= limit, "!=": value != limit,
            "=": value == limit, None: value == limit}[operator]


def contains(text, value):
    return fold(value) in fold(text)


def equals(text, value):
    return fold(text) == fold(value)


def text_matches(operator, value, text, plain):
    """Without the negation. plain compares a value without wildcards behind no operator."""
    if operator in ("~", "!~"):
        return re.search(value, text) is not None
    if "*" in value or "?" in value:
        return value == "*.*" or matches_mask(fold(text), fold(value))
    return (plain if operator is None else equals)(text, value)


def check_expression(expression):
    try:
        re.compile(expression)
    except re.error as error:
        raise QueryError("expression") from error


def text_condition(operator, value, texts_of, plain=contains):
    """texts_of says what of an entry is compared with an alternative: a list of texts."""
    if operator not in TEXT_OPERATORS:
        raise QueryError("operator")
    parts = [unquote(value)] if operator in ("~", "!~") else alternatives(value)
    if operator in ("~", "!~"):
        check_expression(parts[0])

    def finds(entry):
        found = any(text_matches(operator, part, text, plain) for part in parts for text in texts_of(entry, part))
        return found != (operator in ("!=", "!~"))

    return finds


def full_path(entry, settings):
    return entry["folder"].rstrip(settings.delimiter) + settings.delimiter + entry["name"]


def name_condition(operator, value, settings):
    return text_condition(operator, value, lambda entry, part: [
        full_path(entry, settings) if settings.delimiter in part else entry["name"]])


def path_condition(operator, value, settings):
    delimiter = settings.delimiter

    def texts_of(entry, part):
        folder = entry["folder"]
        if delimiter not in part:
            return [folder.rpartition(delimiter)[2]]
        ends = part.endswith(delimiter) and len(part) > 1
        # A delimiter at the end of the value stands for the end of a part of the path.
        with_end = operator in (None, "=", "!=") and ends and "*" not in part and "?" not in part
        return [folder + delimiter if with_end else folder]

    return text_condition(operator, value, texts_of)


def extension_of(entry):
    name = entry["name"]
    return "" if entry["is_folder"] or "." not in name else name.rpartition(".")[2][:LONGEST_EXTENSION]


def extension_condition(operator, value, _):
    if operator in ("~", "!~") or operator not in TEXT_OPERATORS:
        return text_condition(operator, value, lambda entry, _: [extension_of(entry)])
    found = []
    for part in alternatives(value):
        part = part.removeprefix("*") if part.startswith("*.") else part
        part = part.removeprefix(".")
        if "." in part:
            found.append(lambda entry, part=part: matches_mask(fold(entry["name"]), fold("*." + part)))
        else:
            found.append(lambda entry, part=part: text_matches(operator, part, extension_of(entry), equals))
    return lambda entry: any(one(entry) for one in found) != (operator == "!=")


def in_group(entry, group):
    if entry["is_folder"]:
        return False
    extension = fold("." + extension_of(entry) if extension_of(entry) else "")
    masks = GROUP_MASKS[group]
    if masks == "*":
        return not any(in_group(entry, other) for other in GROUP_MASKS if GROUP_MASKS[other] != "*")
    return any(matches_mask(extension, fold(mask)) for mask in masks.rstrip(";").split(";"))


def yes_or_no(operator):
    if operator not in (None, "=", "!="):
        raise QueryError("operator")
    return operator != "!="


def group_condition(operator, value, _):
    yes, groups = yes_or_no(operator), [part.lower() for part in alternatives(value)]
    if any(group not in GROUP_MASKS for group in groups):
        raise QueryError("group")
    return lambda entry: any(in_group(entry, group) for group in groups) == yes


def content_condition(operator, value, _):
    if operator not in TEXT_OPERATORS or not unquote(value):
        raise QueryError("contents")
    text = unquote(value)
    if operator in ("~", "!~"):
        check_expression(text)
        return lambda entry: (re.search(text, entry["contents"]) is not None) == (operator == "~")
    return lambda entry: (text.lower() in entry["contents"].lower()) == (operator != "!=")


def attribute_condition(operator, value, _):
    yes, parts = yes_or_no(operator), [part.upper() for part in alternatives(value)]
    if any(not part or set(part) - set("RHSADCELPO") for part in parts):
        raise QueryError("attribute")
    return lambda entry: any(set(part) <= set(entry["attributes"]) for part in parts) == yes


def number_condition(operator, value, read, number_of):
    if operator not in NUMBER_OPERATORS:
        raise QueryError("operator")
    text = unquote(value)
    if operator in (None, "=") and text.count("-") == 1:
        first, last = map(read, text.split("-"))
        if first > last:
            raise QueryError("range")
        return lambda entry: number_of(entry) is not None and first <= number_of(entry) <= last
    limit = read(text)
    return lambda entry: number_of(entry) is not None and compare(operator, number_of(entry), limit)


def read_number(text):
    if not re.fullmatch("[0-9., ]+", text):
        raise QueryError("number")
    return read_size(text + "B")


def size_condition(key):
    return lambda operator, value, _: number_condition(
        operator, value, read_size, lambda entry: None if entry["is_folder"] else entry[key])


def date_condition(key):
    def condition(operator, value, settings):
        if operator not in NUMBER_OPERATORS:
            raise QueryError("operator")
        date = read_date(unquote(value), settings)
        if not date or date[0] > date[1]:
            raise QueryError("date")
        first, last, is_age = date

        def finds(entry):
            time = entry[key]
            if time is None:
                return False
            if is_age and operator in ("<", "<=", ">", ">="):
                return compare(operator, settings.now - time, settings.now - first)
            return {"<": time < first, "<=": time <= last, ">": time > last, ">=": time >= first,
                    "!=": not first <= time <= last}.get(operator, first <= time <= last)

        return finds

    return condition


def yes_no_condition(finds):
    def condition(operator, value, _):
        yes = yes_or_no(operator)
        if value.lower() not in ("yes", "no"):
            raise QueryError("yes or no")
        return lambda entry: finds(entry) == (yes == (value.lower() == "yes"))
    return condition


def unknown_property(*_):
    raise QueryError("property")


LIST, TEXT, NUMBER, DATE = "list", "text", "number", "date"
PROPERTIES = {
    "name:": (LIST, name_condition),
    "path:": (LIST, path_condition),
    "extension:": (LIST, extension_condition),
    "ext:": (LIST, extension_condition),
    "filetype:": (LIST, group_condition),
    "content:": (TEXT, content_condition),
    "cont:": (TEXT, content_condition),
    "attribute:": (LIST, attribute_condition),
}
EXTENDED = {
    "size:": (NUMBER, size_condition("size")),
    "allocated:": (NUMBER, size_condition("allocated")),
    "accessed:": (DATE, date_condition("accessed")),
    "created:": (DATE, date_condition("created")),
    "modified:": (DATE, date_condition("modified")),
    "owner:": (LIST, lambda operator, value, _: text_condition(operator, value, lambda entry, _: [entry["owner"]])),
    "keyword:": (LIST, lambda operator, value, _: text_condition(
        operator, value, lambda entry, _: entry["keywords"] or [""])),
    "mdata:depth:": (NUMBER, lambda operator, value, _: number_condition(
        operator, value, read_number, lambda entry: entry["level"])),
    "mdata:pathlength:": (NUMBER, lambda operator, value, settings: number_condition(
        operator, value, read_number, lambda entry: len(full_path(entry, settings)))),
    "mdata:": (LIST, unknown_property),
    "mdata:emptyfolder:": (LIST, yes_no_condition(lambda entry: entry["is_folder"])),
}


# --- Reading -----------------------------------------------------------------------------------------------------------


class Reader:
    """Reads one query from left to right."""

    def __init__(self, text, settings):
        self.text, self.at, self.settings = text, 0, settings
        self.properties = PROPERTIES | (EXTENDED if settings.extended else {})

    def rest(self):
        return self.text[self.at:]

    def skip_blanks(self):
        self.at += len(self.rest()) - len(self.rest().lstrip(" "))

    def keyword_at(self, at):
        found = [name for name in self.properties if self.text[at:at + len(name)].lower() == name]
        return max(found, key=len, default=None)

    def conjunction_at(self, at):
        if self.text[at:at + 1] == ",":
            return ","
        for word in ("AND", "OR"):
            if self.text.startswith(word, at) and self.text[at + len(word):at + len(word) + 1] in ("", *" ,()"):
                return word
        return None

    def any_of(self):
        """Conditions joined by OR."""
        found = [self.all_of()]
        while (word := self.conjunction_at(self.at)) in (",", "OR"):
            self.at += len(word)
            self.skip_blanks()
            found.append(self.all_of())
        return lambda entry: any(finds(entry) for finds in found)

    def all_of(self):
        """Conditions joined by AND or by nothing."""
        found = [self.condition()]
        while True:
            self.skip_blanks()
            if not self.rest() or self.rest()[0] == ")" or self.conjunction_at(self.at) in (",", "OR"):
                return lambda entry: all(finds(entry) for finds in found)
            if self.conjunction_at(self.at) == "AND":
                self.at += len("AND")
            found.append(self.condition())

    def condition(self):
        self.skip_blanks()
        if not self.rest() or self.rest()[0] == ")" or self.conjunction_at(self.at):
            raise QueryError("a condition is missing")
        if self.rest()[0] == "(":
            self.at += 1
            inner = self.any_of()
            self.skip_blanks()
            if self.rest()[:1] != ")":
                raise QueryError("not closed")
            self.at += 1
            return inner
        return self.simple_condition()

    def simple_condition(self):
        keyword = self.keyword_at(self.at)
        self.at += len(keyword or "")
        before = self.at
        self.skip_blanks()
        operator = next((sign for sign in OPERATORS if self.rest().startswith(sign)), None)
        if operator:
            self.at += len(operator)
            before = self.at
            self.skip_blanks()
        else:
            self.at = self.at if keyword else before
        if keyword or operator:
            self.require_value(self.at > before, operator in ("~", "!~"))
        kind = "bare" if keyword is None else self.properties[keyword][0]
        value = self.value(kind, operator in ("~", "!~"))
        keyword = keyword or ("name:" if operator in ("~", "!~") else self.property_of(value))
        return self.properties[keyword][1](operator, value, self.settings)

    def require_value(self, is_behind_blank, is_expression):
        first = self.rest()[:1]
        is_group = first == "(" and (is_behind_blank or is_expression or self.partner(self.at) is None)
        if first in ("", ")", ",") or is_group:
            raise QueryError("a value is missing")
        if is_behind_blank and (self.conjunction_at(self.at) or self.keyword_at(self.at)):
            raise QueryError("a value is missing")

    def partner(self, at):
        """The place of the ")" for a "(", if no blank stands between them."""
        depth = 0
        for place in range(at, len(self.text)):
            if self.text[place] == " ":
                return None
            depth += {"(": 1, ")": -1}.get(self.text[place], 0)
            if depth == 0:
                return place
        return None

    def value(self, kind, is_expression):
        begin, part_begin = self.at, True
        is_list = kind in (LIST, "bare") and not is_expression
        while self.rest():
            character = self.rest()[0]
            if part_begin and character == '"':
                self.quoted(is_list)
                part_begin = False
                if not is_list or self.rest()[:1] not in (",", ";"):
                    break
                continue
            part_begin = False
            if character == " ":
                age = re.match(r" (h|hours?|d|days?|w|weeks?|months?|y|years?)(?=[ ,()]|$)", self.rest(),
                               re.ASCII | re.IGNORECASE)
                if kind == DATE and age and re.fullmatch(r"\d{1,3}", self.text[begin:self.at], re.ASCII):
                    self.at += age.end()
                break
            if character == ")" or (character == "(" and (is_expression or self.partner(self.at) is None)):
                break
            if character == "," and (is_expression or not self.comma_continues(kind, begin)):
                break
            part_begin = is_list and (character == ";" or (character == "," and kind == LIST))
            self.at = self.partner(self.at) + 1 if character == "(" else self.at + 1
        return self.text[begin:self.at]

    def quoted(self, is_list):
        match = re.match(r'"(?:[^"]|"")*"', self.rest())
        if not match:
            raise QueryError("the quote is not closed")
        self.at += match.end()
        if self.rest()[:1] not in ("", *" ,()") and not (is_list and self.rest()[0] == ";"):
            raise QueryError("text behind a quote")

    def comma_continues(self, kind, begin):
        behind = self.text[self.at + 1:self.at + 2]
        if behind in ("", *" ,();"):
            return False
        in_number = self.at > begin and self.text[self.at - 1] in "0123456789" and behind in "0123456789"
        if kind == "bare":
            whole = re.match(r"[^ (),]*(?:(?<=[0-9]),(?=[0-9])[^ (),]*)*", self.text[begin:])[0]
            return in_number and self.settings.extended and is_size(whole)
        if kind == NUMBER:
            return in_number
        return kind in (LIST, TEXT) and self.keyword_at(self.at + 1) is None

    def property_of(self, value):
        if value.startswith('"'):
            return "name:"
        if value.startswith("."):
            return "extension:"
        parts = re.findall(r'("(?:[^"]|"")*"|[^;"][^;]*)', value)
        if parts and all(unquote(part).lower() in GROUP_MASKS for part in parts):
            return "filetype:"
        if not self.settings.extended:
            return "name:"
        if not re.fullmatch("(19|20)[0-9][0-9]", value) and is_size(value):
            return "size:"
        return "modified:" if read_date(value, self.settings) else "name:"


def parse(text, settings):
    """A function that says whether an entry is found. QueryError if the query is not valid."""
    if not text.strip(" "):
        return lambda entry: True
    reader = Reader(text, settings)
    reader.skip_blanks()
    finds = reader.any_of()
    reader.skip_blanks()
    if reader.rest():
        raise QueryError("something is left")
    return finds
