#!/usr/bin/env bash
# Tries the program on damaged files: damage.sh [--sanitizers] [--full | --count N] [--seed N] [--only N] [PART...]
#
#   scenes    damaged scene files of all main formats, and side files, exported
#   hostile   scenes made to do harm: to take memory, to lead to devices, to steer a terminal
#
# Without PART, both, by the release build or, with --sanitizers first, the sanitize build. The number
# of tries is one that a person can wait for, the one of the table of scripts/robustness.sh (--full),
# or N. A seed always gives the same files. Each finding is printed with the command that repeats it
# and kept in build/damage; with findings, the exit status is 1.
#
# A finding is: a signal, a hang, a wrong exit status, on failure anything but one line on standard
# error, an output that is left behind or damaged, bytes that steer a terminal, a report of a
# sanitizer in our code. A crash of the process that reads foreign formats is not a finding: that is
# what the process is for.
#
# The counts of all parts become rows of build/robustness/damage.tsv, for the table of
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
preset=release
if [[ ${1-} == --sanitizers ]]; then
  preset=sanitize
  shift
fi
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" --target mapexport mapexport-plugin >/dev/null
exec python3 -B tests/campaigns/damage.py --program "build/$preset/bin/mapexport" "$@"
