#!/usr/bin/env bash
# Exports the scenes of a list by a Slurm job array:
#
#   farm-slurm.sh [--missing] [--tasks N] LIST DIR [OPTION...]
#
# LIST has a scene per line; each is exported to DIR/NAME.kob with the OPTIONs of `mapexport export`.
# With --missing only those that have no output yet, for a second run after failures. The array has at
# most N tasks (667: the usual limit is 1000), each of which takes every N-th scene. Scenes and DIR must
# have the same paths on all nodes; mapexport is searched in PATH, or named by MAPEXPORT. SBATCH_...
# variables set options of sbatch. Prints the number of the array, for `squeue -j`.
set -euo pipefail

if [[ -n ${SLURM_ARRAY_TASK_ID-} ]]; then
  mapfile -t scenes <"$1"
  mine=()
  for ((i = SLURM_ARRAY_TASK_ID; i < ${#scenes[@]}; i += SLURM_ARRAY_TASK_COUNT)); do
    mine+=("${scenes[i]}")
  done
  exec "${MAPEXPORT:-mapexport}" export "${mine[@]}" --output-folder "$2" --fresh --seed 1 \
    --jobs "${SLURM_CPUS_ON_NODE:-1}" "${@:3}"
fi

# Slurm runs a copy of this script, so this comes after the part for the tasks.
# shellcheck source=scripts/lib/level-list.sh
. "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/lib/level-list.sh"
missing=""
tasks=667
explain_unless 2 "$@"
while [[ ${1-} == --* ]]; do
  case $1 in
    --missing) missing=yes ;;
    --tasks) tasks=$2 && shift ;;
    *) echo "farm-slurm.sh: there is no option $1 before the list" >&2 && exit 2 ;;
  esac
  shift
done
explain_unless 2 "$@"
[[ $tasks =~ ^[1-9][0-9]{0,6}$ ]] || { echo "farm-slurm.sh: --tasks $tasks: not a number above 0" >&2; exit 2; }
list=$1
folder=$2
shift 2
list=$(prepare_list "$list" "$folder" "$missing" "$@")
count=$(wc -l <"$list")
if ((count == 0)); then
  echo "farm-slurm.sh: nothing to do" >&2
  exit 0
fi
sbatch --parsable --requeue --open-mode=append --job-name=mapexport \
  --array="0-$(((count < tasks ? count : tasks) - 1))" \
  --output="$folder/slurm-%A_%a.log" "$0" "$list" "$folder" "$@"
