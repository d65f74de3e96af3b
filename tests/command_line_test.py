"""Runs the built program over a table of command lines and holds exit codes, messages, outputs and files against what is
written beside each. What is not named there must not appear: no other line on the standard error, no other file.

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
"""

import contextlib
import dataclasses
import datetime
import os
import pathlib
import re
import resource
import shlex
import shutil
import signal
import subprocess
import time
import zipfile

import program_test
import wine

TIMEOUT = 60
OK, INCOMPLETE, WRONG_COMMAND_LINE, PATH_NOT_FOUND, CANCELLED, OUTPUT_FAILED = range(6)
TODAY = "@TODAY@"  # in names of files
TREE = {"data/one.txt": 1000, "data/sub/two.bin": 5000, "data/sub/deep/three.txt": 300, "other/photo.jpg": 70}
USAGE = ["Usage: vantrel [SWITCH]... [PATH]...", 'Try "vantrel --help".']
SEPARATOR = "\n\n\n" + 48 * "_" + "\nVantrel Report, "


@dataclasses.dataclass
class Row:
    """A command line, split as a shell does, and what comes of it."""

    line: str
    code: int = OK
    err: tuple = ()  # every line: a text, or a pattern that is the whole line; the two lines of usage are understood
    out: tuple = ()  # texts that follow each other in the standard output
    absent: tuple = ()  # texts that are not in it
    files: dict = dataclasses.field(default_factory=dict)  # new files by name, with texts that follow each other there
    given: dict = dataclasses.field(default_factory=dict)  # files that are there before
    before: tuple = ()  # command lines that run before, and succeed
    windows: bool = True  # whether it means the same there


def pattern(text):
    return re.compile(text)


def a_file_was_expected(switch, found):
    return f"A file path was expected after the command line parameter {switch}, but found: {found}"


def only_once(switch):
    return (f"The command line option {switch} is allowed only once. You may however specify multiple values separated by "
            "semicolon.")


def cannot_be_both(name, one, other):
    return pattern(rf'"(?:.*[/\\])?{re.escape(name)}" cannot be both {one} and {other}')


def option_file(options, version=1):
    return f'<VantrelOptions Version="{version}">{options}</VantrelOptions>'


GROUPS = option_file('<FileTypeGroups><Item Caption="Mine" Patterns="*.bin"/><Item Caption="Others" Patterns="*"/>'
                     '</FileTypeGroups>')

NOT_BUILT = """EXCEL SHEETNAME EXPANDABLEREPORT PDF HTML PRINT SQLITE INDEXFILE SEARCH:INTERNET LOOP
CREATESNAPSHOT EMPTYRECYCLEBIN USERFILTER SHORTDATEFORMAT LANGUAGE SHOWWIZARD UILEVEL CONTEXTMENUENTRIES THEMEDCONTEXTMENUS
SHOWAUTHGUI AADAPPLICATIONID AADREDIRECTURI DISABLESHAREPOINTSITECOLLECTIONS INSTALL UNINSTALL INSTALLPORTABLE UNINSTALLSURVEY
REGISTERPACKAGE UNREGISTERPACKAGE SETADMINFLAG""".split()

DAMAGED_OPTIONS = {"../home/.config/vantrel/options.xml": "<VantrelOptions"}  # the user's own, on Linux

NO_HISTORY = pattern(r'No scan of "data"(?: with this filter)? is recorded in ".*\.db"; scan it with --record-history')
RECORDED = "data --HistoryFile h.db --record-history --csv -"

