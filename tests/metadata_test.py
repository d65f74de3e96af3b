"""Searches for the properties inside files: documents, pictures, music and PDF that this test writes by the rules of their
formats, whole, cut and garbled. VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter."""

import io
import os
import pathlib
import random
import struct
import subprocess
import tempfile
import unittest
import wave
import zipfile
import zlib

import wine

TIMEOUT = 120  # only there to catch a hang
COPIES = 200  # garbled, of each file

CORE = """<?xml version="1.0" encoding="UTF-8"?><cp:coreProperties xmlns:cp="urn:cp" xmlns:dc="urn:dc"><dc:title>Größe &amp; Ärger</dc:title>
<dc:creator>Anna Smith;Bob</dc:creator><cp:keywords>budget, plan 2024</cp:keywords><dc:description>first draft</dc:description>
<cp:category>Finance</cp:category><dc:subject>money</dc:subject><dc:language>de-DE</dc:language></cp:coreProperties>"""
APP = "<Properties><Company>Acme</Company><Application>Writer 5</Application><Pages>12</Pages><Words>3456</Words></Properties>"
META = """<office:document-meta xmlns:office="o" xmlns:dc="d" xmlns:meta="m"><office:meta><dc:title>Open title</dc:title>
<meta:initial-creator>Carol</meta:initial-creator><dc:creator>Last Editor</dc:creator><meta:keyword>alpha</meta:keyword>
<meta:keyword>beta gamma</meta:keyword><meta:document-statistic meta:page-count="7" meta:word-count="99"/></office:meta>
</office:document-meta>"""
BOMB = '<!DOCTYPE a [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;">]><a><title>&b;</title></a>'
XMP = """<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF xmlns:rdf="r"><rdf:Description xmlns:dc="d" xmlns:xmp="p" xmp:CreatorTool="Tool 7">
<dc:subject><rdf:Bag><rdf:li>holiday</rdf:li><rdf:li>Sea view</rdf:li></rdf:Bag></dc:subject>
<dc:creator><rdf:Seq><rdf:li>Dora</rdf:li></rdf:Seq></dc:creator></rdf:Description></rdf:RDF></x:xmpmeta>"""


def archive(parts):
    file = io.BytesIO()
    with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED) as made:
        for name, text in parts.items():
            made.writestr(name, text)
    return file.getvalue()


def exif():
    """A TIFF block: the main directory, and that of the camera with the date."""
    texts = {0x10F: b"Canyon\0", 0x110: b"Shot 9\0", 0x13B: b"Emil\0", 0x9C9E: "red;Grün\0".encode("utf-16-le")}
    camera_tags = {0x9003: b"2024:05:17 23:30:00\0"}
    main = 8
    camera = main + 2 + 12 * (len(texts) + 1) + 4
    data = camera + 2 + 12 * len(camera_tags) + 4
    block, behind = b"", b""

    def entry(tag, value, kind):
        nonlocal behind
        result = struct.pack("<HHII", tag, kind, len(value), data + len(behind))
        behind += value + b"\0" * (len(value) % 2)
        return result

    rows = [(tag, entry(tag, text, 1 if tag == 0x9C9E else 2)) for tag, text in texts.items()]
    rows.append((0x8769, struct.pack("<HHII", 0x8769, 4, 1, camera)))
    block += struct.pack("<H", len(rows)) + b"".join(row for _, row in sorted(rows)) + struct.pack("<I", 0)
    block += struct.pack("<H", 1) + entry(0x9003, camera_tags[0x9003], 2) + struct.pack("<I", 0)
    return b"II*\0" + struct.pack("<I", main) + block + behind


def segment(kind, content):
    return b"\xFF" + bytes([kind]) + struct.pack(">H", len(content) + 2) + content


