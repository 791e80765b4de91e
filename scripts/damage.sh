#!/usr/bin/env bash
# Tries the program on damaged files: damage.sh [--full | --count N] [--seed N] [--only N] [PART...]
#
#   scenes    damaged scene files of all main formats, and side files, exported; with --sanitizers
#             by the sanitize build
#   hostile   scenes made to do harm: to take memory, to lead to devices, to steer a terminal
#   models    damaged model files in one process that reads, prints, converts and shows them, under
#             sanitizers: cut at every byte, each number replaced, each bit flipped
#
# All of them unless some are named: as often as a person can wait for, as often as the table of
# scripts/robustness.sh wants (--full), or N times. A seed always gives the same files. Each finding is
# printed with the command that repeats it and kept in build/damage; with any, this ends with 1.
# A finding is: a signal, no end, another exit status than is right, on failure anything but one
# line on standard error, an output that is left then or unsound, bytes that steer a terminal, a
# report of a sanitizer in our code. A crash of the process that reads foreign formats is none in
# itself: it is what that process is for.
# The counts of a run of all parts become rows of build/robustness/damage.tsv, for the table of
# scripts/robustness.sh.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages.txt" "$root/scripts/packages-test.txt"

cd -- "$root"
case " $* " in
  *" -h "* | *" --help "*)
    sed -n '2,/^set /s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"
    exit 0
    ;;
esac
for preset in release sanitize; do
  # A folder that was configured without the tests has no target for the driver of the models.
  cmake --preset "$preset" -DMAPEXPORT_TESTS=ON >/dev/null
  cmake --build --preset "$preset" --target mapexport DamageModels >/dev/null
done
exec python3 -B tests/campaigns/damage.py --release "$root/build/release/bin/mapexport" \
  --sanitize "$root/build/sanitize/bin/mapexport" "$@"
