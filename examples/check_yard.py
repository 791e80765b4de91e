#!/usr/bin/env python3
"""Exports the example level under five names and compares the files with yard.expected.json.

    check_yard.py MAPEXPORT      (the program)

Prints one line for each difference and ends with 1 when there is any.
"""

import json
import pathlib
import subprocess
import sys
import tempfile

EXAMPLES = pathlib.Path(__file__).resolve().parent

# The output as named, the file that is written, its layout.
OUTPUTS = [
    ("yard.qob", "yard.qob", "qob"),
    ("upper.QOB", "upper.QOB", "qob"),
    ("yard.kob", "yard.kob", "kob"),
    ("yard.map", "yard.map", "kob"),
    ("bare", "bare.map", "kob"),
]


class Comparison:
    def __init__(self):
        self.differences = 0

    def same(self, what, found, expected):
        if found != expected:
            self.differences += 1
            print(f"{what}: {found!r} instead of {expected!r}")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    mapexport = pathlib.Path(sys.argv[1]).resolve()
    expected = json.loads((EXAMPLES / "yard.expected.json").read_text(encoding="utf-8"))
    compare = Comparison()
    with tempfile.TemporaryDirectory() as folder:
        for output, written, layout in OUTPUTS:
            messages = run(folder, mapexport, "export", EXAMPLES / "yard.scene.json", output,
                           "--fresh", "--seed", "1", "--cxp", EXAMPLES / "yard.cxp").stderr
            compare_messages(compare, output, messages, expected)
            compare_log(compare, output, pathlib.Path(folder) / "ExportDebug.txt", expected)
            model = json.loads(run(folder, mapexport, "inspect", written, "--json").stdout)
            compare_model(compare, written, model, layout, expected)
    sys.exit(1 if compare.differences else 0)


def run(folder, *command):
    done = subprocess.run([str(word) for word in command], cwd=folder, capture_output=True,
                          encoding="utf-8", check=False)
    if done.returncode != 0:
        sys.exit(f"{command[1:]} ended with {done.returncode}:\n{done.stderr}")
    return done


def compare_messages(compare, output, messages, expected):
    """The "Results" box has the counts before and after the passes."""
    counts = [line.removeprefix("Results: ") for line in messages.splitlines()
              if line.startswith("Results: ")]
    compare.same(f"{output}: number of Results boxes", len(counts), 1)
    if len(counts) != 1:
        return
    before, after = (dict(part.split(" ")[::-1] for part in half.split(", "))
                     for half in counts[0].split(" -> "))
    for what, counted, number in [("faces before", before["faces"], expected["faces"]),
                                  ("faces after", after["faces"], expected["faces"]),
                                  ("vertices before", before["vertices"],
                                   expected["gatheredVertices"]),
                                  ("vertices after", after["vertices"], expected["vertices"])]:
        compare.same(f"{output}: {what}", int(counted), number)


def compare_log(compare, output, log, expected):
    start = "Invalid FACE in GROUP"
    dropped = [line.removeprefix(start) for line in log.read_text(encoding="utf-8").splitlines()
               if line.startswith(start)]
    compare.same(f"{output}: nodes with invalid faces", dropped, expected["invalidFaces"])


def compare_model(compare, name, model, layout, expected):
    compare.same(f"{name}: layout", model["layout"], layout)
    compare.same(f"{name}: groups", [group["name"] for group in model["groups"]],
                 [expected["group"]])
    fields = ("name", "textureName", "twoSided")
    compare.same(f"{name}: materials",
                 [[material[field] for field in fields] for material in model["materials"]],
                 [[material[field] for field in fields] for material in expected["materials"]])

    group = model["groups"][0]
    drawn_faces = "drawnFaces" if layout == "kob" else "faces"
    for index, material in [(-1, expected["noMaterial"]), *enumerate(expected["materials"])]:
        batches = [batch for batch in group["batches"] if batch["material"] == index]
        compare_batches(compare, f"{name}: material {index}", batches, material, drawn_faces)

    if layout == "qob":
        compare.same(f"{name}: vertices", len(group["vertices"]), expected["vertices"])
        return
    kob = expected["kob"]
    compare.same(f"{name}: vertices", len(group["vertices"]), kob["vertices"])
    compare.same(f"{name}: collision points", len(group["collisionPoints"]), kob["collisionPoints"])
    compare.same(f"{name}: planes", len(group["planes"]), kob["planes"])
    compare.same(f"{name}: faces", len(group["faces"]), expected["faces"])
    compare.same(f"{name}: surface sets",
                 [[one["name"], one["flags"], len(one["faces"])] for one in group["surfaceSets"]],
                 [[one["name"], one["flags"], one["faces"]] for one in expected["surfaceSets"]])


def compare_batches(compare, what, batches, expected, drawn_faces):
    compare.same(f"{what}: faces", sum(len(batch["faces"]) for batch in batches),
                 expected[drawn_faces])
    if "nodes" in expected and len(batches) < len(expected["nodes"]):
        compare.same(f"{what}: batches", len(batches), f"at least {len(expected['nodes'])}")
    uvs = [corner["uv"] for batch in batches for corner in batch["corners"]]
    if "uvMin" in expected and uvs:
        found = [[round(end(uv[axis] for uv in uvs), 2) for axis in (0, 1)] for end in (min, max)]
        compare.same(f"{what}: range of u and v", found,
                     [[round(number, 2) for number in expected[end]] for end in ("uvMin", "uvMax")])


if __name__ == "__main__":
    main()
