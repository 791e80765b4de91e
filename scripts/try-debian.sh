#!/usr/bin/env bash
# try-debian.sh RELEASE [FOLDER]: runs the README's two commands in a bare Debian 12 or 13, from a
# fresh clone of the last commit, as a user would: a user who is not root runs each, root installs the
# packages that it asks for, and the user runs it again. Needs root and debootstrap; takes an hour on
# two processors. FOLDER keeps that Debian, with what was built; by default it is removed.
# MAPEXPORT_WERROR=ON in the environment makes warnings errors.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
# shellcheck source=scripts/lib/bare-debian.sh
. "$root/scripts/lib/bare-debian.sh"

case ${1-} in
  12) suite=bookworm ;;
  13) suite=trixie ;;
  *)
    echo "usage: try-debian.sh 12|13 [FOLDER]" >&2
    exit 2
    ;;
esac
if [[ $(id -u) -ne 0 ]]; then
  echo "try-debian.sh: only root can make a Debian in a folder" >&2
  exit 1
fi
ensure_packages "$root/scripts/packages-package.txt"

clean=${2-}
if [[ -z $clean ]]; then
  clean=$(mktemp -d)
  trap 'leave_bare_debian "$clean"; rm -rf --one-file-system -- "$clean"' EXIT
else
  mkdir -- "$clean"
  clean=$(cd -- "$clean" && pwd -P)
  trap 'leave_bare_debian "$clean"' EXIT
fi

bare_debian "$suite" "$clean"
cp -L /etc/resolv.conf "$clean/etc/resolv.conf"
home=/home/player
# npm trusts the certificates that it trusts here.
certificates=""
if [[ -n ${NODE_EXTRA_CA_CERTS-} ]]; then
  certificates=/etc/extra-certificates.pem
  install -m 644 -- "$NODE_EXTRA_CA_CERTS" "$clean$certificates"
fi
chroot "$clean" useradd --create-home --home-dir "$home" player
# A bare Debian has no git: the clone is made here.
git clone --quiet --no-hardlinks -- "$root" "$clean$home/mapexport"
chroot "$clean" chown -R player: "$home/mapexport"

as_user() {
  chroot --userspec=player:player "$clean" env -i -C "$home/mapexport" HOME="$home" \
    PATH=/usr/local/bin:/usr/bin:/bin LANG=C.UTF-8 \
    ${certificates:+NODE_EXTRA_CA_CERTS="$certificates"} \
    ${MAPEXPORT_WERROR:+MAPEXPORT_WERROR="$MAPEXPORT_WERROR"} "$@"
}

# readme_command SCRIPT: the user runs it; where packages are missing, root installs them with the
# command that the script prints, and the user runs it again.
readme_command() {
  local output asked
  printf '\n== Debian %s: %s\n' "$suite" "$1"
  output=$(as_user "$1" 2>&1 | tee >(cat >&2)) && return
  asked=$(sed -n 's/^Packages are missing; as root, run: //p' <<<"$output")
  [[ -n $asked ]] || return 1
  chroot "$clean" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive \
    sh -c "${asked/apt-get install/apt-get install -y -qq}" >/dev/null || return 1
  as_user "$1"
}

status=0
readme_command scripts/run-example.sh || status=1
readme_command scripts/test.sh || status=1
[[ $status -ne 0 ]] || echo "Both commands work in a bare Debian $1."
exit "$status"
