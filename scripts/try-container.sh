#!/usr/bin/env bash
# try-container.sh: builds the image of Containerfile from the last commit and exports the example in
# it, as root and as a user who is not, with a folder of this machine mounted. A bare Debian made here
# takes the place of the registry's. Needs root and buildah, which runs no daemon; takes a quarter of an
# hour on two processors and leaves nothing.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
# shellcheck source=scripts/lib/bare-debian.sh
. "$root/scripts/lib/bare-debian.sh"

if [[ $(id -u) -ne 0 ]]; then
  echo "try-container.sh: only root can make a Debian in a folder" >&2
  exit 1
fi
ensure_packages "$root/scripts/packages-container.txt"

work=$(mktemp -d)
store() {
  buildah --root "$work/images" --runroot "$work/run" --log-level error "$@"
}
leave() {
  leave_bare_debian "$work/debian"
  store rm --all >/dev/null || true
  store rmi --all --force >/dev/null || true
  rm -rf --one-file-system -- "$work"
}
trap leave EXIT

mkdir -- "$work/debian" "$work/levels"
bare_debian bookworm "$work/debian"
leave_bare_debian "$work/debian"
base=$(store from scratch)
store add --quiet "$base" "$work/debian" / >/dev/null
store commit --quiet --rm "$base" docker.io/library/debian:bookworm-slim >/dev/null

git clone --quiet --no-hardlinks -- "$root" "$work/source"
options=(--isolation chroot)
# npm trusts the certificates that it trusts here.
if [[ -n ${NODE_EXTRA_CA_CERTS-} ]]; then
  options+=(--volume "$NODE_EXTRA_CA_CERTS:/etc/extra-certificates.pem:ro"
    --env NODE_EXTRA_CA_CERTS=/etc/extra-certificates.pem)
fi
# Only with layers, what --env says is there while the image is built.
store bud --layers --pull=never "${options[@]}" --tag mapexport "$work/source"

cp -- "$root"/examples/yard.{scene.json,cxp} "$root/tests/models/room.fbx" "$work/levels"
chmod -R a+rwX -- "$work/levels"
program=$(store from --pull=never localhost/mapexport)
entry=$(store inspect --format '{{index .OCIv1.Config.Entrypoint 0}}' "$program")
# run USER ARGUMENT...: what the image runs.
run() {
  store run --isolation chroot --user "$1" --volume "$work/levels:/levels" "$program" -- \
    "$entry" "${@:2}"
}
run 65534:65534 export yard.scene.json yard.kob --cxp yard.cxp --fresh --seed 1
run 65534:65534 inspect yard.kob >/dev/null
run 65534:65534 view yard.kob -o yard.html
run 0 export room.fbx room.kob
test -s "$work/levels/room.kob"
echo "The image of Containerfile works."
