#!/usr/bin/env python3
"""Makes the example level: yard.scene.json, yard.cxp and yard.expected.json.

    make_yard.py [FOLDER]        (by default the folder of this script)

The level is a walled yard of 24 by 16 metres, in centimetres, z up. Each thing in it shows
something that the exporter does; the comments at the nodes say what. The third file holds the
counts that an export must have: yard_counts.py computes them from the scene, without the
exporter, and check_yard.py compares.
"""

import pathlib
import sys

from yard_counts import expected_counts
from yard_json import to_json
from yard_meshes import (Mesh, barrel, bench, floor_tile, gate_pillar, hut_roof, hut_walls, ring,
                         rubble, stairs, upright, wedge, well_shaft)

# --- materials ----------------------------------------------------------------------------------


def standard(name, colour, texture=None, **more):
    material = {
        "name": name,
        "class": "standard",
        "ambient": [round(c * 0.4, 3) for c in colour],
        "diffuse": list(colour),
        "specular": [0.9, 0.9, 0.9],
        "shininess": 0.25,
        "shininessStrength": 0.05,
        "shading": 2,
        **more,
    }
    if texture:
        material["diffuseMap"] = {"class": "bitmap", "file": "D:\\Art\\Yard\\" + texture}
    return material


def make_materials():
    brick = standard("Brick", (0.6, 0.3, 0.2), "Brick01.bmp")
    # Scaled to half the size that the mesh's texture coordinates give, and shifted by a quarter.
    brick["diffuseMap"]["uvTransform"] = [[2, 0, 0], [0, 2, 0], [0, 0, 1], [0.25, 0, 0]]
    return [
        brick,
        standard("Coping", (0.75, 0.75, 0.7)),
        # Material IDs 2 (a missing entry) and 3 (past the table) leave a face without a material.
        {"name": "Wall", "class": "multi", "subMaterials": [0, 1, None]},
        standard("Paving", (0.6, 0.6, 0.6), "Paving.BMP"),
        standard("Gravel", (0.5, 0.45, 0.4)),
        standard("Sandstone", (0.8, 0.7, 0.5), "Sandstone.bmp"),
        standard("Planks", (0.6, 0.4, 0.2), "planks.tga"),
        # Its faces get reversed copies. The database says that its texture is colour-keyed.
        standard("Wire Fence", (0.7, 0.7, 0.7), "Wire Fence.tga", twoSided=True),
        # Transparent because the database says so of its texture; the opacity does not matter.
        standard("Glass", (0.7, 0.8, 0.9), "Glass.tga", opacity=0.4),
        standard("Plaster", (0.9, 0.88, 0.8)),
        standard("Roof Tiles", (0.7, 0.3, 0.2), "RoofTiles.bmp"),
        # A map that is not a bitmap counts as no texture.
        standard("Water", (0.1, 0.2, 0.3), opacity=0.6, diffuseMap={"class": "other"}),
        standard("Helper", (1, 0, 1)),
    ]


CXP = r"""// Rendering attributes of textures, of which the exporter looks for the transparent ones.

material Textures\Paving.bmp
  mipmap 1 2 near far
end

/* Names are taken without folder and extension, and in lower case:
   this entry speaks of glass, whatever folder the scene has it from. */
MATERIAL Textures\GLASS.TGA
  AlphaBlend
  gunpass
end

surface "Textures\Wire Fence.tga"
  colorkey 255 0 255
  gunpass grenadepass
end

material Textures\Water.tga
  scrolling 1 0.25 -0.5
  animated 1 12.5 3 water0 water1 water2
end

end

// Nothing is read after the "end" above: bricks stay opaque.
material Textures\Brick01.bmp
  alphablend
end
"""

TRANSPARENT_TEXTURES = {"glass", "wire fence"}

# --- the level ----------------------------------------------------------------------------------

# The rows of a node's axes: the directions of its x, y and z.
UNTURNED = ((1, 0, 0), (0, 1, 0), (0, 0, 1))
QUARTER_TURN = ((0, 1, 0), (-1, 0, 0), (0, 0, 1))
HALF_TURN = ((-1, 0, 0), (0, -1, 0), (0, 0, 1))
THREE_QUARTER_TURN = ((0, -1, 0), (1, 0, 0), (0, 0, 1))
ASKEW = ((0.8, 0.6, 0), (-0.6, 0.8, 0), (0, 0, 1))
MIRRORED = ((1, 0, 0), (0, -1, 0), (0, 0, 1))


