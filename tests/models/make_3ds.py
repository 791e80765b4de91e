#!/usr/bin/env python3
"""Writes the .3ds files of this folder: room.3ds, the small room, and cubes/, one smooth and one
with hard edges.

A file is nested chunks of an id, a length and a content. Points are the world's, z up; the matrix
of a mesh says where its node stands, the key-framer which node hangs on which.
"""
import pathlib
import struct

FOLDER = pathlib.Path(__file__).resolve().parent


def chunk(ident, *parts):
    content = b"".join(parts)
    return struct.pack("<HI", ident, 6 + len(content)) + content


def text(value):
    return value.encode("ascii") + b"\0"


def floats(*values):
    return struct.pack(f"<{len(values)}f", *values)


def shorts(*values):
    return struct.pack(f"<{len(values)}H", *values)


def colour(red, green, blue):
    return chunk(0x0010, floats(red, green, blue))


def percent(value):
    return chunk(0x0030, shorts(value))


def mesh(name, points, triangles, uvs=(), materials=(), smoothing=(), matrix=None):
    """A named mesh; `materials` holds (name, faces), `smoothing` a group word per triangle."""
    face_parts = [shorts(len(triangles)), *(shorts(*corners, 0x7) for corners in triangles)]
    for material, faces in materials:
        face_parts.append(chunk(0x4130, text(material), shorts(len(faces), *faces)))
    if smoothing:
        face_parts.append(chunk(0x4150, struct.pack(f"<{len(smoothing)}I", *smoothing)))
    parts = [chunk(0x4110, shorts(len(points)), *(floats(*point) for point in points))]
    if uvs:
        parts.append(chunk(0x4140, shorts(len(uvs)), *(floats(*uv) for uv in uvs)))
    if matrix:
        parts.append(chunk(0x4160, floats(*(value for row in matrix for value in row))))
    parts.append(chunk(0x4120, *face_parts))
    return chunk(0x4000, text(name), chunk(0x4100, *parts))


def track(ident, *values):
    """A key-framer track with one key, at frame 0."""
    header = struct.pack("<HIII", 0, 0, 0, 1)
    return chunk(ident, header, struct.pack("<IH", 0, 0), floats(*values))


def node(index, parent, name, position, turn=None):
    """A row of the key-framer: where the mesh `name` hangs; `turn` is (radians, axis)."""
    parts = [
        chunk(0xB030, shorts(index)),
        chunk(0xB010, text(name), shorts(0, 0, parent)),
        chunk(0xB013, floats(0, 0, 0)),
        track(0xB020, *position),
    ]
    if turn:
        radians, axis = turn
        parts.append(track(0xB021, radians, *axis))
    return chunk(0xB002, *parts)


def scene(materials_and_meshes, nodes=()):
    parts = [chunk(0x0002, struct.pack("<I", 3)),
             chunk(0x3D3D, chunk(0x3D3E, struct.pack("<I", 3)), *materials_and_meshes)]
    if nodes:
        parts.append(chunk(0xB000, *nodes))
    return chunk(0x4D4D, *parts)


BRICK = chunk(
    0xAFFF,
    chunk(0xA000, text("Brick")),
    chunk(0xA020, colour(0.5, 0.25, 0.125)),
    chunk(0xA030, colour(0.75, 0.75, 0.75)),
    chunk(0xA040, percent(25)),
    chunk(0xA041, percent(50)),
    chunk(0xA100, shorts(3)),
    chunk(0xA200, percent(100), chunk(0xA300, text("BRICK.TGA")),
          chunk(0xA354, floats(2)), chunk(0xA356, floats(2))),
)
GLASS = chunk(
    0xAFFF,
    chunk(0xA000, text("Glass")),
    chunk(0xA010, colour(0.125, 0.125, 0.25)),
    chunk(0xA020, colour(0.25, 0.5, 1)),
    chunk(0xA040, percent(30)),
    chunk(0xA041, percent(0)),
    chunk(0xA050, percent(50)),
    chunk(0xA081),
    chunk(0xA100, shorts(3)),
)
SCENE_AMBIENT = chunk(0x2100, colour(0.25, 0.25, 0.5))
TURNED = [(0, 1, 0), (-1, 0, 0), (0, 0, 1)]
UPRIGHT = [(1, 0, 0), (0, 1, 0), (0, 0, 1)]
QUARTER = (1.5707964, (0, 0, -1))

FLOOR = mesh(
    "Floor",
    [(10, 0, 0), (14, 0, 0), (14, 4, 0), (10, 4, 0)],
    [(0, 1, 2), (0, 2, 3)],
    uvs=[(0, 0), (1, 0), (1, 1), (0, 1)],
    materials=[("Brick", [0]), ("Glass", [1])],
    smoothing=[1, 2],
    matrix=[*UPRIGHT, (10, 0, 0)],
)
BOX = mesh(
    "Static_Box",
    [(10, 0, 5), (10, 2, 5), (8, 0, 5)],
    [(0, 1, 2)],
    materials=[("Brick", [0])],
    matrix=[*TURNED, (10, 0, 5)],
)
LID = mesh(
    "Lid",
    [(10, 0, 6), (10, 1, 6), (9, 0, 6)],
    [(0, 1, 2)],
    materials=[("Glass", [0])],
    matrix=[*TURNED, (10, 0, 6)],
)
ASIDE = mesh(
    "exclude_me",
    [(-5, 0, 0), (-4, 0, 0), (-5, 1, 0)],
    [(0, 1, 2)],
    materials=[("Glass", [0])],
    matrix=[*UPRIGHT, (-5, 0, 0)],
)
NO_PARENT = 0xFFFF

(FOLDER / "room.3ds").write_bytes(
    scene(
        [SCENE_AMBIENT, BRICK, GLASS, FLOOR, BOX, LID, ASIDE],
        [
            node(0, NO_PARENT, "Floor", (10, 0, 0)),
            node(1, 0, "Static_Box", (0, 0, 5), QUARTER),
            node(2, 1, "Lid", (0, 0, 1)),
            node(3, NO_PARENT, "exclude_me", (-5, 0, 0)),
        ],
    )
)

CORNERS = [(x, y, z) for z in (0, 10) for y in (0, 10) for x in (0, 10)]
# Counter-clockwise from outside.
SIDES = [(0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5)]
TRIANGLES = [corners for a, b, c, d in SIDES for corners in ((a, b, c), (a, c, d))]
# One smoothing group for all, or one for each side, and none for half of the sides.
for name, groups in (("smooth", [1] * 12), ("hard", [(1 << t // 2) & 0b101010 for t in range(12)])):
    (FOLDER / f"cubes/{name}.3ds").write_bytes(
        scene([mesh("cube", CORNERS, TRIANGLES, smoothing=groups)]))
