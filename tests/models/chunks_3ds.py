"""The parts of a .3ds file: nested chunks of an id, a length and a content."""
import struct


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
