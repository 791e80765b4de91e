"""Ends the program in the middle of an export, at every call and at random moments, and lets two exports
meet."""
import hashlib
import json
import os
import pathlib
import random
import shutil
import signal
import struct
import subprocess
import time

from cases import OLD, Case, make_cases
from runs import (ROOT, Interposed, contents, environment, finish, in_parallel, messages_fault, run,
                  start)

KINDS = ("open", "write", "sync", "close", "rename", "make", "lock", "remove", "process", "read")
POLITE = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT, signal.SIGXCPU, signal.SIGALRM,
          signal.SIGUSR1)
# Edges of the grid that is exported for long enough to be hit at all stages.
GRID = 110


def is_temporary(name):
    return name.split("/")[0].startswith(("mapexport-", ".mapexport-"))


def group_is_gone(group, seconds=5):
    """Whether no process of the group is left before the time is over."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        alive = False
        for path in pathlib.Path("/proc").glob("[0-9]*/stat"):
            try:
                state, _, its_group = path.read_text().rpartition(")")[2].split()[:3]
            except OSError:
                continue
            alive = alive or (int(its_group) == group and state not in "ZX")
        if not alive:
            return True
        time.sleep(0.02)
    return False


class Kills:
    def __init__(self, program, library, preload_first, tally, seed):
        self.program = program
        self.preload = " ".join(filter(None, (preload_first, str(library))))
        self.tally = tally
        self.seed = seed

    # Every call

    def at_every_call(self, quick, only):
        """Sends a signal right before every call that touches files or processes."""
        for case in make_cases(self.program, self.tally):
            if only not in case.name or not case.outputs:
                continue
            if quick and "older" not in case.name:
                continue
            for kind in KINDS:
                self._at_calls(case, kind, quick)

    def _at_calls(self, case, kind, quick):
        count = struct.unpack("QQ", self._run(case, kind, 0, 0, False)[2])
        rows = [(number, sent, child) for child in range(1 + case.reader)
                for number in range(1, count[child] + 1)
                for sent in (signal.SIGKILL, signal.SIGTERM)]
        if quick:
            rows = rows if kind in ("rename", "lock", "make") else []
        what = {signal.SIGKILL: "kill -9 before every call", signal.SIGTERM: "SIGTERM before every call"}
        for sent, name in what.items():
            self.tally.begin(name, "of " + ", ".join(KINDS) + "; then the command runs once more")

        def try_one(row):
            number, sent, child = row
            outcome, folder, _, group = self._run(case, kind, number, sent, bool(child))
            fault = self.fault_of(case, outcome, folder / "work", sent, child)
            if not fault and not group_is_gone(group):
                fault = "a process is left"
            self.tally.add(what[sent], folder, fault,
                           f"{case.name}, {'reader, ' if child else ''}{kind} {number}")

        in_parallel(try_one, rows)

    def fault_of(self, case, outcome, folder, sent, child):
        """What is wrong after a signal, and after the run that follows."""
        if child or outcome.status in (0, 1):  # the program itself goes on
            return case.fault_of(outcome, folder) or (
                f"the reader was ended, the status is {outcome.status}"
                if child and outcome.status != 1 else "")
        if outcome.status != -sent:
            return f"status {outcome.status}: {outcome.err!r}"
        now = contents(folder)
        left = set(now) - set(case.before) - set(case.after)
        if sent in POLITE and left:
            return f"left {sorted(left)}"
        folders = [name for name in left if "/" not in name and now[name] is None]
        if any(not is_temporary(name) for name in left):
            return f"left {sorted(left)}"
        targets = len(case.outputs) + (case.report is not None)
        # An exporter's log is made beside the model, before depfile and report are.
        if case.arguments[0] == "export":
            targets = max(targets, 2)
        if len(folders) > targets:
            return f"left {len(folders)} temporary folders: {sorted(folders)}"
        for name in (*case.outputs, case.settings):
            whole = [case.before.get(name), case.after.get(name)]
            # A new settings file is empty at first, which is as good as none.
            if name == case.settings and None in whole:
                whole.append(b"")
            if now.get(name) not in whole:
                return f"{name} is neither old nor new"
        again = run(self.program, folder, case.arguments)
        if again.status != 0:
            return f"the next run: {again}"
        differing = [name for name in {*contents(folder), *case.after}
                     if contents(folder).get(name) != case.after.get(name) and name != case.report]
        return f"after the next run {sorted(differing)} differ" if differing else ""

    def _run(self, case, kind, number, sent, child):
        settings = {"FAILING_KIND": kind, "FAILING_AT": str(number), "FAILING_SIGNAL": str(int(sent))}
        if child:
            settings["FAILING_CHILD"] = "1"
        trial = Interposed(self.tally, self.program, case, self.preload, settings)
        process = start(self.program, trial.work, case.arguments, trial.environment)
        outcome = finish(process)
        trial.keep(outcome)
        return outcome, trial.folder, trial.counts.read_bytes(), process.pid

    # Random moments

    def at_random_moments(self, count):
        """Ends a longer export at `count` moments with SIGKILL and with each polite signal."""
        grid = self.tally.folder()
        write_grid(grid / "grid.obj", GRID)
        case = make_grid_case(self.program, grid, self.tally)
        begin = time.monotonic()
        run(self.program, grid, case.arguments)
        whole = time.monotonic() - begin
        rng = random.Random(self.seed)
        for sent in (signal.SIGKILL, *POLITE):
            what = f"{signal.Signals(sent).name} at random moments"
            ended = 0
            for i in range(count if sent == signal.SIGKILL else max(1, count // 3)):
                moment = rng.uniform(0, whole * 1.05)
                folder = self.tally.folder()
                case.prepare(folder)
                process = start(self.program, folder, case.arguments)
                time.sleep(moment)
                os.kill(process.pid, sent)
                outcome = finish(process)
                # One that was not yet running ended as any program does.
                fault = self.fault_of(case, outcome, folder, sent, False)
                if not fault and not group_is_gone(process.pid):
                    fault = "a process is left"
                ended += outcome.status == -sent
                self.tally.begin(what, "")
                self.tally.add(what, folder, fault, f"number {i}, after {moment:.3f} s")
            self.tally.rows[what][2] = (
                f"seed {self.seed}; of an export of {2 * GRID * GRID} triangles with the reader's "
                f"process; {ended} ended it, the others came too late")

    # Two at once

    def two_at_once(self, rounds):
        what = "two exports at once to one output, report, depfile, log and settings file"
        self.tally.begin(what, f"{rounds} rounds; both end with 0, nothing is torn, mixed or left")
        scene = ROOT / "tests/golden/transparent.scene.json"

        def begin(folder, size):
            return start(self.program, folder, [
                "export", scene, "out.kob", "--settings", "set.reg", "--seed", "1", "--quiet",
                "--voxel-size", str(size), "--report", "out.json", "--depfile", "out.d"])

        wanted = []
        for size in (5, 200):
            alone = self.tally.folder()
            finish(begin(alone, size))
            wanted.append(contents(alone))
            shutil.rmtree(alone)
        for i in range(rounds):
            folder = self.tally.folder()
            (folder / "out.kob").write_bytes(OLD)
            outcomes = [finish(process) for process in [begin(folder, size) for size in (5, 200)]]
            now = contents(folder)
            fault = next(filter(None, map(messages_fault, outcomes)), "")
            if not fault and any(outcome != (0, b"", "") for outcome in outcomes):
                fault = f"{outcomes}"
            if set(now) != {"out.kob", "out.json", "out.d", "set.reg"}:
                fault = fault or f"left {sorted(now)}"
            for name in ("out.kob", "out.d", "set.reg"):
                if now.get(name) not in [each[name] for each in wanted]:
                    fault = fault or f"{name} is neither the one nor the other"
            if not fault and json.loads(now["out.json"])["sha256"] != hashlib.sha256(
                    now["out.kob"]).hexdigest():
                fault = "out.json tells of the other output"
            self.tally.add(what, folder, fault, f"round {i}")

    def held_folder_is_left_alone(self):
        what = "the temporary folder of an export that is stopped"
        self.tally.begin(what, "another export to the same output leaves it alone; both end with 0")
        folder = self.tally.folder()
        write_grid(folder / "grid.obj", GRID // 2)
        arguments = ["export", "grid.obj", "out.kob", "--fresh", "--quiet", "--seed", "1"]
        first = start(self.program, folder, arguments)
        fault = "the export made no temporary folder"
        deadline = time.monotonic() + 30
        while time.monotonic() < deadline and first.poll() is None:
            held = [name for name in contents(folder) if is_temporary(name)]
            if held:
                os.kill(first.pid, signal.SIGSTOP)
                fault = ""
                break
        second = run(self.program, folder, arguments)
        if not fault and not set(held) <= set(contents(folder)):
            fault = f"{held} is gone"
        if first.poll() is None:
            os.kill(first.pid, signal.SIGCONT)
        outcomes = [finish(first), second]
        if not fault and any(outcome.status != 0 for outcome in outcomes):
            fault = f"{outcomes}"
        if not fault and set(contents(folder)) != {"grid.obj", "out.kob"}:
            fault = f"left {sorted(contents(folder))}"
        self.tally.add(what, folder, fault, "one export")

    def reader_dies_with_program(self):
        what = "the reader's process when the program is killed"
        self.tally.begin(what, "it ends as well")
        folder = self.tally.folder()
        (folder / "endless.off").write_text("OFF\n353535235358 10 0\n0 0 0\n")
        process = subprocess.Popen([self.program, "scene", "endless.off", "--read-limit", "20"],
                                   cwd=folder, env=environment(folder), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   start_new_session=True)
        deadline = time.monotonic() + 10
        child = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children")
        while time.monotonic() < deadline and not child.read_text().split():
            time.sleep(0.01)
        had_reader = bool(child.read_text().split())
        os.kill(process.pid, signal.SIGKILL)
        process.wait()
        fault = "" if had_reader else "there was no reader"
        if not group_is_gone(process.pid):
            fault = "a process is left"
            os.killpg(process.pid, signal.SIGKILL)
        self.tally.add(what, folder, fault, "one reader")


def write_grid(path, size):
    """An uneven floor of size * size squares."""
    lines = [f"v {x * 10} {(x * 7 + y * 3) % 5} {y * 10}\n" for y in range(size + 1)
             for x in range(size + 1)]
    for y in range(size):
        for x in range(size):
            a = y * (size + 1) + x + 1
            lines.append(f"f {a} {a + 1} {a + size + 2} {a + size + 1}\n")
    path.write_text("".join(lines))


def make_grid_case(program, folder, tally):
    case = Case("grid", ["export", folder / "grid.obj", "out.kob", "--settings", "set.reg", "--seed",
                         "1", "--quiet", "--coordinates", "0"], {}, ["out.kob"],
                settings="set.reg", existing=True)
    case.learn(program, tally)
    return case
