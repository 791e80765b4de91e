"""Damaged scene files of all main formats, through the whole program."""
import pathlib
import random
import shutil

import mutate
from exports import fault_of_export
from runs import ROOT, in_parallel, run_well

PACKAGE = pathlib.Path("/usr/share/assimp/models")
FOLDERS = (*(ROOT / "tests" / name for name in ("models", "blender", "golden")), PACKAGE)
# A scene's own file, or one that is read beside it.
ENDINGS = (".scene.json", ".scene.bin", ".fbx", ".gltf", ".glb", ".obj", ".3ds", ".ase", ".dae", ".ply",
           ".3mf", ".stl", ".mtl", ".bin")
READ_BY = {".mtl": ".obj", ".bin": ".gltf"}
CONVERTED = (".glb", ".gltf", ".obj", ".ply", ".stl")
LARGEST = 100_000


def ending_of(path):
    name = path.name.lower()
    return next((ending for ending in ENDINGS if name.endswith(ending)), "")


def kind_of(path):
    """The ending; FBX is two formats."""
    ending = ending_of(path)
    if ending != ".fbx":
        return ending
    return ".fbx binary" if path.read_bytes()[:6] == b"Kaydar" else ".fbx text"


def readers_of(path):
    """The scenes that name the side file at `path`."""
    wanted = READ_BY[ending_of(path)]
    return [scene for scene in sorted(path.parent.iterdir())
            if ending_of(scene) == wanted and path.name.encode() in scene.read_bytes()]


def write_converted(program, folder):
    """Files of the formats that `convert` writes, of a small golden scene."""
    scene = ROOT / "tests/golden/two-sided.scene.json"
    run_well(program, folder, ["export", scene, "level.kob", "--fresh", "--seed", "0", "--quiet"])
    run_well(program, folder, ["scene", scene, "-o", "level.scene.bin"])
    for ending in CONVERTED:
        run_well(program, folder, ["convert", "level.kob", "level" + ending])


def find_sources(program, converted):
    """For each kind its small files; a side file only if a scene is beside it."""
    write_converted(program, converted)
    sources = {}
    for folder in (*FOLDERS, converted):
        for path in sorted(folder.rglob("*")):
            if not ending_of(path) or not path.is_file() or not 0 < path.stat().st_size <= LARGEST:
                continue
            if ending_of(path) not in READ_BY or readers_of(path):
                sources.setdefault(kind_of(path), []).append(path)
    missing = {".fbx binary", ".fbx text", *ENDINGS} - {".fbx"} - set(sources)
    if missing:
        print(f"damage: no models to damage of {', '.join(sorted(missing))}: the package "
              "assimp-testmodels is not installed")
    return dict(sorted(sources.items()))


def make_copy(folder, source, rng):
    """Puts the damaged file with what it is read with into `folder`; the scene's path there."""
    for path in source.parent.iterdir():
        if ending_of(path) in READ_BY and path.stat().st_size <= LARGEST:
            shutil.copyfile(path, folder / path.name)
    scene = source
    if ending_of(source) in READ_BY:
        scene = rng.choice(readers_of(source))
        shutil.copyfile(scene, folder / scene.name)
    damage = mutate.damage_zip if ending_of(source) == ".3mf" else mutate.damage
    (folder / source.name).write_bytes(damage(source.read_bytes(), rng))
    return folder / scene.name


def run(tally, what, program, numbers, seed):
    sources = find_sources(program, tally.folder())
    kinds = list(sources)

    def attempt(i):
        rng = random.Random(f"{seed}/{i}")
        kind = kinds[i % len(kinds)]
        folder = tally.folder()
        scene = make_copy(folder, rng.choice(sources[kind]), rng)
        # Some into files of many groups.
        split = ["--longest-list", rng.randint(3, 60)] if rng.random() < 0.5 else []
        fault, _ = fault_of_export(program, folder, scene.name, *split)
        tally.add(what, folder, fault, f"{kind}, --only {i}")

    in_parallel(attempt, numbers)
