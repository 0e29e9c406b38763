"""III. Stones: among old stones on a meadow, with the sun low behind them."""
import math

import meshes
from document import Unit, curve_to, line, spline, wave
from stage import PEACH, Path, shade

CAPTION = "III / STONES"

RADIUS = 9.0


def meadow_height(x, z):
    far = max(0.0, math.hypot(x, z) - 12)
    return (meshes.fractal(x * 0.06 + 30, z * 0.06 + 30, 3, 5) - 0.5) * min(6.0, 0.3 + far * 0.14)


def build(stage, start, end):
    document, length = stage.document, end - start
    path = Path(document, length, [
        (0, (-15.5, 1.3, 9), (0, 2.7, -4), 2),
        (length * 0.35, (-6.5, 1.5, 15.5), (0, 3.0, -8), 0),
        (length * 0.7, (0.3, 2.0, 13.6), (0, 3.2, -14), -1),
        (length, (0, 3.2, 6.6), (0, 3.8, -30), 0)], fov=54, far=500)

    sky = stage.sky("meadow sky", "sky_dawn.jpg")
    stage.sun(sky, 1.0, 1.2, elevation=6.0)
    document.clip(0, start, end, sky, "Simple render", path.sky)

    sun = document.light((0.34, 0.27, 0.34), (1.0, 0.66, 0.40), (0, 34, -150))
    cool = document.light((0.12, 0.11, 0.20), (0.46, 0.42, 0.66), (-40, 60, 60))
    haze = document.color(0.95, 0.60, 0.48)
    fog = {"fog": (16, 105), "fog_color": haze, "hint": "Fastest"}

    scene = document.scene("stones")
    stage.hills(scene, (0.92, 0.56, 0.50), (0.68, 0.40, 0.46), (0.42, 0.26, 0.36), at=(0, -2, 0))
    land = stage.shape("meadow", lambda: meshes.ground(200, 64, 40, meadow_height))
    scene.model(land, stage.lit("meadow.jpg", (1.0, 0.92, 0.86, 1), sun, cool, **fog))

    shadow = document.material((0.20, 0.19, 0.13, 0.85), [stage.once("shadow.png")], "Substract alpha")
    rock = document.material((1.0, 0.95, 0.92, 1), [Unit(stage.with_levels("rock.jpg"), "Multiply color")],
                             light1=sun, light2=cool, normalize=True, **fog)
    circle = []
    for k in range(11):
        angle = math.radians(k * 360 / 11 + 16)
        circle.append((RADIUS * math.sin(angle), RADIUS * math.cos(angle), k))
    for x, z, k in circle:
        scene.model(stage.shape("shadow", shadow_shape), shadow, at=(x, meadow_height(x, z) + 0.06, z),
                    turn=(0, math.degrees(math.atan2(x, z + 150)), 0), size=(2.0, 1, 11))
    for x, z, k in circle:
        tall = (1.0, 0.86, 1.12, 0.92, 1.05)[k % 5]
        scene.model(stage.shape("stone%d" % (k % 3), lambda k=k: meshes.standing_stone(k % 3 + 1)), rock,
                    at=(x, meadow_height(x, z) - 0.1, z), size=(1.0, tall, 1.0),
                    turn=(0, math.degrees(math.atan2(x, z)) + (k * 29 % 24 - 12), 0))
    orb(stage, scene, length)
    mist(stage, scene, length)
    document.clip(1, start, end, scene, "Link with previous", path.world)


def shadow_shape():
    """Lies on the ground from the foot of a stone towards +z."""
    mesh = meshes.Mesh()
    for x, z in ((-1, 1), (1, 1), (1, 0), (-1, 0)):
        mesh.vertex((x / 2, 0, z), ((x + 1) / 2, 1 - z), (0, 1, 0))
    mesh.quad(0, 1, 2, 3)
    return mesh


def orb(stage, scene, length):
    """A mirror ball rises in the middle, and smaller ones go round it on splines."""
    document = stage.document
    mirror = document.material((1.0, 0.96, 0.94, 1), [
        stage.once("mirror.jpg", "Ignore alpha, multiply color", "Spheremap")], normalize=True)
    rise = document.function(curve_to(length * 3 // 4, 0.2, 3.6), wave(length, 3.6, 0.12, 300))
    slow = document.function(line(length, 0, 160))
    scene.model(stage.shape("ball"), mirror, at=(0, rise, 0), turn=(0, slow, 0), size=1.45)
    for k in range(5):
        turns = []
        for j in range(12):
            a = j / 11 * 2.2 * math.pi + k * 2 * math.pi / 5
            turns.append((round(length * j / 11), a))
        reach = 3.0 + 0.25 * k
        x = document.function(spline(length, [(t, reach * math.sin(a)) for t, a in turns]))
        z = document.function(spline(length, [(t, reach * math.cos(a)) for t, a in turns]))
        y = document.function(spline(length, [(t, 2.2 + t / length + 0.9 * math.sin(2 * a + k)) for t, a in turns]))
        scene.model(stage.shape("orb"), mirror, at=(x, y, z), size=0.30 + 0.04 * (k % 3))
    scene.model(stage.shape("panel"), stage.glowing(shade(PEACH, 0.34)), at=(0, rise, 0), size=7.5, facing=True)


def mist(stage, scene, length):
    """Banks of morning mist between the stones."""
    document = stage.document
    bank = document.material((1.0, 0.78, 0.68, 0.42), [Unit(stage.picture("mist.png"), "Multiply color")], "Alpha")
    for k, (z, y, width) in enumerate(((-26, 1.8, 90), (-13, 1.1, 60), (-4.5, 0.7, 44))):
        drift = document.function(line(length, -6 + 3 * k, 6 - 5 * k))
        scene.model(stage.shape("panel"), bank, at=(drift, y, z), size=(width, 3.4, 1))
