"""A reader that was taken over: a library in the confined process attacks, or hands over what it likes."""
import json
import os
import random
import struct
import subprocess
import sys
import tempfile
import threading
import time

import mutate
from cases import OLD, write_repeat
from runs import Outcome, contents, environment, in_parallel, messages_fault, run_well

WHAT = "a taken-over reader"
OBJ = "mtllib a.mtl\nv 0 0 0\nv 10 0 0\nv 0 10 0\nusemtl Red\nf 1 2 3\n"
OUTPUTS = ("out.kob", "out.d", "out.json")
EXPORT = ["export", "a.obj", "out.kob", "--fresh", "--seed", "1", "--quiet", "--depfile", "out.d",
          "--report", "out.json"]
SCENE = ["scene", "a.obj", "-o", "out.kob"]
# What the limit of one second, ten times that on the clock, and five seconds come to.
LONGEST = 1 * 10 + 5
# Seconds and bytes of a run that nothing holds up, on a machine that is busy otherwise.
SOON, MEMORY = 20, 768 << 20
SLOW_ATTACKS = 3
RESULT_SIZE = 256


def number(value):
    return struct.pack("<Q", value % (1 << 64))


def text(value):
    data = value if isinstance(value, bytes) else value.encode()
    return number(len(data)) + data


def listed(items, count=None):
    return number(len(items) if count is None else count) + b"".join(items)


def remark(line, code="axes", kind=1, count=1, stands=1, nodes=(), node_count=None):
    return (number(kind) + text(code) + text(line) + number(count) + number(stands) +
            listed([text(node) for node in nodes], node_count))


def message(remarks=(), left_out=(), files=()):
    return listed(remarks) + listed(left_out) + listed([text(file) for file in files])


def document(root='{"name":"Scene Root"}', materials=""):
    start = '{"format":"mapexport-scene","version":1'
    if materials:
        start += f',"materials":[{materials}]'
    return (start + f',"root":{root}}}').encode()


def binary(json_bytes, lists=b""):
    """A binary scene file."""
    header = struct.pack("<16sIIQQ", b"mapexport-scene", 1, 0, len(json_bytes), len(lists))
    return header + json_bytes + bytes(-(len(header) + len(json_bytes)) % 16) + lists


def scene(*parts, lists=b"", **named):
    return binary(document(*parts, **named), lists)


def triangle_lists():
    return struct.pack("<9f12x5I", 0, 0, 0, 10, 0, 0, 0, 10, 0, 0, 1, 2, 0, 0)


def children(nodes):
    return '{"children":[' + nodes + "]}"


EMPTY = message()
SOUND = message([remark("the file has no axes")], [remark("1 bone", "left-out-bones")], ["a.mtl"])
ESCAPES = "\x1b[31m\n\r\x07\x00\x7f\u009b1m\u202e"
TRIANGLE = ('{"name":"Floor","material":0,"mesh":{"vertices":{"offset":0,"count":3},'
            '"faces":{"offset":48,"count":1}}}')
MOST = (1 << 64) - 1


# Of these nothing may be taken.
REFUSED = [
    ("nothing", b"", b""), ("no message", scene(), b""), ("no scene", b"", EMPTY),
    ("more than a message", scene(), SOUND + b"x"), ("less than a message", scene(), SOUND[1:]),
    ("remarks without end", scene(), number(MOST)),
    ("4,097 files", scene(), message(files=["a"] * 4097)),
    ("a path that is too long", scene(), message(files=["a" * 4096])),
    ("no path", scene(), message(files=[""])),
    ("a path with NUL", scene(), message(files=["a\0b"])),
    ("4,097 remarks", scene(), message([remark("a")] * 4097)),
    ("65 codes", scene(), message([remark("a", f"code-{i}") for i in range(65)])),
    ("nodes without end", scene(), message([remark("a", node_count=MOST)])),
    ("too many nodes", scene(), message([remark("a", nodes=[""] * 140_000)])),
    ("a long code", scene(), message([remark("a", "a" * 65)])),
]


