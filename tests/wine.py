"""Wine breaks down by itself now and then: on a busy machine one start in some thousands ends with code 1 and without a
word, whatever the program; "cmd /c exit 2" does so too. Such a run says nothing of the program, so it is made again."""

import os
import re
import subprocess

STARTS = 3
TIMEOUT = 120  # only there to catch a hang
REMARK = re.compile(rb"(?m)^wine(?: client error:[0-9a-f]+)?: .*\r?\n")


def without_remarks(output):
    """What the program itself wrote, as bytes."""
    return REMARK.sub(b"", output or b"")


def broke_down(command, code, output):
    """Whether a run can have been Wine's failure and not the program's."""
    return command[0] == os.environ.get("VANTREL_WINE", "wine") and code == 1 and not without_remarks(output)


def run(command, **keywords):
    """subprocess.run, with another start where Wine broke down. A program that means its silent code 1 gives it again."""
    for _ in range(STARTS):
        process = subprocess.run(command, check=False, **keywords)
        if not broke_down(command, process.returncode, (process.stdout or b"") + (process.stderr or b"")):
            break
    return process


def keep_running(test_class):
    """Keeps Wine running until the tests of the class are done: what its first program starts beside it holds that one's
    pipes open for seconds, or for as long as another program runs."""
    command = os.environ["VANTREL_WINE"]
    streams = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    keeper = subprocess.Popen([command, "cmd", "/c", "pause"], stdin=subprocess.PIPE, **streams)
    test_class.addClassCleanup(keeper.wait, TIMEOUT)
    test_class.addClassCleanup(keeper.stdin.close)
    # Only once a second program has come and gone is it sure that none of the tests is Wine's first.
    run([command, "cmd", "/c", "exit"], stdin=subprocess.DEVNULL, timeout=TIMEOUT, **streams).check_returncode()
