#!/usr/bin/env python3
"""Prints the table of what was measured, from the files that scripts/bench.sh collects in FOLDER:

    bench/report.py FOLDER [--renew FILE]

Every value is a median, of processor time. A level that was not measured has "-". With
--renew the table also takes the place of the one between two marker comments in FILE.
"""
import argparse
import json
import math
import os
import pathlib
import re
import statistics
import subprocess
import sys

BEGIN = "<!-- written by scripts/bench.sh -->"
END = "<!-- end of what scripts/bench.sh writes -->"
PROCESSES = (
    (".glb / gltfpack", "glb", "gltfpack glb", (1.5, 1.0)),
    (".glb by Blender, two-sided / gltfpack", "blender.glb", "gltfpack blender.glb", (1.9, 1.5)),
    (".glb / `assimp` to .assbin", "glb", "assimp glb", (1.0, 0.7)),
    (".obj / `assimp` to .assbin", "obj", "assimp obj", (0.75, 0.5)),
    (".fbx by Blender / `assimp` to .assbin", "blender.fbx", "assimp blender.fbx", (1.15, 1.05)),
    (".scene.bin / .scene.json", "scene.bin", "scene.json", (0.8, 0.65)),
    (".scene.json / `assimp` of the .obj to .assbin", "scene.json", "assimp obj", (0.40, 0.33)),
)
STAGES = (("rebuild", 120), ("load", 300), ("gather", 90), ("weld", 30), ("clean", 20), ("cells", 12),
          ("batches", 25), ("fill and write", 60))


class Times:
    """Medians of one benchmark program's results, in milliseconds."""

    def __init__(self, path):
        document = json.loads(path.read_text())
        self.context = document["context"]
        runs = {}
        for run in document["benchmarks"]:
            if run.get("error_occurred"):
                sys.exit(f"report.py: {path}: {run['name']}: {run['error_message']}")
            if run["run_type"] == "iteration":
                name = re.sub(r"/iterations:\d+/manual_time$", "", run["run_name"])
                runs.setdefault(re.sub(r"/repeats:\d+$", "", name), []).append(run["real_time"])
        self.medians = {name: statistics.median(times) for name, times in runs.items()}

    def __getitem__(self, name):
        return self.medians[name]


class Stages(Times):
    """The stages on one level. What is written can't be timed apart from the cells and batches that
    are made on the way."""

    def __init__(self, path):
        super().__init__(path)
        self.medians["fill and write"] = self["write all"] - self["cells"] - self["batches"]

    def ratio(self, one, other):
        return self[one] / self[other]

    def nanoseconds(self, stage):
        return 1e6 * self[stage] / int(self.context["triangles"])


def doublings(times):
    """Per adversarial input how many times as long twice the size takes."""
    return {name[:-2]: times[name[:-1] + "2"] / times[name]
            for name in times.medians if name.endswith("|1")}


class Processes:
    """Times and memory of whole processes."""

    def __init__(self, path):
        self.results = json.loads(path.read_text())

    def seconds(self, size, command):
        return statistics.median(self.results[size]["commands"][command]["seconds"])

    def ratio(self, size, command, other):
        """None where one of the two was not measured on that level."""
        if not {command, other} <= self.results[size]["commands"].keys():
            return None
        return self.seconds(size, command) / self.seconds(size, other)

    def growth(self, command):
        small, large = (self.results[size]["triangles"] for size in ("130k", "1M"))
        return math.log(self.seconds("1M", command) / self.seconds("130k", command)) / math.log(
            large / small)

    def peak(self, size, command, which):
        result = self.results[size]
        return result["commands"][command][which] / result["triangles"]


def read(folder):
    """All results that are there: stages by level, processes, the adversarial inputs."""
    stages = {path.stem.removeprefix("stages-"): Stages(path)
              for path in folder.glob("stages-*.json")}
    return stages, Processes(folder / "processes.json"), Times(folder / "adversarial.json")