def crafted(large):
    """Scenes, messages and exit statuses made to do harm; `large` ones only if wanted."""
    size = 3_000_000 if large else 100_000
    return [
        ("4,096 long paths", scene(), message(files=["a/" * 2047] * 4096), 0),
        ("a path with escapes", scene(), message(files=[ESCAPES.replace("\0", "")]), 0),
        ("outputs as files", scene(), message(files=["out.kob", "./out.d", "out.json"]), 0),
        ("devices as files", scene(), message(files=["/dev/stdin", "/proc/self/mem", "/", "."]), 0),
        ("long remarks", scene(), message([remark("a" * 10_000)] * 4096), 0),
        ("texts with escapes", scene(), message([remark(ESCAPES, ESCAPES, nodes=[ESCAPES])],
                                                [remark("a", "left-out-" + ESCAPES)]), 0),
        ("texts that are not UTF-8", scene(), message([remark(b"\xff\xc0\x80", b"\xff")]), 0),
        ("counts that wrap", scene(), message(
            [remark("a", count=MOST, stands=MOST)] * 20,
            [remark("a", "left-out-a", count=MOST)] * 2), 0),
        ("a long name", scene(children('{"name":"' + "a" * size + '"}')), EMPTY, 0),
        ("many nodes", scene(children(",".join(["{}"] * size))), EMPTY, 0),
        ("many meshes", scene(children(",".join(['{"mesh":{}}'] * size))), EMPTY, 0),
        ("a large mesh of many nodes", scene(
            children(",".join(['{"mesh":{"vertices":{"offset":0,"count":%d}}}' % (size // 3)] * 60_000)),
            lists=bytes(size * 4)), EMPTY, 0),
        ("the refusal's escapes", b"", ESCAPES.encode() * 10, 71),
        ("a long refusal", b"", b"a" * 1_000_000, 71),
        ("a long reason", b"", ESCAPES.encode() * 1_000, 73),
        *[(f"status {status}", scene(), SOUND, status) for status in (1, 71, 72, 73, 77, 255)],
    ]


class TakeOver:
    """`preload` is what takes the reader over; `sanitized` when the program has AddressSanitizer."""

    def __init__(self, program, preload, sanitized, tally, seed):
        self.program = program
        self.preload = preload
        self.sanitized = sanitized
        self.tally = tally
        self.seed = seed
        self.undisturbed = {}

    def try_all(self, quick, count):
        """Every attack, and `count` damaged hand-overs."""
        folder = self.tally.folder()
        self._prepare(folder)
        run_well(self.program, folder, EXPORT)
        self.undisturbed = contents(folder)
        state = json.loads(self.undisturbed["out.json"])["confinement"]
        if set(state.values()) != {"in force"}:
            print(f"{WHAT}: not tried: the system does not confine it: {state}")
            return
        attacks = self._count_attacks()
        self.tally.begin(WHAT, f"{attacks} attacks from within the confined process: files, other "
                               "processes, signals, network, terminals, descriptors, limits, a false "
                               f"status; {count} damaged hand-overs and some made to do harm: no "
                               "attack succeeds, nothing but outputs is changed, at most one error "
                               "line, no control characters")
        self._false_status()
        # The limits end those that come first.
        slow = range(1 if quick else SLOW_ATTACKS)
        in_parallel(self._attack, [*slow, *range(SLOW_ATTACKS, attacks)])
        in_parallel(lambda row: self._hand_over(*row, 0, refused=True), REFUSED)
        in_parallel(lambda row: self._hand_over(*row), crafted(not quick))
        in_parallel(self._damaged, range(count))

    # Attacks

    def _count_attacks(self):
        folder = self.tally.folder()
        outcome, result, _, _ = self._run(folder, EXPORT, {"TAKEN_OVER": str(1 << 20)})
        if result[:1] != "n":
            sys.exit(f"faults: the library does not take the reader over: {outcome} {result!r}")
        return int(result[1:])

    def _attack(self, index):
        folder = self.tally.folder()
        slow = index < SLOW_ATTACKS
        outcome, result, seconds, _ = self._run(
            folder, EXPORT + ["--read-limit", "1"] * slow, {"TAKEN_OVER": str(index)})
        letter, name = result[:1], result[1:]
        fault = self._fault(outcome, folder / "work")
        if letter not in ("a", "r") or not name:
            fault = fault or f"it succeeded, or was not tried: {result!r}"
        if not fault and letter == "r" and outcome.status != 0:
            fault = f"the reader did not go on: {outcome}"
        if not fault and letter == "a" and outcome.status != 1:
            fault = f"the reader ended, but the status is {outcome.status}"
        if not fault and seconds > (LONGEST + 2 if slow else SOON):
            fault = f"it took {seconds:.1f} s"
        self.tally.add(WHAT, folder, fault, f"attack {index}, {name}")

    def _false_status(self):
        """A kernel that confines nothing, and a reader that says that all is in force."""
        folder = self.tally.folder()
        outcome, _, _, _ = self._run(folder, EXPORT, {"TAKEN_OVER": "-1", "TAKEN_KERNEL": "1"},
                                     scene(), EMPTY)
        fault = self._fault(outcome, folder / "work", False)
        told = json.loads((folder / "work/out.json").read_bytes()).get("confinement", {})
        if not fault and (told.get("seccomp") != "Function not implemented"
                          or told.get("landlock") != "Function not implemented"
                          or "reader-not-confined" not in (folder / "work/out.json").read_text()):
            fault = f"the report says {told}"
        self.tally.add(WHAT, folder, fault, "a false status")

    # Hand-overs

    def _hand_over(self, name, scene_bytes, message_bytes, status, arguments=None, refused=False):
        folder = self.tally.folder()
        outcome, result, seconds, memory = self._run(
            folder, arguments or EXPORT, {"TAKEN_OVER": "-1", "TAKEN_STATUS": str(status)},
            scene_bytes, message_bytes)
        fault = self._fault(outcome, folder / "work")
        if not fault and result[:1] != "a":
            fault = "nothing was handed over"
        if not fault and refused and outcome.status != 1:
            fault = f"status {outcome.status}"
        if not fault and seconds > SOON:
            fault = f"it took {seconds:.1f} s"
        if not fault and memory > MEMORY and not self.sanitized:
            fault = f"it took {memory >> 20} MiB"
        if not fault and len(outcome.err) > 1 << 20:
            fault = f"standard error has {len(outcome.err)} characters"
        self.tally.add(WHAT, folder, fault, name)

    def _damaged(self, index):
        rng = random.Random(f"{self.seed}/takeover/{index}")
        nodes = ",".join([TRIANGLE] * rng.choice((1, 2, 20)))
        json_bytes = document(children(nodes), '{"name":"Red","diffuse":[1,0,0]}')
        lists = triangle_lists()
        said = SOUND
        damaged = rng.choice(("json", "lists", "file", "message"))
        if damaged == "json":
            json_bytes = mutate.damage(json_bytes, rng)
        if damaged == "lists":
            lists = mutate.damage(lists, rng)
        whole = binary(json_bytes, lists)
        if damaged == "file":
            whole = mutate.damage(whole, rng)
        if damaged == "message" or rng.random() < 0.4:
            said = self._damaged_message(rng)
        status = rng.choice((0,) * 12 + (71, 72, 73, rng.randrange(256)))
        self._hand_over(f"seed {self.seed}, hand-over {index}", whole, said, status,
                        rng.choice((EXPORT, SCENE)))

    @staticmethod
    def _damaged_message(rng):
        if rng.random() < 0.4:
            return mutate.damage(SOUND, rng)
        # Well-formed, with wrong contents.
        word = rng.choice(("a", ESCAPES, "a" * rng.choice((64, 4095, 4096, 9000)), "", "out.kob"))
        remarks = [remark(word, rng.choice(("axes", word)), rng.choice((0, 1, MOST)),
                          rng.choice((0, 1, MOST)), rng.choice((0, 1, MOST)))
                   ] * rng.choice((0, 1, 11, 4096))
        left_out = [remark(word, "left-out-" + word[:40], 1, rng.choice((1, MOST)))
                    ] * rng.choice((0, 1, 2, 70))
        said = message(remarks, left_out, [word] * rng.choice((0, 1, 9, 4097)))
        at = 8 * rng.randrange(len(said) // 8)
        value = number(rng.choice((0, 1, 1 << 31, 1 << 32, 1 << 63, MOST, len(said))))
        return said if rng.random() < 0.7 else said[:at] + value + said[at + 8:]

    # Runs

    @staticmethod
    def _prepare(folder):
        (folder / "a.obj").write_text(OBJ)
        (folder / "a.mtl").write_text("newmtl Red\nKd 1 0 0\n")
        for name in OUTPUTS:
            (folder / name).write_bytes(OLD)

    def _run(self, folder, arguments, settings, scene_bytes=b"", message_bytes=b""):
        """The outcome, what the library says, seconds and bytes."""
        work = folder / "work"
        if not work.exists():
            work.mkdir()
            self._prepare(work)
        files = {"TAKEN_RESULT": bytes(RESULT_SIZE), "TAKEN_SCENE": scene_bytes,
                 "TAKEN_MESSAGE": message_bytes}
        extra = {"LD_PRELOAD": self.preload, "TAKEN_AT": "a.obj", **settings}
        for name, data in files.items():
            (folder / name).write_bytes(data)
            extra[name] = str(folder / name)
        master, terminal = os.openpty()
        with open(folder / "inherited", "wb") as inherited:
            extra["TAKEN_TERMINAL"] = os.ttyname(terminal)
            extra["TAKEN_DESCRIPTOR"] = str(inherited.fileno())
            outcome, seconds, memory = measured(self.program, work, arguments, extra,
                                                (inherited.fileno(),))
        os.close(master)
        os.close(terminal)
        write_repeat(folder, extra, self.program, arguments, outcome)
        result = (folder / "TAKEN_RESULT").read_bytes().split(b"\0")[0].decode()
        if (folder / "inherited").read_bytes():
            result = "san inherited descriptor"
        return outcome, result, seconds, memory

    def _fault(self, outcome, work, confined=True):
        """What is wrong, whatever was tried."""
        fault = messages_fault(outcome)
        now = contents(work)
        if set(now) != set(self.undisturbed):
            fault = fault or f"other files: {sorted(set(now) ^ set(self.undisturbed))}"
        for name in now:
            # A failure is in the report, too.
            changes = name in OUTPUTS if outcome.status == 0 else name == "out.json"
            before = OLD if name in OUTPUTS else self.undisturbed.get(name)
            if not changes and now[name] != before:
                fault = fault or f"changed {name}"
        report = {} if now["out.json"] == OLD else json.loads(now["out.json"])
        if not fault and report.get("status", outcome.status) != outcome.status:
            fault = f"the report says {report['status']}"
        if not fault and confined and set(report.get("confinement", {}).values()) - {"in force"}:
            fault = f"the report says {report['confinement']}"
        return fault


def measured(program, folder, arguments, extra, descriptors):
    """The outcome, seconds, and the most memory that a process of it had."""
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        begin = time.monotonic()
        process = subprocess.Popen([program, *arguments], cwd=folder,
                                   env=environment(folder, extra), stdin=subprocess.DEVNULL,
                                   stdout=out, stderr=err, start_new_session=True,
                                   pass_fds=descriptors)
        timer = threading.Timer(4 * SOON, process.kill)
        timer.start()
        _, end, used = os.wait4(process.pid, 0)
        seconds = time.monotonic() - begin
        timer.cancel()
        process.returncode = os.waitstatus_to_exitcode(end)
        out.seek(0)
        err.seek(0)
        outcome = Outcome(process.returncode, out.read(), err.read().decode(errors="surrogateescape"))
        return outcome, seconds, used.ru_maxrss << 10
