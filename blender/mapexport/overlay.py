"""A viewport overlay that colours the faces of objects by their flags."""

from itertools import groupby
from operator import attrgetter
from typing import NamedTuple

import bpy
import gpu
import numpy as np
from bpy.app.handlers import persistent
from bpy.props import BoolProperty, FloatProperty, FloatVectorProperty
from gpu_extras.batch import batch_for_shader
from mathutils import Matrix
from numpy.typing import NDArray

from . import keywords

_FLAGS = (*keywords.KEYWORDS, keywords.STATIC)
_COLOURS = {
    "climbable": (0.10, 0.75, 0.20),
    "floorface": (0.15, 0.45, 1.00),
    "45plusfloor": (0.00, 0.80, 0.85),
    "notcollidable": (1.00, 0.80, 0.05),
    "notcollidable3d": (1.00, 0.45, 0.00),
    "notrendered": (0.90, 0.10, 0.15),
    "notshownplan": (0.75, 0.20, 0.90),
    "static": (0.55, 0.30, 0.10),
}
_EDIT_MODES = {"EDIT", "SCULPT"}  # in which the evaluated mesh lags behind
# Moves the overlay towards the eye, in front of the faces that it colours.
_BIAS = Matrix(((1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, -2e-5), (0, 0, 0, 1)))


class Drawn(NamedTuple):
    """An object as it is drawn, or an instance of one."""

    obj: bpy.types.Object  # whose visibility counts
    mesh: int  # its key in Meshes
    matrix: Matrix
    flags: int


def _shader() -> gpu.types.GPUShader:
    try:
        return gpu.shader.from_builtin("UNIFORM_COLOR")
    except ValueError:  # Blender 3
        return gpu.shader.from_builtin("3D_UNIFORM_COLOR")


def triangles(mesh: bpy.types.Mesh) -> tuple[NDArray[np.float32], NDArray[np.int32]]:
    """The positions of the vertices, and three indices for each triangle."""
    mesh.calc_loop_triangles()
    points = np.empty((len(mesh.vertices), 3), np.float32)
    mesh.vertices.foreach_get("co", points.ravel())
    indices = np.empty((len(mesh.loop_triangles), 3), np.int32)
    mesh.loop_triangles.foreach_get("vertices", indices.ravel())
    return points, indices


def _mesh_key(original: bpy.types.Object) -> int:
    """The same for objects that look alike: their mesh's, unless modifiers make another of it."""
    return (original if original.modifiers else original.data).as_pointer()


def _flags_below(holder: bpy.types.Object, original: bpy.types.Object) -> int:
    """The flags of an object, or of an instance of it below its holder."""
    if keywords.is_below(holder, "exclude") or keywords.is_below(original, "exclude"):
        return 0
    if keywords.is_below(holder, "static"):
        return keywords.STATIC.bit
    return keywords.flags_of(original)


def drawn_objects(depsgraph: bpy.types.Depsgraph) -> tuple[list[Drawn], dict[int, bpy.types.Mesh]]:
    """All objects and instances with flags, by these, and their evaluated meshes by key."""
    drawn = []
    meshes = {}
    flags: dict[tuple[int, int], int] = {}
    for instance in depsgraph.object_instances:
        shown = instance.object
        original = shown.original
        if shown.type != "MESH" or not instance.show_self or original.mode in _EDIT_MODES:
            continue
        holder = instance.parent.original if instance.is_instance else original
        pair = (holder.as_pointer(), original.as_pointer())
        if pair not in flags:
            flags[pair] = _flags_below(holder, original)
        if flags[pair] == 0:
            continue
        key = _mesh_key(original)
        meshes[key] = shown.data
        drawn.append(Drawn(holder, key, instance.matrix_world.copy(), flags[pair]))
    return sorted(drawn, key=attrgetter("flags")), meshes


