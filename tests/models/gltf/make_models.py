#!/usr/bin/env python3
"""Writes the glTF files of this folder: plain.gltf, and what Debian's packages gltfpack and draco
make of it (apt-get install gltfpack draco). Each must come out as the same triangles.

  tests/models/gltf/make_models.py [FOLDER]
"""
import base64
import json
import math
import pathlib
import struct
import subprocess
import sys

SIZE = 4  # quads along each side of the bump


def bump():
    """Positions, normals and texture coordinates of a smooth bump, and its triangles."""
    positions, normals, uvs, corners = [], [], [], []
    for row in range(SIZE + 1):
        for column in range(SIZE + 1):
            x, z = column / SIZE - 0.5, row / SIZE - 0.5
            positions += [x, 0.25 * math.cos(math.pi * x) * math.cos(math.pi * z), z]
            slope_x = 0.25 * math.pi * math.sin(math.pi * x) * math.cos(math.pi * z)
            slope_z = 0.25 * math.pi * math.cos(math.pi * x) * math.sin(math.pi * z)
            length = math.hypot(slope_x, 1, slope_z)
            normals += [slope_x / length, 1 / length, slope_z / length]
            uvs += [column / SIZE, row / SIZE]
    for row in range(SIZE):
        for column in range(SIZE):
            a = row * (SIZE + 1) + column
            corners += [a, a + SIZE + 1, a + 1, a + 1, a + SIZE + 1, a + SIZE + 2]
    return positions, normals, uvs, corners


def document():
    positions, normals, uvs, corners = bump()
    lists = [struct.pack(f"<{len(corners)}H", *corners)]
    lists += [struct.pack(f"<{len(values)}f", *values) for values in (positions, normals, uvs)]
    data = b"".join(lists)
    count = (SIZE + 1) ** 2
    bounds = {"min": [-0.5, 0, -0.5], "max": [0.5, 0.25, 0.5]}
    kinds = [(5123, len(corners), "SCALAR", {}), (5126, count, "VEC3", bounds),
             (5126, count, "VEC3", {}), (5126, count, "VEC2", {})]
    offsets = [sum(map(len, lists[:i])) for i in range(len(lists))]
    return {
        "asset": {"version": "2.0"},
        "scenes": [{"nodes": [0, 1, 2]}],
        "nodes": [
            {"name": "Bump", "mesh": 0, "extras": {"floorface": True}},
            {"name": "Far Bump", "mesh": 0, "translation": [3, 0, 0]},
            {"name": "Turned Bump", "mesh": 0, "translation": [0, 2, 1], "scale": [2, 2, 2],
             "rotation": [0, math.sin(0.5), 0, math.cos(0.5)]},
        ],
        "meshes": [{"primitives": [{
            "attributes": {"POSITION": 1, "NORMAL": 2, "TEXCOORD_0": 3},
            "indices": 0, "material": 0}]}],
        "materials": [{"name": "Grass", "pbrMetallicRoughness": {
            "baseColorFactor": [0.25, 0.5, 0.125, 1]}}],
        "accessors": [{"bufferView": i, "componentType": kind, "count": size, "type": name, **more}
                      for i, (kind, size, name, more) in enumerate(kinds)],
        "bufferViews": [{"buffer": 0, "byteOffset": offset, "byteLength": len(part)}
                        for offset, part in zip(offsets, lists)],
        "buffers": [{"byteLength": len(data), "uri": "data:application/octet-stream;base64,"
                     + base64.b64encode(data).decode()}],
    }


def main():
    here = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else __file__)
    folder = here if here.is_dir() else here.parent
    plain = folder / "plain.gltf"
    plain.write_text(json.dumps(document(), indent=1) + "\n")
    for name, options in {"quantized": ["-kn", "-ke"], "meshopt": ["-cc", "-kn"], "instanced": ["-mi"]}.items():
        subprocess.run(["gltfpack", "-i", plain, "-o", folder / f"{name}.glb", *options], check=True)
    subprocess.run(["draco_transcoder", "-i", plain, "-o", folder / "draco.glb"], check=True)


if __name__ == "__main__":
    main()
