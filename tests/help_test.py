"""Help as users meet it: the screen, the help on each switch and option, the manual page through its formatters, and the
completions in real shells. The names of switches and options come from "--help switches" and "--help options".

VANTREL_LINUX and VANTREL_WINDOWS name the programs, VANTREL_WINE what runs the latter; tests of what is unset are skipped.
"""

import os
import pathlib
import pty
import re
import shlex
import select
import shutil
import subprocess
import tempfile
import time
import unittest

import wine

LINUX = os.environ.get("VANTREL_LINUX")
WINDOWS = os.environ.get("VANTREL_WINDOWS") if os.environ.get("VANTREL_WINE") else None
TIMEOUT = 60  # only there to catch a hang
OK, WRONG_COMMAND_LINE = 0, 2


def run(command, **keywords):
    keywords.setdefault("stdin", subprocess.DEVNULL)
    return wine.run(command, capture_output=True, timeout=TIMEOUT, **keywords)


def help_on(*topic, command=None):
    process = run([*(command or [LINUX]), "--help", *topic])
    assert (process.returncode, wine.without_remarks(process.stderr)) == (OK, b""), (topic, process)
    return process.stdout.decode().replace("\r\n", "\n")


def lower_switches(names):
    """Switches are listed in capitals and completed in small letters; options are spelled in one way."""
    return {name.lower() if name.isupper() else name for name in names}


def words(text):
    return re.sub(r"[.\s]+", " ", text).lower().strip()


class Names:
    """What there is to be documented and completed, read from the lists that users read."""

    def __init__(self):
        self.switches = lower_switches(re.findall(r"(?m)^  (--\w[\w-]*)", help_on("switches"))) - {"--option"}
        self.options = set(re.findall(r"(?m)^  (--\w[\w-]*)", help_on("options")))
        self.not_built = ("EXCEL", "PDF", "HTML", "SQLITE", "SEARCH:INTERNET", "INSTALL", "LOOP")
        same = [re.search(r"The same as (.*)\.", help_on(name[2:])) for name in self.switches]
        aliases = lower_switches(alias for match in same if match for alias in match[1].split(", "))
        self.spellings = self.switches | {alias for alias in aliases if len(alias) > 3}
        # Some switches set the option of their own name.
        self.completed = {name for name in self.spellings if ":" not in name} | {name for name in self.options if name.lower() not in self.spellings}
        assert len(self.switches) > 30 and len(self.options) > 50 and len(self.spellings) > len(self.switches)


