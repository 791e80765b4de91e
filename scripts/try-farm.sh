#!/usr/bin/env bash
# Tries scripts/farm-slurm.sh on a Slurm cluster of two nodes on this machine. Run as root.
#
# 100 levels; one node is killed in the middle, its job runs again on the other; then some outputs are
# removed and submitted again. All must have the same bytes as when exported by one call. Not part of the
# tests; takes three minutes, as Slurm waits before it runs a job again. It needs the packages of
# packages-farm.txt and starts its own munged, slurmctld and slurmds.
set -euo pipefail
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
ensure_packages "$root/scripts/packages-farm.txt"
program=$root/build/release/bin/mapexport
work=$(mktemp -d)
# As long as levels of a farm take at least, so that the killed node is at work.
export MAPEXPORT=$work/slow
printf '#!/bin/sh\nsleep 2\nexec "%s" "$@"\n' "$program" >"$MAPEXPORT"
chmod +x "$MAPEXPORT"
started=()
stop() {
  [[ ${#started[@]} -eq 0 ]] || kill "${started[@]}" 2>/dev/null || true
  wait
  rm -rf -- "$work"
}
trap stop EXIT

# start NAME COMMAND...: runs a daemon in the foreground, in the background of this script.
start() {
  local name=$1
  shift
  "$@" >"$work/$name.log" 2>&1 &
  started+=($!)
}

# wait_until WHAT COMMAND...
wait_until() {
  local what=$1 end=$((SECONDS + 200))
  shift
  while ((SECONDS < end)); do
    ! "$@" >/dev/null 2>&1 || return 0
    sleep 0.1
  done
  echo "try-farm.sh: $what: not within 200 seconds" >&2
  tail -n 5 -- "$work"/*.log >&2
  exit 1
}

chmod 755 "$work"  # munge refuses other folders
mungekey --create --keyfile="$work/munge.key"
start munged munged --foreground --force --key-file="$work/munge.key" --socket="$work/munge" \
  --pid-file="$work/munged.pid" --log-file="$work/munged.own" --seed-file="$work/munged.seed"
export SLURM_CONF=$work/slurm.conf
cat >"$SLURM_CONF" <<END
ClusterName=try
SlurmctldHost=localhost
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket=$work/munge
CredType=cred/munge
MpiDefault=none
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool-%n
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd-%n.pid
SlurmctldPort=17817
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SlurmdTimeout=10
SlurmdParameters=config_overrides
PartitionName=all Nodes=n1,n2 Default=YES State=UP
NodeName=n1 NodeHostname=localhost Port=17818
NodeName=n2 NodeHostname=localhost Port=17819
END
echo "CgroupPlugin=cgroup/v1" >"$work/cgroup.conf"
mkdir "$work/state"
start slurmctld slurmctld -D
start n1 slurmd -D -N n1
start n2 slurmd -D -N n2
second_node=${started[-1]}
idle() { [[ $(sinfo --noheader --format=%D --states=idle) == 2 ]]; }
wait_until "two nodes that are idle" idle

mkdir "$work/levels"
python3 "$root/scripts/lib/make_levels.py" "$work/levels" 100
cd -- "$work"
ls -d levels/*.obj >list
"$program" export levels/*.obj --output-folder alone --fresh --seed 1 --quiet

done_levels() { find out -name '*.kob' | wc -l; }
is_over() { [[ -z $(squeue --noheader --jobs="$job" 2>/dev/null) ]]; }
some() { (($(done_levels) >= 30)); }

# kill_jobs: kills the jobs of this cluster's second node with the processes that watch them, which a
# killed slurmd leaves running. Fails when there are none.
kill_jobs() {
  local process parent killed=1
  for process in $(pgrep -f "^/bin/sh $MAPEXPORT "); do
    grep -qzx "SLURMD_NODENAME=n2" "/proc/$process/environ" || continue
    parent=$(awk '$1 == "PPid:" { print $2 }' "/proc/$process/status")
    if grep -q "^slurmstepd" "/proc/$parent/cmdline"; then kill -KILL "$parent"; fi
    kill -KILL "$process" && killed=0
  done
  return "$killed"
}

job=$("$root/scripts/farm-slurm.sh" --tasks 25 list out --quiet)
wait_until "30 levels" some
wait_until "a job on node n2" kill_jobs
{ kill -KILL "$second_node" && wait "$second_node"; } 2>/dev/null || true
echo "killed node n2 and its job, with $(done_levels) of 100 levels exported"
wait_until "the end of the array" is_over
again=$(scontrol show job "$job" | grep -c "Restarts=[1-9]") || true
echo "the array is over: $again of its 25 tasks ran again, $(done_levels) of 100 levels are exported"
[[ $again -gt 0 && $(done_levels) == 100 ]]
rm -- out/level01?.kob
job=$("$root/scripts/farm-slurm.sh" --missing --tasks 5 list out --quiet)
wait_until "the end of the second array" is_over
for level in alone/*.kob; do cmp -- "$level" "out/${level##*/}"; done
[[ $(done_levels) == 100 ]]
echo "submitted 10 again: 100 of 100 levels, with the same bytes as when exported by one call"
