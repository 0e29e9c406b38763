#!/usr/bin/env python3
"""From saving to the new picture: what a change of a show costs in brimlow-preview.

    preview_reload.py BRIMLOW-PREVIEW [--repeats 20] [--path glsl|fixed] [--size 640x360] [--soak RELOADS]

Edits a copy of the bundled production, and a generated show of fifty scenes, while the preview plays them in a window on
a virtual display, and prints the median and the worst time from the end of saving to the swap that shows the new
picture, with the parts of it. With --soak it reloads so many times instead, every kind in turn, and prints what memory
and OpenGL names came to.
"""
import argparse
import os
import re
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path[:0] = [os.path.join(ROOT, 'tests', 'player'), os.path.join(ROOT, 'tests', 'support')]
from driver import Display  # noqa: E402
from preview import Preview  # noqa: E402


def replaced(old, new):
    """A change of a text: from the first state to the second, and back."""
    def texts(content):
        text = content.decode()
        assert text.count(old) >= 1, old
        return content, text.replace(old, new, 1).encode()
    return texts


def moved_vertex(content):
    """A binary glTF file with the first coordinate of its first vertex moved a little."""
    at = 12
    while content[at + 4:at + 8] != b'BIN\0':
        at += 8 + struct.unpack_from('<I', content, at)[0]
    x = struct.unpack_from('<f', content, at + 8)[0]
    return content, content[:at + 8] + struct.pack('<f', x + 0.01) + content[at + 12:]


def darker(content):
    done = subprocess.run(['convert', '-', '-modulate', '96', 'png:-'], input=content, stdout=subprocess.PIPE, check=True)
    return content, done.stdout


# What is changed, in which file, to what, and the second of the show at which it is looked at.
FIRST_LIGHT = [
    ('a number', 'night.lua', replaced('at = {0, 3, -22}', 'at = {0, 3.1, -22}'), 8),
    ('a colour', 'night.lua', replaced('{0.9, 0.6, 0.5}', '{0.9, 0.7, 0.5}'), 8),
    ('a camera', 'morning.lua', replaced('camera = { fov = 58 }', 'camera = { fov = 59 }'), 84),
    ('a mesh', 'models/boat.glb', moved_vertex, 20),
    ('a picture', 'pictures/moon.png', darker, 8),
    ('a generated texture', 'temple.lua', replaced('maze_fullness = 0.62', 'maze_fullness = 0.60'), 48),
    ('a required file', 'palette.lua', replaced('0.86, 0.46, 0.52', '0.86, 0.47, 0.52'), 8),
]

SCENE = '''
local paint_%(n)d = material { texture = disc, color = {%(red).2f, 0.6, 0.4} }
local scene_%(n)d = scene "part %(n)d" { shape() { material = paint_%(n)d, rotation = {20, linear(0, 360, 300), 0} } }
'''
FIFTY_CHANGES = [
    ('a number', 'show.lua', replaced('rotation = {20, linear(0, 360, 300), 0} } }', 'rotation = {21, linear(0, 360, 300), 0} } }'), 1),
    ('a colour', 'show.lua', replaced('{0.00, 0.6, 0.4}', '{0.10, 0.6, 0.4}'), 1),
    ('a camera', 'show.lua', replaced('at = {0, 0, 5}', 'at = {0, 0, 5.1}'), 1),
    ('a mesh', 'shape.lua', replaced('thick = 0.30', 'thick = 0.31'), 1),
    ('a generated texture', 'look.lua', replaced('color_offset = 20', 'color_offset = 21'), 1),
    ('a required file', 'look.lua', replaced('inverse_radian = 1.2', 'inverse_radian = 1.3'), 1),
]


def write_fifty_scenes(folder):
    with open(os.path.join(folder, 'look.lua'), 'w', encoding='utf-8') as f:
        f.write('return texture.radial_colors { center_color = "#f2cc8f", margin_color = "#3d405b",\n'
                '    inverse_radian = 1.2, color_offset = 20 }\n')
    with open(os.path.join(folder, 'shape.lua'), 'w', encoding='utf-8') as f:
        f.write('local solids = require "solids"\nlocal thick = 0.30\n'
                'return function() return solids.ring(thick, 24) end\n')
    with open(os.path.join(folder, 'show.lua'), 'w', encoding='utf-8') as f:
        f.write('show { title = "Fifty scenes" }\nlocal disc = require "look"\nlocal shape = require "shape"\n'
                'local clips = {}\n')
        for n in range(50):
            f.write(SCENE % {'n': n, 'red': n / 50})
            f.write('table.insert(clips, scene_%d { from = "%ds", to = "%ds", camera = { at = {0, 0, 5} } })\n'
                    % (n, 3 * n, 3 * n + 3))
        f.write('track(clips)\n')


