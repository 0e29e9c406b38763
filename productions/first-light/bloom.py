"""VI. Bloom: a flower of two hundred and fifty-six lights opens before the sun."""
import meshes
from document import Unit, curve_from, curve_to, in_line, line, on_vertices, rippled, swelling_wave, wave
from lake import reflections
from stage import BEAT, CREAM, GOLD, PEACH, Path, ROSE, shade

CAPTION = "VI / BLOOM"

GOLDEN_ANGLE = 2.399963
MIDDLE, SPREAD = (0, 1.4, -9), 0.046


def build(stage, start, end):
    document, length = stage.document, end - start
    path = Path(document, length, [
        (0, (0, 0.6, 9), (0, 1.0, -20), -6),
        (length * 0.35, (-5.0, 0.0, 13), (0, 1.4, -16), 5),
        (length * 0.7, (4.2, 2.6, 16), (0, 1.6, -14), -3),
        (length, (0, 1.6, 24), (0, 1.8, -10), 0)], fov=56)

    target = stage.target("target.png", 6)
    glow = document.scene("light of the bloom")
    glow.model(stage.shape("dome"), stage.plain((0, 0, 0, 1), depth=False))
    swirl = flower(stage, glow, length)
    document.clip(0, start, end, glow, "Render to quarter screen texture", path.world, target=target)

    dusk = document.function(curve_from(length, 0.22, 0.66))
    sky = stage.sky("bloom sky", "sky_night.jpg", "sky_dawn.jpg", dusk)
    document.clip(1, start, end, sky, "Simple render", path.sky)

    scene = document.scene("bloom")
    petals(stage, scene, length, swirl)
    rings(stage, scene, length)
    heart(stage, scene, length)
    document.clip(2, start, end, scene, "Clear Z-buffer and render", path.world)
    stage.rays(start, end, path, target, path.on_screen(point=MIDDLE), level=0.17, spread=0.09)


def flower(stage, scene, length):
    """Lights on a spiral of the golden angle; a breath of change in the angle turns its arms."""
    document = stage.document
    angle = document.function(wave(length, GOLDEN_ANGLE, 0.0042, length * 0.9, 0.12))
    opening = document.function(curve_to(length // 2, -60, 6), swelling_wave(length - length // 2, 6, 1, 5, 160))
    swirl = document.mesh_effect("Swirl", angle, opening)
    fan = document.material((*shade(ROSE, 0.05)[:3], 1), [stage.white()],
                            "Add", wire=1.0)
    scene.effect(swirl, fan, at=MIDDLE, size=SPREAD)
    lights(stage, scene, swirl)
    return swirl


def lights(stage, scene, swirl):
    document = stage.document
    beat = document.function(curve_to(BEAT, 1.0, 0.66), loop="Loop", end=BEAT)
    light = stage.glowing((beat, 0.58, 0.36), "glow.png")
    small = document.function(curve_to(BEAT, 0.74, 0.52), loop="Loop", end=BEAT)
    scene.model(stage.shape("panel"), light, at=MIDDLE, size=(small, small, 1),
                manipulators=[on_vertices(swirl, size=(SPREAD, SPREAD, SPREAD))])


def petals(stage, scene, length, swirl):
    """The same lights again, with a spark in each."""
    lights(stage, scene, swirl)
    scene.model(stage.shape("panel"), stage.glowing(CREAM, "spark.png"), at=(MIDDLE[0], MIDDLE[1], MIDDLE[2] + 0.1),
                size=0.42, manipulators=[on_vertices(swirl, size=(SPREAD, SPREAD, SPREAD))])


def rings(stage, scene, length):
    """Rings of chrome, one behind the other, each turned a little further."""
    document = stage.document
    chrome = document.material((1.0, 0.94, 0.90, 1), [Unit(reflections(stage), "Multiply color", wrap="Edge clamp",
                                                          coordinates="Cubemap")], normalize=True)
    turn = document.function(line(length, 0, 220))
    scene.model(stage.shape("ring"), chrome, at=(0, 1.4, 0), turn=(64, turn, 0), size=3.0,
                manipulators=[in_line(3, (0, 0, 0), turns=(0, 58, 18), growth=(0.34, 0.34, 0.34))])


def heart(stage, scene, length):
    """A ball that never stands still, in a cage whose corners carry gems."""
    document = stage.document
    key = document.light((0.24, 0.16, 0.24), (1.0, 0.70, 0.46), (0, 30, -120))
    back = document.light((0.10, 0.08, 0.16), (0.62, 0.50, 0.66), (20, 20, 60))
    time = document.function(line(length, 0, length * 0.063))
    skin = document.material((1.0, 0.72, 0.58, 1), [
        Unit(stage.with_levels("rock.jpg"), "Multiply color"),
        Unit(stage.picture("paper.jpg"), "Multiply previous"),
        stage.once("mirror.jpg", "Multiply color and add previous", "Spheremap")],
        light1=key, light2=back, normalize=True)
    spin = document.function(line(length, 0, 130))
    scene.model(stage.shape("heart", lambda: meshes.icosahedron(4)), skin, at=(0, 1.4, 0), turn=(0, spin, 20), size=1.5,
                manipulators=[rippled(time, 0.006, 4.0)])
    gem = stage.lit("paper.jpg", (1.0, 0.80, 0.62, 1), key, back, more_units=[
        stage.once("mirror.jpg", "Add previous", "Spheremap")])
    scene.model(stage.shape("gem"), gem, at=(0, 1.4, 0), turn=(spin, spin, 0), size=0.16,
                manipulators=[on_vertices(stage.shape("ico"), turn=(0, spin, 20), size=(2.25, 2.25, 2.25))])
    wire = stage.glowing(shade(GOLD, 0.50), "white.png", wire=1.5)
    scene.model(stage.shape("ico"), wire, at=(0, 1.4, 0), turn=(0, spin, 20), size=2.25)
    scene.model(stage.shape("panel"), stage.glowing(shade(PEACH, 0.22)), at=(0, 1.4, 0.2), size=7, facing=True)