# Refused before anything is scanned or written.
REFUSED = [
    Row("/NOGUI", err=("No valid command line option was passed in non-UI mode. Please see help file for a list of available "
                       "command line options.",)),
    Row("/SCAN /NOGUI", err=("A path was expected after the command line parameter /SCAN",)),
    Row("data ''", err=("An empty path was given",)),
    Row("data /TEXT", err=(a_file_was_expected("/TEXT", ""),)),
    Row("/TEXT data", err=(a_file_was_expected("/TEXT", "data"), )),
    Row("data /TEXT 'reports\\'", err=(a_file_was_expected("/TEXT", "reports\\"),)),
    Row("data --save reports/", err=(a_file_was_expected("--save", "reports/"),)),
    Row("data /CSV /NOGUI", err=(a_file_was_expected("/CSV", "/NOGUI"),)),
    Row("data --xml --pathlist --csv= --json --jsonlines --ncdu=",
        err=(a_file_was_expected("--xml", "--pathlist"), a_file_was_expected("--pathlist", "--csv="), a_file_was_expected("--csv", ""),
             a_file_was_expected("--json", "--jsonlines"), a_file_was_expected("--jsonlines", "--ncdu="), a_file_was_expected("--ncdu", ""))),
    Row("data --exportdrivelist=data", err=(a_file_was_expected("--exportdrivelist", "data"),)),
    Row("data /SUBJECT a /SUBJECT b", err=(only_once("/SUBJECT"),)),
    Row("data /TITLE a --exporttitle b /SORTBY size /SORTBY name /EXPAND 1 --expand 2 --usecolumns size --usecolumns files "
        "--exportedelements 1 --exportedelements 2 --hidesmallfolders 1KB --hidesmallfolders 2KB --listseparator a --listseparator b",
        err=tuple(map(only_once, ("--exporttitle", "/SORTBY", "--expand", "--usecolumns", "--exportedelements",
                                  "--hidesmallfolders", "--listseparator")))),
    Row("data other --MaximumRoots 1", err=("2 scans are asked for, and one run takes 1 (option MaximumRoots)",)),
    Row("data --title h\udcff --MailFrom h\udcff", windows=False,
        err=('--title "h\\xFF" is no text', 'MailFrom: "h\\xFF" is not allowed; expected text')),
    Row("/SAVESETTINGS --HistoryFile h\udcff.db", windows=False,
        err=(pattern(r'/SAVESETTINGS keeps text in UTF-8 only, and the name of the history is none: ".*h\\xFF.db"'),)),
    Row("/SAVESETTINGS --ChecksumCache s\udcff.db", windows=False,
        err=(pattern(r'/SAVESETTINGS keeps text in UTF-8 only, and the name of the checksum cache is none: ".*s\\xFF.db"'),)),
    Row("/FORGETSETTINGS /READONLY", err=("/FORGETSETTINGS is not allowed together with /READONLY or /RESTRICTED",)),
    Row("--keepsearch a", err=("--keepsearch keeps a query: name it with --search",)),
    Row("data --search x --keepsearch LARGEST", err=('--keepsearch cannot take the name "LARGEST": a ready-made search has it',)),
    Row("--search x --keepsearch a /READONLY", err=("Searches cannot be kept or forgotten together with /READONLY or /RESTRICTED",)),
    Row("--forgetsearch a", before=("--search x --keepsearch b",),
        err=('--forgetsearch finds no search named "a" among those that are kept',)),
    # One file for two things of a run.
    Row("data --record-history --HistoryFile h.db --csv h.db", err=(cannot_be_both("h.db", "the history", "an export"),)),
    Row("data --record-history --HistoryFile h.db --debuglog ./h.db-wal", err=(cannot_be_both("h.db-wal", "the history", "the log"),)),
    Row("--history data --HistoryFile h.db --history-csv data/../h.db", err=(cannot_be_both("h.db", "the history", "an export"),)),
    Row("--HistoryFile h.db --history-import h.db", given={"h.db": "x"}, err=(cannot_be_both("h.db", "a history to import", "the history"),)),
    Row("data --duplicates --ChecksumCache s.db --csv s.db", err=(cannot_be_both("s.db", "the checksum cache", "an export"),)),
    Row("data --debuglog a.xml --xml a.xml", err=(cannot_be_both("a.xml", "the log", "an export"),)),
    Row("data --debuglog a.xml --compare a.xml", given={"a.xml": "x"}, err=(cannot_be_both("a.xml", "the scan to compare with", "the log"),)),
    Row("ntfs:a.img --csv a.img", given={"a.img": "x"}, err=(cannot_be_both("a.img", "an image to scan", "an export"),)),
    Row("--open a.xml --xml a.xml", given={"a.xml": "x"}, err=(cannot_be_both("a.xml", "a scan to open", "an export"),)),
    Row("data --compare a.xml --csv a.xml", given={"a.xml": "x"}, err=(cannot_be_both("a.xml", "the scan to compare with", "an export"),)),
    Row("data --options o.xml --text o.xml", given={"o.xml": option_file("")}, err=(cannot_be_both("o.xml", "a file of options", "an export"),)),
    Row("data --importpatterns p.txt --csv p.txt", given={"p.txt": "*.bin"}, err=(cannot_be_both("p.txt", "a file of patterns", "an export"),)),
    Row("data other --xml a.xml --csv a_other.xml", err=(pattern(r'Two exports would go into the same file: ".*[/\\]a_other\.xml"'),)),
    Row("data /COMPARE a --compare b /EXPORTDRIVELIST c --exportdriveslist d /USERNAME a /USERNAME b /PASSWORD a /PASSWORD b",
        err=(only_once("--compare"), only_once("--exportdriveslist"), only_once("/USERNAME"), only_once("/PASSWORD"))),
    Row("--help switches /? options", err=(only_once("/?"),)),
    Row("data /DEBUGLOG a.log /DEBUGMODE b.log", err=(only_once("/DEBUGMODE"),)),
    Row("--scan ';'", err=("A path was expected after the command line parameter --scan",)),
    Row("-nogiu data", err=("Unknown Command line option: -nogiu. Did you mean -nogui?",)),
    Row("--sacn data --scna=1 --sxyn", err=("Unknown Command line option: --sacn. Did you mean --scan?",
                                            "Unknown Command line option: --scna. Did you mean --scan?",
                                            "Unknown Command line option: --sxyn")),  # two letters of four: could be anything
    Row("--bogus\x1b[31m data -x", err=("Unknown Command line option: --bogus\\x1B[31m",)),
    Row("--qqqq --MaximumThreads=0 data", err=("Unknown Command line option: --qqqq",
                                               'MaximumThreads: "0" is not allowed; expected 1..256')),
    Row("data --nogui=true", err=("The command line option --nogui takes no value",)),
    Row("data --no-color", err=("Unknown Command line option: --no-color. Did you mean --color never?",)),
    Row("--max-depth=1 data -Xdev", err=("Unknown Command line option: --max-depth. Did you mean --depth?",
                                         "Unknown Command line option: -Xdev. Did you mean --one-file-system?")),
    Row("data -sk --topfiles --human-readable", err=("Unknown Command line option: -sk. Did you mean -d 0 --SizeUnit KB?",
                                          "Unknown Command line option: --topfiles. Did you mean --topfileslist?",
                                          "Unknown Command line option: --human-readable. Did you mean --SizeUnit auto?")),
    Row("data --csvv a.csv", err=("Unknown Command line option: --csvv. Did you mean --csv?",)),
    Row("data /EXEL", err=("Unknown Command line option: /EXEL. Did you mean /EXCEL?",)),
    Row("data --KeepFile --qqqq", err=("Unknown Command line option: --KeepFile. Did you mean --KeepFiles?",
                                       "Unknown Command line option: --qqqq")),
    Row("data -csv=a.csv", err=("Unknown Command line option: -csv=. Did you mean --csv=?",)),
    Row("-d data", err=('-d "data" is not allowed; expected a number of levels, or -1 for all',)),
    Row("data --MaximumThreads 0", err=('MaximumThreads: "0" is not allowed; expected 1..256',)),
    Row("data --MaximumThreads", err=("MaximumThreads needs a value: 1..256",)),
    Row("data --filesintree=yes --CloseAfterExport=no", err=('--filesintree: "yes" is not allowed; expected true|false',
                                                             '--CloseAfterExport: "no" is not allowed; expected true|false')),
    Row("data --sortby colour --usecolumns colour --exportedelements 8",
        err=(pattern('--sortby "colour" names no order; expected a column, then ",ascending" or ",descending" if wanted. Columns are '
                     ".*, size, .*"),
             pattern('--usecolumns "colour" names no columns joined with "," or ";". Columns are .*, size, .*'),
             '--exportedelements "8" is not allowed; expected the sum of 1 for folders, 2 for the files of a folder as one row and '
             "4 for single files")),
    Row("data --exportedelements --sortby", err=("A number was expected after the command line parameter --exportedelements",
                                                 "A column was expected after the command line parameter --sortby")),
    Row("data --hidesmallfolders 1.5GB", err=('--hidesmallfolders "1.5" is a decimal value and not supported. Please use a smaller '
                                              "size unit and provide the number as an integer.",)),
    Row("data --listseparator ''", err=('--listseparator "" cannot stand between fields: it is empty or holds a quote or a line '
                                        "break",)),
    Row("data --csv a.csv --text ./a.csv", err=(pattern(r'Two exports would go into the same file: ".*[/\\]a\.csv"'),)),
    Row("--history data --history-csv a.csv --history-export ./a.csv",
        err=(pattern(r'Two exports would go into the same file: ".*[/\\]a\.csv"'),)),
    Row("data --csv a.csv --extensionslist --text a-extensions.csv",
        err=(pattern(r'Two exports would go into the same file: ".*[/\\]a-extensions\.csv"'),)),
    Row("data --csv - --xml -", err=('Two exports would go into the same file: "-"',)),
    Row("data other --compare a.xml", err=("Several scans cannot be compared with one file. Run Vantrel for each of them.",)),
    Row("data --compare= --open --importpatterns ''", err=tuple(
        f"A file was expected after the command line parameter {switch}" for switch in ("--compare", "--open", "--importpatterns"))),
    Row("data --importpatterns missing.txt", err=(pattern('--importpatterns "missing.txt": .+'),)),
    Row("data --options missing.xml", err=(pattern('The options file "missing.xml" cannot be read: .+'),)),
    Row("data --options damaged.xml", given={"damaged.xml": option_file("<Option")},
        err=(pattern('The options file "damaged.xml" cannot be loaded. Line 1, column 36: .*'),)),
    Row("data --help nonsense", err=('There is no help on nonsense; try "--help switches" or "--help options"',)),
    Row("data", given=DAMAGED_OPTIONS, windows=False,
        err=(pattern('The options file ".*options.xml" cannot be loaded. Line 1, .*. /NOOPTIONS leaves it out'),)),
    Row("/SAVESETTINGS /READONLY", err=("/SAVESETTINGS is not allowed together with /READONLY or /RESTRICTED",)),
    Row("/RESTRICTED true /SAVESETTINGS", err=("/SAVESETTINGS is not allowed together with /READONLY or /RESTRICTED",)),
    # Pictures.
    Row("data --treemap t.txt --piechart p.png --chart gone", err=(
        '--treemap writes pictures, and "t.txt" is not the name of one: end it with .svg or .png',
        '--piechart writes SVG, since only the window program, vantrel-gui, has fonts for PNG: name the file "p.svg"',
        '--chart writes pictures, and "gone" is not the name of one: end it with .svg or .png')),
    Row("--gui data", err=("There is no window: the program vantrel-gui is not in the folder of this program",)),
    Row("--gui /NOGUI", err=("/GUI opens the window, and /NOGUI does without: leave out one of them",
                             "There is no window: the program vantrel-gui is not in the folder of this program")),
    Row("data --treemap", err=(a_file_was_expected("--treemap", ""),)),
    Row("data --treemap t.svg --TreemapColors growth", err=(
        "--TreemapColors growth shows changes since an older scan: name its file with --compare",)),
    Row("data --picturesize 0x10 --TreemapColors pink --ChartType line", err=(
        'PictureSize: "0x10" is not allowed; expected WIDTHxHEIGHT, each 1..16384',
        'TreemapColors: "pink" is not allowed; expected type|extension|age|depth|growth',
        'ChartType: "line" is not allowed; expected auto|bar|column|pie|ring')),
    Row("data --chart a.svg --treemap ./a.svg", err=(pattern(r'Two exports would go into the same file: ".*[/\\]a\.svg"'),)),
    Row("data other --chart a.svg --csv a_other.svg", err=(
        pattern(r'Two exports would go into the same file: ".*[/\\]a_other\.svg"'),)),
    Row("data other --chart -", err=("The standard output takes one picture, and each of several scans gets its own",)),
    Row("data --historychart h.svg --HistoryFile h.svg", err=(cannot_be_both("h.svg", "the history", "an export"),)),
    Row("data --null", err=("--null is for path lists: write one with --pathlist",)),
    Row("--history-csv a.csv", err=("--history-csv writes the history that --history names: name a path with it",)),
    Row("--history-json a.json", err=("--history-json writes the history that --history names: name a path with it",)),
    Row("--history-delete first", err=('--history-delete "first" is no scan\'s ID; --history shows them',)),
    Row("--history --history-import", err=("A path was expected after the command line parameter --history",
                                           "A file was expected after the command line parameter --history-import")),
    Row("data --email nobody", err=('--email "nobody" is no mail address',)),
    Row("data --email 'a@b.example;c d@e.example' --csv", err=('--email "c d@e.example" is no mail address',)),
    Row("data --email=", err=('--email "" names nobody',)),
    # Whatever a password looks like and however it is given, nobody gets to see it.
    Row("data /PASSWORD=s3cret -password:s3cret", err=("Unknown Command line option: /PASSWORD=. Did you mean --password=?",
                                                       "Unknown Command line option: -password:. Did you mean --password=?")),
    Row("data --password -s3cret --qqqq", err=("Unknown Command line option: --qqqq",)),
    Row("data --password --nogui", err=("A password was expected after the command line parameter --password",)),
] + [Row(f"data --{name} x", err=(pattern(f"--{re.escape(name)}: This version .+\\."),)) for name in NOT_BUILT]

