#!/usr/bin/env bash
# Tests the add-on in Blender, without a window: test-blender.sh [NAME...] runs all tests, or those of
# these modules of tests/blender-addon, with the release build of the program. Then the add-on is
# installed from its zip file, in each way that this Blender has. BLENDER is another Blender to use.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-blender.txt"

cd -- "$root"
if [[ -z ${MAPEXPORT-} ]]; then
  cmake --preset release ${MAPEXPORT_WERROR:+"-DMAPEXPORT_WERROR=$MAPEXPORT_WERROR"} >/dev/null
  cmake --build --preset release --target mapexport mapexport-plugin mapexport-addon
fi
export MAPEXPORT=${MAPEXPORT:-$root/build/release/bin/mapexport}
PATH=$(dirname -- "$MAPEXPORT"):$PATH

# Nothing of the person who runs the tests: neither their preferences nor their add-ons.
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
export BLENDER_USER_RESOURCES=$folder/user BLENDER_USER_CONFIG=$folder/user/config
export BLENDER_USER_SCRIPTS=$folder/user/scripts
mkdir -p -- "$BLENDER_USER_CONFIG" "$BLENDER_USER_SCRIPTS"
blender() {
  "${BLENDER:-/usr/bin/blender}" --background --python-exit-code 1 "$@"
}

blender --version | head -n 1
blender --factory-startup --python tests/blender-addon/run.py -- "$@"
[[ $# -eq 0 ]] || exit 0

zip=$root/build/release/mapexport.zip
blender --factory-startup --python tests/blender-addon/install.py -- "$zip" "$folder/addon.kob"
# From 4.2 on there are extensions, too.
if blender --command help 2>/dev/null | grep -q extension; then
  rm -rf -- "$folder/user"
  mkdir -p -- "$BLENDER_USER_CONFIG" "$BLENDER_USER_SCRIPTS"
  blender --command extension validate "$zip"
  blender --command extension install-file --repo user_default --enable "$zip"
  blender --python tests/blender-addon/install.py -- "" "$folder/extension.kob"
fi
echo "The add-on works."
