"""Damaged model files: many in one process under the sanitizers."""
import pathlib
import re

import runs

GOLDEN = ("collision", "materials", "two-sided")
MOST_FINDINGS = 20
ROUNDS = 1000
SECONDS = 3600
COPIES = re.compile(rb"(\d+) copies, (\d+) sound, (\d+) files converted")


def write_models(program, folder):
    """Small model files of both layouts, the two smallest first."""
    folder.mkdir(parents=True, exist_ok=True)
    scenes = [runs.ROOT / "docs/format-example.scene.json"]
    scenes += [runs.ROOT / f"tests/golden/{name}.scene.json" for name in GOLDEN]
    written = []
    for scene in scenes:
        for layout in ("kob", "qob"):
            path = folder / f"{scene.name.split('.')[0]}.{layout}"
            outcome = runs.call([program, "export", scene, path.name, "--fresh", "--seed", "0",
                                 "--no-weld", "--quiet"], folder)
            if outcome.status != 0:
                raise SystemExit(f"damage: no model files to damage: {outcome.errors!r}")
            written.append(path)
    return written


def copies_of(paths):
    """How many copies the driver makes of the files; see DamageModels."""
    return sum(13 * path.stat().st_size + ROUNDS for path in paths)


def drive(campaign, driver, paths, step):
    """Runs the driver over each `step`-th copy, on behind each that it does not survive."""
    folder = runs.KEPT / campaign.part
    tried = findings = first = 0
    while findings < MOST_FINDINGS:
        outcome = runs.call([driver, campaign.seed, ROUNDS, first, step, folder / "progress",
                             *paths], folder, SECONDS, keep_output=True)
        done = COPIES.search(outcome.out)
        if outcome.status == 0 and done and int(done[1]) > 0:
            print(f"models: {done[0].decode()}, each {step}-th of {len(paths)} files", flush=True)
            return tried + int(done[1]), findings
        at = int((folder / "progress").read_text())
        tried += (at - first) // step + 1
        findings += 1
        report = folder / f"{at}.txt"
        report.write_bytes(outcome.errors)
        print(f"models {at}: status {outcome.status}: {outcome.errors[:1000].decode('replace')}\n"
              f"  all of it in {report}\n"
              f"  repeat: {driver} {campaign.seed} {ROUNDS} {at} {1 << 60} {folder / 'progress'} "
              + " ".join(str(path) for path in paths), flush=True)
        first = at + step
    return tried, findings


def run(campaign, programs, numbers):
    paths = write_models(programs.sanitize, runs.KEPT / campaign.part)
    driver = pathlib.Path(programs.sanitize).parent.parent / "tests/DamageModels"
    # Half of the copies are of the two smallest files: all that there are, in full.
    tried = findings = 0
    for some in (paths[:2], paths[2:]):
        step = max(1, copies_of(some) * 2 // len(numbers))
        more, found = drive(campaign, driver, some, step)
        tried, findings = tried + more, findings + found
    return tried, findings