def jpeg():
    iptc = b"".join(b"\x1C\x02" + bytes([kind]) + struct.pack(">H", len(text)) + text
                    for kind, text in ((25, b"caf\xE9"), (25, b"old town"), (5, b"Square"), (120, "Löwe".encode())))
    resources = b"Photoshop 3.0\0" + b"8BIM\x04\x04\0\0" + struct.pack(">I", len(iptc)) + iptc + b"\0" * (len(iptc) % 2)
    return (b"\xFF\xD8" + segment(0xE0, b"JFIF\0" + bytes(9)) + segment(0xE1, b"Exif\0\0" + exif()) +
            segment(0xE1, b"http://ns.adobe.com/xap/1.0/\0" + XMP.encode()) + segment(0xED, resources) +
            segment(0xC4, bytes(20)) + segment(0xC0, b"\x08" + struct.pack(">HH", 3000, 4000) + bytes(10)) +
            segment(0xDA, bytes(10)) + bytes(1000) + b"\xFF\xD9")


def png():
    def chunk(kind, content):
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 640, 480, 8, 2, 0, 0, 0)) +
            chunk(b"tEXt", b"Author\0Fritz") + chunk(b"IDAT", bytes(5000)) + chunk(b"eXIf", exif()) +
            chunk(b"iTXt", b"XML:com.adobe.xmp\0\0\0\0\0" + XMP.encode()) + chunk(b"IEND", b""))


def sound():
    file = io.BytesIO()
    with wave.open(file, "wb") as made:
        made.setnchannels(2)
        made.setsampwidth(2)
        made.setframerate(8000)
        made.writeframes(bytes(3 * 8000 * 4))
    return file.getvalue()


