#!/usr/bin/env bash
# Converts the golden scenes, the example, the rooms and a level from Blender, and checks the results:
# check-convert.sh MAPEXPORT WORK. WORK is a folder for the files. The validator is installed once, into
# build/. Without Node.js or a registry the script ends with
# 77, or with 1 where the environment variable CI is set.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
  exec "$root/scripts/lib/skip-unless-ci.sh" \
    "Node.js or npm is not installed: the converted files are not checked."
fi

modules=$root/build/convert-modules
lock=package-lock.json
if ! cmp -s -- "$root/tests/convert/$lock" "$modules/installed-$lock"; then
  mkdir -p -- "$modules"
  cp -- "$root/tests/convert/package.json" "$root/tests/convert/$lock" "$modules/"
  (cd -- "$modules" && npm ci --no-audit --no-fund --ignore-scripts --fetch-retries=1 \
    --fetch-retry-mintimeout=1000 --fetch-timeout=30000 >npm.log 2>&1) ||
    exec "$root/scripts/lib/skip-unless-ci.sh" \
      "npm ci can't get the validator: the converted files are not checked." "$modules/npm.log"
  cp -- "$modules/$lock" "$modules/installed-$lock"
fi
exec node "$root/tests/convert/check_convert.mjs" "$1" "$root" "$modules" "$2"