def rows(stages, processes, adversarial):
    """What, its values at 130k and at 1M, at most, aim; numbers, texts or None."""

    def by_stage(value):
        return [value(stages[size]) if size in stages else None for size in ("130k", "1M")]

    def at_130k(value):
        """The limits apply only at 130k; the value at 1M is for information."""
        small, large = by_stage(value)
        return small, shown(large)

    def by_process(value):
        return [value(size) if size in processes.results else None for size in ("130k", "1M")]

    yield ("weld + clean / import library's post-processing",
           *at_130k(lambda s: s.ratio("weld + clean", "post-processing")), 0.12, 0.08)
    yield ("weld + clean / meshoptimizer's remap",
           *by_stage(lambda s: s.ratio("weld + clean", "vertex remap")), 0.75, 0.50)
    yield ("export without loading / import library's post-processing",
           *by_stage(lambda s: s.ratio("export kob", "post-processing")), 0.50, 0.40)
    for what, one, other, limits in PROCESSES:
        yield (f"whole process, {what}",
               *by_process(lambda size, a=one, b=other: processes.ratio(size, a, b)), *limits)
    both = {"130k", "1M"} <= processes.results.keys()
    yield ("growth from 130k to 1M, exponent, whole process, .scene.json", None,
           processes.growth("scene.json") if both else None, 1.10, 1.05)
    for which, name, limits in (("largest", "largest process", ("", "")),
                                ("all", "all processes", (300, 250))):
        for form in ("scene.json", "scene.bin", "glb", "obj"):
            yield (f"peak memory, bytes per triangle, {name}, .{form}", None,
                   processes.peak("1M", form, which) if both else None, *limits)
    yield ("weld's representatives / one hash insert per vertex",
           *by_stage(lambda s: s.ratio("representatives", "hash inserts")), 3.2, 2.3)
    judged = {name: ratio for name, ratio in doublings(adversarial).items() if "(k * k)" not in name}
    worst = max(judged, key=judged.get)
    yield (f"worst of {len(judged)} adversarial inputs, time on doubling ({worst})", judged[worst],
           None, 2.3, 2.1)
    yield ("a scene of 12 triangles, whole process, ms",
           1e3 * statistics.median(processes.results["box"]["seconds"]), None, 15, 8)
    for stage, most in STAGES:
        yield (f"{stage}, ns per triangle", *at_130k(lambda s, n=stage: s.nanoseconds(n)), most, "")
    yield ("write() of the output / fill and write",
           *by_stage(lambda s: s.ratio("write()", "fill and write")), "", "")


def shown(value):
    if value is None:
        return "-"
    if isinstance(value, str):
        return value
    return f"{value:.2f}" if value < 10 else f"{value:.0f}"


def table(results):
    """A Markdown table that can be read as plain text as well. Values above what they may be at most
    are marked."""
    lines = [("what", "130k", "1M", "at most", "aim")]
    for what, small, large, most, aim in rows(*results):
        marked = [shown(value) + (" !" if isinstance(value, float) and isinstance(most, (int, float))
                                  and value > most else "") for value in (small, large)]
        lines.append((what, *marked, shown(most), shown(aim)))
    widths = [max(len(line[column]) for line in lines) for column in range(5)]

    def formatted(line):
        cells = [line[0].ljust(widths[0])] + [c.rjust(w) for c, w in zip(line[1:], widths[1:])]
        return "| " + " | ".join(cells) + " |"

    rule = "|" + "|".join("-" * (w + 1) + (":" if i else "-") for i, w in enumerate(widths)) + "|"
    return "\n".join([formatted(lines[0]), rule, *map(formatted, lines[1:])])


def details(stages, adversarial):
    """What the table sums up."""
    yield "time on doubling:"
    for name, ratio in sorted(doublings(adversarial).items(), key=lambda entry: -entry[1]):
        yield f"  {ratio:5.2f}  {name} ({adversarial[name + '|1']:.1f} ms)"
    for one in ("weld", "clean"):
        ratio = adversarial[f"literal {one}"] / adversarial[f"fast {one}"]
        yield f"the literal definition takes {ratio:.0f} times as long on the 10k level: {one}"
    for size, times in sorted(stages.items()):
        counts = (f"{times.context[key]} {key.replace('_', ' ')}"
                  for key in ("triangles", "vertices", "welded_vertices"))
        yield f"{size} level: " + ", ".join(counts)
        yield f"{size}, ms: " + ", ".join(f"{name} {ms:.3g}"
                                          for name, ms in sorted(times.medians.items()))


def machine():
    compiler = subprocess.run(["c++", "-dumpfullversion"], capture_output=True, text=True,
                              check=True).stdout.strip()
    return f"Measured with GCC {compiler} on a machine with {os.cpu_count()} processors"


def write_into(document, text):
    content = document.read_text()
    begin, end = content.index(BEGIN) + len(BEGIN), content.index(END)
    document.write_text(f"{content[:begin]}\n{text}\n{content[end:]}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--renew", type=pathlib.Path)
    arguments = parser.parse_args()
    results = read(arguments.folder)
    text = table(results)
    print("\n".join(details(results[0], results[2])))
    print(f"\n{text}\n\n\"!\": more than it may be at most")
    if arguments.renew:
        write_into(arguments.renew, f"{machine()}:\n\n{text}")


if __name__ == "__main__":
    main()
