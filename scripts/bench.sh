#!/usr/bin/env bash
# Builds and runs the benchmarks and prints the table of docs/performance.md: the stages of an export,
# whole exports, and what other libraries and programs need for the same work in the same run.
#
#   bench.sh [--quick] [--renew]
#   bench.sh --split
#   bench.sh --picture
#
# --quick measures only the 130k level, with fewer repetitions: one minute instead of eight.
# --split measures only exports with --split beside those without, up to ten million triangles.
# --picture measures only the drawing of pictures: a usual level beside what is hard to draw.
# --renew puts the table into docs/performance.md. Results are in build/bench/results.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"

sizes=(10k 130k 1M)
repetitions=21
long_repetitions=15 # what takes long, or is many
runs=21 # of whole processes, which vary most
report=()
split=
picture=
for argument in "$@"; do
  case $argument in
    --quick)
      sizes=(130k)
      repetitions=5
      long_repetitions=3
      runs=3
      ;;
    --split) split=1 ;;
    --picture) picture=1 ;;
    --renew) report=(--renew "$root/docs/performance.md") ;;
    *)
      echo "usage: bench.sh [--quick] [--renew] | --split | --picture" >&2
      exit 2
      ;;
  esac
done
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-bench.txt"

cd -- "$root"
# A separate folder keeps the benchmarks out of the release build.
cmake --preset release -B build/bench -DMAPEXPORT_BENCH=ON -DMAPEXPORT_TESTS=OFF \
  -DMAPEXPORT_VIEW=OFF >/dev/null
cmake --build build/bench --target benchmarks mapexport
programs=build/bench/bench
levels=build/bench/levels
results=build/bench/results
rm -rf -- "$levels" "$results"
mkdir -p -- "$levels" "$results"
if [[ -n $picture ]]; then
  exec "$programs/PictureBench"
fi
if [[ -n $split ]]; then
  exec python3 -B bench/measure_split.py build/bench/bin/mapexport "$programs/make_level" "$levels"
fi

# measure RESULT REPETITIONS PROGRAM ARGUMENT...: repetitions of different benchmarks take turns.
measure() {
  local result=$1 times=$2
  shift 2
  "$@" --benchmark_repetitions="$times" --benchmark_enable_random_interleaving=true \
    --benchmark_out_format=json --benchmark_out="$result" >"$result.log" 2>&1 ||
    { cat -- "$result.log" >&2; return 1; }
}

for size in box 10k 130k 1M; do
  [[ " box ${sizes[*]} " == *" $size "* ]] || continue
  printf '"%s": %d\n' "$size" "$("$programs/make_level" "$size" "$levels")"
done | paste -sd, | sed 's/.*/{&}/' >"$levels/sizes.json"

blender -b --python bench/save_with_blender.py -- "$levels/130k.obj" \
  "$levels/130k.blender.fbx" "$levels/130k.blender.glb" >"$results/blender.log" 2>&1
if [[ ! -s $levels/130k.blender.glb ]]; then
  cat -- "$results/blender.log" >&2
  exit 1
fi

for size in "${sizes[@]}"; do
  echo "stages, $size"
  times=$repetitions
  [[ $size != 1M ]] || times=$long_repetitions
  measure "$root/$results/stages-$size.json" "$times" "$programs/StageBench" "$size" "$levels"
done
echo "adversarial inputs"
measure "$root/$results/adversarial.json" "$long_repetitions" \
  "$programs/AdversarialBench" "$levels"
echo "whole processes"
python3 -B bench/measure_processes.py build/bench/bin/mapexport "$levels" \
  "$results/processes.json" --runs "$runs" --sizes "${sizes[@]}"
printf '\n'
python3 -B bench/report.py "$results" "${report[@]}"
