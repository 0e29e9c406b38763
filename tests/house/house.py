"""The house as its includes show it: rooms, the files in them, and the arrows between them.

    house.py ROOT           prints the rooms and whom each includes
    house.py ROOT --draw    draws that into docs/house.svg

An arrow leads from the one who includes to the one who is included.
"""
import html
import os
import re
import sys
import textwrap

sys.dont_write_bytecode = True
import test_walls  # noqa: E402
from test_walls import PLACES, ROOMS  # noqa: E402

PROGRAMS = {'tools/make': ('brimlow-make', 'builds, checks, opens and compares shows, puts packs together'),
            'tools/render': ('brimlow-render', 'stills, films and reports, without a display'),
            'tools/preview': ('brimlow-preview', 'plays a show while it is written, builds it anew'),
            'tools/pages': ('brimlow-pages', 'writes manual pages, completions and the reference')}  # the player: `shell`
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^">]+)"', re.M)
DRAWING = ('docs', 'house.svg')


# ---- what is there ------------------------------------------------------------------------------

def sources(root):
    """('render/text.cpp', its text) of every source file of ours."""
    for place, name, text in test_walls.sources(root):
        yield place + '/' + name, text


def includes(files):
    """(file, included file), both with their folder; files of one folder may name each other without it."""
    for name, text in files:
        folder = name.rpartition('/')[0]
        for included in INCLUDE.findall(text):
            yield name, included if '/' in included else folder + '/' + included


def rooms_of(files):
    """Those that there are, from the ground up. A folder that the walls do not order stands on top."""
    there = {name.rpartition('/')[0] for name, _ in files}
    ordered = [room for room in ROOMS + list(PLACES) if room in there]
    return ordered + sorted(there - set(ordered))


def arrows(files):
    """room -> the other rooms that it includes."""
    found = {room: set() for room in rooms_of(files)}
    for name, included in includes(files):
        room, other = name.rpartition('/')[0], included.rpartition('/')[0]
        if other != room and other in found:
            found[room].add(other)
    return found


# ---- circles ------------------------------------------------------------------------------------

def way_back(graph, start):
    """The shortest way along the arrows from a unit to itself, without it at the end; None: there is none."""
    ways = [[start]]
    seen = set()
    for way in ways:   # grows while it is walked
        for unit in sorted(graph.get(way[-1], ())):
            if unit == start:
                return way
            if unit not in seen:
                seen.add(unit)
                ways.append(way + [unit])
    return None


def circles(files):
    """A line for every circle between units, which are a header and the source of its name."""
    graph, reasons = {}, {}
    for name, included in includes(files):
        unit, other = os.path.splitext(name)[0], os.path.splitext(included)[0]
        if unit != other:
            graph.setdefault(unit, set()).add(other)
            reasons.setdefault((unit, other), '%s includes %s' % (name, included))
    found = {}
    for unit in sorted(graph):
        way = way_back(graph, unit)
        if way:
            found.setdefault(frozenset(way), way)
    return ['a circle: %s. What they share belongs into a file below them.'
            % ', '.join(reasons[pair] for pair in zip(way, way[1:] + way[:1])) for way in found.values()]


# ---- the drawing --------------------------------------------------------------------------------

def called(room):
    return PROGRAMS[room][0] if room in PROGRAMS else room


def as_text(files):
    above = arrows(files)
    order = list(above)
    lines = []
    for room in reversed(order):
        others = sorted(above[room], key=order.index, reverse=True)
        lines.append('%-15s -> %s' % (called(room), ' '.join(
            other + (' (up!)' if order.index(other) > order.index(room) else '') for other in others) or 'nobody'))
    return '\n'.join(lines) + '\n'


def what_they_know(page):
    """room -> its line in the table of rooms of docs/architecture.md."""
    rooms = {room: re.sub(r'[`*]', '', text) for room, text in re.findall(r'^\| `([\w/]+)` \| (.*?) \|$', page, re.M)}
    return {**rooms, **{folder: text for folder, (_, text) in PROGRAMS.items()}}


