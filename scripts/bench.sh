#!/usr/bin/env bash
# Builds and runs the benchmarks; each ends with the ratios that matter: the literal definition to
# the fast form, and twice the size to once. Arguments go to every program, for example
# bench.sh --benchmark_filter=weld
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-bench.txt"

cd -- "$root"
# A folder of its own keeps the benchmarks out of the release build.
cmake --preset release -B build/bench -DMAPEXPORT_BENCH=ON -DMAPEXPORT_TESTS=OFF >/dev/null
cmake --build build/bench --target benchmarks
for program in build/bench/bench/*Bench; do
  printf '\n== %s\n' "${program##*/}"
  "$program" --benchmark_min_time=0.1 "$@"
done
