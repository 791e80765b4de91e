"""Saves a level as Blender writes it: blender -b --python save_with_blender.py -- LEVEL.obj OUT...

Each OUT is a .fbx or .glb, with the defaults of Blender's own exporters.
"""
import sys

import bpy
import numpy

# Blender 3.4 uses a name that newer numpy no longer has.
if "bool" not in vars(numpy):
    numpy.bool = bool

level, *outputs = sys.argv[sys.argv.index("--") + 1:]
bpy.ops.wm.read_factory_settings(use_empty=True)
bpy.ops.wm.obj_import(filepath=level)
for output in outputs:
    save = bpy.ops.export_scene.fbx if output.endswith(".fbx") else bpy.ops.export_scene.gltf
    save(filepath=output)
