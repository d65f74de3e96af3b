"""Builds and runs every test and closes with one line: "N passed, N failed" (and "N skipped" when some were).

Started by ./test, which installs what is missing first. Everything that ran is counted: each test of each GoogleTest
program, each test in tests/*_test.py, each script in tests/checks and each build. A build that fails, a program that
crashes, hangs or runs no test at all counts as one failure, so that nothing drops out of the sum without a word.
"""

import argparse
import concurrent.futures
import dataclasses
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time
import traceback

import wine

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build"
WINE_PREFIX = BUILD / "wine"
SHOWN_LINES = 200  # of one failed test; its whole output is in the log beside the program

# What can be asked for by --only, in the order in which it runs: the quickest to fail comes first.
STAGES = ("checks", "linux", "windows", "python", "window", "winewindow", "packages", "asan", "tsan", "clang", "fuzz")
# --all leaves out the window program for Windows, until Qt for Windows has been tried: building Qt takes long. It leaves
# out the packages, too, which are tried in a system that comes from the network.
ALL_STAGES = tuple(stage for stage in STAGES if stage not in ("winewindow", "packages"))
QUICK_STAGES = ("checks", "linux", "windows", "python")

# The Linux tests run on the optimised build: it is what users get, ./run has built most of it already, and tests over a
# million nodes finish in seconds. Assertions are not lost by that; the sanitizer builds keep them.
FUZZ_SECONDS = 60  # for each program of tests/fuzz

# What the window's stages build. The other programs of their presets are those of other stages.
WINDOW_STAGES = ("window", "winewindow")
WINDOW_TARGETS = ("vantrel", "vantrel-gui", "window_tests")

PRESETS = {"linux": "release", "windows": "windows", "window": "window", "winewindow": "windows-window", "asan": "asan", "tsan": "tsan", "clang": "clang", "fuzz": "fuzz"}


@dataclasses.dataclass
class Result:
    """What one program, file or check came to. The output is shown when something failed."""

    name: str
    passed: int = 0
    failed: int = 0
    skipped: int = 0
    seconds: float = 0.0
    output: str = ""


def run_logged(command, log, timeout, environment=None, folder=ROOT):
    """Runs a command with its output in a file and returns its exit code, negative for a signal, None when it took
    longer than the timeout. A file and not a pipe: a pipe is held open by whatever the command leaves running, as every
    first program under Wine does. On a timeout the whole process group is ended."""
    with open(log, "wb") as output:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                   env=environment, cwd=folder, start_new_session=True)
        running.add(process)
        try:
            return process.wait(timeout)
        except BaseException as interruption:
            end_group(process)
            process.wait()
            if isinstance(interruption, subprocess.TimeoutExpired):
                return None
            raise
        finally:
            running.discard(process)


running = set()  # the processes that run_logged waits for, on whichever thread