# Run to their end, and write what is said.
DONE = [
    Row("data", out=("Vantrel Report, ", "6.2 KB", "sub ", "5.2 KB", "[Files]", "1,000 B"), absent=("deep",)),
    Row("/NOGUI /SCAN data;other --NOSPLASH -NOADMIN /DISABLERIGHTSELEVATION /NONE /CLOSEAFTEREXPORT",
        out=("Vantrel Report, ", "6.2 KB", SEPARATOR, "70 B")),
    Row("/SCANDEFAULT --SizeUnit B -a", out=(" - 6,370 B - 4 files - 4 folders", "data", "6,300", "other", "70")),
    Row("/NOGUI /SCAN data;other /EXPAND 3 /CSV new/folder/data.csv /XML new/data.xml.zip /DATE",
        files={f"new/folder/data_{TODAY}.csv": ("Full Path,Size,", "data,6300,", "sub,5300,", "[Files],5000,", "deep,300,",
                                                "[Files],1000,", "other,70,"),
               f"new/data_{TODAY}_data.xml.zip": ("three.txt", "IsFullExport", "deep"), f"new/data_{TODAY}_other.xml.zip": ("photo.jpg",)}),
    Row("data --expand 1", given={"1": "a file that is called like the level"}, out=("sub",), absent=("deep",)),
    Row("data --title -5.5", out=("-5.5\n",)),
    Row("data /KIV_JOB 7", out=("6.2 KB",)),
    Row("data --HistoryFile h\udcff.db --record-history --csv -", out=("data,6300,",), files={"h\udcff.db": ("SQLite format 3",)},
        windows=False),
    Row("data --expand abc", err=("Unexpected value after /EXPAND: abc. Doing a full expand instead.",), out=("[Files]", "deep")),
    Row("--expand -1 data", out=("deep",)),
    Row("data --expand /nogui", out=("deep",)),
    Row("--expand data", out=("deep",)),
    Row("data --expand 0", out=("6.2 KB",), absent=("sub",)),
    Row("data /TEXT a.csv /TEXT a.tsv /TEXT a.txt /CSV b.txt /CSV b.log /SAVE a.xml /PATHLIST paths.txt",
        files={"a.csv": ("Full Path,Size,", "data,6300,"), "a.tsv": ("Full Path\tSize\t", "data\t6300\t"),
               "a.txt": ("Vantrel Report, ", "deep"), "b.txt": ("Vantrel Report, ", "deep"), "b.log": ("Full Path,Size,",),
               "a.xml": ("<?xml", "three.txt"), "paths.txt": ("data", "sub", "deep")}),
    Row("data other --text r.txt", files={"r.txt": ("Vantrel Report, ", "6.2 KB", SEPARATOR, "70 B")}),
    Row("data --csv -", out=("Full Path,Size,", "data,6300,")),
    Row("other --csv data/own.csv data --filesintree --exportedelements 7",  # its own rows do not know it
        files={"data/own.csv": ("data,6300,", "one.txt,1000,")}),
    Row("--csv data/own.csv data", given={"data/own.csv": 23 * "x"}, files={"data/own.csv": ("data,6323,",)}),
    Row("/EXPORTDRIVELIST", out=("Drives\n", "Drive", "Total", "Free", "% Used")),
    Row("--exportdrivelist drives.csv", files={"drives.csv": ("Drive,", ",Total,Used,Free,% Used\n",)}),
    Row("--exportdrivelist drives.tab", files={"drives.tab": ("Drive\t", "\tTotal\tUsed\tFree\t% Used\n")}),
    Row("data --exportdriveslist -", out=("Total", "Vantrel Report, ")),
    Row("--exportdrivelist data", out=("Total", "6.2 KB")),  # a folder is no file to write
    Row("data --sortby name,ascending --expand -1 --csv -", out=("[Files],1000,", "sub,5300,", "[Files],5000,", "deep,300,")),
    Row("data --usecolumns files;size --csv - /EXPORTEDELEMENTS 1", out=("Files,Size\n3,6300\n2,5300\n1,300\n",)),
    Row("data --filesintree --csv -", out=("two.bin,5000,", "three.txt,300,", "one.txt,1000,")),
    Row("data --exportfiles true --csv -", out=("three.txt,300,",)),
    Row("data --filesintree --exportfiles false --csv -", absent=("three.txt",), out=("data,6300",)),
    Row("data --hidesmallfolders 5k --csv -", out=("sub,5300,",), absent=("deep",)),
    Row("data --topfileslist --extensionslist --userslist --ageoffiles",
        out=("[Files]", "two.bin", "one.txt", "three.txt", ".bin", ".txt")),
    Row("data --topfileslist true --extensionslist=1 --csv a.csv",
        files={"a.csv": ("data,6300",), "a-topfiles.csv": ("two.bin", "one.txt", "three.txt"),
               "a-extensions.csv": (".bin", ".txt")}),
    Row("data --filetypeslist", out=("File types of ", "Audio", "Text", "1.3 KB", "Miscellaneous Files", "4.9 KB")),
    Row("data --filetypeslist --csv a.csv", files={"a.csv": ("data,6300,",), "a-filetypes.csv": (
        "File Type,Allocated,Size,Files,% of Root\n", "Audio,0,0,0,", "Text,", "1300,", "Miscellaneous Files,", "5000,")}),
    # Groups of an options file change what patterns and lists say. They are saved with the other options.
    Row("data --apparent-size --options o.xml --filter (Group)mine --filetypeslist --extensionslist --csv a.csv",
        given={"o.xml": GROUPS}, files={"a.csv": ("data,5000,",), "a-filetypes.csv": ("% of Root\nMine,5000,", "Others,0,"),
                                        "a-extensions.csv": (".bin,Mine,5000,",)}),
    Row("data --exclude (Group)MINE --csv -", given={"o.xml": GROUPS}, before=("--options o.xml /SAVESETTINGS",),
        out=("data,1300,",)),
    # Pictures. What is in them is looked at in picture_test.py.
    Row("data --treemap t.svg --TREEMAP t.png --dark --picturesize 300x200", files={
        "t.svg": ("<svg ", 'width="300" height="200"', "data:image/png;base64,", "sub", "</svg>"), "t.png": ("PNG", "IHDR")},
        err=("The PNG file gets no captions and no legend: this program has no fonts, and the window program, which has, "
             "is not there. SVG files have both.",)),
    Row("data --treemapof extensions --treemap e.svg", files={"e.svg": (".bin", "</svg>")}),
    Row("data --treemapof owners --treemapcolors depth --treemap o.svg", files={"o.svg": ("</svg>",)}),
    Row("data --compare old.xml --treemapcolors growth --treemap g.svg", before=("data --xml old.xml",), files={"g.svg": ("</svg>",)}),
    Row("data /CHART c.svg /PIECHART p.svg /BARCHART b.svg /EXTENSIONSCHART e.svg /EXTENSIONSPIECHART ep.svg /FILETYPESCHART f.svg "
        "/USERSCHART u.svg /USERSPIECHART up.svg /FILEAGESCHART a.svg --CollectOwners --apparent-size", files={
            "c.svg": ("Folders of ", "[Files]"), "p.svg": ("Folders of ", "5.2 KB (84.1 %)"), "b.svg": ("Folders of ", "sub"),
            "e.svg": ("Extensions of ", ".bin"), "ep.svg": ("Extensions of ", "4.9 KB (79.4 %)"), "f.svg": ("File types of ",),
            "u.svg": ("Owners of ",), "up.svg": ("Owners of ",), "a.svg": ("File ages of ", "up to 1 day")}),
    Row("data -a --charttype pie --extensionschart e.svg --chartitems 2 --date", files={f"e_{TODAY}.svg": ("<path", "4.9 KB (79.4 %)")}),
    Row("data other --barchart new/b.svg", files={"new/b_data.svg": ("sub",), "new/b_other.svg": ("Folders of ",)}),
    Row("data --piechart -", out=("<svg ", "sub", "</svg>")),
    Row("--open old.xml --extensionschart e.svg", before=("data --xml old.xml",), files={"e.svg": (".bin",)}),
    # Without a file: characters in reports, lists beside CSV.
    Row("data -a --chart --extensionschart --userschart --fileageschart --filetypeschart", out=(
        "Folders of ", "sub", "5.2 KB  84.1 %  ####", "[Files]", "15.9 %  ###", "Extensions of ", ".bin", "File types of ",
        "Owners of ", "File ages of ", "up to 1 day", "100.0 %  ####")),
    Row("data --extensionspiechart --userspiechart --fileageschart --csv a.csv", files={
        "a.csv": ("data,6300",), "a-extensions.csv": (".bin",), "a-users.csv": ("Owner",), "a-ages.csv": ("up to 1 day",)}),
    Row("data --HistoryFile h.db --historychart", before=(RECORDED,), out=("Vantrel Report, ", "History of data", "|*")),
    Row("data --HistoryFile h.db --record-history --historychart h.svg", before=(RECORDED,), files={
        "h.svg": ("History of ", "6.2 KB", "6.2 KB")}),
    Row("--HistoryFile h.db --history data --historychart new/h.svg --historycharttype line", before=(RECORDED,),
        out=("History of data",), files={"new/h.svg": ("History of data", "6.2 KB")}),
    Row("data --compare old.xml", before=("data --xml old.xml",), out=("Not shown: 2 rows without a change.",), absent=("  sub",)),
    Row("data --compare old.xml --unchanged", before=("data --xml old.xml",), out=("  sub",), absent=("Not shown",)),
    Row("data --color always", out=("\x1b[1;34m  sub\x1b[0m",)),
    # 6,300 bytes in units of 1,000.
    Row("data -a --si", out=(" - 6.3 kB - ", "  6.3 kB", "  5.3 kB")),
    Row("data --si --SizeUnit KB --usecolumns name,size", out=("Size (kB)\n", " 6.3\n")),
    Row("data --si --CSVSizeUnit KB --usecolumns name,size --csv -", out=("Name,Size (kB)\n", "data,6.3\n")),
    Row("data --si --extensionschart e.svg -a --charttype pie", files={"e.svg": ("5.0 kB (79.4 %)",)}),
    Row("data --title Weekly", out=("Weekly\n",), absent=("Vantrel Report",)),
    Row("data '/EXPORTTITLE' 'My report'", out=("My report\n",)),
    Row("data --listseparator ';' --csv -", out=("Full Path;Size;", "data;6300;")),
    Row("data --listseparator tab --csv -", out=("Full Path\tSize\t", "data\t6300\t")),
    Row("data --noheaders --csv -", out=("data,6300,",), absent=("Full Path",)),
    Row("data /NOHEADER", out=("6.2 KB",), absent=("Report", "----", "Size")),
    Row("data -d1 --top 1 -a", out=("sub", "5.2 KB", "… and 1 more", "1,000 B"), absent=("[Files]", "deep")),
    Row("data --min 4K --apparent-size", out=("sub", "What is smaller than 4.0 KB is not shown."), absent=("[Files]",)),
    Row("data --min 50% --apparent-size", out=("sub", "What is smaller than 3.1 KB is not shown."), absent=("[Files]",)),
    Row("-xad 0 data", out=("data", "6.2 KB"), absent=("sub",)),
    Row("-xad0 data", out=("data", "6.2 KB"), absent=("sub",)),
    Row("-xsname -q data", code=WRONG_COMMAND_LINE, err=(pattern("Unknown Command line option: -xsname.*"),)),
    Row("data --reverse --sort name", out=("sub", "[Files]")),
    Row("data --sort name --one-file-system", out=("[Files]", "sub")),
    Row("data --topfolderslist -a", out=("Folders with the largest files of ", "4.9 KB", "sub", "1,000 B", "data", "300 B", "deep")),
    Row("data --output r.csv -o r.txt --quiet", files={"r.csv": ("data,6300,",), "r.txt": ("Vantrel Report, ", "6.2 KB")}),
    Row("data --nounits", out=("6300 ", "100.0", "5300 ", "1000 ")),
    Row("data --filter *.txt --csv -", out=("data,1300,",)),
    # Duplicates. Most of what they are is tested by duplicates_test.py.
    Row("--duplicates files --verify --emptyfiles --duplicateby name,contents --duplicatechecksum md5 data",
        out=("0 groups of equal files with 0 names, 0 B wasted, among 3 files in ",)),
    # Searches. Most of what they find is tested by search_test.py.
    Row("--search three,two data", out=("Found by three,two", "two.bin", "three.txt", "2 files found, 5.2 KB, among 3 files and 2 folders"),
        absent=("one.txt",)),
    Row("/SEARCH:START size:>4KB data --csv - --noheaders --usecolumns name;size", out=("two.bin,5000",), absent=("one",)),
    Row("--find emptyfolders data other", out=("0 files found, among 4 files and 2 folders",)),
    Row("data --exclude deep --csv -", out=("data,6000,",)),
    # A pattern in quotes is exact, one that names a folder means that folder, and one that matches nothing is told.
    Row("data --exclude '\"ee\"' --csv -", out=("data,6300,",), err=('Warning: the pattern "ee" matched nothing',)),
    Row("data --exclude '\"deep\"' --csv -", out=("data,6000,",)),
    Row("data --csv '\"a.csv\"'", files={'"a.csv"': ("data,6300,",)}, windows=False),
    Row("data --exclude ./data/sub --csv -", given={"data/sub2/x": "12"}, out=("data,1002,", "sub2,2,")),
    Row("data --exclude ./other/../data/sub/ --csv -", given={"data/sub2/x": "12"}, out=("data,1002,", "sub2,2,")),
    Row("data --exclude data/sub/;three.txt --csv -", given={"data/sub2/three.txt": "12"}, out=("data,1000,",)),
    Row("data --filter ./data/sub --csv -", given={"data/sub2/x": "12"}, out=("data,5300,", "sub,5300,"), absent=("sub2",)),
    Row("data --importpatterns p.txt --csv -", given={"p.txt": "(-)data/sub\n", "data/sub2/x": "12"}, out=("data,1002,",)),
    Row("data other --exclude photo.jpg --exclude *.bin --exclude two.bin --exclude ./data/sub3 --csv -", out=("data,1300,",),
        err=(pattern(r"Warning: the pattern .*sub3;.*sub3.\* matched nothing"),)),
    Row("data --filter *.bin --filter *.none --filter two* --exclude one.txt --exclude *.tmp --csv -", out=("data,5000,",),
        err=("Warning: the pattern *.none matched nothing", "Warning: the pattern *.tmp matched nothing")),
    Row("data --importpatterns p.txt --csv -", given={"p.txt": "*.bin\n"}, out=("data,5000,",)),
    Row("--open old.xml;;old.xml --csv -", before=("data --xml old.xml",), out=("data,6300,", "deep,300,", "data,6300,")),
    Row("data/*.txt", out=("1,000 B", "1 object was excluded")),
    Row("data --exportedelements 1", out=("sub",), absent=("[Files]",)),
    # Lists of files, with quotes around a name that holds the separator.
    Row("--open '\"old.xml\";\"a;b.xml\"' --csv -", before=("data --xml 'a;b.xml'", "other --xml old.xml"),
        out=("other,70,", "data,6300,")),
    Row("--open 'a;b.xml' --csv -", before=("data --xml 'a;b.xml'",), out=("data,6300,",)),
    Row("--scan '\"da;ta\";other' --csv -", given={"da;ta/x": "12"}, out=("da;ta,2,", "other,70,")),
    Row("data --compare old.xml --xml old.xml", before=("data --xml old.xml",), files={"old.xml": ("three.txt",)}),
    Row("data -a --exclude *.bin --compare old.xml", before=("data --xml old.xml",), out=("1.3 KB", "-4.9 KB"),
        err=("The scan to compare with had other filters, so files may seem to have come or gone",)),
    Row("data --options o.xml", given={"o.xml": option_file('<Option Name="ExportTitle" Value="From a file"/>')},
        out=("From a file\n",)),
    Row("data --title Mine --options o.xml", given={"o.xml": option_file('<Option Name="ExportTitle" Value="From a file"/>')},
        out=("Mine\n",)),
    Row("data --options new.xml", given={"new.xml": option_file(
        '\n<Option Name="HoloDeck" Value="1"/>\n<Option Name="ExportTitle" Value="Loaded"/>', version=99)},
        err=(pattern('"new.xml", .*version.*'), pattern('"new.xml", line 2: .*"HoloDeck".*')), out=("Loaded\n",)),
    Row("data", before=("/SAVESETTINGS --ExportTitle Kept --MaximumThreads 2",), out=("Kept\n",)),
    Row("data --nooptions", before=("/SAVESETTINGS --ExportTitle Kept",), out=("Vantrel Report, ",)),
    Row("data /READONLY --ExportTitle Other", before=("/SAVESETTINGS --ExportTitle Kept",), out=("Other\n",)),
    Row("data", before=("/SAVESETTINGS --ExportTitle Kept", "data /SAVESETTINGS /FORGETSETTINGS --ExportTitle New"),
        out=("Vantrel Report, ",)),
    Row("data", before=("/SAVESETTINGS --ExportTitle Kept", "/FORGETSETTINGS", "--forgetsettings"), out=("Vantrel Report, ",)),
    Row("data", before=("/SAVESETTINGS --ExportTitle Kept", "/NOOPTIONS /SAVESETTINGS"), out=("Vantrel Report, ",)),
    Row("--listsearches", before=("--search 'ext:zip modified:<2020' --keepsearch 'Old Ones'", "--search first --keepsearch Two",
                                  "--search second --keepsearch TWO", "--search x --keepsearch three", "--forgetsearch THREE"),
        out=("Old Ones            ext:zip modified:<2020", "TWO                 second", "largest             size:>=100MB"),
        absent=("first", "three")),
    Row("data --find FOLDERS", before=("--search attribute:D --keepsearch folders --ExportTitle Kept",), out=("sub", "2 folders found")),
    Row("data", before=("--search x --keepsearch old --ExportTitle Kept",), out=("Vantrel Report, ",)),
    Row("--HistoryFile h.db --history data", before=(RECORDED,), out=("History of data", "6.2 KB", "  1\n", "|*")),
    Row("data --HistoryFile h.db --RecordHistory --history data", before=(RECORDED, "data/sub --record-history --HistoryFile h.db"),
        out=("Vantrel Report, ", "History of data", "0 B", "  3\n"), absent=("  2\n",)),
    Row("data --exclude *.bin --HistoryFile h.db --record-history --history data", before=(RECORDED,),
        out=("History of data", "1.3 KB"), absent=("6.2 KB",)),
    # What wildcards take in has a history of its own; so has the folder, whatever name it is reached by.
    Row("--HistoryFile h.db --history sub/../data/*.bin --history data", before=("data/*.bin --HistoryFile h.db --RecordHistory", RECORDED),
        out=("History of sub/../data/*.bin", "4.9 KB", "  1\n", "History of data", "6.2 KB", "  2\n")),
    Row("--HistoryFile h.db --history data --history-csv h.csv", before=(RECORDED,), files={"h.csv": (
        "Date,Size,Allocated,Files,Free Space,Growth,Growth %,ID\n", ",6300,", ",3,", ",,,1\n")}),
    Row("--HistoryFile h.db --history data --history-csv h.tsv", before=(RECORDED,), files={"h.tsv": ("Date\tSize\t", "\t6300\t")}),
    Row("--HistoryFile h.db --history-delete 1 --history data", PATH_NOT_FOUND, before=(RECORDED,), err=(NO_HISTORY,),
        out=("The scan 1 was deleted; of its path 0 scans are left",)),
    Row("--HistoryFile h.db --history-export new/copy.db", before=(RECORDED,), files={"new/copy.db": ("SQLite format 3",)}),
    Row("--HistoryFile other.db --history-import h.db --history data", before=(RECORDED,), files={"other.db": ("SQLite",)},
        out=('"h.db": 1 scan was added to the history', "History of data", "6.2 KB")),
    Row("--version", given=DAMAGED_OPTIONS, out=("Vantrel ",), windows=False),
    Row("data --nooptions", given=DAMAGED_OPTIONS, out=("6.2 KB",), windows=False),
    Row("data /DEBUG", out=("6.2 KB",), err=(
        pattern(r"TPostProcessActionHandler\.PerformPostProcessActions for: .*data"),
        "TPostProcessActionHandler.PerformPostProcessActions: Terminating application.")),
    Row("data --debuglog a.log", out=("6.2 KB",), files={"a.log": ("TPostProcessActionHandler.PerformPostProcessActions for: ",)}),
    Row("data --debugmode a.log", out=("6.2 KB",), files={"a.log": ("TPostProcessActionHandler.PerformPostProcessActions for: ",)}),
    Row("--version", out=("Vantrel ", ", 64-bit)\n")),
    Row("--help", out=("Usage: vantrel ", "--csv", "Exit code: ")),
    Row("/?", out=("Usage: vantrel ",)),
    Row("-h exclude", out=("--exclude PATTERN", "May be given more than once.")),
    Row("-h data", out=("Usage: vantrel ",)),
    Row("--help no-such --version --help", code=WRONG_COMMAND_LINE, err=(
        only_once("--help"),)),
    Row("file:data data --csv -", err=('"data" was given more than once; it is scanned once',), out=("data,6300,",)),
    Row("data data/sub data", err=('"data" was given more than once; it is scanned once',), out=("6.2 KB", SEPARATOR, "5.2 KB")),
]

