"""Tries the program with failing calls and in bad surroundings; scripts/faults.sh describes it.

    faults PROGRAM LIBRARY TAKEOVER [--quick] [--seed N] [--step N] [--only WORD] [--parts LIST]
        [--kinds LIST] [--table FILE]
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from calls import Calls
from kills import Kills
from runs import Tally
from surroundings import Surroundings
from takeover import TakeOver


def is_sanitized(program):
    """Whether the program has AddressSanitizer."""
    return b"__asan_init" in pathlib.Path(program).read_bytes()


def require_in_force(program, preload, folder):
    """Ends the script when the library counts no call: nothing would fail, and nothing be found."""
    counts = folder / "in-force"
    counts.write_bytes(bytes(16))
    extra = {"LD_PRELOAD": preload, "FAILING_KIND": "open", "FAILING_AT": "0", "FAILING_ERROR": "5",
             "FAILING_COUNTS": str(counts)}
    subprocess.run([program, "inspect", folder / "missing.kob"], env={**os.environ, **extra},
                   stderr=subprocess.DEVNULL, check=False)
    if not any(counts.read_bytes()):
        sys.exit(f"faults: {preload} is not in force in {program}")


def main():
    parser = argparse.ArgumentParser(prog="faults")
    parser.add_argument("program", type=os.path.realpath)
    parser.add_argument("library", type=os.path.realpath)
    parser.add_argument("takeover", type=os.path.realpath)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--seed", type=int, default=0)
    parser.add_argument("--step", type=int, default=1)
    parser.add_argument("--only", default="")
    parser.add_argument("--kinds", default="")
    parser.add_argument("--parts", default="calls,surroundings,kills,takeover")
    parser.add_argument("--table", type=pathlib.Path)
    given = parser.parse_args()

    top = pathlib.Path(tempfile.mkdtemp(prefix="mapexport-faults-"))
    tally = Tally(top)
    parts = given.parts.split(",")
    sanitized = is_sanitized(given.program)
    if sanitized:
        print("not tried: failing allocations, since the sanitizer has an allocator of its own")
    # LD_PRELOAD is cut at blanks, which the build folder's path may hold.
    failing = str(shutil.copy(given.library, top))
    require_in_force(given.program, failing, top)
    if "takeover" in parts and given.only in "takeover":
        TakeOver(given.program, str(shutil.copy(given.takeover, top)), sanitized, tally,
                 given.seed).try_all(given.quick, 40 if given.quick else 10_000)
    if "calls" in parts:
        calls = Calls(given.program, failing, sanitized, tally, 1 + given.seed % given.step,
                      given.step)
        calls.try_all(given.quick, given.only, given.kinds.split(",") if given.kinds else None)
    if "surroundings" in parts:
        Surroundings(given.program, tally).try_all(given.quick, given.only)
    if "kills" in parts:
        Kills(given.program, failing, tally).at_every_call(given.quick, given.only)
    tally.summary()
    if given.table:
        tally.write(given.table)
    if not tally.findings:
        shutil.rmtree(top)
    sys.exit(1 if tally.findings else 0)


if __name__ == "__main__":
    main()
