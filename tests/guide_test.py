"""Runs every command of the user's guide on a small tree: what users copy from there has to work as it stands."""

import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).parents[1]
COMMAND = re.compile(r"^ {4}vantrel (.*)$", re.MULTILINE)


class GuideTest(unittest.TestCase):
    def test_every_command_works_as_it_stands(self):
        commands = COMMAND.findall((ROOT / "docs/guide.md").read_text(encoding="utf-8"))
        self.assertGreater(len(commands), 10)
        with tempfile.TemporaryDirectory() as folder:
            data = pathlib.Path(folder, "data")
            (data / "deep/deeper").mkdir(parents=True)
            (data / "deep/deeper/disk.iso").write_bytes(b"x" * 5000)
            (data / "old.tmp").write_bytes(b"y")
            (data / "node_modules").mkdir()
            # One folder for all, in the order of the guide: the second command of a pair reads what the first one wrote.
            environment = dict(os.environ, XDG_DATA_HOME=folder, XDG_CONFIG_HOME=folder, TZ="UTC")
            for command in commands:
                with self.subTest(command=command):
                    arguments = [os.environ["VANTREL_LINUX"], *shlex.split(command.replace("/data", str(data)))]
                    run = subprocess.run(arguments, cwd=folder, env=environment, capture_output=True, text=True, check=False)
                    self.assertEqual((run.returncode, run.stderr), (0, ""))
                    wrote_file = re.search(r"--csv d|--xml|\.svg", command)
                    self.assertTrue(run.stdout or wrote_file, "it shows nothing")

    def test_every_link_leads_somewhere(self):
        for page in [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]:
            text = page.read_text(encoding="utf-8")
            for target in re.findall(r"\]\(([^)#\s]*)(?:#[^)]*)?\)", text):
                with self.subTest(page=page.name, target=target):
                    self.assertTrue(not target or (page.parent / target).exists())


if __name__ == "__main__":
    unittest.main()
