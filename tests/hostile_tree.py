#!/usr/bin/env python3
"""Makes a tree of everything that goes wrong in real ones, and removes one. The same call gives the same tree."""

import argparse
import os
import socket
import stat
import subprocess
import sys

DATE = 1_700_000_000
LONG_CHAIN_FOLDERS = 400
LONG_CHAIN_NAME = b"long-" + b"x" * 55

HOSTILE_NAMES = [
    # Not UTF-8: lone bytes, truncated sequences, overlong forms, encoded surrogates, beyond U+10FFFF.
    b"lone-\xff",
    b"lone-\x80",
    b"\xfe",
    b"latin1-caf\xe9.txt",
    b"truncated-\xc3",
    b"truncated-\xe2\x82",
    b"truncated-\xf0\x9f\x98.txt",
    b"overlong-\xc0\xaf",
    b"surrogate-\xed\xa0\x80",
    b"surrogate-\xed\xb3\xbf",
    b"surrogate-pair-\xed\xa0\xbd\xed\xb8\x80",
    b"beyond-\xf4\x90\x80\x80",
    # Names that are UTF-8, and easily mishandled.
    "astral-\U0001f600.txt".encode(),
    "noncharacter-\ufffe\uffff".encode(),
    "bom-\ufeff".encode(),
    "composed-\u00e9".encode(),
    "decomposed-e\u0301".encode(),
    "rtl-\u202etxt.exe".encode(),
    "zero-width-\u200b".encode(),
    "line-separator-\u2028".encode(),
    "next-line-\u0085".encode(),
    "csi-\u009b31m".encode(),
    # Control characters and escape sequences.
    b"line\nbreak",
    b"carriage\rreturn",
    b"tab\tstop",
    b"bell\a",
    b"delete\x7f",
    b"\x01\x02\x1f",
    b"colour-\033[31mred\033[0m",
    b"title-\033]0;owned\a",
    b"clear-\033[2J",
    # Quotes, markup, formulas, separators of other systems.
    b'double"quote',
    b"single'quote",
    b"comma,semicolon;",
    b"<markup>&amp;]]>",
    b"=1+1",
    b"+1",
    b"-rf",
    b"--help",
    b"@SUM(A1)",
    b"%s%n",
    b"{0}",
    b"back\\slash",
    b"back\\",
    b"colon:stream",
    b"wild*card?[a-z]",
    b"$HOME`id`",
    # Dots and blanks.
    b" ",
    b" leading",
    b"trailing ",
    b"trailing.",
    b"trailing..",
    b"...",
    b".hidden",
    b".hidden.txt",
    b"no-break\xc2\xa0",
    b"CON",
    b"nul.txt",
    b"case",
    b"CASE",
    b"[Files]",
    b"MANY.Dots.tar.GZ",
    # As long as a name can be: one byte, two bytes and undecodable bytes per character.
    b"n" * 255,
    "\u00e9".encode() * 127,
    b"\xff" * 255,
    b"e." + b"x" * 253,
]


class Here:
    """Makes things below one open folder; nothing needs a path, so that no path can be too long."""

    def __init__(self, handle):
        self.handle = handle

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.utime(self.handle, (DATE, DATE))
        os.close(self.handle)

    def folder(self, name):
        os.mkdir(name, 0o755, dir_fd=self.handle)
        return Here(open_folder(name, self.handle))

    def file(self, name, size=0, written=None, date=DATE):
        """A file of that size; only the first written bytes are written, the rest is a hole."""
        written = size if written is None else written
        handle = os.open(name, os.O_CREAT | os.O_EXCL | os.O_WRONLY, 0o644, dir_fd=self.handle)
        try:
            if written:
                os.write(handle, b"v" * written)
            os.ftruncate(handle, size)
            os.utime(handle, (date, date))
        finally:
            os.close(handle)

    def link(self, name, existing, source=None):
        source = source or self
        os.link(existing, name, src_dir_fd=source.handle, dst_dir_fd=self.handle, follow_symlinks=False)

    def symlink(self, name, target):
        os.symlink(target, name, dir_fd=self.handle)
        os.utime(name, (DATE, DATE), dir_fd=self.handle, follow_symlinks=False)


def open_folder(name, parent=None):
    return os.open(name, os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW, dir_fd=parent)


def make_names(root):
    with root.folder(b"names") as names:
        for size, name in enumerate(HOSTILE_NAMES, 1):
            names.file(name, size)
    # The same names as folders, each with a file inside: a name that is mangled can be listed, but not entered.
    with root.folder(b"named-folders") as folders:
        for size, name in enumerate(HOSTILE_NAMES, 1):
            with folders.folder(name) as folder:
                folder.file(b"inside.txt", size)


