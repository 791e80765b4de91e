"""Exports from the file dialog, in a window, cancels an export with Esc, and tries the overlay.

    blender --enable-event-simulate --python window.py -- OUTPUT FAKE

The program on PATH is tried first; FAKE is one that hangs. Blender ends with 0 when all went well.
"""

import os
import pathlib
import sys
import traceback

import bpy

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path[:0] = map(str, (HERE, HERE.parent.parent / "blender"))
import mapexport  # noqa: E402
import window_overlay  # noqa: E402

output, fake = map(pathlib.Path, sys.argv[sys.argv.index("--") + 1 :])
MOST_STEPS = 600


def area_of(kind):
    for window in bpy.context.window_manager.windows:
        for area in window.screen.areas:
            if area.type == kind:
                region = next(one for one in area.regions if one.type == "WINDOW")
                return {"window": window, "area": area, "region": region}
    return None


def export_from_dialog(path):
    with bpy.context.temp_override(**area_of("VIEW_3D")):
        bpy.ops.export_scene.mapexport("INVOKE_DEFAULT", filepath=str(path))
    while area_of("FILE_BROWSER") is None:
        yield
    for _ in range(3):  # so that the panels of the options are drawn
        yield
    with bpy.context.temp_override(**area_of("FILE_BROWSER")):
        bpy.ops.file.execute()


def press_escape():
    window = bpy.context.window_manager.windows[0]
    for value in ("PRESS", "RELEASE"):
        window.event_simulate("ESC", value, x=300, y=300)


def steps():
    yield
    mapexport.register()
    yield from window_overlay.steps(area_of)
    yield from export_from_dialog(output)
    while not output.exists() or os.listdir(bpy.app.tempdir):
        yield
    shown = bpy.context.window_manager.mapexport_messages
    assert shown.output == str(output), shown.output

    before = output.read_bytes()
    os.environ["PATH"] = f"{fake.parent}:{os.environ['PATH']}"
    yield from export_from_dialog(output)
    while not os.path.exists(f"{fake}.started"):
        yield
    bpy.data.objects["Cube"].location.x += 1  # people go on working
    for _ in range(3):
        yield
    assert os.listdir(bpy.app.tempdir), "the export runs"
    press_escape()
    while os.listdir(bpy.app.tempdir):
        yield
    assert output.read_bytes() == before
    assert os.path.exists(f"{fake}.ended"), "the program was told to end"
    mapexport.unregister()


def run(todo=steps(), count=iter(range(MOST_STEPS))):
    try:
        next(todo)
        next(count)
        return 0.05
    except StopIteration:
        is_done = todo.gi_frame is None
        print(
            "The window works."
            if is_done
            else f"The window hangs at line {todo.gi_frame.f_lineno}."
        )
        sys.stdout.flush()
        os._exit(0 if is_done else 1)
    except BaseException:
        traceback.print_exc()
        os._exit(1)


bpy.app.timers.register(run, first_interval=0.1, persistent=True)
