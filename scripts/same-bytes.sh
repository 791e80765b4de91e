#!/usr/bin/env bash
# Checks that the same scenes, options and seed give the same bytes: same-bytes.sh [CHECK...], by
# default all that need no other processor. Exports the example, all of tests/golden, 200 random scenes
# and the rooms of tests/models to both layouts and compares outputs and messages with those of the
# release build:
#
#   runs      two more runs
#   folder    a folder with a blank and an umlaut in its name
#   locale    in German, with decimal commas: in the environment, and in force in the process
#   debug     the build without optimisation (-O0; the release build has -O3)
#   clang     the release build by clang++ (the other one is by g++)
#   sanitize  the build by clang++ with sanitizers (-O1)
#   arm64, s390x  the whole program, without its windows, built for that processor and run under qemu;
#             s390x is big-endian, where the import library can't read .dae. As root, because libraries
#             of that processor are in folders of their own: in MAPEXPORT_ROOTS, by default
#             ~/.cache/mapexport
#
# Ends with 1 when something differs, and names the files. Results go to
# build/robustness/same-bytes.tsv.
set -euo pipefail
unset CDPATH
export LC_ALL=C # whatever the caller's locale, except in the check of another
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
# shellcheck source=scripts/lib/note-result.sh
. "$root/scripts/lib/note-result.sh"
# shellcheck source=scripts/lib/foreign-root.sh
. "$root/scripts/lib/foreign-root.sh"

checks=("$@")
[[ $# -gt 0 ]] || checks=(runs folder locale debug clang sanitize)
lists=("$root/scripts/packages.txt")
for check in "${checks[@]}"; do
  case $check in
    clang | sanitize) lists+=("$root/scripts/packages-sanitize.txt") ;;
    locale) lists+=("$root/scripts/packages-test.txt") ;;
    arm64 | s390x)
      # Said before the build, which takes long.
      if [[ $(id -u) -ne 0 ]]; then
        echo "same-bytes.sh: only root can run programs of another processor" >&2
        exit 1
      fi
      lists+=("$root/scripts/packages-foreign.txt")
      ;;
    runs | folder | debug) ;;
    *)
      echo "same-bytes.sh: there is no check \"$check\"" >&2
      exit 2
      ;;
  esac
done
ensure_packages "${lists[@]}"

work=$root/build/same-bytes
status=0
rooms=(room.{3ds,ase,dae,fbx,gltf,obj})
left_out= # a pattern of outputs that a check can't compare

# program PRESET [TARGET...]: brings the preset's program up to date, and says where it is.
program() {
  local folder=$root/build/$1
  (
    cd -- "$root"
    [[ -f $folder/build.ninja ]] || cmake --preset "$1" -DMAPEXPORT_TESTS=OFF
    cmake --build --preset "$1" --target mapexport "${@:2}"
  ) >&2 || return 1
  echo "$folder/bin/mapexport"
}

# foreign_program ARCHITECTURE: the same for another processor.
foreign_program() {
  local folder=$root/build/$1
  {
    make_foreign_root "$1" || return
    [[ -f $folder/build.ninja ]] || configure_foreign "$1" "$folder" || return
    cmake --build "$folder" --target mapexport || return
  } >&2
  echo "$folder/bin/mapexport"
}

