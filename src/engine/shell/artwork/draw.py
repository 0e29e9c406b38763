#!/usr/bin/env python3
"""Draws the settings dialog's six pictures.

    python3 draw.py                    the .bmp files beside this script
    python3 draw.py --preview FILE     a PNG of the dialog as it opens (--pressed: start held down)

Needs Pillow, numpy and the DejaVu fonts (Debian: python3-pil python3-numpy fonts-dejavu-core
fonts-dejavu-extra); only whoever changes the artwork does, the program is built from the files.

All pictures share one palette of 16 colours. Its last entry is the colour key, which the keyed
pictures leave transparent; the others may use it as the pale blue that it is. The highlights are
drawn over the labels, so they are frames with an open middle.
"""
import argparse
import os
import struct

import numpy as np
from PIL import Image, ImageDraw, ImageFont

HERE = os.path.dirname(os.path.abspath(__file__))
FONTS = '/usr/share/fonts/truetype/dejavu/'

# ---- palette ---------------------------------------------------------------------------------

NIGHT, PANEL, EDGE, BLUE_1, BLUE_2, BLUE_3, BLUE_4, WHITE = range(8)
PLUM, WINE, CORAL, ORANGE, AMBER, GOLD, BROWN, KEY = range(8, 16)

PALETTE = np.array([
    (10, 14, 29),      # NIGHT   window
    (18, 25, 49),      # PANEL   panels
    (30, 42, 76),      # EDGE    their edges and the lines on them
    (48, 64, 106),     # BLUE_1  steps from panel to label
    (71, 90, 138),     # BLUE_2
    (102, 123, 172),   # BLUE_3
    (146, 170, 214),   # BLUE_4
    (248, 250, 255),   # WHITE
    (44, 30, 48),      # PLUM    steps from panel to amber
    (92, 44, 62),      # WINE
    (190, 70, 74),     # CORAL
    (236, 118, 62),    # ORANGE
    (255, 172, 76),    # AMBER
    (255, 222, 146),   # GOLD
    (140, 78, 56),     # BROWN
    (192, 216, 247),   # KEY     labels, and transparent
], dtype=np.float64)

COLD = (NIGHT, PANEL, EDGE, BLUE_1, BLUE_2, BLUE_3, BLUE_4, KEY, WHITE)
WARM = (NIGHT, PANEL, PLUM, WINE, BROWN, ORANGE, AMBER, GOLD)

# ---- places: those of dialog_logic.cpp ---------------------------------------------------------

WIDTH, HEIGHT = 461, 384
RESOLUTION_X, RESOLUTION_SIZE = 6, (162, 27)
RESOLUTION_Y = (9, 35, 66, 97, 128, 159, 191, 222, 253, 284, 315, 347)
ASPECT_X, ASPECT_SIZE = 185, (75, 27)
ASPECT_Y = (8, 39, 70, 102)
MARK_X, MARK_SIZE = 279, (22, 22)
MARK_Y = (10, 40, 71, 103)
BOX_X, BOX_SIDE = 282, 15             # the drawn box; what it encloses is clickable
BOX_Y = (13, 44, 75, 106)
PATH_X, PATH_SIZE = 207, (228, 29)
PATH_Y = (315, 346)
START_X, START_Y, START_SIZE = 196, 188, (247, 62)
BUTTON = (201, 192, 437, 244)         # left, top, right, bottom (exclusive): the clickable part

RESOLUTIONS = ((320, 240, '4:3'), (400, 300, '4:3'), (512, 384, '4:3'), (640, 480, '4:3'), (800, 600, '4:3'),
               (1024, 768, '4:3'), (1280, 720, '16:9'), (1280, 1024, '5:4'), (1440, 900, '16:10'),
               (1600, 1200, '4:3'), (1920, 1080, '16:9'))
ASPECTS = ('Automatic', '4:3', '16:9', '16:10')
OPTIONS = ('Fullscreen', 'Antialiasing', 'Music', 'Vertex buffers')
PATHS = ('Fixed-function', 'Generated shaders (GLSL)')

# ---- painting ----------------------------------------------------------------------------------

FINE = 8  # shapes are drawn this many times larger and averaged