# What goes wrong on the way. Whatever can still be done is done.
FAILED = [
    Row("sftp://host/x data --csv -", PATH_NOT_FOUND, out=("data,6300,",),
        err=('"sftp://host/x" cannot be scanned: there is no storage "sftp:". Known are: file:, ntfs:.',)),
    Row("gone data --csv -", PATH_NOT_FOUND, err=(pattern('Cannot scan "gone": .+'),), out=("data,6300,",)),
    Row("gone\x1b[31m", PATH_NOT_FOUND, err=(pattern(r'Cannot scan "gone\\x1B\[31m": .+'),)),
    Row("gone --csv earlier.csv", PATH_NOT_FOUND, err=(pattern('Cannot scan "gone": .+'),), given={"earlier.csv": "earlier"}),
    Row("--open 'a.xml;missing.xml;bad.xml;b.xml' --csv -", PATH_NOT_FOUND, before=("data --xml a.xml", "other --xml b.xml"),
        given={"bad.xml": "<Root"}, err=(pattern('The file "missing.xml" cannot be read: .+'), pattern('.*"bad.xml".+')), out=("data,6300,", "other,70,")),
    Row("--open missing.xml", PATH_NOT_FOUND, err=(pattern('The file "missing.xml" cannot be read: .+'),)),
    Row("--HistoryFile history.db --history data", PATH_NOT_FOUND, err=(NO_HISTORY,)),
    Row("--HistoryFile h.db --history data --exclude *.tmp", PATH_NOT_FOUND, before=(RECORDED,), err=(NO_HISTORY,)),
    Row("--HistoryFile h.db --history data", PATH_NOT_FOUND, before=(RECORDED + " --exclude *.bin",),
        err=(pattern(r'No scan of "data" without a filter is recorded in ".*\.db"; scan it with --record-history'),)),
    # Nor do the other tasks go without that which failed.
    Row("--HistoryFile h.db --history-import missing.db --history data --history other", OUTPUT_FAILED,
        before=("data other --HistoryFile h.db --record-history",), err=(pattern('The database "missing.db" cannot be opened: .+'),),
        out=("History of data", "|*", "History of other", "|*")),
    Row("--HistoryFile history.db --history-delete 7", PATH_NOT_FOUND, err=(pattern('The history ".*history.db" holds no scan 7'),)),
    Row("data --HistoryFile h.db --historychart h.svg --csv ok.csv", OUTPUT_FAILED, files={"ok.csv": ("data,6300,",)},
        err=(pattern('The history of ".*data" cannot be drawn: no scan of it is recorded; scan it with --record-history'),)),
    Row(f"data --text ok.txt --chart {'n' * 300}.svg", OUTPUT_FAILED, err=(pattern(r'.*n\.svg".*'),)),
    # The export goes on without the history.
    Row("data --HistoryFile bad.db --record-history --csv ok.csv", OUTPUT_FAILED, given={"bad.db": "no database" * 200},
        err=(pattern('The database ".*bad.db": .* on sql: .*'),), files={"ok.csv": ("data,6300,",)}),
    Row("data --compare missing.xml", PATH_NOT_FOUND, err=(pattern('.*"missing.xml": .+'),)),
    Row("data --compare wrong.xml", PATH_NOT_FOUND, given={"wrong.xml": "<a/>"}, err=(pattern('.*wrong.xml.*'),), out=("6.2 KB",)),
    # A file where a folder would have to be; told before the scan, so the second export is not written either.
    Row("data --csv data/one.txt/x.csv --text ok.txt", OUTPUT_FAILED, err=(pattern(r'.*[/\\]data[/\\]one\.txt[/\\]x\.csv.*'),)),
    # The mail cannot be sent: its report goes to the console, and nothing tells the password.
    Row("data --email a@b.example --subject Hi --attach --username me --password s3cret --debug --MailServer 127.0.0.1 "
        "--MailPort 1 --MailSecurity none --csv a.csv", OUTPUT_FAILED, files={"a.csv": ("data,6300,",)},
        out=("Vantrel Report, ", "6.2 KB", "sub"), err=(pattern(".* for: .*data"), pattern(r".*: Export to .*a\.csv.*"), pattern(".*: Mail to a@b.example"),
             pattern(".*Terminating application."), pattern(".*127.0.0.1.*"))),
    Row("gone --email a@b.example --MailServer 127.0.0.1 --MailPort 1", OUTPUT_FAILED,
        err=(pattern('Cannot scan "gone": .+'), "No mail was sent: there is nothing to report")),
    # What would fail after the scan fails before it.
    Row("data --email a@b.example --MailServer 127.0.0.1 --MailPort 1 --MailFrom x@y@ --csv a.csv", OUTPUT_FAILED,
        err=('"x@y@" is no mail address',)),
    Row(f"data --text ok.txt --csv {'n' * 300}.csv", OUTPUT_FAILED, err=(pattern(r'.*n\.csv".*'),)),
    Row(f"data --text ok.txt --csv {'n' * 245}.csv --extensionslist", OUTPUT_FAILED, err=(pattern(r'.*n-extensions\.csv".*'),)),
    Row(f"data --record-history --HistoryFile h.db --history data --history-csv {'n' * 300}.csv --text ok.txt", OUTPUT_FAILED,
        err=(pattern(r'.*n\.csv".*'),)),
    Row("data --csv /dev/full", OUTPUT_FAILED, err=(pattern('.*"/dev/full".*'),), windows=False),
    # One failing export keeps neither the other exports nor the other paths from being written.
    Row("data other --csv /dev/full --text ok.txt", OUTPUT_FAILED, windows=False, err=(pattern('.*"/dev/full".*'),),
        files={"ok.txt": ("6.2 KB", SEPARATOR, "70 B")}),
    Row("data --csv /proc/x.csv", OUTPUT_FAILED, err=(pattern('.*"/proc/x.csv".*'),), windows=False),
]


