"""V. Windows: ten pictures stand in still water; five are computed each frame, five are scenes of their own."""
import math

import meshes
from document import Camera, Unit, curve_to, in_line, line, wave
from lake import reflections
from stage import CREAM, GOLD, PEACH, Path, ROSE, between, shade

CAPTION = "V / WINDOWS"

WIDE, TALL, STEP = 3.4, 2.55, 5.2


def build(stage, start, end):
    document, length = stage.document, end - start
    pictures = moving_pictures(stage)
    views = small_scenes(stage, start, end)
    order = [p for pair in zip(pictures, views) for p in pair]

    def place(k):
        return (-1 if k % 2 == 0 else 1) * 3.1, -6.0 - STEP * k

    keys = [(0, (0.3, 1.75, 4.0), (-0.8, 1.6, -8), 0)]
    for k in range(0, 10):
        x, z = place(k)
        keys.append((length * (k + 0.6) / 11.2, (-0.34 * x, 1.7, z + 4.6), (0.42 * x, 1.55, z - 3.2), -0.5 * x))
    keys.append((length, (0, 2.2, -59), (0, 2.6, -90), 0))
    path = Path(document, length, keys, fov=58, far=240)

    # the dusk in which they stand
    sky = stage.sky("gallery sky", "sky_night.jpg", "sky_dawn.jpg", 0.20)
    sky.model(stage.shape("stars_a"), stage.glowing((0.72, 0.76, 0.95), "spark.png", depth=False))
    document.clip(5, start, end, sky, "Simple render", path.sky)

    # below the water, everything once more, upside down
    under = document.scene("mirrored windows")
    over = document.scene("windows")
    haze = document.color(0.17, 0.12, 0.28)
    # two units, though one would do: it follows the picture with three, and turns the third off
    frame = document.material((0.9, 0.82, 0.85, 1), [
        stage.once("mirror.jpg", "Ignore alpha, multiply color", "Spheremap"),
        Unit(stage.picture("paper.jpg"), "Multiply previous")], normalize=True, fog=(10, 46), fog_color=haze)
    border = stage.shape("frame", frame_shape)
    for k, (material, mesh, size) in enumerate(order):
        x, z = place(k)
        turn = (0, -math.copysign(24, x), 0)
        for scene, up in ((under, -1), (over, 1)):
            scene.model(border, frame, at=(x, up * 1.62, z), turn=turn, size=(WIDE / 2, up * TALL / 2, 1))
            scene.model(stage.shape(mesh), material, at=(x, up * 1.62, z), turn=turn, size=(size[0], up * size[1], 1))
    for scene, up in ((under, -1), (over, 1)):
        far = 1.0 if up > 0 else 1.04       # both at one distance would fight for the same depth
        stage.hills(scene, middle=(0.11, 0.09, 0.22), at=(0, -0.5 * up, 0), size=(far, up, far))
    document.clip(6, start, end, under, "Clear Z-buffer and link with previous", path.world)

    surface = document.scene("still water")
    film = document.material((0.045, 0.05, 0.14, 0.66), [stage.white()],
                             "Alpha", fog=(8, 60), fog_color=haze)
    surface.model(stage.shape("water_film", lambda: meshes.ground(160, 8, 1)), film, at=(0, 0, -30))
    grow = document.function(curve_to(150, 0.2, 4.6), loop="Loop", end=150)
    fading = [document.function(line(150, 0.22 * c, 0), loop="Loop", end=150) for c in ROSE]
    faint = stage.glowing(fading, "halo.png")
    for k in range(10):
        x, z = place(k)
        surface.model(stage.shape("panel"), faint, at=(x * 0.96, 0.02, z + 0.1), turn=(-90, 0, 0), size=(grow, grow, 1))
    document.clip(7, start, end, surface, "Link with previous", path.world)
    document.clip(8, start, end, over, "Link with previous", path.world)


def moving_pictures(stage):
    """The five pictures that are computed anew in every frame, kept to the palette."""
    d = stage.document
    ramp = d.dynamic_texture("Test 2d effect", 64, 8, d.function(line(2000, 0, 900), kind="Integer"),
                             d.function(wave(300, 20, 20, 300), loop="Ping-pong", end=300))
    plasma = d.dynamic_texture("Effect 1", 128, 24, d.function(line(25600, 20, 620)))
    colony = d.dynamic_texture("Amoba", 128, 8, d.function(line(25600, 0, 25600 * 0.30), kind="Integer"))
    turning = d.dynamic_texture("Rotate", 128, 8, d.function(line(25600, 0, 420)))
    dents = d.dynamic_texture("Normalmap", 128, 24, d.function(line(25600, 0, 25600 * 0.18)))
    toward_light = d.generated_texture("towards the light", d.node(
        "towards the light", "Add", None, d.generated_image("Color", (0.55, 0.58, 0.66)), 1.0, 1.0), "linear")
    dawn, night = stage.picture("sky_dawn.jpg"), stage.picture("sky_night.jpg")
    pictures = [
        d.material((*between(PEACH, CREAM, 0.3), 1), [
            Unit(plasma, "Multiply color"), stage.once("glow.png", "Add previous without alpha")]),
        d.material((*GOLD, 1), [Unit(colony, "Multiply color"), Unit(night, "Add previous")]),
        d.material((0.86, 0.72, 0.62, 1), [Unit(turning, "Multiply color"), Unit(dawn, "Add previous")]),
        d.material((0.46, 0.40, 0.44, 1), [
            Unit(dents, "Replace"), Unit(toward_light, "DOT3 previous"),
            Unit(dawn, "Multiply color and add previous")]),
        d.material((1.0, 0.66, 0.48, 1), [Unit(ramp, "Multiply color"), Unit(night, "Add previous")]),
    ]
    return [(material, "panel", (WIDE, TALL)) for material in pictures]


