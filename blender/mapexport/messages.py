"""What the last export said, in a panel that stays; names select their objects."""

from typing import Any

import bpy
from bpy.props import CollectionProperty, StringProperty

from .run import Message

_ICONS = {"error": "CANCEL", "warning": "ERROR", "note": "INFO"}
_MOST_NAMES = 20
# Of the panel: what is beside the text, and the text's characters, in pixels.
_BESIDE_TEXT, _CHARACTER = 85, 6
_SHORTEST_LINE = 16


class NodeName(bpy.types.PropertyGroup):
    """The name of an object; PropertyGroup itself has `name`."""


class LevelMessage(bpy.types.PropertyGroup):
    __annotations__ = {
        "severity": StringProperty(),
        "text": StringProperty(),
        "nodes": CollectionProperty(type=NodeName),
    }


class LevelMessages(bpy.types.PropertyGroup):
    __annotations__ = {
        "output": StringProperty(),  # the level that was written; empty where none was
        "entries": CollectionProperty(type=LevelMessage),
        "coordinates": StringProperty(),
    }


def messages_of(context: bpy.types.Context) -> Any:
    return context.window_manager.mapexport_messages


def show_messages(context: bpy.types.Context, found: list[Message]) -> None:
    """Replaces what the panel shows: all but the notes that name no objects."""
    shown = messages_of(context)
    shown.entries.clear()
    shown.output = ""
    for message in found:
        if message.severity == "note" and not message.nodes and message.code != "exported":
            continue
        entry = shown.entries.add()
        entry.severity, entry.text = message.severity, message.text
        for name in dict.fromkeys(message.nodes):
            entry.nodes.add().name = name
    for window in context.window_manager.windows:
        for area in window.screen.areas:
            area.tag_redraw()


class SelectNodes(bpy.types.Operator):
    bl_idname = "mapexport.select_nodes"
    bl_label = "Select Objects"
    bl_description = "Select the objects and show them in the 3D viewport"
    bl_options = {"UNDO", "INTERNAL"}
    __annotations__ = {"names": StringProperty()}  # one per line

    def execute(self, context: bpy.types.Context) -> set[str]:
        found = _objects(context.view_layer, set(self.names.split("\n")))
        if not found:
            self.report({"WARNING"}, "No such object is visible in this view layer")
            return {"CANCELLED"}
        if context.mode != "OBJECT":
            bpy.ops.object.mode_set(mode="OBJECT")
        for item in context.view_layer.objects:
            item.select_set(item in found)
        context.view_layer.objects.active = found[0]
        _frame(context)
        return {"FINISHED"}


def _objects(view_layer: bpy.types.ViewLayer, names: set[str]) -> list[bpy.types.Object]:
    """Visible objects of these names, and those that show an instance of one."""
    known: dict[bpy.types.Collection, bool] = {}

    def shows(item: bpy.types.Object) -> bool:
        shown = item.instance_collection if item.instance_type == "COLLECTION" else None
        if item.name in names or shown is None:
            return item.name in names
        if shown not in known:
            known[shown] = any(map(shows, shown.all_objects))
        return known[shown]

    return [item for item in view_layer.objects if item.visible_get() and shows(item)]


def _frame(context: bpy.types.Context) -> None:
    for area in context.screen.areas if context.screen else ():
        for region in area.regions:
            if area.type == "VIEW_3D" and region.type == "WINDOW":
                with context.temp_override(area=area, region=region):
                    bpy.ops.view3d.view_selected()


class ClearMessages(bpy.types.Operator):
    bl_idname = "mapexport.clear_messages"
    bl_label = "Clear"
    bl_description = "Empty this list"
    bl_options = {"INTERNAL"}

    def execute(self, context: bpy.types.Context) -> set[str]:
        show_messages(context, [])
        return {"FINISHED"}


class MessagesPanel(bpy.types.Panel):
    bl_idname = "VIEW3D_PT_mapexport_messages"
    bl_label = "Last Export"
    bl_space_type = "VIEW_3D"
    bl_region_type = "UI"
    bl_category = "Game Level"

    def draw(self, context: bpy.types.Context) -> None:
        layout = self.layout
        shown = messages_of(context)
        layout.operator("export_scene.mapexport", text="Export...", icon="EXPORT")
        if shown.output:
            layout.operator("mapexport.view_result", icon="URL")
        width = context.region.width / context.preferences.system.ui_scale
        length = max(int((width - _BESIDE_TEXT) / _CHARACTER), _SHORTEST_LINE)
        for entry in shown.entries:
            _draw_entry(layout.box().column(align=True), entry, length)
        if shown.entries:
            layout.operator(ClearMessages.bl_idname, icon="X")


def _draw_entry(column: bpy.types.UILayout, entry: LevelMessage, length: int) -> None:
    icon = _ICONS.get(entry.severity, "NONE")
    for line in _wrapped(entry.text, length):
        column.label(text=line, icon=icon)
        icon = "BLANK1"
    names = [node.name for node in entry.nodes]
    for name in names[:_MOST_NAMES]:
        button = column.operator(
            SelectNodes.bl_idname, text=name, icon="OBJECT_DATA", translate=False
        )
        button.names = name
    if len(names) > 1:
        text = f"All {len(names)}"
        column.operator(
            SelectNodes.bl_idname, text=text, icon="RESTRICT_SELECT_OFF"
        ).names = "\n".join(names)


def _wrapped(text: str, length: int) -> list[str]:
    """Lines that fit; words that are longer are cut, since paths have no blanks."""
    lines = [""]
    for word in text.split():
        while len(lines[-1]) + len(word) >= length:
            if not lines[-1]:
                lines[-1], word = word[:length], word[length:]
            lines.append("")
        lines[-1] += f" {word}" if lines[-1] else word
    return [line for line in lines if line]


_CLASSES = (
    NodeName,
    LevelMessage,
    LevelMessages,
    SelectNodes,
    ClearMessages,
    MessagesPanel,
)


def register() -> None:
    for one in _CLASSES:
        bpy.utils.register_class(one)
    bpy.types.WindowManager.mapexport_messages = bpy.props.PointerProperty(
        type=LevelMessages, options={"SKIP_SAVE"}
    )


def unregister() -> None:
    del bpy.types.WindowManager.mapexport_messages
    for one in reversed(_CLASSES):
        bpy.utils.unregister_class(one)
