#!/usr/bin/env python3
"""Measures exports of levels of any size, with --split and without:

    bench/measure_split.py MAPEXPORT MAKE_LEVEL FOLDER [--sizes 130k 1M 10M] [--runs 3]

Makes the levels in FOLDER that are not there yet. Prints for each the processor time of both exports,
the peak of the largest process, the groups beside the number that the longest list demands, and the
growth from level to level. Checks that inspect finds the divided file sound and no triangle lost.
"""
import argparse
import json
import math
import pathlib
import statistics
import subprocess

from measure_processes import finish, start

INDEXABLE = 65536


def inspect(mapexport, folder, name):
    command = [mapexport, "inspect", "--json", "--summary", name]
    run = subprocess.run(command, cwd=folder, capture_output=True, check=False)
    return run.returncode, json.loads(run.stdout)


def counts(groups):
    """Vertices, collision points and faces of each group, and its longest list of corners."""
    return [(g["vertexCount"], g["collisionPointCount"], g["faceCount"],
             max((b["cornerCount"] for b in g["batches"]), default=0)) for g in groups]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("mapexport", type=pathlib.Path)
    parser.add_argument("make_level", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--sizes", nargs="+", default=["130k", "1M", "10M"])
    parser.add_argument("--runs", type=int, default=3)
    arguments = parser.parse_args()
    mapexport, folder = str(arguments.mapexport.resolve()), arguments.folder
    earlier = None
    for size in arguments.sizes:
        scene = folder / f"{size}.scene.json"
        if not scene.exists():
            subprocess.run([arguments.make_level, size, folder], check=True,
                           stdout=subprocess.DEVNULL)
        seconds, peaks = {"whole": [], "split": []}, {"whole": 0, "split": 0}
        for _ in range(arguments.runs):
            for kind, options in (("whole", []), ("split", ["--split"])):
                command = [mapexport, "export", scene.name, f"{kind}.kob", "--fresh", "--seed", "1",
                           "--quiet", "--no-log", "--report", f"{kind}.json", *options]
                usage = finish(start(command, folder), command)
                seconds[kind].append(usage.ru_utime + usage.ru_stime)
                peaks[kind] = max(peaks[kind], usage.ru_maxrss * 1024)
        report = json.loads((folder / "split.json").read_text())
        assert report["status"] == 0, report
        status, model = inspect(mapexport, folder, "split.kob")
        assert status == 0, status
        whole = counts(inspect(mapexport, folder, "whole.kob")[1]["groups"])[0]
        parts = counts(model["groups"])
        assert sum(faces for _, _, faces, _ in parts) == whole[2]
        assert max(map(max, parts)) <= INDEXABLE
        demanded = math.ceil(max(whole[:3]) / INDEXABLE)
        triangles = report["before"]["triangles"]
        medians = {kind: statistics.median(times) for kind, times in seconds.items()}
        print(f"{size}: {triangles} triangles, {len(parts)} groups, {demanded} demanded "
              f"({len(parts) / demanded:.2f})")
        for kind in medians:
            print(f"  {kind}: {medians[kind]:.2f} s, {peaks[kind] / triangles:.0f} bytes per triangle")
        if earlier:
            growth = math.log(medians["split"] / earlier[1]) / math.log(triangles / earlier[0])
            print(f"  growth exponent with --split: {growth:.2f}")
        earlier = triangles, medians["split"]


if __name__ == "__main__":
    main()
