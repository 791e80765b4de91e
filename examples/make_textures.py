#!/usr/bin/env python3
"""Makes the textures of the example level: small PNG files.

    make_textures.py [FOLDER]        (by default the folder "textures" beside this script)

Each is 64 pixels wide and high, repeats without a seam and has few colours, which chance spreads
from a fixed start.
"""

import pathlib
import random
import struct
import sys
import zlib

SIZE = 64
CLEAR = (0, 0, 0, 0)


def png(pixels):
    """A PNG file of rows of (r, g, b, a)."""

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    rows = b"".join(b"\0" + bytes(byte for pixel in row for byte in pixel) for row in pixels)
    header = struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0)
    return (
        b"\x89PNG\r\n\x1a\n"
        + chunk(b"IHDR", header)
        + chunk(b"IDAT", zlib.compress(rows, 9))
        + chunk(b"IEND", b"")
    )


def shade(colour, percent):
    return tuple(max(0, min(255, part * percent // 100)) for part in colour) + (255,)


class Grain:
    """Percentages for stones by their places, and for pixels."""

    def __init__(self, name, spread):
        self._random = random.Random(name)
        self._spread = spread
        self._stones = {}

    def stone(self, *place):
        if place not in self._stones:
            self._stones[place] = self._random.randrange(-self._spread, self._spread + 1)
        return self._stones[place]

    def pixel(self):
        return self._random.choice((-4, 0, 0, 0, 4))


def courses(name, colour, joint, width, height, spread=9):
    """Stones of that size in courses, every other one shifted by half a stone."""
    grain = Grain(name, spread)

    def at(x, y):
        course = y // height
        x = (x + course % 2 * (width // 2)) % SIZE
        if x % width == 0 or y % height == 0:
            return shade(joint, 100 + grain.pixel())
        edge = 8 if x % width == 1 or y % height == 1 else 0
        return shade(colour, 100 + grain.stone(x // width, course) + edge + grain.pixel())

    return at


def planks(x, y, grain=Grain("planks", 10)):
    if x % 16 == 0:
        return shade((70, 46, 24), 100)
    fibre = grain.stone(x, y // 16) // 2
    nail = x % 16 in (4, 12) and y in (5, 37)
    return shade((90, 70, 50) if nail else (158, 110, 62), 100 + grain.stone(x // 16) + fibre)


def roof(x, y, grain=Grain("roof", 9)):
    """Rows of tiles with round lower ends."""
    row = y // 16
    across = (x + row % 2 * 8) % SIZE
    drop = (across % 16 - 8) ** 2 // 12
    below = y % 16 > 14 - drop
    return shade((150, 62, 44), (62 if below else 96 + y % 16) + grain.stone(across // 16, row))


def fence(x, y):
    """Diagonal wires, clear in between."""
    if (x + y) % 16 < 2 or (x - y) % 16 < 2:
        return (150, 156, 160, 255)
    return CLEAR


def glass(x, y):
    """A pane in a frame, with a streak of light."""
    if x < 3 or y < 3 or x >= SIZE - 3 or y >= SIZE - 3:
        return (96, 104, 110, 255)
    return (214, 232, 240, 130) if (x + y) % 64 < 12 else (150, 190, 210, 96)


TEXTURES = {
    "brick01": courses("brick", (166, 84, 58), (176, 166, 150), 16, 8),
    "paving": courses("paving", (150, 150, 146), (104, 104, 100), 32, 32, 5),
    "sandstone": courses("sandstone", (204, 178, 126), (160, 138, 98), 32, 16, 6),
    "planks": planks,
    "rooftiles": roof,
    "wire fence": fence,
    "glass": glass,
}


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
    if len(sys.argv) < 2:
        folder /= "textures"
    folder.mkdir(exist_ok=True)
    for name, at in TEXTURES.items():
        pixels = [[at(x, y) for x in range(SIZE)] for y in range(SIZE)]
        (folder / f"{name}.png").write_bytes(png(pixels))


if __name__ == "__main__":
    main()