def end_group(process):
    """Ends a process and all that it started. Not for one that ended by itself: what a program under Wine leaves in its
    group serves the next one."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def read_log(log):
    return log.read_text(encoding="utf-8", errors="backslashreplace").replace("\r\n", "\n")


def describe_end(code, timeout):
    """Why a program ended without a result, as a sentence."""
    if code is None:
        return f"did not finish within {timeout} seconds and was ended"
    if code < 0:
        return f"was ended by signal {-code} ({signal.Signals(-code).name})"
    return f"ended with exit code {code}"


# --- Builds ------------------------------------------------------------------------------------------------------------


def build(preset, timeout, environment=None, targets=()):
    """Configures and builds one preset, everything in it or only some targets. Returns a Result with no count when that worked."""
    folder = BUILD / preset
    folder.mkdir(parents=True, exist_ok=True)
    log = folder / "build.log"
    start = time.monotonic()
    # Configuring takes most of a second, and Ninja repeats it by itself when a list of sources has changed. A folder
    # that ./run configured has no tests yet.
    cache = folder / "CMakeCache.txt"
    steps = [["ninja", "--quiet", "-C", str(folder), *targets]]
    if not (folder / "build.ninja").exists() or "VANTREL_TESTS:BOOL=ON" not in cache.read_text():
        steps.insert(0, ["cmake", "-S", str(ROOT), "--preset", preset])
    for step in steps:
        code = run_logged(step, log, timeout, environment)
        if code != 0:
            output = f"{read_log(log)}\n{step[0]} {describe_end(code, timeout)}"
            return Result("build", failed=1, seconds=time.monotonic() - start, output=output)
    return Result("build", seconds=time.monotonic() - start)


def build_windows_libraries(timeout, environment=None, name="windows-libraries"):
    """Builds the libraries that the Windows program is linked with, unless they are there. Returns what went wrong, or
    nothing."""
    log = BUILD / f"{name}.log"
    script = ROOT / f"cmake/{name}.sh"
    code = run_logged([str(script)], log, timeout, environment)
    return "" if code == 0 else f"{read_log(log)}\n{script.name} {describe_end(code, timeout)}"


def test_programs(preset):
    """The commands of the test programs, as CMake registered them: a stale program of a folder that is gone is not
    among them, and one that was not built is."""
    listing = subprocess.run(["ctest", "--show-only=json-v1", "--test-dir", BUILD / preset], check=True,
                             capture_output=True, text=True)
    return [test["command"] for test in json.loads(listing.stdout)["tests"] if "command" in test]


# --- GoogleTest programs -----------------------------------------------------------------------------------------------


def run_google_test(command, folder, timeout, test_filter="", environment=None):
    """Runs one GoogleTest program and counts its tests. The log and the result file stay in the folder."""
    name = pathlib.PureWindowsPath(command[-1]).stem
    log, report = folder / f"{name}.log", folder / f"{name}.json"
    report.unlink(missing_ok=True)
    # The report's path is relative since a Windows program knows the folder by another name.
    arguments = [f"--gtest_output=json:{report.name}", "--gtest_color=no"]
    if test_filter:
        arguments.append(f"--gtest_filter={test_filter}")
    start = time.monotonic()
    try:
        for _ in range(wine.STARTS):
            code = run_logged(command + arguments, log, timeout, environment, folder)
            if not wine.broke_down(command, code, log.read_bytes()):
                break
    except OSError as error:
        return Result(name, failed=1, output=f"{name} cannot be started: {error}")
    result = Result(name, seconds=time.monotonic() - start)
    output = read_log(log)
    counted = count_report(report, result)
    if not counted:
        count_output(output, result)
    if result.failed:
        result.output = failing_tests(output)
    if not counted or (code != 0) != (result.failed > 0):
        # It crashed or hung, or something was found only after the last test, such as a leak.
        result.failed += 1
        result.output = f"{failing_tests(output)}\n{name} {describe_end(code, timeout)}; see {log}"
    elif result.passed + result.failed + result.skipped == 0 and not test_filter:
        result.failed = 1
        result.output = f"{name} holds no test at all"
    return result


def count_report(report, result):
    """Counts the tests in a program's own report. Returns false when there is none, as after a crash."""
    try:
        suites = json.loads(report.read_text(encoding="utf-8", errors="replace"))["testsuites"]
    except (OSError, ValueError, KeyError):
        return False
    for test in (test for suite in suites for test in suite["testsuite"]):
        if test.get("failures"):
            result.failed += 1
        elif test["result"] == "COMPLETED":
            result.passed += 1
        else:
            result.skipped += 1
    return True


def count_output(output, result):
    """Counts what ran before a crash, from what the program printed."""
    for verdict in re.findall(TEST_END, output, re.MULTILINE):
        result.passed += verdict == "      OK"
        result.skipped += verdict == " SKIPPED"
        result.failed += verdict == " FAILED "


# The line that closes one test. It need not begin the line: a test may have printed without a line break.
TEST_END = r"\[ (      OK| SKIPPED| FAILED ) \] .* \(\d+ ms\)$"
# Lines that say nothing about one test.
FRAME = re.compile(r"\[[=-]+\]|\[  PASSED  \]|\[  (FAILED |SKIPPED) \] \S+$|\[  FAILED  \] \d+ tests?,|Running main\(\)"
                   r"|Note: Google Test filter|\[ DISABLED \]| *\d+ FAILED TESTS?$| *YOU HAVE \d+ DISABLED|$")


def failing_tests(output):
    """The program's output without that of the tests that passed."""
    shown, block = [], []
    for line in output.splitlines():
        if FRAME.match(line):
            continue
        if line.startswith("[ RUN      ] "):
            shown, block = shown + clipped(block), []
        block.append(line)
        end = re.search(TEST_END, line)
        if end:
            shown, block = shown + (clipped(block) if end[1] == " FAILED " else []), []
    return "\n".join(shown + clipped(block))


