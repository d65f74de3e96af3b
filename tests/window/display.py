"""A display of its own for a test, and what is seen on it.

As a program it shows one: display.py PICTURE SECONDS COMMAND..., starts the command on a display and writes what is seen
after so many seconds as a PNG file."""

import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import time
import zlib


class Display:
    """An X server that draws into a file. The environment for programs on it is in .environment."""

    def __init__(self, width=1280, height=900):
        self.folder = tempfile.TemporaryDirectory(prefix="vantrel-display-")
        reader, writer = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{width}x{height}x24", "-fbdir", self.folder.name, "-nolisten", "tcp"],
            pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as number:
            self.environment = {"DISPLAY": ":" + number.readline().strip()}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()
        self.folder.cleanup()

    def grab(self):
        """Width, height, and the pixels row by row as bytes of red, green and blue. The file has the form of xwd."""
        data = (pathlib.Path(self.folder.name) / "Xvfb_screen0").read_bytes()
        header = struct.unpack(">25I", data[:100])
        size, width, height, line, colors = header[0], header[4], header[5], header[12], header[19]
        start = size + colors * 12
        rows = []
        for y in range(height):
            row = data[start + y * line:start + y * line + width * 4]
            pixels = bytearray(width * 3)
            pixels[0::3], pixels[1::3], pixels[2::3] = row[2::4], row[1::4], row[0::4]
            rows.append(bytes(pixels))
        return width, height, b"".join(rows)


def colors(pixels):
    """How often each colour is seen."""
    counts = {}
    for i in range(0, len(pixels), 3):
        counts[pixels[i:i + 3]] = counts.get(pixels[i:i + 3], 0) + 1
    return counts


def write_png(path, width, height, pixels):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + pixels[y * width * 3:(y + 1) * width * 3] for y in range(height))
    pathlib.Path(path).write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
                                   chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def read_png(path):
    """Width, height and pixels of a PNG file as this program writes them: rows without a filter, or as differences from
    the left or from above."""
    data = pathlib.Path(path).read_bytes()
    width, height = struct.unpack(">II", data[16:24])
    packed, at = b"", 8
    while at < len(data):
        length, = struct.unpack(">I", data[at:at + 4])
        if data[at + 4:at + 8] == b"IDAT":
            packed += data[at + 8:at + 8 + length]
        at += 12 + length
    raw, line = zlib.decompress(packed), width * 3
    rows, above = [], bytes(line)
    for y in range(height):
        kind, row = raw[y * (line + 1)], bytearray(raw[y * (line + 1) + 1:(y + 1) * (line + 1)])
        if kind == 1:
            for x in range(3, line):
                row[x] = (row[x] + row[x - 3]) & 255
        elif kind == 2:
            row = bytearray((a + b) & 255 for a, b in zip(row, above))
        elif kind != 0:
            raise ValueError(f"{path}: a filter that is not known here")
        above = bytes(row)
        rows.append(above)
    return width, height, b"".join(rows)


if __name__ == "__main__":
    with Display() as display:
        process = subprocess.Popen(sys.argv[3:], env={**os.environ, **display.environment})
        time.sleep(float(sys.argv[2]))
        write_png(sys.argv[1], *display.grab())
        process.kill()
        process.wait()
