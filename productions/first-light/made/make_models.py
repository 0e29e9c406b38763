"""Makes the models: writes ../models/*.glb.

    python3 make_models.py

Needs Python 3 and nothing else.
"""
import json
import math
import os

import glb
import shapes

HERE = os.path.dirname(os.path.abspath(__file__))
MODELS = os.path.join(HERE, os.pardir, "models")


def main():
    os.makedirs(MODELS, exist_ok=True)
    flat, solid = letters(), letters(depth=0.22)
    for name, parts in (
            ("letters", flat), ("solid-letters", solid), ("sky", sky()), ("hills", hills()),
            ("boat", {"boat": shapes.paper_boat()}), ("stones", stones()), ("temple", temple()),
            ("windows", {"frame": frame(), "water": shapes.ground(160, 8, 1)}), ("bodies", bodies()),
            ("skylines", {str(k + 1): skyline(k) for k in range(3)})):
        glb.write(os.path.join(MODELS, name + ".glb"), parts)


def letters(depth=0.0):
    with open(os.path.join(HERE, "letters.json")) as file:
        outlines = json.load(file)
    return {letter: shapes.glyph(outline, depth) for letter, outline in outlines.items() if "points" in outline}


# ---- sky and land ------------------------------------------------------------------

def sky():
    return {"dome": shapes.dome(), "stars": shapes.stars(460, 7),
            "warm stars": shapes.stars(260, 23, smallest=0.6, largest=2.4), "curtain": curtain()}


def curtain():
    mesh = shapes.Mesh()
    for j in range(25):
        u = j / 24
        heading = (u - 0.5) * 1.5
        distance = 84 + 5 * math.sin(u * 11)
        for height, t in ((14, 1.0), (62, 0.0)):
            mesh.vertex((math.sin(heading) * distance, height, -math.cos(heading) * distance), (u, t))
        if j:
            k = 2 * (j - 1)
            mesh.quad(k, k + 2, k + 3, k + 1)
    return mesh


def hills():
    return {"far": shapes.ridge(240, 0, 6, 34, 3, 3.2, valley=0.55),
            "middle": shapes.ridge(170, 0, 2, 24, 8, 4.0, valley=0.8),
            "near": shapes.ridge(110, -1, 0.5, 9, 14, 5.0, trees=5.0, valley=0.9)}


def skyline(k):
    """Hills across the screen of the loading screen, y downward from the crest."""
    mesh = shapes.Mesh()
    columns = 72
    for j in range(columns + 1):
        u = j / columns
        y = -0.16 * (shapes.fractal(u * (3.0 + 1.5 * k) + 7 * k, 3.1 * k + 0.5, 5, 60 + k) - 0.35) * (1 - 0.2 * k)
        mesh.vertex((u, y, 0), (u, 0))
        mesh.vertex((u, 0.5, 0), (u, 1))
        if j:
            a = 2 * (j - 1)
            mesh.quad(a, a + 1, a + 3, a + 2)
    return mesh


# ---- stones --------------------------------------------------------------------------

def stones():
    return {"meadow": shapes.ground(200, 64, 40, meadow_height),
            **{"stone %d" % k: shapes.standing_stone(k) for k in (1, 2, 3)}}


def meadow_height(x, z):
    """The same as in ../stones.lua, which stands the stones on it."""
    far = max(0.0, math.hypot(x, z) - 12)
    return (shapes.fractal(x * 0.06 + 30, z * 0.06 + 30, 3, 5) - 0.5) * min(6.0, 0.3 + far * 0.14)


# ---- temple --------------------------------------------------------------------------

HALF, HEIGHT, DEPTH = 6.5, 9.0, 47.0        # of the hall, as in ../temple.lua


def temple():
    column = shapes.turned(
        [(0.62, 0.30)] + [(0.60 - 0.012 * k, 0.32 + 7.2 * k / 8) for k in range(9)] + [(0.50, 7.55)],
        around=48, repeat=2.0, flutes=12, depth=0.10)
    foot = [(0.95, 0.0), (0.95, 0.16), (0.88, 0.17), (0.88, 0.24), (0.70, 0.34), (0.0, 0.34)]
    head = [(0.50, 7.45), (0.62, 7.60), (0.84, 7.90), (0.90, 7.92), (0.90, 8.2), (1.0, 8.22), (1.0, HEIGHT)]
    return {"side": shapes.wall(DEPTH + 12, HEIGHT, 36, 6, 8, 1.25),
            "end": shapes.wall(2 * HALF, HEIGHT, 10, 8, 1.5, 1.25),
            "floor": shapes.wall(2 * HALF, DEPTH + 12, 10, 40, 3, 16),
            "column": column,
            "foot and head": shapes.turned(foot, around=20).add(shapes.turned(head, around=20)),
            "rose window": rose_window(), "rim": rim()}


def rose_window():
    """A disc of glass; the first coordinates lay a picture on it once, the second wind one around it."""
    mesh, polar, around, circles = shapes.Mesh(), [], 48, 10
    for i in range(circles + 1):
        for k in range(around + 1):
            a, r = 2 * math.pi * k / around, i / circles
            x, y = r * math.sin(a), r * math.cos(a)
            mesh.vertex((x, y, 0), (0.5 + 0.5 * x, 0.5 - 0.5 * y))
            polar.append((k / around, r))
    for i in range(circles):
        for k in range(around):
            v = i * (around + 1) + k
            mesh.quad(v, v + around + 1, v + around + 2, v + 1)
    mesh.sets.append(polar)
    return mesh


def rim():
    mesh = shapes.Mesh()
    for x, z, w, d in ((0, 1.06, 2.24, 0.12), (0, -1.06, 2.24, 0.12), (1.06, 0, 0.12, 2.0), (-1.06, 0, 0.12, 2.0)):
        mesh.add(shapes.block(w, 0.12, d).moved(by=(x, 0, z)))
    return mesh


# ---- windows and bodies -----------------------------------------------------------------

def frame():
    """A thin frame around (-1, -1)..(1, 1)."""
    mesh = shapes.Mesh()
    for x, y, w, h in ((0, 1.03, 2.12, 0.06), (0, -1.03, 2.12, 0.06), (1.03, 0, 0.06, 2.0), (-1.03, 0, 0.06, 2.0)):
        mesh.add(shapes.block(w, h, 0.16).moved(by=(x, y - h / 2, -0.02)))
    return mesh


def bodies():
    return {"ball": shapes.sphere(), "small ball": shapes.icosahedron(3), "heart": shapes.icosahedron(4),
            "gem": shapes.icosahedron(1).flat(), "corners": shapes.icosahedron(0), "cage": shapes.icosahedron(2),
            "knot": shapes.knot(), "ring": shapes.ring()}


if __name__ == "__main__":
    main()
