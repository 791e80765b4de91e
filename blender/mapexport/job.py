"""One export: gathers the scene into a file and has the program export that."""

import contextlib
import os
import tempfile
from typing import Any

import bpy

from .errors import ExportError
from .gather import Progress, Scene
from .options import absolute, arguments, level_scale
from .run import Message, Run, check_program, find_program
from .visibility import edit_mode_left, everything_shown, modifiers_off


class Job:
    """An export that is running."""

    def __init__(self, context: bpy.types.Context, values: Any, preferred: str) -> None:
        """Gathers the scene and starts the program; `values` has the options and `filepath`.

        `preferred` is the program's path in the preferences, which may be empty.
        """
        self.output = output_path(values.filepath, values.layout)
        if values.depfile and not values.scene_file:
            raise ExportError("a make rule needs the scene to be kept: name its file, too")
        program = find_program(preferred)
        check_program(program)
        try:
            self._folder = tempfile.TemporaryDirectory(prefix="mapexport-", dir=bpy.app.tempdir)
        except OSError as error:  # the system may have cleaned up below a long session
            raise ExportError(f'"{bpy.app.tempdir}" can\'t be written: {error.strerror}') from error
        try:
            name = os.path.splitext(os.path.basename(self.output))[0]
            kept = values.scene_file
            path = absolute(kept) if kept else f"{self._folder.name}/{name}.scene.bin"
            scene = _gather(context, values)
            _write(scene, path)
            made = arguments(values)
            if values.copy_textures and not values.textures:
                for folder in scene.materials.folders:
                    made += ["--textures", folder]
            self._run = Run(program, [*made, path, self.output], self._folder.name)
        except BaseException:
            self._folder.cleanup()
            raise

    def has_ended(self) -> bool:
        return self._run.has_ended()

    def stop(self) -> None:
        self._run.stop()
        self._folder.cleanup()

    def finish(self) -> tuple[list[Message], str | None]:
        """Waits for the end: what the program said, and why there is no new output, if so."""
        try:
            self._run.wait()
            messages = self._run.messages()
            return messages, self._run.failure(messages)
        finally:
            self.stop()


def output_path(path: str, layout: str) -> str:
    """Where the level goes; a name without extension gets that of the layout."""
    if not os.path.basename(path):
        raise ExportError("the level's file has no name")
    extension = "" if os.path.splitext(path)[1] else f".{layout}"
    return absolute(path) + extension


def _gather(context: bpy.types.Context, values: Any) -> Scene:
    scene = Scene(level_scale(context, values.scale))
    manager = context.window_manager
    with contextlib.ExitStack() as changes:
        changes.enter_context(edit_mode_left(context))
        if values.objects == "all":
            changes.enter_context(everything_shown(context.view_layer))
        if not values.apply_modifiers:
            changes.enter_context(modifiers_off(bpy.data.objects))
        depsgraph = context.evaluated_depsgraph_get()
        progress = _progress(manager, len(depsgraph.object_instances))
        manager.progress_begin(0, 100)
        try:
            scene.gather(depsgraph, values.objects == "selected", progress)
        finally:
            manager.progress_end()
    if scene.is_empty:
        what = {"visible": "visible", "selected": "selected"}.get(values.objects, "there")
        raise ExportError(f"nothing that has faces is {what}")
    return scene


def _progress(manager: bpy.types.WindowManager, count: int) -> Progress:
    """Shows each further hundredth at the cursor."""
    step = max(count // 100, 1)

    def show(number: int) -> None:
        if number % step == 0:
            manager.progress_update(100 * number // count)

    return show


def _write(scene: Scene, path: str) -> None:
    try:
        scene.write(path)
    except OSError as error:
        raise ExportError(f'"{path}" can\'t be written: {error.strerror}') from error
    except RecursionError as error:
        raise ExportError("objects are below more parents than can be exported") from error
