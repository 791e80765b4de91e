#!/usr/bin/env python3
"""Measures how much the built program preserves of each format, on the models of Debian's assimp-testmodels.

    scripts/measure_formats.py [MAPEXPORT]

Reads every model whose extension has a row in src/cli/formats.txt and writes the counts of that
table anew. A row with the extension alone adds a format. Review the difference.
"""
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLE = ROOT / "src/cli/formats.txt"
PACKAGE = pathlib.Path("/usr/share/assimp")
READ_LIMIT = "10"

# The first line ends with the version, which `mapexport formats` prints.
INTRODUCTION = """\
# Measured with import library {}
# Measurements on the models of Debian's package assimp-testmodels, by extension: the number of files, how
# many of them are read, and how many of these give
#   faces      at least one triangle
#   depth      a node below another one
#   names      only node names that are in the file
#   materials  a material
#   bitmaps    a texture file
#   uvs        texture coordinates
#   smooth     smoothing groups, from the file or rebuilt from its normals
#   texts      user property text
# Written by scripts/measure_formats.py. The extensions are also what tests/ModelsTest.cpp tries.
"""
COLUMNS = ("files", "read", "faces", "depth", "names", "materials", "bitmaps", "uvs", "smooth",
           "texts")


def nodes_of(node, depth=0):
    """Each node below `node` with its depth: 1 for its children."""
    for child in node.get("children", ()):
        yield child, depth + 1
        yield from nodes_of(child, depth + 1)


def findings(scene, content):
    """The columns that the scene, read from a file of that content, counts in."""
    nodes = list(nodes_of(scene["root"]))
    meshes = [node["mesh"] for node, _ in nodes if node.get("mesh")]
    faces = [face for mesh in meshes for face in mesh.get("faces", ())]
    materials = scene.get("materials", ())
    names = {node.get("name", "") for node, _ in nodes}
    return {
        "read": True,
        "faces": bool(faces),
        "depth": any(depth > 1 for _, depth in nodes),
        "names": bool(names) and all(name and name.encode() in content for name in names),
        "materials": bool(materials),
        "bitmaps": any(material.get("diffuseMap", {}).get("file") for material in materials),
        "uvs": any(mesh.get("textureVertices") for mesh in meshes),
        "smooth": any(len(face) > 3 and face[3] for face in faces),
        "texts": any(node.get("userProperties") for node, _ in nodes),
    }


def measure(mapexport, path):
    run = subprocess.run([mapexport, "scene", path, "--read-limit", READ_LIMIT],
                         capture_output=True, check=False)
    return findings(json.loads(run.stdout), path.read_bytes()) if run.returncode == 0 else {}


def main():
    mapexport = pathlib.Path(sys.argv[1] if len(sys.argv) > 1
                             else ROOT / "build/release/bin/mapexport").resolve()
    if not PACKAGE.is_dir():
        sys.exit("the package assimp-testmodels is not installed")
    rows = {line.split()[0]: dict.fromkeys(COLUMNS, 0)
            for line in TABLE.read_text().splitlines() if line.startswith(".")}
    versions = subprocess.run([mapexport, "--version", "--verbose"], capture_output=True, text=True,
                              check=True).stdout
    library = re.search(r"assimp (\S+),", versions)[1]
    models = sorted(path for path in PACKAGE.rglob("*")
                    if path.is_file() and path.suffix.lower() in rows)
    sys.setrecursionlimit(10000)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for path, found in zip(models, pool.map(lambda path: measure(mapexport, path), models)):
            row = rows[path.suffix.lower()]
            row["files"] += 1
            for column, kept in found.items():
                row[column] += kept
    lines = ["#        " + "".join(f"{column:>10}" for column in COLUMNS)]
    for extension in sorted(rows):
        row = rows[extension]
        lines.append(f"{extension:<9}" + "".join(f"{row[column]:>10}" for column in COLUMNS))
    TABLE.write_text(INTRODUCTION.format(library) + "\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
