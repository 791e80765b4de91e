"""The panel Object properties > Game Level and the operators that it runs."""

from typing import Callable

import bpy
from bpy.props import BoolProperty, EnumProperty

from . import keywords

_KEYWORD_ITEMS = [(one.name, one.label, f"The keyword {one.name}") for one in keywords.KEYWORDS]
_PREFIX_ITEMS = [
    ("static", "static", "The object and all below it become one surface set, without keywords"),
    ("exclude", "exclude", "The object and all below it are left out"),
]
# By whether all, some or none of the objects have it.
_ICONS = {"all": "CHECKBOX_HLT", "some": "REMOVE", "none": "CHECKBOX_DEHLT"}


def edited_objects(context: bpy.types.Context) -> list[bpy.types.Object]:
    """The active object and, when it is selected, all other selected ones."""
    active = context.object
    selected = list(context.selected_objects)
    return selected if active is None or active in selected else [active]


def _is_editable(obj: bpy.types.Object) -> bool:
    """Whether the .blend file keeps what is set; an override keeps no new properties."""
    return obj.library is None and obj.override_library is None


class _EditOperator(bpy.types.Operator):
    """Edits all selected objects that are no links to another file."""

    bl_options = {"REGISTER", "UNDO"}

    @classmethod
    def poll(cls, context: bpy.types.Context) -> bool:
        return bool(edited_objects(context))

    def edit(self, context: bpy.types.Context, change: Callable[..., bool]) -> set[str]:
        """`change` is called with an object and says whether it is as wanted then."""
        done = [_is_editable(obj) and change(obj) for obj in edited_objects(context)]
        if not all(done):
            left = done.count(False)
            self.report({"WARNING"}, f"Left as they are, in linked libraries: {left}")
        return {"FINISHED"} if any(done) else {"CANCELLED"}


class SetKeyword(_EditOperator):
    """Set or clear a keyword of all selected objects"""

    bl_idname = "object.mapexport_set_keyword"
    bl_label = "Set Keyword"

    keyword: EnumProperty(name="Keyword", items=_KEYWORD_ITEMS)
    on: BoolProperty(name="On", default=True)

    def execute(self, context: bpy.types.Context) -> set[str]:
        return self.edit(context, lambda obj: keywords.set_keyword(obj, self.keyword, self.on))


class SetPrefix(_EditOperator):
    """Rename all selected objects so that their names begin with the prefix, or no longer do"""

    bl_idname = "object.mapexport_set_prefix"
    bl_label = "Set Name Prefix"

    prefix: EnumProperty(name="Prefix", items=_PREFIX_ITEMS)
    on: BoolProperty(name="On", default=True)

    def execute(self, context: bpy.types.Context) -> set[str]:
        return self.edit(context, lambda obj: keywords.set_prefix(obj, self.prefix, self.on))


class SelectByKeyword(bpy.types.Operator):
    """Select the visible objects that have a keyword or a name prefix"""

    bl_idname = "object.mapexport_select_keyword"
    bl_label = "Select by Keyword"
    bl_options = {"REGISTER", "UNDO"}

    keyword: EnumProperty(name="Keyword", items=_KEYWORD_ITEMS + _PREFIX_ITEMS)
    extend: BoolProperty(name="Extend", description="Keep what is selected", default=False)

    @classmethod
    def poll(cls, context: bpy.types.Context) -> bool:
        return context.mode == "OBJECT"

    def execute(self, context: bpy.types.Context) -> set[str]:
        found = 0
        for obj in context.view_layer.objects:
            has = self.keyword in keywords.keywords_of(obj) | {keywords.prefix_of(obj)}
            if has and obj.visible_get() and not obj.hide_select:
                obj.select_set(True)
                found += 1
            elif not self.extend:
                obj.select_set(False)
        self.report({"INFO"}, f"With {self.keyword}: {found}")
        return {"FINISHED"}


