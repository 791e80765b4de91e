"""The options of an export: properties of the operator, in groups, and the command line they make.

An option that the program has, too, has its name there, with underscores; only `--report` is
`report_file`, because `report` is a function of every operator.
"""

import enum
import os
from dataclasses import dataclass
from typing import Any

import bpy
import numpy as np
from bpy.props import (
    BoolProperty,
    EnumProperty,
    FloatProperty,
    IntProperty,
    StringProperty,
)


class Kind(enum.Enum):
    """How an option goes to the program."""

    OWN = enum.auto()  # not at all: the add-on does it
    SWITCH = enum.auto()  # --NAME or --no-NAME
    FLAG = enum.auto()  # --NAME where it is set
    VALUE = enum.auto()  # --NAME VALUE; 0 and empty texts are left out for the next two, too
    FILE = enum.auto()  # --NAME PATH
    LIST = enum.auto()  # --NAME VALUE for each part of a text
    NUMBER = enum.auto()  # --NAME NUMBER, always


@dataclass(frozen=True)
class Option:
    name: str
    kind: Kind
    property: Any

    def arguments(self, value: Any) -> list[str]:
        flag = "--" + self.name.removesuffix("_file").replace("_", "-")
        if self.kind is Kind.SWITCH:
            return [flag if value else "--no-" + flag[2:]]
        if self.kind is Kind.NUMBER:  # as short as a 32-bit float allows
            is_whole = isinstance(value, int)
            text = str(value) if is_whole else np.format_float_positional(np.float32(value))
            return [flag, text.rstrip(".")]
        if self.kind is Kind.OWN or not value:
            return []
        if self.kind is Kind.FLAG:
            return [flag]
        if self.kind is Kind.FILE:
            return [flag, absolute(value)]
        if self.kind is Kind.LIST:
            parts = [part.strip() for part in value.split(";")]
            is_path = self.property.keywords.get("subtype") is not None
            return [
                word
                for part in parts
                if part
                for word in (flag, absolute(part) if is_path else part)
            ]
        return [flag, str(value)]


def absolute(path: str) -> str:
    """A path in Blender's sense ("//" is the folder of the .blend file)."""
    return os.path.abspath(bpy.path.abspath(path))


def level_scale(context: bpy.types.Context, scale: float) -> float:
    """Units of the level for each unit of the scene, when `scale` is those of a metre."""
    units = context.scene.unit_settings
    has_units = units.system != "NONE"  # else Blender ignores the scale, too
    return float(scale * (units.scale_length if has_units else 1))


def _words(*words: str) -> list[tuple[str, str, str]]:
    return [(word, word.replace("-", " ").capitalize(), "") for word in words]


def _switch(name: str, title: str, default: bool, text: str) -> Option:
    kind = Kind.SWITCH
    return Option(name, kind, BoolProperty(name=title, default=default, description=text))


def _flag(name: str, title: str, text: str, default: bool = False) -> Option:
    return Option(name, Kind.FLAG, BoolProperty(name=title, default=default, description=text))


def _number(name: str, title: str, default: float, text: str) -> Option:
    return Option(name, Kind.NUMBER, FloatProperty(name=title, default=default, description=text))


def _file(name: str, title: str, text: str, folder: bool = False) -> Option:
    subtype = "DIR_PATH" if folder else "FILE_PATH"
    return Option(name, Kind.FILE, StringProperty(name=title, subtype=subtype, description=text))


_INCLUDE = (
    Option(
        "objects",
        Kind.OWN,
        EnumProperty(
            name="Objects",
            items=[
                ("visible", "Visible", "What the viewport shows"),
                ("selected", "Selected", "What is selected, and its instances"),
                ("all", "All", "Hidden objects, too, but no excluded collections"),
            ],
            description="Which objects are exported",
        ),
    ),
    Option(
        "apply_modifiers",
        Kind.OWN,
        BoolProperty(
            name="Apply Modifiers",
            default=True,
            description="Export objects with their modifiers, as the viewport shows them",
        ),
    ),
    Option(
        "scale",
        Kind.OWN,
        FloatProperty(
            name="Scale",
            default=100,
            min=1e-6,
            soft_max=1000,
            description="Units of the level in a metre; 100: its unit is the centimetre",
        ),
    ),
)

