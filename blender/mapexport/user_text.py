"""The user property text of an object, from its custom properties and those of its data."""

import re
from typing import Any

import bpy

# docs/keywords.md says what they mean.
KEYWORDS = (
    "climbable",
    "floorface",
    "45plusfloor",
    "notcollidable",
    "notcollidable3d",
    "notrendered",
    "notshownplan",
)
_TEXTS = ("userproperties", "udp3dsmax")
_LINE_END = re.compile(r" *(?:[,;\r\n]|\\n)+ *")


def user_text(shown: bpy.types.Object) -> str:
    """A line per keyword. Properties count as they do in glTF and FBX files.

    The lines of `userProperties` and `UDP3DSMAX` come first, then each keyword that has a property
    of its name, in any case, which is true.
    """
    lines: dict[str, None] = {}
    for holder in (shown, shown.data):
        if holder is not None:
            for name, value in holder.items():
                lines.update(dict.fromkeys(_lines(name.lower(), value)))
    return "".join(f"{line}\r\n" for line in lines)


def _lines(name: str, value: Any) -> list[str]:
    if name in _TEXTS and isinstance(value, str):
        return [line for line in _LINE_END.split(value) if line]
    return [name] if name in KEYWORDS and _is_on(value) else []


def _is_on(value: Any) -> bool:
    if isinstance(value, str):
        return value.strip().lower() in {"true", "yes", "1"}
    return isinstance(value, (bool, int, float)) and bool(value)
