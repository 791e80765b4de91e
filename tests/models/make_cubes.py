#!/usr/bin/env python3
"""Writes cubes/: a cube with smooth and with hard edges in each main format.

Each says so in the format's own way: smoothing groups in .3ds, .ase and one of the two .obj, normals
in the others. The edge is 10 units long; .gltf and .dae say it in metres.
"""
import base64
import json
import pathlib
import struct

from chunks_3ds import mesh, scene

CORNERS = [(x, y, z) for z in (0, 10) for y in (0, 10) for x in (0, 10)]
# Counter-clockwise from outside, with the side's normal.
SIDES = [
    ((0, 2, 3, 1), (0, 0, -1)),
    ((4, 5, 7, 6), (0, 0, 1)),
    ((0, 1, 5, 4), (0, -1, 0)),
    ((2, 6, 7, 3), (0, 1, 0)),
    ((0, 4, 6, 2), (-1, 0, 0)),
    ((1, 3, 7, 5), (1, 0, 0)),
]
TRIANGLES = [corners for (a, b, c, d), _ in SIDES for corners in ((a, b, c), (a, c, d))]


def outward(corner):
    """The normal of a smooth cube at a corner."""
    return tuple(0.57735 if value else -0.57735 for value in CORNERS[corner])


def corner_normals(smooth):
    """A normal for each corner of each side, in the order of SIDES."""
    return [outward(c) if smooth else normal for corners, normal in SIDES for c in corners]


def numbers(points):
    return " ".join(f"{value:g}" for point in points for value in point)


