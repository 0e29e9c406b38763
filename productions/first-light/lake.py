"""II. Lake: paper boats carry their lights towards the sun."""
from document import Unit, curve_to, in_line, in_rows, line, spline, wave
from stage import GOLD, PEACH, Path, SUN, shade

CAPTION = "II / LAKE"

BOATS = (   # (tick, x, z) along the way of each boat, and its size
    ([(0, -3.2, -6), (500, -2.4, -13), (1000, -2.0, -21), (1600, -1.2, -32)], 1.0),
    ([(0, 2.6, -3), (500, 3.4, -9), (1000, 2.7, -16), (1600, 2.0, -25)], 1.1),
    ([(0, -7.5, -17), (800, -6.2, -25), (1600, -5.8, -36)], 1.0),
    ([(0, 6.8, -20), (800, 6.6, -29), (1600, 5.2, -41)], 1.0),
    ([(0, 0.6, -27), (800, 0.4, -38), (1600, 0.8, -50)], 0.95),
    ([(0, -11.5, -34), (800, -10.5, -43), (1600, -9, -55)], 1.0),
    ([(0, 12, -38), (800, 11, -47), (1600, 9.5, -58)], 1.0),
)


def build(stage, start, end):
    document, length = stage.document, end - start
    path = Path(document, length, [
        (0, (-5.0, 2.4, 8), (0, 3.0, -40), -2.0),
        (length * 0.4, (-0.8, 1.15, -2.5), (0.6, 2.2, -40), 0.5),
        (length * 0.75, (0.9, 1.3, -11), (0.2, 3.0, -60), 1.0),
        (length, (0.2, 3.8, -18), (0, 5.6, -80), 0.0)], fov=56)

    light_of_rays(stage, start, end, path)

    warm = document.function(curve_to(length, 0.70, 1.0))
    sky = stage.sky("lake sky", "sky_night.jpg", "sky_dawn.jpg", warm)
    stage.sun(sky, 0.85, elevation=4.2)
    document.clip(1, start, end, sky, "Simple render", path.sky)

    haze = document.color(0.97, 0.62, 0.46)
    water_scene = document.scene("lake")
    stage.hills(water_scene, (0.88, 0.52, 0.50), (0.56, 0.32, 0.44), (0.25, 0.16, 0.29))
    water(stage, water_scene, haze, (0.80, 0.76, 0.82), (70, 250))
    road_of_light(stage, water_scene)
    boats(stage, water_scene, length)
    birds(stage, water_scene, length)
    document.clip(2, start, end, water_scene, "Link with previous", path.world)
    stage.rays(start, end, path, stage.target("target.png", 1), path.on_screen(SUN), level=0.115)


def light_of_rays(stage, start, end, path):
    """The sun alone, cut out by the hills, drawn small: what the shafts of light are made of."""
    document = stage.document
    glow = document.scene("light of the shafts")
    glow.model(stage.shape("dome"), stage.plain((0, 0, 0, 1), depth=False))
    stage.sun(glow, 0.9, 0.62, elevation=4.2)
    black = stage.plain((0, 0, 0, 1))
    for name in ("ridge_far", "ridge_middle", "ridge_near"):
        glow.model(stage.shape(name), black)
    document.clip(0, start, end, glow, "Render to quarter screen texture", path.sky,
                  target=stage.target("target.png", 1))


def reflections(stage, place="lake"):
    """The cube map of the dawn over the lake, or of the day over the sea."""
    names = ["%s_%s.jpg" % (place, face) for face in ("xp", "xn", "yp", "yn", "zp", "zn")]
    key = ("cube map", place)
    if key not in stage.document.cache:
        stage.document.cache[key] = stage.document.cube_map(names, [stage.asset(name) for name in names])
    return stage.document.cache[key]


