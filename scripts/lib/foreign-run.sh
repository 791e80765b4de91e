#!/usr/bin/env bash
# foreign-run.sh ARCHITECTURE PROGRAM [ARGUMENT...]: runs a program of another processor under qemu,
# as root. It sees the libraries of its processor, and this checkout and /tmp where they are; the
# mounts for that end with it.
set -euo pipefail
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../.." && pwd -P)
# shellcheck source=scripts/lib/foreign-root.sh
. "$root/scripts/lib/foreign-root.sh"

if [[ ${1-} != --within ]]; then
  exec unshare --mount --propagation private "${BASH_SOURCE[0]}" --within "$PWD" "$@"
fi
folder=$2 architecture=$3
shift 3
foreign=$(foreign_root "$architecture")
triplet=$(foreign_triplet "$architecture")
mount -t proc proc "$foreign/proc"
mount --bind "/usr/bin/qemu-${triplet%%-*}-static" "$foreign/usr/bin/qemu"
for shared in /dev /tmp "$root"; do
  mkdir -p -- "$foreign$shared"
  mount --rbind -- "$shared" "$foreign$shared"
done
# qemu's option -L would look for every file in the folder of libraries first.
exec unshare --root "$foreign" --wd "$folder" /usr/bin/qemu "$@"