def save(path, content):
    """As editors do it: beside, then renamed. The moment at which it is there."""
    with open(path + '.new', 'wb') as f:
        f.write(content)
    os.rename(path + '.new', path)
    return time.monotonic()


def resident_kib(pid):
    with open('/proc/%d/status' % pid, encoding='ascii') as f:
        return int(re.search(r'VmRSS:\s+(\d+)', f.read()).group(1))


def children_of(pid):
    with open('/proc/%d/task/%d/children' % (pid, pid), encoding='ascii') as f:
        return [int(word) for word in f.read().split()]


class Change:
    def __init__(self, folder, name, file, texts, second):
        self.name, self.path, self.second = name, os.path.join(folder, file), second
        with open(self.path, 'rb') as f:
            self.contents = texts(f.read())
        self.turn = 0

    def save(self, preview, settled=True):
        """Saves the other state, when nothing is under way where `settled`, and waits for its picture: (milliseconds, the parts)."""
        self.turn = 1 - self.turn
        before = (preview.settled() if settled else preview.status())['builds_shown']
        saved = save(self.path, self.contents[self.turn])
        shown = preview.ask('wait', **{'for': 'shown', 'number': before, 'timeout': 20})
        parts = {part: 1000 * (shown[b] - (saved if a == 'saved' else shown[a])) for part, a, b in (
            ('noticed', 'saved', 'noticed'), ('built', 'asked', 'built'), ('loaded', 'built', 'loaded'),
            ('drawn', 'loaded', 'shown'))}
        return 1000 * (shown['shown'] - saved), parts


def measure(preview, changes, repeats):
    for change in changes:
        preview.ask('pause')
        preview.ask('go', time=change.second)
        preview.ask('wait', **{'for': 'settled', 'timeout': 60})
        change.save(preview)  # whoever comes first reads the files
        taken = [change.save(preview) for _ in range(repeats)]
        times = [t for t, _ in taken]
        parts = ', '.join('%s %.0f' % (name, statistics.median(p[name] for _, p in taken)) for name in taken[0][1])
        print('| %s | %.0f | %.0f | %s |' % (change.name, statistics.median(times), max(times), parts), flush=True)


def soak(preview, changes, reloads):
    begun = time.monotonic()
    for n in range(reloads + 1):
        if n % max(1, reloads // 20) == 0:
            builders = ' '.join('%.1f' % (resident_kib(child) / 1024) for child in children_of(preview.process.pid))
            print('%6d reloads  %6.0f s  window %.1f MiB  builder %s MiB  %d OpenGL names' % (
                n, time.monotonic() - begun, resident_kib(preview.process.pid) / 1024, builders,
                preview.ask('names')['names']), flush=True)
        if n < reloads:
            changes[n % len(changes)].save(preview, settled=False)


def run(arguments, folder, title, table, reloads):
    changes = [Change(folder, *row) for row in table]
    options = ['--size', arguments.size, '--path', arguments.path, '--mute', '--paused']
    with Display(1600, 1000) as display, Preview(display, arguments.program, folder, *options) as preview:
        preview.ask('wait', **{'for': 'shown', 'number': 0, 'timeout': 30})
        print('\n%s, %s, %s\n' % (title, arguments.path, arguments.size), flush=True)
        if reloads:
            return soak(preview, changes, reloads)
        print('| changed | median, ms | worst, ms | of it, ms |\n|---|---|---|---|', flush=True)
        return measure(preview, changes, arguments.repeats)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('program')
    parser.add_argument('--repeats', type=int, default=20)
    parser.add_argument('--path', default='glsl')
    parser.add_argument('--size', default='640x360')
    parser.add_argument('--soak', type=int, default=0)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        folder = os.path.join(scratch, 'first-light')
        shutil.copytree(os.path.join(ROOT, 'productions', 'first-light'), folder)
        run(arguments, folder, 'First Light', FIRST_LIGHT, arguments.soak // 5)
        fifty = os.path.join(scratch, 'fifty')
        os.mkdir(fifty)
        write_fifty_scenes(fifty)
        run(arguments, fifty, 'Fifty scenes', FIFTY_CHANGES, arguments.soak - arguments.soak // 5)


if __name__ == '__main__':
    main()
