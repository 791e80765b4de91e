"""The shapes of the example level, as triangle meshes."""

import math


class Mesh:
    """Triangles with shared positions, counter-clockwise seen from outside."""

    def __init__(self, textured=True):
        self.vertices, self.faces = [], []
        self.texture_vertices, self.texture_faces = [], []
        self.textured = textured

    def triangle(self, points, uvs, group=0, material_id=0):
        corners = [self._index(self.vertices, point) for point in points]
        self.faces.append([*corners, group, material_id])
        if self.textured:
            corners = [self._index(self.texture_vertices, (*uv, 0)) for uv in uvs]
            self.texture_faces.append(corners)

    def quad(self, a, b, c, d, group=0, material_id=0, uvs=None):
        """Two triangles; without uvs, the texture is a metre wide and runs along a-b and b-c."""
        if uvs is None:
            u, v = math.dist(a, b) / 100, math.dist(b, c) / 100
            uvs = [(0, 0), (u, 0), (u, v), (0, v)]
        self.triangle((a, b, c), (uvs[0], uvs[1], uvs[2]), group, material_id)
        self.triangle((a, c, d), (uvs[0], uvs[2], uvs[3]), group, material_id)

    def box(self, low, high, cuts=1, ids=(0, 0, 0, 0)):
        """A box, cut along x; ids: the material IDs of the sides, the top, the bottom, the ends."""
        (x0, y0, z0), (x1, y1, z1) = low, high
        side, top, bottom, end = ids
        for i in range(cuts):
            l, r = x0 + (x1 - x0) * i / cuts, x0 + (x1 - x0) * (i + 1) / cuts
            self.quad((l, y0, z0), (r, y0, z0), (r, y0, z1), (l, y0, z1), 0, side)
            self.quad((r, y1, z0), (l, y1, z0), (l, y1, z1), (r, y1, z1), 0, side)
            self.quad((l, y0, z1), (r, y0, z1), (r, y1, z1), (l, y1, z1), 0, top)
            self.quad((l, y1, z0), (r, y1, z0), (r, y0, z0), (l, y0, z0), 0, bottom)
        self.quad((x0, y1, z0), (x0, y0, z0), (x0, y0, z1), (x0, y1, z1), 0, end)
        self.quad((x1, y0, z0), (x1, y1, z0), (x1, y1, z1), (x1, y0, z1), 0, end)
        return self

    def tube(self, lower, upper, group):
        """The band between two rings; the texture runs around it four times."""
        sides = len(lower)
        for i in range(sides):
            j, u0, u1 = (i + 1) % sides, 4 * i / sides, 4 * (i + 1) / sides
            v0, v1 = lower[i][2] / 100, upper[i][2] / 100
            uvs = [(u0, v0), (u1, v0), (u1, v1), (u0, v1)]
            self.quad(lower[i], lower[j], upper[j], upper[i], group, uvs=uvs)
        return self

    def disc(self, rim):
        """A fan around the middle of a ring; it faces up when the ring runs counter-clockwise."""
        middle = (0, 0, rim[0][2])
        for here, after in around(rim):
            points = (middle, here, after)
            self.triangle(points, [(x / 100, y / 100) for x, y, _ in points])
        return self

    @staticmethod
    def _index(items, item):
        item = tuple(round(number, 3) for number in item)
        if item not in items:
            items.append(item)
        return items.index(item)


def around(points):
    """Each point with the one after it, the last with the first."""
    return zip(points, points[1:] + points[:1])


def ring(radius, z, sides):
    angles = [2 * math.pi * i / sides for i in range(sides)]
    return [(round(radius * math.cos(a), 3), round(radius * math.sin(a), 3), z) for a in angles]


def floor_tile(size):
    mesh = Mesh()
    mesh.quad((0, 0, 0), (size, 0, 0), (size, size, 0), (0, size, 0))
    return mesh


def upright(width, height, cuts=1):
    """An upright sheet in the xz plane that faces -y."""
    mesh = Mesh()
    for i in range(cuts):
        l, r = width * i / cuts, width * (i + 1) / cuts
        mesh.quad((l, 0, 0), (r, 0, 0), (r, 0, height), (l, 0, height))
    return mesh


