"""For scripts/screenshot-blender.sh: shows and exports a small level, takes pictures.

    blender --enable-event-simulate --window-geometry 0 0 1200 720 --python FILE -- FOLDER
"""

import math
import os
import pathlib
import random
import subprocess
import sys
import traceback

import bpy

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "blender"))
import mapexport  # noqa: E402

folder = pathlib.Path(sys.argv[sys.argv.index("--") + 1])


HEIGHT = 720  # of the screen


def material(name, colour):
    made = bpy.data.materials.new(name)
    made.diffuse_color = (*colour, 1)
    made.use_backface_culling = True
    return made


def add(operator, name, look, place, scale=(1, 1, 1), turn=0, **options):
    operator(location=place, rotation=(0, 0, math.radians(turn)), **options)
    item = bpy.context.object
    item.name, item.scale = name, scale
    item.data.materials.append(look)
    return item


def build():
    for item in list(bpy.data.objects):
        bpy.data.objects.remove(item)
    stone, wood, grass = (
        material(name, colour)
        for name, colour in (
            ("Stone", (0.45, 0.45, 0.5)),
            ("Wood", (0.45, 0.25, 0.1)),
            ("Grass", (0.2, 0.4, 0.15)),
        )
    )
    shapes, dice = bpy.ops.mesh, random.Random(3)
    ground = add(shapes.primitive_plane_add, "Ground", grass, (0, 0, 0), size=24)
    ground["userProperties"] = "floorface"
    for i, (x, y) in enumerate(((0, 11), (0, -11), (11, 0), (-11, 0))):
        size = (11.5, 0.5, 1.5) if x == 0 else (0.5, 11.5, 1.5)
        add(shapes.primitive_cube_add, f"Wall {i + 1}", stone, (x, y, 1.5), size)
    for i, (x, y) in enumerate(((-11, -11), (-11, 11), (11, -11), (11, 11))):
        name = f"static_tower {i + 1}"
        add(shapes.primitive_cylinder_add, name, stone, (x, y, 2.5), radius=1.6, depth=5)
    bpy.data.objects["static_tower 2"]["climbable"] = True
    for i in range(9):
        place = (dice.uniform(-8, 8), dice.uniform(-8, 8), 0.6)
        crate = shapes.primitive_cube_add
        add(crate, f"Crate {i + 1}", wood, place, (0.6,) * 3, dice.uniform(0, 90))
    ladder = add(shapes.primitive_cube_add, "Ladder", wood, (3, 10.3, 1.5), (0.5, 0.1, 1.6))
    ladder["userProperties"] = "climable"
    bpy.ops.object.select_all(action="DESELECT")


def area_of(kind):
    for window in bpy.context.window_manager.windows:
        for area in window.screen.areas:
            if area.type == kind:
                return window, area
    return None


def override(kind):
    window, area = area_of(kind)
    region = next(one for one in area.regions if one.type == "WINDOW")
    return bpy.context.temp_override(window=window, area=area, region=region)


def wait(steps=6):
    for _ in range(steps):
        yield


def take(name, x, y, width, height):
    """Takes that part of the screen, whose y goes up as in Blender."""
    crop = f"{width}x{height}+{x}+{HEIGHT - y - height}"
    few = ["+dither", "-colors", "128", "-define", "png:compression-level=9"]
    show = ["import", "-window", "root", "-crop", crop, "+repage", *few]
    subprocess.run([*show, str(folder / name)], check=True)


def click(x, y):
    window = bpy.context.window_manager.windows[0]
    for event, value in (
        ("MOUSEMOVE", "NOTHING"),
        ("LEFTMOUSE", "PRESS"),
        ("LEFTMOUSE", "RELEASE"),
    ):
        window.event_simulate(event, value, x=x, y=y)


def steps():
    bpy.context.preferences.view.show_splash = False
    build()
    mapexport.register()
    yield from wait()
    with override("VIEW_3D"):
        bpy.ops.view3d.view_all()
    yield from wait()

    output = str(folder / "yard.kob")
    with override("VIEW_3D"):
        bpy.ops.export_scene.mapexport("INVOKE_DEFAULT", filepath=output)
    while area_of("FILE_BROWSER") is None:
        yield
    yield from wait(20)
    window, area = area_of("FILE_BROWSER")
    left = next(one for one in area.regions if one.type == "TOOLS").width
    take("blender-export.png", window.x + left, window.y, window.width - left, window.height)
    with override("FILE_BROWSER"):
        bpy.ops.file.execute()
    while not os.path.exists(output) or os.listdir(bpy.app.tempdir):
        yield

    while area_of("VIEW_3D") is None:
        yield
    _, area = area_of("VIEW_3D")
    area.spaces.active.show_region_ui = True
    area.spaces.active.shading.color_type = "MATERIAL"
    overlay = area.spaces.active.overlay
    overlay.show_floor = overlay.show_axis_x = overlay.show_axis_y = overlay.show_cursor = False
    yield from wait()
    sidebar = next(one for one in area.regions if one.type == "UI")
    # The tabs are at the right edge, from the top: Item, Tool, View, Game Level.
    click(sidebar.x + sidebar.width - 8, sidebar.y + sidebar.height - 180)
    yield from wait()
    bpy.ops.object.select_all(action="DESELECT")
    yield from wait(20)
    take("blender-messages.png", area.x, area.y, area.width, area.height)
    yield from keywords(area)


def keywords(area):
    """The panel of keywords beside the coloured level."""
    objects = bpy.data.objects
    ladder = objects["Ladder"]
    ladder["userProperties"] = "climbable\r\nnotshownplan"
    objects["Crate 1"]["notcollidable"] = True
    objects["Wall 4"]["userProperties"] = "notrendered"
    view = area.spaces.active
    view.shading.color_type, view.show_region_toolbar = "OBJECT", False
    view.region_3d.view_distance *= 0.75
    view.region_3d.view_location = (3, -1, 0)
    width = area.width
    bpy.ops.mapexport.clear_messages()
    with override("VIEW_3D"):
        bpy.ops.screen.area_split(direction="VERTICAL", factor=0.7)
    beside = bpy.context.window_manager.windows[0].screen.areas[-1]
    beside.type = "PROPERTIES"
    yield from wait()
    for item in (objects["Crate 1"], ladder):
        item.select_set(True)
    bpy.context.view_layer.objects.active = ladder
    bpy.context.window_manager.mapexport_overlay.show = True
    beside.spaces.active.context = "OBJECT"
    yield from wait()
    window = bpy.context.window_manager.windows[0]
    for _ in range(40):
        x, y = beside.x + beside.width // 2, beside.y + beside.height // 2
        window.event_simulate("WHEELDOWNMOUSE", "PRESS", x=x, y=y)
    yield from wait(20)
    take("blender-keywords.png", area.x, area.y, width, area.height)


def run(todo=steps()):
    try:
        next(todo)
        return 0.1
    except StopIteration:
        os._exit(0)
    except BaseException:
        traceback.print_exc()
        os._exit(1)


bpy.app.timers.register(run, first_interval=0.5, persistent=True)