def nearest(colors, allowed):
    """The allowed palette index nearest to each colour of an (n, 3) array."""
    allowed = np.array(sorted(set(allowed)))
    weights = np.array((0.30, 0.59, 0.25))
    distance = ((colors[:, None, :] - PALETTE[allowed][None, :, :]) ** 2 * weights).sum(axis=2)
    return allowed[distance.argmin(axis=1)]


class Picture:
    """Palette indices, painted through coverage masks."""

    def __init__(self, width, height, fill):
        self.width, self.height = width, height
        self.index = np.full((height, width), fill, dtype=np.uint8)

    def paint(self, mask, color, steps):
        """Lays `color` over the picture where the mask (0..1) is; edges take the colours of `steps`."""
        inside = mask > 1 / 64
        amount = mask[inside][:, None]
        below = self.index[inside]
        mixed = PALETTE[below] * (1 - amount) + PALETTE[color] * amount
        self.index[inside] = nearest(mixed, tuple(steps) + (color,))

    def cut(self, x, y, width, height):
        part = Picture(width, height, 0)
        part.index[:] = self.index[y:y + height, x:x + width]
        return part

    def draw(self, other, x, y, keyed):
        """Blits another picture, as the dialog does."""
        place = self.index[y:y + other.height, x:x + other.width]
        source = other.index[:place.shape[0], :place.shape[1]]
        shown = source != KEY if keyed else np.ones_like(source, dtype=bool)
        place[shown] = source[shown]

    def rgb(self):
        return PALETTE[self.index].astype(np.uint8)


class Mask:
    """A coverage mask in the making: shapes in picture coordinates, drawn large."""

    def __init__(self, picture):
        self.size = (picture.width, picture.height)
        self.image = Image.new('L', (picture.width * FINE, picture.height * FINE), 0)
        self.pen = ImageDraw.Draw(self.image)

    def box(self, left, top, right, bottom, radius=0, value=255):
        """A rectangle up to right and bottom (exclusive), with round corners."""
        self.pen.rounded_rectangle((left * FINE, top * FINE, right * FINE - 1, bottom * FINE - 1),
                                   radius * FINE, fill=value)
        return self

    def polygon(self, points, value=255):
        self.pen.polygon([(x * FINE, y * FINE) for x, y in points], fill=value)
        return self

    def disc(self, x, y, radius, value=255):
        self.pen.ellipse(((x - radius) * FINE, (y - radius) * FINE, (x + radius) * FINE - 1,
                          (y + radius) * FINE - 1), fill=value)
        return self

    def stroke(self, points, width, value=255):
        """Lines of a width through points, round at ends and corners."""
        large = [(x * FINE, y * FINE) for x, y in points]
        self.pen.line(large, fill=value, width=int(width * FINE))
        for x, y in points:
            self.disc(x, y, width / 2, value)
        return self

    def coverage(self):
        return np.asarray(self.image.resize(self.size, Image.BOX), dtype=np.float64) / 255


def font(name, size):
    return ImageFont.truetype(FONTS + name + '.ttf', round(size * FINE))


# The sizes bring the height of small letters or capitals to whole pixels, which keeps them sharp.
LABEL = font('DejaVuSansCondensed', 13)
NOTE = font('DejaVuSansCondensed', 11)
CAPTION = font('DejaVuSansCondensed-Bold', 9.6)
START = font('DejaVuSans-Bold', 22)
WEIGHT = 0.75  # below 1, thin stems gain weight: light letters on dark look faint without it


def text_width(words, face, tracking=0):
    return face.getlength(words) / FINE + tracking * (len(words) - 1)


def text(picture, x, baseline, words, face, color, steps, tracking=0, align='l'):
    """Text on a baseline, drawn large and averaged, so that its letters stand evenly."""
    x -= {'l': 0, 'm': 0.5, 'r': 1}[align] * text_width(words, face, tracking)
    image = Image.new('L', (picture.width * FINE, picture.height * FINE), 0)
    pen = ImageDraw.Draw(image)
    for start in range(len(words)) if tracking else (0,):
        part = words[start:start + 1] if tracking else words
        at = x * FINE + face.getlength(words[:start]) + tracking * FINE * start
        pen.text((round(at), baseline * FINE), part, font=face, fill=255, anchor='ls')
    coverage = np.asarray(image.resize((picture.width, picture.height), Image.BOX), dtype=np.float64) / 255
    picture.paint(coverage ** WEIGHT, color, steps)


