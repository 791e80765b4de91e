"""What Blender shows of a scene, whatever it is made of, is what the exporter gets."""

import bpy
from exporting import ExportCase, add, corners, mesh, nodes
from mathutils import Matrix

CUBE = (
    [(x, y, z) for z in (-1, 1) for y in (-1, 1) for x in (-1, 1)],
    [(0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5)],
)


class Kinds(ExportCase):
    def test_curves_texts_metaballs_and_surfaces(self):
        text = bpy.data.curves.new("Text", "FONT")
        text.body, text.extrude = "Ä1", 0.1
        add("Text", text)
        curve = bpy.data.curves.new("Curve", "CURVE")
        curve.dimensions, curve.bevel_depth = "3D", 0.2
        curve.splines.new("POLY").points.add(2)
        for i, point in enumerate(curve.splines[0].points):
            point.co = (i, i * i, 0, 1)
        add("Curve", curve, (5, 0, 0))
        ball = bpy.data.metaballs.new("Ball")
        ball.elements.new()
        add("Ball", ball, (0, 5, 0))
        bpy.ops.surface.primitive_nurbs_surface_sphere_add(location=(5, 5, 0))
        bpy.data.objects.new("Unused", mesh())
        found = nodes(self.check(self.export()))
        self.assertEqual(
            {name.split(".")[0] for name in found}, {"Text", "Curve", "Ball", "SurfSphere"}
        )

    def test_mirrored_sheared_and_scaled_nodes(self):
        cube = mesh("Cube", *CUBE)
        add("Mirrored", cube).scale = (-1, 2, 0.5)
        add("Turned over", cube, (5, 0, 0)).scale = (-1, -1, -1)
        add("Sheared", cube, (9, 0, 0)).matrix_parent_inverse = Matrix.Shear("XY", 4, (0.5, 0.2))
        bpy.data.objects["Sheared"].parent = add("Holder")
        self.check(self.export())
        bpy.context.scene.unit_settings.scale_length = 0.01
        scene = self.export()
        self.assertEqual(nodes(scene)["Mirrored"]["objectTransform"][1], [0, 2, 0])
        bpy.context.scene.unit_settings.system = "NONE"
        scene = self.export(scale=10)
        self.assertEqual(nodes(scene)["Mirrored"]["objectTransform"][1], [0, 20, 0])

    def test_modifiers(self):
        cube = add("Cube", mesh("Cube", *CUBE))
        cube.modifiers.new("Array", "ARRAY").count = 3
        cube.modifiers.new("Off", "ARRAY").show_viewport = False
        smooth = add("Smooth", mesh("Smooth", *CUBE), (0, 5, 0))
        smooth.modifiers.new("Subdivision", "SUBSURF").levels = 2
        self.check(self.export())
        bpy.data.objects.remove(smooth)
        self.assertEqual(len(corners(self.check(self.export()))), 36)
        self.assertEqual(len(corners(self.export(apply_modifiers=False))), 12)
        self.assertEqual([one.show_viewport for one in cube.modifiers], [True, False])

    def test_edit_and_sculpt_mode(self):
        cube = add("Cube", mesh("Cube", *CUBE))
        bpy.context.view_layer.objects.active = cube
        bpy.ops.object.mode_set(mode="EDIT")
        bpy.ops.mesh.select_all(action="SELECT")
        bpy.ops.mesh.subdivide()
        scene = self.export()
        self.assertEqual(bpy.context.mode, "EDIT_MESH")
        bpy.ops.object.mode_set(mode="OBJECT")
        self.assertEqual(len(corners(self.check(scene))), 48)
        cube.modifiers.new("Multires", "MULTIRES")
        bpy.ops.object.multires_subdivide(modifier="Multires")
        bpy.ops.object.mode_set(mode="SCULPT")
        scene = self.export()
        self.assertEqual(bpy.context.mode, "SCULPT")
        bpy.ops.object.mode_set(mode="OBJECT")
        self.assertEqual(len(corners(self.check(scene))), 192)

    def test_visible_selected_and_all(self):
        for place, name in enumerate(("Eye", "Screen", "Collection", "Shown", "Chosen")):
            add(name, mesh(), (place, 0, 0))
        names = bpy.data.objects
        closed = bpy.data.collections.new("Closed")
        bpy.context.scene.collection.children.link(closed)
        closed.objects.link(names["Collection"])
        bpy.context.scene.collection.objects.unlink(names["Collection"])
        bpy.context.view_layer.layer_collection.children[0].hide_viewport = True
        names["Eye"].hide_set(True)
        names["Screen"].hide_viewport = True
        names["Chosen"].select_set(True)
        self.assertEqual(nodes(self.export()).keys(), {"Shown", "Chosen"})
        self.assertEqual(nodes(self.export(objects="selected")).keys(), {"Chosen"})
        self.assertEqual(len(nodes(self.export(objects="all"))), 5)
        self.assertEqual(nodes(self.export()).keys(), {"Shown", "Chosen"})
        names["Chosen"].select_set(False)
        background = bpy.data.scenes.new("Background")
        background.collection.objects.link(bpy.data.objects.new("Far", mesh()))
        bpy.context.scene.background_set = background
        self.assertEqual(nodes(self.export()).keys(), {"Shown", "Chosen", "Far"})
        said = self.refusal(objects="selected")
        self.assertEqual(said, "nothing that has faces is selected")
        self.assertEqual(self.messages(), [("error", said, [])])

    def test_names_keywords_and_parents(self):
        names = ["Wände süß", "ドア枠", "Дверь", "دروازه", "ประตู", "🚪", "a\\\"b\n\t/'<&>", "x" * 60]
        above = add("static_Gruppe")  # hidden parents keep their names' meaning
        above.hide_viewport = True
        above["notrendered"] = True
        for i, name in enumerate(names):
            item = add(name, mesh(name), (i, 0, 0), above if i == 1 else None)
            item["userProperties"] = "climbable;floorface"
            item.data["NotCollidable"] = 1
            item["notshownplan"] = False
            item.color = (1, 0.5, 0, 1)
        found = nodes(self.export(keywords=""))
        names[1] = f"static_Gruppe/{names[1]}"
        self.assertEqual(found.keys() - {"static_Gruppe"}, set(names))
        for name in names:
            words = found[name]["userProperties"].split()
            self.assertEqual(words, ["climbable", "floorface", "notcollidable"], name)
            self.assertEqual(found[name]["wireColor"], [255, 128, 0])
        self.assertEqual(found["static_Gruppe"]["userProperties"], "notrendered\r\n")

    def test_numbers_that_are_not_finite_are_refused(self):
        item = add("Broken", mesh())
        item.data.vertices[1].co.x = float("nan")
        self.assertIn('object "Broken": a number of its vertices is not finite', self.refusal())


