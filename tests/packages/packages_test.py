"""Tries what ./package has made: the Debian packages in a bare system, and the zip files under Wine.

VANTREL_PACKAGES names the folder with the files, VANTREL_WINE the command that starts a Windows program."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time
import unittest
import unittest.mock
import zipfile

import bare_system
import install_test
import wine
from window import display

PACKAGES = pathlib.Path(os.environ["VANTREL_PACKAGES"])
VERSION = install_test.versions()[0][0]
WINE = os.environ.get("VANTREL_WINE", "wine")
WINE_LIBRARIES = pathlib.Path("/usr/lib/x86_64-linux-gnu/wine/x86_64-windows")  # those of Windows itself
PATIENCE = 60  # seconds; only there to catch a hang
TREE = {"large.iso": 300_000, "deep/small.txt": 1_000}


def make_tree(folder):
    for name, size in TREE.items():
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(b"x" * size)


@unittest.skipUnless(os.getuid() == 0 and shutil.which("debootstrap"), "a bare system wants root and debootstrap")
class DebianTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.base = bare_system.made_system()

    def setUp(self):
        self.system = bare_system.BareSystem(self.base)
        self.addCleanup(self.system.remove)
        (self.system.folder / "packages").mkdir()
        for path in PACKAGES.glob("*.deb"):
            shutil.copy(path, self.system.folder / "packages")
        make_tree(self.system.folder / "data")

    def run_there(self, script, **variables):
        return self.system.run(script, **variables)

    def install(self, *names):
        # Without what is only recommended: that must not be needed.
        files = " ".join(f"/packages/{name}_{VERSION}_*.deb" for name in names)
        self.run_there(f"apt-get install -y --no-install-recommends {files}")
        for name in names:
            self.assertIn("install ok installed", self.run_there(f"dpkg-query -W -f '${{Status}}' {name}"))
            self.assertEqual(self.run_there(f"dpkg --verify {name}"), "")

    def check_removal(self, *names):
        """Removes packages; nothing that they brought is there any more, and nothing that the programs left behind for others."""
        brought = {line for name in names for line in self.run_there(f"dpkg -L {name}").splitlines()}
        files = [path for path in brought if not (self.system.folder / path[1:]).is_dir()]
        self.assertGreater(len(files), 10)
        # As a user does: "remove", not "purge". There is no configuration that could stay.
        self.run_there(f"apt-get remove -y {' '.join(names)}")
        self.assertEqual([path for path in files if (self.system.folder / path[1:]).exists()], [])
        left = self.run_there("find / -xdev -iname '*vantrel*' -not -path '/packages/*' -not -path '/tmp/*' -not -path '/var/cache/man/*'").splitlines()
        self.assertEqual(left, [])
        self.assertEqual(self.run_there("dpkg -l | grep -c vantrel || true").strip(), "0")

    def test_the_console_program(self):
        self.install("vantrel")
        self.assertEqual(self.run_there("vantrel --version").split()[1], VERSION)
        report = self.run_there("vantrel --nooptions /data --csv -").splitlines()
        self.assertIn(str(sum(TREE.values())), report[1], report)
        # No library for mail is there. That is said when a mail is asked for, and at no other time.
        self.assertNotIn("curl", self.run_there("ldd /usr/bin/vantrel"))
        code, said = bare_system.enter(self.system.folder, "vantrel --nooptions /data --email a@example.org --mailserver localhost")
        self.assertNotEqual(code, 0)
        self.assertRegex(said, "(?i)libcurl|mail")
        self.assertEqual(self.run_there("man -w vantrel").strip(), "/usr/share/man/man1/vantrel.1.gz")
        self.assertIn("VANTREL(1)", self.run_there("man vantrel | cat"))
        self.check_completions()
        self.assertEqual(self.run_there("ls /usr/share/doc/vantrel/guide.md /usr/share/doc/vantrel/CHANGELOG.md | wc -l").strip(), "2")
        self.check_removal("vantrel")

    def check_completions(self):
        """Each shell finds them by itself, in the place that it looks at."""
        # What bash does at the first Tab after the name.
        loads = "source /usr/share/bash-completion/bash_completion; _completion_loader vantrel; complete -p vantrel"
        self.assertIn("complete -F _vantrel vantrel", self.run_there(f"bash -c '{loads}'"))
        self.assertEqual(self.run_there("zsh -fc 'autoload -U compinit; compinit -u -D; print $_comps[vantrel]'").strip(), "_vantrel")
        self.assertIn("--version\t", self.run_there("fish -c 'complete -C \"vantrel --vers\"'"))

    def test_the_window_program_alone_and_beside_the_other(self):
        self.install("vantrel-gui")
        self.assertEqual(self.run_there("vantrel-gui --version").split()[1], VERSION)
        self.assertIn("large.iso", self.run_there("vantrel-gui /NOGUI --nooptions /data --topfileslist"))
        self.assertEqual(self.run_there("man -w vantrel-gui").strip(), "/usr/share/man/man1/vantrel-gui.1.gz")
        # A picture with text wants Qt's fonts, and no display.
        self.run_there("cd /tmp && vantrel-gui --nooptions /data --treemap t.png --xml scan.xml.zip --xml plain")
        self.assertTrue((self.system.folder / "tmp/t.png").read_bytes().startswith(b"\x89PNG"))
        self.check_desktop()
        # The window stays open until it is ended.
        for arguments in ("", "--", "-- /data", "--open /tmp/scan.xml.zip"):
            with self.subTest(arguments=arguments):
                said = self.run_there(f"QT_QPA_PLATFORM=offscreen HOME=/tmp timeout 3 vantrel-gui {arguments}; test $? = 124")
                self.assertNotIn("rror", said)
        self.install("vantrel")
        # The console program finds the window program beside it.
        said = self.run_there("QT_QPA_PLATFORM=offscreen HOME=/tmp timeout 3 vantrel --gui --nooptions /data; test $? = 124")
        self.assertNotIn("There is no window", said)
        # Each can go and leave the other whole.
        self.run_there("apt-get remove -y vantrel && vantrel-gui --version && dpkg --verify vantrel-gui")
        self.check_removal("vantrel-gui")

    def check_desktop(self):
        """What a desktop offers for a folder and for saved scans."""
        for name, kind, entry in (("/data", "inode/directory", "vantrel-gui"),
                                  ("/tmp/scan.xml.zip", "application/x-vantrel-scan+zip", "vantrel-gui-open"),
                                  ("/tmp/plain", "application/x-vantrel-scan+xml", "vantrel-gui-open")):
            self.assertIn(kind, self.run_there(f"gio info -a standard::content-type {name}"))
            self.assertIn(f"{entry}.desktop", self.run_there(f"gio mime {kind}"))
        (self.system.folder / "tmp/other.xml").write_text("<?xml version='1.0'?><Root/>")
        self.assertNotIn("vantrel", self.run_there("gio info -a standard::content-type /tmp/other.xml"))


class RulesTest(unittest.TestCase):
    @unittest.skipUnless(shutil.which("lintian"), "lintian is not installed")
    def test_debians_rules(self):
        files = sorted(PACKAGES.glob("*.deb"))
        run = subprocess.run(["lintian", "--tag-display-limit", "0", *files], capture_output=True, text=True, check=False)
        found = set(re.findall(r"(?m)^([EW]: .*)$", run.stdout))
        # Debian takes no package without a licence. The project has none yet.
        known = set() if install_test.licence() else {f"E: {path.name.split('_')[0]}: no-copyright-file" for path in files}
        self.assertEqual(found, known, run.stderr)


@unittest.skipUnless(shutil.which(WINE), "Wine is not installed")
class ZipTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # Before all programs: the first one decides whether Wine has a display.
        if shutil.which("Xvfb"):
            cls.screen = display.Display()
            cls.addClassCleanup(cls.screen.__exit__)
            patch = unittest.mock.patch.dict(os.environ, cls.screen.environment)
            patch.start()
            cls.addClassCleanup(patch.stop)
        wine.keep_running(cls)

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="vantrel zip ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        make_tree(self.folder / "data")

    def unpack(self, name):
        """The folder with the programs, as Windows unpacks it."""
        path = PACKAGES / f"{name}-{VERSION}-windows-x64.zip"
        if not path.exists():
            self.skipTest(f"{path.name} was not made")
        with zipfile.ZipFile(path) as packed:
            self.assertEqual({entry.split("/")[0] for entry in packed.namelist()}, {path.stem})
            packed.extractall(self.folder)
        folder = self.folder / path.stem
        for expected in ("CHANGELOG.md", "docs/guide.md", "docs/images/treemap.png"):
            self.assertTrue((folder / expected).exists(), expected)
        self.check_libraries(folder)
        return folder

    def check_libraries(self, folder):
        """Each library that a program or library wants is beside it, or is Windows' own; and each that is there is wanted."""
        own = {path.name.lower() for path in folder.glob("*.dll")}
        windows = {path.name.lower() for path in WINE_LIBRARIES.glob("*")}
        wanted = set()
        for path in [path for path in folder.rglob("*") if path.suffix in (".exe", ".dll")]:
            listing = install_test.output("x86_64-w64-mingw32-objdump", "-p", path)
            # Names such as api-ms-win-core-synch-l1-2-0.dll stand for parts of Windows' own libraries.
            names = {name.lower() for name in re.findall(r"DLL Name: (?!api-ms-win-)(\S+)", listing)}
            self.assertEqual(names - own - windows, set(), path.name)
            wanted |= names
        self.assertEqual(own - wanted, set())

    def run_windows(self, program, *arguments):
        # Into a file: what Wine starts for the first program with a window would hold a pipe open.
        with tempfile.TemporaryFile() as written:
            run = wine.run([WINE, str(program), *arguments], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=written,
                           stderr=subprocess.STDOUT, timeout=PATIENCE)
            written.seek(0)
            text = wine.without_remarks(written.read()).decode()
        self.assertEqual(run.returncode, 0, text)
        return text

    def check_program(self, program):
        self.assertEqual(self.run_windows(program, "--version").split()[1:3], [VERSION, "(Windows,"])
        rows = self.run_windows(program, "/NOGUI", "--nooptions", "data", "--csv", "-").splitlines()
        self.assertIn(str(sum(TREE.values())), rows[1], rows)

    def test_the_console_program(self):
        folder = self.unpack("vantrel")
        self.assertEqual([path.name for path in folder.iterdir() if path.suffix in (".exe", ".dll")], ["vantrel.exe"])
        self.check_program(folder / "vantrel.exe")

    @unittest.skipUnless(shutil.which("Xvfb"), "there is no display to show the window on")
    def test_the_window_program(self):
        folder = self.unpack("vantrel-gui")
        for program in ("vantrel.exe", "vantrel-gui.exe"):
            self.check_program(folder / program)
        process = subprocess.Popen([WINE, str(folder / "vantrel-gui.exe"), "--nooptions", "data"], cwd=self.folder,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   start_new_session=True)
        try:
            end = time.monotonic() + PATIENCE
            # A window has a ground and texts, whose edges have many colours.
            while len(display.colors(self.screen.grab()[2])) <= 20:
                self.assertLess(time.monotonic(), end, "nothing was seen on the display")
                time.sleep(0.2)
        finally:
            wine.run([WINE, "taskkill", "/F", "/IM", "vantrel-gui.exe"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                     stderr=subprocess.DEVNULL, timeout=PATIENCE)
            process.kill()
            process.wait(PATIENCE)


if __name__ == "__main__":
    unittest.main()