class Level:
    """Makes nodes; materials are called by name."""

    def __init__(self, materials):
        self._index = {material["name"]: i for i, material in enumerate(materials)}

    def dummy(self, name, children):
        return {"name": name, "object": "helper", "children": children}

    def node(self, name, mesh, at, axes=UNTURNED, material=None, keywords=(), children=(), **more):
        made = {"name": name, "objectTransform": [*axes, at]}
        if keywords:
            made["userProperties"] = "\r\n".join(keywords)
        if material:
            made["material"] = self._index[material]
        made.update(more)
        made["mesh"] = {"vertices": mesh.vertices, "faces": mesh.faces}
        if mesh.textured:
            made["mesh"]["textureVertices"] = mesh.texture_vertices
            made["mesh"]["textureFaces"] = mesh.texture_faces
        if children:
            made["children"] = list(children)
        return made

    def root(self):
        pillar, box = gate_pillar(), lambda edge: Mesh().box((0, 0, 0), (edge, edge, edge))
        children = [
            # Tiles and walls meet at common points, which welding merges.
            self.dummy("Ground", self.tiles()),
            self.dummy("Walls", self.walls()),
            self.node("Gate_Pillar_1", pillar, (-40, 600, 0), material="Sandstone"),
            # Mirrored: the transform turns its triangles inside out, the exporter turns them back.
            self.node("Gate_Pillar_2", pillar, (-40, 1000, 0), MIRRORED, "Sandstone"),
            # Ends a millimetre short of the pillars' corners, to which it is welded.
            self.node("Gate_Beam", Mesh().box((0.1, 0, 0), (279.9, 60, 40)), (20, 660, 280),
                      QUARTER_TURN, "Planks"),
            self.stairs(),
            self.crates(box),
            self.node("Barrel", barrel(), (700, 300, 0), material="Planks"),
            self.well(),
            self.hut(),
            self.node("Fence", upright(600, 120, 6), (900, 1300, 0), material="Wire Fence",
                      keywords=["notcollidable3d"]),
            # Without a material it has its wire colour. Keywords are lower case: this sets nothing.
            self.node("Bench", bench(), (1000, 150, 0), ASKEW, keywords=["FloorFace"],
                      wireColor=[90, 60, 30]),
            # Its degenerate triangle is dropped, and the exporter's log says so.
            self.node("Rubble", rubble(), (2100, 1400, 0), material="Gravel",
                      keywords=["45plusfloor"]),
            # Left out with everything below it; its material is not written either.
            self.node("exclude_helpers", box(50), (1200, 800, 400), material="Helper", children=[
                self.node("Light_Proxy", box(10), (1200, 800, 500)),
            ]),
        ]
        return {"name": "Yard", "children": children}

    def tiles(self):
        return [
            self.node(f"Floor_{x}{y}", floor_tile(400), (400 * x, 400 * y, 0),
                      material="Gravel" if y == 1 and x in (2, 3) else "Paving",
                      keywords=["floorface"])
            for y in range(4) for x in range(6)
        ]

    def walls(self):
        def wall(name, length, cuts, at, axes):
            mesh = Mesh().box((0, -20, 0), (length, 0, 300), cuts, ids=(0, 1, 2, 3))
            return self.node(name, mesh, at, axes, "Wall")

        return [
            wall("Wall_South", 2400, 6, (0, 0, 0), UNTURNED),
            wall("Wall_East", 1600, 4, (2400, 0, 0), QUARTER_TURN),
            wall("Wall_North", 2400, 6, (2400, 1600, 0), HALF_TURN),
            wall("Wall_West_1", 600, 2, (0, 1600, 0), THREE_QUARTER_TURN),
            wall("Wall_West_2", 600, 2, (0, 600, 0), THREE_QUARTER_TURN),
        ]

    def stairs(self):
        at = (2160, 200, 0)
        # Never drawn. After welding, it shares its corners with the drawn stairs.
        hull = self.node("Stairs_Hull", wedge(240, 200, 160), at,
                         keywords=["notrendered", "45plusfloor"])
        return self.node("Stairs", stairs(8, 200, 30, 20), at, material="Sandstone",
                         keywords=["floorface", "climbable"], children=[hull])

    def crates(self, box):
        # One surface set named static_crates for the whole subtree; keywords in it are ignored.
        return self.node("Static_Crates", box(100), (1700, 1200, 0), material="Planks", children=[
            self.node("Crate_2", box(80), (1870, 1210, 0), ASKEW, "Planks", ["climbable"], [
                self.node("Crate_3", box(60), (1850, 1236, 80), material="Planks"),
            ]),
            self.node("Crate_4", box(80), (1710, 1210, 100), material="Planks"),
        ])

    def well(self):
        at = (1200, 800, 0)
        # Collision uses a plain box instead of the round shaft.
        hull = Mesh(textured=False).box((-100, -100, 0), (100, 100, 82))
        water = Mesh(textured=False).disc(ring(80, 30, 16))
        return self.node("Well", well_shaft(), at, material="Sandstone", keywords=["notcollidable"],
                         children=[
            self.node("Well_Hull", hull, at, keywords=["notrendered", "notshownplan"]),
            self.node("Well_Water", water, at, material="Water", keywords=["notcollidable"]),
        ])

    def hut(self):
        at = (300, 1050, 0)
        # Each window has separate batches, because its glass is transparent.
        return self.node("Hut", hut_walls(300, 250, 220, 300), at, material="Plaster", children=[
            self.node("Hut_Roof", hut_roof(300, 250, 220, 300), at, material="Roof Tiles"),
            self.node("Window_1", upright(60, 80), (340, 1048, 90), material="Glass"),
            self.node("Window_2", upright(60, 80), (500, 1048, 90), material="Glass"),
        ])


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
    folder.mkdir(parents=True, exist_ok=True)
    materials = make_materials()
    scene = {
        "format": "mapexport-scene",
        "version": 1,
        "materials": materials,
        "root": Level(materials).root(),
    }

    def write(name, text):
        (folder / name).write_text(text, encoding="utf-8", newline="\n")

    write("yard.scene.json", to_json(scene))
    write("yard.cxp", CXP)
    write("yard.expected.json", to_json(expected_counts(scene, TRANSPARENT_TEXTURES)))


if __name__ == "__main__":
    main()
