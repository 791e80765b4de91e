#!/usr/bin/env python3
"""Compares what mapexport reads from the files of this folder with what Blender shows.

    check_level.py MAPEXPORT [--renew]

Blender's answers are in answers.json (make_level.py). The tables that come out are in
docs/from-blender.md; --renew writes them there. The test fails when they are others, and when
something differs without a reason in REASONS, or nothing differs where there is one.
"""
import collections
import difflib
import json
import pathlib
import subprocess
import sys

from triangles import Places, compare_mesh, triangles_of

FOLDER = pathlib.Path(__file__).resolve().parent
PAGE = FOLDER.parent.parent / "docs/from-blender.md"
BEGIN, END = "<!-- written by tests/blender/check_level.py -->\n", "<!-- end -->\n"
ANSWERS = json.loads((FOLDER / "answers.json").read_text())
# How far a corner may be off, in centimetres: formats write some digits, packers fewer bits.
LEVEL_TOLERANCE, PACKED_TOLERANCE = 0.02, 0.4

LEVELS = ("level.glb", "level.gltf", "level.fbx", "level.obj", "level.dae", "level.x3d")
PACKED = ("packed.glb", "packed-mi.glb", "packed-cc-kn.glb", "draco.glb")
GEOMETRY = ("missing", "reversed", "other diagonal", "extra")
OTHER = {"name": "node names", "keyword": "keywords", "material": "materials",
         "uv": "texture coordinates", "edge": "hard and smooth edges"}
GLTF = "level.glb level.gltf " + " ".join(PACKED)

NO_KEYWORDS = "level.obj level.dae level.x3d"
NAMELESS = "packed.glb packed-mi.glb"

# Why something differs: the files, the kinds of difference, the meshes (none: any), the reason.
REASONS = (
    (GLTF + " level.fbx level.x3d", "missing extra", ["Sheared itself"],
     "The node's own shear. These formats hold place, turn and scale; Blender writes what comes "
     "nearest."),
    ("level.obj level.x3d", "missing", ["Hull_hidden"], "Blender leaves out hidden objects."),
    ("level.obj", "extra", ["Pipe"],
     "Blender 3.4 writes the mesh of a curve twice: convert curves to meshes first."),
    ("level.dae", "missing", ["Post", "Lamp", "Pipe"],
     "Blender writes no curves and no instances of collections into this format."),
    ("level.fbx", "name", ["Post", "Lamp"],
     "Blender calls the objects of an instance `Lamp post 1\\|Post\\|Dupli\\|` and the like."),
    ("level.x3d", "name", [], "Nodes have the names of their meshes, with `_001` behind them."),
    (NO_KEYWORDS, "keyword", [], "The format holds no custom properties: use `--keywords`."),
    ("level.x3d", "material", [], "Names of materials are not read from this format."),
    ("level.dae", "material", ["Wedge mirrored"],
     "Blender writes materials that a linked copy has of its own under names that its mesh doesn't "
     "use."),
    ("level.fbx level.obj level.dae", "uv", ["Panel"],
     "The texture uses the second UV map; Blender writes no word of that into this format."),
    ("level.obj", "uv", ["Terrain", "Arch"],
     "Blender writes no rotation of a texture into this format."),
    ("level.dae level.x3d", "uv", [],
     "Blender writes no texture mapping into this format, and into X3D no textures."),
    ("level.x3d", "edge", [], "All edges are hard."),
    (NAMELESS, "name keyword", [],
     "Without `-kn` and `-ke` gltfpack drops names and custom properties."),
    (" ".join(PACKED[:-1]), "uv", [],
     "gltfpack 0.18 moves textures that have a texture mapping. With `-noq` it doesn't."),
    ("packed-mi.glb", "missing extra", ["Wedge turned over", "Sheared by parent", "Lamp"],
     "gltfpack 0.18 gives instances that are turned and stretched other scales."),
    ("draco.glb", "missing extra", ["Bump"],
     "`draco_transcoder` takes no shape keys: the file was made without them."),
    ("draco.glb", "keyword", [], "`draco_transcoder` drops custom properties."),
)


