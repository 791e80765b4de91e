"""From the axes and triangles of a model file back to Blender's."""

from typing import Any

import numpy as np

from .model_file import Array, Group, Triangles

# By the export's option: the part of a stored point that x, y and z are, and their signs; and
# whether the normals point inward.
_AXES = {
    "left-handed": ((2, 0, 1), (-1, 1, 1), False),
    "right-handed": ((1, 0, 2), (1, -1, 1), True),
    "max": ((0, 1, 2), (1, 1, 1), True),
    "inverse-max": ((0, 1, 2), (-1, 1, 1), False),
}
_UV_SIGNS = {"invert-y": (1, -1), "invert-x": (-1, 1), "invert-xy": (-1, -1), "max": (1, 1)}


def to_blender(group: Group, coordinates: str, uv_coordinates: str, scale: float) -> None:
    """Undoes what the export did to the axes, the units and the order of the corners."""
    order, signs, inward = _AXES[coordinates]
    axes = np.array(signs, np.float32)
    turn = -axes if inward else axes
    for part in (group.drawn, group.undrawn):
        part.points = (part.points[:, order] / (axes * np.float64(scale))).astype(np.float32)
        part.planes = part.planes[:, order] * turn
        part.vertices = part.vertices[:, ::-1]
        if part.normals is not None:
            part.normals = part.normals[:, ::-1, order] * turn
        if part.uvs is not None:
            part.uvs = part.uvs[:, ::-1] * np.array(_UV_SIGNS[uv_coordinates], np.float32)
        if part.colours is not None:
            part.colours = part.colours[:, ::-1]


def chosen(part: Triangles, which: Array) -> Triangles:
    """These triangles only; the points stay."""

    def rows(values: Array | None) -> Any:
        return None if values is None else values[which]

    return Triangles(
        part.points,
        *map(rows, (part.vertices, part.planes, part.surface_sets, part.materials)),
        *map(rows, (part.normals, part.uvs, part.colours)),
    )


def finite(part: Triangles) -> Triangles:
    """Without triangles that have a corner that is not finite."""
    return chosen(part, np.isfinite(part.points).all(axis=1)[part.vertices].all(axis=1))


def without_copies(part: Triangles, two_sided: list[int]) -> Triangles:
    """Without the reversed copies that the export made of the triangles of these materials.

    A copy looks away from the corner normals, which it shares with its front: a triangle of the
    same material and vertices in reverse order.
    """
    if not two_sided or part.materials is None or part.normals is None:
        return part
    candidates = np.flatnonzero(np.isin(part.materials, two_sided))
    with np.errstate(invalid="ignore", over="ignore"):
        normals = part.normals[candidates].sum(axis=1, dtype=np.float64)
        away = (normals * part.planes[candidates]).sum(axis=1) < 0
    fronts, backs = candidates[~away], candidates[away]
    found, counts = np.unique(_keys(part, fronts, part.vertices[fronts]), return_counts=True)
    keys = _keys(part, backs, part.vertices[backs][:, ::-1])
    if not len(found) or not len(keys):
        return part
    places = np.minimum(np.searchsorted(found, keys), len(found) - 1)
    is_copy = (found[places] == keys) & (_ranks(keys) < counts[places])
    kept = np.ones(len(part.vertices), np.bool_)
    kept[backs[is_copy]] = False
    return chosen(part, kept)


def _keys(part: Triangles, which: Array, vertices: Array) -> Array:
    """The same number for triangles of one material and vertices, whichever comes first."""
    assert part.materials is not None
    turns = (vertices.argmin(axis=1)[:, None] + np.arange(3)) % 3
    turned = np.take_along_axis(vertices, turns, axis=1)
    return turned @ np.array([1 << 32, 1 << 16, 1]) + (part.materials[which] << 48)


def _ranks(keys: Array) -> Array:
    """How often the key occurs before each entry."""
    order = np.argsort(keys, kind="stable")
    ordered = keys[order]
    begins = np.r_[True, ordered[1:] != ordered[:-1]]
    starts = np.maximum.accumulate(np.where(begins, np.arange(len(keys)), 0))
    ranks = np.empty(len(keys), np.int64)
    ranks[order] = np.arange(len(keys)) - starts
    return ranks


def joined(parts: list[Triangles]) -> Triangles:
    """Triangles of several groups; points of equal places, as on a cut, become one."""
    parts = [part for part in parts if len(part.vertices)] or parts[:1]
    if len(parts) == 1:
        return parts[0]
    starts = np.cumsum([0] + [len(part.points) for part in parts])
    points = np.concatenate([part.points for part in parts])
    points += 0.0  # no -0
    order = np.lexsort(points.T)
    ordered = points[order]
    places = np.cumsum(np.r_[0, (ordered[1:] != ordered[:-1]).any(axis=1)])
    first = np.empty(len(points), np.int64)
    first[order] = places
    distinct = np.empty((places[-1] + 1, 3), np.float32)
    distinct[places] = ordered
    vertices = np.concatenate([part.vertices + start for part, start in zip(parts, starts)])

    def rows(values: list[Any]) -> Any:
        return None if values[0] is None else np.concatenate(values)

    fields = ("planes", "surface_sets", "materials", "normals", "uvs", "colours")
    return Triangles(
        distinct,
        first[vertices],
        *(rows([getattr(part, name) for part in parts]) for name in fields),
    )
