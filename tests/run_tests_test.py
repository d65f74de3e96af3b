"""The test run counts right: programs that pass, fail, crash, hang, leave early or hold nothing, played by scripts."""

import os
import pathlib
import sys
import tempfile
import unittest

import run_tests

# Plays a GoogleTest program: prints what one prints, writes the report unless told to end without, and ends.
PLAYER = """
import json, os, pathlib, sys, time
report = next(a for a in sys.argv if a.startswith("--gtest_output=json:")).split(":", 1)[1]
def played(name, verdict):
    print(f"[ RUN      ] {name}\\nsaid by {name}\\n[ {verdict} ] {name} (1 ms)", flush=True)
    return {"name": name, "result": "SKIPPED" if verdict == " SKIPPED" else "COMPLETED",
            **({"failures": [{}]} if verdict == " FAILED " else {})}
def finish(tests, code):
    pathlib.Path(report).write_text(json.dumps({"testsuites": [{"testsuite": tests}]}))
    sys.exit(code)
"""
PASS, FAIL, SKIP = ('played("A.Pass", "      OK")', 'played("A.Fail", " FAILED ")', 'played("A.Skip", " SKIPPED")')


class CountingTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def play(self, ending, timeout=60, **options):
        program = self.folder / "player.py"
        program.write_text(PLAYER + ending)
        return run_tests.run_google_test([sys.executable, str(program)], self.folder, timeout, **options)

    def assert_counts(self, result, passed, failed, skipped, shown=""):
        self.assertEqual((result.passed, result.failed, result.skipped), (passed, failed, skipped), result.output)
        self.assertIn(shown, result.output)

    def test_finished_programs(self):
        self.assert_counts(self.play(f"finish([{PASS}, {PASS}, {SKIP}], 0)"), 2, 0, 1)
        result = self.play(f"finish([{PASS}, {FAIL}], 1)")
        self.assert_counts(result, 1, 1, 0, "said by A.Fail")
        self.assertNotIn("A.Pass", result.output)

    def test_what_goes_wrong_beside_the_tests_is_a_failure(self):
        self.assert_counts(self.play(f"t = [{PASS}]; print('leak'); finish(t, 23)"), 1, 1, 0, "exit code 23")
        self.assert_counts(self.play(f"finish([{FAIL}], 0)"), 0, 2, 0, "exit code 0")
        self.assert_counts(self.play("finish([], 0)"), 0, 1, 0, "no test at all")
        self.assert_counts(self.play("finish([], 0)", test_filter="B*"), 0, 0, 0)

    def test_a_program_that_ends_in_the_middle_is_a_failure(self):
        self.assert_counts(self.play(f"{PASS}; {SKIP}; print('[ RUN      ] B.Crash', flush=True); os.abort()"), 1, 1, 1,
                           "B.Crash\nplayer was ended by signal 6 (SIGABRT)")
        self.assert_counts(self.play(f"{PASS}; {FAIL}; sys.exit(0)"), 1, 2, 0, "exit code 0")
        # A report left by an earlier run is not taken for this one's.
        self.play(f"finish([{PASS}], 0)")
        self.assert_counts(self.play("sys.exit(0)"), 0, 1, 0)
        missing = run_tests.run_google_test([str(self.folder / "missing")], self.folder, 60)
        self.assert_counts(missing, 0, 1, 0, "cannot be started")

    def test_python_files(self):
        body = "import unittest\nclass T(unittest.TestCase):\n"
        cases = [
            ("def test_a(self): pass\n def test_b(self): self.skipTest('x')", (1, 0, 1)),
            ("def test_a(self): pass\n def test_b(self): self.fail()\n def test_c(self): nothing", (1, 2, 0)),
            ("def helper(self): pass", (0, 1, 0)),
            ("def test_a(self): import os; os._exit(0)", (0, 1, 0)),
            ("def broken(", (0, 1, 0)),
        ]
        for number, (tests, counts) in enumerate(cases):
            with self.subTest(tests=tests):
                path = self.folder / f"case{number}_test.py"
                path.write_text(body + " " + tests)
                result = run_tests.run_python_test(path, 60, {})
                self.assertEqual((result.passed, result.failed, result.skipped), counts, result.output)


if __name__ == "__main__":
    unittest.main()
