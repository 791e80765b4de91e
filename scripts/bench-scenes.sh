#!/usr/bin/env bash
# Times an export of 200 scenes of 1,000 triangles in one call: bench-scenes.sh [FOLDER]
#
# on one processor and on two, in turn, five times; prints the fastest of each and their ratio. FOLDER,
# by default build/bench/scenes, is where the files go: the disk's time for syncing counts.
set -euo pipefail
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
folder=${1:-$root/build/bench/scenes}
mkdir -p -- "$folder"
python3 "$root/scripts/lib/make_levels.py" "$folder" 200
for scene in "$folder"/level*.obj; do
  "$root/build/release/bin/mapexport" scene "$scene" -o "${scene%.obj}.scene.json"
done
python3 - "$folder" "$root/build/release/bin/mapexport" <<'END'
import glob, os, subprocess, sys, time

folder, program = sys.argv[1:]

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
    print(f"{ending}: {1000 * one / len(scenes):.1f} ms per scene on one processor, "
          f"{one / two:.2f} times faster on {len(free[:2])}")
END
