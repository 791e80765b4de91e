"""Writes .scene.bin files; docs/scene-format.md describes them."""

import json
import struct
from typing import Any

import numpy as np
from numpy.typing import NDArray

_ALIGNMENT = 16


class SceneFile:
    """The number lists and materials of a scene on the way to its file."""

    def __init__(self) -> None:
        self._lists: list[NDArray[Any]] = []
        self._size = 0

    def add(self, entries: NDArray[Any]) -> dict[str, int]:
        """Where the list is in the file: `entries` has a row per entry, of 32-bit numbers."""
        place = {"offset": self._size, "count": len(entries)}
        self._lists.append(entries)
        self._size += entries.nbytes + -entries.nbytes % _ALIGNMENT
        return place

    def write(self, path: str, root: dict[str, Any], materials: list[dict[str, Any]]) -> None:
        scene = {
            "format": "mapexport-scene",
            "version": 1,
            "materials": materials,
            "root": root,
        }
        text = json.dumps(scene, ensure_ascii=False, allow_nan=False, separators=(",", ":"))
        tree = text.encode("utf-8", "replace")
        with open(path, "wb") as out:
            out.write(struct.pack("<16sIIQQ", b"mapexport-scene", 1, 0, len(tree), self._size))
            out.write(tree + bytes(-(40 + len(tree)) % _ALIGNMENT))
            for entries in self._lists:
                out.write(np.ascontiguousarray(entries).data)
                out.write(bytes(-entries.nbytes % _ALIGNMENT))
