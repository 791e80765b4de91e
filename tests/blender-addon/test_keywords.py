"""Keywords: what counts, what ticking a keyword changes, and what the overlay draws."""

import json

import bpy
from exporting import ExportCase, add, mesh, nodes, program
from mapexport import keyword_panel, keywords, overlay

# Custom properties of an object and of its mesh, and the words that they make.
ROWS = [
    ({"userProperties": "climbable\r\nfoo\tnotrendered"}, {}, ["climbable", "foo", "notrendered"]),
    ({"USERProperties": "climbable , floorface;x y\\n45plusfloor"}, {}, None),
    ({"userProperties": "Climbable\n climbable"}, {}, ["Climbable", " climbable"]),
    ({"UDP3DSMAX": "floorface", "CLIMBABLE": 1}, {}, ["floorface", "climbable"]),
    ({"climbable": True, "floorface": 0, "notrendered": "no", "notcollidable": " Yes"}, {}, None),
    ({"climbable": [1, 1], "userProperties": 3, "notshownplan": 0.5}, {}, ["notshownplan"]),
    ({"userProperties": "a"}, {"userProperties": "a", "climbable": 1}, ["a", "climbable"]),
    ({"userProperties": "a,"}, {"userProperties": "b"}, ["a", "b"]),
    ({"userProperties": ""}, {}, []),
]


def selected(*objects):
    bpy.context.view_layer.update()
    for item in bpy.context.view_layer.objects:
        item.select_set(item in objects)
    bpy.context.view_layer.objects.active = objects[0]


def tick(keyword, on=True):
    return bpy.ops.object.mapexport_set_keyword(keyword=keyword, on=on)


