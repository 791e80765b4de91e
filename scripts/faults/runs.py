"""Runs of the program in folders of their own, and what may be said of how they end."""
import collections
import concurrent.futures
import os
import pathlib
import shutil
import signal
import subprocess
import threading

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# The machine may be busy; what hangs does so for good.
WALL_SECONDS = 60
LOG = "ExportDebug.txt"
# With one of these warnings an output may differ from what an undisturbed run writes.
TOLD = ("settings are neither read nor saved", "the CXP database cannot be read",
        "the settings are not saved", ".mtl")

Outcome = collections.namedtuple("Outcome", "status out err")


class Interposed:
    """A run of `case` in a folder of its own, with the library that counts calls and lets one fail.

    `settings` are the library's: what of FAILING_* is to be in the environment beside FAILING_COUNTS.
    """

    def __init__(self, tally, program, case, preload, settings):
        self.program, self.case = program, case
        self.folder = tally.folder()
        self.work = self.folder / "work"
        self.work.mkdir()
        case.prepare(self.work)
        self.counts = self.folder / "counts"
        self.counts.write_bytes(bytes(16))
        self.environment = {"LD_PRELOAD": preload, "FAILING_COUNTS": str(self.counts), **settings}

    def keep(self, outcome):
        """Leaves beside the work how to do it again, and how it ended."""
        (self.folder / "repeat").write_text(
            "".join(f"{name}={value!r} " for name, value in self.environment.items())
            + f"{self.program} {' '.join(map(str, self.case.arguments))}\n{outcome}\n")


class Tally:
    """Counts inputs and findings per kind, prints findings and keeps their folders."""

    def __init__(self, top):
        self.top = top
        self.rows = {}
        self.findings = 0
        self.lock = threading.Lock()
        self.number = 0

    def folder(self):
        with self.lock:
            self.number += 1
            path = self.top / f"{self.number:06d}"
        path.mkdir()
        return path

    def begin(self, what, how):
        with self.lock:
            self.rows.setdefault(what, [0, 0, how])

    def add(self, what, folder, finding, detail):
        """One input of a kind that was begun; without a finding its folder goes away."""
        with self.lock:
            row = self.rows[what]
            row[0] += 1
            if finding:
                row[1] += 1
                self.findings += 1
                print(f"{what}: {detail}: {finding}\n  kept in {folder}", flush=True)
        if not finding:
            shutil.rmtree(folder, ignore_errors=True)

    def write(self, path):
        lines = [f"{what}\t{inputs}\t{findings}\t{how}\n"
                 for what, (inputs, findings, how) in self.rows.items()]
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("".join(lines))

    def summary(self):
        for what, (inputs, findings, _) in self.rows.items():
            print(f"{what:<60}{inputs:>8}{findings:>10}")
        total = sum(row[0] for row in self.rows.values())
        print(f"{self.findings} findings in {total} runs")


def in_parallel(action, inputs):
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for _ in pool.map(action, inputs):
            pass


def environment(folder, extra=None):
    # Nothing of the person's own is read or written.
    return {"PATH": os.environ["PATH"], "HOME": str(folder), "LC_ALL": "C", **(extra or {})}


def start(program, folder, arguments, extra=None, **options):
    return subprocess.Popen([program, *arguments], cwd=folder, env=environment(folder, extra),
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, start_new_session=True, **options)


def finish(process, seconds=WALL_SECONDS):
    """The outcome; its status is None for a process that does not end."""
    try:
        out, err = process.communicate(timeout=seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        out, err = process.communicate()
        return Outcome(None, out, err.decode(errors="replace"))
    return Outcome(process.returncode, out, err.decode(errors="replace"))


def run(program, folder, arguments, extra=None, **options):
    return finish(start(program, folder, arguments, extra, **options))


def contents(folder):
    """Every file below the folder but the log, by its path there; None for folders."""
    found = {}
    for path in sorted(folder.rglob("*")):
        name = str(path.relative_to(folder))
        if name != LOG:
            found[name] = path.read_bytes() if path.is_file() else None
    return found


def messages_fault(outcome):
    """What is wrong with status and standard error alone."""
    if outcome.status is None:
        return f"ran for more than {WALL_SECONDS} s"
    if outcome.status < 0:
        return f"ended by signal {-outcome.status}: {outcome.err!r}"
    lines = outcome.err.splitlines()
    errors = [line for line in lines if line.startswith("mapexport: error: ")]
    others = [line for line in lines if not line.startswith("mapexport: ")]
    if others:
        return f"status {outcome.status} with other lines on standard error: {outcome.err!r}"
    if outcome.status not in (0, 1):
        return f"status {outcome.status}: {outcome.err!r}"
    if len(errors) != outcome.status:
        return f"status {outcome.status} with {len(errors)} error lines: {outcome.err!r}"
    return ""
