"""What "cmake --install" and CPack make of a build: the files and where they are, the Debian packages, and the change log.

VANTREL_BUILD names the build folder; without it, it is build/release. tests/packages/ tries the packages in a bare system."""

import configparser
import gzip
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
from xml.etree import ElementTree

ROOT = pathlib.Path(__file__).parents[1]
BUILD = pathlib.Path(os.environ.get("VANTREL_BUILD", ROOT / "build/release"))
CACHE = (BUILD / "CMakeCache.txt").read_text() if (BUILD / "CMakeCache.txt").exists() else ""
HAS_WINDOW = "VANTREL_WINDOW:BOOL=ON" in CACHE
# Packages for 32 bits hold files of the same names. libtag1v5 brings the other one.
NOT_NAMED = {"libc6-i386", "lib32gcc-s1", "lib32stdc++6", "libtag1v5-vanilla"}
GUI = ROOT / "app/gui"
MIME = "{http://www.freedesktop.org/standards/shared-mime-info}"
HEADING = re.compile(r"(?m)^## (.*)$")

# Below the prefix. Documents are added by what is in docs/.
PROGRAM_FILES = {"bin/vantrel", "share/man/man1/vantrel.1.gz", "share/bash-completion/completions/vantrel",
                 "share/fish/vendor_completions.d/vantrel.fish", "share/doc/vantrel/CHANGELOG.md", "share/doc/vantrel/changelog.gz"}
PROGRAM_FILES |= {f"share/doc/vantrel/{path.relative_to(ROOT / 'docs')}" for path in (ROOT / "docs").rglob("*") if path.is_file()}
ICONS = "share/icons/hicolor/"
WINDOW_FILES = {"bin/vantrel-gui", "share/man/man1/vantrel-gui.1.gz", "share/applications/vantrel-gui.desktop",
                "share/applications/vantrel-gui-open.desktop", "share/metainfo/vantrel-gui.metainfo.xml",
                "share/mime/packages/vantrel-gui.xml", "share/doc/vantrel-gui/CHANGELOG.md", "share/doc/vantrel-gui/changelog.gz",
                ICONS + "scalable/apps/vantrel.svg", *(f"{ICONS}{size}x{size}/apps/vantrel.png" for size in (16, 32, 48, 256))}


def licence():
    """The file with the licence, if the sources hold one."""
    return next((path for pattern in ("LICEN[CS]E*", "COPYING*") for path in sorted(ROOT.glob(pattern))), None)


def changelog():
    return (ROOT / "CHANGELOG.md").read_text(encoding="utf-8")


def versions():
    """The versions of the change log with their dates, in its order."""
    return [re.fullmatch(r"(\S+) \(([-\d]+)\)", heading).groups() for heading in HEADING.findall(changelog())]


def output(*command, **keywords):
    return subprocess.run(command, check=True, capture_output=True, text=True, **keywords).stdout


class ChangeLogTest(unittest.TestCase):
    def test_it_begins_with_the_version_of_the_program(self):
        project = re.search(r"project\(vantrel VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())[1]
        self.assertEqual(versions()[0][0], project, "CMakeLists.txt has another version than the first one in CHANGELOG.md")
        if os.environ.get("VANTREL_LINUX"):
            self.assertEqual(output(os.environ["VANTREL_LINUX"], "--version").split()[1], project)

    def test_the_newest_is_first_and_each_says_something(self):
        numbers = [tuple(map(int, version.split("."))) for version, _ in versions()]
        self.assertEqual(numbers, sorted(set(numbers), reverse=True))
        dates = [date for _, date in versions()]
        self.assertEqual(dates, sorted(dates, reverse=True))
        for text in HEADING.split(changelog())[2::2]:
            self.assertRegex(text, r"(?m)^- \w")

    @unittest.skipUnless(shutil.which("dpkg-parsechangelog"), "this is no Debian")
    def test_debian_reads_it(self):
        older = "\n## 0.0.9 (2025-12-31)\n\n- Older\n  things.\n"
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder, "CHANGELOG.md")
            source.write_text(changelog() + older, encoding="utf-8")
            made = output(ROOT / "cmake/debian-changelog.sh", source)
            read = output("dpkg-parsechangelog", "--all", "-l", "-", input=made)
        self.assertEqual(re.findall(r"(?m)^ vantrel \((\S+)\)", read), [version for version, _ in versions()] + ["0.0.9"])
        self.assertIn("Wed, 31 Dec 2025", made)
        # All words are kept, in their order.
        words = [re.findall(r"\w+", text) for text in (HEADING.sub("", (changelog() + older).split("\n## ", 1)[1].split("\n", 1)[1]),
                                                       re.sub(r"(?m)^(vantrel \(| -- ).*", "", made))]
        self.assertEqual(*words)


