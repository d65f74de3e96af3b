"""Runs the program where processes, memory or descriptors are short, in seeded steps. A run may fail, and must then say so:
none ends with code 0 and other totals than without limits, none ends by a signal, none hangs.

VANTREL_LINUX names the program. VANTREL_LIMITS_TREE names the tree, otherwise one that every system has;
VANTREL_LIMITS_STEPS the number of runs for each limit and VANTREL_LIMITS_SEED their seed: set the three for a long run, over
/usr for one.
"""

import csv
import os
import pathlib
import random
import resource
import shutil
import subprocess
import tempfile
import unittest

from program_test import INCOMPLETE, OK, ordinary_user

TIMEOUT = 120
MIB = 1 << 20

PROGRAM = os.environ.get("VANTREL_LINUX")
TREE = os.environ.get("VANTREL_LIMITS_TREE", "/usr/share/doc")
STEPS = int(os.environ.get("VANTREL_LIMITS_STEPS", "12"))
SEED = int(os.environ.get("VANTREL_LIMITS_SEED", "1"))


def threads_of(user):
    """How many threads the user has: the limit counts them all."""
    threads = 0
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if process.stat().st_uid == user:
                threads += len(list((process / "task").iterdir()))
        except OSError:  # it has ended
            pass
    return threads


@unittest.skipUnless(PROGRAM, "no program to run")
class LimitsTest(unittest.TestCase):
    def setUp(self):
        self.user = {}
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.program = shutil.copy(PROGRAM, self.folder)
        for path, mode in ((self.folder, 0o755), (pathlib.Path(self.program), 0o755)):
            path.chmod(mode)
        self.output = self.folder / "output"
        self.output.mkdir()
        self.output.chmod(0o777)
        self.random = random.Random(SEED)

    def measure_whole(self):
        self.whole_code, self.whole, text = self.run_limited([], {})
        # What the user may not read is missing without limits as well.
        self.assertIn(self.whole_code, (OK, INCOMPLETE), text)

    def run_limited(self, arguments, limits):
        """Exit code, bytes of the tree as the CSV file has them (None without such a file), and what the run wrote."""
        table = self.output / "table.csv"
        table.unlink(missing_ok=True)

        def limit():
            for kind, value in limits.items():
                resource.setrlimit(kind, (value, value))

        run = subprocess.run([self.program, TREE, "--csv", str(table), *arguments], stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, cwd=self.output, timeout=TIMEOUT, preexec_fn=limit, check=False,
                             **self.user)
        return run.returncode, self.bytes_in(table), run.stdout.decode(errors="replace")

    @staticmethod
    def bytes_in(table):
        if not table.exists():
            return None
        with open(table, newline="", encoding="utf-8-sig", errors="replace") as lines:
            for row in csv.DictReader(lines):
                return int(row["Size"])
        return None

    def check(self, arguments, limits):
        what = f"{' '.join(arguments)} with {limits}"
        try:
            code, size, text = self.run_limited(arguments, limits)
        except subprocess.TimeoutExpired:
            self.fail(f"{what} hangs")
        self.assertGreaterEqual(code, 0, f"{what} ended by a signal: {text}")
        # Threads that cannot be had never cost a folder; memory and descriptors may, and the run then says so.
        if code == OK or (code == INCOMPLETE and resource.RLIMIT_NPROC in limits):
            self.assertEqual(code, self.whole_code, what)
            self.assertEqual(size, self.whole, f"{what} ended with code {code} and another total")
        elif code != INCOMPLETE:
            self.assertTrue(text.strip(), f"{what} ended with code {code} and not a word")
        return code

    def arguments(self):
        export = self.random.choice((["--xml", str(self.output / "tree.xml")], []))
        return [*export, "--MaximumThreads", str(self.random.choice((1, 2, 8)))]

    def check_steps(self, kind, values):
        """The first value is one that leaves next to nothing, the last is plenty: both ends must be seen."""
        self.measure_whole()
        codes = [self.check(self.arguments(), {kind: value}) for value in values]
        self.assertNotEqual(codes[0], OK, "the limit was none")
        self.assertEqual(codes[-1], self.whole_code, "the limit that is plenty is not")

    def test_processes(self):
        self.user = ordinary_user()  # root has as many processes as it likes
        self.measure_whole()
        running = threads_of(self.user.get("user", os.geteuid()))
        codes = [self.check(self.arguments(), {resource.RLIMIT_NPROC: running + value})
                 for value in range(max(3, STEPS // 2))]
        self.assertNotEqual(codes[0], self.whole_code, "the limit was none")
        self.assertEqual(codes[2], self.whole_code, "one thread beside the first one is enough")

    def test_descriptors(self):
        self.check_steps(resource.RLIMIT_NOFILE, [4, *(self.random.randrange(4, 80) for _ in range(STEPS)), 1024])

    def test_memory(self):
        # From what the program needs to start.
        low = 8 * MIB
        while subprocess.run([self.program, "--version"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False,
                             preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (low, low))).returncode != 0:
            low += MIB
        high = max(16 * low, 1024 * MIB)
        steps = [int(low * (high / low) ** self.random.random()) for _ in range(2 * STEPS)]
        self.check_steps(resource.RLIMIT_AS, [low + MIB // 2, *steps, 4 * high])


if __name__ == "__main__":
    unittest.main()
