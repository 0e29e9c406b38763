"""Small plots with two logarithmic axes, as one SVG that can be read on light and on dark pages."""
import html
import math

COLUMNS, WIDTH, HEIGHT, GAP = 4, 262, 228, 14
LEFT, TOP, RIGHT, BOTTOM = 46, 30, 10, 58   # of the frame in its plot; the legend stands below
SHADES = ('one', 'two', 'three', 'four')
STYLE = '''
  text { font: 11px sans-serif; fill: #333b4d; }
  .title { font-weight: bold; font-size: 12px; }
  .small { font-size: 9.5px; fill: #667085; }
  .frame { fill: none; stroke: #98a2b3; stroke-width: 0.8; }
  .linear { stroke: #d0d5dd; stroke-width: 0.8; }
  .one { stroke: #1d6fd8; } .two { stroke: #c2410c; } .three { stroke: #15803d; } .four { stroke: #9333ea; }
  .dot.one { fill: #1d6fd8; } .dot.two { fill: #c2410c; } .dot.three { fill: #15803d; } .dot.four { fill: #9333ea; }
  .curve { fill: none; stroke-width: 1.8; }
  .dot { stroke: none; }
  .paper { fill: #ffffff; }
  @media (prefers-color-scheme: dark) {
    .paper { fill: #12161f; }
    text { fill: #d8dee9; }
    .small { fill: #98a2b3; }
    .frame { stroke: #667085; }
    .linear { stroke: #344054; }
    .one { stroke: #6aa9ff; } .two { stroke: #fb923c; } .three { stroke: #4ade80; } .four { stroke: #c084fc; }
    .dot.one { fill: #6aa9ff; } .dot.two { fill: #fb923c; } .dot.three { fill: #4ade80; } .dot.four { fill: #c084fc; }
  }
'''


def page(plots):
    """`plots` are (title, what the sizes count, [(name, [(size, seconds), ...], exponent), ...])."""
    rows = (len(plots) + COLUMNS - 1) // COLUMNS
    width, height = COLUMNS * (WIDTH + GAP) + GAP, rows * (HEIGHT + GAP) + GAP
    parts = ['<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %d %d" width="%d" height="%d">'
             % (width, height, width, height), '<style>%s</style>' % STYLE,
             '<rect class="paper" width="%d" height="%d"/>' % (width, height)]
    for number, plot in enumerate(plots):
        parts.append('<g transform="translate(%d %d)">' % (GAP + number % COLUMNS * (WIDTH + GAP),
                                                           GAP + number // COLUMNS * (HEIGHT + GAP)))
        parts += plot_parts(*plot) + ['</g>']
    return '\n'.join(parts + ['</svg>']) + '\n'


def plot_parts(title, unit, curves):
    sizes = [size for _, points, _ in curves for size, _ in points]
    times = [time for _, points, _ in curves for _, time in points]
    across, up = decades(sizes), decades(times)
    inner = (LEFT, TOP, WIDTH - LEFT - RIGHT, HEIGHT - TOP - BOTTOM)

    def place(size, time):
        x = (math.log10(size) - across[0]) / (across[1] - across[0])
        y = (math.log10(time) - up[0]) / (up[1] - up[0])
        return inner[0] + x * inner[2], inner[1] + (1 - y) * inner[3]

    parts = ['<text class="title" x="%d" y="14">%s</text>' % (LEFT, html.escape(title)),
             '<text class="small" x="%d" y="25">time by %s</text>' % (LEFT, html.escape(unit))]
    parts += linear_lines(across, up, inner)
    parts += ['<rect class="frame" x="%d" y="%d" width="%d" height="%d"/>' % inner]
    parts += axis_words(across, up, inner, place)
    for row, (shade, (name, points, exponent)) in enumerate(zip(SHADES, curves)):
        parts += curve_parts(shade, [place(*point) for point in points])
        parts += legend(shade, row, '%s: %.2f' % (name, exponent))
    return parts


def decades(values):
    """The powers of ten around all values, at least one apart."""
    low, high = math.floor(math.log10(min(values)) + 1e-9), math.ceil(math.log10(max(values)) - 1e-9)
    return low, max(high, low + 1)


def linear_lines(across, up, inner):
    """A line of exponent 1 through every power of ten, cut at the frame."""
    parts = []
    for shift in range(up[0] - across[1], up[1] - across[0] + 1):   # log time = log size + shift
        begin, end = max(across[0], up[0] - shift), min(across[1], up[1] - shift)
        if begin < end:
            x = [inner[0] + (at - across[0]) / (across[1] - across[0]) * inner[2] for at in (begin, end)]
            y = [inner[1] + (1 - (at + shift - up[0]) / (up[1] - up[0])) * inner[3] for at in (begin, end)]
            parts.append('<line class="linear" x1="%.1f" y1="%.1f" x2="%.1f" y2="%.1f"/>' % (x[0], y[0], x[1], y[1]))
    return parts


def axis_words(across, up, inner, place):
    every = 2 if across[1] - across[0] > 5 else 1
    parts = ['<text class="small" x="%.1f" y="%d" text-anchor="middle">%s</text>'
             % (place(10 ** power, 10.0 ** up[0])[0], inner[1] + inner[3] + 12, as_size(power))
             for power in range(across[0], across[1] + 1, every)]
    every = 2 if up[1] - up[0] > 5 else 1
    return parts + ['<text class="small" x="%d" y="%.1f" text-anchor="end">%s</text>'
                    % (inner[0] - 4, place(10.0 ** across[0], 10.0 ** power)[1] + 3, as_seconds(power))
                    for power in range(up[0], up[1] + 1, every)]


def as_size(power):
    return '%d%s' % (10 ** (power % 3), ' kMG'[power // 3].strip())


def as_seconds(power):
    return '%d %s' % (10 ** (power % 3), {-4: 'ps', -3: 'ns', -2: 'µs', -1: 'ms', 0: 's'}[power // 3])


def curve_parts(shade, places):
    parts = ['<polyline class="curve %s" points="%s"/>' % (shade, ' '.join('%.1f,%.1f' % place for place in places))]
    return parts + ['<circle class="dot %s" cx="%.1f" cy="%.1f" r="2.3"/>' % (shade, *place) for place in places]


def legend(shade, row, words):
    """Two beside each other, below the frame."""
    x, y = 4 + row % 2 * (WIDTH // 2), HEIGHT - BOTTOM + 30 + row // 2 * 14
    return ['<line class="curve %s" x1="%d" y1="%d" x2="%d" y2="%d"/>' % (shade, x, y - 3, x + 12, y - 3),
            '<text class="small" x="%d" y="%d">%s</text>' % (x + 16, y, html.escape(words))]