def group(triangle, smooth):
    """The smoothing groups of a triangle: one for all, or a different one for each side, and none
    for half of the sides."""
    return 1 if smooth else (1 << (triangle // 2)) & 0b101010


def obj_with_normals(smooth):
    """Has one smoothing group for all, as modelling tools write it beside normals."""
    lines = ["o cube", "s 1", *(f"v {numbers([c])}" for c in CORNERS)]
    lines += [f"vn {numbers([n])}" for n in corner_normals(smooth)]
    for side, (corners, _) in enumerate(SIDES):
        lines.append("f " + " ".join(f"{c + 1}//{side * 4 + k + 1}" for k, c in enumerate(corners)))
    return "\n".join(lines) + "\n"


def obj_with_groups(smooth):
    lines = ["o cube", *(f"v {numbers([c])}" for c in CORNERS), "s 1" if smooth else "s off"]
    lines += ["f " + " ".join(str(c + 1) for c in corners) for corners, _ in SIDES]
    return "\n".join(lines) + "\n"


def ply(smooth):
    normals = corner_normals(smooth)
    corners = [c for corners, _ in SIDES for c in corners]
    lines = ["ply", "format ascii 1.0", f"element vertex {len(corners)}"]
    lines += [f"property float {name}" for name in ("x", "y", "z", "nx", "ny", "nz")]
    lines += [f"element face {len(SIDES)}", "property list uchar int vertex_indices", "end_header"]
    lines += [numbers([CORNERS[c], normals[i]]) for i, c in enumerate(corners)]
    lines += [f"4 {i} {i + 1} {i + 2} {i + 3}" for i in range(0, len(corners), 4)]
    return "\n".join(lines) + "\n"


def fbx(smooth):
    polygons = [n for a, b, c, d in (corners for corners, _ in SIDES) for n in (a, b, c, -1 - d)]

    def array(name, values):
        text = ",".join(f"{value:g}" for value in values)
        return f"\t\t{name}: *{len(values)} {{\n\t\t\ta: {text}\n\t\t}}\n"

    return (
        "; FBX 7.4.0 project file\n"
        "FBXHeaderExtension:  {\n\tFBXHeaderVersion: 1003\n\tFBXVersion: 7400\n}\n"
        "Objects:  {\n"
        '\tGeometry: 1, "Geometry::", "Mesh" {\n'
        + array("Vertices", [value for point in CORNERS for value in point])
        + array("PolygonVertexIndex", polygons)
        + "\t\tGeometryVersion: 124\n"
        "\t\tLayerElementNormal: 0 {\n"
        "\t\tVersion: 101\n"
        '\t\tName: ""\n'
        '\t\tMappingInformationType: "ByPolygonVertex"\n'
        '\t\tReferenceInformationType: "Direct"\n'
        + array("Normals", [value for normal in corner_normals(smooth) for value in normal])
        + "\t\t}\n"
        "\t\tLayer: 0 {\n"
        "\t\t\tVersion: 100\n"
        '\t\t\tLayerElement:  {\n\t\t\t\tType: "LayerElementNormal"\n\t\t\t\tTypedIndex: 0\n\t\t\t}\n'
        "\t\t}\n\t}\n"
        '\tModel: 2, "Model::cube", "Mesh" {\n\t\tVersion: 232\n\t}\n}\n'
        'Connections:  {\n\tC: "OO",2,0\n\tC: "OO",1,2\n}\n'
    )


def ase(smooth):
    lines = ["*3DSMAX_ASCIIEXPORT\t200", "*GEOMOBJECT {", '\t*NODE_NAME "cube"', "\t*NODE_TM {"]
    lines += ['\t\t*NODE_NAME "cube"', "\t\t*TM_ROW0 1 0 0", "\t\t*TM_ROW1 0 1 0"]
    lines += ["\t\t*TM_ROW2 0 0 1", "\t\t*TM_ROW3 0 0 0", "\t}", "\t*MESH {", "\t\t*TIMEVALUE 0"]
    lines += [f"\t\t*MESH_NUMVERTEX {len(CORNERS)}", f"\t\t*MESH_NUMFACES {len(TRIANGLES)}"]
    lines += ["\t\t*MESH_VERTEX_LIST {"]
    lines += [f"\t\t\t*MESH_VERTEX {i} {numbers([c])}" for i, c in enumerate(CORNERS)]
    lines += ["\t\t}", "\t\t*MESH_FACE_LIST {"]
    for i, (a, b, c) in enumerate(TRIANGLES):
        number = group(i, smooth).bit_length() or ""
        lines.append(
            f"\t\t\t*MESH_FACE {i}: A: {a} B: {b} C: {c} AB: 1 BC: 1 CA: 1"
            f" *MESH_SMOOTHING {number} *MESH_MTLID 0"
        )
    return "\n".join(lines + ["\t\t}", "\t}", "}"]) + "\n"


def max_3ds(smooth):
    groups = [group(i, smooth) for i in range(len(TRIANGLES))]
    return scene([mesh("cube", CORNERS, TRIANGLES, smoothing=groups)])


def in_metres(point):
    """Lengths of 10 become 0.1."""
    return tuple(value / 100 for value in point)


def gltf(smooth):
    corners = [c for corners, _ in SIDES for c in corners]
    turned = lambda point: (point[0], point[2], -point[1])  # y is up
    points = [turned(in_metres(CORNERS[c])) for c in corners]
    normals = [turned(n) for n in corner_normals(smooth)]
    indices = [s * 4 + k for s in range(len(SIDES)) for k in (0, 1, 2, 0, 2, 3)]
    floats = [value for point in points + normals for value in point]
    data = struct.pack(f"<{len(floats)}f{len(indices)}H", *floats, *indices)
    views = [(0, 288), (288, 288), (576, 72)]
    document = {
        "asset": {"version": "2.0"},
        "scenes": [{"nodes": [0]}],
        "scene": 0,
        "nodes": [{"name": "cube", "mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "NORMAL": 1}, "indices": 2}]}],
        "accessors": [
            {"bufferView": 0, "componentType": 5126, "count": 24, "type": "VEC3",
             "min": [0, 0, -0.1], "max": [0.1, 0.1, 0]},
            {"bufferView": 1, "componentType": 5126, "count": 24, "type": "VEC3"},
            {"bufferView": 2, "componentType": 5123, "count": 36, "type": "SCALAR"},
        ],
        "bufferViews": [{"buffer": 0, "byteOffset": at, "byteLength": size} for at, size in views],
        "buffers": [{"byteLength": len(data), "uri": "data:application/octet-stream;base64,"
                     + base64.b64encode(data).decode()}],
    }
    return json.dumps(document, indent=1) + "\n"


def dae(smooth):
    def source(name, points):
        count = len(points)
        return (
            f'<source id="{name}"><float_array id="{name}-array" count="{count * 3}">'
            f'{numbers(points)}</float_array><technique_common><accessor source="#{name}-array"'
            f' count="{count}" stride="3"><param name="X" type="float"/>'
            '<param name="Y" type="float"/><param name="Z" type="float"/></accessor>'
            "</technique_common></source>\n"
        )

    indices = " ".join(
        f"{c} {side * 4 + k}" for side, (corners, _) in enumerate(SIDES)
        for k, c in enumerate(corners)
    )
    return (
        '<?xml version="1.0" encoding="utf-8"?>\n'
        '<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">\n'
        '<asset><unit name="meter" meter="1"/><up_axis>Z_UP</up_axis></asset>\n'
        '<library_geometries><geometry id="mesh"><mesh>\n'
        + source("points", [in_metres(c) for c in CORNERS])
        + source("normals", corner_normals(smooth))
        + '<vertices id="vertices"><input semantic="POSITION" source="#points"/></vertices>\n'
        '<polylist count="6"><input semantic="VERTEX" source="#vertices" offset="0"/>'
        '<input semantic="NORMAL" source="#normals" offset="1"/>'
        f"<vcount>4 4 4 4 4 4</vcount><p>{indices}</p></polylist>\n"
        "</mesh></geometry></library_geometries>\n"
        '<library_visual_scenes><visual_scene id="scene"><node id="n" name="cube">'
        '<instance_geometry url="#mesh"/></node></visual_scene></library_visual_scenes>\n'
        '<scene><instance_visual_scene url="#scene"/></scene>\n</COLLADA>\n'
    )


WRITERS = {
    "normals.obj": obj_with_normals,
    "groups.obj": obj_with_groups,
    "ply": ply,
    "fbx": fbx,
    "ase": ase,
    "3ds": max_3ds,
    "gltf": gltf,
    "dae": dae,
}

folder = pathlib.Path(__file__).with_name("cubes")
folder.mkdir(exist_ok=True)
for ending, write in WRITERS.items():
    for name, smooth in (("smooth", True), ("hard", False)):
        content = write(smooth)
        data = content if isinstance(content, bytes) else content.encode("ascii")
        (folder / f"{name}.{ending}").write_bytes(data)
