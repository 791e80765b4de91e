#!/usr/bin/env python3
"""Writes what pipeline tools make of level.glb and of the small tests/models/gltf/plain.gltf, with
Debian's packages gltfpack and draco:

    tests/blender/make_packed.py
"""
import json
import pathlib
import struct
import subprocess
import tempfile

FOLDER = pathlib.Path(__file__).resolve().parent
OPTIONS = {"packed": [], "packed-mi": ["-mi"], "packed-cc-kn": ["-cc", "-kn", "-ke"]}


def without_morphs(data):
    """A .glb file without its morph targets, which draco_transcoder doesn't take."""
    length = struct.unpack_from("<I", data, 12)[0]
    document = json.loads(data[20:20 + length])
    for mesh in document["meshes"]:
        mesh.pop("weights", None)
        for primitive in mesh["primitives"]:
            primitive.pop("targets", None)
    text = json.dumps(document).encode()
    text += b" " * (-len(text) % 4)
    rest = data[20 + length:]
    size = 20 + len(text) + len(rest)
    return struct.pack("<4sIII4s", b"glTF", 2, size, len(text), b"JSON") + text + rest


def pack(source, target, *options):
    subprocess.run(["gltfpack", "-i", source, "-o", target, *options], check=True)


def pack_with_draco(source, target, *options):
    subprocess.run(["draco_transcoder", "-i", source, "-o", target, *options], check=True)


level = FOLDER / "level.glb"
for name, options in OPTIONS.items():
    pack(level, FOLDER / f"{name}.glb", "-km", *options)
with tempfile.TemporaryDirectory() as folder:
    plain = pathlib.Path(folder) / "level.glb"
    plain.write_bytes(without_morphs(level.read_bytes()))
    pack_with_draco(plain, FOLDER / "draco.glb", "-qp", "14", "-qt", "14")
small = FOLDER.parent / "models/gltf"
pack(small / "plain.gltf", small / "meshopt.glb", "-cc", "-kn")
pack(small / "plain.gltf", small / "instanced.glb", "-mi")
pack_with_draco(small / "plain.gltf", small / "draco.glb")
