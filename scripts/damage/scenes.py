"""Damaged scene files of all main formats, through the whole program."""
import pathlib
import shutil

import mutate
import runs

PACKAGE = pathlib.Path("/usr/share/assimp/models")
FOLDERS = (runs.ROOT / "tests/models", runs.ROOT / "tests/golden", PACKAGE)
# A scene's own file, or one that is read beside it.
ENDINGS = (".scene.json", ".fbx", ".gltf", ".glb", ".obj", ".3ds", ".ase", ".dae", ".ply", ".3mf",
           ".stl", ".mtl", ".bin")
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
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    scene = runs.ROOT / "tests/golden/two-sided.scene.json"
    commands = [["export", scene, "level.kob", "--fresh", "--seed", "0", "--quiet"]]
    commands += [["convert", "level.kob", "level" + ending] for ending in CONVERTED]
    for command in commands:
        outcome = runs.call([program, *command], folder)
        if outcome.status != 0:
            raise SystemExit(f"damage: no converted files to damage: {outcome.errors!r}")


def find_sources(program):
    """For each kind the small files of it; a side file only where a scene stands beside it."""
    converted = runs.KEPT / "converted"
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


def run(campaign, programs, numbers):
    program = programs.chosen
    sources = find_sources(program)
    kinds = list(sources)

    def attempt(i, rng, folder):
        kind = kinds[i % len(kinds)]
        scene = make_copy(folder, rng.choice(sources[kind]), rng)
        fault, how, _ = runs.fault_of_export(program, folder, scene.name, ["--fresh"])
        return kind, how, fault

    return campaign.run(numbers, attempt)
