# Sourced by scripts/release.sh: bundle_libraries FOLDER VERSION makes the installation in FOLDER one that
# runs wherever it is unpacked.
# shellcheck shell=bash

# What every system with the GNU C Library has: that library, and the runtime of GCC. One that came with
# the archive would keep a newer Qt of the system, which --dialog loads, from being loaded.
system_libraries='linux-vdso|ld-linux[-a-z0-9]*|lib(c|m|dl|rt|pthread|stdc\+\+|gcc_s)'

# loaded_libraries PROGRAM: the paths of the other libraries that it loads.
loaded_libraries() {
  local lines
  lines=$(ldd "$1") || return 1
  if grep -F 'not found' <<<"$lines" >&2; then return 1; fi
  grep -vE "^\s*(/\S*/)?($system_libraries)\.so" <<<"$lines" | sed -E 's/.*=> //; s/ \(0x.*//; s/^\s+//'
}

# newest_symbol PREFIX FILE...: the highest version with that prefix that the files ask of libraries.
newest_symbol() {
  local prefix=$1
  shift
  objdump -T -- "$@" | grep -oP "\(${prefix}_\K[0-9.]+(?=\))" | sort -V | tail -n 1
}

bundle_libraries() {
  local folder=$1 own library real package licences common
  own=$(cd -- "$folder/lib/mapexport" && pwd -P)
  licences=$folder/share/doc/mapexport/licences
  mkdir -- "$licences"
  while read -r library; do
    [[ $library != "$own"/* ]] || continue
    real=$(realpath -- "$library")
    # A package may know a library in /lib that /usr merges.
    package=$(dpkg -S "$real" 2>/dev/null || dpkg -S "${real#/usr}") || return 1
    package=${package%%:*}
    cp -- "$real" "$own/${library##*/}"
    chmod 644 "$own/${library##*/}"
    cp -L -- "/usr/share/doc/$package/copyright" "$licences/$package.txt" || return 1
    dpkg-query -W -f '${Package} ${Version} (${source:Package})\n' "$package" >>"$licences/list"
  done < <(loaded_libraries "$folder/bin/mapexport")
  # The texts that Debian's files refer to.
  for common in $(grep -ohE '/usr/share/common-licenses/[A-Za-z0-9.-]*[A-Za-z0-9]' "$licences"/*.txt | sort -u); do
    cp -L -- "$common" "$licences/${common##*/}" || return 1
  done

  # Nothing but what every system has may now come from elsewhere.
  if loaded_libraries "$folder/bin/mapexport" | grep -vF "$own/" >&2; then return 1; fi
  {
    cat <<TEXT
mapexport $2 for Linux. Unpack it anywhere and run bin/mapexport; nothing else is to be installed. The
documents are in share/doc/mapexport, the add-on for Blender is in share/mapexport/blender.

It needs /proc, a GNU C Library of version $(newest_symbol GLIBC "$folder/bin/mapexport" "$own"/*.so*) or newer, and a libstdc++ with GLIBCXX_$(newest_symbol GLIBCXX "$folder/bin/mapexport" "$own"/*.so*).
The window of --dialog needs the system's Qt 6 (Debian: libqt6widgets6, or libqt6widgets6t64).

In lib/mapexport there are these unchanged libraries of Debian, with their versions and sources. Debian
publishes the sources. Other builds of them can replace the files. Licences: share/doc/mapexport/licences.

TEXT
    sort -u "$licences/list"
  } >"$folder/README.txt"
  rm -- "$licences/list"
}