def make_chain(root, top, name, levels, bottom_size):
    """A chain of levels folders, walked handle by handle; the file at the bottom is the newest of the tree."""
    current = root.folder(top)
    for _ in range(levels):
        with current as above:
            current = above.folder(name)
    with current as bottom:
        bottom.file(b"bottom.txt", bottom_size, date=DATE + bottom_size)


def make_many(root, count):
    with root.folder(b"many") as many:
        for number in range(count):
            many.file(b"file-%d.%d" % (number, number % 10), number % 3)


def make_links(root):
    with root.folder(b"links") as links, links.folder(b"a") as first, links.folder(b"b") as second:
        for count in (2, 3, 4, 8):
            # Sizes whose blocks do not divide evenly among the names.
            within = b"within-%d-" % count
            links.file(within + b"0", 4096 * 5)
            for number in range(1, count):
                links.link(within + b"%d" % number, within + b"0")
            across = b"across-%d-" % count
            first.file(across + b"0", 4096 * 7 + 1)
            for number in range(1, count):
                (first, second)[number % 2].link(across + b"%d" % number, across + b"0", first)
        # One inode with names in a folder and in the folder above.
        first.file(b"below", 8193)
        links.link(b"above", b"below", first)
        first.symlink(b"linked-symlink", b"across-2-0")
        second.link(b"linked-symlink", b"linked-symlink", first)
        links.file(b"shared-with-outside", 12289)
    # When only this folder is scanned, the link count promises a second name that the scan never meets.
    with root.folder(b"links-outside") as outside:
        outside.link(b"outside", b"links/shared-with-outside", root)


def make_sizes(root):
    with root.folder(b"sizes") as sizes:
        for size in (0, 1, 511, 512, 513, 4095, 4096, 4097):
            sizes.file(b"size-%d.bin" % size, size)
    with root.folder(b"sparse") as sparse:
        sparse.file(b"all-hole", 1 << 20, written=0)
        sparse.file(b"head-then-hole", 10 << 20, written=4096)
        sparse.file(b"terabyte", 1 << 40, written=1)


def make_symlinks(root):
    with root.folder(b"symlinks") as links:
        links.file(b"target.txt", 1000)
        links.symlink(b"self", b"self")
        links.symlink(b"mutual-1", b"mutual-2")
        links.symlink(b"mutual-2", b"mutual-1")
        links.symlink(b"parent", b"..")
        links.symlink(b"here", b".")
        links.symlink(b"dangling", b"nowhere/at/all")
        links.symlink(b"to-file", b"target.txt")
        links.symlink(b"to-folder", b"../sizes")
        links.symlink(b"outside", b"/")
        links.symlink(b"outside.txt", b"/usr")
        links.symlink(b"not-text", b"\xff\xfe")
        links.symlink(b"long-target", b"t" * 4095)
        links.symlink(b"suffix.PNG", b"target.txt")


def make_special(root):
    with root.folder(b"special") as special:
        os.mkfifo(b"pipe", 0o644, dir_fd=special.handle)
        os.mkfifo(b"pipe.txt", 0o000, dir_fd=special.handle)
        bind_socket(special.handle, b"socket")
        bind_socket(special.handle, b"socket.sock")
        for name in os.listdir(special.handle):
            os.utime(name, (DATE, DATE), dir_fd=special.handle)
    with root.folder(b"empty-folders") as empties:
        for name in (b"empty", b"empty.d"):
            empties.folder(name).__exit__()
        with empties.folder(b"nested") as nested:
            nested.folder(b"empty").__exit__()


def bind_socket(folder, name):
    # A socket's path has no *at() form and a limit of 108 bytes, so it goes through the folder's handle.
    made = socket.socket(socket.AF_UNIX)
    made.bind(b"/proc/self/fd/%d/%s" % (folder, name))
    made.close()


def make_denied(root):
    """Only effective for a user who is not root."""
    with root.folder(b"denied") as denied:
        for name in (b"unreadable", b"unsearchable", b"unlistable"):
            with denied.folder(name) as folder:
                folder.file(b"hidden.txt", 700)
                with folder.folder(b"below") as below:
                    below.file(b"deeper.txt", 800)
        # Nothing at all; names but no entry can be asked; entries but no names.
        for name, mode in ((b"unreadable", 0o000), (b"unsearchable", 0o444), (b"unlistable", 0o111)):
            os.chmod(name, mode, dir_fd=denied.handle)
        denied.file(b"unreadable-file.txt", 900)
        os.chmod(b"unreadable-file.txt", 0, dir_fd=denied.handle)


