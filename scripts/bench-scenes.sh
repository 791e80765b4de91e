#!/usr/bin/env bash
# Times an export of 200 scenes of 1,000 triangles in one call: bench-scenes.sh [FOLDER]
#
# on one processor and on two, in turn, five times; prints the fastest of each and their ratio. FOLDER,
# by default build/bench/scenes, is where the files go: the disk's time for syncing counts.
set -euo pipefail
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
folder=${1:-$root/build/bench/scenes}
mkdir -p -- "$folder"
python3 - "$folder" "$root/build/release/bin/mapexport" <<'END'
import glob, os, subprocess, sys, time

folder, program = sys.argv[1:]
WIDE, HIGH, SCENES = 25, 20, 200
for k in range(SCENES):
    with open(f"{folder}/level{k:03}.obj", "w") as out:
        for y in range(HIGH + 1):
            for x in range(WIDE + 1):
                out.write(f"v {40 * x} {40 * y} {(7 * x + 13 * y + k) % 5 * 3}\n")
        for a in (y * (WIDE + 1) + x + 1 for y in range(HIGH) for x in range(WIDE)):
            out.write(f"f {a} {a + 1} {a + WIDE + 2}\nf {a} {a + WIDE + 2} {a + WIDE + 1}\n")
    subprocess.run([program, "scene", f"{folder}/level{k:03}.obj", "-o",
                    f"{folder}/level{k:03}.scene.json"], check=True)

def seconds(scenes, processors):
    begin = time.monotonic()
    subprocess.run([program, "export", *scenes, "--output-folder", f"{folder}/out", "--fresh",
                    "--seed", "1", "--quiet"], check=True,
                   preexec_fn=lambda: os.sched_setaffinity(0, processors))
    return time.monotonic() - begin

free = sorted(os.sched_getaffinity(0))
for ending in ("scene.json", "obj"):
    scenes = sorted(glob.glob(f"{folder}/level*.{ending}"))
    times = [(seconds(scenes, free[:1]), seconds(scenes, free[:2])) for _ in range(5)]
    one, two = (min(column) for column in zip(*times))
    print(f"{ending}: {1000 * one / SCENES:.1f} ms per scene on one processor, "
          f"{one / two:.2f} times faster on {len(free[:2])}")
END
