#!/usr/bin/env bash
# Runs the fuzz targets, each for some seconds from a seed corpus made of the project's own files:
# fuzz.sh [SECONDS], 60 unless given. Ends with 1 and the offending input's path at the first fault.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-fuzz.txt"
seconds=${1:-60}

cd -- "$root"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzzers
[[ -x build/release/bin/mapexport ]] || scripts/run-example.sh >/dev/null

corpus=$root/build/fuzz/corpus
mkdir -p -- "$corpus"/{FuzzCxp,FuzzModelReader,FuzzObj,FuzzSceneFile,FuzzSettings}
cp -- examples/yard.cxp tests/golden/*.cxp "$corpus/FuzzCxp"
cp -- tests/golden/*.scene.json "$corpus/FuzzSceneFile"
cp -- tests/models/*.obj tests/models/*.mtl "$corpus/FuzzObj"
build/release/bin/mapexport export tests/golden/winding.scene.json "$corpus/level.qob" --quiet \
  --settings "$corpus/FuzzSettings/settings.reg"
rm -f ExportDebug.txt "$corpus/level.qob"
(
  cd -- "$corpus/FuzzModelReader"
  for name in collision materials two-sided; do
    for layout in qob kob; do
      "$root/build/release/bin/mapexport" export "$root/tests/golden/$name.scene.json" \
        "$name.$layout" --fresh --seed 0 --quiet
    done
  done
  rm -f ExportDebug.txt
)
for target in FuzzCxp FuzzModelReader FuzzObj FuzzSceneFile FuzzSettings; do
  printf '\n== %s\n' "$target"
  "build/fuzz/fuzz/$target" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 \
    -artifact_prefix="build/fuzz/$target-" "$corpus/$target" || exit 1
done
