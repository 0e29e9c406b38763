"""What all scenes share: the clock of bars, the palette, pictures, shapes, cameras, and the last passes.

Every scene draws its own passes on tracks 0, 1, 2, ...; the tracks from 16 on lie over all of them.
"""
import json
import math
import os

import meshes
from document import Camera, Document, Unit, curve_to, flat_camera, hold, line, spline

HERE = os.path.dirname(os.path.abspath(__file__))
BAR = 320                       # ticks: four beats at 75 a minute
BEAT = 80

CAPTION_TRACK, RAYS_TRACK, TEXT_TRACK, VIGNETTE_TRACK, FADE_TRACK = 15, 16, 17, 18, 19

# The palette: from indigo over plum and rose to peach, gold and cream.
INK = (0.035, 0.045, 0.13)
INDIGO = (0.10, 0.11, 0.27)
PLUM = (0.30, 0.20, 0.40)
ROSE = (0.86, 0.46, 0.52)
PEACH = (1.0, 0.68, 0.46)
GOLD = (1.0, 0.82, 0.52)
CREAM = (1.0, 0.95, 0.86)
SKYBLUE = (0.46, 0.62, 0.86)

WITH_ALPHA = ("mist.png", "cloud.png", "shadow.png")

SUN = (0.0, 0.0499, -0.9988)    # the direction in which every painted sky has its sun


def bars(count):
    return int(round(count * BAR))


def shade(color, level, alpha=1.0):
    return (color[0] * level, color[1] * level, color[2] * level, alpha)


