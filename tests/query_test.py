"""Holds queries against a plain reading of the rules (query_rules.py): thousands of queries, generated and written by hand, on
generated entries; and every example of docs/search.md.

VANTREL_MATCH_QUERY names the program that answers queries; without it, nothing is tested.
"""

import os
import pathlib
import random
import re
import subprocess
import unittest

import query_rules
from query_rules import QueryError, Settings, parse

ROOT = pathlib.Path(__file__).parents[1]
TIMEOUT = 300  # only there to catch a hang
NOW = 1718454896  # 2024-06-15 12:34:56 UTC
LETTERS = {"R": 0x1, "H": 0x2, "S": 0x4, "D": 0x10, "A": 0x20, "P": 0x200, "L": 0x400, "C": 0x800, "O": 0x1000, "E": 0x4000}

STEMS = ["report", "Report 2024", "a", "foo", "foobar", "copy(1)", "x,y", "a;b", "Café", "ÉTÉ", "日本", "a.b", "AND", "~tmp", "=x",
         'say "hi"', "10MB", "draft-2023", "", "Straße", "a(b"]
ENDINGS = ["", ".txt", ".TXT", ".log", ".tar.gz", ".mp3", ".zip", ".", ".bak", ".h", ".cpp", ".e?"]
FOLDERS = ["/data", "/data/src", "/data/src2", "/data/Music (old)", "/home/anna/src"]
OWNERS = ["", "root", "anna", "Anna B"]
CONTENTS = ["", "Hello world", "TODO: nothing", "a,b;c", "(x)"]
KEYWORDS = [[], ["holiday"], ["Holiday", "family"], ["a,b"]]
TIMES = [None, NOW, NOW - 1, NOW - 86400, NOW - 3 * 86400, NOW - 3 * 86400 - 1, NOW - 40 * 86400, 1704067200, 1704067199,
         1711843200, 1672531200, 1714521600, 1714521599, 1000000000, NOW + 86400]
SIZES = [0, 1, 1023, 1024, 1025, 1024000, 5 << 20, 10 << 20, (10 << 20) + 1, 15 << 20, 20 << 20, 1 << 30, 3 << 40]


def make_entries(chance, count):
    entries = []
    while len(entries) < count:
        is_folder = chance.random() < 0.15
        name = chance.choice(STEMS) + chance.choice(ENDINGS)
        if not name:
            continue
        attributes = {letter for letter in "RHSAPLCOE" if chance.random() < 0.2} | ({"D"} if is_folder else set())
        folder = chance.choice(FOLDERS)
        entries.append({
            "name": name, "folder": folder, "level": folder.count("/"), "is_folder": is_folder, "size": chance.choice(SIZES),
            "allocated": chance.choice(SIZES), "accessed": chance.choice(TIMES), "created": chance.choice(TIMES),
            "modified": chance.choice(TIMES), "attributes": attributes, "owner": chance.choice(OWNERS),
            "contents": "" if is_folder else chance.choice(CONTENTS), "keywords": chance.choice(KEYWORDS)})
    return entries


TEXT_VALUES = ["foo", "FOO", "*.txt", "a*", "?", "*.t?t", "a;b", "foo,bar", '"x,y"', '"copy(1)"', "copy(1)", "café", "été", '"Report 2024"',
               "*.txt;*.log", "/data/src/", "/data", "src/", "/data/*.txt", '""', "*", "*.*", "a.b", "straße", "STRASSE", '"a;b";x',
               '"say ""hi"""', "日", "AND", ";a;", "x ,y", "(a)"]
EXPRESSIONS = ["^a", "txt$", '"(foo|bar)"', "o{2}", '"^[a-f]+"', "[", "\\."]
DATES = ["2024", "2024-05", "2024-05-01", "2023-2024", "2024-01-01-2024-05-01", "today", "Yesterday", "3 days", "3days", "1 month", "2h",
         "7days-3days", "2024-02-30", "2024-2023", "5", "1y", "\"1 week\"", "soon", "2024-04-01", "20 foo"]
NUMBERS = ["0", "1KB", "10", "1,000KB", "10-20", "5MB-1GB", "1.5GB", "1,00KB", "5XB", '"5 MB"', "5 MB", "1023B", "20-10", "1.024B",
           "1KB-1MB-2", "", "1 024B", "3TB", "99999999TB"]
VALUES = {
    "name:": TEXT_VALUES, "path:": ["src", "Src", "/data/src", "/data/src/", "s*", "*/src", "old", '"Music (old)"', "Music"],
    "ext:": ["txt", ".txt", "txt,log", "*.h", "tar.gz", ".", "t*", "TXT;MP3", '"gz"'], "extension:": ["log", "*"],
    "filetype:": ["audio", "Text", "audio,text", '"Software Development"', "nothing", "\"Miscellaneous Files\"", "temporary;container"],
    "content:": ["hello", '"Hello world"', "a,b;c", "todo", "x, y", '""'], "cont:": ["nothing"],
    "attribute:": ["h", "hr", "H,R", "d", "x", "l;d", "!"], "owner:": ["anna", "root,anna", '""', '"Anna B"', "a*"],
    "keyword:": ["holiday", "HOLI", "family,x", "a*", '"a,b"', '""'], "size:": NUMBERS, "allocated:": NUMBERS,
    "accessed:": DATES, "created:": DATES, "modified:": DATES, "mdata:depth:": ["1", "2", "1-2", "x"],
    "mdata:pathlength:": ["12", "10-20", "1,0"], "mdata:emptyfolder:": ["yes", "no", "maybe"],
}
BARE = TEXT_VALUES + DATES + NUMBERS + [".txt", ".tar.gz,.zip", "Audio", "audio,foo", "text;audio", '"Audio"', "2500", "~foo", "and", "or"]


