#!/usr/bin/env bash
# Builds and runs the tests: test.sh [--all | PRESET...], by default those of the release build.
#
# Unless presets are named it also checks the arrows between the rooms, the example and an
# installation. --all adds the tests under sanitizers, and that the release and sanitize builds write
# the same bytes; scripts/same-bytes.sh compares more builds. The last line counts it all: "N passed,
# N failed, N skipped".
# MAPEXPORT_WERROR=ON in the environment makes warnings errors.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
lists=("$root/scripts/packages.txt" "$root/scripts/packages-test.txt")
[[ " $* " != *" --all "* && " $* " != *" sanitize "* ]] || lists+=("$root/scripts/packages-sanitize.txt")
ensure_packages "${lists[@]}"

cd -- "$root"
jobs=$(nproc)
passed=0
failed=0
skipped=0

heading() {
  printf '\n== %s\n' "$*"
}

# configure PRESET [ARGUMENT...]; an option that is not given keeps what the build folder remembers.
configure() {
  cmake --preset "$@" ${MAPEXPORT_WERROR:+"-DMAPEXPORT_WERROR=$MAPEXPORT_WERROR"}
}

# run_tests PRESET: builds everything and adds what ctest counted to the sums.
run_tests() {
  local preset=$1 report=$root/build/$1/tests.xml status=0 total bad left_out
  heading "tests, $preset"
  configure "$preset" -DMAPEXPORT_TESTS=ON
  cmake --build --preset "$preset"
  rm -f -- "$report"
  ctest --preset "$preset" --no-tests=error -j "$jobs" --output-junit "$report" || status=$?
  total=$(junit_count tests "$report")
  bad=$(junit_count failures "$report")
  left_out=$(junit_count skipped "$report")
  # A run that broke down without a failed test counts as one failure.
  [[ $status -eq 0 || $bad -gt 0 ]] || bad=1
  failed=$((failed + bad))
  skipped=$((skipped + left_out))
  passed=$((passed + total - bad - left_out))
}

# junit_count ATTRIBUTE FILE: that number of the file's <testsuite>; 0 when there is none.
junit_count() {
  local pattern="/<testsuite/,/>/ s/.*[[:space:]]$1=\"([0-9]+)\".*/\\1/p" number=""
  [[ ! -f $2 ]] || number=$(sed -nE "$pattern" "$2" | head -n 1)
  echo "${number:-0}"
}

# check NAME COMMAND...: a step that counts as one test.
check() {
  local name=$1
  shift
  heading "$name"
  if "$@"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: $name"
  fi
}

# The committed level is what its script writes.
example_is_current() {
  local fresh=build/example-current status=0 file
  rm -rf -- "$fresh"
  python3 -B examples/make_yard.py "$fresh" || return 1
  for file in "$fresh"/*; do
    cmp -- "$file" "examples/${file##*/}" || status=1
  done
  return "$status"
}

# What cmake --install puts elsewhere runs there and writes the same bytes.
installed_program_works() {
  local prefix=$root/build/installed
  rm -rf -- "$prefix"
  cmake --install build/release --prefix "$prefix" >/dev/null || return 1
  (cd -- "$prefix" && bin/mapexport export share/doc/mapexport/examples/yard.scene.json yard.kob \
    --fresh --seed 1 --cxp share/doc/mapexport/examples/yard.cxp --quiet) || return 1
  cmp -- "$prefix/yard.kob" build/example/yard.kob || return 1
  scripts/check-hardening.sh "$prefix" || return 1
  scripts/check-consumer.sh "$prefix" || return 1
  [[ -s $prefix/share/man/man1/mapexport.1.gz ]] || return 1
  [[ -s $prefix/share/mapexport/blender/mapexport.zip ]]
}

all=""
if [[ ${1-} == --all ]]; then
  all=yes
  shift
fi
if [[ $# -gt 0 ]]; then
  for preset in "$@"; do
    run_tests "$preset"
  done
else
  check "arrows between the rooms" scripts/check-arrows.sh
  run_tests release
  check "the built files are hardened" scripts/check-hardening.sh build/release
  check "the example's first command" scripts/run-example.sh
  check "the example's files are what its script writes" example_is_current
  check "the example's counts" python3 examples/check_yard.py build/release/bin/mapexport
  check "the installed program" installed_program_works
fi
if [[ -n $all ]]; then
  run_tests sanitize
  check "the same bytes in German, and from the sanitize build" \
    scripts/same-bytes.sh locale sanitize
fi

printf '\n%d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
[[ $failed -eq 0 ]]
