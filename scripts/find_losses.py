#!/usr/bin/env python3
"""Looks for triangles that exports lose in silence, on the models of Debian's assimp-testmodels.

    scripts/find_losses.py [MAPEXPORT]

For each model it compares the triangles that the import library reads (`assimp export` of the
package assimp-utils) with those of the exported file, and lists the models that lost more than a
tenth: those whose loss a warning tells with the warning's code, the others as silent. Fails when
there are silent ones.
"""
import collections
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
PACKAGE = pathlib.Path("/usr/share/assimp")
MOST_LOST = 0.1
SECONDS = 20
# The warnings that say that triangles are missing.
TELLING = {"few-triangles-left", "no-triangle", "left-out-unreached", "left-out-excluded"}
# What "left-out" says of triangles.
TELLING_PARTS = {"triangles", "polygons", "corners", "meshes", "curves", "objects", "scenes",
                 "hidden"}


def run(*command):
    try:
        return subprocess.run(command, capture_output=True, check=False, timeout=SECONDS).returncode
    except subprocess.TimeoutExpired:
        return -1


def library_triangles(path, folder):
    """None when the library or its exporter fails."""
    output = folder / "read.json"
    if run("assimp", "export", path, output) != 0 or not output.exists():
        return None
    try:
        scene = json.loads(output.read_text(errors="replace"), strict=False)
    except ValueError:
        return None
    sizes = [sum(max(len(face) - 2, 0) for face in mesh.get("faces", ()))
             for mesh in scene.get("meshes", ())]
    nodes, total = [scene["rootnode"]], 0
    while nodes:
        node = nodes.pop()
        nodes += node.get("children", ())
        total += sum(sizes[mesh] for mesh in node.get("meshes", ()) if mesh < len(sizes))
    return total


def measure(mapexport, path):
    """What became of a model, and a line about it."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        report = folder / "report.json"
        status = run(mapexport, "export", path, folder / "model.kob", "--fresh", "--no-log",
                     "--quiet", "--one-sided", "--read-limit", str(SECONDS // 2), "--report", report)
        if status not in (0, 4):
            return "refused", ""
        before = library_triangles(path, folder)
        if before is None:
            return "not read by assimp-utils", ""
        found = json.loads(report.read_text())
    after = found["after"]["faces"]
    if after >= (1 - MOST_LOST) * before:
        return "whole", ""
    codes = {warning["code"] for warning in found["warnings"]} & TELLING
    if set(found["leftOut"]) & TELLING_PARTS:
        codes.add("left-out")
    name = path.relative_to(PACKAGE)
    told = ", ".join(sorted(codes)) or f"SILENT; left out: {found['leftOut']}"
    return "told" if codes else "silent", f"{name}: {before} -> {after}: {told}"


def main():
    mapexport = pathlib.Path(sys.argv[1] if len(sys.argv) > 1
                             else ROOT / "build/release/bin/mapexport").resolve()
    if not PACKAGE.is_dir():
        sys.exit("the package assimp-testmodels is not installed")
    table = (ROOT / "src/cli/formats.txt").read_text().splitlines()
    extensions = {line.split()[0] for line in table if line.startswith(".")}
    models = sorted(path for path in PACKAGE.rglob("*")
                    if path.is_file() and path.suffix.lower() in extensions)
    sys.setrecursionlimit(100000)
    counts = collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for kind, line in pool.map(lambda path: measure(mapexport, path), models):
            counts[kind] += 1
            if line:
                print(line)
    print(", ".join(f"{count} {kind}" for kind, count in sorted(counts.items())))
    sys.exit(1 if counts["silent"] else 0)


if __name__ == "__main__":
    main()