class Overlay:
    """What is drawn, kept until the scene changes."""

    def __init__(self) -> None:
        self._handle = bpy.types.SpaceView3D.draw_handler_add(self.draw, (), "WINDOW", "POST_VIEW")
        self.forget()

    def remove(self) -> None:
        bpy.types.SpaceView3D.draw_handler_remove(self._handle, "WINDOW")
        self.forget()

    def forget(self) -> None:
        self._batches: dict[int, gpu.types.GPUBatch] = {}
        self._drawn: dict[str, list[Drawn]] = {}  # by scene and view layer

    def update(self, depsgraph: bpy.types.Depsgraph) -> None:
        """Forgets what has changed since the last call."""
        self._drawn.clear()
        for update in depsgraph.updates:
            if update.is_updated_geometry:
                self._batches.pop(update.id.original.as_pointer(), None)

    def draw(self) -> None:
        context = bpy.context
        settings = context.window_manager.mapexport_overlay
        if not (settings.show and context.space_data.overlay.show_overlays):
            return
        shader = _shader()
        layer = f"{context.scene.name_full}\n{context.view_layer.name}"
        if layer not in self._drawn:
            self._prepare(layer, shader, context.evaluated_depsgraph_get())
        gpu.state.blend_set("ALPHA")
        gpu.state.depth_test_set("LESS_EQUAL")
        shader.bind()
        with gpu.matrix.push_pop(), gpu.matrix.push_pop_projection():
            gpu.matrix.load_projection_matrix(_BIAS @ gpu.matrix.get_projection_matrix())
            view = gpu.matrix.get_model_view_matrix()
            for flags, drawn in groupby(self._drawn[layer], key=attrgetter("flags")):
                shader.uniform_float("color", (*colour_of(settings, flags), settings.alpha))
                for one in drawn:
                    if one.obj.visible_in_viewport_get(context.space_data):
                        gpu.matrix.load_matrix(view @ one.matrix)
                        self._batches[one.mesh].draw(shader)
        gpu.state.depth_test_set("NONE")
        gpu.state.blend_set("NONE")

    def _prepare(
        self, layer: str, shader: gpu.types.GPUShader, depsgraph: bpy.types.Depsgraph
    ) -> None:
        self._drawn[layer], meshes = drawn_objects(depsgraph)
        for key, mesh in meshes.items():
            if key not in self._batches:
                points, indices = triangles(mesh)
                self._batches[key] = batch_for_shader(
                    shader, "TRIS", {"pos": points}, indices=indices
                )
        used = {one.mesh for drawn in self._drawn.values() for one in drawn}
        self._batches = {key: batch for key, batch in self._batches.items() if key in used}


def colour_of(settings: bpy.types.PropertyGroup, flags: int) -> tuple[float, ...]:
    """The mean of the colours of the flags."""
    colours = [getattr(settings, f"colour_{one.name}") for one in _FLAGS if one.bit & flags]
    return tuple(np.mean(colours, axis=0))


def _redraw(settings: bpy.types.PropertyGroup, context: bpy.types.Context) -> None:
    for window in context.window_manager.windows:
        for area in window.screen.areas:
            if area.type == "VIEW_3D":
                area.tag_redraw()


class OverlaySettings(bpy.types.PropertyGroup):
    __annotations__ = {
        "show": BoolProperty(
            name="Game Level Flags",
            description="Colour the faces of objects by the flags that their keywords set",
            update=_redraw,
        ),
        "alpha": FloatProperty(name="Opacity", default=0.5, min=0.05, max=1, update=_redraw),
    } | {
        f"colour_{name}": FloatVectorProperty(
            name=name, subtype="COLOR_GAMMA", default=colour, min=0, max=1, update=_redraw
        )
        for name, colour in _COLOURS.items()
    }


class LegendPanel(bpy.types.Panel):
    bl_label = "Face Flags"
    bl_idname = "VIEW3D_PT_mapexport_legend"
    bl_space_type = "VIEW_3D"
    bl_region_type = "UI"
    bl_category = "Game Level"

    def draw_header(self, context: bpy.types.Context) -> None:
        self.layout.prop(context.window_manager.mapexport_overlay, "show", text="")

    def draw(self, context: bpy.types.Context) -> None:
        settings = context.window_manager.mapexport_overlay
        layout = self.layout
        layout.active = settings.show
        layout.prop(settings, "alpha", slider=True)
        column = layout.column(align=True)
        for flag in _FLAGS:
            row = column.row(align=True)
            colour = row.row()
            colour.ui_units_x = 1.5
            colour.prop(settings, f"colour_{flag.name}", text="")
            row.label(text=flag.name)
            select = row.operator(
                "object.mapexport_select_keyword", text="", icon="RESTRICT_SELECT_OFF"
            )
            select.keyword = flag.name
        layout.label(text="Several: their mean colour")


def _draw_in_popover(self: bpy.types.Panel, context: bpy.types.Context) -> None:
    self.layout.prop(context.window_manager.mapexport_overlay, "show")


@persistent
def _on_update(scene: bpy.types.Scene, depsgraph: bpy.types.Depsgraph) -> None:
    OverlaySettings.overlay.update(depsgraph)


@persistent
def _on_other_data(_: object) -> None:
    """Undo, redo and loading replace all data."""
    OverlaySettings.overlay.forget()


def register() -> None:
    bpy.utils.register_class(OverlaySettings)
    bpy.utils.register_class(LegendPanel)
    bpy.types.WindowManager.mapexport_overlay = bpy.props.PointerProperty(type=OverlaySettings)
    bpy.types.VIEW3D_PT_overlay.append(_draw_in_popover)
    OverlaySettings.overlay = Overlay()
    handlers = bpy.app.handlers
    handlers.depsgraph_update_post.append(_on_update)
    for event in (handlers.undo_post, handlers.redo_post, handlers.load_post):
        event.append(_on_other_data)


def unregister() -> None:
    handlers = bpy.app.handlers
    for event in (handlers.undo_post, handlers.redo_post, handlers.load_post):
        event.remove(_on_other_data)
    handlers.depsgraph_update_post.remove(_on_update)
    OverlaySettings.overlay.remove()
    bpy.types.VIEW3D_PT_overlay.remove(_draw_in_popover)
    del bpy.types.WindowManager.mapexport_overlay
    bpy.utils.unregister_class(LegendPanel)
    bpy.utils.unregister_class(OverlaySettings)
