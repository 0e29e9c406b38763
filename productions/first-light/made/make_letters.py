"""Outlines of the 87 letters, triangulated, from DejaVu Sans: writes letters.json and ../letters.lua.

    python3 make_letters.py [FONT.ttf]      then make_models.py

Needs fontTools.
"""
import json
import os
import sys

from fontTools.pens.recordingPen import DecomposingRecordingPen
from fontTools.ttLib import TTFont

HERE = os.path.dirname(os.path.abspath(__file__))

# The order of the letters in a font; the space is the last of the 87.
LETTERS = ("aAáÁbBcCdDeEéÉfFgGhHiIíÍjJkKlLmMnNoOóÓöÖőŐpPqQrRřŘsStTuUúÚüÜűŰvVwWxXyYzZ"
           "?!0123456789&/ ")
assert len(LETTERS) == 87

CURVE_STEPS = 5


def contours_of(glyphs, name, scale):
    pen = DecomposingRecordingPen(glyphs)
    glyphs[name].draw(pen)
    contours, points = [], []
    for operation, arguments in pen.value:
        if operation == "moveTo":
            points = [arguments[0]]
        elif operation == "lineTo":
            points.append(arguments[0])
        elif operation == "qCurveTo":
            # Quadratic runs with implied points half way between two controls.
            controls = list(arguments)
            while len(controls) > 1:
                control = controls.pop(0)
                end = controls[0] if len(controls) == 1 else tuple((a + b) / 2 for a, b in zip(control, controls[0]))
                start = points[-1]
                for k in range(1, CURVE_STEPS + 1):
                    t = k / CURVE_STEPS
                    points.append(tuple((1 - t) ** 2 * s + 2 * t * (1 - t) * c + t * t * e
                                        for s, c, e in zip(start, control, end)))
        elif operation == "closePath":
            points = [p for k, p in enumerate(points) if p != points[k - 1]]
            if len(points) > 2:
                contours.append([(x * scale, y * scale) for x, y in points])
    return contours


def area(points):
    return sum(a[0] * b[1] - b[0] * a[1] for a, b in zip(points, points[1:] + points[:1])) / 2


def inside(point, polygon):
    x, y = point
    odd = False
    for (ax, ay), (bx, by) in zip(polygon, polygon[1:] + polygon[:1]):
        if (ay > y) != (by > y) and x < (bx - ax) * (y - ay) / (by - ay) + ax:
            odd = not odd
    return odd


def turn(a, b, c):
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])


def bridge(outer, hole, points):
    """Joins a hole to its outline by a pair of edges: the nearest pair of points that see each other."""
    edges = [(poly[k - 1], poly[k]) for poly in (outer, hole) for k in range(len(poly))]

    def crossed(a, b):
        for c, d in edges:
            if len({a, b, c, d}) == 4 and len({points[a], points[b], points[c], points[d]}) == 4:
                if turn(points[a], points[b], points[c]) * turn(points[a], points[b], points[d]) < 0 and \
                        turn(points[c], points[d], points[a]) * turn(points[c], points[d], points[b]) < 0:
                    return True
        return False

    pairs = sorted(((points[a][0] - points[b][0]) ** 2 + (points[a][1] - points[b][1]) ** 2, i, j)
                   for i, a in enumerate(outer) for j, b in enumerate(hole))
    def opens_towards(i, target):
        # A point that earlier bridges doubled stands in the outline twice: only one of them faces the hole.
        a, b, c = points[outer[i - 1]], points[outer[i]], points[outer[(i + 1) % len(outer)]]
        if turn(a, b, c) >= 0:
            return turn(a, b, target) > 0 and turn(b, c, target) > 0
        return not (turn(a, b, target) <= 0 and turn(b, c, target) <= 0)

    for _, i, j in pairs:
        if opens_towards(i, points[hole[j]]) and not crossed(outer[i], hole[j]):
            return outer[:i + 1] + hole[j:] + hole[:j + 1] + outer[i:]
    raise ValueError("no bridge")


