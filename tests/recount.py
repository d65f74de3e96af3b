"""Counts a tree a second time, slowly and plainly, as the reference that the program's totals are held against.

Usage: recount.py DIR. Prints the totals as JSON.

What counts: every entry below DIR, DIR itself not. Whatever is not a folder is a file: symbolic links, of their own length
and never followed, pipes, sockets and devices as well. Kernel pseudo file systems are listed, but not entered.

A folder met again through a bind mount is listed, but its content counts once. Which of its names keeps the content: the one
that leads through no mount point below DIR, or else the mount point first in order of depth, then of path.
"""

import errno
import functools
import json
import os
import pwd
import resource
import stat
import sys

PSEUDO_FILE_SYSTEMS = set(
    """proc sysfs cgroup cgroup2 cpuset devpts debugfs tracefs securityfs bpf pstore mqueue hugetlbfs configfs fusectl
    binfmt_misc autofs efivarfs selinuxfs smackfs nsfs rpc_pipefs nfsd resctrl fuse.lxcfs""".split()
)


def mounts():
    """Yields (device number, mount point as bytes, type) of every mount this process sees."""
    with open("/proc/self/mountinfo", "rb") as lines:
        for line in lines:
            before, after = line.rstrip(b"\n").split(b" - ", 1)
            fields = before.split(b" ")
            major, minor = map(int, fields[2].split(b":"))
            # Blanks, tabs, line breaks and backslashes stand there as three octal digits.
            point = fields[4].decode("unicode_escape").encode("latin-1")
            yield os.makedev(major, minor), point, after.split(b" ")[0].decode()


def mount_points_below(path):
    """A tree of dictionaries from name to name; one that holds None is a mount point. Spares a path per folder."""
    tree = {}
    prefix = os.path.join(path, b"")
    for _, point, _ in mounts():
        if point.startswith(prefix) and point != prefix:
            node = tree
            for name in point[len(prefix) :].split(b"/"):
                node = node.setdefault(name, {})
            node[None] = point
    return tree


def extension_of(name):
    """From the last dot to the end, in lower case; empty without a dot, or with nothing behind it."""
    _, dot, extension = os.fsdecode(name).rpartition(".")
    return "." + extension.lower() if dot and extension else ""


@functools.cache
def owner_of(uid):
    try:
        return pwd.getpwuid(uid).pw_name
    except KeyError:
        return str(uid)


class Totals:
    def __init__(self):
        self.files = self.folders = self.size = self.allocated = 0
        self.unreadable_folders = 0  # cannot be opened or listed
        self.unsearchable_folders = 0  # can be listed, but its entries cannot be asked
        self.unasked_files = self.unasked_folders = 0  # the entries of those; not among files and folders

    def add_file(self, status):
        blocks = 512 * status.st_blocks
        # Each name bears its share of what all names of the file share.
        self.files += 1
        self.size += status.st_size
        self.allocated += blocks // status.st_nlink if status.st_nlink >= 2 else blocks


class Handle:
    """A folder's handle, open for as long as a child has still to be opened through it."""

    def __init__(self, number):
        self.number = number

    def __del__(self):
        os.close(self.number)


class Folder:
    """A folder still to be read: a name in its parent, so that no path can be too long."""

    def __init__(self, parent, name, status, points, first_level):
        self.parent, self.name, self.status, self.points, self.first_level = parent, name, status, points, first_level


