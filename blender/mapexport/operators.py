"""File > Export > Game Level, and the page of its result."""

import os
import pathlib
import subprocess
from typing import Any

import bpy
from bpy.props import EnumProperty, StringProperty
from bpy_extras.io_utils import ExportHelper

from . import options
from .errors import ExportError
from .job import Job
from .messages import messages_of, show_messages
from .preferences import preferred_program
from .run import Message, find_program

_SECONDS_BETWEEN_LOOKS = 0.1


class ExportLevel(bpy.types.Operator, ExportHelper):
    bl_idname = "export_scene.mapexport"
    bl_label = "Export Game Level"
    bl_description = "Export the scene as a game level (.kob or .qob)"
    bl_options = {"PRESET"}
    __annotations__ = {
        "filter_glob": StringProperty(default="*.kob;*.qob", options={"HIDDEN"}),
        "layout": EnumProperty(
            name="Format",
            items=[
                ("kob", ".kob", "The second layout: with lists for collision"),
                ("qob", ".qob", "The first layout"),
            ],
            description="The layout of a file whose name has no extension",
        ),
        **options.properties(),
    }

    _is_interactive = False
    _job: Job | None = None
    _timer: bpy.types.Timer | None = None

    @property
    def filename_ext(self) -> str:
        return f".{self.layout}"

    def check(self, context: bpy.types.Context) -> bool:
        """Keeps the extension to the layout while the dialog is open."""
        path: str = self.filepath  # type: ignore[has-type]  # of ExportHelper
        stem, extension = os.path.splitext(path)
        if extension.lower() in {".kob", ".qob"} and extension != self.filename_ext:
            self.filepath = stem + self.filename_ext
            return True
        return super().check(context)

    def draw(self, _context: bpy.types.Context) -> None:
        """Nothing: the panels of panels.py show the options."""

    def invoke(self, context: bpy.types.Context, event: bpy.types.Event) -> set[str]:
        self._is_interactive = True
        return super().invoke(context, event)

    def execute(self, context: bpy.types.Context) -> set[str]:
        try:
            self._job = Job(context, self, preferred_program(context))
        except ExportError as error:
            return self._fail(context, [], str(error))
        if not self._is_interactive or context.window is None:
            return self._finish(context)
        manager = context.window_manager
        self._timer = manager.event_timer_add(_SECONDS_BETWEEN_LOOKS, window=context.window)
        manager.modal_handler_add(self)
        return {"RUNNING_MODAL"}

    def modal(self, context: bpy.types.Context, event: bpy.types.Event) -> set[str]:
        """Lets the user go on working; the scene is already gathered."""
        if event.type == "ESC" and event.value == "PRESS":
            self.cancel(context)
            self.report({"WARNING"}, "The export was cancelled")
            return {"CANCELLED"}
        if event.type == "TIMER" and self._timer is not None:
            if self._job is not None and self._job.has_ended():
                self._end_display(context)
                return self._finish(context)
            name = os.path.basename(self._job.output) if self._job else ""
            seconds = int(self._timer.time_duration)
            context.workspace.status_text_set(f"Exporting {name}: {seconds} s    Esc: cancel")
        return {"PASS_THROUGH"}

    def cancel(self, context: bpy.types.Context) -> None:
        self._end_display(context)
        if self._job is not None:
            self._job.stop()

    def _end_display(self, context: bpy.types.Context) -> None:
        if self._timer is not None:
            context.window_manager.event_timer_remove(self._timer)
            self._timer = None
            context.workspace.status_text_set(None)

    def _finish(self, context: bpy.types.Context) -> set[str]:
        assert self._job is not None
        messages, failure = self._job.finish()
        if failure is not None:
            return self._fail(context, messages, failure)
        show_messages(context, messages)
        shown = messages_of(context)
        shown.output, shown.coordinates = self._job.output, self.coordinates
        warnings = sum(one.severity == "warning" for one in messages)
        for one in messages:
            if one.severity == "warning" and bpy.app.background:
                print(f"mapexport: warning: {one.text}")
            elif one.code == "exported":
                self.report({"INFO"}, one.text)
        if warnings:
            text = f"{warnings} warnings: sidebar of the 3D viewport (N), Game Level"
            self.report({"WARNING"}, text if warnings > 1 else text.replace("s:", ":", 1))
        return {"FINISHED"}

    def _fail(self, context: bpy.types.Context, messages: list[Message], reason: str) -> set[str]:
        """An error report, which is an exception where a script called."""
        if not any(one.text == reason for one in messages):
            messages = [*messages, Message("error", "failed", reason)]
        show_messages(context, messages)
        self.report({"ERROR"}, reason)
        return {"CANCELLED"}


class ViewResult(bpy.types.Operator):
    bl_idname = "mapexport.view_result"
    bl_label = "Open the Result"
    bl_description = "Show the level that was exported in the browser"
    bl_options = {"INTERNAL"}

    def execute(self, context: bpy.types.Context) -> set[str]:
        shown = messages_of(context)
        page = shown.output + ".html"
        try:
            program = find_program(preferred_program(context))
            made = subprocess.run(
                [program, "view", shown.output, "-o", page, "--coordinates", shown.coordinates],
                stdin=subprocess.DEVNULL,
                capture_output=True,
                check=False,
            )
        except (ExportError, OSError) as error:
            self.report({"ERROR"}, str(error))
            return {"CANCELLED"}
        if made.returncode != 0:
            self.report({"ERROR"}, made.stderr.decode("utf-8", "replace").strip())
            return {"CANCELLED"}
        bpy.ops.wm.url_open(url=pathlib.Path(page).as_uri())
        return {"FINISHED"}


def _menu(self: Any, _context: bpy.types.Context) -> None:
    self.layout.operator(ExportLevel.bl_idname, text="Game Level (.kob/.qob)")


def register() -> None:
    bpy.utils.register_class(ExportLevel)
    bpy.utils.register_class(ViewResult)
    bpy.types.TOPBAR_MT_file_export.append(_menu)


def unregister() -> None:
    bpy.types.TOPBAR_MT_file_export.remove(_menu)
    bpy.utils.unregister_class(ViewResult)
    bpy.utils.unregister_class(ExportLevel)
