"""Lets every single call of a kind fail, in every case."""
import errno

from cases import Interposed, make_cases
from runs import in_parallel

SHORT = 0
# Kind, the ways in which a call of it fails, whether all later ones fail too.
FAILURES = [
    ("open", errno.EMFILE, False), ("open", errno.EACCES, False), ("open", errno.EMFILE, True),
    ("read", errno.EIO, False), ("read", SHORT, False), ("read", errno.EIO, True),
    ("write", errno.ENOSPC, False), ("write", errno.EIO, False), ("write", SHORT, False),
    ("write", errno.EINTR, False), ("write", errno.ENOSPC, True),
    ("sync", errno.EIO, False), ("sync", errno.EIO, True),
    ("close", errno.EIO, False), ("close", errno.EINTR, False), ("close", errno.EIO, True),
    ("rename", errno.EIO, False), ("rename", errno.EPERM, False), ("rename", errno.EIO, True),
    ("make", errno.ENOSPC, False), ("make", errno.EACCES, True),
    ("map", errno.ENOMEM, False), ("truncate", errno.EIO, False),
    ("lock", errno.ENOLCK, False), ("lock", errno.ENOLCK, True),
    ("process", errno.EAGAIN, False), ("process", errno.EMFILE, True),
    ("stat", errno.EIO, False), ("stat", errno.EACCES, False), ("stat", errno.EIO, True),
    ("remove", errno.EIO, False), ("remove", errno.EIO, True),
    ("alloc", errno.ENOMEM, False), ("alloc", errno.ENOMEM, True),
]
NAMES = {"open": "opening files and folders", "read": "reading", "write": "writing",
         "sync": "syncing", "close": "closing", "rename": "renaming and linking",
         "make": "making files and folders", "map": "mapping", "truncate": "truncating",
         "lock": "locking", "process": "processes, pipes and memory files",
         "stat": "asking for and setting rights and kinds", "remove": "removing",
         "alloc": "allocations"}
# Cases of a quick run.
QUICK = {"export over an older output": FAILURES,
         "export of .obj": [row for row in FAILURES if row[0] in ("process", "read", "alloc")],
         "convert to .obj": [row for row in FAILURES if row[0] in ("rename", "write")]}


class Calls:
    """`preload` is the library that counts calls; `sanitized` when the program has AddressSanitizer."""

    def __init__(self, program, preload, sanitized, tally, first, step):
        self.program = program
        self.preload = preload
        self.sanitized = sanitized  # which has an allocator of its own
        self.tally = tally
        self.first = first
        self.step = step

    def try_all(self, quick, only, kinds):
        """Every call of `kinds`, None for all, or each `step`th from `first` on; with `quick` some of
        them, evenly spread."""
        for case in make_cases(self.program, self.tally):
            if only in case.name and not (quick and case.name not in QUICK):
                self._try_case(case, quick, kinds)

    def _try_case(self, case, quick, kinds):
        counts = {}
        for kind, error, on in QUICK[case.name] if quick else FAILURES:
            if (kind == "alloc" and self.sanitized) or (kinds and kind not in kinds):
                continue
            if quick and kind in ("open", "read", "write", "close", "stat", "remove") and (
                    on or error in (errno.EACCES, errno.EINTR)):
                continue
            if kind not in counts:
                counts[kind] = self._run(case, kind, 0, error, False, False).counted()
            for child in (False, True)[:1 + case.reader]:
                self._try_kind(case, kind, error, on, child, counts[kind][child], quick)

    def _try_kind(self, case, kind, error, on, child, count, quick):
        what = f"failing calls: {NAMES[kind]}"
        self.tally.begin(what, "every single call fails once, in each command, in the program and in "
                               "the process that reads or converts; then it and all later ones")
        numbers = range(self.first, count + 1, self.step)
        if quick and count > 10:
            numbers = sorted({1 + i * (count - 1) // 4 for i in range(5)})
            if kind == "alloc" and not on:
                # Among them those after the files are in their places.
                numbers = sorted({*numbers, *range(1, count, count // 15), *range(count - 8, count)})

        def try_one(number):
            trial = self._run(case, kind, number, error, on, child)
            fault = case.fault_of(trial.outcome, trial.work, may_leave=kind == "remove")
            name = errno.errorcode.get(error, "short")
            where = "reader's " if child else ""
            self.tally.add(what, trial.folder, fault,
                           f"{case.name}, {where}{kind} {number} of {count}, {name}"
                           + (" from then on" if on else ""))

        in_parallel(try_one, numbers)

    def _run(self, case, kind, number, error, on, child):
        settings = {"FAILING_ERROR": str(error)} | ({"FAILING_ON": "1"} if on else {})
        return Interposed(self.tally, self.program, case, self.preload, kind, number, child, settings)
