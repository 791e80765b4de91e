"""Shows what the program does when calls fail and surroundings are bad; scripts/faults.sh tells more.

    faults PROGRAM LIBRARY TAKEOVER [--quick] [--seed N] [--only WORD] [--parts LIST] [--table FILE]
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from calls import Calls
from kills import Kills, write_grid
from runs import Tally
from surroundings import Memory, Surroundings
from takeover import TakeOver


def sanitizer_of(program):
    """The sanitizer's runtime that the program is linked with, if any."""
    listed = subprocess.run(["ldd", program], stdout=subprocess.PIPE, text=True, check=True).stdout
    for line in listed.splitlines():
        if line.strip().startswith("libasan"):
            return line.split()[2]
    return ""


def require_in_force(program, library, sanitizer, folder):
    """Ends the script when the library counts no call: nothing would fail, and nothing be found."""
    counts = folder / "in-force"
    counts.write_bytes(bytes(16))
    extra = {"LD_PRELOAD": f"{sanitizer} {library}".strip(), "FAILING_KIND": "open", "FAILING_AT": "0",
             "FAILING_ERROR": "5", "FAILING_COUNTS": str(counts)}
    subprocess.run([program, "inspect", folder / "missing.kob"], env={**os.environ, **extra},
                   stderr=subprocess.DEVNULL, check=False)
    if not any(counts.read_bytes()):
        sys.exit(f"faults: {library} is not in force in {program}")


def main():
    parser = argparse.ArgumentParser(prog="faults")
    parser.add_argument("program", type=os.path.realpath)
    parser.add_argument("library", type=os.path.realpath)
    parser.add_argument("takeover", type=os.path.realpath)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--seed", type=int, default=0)
    parser.add_argument("--only", default="")
    parser.add_argument("--kinds", default="")
    parser.add_argument("--parts", default="calls,surroundings,kills,memory,takeover")
    parser.add_argument("--table", type=pathlib.Path)
    given = parser.parse_args()

    top = pathlib.Path(tempfile.mkdtemp(prefix="mapexport-faults-"))
    tally = Tally(top)
    parts = given.parts.split(",")
    sanitizer = sanitizer_of(given.program)
    if sanitizer:
        print("not tried: failing allocations, limits of memory and of open files, since the sanitizer "
              "has an allocator of its own and needs some of both")
    # What is to be preloaded is cut at blanks, which the build folder's path may hold.
    library = shutil.copy(given.library, top)
    require_in_force(given.program, library, sanitizer, top)
    if "takeover" in parts and given.only in "takeover":
        TakeOver(given.program, shutil.copy(given.takeover, top), sanitizer, tally,
                 given.seed).try_all(given.quick, 40 if given.quick else 10_000)
    if "calls" in parts:
        Calls(given.program, library, sanitizer, tally).try_all(
            given.quick, given.only, given.kinds.split(",") if given.kinds else None)
    if "surroundings" in parts:
        Surroundings(given.program, bool(sanitizer), tally).try_all(given.quick, given.only)
    # A sanitizer needs the address space.
    if "memory" in parts and not sanitizer and not given.quick:
        Memory(given.program, tally).try_all(write_grid, 40)
    if "kills" in parts:
        kills = Kills(given.program, library, sanitizer, tally, given.seed)
        kills.at_every_call(given.quick, given.only)
        kills.reader_dies_with_program()
        if not given.quick:
            kills.at_random_moments(50)
            kills.two_at_once(20)
            kills.held_folder_is_left_alone()
    tally.summary()
    if given.table:
        tally.write(given.table)
    if not tally.findings:
        shutil.rmtree(top)
    sys.exit(1 if tally.findings else 0)


if __name__ == "__main__":
    main()
