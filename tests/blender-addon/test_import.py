"""Models that are imported: the same triangles, sets and flags as were exported."""

import collections
import json
import pathlib
import unittest.mock

import bpy
from exporting import PROGRAM, ExportCase, program
from mapexport import import_model, model_file
from mapexport.errors import ExportError

TESTS = pathlib.Path(__file__).resolve().parent.parent
AXES = ("left-handed", "right-handed", "max", "inverse-max")
UVS = ("invert-y", "invert-x", "invert-xy", "max")


def triangles(path):
    """How often each triangle is in a model: set, flags, material, corners from the least on."""
    found = collections.Counter()
    document = json.loads(program("inspect", path, "--json"))
    names = [one["name"] for one in document["materials"]]

    def number(value, digits):
        return round(value, digits) + 0.0

    for group in document["groups"]:
        in_first = [(batch, f) for batch, one in enumerate(group["batches"]) for f in one["faces"]]
        faces = group.get("faces") or [
            {"batch": batch, "vertices": f["vertices"], "face": f} for batch, f in in_first
        ]
        for face in faces:
            batch = group["batches"][face["batch"]] if face["batch"] != -1 else None
            of_set = group["surfaceSets"][face["surfaceSet"]] if "surfaceSet" in face else {}
            points = group["vertices" if batch else "collisionPoints"]
            corners = [[number(x, 1) for x in points[i]] for i in face["vertices"]]
            material = None
            if batch:
                at = face["face"] if "face" in face else batch["faces"][face["position"]]
                material = names[batch["material"]] if batch["material"] >= 0 else None
                for corner, place in zip(corners, at["corners"]):
                    looks = batch["corners"][place]
                    corner += [number(x, 1) for x in looks["normal"]]
                    wire = [] if names else looks["colour"]  # else it depends on the whole node
                    corner += [number(x, 2) for x in looks["uv"] + wire]
            least = corners.index(min(corners))
            turned = tuple(map(tuple, corners[least:] + corners[:least]))
            found[of_set.get("name"), of_set.get("flags"), material, turned] += 1
    return found


class Import(ExportCase):
    def model(self, scene, *options, name="first.kob"):
        path = self.folder / name
        program("export", TESTS / scene, path, "--fresh", *options)
        return path

    def read(self, path, **options):
        done = bpy.ops.import_scene.mapexport(filepath=str(path), **options)
        self.assertEqual(done, {"FINISHED"})

    def read_again(self, first, **options):
        """What is imported, exported again."""
        second = self.folder / ("second" + first.suffix)
        self.read(first, **options)
        bpy.ops.export_scene.mapexport(filepath=str(second), split=False, **options)
        for kind in ("objects", "meshes", "materials", "images", "collections"):
            bpy.data.batch_remove(getattr(bpy.data, kind))
        return second

    def test_same_triangles(self):
        rows = [
            ("golden/flags-and-sets.scene.json", "first.kob", {}),
            ("golden/collision.scene.json", "first.kob", {}),
            ("golden/two-sided.scene.json", "first.kob", {}),
            ("golden/two-sided.scene.json", "first.qob", {}),
            ("blender/level.glb", "first.qob", {}),
        ]
        for axes, uvs in zip(AXES, UVS):
            options = {"coordinates": axes, "texture_coordinates": uvs}
            rows.append(("blender/level.glb", "first.kob", options))
        for scene, name, options in rows:
            with self.subTest(scene=scene, name=name, **options):
                words = [
                    f"--{option.replace('_', '-')}={value}" for option, value in options.items()
                ]
                first = self.model(scene, *words, name=name)
                before, after = triangles(first), triangles(self.read_again(first, **options))
                self.assertGreater(len(before), 0)
                self.assertEqual(before - after, collections.Counter())
                self.assertEqual(after - before, collections.Counter())

    def test_divided(self):
        whole = self.model("blender/level.glb")
        parts = self.model("blender/level.glb", "--split", "--longest-list=300", name="parts.kob")
        self.assertGreater(len(json.loads(program("inspect", parts, "--json"))["groups"]), 1)
        bpy.context.scene.unit_settings.scale_length = 0.5
        self.assertEqual(triangles(whole), triangles(self.read_again(parts, scale=50)))

    def test_objects(self):
        self.model("blender/level.glb")
        (self.folder / "STONE").write_bytes(b"")
        bpy.ops.wm.save_as_mainfile(filepath=str(self.folder / "level.blend"))
        self.read("//first.kob")
        self.assertEqual(len(bpy.context.selected_objects), len(bpy.data.objects))
        level = bpy.data.collections["first"]
        (hidden,) = level.children
        (hull,) = hidden.objects
        self.assertTrue(hidden.hide_render)
        self.assertEqual(hull["userProperties"], "notrendered")
        self.assertEqual(len(hull.data.polygons), 12)
        points = [hull.matrix_world @ vertex.co for vertex in hull.data.vertices]
        self.assertEqual([round(max(axis), 3) for axis in zip(*points)], [17, 1, 2])
        names = {one.name: one.get("userProperties") for one in level.objects}
        self.assertEqual(names.pop("static_house"), None)
        self.assertIn("floorface", names.values())
        stone = bpy.data.materials["Stone"]
        textures = [node.image for node in stone.node_tree.nodes if node.type == "TEX_IMAGE"]
        self.assertEqual(textures[0].filepath, str(self.folder / "STONE"))
        plain = bpy.data.materials["Plain"]
        self.assertTrue(plain.use_backface_culling)
        for value, wanted in zip(plain.diffuse_color, (0.8, 0.1, 0.1, 1)):
            self.assertAlmostEqual(value, wanted, 3)

    def test_refusals(self):
        sound = self.model("golden/collision.scene.json")
        cut = self.folder / "cut.kob"
        cut.write_bytes(sound.read_bytes()[:-20])
        long = self.folder / "long.kob"
        bpy.ops.mesh.primitive_grid_add(x_subdivisions=200, y_subdivisions=200)
        bpy.ops.export_scene.mapexport(filepath=str(long), split=False)
        bpy.data.batch_remove(bpy.data.objects)
        before = {kind: len(getattr(bpy.data, kind)) for kind in ("meshes", "materials")}
        rows = [(cut, "cut.kob"), (long, "--split"), (self.folder / "no.kob", "no.kob")]
        for path, words in rows:
            with self.subTest(path=path.name):
                with self.assertRaisesRegex(RuntimeError, words):
                    bpy.ops.import_scene.mapexport(filepath=str(path))
        with self.subTest("changed after the check"):
            document = model_file.inspect(PROGRAM, sound)
            cut.write_bytes(sound.read_bytes()[:400])
            with self.assertRaisesRegex(ExportError, "has changed"):
                model_file.read_groups(cut, document)
        with self.subTest("fails late"), unittest.mock.patch.object(
            import_model, "_mesh", side_effect=ExportError("full")
        ):
            with self.assertRaisesRegex(RuntimeError, "full"):
                bpy.ops.import_scene.mapexport(filepath=str(sound))
        self.assertEqual(len(bpy.data.objects) + len(bpy.data.collections), 0)
        self.assertEqual({kind: len(getattr(bpy.data, kind)) for kind in before}, before)
