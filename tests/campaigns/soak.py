"""Runs all campaigns in turns for hours; scripts/soak.sh tells of it."""
import argparse
import collections
import contextlib
import fcntl
import json
import os
import pathlib
import re
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time

from calls import NAMES
from runs import ROOT

# Of a turn in seconds; those of damage and faults have a number of tries that takes about as long.
TURN = 300
RANDOM_TESTS = "*Equal*:SplitTest.PartsHold*:CornerNormals.ComeBack*"
LITERAL = ("GeometryTest", "PassesTest", "SplitTest", "TokenizerTest", "CornerNormalsTest")
# The fault campaigns; a turn does one of them.
FAULTS = [*(["--parts", "calls", "--kinds", kind, *(["--step", "32"] if kind == "alloc" else [])]
            for kind in NAMES),
          *(["--parts", part] for part in ("surroundings", "kills", "takeover"))]

# Where it is kept, and the command that shows it again.
Find = collections.namedtuple("Find", "kept repeat")
# Its part of the processor time, what is counted, and what makes its turn.
Campaign = collections.namedtuple("Campaign", "share counts turn")


class Stopped(Exception):
    """The person ended the script."""


class Turn:
    """One turn: its number, its folder, and the programs that it runs one after the other."""

    def __init__(self, soak, name, number):
        self.soak = soak
        self.name = name
        self.number = number
        self.folder = soak.state / "turns" / name
        self.log = self.folder / "log.txt"
        self.ends = time.monotonic() + min(TURN, max(soak.ends - time.monotonic(), 1))
        self.processor_time = 0.0
        shutil.rmtree(self.folder, ignore_errors=True)
        (self.folder / "tmp").mkdir(parents=True)

    def kept(self):
        """Where the folder will be once something was found."""
        return self.soak.state / "finds" / f"{self.name}-{self.number}"

    def run(self, command, **extra):
        """The status and the output of a program, which ends with this script."""
        environment = {**os.environ, "TMPDIR": str(self.folder / "tmp"), "CAMPAIGN_JOBS": "1",
                       # For what may take 20 seconds of a processor that has others to serve first.
                       "CAMPAIGN_WALL_SECONDS": "1200", **extra}
        with open(self.log, "ab") as log:
            begin = log.tell()
            # Without preparation in the child, which threads don't allow.
            process = self.soak.start(["setpriv", "--pdeathsig", "KILL", *map(str, command)],
                                      cwd=ROOT, env=environment, stdin=subprocess.DEVNULL,
                                      stdout=log, stderr=subprocess.STDOUT, start_new_session=True)
        _, status, used = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.soak.ended(process)
        self.processor_time += used.ru_utime + used.ru_stime
        return process.returncode, self.log.read_bytes()[begin:].decode(errors="replace")


def fuzz(turn):
    """A libFuzzer target, from what its earlier turns found; its first fault ends the turn."""
    corpus = ROOT / "tests/fuzz/corpus" / turn.name
    dictionary = ROOT / f"tests/fuzz/dict/{turn.name}.dict"
    program = ROOT / "build/sanitize/fuzz" / turn.name
    status, output = turn.run([
        program, f"-max_total_time={max(int(turn.ends - time.monotonic()), 1)}", "-len_control=20",
        # By the clock, and the machine may be busy.
        "-timeout=60", "-report_slow_units=60", "-print_final_stats=1",
        f"-artifact_prefix={turn.folder}/",
        *([f"-dict={dictionary}"] if dictionary.exists() else []),
        turn.soak.state / "corpus" / turn.name, *([corpus] if corpus.exists() else [])])
    runs = re.findall(r"^stat::number_of_executed_units: *(\d+)$|^#(\d+)\t", output, re.MULTILINE)
    runs = max((int(a or b) for a, b in runs), default=0)
    found = re.search(r"Test unit written to (.*)$", output, re.MULTILINE)
    if status == 0 and runs > 0:
        return runs, []
    kept = turn.kept() / (pathlib.Path(found[1]).name if found else turn.log.name)
    return runs, [Find(kept, f"{program.relative_to(ROOT)} {kept if found else ''}".strip())]


