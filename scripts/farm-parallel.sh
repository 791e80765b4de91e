#!/usr/bin/env bash
# Exports the scenes of a list on several machines: farm-parallel.sh [--missing] HOSTS LIST DIR [OPTION...]
#
# with GNU parallel over ssh. HOSTS is a list as its --sshlogin takes it, "4/anna,8/ben,:" (":" is this
# machine). LIST has a scene per line; each is exported to DIR/NAME.kob with the OPTIONs of `mapexport
# export`. With --missing only those that have no output yet, for a second run after failures. This
# folder, scenes and DIR must have the same paths on all machines; mapexport is searched in PATH there, or
# named by MAPEXPORT. DIR/parallel.log says what was exported where.
set -euo pipefail
# shellcheck source=scripts/lib/level-list.sh
. "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/lib/level-list.sh"
missing=""
if [[ ${1-} == --missing ]]; then
  missing=yes
  shift
fi
explain_unless 3 "$@"
hosts=$1
list=$2
folder=$3
shift 3
list=$(prepare_list "$list" "$folder" "$missing" "$@")
parallel --will-cite --quote --sshlogin "$hosts" --workdir "$PWD" --retries 2 \
  --joblog "$folder/parallel.log" \
  "${MAPEXPORT:-mapexport}" export {} --output-folder "$folder" --fresh --seed 1 --quiet "$@" \
  :::: "$list"