class CommandLineTest(program_test.ProgramTest):
    """The table on one platform; the classes below say which."""

    def setUp(self):
        super().setUp()
        self.home = self.folder / "home"
        self.work = self.folder / "work"
        self.environment = dict(os.environ)
        self.environment.pop("VANTREL_PASSWORD", None)
        self.make_tree()

    def make_tree(self):
        for folder in (self.home, self.work):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()
        for name, size in TREE.items():
            (self.work / name).parent.mkdir(parents=True, exist_ok=True)
            (self.work / name).write_bytes(b"x" * size)

    def run_line(self, line, **keywords):
        process = wine.run([*self.command, *shlex.split(line)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                           stderr=subprocess.PIPE, timeout=TIMEOUT, cwd=self.work, env=self.environment, **keywords)
        return program_test.Run(process)

    def listing(self):
        return {path.relative_to(self.work).as_posix() for path in self.work.rglob("*") if not path.is_dir()}

    def contents(self, name):
        path = self.work / name
        if not zipfile.is_zipfile(path):
            return path.read_bytes().decode("utf-8", "replace").replace("\r\n", "\n")
        with zipfile.ZipFile(path) as archive:
            return "".join(archive.read(member).decode("utf-8") for member in archive.namelist())

    def check_err(self, expected, err):
        lines = err.split("\n")
        self.assertEqual(lines.pop(), "")
        self.assertEqual(len(lines), len(expected), err)
        for line, wanted in zip(lines, expected):
            if isinstance(wanted, str):
                self.assertEqual(line, wanted)
            else:
                self.assertRegex(line, f"^(?:{wanted.pattern})$")

    def check_text(self, texts, text):
        at = 0
        for wanted in texts:
            found = text.find(wanted, at)
            self.assertNotEqual(found, -1, f"{wanted!r} is not in what follows:\n{text[at:]}")
            at = found + len(wanted)

    def check_row(self, row):
        today = datetime.date.today()
        self.make_tree()
        for name, contents in row.given.items():
            (self.work / name).parent.mkdir(parents=True, exist_ok=True)
            (self.work / name).write_text(contents, encoding="utf-8")
        for line in row.before:
            run = self.run_line(line)
            self.assertEqual((run.code, run.err), (OK, ""), line)
        earlier = self.listing()
        run = self.run_line(row.line)
        if today != datetime.date.today():  # it ran over midnight
            self.check_row(row)
            return
        self.assertEqual(run.code, row.code, run.err + run.out)
        self.check_err([*row.err, *(USAGE if row.code == WRONG_COMMAND_LINE else ())], run.err)
        self.check_text(row.out, run.out)
        for text in row.absent:
            self.assertNotIn(text, run.out)
        if row.code == WRONG_COMMAND_LINE or (row.files and not row.out):
            self.assertEqual(run.out, "")
        files = {name.replace(TODAY, today.isoformat()): texts for name, texts in row.files.items()}
        self.assertEqual(self.listing() - earlier, set(files) - earlier)
        for name, texts in files.items():
            self.check_text(texts, self.contents(name))
        for name in set(row.given) - set(files):
            self.assertEqual(self.contents(name), row.given[name])
        self.assertNotIn("s3cret", run.out + run.err)
        self.assertEqual([path.name for path in self.home.iterdir() if path.name != ".config"], [])

    def run_rows(self, rows):
        for row in rows:
            if self.delimiter == "\\" and not row.windows:
                continue
            with self.subTest(line=row.line, before=row.before):
                self.check_row(row)


class CommonTests:
    """What holds on both platforms."""

    def test_refusals(self):
        self.run_rows([dataclasses.replace(row, code=WRONG_COMMAND_LINE) for row in REFUSED])

    def test_what_is_done(self):
        self.run_rows(DONE)

    def test_what_goes_wrong(self):
        self.run_rows(FAILED)

    def test_the_version_names_the_platform(self):
        platform = "Windows" if self.delimiter == "\\" else "Linux"
        self.assertRegex(self.run_line("--version").out, rf"^Vantrel \d+\.\d+\.\d+ \({platform}, 64-bit\)\n$")


class LinuxTest(CommonTests, CommandLineTest):
    command = program_test.LinuxTest.command

    def setUp(self):
        super().setUp()
        self.environment.update(HOME=str(self.home), XDG_CONFIG_HOME=str(self.home / ".config"), TMPDIR=str(self.home))

    def test_every_switch_occurs_in_the_table(self):
        text = self.run_line("--help switches").out
        known = set(re.findall(r"(?m)^  --(\S+)", text)) - {"OPTION"} | set(NOT_BUILT)
        self.assertGreater(len(known), 70)
        for name in list(known):
            same = re.search(r"The same as (.*)\.", self.run_line(f"--help {name}").out)
            known |= set(re.findall(r"--([^\s,]+)", same[1])) if same else set()
        lines = [line for row in REFUSED + DONE + FAILED for line in (row.line, *row.before)]
        used = {re.sub(r"^(--|-|/)|=.*", "", token).upper() for line in lines for token in shlex.split(line)}
        self.assertEqual({name.upper() for name in known} - used, set())

    def make_long_paths(self):
        """Enough for an export to be longer than any pipe takes at once."""
        deep = self.work.joinpath("long", *["x" * 250] * 8)
        deep.mkdir(parents=True)
        for i in range(150):
            os.mkdir(deep / f"{i:0250}")

    def start(self, line):
        process = subprocess.Popen([*self.command, *shlex.split(line)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, cwd=self.work, env=self.environment,
                                   preexec_fn=program_test.obey_interrupts)
        self.addCleanup(lambda: (process.kill(), process.communicate()))
        return process

    def drain(self, process, descriptor):
        """Reads whatever comes until the program has ended."""
        os.set_blocking(descriptor, False)
        end = time.monotonic() + TIMEOUT
        while process.poll() is None:
            self.assertLess(time.monotonic(), end, "the program hangs")
            with contextlib.suppress(BlockingIOError):
                if os.read(descriptor, 1 << 20):
                    continue
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(0.01)

    def interrupt_at_the_pipe(self, process):
        """Once the program writes more than the pipe holds."""
        with open(self.work / "pipe", "rb", buffering=0) as pipe:
            pipe.read(1)
            process.send_signal(signal.SIGINT)
            self.drain(process, pipe.fileno())

    def finish(self, process):
        out, err = process.communicate(timeout=TIMEOUT)
        return process.returncode, out.decode().replace("\r\n", "\n"), err.decode().replace("\r\n", "\n").split("\n")[:-1]

    def stopped(self, name):
        return f'Stopped: "{self.work}/{name}" was not written, an earlier one is untouched'

    def test_a_reader_that_leaves_is_an_output_that_failed(self):
        self.make_long_paths()
        for line in ("long --csv -", "long --csv - --text ok.txt"):
            process = self.start(line)
            process.stdout.readline()
            process.stdout.close()
            self.assertEqual((process.wait(TIMEOUT), process.stderr.read()), (OUTPUT_FAILED, b""))
            process.stderr.close()
        self.assertIn("long", self.contents("ok.txt"))

    def test_a_reader_that_has_left_is_not_told_so(self):
        self.assertEqual(self.run_line(RECORDED).code, OK)
        for line in ("data", "--HistoryFile h.db --history data", "--exportdrivelist -", "--HistoryFile h.db --history data --history-csv -",
                     "data --csv -", "data --xml -", "--help"):
            reader, writer = os.pipe()
            os.close(reader)
            process = subprocess.run([*self.command, *shlex.split(line)], stdin=subprocess.DEVNULL, stdout=writer,
                                     stderr=subprocess.PIPE, timeout=TIMEOUT, cwd=self.work, env=self.environment, check=False)
            os.close(writer)
            with self.subTest(line=line):
                self.assertEqual((process.returncode, process.stderr), (OUTPUT_FAILED, b""))

    def test_two_names_of_one_file_are_found(self):
        for name in ("file", "hard"):
            (self.work / name).unlink(missing_ok=True)
        (self.work / "file").write_text("earlier", encoding="utf-8")
        (self.work / "hard").hardlink_to(self.work / "file")
        (self.work / "soft").symlink_to("file")
        (self.work / "nowhere").symlink_to("later.csv")
        (self.work / "folder").symlink_to(".")
        before = self.listing()
        for one, other in (("file", "hard"), ("soft", "file"), ("folder/file", "file"), ("nowhere", "later.csv"),
                           ("folder/new.csv", "new.csv")):
            with self.subTest(one=one, other=other):
                run = self.run_line(f"data --debuglog {one} --csv {other}")
                self.assertEqual(run.code, WRONG_COMMAND_LINE)
                self.assertIn(f'/{other}" cannot be both the log and an export', run.err)
                self.assertEqual((self.contents("file"), self.listing()), ("earlier", before))
        self.assertEqual(self.run_line("data --csv /dev/null --text ok.txt --debuglog /dev/stderr").code, OK)

    def test_a_full_disk_is_told_with_the_name_of_the_file(self):
        self.make_long_paths()
        run = self.run_line("data long --csv x.csv", restore_signals=False,  # a signal that Python ignores would end it
                            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096)))
        self.assertEqual(run.code, OUTPUT_FAILED)
        self.assertRegex(run.err, r'^Writing a file: ".*/x\.csv": File too large')

    def test_a_pipe_gets_the_whole_export(self):
        os.mkfifo(self.work / "pipe")
        process = self.start("data other --csv pipe")
        with open(self.work / "pipe", encoding="utf-8-sig") as pipe:
            self.check_text(("Full Path,", "data,6300,", "other,70,"), pipe.read())
        self.assertEqual(self.finish(process), (OK, "", []))

    def test_a_signal_during_an_export_leaves_earlier_files(self):
        self.make_long_paths()
        os.mkfifo(self.work / "pipe")
        for name in ("a.xml", "b.csv"):
            (self.work / name).write_text("earlier", encoding="utf-8")
        before = self.listing()
        process = self.start("long --csv pipe --xml a.xml --csv b.csv")
        self.interrupt_at_the_pipe(process)
        self.assertEqual(self.finish(process), (CANCELLED, "", [self.stopped(name) for name in ("pipe", "a.xml", "b.csv")]))
        self.assertEqual((self.contents("a.xml"), self.contents("b.csv"), self.listing()), ("earlier", "earlier", before))

    def test_a_signal_between_two_scans_leaves_earlier_files(self):
        self.make_long_paths()
        os.mkfifo(self.work / "pipe")
        (self.work / "b.csv").write_text("earlier", encoding="utf-8")
        before = self.listing()
        process = self.start("long data --pathlist b.csv --csv pipe")
        self.interrupt_at_the_pipe(process)  # the first root is in the path list by then
        self.assertEqual(self.finish(process),
                         (CANCELLED, "", [self.stopped("pipe"), 'Not scanned: "data"', self.stopped("b.csv")]))
        self.assertEqual((self.contents("b.csv"), self.listing()), ("earlier", before))

    def test_a_signal_during_a_scan_leaves_earlier_files(self):
        self.make_long_paths()
        for name in ("patterns", "pipe"):
            os.mkfifo(self.work / name)
        (self.work / "b.csv").write_text("earlier", encoding="utf-8")
        before = self.listing()
        process = self.start("long --csv pipe --csv b.csv --importpatterns patterns --MaximumThreads 1")
        with open(self.work / "patterns", "wb") as patterns:  # opened once the program reads its command line
            patterns.write(b"*\n")
        process.send_signal(signal.SIGINT)
        # Should the scan be over already, the export has waited for its reader until now.
        reader = os.open(self.work / "pipe", os.O_RDONLY | os.O_NONBLOCK)
        self.drain(process, reader)
        os.close(reader)
        code, out, err = self.finish(process)
        self.assertEqual((code, out), (CANCELLED, ""))
        self.assertIn(err, ([self.stopped("pipe"), self.stopped("b.csv")], ['Not scanned: "long"']))
        self.assertEqual((self.contents("b.csv"), self.listing()), ("earlier", before))