def clipped(lines):
    if len(lines) <= SHOWN_LINES:
        return lines
    return lines[: SHOWN_LINES // 2] + [f"… {len(lines) - SHOWN_LINES} lines …"] + lines[-SHOWN_LINES // 2 :]


# --- Python tests and checks -------------------------------------------------------------------------------------------


def run_python_test(path, timeout, environment):
    """Runs one file of unittest tests in an interpreter of its own."""
    log = BUILD / f"{path.stem}.log"
    start = time.monotonic()
    environment = dict(environment, PYTHONPATH=os.pathsep.join([str(path.parent), str(ROOT / "tests")]))
    code = run_logged([sys.executable, "-m", "unittest", path.stem], log, timeout, environment)
    result = Result(path.name, seconds=time.monotonic() - start)
    output = read_log(log)
    ran = re.search(r"^Ran (\d+) tests? in .*\n\n(OK|FAILED)(?: \((.*)\))?$", output, re.MULTILINE)
    if ran:
        notes = dict(note.rsplit("=", 1) for note in (ran[3] or "").split(", ") if note)
        result.failed = sum(int(notes.get(note, 0)) for note in ("failures", "errors", "unexpected successes"))
        result.skipped = int(notes.get("skipped", 0))
        result.passed = max(0, int(ran[1]) - result.failed - result.skipped)
    if not ran or (code != 0) != (result.failed > 0):
        result.failed += 1
        output += f"\n{path.name} {describe_end(code, timeout)}"
    elif result.passed + result.failed + result.skipped == 0:
        result.failed = 1
        output += f"\n{path.name} holds no test at all"
    result.output = output if result.failed else ""
    return result


def run_check(path, timeout, *arguments):
    log = BUILD / f"check-{path.stem}.log"
    start = time.monotonic()
    code = run_logged([sys.executable, str(path), *arguments], log, timeout)
    result = Result(f"{path.stem} check", seconds=time.monotonic() - start)
    if code == 0:
        result.passed = 1
    else:
        result.failed = 1
        result.output = read_log(log) if code == 1 else f"{read_log(log)}\n{path.name} {describe_end(code, timeout)}"
    return result


# --- Environments ------------------------------------------------------------------------------------------------------


def base_environment():
    environment = dict(os.environ)
    # Wine and ccache want a home folder; a service's user may have none.
    if not os.access(environment.get("HOME", ""), os.W_OK):
        environment["HOME"] = str(BUILD)
    # The first finding ends the program, so that it is shown with the test that it belongs to.
    environment.setdefault("ASAN_OPTIONS", "detect_stack_use_after_return=1:strict_string_checks=1")
    environment.setdefault("UBSAN_OPTIONS", "print_stacktrace=1")
    environment.setdefault("TSAN_OPTIONS", "halt_on_error=1:second_deadlock_stack=1")
    # Tests of folders that cannot be read need a user who is not root; as root they drop to this one.
    environment.setdefault("VANTREL_ORDINARY_USER", "65534")
    return environment


def wine_environment(environment):
    """Wine keeps to a folder of the build, says nothing of its own, and neither draws nor asks for anything. Without its
    debugger a crash ends the program at once, as on Linux, instead of printing pages without symbols."""
    environment = dict(environment, WINEPREFIX=str(WINE_PREFIX), WINEDEBUG="-all",
                       WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d")
    environment.pop("DISPLAY", None)
    return environment


def prepare_wine(environment, timeout):
    """Makes Wine's folder once. Returns what went wrong, or nothing."""
    ready = WINE_PREFIX / "ready"
    if ready.exists():
        return ""
    shutil.rmtree(WINE_PREFIX, ignore_errors=True)
    log = BUILD / "wine.log"
    # Left alone, Wine takes itself for a Windows older than the oldest that the program supports.
    set_version = ["wine", "reg", "add", r"HKCU\Software\Wine", "/v", "Version", "/d", "win10", "/f"]
    for step in (["wine", "wineboot", "-i"], set_version):
        code = run_logged(step, log, timeout, environment)
        if code != 0:
            return f"{read_log(log)}\n{' '.join(step)} {describe_end(code, timeout)}"
    subprocess.run(["wineserver", "-w"], env=environment, timeout=timeout, check=False)
    ready.touch()
    return ""


def thread_sanitizer_launcher():
    """The thread sanitizer wants memory laid out as it was on older kernels, so addresses are not randomised where
    that can be had."""
    launcher = ["setarch", "-R"]
    allowed = shutil.which("setarch") and subprocess.run(launcher + ["true"], capture_output=True, check=False)
    return launcher if allowed and allowed.returncode == 0 else []


# --- The run -----------------------------------------------------------------------------------------------------------


class Run:
    """Runs the stages asked for, reports each result as it comes, and keeps the sum."""

    def __init__(self, options):
        self.options = options
        self.results = []
        self.builds = {}
        self.environment = base_environment()
        self.wine_used = False

    def report(self, stage, result):
        self.results.append(result)
        counts = f"{result.passed} passed"
        counts += f", {result.failed} FAILED" if result.failed else ""
        counts += f", {result.skipped} skipped" if result.skipped else ""
        print(f"{stage:8} {result.name:24} {counts:36} {result.seconds:6.1f} s", flush=True)
        if result.output:
            print("    " + result.output.strip("\n").replace("\n", "\n    "), flush=True)

    def built(self, stage):
        """Builds a stage's preset, once however often it is asked for. Returns whether it is there."""
        if stage not in self.builds:
            timeout = self.options.build_timeout
            problem = ""
            if stage in ("windows", "winewindow"):
                problem = build_windows_libraries(timeout, self.environment)
            if stage == "winewindow" and not problem:
                problem = build_windows_libraries(timeout, self.environment, "windows-qt")
            targets = WINDOW_TARGETS if stage in WINDOW_STAGES else ()
            result = (Result("libraries", failed=1, output=problem) if problem else
                      build(PRESETS[stage], timeout, self.environment, targets))
            self.builds[stage] = not result.failed
            if result.failed or stage == "clang":
                result.passed = 0 if result.failed else 1
                self.report(stage, result)
        return self.builds[stage]

    def wine(self):
        """The environment for Windows programs, with Wine's folder made; None when that failed."""
        environment = wine_environment(self.environment)
        problem = "" if self.wine_used else prepare_wine(environment, self.options.timeout)
        self.wine_used = True
        if problem:
            self.report("windows", Result("wine", failed=1, output=problem))
            return None
        return environment

    def run_programs(self, stage, launcher=(), environment=None):
        """Runs a stage's test programs side by side; each is one line of the report."""
        programs = [program for program in test_programs(PRESETS[stage])
                    if stage not in WINDOW_STAGES or "window_tests" in program[-1]]
        if not programs:
            self.report(stage, Result("tests", failed=1, output="There is no test program."))
        folder = BUILD / PRESETS[stage]
        with concurrent.futures.ThreadPoolExecutor(self.options.jobs) as pool:
            runs = [pool.submit(run_google_test, [*launcher, *program], folder, self.options.timeout,
                                self.options.filter, environment or self.environment) for program in programs]
            try:
                for finished in concurrent.futures.as_completed(runs):
                    self.report(stage, finished.result())
            except KeyboardInterrupt:
                pool.shutdown(wait=False, cancel_futures=True)
                for process in list(running):
                    end_group(process)
                raise

    def checks(self):
        for path in sorted((ROOT / "tests/checks").glob("*.py")):
            self.report("checks", run_check(path, self.options.timeout))

    def linux(self):
        if self.built("linux"):
            self.run_programs("linux")

    def asan(self):
        if self.built("asan"):
            self.run_programs("asan")

    def tsan(self):
        if self.built("tsan"):
            self.run_programs("tsan", thread_sanitizer_launcher())

    def clang(self):
        # The second compiler is here for its thread-safety analysis, whose findings are errors: building is the test. Two
        # checks look at what was built.
        if self.built("clang"):
            for path in sorted((ROOT / "tests/checks/built").glob("*.py")):
                self.report("clang", run_check(path, self.options.build_timeout, str(BUILD / PRESETS["clang"])))

    def fuzz(self):
        """Feeds the readers of scan files, queries and NTFS volumes with damaged ones. What is found is kept in the build
        folder. Always from the same start, so that two runs of one version find the same. To look for more, start a
        program by hand, with other seeds and for longer."""
        if not self.built("fuzz"):
            return
        made = BUILD / "fuzz/ntfs_seeds"
        made.mkdir(exist_ok=True)
        run_logged([str(BUILD / "fuzz/tests/fuzz/ntfs_fuzz"), "write-seeds", str(made)], BUILD / "fuzz/seeds.log",
                   self.options.timeout, self.environment)
        fuzzers = {"xml_reader_fuzz": ROOT / "tests/fuzz/seeds", "query_fuzz": ROOT / "tests/fuzz/query_seeds", "ntfs_fuzz": made,
                   "scan_files_fuzz": ROOT / "tests/fuzz/scan_seeds"}
        for name, seeds in fuzzers.items():
            self.run_fuzzer(name, seeds)

    def run_fuzzer(self, name, seeds):
        folder = BUILD / "fuzz"
        corpus = folder / f"{name}_corpus"
        shutil.rmtree(corpus, ignore_errors=True)
        corpus.mkdir()
        start = time.monotonic()
        log = folder / f"{name}.log"
        code = run_logged([str(folder / "tests/fuzz" / name), f"-max_total_time={FUZZ_SECONDS}", "-seed=1", "-timeout=20",
                           "-rss_limit_mb=2048", f"-artifact_prefix={folder}/", str(corpus), str(seeds)], log,
                          self.options.timeout, self.environment)
        runs = re.search(r"^Done (\d+) runs", read_log(log), re.MULTILINE)
        passed = code == 0 and runs and int(runs[1]) > 0 and any(seeds.iterdir())
        output = "" if passed else f"{read_log(log)[-4000:]}\n{name} {describe_end(code, self.options.timeout)}"
        shown = f"{name}, {runs[1]} runs" if runs else name
        self.report("fuzz", Result(shown, passed=int(bool(passed)), failed=int(not passed),
                                   seconds=time.monotonic() - start, output=output))

    def windows(self):
        if self.built("windows"):
            environment = self.wine()
            if environment:
                self.run_programs("windows", ["wine"], environment)

    def python(self):
        files = sorted((ROOT / "tests").glob("*_test.py"))
        if not self.built("linux") or not self.built("windows"):
            self.report("python", Result("tests", output="not run, since a program is missing"))
            return
        environment = self.wine()
        if not environment:
            return
        # In a folder of its own. Beside a window program, which ./run --gui builds, it would do more.
        alone = BUILD / "console/vantrel"
        alone.parent.mkdir(exist_ok=True)
        shutil.copy2(BUILD / "release/vantrel", alone)
        environment.update(VANTREL_LINUX=str(alone),
                           VANTREL_WINDOWS=str(BUILD / "windows/vantrel.exe"), VANTREL_WINE="wine",
                           VANTREL_LIST_SCAN=str(BUILD / "release/tests/list_scan"),
                           VANTREL_MATCH_QUERY=str(BUILD / "release/tests/match_query"),
                           VANTREL_SEND_MAIL=str(BUILD / "release/tests/send_mail"),
                           VANTREL_SEND_MAIL_WINDOWS=str(BUILD / "windows/tests/send_mail.exe"),
                           VANTREL_RECORD_HISTORY=str(BUILD / "release/tests/record_history"),
                           VANTREL_RECORD_HISTORY_WINDOWS=str(BUILD / "windows/tests/record_history.exe"))
        for path in files:
            self.report("python", run_python_test(path, self.options.timeout, environment))

    def window(self):
        """The window program on Linux. Its widgets are drawn into memory."""
        if self.built("window"):
            # Freed memory is filled with other bytes at once, so that work that outlives its window crashes.
            filled = dict(self.environment, MALLOC_PERTURB_="165", GLIBC_TUNABLES="glibc.malloc.tcache_count=0")
            self.run_programs("window", environment=filled)
            self.run_window_python("window", self.environment, VANTREL_WINDOW_PROGRAM=BUILD / "window/vantrel-gui",
                                   VANTREL_CONSOLE_PROGRAM=BUILD / "window/vantrel")
            # The python stage has seen what is installed without a window.
            environment = dict(self.environment, VANTREL_BUILD=str(BUILD / PRESETS["window"]))
            self.report("window", run_python_test(ROOT / "tests/install_test.py", self.options.timeout, environment))

    def winewindow(self):
        """The same for Windows, with Qt's libraries beside the program. Wine shows it on a display of its own."""
        if not self.built("winewindow"):
            return
        environment = self.wine()
        if environment:
            folder = BUILD / PRESETS["winewindow"]
            environment.update(WINEPATH=f"Z:{folder}".replace("/", "\\"), QT_PLUGIN_PATH=f"Z:{folder}")
            self.run_programs("winewindow", ["xvfb-run", "-a", "wine"], environment)
            self.run_window_python("winewindow", environment, VANTREL_WINDOW_PROGRAM=folder / "vantrel-gui.exe",
                                   VANTREL_CONSOLE_PROGRAM=folder / "vantrel.exe", VANTREL_WINE="wine")

    def packages(self):
        """Makes what users install, and tries it: Debian packages in a bare system, zip files under Wine."""
        log, start = BUILD / "package.log", time.monotonic()
        code = run_logged([str(ROOT / "package")], log, self.options.build_timeout, self.environment)
        if code != 0:
            output = f"{read_log(log)}\npackage {describe_end(code, self.options.build_timeout)}"
            self.report("packages", Result("package", failed=1, seconds=time.monotonic() - start, output=output))
            return
        environment = self.wine()
        if environment:
            environment.update(VANTREL_PACKAGES=str(BUILD / "packages"), VANTREL_WINE="wine")
            for path in sorted((ROOT / "tests/packages").glob("*_test.py")):
                # Much of it is apt's work and the network's.
                self.report("packages", run_python_test(path, max(self.options.timeout, 1800), environment))

    def run_window_python(self, stage, environment, **programs):
        environment = dict(environment, **{name: str(path) for name, path in programs.items()})
        for path in sorted((ROOT / "tests/window").glob("*_test.py")):
            self.report(stage, run_python_test(path, self.options.timeout, environment))

    def close(self):
        """Prints the sum. Returns the exit code."""
        if self.wine_used:
            subprocess.run(["wineserver", "-k"], env=wine_environment(self.environment), check=False)
        passed, failed, skipped = (sum(getattr(result, kind) for result in self.results)
                                   for kind in ("passed", "failed", "skipped"))
        print(f"{passed} passed, {failed} failed" + (f", {skipped} skipped" if skipped else ""), flush=True)
        return 1 if failed or not passed else 0


def parse_options(arguments):
    parser = argparse.ArgumentParser(
        prog="./test", description="Builds and runs the tests, for Linux natively and for Windows under Wine.")
    parser.add_argument("--all", action="store_true",
                        help="also run the tests under the address, undefined-behaviour and thread sanitizers, and "
                             "test the window program, "
                             "build with clang, where a finding of the thread-safety analysis is an error, run clang-tidy, "
                             "look for functions that nothing calls, and feed the readers of scan files, queries and "
                             "NTFS volumes with damaged ones for a minute each")
    parser.add_argument("--only", metavar="STAGE", action="append", choices=STAGES,
                        help=f"run only this stage, one of {', '.join(STAGES)}; may be given more than once")
    parser.add_argument("--filter", metavar="PATTERN", default="",
                        help="run only the GoogleTest tests that match, such as 'Text*'; leaves out checks and Python")
    parser.add_argument("--timeout", metavar="SECONDS", type=float, default=600, help="for one program (600)")
    parser.add_argument("--build-timeout", metavar="SECONDS", type=float, default=3600, help="for one build (3600)")
    parser.add_argument("--jobs", metavar="N", type=int, default=os.cpu_count(),
                        help="test programs run at the same time (one per processor)")
    return parser.parse_args(arguments)


def main(arguments):
    options = parse_options(arguments)
    stages = ALL_STAGES if options.all else options.only or QUICK_STAGES
    BUILD.mkdir(exist_ok=True)
    run = Run(options)
    sys.stdout.reconfigure(errors="backslashreplace")
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        for stage in STAGES:
            if stage in stages and not (options.filter and stage in ("checks", "python")):
                getattr(run, stage)()
    except KeyboardInterrupt:
        run.report("", Result("interrupted", failed=1))
    except Exception:  # a fault of this script: the sum says so too, and Wine is still shut down
        run.report("", Result("test run", failed=1, output=traceback.format_exc()))
    return run.close()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