@unittest.skipUnless(LINUX, "no program to run")
class HelpTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vantrel-help-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def save(self, topic):
        """What a shell's ">" makes of it."""
        path = self.folder / topic
        path.write_bytes(run([LINUX, "--help", topic]).stdout)
        return str(path)

    def save_page(self):
        """Formatters and shells take a carriage return for a character."""
        path = self.save("man")
        self.assertNotIn(b"\r", pathlib.Path(path).read_bytes())
        return path

    def test_each_line_of_the_first_screen_works_as_it_stands(self):
        commands = re.findall(r"(?m)^  vantrel (.*?)  ", help_on())
        self.assertEqual(len(commands), 10)
        data = self.folder / "data"
        data.mkdir()
        for name, size in (("a.tmp", 1), ("b.iso", 5000), ("c.iso", 5000)):
            (data / name).write_bytes(b"x" * size)
        for command in commands:
            arguments = shlex.split(command.replace("/data", str(data)))
            process = run([LINUX, "--nooptions", *arguments], cwd=self.folder)
            self.assertEqual((process.returncode, process.stderr), (OK, b""), command)

    def test_the_first_screen_and_the_help_on_each_name(self):
        lines = help_on().split("\n")
        self.assertLessEqual(len(lines) - 1, 24)
        self.assertLessEqual(max(map(len, lines)), 80)
        names = Names()
        for name in names.completed - {"--options"}:  # a topic of that name goes first
            for spelling in (name[2:], name[2:].upper()):
                self.assertIn(name.lower(), help_on(spelling).lower())
        for name in names.not_built:
            self.assertIn("This version ", help_on(name))
        for topic in ("nothing-like-it", "manual"):
            process = run([LINUX, "--help", topic])
            self.assertEqual((process.returncode, process.stdout), (WRONG_COMMAND_LINE, b""), topic)

    def test_help_on_columns_names_them(self):
        """What the help on a switch names is what the switch takes."""
        (self.folder / "file").touch()
        for switch in ("sortby", "usecolumns"):
            columns = re.search(r"Columns are ([\w,\s]+)\.", help_on(switch))[1].replace(",", " ").split()
            self.assertGreater(len(columns), 20)
            for column in columns:
                self.assertEqual(run([LINUX, "--nooptions", str(self.folder), f"--{switch}", column]).returncode, OK, column)

    @unittest.skipUnless(WINDOWS, "no program to run")
    def test_the_first_screen_suits_the_shells_of_windows(self):
        """To cmd.exe, '>' between single quotes is a redirection, and "/data" looks like a switch."""
        screen = help_on(command=[os.environ["VANTREL_WINE"], WINDOWS])
        self.assertNotRegex(screen, r"'| /data")
        self.assertIn('vantrel D:\\Data --search "size:>1GB"', screen)
        self.assertLessEqual(max(map(len, screen.split("\n"))), 80)

    @unittest.skipUnless(WINDOWS, "no program to run")
    def test_both_platforms_generate_the_same(self):
        for topic in ("examples", "bash", "zsh", "fish", "man"):
            texts = [help_on(topic), help_on(topic, command=[os.environ["VANTREL_WINE"], WINDOWS])]
            # Some options have other defaults on Windows.
            here, there = ([re.sub(r"; default: .*", "", line) for line in text.split("\n")] for text in texts)
            self.assertEqual(here, there)

    # --- the manual page ---

    def test_formatters_take_the_manual_page_without_a_warning(self):
        page = self.save_page()
        checkers = [["man", "--warnings=w", "-E", "UTF-8", "-l", page], ["groff", "-man", "-ww", "-Tutf8", page],
                    ["mandoc", "-T", "lint", "-W", "warning", page]]
        for command in [command for command in checkers if shutil.which(command[0])]:
            process = run(command, env={**os.environ, "LC_ALL": "C.UTF-8"})
            # The page has no date, since nobody would keep it up.
            shown = process.stdout.decode() if command[0] == "mandoc" else ""
            remarks = [line for line in shown.splitlines() if "WARNING: missing date" not in line]
            self.assertEqual((process.stderr, remarks), (b"", []), command)
            self.assertTrue(process.returncode == OK or shown)

    @unittest.skipUnless(shutil.which("man"), "man is not installed")
    def test_the_manual_page_names_everything(self):
        # Too wide for words to be divided at the end of a line.
        environment = {**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "5000"}
        page = run(["man", "-l", self.save_page()], env=environment).stdout.decode()
        page = re.sub(r".\x08|\x1b\[[\d;]*m", "", page)
        sections = re.split(r"(?m)^([A-Z][A-Z ]+)$", page)
        self.assertEqual(sections[1::2], ["NAME", "SYNOPSIS", "DESCRIPTION", "SWITCHES", "OPTIONS", "EXIT STATUS",
                                          "ENVIRONMENT", "FILES", "EXAMPLES", "SEE ALSO"])
        text = dict(zip(sections[1::2], sections[2::2]))
        names = Names()
        tags = re.findall(r"(?m)^       (--?[\w?].*)$", text["SWITCHES"])
        tagged = {word for tag in tags for word in re.findall(r"(?:^|, )(--\w[\w:-]*)", tag)}
        self.assertEqual(tagged, names.spellings)
        self.assertTrue(set(names.not_built) <= {word.upper() for word in re.findall(r"--([\w:-]+)", text["SWITCHES"])})
        self.assertEqual(set(re.findall(r"(?m)^       (--\w[\w-]*)", text["OPTIONS"])), names.options)
        self.assertEqual(re.findall(r"(?m)^       (\d) +\S", text["EXIT STATUS"]), list("0123456"))
        for token in re.findall(r"[\s(](--\w[\w-]*)", text["EXAMPLES"] + text["FILES"] + text["ENVIRONMENT"]):
            self.assertIn(token.lower(), {name.lower() for name in names.switches | names.options})
        # Everything that the help on a name says, but for full stops; and what has a meaning to formatters.
        plain = words(page)
        for name in names.switches - {"--options"}:
            explanation = re.sub(r"\n  (The same as|May be given) [^\n]*", "", help_on(name[2:]).split("\n", 1)[1])
            self.assertIn(words(explanation), plain)
        for name in names.options & names.completed:
            explanation, values = help_on(name[2:]).split("\n")[:2]
            self.assertIn(words(explanation), plain)
            self.assertIn(words(values.split(", default ")[0]), plain)
        for shown in (r"""/SCAN "D:\Data;E:\Shares" """, r"C:\reports\data.xml.zip", r"%APPDATA%\Vantrel\options.xml",
                      r"%LOCALAPPDATA%\Vantrel\history.db"):
            self.assertIn(shown, page)

    # --- completions ---

    def test_shells_read_the_completions(self):
        for shell, check in (("bash", "-n"), ("zsh", "-n"), ("fish", "--no-execute")):
            if shutil.which(shell):
                process = run([shell, check, self.save(shell)])
                self.assertEqual((process.returncode, process.stdout, process.stderr), (OK, b"", b""), shell)

    def test_every_name_is_completed(self):
        expected = Names().completed
        script = f'source {self.save("bash")}; COMP_WORDS=(vantrel --) COMP_CWORD=1\n_vantrel vantrel -- vantrel 2>&-\n'
        process = run(["bash", "-c", script + 'printf "%s\\n" "${COMPREPLY[@]}"'])
        self.assertEqual(sorted(process.stdout.decode().split()), sorted(expected))
        self.assertEqual(sorted(re.findall(r"(?m)^    '\*(--\w[\w-]*)=?\[", help_on("zsh"))), sorted(expected))
        if shutil.which("fish"):
            self.assertEqual({re.match(r"[^=\t]*", line)[0] for line in self.fish("vantrel --")}, expected)

    def make_files(self):
        for name in ("folder one", "folder two", "other"):
            (self.folder / name).mkdir()
        (self.folder / "food.xml").touch()

    def fish(self, line):
        environment = {**os.environ, "HOME": str(self.folder), "XDG_CONFIG_HOME": str(self.folder)}
        process = run(["fish", "-c", f"source {self.save('fish')}; complete -C '{line}'"], cwd=self.folder, env=environment)
        self.assertEqual((process.returncode, process.stderr), (OK, b""), line)
        return process.stdout.decode().splitlines()

    @unittest.skipUnless(shutil.which("fish"), "fish is not installed")
    def test_fish_completes_values(self):
        self.make_files()
        for line, expected in (("--sizeun", ["--SizeUnit"]), ("--SizeUnit ", ["auto", "B", "GB", "KB", "MB", "TB"]),
                               ("--sortby la", ["lastaccess", "lastchange"]), ("--sortby name,", ["name,ascending",
                                                                                                 "name,descending"]),
                               ("--usecolumns size;ful", ["size;fullpath"]), ("--usecolumns size,ful", ["size,fullpath"]), ("--KeepFiles=f", ["--KeepFiles=false"]),
                               ("--csv foo", ["food.xml"]), ("--scan foo", []), ("oth", ["other/"]), ("--title ot", []),
                               ("--help opti", ["options"]), ("--sortby=name,d", ["--sortby=name,descending"])):
            # A ";" ends a command unless it is quoted.
            completed = [text.split("\t")[0].replace("\\", "") for text in self.fish("vantrel " + line.replace(";", "\\\\;"))]
            self.assertEqual(completed, expected, line)

    # What Tab makes of a line in bash, and in zsh where that differs ("": not tried). There names that want a value end in "=",
    # values go by the exact name, and files do where no folder fits.
    COMPLETED = (
        ("--filesi", "--filesintree ", None),
        ("--cs", "--csv", "--csv="),
        ("--maximumt", "--MaximumThreads ", "--MaximumThreads="),
        ("--SizeUnit g", "--SizeUnit GB ", None),
        ("--SizeUnit=k", "--SizeUnit=KB ", None),
        ("--sizeunit t", "--sizeunit TB ", ""),
        ("--sortby la", "--sortby last", None),
        ("--sortby lastch", "--sortby lastchange ", "--sortby lastchange,"),
        ("--sortby name,d", "--sortby name,descending ", None),
        ('--usecolumns "size;full', '--usecolumns "size;fullpath"', '--usecolumns "size;fullpath'),
        ("--usecolumns size\\;full", "--usecolumns size\\;fullpath", None),
        ("--usecolumns size,name,full", "--usecolumns size,name,fullpath", None),
        ("--keepfiles f", "--keepfiles false ", ""),
        ("--KeepFiles fold", "--KeepFiles folder\\ ", ""),
        ("--help opti", "--help options ", None),
        ("--help maximumt", "--help MaximumThreads ", ""),
        ("--csv food", "--csv food.xml ", None),
        ("--scan food", "--scan food", "--scan food.xml "),
        ("--scan oth", "--scan other/", None),
        ("--date oth", "--date other/", None),
        ("--title oth", "--title oth", None),
        ("folder\\ o", "folder\\ one/", None),
    )

    def complete(self, shell, line):
        """The line after Tab. Ctrl+G is bound to show it and to begin a new one."""
        shell.send(f"vantrel {line}\t\x07")
        return shell.wait_for(r"<vantrel (.*?)>").rstrip("\n")

    def test_bash_completes(self):
        self.make_files()
        with Shell(["bash", "--norc", "--noprofile", "-i"], self.folder) as shell:
            shell.send(f"bind 'set bell-style none'; bind -x '\"\\C-g\": printf \"<%s>\" \"$READLINE_LINE\"; READLINE_LINE='; "
                       f"source {self.save('bash')}; echo rea''dy\n")
            shell.wait_for("(ready)")
            for line, expected, _ in self.COMPLETED:
                self.assertEqual(self.complete(shell, line), expected, line)

    @unittest.skipUnless(shutil.which("zsh"), "zsh is not installed")
    def test_zsh_completes(self):
        self.make_files()
        with Shell(["zsh", "-f", "-i"], self.folder) as shell:
            shell.send("autoload -U compinit; compinit -u -D; unsetopt beep prompt_sp; "
                       "show() { zle -I; print -rn -- \"<$BUFFER>\"; BUFFER= }; zle -N show; bindkey '^G' show; "
                       f"source {self.save('zsh')}; echo rea''dy\n")
            shell.wait_for("(ready)")
            for line, in_bash, in_zsh in self.COMPLETED:
                if in_zsh != "":
                    self.assertEqual(self.complete(shell, line), in_zsh or in_bash, line)


class Shell:
    """An interactive shell on a terminal of its own."""

    def __init__(self, command, folder):
        environment = {name: value for name, value in os.environ.items() if name not in ("INPUTRC", "ENV", "BASH_ENV")}
        environment.update(TERM="dumb", HOME=str(folder), PS1="> ", LC_ALL="C.UTF-8", COLUMNS="500", INPUTRC="/dev/null")
        self.master, slave = pty.openpty()
        self.process = subprocess.Popen(command, stdin=slave, stdout=slave, stderr=slave, cwd=folder, env=environment,
                                        start_new_session=True)
        os.close(slave)
        self.seen = ""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        os.close(self.master)

    def send(self, text):
        os.write(self.master, text.encode())

    def wait_for(self, pattern):
        """What the pattern's group matches in the output, which is then done with."""
        end = time.monotonic() + TIMEOUT
        while not (match := re.search(pattern, self.seen)):
            if not select.select([self.master], [], [], max(0, end - time.monotonic()))[0]:
                raise TimeoutError(f"{pattern} did not come; the shell wrote {self.seen!r}")
            self.seen += os.read(self.master, 65536).decode(errors="replace")
        self.seen = self.seen[match.end():]
        return match[1]


if __name__ == "__main__":
    unittest.main()