def campaign(turn, script, command, shown):
    """A script with a table of findings; `shown` makes the command of a finding's line."""
    table = turn.folder / "table.tsv"
    status, output = turn.run([sys.executable, "-B", ROOT / "tests/campaigns" / script, *command,
                               "--table", table])
    rows = [line.split("\t") for line in table.read_text().splitlines()] if table.exists() else []
    finds = [Find(pathlib.Path(str(turn.kept()) + kept.removeprefix(str(turn.folder))), shown(line))
             for line, kept in re.findall(r"^(.*)\n  kept in (.*)$", output, re.MULTILINE)]
    if not finds and (status != 0 or not rows):
        finds = [Find(turn.kept() / turn.log.name, shown(""))]
    return sum(int(row[1]) for row in rows), finds


def damage(part, count):
    def run(turn):
        def shown(line):
            only = re.search(r", (--only \d+): ", line)
            return " ".join(["scripts/damage.sh --sanitizers --seed", str(turn.number),
                             only[1] if only else f"--count {count}", part])

        return campaign(turn, "damage.py", [
            "--program", ROOT / "build/sanitize/bin/mapexport", "--folder", turn.folder / "damaged",
            "--seed", turn.number, "--count", count, part], shown)
    return run


def faults(turn):
    release = ROOT / "build/release"
    # The next round begins with the next seed, so that in the end each allocation has failed.
    chosen = [*FAULTS[turn.number % len(FAULTS)], "--seed", str(turn.number // len(FAULTS))]
    return campaign(turn, "faults.py", [
        release / "bin/mapexport", release / "tests/failing-call.so",
        release / "tests/taken-over.so", *chosen],
        lambda _: " ".join(["scripts/faults.sh", *chosen]))


def literal(turn):
    """The tests that compare with literal definitions, with new random inputs in each round."""
    tests, finds, number = 0, [], 0
    while number == 0 or (time.monotonic() < turn.ends and not finds):
        seed = str((turn.number * 1000 + number) % 400_000 * 10_000)
        number += 1
        for name in LITERAL:
            command = [f"build/release/tests/{name}", f"--gtest_filter={RANDOM_TESTS}"]
            status, output = turn.run(command, MAPEXPORT_FIRST_SEED=seed)
            passed = re.search(r"^\[  PASSED  \] (\d+) test", output, re.MULTILINE)
            tests += int(passed[1]) if passed else 0
            if status != 0 or not passed or passed[1] == "0":
                finds.append(Find(turn.kept() / turn.log.name,
                                  f"MAPEXPORT_FIRST_SEED={seed} {shlex.join(command)}"))
    return tests, finds


def make_campaigns():
    targets = sorted(path.stem for path in (ROOT / "tests/fuzz").glob("Fuzz*.cpp"))
    return {
        **{name: Campaign(6 if name == "FuzzExport" else 2, "inputs", fuzz) for name in targets},
        "damage": Campaign(6, "damaged scenes", damage("scenes", 1000)),
        "hostile": Campaign(0.5, "harmful scenes", damage("hostile", 1000)),
        "faults": Campaign(4, "faults", faults),
        "literal": Campaign(4, "random tests", literal),
    }


class Soak:
    """The state that is kept in a folder, and who is at work."""

    def __init__(self, state, hours, wanted):
        self.state = state
        self.ends = time.monotonic() + hours * 3600
        self.campaigns = make_campaigns()
        self.wanted = set(wanted or self.campaigns)
        self.lock = threading.Lock()
        self.busy = set()
        self.processes = set()
        self.stopped = False
        self.broken = None
        self.done = {}
        if (state / "done.json").exists():
            self.done = json.loads((state / "done.json").read_text())
        for name in self.campaigns:
            self.done.setdefault(name, {"turns": 0, "runs": 0, "seconds": 0.0, "finds": []})
        for name in ("turns", "finds"):
            (state / name).mkdir(parents=True, exist_ok=True)

    def start(self, command, **options):
        with self.lock:
            if self.stopped:
                raise Stopped
            process = subprocess.Popen(command, **options)
            self.processes.add(process)
            return process

    def ended(self, process):
        with self.lock:
            self.processes.remove(process)
            if self.stopped:
                raise Stopped  # what it said is no result

    def stop(self):
        with self.lock:
            self.stopped = True
            for process in self.processes:
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(process.pid, signal.SIGKILL)

    def next_turn(self):
        """A turn of the campaign that is furthest behind its share."""
        with self.lock:
            if self.stopped or time.monotonic() >= self.ends:
                return None
            name = min(self.wanted - self.busy, key=lambda name: (
                self.done[name]["seconds"] / self.campaigns[name].share, name))
            self.busy.add(name)
            return Turn(self, name, self.done[name]["turns"])

    def work(self):
        try:
            while (turn := self.next_turn()) is not None:
                runs, finds = self.campaigns[turn.name].turn(turn)
                self.note(turn, runs, finds)
        except Stopped:
            pass
        except BaseException as error:  # pylint: disable=broad-except
            self.broken = error
            self.stop()

    def note(self, turn, runs, finds):
        """Adds a turn to the state at once: it counts wholly or not at all."""
        if finds:
            shutil.rmtree(turn.kept(), ignore_errors=True)
            shutil.move(turn.folder, turn.kept())
        else:
            shutil.rmtree(turn.folder, ignore_errors=True)
        with self.lock:
            done = self.done[turn.name]
            done["turns"] += 1
            done["runs"] += runs
            # A turn costs something, so that each campaign has its turn.
            done["seconds"] += max(turn.processor_time, 1.0)
            done["finds"] += [list(map(str, find)) for find in finds]
            new = self.state / "done.json.new"
            new.write_text(json.dumps(self.done, indent=1))
            os.replace(new, self.state / "done.json")
            self.busy.remove(turn.name)
        print(f"{time.strftime('%H:%M:%S')} {turn.name}, turn {turn.number}: {runs} "
              f"{self.campaigns[turn.name].counts}, {turn.processor_time:.0f} s, "
              f"{len(finds)} finds", flush=True)

    def table(self):
        rows = [f"\n{'campaign':<16} {'runs':>12} {'of':<15} {'turns':>5} "
                f"{'processor time':>14} {'finds':>5}"]
        finds = []
        for name, row in self.campaigns.items():
            done = self.done[name]
            minutes = round(done["seconds"] / 60)
            rows.append(f"{name:<16} {done['runs']:>12} {row.counts:<15} {done['turns']:>5} "
                        f"{minutes // 60:>10}:{minutes % 60:02} h {len(done['finds']):>5}")
            finds += [f"\n{name}: kept in {kept}\n  {repeat}" for kept, repeat in done["finds"]]
        return "\n".join(rows + finds)


def main():
    parser = argparse.ArgumentParser(prog="soak.sh", allow_abbrev=False)
    parser.add_argument("hours", type=float, metavar="HOURS")
    parser.add_argument("campaigns", nargs="*", metavar="CAMPAIGN", choices=[[], *make_campaigns()])
    parser.add_argument("--jobs", type=int, default=1, help="turns at the same time")
    parser.add_argument("--state", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    given = parser.parse_args()
    state = given.state.resolve()

    with open(state / "lock", "w", encoding="ascii") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            sys.exit(f"soak.sh: another run is at work in {state}")
        soak = Soak(state, given.hours, given.campaigns)
        workers = [threading.Thread(target=soak.work)
                   for _ in range(min(given.jobs, len(soak.wanted)))]
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, lambda *_: threading.Thread(target=soak.stop).start())
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        table = soak.table()
        (state / "table.txt").write_text(table + "\n")
        print(table)
        if soak.broken:
            raise soak.broken
        sys.exit(1 if any(done["finds"] for done in soak.done.values()) else 0)


if __name__ == "__main__":
    main()
