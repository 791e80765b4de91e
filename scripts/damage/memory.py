"""How much memory `inspect` takes for large files, sound and damaged: its bound, measured."""
import json
import struct
import sys

import mutate
import runs

BASE = 64 << 20
TIMES = 4
SECONDS = 300


def number(*values):
    return struct.pack(f"<{len(values)}I", *values)


def text(string):
    return number(len(string) + 1) + string + b"\0"


def record(code, version, name, body):
    return number(len(body), code) + text(b"Version") + number(version) + text(name) + body


def chunk(code, name, body):
    return number(len(body), code) + text(name) + body


def model(materials, groups):
    """A file of these records."""
    return (text(b"BeginModel")
            + chunk(8, b"MaterialList", number(len(materials)) + b"".join(materials))
            + chunk(7, b"GeometryList", number(len(groups)) + b"".join(groups))
            + text(b"EndModel"))


def material(name=b""):
    return record(2, 1, name, text(b"") + struct.pack("<ffi", 0, 0, 2) + bytes(48 + 4 + 1))


def inner(vertices, batches):
    return record(3, 2, b"", number(vertices) + bytes(12 * vertices)
                  + number(len(batches)) + b"".join(batches))


def batch():
    """One of a single triangle."""
    return number(0xFFFFFFFF, 1) + bytes(16 + 6 + 6) + number(1) + bytes(12 + 8 + 16)


def many_batches(count):
    return "many.qob", model([], [inner(1, [batch()] * count)])


def many_materials(count):
    return "many.qob", model([material()] * count, [])


def long_names(count):
    return "many.qob", model([material(b"m" * 1000)] * count, [])


def level(triangles, layout):
    """A level of that many triangles, exported from a scene file."""
    def make(program, folder):
        nodes = []
        side = 50  # a node is a field of squares
        per_node = 2 * side * side
        for k in range(triangles // per_node):
            vertices = [[side * 100 * k + 100 * x, 100 * y, (x * y + k) % 7]
                        for y in range(side + 1) for x in range(side + 1)]
            faces = []
            for y in range(side):
                for x in range(side):
                    a = y * (side + 1) + x
                    faces += [[a, a + 1, a + side + 2], [a, a + side + 2, a + side + 1]]
            nodes.append({"name": f"Field {k}", "mesh": {"vertices": vertices, "faces": faces}})
        scene = {"format": "mapexport-scene", "version": 1,
                 "root": {"name": "Scene Root", "children": nodes}}
        (folder / "level.scene.json").write_text(json.dumps(scene))
        outcome = runs.call([program, "export", "level.scene.json", "level." + layout, "--fresh",
                             "--seed", "0", "--quiet", "--no-weld"], folder, SECONDS)
        if outcome.status not in (0, 4):
            raise SystemExit(f"damage: the large level is not exported: {outcome.errors!r}")
        return "level." + layout
    return make


def made(make, count):
    def write(program, folder):
        name, data = make(count)
        (folder / name).write_bytes(data)
        return name
    return write


# A name, and what makes the file. Sizes are such that the part in proportion to them counts.
SOURCES = [
    ("level, .qob", level(500_000, "qob")),
    ("level, .kob", level(500_000, "kob")),
    ("batches of one triangle", made(many_batches, 530_000)),
    ("materials", made(many_materials, 270_000)),
    ("materials with long names", made(long_names, 30_000)),
]
# What is done to it: nothing; then damages at the beginning, which leave most of the file.
DAMAGES = ("sound", "half of it", "a count", "some bytes")


def damage(data, kind, rng):
    if kind == "half of it":
        del data[len(data) // 2:]
    elif kind == "a count":
        at = rng.randrange(120, 400)
        data[at:at + 4] = rng.choice(mutate.FIELDS).to_bytes(4, "little")
    elif kind == "some bytes":
        for _ in range(200):
            data[rng.randrange(len(data))] = rng.randrange(256)


# A process counts the memory of the one that started it as its own peak, as long as both were one.
# So a small one starts the program, and prints what it took.
STARTER = """
import os, sys
child = os.fork()
if child == 0:
    os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
    os.execv(sys.argv[1], sys.argv[1:])
_, status, usage = os.wait4(child, 0)
print(usage.ru_maxrss * 1024)
code = os.waitstatus_to_exitcode(status)
if code < 0:
    os.kill(os.getpid(), -code)
sys.exit(code)
"""


def measure(program, folder, name):
    """The largest size that inspecting took, and what is wrong with it."""
    largest, fault = 0, ""
    bound = BASE + TIMES * (folder / name).stat().st_size
    for options in ([], ["--json"]):
        outcome = runs.call([sys.executable, "-I", "-c", STARTER, program, "inspect", name,
                             *options], folder, SECONDS, keep_output=True)
        fault = fault or runs.fault_of_end(outcome, (0, 1, 4))
        peak = int(outcome.out or 0)
        largest = max(largest, peak)
        if peak > bound:
            fault = fault or (f"inspect {' '.join(options)} takes {peak >> 20} MiB of "
                              f"{bound >> 20} for {name}")
    return largest, fault


def run(campaign, programs, numbers):
    program = programs.release

    def attempt(i, rng, folder):
        what, make = SOURCES[i]
        name = make(program, folder)
        data = (folder / name).read_bytes()
        faults = []
        for kind in DAMAGES:
            copy = bytearray(data)
            damage(copy, kind, rng)
            (folder / name).write_bytes(copy)
            largest, fault = measure(program, folder, name)
            print(f"memory {i}, {what}, {kind}: {largest >> 20} MiB for {len(copy) >> 20} MiB",
                  flush=True)
            faults += [f"{kind}: {fault}"] if fault else []
        return what, "measured", "; ".join(faults)

    tries, faults = campaign.run([i for i in numbers if i < len(SOURCES)], attempt)
    return tries * len(DAMAGES) * 2, faults
