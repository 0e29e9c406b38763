"""Shapes, made from formulas.

y is up, x to the right, the first camera looks along -z. Row 0 of a picture is its top, so t grows
downward on everything that shows a picture.
"""
import math
import random
import struct


class Mesh:
    def __init__(self):
        self.positions, self.normals, self.indices = [], [], []
        self.sets = [[]]

    def vertex(self, position, coordinate=(0.0, 0.0), normal=(0.0, 0.0, 1.0)):
        self.positions.append(tuple(position))
        self.sets[0].append(tuple(coordinate))
        self.normals.append(tuple(normal))
        return len(self.positions) - 1

    def triangle(self, a, b, c):
        self.indices += (a, b, c)

    def quad(self, a, b, c, d):
        self.indices += (a, b, c, a, c, d)

    def second_set(self, of):
        """One more set of texture coordinates, computed from position and first coordinate."""
        self.sets.append([of(p, t) for p, t in zip(self.positions, self.sets[0])])
        return self

    def flat(self):
        """Every triangle gets vertices of its own and its own normal: crisp facets."""
        mesh = Mesh()
        mesh.sets = [[] for _ in self.sets]
        for i in range(0, len(self.indices), 3):
            corners = self.indices[i:i + 3]
            normal = face_normal(*(self.positions[k] for k in corners))
            for k in corners:
                mesh.positions.append(self.positions[k])
                mesh.normals.append(normal)
                for own, other in zip(mesh.sets, self.sets):
                    own.append(other[k])
                mesh.indices.append(len(mesh.positions) - 1)
        return mesh

    def smooth(self, weld=False):
        """Normals from the faces around each vertex; welded: vertices at one place share one."""
        keys = [tuple(round(c, 5) for c in p) if weld else k for k, p in enumerate(self.positions)]
        sums = {}
        for i in range(0, len(self.indices), 3):
            corners = self.indices[i:i + 3]
            normal = cross_of(*(self.positions[k] for k in corners))
            for k in corners:
                old = sums.get(keys[k], (0.0, 0.0, 0.0))
                sums[keys[k]] = tuple(a + b for a, b in zip(old, normal))
        self.normals = [unit(sums.get(key, (0.0, 1.0, 0.0))) for key in keys]
        return self

    def moved(self, scale=(1, 1, 1), by=(0, 0, 0)):
        self.positions = [tuple(c * s + m for c, s, m in zip(p, scale, by)) for p in self.positions]
        return self

    def add(self, other):
        base = len(self.positions)
        self.positions += other.positions
        self.normals += other.normals
        for own, theirs in zip(self.sets, other.sets):
            own += theirs
        self.indices += [base + k for k in other.indices]
        return self

    def stored(self):
        """The same in single precision, as it is kept in a file."""
        assert 0 < len(self.positions) < 65536 and len(self.indices) % 3 == 0
        shape = Mesh()
        shape.indices = self.indices
        shape.positions, shape.normals = ([tuple(single(c) for c in p) for p in values]
                                          for values in (self.positions, self.normals))
        shape.sets = [[(single(s), turned_twice(t)) for s, t in values] for values in self.sets]
        return shape


def single(value):
    return struct.unpack("<f", struct.pack("<f", value))[0] + 0.0     # there is no zero below zero


def turned_twice(t):
    """A coordinate that can be turned round, as many formats of models do, and back without a change."""
    return single(1 - single(1 - single(t)))


def cross_of(a, b, c):
    u = [b[i] - a[i] for i in range(3)]
    v = [c[i] - a[i] for i in range(3)]
    return (u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0])


def unit(v):
    length = math.sqrt(sum(c * c for c in v)) or 1.0
    return tuple(c / length for c in v)


def face_normal(a, b, c):
    return unit(cross_of(a, b, c))


# ---- noise ------------------------------------------------------------------------