_GEOMETRY = (
    _switch("weld", "Weld Vertices", True, "Vertices within the weld distance become one"),
    _number("weld_distance", "Weld Distance", 0.2, "In units of the level"),
    _switch(
        "clean",
        "Clean Vertex Attributes",
        True,
        "Equal normals, texture coordinates and colours at a vertex are shared",
    ),
    _number("voxel_size", "Voxel Size", 1000, "Edge of the cells that render batches are made of"),
    _flag(
        "split",
        "Split Long Lists",
        "Divide a level with lists longer than 16-bit indices can address into groups",
        default=True,
    ),
    Option(
        "longest_list",
        Kind.VALUE,
        IntProperty(
            name="Longest List",
            min=0,
            max=65536,
            description="Split into lists of at most this many entries; 0: as many as possible",
        ),
    ),
)

_COORDINATES = (
    Option(
        "coordinates",
        Kind.VALUE,
        EnumProperty(
            name="Axes",
            items=_words("left-handed", "right-handed", "max", "inverse-max"),
            description="The coordinate system of the level",
        ),
    ),
    Option(
        "texture_coordinates",
        Kind.VALUE,
        EnumProperty(
            name="Textures",
            items=_words("invert-y", "invert-x", "invert-xy", "max"),
            description="The directions of texture coordinates",
        ),
    ),
)

_MATERIALS = (
    _flag(
        "one_sided",
        "One-Sided",
        "No material counts as two-sided, so that no triangle is doubled",
    ),
    _file("cxp", "Database", "The text database that lists the transparent textures"),
    Option(
        "textures",
        Kind.LIST,
        StringProperty(
            name="Textures",
            subtype="DIR_PATH",
            description="Look for the textures in this folder, and warn of missing ones; "
            'several are separated by ";"',
        ),
    ),
    _file("copy_textures", "Copy To", "Copy the textures that are found here", folder=True),
)

_CHECKS = (
    _file("keywords", "Keywords", "A file that gives keywords to objects by their names"),
    _flag("strict", "Strict", "A warning is an error, and nothing is written"),
    Option(
        "allow",
        Kind.LIST,
        StringProperty(
            name="Allow",
            description='Codes of warnings that pass "Strict", separated by ";"',
        ),
    ),
    Option(
        "seed",
        Kind.NUMBER,
        IntProperty(
            name="Seed",
            min=0,
            description="The same scene, options and seed give the same bytes",
        ),
    ),
    _flag("dialog", "Exporter's Dialog", "Show the exporter's own dialog before the export"),
)

_FILES = (
    _flag("view", "3D Page", "Write a page beside the level that shows it in a browser"),
    _file("report_file", "Report", "Write a report in JSON: counts, warnings, times"),
    _file("log", "Log", "Write the exporter's log, which names the triangles it drops"),
    Option(
        "scene_file",
        Kind.OWN,
        StringProperty(
            name="Scene",
            subtype="FILE_PATH",
            description="Keep the scene that the exporter gets, as a .scene.bin file",
        ),
    ),
    _file("depfile", "Make Rule", "Write a make rule with the files the level depends on"),
)

_IDLE = (
    _switch("remove_t_vertices", "Remove T-Vertices", False, "Keeps welding switched on"),
    _number("min_triangle_area", "Min Triangle Area", 1, "No effect on the level"),
    _switch("snap", "Snap To Grid", False, "No effect on the level"),
    _number("snap_dimension", "Snap Dimension", 1, "No effect on the level"),
    _number("lighting_multiplier", "Lighting Multiplier", 1, "No effect on the level"),
    _switch("talvern_light_format", "Talvern Light Format", False, "No effect on the level"),
)


@dataclass(frozen=True)
class Group:
    title: str
    options: tuple[Option, ...]
    is_open: bool = False


GROUPS = (
    Group("Include", _INCLUDE, True),
    Group("Geometry", _GEOMETRY, True),
    Group("Coordinates", _COORDINATES),
    Group("Materials", _MATERIALS),
    Group("Checks", _CHECKS),
    Group("Files", _FILES),
    Group("Without Effect on the Level", _IDLE),
)


def properties() -> dict[str, Any]:
    """The annotations of the operator's class."""
    return {option.name: option.property for group in GROUPS for option in group.options}


def arguments(values: Any) -> list[str]:
    """The program's arguments for an object that has all these properties."""
    made = ["export", "--fresh", "--messages", "json"]
    for group in GROUPS:
        for option in group.options:
            made += option.arguments(getattr(values, option.name))
    return made if values.log else [*made, "--no-log"]
