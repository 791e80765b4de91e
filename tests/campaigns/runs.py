"""Runs of the program in folders of their own, what may be said of how they end, and the counts."""
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
WALL_SECONDS = int(os.environ.get("CAMPAIGN_WALL_SECONDS", 90))
LOG = "ExportDebug.txt"
ERROR = "mapexport: error: "
KINDS = (ERROR, "mapexport: warning: ", "mapexport: note: ")

Outcome = collections.namedtuple("Outcome", "status out err")


class Tally:
    """Counts inputs and findings per kind, prints findings and keeps their folders below `top`."""

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
        print(f"{self.findings} findings in {sum(row[0] for row in self.rows.values())} runs")


def in_parallel(action, inputs):
    jobs = int(os.environ.get("CAMPAIGN_JOBS", os.cpu_count()))
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for _ in pool.map(action, inputs):
            pass


def environment(folder, extra=None):
    # Nothing of the person's own is read or written.
    return {"PATH": os.environ["PATH"], "HOME": str(folder), "LC_ALL": "C", **(extra or {})}


def start(program, folder, arguments, extra=None, **options):
    return subprocess.Popen([program, *map(str, arguments)], cwd=folder,
                            env=environment(folder, extra), stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True,
                            **options)


def finish(process, seconds=WALL_SECONDS):
    """The outcome; its status is None for a process that does not end."""
    try:
        out, err = process.communicate(timeout=seconds)
        status = process.returncode
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        out, err = process.communicate()
        status = None
    return Outcome(status, out, err.decode(errors="surrogateescape"))


def run(program, folder, arguments, extra=None, seconds=WALL_SECONDS, **options):
    return finish(start(program, folder, arguments, extra, **options), seconds)


def run_well(program, folder, arguments):
    outcome = run(program, folder, arguments)
    if outcome.status != 0:
        raise SystemExit(f"{' '.join(map(str, arguments))}: {outcome}")


def contents(folder):
    """Every file below the folder but the log, by its path there; None for folders."""
    return {str(path.relative_to(folder)): path.read_bytes() if path.is_file() else None
            for path in sorted(folder.rglob("*")) if path.relative_to(folder) != pathlib.Path(LOG)}


def messages_fault(outcome, may_end=(0, 1)):
    """What is wrong with status and standard error alone."""
    status, _, err = outcome
    if status is None:
        return f"ran for more than {WALL_SECONDS} s"
    if status < 0:
        return f"ended by signal {-status}: {err[:2000]!r}"
    lines = err.split("\n")
    if status not in may_end or lines.pop():
        return f"status {status}, or an end within a line: {err[:2000]!r}"
    for line in lines:
        if not line.startswith(KINDS):
            return f"status {status} with a line that is no message: {line[:200]!r}"
        # What steers a terminal, and what is not UTF-8.
        if any(not c.isprintable() and c != "\N{REPLACEMENT CHARACTER}" for c in line):
            return f"standard error has control characters: {line[:200]!r}"
    errors = sum(line.startswith(ERROR) for line in lines)
    if errors != (status == 1):
        return f"status {status} with {errors} error lines: {err[:2000]!r}"
    return ""
