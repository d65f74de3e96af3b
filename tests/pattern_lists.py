"""Trees and lists of patterns for pattern_test.py, chosen so that each rule of matching decides about some entry."""

import pathlib

VARIABLES = {"VANTREL_TEST_WORD": "report"}  # for patterns that name one

# Files for lists that look at paths, extensions, letter case and signs with a meaning in patterns. "/" at the end: a folder.
FILES = """
Data/a/Logs/one.log|Data/a/Logs/two.txt|Data/a/Other/three.log|Data/b/logs/four.LOG|Data/b/deep/er/Logs/five.log|Data/c/
Data/b/c.d/plain|Other/Logs/six.log|Other/x/Data/a/Logs/seven.log|Data2/a/Logs/eight.log|data/a/Logs/nine.log|Data.log/a/ten
src/main.c|src/Makefile|src/README|src/.htaccess|src/test/main.c|src/test/main.h|src/build/main.o|src/build/keep/main.o
src.old/main.c|src.old/build/out|cache-1/x|Cache-2/y|my-cache/z|cache-file|precache-file.tmp|empty/in/side/
photo.JPG|photo.jpeg|clip.mp4|notes.txt|archive.tar.gz|script.ps1|page.phtml|mail.eml.bak|mbox|users-mbox|old.~1
sheet.xlsx|x.xls
noext|ends.|.hidden|.hidden.txt|two  blanks|semi;colon.txt|star*|q?mark|[a-z]|(Foo)bar|(Name)bar|x(-)y|%s%n
%VANTREL_TEST_WORD%|VANTREL_TEST_WORD|my report.doc|quo"ted/in"side.txt|quo"ted/plain.txt|say "hello"|~tilde|a+b|c:\\d
dotted.dir/inner.dir/leaf|(+)(-)y|  two blanks|old Logs|e.xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx
Äpfel|äpfel.txt|ÄPFEL.TXT|a\u0308pfel.txt|σίσυφος.txt|ΣΊΣΥΦΟΣ.TXT|жук.dat|ЖУК.DAT|straße|STRASSE|日本/語.txt|2024-01-31.csv
😀.txt|😀😀
owned/by-two|owned/by-nobody-known|owned/by-me|owned/folder-of-two/by-me
""".replace("\n", "|")
OWNERS = {"owned/by-two": 2, "owned/by-nobody-known": 54_321, "owned/folder-of-two": 2}

