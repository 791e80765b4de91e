"""Writes the FBX files of tests/models/blender with Blender, always the same bytes:

    blender --background --factory-startup --python tests/models/make_blender_fbx.py

instances.fbx        one mesh on three nodes, each with its own material, and user property text
instances_ascii.fbx  the same, ASCII; Blender writes only binary files, so this script converts it
offsets.fbx          geometric offsets on nested nodes, on an edge and on a helper; difficult names
skin.fbx             a mesh on two bones, with two sets of texture coordinates and a texture
level.fbx            in metres: custom properties on nodes and a mesh, a hidden node with
                     a shape key, a scaled texture

Blender exports a custom property under its own name. That is how the user property text and the
geometric offsets, which Blender itself doesn't have, get into the files.
"""
import datetime
import math
import pathlib
import types

import addon_utils
import bpy

addon_utils.enable("io_scene_fbx")
from io_scene_fbx import export_fbx_bin, fbx_utils, parse_fbx

FOLDER = pathlib.Path(__file__).resolve().parent / "blender"
USER_TEXT = "floorface\r\nclimbable\r\n"
INCH = 0.0254
QUAD = [(-1, -1, 0), (1, -1, 0), (1, 1, 0), (-1, 1, 0)]

# Numbers in the order of their use, a fixed time and bare file names, where the exporter takes
# hashes, the clock and this folder's path.
fbx_utils._key_to_uuid = lambda uuids, key: 1000 + len(uuids)
export_fbx_bin.datetime = types.SimpleNamespace(
    datetime=types.SimpleNamespace(now=lambda: datetime.datetime(2000, 1, 1)))


# A mesh whose nodes have their own materials is exported once per node, as "Quad.001" and so on; with
# one key for all copies it is exported once.
blender_key = fbx_utils.get_blenderID_key
export_fbx_bin.get_blenderID_key = lambda data: (
    f"mesh {data.name.split('.')[0]}" if isinstance(data, bpy.types.Mesh) else blender_key(data))

export_fbx_bin._gen_vid_path = lambda image, scene_data: (image.filepath[2:], image.filepath[2:])


def start(unit=INCH):
    bpy.ops.wm.read_factory_settings(use_empty=True)
    bpy.context.scene.unit_settings.scale_length = unit


def add(name, data, place=(0, 0, 0), turn=0, parent=None, **properties):
    node = bpy.data.objects.new(name, data)
    node.location = place
    node.rotation_euler = (0, 0, math.radians(turn))
    node.parent = parent
    for key, value in properties.items():
        node[key] = value
    bpy.context.collection.objects.link(node)
    return node


def mesh(name, points, faces, edges=()):
    result = bpy.data.meshes.new(name)
    result.from_pydata(points, edges, faces)
    return result


def material(name, color):
    result = bpy.data.materials.new(name)
    result.diffuse_color = (*color, 1)
    return result


def save(name):
    bpy.ops.export_scene.fbx(
        filepath=str(FOLDER / name), axis_forward="Y", axis_up="Z", use_custom_props=True,
        apply_scale_options="FBX_SCALE_UNITS", use_mesh_edges=True, bake_anim=False,
        add_leaf_bones=False)


def make_instances():
    start()
    quad = mesh("Quad", QUAD, [(0, 1, 2, 3)])
    quad.materials.append(None)
    for i, (name, color) in enumerate(
            [("Green", (0, 1, 0)), ("Red", (1, 0, 0)), ("Blue", (0, 0, 1))]):
        node = add(name, quad, (0, 20 - 20 * i, 0), UDP3DSMAX=USER_TEXT)
        node.material_slots[0].link = "OBJECT"
        node.material_slots[0].material = material(name + "Mat", color)
    save("instances.fbx")


def make_offsets():
    start()
    offset = {"GeometricTranslation": (10.0, 0.0, 0.25), "GeometricRotation": (0.0, 0.0, -90.0),
              "GeometricScaling": (1.0, 1.0, 0.5)}
    quad = mesh("Quad", QUAD, [(0, 1, 2, 3)])
    add("Plane001", quad, **offset)
    add("Line001", mesh("Line", QUAD[:2], [], [(0, 1)]), **offset)
    add("Point001", None, **offset)
    parent = None
    for i in range(4):  # each a quarter turn on, its mesh 40 away from it
        parent = add(f"Box00{i + 1}", quad, turn=90 if i else 0, parent=parent,
                     GeometricTranslation=(40.0, 0.0, 0.0))
    add("aβカ😂", None)
    add("&quot;", quad, UDP3DSMAX="notrendered\r\n")
    add("\"'&\"", quad, (-20, 20, 0))
    save("offsets.fbx")


