"""Blender's materials as the exporter's: colours, texture, mapping."""

import json
import os
import re
from typing import Any

import bpy
from mathutils import Matrix

from .errors import ExportError

# The exporter's number for physically based shading, as materials from glTF have it.
_SHADING = 11
_MOST_SHININESS = 1000

# By shader node: the input of its colour.
_COLOURS = {
    "BSDF_PRINCIPLED": "Base Color",
    "BSDF_DIFFUSE": "Color",
    "BSDF_GLOSSY": "Color",
    "BSDF_GLASS": "Color",
    "EEVEE_SPECULAR": "Base Color",
    "EMISSION": "Color",
}


class Materials:
    """The materials of a scene, each written once."""

    def __init__(self) -> None:
        self.records: list[dict[str, Any]] = []
        self.folders: dict[str, None] = {}  # those of pictures on disk, in their order
        self._index: dict[Any, int] = {}
        self._uv_map: dict[int, str | None] = {}

    def of_object(
        self, slots: list[bpy.types.Material | None], name: str
    ) -> tuple[int | None, tuple[str | None, ...]]:
        """The index of the material that an object has, and the UV map of each slot."""
        parts = [None if material is None else self._add(material) for material in slots]
        maps = tuple(None if part is None else self._uv_map[part] for part in parts)
        if len(parts) < 2:
            return (parts[0] if parts else None), maps
        key = tuple(parts)
        if key not in self._index:
            self._index[key] = len(self.records)
            self.records.append({"name": name, "class": "multi", "subMaterials": parts})
        return self._index[key], maps

    def _add(self, material: bpy.types.Material) -> int:
        key = material.original.as_pointer()
        if key not in self._index:
            look = _Look(material)
            _require_finite(look.record)
            self._index[key] = index = len(self.records)
            self._uv_map[index] = look.uv_map
            self.records.append(look.record)
            if look.folder:
                self.folders[look.folder] = None
        return self._index[key]


class _Look:
    """What a material's nodes say, as a record of the scene file."""

    def __init__(self, material: bpy.types.Material) -> None:
        self.uv_map: str | None = None
        self.folder: str | None = None  # where the picture is, if it is a file
        self.record: dict[str, Any] = {"name": material.name, "shading": _SHADING}
        if not material.use_backface_culling:
            self.record["twoSided"] = True
        shader = _shader(material)
        if shader is None:
            self._set(material.diffuse_color, material.specular_intensity, material.roughness)
            return
        colour = shader.inputs[_COLOURS[shader.type]]
        texture = _find(colour, {"TEX_IMAGE"})
        shown = texture is not None and texture.image is not None
        rough = shader.type in {"BSDF_DIFFUSE", "EMISSION"}
        self._set(
            (1, 1, 1) if shown else _colour(colour),
            _number(shader, "Specular IOR Level", "Specular"),
            1 if rough else _number(shader, "Roughness"),
        )
        alpha = shader.inputs.get("Alpha")
        if alpha is not None and not alpha.is_linked:
            self.record["opacity"] = alpha.default_value
        if shown:
            self._add_texture(texture)

    def _set(self, diffuse: Any, specular: float, roughness: float) -> None:
        self.record["diffuse"] = list(diffuse)[:3]
        self.record["specular"] = [specular] * 3
        self.record["shininess"] = (1 - min(max(roughness, 0), 1)) ** 2 * _MOST_SHININESS

    def _add_texture(self, texture: bpy.types.Node) -> None:
        image = texture.image
        file = image.filepath and bpy.path.abspath(image.filepath, library=image.library)
        if file and not image.packed_file:
            self.folder = os.path.dirname(os.path.abspath(file))
        # The exporter takes a name from the last separator before the first dot of a path.
        self.record["diffuseMap"] = use = {"file": re.split(r"[\\/]", file)[-1] or image.name}
        place = Matrix.Identity(4)
        socket = texture.inputs["Vector"]
        while (node := _source(socket)) is not None and node.type == "MAPPING":
            place = place @ _mapping(node)
            socket = node.inputs["Vector"]
        if node is not None and node.type == "UVMAP":
            self.uv_map = node.uv_map or None
        if place != Matrix.Identity(4):
            use["uvTransform"] = [list(column)[:3] for column in place.transposed()]


def _require_finite(record: dict[str, Any]) -> None:
    try:
        json.dumps(record, allow_nan=False)
    except ValueError as error:
        raise ExportError(f'material "{record["name"]}": a number is not finite') from error


def _shader(material: bpy.types.Material) -> bpy.types.Node | None:
    """The first shader node before the material's output that has a colour."""
    if not material.use_nodes or material.node_tree is None:
        return None
    output = material.node_tree.get_output_node("ALL")
    return output and _find(output.inputs["Surface"], _COLOURS)


def _source(socket: bpy.types.NodeSocket) -> bpy.types.Node | None:
    """The node that a socket gets its value from, through those that only hand it on."""
    while socket.is_linked and socket.links and not socket.links[0].is_muted:
        link = socket.links[0]
        node = link.from_node
        if node.type == "REROUTE":
            socket = node.inputs[0]
        elif node.mute:
            passed = (one for one in node.internal_links if one.to_socket == link.from_socket)
            inner = next(passed, None)
            if inner is None:
                return None
            socket = inner.from_socket
        else:
            return node
    return None


def _find(socket: bpy.types.NodeSocket, types: Any) -> bpy.types.Node | None:
    """The nearest node of one of the types that a socket's value comes from."""
    nodes, seen = [_source(socket)], set()
    for node in nodes:
        if node is None or node.name in seen:
            continue
        if node.type in types:
            return node
        seen.add(node.name)
        nodes += map(_source, node.inputs)
    return None


def _colour(socket: bpy.types.NodeSocket) -> Any:
    node = _source(socket)
    if node is not None and node.type == "RGB":
        return node.outputs[0].default_value
    return socket.default_value


def _number(shader: bpy.types.Node, *names: str) -> float:
    """The value of the first input that the node has; its name depends on Blender's version."""
    for name in names:
        if name in shader.inputs and isinstance(shader.inputs[name].default_value, float):
            return shader.inputs[name].default_value
    return 0.0


def _mapping(node: bpy.types.Node) -> Matrix:
    """What a Mapping node does to texture coordinates."""

    def value(name: str) -> Any:
        return node.inputs[name].default_value

    turn_and_scale = value("Rotation").to_matrix().to_4x4() @ Matrix.Diagonal((*value("Scale"), 1))
    if node.vector_type in {"VECTOR", "NORMAL"}:
        return turn_and_scale
    place = Matrix.Translation(value("Location")) @ turn_and_scale
    return place.inverted_safe() if node.vector_type == "TEXTURE" else place
