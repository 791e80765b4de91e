"""Gathers what Blender shows of a scene: its nodes, with meshes, materials and keywords."""

import contextlib
import itertools
import math
from collections.abc import Callable, Iterator
from typing import Any, NamedTuple

import bpy

from .errors import ExportError
from .keywords import text_of
from .materials import Materials
from .meshes import UvMaps, write_mesh
from .scene_file import SceneFile

# Called with the number of objects and instances that are gathered.
Progress = Callable[[int], None]
# Fills an instance's list of places, by level.
_NO_PLACE = 2**31 - 1


class Members(NamedTuple):
    """The objects of a collection; an instance's place counts them in this order."""

    ordered: list[bpy.types.Object]
    pointers: frozenset[int]


_NO_MEMBERS = Members([], frozenset())


class Scene:
    """A scene in the exporter's terms, made of an evaluated dependency graph."""

    def __init__(self, factor: float) -> None:
        """`factor` is what Blender's lengths are multiplied by."""
        self.file = SceneFile()
        self.materials = Materials()
        self.root: dict[str, Any] = {"name": "Scene Root", "children": []}
        self.is_empty = True
        self._factor = factor
        self._nodes: dict[Any, dict[str, Any]] = {}
        self._meshes: dict[tuple[int, UvMaps], dict[str, Any] | None] = {}
        self._members: dict[int, Members] = {}

    def gather(self, depsgraph: bpy.types.Depsgraph, selected: bool, progress: Progress) -> None:
        """Adds everything that shows as triangles; only what is selected if `selected`."""
        own = {item.as_pointer() for item in depsgraph.view_layer.objects}
        for number, instance in enumerate(depsgraph.object_instances):
            progress(number)
            # What shows of curves, texts and metaballs is in the list a second time, as meshes.
            if not instance.show_self or instance.object.type != "MESH":
                continue
            owner = (instance.parent if instance.is_instance else instance.object).original
            # The list has objects of collections that are hidden with the eye. Those of a
            # background scene are in no view layer.
            is_visible = owner.as_pointer() not in own or owner.visible_get()
            if is_visible and (not selected or owner.select_get()):
                self._add(instance)

    def write(self, path: str) -> None:
        self.file.write(path, self.root, self.materials.records)

    def _add(self, instance: bpy.types.DepsgraphObjectInstance) -> None:
        shown = instance.object
        mesh = shown.data
        material, uv_maps = self.materials.of_object(_materials(shown, mesh), shown.name)
        key = (mesh.as_pointer(), uv_maps)
        if key not in self._meshes:
            with _whole_mesh(shown) as whole:
                self._meshes[key] = write_mesh(self.file, whole, shown.name, uv_maps)
        lists = self._meshes[key]
        if lists is None:
            return
        node = self._instance_node(instance)
        node["mesh"] = lists
        node["objectTransform"] = self._transform(instance)
        node["wireColor"] = [round(255 * min(max(part, 0), 1)) for part in shown.color[:3]]
        if material is not None:
            node["material"] = material
        self.is_empty = False

    def _transform(self, instance: bpy.types.DepsgraphObjectInstance) -> list[list[float]]:
        """The rows of the exporter's matrix, which are the columns of Blender's."""
        world = instance.matrix_world
        rows = [[self._factor * part for part in column[:3]] for column in world.transposed()]
        if not all(map(math.isfinite, itertools.chain(*rows))):
            raise ExportError(f'object "{instance.object.name}": its place is not finite')
        return rows

    def _instance_node(self, instance: bpy.types.DepsgraphObjectInstance) -> dict[str, Any]:
        shown = instance.object
        if not instance.is_instance:
            return self._node(shown.original, shown)
        holder = instance.parent.original
        node = self._node(holder, holder)
        key: tuple[int, ...] = (holder.as_pointer(),)
        for member in self._path(instance):
            # Objects of a collection keep their parents in it, whose names may mean something.
            chain = [member]
            inside = self._members_of(holder).pointers
            while chain[-1].parent is not None and chain[-1].parent.as_pointer() in inside:
                chain.append(chain[-1].parent)
            for one in reversed(chain):
                node = self._child(node, (*key, one.as_pointer()), one)
            key = (*key, member.as_pointer())
            holder = member
        # The mesh of a curve is an instance of the curve.
        if shown.original == holder and "mesh" not in node:
            return node
        return self._child(node, (*key, len(self._nodes)), shown)

    def _path(self, instance: bpy.types.DepsgraphObjectInstance) -> list[bpy.types.Object]:
        """What an instance is of: an object of a collection, after the holders of that one."""
        path = []
        holder = instance.parent.original
        for place in reversed([place for place in instance.persistent_id if place != _NO_PLACE]):
            members = self._members_of(holder).ordered
            if place >= len(members):  # from here on of geometry nodes or particles
                break
            holder = members[place]
            path.append(holder)
        return path

    def _members_of(self, holder: bpy.types.Object) -> Members:
        """The objects of the collection that an object shows an instance of."""
        collection = holder.instance_collection if holder.instance_type == "COLLECTION" else None
        if collection is None:
            return _NO_MEMBERS
        key = collection.as_pointer()
        if key not in self._members:
            objects = list(collection.all_objects)
            pointers = frozenset(member.as_pointer() for member in objects)
            self._members[key] = Members(objects, pointers)
        return self._members[key]

    def _node(self, original: bpy.types.Object, shown: bpy.types.Object) -> dict[str, Any]:
        """The node of an object that is no instance, below those of its parents."""
        key = original.as_pointer()
        if key in self._nodes:
            return self._nodes[key]
        above = original.parent
        parent = self.root if above is None else self._node(above, above)
        return self._child(parent, key, shown)

    def _child(self, parent: dict[str, Any], key: Any, shown: bpy.types.Object) -> dict[str, Any]:
        """The node of that key; it is made when it is not there yet."""
        if key not in self._nodes:
            self._nodes[key] = node = {"name": shown.name}
            text = text_of(shown)
            if text:
                node["userProperties"] = text
            parent.setdefault("children", []).append(node)
        return self._nodes[key]


@contextlib.contextmanager
def _whole_mesh(shown: bpy.types.Object) -> Iterator[bpy.types.Mesh]:
    """The mesh that is drawn; a last Subdivision modifier may be left to the graphics card."""
    if not any(last.type == "SUBSURF" for last in shown.modifiers[-1:]):
        yield shown.data  # a copy may be cut into other triangles
        return
    try:
        yield shown.to_mesh()
    finally:
        shown.to_mesh_clear()


def _materials(shown: bpy.types.Object, mesh: bpy.types.Mesh) -> list[bpy.types.Material | None]:
    """The material of each slot, as Blender draws it: the object's own or its mesh's."""
    slots = shown.material_slots
    materials = list(mesh.materials)
    for index, slot in enumerate(slots[: len(materials)]):
        if slot.link == "OBJECT":
            materials[index] = slot.material
    return materials
