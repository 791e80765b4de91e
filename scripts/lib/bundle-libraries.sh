# Sourced by scripts/release.sh: bundle_libraries FOLDER VERSION makes the installation in FOLDER one that
# runs wherever it is unpacked.
# shellcheck shell=bash

# What every system with the GNU C Library has: that library, and the runtime of GCC. A copy of the latter
# would keep the program from loading a newer Qt of the system for --dialog.
system_libraries='linux-vdso|ld-linux[-a-z0-9]*|lib(c|m|dl|rt|pthread|stdc\+\+|gcc_s)'

# libraries_from_elsewhere FOLDER: the paths of the other libraries that the program does not load from
# FOLDER.
libraries_from_elsewhere() {
  local lines
  lines=$(ldd "$1/bin/mapexport") || return 1
  if grep -F 'not found' <<<"$lines" >&2; then return 1; fi
  { grep -vE "^\s*(/\S*/)?($system_libraries)\.so" <<<"$lines" || true; } |
    { grep -vF "=> $1/bin/../lib/mapexport/" || true; } |
    sed -E 's/.*=> //; s/ \(0x.*//; s/^\s+//'
}

# newest_symbol PREFIX FILE...: the highest version with that prefix that the files ask of libraries.
newest_symbol() {
  local prefix=$1
  shift
  objdump -T -- "$@" | grep -oP "\(${prefix}_\K[0-9.]+(?=\))" | sort -V | tail -n 1
}

# licence_of PACKAGE FOLDER: copies its licence, and the texts that Debian's file refers to.
licence_of() {
  local common
  cp -L -- "/usr/share/doc/$1/copyright" "$2/$1.txt" || return 1
  { grep -ohE '/usr/share/common-licenses/[A-Za-z0-9.-]*[A-Za-z0-9]' "$2/$1.txt" || true; } |
    while read -r common; do
      cp -L -- "$common" "$2/${common##*/}" || return 1
    done
}

bundle_libraries() {
  local folder own libraries library real package packages="" licences
  folder=$(realpath -- "$1")
  own=$folder/lib/mapexport
  licences=$folder/share/doc/mapexport/licences
  mkdir -- "$licences"
  libraries=$(libraries_from_elsewhere "$folder") || return 1
  for library in $libraries; do
    real=$(realpath -- "$library")
    # A package may know a library in the /lib that is merged with /usr/lib.
    package=$(dpkg -S "$real" 2>/dev/null || dpkg -S "${real#/usr}") || return 1
    package=${package%%:*}
    install -m 644 -- "$real" "$own/${library##*/}" || return 1
    licence_of "$package" "$licences" || return 1
    # shellcheck disable=SC2016  # dpkg-query's
    packages+=$(dpkg-query -W -f '${Package} ${Version} (${source:Package})' "$package")$'\n'
  done

  # Nothing but what every system has may now come from elsewhere.
  libraries=$(libraries_from_elsewhere "$folder") || return 1
  if [[ -n $libraries ]]; then
    echo "not in the archive: $libraries" >&2
    return 1
  fi
  local -a files=("$folder/bin/mapexport" "$own"/*.so*)
  local glibc runtime
  glibc=$(newest_symbol GLIBC "${files[@]}") || return 1
  runtime=$(newest_symbol GLIBCXX "${files[@]}") || return 1
  {
    cat <<TEXT
mapexport $2 for Linux. Unpack it anywhere and run bin/mapexport; nothing needs to be installed. The
documents are in share/doc/mapexport, the add-on for Blender is in share/mapexport/blender.

It needs /proc, and these versions or newer ones: GNU C Library $glibc, libstdc++ with GLIBCXX_$runtime.
The window of --dialog needs the system's Qt 6 (in Debian the package libqt6widgets6).

In lib/mapexport there are unchanged libraries of these Debian packages, whose sources Debian publishes
under the name in brackets. You may replace the files with other builds of them. The licences are in
share/doc/mapexport/licences.

TEXT
    sort -u <<<"${packages%$'\n'}"
  } >"$folder/README.txt"
}
