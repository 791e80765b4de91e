"""Materials, texture coordinates and smoothing."""

import math

import bpy
from exporting import ExportCase, add, mesh, nodes

QUADS = (
    [(x, y, 0) for y in range(2) for x in range(4)],
    [(i, i + 1, i + 5, i + 4) for i in range(3)],
)


def material(name, **values):
    made = bpy.data.materials.new(name)
    made.use_nodes = True
    shader = made.node_tree.nodes["Principled BSDF"]
    for socket, value in values.items():
        shader.inputs[socket.replace("_", " ")].default_value = value
    return made


def texture(owner, path, *mappings, uv_map=None):
    """Puts a picture into Base Color, behind Mapping nodes: (type, place, turn, scale)."""
    nodes, links = owner.node_tree.nodes, owner.node_tree.links
    picture = nodes.new("ShaderNodeTexImage")
    picture.image = bpy.data.images.new("Picture", 1, 1)
    picture.image.filepath = path
    picture.image.source = "FILE"
    route = nodes.new("NodeReroute")
    links.new(picture.outputs["Color"], route.inputs[0])
    links.new(route.outputs[0], nodes["Principled BSDF"].inputs["Base Color"])
    socket = picture.inputs["Vector"]
    for kind, place, turn, scale in mappings:
        node = nodes.new("ShaderNodeMapping")
        node.vector_type = kind
        if kind != "VECTOR":
            node.inputs["Location"].default_value = place
        node.inputs["Rotation"].default_value = (0, 0, math.radians(turn))
        node.inputs["Scale"].default_value = scale
        links.new(node.outputs[0], socket)
        socket = node.inputs["Vector"]
    if uv_map:
        node = nodes.new("ShaderNodeUVMap")
        node.uv_map = uv_map
        links.new(node.outputs[0], socket)


class Materials(ExportCase):
    def test_values(self):
        glass = material("Glas", Base_Color=(0.1, 0.2, 0.3, 1), Alpha=0.25, Roughness=0.2)
        glass.use_backface_culling = True
        name = (
            "Specular"
            if "Specular" in glass.node_tree.nodes["Principled BSDF"].inputs
            else "Specular IOR Level"
        )
        glass.node_tree.nodes["Principled BSDF"].inputs[name].default_value = 0.75
        plain = bpy.data.materials.new("Plain")
        plain.diffuse_color = (0.5, 0.25, 1, 1)
        strip = add("Strip", mesh("Strip", *QUADS))
        for one in (glass, None, plain):
            strip.data.materials.append(one)
        for i, polygon in enumerate(strip.data.polygons):
            polygon.material_index = 3 * i  # Blender draws one that is too high with the last
        scene = self.export()
        records = scene["materials"]
        self.assertEqual(records[nodes(scene)["Strip"]["material"]]["subMaterials"], [0, None, 1])
        self.assertEqual(
            [face[4] if len(face) > 4 else 0 for face in nodes(scene)["Strip"]["mesh"]["faces"]],
            [0, 0, 2, 2, 2, 2],
        )
        self.assertAlmostEqual(records[0].pop("shininess"), 640, 2)
        self.assertEqual(
            records[0],
            {
                "name": "Glas",
                "diffuse": [0.1, 0.2, 0.3],
                "specular": [0.75] * 3,
                "opacity": 0.25,
                "shading": 11,
            },
        )
        self.assertEqual(records[1]["diffuse"], [0.5, 0.25, 1])
        self.assertTrue(records[1]["twoSided"])
        plain.diffuse_color[0] = math.nan
        self.assertEqual(self.refusal(), 'material "Plain": a number is not finite')

    def test_textures_and_mappings(self):
        turned = material("Turned")
        point = ("POINT", (0.5, 0.25, 0), 90, (2, 4, 1))
        texture(turned, r"//..\textures\v1.2\Wand ä.png", point)
        muted = turned.node_tree.nodes.new("ShaderNodeMapping")
        muted.mute = True
        muted.inputs["Scale"].default_value = (9, 9, 9)
        mapping = next(one for one in turned.node_tree.nodes if one.type == "MAPPING")
        turned.node_tree.links.new(muted.outputs[0], mapping.inputs["Vector"])
        inverse = material("Inverse")
        texture(inverse, "/nowhere/b.tga", ("TEXTURE", *point[1:]), point, uv_map="Second")
        strip = add("Strip", mesh("Strip", *QUADS))
        first, second = (strip.data.uv_layers.new(name=name) for name in ("First", "Second"))
        for i, (a, b) in enumerate(zip(first.data, second.data)):
            a.uv, b.uv = (i, 0.5), (-i, 2)
        for one in (turned, inverse):
            strip.data.materials.append(one)
        strip.data.polygons[1].material_index = 1
        scene = self.export()
        maps = [one["diffuseMap"] for one in scene["materials"][:2]]
        self.assertEqual([one["file"] for one in maps], ["Wand ä.png", "b.tga"])
        rows = [[round(part, 5) + 0.0 for part in row] for row in maps[0]["uvTransform"]]
        self.assertEqual(rows, [[0, 2, 0], [-4, 0, 0], [0, 0, 1], [0.5, 0.25, 0]])
        rows = maps[1].get("uvTransform", [[1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, 0]])
        self.assertEqual(
            [[round(part, 5) + 0.0 for part in row] for row in rows],
            [[1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, 0]],
        )
        lists = nodes(scene)["Strip"]["mesh"]
        for face, corners in zip(lists["faces"], lists["textureFaces"]):
            v = {lists["textureVertices"][t][1] for t in corners}
            self.assertEqual(v, {2 if len(face) > 4 and face[4] == 1 else 0.5})

    def test_textures_are_copied_from_where_they_are(self):
        (self.folder / "wall.png").write_bytes(b"picture")
        wall = material("Wall")
        texture(wall, str(self.folder / "wall.png"))
        item = add("Corner", mesh())
        item.data.materials.append(wall)
        self.export(copy_textures=str(self.folder / "copied"))
        self.assertEqual((self.folder / "copied/wall.png").read_bytes(), b"picture")


class Smoothing(ExportCase):
    def test_custom_normals_and_sharp_edges(self):
        roof = mesh(
            "Roof",
            [(0, 0, 0), (0, 2, 0), (1, 0, 1), (1, 2, 1), (2, 0, 0), (2, 2, 0)],
            [(0, 2, 3, 1), (2, 4, 5, 3)],
        )
        add("Roof", roof)

        def is_smooth():
            faces = nodes(self.export())["Roof"]["mesh"]["faces"]
            return (list(faces[0]) + [0])[3] & (list(faces[-1]) + [0])[3] != 0

        self.assertFalse(is_smooth())
        for polygon in roof.polygons:
            polygon.use_smooth = True
        self.assertTrue(is_smooth())
        if hasattr(roof, "use_auto_smooth"):  # until 4.0 only then edges can be sharp
            roof.use_auto_smooth, roof.auto_smooth_angle = True, math.pi
        for edge in roof.edges:
            edge.use_edge_sharp = set(edge.vertices) == {2, 3}
        self.assertFalse(is_smooth())
        for edge in roof.edges:
            edge.use_edge_sharp = False
        self.assertTrue(is_smooth())
        roof.normals_split_custom_set(
            [polygon.normal[:] for polygon in roof.polygons for _ in range(4)]
        )
        self.assertFalse(is_smooth())
