# Sourced by the scripts that try things in a Debian with nothing in it; needs debootstrap and root.
# shellcheck shell=bash

# bare_debian SUITE FOLDER: makes the smallest Debian in FOLDER, with /proc and the same source of
# packages as this machine. The caller unmounts FOLDER/proc.
bare_debian() {
  local suite=$1 folder=$2 mirror
  mirror=$(cat /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null |
    sed -nE 's/^(deb( \[[^]]*\])?|URIs:) +(https?:[^ ]+).*/\3/p' | sed -n '/security/!{p;q}') || true
  chmod 755 "$folder"
  debootstrap --variant=minbase "$suite" "$folder" ${mirror:+"$mirror"} >/dev/null
  mount -t proc proc "$folder/proc"
}