# export_all FOLDER PROGRAM...: copies the scenes to FOLDER/in and writes what they give, and what is
# said of them, to FOLDER/out.
export_all() {
  local folder=$1 name scene layout options
  shift
  rm -rf -- "$folder"
  mkdir -p -- "$folder/in" "$folder/out"
  cp -- "$root"/examples/yard.{scene.json,cxp} "$root"/tests/golden/*.{scene.json,cxp} \
    "$root"/tests/models/room.{3ds,ase,dae,fbx,gltf,obj,mtl} "$folder/in"
  cp -r -- "$work/random" "$folder/in"
  (
    cd -- "$folder/in"
    while read -r name scene _ options; do
      read -ra options <<<"$options"
      for layout in qob kob; do
        "$@" export "$scene.scene.json" "../out/$name.$layout" --fresh --seed 1 --quiet \
          ${options[@]+"${options[@]}"} </dev/null || exit
        "$@" inspect --json "../out/$name.$layout" </dev/null >"../out/$name.$layout.json" || exit
      done
    done < <(echo "yard yard - --cxp yard.cxp" && grep -v '^#' "$root/tests/golden/cases.txt")
    for layout in qob kob; do
      "$@" export random/* --output-folder ../out --layout "$layout" --fresh --seed 1 --quiet || exit
    done
    rm -f -- ../out/*.ExportDebug.txt # with times
  ) 2>"$folder/out/messages" || {
    tail -n 1 -- "$folder/out/messages" >&2
    return 1
  }
  # Those of several scenes come in the order in which these are done.
  LC_ALL=C sort -o "$folder/out/messages" -- "$folder/out/messages"
  export_rooms "$folder" "$@"
}

# export_rooms FOLDER PROGRAM...: the same for the foreign formats, which export_all has copied.
export_rooms() {
  local folder=$1 room layout
  shift
  (
    cd -- "$folder/in"
    for room in "${rooms[@]}"; do
      for layout in qob kob; do
        "$@" export "$room" "../out/$room.$layout" --fresh --seed 1 --quiet || exit
      done
      # What a foreign file is read as is text, with numbers in it.
      "$@" scene "$room" -o "../out/$room.scene.json" || exit
    done
  ) 2>"$folder/out/room.messages" || {
    tail -n 1 -- "$folder/out/room.messages" >&2
    return 1
  }
}

# report WHAT COUNT DIFFERENT HOW
report() {
  printf '%-25s %4d files compared, %d differ\n' "$1" "$2" "$3"
  note_result same-bytes.tsv "$@"
  # Nothing compared is no success.
  [[ $2 -gt 0 && $3 -eq 0 ]] || status=1
}

# outputs FOLDER: the names of the files there that can be compared.
outputs() {
  find "$1/out" -type f ! -name "$left_out" -printf '%P\n' | sort
}

# compare WHAT HOW FOLDER...: the files there with the first run's.
compare() {
  local what=$1 how=$2 folder count=0 different=0 file
  shift 2
  for folder in "$@"; do
    [[ $(outputs "$work/first") == "$(outputs "$folder")" ]] || {
      echo "$what: other files than those of the first run are in $folder/out"
      different=$((different + 1))
    }
    while IFS= read -r file; do
      count=$((count + 1))
      cmp -- "$work/first/out/$file" "$folder/out/$file" || different=$((different + 1))
    done < <(outputs "$work/first")
  done
  report "$what" "$count" "$different" "$how"
}

# check_reader ARCHITECTURE: what the example of the engines' header says of the models, there and here.
check_reader() {
  local -a here=("$work/reader") there=("$root/scripts/lib/foreign-run.sh" "$1" "$work/reader-$1")
  local model count=0 different=0
  local -a compile=(-std=c++17 -O2 -I"$root/include" "$root/examples/engine_reader.cpp" -o)
  g++ "${compile[@]}" "${here[0]}"
  "$(foreign_triplet "$1")-g++" --sysroot="$(foreign_root "$1")" "${compile[@]}" "${there[2]}"
  for model in "$work"/first/out/*.{k,q}ob; do
    [[ ${model##*/} != random-* ]] || continue
    count=$((count + 1))
    # A reader that fails in the same way on both says nothing of the model.
    "${here[@]}" "$model" >"$work/reader.txt" 2>&1 &&
      cmp -- "$work/reader.txt" <("${there[@]}" "$model" 2>&1) || different=$((different + 1))
  done
  report "engines' reader on $1" "$count" "$different" "examples/engine_reader.cpp; under qemu"
}

# Compiles the locale into a temporary folder; the system stays as it is.
check_locale() {
  local -x LOCPATH=$work/locale LC_ALL=
  mkdir -p -- "$LOCPATH"
  # localedef warns of outdated parts of its sources, with status 1.
  localedef -i de_DE -f UTF-8 "$LOCPATH/de_DE.UTF-8" 2>/dev/null || [[ -d $LOCPATH/de_DE.UTF-8 ]]
  # Hosts and Qt switch to the user's locale; the program itself doesn't.
  g++ -shared -fPIC -x c++ -o "$work/in-force.so" - <<'CPP'
#include <locale>
static const bool inForce = (std::locale::global(std::locale("")), true);
CPP
  LC_ALL=de_DE.UTF-8
  if [[ $(env printf '%.1f' 1,5) != 1,5 ]]; then
    echo "locale: de_DE.UTF-8 is not in force" >&2
    return 1
  fi
  export_all "$work/german" "$release"
  # The path may hold a blank, at which the variable would be cut in two.
  LD_LIBRARY_PATH=$work LD_PRELOAD=in-force.so export_all "$work/german-in-force" "$release"
}

release=$(program release make_random_scenes)
rm -rf -- "$work/random"
mkdir -p -- "$work/random"
"$root/build/release/bin/make_random_scenes" 200 "$work/random"
export_all "$work/first" "$release"
for check in "${checks[@]}"; do
  case $check in
    runs)
      export_all "$work/second" "$release"
      export_all "$work/third" "$release"
      compare "three runs" "release build, one after the other" "$work/second" "$work/third"
      ;;
    folder)
      export_all "$work/another földer" "$release"
      compare "another folder" "a blank and an umlaut in its name" "$work/another földer"
      ;;
    locale)
      check_locale
      compare "German locale" "LC_ALL=de_DE.UTF-8; also in force in the process" \
        "$work/german" "$work/german-in-force"
      ;;
    debug)
      built=$(program debug)
      export_all "$work/debug" "$built"
      compare "-O0 against -O3" "debug and release build" "$work/debug"
      ;;
    clang)
      built=$(program clang)
      export_all "$work/clang" "$built"
      compare "clang++ against g++" "release builds" "$work/clang"
      ;;
    sanitize)
      built=$(program sanitize)
      export_all "$work/sanitize" "$built"
      compare "sanitizers against none" "address and undefined; release build" "$work/sanitize"
      ;;
    arm64 | s390x)
      built=$(foreign_program "$check")
      # Under qemu the reader of foreign formats warns that it is not confined.
      left_out="room.messages"
      if [[ $check == s390x ]]; then
        rooms=(room.{3ds,ase,fbx,gltf,obj})
        left_out="room.[!3afgo]*"
      fi
      export_all "$work/$check" "$root/scripts/lib/foreign-run.sh" "$check" "$built"
      compare "$check" "against this processor, release builds; under qemu" "$work/$check"
      check_reader "$check"
      rooms=(room.{3ds,ase,dae,fbx,gltf,obj})
      left_out=
      ;;
  esac
done
exit "$status"
