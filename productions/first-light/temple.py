"""IV. Temple: a hall whose every surface is computed: bricks, marble, tiles and a window of coloured glass."""
import math

import meshes
from document import Unit, curve_to, in_rows, line, spline, wave
from stage import BEAT, CREAM, PEACH, Path, ROSE, shade

CAPTION = "IV / TEMPLE"

HALF, HEIGHT, DEPTH = 6.5, 9.0, 47.0


def textures(stage):
    """All six generators and all fourteen operations, worked into four surfaces."""
    d = stage.document
    sand = d.generated_image("Color", (0.86, 0.76, 0.70))
    veins = d.generated_image("Sinus plasma", (0.95, 0.86, 0.84), 2, 3)
    rose = d.generated_image("Radial colors", (1.0, 0.86, 0.54), (0.56, 0.10, 0.38), 1.0, 10)
    cells = d.generated_image("Maze", (0.45, 0.75, 1.0), 5, 21, 0.5)
    clouds = d.generated_image("Maze", (1.0, 1.0, 1.0), 5, 9, 0.62)
    courses = d.generated_image("Bricks", (0.86, 0.78, 0.74), (0.66, 0.57, 0.57), 8, 4, 2, 2, 32)
    tiles = d.generated_image("Bricks", (0.86, 0.80, 0.80), (0.46, 0.38, 0.44), 4, 4, 2, 2, 0)
    leads = d.generated_image("Bricks", (1.0, 1.0, 1.0), (0.10, 0.05, 0.10), 5, 16, 3, 1, 8)
    grains = d.generated_image("Noise", (1.0, 1.0, 1.0), 77)

    # grain, twice softened, with a second copy of itself from elsewhere
    noise = d.node("noise", "Add", None, grains, 1.0, 1.0)
    soft = d.node("soft noise", "Blur", noise)
    softer = d.node("softer noise", "Blur", soft)
    moved = d.node("moved noise", "Offset", softer, None, 91, -37)
    grain = d.node("grain", "Max 2", softer, moved, 1.0, 1.0)

    # the wall: courses in relief, worn by grain and by large stains
    bricks = d.node("bricks", "Add", None, courses, 1.0, 1.0)
    relief = d.node("relief", "Emboss", bricks, None, 1)
    relief = d.node("soft relief", "Blur", relief)
    worn = d.node("worn", "Mul 2", relief, grain, 1 / 180)
    stains = d.node("stains", "Maximum", None, clouds, 1.0, 0.9)
    stains = d.node("lighter stains", "Add", stains, sand, 0.22, 0.80)
    stains = d.node("soft stains", "Blur", stains)
    wall = d.node("wall", "Mul 2", worn, stains, 1 / 205)

    # marble: a plasma bent twice, dark where it is turned inside out
    marble = d.node("plasma", "Add", None, veins, 1.0, 1.0)
    marble = d.node("bent", "Ripple", marble, None, 0.07, 0.05, 2, 1)
    marble = d.node("bent again", "Ripple", marble, None, 0.02, 0.02, 4, 3)
    dark = d.node("inside out", "Invert", marble)
    dark = d.node("thin veins", "Multiply", dark, None, 0.80)
    marble = d.node("veined", "Min 2", marble, d.node("grain for veins", "Multiply", grain, None, 1.35), 1.0, 1.0)
    marble = d.node("marble", "Add 2", marble, dark, 0.52, 0.62)
    marble = d.node("warm marble", "Multiply", marble, sand, 1 / 150)

    # the floor: marble cut into tiles
    floor = d.node("floor", "Multiply", marble, tiles, 1 / 190)
    floor = d.node("floor, not too bright", "Minimum", floor, d.generated_image("Color", (0.92, 0.86, 0.84)), 1.0, 1.0)

    # coloured glass: a rose of light with cells in it; the leads lie on it in circles
    glass = d.node("rose", "Add", None, rose, 1.0, 1.0)
    glass = d.node("glass", "Maximum", glass, cells, 0.96, 0.46)
    leading = d.node("leads", "Add", None, leads, 1.0, 1.0)
    return {name: d.generated_texture(name, node) for name, node in (
        ("wall", wall), ("marble", marble), ("floor", floor), ("glass", glass), ("leads", leading))}


