"""Reads the geometry of a model file into arrays.

The program checks the file first; its document names all parts and their counts. docs/format.md of
the program describes the bytes.
"""

import json
import re
import struct
import subprocess
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np
from numpy.typing import NDArray

from .errors import ExportError

Array = NDArray[Any]

_CORNER_LISTS = (3, 2, 4)  # normals, texture coordinates, colours: floats of an entry
_FACE = np.dtype([("vertices", "<u2", 3), ("position", "<u2"), ("set", "<u4"), ("batch", "<i4")])


@dataclass
class Triangles:
    """Triangles of a group; rows have three entries, one for each corner."""

    points: Array  # of the group; the file's axes and units
    vertices: Array
    planes: Array  # normals
    surface_sets: Array  # -1 where the layout has none
    # Of drawn triangles only, by triangle, or by triangle and corner.
    materials: Array | None = None
    normals: Array | None = None
    uvs: Array | None = None
    colours: Array | None = None


@dataclass
class Group:
    name: str
    surface_sets: list[tuple[str, int]]  # names and flags
    drawn: Triangles
    undrawn: Triangles


class _Bytes:
    """The bytes of a file, read in order."""

    def __init__(self, data: bytes) -> None:
        self._data = data
        self._at = 0

    def skip(self, count: int) -> None:
        self._at += count

    def number(self) -> int:
        (value,) = struct.unpack_from("<I", self._data, self._at)
        self._at += 4
        return int(value)

    def skip_text(self) -> None:
        self.skip(self.number())

    def skip_header(self) -> None:
        """The size of a group's record, its type code, "Version", the version and its name."""
        self.skip(8)
        self.skip_text()
        self.skip(4)
        self.skip_text()

    def rows(self, count: int, dtype: Any, width: int = 1) -> Array:
        found = np.frombuffer(self._data, dtype, count * width, self._at)
        self._at += found.nbytes
        return found.reshape(count, width) if width > 1 else found


def inspect(program: str, path: Path) -> dict[str, Any]:
    """The program's summary of a sound file."""
    try:
        done = subprocess.run(
            [program, "inspect", str(path), "--json", "--summary"],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            check=False,
            encoding="utf-8",
            errors="replace",
        )
    except OSError as error:
        raise ExportError(f'the program "{program}" can\'t be run: {error}') from error
    if done.returncode != 0:
        lines = done.stderr.strip().splitlines()
        said = lines[0] if lines else f"mapexport ended with status {done.returncode}"
        raise ExportError(re.sub("^mapexport: (error|warning): ", "", said))
    try:
        document: dict[str, Any] = json.loads(done.stdout)
    except ValueError as error:
        raise ExportError(f'"{program}" is not the program mapexport: {error}') from error
    return document


def read_groups(path: Path, document: dict[str, Any]) -> list[Group]:
    """The groups of the file that `inspect` has described."""
    try:
        data = _Bytes(path.read_bytes())
        data.skip_text()  # the start tag
        size = data.number()
        data.skip(4)
        data.skip_text()
        data.skip(size)  # the materials are in the document
        data.skip(8)
        data.skip_text()
        data.skip(4)
        return [_read_group(data, group) for group in document["groups"]]
    except (ValueError, IndexError, struct.error) as error:
        raise ExportError(f"{path}: the file has changed while it was read") from error


def _read_group(data: _Bytes, group: dict[str, Any]) -> Group:
    if "outer" in group:
        data.skip_header()
    data.skip_header()
    data.skip(4)
    points = data.rows(group["vertexCount"], "<f4", 3)
    data.skip(4)
    drawn = Triangles(points, *_read_batches(data, group["batches"]))
    undrawn = Triangles(points[:0], *_no_faces())
    sets = [(one["name"], one["flags"]) for one in group.get("surfaceSets", ())]
    if "outer" in group:
        data.skip(4)
        undrawn.points = data.rows(group["collisionPointCount"], "<f4", 3)
        data.skip(4)
        undrawn.planes = data.rows(group["planeCount"], "<f4", 4)[:, :3]
        data.skip(4)
        faces = data.rows(group["faceCount"], _FACE)
        is_drawn = faces["batch"] != -1
        undrawn.vertices = faces["vertices"][~is_drawn].astype(np.int64)
        undrawn.surface_sets = faces["set"][~is_drawn].astype(np.int64)
        starts = np.cumsum([0] + [batch["faceCount"] for batch in group["batches"]])
        places = starts[faces["batch"][is_drawn]] + faces["position"][is_drawn]
        drawn.surface_sets[places] = faces["set"][is_drawn]
        data.skip(4)
        for one in group["surfaceSets"]:
            data.skip_text()
            data.skip(8 + 2 * one["faceCount"])
    return Group(group["name"], sets, drawn, undrawn)


def _no_faces() -> tuple[Array, Array, Array]:
    return np.empty((0, 3), np.int64), np.empty((0, 3), np.float32), np.empty(0, np.int64)


def _read_batches(data: _Bytes, batches: list[dict[str, Any]]) -> tuple[Any, ...]:
    """The arguments of Triangles behind the points, for all batches together."""
    vertices, planes, sets = ([rows] for rows in _no_faces())
    materials = [sets[0]]
    corners: list[list[Array]] = [[np.empty((0, 3, width), np.float32)] for width in _CORNER_LISTS]
    for batch in batches:
        count = batch["faceCount"]
        data.skip(8)
        planes.append(data.rows(count, "<f4", 4)[:, :3])
        vertices.append(data.rows(count, "<u2", 3).astype(np.int64))
        indices = data.rows(count, "<u2", 3)
        data.skip(4)
        for rows, width in zip(corners, _CORNER_LISTS):
            rows.append(data.rows(batch["cornerCount"], "<f4", width)[indices])
        sets.append(np.full(count, -1))
        materials.append(np.full(count, batch["material"]))
    lists = (vertices, planes, sets, materials, *corners)
    return tuple(np.concatenate(rows) for rows in lists)