# ---- the pictures ------------------------------------------------------------------------------


def draw_panel(picture, left, top, right, bottom):
    picture.paint(Mask(picture).box(left, top, right, bottom, 7).coverage(), EDGE, COLD)
    picture.paint(Mask(picture).box(left + 1, top + 1, right - 1, bottom - 1, 6).coverage(), PANEL, COLD)


def draw_line(picture, left, top, right, bottom):
    picture.index[top:bottom, left:right] = EDGE


def draw_resolutions(picture):
    draw_panel(picture, 4, 4, 171, 380)
    times = 60  # the column of the multiplication signs
    for row, y in enumerate(RESOLUTION_Y):
        base = y + 18
        if row == 0:
            text(picture, 22, base, 'Desktop size', LABEL, KEY, COLD)
            continue
        width, height, shape = RESOLUTIONS[row - 1]
        text(picture, times - 8, base, str(width), LABEL, KEY, COLD, align='r')
        text(picture, times, base, '\u00d7', LABEL, BLUE_3, COLD, align='m')
        text(picture, times + 8, base, str(height), LABEL, KEY, COLD)
        text(picture, 158, base, shape, NOTE, BLUE_3, COLD, align='r')


def draw_aspects(picture):
    for row, y in enumerate(ASPECT_Y):
        text(picture, ASPECT_X + 9, y + 18, ASPECTS[row], LABEL, KEY, COLD)


def draw_options(picture):
    for row, y in enumerate(BOX_Y):
        picture.paint(Mask(picture).box(BOX_X, y, BOX_X + BOX_SIDE, y + BOX_SIDE, 2.5).coverage(), BLUE_3, COLD)
        picture.paint(Mask(picture).box(BOX_X + 1, y + 1, BOX_X + BOX_SIDE - 1, y + BOX_SIDE - 1, 1.5).coverage(),
                      NIGHT, COLD)
        text(picture, 309, ASPECT_Y[row] + 18, OPTIONS[row], LABEL, KEY, COLD)


def draw_paths(picture):
    draw_panel(picture, 178, 286, 457, 380)
    text(picture, PATH_X + 14, 306, 'RENDERING', CAPTION, BLUE_3, COLD, tracking=1.4)
    for row, y in enumerate(PATH_Y):
        text(picture, PATH_X + 14, y + 19, PATHS[row], LABEL, KEY, COLD)


def draw_button(picture, left, top, pressed):
    """The start button with `left`, `top` at its clickable corner."""
    right, bottom = left + BUTTON[2] - BUTTON[0], top + BUTTON[3] - BUTTON[1]
    radius = 9
    middle = (left + right) / 2
    if pressed:
        picture.paint(Mask(picture).box(left, top, right, bottom, radius).coverage(), BROWN, WARM)
        picture.paint(Mask(picture).box(left + 1, top + 3, right - 1, bottom - 1, radius - 1).coverage(), ORANGE, WARM)
        shift = 2
    else:
        picture.paint(Mask(picture).box(left, top, right, bottom, radius).coverage(), BROWN, WARM)
        picture.paint(Mask(picture).box(left, top, right, bottom - 3, radius).coverage(), ORANGE, WARM)
        picture.paint(Mask(picture).box(left, top, right, bottom - 6, radius).coverage(), GOLD, WARM)
        picture.paint(Mask(picture).box(left, top + 2, right, bottom - 6, radius).coverage(), AMBER, WARM)
        shift = 0
    base = top + 31 + shift
    words, tracking = 'START', 4
    width = text_width(words, START, tracking)
    triangle, gap = 15, 14
    x = middle - (width + triangle + gap) / 2
    steps = (NIGHT, BROWN, ORANGE if pressed else AMBER)
    arrow = ((x, base - 16), (x, base), (x + triangle, base - 8))
    picture.paint(Mask(picture).polygon(arrow).coverage(), NIGHT, steps)
    text(picture, x + triangle + gap, base, words, START, NIGHT, steps, tracking=tracking)


