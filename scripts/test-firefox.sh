#!/usr/bin/env bash
# Runs the tests of the page of `mapexport view` in Firefox ESR, with the release build of the program,
# in a window that nobody sees. scripts/test.sh runs them in Chromium. FIREFOX is another Firefox to use.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-test.txt" \
  "$root/scripts/packages-firefox.txt"

cd -- "$root"
cmake --preset release -DMAPEXPORT_TESTS=ON -DMAPEXPORT_VIEW=ON \
  ${MAPEXPORT_WERROR:+"-DMAPEXPORT_WERROR=$MAPEXPORT_WERROR"} >/dev/null
cmake --build --preset release --target mapexport mapexport-plugin
status=0
for part in page tools; do
  BROWSER=firefox xvfb-run -a -s "-screen 0 1600x1200x24" node "tests/page/$part.test.mjs" \
    "$root/build/release/bin/mapexport" build/release/page-test "$root" || status=$?
done
exit "$status"
