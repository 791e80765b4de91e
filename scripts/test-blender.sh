#!/usr/bin/env bash
# Tests the add-on in Blender, with the release build of the program: without a window, then its file dialog
# in one that nobody sees, then the add-on as it is installed from its zip file, in each way that this
# Blender has. test-blender.sh NAME... runs only these modules of tests/blender-addon.
# BLENDER is another Blender to use, MAPEXPORT another program.
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
blender=${BLENDER:-/usr/bin/blender}
blender() {
  "$blender" --background --python-exit-code 1 "$@"
}

blender --version | head -n 1
blender --factory-startup --python tests/blender-addon/run.py -- "$@"
[[ $# -eq 0 ]] || exit 0

# A program that hangs, for the test that cancels it.
mkdir -p -- "$folder/hangs"
cat >"$folder/hangs/mapexport" <<'END'
#!/bin/sh
[ "$1" != --version ] || { echo mapexport 9.0.0; exit; }
trap ': >"$0.ended"; kill $!; exit 1' TERM
: >"$0.started"
sleep 60 &
wait
END
chmod +x -- "$folder/hangs/mapexport"
timeout 240 xvfb-run -a -s "-screen 0 800x600x24" "$blender" -noaudio --factory-startup \
  --enable-event-simulate --window-geometry 0 0 800 600 --python-exit-code 1 \
  --python tests/blender-addon/window.py -- "$folder/window.kob" "$folder/hangs/mapexport"

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
