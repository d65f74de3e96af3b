"""A system that holds next to nothing, to try packages in: Debian's smallest, as debootstrap makes it, with a few programs
that look at what packages bring. Needs root and the network.

The first run makes it and keeps it below build/; each BareSystem is a copy of it."""

import os
import pathlib
import shutil
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).parents[2]
# Shells with their completions, man, and what a desktop asks about types of files.
TOOLS = "bash-completion zsh fish man-db desktop-file-utils shared-mime-info libglib2.0-bin"
# /proc and /dev are mounted in a name space of their own, so that they are gone when the command ends, and so is all that it started.
ENTER = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "sh", "-ec",
         'mount -t proc proc "$0/proc"; mount --bind /dev "$0/dev"; exec chroot "$0" sh -c "$1"']
TIMEOUT = 900  # only there to catch a hang


def enter(folder, script, **variables):
    """Runs a shell script in a system. Returns its exit code and all that it wrote."""
    environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8", "TERM": "dumb",
                   "DEBIAN_FRONTEND": "noninteractive", **variables}
    run = subprocess.run([*ENTER, str(folder), script], env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, text=True, errors="backslashreplace", timeout=TIMEOUT, check=False)
    return run.returncode, run.stdout


def entered(folder, script, **variables):
    """What a script wrote. OSError with it if the script failed."""
    code, said = enter(folder, script, **variables)
    if code != 0:
        raise OSError(f"{script}: exit code {code}\n{said[-4000:]}")
    return said


def sources():
    """Where this system gets its packages from: the address and the release of the first source."""
    listing = subprocess.run(["apt-get", "indextargets", "--format", "$(SITE) $(CODENAME)", "Created-By: Packages"], check=True,
                             capture_output=True, text=True).stdout
    return listing.splitlines()[0].split()


def made_system():
    """The folder of the system that others are copied from."""
    address, release = sources()
    folder = ROOT / "build/bare" / release
    if not (folder / "ready").exists():
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        subprocess.run(["debootstrap", "--variant=minbase", release, str(folder), address], check=True,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        (folder / "etc/apt/sources.list").unlink(missing_ok=True)
        for name in ("sources.list", "sources.list.d", "apt.conf.d"):
            subprocess.run(["cp", "-aT", f"/etc/apt/{name}", folder / "etc/apt" / name], check=False, stderr=subprocess.DEVNULL)
        # Nothing is lost when it is cut off, and packages are unpacked several times as fast.
        (folder / "etc/dpkg/dpkg.cfg.d/unsafe-io").write_text("force-unsafe-io\n")
        entered(folder, f"apt-get update && apt-get install -y --no-install-recommends {TOOLS} && apt-get clean")
        (folder / "ready").touch()
    entered(folder, "apt-get update")
    return folder


class BareSystem:
    """A copy of the bare system in a temporary folder, .folder."""

    def __init__(self, base):
        self.parent = tempfile.mkdtemp(prefix="vantrel-bare-")
        self.folder = pathlib.Path(self.parent, "system")
        subprocess.run(["cp", "-a", base, self.folder], check=True)
        (self.folder / "ready").unlink()
        os.chmod(self.parent, 0o755)

    def remove(self):
        subprocess.run(["rm", "-rf", "--one-file-system", self.parent], check=True)

    def run(self, script, **variables):
        return entered(self.folder, script, **variables)