def draw_wordmark(picture, left, top):
    """BRIMLOW, 236 pixels wide and 32 high; its O is a sun that sinks behind the horizon."""
    s, h = 5.0, 32.0
    a, b = s / 2, h - s / 2  # middle of the top and bottom strokes
    x = left + s / 2

    def arc(cx, cy, rx, ry, start, stop):
        t = np.radians(np.linspace(start, stop, 25))
        return [(cx + rx * np.cos(i), cy + ry * np.sin(i)) for i in t]

    def letter(*strokes):
        m = Mask(picture)
        for points in strokes:
            m.stroke([(x + px, top + py) for px, py in points], s)
        picture.paint(m.coverage(), WHITE, COLD)

    mid = 15.0
    upper, lower = (mid - a) / 2, (b - mid) / 2
    bowl_upper = [(0, a), (10, a)] + arc(10, a + upper, 7, upper, -90, 90) + [(0, mid)]
    bowl_lower = [(0, mid), (11, mid)] + arc(11, mid + lower, 8, lower, -90, 90) + [(0, b)]
    letter([(0, a), (0, b)], bowl_upper, bowl_lower)
    x += 19 + s + 10
    low = 17.5
    half = (low - a) / 2
    letter([(0, a), (0, b)], [(0, a), (10, a)] + arc(10, a + half, 7.5, half, -90, 90) + [(0, low)],
           [(9, low), (18, b)])
    x += 18 + s + 10
    letter([(0, a), (0, b)])
    x += s + 10
    letter([(0, b), (0, a), (13, 22), (26, a), (26, b)])
    x += 26 + s + 10
    letter([(0, a), (0, b), (15, b)])
    x += 15 + s / 2 + 8
    draw_sun(picture, x + 17, top + h / 2, 17)
    x += 34 + 8 + s / 2
    letter([(0, a), (9.5, b), (19, 7), (28.5, b), (38, a)])


def draw_sun(picture, x, y, radius):
    """A disc in warm bands, with the gaps that a horizon cuts into it."""
    bands = ((-radius, GOLD), (-0.30 * radius, AMBER), (0.12 * radius, ORANGE), (0.52 * radius, CORAL))
    ends = [b[0] for b in bands[1:]] + [radius]
    gaps = ((0.10, 0.05), (0.38, 0.08), (0.64, 0.10))
    for (start, color), end in zip(bands, ends):
        m = Mask(picture).disc(x, y, radius)
        m.box(0, 0, picture.width, round(y + start), 0, 0)
        m.box(0, round(y + end), picture.width, picture.height, 0, 0)
        for at, height in gaps:
            gap = round(y + at * radius)
            m.box(0, gap, picture.width, gap + max(1, round(height * radius)), 0, 0)
        picture.paint(m.coverage(), color, WARM + (CORAL,))


def draw_background():
    picture = Picture(WIDTH, HEIGHT, NIGHT)
    draw_resolutions(picture)
    draw_panel(picture, 178, 4, 457, 134)
    draw_line(picture, 268, 14, 269, 124)
    draw_aspects(picture)
    draw_options(picture)
    draw_wordmark(picture, BUTTON[0], 147)
    draw_button(picture, BUTTON[0], BUTTON[1], False)
    text(picture, 318.5, 269, 'Esc ends the show', NOTE, BLUE_3, COLD, align='m')
    draw_paths(picture)
    return picture


def draw_pressed(background):
    picture = background.cut(START_X, START_Y, *START_SIZE)
    left, top = BUTTON[0] - START_X, BUTTON[1] - START_Y
    picture.paint(Mask(picture).box(left - 2, top - 2, BUTTON[2] - START_X + 2, BUTTON[3] - START_Y + 2).coverage(),
                  NIGHT, (NIGHT,))
    draw_button(picture, left, top, True)
    return picture


