"""What the benchmarks share: building the programs, running them in turn, and printing figures and verdicts.

Figures are the median and, in brackets, the smallest and the largest.
"""

import argparse
import contextlib
import datetime
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.path.join(SOURCE, "build", "release")
FLOOR = os.path.join(BUILD, "bench", "floor")
MEASURE = os.path.join(BUILD, "bench", "measure")
VANTREL = os.path.join(BUILD, "vantrel")
OWN_NAME = os.path.basename(sys.argv[0])

PACKAGES = {"du": "coreutils", "ncdu": "ncdu", "gdu": "gdu", "bfs": "bfs", "fdfind": "fd-find", "find": "findutils", "rg": "ripgrep",
            "grep": "grep", "rmlint": "rmlint", "jdupes": "jdupes", "rdfind": "rdfind"}


class Program:
    """One line of the table: a command, what its rounds took, and what went wrong."""

    def __init__(self, name, command):
        self.name = name
        self.command = command
        self.walls, self.cpus, self.peaks = [], [], []  # seconds, seconds, MiB
        self.output = ""
        self.problem = ""  # why there are no figures
        self.complaint = ""  # what it wrote when it ended with an error, its figures notwithstanding
        self.find()

    def find(self):
        executable = self.command[0]
        if os.path.isabs(executable):
            if not os.access(executable, os.X_OK):
                self.problem = "not built"
        elif not shutil.which(executable):
            self.problem = f"missing: install the package {PACKAGES[executable]}"

    def run(self, measured):
        reader, writer = os.pipe()
        with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
            subprocess.run([MEASURE, str(writer), *self.command], stdin=subprocess.DEVNULL, stdout=output, stderr=errors,
                           pass_fds=[writer], check=True)
            os.close(writer)
            with open(reader) as result:
                wall, cpu, peak, status = map(int, result.read().split())
            errors.seek(0)
            self.note(os.waitstatus_to_exitcode(status), errors.read())
            output.seek(0)
            self.output = output.read(4096).decode(errors="replace")
        if measured:
            self.walls.append(wall / 1e9)
            self.cpus.append(cpu / 1e6)
            self.peaks.append(peak / 1024)

    def note(self, code, errors):
        """A program that only could not read everything (status 1, as du has it) still did its work."""
        if code == 0:
            return
        lines = [ascii(line)[1:-1] for line in errors.decode(errors="replace").splitlines()]
        shown = "; ".join(lines[:3]) + (f"; and {len(lines) - 3} more lines" if len(lines) > 3 else "")
        text = f"ended with {code}: {shown or 'no error text'}"
        if code == 1 and self.command[0] in PACKAGES:
            self.complaint = text
        else:
            self.problem = text


def drop_caches():
    """Makes the system forget what it has read of all disks. Needs root; affects everything on the machine."""
    os.sync()
    try:
        with open("/proc/sys/vm/drop_caches", "w") as control:
            control.write("3")
    except OSError as error:
        raise SystemExit(f"{OWN_NAME}: cannot drop the caches: {error}") from error


def measure(programs, rounds, before_each=lambda: None):
    for round_number in range(rounds + 1):
        for program in programs:
            if not program.problem:
                before_each()
                program.run(measured=round_number > 0)
        if programs[0].problem:  # what everything is held against
            raise SystemExit(f"{OWN_NAME}: {programs[0].name}: {programs[0].problem}")


def figure(values, digits):
    return f"{statistics.median(values):.{digits}f} ({min(values):.{digits}f}..{max(values):.{digits}f})"


def ratio(values, base):
    return f"{statistics.median(values) / statistics.median(base):.2f}" if base else "-"


def print_columns(rows):
    widths = [max(len(row[column]) for row in rows if column < len(row)) for column in range(max(map(len, rows)))]
    for row in rows:
        # The first column to the left, figures to the right; a lone second cell is a remark and takes what it needs.
        if len(row) == 2:
            print(f"{row[0]:<{widths[0]}}  {row[1]}")
        else:
            print("  ".join([f"{row[0]:<{widths[0]}}"] + [f"{cell:>{width}}" for cell, width in zip(row[1:], widths[1:])]))