def make_mounts(root, path):
    with root.folder(b"mounts") as mounts:
        with mounts.folder(b"sibling") as sibling:
            sibling.file(b"once.txt", 5000)
            with sibling.folder(b"below") as below:
                below.file(b"also-once.txt", 6000)
        for name in (b"sibling-again", b"sibling-below-again", b"ancestor", b"proc", b"tmpfs"):
            mounts.folder(name).__exit__()
        # A file can be mounted over a file, too.
        mounts.file(b"file-again.txt")
    base = os.path.join(path, b"mounts")
    mount("--bind", os.path.join(base, b"sibling"), os.path.join(base, b"sibling-again"))
    mount("--bind", os.path.join(base, b"sibling/below"), os.path.join(base, b"sibling-below-again"))
    mount("--bind", os.path.join(base, b"sibling/once.txt"), os.path.join(base, b"file-again.txt"))
    mount("-t", "proc", "proc", os.path.join(base, b"proc"))
    mount("-t", "tmpfs", "tmpfs", os.path.join(base, b"tmpfs"))
    with Here(open_folder(os.path.join(base, b"tmpfs"))) as tmpfs:
        tmpfs.file(b"in-memory.bin", 70_000)
    # Recursive, and last, so that the loop passes through every other mount.
    mount("--rbind", path, os.path.join(base, b"ancestor"))


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def make(path, levels, many, mounts):
    os.makedirs(path, exist_ok=True)
    if os.listdir(path):
        raise SystemExit(f"hostile_tree: {os.fsdecode(path)} is not empty")
    os.umask(0o022)
    with Here(open_folder(path)) as root:
        make_names(root)
        make_chain(root, b"long-chain", LONG_CHAIN_NAME, LONG_CHAIN_FOLDERS, 123)
        make_chain(root, b"deep-chain", b"d", levels, 321)
        make_many(root, many)
        make_links(root)
        make_sizes(root)
        make_symlinks(root)
        make_special(root)
        make_denied(root)
        if mounts:
            make_mounts(root, path)


def make_readable(path):
    """A small one that everyone may read."""
    make(os.fsencode(path), levels=60, many=300, mounts=False)
    for name in os.listdir(f"{path}/denied"):
        os.chmod(f"{path}/denied/{name}", 0o755)


def remove_below(handle):
    """Empties a folder of any depth. A handle per level would run out, so the way back up is '..'."""
    os.fchmod(handle, 0o755)
    current = os.dup(handle)
    way = []
    while True:
        inner = first_folder_after_removing_files(current)
        if inner is not None:
            below = enter(current, inner)
            os.close(current)
            current = below
            way.append(inner)
            continue
        if not way:
            os.close(current)
            return
        above = os.open("..", os.O_RDONLY | os.O_DIRECTORY, dir_fd=current)
        os.close(current)
        current = above
        os.rmdir(way.pop(), dir_fd=current)


def first_folder_after_removing_files(handle):
    """Removes what is not a folder, up to the first folder, whose name it returns."""
    for name in map(os.fsencode, os.listdir(handle)):
        if stat.S_ISDIR(os.stat(name, dir_fd=handle, follow_symlinks=False).st_mode):
            return name
        os.unlink(name, dir_fd=handle)
    return None


def enter(parent, name):
    # A folder that denies everything has to be opened for its mode to be changed without following a link.
    os.chmod(name, 0o755, dir_fd=parent)
    return open_folder(name, parent)


def remove(path):
    if not os.path.lexists(path):
        return
    handle = open_folder(path)
    try:
        remove_below(handle)
    finally:
        os.close(handle)
    os.rmdir(path)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("directory", metavar="DIR")
    parser.add_argument("--levels", type=int, default=10_000, help="length of the chain of one-letter folders")
    parser.add_argument("--many", type=int, default=20_000, help="files in the folder of many files")
    parser.add_argument("--mounts", action="store_true", help="add bind mounts, a loop, proc and tmpfs; needs root")
    arguments = parser.parse_args()
    path = os.path.realpath(os.fsencode(arguments.directory))
    if arguments.mounts and os.geteuid() != 0:
        parser.error("--mounts needs root")
    make(path, arguments.levels, arguments.many, arguments.mounts)


if __name__ == "__main__":
    sys.exit(main())