def hashed(x, y, seed=0):
    n = (x * 374761393 + y * 668265263 + seed * 2147483647) & 0xFFFFFFFF
    n = ((n ^ (n >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((n ^ (n >> 16)) & 0xFFFF) / 65535.0


def noise(x, y, seed=0):
    ix, iy = math.floor(x), math.floor(y)
    u, v = x - ix, y - iy
    u, v = u * u * (3 - 2 * u), v * v * (3 - 2 * v)
    top = hashed(ix, iy, seed) * (1 - u) + hashed(ix + 1, iy, seed) * u
    bottom = hashed(ix, iy + 1, seed) * (1 - u) + hashed(ix + 1, iy + 1, seed) * u
    return top * (1 - v) + bottom * v


def fractal(x, y, octaves=4, seed=0):
    total, weight, norm = 0.0, 1.0, 0.0
    for k in range(octaves):
        total += weight * noise(x, y, seed + k)
        norm += weight
        x, y, weight = x * 2.03 + 11.7, y * 2.03 + 5.3, weight * 0.5
    return total / norm


# ---- land and walls ------------------------------------------------------------------

def ground(size, cells, repeat, height=lambda x, z: 0.0):
    """A square of land; the second coordinates span it once."""
    mesh = Mesh()
    for i in range(cells + 1):
        for j in range(cells + 1):
            x, z = (j / cells - 0.5) * size, (i / cells - 0.5) * size
            mesh.vertex((x, height(x, z), z), (j / cells * repeat, i / cells * repeat))
    for i in range(cells):
        for j in range(cells):
            k = i * (cells + 1) + j
            mesh.quad(k, k + cells + 1, k + cells + 2, k + 1)
    mesh.smooth()
    return mesh.second_set(lambda p, t: (t[0] / repeat, t[1] / repeat))


def wall(width, height, columns, rows, repeat_x, repeat_y):
    """A wall from (0, 0) to (width, height), fine enough to be lit by a near light."""
    mesh = Mesh()
    for i in range(rows + 1):
        for j in range(columns + 1):
            u, v = j / columns, i / rows
            mesh.vertex((u * width, v * height, 0), (u * repeat_x, (1 - v) * repeat_y))
    for i in range(rows):
        for j in range(columns):
            k = i * (columns + 1) + j
            mesh.quad(k, k + 1, k + columns + 2, k + columns + 1)
    return mesh.second_set(lambda p, t: (t[0] / repeat_x, t[1] / repeat_y))


# ---- the sky --------------------------------------------------------------------------

def dome(radius=100.0, columns=48, lowest=-12.0, highest=90.0, rows=18):
    """Seen from inside. The middle of the picture is straight ahead (-z), its top row the zenith; below
    its bottom row the last colours go on, so that a steep view finds no edge."""
    mesh = Mesh()
    rows += 1
    for i in range(rows + 1):
        elevation = math.radians(highest + (lowest - highest) * i / (rows - 1) if i < rows else -80.0)
        for j in range(columns + 1):
            heading = (j / columns - 0.5) * 2 * math.pi
            p = (math.sin(heading) * math.cos(elevation), math.sin(elevation),
                 -math.cos(heading) * math.cos(elevation))
            mesh.vertex([c * radius for c in p], (j / columns, min(i / (rows - 1), 1.0)), [-c for c in p])
    for i in range(rows):
        for j in range(columns):
            k = i * (columns + 1) + j
            mesh.quad(k, k + columns + 1, k + columns + 2, k + 1)
    return mesh


def stars(count, seed, radius=95.0, smallest=0.5, largest=2.0):
    """Small squares that face the middle, each with a whole picture (a spark) on it."""
    dice = random.Random(seed)
    mesh = Mesh()
    for _ in range(count):
        y = dice.uniform(0.02, 0.98)
        heading = dice.uniform(-math.pi, math.pi)
        level = math.sqrt(1 - y * y)
        p = (math.sin(heading) * level, y, -math.cos(heading) * level)
        right = (math.cos(heading), 0.0, math.sin(heading))
        up = (-p[1] * math.sin(heading), level, p[1] * math.cos(heading))
        size = smallest + (largest - smallest) * dice.random() ** 6
        corners = [mesh.vertex([p[k] * radius + (right[k] * a + up[k] * b) * size for k in range(3)],
                               ((a + 1) / 2, (1 - b) / 2), [-c for c in p])
                   for a, b in ((-1, -1), (1, -1), (1, 1), (-1, 1))]
        mesh.quad(*corners)
    return mesh


def ridge(distance, base, low, high, seed, roughness=5.0, columns=256, spread=2.4, trees=0.0, valley=0.0):
    """A line of hills across the view. t is 0 at the crest and 1 at the foot; with `trees` the crest
    is a row of firs; `valley` lowers it in the middle, where the sun rises."""
    dice = random.Random(seed)
    mesh = Mesh()

    def crest(heading):
        h = low + (high - low) * fractal(heading * roughness + 40, seed * 3.7, 6, seed) ** 1.4
        return h * (1 - valley * math.exp(-(heading / 0.42) ** 2))

    def at(heading, height):
        return (math.sin(heading) * distance, height, -math.cos(heading) * distance)

    for j in range(columns + 1):
        heading = (j / columns - 0.5) * spread
        top = base + crest(heading)
        for height, t in ((base - 0.4 * (high - low) - 2, 1.0), (base, 0.75), (top, 0.0)):
            mesh.vertex(at(heading, height), (j / columns * 8, t), (0, 0, 1))
    for j in range(columns):
        for row in (0, 1):
            a = j * 3 + row
            mesh.quad(a, a + 3, a + 4, a + 1)
    if trees:
        heading = -spread / 2
        while heading < spread / 2:
            tall = trees * dice.uniform(0.45, 1.0)
            foot = base + crest(heading) - 0.12 * tall
            wide = tall * dice.uniform(0.15, 0.22) / distance
            for k in range(3):      # three skirts of branches
                y = foot + tall * (0.08 + 0.26 * k)
                s = wide * (1 - 0.27 * k)
                a = mesh.vertex(at(heading - s, y), (0.5, 0.0))
                b = mesh.vertex(at(heading + s, y), (0.5, 0.0))
                c = mesh.vertex(at(heading, y + tall * 0.42), (0.5, 0.0))
                mesh.triangle(a, b, c)
            heading += dice.uniform(0.5, 2.2) * tall * 0.28 / distance
    return mesh


# ---- solid things -----------------------------------------------------------------------

def sphere(columns=40, rows=24, radius=1.0):
    mesh = Mesh()
    for i in range(rows + 1):
        a = math.pi * i / rows
        for j in range(columns + 1):
            b = 2 * math.pi * j / columns
            p = (math.sin(a) * math.sin(b), math.cos(a), math.sin(a) * math.cos(b))
            mesh.vertex([c * radius for c in p], (j / columns * 2, i / rows), p)
    for i in range(rows):
        for j in range(columns):
            k = i * (columns + 1) + j
            if i:
                mesh.triangle(k, k + columns + 1, k + 1)
            if i < rows - 1:
                mesh.triangle(k + 1, k + columns + 1, k + columns + 2)
    return mesh


def icosahedron(subdivisions=0, radius=1.0):
    g = (1 + math.sqrt(5)) / 2
    points = [unit(p) for p in ((-1, g, 0), (1, g, 0), (-1, -g, 0), (1, -g, 0), (0, -1, g), (0, 1, g),
                                (0, -1, -g), (0, 1, -g), (g, 0, -1), (g, 0, 1), (-g, 0, -1), (-g, 0, 1))]
    faces = [(0, 11, 5), (0, 5, 1), (0, 1, 7), (0, 7, 10), (0, 10, 11), (1, 5, 9), (5, 11, 4), (11, 10, 2),
             (10, 7, 6), (7, 1, 8), (3, 9, 4), (3, 4, 2), (3, 2, 6), (3, 6, 8), (3, 8, 9), (4, 9, 5),
             (2, 4, 11), (6, 2, 10), (8, 6, 7), (9, 8, 1)]
    for _ in range(subdivisions):
        middle, finer = {}, []

        def half(a, b):
            key = (min(a, b), max(a, b))
            if key not in middle:
                points.append(unit([(points[a][k] + points[b][k]) / 2 for k in range(3)]))
                middle[key] = len(points) - 1
            return middle[key]

        for a, b, c in faces:
            ab, bc, ca = half(a, b), half(b, c), half(c, a)
            finer += [(a, ab, ca), (b, bc, ab), (c, ca, bc), (ab, bc, ca)]
        faces = finer
    mesh = Mesh()
    for p in points:
        mesh.vertex([c * radius for c in p], (0.5 + math.atan2(p[0], p[2]) / math.pi, 0.5 - p[1]), p)
    for face in faces:
        mesh.triangle(*face)
    return mesh


def knot(p=2, q=3, along=180, around=14, radius=1.0, tube=0.3):
    mesh = Mesh()

    def center(a):
        r = 2 + math.cos(q * a)
        return (r * math.cos(p * a) * radius / 3, r * math.sin(p * a) * radius / 3, -math.sin(q * a) * radius / 3)

    for i in range(along + 1):
        a = 2 * math.pi * i / along
        here, ahead = center(a), center(a + 0.01)
        tangent = unit([ahead[k] - here[k] for k in range(3)])
        side = unit(cross_of((0, 0, 0), tangent, here))
        out = unit(cross_of((0, 0, 0), side, tangent))
        for j in range(around + 1):
            b = 2 * math.pi * j / around
            n = [math.cos(b) * side[k] + math.sin(b) * out[k] for k in range(3)]
            mesh.vertex([here[k] + n[k] * tube for k in range(3)], (i / along * 16, j / around * 2), n)
    for i in range(along):
        for j in range(around):
            k = i * (around + 1) + j
            mesh.quad(k, k + 1, k + around + 2, k + around + 1)
    return mesh


def ring(radius=1.0, tube=0.1, along=64, around=12):
    mesh = Mesh()
    for i in range(along + 1):
        a = 2 * math.pi * i / along
        for j in range(around + 1):
            b = 2 * math.pi * j / around
            n = (math.cos(b) * math.cos(a), math.cos(b) * math.sin(a), math.sin(b))
            mesh.vertex([n[0] * tube + radius * math.cos(a), n[1] * tube + radius * math.sin(a), n[2] * tube],
                        (i / along * 12, j / around * 2), n)
    for i in range(along):
        for j in range(around):
            k = i * (around + 1) + j
            mesh.quad(k, k + around + 1, k + around + 2, k + 1)
    return mesh


def turned(profile, around=24, repeat=2.0, flutes=0, depth=0.0):
    """A body turned on a lathe from (radius, height) points, lowest first; with flutes, a column."""
    mesh = Mesh()
    lengths = [0.0]
    for (r0, y0), (r1, y1) in zip(profile, profile[1:]):
        lengths.append(lengths[-1] + math.hypot(r1 - r0, y1 - y0))
    for (r, y), run in zip(profile, lengths):
        for j in range(around + 1):
            b = 2 * math.pi * j / around
            rr = r * (1 - depth * (0.5 - 0.5 * math.cos(flutes * b)))
            mesh.vertex((rr * math.sin(b), y, rr * math.cos(b)),
                        (j / around * repeat, 1 - run / lengths[-1] * repeat * 2))
    for i in range(len(profile) - 1):
        for j in range(around):
            k = i * (around + 1) + j
            mesh.quad(k, k + 1, k + around + 2, k + around + 1)
    return mesh.smooth(weld=True)


def block(width, height, depth, repeat=1.0):
    """A box on the ground, faceted."""
    mesh = Mesh()
    for normal, right, up in (((0, 0, 1), (1, 0, 0), (0, 1, 0)), ((0, 0, -1), (-1, 0, 0), (0, 1, 0)),
                              ((1, 0, 0), (0, 0, -1), (0, 1, 0)), ((-1, 0, 0), (0, 0, 1), (0, 1, 0)),
                              ((0, 1, 0), (1, 0, 0), (0, 0, -1)), ((0, -1, 0), (1, 0, 0), (0, 0, 1))):
        size = (width, height, depth)
        corners = []
        for a, b in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
            p = [(normal[k] + right[k] * a + up[k] * b) * size[k] / 2 for k in range(3)]
            across = sum(abs(right[k]) * size[k] for k in range(3))
            tall = sum(abs(up[k]) * size[k] for k in range(3))
            corners.append(mesh.vertex((p[0], p[1] + height / 2, p[2]),
                                       ((a + 1) / 2 * across * repeat, (1 - b) / 2 * tall * repeat), normal))
        mesh.quad(*corners)
    return mesh


def standing_stone(seed, width=1.6, height=5.0, depth=1.0, cells=7):
    """A weathered slab: a box whose points noise has moved, narrower towards the top."""
    mesh = Mesh()
    shift = seed * 17.3
    for normal, right, up in (((0, 0, 1), (1, 0, 0), (0, 1, 0)), ((0, 0, -1), (-1, 0, 0), (0, 1, 0)),
                              ((1, 0, 0), (0, 0, -1), (0, 1, 0)), ((-1, 0, 0), (0, 0, 1), (0, 1, 0)),
                              ((0, 1, 0), (1, 0, 0), (0, 0, -1))):
        base = len(mesh.positions)
        for i in range(cells + 1):
            for j in range(cells + 1):
                a, b = j / cells * 2 - 1, i / cells * 2 - 1
                p = [normal[k] + right[k] * a + up[k] * b for k in range(3)]
                # round the edges, then weather
                q = unit(p)
                p = [0.82 * p[k] + 0.18 * q[k] * 1.5 for k in range(3)]
                bump = fractal(p[0] * 1.7 + p[1] * 1.1 + shift, p[2] * 1.7 - p[1] * 1.9 + shift, 4, seed) - 0.5
                lean = fractal(p[1] * 0.8 + shift, shift, 2, seed + 9) - 0.5
                narrow = 1.0 - 0.14 * (p[1] + 1)
                x = (p[0] * (1 + 0.5 * bump) * narrow + lean * 0.5) * width / 2
                z = (p[2] * (1 + 0.5 * bump) * narrow) * depth / 2
                y = (p[1] * (1 + 0.12 * bump) + 1) * height / 2 - 0.25
                mesh.vertex((x, y, z), ((a + 1) * 0.5 * (width if normal[2] or normal[1] else depth),
                                        (1 - b) * 0.25 * height))
        for i in range(cells):
            for j in range(cells):
                k = base + i * (cells + 1) + j
                mesh.quad(k, k + 1, k + cells + 2, k + cells + 1)
    mesh.smooth(weld=True)
    return mesh.second_set(lambda p, t: (p[0] * 0.17 + 0.5, 0.98 - p[1] / height * 0.9))


def paper_boat():
    """A folded boat, bow towards +z: two sides, and the peak in the middle. Both faces are drawn."""
    mesh = Mesh()

    def face(*points):
        corners = [mesh.vertex(p, (p[2] * 0.25 + 0.5, 0.5 - p[1] * 0.4)) for p in points]
        for k in range(1, len(corners) - 1):
            mesh.triangle(corners[0], corners[k], corners[k + 1])

    for side in (1, -1):
        keel_bow, keel_stern = (0, -0.18, 0.75), (0, -0.18, -0.75)
        tip_bow, tip_stern = (0, 0.52, 1.5), (0, 0.52, -1.5)
        rim = (side * 0.52, 0.16, 0.0)
        rim_bow, rim_stern = (side * 0.40, 0.22, 0.55), (side * 0.40, 0.22, -0.55)
        wall_points = [keel_stern, keel_bow, tip_bow, rim_bow, rim, rim_stern, tip_stern]
        face(*(wall_points if side > 0 else wall_points[::-1]))
        peak = [(side * 0.06, 0.0, 0.62), (side * 0.06, 0.0, -0.62), (0, 0.95, 0)]
        face(*(peak if side > 0 else peak[::-1]))
    return mesh.flat()


def glyph(outline, depth=0.0):
    """A letter from its triangles and contours ([x, y] points); with depth, it gets sides."""
    mesh = Mesh()
    for x, y in outline["points"]:
        mesh.vertex((x, y, depth / 2), (x, 1 - y), (0, 0, 1))
    mesh.indices += outline["triangles"]
    if depth:
        for contour in outline["contours"]:
            for a, b in zip(contour, contour[1:] + contour[:1]):
                (ax, ay), (bx, by) = outline["points"][a], outline["points"][b]
                normal = unit((by - ay, ax - bx, 0.0))
                half = depth / 2
                corners = [mesh.vertex((x, y, z), (x, 1 - y), normal)
                           for x, y, z in ((ax, ay, half), (ax, ay, -half), (bx, by, -half), (bx, by, half))]
                mesh.quad(*corners)
    return mesh
