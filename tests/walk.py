"""Trees as Python sees them, with all that exports tell of a folder or a file."""

import os
import stat

import recount

FOLDERS, GROUPS, FILES = 1, 2, 4
FILES_NODE = b"[Files]"


class Node:
    """A folder, the files of one as a group, or a file, with all beneath it."""

    def __init__(self, name, path, parent, status=None):
        self.name, self.path, self.parent = name, path, parent
        self.kind = FOLDERS
        self.size = self.allocated = self.files = self.folders = 0
        self.lastchange = status.st_mtime_ns if status else 0
        self.lastaccess = status.st_atime_ns if status else 0
        self.owner = recount.owner_of(status.st_uid) if status else ""
        self.below, self.own_files = [], []

    def take(self, other):
        """Counts in what lies beneath."""
        self.size += other.size
        self.allocated += other.allocated
        self.files += other.files
        self.folders += other.folders + (other.kind == FOLDERS)
        self.lastchange = max(self.lastchange, other.lastchange)
        self.lastaccess = max(self.lastaccess, other.lastaccess)

    @property
    def depth(self):
        return self.parent.depth + 1 if self.parent else 0

    @property
    def place(self):
        """The folder around it, which the group of files is not."""
        return self.parent.parent if self.parent and self.parent.kind == GROUPS else self.parent

    def top(self):
        node = self
        while node.parent:
            node = node.parent
        return node

    def group(self):
        """What stands for the files of a folder that holds folders too."""
        node = Node(FILES_NODE, self.path + b"/" + FILES_NODE, self)
        node.kind = GROUPS
        for file in self.own_files:
            node.take(file)
        node.own_files = self.own_files
        return node


def file_node(name, parent, status):
    node = Node(name, parent.path + b"/" + name, parent, status)
    node.kind, node.files, node.size = FILES, 1, status.st_size
    node.allocated = 512 * status.st_blocks // max(1, status.st_nlink)
    return node


def walk(top):
    """By handles, since paths may be too long, and without touching the dates of last access."""
    flags = os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW | os.O_NOATIME

    def visit(handle, node):
        for name in map(os.fsencode, os.listdir(handle)):
            status = os.stat(name, dir_fd=handle, follow_symlinks=False)
            if stat.S_ISDIR(status.st_mode):
                child = Node(name, node.path + b"/" + name, node, status)
                inner = os.open(name, flags, dir_fd=handle)
                visit(inner, child)
                os.close(inner)
                node.below.append(child)
            else:
                child = file_node(name, node, status)
                node.own_files.append(child)
            node.take(child)

    handle = os.open(top, flags)
    node = Node(os.fsencode(top), os.fsencode(top), None, os.fstat(handle))
    visit(handle, node)
    os.close(handle)
    return node


def folders_of(top):
    """The folder and all beneath it."""
    folders = [top]
    for folder in folders:
        folders += folder.below
    return folders
