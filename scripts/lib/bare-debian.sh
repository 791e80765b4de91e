# Sourced by the scripts that try things in a Debian with nothing in it; needs debootstrap and root.
# shellcheck shell=bash

# bare_debian SUITE FOLDER: makes the smallest Debian in FOLDER, with the same source of packages as
# this machine, /proc, terminals and shared memory.
bare_debian() {
  local suite=$1 folder=$2 mirror
  mirror=$(cat /etc/apt/sources.list /etc/apt/sources.list.d/* 2>/dev/null |
    sed -nE 's/^(deb( \[[^]]*\])?|URIs:) +(https?:[^ ]+).*/\3/p' | sed -n '/security/!{p;q}') || true
  chmod 755 "$folder"
  debootstrap --variant=minbase "$suite" "$folder" ${mirror:+"$mirror"} >/dev/null
  # What becomes of the folder in a crash of the machine does not matter.
  echo force-unsafe-io >"$folder/etc/dpkg/dpkg.cfg.d/unsafe-io"
  mount -t proc proc "$folder/proc"
  mount -t devpts -o newinstance,ptmxmode=0666,gid=5,mode=620 devpts "$folder/dev/pts"
  mount -t tmpfs -o mode=1777 shm "$folder/dev/shm"
}

# leave_bare_debian FOLDER: unmounts what the above has mounted, as far as it came.
leave_bare_debian() {
  local mounted
  for mounted in dev/shm dev/pts proc; do
    umount -q "$1/$mounted" || true
  done
}
