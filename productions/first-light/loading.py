"""The loading screen: a small sun climbs out of the hills as loading goes from 0 to 100."""
import meshes
from document import Unit, flat_camera, line
from stage import CREAM, PEACH, ROSE, Stage, between, shade


def build():
    stage = Stage("First Light, loading")
    document = stage.document

    def moving(first, last):
        return document.function(line(100, first, last))

    def color_from_to(first, last):
        return tuple(moving(a, b) for a, b in zip(first, last))

    scene = document.scene("progress")
    night = color_from_to((0.030, 0.036, 0.11), (0.15, 0.11, 0.27))
    scene.model(stage.shape("screen"), stage.plain((*night, 1), depth=False))
    scene.model(stage.shape("screen"), document.material(
        (*color_from_to((0.10, 0.06, 0.16), (0.95, 0.46, 0.36)), 1),
        [stage.once("glow.png")], "Add", depth=False),
        at=(-0.35, 0.10, 0), size=(1.7, 1.04, 1))
    sun = moving(0.70, 0.50)
    for picture, tone, width in (("glow.png", shade(PEACH, 0.75), 0.36), ("disc.png", CREAM, 0.075)):
        scene.model(stage.shape("panel"), document.material((*tone[:3], 1), [
            Unit(stage.picture(picture), "Multiply color", wrap="Edge clamp")], "Add", depth=False),
            at=(0.5, sun, 0), size=(width * 0.75, width, 1))
    for k, (tone, top) in enumerate(((between((0.11, 0.09, 0.22), ROSE, 0.16), 0.60), ((0.075, 0.065, 0.17), 0.645),
                                     ((0.035, 0.04, 0.11), 0.70))):
        scene.model(stage.shape("hills%d" % k, lambda k=k: hills(k)), stage.plain((*tone, 1), depth=False),
                    at=(0, top, 0), size=(1, 1, 1))
    # the bar: a thin dark groove that fills with light
    groove = stage.plain((0.16, 0.13, 0.26, 1), depth=False)
    scene.model(stage.shape("screen"), groove, at=(0.20, 0.860, 0), size=(0.60, 0.012, 1))
    scene.model(stage.shape("screen"), stage.plain((1.0, 0.78, 0.54, 1), depth=False), at=(0.20, 0.860, 0),
                size=(moving(0.0, 0.60), 0.012, 1))
    scene.model(stage.shape("panel"), document.material((1.0, 0.66, 0.40, 1), [
        stage.once("glow.png")], "Add", depth=False),
        at=(moving(0.20, 0.80), 0.866, 0), size=(0.07, 0.09, 1))
    document.clip(0, 0, 110, scene, "Simple render", flat_camera())
    return stage


def hills(k):
    """A skyline across the screen, y downward from the crest."""
    mesh = meshes.Mesh()
    columns = 72
    for j in range(columns + 1):
        u = j / columns
        y = -0.16 * (meshes.fractal(u * (3.0 + 1.5 * k) + 7 * k, 3.1 * k + 0.5, 5, 60 + k) - 0.35) * (1 - 0.2 * k)
        mesh.vertex((u, y, 0), (u, 0))
        mesh.vertex((u, 0.5, 0), (u, 1))
        if j:
            a = 2 * (j - 1)
            mesh.quad(a, a + 1, a + 3, a + 2)
    return mesh
