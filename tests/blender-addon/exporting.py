"""What the tests of the add-on share: scenes, exports, and what is in them."""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import bpy
import mapexport
from triangles import Places, triangles_of

PROGRAM = os.environ["MAPEXPORT"]


class ExportCase(unittest.TestCase):
    """A test with an empty scene, a folder and the add-on."""

    def setUp(self):
        bpy.ops.wm.read_factory_settings(use_empty=True)
        mapexport.register()
        self.addCleanup(mapexport.unregister)
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.output = self.folder / "level.kob"

    def export(self, **options):
        """The scene that the exporter got."""
        scene = self.folder / "kept.scene.bin"
        done = bpy.ops.export_scene.mapexport(
            filepath=str(self.output), scene_file=str(scene), **options
        )
        self.assertEqual(done, {"FINISHED"})
        return json.loads(program("scene", scene))

    def check(self, scene):
        """The scene, which must have the triangles that Blender shows."""
        places = Places(triangles_of(scene), 0.002)
        self.assertEqual([one for one in shown() if not places.take(one)], [])
        self.assertEqual([one.corners for one in places.free()], [])
        return scene

    def refusal(self, **options):
        """What an export that must fail says; it must leave the older output alone."""
        self.output.write_text("old")
        with self.assertRaises(RuntimeError) as caught:
            bpy.ops.export_scene.mapexport(filepath=str(self.output), **options)
        self.assertEqual(self.output.read_text(), "old")
        self.assertEqual(os.listdir(bpy.app.tempdir), [], "something is left over")
        return str(caught.exception).removeprefix("Error: ").strip()

    def messages(self):
        return [
            (entry.severity, entry.text, [node.name for node in entry.nodes])
            for entry in bpy.context.window_manager.mapexport_messages.entries
        ]


def program(*arguments):
    return subprocess.run([PROGRAM, *arguments], capture_output=True, check=True).stdout


def add(name, data=None, place=(0, 0, 0), parent=None):
    item = bpy.data.objects.new(name, data)
    item.location, item.parent = place, parent
    bpy.context.scene.collection.objects.link(item)
    return item


def mesh(name="Corner", points=((0, 0, 0), (1, 0, 0), (0, 1, 0)), faces=((0, 1, 2),)):
    made = bpy.data.meshes.new(name)
    made.from_pydata(points, [], faces)
    return made


def corners(scene):
    return [triangle.corners for triangle in triangles_of(scene)]


def shown():
    """The triangles that Blender shows, at a hundred units for each of its own."""
    found = []
    depsgraph = bpy.context.evaluated_depsgraph_get()
    for instance in depsgraph.object_instances:
        if instance.object.type != "MESH" or not instance.show_self:
            continue
        data, world = instance.object.data, instance.matrix_world.copy()
        data.calc_loop_triangles()
        for triangle in data.loop_triangles:
            points = [list(100 * (world @ data.vertices[v].co)) for v in triangle.vertices]
            found.append(points[::-1] if world.is_negative else points)
    return found


def nodes(scene):
    """The nodes below the root, by their paths."""

    def below(node, path):
        for child in node.get("children", ()):
            name = f"{path}{child['name']}"
            yield name, child
            yield from below(child, name + "/")

    return dict(below(scene["root"], ""))