def clip_ears(loop, points):
    loop, triangles = list(loop), []
    margin = 0.0        # points on the edge of an ear block it, unless no other ear is left
    while len(loop) > 3:
        best = None
        for k in range(len(loop)):
            a, b, c = loop[k - 1], loop[k], loop[(k + 1) % len(loop)]
            size = turn(points[a], points[b], points[c])
            if size <= 1e-12:
                if abs(size) <= 1e-12:
                    best = (2.0, k, False)
                    break
                continue
            clear = True
            for p in loop:
                q = points[p]
                if q in (points[a], points[b], points[c]):
                    continue
                if min(turn(points[a], points[b], q), turn(points[b], points[c], q),
                       turn(points[c], points[a], q)) >= margin:
                    clear = False
                    break
            if clear:
                sides = sum((points[s][0] - points[e][0]) ** 2 + (points[s][1] - points[e][1]) ** 2
                            for s, e in ((a, b), (b, c), (c, a)))
                if best is None or size / sides > best[0]:
                    best = (size / sides, k, True)
        if best is None:
            if margin:
                raise ValueError("no ear")
            margin = 1e-9
            continue
        margin = 0.0
        _, k, real = best
        if real:
            triangles += [loop[k - 1], loop[k], loop[(k + 1) % len(loop)]]
        del loop[k]
    if turn(*(points[p] for p in loop)) > 1e-12:
        triangles += loop
    return triangles


def outline(contours):
    """Points, triangles and contours, outlines counter-clockwise, holes clockwise."""
    depth = [sum(inside(c[0], other) for other in contours if other is not c) for c in contours]
    contours = [c if (area(c) > 0) == (d % 2 == 0) else c[::-1] for c, d in zip(contours, depth)]
    points, loops = [], []
    for contour in contours:
        loops.append(list(range(len(points), len(points) + len(contour))))
        points += [(round(x, 4), round(y, 4)) for x, y in contour]
    triangles = []
    for k, loop in enumerate(loops):
        if depth[k] % 2:
            continue
        holes = [loops[m] for m in range(len(loops)) if depth[m] == depth[k] + 1
                 and inside(contours[m][0], contours[k])]
        outer = loop
        for hole in sorted(holes, key=lambda h: -max(points[p][0] for p in h)):
            outer = bridge(outer, hole, points)
        triangles += clip_ears(outer, points)
    return {"points": points, "triangles": triangles, "contours": loops}


def write_measures(letters):
    with open(os.path.join(HERE, os.pardir, "letters.lua"), "w") as file:
        file.write("-- How wide each letter is, and how far from the pen its shape starts; capitals are one unit tall.\n"
                   "-- Made by made/make_letters.py.\n\nreturn {\n")
        for letter, record in letters.items():
            file.write('    ["%s"] = { width = %r, bearing = %r },\n' % (letter, record["width"], record["bearing"]))
        file.write("}\n")


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
    font = TTFont(path)
    glyphs, names = font.getGlyphSet(), font.getBestCmap()
    scale = 1.0 / font["glyf"]["H"].yMax      # a capital is one unit tall
    letters = {}
    for letter in LETTERS:
        name = names[ord(letter)]
        advance, bearing = font["hmtx"][name]
        contours = contours_of(glyphs, name, scale)
        record = {"width": round(advance * scale, 4), "bearing": round(bearing * scale, 4)}
        if contours:
            shape = outline(contours)
            wanted = sum(area([shape["points"][p] for p in loop]) for loop in shape["contours"])
            got = sum(turn(*(shape["points"][p] for p in shape["triangles"][k:k + 3])) / 2
                      for k in range(0, len(shape["triangles"]), 3))
            assert abs(wanted - got) < 1e-3, (letter, wanted, got)
            # Each mesh starts at its own left edge; the font's offset puts it back on the line.
            shape["points"] = [(round(x - record["bearing"], 4), y) for x, y in shape["points"]]
            record.update(shape)
        letters[letter] = record
    with open(os.path.join(HERE, "letters.json"), "w") as file:
        json.dump(letters, file, ensure_ascii=False, separators=(",", ":"))
    write_measures(letters)
    print("%d letters, %d points" % (len(letters), sum(len(r.get("points", [])) for r in letters.values())))


if __name__ == "__main__":
    main()
