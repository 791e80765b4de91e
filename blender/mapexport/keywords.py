"""The keywords of an object: its custom properties and its name, and what they set.

Text and properties count exactly as in glTF and FBX files: the text property userProperties holds
keywords, and a property that is named like a keyword counts when its value is on, both at the
object and at its mesh.
"""

import re
from typing import Iterator, NamedTuple

import bpy

PROPERTY = "userProperties"
# The modelling tools' own name of the property counts, too.
_TEXT_NAMES = (PROPERTY.lower(), "udp3dsmax")
_LINE_END = "\r\n"
_ON_TEXTS = ("true", "yes", "1")
# Where a word of the text ends. Blanks beside a comma, a semicolon or a written "\n" are dropped.
_SEPARATOR = re.compile(r"( *(?:[,;]|\\n) *|[\t\r\n]+)")


class Keyword(NamedTuple):
    name: str
    label: str
    bit: int  # of the faces' flags


KEYWORDS = (
    Keyword("climbable", "climbable", 0x01),
    Keyword("floorface", "floorface", 0x10),
    Keyword("45plusfloor", "45plusfloor", 0x40),
    Keyword("notcollidable", "notcollidable", 0x02),
    Keyword("notcollidable3d", "notcollidable3d", 0x08),
    Keyword("notrendered", "notrendered (collision only)", 0x04),
    Keyword("notshownplan", "notshownplan", 0x20),
)
NAMES = {keyword.name for keyword in KEYWORDS}
STATIC = Keyword("static", "static", 0x80)  # an object's name sets it, no keyword
# What the beginning of an object's name sets, in any case.
PREFIXES = ("static", "exclude")


def owners(obj: bpy.types.Object) -> list[bpy.types.ID]:
    """The object and its data, whose custom properties count."""
    return [obj] if obj.data is None else [obj, obj.data]


def _texts(owner: bpy.types.ID) -> Iterator[tuple[str, str]]:
    """The names and values of the properties that hold text."""
    for name, value in owner.items():
        if isinstance(value, str) and name.lower() in _TEXT_NAMES:
            yield name, value


def _is_on(value: object) -> bool:
    if isinstance(value, str):
        return value.strip(" ").lower() in _ON_TEXTS
    return isinstance(value, (bool, int, float)) and value != 0


def _named(owner: bpy.types.ID) -> Iterator[tuple[str, str]]:
    """The names of the properties that are named like a keyword and on, with their keywords."""
    for name, value in owner.items():
        if name.lower() in NAMES and _is_on(value):
            yield name, name.lower()


def named_properties(obj: bpy.types.Object, keyword: str) -> list[tuple[bpy.types.ID, str]]:
    """The properties that are named like that keyword and on, each with its owner."""
    return [(owner, name) for owner in owners(obj) for name, of in _named(owner) if of == keyword]


def text_of(obj: bpy.types.Object) -> str:
    """The user property text of the object: what all its custom properties say, one word a line."""
    text = ""
    named: dict[str, None] = {}
    for owner in owners(obj):
        for _, value in _texts(owner):
            lines = re.sub(r" *(?:[,;]|\\n) *", "\n", value)
            if lines and lines != text:
                text += (_LINE_END if text and not text.endswith("\n") else "") + lines
        named.update(dict.fromkeys(keyword for _, keyword in _named(owner)))
    if text and named and not text.endswith("\n"):
        text += _LINE_END
    return text + "".join(keyword + _LINE_END for keyword in named)


def words_of(obj: bpy.types.Object) -> list[str]:
    """The words of the text as the exporter tells them apart."""
    return [word for word in re.split(r"[\t\r\n]", text_of(obj)) if word]


def keywords_of(obj: bpy.types.Object) -> set[str]:
    return NAMES.intersection(words_of(obj))


def prefix_of(obj: bpy.types.Object) -> str:
    """The one of PREFIXES that the object's name begins with, or nothing."""
    return next((prefix for prefix in PREFIXES if obj.name.lower().startswith(prefix)), "")


def ancestor_with(obj: bpy.types.Object, prefix: str) -> bpy.types.Object | None:
    """The nearest object above this one whose name begins with the prefix."""
    above = obj.parent
    while above is not None and prefix_of(above) != prefix:
        above = above.parent
    return above


def flags_of(obj: bpy.types.Object) -> int:
    """The flags of the object's faces: within a static object its bit, whatever the keywords."""
    if is_below(obj, "static"):
        return STATIC.bit
    found = keywords_of(obj)
    return sum(keyword.bit for keyword in KEYWORDS if keyword.name in found)


def is_below(obj: bpy.types.Object, prefix: str) -> bool:
    """Whether the name of the object or of one above it begins with the prefix."""
    return prefix_of(obj) == prefix or ancestor_with(obj, prefix) is not None


def names_of(flags: int) -> list[str]:
    """The keywords that set these flags."""
    return [keyword.name for keyword in KEYWORDS if keyword.bit & flags]


def _without(text: str, word: str) -> str:
    """The text without that word and one separator beside it; all else stays as it is."""
    parts = _SEPARATOR.split(text)  # words, and between them separators
    while word in parts[::2]:
        at = parts.index(word)
        if at + 1 < len(parts):
            del parts[at : at + 2]
        else:
            del parts[max(at - 1, 0) :]
    return "".join(parts)


def set_keyword(obj: bpy.types.Object, keyword: str, on: bool) -> bool:
    """Adds the keyword to the object's text, or takes it out of all that sets it.

    False where it stays on because data of a linked library sets it.
    """
    if on == (keyword in keywords_of(obj)):
        return True
    if on:
        name, text = next(_texts(obj), (PROPERTY, str(obj.get(PROPERTY, ""))))
        separator = _LINE_END if text and not text.endswith(("\n", "\r", "\t")) else ""
        obj[name] = text + separator + keyword
    else:
        for owner in owners(obj):
            if owner.library is not None:
                continue
            for name, text in list(_texts(owner)):
                rest = _without(text, keyword)
                if rest.strip():
                    owner[name] = rest
                else:
                    del owner[name]
            for name in [name for name, of in _named(owner) if of == keyword]:
                del owner[name]
            owner.update_tag()
    obj.update_tag()  # so that what shows the flags is drawn anew
    return on == (keyword in keywords_of(obj))


def set_prefix(obj: bpy.types.Object, prefix: str, on: bool) -> bool:
    """Renames the object; whether its name begins with the prefix then, if `on`, or not."""
    if on and prefix_of(obj) != prefix:
        obj.name = f"{prefix}_{obj.name}"
    while not on and prefix_of(obj) == prefix:
        obj.name = obj.name[len(prefix) :].lstrip("_-. ") or "Object"
    obj.update_tag()
    return on == (prefix_of(obj) == prefix)