class Instances(ExportCase):
    def collection(self, *items):
        made = bpy.data.collections.new("Prefab")
        for item in items:
            bpy.context.scene.collection.objects.unlink(item)
            made.objects.link(item)
        return made

    def instance(self, name, collection, place=(0, 0, 0)):
        holder = add(name, None, place)
        holder.instance_type, holder.instance_collection = "COLLECTION", collection
        return holder

    def test_collections_keep_their_tree(self):
        inner = add("static_inner")
        part = add("Part", mesh(), (1, 2, 3), inner)
        prefab = self.collection(inner, part)
        self.instance("A", prefab, (5, 0, 0))
        self.instance("B", prefab, (0, 5, 0)).scale = (1, -1, 1)
        hidden = add("Hidden", mesh())
        hidden.hide_viewport = True
        outer = self.collection(hidden, self.instance("exclude_Nested", prefab))
        self.instance("C", outer, (0, 0, 9)).select_set(True)
        found = nodes(self.check(self.export()))
        for path in ("A", "B", "C/exclude_Nested"):
            self.assertIn("mesh", found[f"{path}/static_inner/Part"])
        self.assertEqual(len(corners(self.export(objects="selected"))), 1)
        bpy.ops.mapexport.select_nodes(names="Part")
        self.assertEqual({item.name for item in bpy.context.selected_objects}, {"A", "B", "C"})

    def test_geometry_nodes(self):
        stone = add("Stone", mesh("Stone", *CUBE), (0, 0, 0))
        stone["climbable"] = 1
        field = add("Field", mesh("Field", *CUBE))
        tree = bpy.data.node_groups.new("Scatter", "GeometryNodeTree")
        if hasattr(tree, "interface"):  # since 4.0
            tree.interface.new_socket("G", in_out="INPUT", socket_type="NodeSocketGeometry")
            tree.interface.new_socket("G", in_out="OUTPUT", socket_type="NodeSocketGeometry")
        else:
            tree.inputs.new("NodeSocketGeometry", "G")
            tree.outputs.new("NodeSocketGeometry", "G")
        start, end = tree.nodes.new("NodeGroupInput"), tree.nodes.new("NodeGroupOutput")
        scatter = tree.nodes.new("GeometryNodeInstanceOnPoints")
        info = tree.nodes.new("GeometryNodeObjectInfo")
        info.inputs["Object"].default_value = stone
        info.inputs["As Instance"].default_value = True
        join = tree.nodes.new("GeometryNodeJoinGeometry")
        grid = tree.nodes.new("GeometryNodeMeshGrid")  # and instances of a mesh without an object
        more = tree.nodes.new("GeometryNodeInstanceOnPoints")
        paint = tree.nodes.new("GeometryNodeSetMaterial")
        paint.inputs["Material"].default_value = bpy.data.materials.new("Gras")
        links = tree.links
        links.new(start.outputs[0], scatter.inputs["Points"])
        links.new(info.outputs["Geometry"], scatter.inputs["Instance"])
        links.new(start.outputs[0], more.inputs["Points"])
        links.new(grid.outputs["Mesh"], paint.inputs["Geometry"])
        links.new(paint.outputs["Geometry"], more.inputs["Instance"])
        for source in (scatter, more):
            links.new(source.outputs["Instances"], join.inputs[0])
        links.new(start.outputs[0], join.inputs[0])
        links.new(join.outputs[0], end.inputs[0])
        field.modifiers.new("Scatter", "NODES").node_group = tree
        scene = self.check(self.export())
        below = nodes(scene)["Field"]["children"]
        stones = [node for node in below if node["name"] == "Stone"]
        self.assertEqual(len(stones), 8)
        self.assertEqual({node["userProperties"] for node in stones}, {"climbable\r\n"})
        drawn = [node for node in below if node["name"] != "Stone"]
        self.assertEqual(len(drawn), 8)
        for node in drawn:
            record = scene["materials"][node["material"]]
            if "subMaterials" in record:  # of these, the first is the empty slot of the grid
                slot = {face[4] for face in node["mesh"]["faces"]}.pop()
                record = scene["materials"][record["subMaterials"][slot]]
            self.assertEqual(record["name"], "Gras")
        self.assertEqual(len(corners(self.export(apply_modifiers=False))), 24)

    def test_ten_thousand(self):
        prefab = self.collection(add("Post", mesh("Post", *CUBE)))
        for i in range(10_000):
            self.instance(f"Holder {i}", prefab, (i % 100 * 3, i // 100 * 3, 0))
        scene = self.export(weld=False)
        self.assertEqual(len(nodes(scene)), 20_000)
        self.assertEqual(
            sum(len(n["mesh"]["faces"]) for n in nodes(scene).values() if "mesh" in n), 120_000
        )
        self.assertLess((self.folder / "kept.scene.bin").stat().st_size, 5_000_000)

    def test_linked_library(self):
        library = str(self.folder / "library.blend")
        door = add("Door", mesh("Door", *CUBE), (1, 2, 3))
        door.data.materials.append(bpy.data.materials.new("Holz"))
        door.modifiers.new("Array", "ARRAY")
        door["climbable"] = True
        bpy.data.libraries.write(library, {self.collection(door)})
        bpy.ops.wm.read_factory_settings(use_empty=True)
        with bpy.data.libraries.load(library, link=True) as (there, here):
            here.collections = there.collections
        bpy.context.scene.collection.children.link(here.collections[0])
        self.instance("Copy", here.collections[0], (0, 0, 9))
        bpy.data.objects["Door"].hide_set(True)
        for options in ({"objects": "all"}, {"objects": "all", "apply_modifiers": False}):
            scene = self.export(**options)
            found = nodes(scene)
            self.assertEqual(found["Door"]["userProperties"], "climbable\r\n")
            self.assertEqual(found["Copy/Door"]["material"], 0)
            self.assertEqual(len(corners(scene)), 24 if "apply_modifiers" in options else 48)
        bpy.data.objects["Door"].hide_set(False)
        self.check(self.export())