def stairs(steps, width, depth, rise):
    """A solid flight that climbs along +x, open below and behind; hard edges."""
    mesh = Mesh()
    for i in range(steps):
        x0, x1, z0, z1 = i * depth, (i + 1) * depth, i * rise, (i + 1) * rise
        mesh.quad((x0, width, z0), (x0, 0, z0), (x0, 0, z1), (x0, width, z1))
        mesh.quad((x0, 0, z1), (x1, 0, z1), (x1, width, z1), (x0, width, z1))
        mesh.quad((x0, 0, 0), (x1, 0, 0), (x1, 0, z1), (x0, 0, z1))
        mesh.quad((x1, width, 0), (x0, width, 0), (x0, width, z1), (x1, width, z1))
    return mesh


def wedge(length, width, height):
    """The ramp that a flight of stairs fills, open below."""
    mesh = Mesh(textured=False)
    mesh.quad((0, 0, 0), (length, 0, height), (length, width, height), (0, width, 0))
    mesh.quad((length, 0, 0), (length, width, 0), (length, width, height), (length, 0, height))
    mesh.triangle(((0, 0, 0), (length, 0, 0), (length, 0, height)), None)
    mesh.triangle(((0, width, 0), (length, width, height), (length, width, 0)), None)
    return mesh


def barrel():
    """Three bands; the middle one has the smoothing groups of both others and joins them."""
    rings = [ring(radius, z, 12) for radius, z in ((30, 0), (38, 30), (38, 60), (30, 90))]
    mesh = Mesh()
    for lower, upper, group in zip(rings, rings[1:], (0b010, 0b110, 0b100)):
        mesh.tube(lower, upper, group)
    return mesh.disc(rings[-1])


def well_shaft():
    """Round walls of smoothing group 2 outside and inside, and a hard-edged rim between them."""
    outer, inner = [[ring(radius, z, 16) for z in (0, 80)] for radius in (100, 80)]
    mesh = Mesh().tube(outer[0], outer[1], group=2).tube(inner[1], inner[0], group=2)
    for (a, b), (d, c) in zip(around(outer[1]), around(inner[1])):
        mesh.quad(a, b, c, d)
    return mesh


def gate_pillar():
    mesh = Mesh().box((0, 0, 0), (60, 60, 320))
    tip = (30, 30, 360)
    for here, after in around([(0, 0, 320), (60, 0, 320), (60, 60, 320), (0, 60, 320)]):
        mesh.triangle((here, after, tip), ((0, 0), (0.6, 0), (0.3, 0.5)))
    return mesh


def hut_walls(width, depth, height, ridge):
    """Four walls with gables, open above and below; smoothing group 1, which means none."""
    mesh = Mesh(textured=False)
    feet = [(0, 0), (width, 0), (width, depth), (0, depth)]
    for (ax, ay), (bx, by) in around(feet):
        mesh.quad((ax, ay, 0), (bx, by, 0), (bx, by, height), (ax, ay, height), group=1)
        if ax == bx:
            gable = (ax, ay, height), (bx, by, height), (ax, depth / 2, ridge)
            mesh.triangle(gable, None, group=1)
    return mesh


def hut_roof(width, depth, height, ridge):
    mesh = Mesh()
    left, right = (0, depth / 2, ridge), (width, depth / 2, ridge)
    mesh.quad((0, 0, height), (width, 0, height), right, left)
    mesh.quad((width, depth, height), (0, depth, height), left, right)
    return mesh


def bench():
    mesh = Mesh(textured=False).box((0, 0, 40), (160, 40, 48))
    return mesh.box((10, 4, 0), (18, 36, 40)).box((142, 4, 0), (150, 36, 40))


def rubble():
    """A steep heap, whose second triangle names one corner twice."""
    mesh = Mesh()
    top, foot = (0, 0, 110), [(80, 0, 0), (20, 75, 0), (-70, 45, 0), (-65, -50, 0), (25, -80, 0)]
    for here, after in around(foot):
        mesh.triangle((here, after, top), ((0, 0), (1, 0), (0.5, 1)))
    first, _, third = mesh.faces[0][:3]
    mesh.faces.insert(1, [first, first, third, 0, 0])
    mesh.texture_faces.insert(1, [0, 0, 0])
    return mesh
