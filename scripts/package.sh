#!/usr/bin/env bash
# Makes the Debian package in build/package, from the release build. With --try it is then installed
# in a clean Debian 12 (debootstrap, as root), and the example is exported there.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
# shellcheck source=scripts/lib/bare-debian.sh
. "$root/scripts/lib/bare-debian.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-package.txt"

cd -- "$root"
cmake --preset release -DMAPEXPORT_TESTS=OFF -B build/package-release >/dev/null
cmake --build build/package-release
rm -rf -- build/package
cpack --config build/package-release/CPackConfig.cmake -B build/package
package=$(find build/package -maxdepth 1 -name '*.deb')
dpkg-deb --info "$package"
dpkg-deb --contents "$package"
dpkg-deb --extract "$package" build/package/content
scripts/check-hardening.sh build/package/content/usr
[[ ${1-} == --try ]] || exit 0

clean=$(mktemp -d)
trap 'leave_bare_debian "$clean"; rm -rf --one-file-system -- "$clean"' EXIT
bare_debian bookworm "$clean"
cp -- "$package" "$clean/tmp/mapexport.deb"
# shellcheck disable=SC2016  # the $ are for the shell in there
chroot "$clean" sh -euc '
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends /tmp/mapexport.deb >/dev/null
  cd /tmp
  example=/usr/share/doc/mapexport/examples
  mapexport export "$example/yard.scene.json" yard.kob --fresh --seed 1 --cxp "$example/yard.cxp"
  mapexport inspect yard.kob --summary
  test -s /usr/share/man/man1/mapexport.1.gz
'
echo "The package works in a clean Debian."