def make_skin():
    start()
    bones = add("Bones", bpy.data.armatures.new("Bones"))
    bpy.context.view_layer.objects.active = bones
    bpy.ops.object.mode_set(mode="EDIT")
    for name, low, high in [("Lower", 0, 2), ("Upper", 2, 4)]:
        bone = bones.data.edit_bones.new(name)
        bone.head, bone.tail = (0, 0, low), (0, 0, high)
        bone.parent = bones.data.edit_bones.get("Lower") if low else None
    bpy.ops.object.mode_set(mode="OBJECT")
    strip = mesh("Strip", [(x, 0, z) for z in (0, 2, 4) for x in (-1, 1)],
                 [(0, 1, 3, 2), (2, 3, 5, 4)])
    for layer in ("First", "Second"):
        for loop, corner in zip(strip.loops, strip.uv_layers.new(name=layer).data):
            point = strip.vertices[loop.vertex_index].co
            corner.uv = (point.x / 2 + 0.5, point.z / 4)
    painted = material("Painted", (1, 1, 1))
    painted.use_nodes = True
    image = bpy.data.images.new("bark", 1, 1)
    image.source, image.filepath = "FILE", "//bark.tga"
    nodes = painted.node_tree.nodes
    nodes.new("ShaderNodeTexImage").image = image
    painted.node_tree.links.new(nodes["Image Texture"].outputs["Color"],
                                nodes["Principled BSDF"].inputs["Base Color"])
    strip.materials.append(painted)
    skin = add("Skin", strip, (5, 0, 0), parent=bones)
    skin.modifiers.new("Bones", "ARMATURE").object = bones
    skin.vertex_groups.new(name="Lower").add([0, 1, 2, 3], 1, "REPLACE")
    skin.vertex_groups.new(name="Upper").add([2, 3, 4, 5], 1, "REPLACE")
    save("skin.fbx")


def make_level():
    start(1)
    quad = mesh("Quad", QUAD, [(0, 1, 2, 3)])
    quad["Climbable"] = 1
    quad.uv_layers.new()
    tiled = material("Tiled", (1, 1, 1))
    tiled.use_nodes = True
    nodes = tiled.node_tree.nodes
    image = bpy.data.images.new("tile", 1, 1)
    image.source, image.filepath = "FILE", "//tile.tga"
    texture, mapping = nodes.new("ShaderNodeTexImage"), nodes.new("ShaderNodeMapping")
    texture.image = image
    mapping.inputs["Location"].default_value = (0.25, 0.5, 0)
    mapping.inputs["Rotation"].default_value = (0, 0, math.radians(90))
    mapping.inputs["Scale"].default_value = (4, 2, 1)
    tiled.node_tree.links.new(mapping.outputs["Vector"], texture.inputs["Vector"])
    tiled.node_tree.links.new(texture.outputs["Color"], nodes["Principled BSDF"].inputs["Base Color"])
    quad.materials.append(tiled)
    floor = add("Floor", quad, (1, 2, 3), FloorFace=1.0, notrendered=0, notcollidable="maybe",
                userProperties="one, two\\nthree;four")
    hidden = add("Hidden", mesh("Triangle", QUAD[:3], [(0, 1, 2)]), parent=floor)
    hidden.shape_key_add()
    hidden.shape_key_add(name="Key").data[0].co.z = 1
    add("Below", hidden.data, parent=hidden, notshownplan="Yes")
    hidden.hide_viewport = True
    save("level.fbx")


def ascii_text(value):
    """A string of a binary file, which puts a name's class behind it, as ASCII files write it."""
    text = "::".join(reversed(value.decode().split("\0\1")))
    for character, entity in [("&", "&amp;"), ('"', "&quot;"), ("\r", "&cr;"), ("\n", "&lf;")]:
        text = text.replace(character, entity)
    return f'"{text}"'


def ascii_lines(element, indent=""):
    head = f"{indent}{element.id.decode()}: "
    if len(element.props) == 1 and bytes(element.props_type) in (b"i", b"l", b"d", b"f", b"b"):
        numbers = ",".join(f"{number:.9g}" for number in element.props[0])
        return [f"{head}*{len(element.props[0])} {{", f"{indent}\ta: {numbers}", indent + "}"]
    # The file's id is the one property of raw bytes; ASCII files have none.
    if b"R" in bytes(element.props_type):
        return []
    head += ", ".join(ascii_text(value) if isinstance(value, bytes) else
                      f"{value:.9g}" if isinstance(value, float) else str(int(value))
                      for value in element.props)
    children = [line for child in element.elems for line in ascii_lines(child, indent + "\t")]
    # Objects have braces even when nothing is in them; a value has none.
    return [head + " {", *children, indent + "}"] if children else [head.rstrip()]


def convert_to_ascii(source, target):
    root, version = parse_fbx.parse(str(FOLDER / source))
    lines = [f"; FBX {version // 1000}.{version // 100 % 10}.0 project file"]
    for element in root.elems:
        if element.elems:  # the file's id, time and maker are only in binary files
            lines += ascii_lines(element)
    (FOLDER / target).write_text("\n".join(lines) + "\n", encoding="utf-8")


make_instances()
make_offsets()
make_skin()
make_level()
convert_to_ascii("instances.fbx", "instances_ascii.fbx")
