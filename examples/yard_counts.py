"""Computes from a scene, without the exporter, the counts that an export of it must have.

It follows the rules of the export as far as the example needs them: initial options (welding at
0.2, inverted v), no "static" node inside another one, no mesh without faces, no slivers. A scene
whose counts would depend on rounding is refused.
"""

import math

WELDING_DISTANCE = 0.2

FLAGS = {"climbable": 0x01, "notcollidable": 0x02, "notrendered": 0x04, "notcollidable3d": 0x08,
         "floorface": 0x10, "notshownplan": 0x20, "45plusfloor": 0x40}
NOT_RENDERED, STATIC = 0x04, 0x80


class Gathered:
    def __init__(self):
        self.vertices = []        # world positions, in the order of the walk
        self.faces = []           # dicts: vertices, set, material (a name or None), node, uvs
        self.sets = []            # dicts: name, flags
        self.materials = []       # names, in the order of first use
        self.invalid_faces = []   # names of the nodes that a degenerate triangle was dropped from


def expected_counts(scene, transparent_textures):
    """`transparent_textures` are the names, without extension, that the material database marks."""
    materials = {material["name"]: material for material in scene["materials"]}
    gathered = Gathered()
    _gather(gathered, scene, scene["root"], static_set=None)

    two_sided = {name for name, material in materials.items() if material.get("twoSided")}
    copies = [face for face in gathered.faces if face["material"] in two_sided]
    faces = gathered.faces + copies
    welded, vertex_count = _weld(gathered.vertices)
    for face in gathered.faces:
        face["vertices"] = [welded[i] for i in face["vertices"]]
        _refuse_sliver(gathered.vertices, face["vertices"])

    drawn = [face for face in faces if not gathered.sets[face["set"]]["flags"] & NOT_RENDERED]
    undrawn = [face for face in faces if gathered.sets[face["set"]]["flags"] & NOT_RENDERED]

    def vertices_of(some):
        return len({i for face in some for i in face["vertices"]})

    def material_counts(name):
        own = [face for face in faces if face["material"] == name]
        return {"faces": len(own), "drawnFaces": sum(face in drawn for face in own)}

    def material_record(name):
        texture = _texture_name(materials[name])
        record = {
            "name": name,
            "textureName": texture,
            "twoSided": name in two_sided,
            **material_counts(name),
        }
        if texture.split(".")[0] in transparent_textures:
            nodes = [face["node"] for face in drawn if face["material"] == name]
            record["nodes"] = {node: nodes.count(node) for node in dict.fromkeys(nodes)}
        uvs = [uv for face in faces if face["material"] == name for uv in face["uvs"]]
        if uvs:
            record["uvMin"] = [round(min(uv[i] for uv in uvs), 4) for i in (0, 1)]
            record["uvMax"] = [round(max(uv[i] for uv in uvs), 4) for i in (0, 1)]
        return record

    return {
        "group": scene["root"]["name"],
        "gatheredVertices": len(gathered.vertices),
        "gatheredFaces": len(gathered.faces),
        "invalidFaces": gathered.invalid_faces,
        "twoSidedCopies": len(copies),
        "vertices": vertex_count,
        "faces": len(faces),
        "materials": [material_record(name) for name in gathered.materials],
        "noMaterial": material_counts(None),
        "surfaceSets": [
            {**one, "faces": sum(face["set"] == i for face in faces)}
            for i, one in enumerate(gathered.sets)
        ],
        "kob": {
            "vertices": vertices_of(drawn),
            "collisionPoints": vertices_of(undrawn),
            "planes": len(undrawn),
            "drawnFaces": len(drawn),
        },
    }


def _gather(gathered, scene, node, static_set):
    mesh = node.get("mesh")
    if mesh:
        if static_set is None:
            flags = 0
            for keyword in node.get("userProperties", "").split("\r\n"):
                flags |= FLAGS.get(keyword, 0)
            surface_set = _find_or_add_set(gathered, flags)
        else:
            surface_set = static_set
        table = _material_table(gathered, scene["materials"], node.get("material"))
        base = len(gathered.vertices)
        rows = node["objectTransform"]
        gathered.vertices += [_transform(vertex, rows) for vertex in mesh["vertices"]]
        for j, (a, b, c, _, material_id) in enumerate(mesh["faces"]):
            if len({a, b, c}) < 3:
                gathered.invalid_faces.append(node["name"])
                continue
            material = table(material_id)
            uvs = []
            if "textureVertices" in mesh:
                transform = (material or {}).get("diffuseMap", {}).get("uvTransform")
                for corner in mesh["textureFaces"][j]:
                    u, v, w = mesh["textureVertices"][corner]
                    u, v, w = _transform((u, v, w), transform) if transform else (u, v, w)
                    uvs.append((u, -v))
            gathered.faces.append({
                "vertices": [base + a, base + b, base + c],
                "set": surface_set,
                "material": material and material["name"],
                "node": node["name"],
                "uvs": uvs,
            })

    for child in node.get("children", ()):
        name = child["name"].lower()
        if name.startswith("exclude"):
            continue
        if name.startswith("static"):
            gathered.sets.append({"name": name, "flags": STATIC})
            _gather(gathered, scene, child, len(gathered.sets) - 1)
        else:
            _gather(gathered, scene, child, static_set)


def _find_or_add_set(gathered, flags):
    for i, one in enumerate(gathered.sets):
        if one["flags"] == flags:
            return i
    gathered.sets.append({"name": "NONE", "flags": flags})
    return len(gathered.sets) - 1


def _material_table(gathered, materials, index):
    """Adds the node's materials; returns the function from a face's material ID to its material."""
    if index is None:
        return lambda material_id: None
    own = materials[index]
    parts = [own]
    if own["class"] == "multi":
        parts = [None if i is None else materials[i] for i in own["subMaterials"]]
    for part in parts:
        if part and part["name"] not in gathered.materials:
            gathered.materials.append(part["name"])
    if own["class"] == "multi":
        return lambda material_id: parts[material_id] if material_id < len(parts) else None
    return lambda material_id: own


def _texture_name(material):
    diffuse_map = material.get("diffuseMap")
    if not diffuse_map or diffuse_map["class"] != "bitmap":
        return "NULL"
    return diffuse_map["file"].rsplit("\\", 1)[-1].lower()


def _transform(point, rows):
    return tuple(
        sum(point[i] * rows[i][axis] for i in range(3)) + rows[3][axis] for axis in range(3)
    )


def _weld(vertices):
    """For each vertex the first one at its place, and the number of places."""
    first, places = [], []
    for i, vertex in enumerate(vertices):
        distances = {j: math.dist(vertex, vertices[j]) for j in places}
        unclear = [j for j, distance in distances.items() if 0.15 < distance < 0.5]
        assert not unclear, f"vertices {i} and {unclear[0]} are neither together nor apart"
        near = [j for j, distance in distances.items() if distance < WELDING_DISTANCE]
        if near:
            first.append(near[0])
        else:
            first.append(i)
            places.append(i)
    return first, len(places)


def _refuse_sliver(vertices, corners):
    a, b, c = (vertices[i] for i in corners)
    sides = [math.dist(a, b), math.dist(b, c), math.dist(c, a)]
    half = sum(sides) / 2
    area = math.sqrt(max(0, half * math.prod(half - side for side in sides)))
    assert len(set(corners)) == 3 and 2 * area / max(sides) > 1, f"{a} {b} {c} is a sliver"
