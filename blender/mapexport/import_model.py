"""File > Import > Game Level: a model file as meshes, one for each surface set."""

from contextlib import contextmanager
from pathlib import Path
from typing import Any, Iterator

import bpy
import numpy as np
from bpy.props import StringProperty
from bpy_extras.io_utils import ImportHelper

from . import keywords, options
from .errors import ExportError
from .model_file import Array, Group, Triangles, inspect, read_groups
from .model_materials import make_material
from .model_space import chosen, finite, joined, to_blender, without_copies
from .preferences import preferred_program
from .run import find_program

_NOT_RENDERED = 0x04
_MADE = ("objects", "meshes", "materials", "images", "collections")


class ImportLevel(bpy.types.Operator, ImportHelper):
    bl_idname = "import_scene.mapexport"
    bl_label = "Import Game Level"
    bl_description = "Import a game level (.kob or .qob) as a mesh for each surface set"
    bl_options = {"REGISTER", "UNDO", "PRESET"}
    __annotations__ = {
        "filter_glob": StringProperty(default="*.kob;*.qob;*.map", options={"HIDDEN"}),
        # With the values of the export: the file does not record them.
        **{
            name: options.properties()[name]
            for name in ("scale", "coordinates", "texture_coordinates")
        },
    }

    def execute(self, context: bpy.types.Context) -> set[str]:
        path = Path(options.absolute(self.filepath))
        try:
            document = inspect(find_program(preferred_program(context)), path)
            if not document["groups"]:
                raise ExportError(f"{path}: no group of triangles")
            scale = options.level_scale(context, self.scale)
            level = _Level(document, read_groups(path, document), self, scale)
            with _nothing_left_on_failure():
                level.build(context, path)
                level.select(context)
        except (ExportError, OSError) as error:
            self.report({"ERROR"}, str(error))
            return {"CANCELLED"}
        self.report({"INFO"}, f"{level.triangles} triangles in {len(level.objects)} objects")
        if level.lost:
            self.report({"WARNING"}, f"{level.lost} triangles with corners at no place left out")
        return {"FINISHED"}


@contextmanager
def _nothing_left_on_failure() -> Iterator[None]:
    before = {kind: set(getattr(bpy.data, kind)) for kind in _MADE}
    try:
        yield
    except BaseException:
        for kind in _MADE:
            for one in set(getattr(bpy.data, kind)) - before[kind]:
                getattr(bpy.data, kind).remove(one)
        raise


class _Level:
    """The triangles of a file by what becomes an object, and the objects."""

    def __init__(
        self, document: dict[str, Any], groups: list[Group], wanted: Any, scale: float
    ) -> None:
        self.records = document["materials"]
        self.triangles = self.lost = 0
        self.objects: list[bpy.types.Object] = []
        two_sided = [i for i, one in enumerate(self.records) if one["twoSided"]]
        sets: dict[tuple[str, int], int] = {}
        for group in groups:
            to_blender(group, wanted.coordinates, wanted.texture_coordinates, scale)
            # The same set is in each group of a level that the export divided.
            numbers = [sets.setdefault(one, len(sets)) for one in group.surface_sets]
            for part in (group.drawn, group.undrawn):
                if numbers:
                    part.surface_sets = np.array(numbers)[part.surface_sets]
            group.drawn = without_copies(group.drawn, two_sided)
            for kind in ("drawn", "undrawn"):
                part = getattr(group, kind)
                setattr(group, kind, finite(part))
                self.lost += len(part.vertices) - len(getattr(group, kind).vertices)
        self.sets = list(sets)
        self.name = groups[0].name or "Level"
        self.drawn = joined([group.drawn for group in groups])
        self.undrawn = joined([group.undrawn for group in groups])

    def build(self, context: bpy.types.Context, path: Path) -> None:
        self._materials = [make_material(one, path.parent) for one in self.records]
        collection = bpy.data.collections.new(path.stem)
        context.collection.children.link(collection)
        if self.sets:
            for number, which in _by_value(self.drawn.surface_sets):
                name, flags = self.sets[number]
                self._add(collection, self._name_of(name, flags), flags, self.drawn, which)
        elif self.drawn.materials is not None:
            for number, which in _by_value(self.drawn.materials):
                name = self._materials[number].name if number >= 0 else self.name
                self._add(collection, name, 0, self.drawn, which)
        if len(self.undrawn.vertices):
            hidden = bpy.data.collections.new(f"{path.stem} collision")
            hidden.hide_render = True
            collection.children.link(hidden)
            for number, which in _by_value(self.undrawn.surface_sets):
                flags = self.sets[number][1] | _NOT_RENDERED
                self._add(hidden, f"{self.name} collision", flags, self.undrawn, which)

    def _name_of(self, name: str, flags: int) -> str:
        if flags & keywords.STATIC.bit:
            return name
        return " ".join([self.name, *keywords.names_of(flags)])

    def _add(
        self,
        collection: bpy.types.Collection,
        name: str,
        flags: int,
        part: Triangles,
        which: Array,
    ) -> None:
        """An object of these triangles."""
        is_static = bool(flags & keywords.STATIC.bit)
        if not is_static and name.lower().startswith(keywords.PREFIXES):
            name = f"Level {name}"  # its beginning would change what it is
        obj = bpy.data.objects.new(name, _mesh(name, chosen(part, which), self._materials))
        text = "\r\n".join(keywords.names_of(flags))
        if text and not is_static:
            obj[keywords.PROPERTY] = text
        if part.materials is not None and part.colours is not None:
            if (part.materials[which] < 0).all():  # the corners have the wire colour
                colour = np.nan_to_num(part.colours[which[0], 0], posinf=1, neginf=0)
                obj.color = np.clip(colour, 0, 1)
        collection.objects.link(obj)
        self.triangles += len(which)
        self.objects.append(obj)

    def select(self, context: bpy.types.Context) -> None:
        """Selects the objects, as other imports do, where the view layer has them."""
        context.view_layer.update()
        shown = [obj for obj in self.objects if obj.name in context.view_layer.objects]
        if context.mode != "OBJECT" or not shown:
            return
        for obj in context.selected_objects:
            obj.select_set(False)
        for obj in shown:
            obj.select_set(True)
        context.view_layer.objects.active = shown[0]