def build(stage, start, end):
    document, length = stage.document, end - start
    path = Path(document, length, [
        (0, (-2.6, 1.2, 5), (0.6, 4.6, -30), 3),
        (length * 0.4, (-1.2, 1.7, -7), (0, 4.0, -44), 1),
        (length * 0.72, (0.9, 2.6, -17), (0, 3.2, -44), -1),
        (length, (0, 4.2, -26), (0, 4.9, -58), 0)], fov=60, far=200)
    made = textures(stage)

    # the lantern flies ahead along the hall; it is the second light
    lantern = [document.function(spline(length, [(round(length * k / 8), f(k / 8)) for k in range(9)]))
               for f in (lambda u: 2.2 * math.sin(u * 9), lambda u: 2.4 + 0.9 * math.sin(u * 14 + 1),
                         lambda u: -3 - 27 * u)]
    window = document.light((0.17, 0.15, 0.30), (1.0, 0.74, 0.54), (0, 7.5, -DEPTH + 9))
    flame = document.light((0.05, 0.04, 0.05), (0.46, 0.30, 0.18), tuple(lantern))
    haze = document.color(0.78, 0.48, 0.48)
    lights = {"light1": window, "light2": flame, "normalize": True, "fog": (18, 105), "fog_color": haze}

    def surface(name, color=(1, 1, 1, 1), *more):
        return document.material(color, [Unit(made[name], "Multiply color"), *more], **lights)

    hall = document.scene("temple")
    side = stage.shape("temple_wall", lambda: meshes.wall(DEPTH + 12, HEIGHT, 36, 6, 8, 1.25))
    bricks = surface("wall")
    hall.model(side, bricks, at=(-HALF, 0, 12), turn=(0, 90, 0))
    hall.model(side, bricks, at=(HALF, 0, -DEPTH), turn=(0, -90, 0))
    front = stage.shape("temple_end", lambda: meshes.wall(2 * HALF, HEIGHT, 10, 8, 1.5, 1.25))
    hall.model(front, bricks, at=(-HALF, 0, -DEPTH))
    flat = stage.shape("temple_floor", lambda: meshes.wall(2 * HALF, DEPTH + 12, 10, 40, 3, 16))
    hall.model(flat, surface("floor"), at=(-HALF, 0, 12), turn=(-90, 0, 0))
    hall.model(flat, surface("marble", (0.62, 0.56, 0.66, 1)), at=(-HALF, HEIGHT, -DEPTH), turn=(90, 0, 0))
    columns(stage, hall, surface("marble"))
    pool(stage, hall, length, haze)

    # the window, brighter on every other beat, and what its light does
    kindled = (*(document.function(curve_to(2 * BEAT, c, 0), loop="Loop", end=2 * BEAT) for c in (0.26, 0.16, 0.08)), 1)
    hall.model(stage.shape("rose_window", rose_window), document.material(kindled, [
        Unit(made["glass"], "Add color"), Unit(made["leads"], "Multiply previous")]),
               at=(0, 4.9, -DEPTH + 0.1), size=3.6)
    hall.model(stage.shape("ring"), surface("marble", (0.8, 0.7, 0.7, 1)), at=(0, 4.9, -DEPTH + 0.12), size=3.65)
    for size, tone in ((24, shade(ROSE, 0.26)),):
        hall.model(stage.shape("panel"), stage.glowing(tone, depth=False), at=(0, 4.9, -DEPTH + 1.2), size=size)
    beam = stage.glowing(shade(PEACH, 0.26), "glow.png", depth=False)
    for k, tilt in enumerate((-5.0, 0.0, 5.0)):
        breath = document.function(wave(330, 1.0, 0.12, 330, k / 3), loop="Loop", end=330)
        hall.model(stage.shape("beam", beam_shape), beam, at=((k - 1) * 0.9, 5.2, -DEPTH + 1), turn=(0, 0, tilt * 2),
                   size=(breath, 1, 1))
    spark = stage.glowing((1.0, 0.66, 0.32), "glow.png")
    hall.model(stage.shape("panel"), spark, at=tuple(lantern), size=1.5, facing=True)
    hall.model(stage.shape("panel"), stage.glowing(CREAM, "spark.png"), at=tuple(lantern), size=0.8, facing=True)
    document.clip(0, start, end, hall, "Simple render", path.world)


