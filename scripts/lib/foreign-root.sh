# Sourced by what builds or runs programs of another processor (arm64, s390x), which Debian calls an
# architecture. Its libraries are in a folder of MAPEXPORT_ROOTS, by default ~/.cache/mapexport: Debian
# does not install them all beside this processor's.
# shellcheck shell=bash

# foreign_triplet ARCHITECTURE: what compilers call it.
foreign_triplet() {
  case $1 in
    arm64) echo aarch64-linux-gnu ;;
    *) echo "$1-linux-gnu" ;;
  esac
}

suite=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)

# foreign_root ARCHITECTURE: prints the folder of its libraries.
foreign_root() {
  echo "${MAPEXPORT_ROOTS:-${XDG_CACHE_HOME:-$HOME/.cache}/mapexport}/$suite-$1"
}

# make_foreign_root ARCHITECTURE: makes that folder from the packages of packages.txt, unless it is
# there with all of them. They are only unpacked, so nothing of that processor has to run.
make_foreign_root() {
  local folder packages path target
  folder=$(foreign_root "$1")
  # shellcheck disable=SC2154 # root is the script's
  packages=$(sed -n '/^qt6-/d; s/^\([a-z0-9+-]*-dev\)$/\1/p' "$root/scripts/packages.txt" | paste -sd ,)
  [[ ! -d $folder || $(cat -- "$folder/packages" 2>/dev/null) != "$packages" ]] || return 0
  mkdir -p -- "${folder%/*}"
  rm -rf -- "$folder.new"
  mmdebstrap --quiet --variant=extract --architectures="$1" --include="libc6-dev,$packages" \
    "$suite" "$folder.new" >&2 || return 1
  # From here, links and CMake files with absolute paths lead to this processor's libraries.
  while IFS= read -r -d '' path && IFS= read -r -d '' target; do
    ln -sfnr -- "$folder.new$target" "$path"
  done < <(find "$folder.new/lib" "$folder.new/usr" -type l -lname '/*' -printf '%p\0%l\0')
  # shellcheck disable=SC2016 # CMake expands it
  find "$folder.new/usr/lib" -name '*.cmake' -exec \
    sed -Ei 's#([";:])(/usr/lib/[^/";]+/lib)#\1${CMAKE_SYSROOT}\2#g' {} +
  mkdir -p -- "$folder.new/proc" "$folder.new/usr/bin"
  touch -- "$folder.new/usr/bin/qemu"
  echo "$packages" >"$folder.new/packages"
  rm -rf --one-file-system -- "$folder"
  mv -- "$folder.new" "$folder"
}

# configure_foreign ARCHITECTURE FOLDER [OPTION...]: configures a release build in FOLDER.
configure_foreign() {
  local architecture=$1 folder=$2 triplet
  shift 2
  triplet=$(foreign_triplet "$architecture")
  cmake -S "$root" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_UNITY_BUILD=ON \
    -DMAPEXPORT_TESTS=OFF -DMAPEXPORT_WINDOW=OFF -DMAPEXPORT_VIEW=OFF \
    -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR="$architecture" \
    -DCMAKE_CXX_COMPILER="$triplet-g++" -DCMAKE_LIBRARY_ARCHITECTURE="$triplet" \
    -DCMAKE_SYSROOT="$(foreign_root "$architecture")" -DCMAKE_FIND_ROOT_PATH_MODE_PROGRAM=NEVER \
    -DCMAKE_FIND_ROOT_PATH_MODE_{LIBRARY,INCLUDE,PACKAGE}=ONLY \
    -DCMAKE_CROSSCOMPILING_EMULATOR="$root/scripts/lib/foreign-run.sh;$architecture" "$@"
}
