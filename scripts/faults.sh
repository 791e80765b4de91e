#!/usr/bin/env bash
# Tries exports under faults: lets every single call of a small export fail (opening, writing, syncing,
# renaming, allocating, ...), ends exports at every call, takes away disk and rights, and takes over
# the process that reads a foreign scene, which then attacks. After each run it checks the exit
# status, standard error, outputs, settings and left-over files. Ends with 1 on any finding and keeps
# what is needed to repeat it. Takes some 20 minutes:
#
#   faults.sh [--seed N] [--parts calls,surroundings,kills,takeover] [--kinds LIST] [--step N]
#             [--only WORD]
#
# With --step, each Nth call of the kinds fails; the seed says from which one on. --quick tries a part
# of it, as the test does. A whole run writes build/robustness/faults.tsv: what was tried, inputs,
# findings, how. MAPEXPORT, MAPEXPORT_FAILING_CALL and MAPEXPORT_TAKEN_OVER name the program to try, the
# library that lets calls fail and the one that takes the reader over; without them the release build is
# brought up to date.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-test.txt"

if [[ -z ${MAPEXPORT:-} ]]; then
  (
    cd -- "$root"
    cmake --preset release -DMAPEXPORT_TESTS=ON >/dev/null
    cmake --build --preset release --target mapexport mapexport-plugin failing-call taken-over >/dev/null
  )
fi
[[ $# -gt 0 ]] || set -- --table "$root/build/robustness/faults.tsv"
exec python3 -B "$root/tests/campaigns/faults.py" "${MAPEXPORT:-$root/build/release/bin/mapexport}" \
  "${MAPEXPORT_FAILING_CALL:-$root/build/release/tests/failing-call.so}" \
  "${MAPEXPORT_TAKEN_OVER:-$root/build/release/tests/taken-over.so}" "$@"
