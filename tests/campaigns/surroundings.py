"""Files that can't grow, outputs that are no files."""
import os
import resource
import shutil

from cases import OLD, make_cases
from runs import ROOT, contents, messages_fault, run, run_well

SCENE = ROOT / "tests/golden/transparent.scene.json"


class Surroundings:
    def __init__(self, program, tally):
        self.program = program
        self.tally = tally

    def try_all(self, quick, only):
        self._targets()
        for case in make_cases(self.program, self.tally):
            if only in case.name and not (quick and case.name != "export over an older output"):
                self._file_sizes(case)

    def _file_sizes(self, case):
        what = "largest file size (RLIMIT_FSIZE)"
        self.tally.begin(what, "0, 1, 100, ... bytes, until it is enough")
        for value in (0, 1, 100, 500, 1000, 1500, 2000, 3000, 5000, 1 << 20):
            folder = self.tally.folder()
            case.prepare(folder)
            outcome = run(self.program, folder, case.arguments, preexec_fn=lambda: resource.setrlimit(
                resource.RLIMIT_FSIZE, (value, value)))  # pylint: disable=cell-var-from-loop
            self.tally.add(what, folder, case.fault_of(outcome, folder), f"{case.name}, {value}")
            if outcome == case.undisturbed:
                return

    def _targets(self):
        what = "outputs that are no plain files"
        self.tally.begin(what, "folders, pipes, devices, links of all kinds, names that are too long; "
                               "as the output, the depfile, the report, of scene -o and of convert")
        # What is made at the path, the name that is given (but for its ending), and the name at which
        # the new file must be, None where it must be refused.
        rows = [
            ("folder", lambda path: path.mkdir(), "t", None),
            ("pipe", os.mkfifo, "t", None),
            ("device", lambda path: path.symlink_to("/dev/full"), "t", None),
            ("dangling link", lambda path: path.symlink_to("there"), "t", "there"),
            ("link into a missing folder", lambda path: path.symlink_to("no/there"), "t", None),
            ("link to a file", self._link_to_file, "t", "sub/there"),
            ("link to itself", lambda path: path.symlink_to(path.name), "t", None),
            ("long name", None, "x" * 256, None),
            ("name as long as can be", None, "x" * 250, ""),
            ("missing folder", None, "no/t", None),
            ("file for a folder", lambda path: path.parent.write_bytes(OLD), "f/t", None),
            ("slash at the end", None, "t/", None),
        ]
        model = self.tally.folder()
        run_well(self.program, model, ["export", SCENE, "m.kob", "--fresh"])
        export = ["export", SCENE, "plain.kob", "--fresh", "--quiet"]
        commands = {
            "export": (lambda name: ["export", SCENE, name, "--fresh", "--quiet"], ".kob"),
            "--depfile": (lambda name: [*export, "--depfile", name], ".d"),
            "--report": (lambda name: [*export, "--report", name], ".js"),
            "scene -o": (lambda name: ["scene", SCENE, "-o", name], ".s"),
            "convert": (lambda name: ["convert", model / "m.kob", name, "--quiet"], ".glb"),
        }
        for kind, make, name, there in rows:
            for command, (arguments, ending) in commands.items():
                if command == "convert" and name.endswith("/"):
                    continue  # not a format
                folder = self.tally.folder()
                # The ending decides over the format.
                given = name.rstrip("/") + ending.rjust(5, "x") + "/" * name.endswith("/")
                if make:
                    make(folder / given)
                before = contents(folder)
                outcome = run(self.program, folder, arguments(given))
                fault = self._target_fault(outcome, folder, before, given,
                                           given if there == "" else there)
                self.tally.add(what, folder, fault, f"{kind}, {command}")
        shutil.rmtree(model)

    @staticmethod
    def _link_to_file(path):
        (path.parent / "sub").mkdir()
        (path.parent / "sub/there").write_bytes(OLD)
        path.symlink_to("sub/there")

    @staticmethod
    def _target_fault(outcome, folder, before, given, wanted):
        fault = messages_fault(outcome)
        if fault:
            return fault
        now = contents(folder)
        if wanted is None:
            if outcome.status != 1 or given not in outcome.err:
                return f"status {outcome.status}, the name is not told: {outcome.err!r}"
            return "" if now == before else f"left {sorted(set(now) - set(before))}"
        if outcome.status != 0:
            return f"status {outcome.status}: {outcome.err!r}"
        made = folder / wanted
        if made.is_symlink() or not made.is_file() or made.read_bytes() == OLD:
            return f"{wanted} is not the new file"
        if given != wanted and not (folder / given).is_symlink():
            return "the link is gone"
        left = set(now) - set(before) - {wanted, given, "plain.kob"}
        return f"left {sorted(left)}" if left else ""