def _by_value(values: Array) -> Iterator[tuple[int, Array]]:
    """Each value that occurs, with the places where it does."""
    order = np.argsort(values, kind="stable")
    found, starts = np.unique(values[order], return_index=True)
    yield from zip(found.tolist(), np.split(order, starts[1:]))


def _mesh(name: str, part: Triangles, materials: list[bpy.types.Material]) -> bpy.types.Mesh:
    mesh = bpy.data.meshes.new(name)
    used, corners = np.unique(part.vertices.ravel(), return_inverse=True)
    points = part.points[used]
    count = len(part.vertices)
    mesh.vertices.add(len(points))
    mesh.vertices.foreach_set("co", points.ravel())
    mesh.loops.add(len(corners))
    mesh.loops.foreach_set("vertex_index", corners.astype(np.int32))
    mesh.polygons.add(count)
    mesh.polygons.foreach_set("loop_start", np.arange(0, 3 * count, 3, dtype=np.int32))
    if not bpy.types.MeshPolygon.bl_rna.properties["loop_total"].is_readonly:  # before 4.0
        mesh.polygons.foreach_set("loop_total", np.full(count, 3, np.int32))
    if part.materials is not None:
        slots, indices = np.unique(part.materials, return_inverse=True)
        for slot in slots:
            mesh.materials.append(materials[slot] if slot >= 0 else None)
        mesh.polygons.foreach_set("material_index", indices.astype(np.int32))
    mesh.update(calc_edges=True)
    if part.uvs is not None:
        uvs = np.nan_to_num(part.uvs, nan=0, posinf=0, neginf=0).astype(np.float32)
        mesh.uv_layers.new(name="UVMap").data.foreach_set("uv", uvs.ravel())
    if part.normals is not None:
        _set_normals(mesh, part.normals)
    return mesh


def _set_normals(mesh: bpy.types.Mesh, normals: Array) -> None:
    """The normals of the corners; Blender computes those that have no direction."""
    mesh.polygons.foreach_set("use_smooth", np.ones(len(mesh.polygons), np.bool_))
    if hasattr(mesh, "use_auto_smooth"):  # before 4.1, custom normals need it
        mesh.use_auto_smooth = True
    rows = normals.reshape(-1, 3).astype(np.float64)
    rows[~np.isfinite(rows).all(axis=1)] = 0
    lengths = np.linalg.norm(rows, axis=1, keepdims=True)
    mesh.normals_split_custom_set(np.divide(rows, lengths, out=rows, where=lengths > 0))


def _menu(self: bpy.types.Menu, _context: bpy.types.Context) -> None:
    self.layout.operator(ImportLevel.bl_idname, text="Game Level (.kob/.qob)")


def register() -> None:
    bpy.utils.register_class(ImportLevel)
    bpy.types.TOPBAR_MT_file_import.append(_menu)


def unregister() -> None:
    bpy.types.TOPBAR_MT_file_import.remove(_menu)
    bpy.utils.unregister_class(ImportLevel)
