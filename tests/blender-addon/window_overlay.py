"""Whether the overlay shows what ticks, undo and edits do, by the pixel in the middle."""

import bpy
import gpu

RED = (0.9, 0.1, 0.15)


def is_red(area_of):
    """Waits until the viewport is drawn, and returns whether its middle is red."""
    place = area_of("VIEW_3D")
    found = []

    def read():
        # What Blender shows: the frame buffer has the overlay by now.
        buffer = gpu.state.active_framebuffer_get()
        _, _, width, height = gpu.state.viewport_get()
        pixel = buffer.read_color(width // 2, height // 2, 1, 1, 4, 0, "FLOAT")
        found.append(pixel.to_list()[0][0][:3])

    handle = bpy.types.SpaceView3D.draw_handler_add(read, (), "WINDOW", "POST_PIXEL")
    yield  # what was changed reaches the dependency graph
    found.clear()
    while not found:
        place["area"].tag_redraw()
        yield
    bpy.types.SpaceView3D.draw_handler_remove(handle, "WINDOW")
    return all(abs(part - wanted) < 0.1 for part, wanted in zip(found[-1], RED))


def steps(area_of):
    """Run with the factory settings' scene, whose cube is in the middle, and the add-on."""
    cube = bpy.data.objects["Cube"]
    cube.location = (0, 0, 0)
    settings = bpy.context.window_manager.mapexport_overlay
    settings.show, settings.alpha = True, 1

    def expect(wanted, what):
        red = yield from is_red(area_of)
        assert red == wanted, what

    def run(operator, **options):
        with bpy.context.temp_override(**area_of("VIEW_3D")):
            operator("EXEC_DEFAULT", True, **options)  # a step of undo

    yield from expect(False, "a cube without keywords")
    run(bpy.ops.object.mapexport_set_keyword, keyword="notrendered")
    yield from expect(True, "ticked")
    cube.location.x = 9
    yield from expect(False, "moved away")
    cube.location.x = 0
    cube.data.transform(cube.matrix_world.Translation((9, 0, 0)))
    cube.data.update()
    yield from expect(False, "the mesh is changed")
    cube.data.transform(cube.matrix_world.Translation((-9, 0, 0)))
    cube.data.update()
    yield from expect(True, "and changed back")
    cube.hide_set(True)
    yield from expect(False, "hidden")
    twin = cube.copy()
    bpy.context.scene.collection.objects.link(twin)
    yield from expect(True, "copied")
    bpy.data.objects.remove(twin)
    yield from expect(False, "removed")
    cube.hide_set(False)
    run(bpy.ops.object.mapexport_set_prefix, prefix="exclude")
    yield from expect(False, "left out")
    run(bpy.ops.object.mapexport_set_prefix, prefix="exclude", on=False)
    yield from expect(True, "no longer left out")
    bpy.ops.ed.undo()  # from here on `cube` is another object
    yield from expect(False, "left out again by undo")
    run(bpy.ops.object.mapexport_set_prefix, prefix="exclude", on=False)
    yield from expect(True, "no longer left out")
    settings.show = False
    yield from expect(False, "switched off")