# One list a line; lines with "&" go on with it. {tree} is the scanned path. What begins with "all: " takes everything in, with
# "none: " no file; the test insists on that, and for every other list that a file is taken in and something left out.
LISTS = r'''
(-)*.txt
(-)main
(-)*.TMP;*.log;*.O
(-)cache*
(-)*-file
(-)*a*i*
(-)????
(-)*.?
(-)?.txt
(-)??.txt
none: (-)*.*
(-)*.
(-)c*.
(-)*.tar.*
(-)ends.
(-).hidden
(-);noext;.hidden
(-)noext;
(-)photo*;;*~1;
(-)  *blanks
(-) Logs
(-)(Foo)bar
(-)(Name)(Name)bar
(-)x(-)y
(+)(-)y
(-)(+)(-)y
(-)~tilde;a+b;[a-z]
(-)c:\d
(-)%VANTREL_TEST_WORD%
(-)(FullPath)%VANTREL_TEST_WORD%
(-)%s%
(-)äpfel
(-)ΣΊΣΥΦΟΣ
(-)жук.dat
(-)STRASSE
(-)日本
(-)"noext"
(-)"NoExt"
  & (-)"äpfel.txt"
(-)"say ""Hello"""
(-)"in""side.txt
(-)"*.txt"
  & (-)"star*"
(-)/^cache-/
(-)/^CACHE-/i
(-)/^[0-9]{4}-[0-9]{2}-[0-9]{2}\.csv$/
(-)/^.\.txt$/
(-)/^..$/
(-)/-.$/
(-)/(^|\.)h/
(-)/\.(jpe?g|mp4)$/i
(-)/^ÄPFEL/i
(-)/"|'/
*.txt
*.JPG;*.jpeg
main.*
  & (-)*.o
(+)main.*
  & (+)*.log
  & (-)build
  & (-)/^t/
"main.c"
  & /^t.*\.txt$/
all: *
all: *.*
*.
<||(-)*.txt
  & (-)*.log
  & <||(+)main.*
all: <||(-)*
  & <||*.jpg
none: nothing-is-called-so
(-)(Extension);txt;
(Extension);txt;
(-)(Extension)t
(-)(extension)"LOG"
(-)(Extension)/^[A-Z]+$/
(-)(EXTENSION)x*x?x
(-)(Extension)"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
none: (Extension)"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
(Extension)?*
  & (-)(Extension)txt
all: (Extension)*.
(Owner)root
(-)(Owner)/^bin$/
(-)(Owner)"54321"
(Owner)b?n;543*
(-)(ParentPath)*/build
(-)(ParentPath)"{tree}/src"
(ParentPath)*/Logs
(-)(ParentPath)/\/a$/
(-)(Group)Images
(Group)Audio
  & (Group)Videos
  & (Group)Text
  & (Group)Temporary
(-)(Group)Internet
  & (-)(Group)Mail
  & (-)(Group)Office
  & (-)(group)Software Development
(Group)Images
  & (-)*.jpeg
none: (-)(Group)Miscellaneous Files
(-)src/build
(-)*/build
(-)*/test/*
(-){tree}/Data
(-){tree}/Data/*
(-){tree}/data/?
(-)"{tree}/Data"
(-)"{tree}/DATA/A"
  & (-)"{tree}/src/"
(-)*/Logs/*.log;*.jpg
(-)*/b*.
(-)*/c*.
(-)(FullPath)*.
(-)(FullPath)Makefile
all: (-)(Name)*/build
(-)/Data\/a/
(-)/\/B\/|hidden/i
(-)/^{tree}\/[a-m]/
(-)/src/
{tree}/Data
{tree}/Data/
{tree}/Data/*
{tree}/Data/*/Logs/*.log
{tree}/?ata/*/Logs/*.log
{tree}/src/*.c
  & (-)*/test
{tree}/src/*.C;{tree}/Data/b/*
{tree}/src*
{tree}/src/build/main.o
{tree}/s*/b*
"{tree}/src/build/main.o"
"{tree}/SRC/build/Main.O"
  & "{tree}/noext"
none: "{tree}/src"
none: {tree}/nowhere/*
{tree}/Data*
  & (-)*.txt
{tree}/Data/b
  & *.c
{tree}/*/build/*
*/Logs/*
src/test
/\/Logs\//
  & {tree}/src/main.c
{tree}/Data/*.
{tree}/src/*.
  & (-)"{tree}/src/README"
none: (FullPath)/nothing/
all: /
'''

# More of them for the hostile tree.
HOSTILE_LISTS = r'''
(-)lone-?
  & (-)latin1-caf?.TXT
(-)?
(-)???
(-)/^lone-$/
  & (-)/^lone-./
  & (-)/^latin1-caf/
(-)/^.$/
(-)/caf.\.txt$/
  & (-)/\.txt$/
(-)*[*
none: (-)*;*
(-)*"*
(-)"double""quote"
  & (-)"CASE"
(-)composed*
(-) leading
  & (-)"trailing "
(-)(Extension)?;gz
(-)back\
(-){tree}/named-folders/b*
(-)*/named-folders/?/*
{tree}/named-folders/=1+1
  & {tree}/named-folders/*/inside.txt
{tree}/long-chain/long-*
{tree}/deep-chain/d/d/d
{tree}/deep-chain/*/bottom.*
(-)*/below
(-)/(\/d){30}$/
{tree}/many/file-1?.*;{tree}/sizes*
  & (-)*.3
(-)*.png
  & (-)to-*
none: *.nothing
'''


def lists_for(tree, lists):
    """Yields (what the list takes in: "all", "none" or "some", its patterns) for each list."""
    for block in lists.strip("\n").replace("{tree}", tree).replace("\n  & ", "\t").split("\n"):
        kind, colon, patterns = block.partition(": ")
        yield (kind, patterns.split("\t")) if colon and kind in ("all", "none") else ("some", block.split("\t"))


def make_files(top):
    for name in filter(None, FILES.split("|")):
        path = pathlib.Path(top, name)
        if name.endswith("/"):
            path.mkdir(parents=True)
        else:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(b"x")
