"""Tries the program on damaged copies of models; scripts/damage.sh tells what for.

    damage_models.py MAPEXPORT COUNT SEED
"""
import collections
import concurrent.futures
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = (ROOT / "tests/models", pathlib.Path("/usr/share/assimp/models"))
# A scene's own file, or one that is read beside it.
FORMATS = (".fbx", ".gltf", ".glb", ".obj", ".3ds", ".ase", ".dae", ".mtl", ".bin")
READ_BY = {".mtl": ".obj", ".bin": ".gltf"}
LARGEST_SOURCE = 100_000
READ_SECONDS = 5
# Reading is limited by the program itself, in processor time; this is about the program as a whole.
WALL_SECONDS = 90
ERROR = "mapexport: error"
LIMIT = "within 5 seconds"
CRASH = "the reader crashed"


def cut(data, rng):
    del data[rng.randrange(len(data)):]


def overwrite(data, rng):
    at = rng.randrange(len(data))
    for i in range(at, min(at + rng.choice((1, 2, 4, 32)), len(data))):
        data[i] = rng.choice((0, 0xFF, 0x7F, ord("-"), ord("9"), rng.randrange(256)))


def misnumber(data, rng):
    """Text with other numbers is still well-formed, so that this gets further than the others."""
    digits = [i for i, byte in enumerate(data) if ord("0") <= byte <= ord("9")]
    for _ in range(min(len(digits), rng.choice((1, 5, 50)))):
        data[rng.choice(digits)] = rng.choice(b"0123456789")


def delete(data, rng):
    at = rng.randrange(len(data))
    del data[at:at + rng.choice((1, 4, 64, 1024))]


def repeat(data, rng):
    at = rng.randrange(len(data))
    piece = data[at:at + rng.choice((1, 4, 64, 1024))]
    data[at:at] = piece * rng.choice((1, 2, 50))


def damage(content, rng):
    data = bytearray(content)
    for _ in range(rng.choice((1, 1, 1, 2, 5))):
        if data:
            rng.choice((cut, overwrite, overwrite, misnumber, misnumber, delete, repeat))(data, rng)
    return bytes(data)


def find_sources():
    """For each format the small files of it; for a side file only where a scene stands beside it."""
    sources = {ending: [] for ending in FORMATS}
    for folder in FOLDERS:
        for path in sorted(folder.rglob("*")):
            ending = path.suffix.lower()
            if ending not in sources or not 0 < path.stat().st_size <= LARGEST_SOURCE:
                continue
            if ending not in READ_BY or scenes_beside(path):
                sources[ending].append(path)
    return sources


def scenes_beside(path):
    """The scenes that name the side file at `path`."""
    wanted = READ_BY[path.suffix.lower()]
    return [scene for scene in sorted(path.parent.iterdir())
            if scene.suffix.lower() == wanted and path.name.encode() in scene.read_bytes()]


def make_copy(folder, source, rng):
    """Puts the damaged file with what it is read with into `folder`; the scene's path there."""
    for path in source.parent.iterdir():
        if path.suffix.lower() in READ_BY and path.stat().st_size <= LARGEST_SOURCE:
            shutil.copyfile(path, folder / path.name)
    scene = source
    if source.suffix.lower() in READ_BY:
        scene = rng.choice(scenes_beside(source))
        shutil.copyfile(scene, folder / scene.name)
    (folder / source.name).write_bytes(damage(source.read_bytes(), rng))
    return folder / scene.name


def call(mapexport, folder, *arguments):
    """Status and standard error of a run; the status is None for one that does not end."""
    try:
        run = subprocess.run([mapexport, *arguments], cwd=folder, stdin=subprocess.DEVNULL,
                             stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False,
                             timeout=WALL_SECONDS)
    except subprocess.TimeoutExpired:
        return None, ""
    return run.returncode, run.stderr.decode(errors="replace")


def fault_of(mapexport, folder, scene):
    """What the program did wrong with the scene, if anything, and what it did."""
    before = {path.name for path in folder.iterdir()} | {"ExportDebug.txt"}
    status, errors = call(mapexport, folder, "export", scene, "out.kob", "--fresh", "--seed", "0",
                          "--quiet", "--read-limit", str(READ_SECONDS))
    lines = sum(line.startswith(ERROR) for line in errors.splitlines())
    left = {path.name for path in folder.iterdir()} - before
    if status is None:
        return f"ran for more than {WALL_SECONDS} s", "hung"
    if status < 0:
        return f"ended by signal {-status}", "killed"
    if status == 1:
        outcome = "limit" if LIMIT in errors else "crash" if CRASH in errors else "refused"
        if lines != 1:
            return f"status 1 with {lines} error lines: {errors!r}", outcome
        return (f"left {sorted(left)}" if left else ""), outcome
    if status not in (0, 4):
        return f"status {status}: {errors!r}", "odd"
    if lines or left != {"out.kob"}:
        return f"status {status} with {lines} error lines, left {sorted(left)}", "exported"
    inspected, errors = call(mapexport, folder, "inspect", "--summary", "out.kob")
    if inspected != status:
        return f"status {status}, but inspect ends with {inspected}: {errors!r}", "exported"
    return "", "exported"


def main():
    mapexport, count, seed = os.path.realpath(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    sources = find_sources()
    top = pathlib.Path(tempfile.mkdtemp(prefix="mapexport-damage-"))

    def try_one(i):
        ending = FORMATS[i % len(FORMATS)]
        rng = random.Random(f"{seed}/{i}")
        if not sources[ending]:
            return ending, "", "", "no source"
        source = rng.choice(sources[ending])
        folder = top / str(i)
        folder.mkdir()
        fault, outcome = fault_of(mapexport, folder, make_copy(folder, source, rng))
        if not fault:
            shutil.rmtree(folder)
        return ending, source, fault, outcome

    outcomes = {ending: collections.Counter() for ending in FORMATS}
    faults = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for i, (ending, source, fault, outcome) in enumerate(pool.map(try_one, range(count))):
            outcomes[ending][outcome] += 1
            if fault:
                faults += 1
                print(f"seed {seed}, copy {i}, {source}: {fault}\n  kept in {top / str(i)}")

    columns = ("exported", "refused", "crash", "limit")
    print(f"{'format':<8}{'copies':>9}" + "".join(f"{column:>10}" for column in columns))
    for ending, counts in outcomes.items():
        print(f"{ending:<8}{counts.total():>9}"
              + "".join(f"{counts[column]:>10}" for column in columns))
    print("crash: the reader crashed in its own process; limit: it used up its processor time")
    print(f"{faults} faults in {count} damaged copies, seed {seed}")
    if not faults:
        shutil.rmtree(top)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