def small_scenes(stage, start, end):
    """Five scenes drawn into textures, one for each way of doing that."""
    d = stage.document
    spin = d.function(line(25600, 0, 25600 * 0.42))
    slow = d.function(line(25600, 0, 25600 * 0.16))
    targets = [stage.target("target.png", 2), stage.target("target_wide.png", 1), stage.target("target.png", 3),
               stage.target("target.png", 4), stage.target("target.png", 5)]
    dawn = stage.document.material((1, 1, 1, 1), [stage.once("sky_dawn.jpg", "Replace")], depth=False)

    # a knot of chrome before the dawn
    knot = d.scene("knot")
    knot.model(stage.shape("dome"), dawn, turn=(0, slow, 0))
    chrome = d.material((1.0, 0.92, 0.88, 1), [
        Unit(reflections(stage), "Multiply color", "Edge clamp", "Cubemap")], normalize=True)
    knot.model(stage.shape("knot"), chrome, at=(0, 0, -3.6), turn=(slow, spin, 0), size=1.2)
    d.clip(0, start, end, knot, "Render to texture", Camera(turn=(-6, 0, 0), fov=50, far=300), target=targets[0])

    # hills and sun, in the wide picture
    hills = d.scene("wide hills")
    hills.model(stage.shape("dome"), dawn)
    stage.sun(hills, 0.9, 0.8, elevation=6)
    stage.hills(hills, (0.80, 0.46, 0.48), (0.50, 0.28, 0.42), (0.20, 0.13, 0.27))
    pan = d.function(wave(700, 0, 16, 700), loop="Loop", end=700)
    d.clip(1, start, end, hills, "Render to texture, force 16:9",
           Camera(at=(0, 2, 0), turn=(-7, pan, 0), fov=36, far=300), target=targets[1])

    # a cage of lines around a gem
    cage = d.scene("cage")
    cage.model(stage.shape("dome"), stage.document.material((0.42, 0.36, 0.55, 1), [
        stage.once("sky_dawn.jpg")], depth=False), turn=(0, 140, 0))
    key = d.light((0.24, 0.16, 0.24), (1.0, 0.70, 0.48), (4, 5, 2))
    cage.model(stage.shape("gem"), stage.lit("paper.jpg", (1.0, 0.66, 0.50, 1), key), at=(0, 0, -4),
               turn=(slow, spin, 0), size=0.95)
    lines = stage.glowing(shade(GOLD, 0.42), "white.png", wire=1.5)
    cage.model(stage.shape("cage", lambda: meshes.icosahedron(2)), lines, at=(0, 0, -4),
               turn=(0, slow, spin), size=1.45)
    d.clip(2, start, end, cage, "Render to quarter screen texture", Camera(fov=48, far=300), target=targets[2],
           clear=d.color(0.16, 0.11, 0.26))      # the colour of the next wiping: the ground of the halos

    # halos; nothing is wiped off after them, so the next picture begins on top of this one
    halos = d.scene("halos")
    halo = stage.glowing(shade(ROSE, 0.55), "halo.png", depth=False)
    halos.model(stage.shape("panel"), halo, at=(-1.6, -0.1, -4.5), turn=(0, 0, slow), size=1.0,
                manipulators=[in_line(7, (0.52, 0.02, -0.1), growth=(0.16, 0.16, 0))])
    d.clip(3, start, end, halos, "Render to quarter screen texture and don't clean",
           Camera(fov=50, far=300), target=targets[3])
    bird = d.scene("bird over halos")
    flap = [d.function(wave(70, m * 10, m * 32, 70), loop="Loop", end=70) for m in (1, -1)]
    dark = stage.plain((0.98, 0.86, 0.74, 1), depth=False)
    for m, angle in zip((1, -1), flap):
        bird.model(stage.shape("wing"), dark, at=(0, 0.1, -3.4), turn=(38, 0, angle), size=(m * 1.1, 1.1, 1.1))
    d.clip(4, start, end, bird, "Render to quarter screen texture, force 4:3",
           Camera(fov=50, far=300), target=targets[4])

    # two units again, for the picture with three hangs among these
    return [(d.material((1, 1, 1, 1), [Unit(target, "Replace", "Edge clamp"), stage.white("Multiply previous")]),
             "target_panel", (WIDE, WIDE / 1.6 if target is targets[1] else TALL)) for target in targets]


def frame_shape():
    """A thin frame around (-1, -1)..(1, 1)."""
    mesh = meshes.Mesh()
    for x, y, w, h in ((0, 1.03, 2.12, 0.06), (0, -1.03, 2.12, 0.06), (1.03, 0, 0.06, 2.0), (-1.03, 0, 0.06, 2.0)):
        mesh.add(meshes.block(w, h, 0.16).moved(by=(x, y - h / 2, -0.02)))
    return mesh