class Keywords(ExportCase):
    def item(self, name="Item", of_mesh=None, **properties):
        made = add(name, mesh(name))
        for owner, values in ((made, properties), (made.data, of_mesh or {})):
            for key, value in values.items():
                owner[key] = value
        return made

    def test_text_counts_as_in_other_formats(self):
        items = [self.item(f"Item{i}", row[1], **row[0]) for i, row in enumerate(ROWS)]
        for addon in ("io_scene_gltf2", "io_scene_fbx"):
            bpy.ops.preferences.addon_enable(module=addon)
        formats = (
            (bpy.ops.export_scene.gltf, "level.glb", {"export_extras": True}),
            (bpy.ops.export_scene.fbx, "level.fbx", {"use_custom_props": True}),
        )
        for export, name, options in formats:
            export(filepath=str(self.folder / name), **options)
            found = nodes(json.loads(program("scene", self.folder / name)))
            for item, row in zip(items, ROWS):
                with self.subTest(name=name, row=row):
                    text = found[item.name].get("userProperties", "")
                    self.assertEqual(keywords.text_of(item), text)
                    if row[2] is not None:
                        self.assertEqual(keywords.words_of(item), row[2])

    def test_ticks(self):
        rows = [
            ("climbable", True, "", "climbable"),
            ("climbable", True, "foo", "foo\r\nclimbable"),
            ("climbable", True, "foo\n", "foo\nclimbable"),
            ("climbable", True, "Climbable", "Climbable\r\nclimbable"),
            ("climbable", True, "a, climbable", "a, climbable"),
            ("climbable", False, "a ;climbable, b = c\n", "a ;b = c\n"),
            ("climbable", False, "climbable\r\n", None),
            ("climbable", False, "a\r\nclimbable", "a"),
            ("climbable", False, "climbable3 climbable", "climbable3 climbable"),
            ("notcollidable", False, "notcollidable\tnotcollidable3d", "notcollidable3d"),
        ]
        for keyword, on, before, after in rows:
            with self.subTest(keyword=keyword, on=on, before=before):
                item = self.item(**({"userProperties": before} if before else {}))
                selected(item)
                self.assertEqual(tick(keyword, on), {"FINISHED"})
                self.assertEqual(item.get("userProperties"), after)

    def test_named_properties(self):
        item = self.item(of_mesh={"climbable": 1}, Climbable=True, climbable=0, Other="kept")
        selected(item)
        found = keywords.named_properties(item, "climbable")
        self.assertEqual(found, [(item, "Climbable"), (item.data, "climbable")])
        tick("climbable", False)
        self.assertEqual(keywords.keywords_of(item), set())
        self.assertEqual(dict(item.items()), {"climbable": 0, "Other": "kept"})
        tick("climbable")
        self.assertEqual(keywords.keywords_of(item), {"climbable"})

    def test_selection_and_undo(self):
        first, second, other = (self.item(name) for name in ("First", "Second", "Other"))
        first["climbable"] = 1
        selected(first, second)
        self.assertEqual(keyword_panel.edited_objects(bpy.context), [first, second])
        bpy.ops.ed.undo_push(message="before")
        tick("climbable")
        tick("floorface")
        bpy.ops.ed.undo_push(message="after")
        self.assertEqual(second["userProperties"], "climbable\r\nfloorface")
        self.assertEqual(first["userProperties"], "floorface")
        self.assertNotIn("userProperties", other)
        bpy.ops.ed.undo()
        items = bpy.data.objects
        self.assertEqual([keywords.text_of(one) for one in items], ["climbable\r\n", "", ""])
        bpy.context.view_layer.objects.active = items["Other"]
        self.assertEqual(keyword_panel.edited_objects(bpy.context), [items["Other"]])

    def test_select(self):
        for name, properties in (("A", {"climbable": 1}), ("B", {}), ("Static_C", {})):
            self.item(name, **properties)
        hidden = self.item("Hidden", climbable=1)
        hidden.hide_set(True)
        rows = [
            ("climbable", False, ["A"]),
            ("static", False, ["Static_C"]),
            ("climbable", True, ["A", "Static_C"]),
            ("exclude", False, []),
        ]
        for keyword, extend, wanted in rows:
            bpy.ops.object.mapexport_select_keyword(keyword=keyword, extend=extend)
            self.assertEqual([item.name for item in bpy.context.selected_objects], wanted)

    def test_prefixes(self):
        rows = [
            ("Crate", "static", True, "static_Crate"),
            ("STATIC Crate", "static", False, "Crate"),
        ]
        rows += [("Static", "static", False, "Object"), ("static_a", "static", True, "static_a")]
        rows += [("static_a", "exclude", True, "exclude_static_a"), ("a", "exclude", False, "a")]
        for before, prefix, on, after in rows:
            with self.subTest(before=before, prefix=prefix, on=on):
                item = self.item(before)
                selected(item)
                bpy.ops.object.mapexport_set_prefix(prefix=prefix, on=on)
                self.assertEqual(item.name, after)
                bpy.data.objects.remove(item)

    def test_linked_objects_stay(self):
        path = self.folder / "library.blend"
        bpy.data.libraries.write(str(path), {self.item("Linked")})
        bpy.data.batch_remove(bpy.data.objects)
        with bpy.data.libraries.load(str(path), link=True) as (_, wanted):
            wanted.objects = ["Linked"]
        linked = bpy.data.objects["Linked"]
        bpy.context.scene.collection.objects.link(linked)
        own = self.item("Own")
        selected(own, linked)
        tick("climbable")
        self.assertEqual([dict(linked.items()), keywords.text_of(own)], [{}, "climbable"])
        selected(linked)
        self.assertEqual(tick("climbable"), {"CANCELLED"})
        of_linked_data = add("Of linked data", linked.data)
        selected(of_linked_data)
        self.assertEqual(tick("climbable"), {"FINISHED"})
        linked.data["notrendered"] = 1
        self.assertEqual(tick("notrendered", False), {"CANCELLED"})
        self.assertEqual(keywords.keywords_of(of_linked_data), {"climbable", "notrendered"})

    def test_overlay(self):
        self.item("Plain")
        floor = self.item("Floor", floorface=1, climbable=1)
        static = self.item("static_a", climbable=1)
        below = self.item("Below")
        below.parent = static
        self.item("exclude_b", climbable=1)
        twin = add("Twin", floor.data)
        twin["climbable"] = 1
        changed = add("Changed", floor.data)
        changed["climbable"] = 1
        changed.modifiers.new("Array", "ARRAY")
        prefab = bpy.data.collections.new("Prefab")
        prefab.objects.link(self.item("Inside", notrendered=1))
        bpy.context.scene.collection.objects.unlink(bpy.data.objects["Inside"])
        for name in ("Holder", "exclude_Holder", "static_Holder"):
            holder = add(name, place=(0, 0, 5))
            holder.instance_type, holder.instance_collection = "COLLECTION", prefab
        drawn, meshes = overlay.drawn_objects(bpy.context.evaluated_depsgraph_get())
        found = {one.obj.name: one for one in drawn}
        self.assertEqual(
            {name: one.flags for name, one in found.items()},
            {"Floor": 0x11, "static_a": 128, "Below": 128, "Twin": 1, "Changed": 1, "Holder": 4}
            | {"static_Holder": 128},
        )
        self.assertEqual(found["Holder"].matrix.translation.z, 5)
        self.assertEqual(found["Floor"].mesh, found["Twin"].mesh)
        sizes = [
            len(overlay.triangles(meshes[found[name].mesh])[1]) for name in ("Twin", "Changed")
        ]
        self.assertEqual(sizes, [1, 2])

    def test_same_keywords_as_the_program(self):
        for keyword in keywords.KEYWORDS:
            bpy.data.batch_remove(bpy.data.objects)
            self.item(userProperties=keyword.name)
            bpy.ops.export_scene.mapexport(filepath=str(self.output))
            summary = program("inspect", self.output, "--json", "--summary").decode()
            self.assertIn(f'"flags": {keyword.bit},', summary)
