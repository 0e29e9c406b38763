"""Draws the pictures under ../pictures.

Needs numpy and PIL:  python3 make_pictures.py
"""
import os

import numpy as np
from PIL import Image

PICTURES = os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, "pictures")


# ---- noise --------------------------------------------------------------------------

def hashed(ix, iy, iz, seed):
    n = (ix * 374761393 + iy * 668265263 + iz * 2147483647 + seed * 1442695041) & 0xFFFFFFFF
    n = ((n ^ (n >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((n ^ (n >> 16)) & 0xFFFF) / 65535.0


def noise(x, y, z, seed=0, wrap=None):
    """Smooth noise 0..1; `wrap` makes it repeat after so many cells."""
    total = 0.0
    cells = [np.floor(c).astype(np.int64) for c in (x, y, z)]
    fractions = [c - i for c, i in zip((x, y, z), cells)]
    fractions = [f * f * f * (f * (f * 6 - 15) + 10) for f in fractions]
    for corner in range(8):
        offset = [(corner >> k) & 1 for k in range(3)]
        index = [i + o for i, o in zip(cells, offset)]
        if wrap:
            index = [i % wrap for i in index]
        weight = 1.0
        for f, o in zip(fractions, offset):
            weight = weight * (f if o else 1 - f)
        total = total + weight * hashed(*index, seed)
    return total


def fractal(x, y, z, octaves=5, seed=0, wrap=None):
    total, weight, norm, scale = 0.0, 1.0, 0.0, 1
    for k in range(octaves):
        total = total + weight * noise(x * scale, y * scale, z * scale, seed + k, wrap * scale if wrap else None)
        norm, weight, scale = norm + weight, weight * 0.5, scale * 2
    return total / norm


def plane(size, cells):
    axis = np.arange(size) / size * cells
    x, y = np.meshgrid(axis, axis)
    return x, y, np.zeros_like(x) + 0.5


def mix(a, b, t):
    a, b = np.asarray(a, float), np.asarray(b, float)
    t = np.asarray(t)
    return a + (b - a) * (t[..., None] if (a.ndim == 1 or a.ndim == t.ndim + 1) else t)


def smooth(low, high, x):
    t = np.clip((x - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)


def ramp(x, stops):
    """Colours 0..255 along x."""
    at = [s[0] for s in stops]
    return np.stack([np.interp(x, at, [s[1][c] for s in stops]) for c in range(3)], axis=-1) / 255.0


def save(name, picture, **more):
    array = np.clip(picture * 255 + 0.5, 0, 255).astype(np.uint8)
    Image.fromarray(array).save(os.path.join(PICTURES, name), **more)


# ---- the sky -------------------------------------------------------------------------

SUN = np.array([0.0, 0.05, -1.0]) / np.sqrt(1.0025)


def cirrus(d, stretch, seed, cover, scale=1.0):
    """High clouds on a plane overhead, drawn out along the horizon."""
    y = np.maximum(d[..., 1], 0.0) + 0.10
    x, z = d[..., 0] / y * scale, d[..., 2] / y * scale
    warp = fractal(x * 0.35, z * 0.5, 0 * x + 0.3, 4, seed + 50) - 0.5
    n = fractal(x * 0.55 + warp * 1.6, z * stretch * 0.55 + warp * 2.2, 0 * x + 0.7, 6, seed)
    return smooth(cover, cover + 0.30, n) * smooth(0.0, 0.10, d[..., 1])


def night(d):
    e = np.degrees(np.arcsin(np.clip(d[..., 1], -1, 1)))
    sky = ramp(e, [(-12, (34, 36, 84)), (0, (38, 38, 88)), (8, (27, 29, 74)), (28, (15, 17, 50)), (90, (6, 8, 26))])
    # the last ember of dusk low in the east, and a river of faint stars
    ember = np.exp(-((e - 0) / 9.0) ** 2) * smooth(-0.2, 1.0, d @ SUN)
    sky = sky + ember[..., None] * np.array([0.22, 0.09, 0.14])
    band = d @ (np.array([0.62, 0.58, 0.53]))
    river = np.exp(-(band / 0.20) ** 2) * (0.35 + 0.9 * fractal(*(d[..., k] * 4 for k in range(3)), 5, 3))
    river = river * smooth(4, 30, e)
    sky = sky + river[..., None] * np.array([0.085, 0.085, 0.15])
    return sky


def dawn(d):
    e = np.degrees(np.arcsin(np.clip(d[..., 1], -1, 1)))
    toward = d @ SUN
    east = smooth(-0.6, 1.0, toward)
    near = ramp(e, [(-12, (255, 178, 112)), (0, (255, 186, 118)), (4, (255, 164, 112)), (10, (244, 128, 118)),
                    (19, (200, 102, 138)), (32, (132, 82, 146)), (50, (74, 64, 128)), (90, (38, 44, 100))])
    far = ramp(e, [(-12, (150, 104, 150)), (0, (158, 108, 152)), (7, (136, 98, 154)), (16, (98, 82, 148)),
                   (32, (64, 64, 128)), (90, (34, 40, 96))])
    sky = mix(far, near, east)
    angle = np.degrees(np.arccos(np.clip(toward, -1, 1)))
    sky = sky + (np.exp(-(angle / 9.0) ** 2) * 0.42)[..., None] * np.array([1.0, 0.72, 0.36])
    sky = sky + (np.exp(-angle / 20.0) * 0.26)[..., None] * np.array([1.0, 0.55, 0.30])
    cloud = cirrus(d, 3.4, 21, 0.47)
    lit = mix(np.array([0.46, 0.30, 0.52]), np.array([1.0, 0.62, 0.46]), smooth(0.05, 0.95, toward) *
              (1 - smooth(14, 46, e)))
    lit = lit + (np.exp(-angle / 14.0) * 0.35)[..., None] * np.array([1.0, 0.8, 0.5])
    sky = sky * (1 - 0.78 * cloud[..., None]) + lit * (0.78 * cloud[..., None])
    return sky


def morning(d):
    e = np.degrees(np.arcsin(np.clip(d[..., 1], -1, 1)))
    toward = d @ SUN
    east = smooth(-0.5, 1.0, toward)
    near = ramp(e, [(-12, (255, 226, 176)), (0, (255, 230, 182)), (7, (255, 212, 166)), (16, (244, 196, 178)),
                    (30, (186, 186, 206)), (55, (122, 160, 208)), (90, (84, 130, 192))])
    far = ramp(e, [(-12, (214, 190, 202)), (0, (218, 196, 206)), (14, (178, 182, 210)), (40, (128, 160, 206)),
                   (90, (84, 130, 192))])
    sky = mix(far, near, east)
    angle = np.degrees(np.arccos(np.clip(toward, -1, 1)))
    sky = sky + (np.exp(-(angle / 12.0) ** 2) * 0.30)[..., None] * np.array([1.0, 0.86, 0.55])
    cloud = cirrus(d, 2.2, 77, 0.46, 0.9)
    core = cirrus(d, 2.2, 77, 0.60, 0.9)
    lit = mix(np.array([0.98, 0.93, 0.90]), np.array([1.0, 0.90, 0.74]), smooth(0.2, 1.0, toward))
    lit = lit - core[..., None] * np.array([0.14, 0.15, 0.10])
    return sky * (1 - 0.85 * cloud[..., None]) + lit * (0.85 * cloud[..., None])


def panorama(width, height, sky, lowest=-12.0, highest=90.0):
    heading = ((np.arange(width) + 0.5) / width - 0.5) * 2 * np.pi
    elevation = np.radians(highest + (lowest - highest) * (np.arange(height) + 0.5) / height)
    h, e = np.meshgrid(heading, elevation)
    d = np.stack([np.sin(h) * np.cos(e), np.sin(e), -np.cos(h) * np.cos(e)], axis=-1)
    picture = sky(d)
    dither = np.random.default_rng(5).random(picture.shape[:2])[..., None] - 0.5
    return picture + dither / 128


def world(d, sky, tint=(0.60, 0.56, 0.66), deep=(0.07, 0.09, 0.19)):
    """The sky above the horizon, still water below it."""
    up = d.copy()
    up[..., 1] = np.abs(up[..., 1])
    below = d[..., 1] < 0
    picture = sky(up)
    depth = smooth(0.0, 0.9, -d[..., 1])[..., None]
    water = picture * np.array(tint) * (1 - depth) + np.array(deep) * depth
    return np.where(below[..., None], water, picture)


def cube_faces(size, sky):
    axis = (np.arange(size) + 0.5) / size * 2 - 1
    s, t = np.meshgrid(axis, axis)
    one = np.ones_like(s)
    directions = {"xp": (one, -t, -s), "xn": (-one, -t, s), "yp": (s, one, t), "yn": (s, -one, -t),
                  "zp": (s, -t, one), "zn": (-s, -t, -one)}
    for name, parts in directions.items():
        d = np.stack(parts, axis=-1)
        day = {} if sky is dawn else {"tint": (0.80, 0.80, 0.84), "deep": (0.16, 0.28, 0.42)}
        yield name, world(d / np.linalg.norm(d, axis=-1, keepdims=True), sky, **day)


def sphere_map(size, sky):
    """What a mirror ball shows: the place (s, t) holds the light that comes from the reflected direction."""
    axis = (np.arange(size) + 0.5) / size * 2 - 1
    x, y = np.meshgrid(axis, -axis)
    r = np.minimum(np.sqrt(x * x + y * y), 0.9999)
    k = np.minimum(1.0, 0.9999 / np.maximum(np.sqrt(x * x + y * y), 1e-6))
    nx, ny, nz = x * k, y * k, np.sqrt(1 - r * r)
    d = np.stack([2 * nz * nx, 2 * nz * ny, 2 * nz * nz - 1], axis=-1)
    # the ball hangs before the dawn: turn it so that the light stands behind the viewer's left shoulder
    a, b = np.radians(205), np.radians(-14)
    turn = np.array([[np.cos(a), 0, np.sin(a)], [0, 1, 0], [-np.sin(a), 0, np.cos(a)]])
    tilt = np.array([[1, 0, 0], [0, np.cos(b), -np.sin(b)], [0, np.sin(b), np.cos(b)]])
    return world(d @ turn.T @ tilt.T, sky, (0.42, 0.36, 0.50), (0.05, 0.05, 0.14))


# ---- surfaces ---------------------------------------------------------------------------

def rock(size=256):
    x, y, z = plane(size, 4)
    n = fractal(x, y, z, 6, 11, 4)
    fine = fractal(x * 4, y * 4, z, 4, 31, 16)
    crack = 1 - np.abs(fractal(x * 2, y * 2, z, 5, 61, 8) * 2 - 1)
    tone = 0.42 + 0.55 * (n - 0.5) + 0.30 * (fine - 0.5) - 0.10 * smooth(0.955, 1.0, crack)
    warm = fractal(x * 2, y * 2, z + 3, 4, 91, 8)
    picture = mix(np.array([0.92, 0.92, 1.0]), np.array([1.0, 0.90, 0.80]), smooth(0.35, 0.65, warm))
    return np.clip(tone, 0, 1)[..., None] * picture * 1.35


def meadow(size=256):
    x, y, z = plane(size, 4)
    n = fractal(x * 2, y * 2, z, 6, 5, 8)
    blades = fractal(x * 16, y * 6, z, 3, 15, None)
    blades = 0.5 * blades + 0.5 * np.roll(blades, size // 2, axis=0)
    flowers = smooth(0.80, 0.86, noise(x * 14, y * 14, z, 44, 56))
    picture = mix(np.array([0.20, 0.23, 0.16]), np.array([0.52, 0.50, 0.30]), smooth(0.3, 0.75, n))
    picture = picture * (0.95 + 0.95 * blades[..., None])
    return picture * (1 - flowers[..., None]) + np.array([0.98, 0.80, 0.62]) * flowers[..., None]


def paper(size=128):
    x, y, z = plane(size, 8)
    return (0.90 + 0.20 * (fractal(x, y, z, 4, 71, 8) - 0.5))[..., None] * np.array([1.0, 0.985, 0.95])


def moon(size=128):
    axis = (np.arange(size) + 0.5) / size * 2 - 1
    x, y = np.meshgrid(axis, axis)
    r = np.sqrt(x * x + y * y)
    disc = smooth(0.80, 0.775, r)
    seas = fractal(x * 2.2 + 7, y * 2.2 + 3, 0 * x, 5, 17)
    # a waxing crescent: the shaded side falls off along a shifted circle
    lit = smooth(0.66, 0.98, np.sqrt((x - 0.38) ** 2 + (y - 0.12) ** 2) / 0.86)
    tone = disc * (0.05 + lit * (0.80 + 0.4 * (seas - 0.5)))
    halo = np.exp(-np.maximum(r - 0.72, 0) * 9) * 0.10 * (1 - disc) * smooth(1.0, 0.8, r)
    return (tone + halo)[..., None] * np.array([1.0, 0.96, 0.88])


def radial(size, of):
    axis = (np.arange(size) + 0.5) / size * 2 - 1
    x, y = np.meshgrid(axis, axis)
    return of(x, y, np.sqrt(x * x + y * y))


def glow(x, y, r):
    return (np.exp(-(r * 3.1) ** 2) * 0.65 + np.maximum(1 - r, 0) ** 2.6 * 0.35) * smooth(1.0, 0.85, r)


def spark(x, y, r):
    cross = np.exp(-np.abs(x) * 26 - np.abs(y) * 5) + np.exp(-np.abs(y) * 26 - np.abs(x) * 5)
    return np.clip(np.exp(-(r * 7.5) ** 2) * 1.2 + 0.45 * cross, 0, 1) * smooth(1.0, 0.6, r)


def halo(x, y, r):
    return np.exp(-((r - 0.72) / 0.035) ** 2) * 0.8 + np.exp(-((r - 0.72) / 0.12) ** 2) * 0.2


def disc(x, y, r):
    return smooth(0.98, 0.90, r)


def vignette(x, y, r):
    return smooth(0.55, 1.5, np.sqrt(x * x * 1.0 + y * y * 1.0)) ** 1.2


def mist(width=256, height=64):
    x = np.arange(width) / width
    y = (np.arange(height) + 0.5) / height
    x, y = np.meshgrid(x, y)
    n = fractal(x * 4, y * 1.5 + 2, 0 * x, 5, 25, None)
    n = n * (1 - smooth(0.75, 1.0, x)) + fractal((x - 1) * 4, y * 1.5 + 2, 0 * x, 5, 25, None) * smooth(0.75, 1.0, x)
    alpha = smooth(0.28, 0.75, n) * np.sin(np.pi * y) ** 1.4
    return np.dstack([np.ones_like(alpha)] * 3 + [alpha])


def cloud(size=256):
    """Premultiplied: the colour already holds its alpha."""
    def of(x, y, r):
        n = fractal(x * 1.6 + 5, y * 2.6 + 5, 0 * x, 6, 33)
        body = smooth(0.36, 0.66, n + 0.16 - 0.55 * (x * x * 0.8 + (y * 1.7) ** 2))
        lift = fractal(x * 1.6 + 5, (y + 0.10) * 2.6 + 5, 0 * x, 5, 33)
        shade = np.clip(0.62 + 1.9 * (n - lift) + 0.25 * y, 0.25, 1)
        colour = mix(np.array([0.50, 0.40, 0.58]), np.array([1.0, 0.86, 0.72]), shade)
        return np.dstack([colour * body[..., None], body])
    return radial(size, of)


def crest(width=8, height=128):
    """Hills in the haze: dark along the crest, lighter towards the foot."""
    t = (np.arange(height) + 0.5) / height
    tone = 0.42 + 0.58 * smooth(0.0, 0.9, t)
    return np.repeat(tone[:, None], width, axis=1)[..., None] * np.ones(3)


def aurora_veil(width=128, height=128):
    """Alpha of a curtain of light: sharp below, fading upward, gone at the sides."""
    x = (np.arange(width) + 0.5) / width
    y = 1 - (np.arange(height) + 0.5) / height
    x, y = np.meshgrid(x, y)
    rays = 0.55 + 0.45 * fractal(x * 14, 0 * x, 0 * x, 3, 19)
    lower = 0.10 + 0.10 * np.sin(x * 9) * np.sin(x * 4 + 1)
    tone = smooth(lower, lower + 0.10, y) * np.exp(-np.maximum(y - lower - 0.06, 0) * 3.4) * rays
    tone = tone * np.sin(np.pi * x) ** 0.8 * smooth(1.0, 0.8, y)
    return tone[..., None] * np.ones(3)


def shadow(width=64, height=128):
    """Alpha of a long shadow on the ground: it starts at the bottom row and dissolves upward."""
    x = (np.arange(width) + 0.5) / width * 2 - 1
    y = 1 - (np.arange(height) + 0.5) / height
    x, y = np.meshgrid(x, y)
    alpha = smooth(1.0, 0.35 - 0.3 * y, np.abs(x) + 0.10 * y) * (1 - smooth(0.1, 1.0, y))
    return np.dstack([np.ones_like(alpha)] * 3 + [alpha])


def main():
    os.makedirs(PICTURES, exist_ok=True)
    for name, sky in (("night", night), ("dawn", dawn), ("morning", morning)):
        save("sky_%s.jpg" % name, panorama(1024 if name == "night" else 2048, 512, sky), quality=86)
    for face, picture in cube_faces(128, dawn):
        save("lake_%s.jpg" % face, picture, quality=88)
    for face, picture in cube_faces(128, morning):
        save("sea_%s.jpg" % face, picture, quality=88)
    save("mirror.jpg", sphere_map(256, dawn), quality=90)
    base = rock()
    save("rock.jpg", base, quality=86)
    for level, part in (("1", 2), ("2", 4)):
        h, w, _ = base.shape
        save("rock_mm%s.jpg" % level, base.reshape(h // part, part, w // part, part, 3).mean(axis=(1, 3)), quality=88)
    save("meadow.jpg", meadow(), quality=84)
    save("paper.jpg", paper(), quality=86)
    save("moon.png", moon(), optimize=True)
    for name, size, of in (("glow", 128, glow), ("spark", 32, spark), ("halo", 128, halo), ("disc", 128, disc),
                           ("vignette", 128, vignette)):
        save(name + ".png", radial(size, of)[..., None] * np.ones(3), optimize=True)
    save("mist.png", mist(), optimize=True)
    save("cloud.png", cloud(), optimize=True)
    save("shadow.png", shadow(), optimize=True)
    save("crest.png", crest(), optimize=True)
    save("aurora.png", aurora_veil(), optimize=True)
    save("white.png", np.ones((4, 4, 3)), optimize=True)


if __name__ == "__main__":
    main()
