"""The triangles of a scene file, and how they differ from Blender's. For check_level.py."""
import collections
import itertools

SCALE = 100  # Blender's answers are in metres
UV_TOLERANCE = 0.004


def nodes_of(node):
    for child in node.get("children", ()):
        yield child
        yield from nodes_of(child)


def transformed(point, rows):
    return [point[0] * rows[0][i] + point[1] * rows[1][i] + point[2] * rows[2][i] + rows[3][i]
            for i in range(3)]


def mirrors(rows):
    (a, b, c), (d, e, f), (g, h, i) = rows[:3]
    return a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g) < 0


class Triangle:
    """A triangle as the exporter gets it, in world coordinates, its front counter-clockwise. `node`
    is its node's number, name and keywords."""

    def __init__(self, node, corners, uvs, smoothing, material):
        self.node, self.corners, self.uvs = node, corners, uvs
        self.smoothing, self.material, self.is_taken = smoothing, material, False


def triangles_of(scene):
    identity = [[1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, 0]]
    materials = scene.get("materials", [])
    for number, node in enumerate(nodes_of(scene["root"])):
        mesh = node.get("mesh")
        if not mesh:
            continue
        rows = node.get("objectTransform", identity)
        points = [transformed(point, rows) for point in mesh["vertices"]]
        order = (0, 2, 1) if mirrors(rows) else (0, 1, 2)
        keywords = tuple(node.get("userProperties", "").split())
        own = materials[node["material"]] if node.get("material") is not None else {}
        for f, face in enumerate(mesh["faces"]):
            smoothing, part = (list(face[3:]) + [0, 0])[:2]
            material = own
            if own.get("class") == "multi":
                index = own["subMaterials"][part]
                material = {} if index is None else materials[index]
            uv_rows = material.get("diffuseMap", {}).get("uvTransform", identity)
            uvs = [transformed(mesh["textureVertices"][mesh["textureFaces"][f][k]], uv_rows)
                   for k in order] if mesh.get("textureVertices") else []
            yield Triangle((number, node.get("name", ""), keywords),
                           [points[face[k]] for k in order], uvs, smoothing, material.get("name", ""))


class Places:
    """Finds triangles by the middle of their corners."""

    def __init__(self, triangles, tolerance):
        self.tolerance, self.cells = tolerance, collections.defaultdict(list)
        for triangle in triangles:
            self.cells[self.cell_of(triangle.corners)].append(triangle)

    def cell_of(self, corners):
        return tuple(int(sum(corner[i] for corner in corners) / 3 // (self.tolerance * 2))
                     for i in range(3))

    def free(self):
        return (triangle for cell in self.cells.values() for triangle in cell
                if not triangle.is_taken)

    def take(self, corners):
        """A triangle with these corners, in this order from any one on, that is not taken yet."""
        cell = self.cell_of(corners)
        for step in itertools.product((-1, 0, 1), repeat=3):
            for triangle in self.cells.get(tuple(c + s for c, s in zip(cell, step)), ()):
                own = triangle.corners
                if not triangle.is_taken and any(
                        all(is_close(own[k - turn], corners[k], self.tolerance) for k in range(3))
                        for turn in range(3)):
                    triangle.is_taken = True
                    return triangle
        return None


def area_of(corners):
    """The area vector of a triangle, twice as long."""
    u, v = ([corners[k][i] - corners[0][i] for i in range(3)] for k in (1, 2))
    return [u[i - 2] * v[i - 1] - u[i - 1] * v[i - 2] for i in range(3)]


def is_close(a, b, tolerance):
    return all(abs(p - q) <= tolerance for p, q in zip(a, b))


class Polygon:
    """A polygon of Blender's whose triangles were not all found."""

    def __init__(self, triangles):
        self.areas = [area_of(corners) for corners in triangles]
        self.corners = [corner for corners in triangles for corner in corners]
        self.count = len(triangles)

    def is_cut_into(self, triangles, tolerance):
        """Whether these are the polygon, cut along other diagonals."""
        size = max(abs(a - b) for p in self.corners for q in self.corners for a, b in zip(p, q))
        areas = [area_of(triangle.corners) for triangle in triangles]
        return len(areas) == self.count and is_close(
            map(sum, zip(*areas)), map(sum, zip(*self.areas)), 8 * size * tolerance)

    def is_flat(self):
        """Whether another diagonal makes no difference."""
        lengths = [sum(a * a for a in area) ** 0.5 for area in self.areas]
        whole = sum(sum(axis) ** 2 for axis in zip(*self.areas)) ** 0.5
        return whole > 0.99999 * sum(lengths)


def compare_mesh(mesh, answer, places, written):
    """What differs from Blender's answer, by kind; `written` makes of a name what the file has."""
    counts = collections.Counter()
    points = [[SCALE * number for number in point] for point in answer["points"]]
    corners = [[points[p] for p in triangle[0]] for triangle in answer["triangles"]]
    found = [places.take(three) for three in corners]
    for triangles in answer["polygons"]:
        lost = [t for t in triangles if found[t] is None]
        if len(lost) < 2:
            continue
        polygon = Polygon([corners[t] for t in lost])
        others = [triangle for triangle in places.free() if all(
            any(is_close(corner, own, places.tolerance) for own in polygon.corners)
            for corner in triangle.corners)]
        if polygon.is_cut_into(others, places.tolerance):
            counts["other diagonal"] += 0 if polygon.is_flat() else len(lost)
            for t, other in zip(lost, others):
                other.is_taken = True
                found[t] = other
    for t, three in enumerate(corners):
        if found[t] is None:
            counts["reversed" if places.take(three[::-1]) else "missing"] += 1
        else:
            counts["material"] += found[t].material != written(answer["triangles"][t][1])
    for triangles in answer["polygons"]:
        pairs = [pair for t in triangles for pair in zip(corners[t], answer["triangles"][t][2])]
        counts["uv"] += sum(not has_coordinates(found[t], pairs, places.tolerance)
                            for t in triangles if pairs and found[t])
    sides = collections.defaultdict(list)
    for triangle, (indices, _, _) in zip(found, answer["triangles"]):
        for k in range(3):
            sides[frozenset((indices[k - 1], indices[k]))].append(triangle)
    for kind in ("hard", "smooth"):
        for edge in answer[kind]:
            first, second = sides[frozenset(edge)]
            if first and second:
                is_smooth = first.node == second.node and first.smoothing & second.smoothing != 0
                counts["edge"] += is_smooth != (kind == "smooth")
    nodes = {triangle.node for triangle in found if triangle}
    counts["name"] += any(name != written(mesh) for _, name, _ in nodes)
    counts["keyword"] += any(sorted(keywords) != answer["keywords"] for _, _, keywords in nodes)
    return counts


def has_coordinates(triangle, pairs, tolerance):
    """Whether each corner has the texture coordinates of the polygon's corner at its place."""
    return len(triangle.uvs) == 3 and all(
        any(is_close(uv, other, UV_TOLERANCE) and is_close(corner, place, tolerance)
            for place, other in pairs)
        for corner, uv in zip(triangle.corners, triangle.uvs))
