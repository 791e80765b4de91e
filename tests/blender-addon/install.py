"""Installs the add-on as a person does, and exports with it.

    blender -b --python install.py -- ZIP OUTPUT

An empty ZIP: it is installed already. The program is on PATH.
"""

import pathlib
import sys

import bpy

zip_file, output = sys.argv[sys.argv.index("--") + 1 :]
addons = bpy.context.preferences.addons
if zip_file:
    bpy.ops.preferences.addon_install(filepath=zip_file)
    bpy.ops.preferences.addon_enable(module="mapexport")
name = next(name for name in addons.keys() if name.split(".")[-1] == "mapexport")
addon = sys.modules[name]

bpy.ops.export_scene.mapexport(filepath=output)
assert pathlib.Path(output).is_file()
if hasattr(addon, "bl_info"):  # Blender removes it from extensions
    manifest = (pathlib.Path(addon.__file__).parent / "blender_manifest.toml").read_text("utf-8")
    version = ".".join(map(str, addon.bl_info["version"]))
    assert f'\nversion = "{version}"\n' in manifest, "the manifest has another version"

addons[name].preferences.program = "/nowhere/mapexport"
try:
    bpy.ops.export_scene.mapexport(filepath=output)
except RuntimeError as error:
    assert '"/nowhere/mapexport"' in str(error), error
else:
    raise AssertionError("the program of the preferences was not used")
