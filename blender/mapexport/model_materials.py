"""Blender's materials from those of a model file."""

from pathlib import Path
from typing import Any

import bpy

_MOST_SHININESS = 1000  # as materials.py writes it


def make_material(record: dict[str, Any], folder: Path) -> bpy.types.Material:
    """A material of the program's document; its texture is looked for in the folder."""
    material = bpy.data.materials.new(record["name"] or "Material")
    opacity = _part(record["scalar1"])
    colour = [_part(value) for value in record["diffuse"][:3]]
    material.use_nodes = True
    material.use_backface_culling = not record["twoSided"]
    material.diffuse_color = (*colour, opacity)
    if opacity < 1:
        material.blend_method = "BLEND"
    tree = material.node_tree
    shader = next(node for node in tree.nodes if node.type == "BSDF_PRINCIPLED")
    inputs = shader.inputs
    inputs["Base Color"].default_value = (*colour, 1)
    inputs["Alpha"].default_value = opacity
    inputs["Roughness"].default_value = 1 - _part(record["scalar2"], _MOST_SHININESS) ** 0.5
    specular = inputs.get("Specular IOR Level") or inputs["Specular"]
    specular.default_value = sum(_part(value) for value in record["specular"][:3]) / 3
    name = record["textureName"]
    if name and name != "NULL":
        texture = tree.nodes.new("ShaderNodeTexImage")
        texture.location = (-300, 300)
        texture.image = _image(name, folder)
        tree.links.new(texture.outputs["Color"], inputs["Base Color"])
    return material


def _part(value: float | str, most: float = 1) -> float:
    """The value from 0 to 1, when `most` is the most; not a number is a text in the document."""
    if isinstance(value, str):
        return 1.0 if value == "Infinity" else 0.0
    return min(max(value / most, 0.0), 1.0)


def _image(name: str, folder: Path) -> bpy.types.Image:
    """The picture of that name, in any case, in the folder; one that is missing keeps its path."""
    relative = Path(name.replace("\\", "/"))
    wanted = folder / relative
    parent = wanted.parent
    if not wanted.exists() and parent.is_dir():
        wanted = next((one for one in parent.iterdir() if one.name.lower() == wanted.name), wanted)
    for image in bpy.data.images:
        if image.source == "FILE" and bpy.path.abspath(image.filepath) == str(wanted):
            return image
    image = bpy.data.images.new(relative.name, 1, 1)
    image.source, image.filepath = "FILE", str(wanted)
    return image