def random_condition(chance):
    if chance.random() < 0.35:
        return chance.choice(["", "", "", "=", "!=", ">", "~"]) + chance.choice(BARE)
    keyword = chance.choice(list(VALUES))
    typed = keyword.upper() if chance.random() < 0.1 else keyword
    numeric = keyword in ("size:", "allocated:", "accessed:", "created:", "modified:") or keyword.startswith("mdata")
    signs = ["", "", "=", "!=", "<", "<=", ">", ">="] if numeric else ["", "", "", "=", "!="]
    if not numeric and chance.random() < 0.1:
        return typed + chance.choice(["~", "!~"]) + chance.choice(EXPRESSIONS)
    blank = " " if chance.random() < 0.05 else ""
    return typed + blank + chance.choice(signs) + chance.choice(VALUES[keyword])


def random_query(chance, depth=2):
    parts = []
    for _ in range(chance.choice([1, 1, 2, 2, 3])):
        if parts:
            parts.append(chance.choice([" ", " ", " AND ", " OR ", ",", ", ", "  "]))
        if depth and chance.random() < 0.25:
            parts.append("(" + random_query(chance, depth - 1) + ")")
        else:
            parts.append(random_condition(chance))
    query = "".join(parts)
    if chance.random() < 0.05:  # damaged
        at = chance.randrange(len(query) + 1)
        query = query[:at] + chance.choice('()", ;=~<') + query[at + chance.randrange(2):]
    return query


def line_of(entry):
    times = ["" if entry[key] is None else str(entry[key]) for key in ("accessed", "created", "modified")]
    attributes = sum(LETTERS[letter] for letter in entry["attributes"])
    return "\t".join(["I", entry["name"], entry["folder"], str(entry["level"]), str(entry["size"]), str(entry["allocated"]), *times,
                      str(attributes), entry["owner"], entry["contents"], "; ".join(entry["keywords"])])


def expected(query, entries, settings):
    try:
        finds = parse(query, settings)
    except QueryError:
        return None
    return [number for number, entry in enumerate(entries) if finds(entry)]


class QueryTest(unittest.TestCase):
    program = os.environ.get("VANTREL_MATCH_QUERY")

    def setUp(self):
        if not self.program:
            self.skipTest("no program to run")

    def answers(self, queries, entries, settings):
        """For each query the numbers of the entries found, or None; and the query as it was understood, or the error."""
        lines = [line_of(entry) for entry in entries] + ["Q\t" + query for query in queries]
        run = subprocess.run([self.program, str(settings.now), settings.delimiter, str(int(settings.extended))],
                             input="\n".join(lines) + "\n", env=dict(os.environ, TZ=settings.zone), capture_output=True, text=True,
                             encoding="utf-8", timeout=TIMEOUT, check=False)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        answers = []
        for line in run.stdout.split("\n")[:-1]:
            found, _, understood = line[1:].partition("\t")
            answers.append(([int(number) for number in found.split()], understood) if line[0] == "=" else (None, line[1:]))
        self.assertEqual(len(answers), len(queries))
        return answers

    def check(self, queries, entries, settings):
        """Also asks each query again in the form in which it was understood. Returns how many of them were valid."""
        answers = self.answers(queries, entries, settings)
        again = iter(self.answers([understood for found, understood in answers if found is not None], entries, settings))
        valid = 0
        for query, (found, understood) in zip(queries, answers):
            with self.subTest(query=query, understood=understood, zone=settings.zone):
                self.assertEqual(found, expected(query, entries, settings))
                if found is not None:
                    valid += 1
                    self.assertEqual((found, understood), next(again))
        return valid

    def test_generated_queries(self):
        chance = random.Random(514)
        for zone, extended in (("UTC", True), ("Europe/Berlin", True), ("America/New_York", True), ("UTC", False)):
            settings = Settings(NOW, zone, extended=extended)
            entries = make_entries(chance, 150)
            queries = [random_query(chance) for _ in range(2500)]
            valid = self.check(queries, entries, settings)
            self.assertGreater(valid, 600)
            self.assertGreater(len(queries) - valid, 200)

    def test_examples_of_the_guide(self):
        """Each is valid, finds what the rules say, and there are enough of them."""
        text = (ROOT / "docs/search.md").read_text(encoding="utf-8")
        queries = []
        for table in re.findall(r"^\| query \|.*\n\|[-|]+\n((?:\|.*\n)+)", text, re.MULTILINE):
            for row in table.splitlines():
                cell = re.match(r"\| (.*?) \| ", row)[1]
                queries += [query.replace("\\|", "|") for query in re.findall(r"``? ?(.*?) ?``?(?!`)", cell)]
        self.assertGreater(len(queries), 60)
        entries = make_entries(random.Random(15), 150)
        settings = Settings(NOW)
        for query, (found, understood) in zip(queries, self.answers(queries, entries, settings)):
            with self.subTest(query=query):
                self.assertIsNotNone(found, understood)
                # What stands inside files is not read here.
                if not re.match("creator:|datetaken:", query) and query_rules.Reader(query, settings).keyword_at(0) != "mdata:":
                    self.assertEqual(found, expected(query, entries, settings))

    def test_the_error_of_the_guide(self):
        text = (ROOT / "docs/search.md").read_text(encoding="utf-8")
        shown = re.search(r"what would be right:\n\n((?: {4}.*\n)+)", text)[1]
        lines = [line[4:] for line in shown.splitlines()]
        self.assertEqual(self.answers([lines[0]], [], Settings(NOW)), [(None, "|".join(lines))])


if __name__ == "__main__":
    unittest.main()
