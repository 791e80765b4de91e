"""The add-on's preferences."""

import bpy
from bpy.props import StringProperty


class Preferences(bpy.types.AddonPreferences):
    bl_idname = __package__
    __annotations__ = {
        "program": StringProperty(
            name="Program",
            subtype="FILE_PATH",
            description="The program mapexport; empty: the one beside the add-on or on PATH",
        )
    }

    def draw(self, _context: bpy.types.Context) -> None:
        self.layout.prop(self, "program")


def preferred_program(context: bpy.types.Context) -> str:
    addon = context.preferences.addons.get(__package__)
    path = addon.preferences.program if addon is not None and addon.preferences else ""
    return bpy.path.abspath(path)


def register() -> None:
    bpy.utils.register_class(Preferences)


def unregister() -> None:
    bpy.utils.unregister_class(Preferences)
