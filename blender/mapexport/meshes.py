"""The lists of a mesh: positions, triangles, corner normals and texture coordinates."""

import bpy
import numpy as np
from numpy.typing import NDArray

from .errors import ExportError
from .scene_file import SceneFile
from .smoothing import corner_normals

# A name for each material slot; None is the map that Blender renders with.
UvMaps = tuple[str | None, ...]


def write_mesh(
    scene: SceneFile, mesh: bpy.types.Mesh, name: str, uv_maps: UvMaps
) -> dict[str, dict[str, int]] | None:
    """The places of the lists; None for a mesh without triangles.

    `uv_maps` has an entry per material slot. `name` is the object's, for messages.
    """
    mesh.calc_loop_triangles()
    count = len(mesh.loop_triangles)
    if count == 0:
        return None
    positions = np.empty((len(mesh.vertices), 3), np.float32)
    mesh.vertices.foreach_get("co", positions.ravel())
    _require_finite(positions, name, "its vertices")
    corners = np.empty(3 * count, np.int32)
    mesh.loop_triangles.foreach_get("loops", corners)
    vertex_of = np.empty(len(mesh.loops), np.int32)
    mesh.loops.foreach_get("vertex_index", vertex_of)

    faces = np.zeros((count, 5), np.uint32)
    faces[:, :3] = vertex_of[corners].reshape(-1, 3)
    if len(uv_maps) > 1:
        slots = np.empty(count, np.int32)
        mesh.loop_triangles.foreach_get("material_index", slots)
        faces[:, 4] = slots.clip(0, len(uv_maps) - 1)
    lists = {"vertices": scene.add(positions), "faces": scene.add(faces)}

    normals = corner_normals(mesh)
    if normals is not None:
        _require_finite(normals, name, "its normals")
        lists["cornerNormals"] = scene.add(normals[corners])
    coordinates = _coordinates(mesh, uv_maps)
    if coordinates is not None:
        _require_finite(coordinates, name, "its texture coordinates")
        lists["textureVertices"] = scene.add(coordinates)
        lists["textureFaces"] = scene.add(corners.astype(np.uint32).reshape(-1, 3))
    return lists


def _require_finite(numbers: NDArray[np.float32], name: str, what: str) -> None:
    if not np.isfinite(numbers).all():
        raise ExportError(f'object "{name}": a number of {what} is not finite')


def _coordinates(mesh: bpy.types.Mesh, uv_maps: UvMaps) -> NDArray[np.float32] | None:
    """A row u, v, 0 per corner of the mesh's polygons, each from the map of its material."""
    layers = mesh.uv_layers
    if not layers:
        return None
    shown = next((layer for layer in layers if layer.active_render), layers[0])
    used = [layers.get(name, shown) if name else shown for name in uv_maps] or [shown]
    coordinates = np.zeros((len(mesh.loops), 3), np.float32)
    coordinates[:, :2] = _layer(used[0], len(mesh.loops))
    if any(layer.name != used[0].name for layer in used):
        slots = np.empty(len(mesh.polygons), np.int32)
        mesh.polygons.foreach_get("material_index", slots)
        sizes = np.empty(len(mesh.polygons), np.int32)
        mesh.polygons.foreach_get("loop_total", sizes)
        slot_of = np.repeat(slots.clip(0, len(used) - 1), sizes)
        for index, layer in enumerate(used[1:], 1):
            chosen = slot_of == index
            coordinates[chosen, :2] = _layer(layer, len(mesh.loops))[chosen]
    return coordinates


def _layer(layer: bpy.types.MeshUVLoopLayer, count: int) -> NDArray[np.float32]:
    numbers = np.empty((count, 2), np.float32)
    if hasattr(layer, "uv"):  # since 3.5
        layer.uv.foreach_get("vector", numbers.ravel())
    else:
        layer.data.foreach_get("uv", numbers.ravel())
    return numbers
