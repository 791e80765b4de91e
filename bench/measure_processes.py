#!/usr/bin/env python3
"""Measures whole processes: exports, and other programs on the same files.

    bench/measure_processes.py MAPEXPORT FOLDER RESULT --sizes 130k 1M --runs 5

FOLDER holds what make_level wrote, and sizes.json, the triangles of each. Runs of different commands
take turns, so that whatever else the machine does hits all of them. Time is the processor time of the
process and of all that it started. RESULT is JSON.
"""
import argparse
import json
import os
import pathlib
import shutil
import subprocess
import sys
import time

BOX_RUNS = 21
DONE = {"mapexport": (0, 4)}  # 4: done, but a list is too long
FORMATS = ("scene.json", "scene.bin", "glb", "obj")
SAVED_BY_BLENDER = {"130k": ("blender.glb", "blender.fbx")}


def start(command, folder):
    return subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def finish(process, command):
    """Waits; returns what the process and its children used."""
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode not in DONE.get(pathlib.Path(command[0]).name, (0,)):
        sys.exit(f"measure_processes.py: {' '.join(command)}: exit status {process.returncode}")
    return usage


def family(pid):
    """The process and everything below it."""
    yield pid
    try:
        with open(f"/proc/{pid}/task/{pid}/children", encoding="ascii") as file:
            children = file.read().split()
    except OSError:
        return
    for child in children:
        yield from family(int(child))


def resident(pid):
    """What the process holds in memory, in bytes; 0 when it is gone."""
    try:
        with open(f"/proc/{pid}/statm", encoding="ascii") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
    except (OSError, IndexError):
        return 0


def most_in_all(command, folder):
    """The peak of the sum over all processes of a run, looked at every millisecond. What processes
    share counts for each of them."""
    process = start(command, folder)
    most = 0
    while os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOHANG | os.WNOWAIT) is None:
        most = max(most, sum(resident(pid) for pid in family(process.pid)))
        time.sleep(0.001)
    finish(process, command)
    return most


def measure(commands, folder, runs):
    """Per command the processor time of each run in seconds, and its peaks of memory in bytes."""
    results = {name: {"seconds": [], "largest": 0} for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            usage = finish(start(command, folder), command)
            results[name]["seconds"].append(usage.ru_utime + usage.ru_stime)
            results[name]["largest"] = max(results[name]["largest"], usage.ru_maxrss * 1024)
    return results


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("mapexport", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("result", type=pathlib.Path)
    parser.add_argument("--sizes", nargs="+", default=["130k", "1M"])
    parser.add_argument("--runs", type=int, default=5)
    arguments = parser.parse_args()
    for rival in ("assimp", "gltfpack"):
        if shutil.which(rival) is None:
            sys.exit(f"measure_processes.py: the program {rival} is not there")
    triangles = json.loads((arguments.folder / "sizes.json").read_text())

    def export(scene):
        # Each file is to become the same level. make_level writes .glb in metres, as the format has
        # them; the numbers in Blender's files are centimetres, which its .fbx calls metres.
        scale = "0.01" if scene.endswith(".fbx") else "1"
        options = ["--scale", scale] if scene.endswith((".fbx", ".obj", "blender.glb")) else []
        return [str(arguments.mapexport.resolve()), "export", scene, "process.kob", "--fresh",
                "--seed", "1", "--quiet", *options]

    result = {"box": measure({"box": export("box.scene.json")}, arguments.folder, BOX_RUNS)["box"]}
    for size in arguments.sizes:
        commands = {}
        for form in (*FORMATS, *SAVED_BY_BLENDER.get(size, ())):
            scene = f"{size}.{form}"
            commands[form] = export(scene)
            if not form.startswith("scene."):
                commands["assimp " + form] = ["assimp", "export", scene, "process.assbin"]
            if form.endswith("glb"):
                commands["gltfpack " + form] = ["gltfpack", "-i", scene, "-o", "process.glb", "-noq"]
        measured = measure(commands, arguments.folder, arguments.runs)
        for name, command in commands.items():
            measured[name]["all"] = most_in_all(command, arguments.folder)
        result[size] = {"triangles": triangles[size], "commands": measured}
    arguments.result.write_text(json.dumps(result, indent=1) + "\n")


if __name__ == "__main__":
    main()