def water(stage, scene, haze, mirrored, fog):
    """The lake of the night and of the dawn: how much of the sky it mirrors is a colour of its own."""
    document = stage.document
    if not hasattr(stage, "lake_effect"):
        time = document.function(line(25600, 0, 25600 * 0.075), kind="Integer")
        stage.lake_effect = document.mesh_effect("Lake water", time)
        stage.deep_water = document.generated_texture("deep water", document.node(
            "deep water", "Add", None, document.generated_image("Color", (0.05, 0.07, 0.17)), 1.0, 1.0))
    surface = document.material((*mirrored, 1), [
        Unit(stage.deep_water, "Replace"),
        Unit(reflections(stage), "Interpolate with primary color", wrap="Edge clamp", coordinates="Cubemap")],
        normalize=True, fog=fog, fog_color=haze)
    scene.effect(stage.lake_effect, surface, at=(-203, 0, -252), size=(14.0, 0.11, 3.0),
                 manipulators=[in_rows((1, 1, 3), (0, 0, 87))])


def road_of_light(stage, scene):
    # the road of gold that the sun lays on the water
    scene.model(stage.shape("panel"), stage.glowing(shade(PEACH, 0.36), "glow.png", depth=False), at=(0, 0.05, -90),
                turn=(-90, 0, 0), size=(26, 190, 1))
    scene.model(stage.shape("panel"), stage.glowing(shade(GOLD, 0.42), "glow.png", depth=False), at=(0, 0.05, -90),
                turn=(-90, 0, 0), size=(7, 170, 1))


def boats(stage, scene, length):
    document = stage.document
    sunlight = document.light((0.26, 0.20, 0.30), (1.0, 0.62, 0.38), (0, 40, -220))
    skylight = document.light((0.10, 0.10, 0.18), (0.46, 0.44, 0.66), (30, 60, 90))
    paper = stage.lit("paper.jpg", (1, 1, 1, 1), sunlight, skylight)
    flicker = document.function(wave(47, 0.92, 0.08, 47), wave(61, 0.92, 0.06, 61), loop="Loop", end=108)
    warm = stage.glowing((flicker, 0.62, 0.26), "glow.png")
    streak = stage.glowing((0.62, 0.34, 0.12), "glow.png", depth=False)
    for k, (way, size) in enumerate(BOATS):
        x = document.function(spline(length, [(t, px) for t, px, _ in way]))
        z = document.function(spline(length, [(t, pz) for t, _, pz in way]))
        bob = document.function(wave(340, 0.12, 0.05, 340, k / 7), loop="Loop", end=340)
        sway = document.function(wave(410, 0, 5.0, 410, k / 5), loop="Loop", end=410)
        yaw = document.function(wave(760, 180 + (k * 37 % 50 - 25), 10, 760, k / 3), loop="Loop", end=760)
        scene.model(stage.shape("panel"), streak, at=(x, -0.55, z), size=(0.75 * size, 2.6, 1), facing=False)
        scene.model(stage.shape("boat"), paper, at=(x, bob, z), turn=(0, yaw, sway), size=size)
        scene.model(stage.shape("panel"), warm, at=(x, 0.52, z), size=1.9 * size, facing=True)


def birds(stage, scene, length):
    """A flight of geese in two lines; every bird is two wings that beat."""
    document = stage.document
    dark = stage.plain((0.16, 0.10, 0.22, 1))
    x = document.function(spline(length, [(0, -42), (length * 0.5, -4), (length, 40)]))
    y = document.function(spline(length, [(0, 13), (length * 0.5, 15.5), (length, 22)]))
    z = document.function(spline(length, [(0, -66), (length * 0.5, -74), (length, -84)]))
    beat = document.function(wave(64, 8, 34, 64), loop="Loop", end=64)
    mirrored = document.function(wave(64, -8, -34, 64), loop="Loop", end=64)
    for side in (1, -1):
        for flap, wing_size in ((beat, 1.5), (mirrored, -1.5)):
            scene.model(stage.shape("wing"), dark, at=(x, y, z), turn=(0, -100, flap), size=(wing_size, 1.5, 1.5),
                        manipulators=[in_line(4 if side > 0 else 3, (-2.6, 0.3, 2.0 * side))],
                        offset=0 if side > 0 else 16)
