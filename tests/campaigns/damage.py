"""Tries the program on damaged files; scripts/damage.sh tells of it all."""
import argparse
import collections
import importlib
import os
import pathlib
import shutil
import sys

from runs import ROOT, Tally

# Of each part: what is tried, how often by default, in full, and in the tests. More than there is
# is all of it.
Part = collections.namedtuple("Part", "what few full quick")
PARTS = {
    "scenes": Part("damaged scene files of 13 formats, exported", 600, 5000, 28),
    "hostile": Part("scenes made to do harm, exported", 1000, 1000, 29),
}


def main():
    parser = argparse.ArgumentParser(prog="damage.sh", allow_abbrev=False)
    parser.add_argument("--full", action="store_true", help="as often as scripts/robustness.sh does")
    parser.add_argument("--count", type=int, help="how often")
    parser.add_argument("--seed", type=int, default=0, help="other damages")
    parser.add_argument("--only", type=int, help="the try of that number alone")
    parser.add_argument("--program", required=True, type=os.path.realpath, help=argparse.SUPPRESS)
    # For a test: few tries.
    parser.add_argument("--quick", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--folder", type=pathlib.Path, default=ROOT / "build/damage",
                        help=argparse.SUPPRESS)
    parser.add_argument("--table", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("parts", nargs="*", metavar="PART", choices=[[], *PARTS])
    given = parser.parse_args()

    top = given.folder.resolve()
    shutil.rmtree(top, ignore_errors=True)
    top.mkdir(parents=True)
    tally = Tally(top)
    for name in given.parts or PARTS:
        part = PARTS[name]
        count = part.quick if given.quick else part.full if given.full else part.few
        numbers = range(given.count or count) if given.only is None else [given.only]
        tally.begin(part.what, f"scripts/damage.sh --seed {given.seed}" + " --full" * given.full)
        importlib.import_module(name).run(tally, part.what, given.program, numbers, given.seed)
    tally.summary()
    if given.table or not (given.parts or given.quick or given.only is not None):
        tally.write(given.table or ROOT / "build/robustness/damage.tsv")
    sys.exit(1 if tally.findings else 0)


if __name__ == "__main__":
    main()