def print_table(programs, base, base_name="floor"):
    share = f"/ {base_name}"
    rows = [["", "wall s", share, "CPU s", share, "peak MiB", share]]
    remarks = []
    for program in programs:
        if program.problem:
            remarks.append(f"{program.name}: {program.problem}")
            rows.append([program.name] + ["-"] * 6)
            continue
        rows.append([program.name, figure(program.walls, 3), ratio(program.walls, base.walls), figure(program.cpus, 3),
                     ratio(program.cpus, base.cpus), figure(program.peaks, 1), ratio(program.peaks, base.peaks)])
        if program.complaint:
            remarks.append(f"{program.name}: {program.complaint}")
    print_columns(rows)
    for remark in remarks:
        print(remark)


class Verdicts:
    """Prints a line per target and remembers whether all were met."""

    def __init__(self):
        self.all_met = True

    def judge(self, text, own, other, factor=1.0, unit="", strictly=True):
        if not own or not other:
            print(f"not measured: {text}")
            self.all_met = False
            return
        value, limit = statistics.median(own), statistics.median(other) * factor
        met = value < limit if strictly else value <= limit
        self.all_met = self.all_met and met
        print(f"{'met   ' if met else 'MISSED'} {text}: {value:.3f}{unit} against {limit:.3f}{unit}")


def build():
    """Builds the release programs. Returns what failed, as text per target; the floor and measure must succeed."""
    configured = subprocess.run(["cmake", "--preset", "release"], cwd=SOURCE, capture_output=True, text=True)
    if configured.returncode != 0:
        raise SystemExit(f"{OWN_NAME}: cannot configure the release build:\n{configured.stdout}{configured.stderr}")
    failures = {}
    for targets in (["floor", "measure"], ["vantrel"]):
        built = subprocess.run(["cmake", "--build", BUILD, "--target", *targets], capture_output=True, text=True)
        if built.returncode != 0:
            failures[targets[-1]] = (built.stdout + built.stderr).strip()
    if "measure" in failures:
        raise SystemExit(f"{OWN_NAME}: cannot build the floor program:\n{failures['measure']}")
    return failures


def vantrel_command(program, path, threads, *switches):
    return [program, "/NOGUI", *(["/MaximumThreads", str(threads)] if threads else []), *switches, "/SCAN", path]


def new_vantrel(arguments, name, path, threads=None, switches=()):
    """The program under test; without a build of it, the reason stands in its line."""
    program = Program(name, vantrel_command(arguments.program or VANTREL, path, threads, *switches))
    if "vantrel" in arguments.failures:
        program.problem = f"cannot be built: {arguments.failures['vantrel'].splitlines()[-1]}"
    return program


def cpu_model():
    with contextlib.suppress(OSError), open("/proc/cpuinfo") as lines:
        for line in lines:
            if line.startswith("model name"):
                return line.partition(":")[2].strip()
    return platform.processor() or platform.machine()


def print_head(program):
    def git(*arguments):
        return subprocess.run(["git", *arguments], cwd=SOURCE, capture_output=True, text=True).stdout.strip()

    changed = " with changes" if git("status", "--porcelain", "--untracked-files=no") else ""
    load = os.getloadavg()[0]
    print(f"machine  {cpu_model()}, {os.cpu_count()} cores, {platform.system()} {platform.release()}, load {load:.2f}")
    if load > 0.5:
        print("         other work is running: wall times are worth little, CPU times somewhat more")
    print(f"date     {datetime.datetime.now().astimezone():%Y-%m-%d %H:%M %z}")
    print(f"commit   {git('log', '-1', '--format=%h %s')}{changed}")
    if program:
        print(f"vantrel  is {program}")


def positive(text):
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError(f"{text} is not a positive number")
    return value
