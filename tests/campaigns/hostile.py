"""Scenes made to do harm: they take memory, never end, lead elsewhere or steer a terminal."""
import base64
import json
import os
import struct
import zipfile

from exports import fault_of_export
from runs import in_parallel

OBJ = "mtllib {}\nv 0 0 0\nv 10 0 0\nv 0 10 0\nf 1 2 3\n"
POSITIONS = struct.pack("<9f", 0, 0, 0, 10, 0, 0, 0, 10, 0)
ACCESSOR = {"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
            "min": [0, 0, 0], "max": [10, 10, 0]}
SOUND, REFUSED, EITHER = (0,), (1,), (0, 1)


def write(name, text):
    """A case's scene as a file of that text."""
    data = text if isinstance(text, bytes) else text.encode()

    def make(folder):
        (folder / name).write_bytes(data)
        return name
    return make


def gltf(**changes):
    """A triangle as a glTF document whose members are replaced by `changes`."""
    document = {
        "asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
        "nodes": [{"mesh": 0, "name": "Floor"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}],
        "accessors": [ACCESSOR],
        "bufferViews": [{"buffer": 0, "byteLength": 36}],
        "buffers": buffer(data_uri(POSITIONS)),
    }
    return json.dumps(document | changes)


def data_uri(data):
    return "data:application/octet-stream;base64," + base64.b64encode(data).decode()


def buffer(uri, length=36):
    return [{"byteLength": length, "uri": uri}]


def beside(name, text, make_other):
    """A scene with something else in its folder or near it."""
    def make(folder):
        make_other(folder)
        return write(name, text)(folder)
    return make


def fifo(name):
    return lambda folder: os.mkfifo(folder / name)


def link(name, target):
    return lambda folder: (folder / name).symlink_to(target)