def between(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def curve_through(keys, at):
    """Catmull-Rom through (time, (x, y, ...)) keys."""
    times = [k[0] for k in keys]
    j = max(0, min(len(keys) - 2, sum(t <= at for t in times) - 1))
    u = (at - times[j]) / (times[j + 1] - times[j])
    result = []
    for c in range(len(keys[0][1])):
        p1, p2 = keys[j][1][c], keys[j + 1][1][c]
        p0 = keys[j - 1][1][c] if j else p1
        p3 = keys[j + 2][1][c] if j + 2 < len(keys) else p2
        w = times[j + 1] - times[j]
        m1 = (p2 - p0) / (times[j + 1] - times[j - 1] if j else w) * w * (1.0 if j else 0.5)
        m2 = (p3 - p1) / (times[j + 2] - times[j] if j + 2 < len(keys) else w) * w * (1.0 if j + 2 < len(keys) else 0.5)
        result.append((2 * u ** 3 - 3 * u ** 2 + 1) * p1 + (u ** 3 - 2 * u ** 2 + u) * m1
                      + (-2 * u ** 3 + 3 * u ** 2) * p2 + (u ** 3 - u ** 2) * m2)
    return tuple(result)


class Path:
    """A camera that flies through keys (tick, eye, looked-at point, roll) during a scene."""

    def __init__(self, document, length, keys, fov=55.0, far=600.0):
        self.fov, self.far, self.length = fov, far, length
        ticks = [round(length * k / 11) for k in range(12)]
        flat = [(k[0], (*k[1], *k[2], k[3] if len(k) > 3 else 0.0)) for k in keys]
        self.samples = []
        heading = 0.0
        for tick in ticks:
            x, y, z, lx, ly, lz, roll = curve_through(flat, tick)
            dx, dy, dz = lx - x, ly - y, lz - z
            new = math.degrees(math.atan2(dx, -dz))
            heading = new + 360 * round((heading - new) / 360)
            pitch = math.degrees(math.atan2(dy, math.hypot(dx, dz)))
            self.samples.append((tick, (x, y, z), (-pitch, heading, roll)))

        def moving(values):
            if max(values) - min(values) < 1e-5:
                return values[0]
            return document.function(spline(length, list(zip(ticks, values))))

        at = [moving([-s[1][k] for s in self.samples]) for k in range(3)]
        at = [v if not isinstance(v, float) else -v for v in at]
        turn = [moving([s[2][k] for s in self.samples]) for k in range(3)]
        self.world = Camera(at, turn, fov, far)
        self.sky = Camera((0, 0, 0), turn, fov, far)     # turns, but never comes nearer to the sky

    def on_screen(self, direction=None, point=None):
        """(tick, x, y) of a far direction, or of a point, on a 4:3 screen, 0..1 from the top left."""
        result = []
        for tick, eye, (rx, ry, rz) in self.samples:
            x, y, z = direction or tuple(p - e for p, e in zip(point, eye))
            a = math.radians(ry)
            x, z = math.cos(a) * x + math.sin(a) * z, -math.sin(a) * x + math.cos(a) * z
            a = math.radians(rx)
            y, z = math.cos(a) * y - math.sin(a) * z, math.sin(a) * y + math.cos(a) * z
            a = math.radians(rz)
            x, y = math.cos(a) * x - math.sin(a) * y, math.sin(a) * x + math.cos(a) * y
            f = 1 / math.tan(math.radians(self.fov) / 2)
            result.append((tick, 0.5 + 0.5 * f / (4 / 3) * x / -z, 0.5 - 0.5 * f * y / -z))
        return result


class Stage:
    def __init__(self, name):
        self.document = Document(name)
        self.shapes = {}
        self.letters = None

    # ---- pictures and shapes by name

    def picture(self, name, filtering="mipmaps"):
        form = "RGBA" if name in WITH_ALPHA else "RGB"
        return self.document.image(name, self.asset(name), filtering, form)

    @staticmethod
    def asset(name):
        with open(os.path.join(HERE, "assets", name), "rb") as file:
            return file.read()

    def with_levels(self, name):
        """A picture whose first two smaller levels come ready-made beside it."""
        for level in "12":
            smaller = name[:-4] + "_mm" + level + name[-4:]
            self.document.entry(smaller, self.asset(smaller))
        return self.picture(name)

    def shape(self, name, make=None):
        if name not in self.shapes:
            self.shapes[name] = self.document.mesh(name, (make or SHAPES[name])())
        return self.shapes[name]

    def target(self, name="target.png", copy=1):
        """A texture that a scene is drawn into; every copy is one of its own."""
        return self.document.image(name, self.asset(name), "linear", copy=copy)

    def once(self, picture, combine="Multiply color", coordinates="Off"):
        """A texture unit that shows a picture without repeating it."""
        return Unit(self.picture(picture), combine, "Edge clamp", coordinates)

    def white(self, combine="Multiply color"):
        """A texture unit that changes nothing."""
        return Unit(self.picture("white.png", "nearest"), combine)

    # ---- materials that many scenes use

    def plain(self, color, blend="Replace", **more):
        return self.document.material(color, [self.white()],
                                      blend, **more)

    def glowing(self, color, picture="glow.png", depth=True, **more):
        """Light that is added to what is there; black in its picture is nothing."""
        filtering = "linear" if picture == "spark.png" else "mipmaps"     # a small spark stays a spark
        return self.document.material((*color[:3], 1.0), [Unit(self.picture(picture, filtering), "Multiply color",
                                                               wrap="Edge clamp")], "Add", depth=depth, **more)

    def lit(self, picture, color, light1, light2=None, normalize=True, more_units=(), **more):
        return self.document.material(color, [Unit(self.picture(picture), "Multiply color"), *more_units],
                                      light1=light1, light2=light2, normalize=normalize, **more)

    # ---- letters

    def font(self, material, size=1.0, tracking=0.0, depth=0.0):
        """The pen moves in units of the scene, whatever the size of the text, so a font is made for one size."""
        if self.letters is None:
            self.letters = json.loads(self.asset("font.json"))
        glyphs = {}
        for number, (letter, outline) in enumerate(self.letters.items()):
            mesh = None
            if "points" in outline:
                name = "letter%02d%s" % (number, "d" if depth else "")
                mesh = self.shape(name, lambda o=outline: meshes.glyph(o, depth))
            glyphs[letter] = (mesh, -outline["bearing"] * size if mesh else 0.0, (outline["width"] + tracking) * size)
        font = self.document.font(glyphs, material)
        font.size = size
        font.widths = {letter: width for letter, (_, _, width) in glyphs.items()}
        return font

    @staticmethod
    def width(font, text):
        return sum(font.widths[letter] for letter in text)

    # ---- passes

    def hills(self, scene, far=None, middle=None, near=None, **place):
        """Lines of hills, the farthest first, each in its colour."""
        for name, tone in (("ridge_far", far), ("ridge_middle", middle), ("ridge_near", near)):
            if tone:
                scene.model(self.shape(name), self.document.material((*tone, 1), [self.once("crest.png")]), **place)

    def simple_scene(self, name, *models):
        scene = self.document.scene(name)
        for mesh, material, more in models:
            scene.model(mesh, material, **more)
        return scene

    def sky(self, scene_name, first, second=None, amount=None, *more_models):
        """The painted sky around the camera, or one sky turning into another."""
        units = [Unit(self.picture(first), "Replace", wrap="Edge clamp")]
        alpha = 1.0
        if second:
            units.append(Unit(self.picture(second), "Interpolate with primary alpha", wrap="Edge clamp"))
            alpha = amount
        paint = self.document.material((1, 1, 1, alpha), units, "Replace", depth=False)
        scene = self.document.scene(scene_name)
        scene.model(self.shape("dome"), paint)
        return scene

    def sun(self, scene, level=1.0, size=1.0, color=GOLD, elevation=None):
        """Glow upon glow where the sky has its sun."""
        height = 90 * (SUN[1] / -SUN[2] if elevation is None else math.tan(math.radians(elevation)))
        for picture, tone, strength, radius in (("glow.png", between(color, ROSE, 0.55), 0.42, 62),
                                                ("glow.png", color, 0.7, 26), ("disc.png", CREAM, 1.0, 3.1)):
            light = self.glowing(shade(tone, level * strength), picture, depth=False)
            scene.model(self.shape("panel"), light, at=(0, height, -90), size=radius * size)
        return scene

    def rays(self, start, end, path, target, source, level=0.10, count=9, spread=0.075, color=GOLD):
        """Shafts of light: the picture of the light, thrown outward from its source again and again."""
        document = self.document
        scene = document.scene("rays")
        points = list(zip(*source))
        for k in range(1, count + 1):
            size = 1 + spread * k
            place = [document.function(spline(path.length, [(t, v * (1 - size)) for t, v in zip(points[0], points[c])]))
                     for c in (1, 2)]
            tone = shade(between(color, ROSE, k / count * 0.7), level * (1 - 0.75 * (k - 1) / count))
            material = document.material(tone, [Unit(target, "Multiply color", wrap="Edge clamp")], "Add", depth=False)
            scene.model(self.shape("target_screen"), material, at=(place[0], place[1], 0), size=(size, size, 1))
        document.clip(RAYS_TRACK, start, end, scene, "Link with previous", flat_camera())

    def fade(self, at, color, before, after, hold_dark=0):
        """Covers the screen with a colour around a cut."""
        document = self.document
        segments = []
        if before:
            segments.append(line(before, 0, 1))
        if hold_dark:
            segments.append(hold(hold_dark, 1))
        if after:
            segments.append(curve_to(after, 1, 0))
        cover = self.plain((*color, document.function(*segments)), "Alpha", depth=False)
        scene = self.simple_scene("fade", (self.shape("screen"), cover, {}))
        document.clip(FADE_TRACK, at - before, at + hold_dark + after, scene, "Link with previous", flat_camera())

    def vignette(self, start, end):
        """Takes a little light away from the corners, least from the reds."""
        material = self.document.material((0.20, 0.21, 0.17, 1.0), [self.once("vignette.png")], "Substract alpha",
                                          depth=False)
        scene = self.simple_scene("vignette", (self.shape("screen"), material, {}))
        self.document.clip(VIGNETTE_TRACK, start, end, scene, "Link with previous", flat_camera())

    def fading_ink(self, color, length, edge=60):
        """Letters that come and go within a clip of so many ticks."""
        alpha = self.document.function(line(edge, 0, color[3]), hold(length - 2 * edge, color[3]),
                                       line(edge, color[3], 0))
        return self.plain((*color[:3], alpha), "Alpha", depth=False)

    def caption(self, start, text):
        """The name of a scene, small, in the lower left corner."""
        length = BAR + BAR // 2
        if not hasattr(self, "caption_font"):
            self.caption_font = self.font(self.fading_ink((*CREAM, 0.85), length), 0.0185, tracking=0.34)
        font, scene = self.caption_font, self.document.scene("caption")
        scene.text(font, text, at=(0.055, 0.94, 0), size=(font.size, -font.size / 0.75, 1))
        self.document.clip(CAPTION_TRACK, start, start + length, scene, "Link with previous", flat_camera())


SHAPES = {
    "dome": meshes.dome,
    "panel": meshes.panel,
    "target_panel": lambda: meshes.panel(upright=False),
    "screen": meshes.screen,
    "target_screen": lambda: meshes.screen(upright=False),
    "ball": meshes.sphere,
    "orb": lambda: meshes.icosahedron(3),
    "gem": lambda: meshes.icosahedron(1).flat(),
    "ico": lambda: meshes.icosahedron(0),
    "knot": meshes.knot,
    "ring": meshes.ring,
    "boat": meshes.paper_boat,
    "wing": meshes.wing,
    "stars_a": lambda: meshes.stars(460, 7),
    "stars_b": lambda: meshes.stars(260, 23, smallest=0.6, largest=2.4),
    "ridge_far": lambda: meshes.ridge(240, 0, 6, 34, 3, 3.2, valley=0.55),
    "ridge_middle": lambda: meshes.ridge(170, 0, 2, 24, 8, 4.0, valley=0.8),
    "ridge_near": lambda: meshes.ridge(110, -1, 0.5, 9, 14, 5.0, trees=5.0, valley=0.9),
}