def draw_highlight(width, height):
    """A glowing frame with a bar at its left; the middle stays open for the label."""
    ground = Picture(width, height, PANEL)
    rings = ((0, AMBER), (1, BROWN), (2, PLUM))
    for inset, color in rings:
        m = Mask(ground).box(inset, inset, width - inset, height - inset, max(6 - inset, 2))
        ground.paint(m.coverage(), color, WARM)
    m = Mask(ground).box(3, 3, width - 3, height - 3, 3)
    ground.paint(m.coverage(), PANEL, WARM)
    bar = Mask(ground).box(0, 0, width, height, 6).box(4, 0, width, height, 0, 0)
    ground.paint(bar.coverage(), AMBER, WARM)
    picture = Picture(width, height, KEY)
    inside = ground.index != PANEL
    picture.index[inside] = ground.index[inside]
    return picture


def draw_check():
    ground = Picture(*MARK_SIZE, NIGHT)
    tick = ((6, 9.8), (9.5, 13.6), (17.3, 4))
    ground.paint(Mask(ground).stroke(tick, 3.2).coverage(), AMBER, WARM)
    halo = Mask(ground).stroke(tick, 5.4).coverage() > 0.4
    picture = Picture(*MARK_SIZE, KEY)
    picture.index[halo] = ground.index[halo]
    return picture


def draw_all():
    background = draw_background()
    return {
        'background': background,
        'resolution': draw_highlight(*RESOLUTION_SIZE),
        'aspect': draw_highlight(*ASPECT_SIZE),
        'check': draw_check(),
        'start_pressed': draw_pressed(background),
        'path': draw_highlight(*PATH_SIZE),
    }


# ---- files -------------------------------------------------------------------------------------


def bmp_bytes(picture):
    """A 4-bit uncompressed BMP with a 40-byte header and the 16 colours of the palette."""
    pairs = np.zeros((picture.height, (picture.width + 7) // 8 * 8), dtype=np.uint8)
    pairs[:, :picture.width] = picture.index
    rows = (pairs[::-1, 0::2] << 4 | pairs[::-1, 1::2]).tobytes()
    colors = b''.join(struct.pack('<4B', int(b), int(g), int(r), 0) for r, g, b in PALETTE)
    offset = 14 + 40 + len(colors)
    return (struct.pack('<2sIHHI', b'BM', offset + len(rows), 0, 0, offset)
            + struct.pack('<IiiHHIIiiII', 40, picture.width, picture.height, 1, 4, 0, len(rows), 2835, 2835, 16, 16)
            + colors + rows)


def compose(pictures, resolution=0, aspect=0, path=1, checks=(1, 1, 1, 1), pressed=False):
    """The dialog as the program draws it."""
    screen = Picture(WIDTH, HEIGHT, NIGHT)
    screen.draw(pictures['background'], 0, 0, False)
    screen.draw(pictures['resolution'], RESOLUTION_X, RESOLUTION_Y[resolution], True)
    screen.draw(pictures['aspect'], ASPECT_X, ASPECT_Y[aspect], True)
    screen.draw(pictures['path'], PATH_X, PATH_Y[path], True)
    for y, ticked in zip(MARK_Y, checks):
        if ticked:
            screen.draw(pictures['check'], MARK_X, y, True)
    if pressed:
        screen.draw(pictures['start_pressed'], START_X, START_Y, False)
    return screen


def main():
    options = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    options.add_argument('--preview', metavar='FILE', help='write a PNG of the whole dialog instead')
    options.add_argument('--rows', default='0,0,1', help='preview: resolution, aspect, path')
    options.add_argument('--checks', default='1111', help='preview: the four boxes')
    options.add_argument('--pressed', action='store_true', help='preview: the start button held down')
    options.add_argument('--zoom', type=int, default=1)
    arguments = options.parse_args()
    pictures = draw_all()
    if arguments.preview:
        rows = [int(n) for n in arguments.rows.split(',')]
        checks = [c == '1' for c in arguments.checks]
        image = Image.fromarray(compose(pictures, *rows, checks, arguments.pressed).rgb())
        image.resize((WIDTH * arguments.zoom, HEIGHT * arguments.zoom), Image.NEAREST).save(arguments.preview)
        return
    for name, picture in pictures.items():
        with open(os.path.join(HERE, name + '.bmp'), 'wb') as file:
            file.write(bmp_bytes(picture))


if __name__ == '__main__':
    main()
