"""Game levels (.kob, .qob) from Blender, written by the program mapexport."""

from . import import_model, keyword_panel, messages, operators, overlay, panels, preferences

bl_info = {
    "name": "Game Level (.kob/.qob)",
    "author": "mapexport",
    "version": (1, 1, 0),
    "blender": (3, 4, 0),
    "location": "File > Export > Game Level; Object properties > Game Level",
    "description": "Exports the scene as a game level, and sets the keywords of its objects",
    "category": "Import-Export",
}

# Each registers its own classes; a module comes after those that it uses.
_MODULES = (preferences, messages, operators, panels, keyword_panel, overlay, import_model)


def register() -> None:
    if operators.ExportLevel.is_registered:  # scripts may ask for it once more
        unregister()
    for module in _MODULES:
        module.register()


def unregister() -> None:
    for module in reversed(_MODULES):
        module.unregister()
