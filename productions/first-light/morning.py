"""VII. Morning: over the sea, into the day."""
from document import Unit, curve_from, curve_to, flat_camera, hold, in_rows, line, spline, wave
from lake import reflections
from stage import (BEAT, CREAM, GOLD, PEACH, Path, SKYBLUE, bars, between, shade)

GREETINGS = ("GOOD MORNING", "JÓ REGGELT", "BUENOS DÍAS", "DOBRÉ RÁNO", "GÜNAYDIN", "GOEDEMORGEN", "BOM DIA", "GOD MORGON")


def build(stage, start, end):
    document, length = stage.document, end - start
    path = Path(document, length, [
        (0, (0, 3.2, 0), (0, 3.5, -60), 0),
        (length * 0.5, (0, 6.5, -16), (0, 9, -80), 0),
        (length, (0, 15, -34), (0, 21, -100), 0)], fov=58)

    day = document.function(curve_to(length * 2 // 3, 0.25, 1.0))
    sky = stage.sky("morning sky", "sky_dawn.jpg", "sky_morning.jpg", day)
    stage.sun(sky, 1.0, 1.3, elevation=7.5)
    document.clip(0, start, end, sky, "Simple render", path.sky)

    scene = document.scene("sea")
    for name, tone in (("ridge_far", (0.98, 0.74, 0.64)), ("ridge_middle", (0.80, 0.60, 0.60))):
        scene.model(stage.shape(name), document.material((*tone, 1), [
            Unit(stage.picture("crest.png"), "Multiply color", wrap="Edge clamp")]))
    sea(stage, scene)
    clouds(stage, scene, length)
    document.clip(1, start, end, scene, "Link with previous", path.world)


def sea(stage, scene):
    document = stage.document
    time = document.function(line(25600, 0, 25600 * 0.07), kind="Integer")
    waves = document.mesh_effect("Lake water 2", time)
    haze = document.color(1.0, 0.86, 0.70)
    surface = document.material((0.92, 0.88, 0.86, 1), [Unit(reflections(stage), "Multiply color", wrap="Edge clamp",
                                                           coordinates="Cubemap")],
                                normalize=True, fog=(50, 240), fog_color=haze)
    scene.effect(waves, surface, at=(-177, 0, -238), size=(2.0, 0.10, 2.0), manipulators=[in_rows((3, 1, 2), (118, 0, 118))])
    scene.model(stage.shape("panel"), stage.glowing(shade(GOLD, 0.5), "glow.png", depth=False), at=(0, 0.05, -90),
                turn=(-90, 0, 0), size=(24, 200, 1))


def clouds(stage, scene, length):
    """Small clouds that the climbing view passes; their colour already holds their alpha."""
    document = stage.document
    puff = document.material((1, 1, 1, 1), [Unit(stage.picture("cloud.png"), "Multiply color", wrap="Edge clamp")],
                             "Add alpha", depth=True)
    for k, (x, y, z, size) in enumerate(((-34, 20, -120, 44), (40, 26, -130, 52), (-12, 30, -140, 40), (18, 17, -95, 26),
                                         (-26, 24, -84, 30), (30, 22, -70, 24))):
        drift = document.function(line(length, x - 2, x + 3 + k))
        scene.model(stage.shape("panel"), puff, at=(drift, y, z), size=(size, size * 0.55, 1), facing=True)
