"""The options in the side panel of the file dialog."""

import bpy

from .options import GROUPS, Group


def _operator(context: bpy.types.Context) -> bpy.types.Operator | None:
    operator = context.space_data.active_operator
    is_ours = operator is not None and operator.bl_idname == "EXPORT_SCENE_OT_mapexport"
    return operator if is_ours else None


class _DialogPanel:
    bl_space_type = "FILE_BROWSER"
    bl_region_type = "TOOL_PROPS"
    bl_parent_id = "FILE_PT_operator"

    @classmethod
    def poll(cls, context: bpy.types.Context) -> bool:
        return _operator(context) is not None


class LayoutPanel(_DialogPanel, bpy.types.Panel):
    bl_idname = "FILE_PT_mapexport_layout"
    bl_label = ""
    bl_options = {"HIDE_HEADER"}

    def draw(self, context: bpy.types.Context) -> None:
        self.layout.row().prop(_operator(context), "layout", expand=True)


def _panel(group: Group) -> type[bpy.types.Panel]:
    """A panel with the options of a group."""

    def draw(self: bpy.types.Panel, context: bpy.types.Context) -> None:
        layout = self.layout
        layout.use_property_split = True
        layout.use_property_decorate = False
        for option in group.options:
            layout.prop(_operator(context), option.name)

    name = "FILE_PT_mapexport_" + group.title.split()[0].lower()
    members = {
        "bl_idname": name,
        "bl_label": group.title,
        "bl_options": set() if group.is_open else {"DEFAULT_CLOSED"},
        "draw": draw,
    }
    return type(name, (_DialogPanel, bpy.types.Panel), members)


_PANELS = (LayoutPanel, *map(_panel, GROUPS))


def register() -> None:
    for panel in _PANELS:
        bpy.utils.register_class(panel)


def unregister() -> None:
    for panel in reversed(_PANELS):
        bpy.utils.unregister_class(panel)