def music():
    """A tag of the second kind in front of some frames of MPEG sound: layer 3, 128 kBit/s, 44,100 Hz, stereo."""
    def frame(name, text):
        content = b"\x01" + text.encode("utf-16")
        return name.encode() + struct.pack(">IH", len(content), 0) + content
    tags = b"".join(frame(*item) for item in (("TIT2", "Lied für dich"), ("TPE1", "Gruppe Sieben"), ("TALB", "Best of"), ("TCON", "Jazz"),
                                              ("TYER", "1999"), ("TRCK", "4/12")))
    size = bytes(len(tags) >> shift & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3\x03\0\0" + size + tags + (b"\xFF\xFB\x90\x00" + bytes(413)) * 400


def pdf(info):
    return (b"%PDF-1.4\n1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj\n2 0 obj <</Count 5/Kids[]/Type /Pages>> endobj\n"
            b"12 0 obj <</Title(wrong)>> endobj\n3 0 obj <<" + info + b">> endobj\ntrailer <</Root 1 0 R/Info 3 0 R>>\n%%EOF\n")


FILES = {
    "letter.docx": archive({"word/document.xml": "<x/>" * 9999, "docProps/core.xml": CORE, "docProps/app.xml": APP}),
    "letter.odt": archive({"mimetype": "x", "meta.xml": META}),
    "bomb.docx": archive({"docProps/core.xml": BOMB}),
    "deep.docx": archive({"docProps/core.xml": "<a>" * 500_000}),
    "huge.docx": archive({"docProps/core.xml": "<a><title>huge</title>" + " " * 5_000_000 + "</a>"}),
    "photo.jpg": jpeg(), "image.png": png(), "raw.tif": exif(),
    "anim.gif": b"GIF89a" + struct.pack("<HH", 320, 200) + bytes(20),
    "paint.bmp": b"BM" + bytes(12) + struct.pack("<Iii", 40, 31, -17) + bytes(40),
    "web.webp": b"RIFF\x20\0\0\0WEBPVP8X\x0A\0\0\0" + bytes(4) + (99).to_bytes(3, "little") + (49).to_bytes(3, "little") + bytes(20),
    "tone.wav": sound(), "song.mp3": music(),
    "paper.pdf": pdf(b"/Title (A \\(nested (deep)\\) \\101\\nB)/Author<FEFF00C4006E006E0061>/Keywords(one,two)/Creator(Maker)"),
    "with xmp.pdf": pdf(b"") + XMP.encode(),
    "plain.txt": b"title Anna Smith holiday", "utf16.txt": "\uFEFFholiday".encode("utf-16-le") * 100, "empty.docx": b"",
}
FILES["cut.docx"] = FILES["letter.docx"][:-30]
FILES["cut.jpg"] = FILES["photo.jpg"][:60]



def shortcut(relative=None, local=None, drive=3, wide=False):
    """A shortcut by the rules of its format: a head, the place on a drive, the path from its own folder."""
    flags = (2 if local else 0) | (8 if relative else 0) | 0x80
    content = b"\x4C\0\0\0" + bytes.fromhex("0114020000000000C000000000000046") + struct.pack("<I", flags) + bytes(0x4C - 24)
    if local:
        head = 0x24 if wide else 0x1C
        volume = struct.pack("<IIII", 17, drive, 0, 16) + b"\0"
        narrow = b"?\0" if wide else local.encode("ascii") + b"\0"
        base = head + len(volume)
        place = struct.pack("<IIIII", head, 1, head, base, 0) + struct.pack("<I", base + len(narrow) - 1)
        if wide:
            at = base + len(narrow)
            place += struct.pack("<II", at, at + 2 * len(local))
        place += volume + narrow + ((local + "\0").encode("utf-16-le") if wide else b"")
        content += struct.pack("<I", len(place) + 4) + place
    if relative:
        content += struct.pack("<H", len(relative)) + relative.encode("utf-16-le")
    return content + bytes(4)


# What each query finds, by what was written into the files above.
FOUND = {
    'mdata:Title:"größe & ärger"': {"letter.docx"},
    "creator:bob": {"letter.docx"},
    "creator:=Bob": {"letter.docx"},
    'creator:="Anna Smith" mdata:Pages:12 mdata:Words:>3,000': {"letter.docx"},
    'keyword:="plan 2024"': {"letter.docx"},
    "mdata:Comment:draft mdata:Category:Finance mdata:Subject:money mdata:Language:de mdata:Company:=Acme": {"letter.docx"},
    "mdata:Application:Writer": {"letter.docx"},
    'keyword:="beta gamma" creator:=Carol mdata:Pages:7 mdata:Words:99': {"letter.odt"},
    "mdata:Title:huge,aaaaaaaaaa": set(),
    "keyword:holiday": {"photo.jpg", "image.png", "with xmp.pdf"},
    'keyword:="sea view" mdata:Application:="Tool 7"': {"photo.jpg", "image.png", "with xmp.pdf"},
    "keyword:=café": {"photo.jpg"},
    'keyword:="old town" mdata:Title:Square mdata:Comment:löwe': {"photo.jpg"},
    "keyword:=grün": {"photo.jpg", "image.png", "raw.tif"},
    "creator:=emil": {"photo.jpg", "image.png", "raw.tif"},
    "creator:=dora": {"photo.jpg", "image.png", "with xmp.pdf"},
    "creator:=fritz": {"image.png"},
    'mdata:CameraMaker:=Canyon mdata:CameraModel:"shot 9"': {"photo.jpg", "image.png", "raw.tif"},
    "datetaken:2024-05": {"photo.jpg", "image.png", "raw.tif"},
    "datetaken:2024-05-17 ext:jpg": {"photo.jpg"},
    "datetaken:>2024-05-17": set(),
    "mdata:Width:4000 mdata:Height:3000": {"photo.jpg"},
    "mdata:Width:<4000 mdata:Height:>=480": {"image.png"},
    "mdata:Width:320 mdata:Height:200": {"anim.gif"},
    "mdata:Width:31 mdata:Height:17": {"paint.bmp"},
    "mdata:Width:100 mdata:Height:50": {"web.webp"},
    "mdata:Duration:3 mdata:Channels:2 mdata:SampleRate:8000": {"tone.wav"},
    'mdata:Artist:"gruppe sieben" creator:sieben mdata:Album:best mdata:Genre:jazz mdata:Year:1999 mdata:Track:4': {"song.mp3"},
    "mdata:Title:für mdata:BitRate:128 mdata:SampleRate:44100": {"song.mp3"},
    "mdata:Title:nested mdata:Title:deep mdata:Title:A": {"paper.pdf"},
    'creator:=Änna keyword:=two mdata:Application:Maker mdata:Pages:5': {"paper.pdf"},
    "mdata:Title:wrong": set(),
    # A missing text is an empty one; a missing number or date fulfils nothing.
    'mdata:Title:="" ext:txt': {"plain.txt", "utf16.txt"},
    "mdata:Pages:!=1 ext:txt": set(),
    "keyword:holiday,bob content:nothing": set(),
}


class MetaDataTest(unittest.TestCase):
    program = os.environ.get("VANTREL_LINUX")
    on_windows = False
    copies = COPIES

    @classmethod
    def setUpClass(cls):
        if not cls.program:
            raise unittest.SkipTest("VANTREL_LINUX is not set")
        if cls.on_windows:
            wine.keep_running(cls)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def search(self, query):
        command = [os.environ["VANTREL_WINE"], self.program] if self.on_windows else [self.program]
        place = "Z:" + str(self.folder).replace("/", "\\") if self.on_windows else str(self.folder)
        run = wine.run([*command, "--nooptions", "--search", query, "--pathlist", "-", "--null", place], stdin=subprocess.DEVNULL,
                       capture_output=True, timeout=TIMEOUT, env=os.environ | {"TZ": "America/New_York"})
        self.assertEqual((run.returncode, wine.without_remarks(run.stderr)), (0, b""), query)
        return {path.replace("\\", "/").rpartition("/")[2] for path in run.stdout.decode().split("\0") if path}

    def test_finds_what_was_written(self):
        for name, content in FILES.items():
            (self.folder / name).write_bytes(content)
        for query, expected in FOUND.items():
            with self.subTest(query=query):
                self.assertEqual(self.search(query), expected)

    def test_finds_shortcuts_that_lead_nowhere(self):
        (self.folder / "sub").mkdir()
        (self.folder / "sub" / "target.txt").write_bytes(b"x")
        drive = "Z:" + str(self.folder).replace("/", "\\") + "\\"
        for name, content in {
                "good.lnk": shortcut(".\\sub\\target.txt", drive + "gone.txt"), "gone.LNK": shortcut(".\\sub\\gone.txt", drive + "gone"),
                "moved.lnk": shortcut("..\\nowhere\\x", drive + "sub\\target.txt"),
                "wide.lnk": shortcut(None, drive + "sub\\größe.txt", wide=True), "here.lnk": shortcut(None, drive + "sub", wide=True),
                "stick.lnk": shortcut(None, drive + "gone.txt", drive=2), "other.txt": shortcut(".\\gone"),
                "no shortcut.lnk": b"x" * 500, "cut.lnk": shortcut(".\\sub\\gone.txt")[:-20], "empty.lnk": b""}.items():
            (self.folder / name).write_bytes(content)
        # Paths with a drive mean nothing on Linux.
        self.assertEqual(self.search("mdata:BrokenLink:yes"), {"gone.LNK", "wide.lnk"} if self.on_windows else {"gone.LNK", "moved.lnk"})

    def test_damaged_files_end_no_search(self):
        chance = random.Random(5)
        for name, content in FILES.items():
            for number in range(self.copies if content else 0):
                garbled = bytearray(content[:chance.randrange(1, len(content) + 1)] if number % 2 else content)
                for _ in range(chance.randrange(1, 12)):
                    # The beginnings hold the lengths.
                    place = chance.randrange(min(len(garbled), chance.choice((20, 200, len(garbled)))))
                    garbled[place] = chance.choice((0, 1, 0x7F, 0x80, 0xFF, chance.randrange(256)))
                (self.folder / f"{number}-{name}").write_bytes(garbled)
        (self.folder / "whole.odt").write_bytes(FILES["letter.odt"])
        self.assertIn("whole.odt", self.search('creator:Carol (datetaken:2024 OR mdata:Pages:7)'))


@unittest.skipUnless(os.environ.get("VANTREL_WINDOWS") and os.environ.get("VANTREL_WINE"), "no program for Windows to run")
class WindowsMetaDataTest(MetaDataTest):
    program = os.environ.get("VANTREL_WINDOWS")
    on_windows = True
    copies = COPIES // 20  # Wine opens files slowly


if __name__ == "__main__":
    unittest.main()
