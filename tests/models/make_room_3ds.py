#!/usr/bin/env python3
"""Writes room.3ds, the small room of this folder, as the binary .3ds format holds it.

Points are the world's, z up; the matrix of a mesh says where its node stands, the key-framer which
node hangs on which.
"""
import pathlib

from chunks_3ds import chunk, colour, floats, mesh, node, percent, scene, shorts, text

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

pathlib.Path(__file__).with_name("room.3ds").write_bytes(
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