class Recount:
    def __init__(self, path):
        self.path = os.path.realpath(os.fsencode(path))
        self.pseudo_devices = {device for device, _, kind in mounts() if kind in PSEUDO_FILE_SYSTEMS}
        self.total = Totals()
        self.first_levels = {}  # name of a folder directly below DIR -> its totals, itself not counted
        self.entered = set()
        self.to_read = []
        self.mounted = []  # read last, so that a folder's own place is known before any other road to it

    def run(self):
        top = Folder(None, self.path, os.stat(self.path), mount_points_below(self.path), None)
        if not stat.S_ISDIR(top.status.st_mode):
            raise NotADirectoryError(errno.ENOTDIR, os.strerror(errno.ENOTDIR), self.path)
        self.to_read.append(top)
        while self.to_read or self.mounted:
            if not self.to_read:
                self.mounted.sort(key=lambda folder: (folder.points[None].count(b"/"), folder.points[None]), reverse=True)
                self.to_read.append(self.mounted.pop())
            self.read(self.to_read.pop())
        return self

    def all_totals(self, first_level):
        return (self.total,) if first_level is None else (self.total, self.first_levels[first_level])

    def read(self, folder):
        totals = self.all_totals(folder.first_level)
        identity = (folder.status.st_dev, folder.status.st_ino)
        if folder.status.st_dev not in self.pseudo_devices and identity not in self.entered:
            self.entered.add(identity)
            self.enter(folder, totals)

    @staticmethod
    def count(totals, field):
        for total in totals:
            setattr(total, field, getattr(total, field) + 1)

    def enter(self, folder, totals):
        try:
            flags = os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW
            handle = Handle(os.open(folder.name, flags, dir_fd=folder.parent.number if folder.parent else None))
            with os.scandir(handle.number) as listing:
                entries = [(os.fsencode(entry.name), entry.is_dir(follow_symlinks=False)) for entry in listing]
        except FileNotFoundError:
            return
        except OSError as error:
            if error.errno in (errno.EMFILE, errno.ENFILE):
                raise
            self.count(totals, "unreadable_folders")
            return
        unasked = [is_folder for name, is_folder in entries if not self.add_entry(folder, handle, name)]
        for is_folder in unasked:
            self.count(totals, "unasked_folders" if is_folder else "unasked_files")
        if unasked:
            self.count(totals, "unsearchable_folders")

    def add_entry(self, folder, handle, name):
        """Returns false for an entry that cannot be asked."""
        try:
            status = os.stat(name, dir_fd=handle.number, follow_symlinks=False)
        except FileNotFoundError:
            return True
        except PermissionError:
            return False
        totals = self.all_totals(folder.first_level)
        if not stat.S_ISDIR(status.st_mode):
            for total in totals:
                total.add_file(status)
            return True
        for total in totals:
            total.folders += 1
        first_level = folder.first_level
        if folder.parent is None:
            first_level = name
            self.first_levels[name] = Totals()
        points = folder.points.get(name, {}) if folder.points else {}
        child = Folder(handle, name, status, points, first_level)
        (self.mounted if None in points else self.to_read).append(child)
        return True

    def as_dictionary(self):
        """Names are text in which each byte that is not UTF-8 stands as U+DC00 + byte."""
        first_levels = {os.fsdecode(name): vars(totals) for name, totals in self.first_levels.items()}
        return vars(self.total) | {"first_levels": first_levels}


def recount(path):
    """Returns the totals of a tree as a dictionary. Raises OSError when path is not a folder."""
    limit = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (limit[1], limit[1]))
    return Recount(path).run().as_dictionary()


def are_related(one, other):
    return os.path.commonpath([one, other]) in (one, other)


def recount_following(path):
    """The same with links followed, without first levels: a link to a folder that neither holds nor lies in DIR or the
    link's own folder is that folder once more, and each folder's content counts once. Paths are real ones throughout."""
    top = os.path.realpath(os.fsencode(path))
    totals, entered, to_read = Totals(), set(), [top]
    while to_read:
        folder = to_read.pop()
        status = os.stat(folder)
        if (status.st_dev, status.st_ino) in entered:
            continue
        entered.add((status.st_dev, status.st_ino))
        for name in os.listdir(folder):
            place = os.path.join(folder, name)
            target = os.path.realpath(place)
            status = os.lstat(place)
            is_link = stat.S_ISLNK(status.st_mode)
            if is_link and (not os.path.isdir(target) or are_related(target, top) or are_related(target, folder)):
                totals.add_file(status)
            elif is_link or stat.S_ISDIR(status.st_mode):
                totals.folders += 1
                to_read.append(target)
            else:
                totals.add_file(status)
    return vars(totals)


if __name__ == "__main__":
    json.dump(recount(sys.argv[1]), sys.stdout)