@unittest.skipUnless((BUILD / "cmake_install.cmake").exists(), "nothing was built")
class InstallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="vantrel-install-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.prefix = cls.folder / "first"
        cls.install(cls.prefix)

    @staticmethod
    def install(prefix):
        output("cmake", "--install", str(BUILD), "--prefix", str(prefix), umask=0o022)

    def test_every_file_is_in_its_place(self):
        files = {str(path.relative_to(self.prefix)) for path in self.prefix.rglob("*") if path.is_file()}
        self.assertEqual({name for name in files if "/zsh/" in name},
                         {name for name in files if re.fullmatch(r"share/zsh/(site-functions|vendor-completions)/_vantrel", name)})
        expected = PROGRAM_FILES | (WINDOW_FILES if HAS_WINDOW else set())
        if licence():
            expected |= {"share/doc/vantrel/copyright"} | ({"share/doc/vantrel-gui/copyright"} if HAS_WINDOW else set())
        self.assertEqual({name for name in files if "/zsh/" not in name}, expected)
        self.assertEqual(len(files), len(expected) + 1)
        for path in self.prefix.rglob("*"):
            wanted = 0o755 if path.is_dir() or path.parent.name == "bin" else 0o644
            self.assertEqual(path.stat().st_mode & 0o777, wanted, path)

    def test_what_the_program_makes_is_its_own(self):
        program = self.prefix / "bin/vantrel"
        self.assertEqual(output(program, "--version").split()[1], versions()[0][0])
        for topic, name in (("bash", "share/bash-completion/completions/vantrel"), ("man", "share/man/man1/vantrel.1.gz"),
                            ("fish", "share/fish/vendor_completions.d/vantrel.fish")):
            data = (self.prefix / name).read_bytes()
            text = (gzip.decompress(data) if name.endswith(".gz") else data).decode()
            self.assertEqual(text, output(program, "--help", topic))
        completions = self.prefix / "share/bash-completion/completions/vantrel"
        self.assertEqual(output("bash", "-c", f"source {completions}; complete -p vantrel"), "complete -F _vantrel vantrel\n")

    def test_packed_files_are_equal_each_time(self):
        second = self.folder / "second"
        self.install(second)
        packed = list(self.prefix.rglob("*.gz"))
        self.assertGreaterEqual(len(packed), 2)
        for path in packed:
            data = path.read_bytes()
            self.assertEqual(data, (second / path.relative_to(self.prefix)).read_bytes())
            # Neither a name nor a time.
            self.assertEqual((data[3], data[4:8]), (0, bytes(4)), path)

    @unittest.skipUnless(shutil.which("dpkg-deb") and shutil.which("dpkg-shlibdeps"), "this is no Debian")
    def test_debian_packages(self):
        # Packed quickly: only the contents matter here.
        output("cpack", "--config", str(BUILD / "CPackConfig.cmake"), "-B", str(self.folder / "cpack"),
               "-D", "CPACK_DEBIAN_COMPRESSION_TYPE=gzip", umask=0o022)
        packages = {path.name.split("_")[0]: path for path in (self.folder / "cpack").glob("*.deb")}
        self.assertEqual(set(packages), {"vantrel", "vantrel-gui"} if HAS_WINDOW else {"vantrel"})
        for name, path in packages.items():
            with self.subTest(package=name):
                self.check_package(name, path, WINDOW_FILES if name == "vantrel-gui" else PROGRAM_FILES)

    def check_package(self, name, path, files):
        fields = dict(re.findall(r"(?m)^ ?([\w-]+): (.*)$", output("dpkg-deb", "--field", str(path))))
        self.assertEqual((fields["Package"], fields["Version"]), (name, versions()[0][0]))
        listing = [line.split(maxsplit=5) for line in output("dpkg-deb", "--contents", str(path)).splitlines()]
        self.assertEqual({entry[1] for entry in listing}, {"root/root"})
        packed = {entry[5].removeprefix("./usr/") for entry in listing if entry[0][0] == "-"}
        self.assertLessEqual(files, packed)
        self.assertLessEqual({pathlib.PurePath(file).name for file in packed - files}, {"_vantrel", "copyright"})
        self.assertEqual({entry[0] for entry in listing}, {"drwxr-xr-x", "-rwxr-xr-x", "-rw-r--r--"})
        # Each library that the program is linked with comes from a package that this one depends on.
        depends = {re.split(r"[ (]", package)[0] for package in fields["Depends"].split(", ")}
        linked = re.findall(r"NEEDED\s+(\S+)", output("objdump", "-p", str(BUILD / name)))
        owners = {line.split(":")[0] for library in linked for line in output("dpkg", "-S", f"*/{library}").splitlines()
                  if line.endswith(f"/{library}")}
        self.assertGreater(len(linked), 8)
        self.assertEqual(owners - depends - NOT_NAMED, set())


class DesktopTest(unittest.TestCase):
    @unittest.skipUnless(shutil.which("desktop-file-validate"), "desktop-file-utils is not installed")
    def test_desktop_entries(self):
        types = {element.get("type") for element in ElementTree.parse(GUI / "vantrel-gui-types.xml").iter(MIME + "mime-type")}
        taken = set()
        for path in GUI.glob("*.desktop"):
            run = subprocess.run(["desktop-file-validate", "--warn-kde", path], check=False, capture_output=True, text=True)
            self.assertEqual(run.stdout + run.stderr, "")
            parser = configparser.ConfigParser(interpolation=None)
            parser.optionxform = str
            parser.read(path)
            entry = parser["Desktop Entry"]
            # A folder may have the name of a switch, and after "--" only paths follow.
            self.assertRegex(entry["Exec"], r"^vantrel-gui (-- %F|--open %f)$")
            self.assertEqual(entry["Icon"], "vantrel")
            taken |= set(entry["MimeType"].strip(";").split(";"))
        self.assertEqual(taken, types | {"inode/directory"})

    @unittest.skipUnless(shutil.which("mandoc"), "mandoc is not installed")
    def test_the_manual_page_of_the_window(self):
        run = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", GUI / "vantrel-gui.1"], check=False, capture_output=True, text=True)
        # It has no date, which would soon be wrong.
        self.assertEqual([line for line in run.stdout.splitlines() if "missing date" not in line], [])
        self.assertEqual(run.stderr, "")


if __name__ == "__main__":
    unittest.main()
