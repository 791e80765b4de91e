"""The commands that are tried with failing calls, and what may be left of their files afterwards."""
import hashlib
import json
import shutil
import struct

from runs import LOG, ROOT, contents, finish, messages_fault, run, run_well, start

OLD = b"an older file"
# With one of these warnings an output may differ from what an undisturbed run writes.
TOLD = ("settings are neither read nor saved", "the CXP database cannot be read",
        "the settings are not saved", ".mtl")


class Interposed:
    """A run of `case` in a folder of its own, with the library that counts calls of `kind` and does
    something at the one of that number, in the program or its child; `settings` say what."""

    def __init__(self, tally, program, case, preload, kind, number, child, settings):
        self.folder = tally.folder()
        self.work = self.folder / "work"
        self.work.mkdir()
        case.prepare(self.work)
        self.counts = self.folder / "counts"
        self.counts.write_bytes(bytes(16))
        extra = {"LD_PRELOAD": preload, "FAILING_COUNTS": str(self.counts), "FAILING_KIND": kind,
                 "FAILING_AT": str(number), **({"FAILING_CHILD": "1"} if child else {}), **settings}
        process = start(program, self.work, case.arguments, extra)
        self.pid = process.pid
        self.outcome = finish(process)
        write_repeat(self.folder, extra, program, case.arguments, self.outcome)

    def counted(self):
        """The calls of the program, and of its child."""
        return struct.unpack("QQ", self.counts.read_bytes())


def write_repeat(folder, extra, program, arguments, outcome):
    """Leaves beside the work how to do it again, and how it ended."""
    variables = "".join(f"{name}={value!r} " for name, value in extra.items())
    (folder / "repeat").write_text(f"{variables}{program} {' '.join(map(str, arguments))}\n{outcome}\n",
                                   errors="replace")


class Case:
    """A command in a folder with `inputs`. It writes `outputs`, one of which may be `settings`, one a
    `report`; with `existing` they are there before."""

    def __init__(self, name, arguments, inputs, outputs, settings=None, report=None, existing=False,
                 reader=False):
        self.name = name
        self.arguments = arguments
        self.inputs = inputs
        self.outputs = outputs
        self.settings = settings
        self.report = report
        self.existing = existing
        self.reader = reader  # a child process reads the scene, or converts the model
        self.before = {}
        self.after = {}
        self.log_lines = 0
        self.undisturbed = None

    def prepare(self, folder):
        for name, source in self.inputs.items():
            if isinstance(source, bytes):
                (folder / name).write_bytes(source)
            else:
                shutil.copyfile(source, folder / name)
        if self.existing:
            for name in (*self.outputs, *filter(None, (self.report,))):
                (folder / name).write_bytes(OLD)

    def learn(self, program, tally):
        """Runs the case undisturbed, for comparison with later runs."""
        folder = tally.folder()
        if self.existing and self.settings:
            # Settings that the run will change.
            run(program, folder, ["export", ROOT / "tests/golden/transparent.scene.json", "any.kob",
                                  "--settings", self.settings, "--coordinates", "max"])
            self.inputs[self.settings] = (folder / self.settings).read_bytes()
            shutil.rmtree(folder)
            folder.mkdir()
        self.prepare(folder)
        self.before = contents(folder)
        self.undisturbed = run(program, folder, self.arguments)
        self.after = contents(folder)
        self.log_lines = count_log_lines(folder)
        fault = messages_fault(self.undisturbed)
        missing = [name for name in self.outputs if name not in self.after]
        if fault or self.undisturbed.status != 0 or missing:
            raise SystemExit(f"{self.name}: fails undisturbed: {fault} {self.undisturbed}, "
                             f"without {missing}")
        shutil.rmtree(folder)

    def fault_of(self, outcome, folder, may_leave=False):
        """What is wrong about a run, if anything."""
        fault = messages_fault(outcome)
        now = contents(folder)
        # Where nothing can be renamed any more, the message says where the older file is.
        if not fault and outcome.status == 1 and "can't be put back" in outcome.err:
            return ""
        log = count_log_lines(folder)
        if not fault and outcome.status == 0 and log < self.log_lines and "log" not in outcome.err:
            fault = f"the log has {log} lines, which nobody is told"
        return fault or self._left(now, may_leave) or self._wrong_file(outcome, now)

    def _left(self, now, may_leave):
        left = set(now) - set(self.before) - set(self.after)
        # Only the removing of temporary files may leave them.
        if may_leave:
            left = {name for name in left if not name.split("/")[0].startswith(("mapexport-", "."))}
        return f"left {sorted(left)}" if left else ""

    def _wrong_file(self, outcome, now):
        status = outcome.status
        for name, content in self.before.items():
            if name not in (*self.outputs, self.settings, self.report) and now.get(name) != content:
                return f"changed {name}"
        usual = self.undisturbed.err.splitlines()
        told = any(part in line for line in outcome.err.splitlines() if line not in usual
                   for part in TOLD)
        if self.settings:
            # A new file is made before it is filled.
            whole = [self.before.get(self.settings), self.after[self.settings]]
            if now.get(self.settings) not in whole:
                return f"{self.settings} is torn"
            if status == 0 and now.get(self.settings) != whole[1] and not told:
                return "status 0 without a warning, but the settings are not saved"
        wanted = self.before if status == 1 else self.after
        for name in self.outputs:
            if now.get(name) == wanted.get(name) or (status == 0 and told and name in now):
                continue
            return f"status {status}, but {name} is {self._age(name, now)}"
        if status == 0 and outcome.out != self.undisturbed.out and not told:
            return f"status 0 with {len(outcome.out)} bytes on standard output"
        return self._report_fault(now, status) if self.report else ""

    def _age(self, name, now):
        if name not in now:
            return "missing"
        ages = {self.before.get(name): "the old one", self.after.get(name): "the new one"}
        return ages.get(now[name], f"neither old nor new, {len(now[name])} bytes")

    def _report_fault(self, now, status):
        if status == 1 and now.get(self.report) == self.before.get(self.report):
            return ""
        try:
            report = json.loads(now.get(self.report, b""))
        except ValueError:
            return f"{self.report} is missing or torn"
        if report["status"] != status:
            return f"status {status}, but {self.report} tells of {report['status']}"
        if status == 0 and report["sha256"] != hashlib.sha256(now[self.outputs[0]]).hexdigest():
            return f"{self.report} tells of another output"
        return ""