class WindowsTest(CommonTests, CommandLineTest):
    command = program_test.WindowsTest.command
    delimiter = "\\"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if cls.command:
            wine.keep_running(cls)

    def setUp(self):
        super().setUp()
        # The user's own options lie where Windows says, whatever the environment holds: only in the tests' own Wine folder
        # is there nothing to lose.
        if "WINEPREFIX" not in os.environ:
            self.skipTest("no folder of Wine's that is only for tests")

    def test_letter_case_does_not_make_two_files_of_one(self):
        for line in ("data --debuglog NEW.xml --xml new.XML", "data --debuglog data/ONE.txt --csv data/one.TXT"):
            with self.subTest(line=line):
                run = self.run_line(line)
                self.assertEqual(run.code, WRONG_COMMAND_LINE)
                self.assertRegex(run.err, 'cannot be both the log and an export')

    def test_names_that_cannot_be_fail_before_the_scan(self):
        for name in ("a?b.csv", "a<b.csv", "aa:b.csv"):
            with self.subTest(name=name):
                run = self.run_line(f"data --csv '{name}' --text ok.txt")
                self.assertEqual(run.code, OUTPUT_FAILED)
                self.assertIn(name, run.err)
                self.assertNotIn("ok.txt", self.listing())

    def make_tree(self):
        super().make_tree()
        users = pathlib.Path(os.environ.get("WINEPREFIX", "/nonexistent")) / "drive_c/users"
        for options in users.glob("*/*/*/Vantrel/options.xml"):
            options.unlink()
