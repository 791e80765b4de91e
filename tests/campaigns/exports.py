"""Exports of any scene file, and what is wrong with how one went."""
import re
import subprocess

from runs import messages_fault, run

# Of a sanitizer that found something; 1 would look like a refusal.
SANITIZER_STATUS = 77
READ_SECONDS = 20  # so much that also a sanitized reader on a busy machine ends by itself
# The process that reads may not start the program that looks up names; it is run afterwards.
SANITIZERS = {"ASAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:detect_leaks=0:symbolize=0",
              "UBSAN_OPTIONS": f"exitcode={SANITIZER_STATUS}:print_stacktrace=1"}


def fault_of_export(program, folder, scene, *options):
    """Exports `scene` and looks at what came out: what is wrong, and how it ended."""
    log = folder.parent / f"{folder.name}.sanitizer"
    before = {path.name for path in folder.iterdir()} | {"ExportDebug.txt"}
    # The process that reads has no standard streams; a sanitizer's report there goes to a file.
    outcome = run(program, folder, ["export", scene, "out.kob", "--seed", "0", "--quiet",
                                    "--read-limit", READ_SECONDS, "--fresh", *options],
                  {name: f"{value}:log_path='{log}'" for name, value in SANITIZERS.items()})
    left = {path.name for path in folder.iterdir()} - before
    fault = messages_fault(outcome, (0, 1, 4)) or own_frames(log)
    if not fault and left != (set() if outcome.status == 1 else {"out.kob"}):
        fault = f"status {outcome.status}, left {sorted(left)}"
    if not fault and outcome.status != 1:
        inspected = run(program, folder, ["inspect", "--summary", "out.kob"])
        if inspected.status != outcome.status:
            fault = f"status {outcome.status}, but inspect: {inspected.status}, {inspected.err!r}"
    return fault, outcome


def with_names(frame):
    """The frame of a report with the functions that it is in, the innermost first."""
    place = re.search(r"\((/.*)\+(0x[0-9a-f]+)\)", frame)
    if not place:
        return frame
    names = subprocess.run(["llvm-symbolizer", f"--obj={place[1]}", place[2]], check=True,
                           stdout=subprocess.PIPE, text=True).stdout.splitlines()
    return f"{frame} {' '.join(names[::3])}"


def own_frames(log):
    """The first sanitizer's report below `log` whose fault is in our code, not in a library."""
    found = ""
    for path in sorted(log.parent.glob(log.name + ".*")):
        report = path.read_text(errors="replace")
        path.unlink()
        frames = [with_names(line) for line in report.splitlines()
                  if line.lstrip().startswith("#")]
        own = [line for line in frames[:12] if "mapexport::" in line]
        # Standard containers that our code uses stand before it; a library's frames do not.
        before = frames[:frames.index(own[0])] if own else frames
        library = any("libassimp" in line or "Assimp::" in line for line in before)
        if "runtime error" in report or (own and not library):
            found = found or "in the reader's process: " + " | ".join(
                report.strip().splitlines()[:12])
    return found
