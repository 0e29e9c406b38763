#!/usr/bin/env python3
"""Draws the pictures of docs/images that show the preview: real windows on a virtual display.

    scripts/draw-preview.py BRIMLOW-PREVIEW FOLDER-FOR-PICTURES        (needs imagemagick)

The show is a copy of the bundled one in which a few numbers are tried by hand.
"""
import os
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.dont_write_bytecode = True
sys.path[:0] = [os.path.join(ROOT, 'tests', 'player'), os.path.join(ROOT, 'tests', 'support')]
from driver import Display  # noqa: E402
from preview import Preview  # noqa: E402

WIDTH, HEIGHT = 1440, 900
TRIED = [('lake.lua', 'level = 0.85', 'level = try(0.85, 0, 2)'),
         ('lake.lua', 'local bob = swinging(0.12, 0.05,', 'local bob = swinging(0.12, try(0.05, 0, 0.3),'),
         ('palette.lua', 'rose  = {0.86,', 'rose  = {try(0.86, 0, 1),')]
BROKEN = ('lake.lua', 'at = {x, bob, z}, rotation = {0, yaw, sway}, scale = size }',
          'at = {x, bob}, rotation = {0, yaw, sway}, scael = size }')


def edit(folder, file, old, new):
    path = os.path.join(folder, file)
    with open(path, encoding='utf-8') as f:
        text = f.read()
    assert text.count(old) == 1, (file, old)
    with open(path, 'w', encoding='utf-8') as f:
        f.write(text.replace(old, new))


def shot(display, preview, path):
    time.sleep(1.5)  # the window is drawn
    x, y, width, height = preview.window()
    subprocess.run(['import', '-window', 'root', '-crop', '%dx%d+%d+%d' % (width, height, x, y), '+repage', '-strip',
                    '-define', 'png:compression-level=9', path], env=display.environment(), check=True)


def main():
    exe, images = sys.argv[1:]
    with tempfile.TemporaryDirectory() as scratch:
        folder = os.path.join(scratch, 'first-light')
        shutil.copytree(os.path.join(ROOT, 'productions', 'first-light'), folder)
        for change in TRIED:
            edit(folder, *change)
        with Display(WIDTH + 200, HEIGHT + 200) as display, Preview(
                display, exe, folder, '--paused', '--mute', '--window', '%dx%d' % (WIDTH, HEIGHT)) as preview:
            preview.ask('wait', **{'for': 'shown', 'number': 0, 'timeout': 60})
            preview.ask('go', time=33.5)
            preview.settled()
            time.sleep(4)  # the notice of the beginning goes
            shot(display, preview, os.path.join(images, 'preview-rest.png'))
            preview.ask('go', time=24)
            size = preview.settled()['size']
            preview.ask('select', x=0.667 * size[0], y=0.615 * size[1])
            shot(display, preview, os.path.join(images, 'preview.png'))
            preview.built(lambda: edit(folder, *BROKEN))
            shot(display, preview, os.path.join(images, 'preview-error.png'))


if __name__ == '__main__':
    main()
