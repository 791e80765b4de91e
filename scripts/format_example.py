#!/usr/bin/env python3
"""Annotates the bytes of a small export, the example of docs/format.md.

    format_example.py MAPEXPORT [--renew]

Exports docs/format-example.scene.json, reads the file by its own description, and compares the result with
the example in docs/format.md, or with --renew writes it there. Ends with 1 when they differ.
"""

import pathlib
import struct
import subprocess
import sys
import tempfile

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
BEGIN = "<!-- format_example.py writes what follows -->\n"
END = "<!-- to here -->\n"
BYTES_IN_LINE = 16


class Annotator:
    """Reads the file from front to back; each reading adds its bytes with a comment."""

    def __init__(self, data):
        self.data = data
        self.offset = 0
        self.depth = 0
        self.lines = []

    def take(self, size, comment):
        taken = self.data[self.offset:self.offset + size]
        if len(taken) != size:
            raise ValueError(f"offset {self.offset}: {comment}: the file ends")
        for start in range(0, max(size, 1), BYTES_IN_LINE):
            part = taken[start:start + BYTES_IN_LINE].hex(" ").upper()
            text = "  " * self.depth + comment if start == 0 else ""
            self.lines.append(f"{self.offset + start:04X}  {part:<47}  {text}".rstrip())
        self.offset += size
        return taken

    def number(self, form, comment):
        size = struct.calcsize("<" + form)
        value = struct.unpack_from("<" + form, self.data, self.offset)
        shown = ", ".join(f"{v:g}" for v in value)
        self.take(size, f"{comment}: {shown}")
        return value[0]

    def text(self, comment):
        length, = struct.unpack_from("<I", self.data, self.offset)
        shown = self.data[self.offset + 4:self.offset + 3 + length].decode()
        self.take(4 + length, f'{comment}: "{shown}"')

    def record(self, what, header, body):
        """A size, a header, and a body that the size counts."""
        size = self.number("I", f"{what}: bytes of its body")
        self.depth += 1
        header()
        start = self.offset
        body()
        if self.offset != start + size:
            raise ValueError(f"{what}: the body has {self.offset - start} bytes, not {size}")
        self.depth -= 1

    def header(self):
        self.number("I", "type code")
        self.text("the word")
        self.number("I", "version")
        self.text("name")

    def chunk(self, body):
        def header():
            self.number("I", "chunk id")
            self.text("chunk name")

        self.record("chunk", header, body)

    def entries(self, comment, form, count):
        for i in range(count):
            self.number(form, f"{comment} {i}")

    def material(self):
        self.text("textureName")
        self.number("f", "scalar3")
        self.number("f", "scalar2")
        self.number("i", "modeValue")
        self.number("4f", "ambient")
        self.number("4f", "diffuse")
        self.number("4f", "specular")
        self.number("f", "scalar1")
        self.number("B", "twoSided")

    def materials(self):
        for i in range(self.number("I", "materials")):
            self.record(f"material {i}", self.header, self.material)

    def batch(self):
        self.number("i", "material")
        faces = self.number("I", "triangles")
        self.entries("plane", "4f", faces)
        self.entries("vertices of triangle", "3H", faces)
        self.entries("corners of triangle", "3H", faces)
        corners = self.number("I", "corners")
        self.entries("normal", "3f", corners)
        self.entries("texture coordinates", "2f", corners)
        self.entries("colour", "4f", corners)

    def group(self):
        self.entries("vertex", "3f", self.number("I", "vertices"))
        for i in range(self.number("I", "batches")):
            self.lines.append(" " * 55 + "  " * self.depth + f"batch {i}")
            self.depth += 1
            self.batch()
            self.depth -= 1

    def outer(self):
        self.record("inner record", self.header, self.group)
        self.entries("collision point", "3f", self.number("I", "collision points"))
        self.entries("plane", "4f", self.number("I", "planes"))
        for i in range(self.number("I", "faces")):
            self.number("3H", f"face {i}: vertices")
            self.depth += 1
            self.number("H", "position")
            self.number("I", "surface set")
            self.number("i", "batch")
            self.depth -= 1
        for i in range(self.number("I", "surface sets")):
            self.text(f"set {i}: name")
            self.depth += 1
            self.number("I", "flags")
            self.entries("face", "H", self.number("I", "faces"))
            self.depth -= 1

    def groups(self):
        for i in range(self.number("I", "groups")):
            self.record(f"group {i}, outer record", self.header, self.outer)

    def file(self):
        self.text("start tag")
        self.chunk(self.materials)
        self.chunk(self.groups)
        self.text("end tag")
        if self.offset != len(self.data):
            raise ValueError("bytes are left over")
        return "".join(line + "\n" for line in self.lines)


def exported(program):
    with tempfile.TemporaryDirectory() as folder:
        scene = DOCS / "format-example.scene.json"
        options = ["--fresh", "--seed", "0", "--quiet", "--no-weld"]
        subprocess.run([program, "export", scene, "room.kob", *options], cwd=folder, check=True)
        return (pathlib.Path(folder) / "room.kob").read_bytes()


def main():
    renew = sys.argv[2:] == ["--renew"]
    if len(sys.argv) != 2 and not renew:
        sys.exit(__doc__)
    page = DOCS / "format.md"
    text = page.read_text()
    before, rest = text.split(BEGIN)
    after = rest.split(END)[1]
    example = Annotator(exported(pathlib.Path(sys.argv[1]).resolve())).file()
    current = f"{before}{BEGIN}\n```\n{example}```\n\n{END}{after}"
    if renew:
        page.write_text(current)
    elif current != text:
        sys.exit("docs/format.md: the example is not what is exported; format_example.py --renew")


if __name__ == "__main__":
    main()
