#!/usr/bin/env bash
# Runs fuzz targets, two at a time, each for some seconds: fuzz.sh [SECONDS] [TARGET...], by default
# all targets for 60 seconds. A target starts from its seeds in tests/fuzz/corpus, from the project's
# own files, and from the inputs that earlier runs found (build/fuzz/corpus). At the first fault the
# others are stopped, and the script ends with 1 and the path of the faulty input. At the end a table
# lists the inputs that reached something new and the edges of the code that were covered; its numbers
# also go to build/robustness/fuzz.tsv.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
# shellcheck source=scripts/lib/fuzz-corpus.sh
. "$root/scripts/lib/fuzz-corpus.sh"
# shellcheck source=scripts/lib/note-result.sh
. "$root/scripts/lib/note-result.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-sanitize.txt"

seconds=60
if [[ ${1-} =~ ^[0-9]+$ ]]; then
  seconds=$1
  shift
fi
all=("$root"/tests/fuzz/Fuzz*.cpp)
all=("${all[@]##*/}")
all=("${all[@]%.cpp}")
targets=("$@")
[[ $# -gt 0 ]] || targets=("${all[@]}")
for target in "${targets[@]}"; do
  if [[ ! -f $root/tests/fuzz/$target.cpp ]]; then
    echo "fuzz.sh: there is no target \"$target\"; there are ${all[*]}" >&2
    exit 2
  fi
done

cd -- "$root"
cmake --preset sanitize -DMAPEXPORT_FUZZ=ON ${MAPEXPORT_WERROR:+"-DMAPEXPORT_WERROR=$MAPEXPORT_WERROR"} >/dev/null
cmake --build --preset sanitize --target "${targets[@]}"

out=$root/build/fuzz
mkdir -p -- "$out"
# The exporter's target writes files there.
export TMPDIR=$out/tmp
rm -rf -- "$TMPDIR"
mkdir -p -- "$TMPDIR"
rm -f -- "$out"/Fuzz*.log

# seeds TARGET: its further arguments, with the folders and files that it starts from.
seeds() {
  local corpus=$root/tests/fuzz/corpus/$1 dictionary=$root/tests/fuzz/dict/$1.dict
  [[ ! -f $dictionary ]] || echo "-dict=$dictionary"
  [[ ! -d $corpus ]] || echo "$corpus"
}

# statistic NAME TARGET: that number of its log.
statistic() {
  sed -nE "s/^stat::$1: *([0-9]+)$/\\1/p" "$out/$2.log"
}

declare -A pids=()
trap '[[ ${#pids[@]} -eq 0 ]] || kill "${!pids[@]}" 2>/dev/null' EXIT
failed=""

# take: waits for one of the running targets to end.
take() {
  local pid="" status=0
  wait -n -p pid "${!pids[@]}" || status=$?
  if [[ $status -ne 0 && -z $failed ]]; then
    failed=${pids[$pid]}
    kill "${!pids[@]}" 2>/dev/null || true
  fi
  unset "pids[$pid]"
}

for target in "${targets[@]}"; do
  [[ ${#pids[@]} -lt 2 ]] || take
  [[ -z $failed ]] || break
  prepare_corpus "$target" "$out/corpus/$target"
  mapfile -t arguments < <(seeds "$target")
  echo "$target: $seconds seconds"
  "$root/build/sanitize/fuzz/$target" -max_total_time="$seconds" -timeout=10 -len_control=20 \
    -print_final_stats=1 -artifact_prefix="$out/$target-" "$out/corpus/$target" "${arguments[@]}" \
    >"$out/$target.log" 2>&1 &
  pids[$!]=$target
done
while [[ ${#pids[@]} -gt 0 ]]; do take; done

printf '\n%-16s %11s %8s %6s %6s\n' target executions seconds new edges
for target in "${targets[@]}"; do
  runs=""
  [[ ! -f $out/$target.log ]] || runs=$(statistic number_of_executed_units "$target")
  [[ -n $runs ]] || continue
  taken=$(sed -nE 's/^Done [0-9]+ runs in ([0-9]+) second.*/\1/p' "$out/$target.log")
  edges=$(sed -nE 's/.* cov: ([0-9]+) .*/\1/p' "$out/$target.log" | tail -n 1)
  printf '%-16s %11s %8s %6s %6s\n' "$target" "$runs" "${taken:--}" \
    "$(statistic new_units_added "$target")" "${edges:--}"
  findings=0
  [[ $target != "$failed" ]] || findings=1
  # A target that was stopped with another's fault tells nothing.
  [[ -n $taken || $findings -eq 1 ]] || continue
  about=$(sed -nE '1s,^// *,,p' "tests/fuzz/$target.cpp")
  note_result fuzz.tsv "$target" "$runs" "$findings" \
    "libFuzzer with sanitizers, ${taken:-less than $seconds} s; $about"
done

if [[ -n $failed ]]; then
  printf '\n'
  grep -E '^does not hold|ERROR|SUMMARY|runtime error|Assertion' "$out/$failed.log" || true
  input=$(sed -nE 's/.*Test unit written to (.*)$/\1/p' "$out/$failed.log")
  echo "$failed: a fault; the input: ${input:-none; see $out/$failed.log}"
  exit 1
fi
