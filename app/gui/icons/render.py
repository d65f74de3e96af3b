"""Makes the bitmaps of the program's icon, vantrel-SIZE.png and vantrel.ico, from vantrel.svg beside this script.

The drawing holds rounded rectangles alone, so no other program is needed. Run it after a change of the drawing; a test
finds bitmaps that are out of date.
"""

import functools
import pathlib
import struct
import zlib
from xml.etree import ElementTree

FOLDER = pathlib.Path(__file__).resolve().parent
PNG_SIZES = (16, 32, 48, 256)
ICO_SIZES = (16, 24, 32, 48, 64, 256)
SAMPLES = 4  # in each direction of a pixel


def rectangles():
    drawing = ElementTree.parse(FOLDER / "vantrel.svg").getroot()
    for rect in drawing.iter("{http://www.w3.org/2000/svg}rect"):
        box = [float(rect.get(key)) for key in ("x", "y", "width", "height", "rx")]
        yield box, tuple(bytes.fromhex(rect.get("fill")[1:]))


def covers(box, x, y):
    left, top, width, height, radius = box
    if not (left <= x <= left + width and top <= y <= top + height):
        return False
    dx = max(left + radius - x, x - (left + width - radius), 0)
    dy = max(top + radius - y, y - (top + height - radius), 0)
    return dx * dx + dy * dy <= radius * radius


@functools.lru_cache
def render(size):
    """Pixels row by row as red, green, blue and alpha."""
    shapes, scale, step = list(rectangles()), 256 / size, 256 / size / SAMPLES
    pixels = bytearray()
    for row in range(size):
        for column in range(size):
            sums, seen = [0, 0, 0], 0
            for k in range(SAMPLES * SAMPLES):
                x = column * scale + (k % SAMPLES + 0.5) * step
                y = row * scale + (k // SAMPLES + 0.5) * step
                color = next((fill for box, fill in reversed(shapes) if covers(box, x, y)), None)
                if color:
                    seen += 1
                    sums = [a + b for a, b in zip(sums, color)]
            pixels += bytes([round(value / seen) if seen else 0 for value in sums] + [round(255 * seen / SAMPLES ** 2)])
    return bytes(pixels)


def png(size):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    pixels = render(size)
    rows = b"".join(b"\0" + pixels[y * size * 4:(y + 1) * size * 4] for y in range(size))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def bitmap(size):
    """The form in which an icon file holds its small pictures: colours from the bottom row, then an empty mask."""
    pixels = render(size)
    rows = [pixels[y * size * 4:(y + 1) * size * 4] for y in range(size - 1, -1, -1)]
    colors = b"".join(row[i + 2:i + 3] + row[i + 1:i + 2] + row[i:i + 1] + row[i + 3:i + 4] for row in rows
                      for i in range(0, len(row), 4))
    mask = bytes((size + 31) // 32 * 4 * size)
    return struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, len(colors) + len(mask), 0, 0, 0, 0) + colors + mask


def ico():
    images = [png(size) if size == 256 else bitmap(size) for size in ICO_SIZES]
    entries, at = b"", 6 + 16 * len(images)
    for size, image in zip(ICO_SIZES, images):
        entries += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(image), at)
        at += len(image)
    return struct.pack("<HHH", 0, 1, len(images)) + entries + b"".join(images)


def files():
    """All bitmaps, by name."""
    return {**{f"vantrel-{size}.png": png(size) for size in PNG_SIZES}, "vantrel.ico": ico()}


def unpacked(data):
    """The rows of the PNG picture in a file, alone or in an icon. Another version of the library packs them in another way."""
    at = data.index(b"IDAT")
    length, = struct.unpack(">I", data[at - 4:at])
    return zlib.decompress(data[at + 4:at + 4 + length])


def stale():
    """The names of the bitmaps that do not show the drawing."""
    return [name for name, data in files().items()
            if not (FOLDER / name).exists() or unpacked((FOLDER / name).read_bytes()) != unpacked(data)]


if __name__ == "__main__":
    for name, data in files().items():
        (FOLDER / name).write_bytes(data)
