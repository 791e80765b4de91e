"""Runs the program, and judges what every run of it must keep to, whatever it was given."""
import collections
import concurrent.futures
import os
import pathlib
import random
import shutil
import signal
import subprocess
import tempfile
import threading

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
KEPT = ROOT / "build/damage"
ERROR = b"mapexport: error: "
KINDS = (ERROR, b"mapexport: warning: ", b"mapexport: note: ")
# Of a sanitizer that found something; 1 would look like a refusal.
SANITIZER_STATUS = 77
READ_SECONDS = 5
# The program limits reading itself, in processor time; this is about the program as a whole.
WALL_SECONDS = 90

Outcome = collections.namedtuple("Outcome", "status out errors")


def call(command, folder, seconds=WALL_SECONDS, keep_output=False, environment=None):
    """Runs `command` in `folder`. The status is None when it does not end; below 0 by a signal."""
    variables = {"PATH": os.environ["PATH"], "HOME": str(folder), "TERM": "xterm",
                 "ASAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:detect_leaks=0",
                 "UBSAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:print_stacktrace=1"}
    variables.update(environment or {})
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as errors:
        run = subprocess.Popen([str(word) for word in command], cwd=folder, env=variables,
                               stdin=subprocess.DEVNULL, stderr=errors,
                               stdout=out if keep_output else subprocess.DEVNULL)
        timed_out = threading.Event()

        def end():
            timed_out.set()
            run.kill()
        timer = threading.Timer(seconds, end)
        timer.start()
        run.wait()
        timer.cancel()
        out.seek(0)
        errors.seek(0)
        return Outcome(None if timed_out.is_set() else run.returncode, out.read(), errors.read())


def error_lines(outcome):
    return sum(line.startswith(ERROR) for line in outcome.errors.split(b"\n"))


def bad_messages(errors):
    """What is wrong with standard error: lines that are no messages, bytes that steer terminals."""
    if errors and not errors.endswith(b"\n"):
        return "standard error ends within a line"
    for line in errors.split(b"\n")[:-1]:
        if not line.startswith(KINDS):
            return f"standard error has a line that is no message: {line[:200]!r}"
        try:
            text = line.decode()
        except UnicodeDecodeError:
            return f"standard error has a line that is not UTF-8: {line[:200]!r}"
        if any(not c.isprintable() and c != "\N{REPLACEMENT CHARACTER}" for c in text):
            return f"standard error has control characters: {line[:200]!r}"
    return ""


def fault_of_end(outcome, may_end):
    """What is wrong with how a run ended, whatever the command; `may_end` are its statuses."""
    if outcome.status is None:
        return "does not end"
    if outcome.status < 0:
        return f"ended by {signal.Signals(-outcome.status).name}"
    if outcome.status not in may_end:
        return f"status {outcome.status}: {outcome.errors[:2000]!r}"
    bad = bad_messages(outcome.errors)
    if bad:
        return bad
    lines = error_lines(outcome)
    if outcome.status == 1 and lines == 0:
        return "status 1 without an error"
    if outcome.status != 1 and lines != 0:
        return f"status {outcome.status} with an error: {outcome.errors[:2000]!r}"
    return ""


def fault_of_export(program, folder, scene, options=()):
    """Exports `scene` and looks at what came out: what is wrong, and how it went."""
    log = folder.parent / f"{folder.name}.sanitizer"
    before = {path.name for path in folder.iterdir()} | {"ExportDebug.txt"}
    # The process that reads has no standard streams; a sanitizer's report there goes to a file.
    outcome = call([program, "export", scene, "out.kob", "--seed", "0", "--quiet",
                    "--read-limit", READ_SECONDS, *options], folder,
                   environment={name: f"exitcode={SANITIZER_STATUS}:detect_leaks=0:log_path='{log}'"
                                for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS")})
    left = {path.name for path in folder.iterdir()} - before
    fault = fault_of_end(outcome, (0, 1, 4)) or own_frames(log)
    if outcome.status == 1:
        how = ("limit" if b"within 5 seconds" in outcome.errors
               else "crash" if b"the reader crashed" in outcome.errors else "refused")
        if not fault and error_lines(outcome) != 1:
            fault = f"status 1 with {error_lines(outcome)} error lines: {outcome.errors[:2000]!r}"
        if not fault and left:
            fault = f"left {sorted(left)}"
        return fault, how, outcome
    if not fault and left != {"out.kob"}:
        fault = f"status {outcome.status}, left {sorted(left)}"
    if not fault:
        inspected = call([program, "inspect", "--summary", "out.kob"], folder)
        if inspected.status != outcome.status:
            fault = (f"status {outcome.status}, but inspect ends with {inspected.status}: "
                     f"{inspected.errors[:2000]!r}")
    return fault, "exported", outcome


def own_frames(log):
    """The first sanitizer's report below `log` whose fault is in our code, not in a library."""
    found = ""
    for path in sorted(log.parent.glob(log.name + ".*")):
        report = path.read_text(errors="replace")
        path.unlink()
        frames = [line for line in report.splitlines() if line.lstrip().startswith("#")]
        own = [line for line in frames[:12] if "mapexport::" in line]
        # Standard containers that our code uses stand before it; a library's frames do not.
        before = frames[:frames.index(own[0])] if own else frames
        library = any("libassimp" in line or "Assimp::" in line for line in before)
        if "runtime error" in report or (own and not library):
            found = found or "in the reader's process: " + " | ".join(
                report.strip().splitlines()[:12])
    return found


class Campaign:
    """Numbered tries of one part, each from its own random generator, so that one can be repeated.

    `command` repeats the part. A try is called with its number, generator and an empty folder, and
    returns a label, how it went, and what is wrong, if anything; then its folder, below the one
    given, is kept."""

    def __init__(self, part, folder, command, seed, jobs=2):
        self.part, self.folder, self.command = part, folder, command
        self.seed, self.jobs = seed, jobs

    def run(self, numbers, attempt):
        top = KEPT / self.folder
        shutil.rmtree(top, ignore_errors=True)
        top.mkdir(parents=True)
        outcomes = collections.defaultdict(collections.Counter)
        faults = 0

        def one(i):
            folder = top / str(i)
            folder.mkdir()
            label, how, fault = attempt(i, random.Random(f"{self.seed}/{self.part}/{i}"), folder)
            if not fault:
                shutil.rmtree(folder)
            return label, how, fault, folder

        with concurrent.futures.ThreadPoolExecutor(self.jobs) as pool:
            for i, (label, how, fault, folder) in zip(numbers, pool.map(one, numbers)):
                outcomes[label][how] += 1
                if fault:
                    faults += 1
                    print(f"{self.part} {i}, {label}: {fault}\n  kept in {folder}\n"
                          f"  repeat: {self.command} --only {i} {self.part}", flush=True)
        columns = sorted({how for counts in outcomes.values() for how in counts})
        print(f"{self.part:<24}{'tries':>9}" + "".join(f"{column:>10}" for column in columns))
        for label, counts in sorted(outcomes.items()):
            print(f"{label:<24}{sum(counts.values()):>9}"
                  + "".join(f"{counts[column]:>10}" for column in columns))
        print(flush=True)
        return sum(sum(counts.values()) for counts in outcomes.values()), faults