def count_log_lines(folder):
    path = folder / LOG
    return path.read_bytes().count(b"\n") if path.exists() else 0


def make_cases(program, tally):
    """Each case, learned when its turn comes."""
    golden = ROOT / "tests/golden"
    models = ROOT / "tests/models"
    scene = {"transparent.scene.json": golden / "transparent.scene.json"}
    room = {name: models / name for name in ("room.obj", "room.mtl")}
    folder = tally.folder()
    run_well(program, folder, ["export", *scene.values(), "model.kob", "--fresh", "--longest-list", "4"])
    model = {"model.kob": (folder / "model.kob").read_bytes()}
    shutil.rmtree(folder)
    export = ["export", "transparent.scene.json", "out.kob", "--settings", "set.reg", "--cxp",
              golden / "transparent.cxp", "--coordinates", "0", "--depfile", "out.d", "--report",
              "out.json", "--seed", "1",
              "--quiet"]
    cases = [
        Case("export over an older output", export, scene, ["out.kob", "out.d"],
             settings="set.reg", report="out.json", existing=True),
        Case("export to a new output", export, scene, ["out.kob", "out.d"], settings="set.reg",
             report="out.json"),
        Case("export of .obj", ["export", "room.obj", "out.qob", "--fresh", "--seed", "1", "--quiet",
                                "--longest-list", "12"],
             room, ["out.qob"], existing=True, reader=True),
        # Where memory runs out, libseccomp can loop until the read limit.
        Case("export of .gltf", ["export", "room.gltf", "out.qob", "--fresh", "--seed", "1",
                                 "--quiet", "--read-limit", "2"],
             {"room.gltf": models / "room.gltf"}, ["out.qob"], existing=True, reader=True),
        Case("scene -o", ["scene", "room.obj", "-o", "out.scene.json"], room, ["out.scene.json"],
             existing=True, reader=True),
        Case("inspect", ["inspect", "model.kob"], model, []),
        Case("inspect --json", ["inspect", "model.kob", "--json"], model, []),
        Case("convert to .glb", ["convert", "model.kob", "out.glb", "--quiet"], model, ["out.glb"],
             existing=True, reader=True),
        Case("convert to .obj", ["convert", "model.kob", "out.obj", "--quiet"], model,
             ["out.obj", "out.mtl"], existing=True, reader=True),
    ]
    for case in cases:
        case.learn(program, tally)
        yield case
