"""I. Night: the view sinks from the stars to the hills while the title rises."""
import math

import meshes
from lake import water
from document import Unit, curve_to, flat_camera, hold, line, on_vertices, wave
from stage import BEAT, Path, shade

CAPTION = "I / NIGHT"

TITLE = "FIRST LIGHT"


def build(stage, start, end):
    document, length = stage.document, end - start
    path = Path(document, length, [
        (0, (0, 2.2, 0), (-16, 74, -80)),
        (length * 0.35, (0, 2.2, 0), (-8, 24, -90)),
        (length * 0.7, (0, 2.2, 0), (0, 16, -90)),
        (length, (0, 2.2, -2), (0, 11, -90))], fov=58)

    # the first hint of the dawn comes with the last bar
    ember = document.function(hold(length // 2, 0.0), line(length - length // 2, 0.0, 0.34))
    sky = stage.sky("night sky", "sky_night.jpg", "sky_dawn.jpg", ember)
    for name, period, tone in (("stars_a", 130, (0.80, 0.84, 1.0)), ("stars_b", 210, (1.0, 0.90, 0.78))):
        twinkle = [document.function(wave(period, c * 0.78, c * 0.20, period, k / 5), loop="Loop", end=period)
                   for k, c in enumerate(tone)]
        material = stage.glowing(twinkle, "spark.png", depth=False)
        sky.model(stage.shape(name), material)
    sky.model(stage.shape("panel"), stage.glowing((1, 1, 1), "moon.png", depth=False),
              at=(-38, 46, -68), turn=(30, 29, 8), size=11)
    sky.model(stage.shape("panel"), stage.glowing(shade((0.55, 0.58, 0.9), 0.30), "glow.png", depth=False),
              at=(-38, 46, -68), turn=(30, 29, 0), size=46)
    aurora(stage, sky)
    document.clip(0, start, end, sky, "Simple render", path.sky)

    land = document.scene("night hills")
    stage.hills(land, (0.115, 0.115, 0.27), (0.075, 0.08, 0.20), (0.035, 0.04, 0.115))
    water(stage, land, document.color(0.10, 0.085, 0.21), (0.24, 0.21, 0.42), (60, 220))
    # fireflies: the particles themselves are only points, so every point carries a spark
    time = document.function(line(length, 0, length * 0.022), kind="Float")
    swarm = document.mesh_effect("Particles", time)
    pulse = document.function(wave(90, 0.75, 0.25, 90), loop="Loop", end=90)
    fly = stage.glowing((pulse, document.function(wave(90, 0.60, 0.2, 90), loop="Loop", end=90), 0.28), "glow.png")
    land.effect(swarm, fly, at=(0, 3, -22))
    land.model(stage.shape("panel"), fly, at=(0, 3.2, -20), size=0.42, facing=True,
               manipulators=[on_vertices(swarm, size=(0.9, 0.22, 0.6))])
    for width, level in ((9, 0.20), (3.5, 0.24)):     # what the moon lays on the water
        silver = stage.glowing(shade((0.72, 0.74, 1.0), level), depth=False)
        land.model(stage.shape("panel"), silver, at=(-38, 0.05, -66), turn=(-90, 29, 0), size=(width, 90, 1))
    document.clip(1, start, end, land, "Clear Z-buffer and link with previous", path.world)

    title(stage, start, end)


def aurora(stage, sky):
    """Curtains of light in the north: a moving plasma seen through a veil."""
    document = stage.document
    step = document.function(line(12000, 0, 260))
    plasma = document.dynamic_texture("Effect 1", 64, 8, step)
    breath = document.function(wave(420, 0.55, 0.25, 420), loop="Loop", end=420)
    for k, (heading, tone) in enumerate(((-14, (0.12, 0.62, 0.58)), (14, (0.34, 0.34, 0.78)))):
        veil = document.material(
            (tone[0], tone[1] if k else breath, tone[2], 1),
            [stage.once("aurora.png"),
             Unit(plasma, "Multiply previous")], "Add", depth=False)
        mesh = stage.shape("curtain", curtain)
        sky.model(mesh, veil, turn=(0, -heading, 0))


def curtain():
    mesh = meshes.Mesh()
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


def title(stage, start, end):
    """Letter after letter floats up and settles; all of them leave together."""
    document = stage.document
    begin, stay = start + 3 * BEAT, end - start - 3 * BEAT - BEAT
    glow = document.function(line(2 * BEAT, 0, 1), hold(stay - 4 * BEAT, 1), line(2 * BEAT, 1, 0))
    ink = stage.plain((1.0, 0.93, 0.82, glow), "Alpha", depth=False)
    size, letters = 0.050, document.scene("title")
    font = stage.font(ink, size, tracking=0.42)
    rise = document.function(hold(10, 0.50), curve_to(190, 0.50, 0.435))
    x = 0.5 - (stage.width(font, TITLE) - 0.42 * size) / 2
    for k, letter in enumerate(TITLE):
        if letter != " ":
            letters.text(font, letter, at=(x, rise, 0), size=(size, -size / 0.75, 1), offset=(len(TITLE) - k) * 8)
        x += font.widths[letter]
    line_ink = document.material((0.9, 0.6, 0.5, 1), [stage.once("glow.png")],
                                 "Add", depth=False)
    grow = document.function(hold(60, 0.0), curve_to(260, 0.0, 0.72), hold(stay - 480, 0.72), line(160, 0.72, 0.0))
    letters.model(stage.shape("panel"), line_ink, at=(0.5, 0.475, 0), size=(grow, 0.010, 1))
    document.clip(17, begin, begin + stay, letters, "Link with previous", flat_camera())
