"""The level of tests/blender, exported by the add-on, is what Blender shows."""

import json

import addon_utils
import bpy
import make_level
from exporting import ExportCase, program
from triangles import Places, compare_mesh, triangles_of

# In centimetres.
TOLERANCE = 0.02


class Level(ExportCase):
    def setUp(self):
        super().setUp()
        make_level.FOLDER = self.folder
        make_level.mappings.clear()
        make_level.build()
        bpy.context.view_layer.update()
        self.answers = make_level.answers()

    def differences(self, scene, meshes):
        places = Places(triangles_of(scene), TOLERANCE)
        found = {}
        for name in meshes:
            counts = compare_mesh(name, self.answers[name], places, str)
            found[name] = {kind: count for kind, count in counts.items() if count}
        found["none of these"] = {"extra": count} if (count := len(list(places.free()))) else {}
        return {name: counts for name, counts in found.items() if counts}

    def test_equals_what_blender_shows(self):
        bpy.data.objects["Hull_hidden"].hide_viewport = True
        self.assertEqual(self.differences(self.export(objects="all"), self.answers), {})
        self.assertTrue(bpy.data.objects["Hull_hidden"].hide_viewport)
        seen = [name for name in self.answers if name != "Hull_hidden"]
        scene = self.export()
        self.assertEqual(self.differences(scene, seen), {})

        # Linked copies and instances are one mesh in the file.
        with open(self.folder / "kept.scene.bin", "rb") as file:
            head = file.read(40)
            tree = json.loads(file.read(int.from_bytes(head[24:32], "little")))
        wedges = [node["mesh"] for node in walk(tree["root"]) if "Wedge" in node["name"]]
        self.assertEqual(wedges, [wedges[0]] * 3)
        lamps = [node["mesh"] for node in walk(tree["root"]) if node["name"] == "Lamp"]
        self.assertEqual(lamps, [lamps[0]] * 3)

    def test_flags_and_sets_of_the_output(self):
        self.export(objects="all")
        model = json.loads(program("inspect", self.output, "--json"))
        sets = {
            (one["name"].removesuffix(".set"), one["flags"]): len(one["faces"])
            for group in model["groups"]
            for one in group["surfaceSets"]
        }
        flags = sorted(flag for _, flag in sets)
        # none, notcollidable, collision only, floorface, static
        self.assertEqual(flags, [0x00, 0x02, 0x04, 0x10, 0x80])

    def test_other_formats_hold_the_same_triangles(self):
        for addon in ("io_scene_fbx", "io_scene_gltf2"):
            addon_utils.enable(addon)
        glb, fbx = str(self.folder / "level.glb"), str(self.folder / "level.fbx")
        gltf = bpy.ops.export_scene.gltf
        known = gltf.get_rna_type().properties.keys()
        posed = {"export_rest_position_armature": False}  # since 4.0
        posed = {name: value for name, value in posed.items() if name in known}
        gltf(filepath=glb, export_apply=True, export_current_frame=True, **posed)
        bpy.ops.export_scene.fbx(filepath=fbx, bake_anim=False)
        kinds = ("missing", "reversed", "other diagonal", "extra")
        for path in (glb, fbx):
            found = self.differences(json.loads(program("scene", path)), self.answers)
            found = {n: c for n, c in found.items() if not c.keys().isdisjoint(kinds)}
            # The shear of a node itself is what these formats can't hold.
            self.assertEqual(found.keys(), {"Sheared itself", "none of these"}, path)


def walk(node):
    for child in node.get("children", ()):
        yield child
        yield from walk(child)