def _state(has: list[bool]) -> str:
    return "all" if all(has) else "some" if any(has) else "none"


class GameLevelPanel(bpy.types.Panel):
    bl_label = "Game Level"
    bl_idname = "OBJECT_PT_mapexport_keywords"
    bl_space_type = "PROPERTIES"
    bl_region_type = "WINDOW"
    bl_context = "object"

    @classmethod
    def poll(cls, context: bpy.types.Context) -> bool:
        return context.object is not None

    def draw(self, context: bpy.types.Context) -> None:
        objects = edited_objects(context)
        layout = self.layout
        if len(objects) > 1:
            layout.label(text=f"{len(objects)} selected objects")
        found = [keywords.keywords_of(obj) for obj in objects]
        column = layout.column(align=True)
        for name, label, _ in _KEYWORD_ITEMS:
            state = _state([name in one for one in found])
            self._tick(column, SetKeyword.bl_idname, "keyword", name, label, state)
        layout.label(text="Beginning of the name")
        prefixes = [keywords.prefix_of(obj) for obj in objects]
        column = layout.column(align=True)
        for name, label, _ in _PREFIX_ITEMS:
            state = _state([name == one for one in prefixes])
            self._tick(column, SetPrefix.bl_idname, "prefix", name, label, state)
        self._draw_notes(context.object)

    @staticmethod
    def _tick(
        column: bpy.types.UILayout, operator: str, kind: str, name: str, label: str, state: str
    ) -> None:
        row = column.row(align=True)
        left = row.row(align=True)
        left.alignment = "LEFT"
        button = left.operator(operator, text=label, icon=_ICONS[state], emboss=False)
        setattr(button, kind, name)
        button.on = state != "all"
        right = row.row(align=True)
        right.alignment = "RIGHT"
        select = right.operator(
            SelectByKeyword.bl_idname, text="", icon="RESTRICT_SELECT_OFF", emboss=False
        )
        select.keyword = name

    def _draw_notes(self, obj: bpy.types.Object) -> None:
        """What the active object's ticks don't show."""
        notes = []
        for keyword in sorted(keywords.keywords_of(obj)):
            for owner, name in keywords.named_properties(obj, keyword):
                place = "" if owner == obj else f" of “{owner.name}”"
                notes.append(("PROPERTIES", f"Property “{name}”{place}"))
        others = [word for word in keywords.words_of(obj) if word not in keywords.NAMES]
        if others:
            notes.append(("TEXT", "Other text: " + ", ".join(others)))
        for prefix, effect in (("static", "keywords have no effect"), ("exclude", "left out")):
            above = keywords.ancestor_with(obj, prefix)
            if above is not None:
                notes.append(("INFO", f"Below “{above.name}”: {effect}"))
        if keywords.prefix_of(obj) == "static" and keywords.keywords_of(obj):
            notes.append(("INFO", "Keywords of a static object have no effect"))
        if obj.type == "EMPTY" and keywords.keywords_of(obj):
            notes.append(("INFO", "Keywords of an empty object are not handed down"))
        if not _is_editable(obj):
            notes.append(("LINKED", "Of a linked library: edit it there"))
        if notes:
            column = self.layout.column(align=True)
            for icon, text in notes:
                column.label(text=text, icon=icon)


def _draw_select_menu(self: bpy.types.Menu, context: bpy.types.Context) -> None:
    self.layout.separator()
    self.layout.operator_menu_enum(SelectByKeyword.bl_idname, "keyword")


_CLASSES = (SetKeyword, SetPrefix, SelectByKeyword, GameLevelPanel)


def register() -> None:
    for one in _CLASSES:
        bpy.utils.register_class(one)
    bpy.types.VIEW3D_MT_select_object.append(_draw_select_menu)


def unregister() -> None:
    bpy.types.VIEW3D_MT_select_object.remove(_draw_select_menu)
    for one in reversed(_CLASSES):
        bpy.utils.unregister_class(one)
