"""VII. Morning: over the sea, into the day."""
from document import Camera, Unit, curve_to, flat_camera, hold, in_rows, line
from lake import reflections
from stage import BEAT, GOLD, PLUM, Path, TEXT_TRACK, shade

CAPTION = "VII / MORNING"

GREETINGS = ("GOOD MORNING", "DOBRÉ RÁNO", "BUENOS DÍAS", "JÓ REGGELT", "GÜNAYDIN")
GREETING_TICKS = 3 * BEAT // 2


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
    stage.hills(scene, (0.98, 0.74, 0.64), (0.86, 0.64, 0.62))
    sea(stage, scene, length)
    clouds(stage, scene, length)
    document.clip(1, start, end, scene, "Link with previous", path.world)
    greetings(stage, start + 2 * BEAT)
    closing_words(stage, start + 2 * BEAT + len(GREETINGS) * GREETING_TICKS + BEAT, end - BEAT // 2)


def sea(stage, scene, length):
    document = stage.document
    day = document.function(curve_to(length * 2 // 3, 0.0, 1.0))
    time = document.function(line(25600, 0, 25600 * 0.07), kind="Integer")
    waves = document.mesh_effect("Lake water 2", time)
    haze = document.color(1.0, 0.86, 0.70)
    surface = document.material((0.92, 0.88, 0.86, day), [
        Unit(reflections(stage), "Replace", wrap="Edge clamp", coordinates="Cubemap"),
        Unit(reflections(stage, "sea"), "Interpolate with primary alpha", wrap="Edge clamp", coordinates="Cubemap")],
                                normalize=True, fog=(50, 240), fog_color=haze)
    scene.effect(waves, surface, at=(-206.5, 0, -238), size=(7.0, 0.10, 2.0),
                 manipulators=[in_rows((1, 1, 2), (0, 0, 118))])
    scene.model(stage.shape("panel"), stage.glowing(shade(GOLD, 0.5), "glow.png", depth=False), at=(0, 0.05, -90),
                turn=(-90, 0, 0), size=(24, 200, 1))


def clouds(stage, scene, length):
    """Small clouds that the climbing view passes; their colour already holds their alpha."""
    document = stage.document
    puff = document.material((1, 1, 1, 1), [stage.once("cloud.png")],
                             "Add alpha", depth=False)
    for k, (x, y, z, size) in enumerate((
            (-12, 33, -150, 40), (44, 27, -140, -56), (-42, 24, -130, 50),
            (20, 19, -105, -26), (-30, 27, -84, -32), (34, 23, -70, 26))):      # a negative width is its mirror image
        drift = document.function(line(length, x - 2, x + 3 + k))
        scene.model(stage.shape("panel"), puff, at=(drift, y, z), size=(size, abs(size) * 0.55, 1), facing=True)


def greetings(stage, begin):
    """Solid letters, each turning in about its own edge, one greeting after the other."""
    document, ticks, size = stage.document, GREETING_TICKS, 1.25
    key = document.light((0.50, 0.40, 0.44), (0.62, 0.48, 0.40), (-20, 30, 40))
    skin = stage.lit("paper.jpg", (0.52, 0.26, 0.38, 1), key)
    font = stage.font(skin, size, tracking=0.22, depth=0.22)
    turn = document.function(curve_to(50, -90, 0), hold(ticks - 80, 0), line(30, 0, 90))
    for k, words in enumerate(GREETINGS):
        scene = document.scene("greeting")
        left = -(stage.width(font, words) - 0.22 * size) / 2
        scene.text(font, words, at=(left, 5.4, -20), turn=(0, turn, 0), size=size)
        document.clip(14, begin + k * ticks, begin + (k + 1) * ticks, scene, "Clear Z-buffer and link with previous",
                      Camera(fov=58, far=600))


def closing_words(stage, begin, end):
    scene, length = stage.document.scene("closing words"), end - begin
    ink = stage.fading_ink((*PLUM, 0.95), length, 70)
    for text, size, tracking, y in (("FIRST LIGHT", 0.040, 0.42, 0.27), ("played by Brimlow", 0.0165, 0.38, 0.335)):
        font = stage.font(ink, size, tracking)
        left = 0.5 - (stage.width(font, text) - tracking * size) / 2
        scene.text(font, text, at=(left, y, 0), size=(size, -size / 0.75, 1))
    stage.document.clip(TEXT_TRACK, begin, end, scene, "Link with previous", flat_camera())
