#!/usr/bin/env bash
# Builds a project that uses an installed mapexport, with Ninja and with Make: check-consumer.sh PREFIX
#
# find_package gives header and program, a second build does nothing, and touching a material file builds
# the levels that are read from it.
set -euo pipefail
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
prefix=$(cd -- "$1" && pwd -P)
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT

project=$work/project
cp -r -- "$root/tests/consumer" "$project"
cp -- "$root/tests/golden/collision.scene.json" "$project/the hull.scene.json"
printf 'mtllib hall.mtl\nv 0 0 0\nv 90 0 0\nv 0 90 0\nusemtl Red\nf 1 2 3\n' >"$project/hall.obj"
printf 'newmtl Red\nKd 1 0 0\n' >"$project/hall.mtl"

# expect_newer WHEN LEVEL...: those and no other levels are newer than the mark.
expect_newer() {
  local what=$1 newer
  shift
  newer=$(find "$build" -name "*.?ob" -newer "$work/mark" -printf '%f\n' | sort | tr '\n' ' ')
  [[ $newer == "$*${*:+ }" ]] || { echo "$generator: $what: newer levels: $newer" >&2; exit 1; }
}

for generator in Ninja "Unix Makefiles"; do
  build=$work/$generator
  touch -- "$work/mark"
  cmake -S "$project" -B "$build" -G "$generator" -DCMAKE_PREFIX_PATH="$prefix" \
    -DEXAMPLES="$root/examples" >/dev/null
  cmake --build "$build" >/dev/null
  expect_newer "first build" hall.kob hall.qob "the hull.kob"
  "$build/reader" "$build/game/levels/the hull.kob" >/dev/null
  touch -- "$work/mark"
  cmake --build "$build" >/dev/null
  expect_newer "second build"
  touch -- "$project/hall.mtl" "$work/mark"
  cmake --build "$build" >/dev/null
  expect_newer "after touching hall.mtl" hall.kob hall.qob
done

# pkg-config writes its answer as the shell reads it: folders can have blanks.
eval "flags=($(PKG_CONFIG_PATH=$prefix/share/pkgconfig pkg-config --cflags mapexport))"
# shellcheck disable=SC2154  # eval sets them
c++ -std=c++17 "${flags[@]}" -fsyntax-only "$root/examples/engine_reader.cpp"