def columns(stage, hall, marble):
    """Two rows of fluted columns: one model, multiplied along the hall."""
    shaft = stage.shape("column", lambda: meshes.turned(
        [(0.62, 0.30)] + [(0.60 - 0.012 * k, 0.32 + 7.2 * k / 8) for k in range(9)] + [(0.50, 7.55)],
        around=48, repeat=2.0, flutes=12, depth=0.10))
    foot = [(0.95, 0.0), (0.95, 0.16), (0.88, 0.17), (0.88, 0.24), (0.70, 0.34), (0.0, 0.34)]
    head = [(0.50, 7.45), (0.62, 7.60), (0.84, 7.90), (0.90, 7.92), (0.90, 8.2), (1.0, 8.22), (1.0, HEIGHT)]
    ends = stage.shape("column_ends", lambda: meshes.turned(foot, around=20).add(meshes.turned(head, around=20)))
    for x in (-4.0, 4.0):
        rows = [in_rows((1, 1, 11), (0, 0, -5.2))]
        hall.model(shaft, marble, at=(x, 0, 2), manipulators=rows)
        hall.model(ends, marble, at=(x, 0, 2), manipulators=rows)


def pool(stage, hall, length, haze):
    """A basin in the floor; rings run outward from its middle."""
    document = stage.document
    waves = document.mesh_effect("Centerwave water", document.function(line(length, 0, length * 0.055)))
    water = document.material((1.0, 0.94, 0.94, 1), [stage.once("mirror.jpg", "Multiply color", "Spheremap")],
                              normalize=True, fog=(14, 90), fog_color=haze)
    size = 0.185
    hall.effect(waves, water, at=(-14.5 * size, 0.16, -34 - 14.5 * size), size=(size, 0.045, size))
    rim = stage.shape("rim", rim_shape)
    stone = document.material((0.62, 0.50, 0.50, 1), [Unit(stage.picture("rock.jpg"), "Multiply color")])
    hall.model(rim, stone, at=(0, 0, -34), size=14.6 * size)


def rim_shape():
    mesh = meshes.Mesh()
    for x, z, w, d in ((0, 1.06, 2.24, 0.12), (0, -1.06, 2.24, 0.12), (1.06, 0, 0.12, 2.0), (-1.06, 0, 0.12, 2.0)):
        mesh.add(meshes.block(w, 0.12, d).moved(by=(x, 0, z)))
    return mesh


def rose_window():
    """A disc of glass; the first coordinates lay a picture on it once, the second wind one around it."""
    mesh, polar, around, circles = meshes.Mesh(), [], 48, 10
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


def beam_shape():
    """A sheet of light from the window down to the floor of the hall."""
    mesh = meshes.Mesh()
    for x, y, z, s, t in ((-1.6, 1.6, 0, 0.1, 0.5), (1.6, 1.6, 0, 0.9, 0.5),
                          (3.2, -4.9, 17, 1.0, 1.0), (-3.2, -4.9, 17, 0.0, 1.0)):
        mesh.vertex((x, y, z), (s, t))
    mesh.quad(0, 1, 2, 3)
    return mesh
