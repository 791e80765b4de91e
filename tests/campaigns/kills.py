"""Ends the program, or the process that reads for it, right before each of its calls."""
import pathlib
import signal
import time

from cases import Interposed, make_cases
from runs import contents, in_parallel, run

KINDS = ("open", "write", "sync", "close", "rename", "make", "lock", "remove", "process", "read")


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
    """`preload` is the library that counts calls."""

    def __init__(self, program, preload, tally):
        self.program = program
        self.preload = preload
        self.tally = tally

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
        count = self._run(case, kind, 0, 0, False).counted()
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
            trial = self._run(case, kind, number, sent, child)
            fault = self.fault_of(case, trial.outcome, trial.work, sent, child)
            if not fault and not group_is_gone(trial.pid):
                fault = "a process is left"
            self.tally.add(what[sent], trial.folder, fault,
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
        if sent == signal.SIGTERM and left:
            return f"left {sorted(left)}"
        if any(not is_temporary(name) for name in left):
            return f"left {sorted(left)}"
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
        return Interposed(self.tally, self.program, case, self.preload, kind, number, child,
                          {"FAILING_SIGNAL": str(int(sent))})
