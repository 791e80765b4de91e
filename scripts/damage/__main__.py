"""Tries the program on damaged files; scripts/damage.sh tells of it all."""
import argparse
import collections
import importlib
import pathlib
import sys

import runs

# Of each part: what is tried, how often by default, in full, and in the tests. More than there is
# is all of it; 0 leaves it out.
Part = collections.namedtuple("Part", "what few full quick")
PARTS = {
    "scenes": Part("damaged scene files of 13 formats, exported", 600, 5000, 28),
    "hostile": Part("scenes made to do harm, exported", 1000, 1000, 1000),
    "models": Part("damaged model files, read, printed, converted and shown in one process, under"
                   " sanitizers", 2000, 20000, 400),
    "commands": Part("damaged model files in inspect, convert and view, under sanitizers", 60, 600,
                     6),
    "memory": Part("large model files, sound and damaged, inspected within 64 MiB + 4 times their"
                   " size", 1000, 1000, 0),
    "cxp": Part("damaged material databases in an export", 200, 1000, 10),
    "settings": Part("damaged settings files in an export", 200, 1000, 10),
}
TABLE = runs.ROOT / "build/robustness/damage.tsv"


def record(what, inputs, findings, how):
    """Puts a row into the table that scripts/robustness.sh renders, in place of an older one. A
    part that was never run has one, too, with no inputs."""
    TABLE.parent.mkdir(parents=True, exist_ok=True)
    rows = {part.what: f"0\t0\tscripts/damage.sh --full {name}" for name, part in PARTS.items()}
    if TABLE.exists():
        rows |= dict(row.split("\t", 1) for row in TABLE.read_text().splitlines())
    rows[what] = f"{inputs}\t{findings}\t{how}"
    TABLE.write_text("".join(f"{key}\t{row}\n" for key, row in rows.items()))


def main():
    parser = argparse.ArgumentParser(prog="damage.sh", allow_abbrev=False)
    parser.add_argument("--full", action="store_true", help="as often as the table of docs/ says")
    parser.add_argument("--count", type=int, help="how often")
    parser.add_argument("--seed", type=int, default=0, help="other damages")
    parser.add_argument("--only", type=int, help="the try of that number alone")
    parser.add_argument("--sanitizers", action="store_true", help="scenes with the sanitize build")
    parser.add_argument("--release", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--sanitize", required=True, help=argparse.SUPPRESS)
    # For a test: few tries, in a folder of its own, which leave no row in the table.
    parser.add_argument("--quick", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("parts", nargs="*", metavar="PART", help=", ".join(PARTS))
    given = parser.parse_args()
    unknown = set(given.parts) - set(PARTS)
    if unknown:
        parser.error(f"no such part: {', '.join(sorted(unknown))}; there are {', '.join(PARTS)}")
    if given.quick:
        runs.KEPT = given.quick.resolve()

    programs = argparse.Namespace(release=given.release, sanitize=given.sanitize, quick=given.quick,
                                  chosen=given.sanitize if given.sanitizers else given.release)
    all_findings = 0
    for name in given.parts or PARTS:
        part = PARTS[name]
        count = part.quick if given.quick else part.full if given.full else part.few
        count = given.count or count
        if count == 0:
            continue
        command = f"scripts/damage.sh --seed {given.seed}"
        command += " --sanitizers" if given.sanitizers else ""
        folder = name + ("-sanitizers" if given.sanitizers else "")
        campaign = runs.Campaign(name, folder, command, given.seed)
        numbers = range(count) if given.only is None else [given.only]
        inputs, findings = importlib.import_module(name).run(campaign, programs, numbers)
        all_findings += findings
        if given.only is None and not given.quick:
            size = " --full" if given.full else f" --count {given.count}" if given.count else ""
            what = part.what + (", under sanitizers" if given.sanitizers else "")
            record(what, inputs, findings, f"{command}{size} {name}")
    print(f"{all_findings} findings")
    sys.exit(1 if all_findings else 0)


if __name__ == "__main__":
    main()