FLOOR, GAP, LEFT, LANES, LANE = 48, 8, 12, 496, 26   # pixels: heights, the margin, where lanes begin, their distance


def svg_floor(y, width, name, side, lines):
    """A band over the whole width with a name and what its room knows; `side`: of the house, " authoring"."""
    first = y + FLOOR // 2 + 11 - 7 * len(lines)
    knows = ''.join('<text x="%d" y="%d" class="knows">%s</text>\n' % (LEFT + 160, first + 14 * n, html.escape(line))
                    for n, line in enumerate(lines))
    return ('<rect x="%d" y="%d" width="%d" height="%d" rx="5" class="floor%s"/>\n'
            '<text x="%d" y="%d" class="name">%s</text>\n'
            % (LEFT, y, width - 2 * LEFT, FLOOR, side, LEFT + 12, y + FLOOR // 2 + 5, html.escape(name)) + knows)


def side_of(room):
    side = room.partition('/')[0]
    return ' ' + side if side in ('authoring', 'tools') else ''


def svg_lane(x, begin, ends):
    """One room's arrows: a line from its own floor with a head on every floor that it includes."""
    parts = []
    for kind, reached in (('down', [y for y in ends if y > begin]), ('up', [y for y in ends if y < begin])):
        if reached:
            last = max(reached, key=lambda y: abs(y - begin))
            parts.append('<line x1="%d" y1="%d" x2="%d" y2="%d" class="%s"/>\n' % (x, begin, x, last, kind))
        point = 5 if kind == 'down' else -5
        parts += ['<path d="M%d %d l-5 %d h10 z" class="%s head"/>\n' % (x, y + point, -2 * point, kind)
                  for y in reached]
    return ''.join(parts) + '<circle cx="%d" cy="%d" r="5" class="begin"/>\n' % (x, begin)


STYLE = '''<style>
text { font-family: sans-serif; fill: #22303c }
.name { font-size: 15px; font-weight: bold }
.knows { font-size: 11px }
.floor { fill: #eef2f5; stroke: #b9c6d0 }
.authoring { fill: #f1efe2; stroke: #cfc8a4 }
.tools { fill: #e9f3ea; stroke: #b3cdb6 }
.down { stroke: #2f6f9f; stroke-width: 2 }
.up { stroke: #c62828; stroke-width: 3 }
.head.down { fill: #2f6f9f }
.head.up { fill: #c62828 }
.begin { fill: #22303c }
</style>
'''


def as_svg(files, page):
    above, knows = arrows(files), what_they_know(page)
    order = list(above)
    middle = {room: GAP + (len(order) - 1 - n) * (FLOOR + GAP) + FLOOR // 2 for n, room in enumerate(order)}
    width, height = LANES + LANE * len(order) + LEFT, len(order) * (FLOOR + GAP) + GAP
    size = 'width="%d" height="%d"' % (width, height)
    parts = ['<svg xmlns="http://www.w3.org/2000/svg" %s viewBox="0 0 %d %d">\n' % (size, width, height), STYLE,
             '<rect %s fill="#ffffff"/>\n' % size]
    for room in reversed(order):
        lines = textwrap.wrap(knows.get(room, ''), 54, max_lines=3, placeholder=' ...')
        parts.append(svg_floor(middle[room] - FLOOR // 2, width, called(room), side_of(room), lines))
    for n, room in enumerate(reversed(order)):
        ends = sorted(middle[other] for other in above[room])
        parts.append(svg_lane(LANES + LANE // 2 + n * LANE, middle[room], ends))
    return ''.join(parts) + '</svg>\n'


def drawing_of(root):
    with open(os.path.join(root, 'docs', 'architecture.md'), encoding='utf-8') as file:
        return as_svg(list(sources(root)), file.read())


def main():
    root = sys.argv[1]
    if sys.argv[2:] == ['--draw']:
        with open(os.path.join(root, *DRAWING), 'w', encoding='utf-8') as file:
            file.write(drawing_of(root))
    else:
        sys.stdout.write(as_text(list(sources(root))))


if __name__ == '__main__':
    main()
