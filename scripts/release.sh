#!/usr/bin/env bash
# release.sh [--try] [FOLDER]: makes the files of a release from the last commit: the Debian package and
# its symbols, an archive that runs in any folder, the add-on for Blender, and SHA256SUMS, in FOLDER, which
# must be new or empty, or else in build/dist, which is replaced. The same commit and the same installed
# packages give the same bytes. With --try (as root) archive and package also run in a bare Debian, the
# package without /proc, too.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
# shellcheck source=scripts/lib/bare-debian.sh
. "$root/scripts/lib/bare-debian.sh"
# shellcheck source=scripts/lib/bundle-libraries.sh
. "$root/scripts/lib/bundle-libraries.sh"
fail() {
  echo "release.sh: $*" >&2
  exit 1
}
try=""
if [[ ${1-} == --try ]]; then
  try=yes
  shift
fi
if [[ $# -gt 1 || ${1-} == -* ]]; then
  echo "usage: release.sh [--try] [FOLDER]" >&2
  exit 2
fi
dist=$(realpath -m -- "${1-$root/build/dist}")
[[ $# -eq 0 || -z $(ls -A -- "$dist" 2>/dev/null) ]] || fail "$dist is not empty"
[[ -z $try || $(id -u) -eq 0 ]] || fail "only root can make the Debian of --try"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-package.txt"

cd -- "$root"
[[ -z $(git status --porcelain) ]] || fail "there are changes that are not committed"
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8
umask 022
version=$(git tag --points-at HEAD | sed -nE 's/^v?([0-9]+\.[0-9]+\.[0-9]+)$/\1/p' | sort -V |
  tail -n 1)
: "${version:=$(sed -n 's/^ *set(MAPEXPORT_VERSION \(.*\))$/\1/p' CMakeLists.txt)}"
grep -qx "version = \"$version\"" blender/mapexport/blender_manifest.toml ||
  fail "the version is $version, but not in blender/mapexport/blender_manifest.toml"
grep -q "^## \[$version\]" CHANGELOG.md || fail "CHANGELOG.md does not say what is in $version"

build=build/release-files
# build_for OPTION...: the two builds differ in where the program looks for libraries, so the second one
# only links again.
build_for() {
  cmake --preset release -B "$build" -DMAPEXPORT_TESTS=OFF -DMAPEXPORT_VERSION="$version" \
    -DCMAKE_CXX_FLAGS="-g '-ffile-prefix-map=$root=.'" "$@" >/dev/null
  cmake --build "$build"
}

# For the archive. The libraries' own libraries, too, are found by an RPATH, not by a RUNPATH.
build_for -DMAPEXPORT_FIXED_PREFIX= -DCMAKE_EXE_LINKER_FLAGS=-Wl,--disable-new-dtags
"$build/bin/mapexport" --help | grep -q '^ *view ' || fail "the program is built without the page"
rm -rf -- "$dist"
mkdir -p -- "$dist"
name=mapexport-$version-linux-$(uname -m)
stage=$build/archive
rm -rf -- "$stage"
cmake --install "$build" --prefix "$stage/$name" --strip >/dev/null
bundle_libraries "$stage/$name" "$version"
scripts/check-hardening.sh "$stage/$name"
tar --sort=name --owner=0 --group=0 --numeric-owner --mtime="@$SOURCE_DATE_EPOCH" --format=gnu \
  --mode=u+rw,go=u,go-w -C "$stage" -cf - "$name" | gzip -9n >"$dist/$name.tar.gz"
cp -- "$build/mapexport.zip" "$dist/mapexport-$version-blender.zip"

build_for -DMAPEXPORT_FIXED_PREFIX=/usr -DCMAKE_EXE_LINKER_FLAGS=
rm -rf -- "$build/package"
cpack --config "$build/CPackConfig.cmake" -B "$build/package" >/dev/null
# repack PACKAGE: leaves out the calls of ldconfig, which CPack adds for libraries that only the program
# finds, and names the symbols by their installed paths. What xz writes depends on the number of processors.
repack() {
  local package_name=${1##*/} content
  content=$build/package/${package_name%%_*}
  dpkg-deb --raw-extract "$1" "$content"
  rm -f -- "$content"/DEBIAN/post*
  if [[ $package_name == *-dbgsym_* ]]; then
    find "$content/usr" -type f -exec chmod 644 {} +
    sed -i '/^Package-Type:/d' "$content/DEBIAN/control"
    mkdir -p -- "$content/usr/share/doc"
    ln -s mapexport "$content/usr/share/doc/mapexport-dbgsym"
  fi
  (cd -- "$content" && find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
  dpkg-deb --root-owner-group -Zgzip --build "$content" "$dist/${package_name%.*}.deb"
}
for package in "$build/package"/*.deb "$build/package"/*.ddeb; do
  repack "$package"
done
scripts/check-hardening.sh "$build/package/mapexport/usr"
lintian --fail-on error,warning "$dist"/*.deb
(cd -- "$dist" && sha256sum -- * >SHA256SUMS && cat SHA256SUMS)
[[ -n $try ]] || exit 0

clean=$(mktemp -d)
trap 'leave_bare_debian "$clean"; rm -rf --one-file-system -- "$clean"' EXIT
# shellcheck disable=SC1091  # that of this machine
bare_debian "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$clean"
cp -- "$dist/$name.tar.gz" "$dist/mapexport_$version"_*.deb "$clean/tmp"
# example PREFIX [OPTION...]: exports the example that is installed there, as a user who is not root.
example() {
  local prefix=$1
  shift
  # shellcheck disable=SC2016  # the $ are for the shell in there
  chroot --userspec=65534:65534 "$clean" env -i HOME=/tmp sh -euc '
    cd "$(mktemp -d)"
    example=$0/share/doc/mapexport/examples
    printf "v 0 0 0\nv 10 0 0\nv 0 10 0\nf 1 2 3\n" >face.obj
    "$0/bin/mapexport" export face.obj face.kob --fresh "$@"
    "$0/bin/mapexport" export /dev/stdin yard.kob --fresh --seed 1 --cxp "$example/yard.cxp" "$@" \
      <"$example/yard.scene.json"
    "$0/bin/mapexport" inspect yard.kob --summary
  ' "$prefix" "$@"
}
chroot "$clean" tar xzf "/tmp/$name.tar.gz" -C /opt
example "/opt/$name"
# shellcheck disable=SC2016
chroot "$clean" env DEBIAN_FRONTEND=noninteractive sh -euc '
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends /tmp/mapexport_*.deb >/dev/null
  test -s /usr/share/man/man1/mapexport.1.gz'
example /usr
umount "$clean/proc"
example /usr --verbose
echo "The archive and the package work in a bare Debian."
