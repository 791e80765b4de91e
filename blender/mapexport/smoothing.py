"""The normals that Blender shades the corners of a mesh with."""

import bpy
import numpy as np
from numpy.typing import NDArray


def corner_normals(mesh: bpy.types.Mesh) -> NDArray[np.float32] | None:
    """A row per corner of the mesh's polygons, or None where the faces are flat.

    The exporter makes its smoothing groups from them.
    """
    smooth = np.empty(len(mesh.polygons), np.bool_)
    mesh.polygons.foreach_get("use_smooth", smooth)
    if not smooth.any() and not mesh.has_custom_normals:
        return None
    normals = np.empty((len(mesh.loops), 3), np.float32)
    if hasattr(mesh, "corner_normals"):  # since 4.1
        mesh.corner_normals.foreach_get("vector", normals.ravel())
    else:
        mesh.calc_normals_split()
        mesh.loops.foreach_get("normal", normals.ravel())
        mesh.free_normals_split()
    return normals
