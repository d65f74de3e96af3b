"""Wine breaks down by itself now and then: on a busy machine one start in some thousands ends with code 1 and without a
word, whatever the program; "cmd /c exit 2" does so too. Such a run says nothing of the program, so it is made again."""

import os
import re
import subprocess

STARTS = 3
REMARK = re.compile(rb"(?m)^wine(?: client error:[0-9a-f]+)?: .*\r?\n")


def without_remarks(output):
    """What the program itself wrote, as bytes."""
    return REMARK.sub(b"", output or b"")


def broke_down(code, output):
    """Whether a run can have been Wine's failure and not the program's."""
    return code == 1 and not without_remarks(output)


def run(command, **keywords):
    """subprocess.run, with another start where Wine broke down. A program that means its silent code 1 gives it again."""
    for _ in range(STARTS):
        process = subprocess.run(command, check=False, **keywords)
        if command[0] != os.environ.get("VANTREL_WINE") or not broke_down(process.returncode,
                                                                          (process.stdout or b"") + (process.stderr or b"")):
            break
    return process
