"""Damaged model files: many in one process under the sanitizers."""
import pathlib
import re

from exports import SANITIZERS
from runs import ROOT, run as call, run_well

SCENES = ("docs/format-example.scene.json", *(f"tests/golden/{name}.scene.json" for name in
                                              ("collision", "materials", "two-sided")))
MOST_FINDINGS = 20
ROUNDS = 1000
SECONDS = 3600
COPIES = re.compile(rb"(\d+) copies, (\d+) sound, (\d+) files converted")


def write_models(program, folder):
    """Small model files of both layouts, the two smallest first."""
    written = []
    for scene in SCENES:
        for layout in ("kob", "qob"):
            path = folder / f"{pathlib.Path(scene).name.split('.')[0]}.{layout}"
            run_well(program, folder, ["export", ROOT / scene, path.name, "--fresh", "--seed", "0",
                                       "--no-weld", "--quiet"])
            written.append(path)
    return written


def drive(tally, what, driver, folder, paths, step, seed):
    """Runs the driver over each `step`-th copy, on behind each that it does not survive."""
    first = 0
    for _ in range(MOST_FINDINGS):
        arguments = [seed, ROUNDS, first, step, folder / "progress", *paths]
        outcome = call(driver, folder, arguments, SANITIZERS, SECONDS)
        done = COPIES.search(outcome.out)
        tally.rows[what][0] += int(done[1]) if done else 0
        if outcome.status == 0 and done and int(done[1]) > 0:
            print(f"{done[0].decode()}, each {step}-th of {len(paths)} files", flush=True)
            return
        at = int((folder / "progress").read_text())
        kept = tally.folder()
        (kept / "report").write_text(outcome.err)
        arguments[2:4] = at, 1 << 60
        tally.add(what, kept, f"status {outcome.status}: {outcome.err[:1000]}",
                  f"{driver} {' '.join(map(str, arguments))}")
        first = at + step


def run(tally, what, program, numbers, seed):
    folder = tally.folder()
    paths = write_models(program, folder)
    driver = pathlib.Path(program).parent.parent / "tests/DamageModels"
    # Half of the copies are of the two smallest files: all that there are, in full.
    for some in (paths[:2], paths[2:]):
        copies = sum(13 * path.stat().st_size + ROUNDS for path in some)  # as the driver makes them
        drive(tally, what, driver, folder, some, max(1, copies * 2 // len(numbers)), seed)
