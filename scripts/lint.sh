#!/usr/bin/env bash
# Checks how the code is written: clang-format, clang-tidy, shellcheck for the scripts, and black, flake8
# and mypy for the add-on for Blender. lint.sh --fix formats the C++ files and the add-on instead of only
# looking at them; the rest stays the same.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-test.txt" \
  "$root/scripts/packages-bench.txt" "$root/scripts/packages-lint.txt"

cd -- "$root"
status=0
folders=(src tests include examples)
[[ ! -d bench ]] || folders+=(bench)
mapfile -t files < <(
  find "${folders[@]}" -type f \( -name '*.h' -o -name '*.cpp' \) | LC_ALL=C sort
)

if [[ ${1-} == --fix ]]; then
  clang-format -i "${files[@]}"
  black --quiet --config blender/pyproject.toml blender tests/blender-addon
fi
echo "clang-format: ${#files[@]} files"
clang-format --dry-run -Werror "${files[@]}" || status=1
# Where a trailing comment does not fit, clang-format breaks the code in front of it.
LC_ALL=C.UTF-8 awk '
  FNR == 1 { previous = "" }
  length > 100 && /^ *\/\// { print FILENAME ":" FNR ": a comment of more than 100 columns"; found = 1 }
  / \/\/\/< / && previous ~ /[=>]$/ {
    print FILENAME ":" FNR ": the comment tears its field; put it above"
    found = 1
  }
  { previous = $0 }
  END { exit found }' "${files[@]}" || status=1

echo "shellcheck"
shellcheck -x scripts/*.sh scripts/lib/*.sh .ci/run || status=1

echo "black, flake8, mypy"
black --quiet --check --config blender/pyproject.toml blender tests/blender-addon || status=1
flake8 --config blender/.flake8 blender tests/blender-addon || status=1
mypy --config-file blender/pyproject.toml --cache-dir build/mypy blender/mapexport || status=1

# A separate folder holds the compile commands: nothing is built in it, no other build is touched.
# Without the page, which only a build makes. A room's files are looked at some together: most of the
# time goes to the headers that they share.
options=(-DMAPEXPORT_TESTS=ON -DMAPEXPORT_BENCH=ON -DMAPEXPORT_FUZZ=ON -DMAPEXPORT_VIEW=OFF
  -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=24)
if ! configured=$(cmake -S . -B build/lint -G Ninja "${options[@]}" 2>&1); then
  printf '%s\n' "$configured" >&2
  exit 1
fi
mapfile -t units < <(
  sed -nE 's/^ *"file": "(.*)",?$/\1/p' build/lint/compile_commands.json | LC_ALL=C sort -u
)
echo "clang-tidy: ${#units[@]} files"
# tidy CHECKS UNIT...: its checks except CHECKS.
tidy() {
  local checks=$1
  shift
  # It also counts suppressed warnings of library headers; drop these lines.
  printf '%s\0' "$@" |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy -p build/lint --quiet \
      --checks="-bugprone-suspicious-include$checks" \
      2> >(grep -vE '^[0-9]+ warnings?( .*)? generated\.$' >&2)
}
# In the tests only what finds faults: each is a program with headers of its own, and takes long.
mapfile -t tests < <(printf '%s\n' "${units[@]}" | grep "^$root/build/lint/tests/\|^$root/tests/")
mapfile -t others < <(printf '%s\n' "${units[@]}" | grep -v "^$root/build/lint/tests/\|^$root/tests/")
tidy "" "${others[@]}" || status=1
tidy ",-modernize-*,-readability-*,-performance-*,-misc-*" "${tests[@]}" || status=1

if [[ $status -eq 0 ]]; then
  echo "lint: clean"
else
  echo "lint: there is something to mend"
fi
exit "$status"
