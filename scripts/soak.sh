#!/usr/bin/env bash
# Looks for faults for hours: soak.sh HOURS [--jobs N] [--state FOLDER] [CAMPAIGN...]
#
# Fuzz targets, damaged and harmful scenes, faults, and random inputs against literal definitions
# take turns of some minutes, each with its share of the processor time; CAMPAIGN names some of the
# table. A find ends at most its own turn. What was done is kept in FOLDER (build/soak), and a further
# run goes on from there; whatever ends the script, only the running turns are lost. At the end, also
# after Ctrl-C, a table lists what each campaign did, where its finds are kept and the commands that
# show them again; "soak.sh 0" shows the table alone. Ends with 1 when something was found.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
# shellcheck source=scripts/lib/fuzz-corpus.sh
. "$root/scripts/lib/fuzz-corpus.sh"

state=$root/build/soak
arguments=()
while [[ $# -gt 0 ]]; do
  case $1 in
    --state)
      state=${2:?"soak.sh: --state needs a folder"}
      shift
      ;;
    -h | --help)
      sed -n '2,/^set /s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
      exit 0
      ;;
    *) arguments+=("$1") ;;
  esac
  shift
done
mkdir -p -- "$state"
state=$(cd -- "$state" && pwd -P)

if [[ ${arguments[0]-} != 0 ]]; then
  ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-test.txt" \
    "$root/scripts/packages-sanitize.txt"
  cd -- "$root"
  cmake --preset sanitize -DMAPEXPORT_FUZZ=ON >/dev/null
  cmake --build --preset sanitize --target fuzzers mapexport mapexport-plugin
  cmake --preset release -DMAPEXPORT_TESTS=ON >/dev/null
  cmake --build --preset release --target mapexport mapexport-plugin failing-call taken-over \
    GeometryTest PassesTest SplitTest TokenizerTest CornerNormalsTest
  for target in tests/fuzz/Fuzz*.cpp; do
    target=${target##*/}
    prepare_corpus "${target%.cpp}" "$state/corpus/${target%.cpp}"
  done
fi
exec python3 -B "$root/tests/campaigns/soak.py" --state "$state" ${arguments[@]+"${arguments[@]}"}