def compare(mapexport, file):
    """By mesh and kind what differs; triangles that are none of Blender's are under no mesh."""
    run = subprocess.run([mapexport, "scene", FOLDER / file], capture_output=True, check=False,
                         text=True)
    if run.returncode != 0:
        sys.exit(f"{file}: {run.stderr.strip()}")
    places = Places(triangles_of(json.loads(run.stdout)),
                    LEVEL_TOLERANCE if file in LEVELS else PACKED_TOLERANCE)
    # Blender writes no blanks into OBJ files.
    written = (lambda name: name.replace(" ", "_")) if file == "level.obj" else str
    found = {mesh: compare_mesh(mesh, answer, places, written) for mesh, answer in ANSWERS.items()}
    found[""] = collections.Counter(extra=sum(1 for _ in places.free()))
    return found


class Notes:
    """The reasons that are used, with their numbers."""

    def __init__(self):
        self.used, self.missing = [], []

    def cell(self, file, differences):
        """Text for (mesh, kind, count)s."""
        counts, numbers = collections.Counter(), set()
        for mesh, kind, count in differences:
            if count == 0:
                continue
            counts[kind] += count
            reasons = [row for row in REASONS if file in row[0].split() and kind in row[1].split()
                       and (mesh in row[2] or not row[2] or not mesh)]
            if len(reasons) > 1 and mesh:  # the one for these meshes before the one for any
                reasons = [row for row in reasons if row[2]]
            if not reasons:
                self.missing.append(f"{file}: {mesh}: {count} {kind}")
            for reason in reasons:
                if reason not in self.used:
                    self.used.append(reason)
                numbers.add(self.used.index(reason) + 1)
        if not counts:
            return "="
        kinds = ", ".join(f"{count} {kind}" if kind in GEOMETRY else str(count)
                          for kind, count in counts.items())
        return f"{kinds} ({', '.join(map(str, sorted(numbers)))})"


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines) + "\n"


def page(found, notes):
    whole = str(sum(len(answer["triangles"]) for answer in ANSWERS.values()))

    def of_kinds(file, meshes, kinds):
        return notes.cell(file, [(mesh, kind, found[file][mesh][kind])
                                 for mesh in meshes for kind in kinds])

    rows = [[f"`{mesh}`", str(len(answer["triangles"])),
             *(of_kinds(file, [mesh], GEOMETRY) for file in LEVELS)]
            for mesh, answer in ANSWERS.items()]
    rows.append(["none of these", "", *(of_kinds(file, [""], GEOMETRY) for file in LEVELS)])
    text = table(["mesh", "triangles", *(file[len("level"):] for file in LEVELS)], rows)
    text += table(["differences", *(file[len("level"):] for file in LEVELS)],
                  [[title, *(of_kinds(file, ANSWERS, [kind]) for file in LEVELS)]
                   for kind, title in OTHER.items()])
    text += table([f"{whole} triangles", "triangles", *OTHER.values()],
                  [[f"`{file}`", of_kinds(file, [*ANSWERS, ""], GEOMETRY),
                    *(of_kinds(file, ANSWERS, [kind]) for kind in OTHER)] for file in PACKED])
    return text + "".join(f"{i}. {row[3]}\n" for i, row in enumerate(notes.used, 1))


def main():
    mapexport = pathlib.Path(sys.argv[1]).resolve()
    notes = Notes()
    text = page({file: compare(mapexport, file) for file in (*LEVELS, *PACKED)}, notes)
    before, rest = PAGE.read_text().split(BEGIN)
    old, after = rest.split(END)
    if "--renew" in sys.argv[2:]:
        PAGE.write_text(before + BEGIN + text + END + after)
    problems = [f"no reason is known for: {line}" for line in notes.missing]
    problems += [f"nothing differs: {row[3]}" for row in REASONS if row not in notes.used]
    if "--renew" not in sys.argv[2:]:
        problems += difflib.unified_diff(old.splitlines(), text.splitlines(), str(PAGE), "found",
                                         lineterm="", n=0)
    print("\n".join(problems) or text)
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