def package_3mf(pieces, *arguments):
    """A 3MF file whose model part is made of pieces, so that a huge one takes no memory here."""
    def make(folder):
        with zipfile.ZipFile(folder / "box.3mf", "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("[Content_Types].xml", "<?xml version='1.0'?><Types/>")
            archive.writestr("_rels/.rels", "<?xml version='1.0'?><Relationships><Relationship "
                             "Type='http://schemas.microsoft.com/3dmanufacturing/2013/01/3dmodel' "
                             "Target='/3D/3dmodel.model' Id='rel0'/></Relationships>")
            with archive.open("3D/3dmodel.model", "w", force_zip64=True) as part:
                for piece in pieces(*arguments):
                    part.write(piece)
        return "box.3mf"
    return make


def bomb(mebibytes):
    yield b"<?xml version='1.0'?><model><resources><object id='1'><mesh><vertices>"
    for _ in range(mebibytes):
        yield b" " * (1 << 20)


def collada(depth):
    return ("<?xml version='1.0'?><COLLADA version='1.4.1'><asset/><library_visual_scenes>"
            "<visual_scene id='s'>" + "<node>" * depth + "</node>" * depth
            + "</visual_scene></library_visual_scenes><scene>"
            "<instance_visual_scene url='#s'/></scene></COLLADA>")


def named(name):
    """A broken file with that name, so that its error message contains the name."""
    return write(name, "v 0 0 0\nf 1 2 3\n")


def scene_file(name):
    node = {"name": name, "userProperties": "climbabel\x1b[31m\nfloorfase",
            "mesh": {"vertices": [[0, 0, 0], [10, 0, 0], [0, 10, 0]], "faces": [[0, 1, 2]]}}
    return json.dumps({"format": "mapexport-scene", "version": 1, "root": {"children": [node]}})


ESCAPES = "\x1b[31mred\x1b]0;title\x07\r\x7f\u009b1m\u202e"

# A name, the statuses that it may end with, a piece of standard error, and what makes the scene.
CASES = [
    ("a 3MF file that unpacks to 64 MiB", REFUSED, "", package_3mf(bomb, 64)),
    ("arrays nested 100,000 deep in glTF", EITHER, "", write("a.gltf", gltf()[:-1]
     + ',"extras":' + "[" * 100_000 + "]" * 100_000 + "}")),
    ("objects nested 100,000 deep in glTF", EITHER, "", write("a.gltf", gltf()[:-1]
     + ',"extras":' + '{"a":' * 100_000 + "1" + "}" * 100_000 + "}")),
    ("nodes nested 100,000 deep in Collada", REFUSED, "", write("a.dae", collada(100_000))),
    ("nodes nested 3,000 deep in Collada", EITHER, "", write("a.dae", collada(3_000))),
    ("entities that grow in Collada", EITHER, "", write(
        "a.dae", "<!DOCTYPE C [<!ENTITY a 'aaaaaaaaaa'>" + "".join(
            f"<!ENTITY {chr(98 + i)} '{('&' + chr(97 + i) + ';') * 10}'>" for i in range(12))
        + "]>" + collada(1).replace("<asset/>", "<asset>&m;</asset>"))),
    ("an entity in Collada that names a file", EITHER, "", write(
        "a.dae", "<!DOCTYPE C [<!ENTITY a SYSTEM 'file:///dev/zero'>]>"
        + collada(1).replace("<asset/>", "<asset>&a;</asset>"))),
    ("glTF instances without data", REFUSED, "more than a file", write("a.gltf", gltf(
        nodes=[{"mesh": 0, "extensions": {"EXT_mesh_gpu_instancing": {
            "attributes": {"TRANSLATION": 1}}}}],
        accessors=[ACCESSOR, {"componentType": 5126, "count": 10**7, "type": "VEC3"}]))),
    ("10,000 glTF primitives of one large accessor", REFUSED, "more than a file", write(
        "a.gltf", gltf(meshes=[{"primitives": [{"attributes": {"POSITION": 0}}] * 10_000}],
                       accessors=[{"componentType": 5126, "count": 60_000, "type": "VEC3"}]))),
    ("a glTF buffer beyond its file", REFUSED, "", beside(
        "a.gltf", gltf(buffers=buffer("a.bin", 1 << 30)),
        lambda folder: (folder / "a.bin").write_bytes(POSITIONS))),
    *((f"a glTF buffer {what}", REFUSED, "",
       beside("a.gltf", gltf(buffers=buffer(uri)), make_other)) for what, uri, make_other in [
           ("by file URL", "file:///dev/zero", link("a.bin", "/dev/zero")),
           ("by an absolute path to a device", "/dev/zero", link("a.bin", "/dev/zero")),
           ("by a path up to a device", "../" * 20 + "dev/zero", link("a.bin", "/dev/zero")),
           ("by a link to a device", "a.bin", link("a.bin", "/dev/zero")),
           ("that is a pipe", "a.bin", fifo("a.bin")),
           ("that is a folder", "a.bin", lambda folder: (folder / "a.bin").mkdir()),
           ("that links to itself", "a.bin", link("a.bin", "a.bin")),
           ("whose name has escapes", ESCAPES + "\n.bin", link("a.bin", "a.bin"))]),
    ("a material file that is a pipe", SOUND, "can't be opened", beside(
        "a.obj", OBJ.format("a.mtl"), fifo("a.mtl"))),
    ("a material file that is a device", SOUND, "can't be opened", write(
        "a.obj", OBJ.format("/dev/zero"))),
    ("a material file that is a folder", SOUND, "can't be opened", write(
        "a.obj", OBJ.format(".."))),
    ("a material file by URL", SOUND, "can't be opened", write(
        "a.obj", OBJ.format("http://192.0.2.1/a.mtl"))),
    ("a material file's name with escapes", SOUND, "can't be opened", write(
        "a.obj", OBJ.format(ESCAPES.replace("\r", "")))),
    ("an MD5 mesh whose pipe beside it is tried", EITHER, "", beside(
        "a.md5mesh", "MD5Version 10\ncommandline \"\"\nnumJoints 0\nnumMeshes 0\n",
        fifo("a.md5anim"))),
    ("glTF names with escapes and line ends", SOUND, "8 control characters", write(
        "a.gltf", gltf(nodes=[{"mesh": 0, "name": "\n" + ESCAPES + "\t"}]))),
    ("a file name with escapes and line ends", REFUSED, "", named("a\n" + ESCAPES + ".obj")),
    ("a file name with escapes, of FBX", REFUSED, "", write("a\n" + ESCAPES + ".fbx", "Kaydara")),
    ("a file name that is not UTF-8", REFUSED, "", lambda folder: named(
        os.fsdecode(b"a\xff\x1b[2J.obj"))(folder)),
    ("a node's texts with escapes", SOUND, "", write("a.scene.json", scene_file(ESCAPES))),
    # This one takes the time or the memory that a reader is allowed.
    ("a 3MF file that unpacks to 2 GiB", REFUSED, "", package_3mf(bomb, 2 << 10)),
]


def run(tally, what, program, numbers, _):
    def attempt(i):
        name, may_end, piece, make = CASES[i]
        folder = tally.folder()
        fault, outcome = fault_of_export(program, folder, make(folder))
        if not fault and (outcome.status not in may_end or piece not in outcome.err):
            fault = f"status {outcome.status}, without {piece!r}: {outcome.err[:500]!r}"
        # On a busy machine the elapsed time limit may end a reader; no reader waits for a pipe.
        if not fault and "pipe" in name and "waited too long" in outcome.err:
            fault = "the pipe was waited for"
        tally.add(what, folder, fault, f"{name}, --only {i}")

    in_parallel(attempt, [i for i in numbers if i < len(CASES)])
