#!/usr/bin/env python3
"""What loading takes of memory at its peak, beside what a show decodes to.

    memory.py --build FOLDER [PACK ...]

FOLDER is build/native; without packs First Light and a generated show of 50 pictures and 100 meshes are measured. The
peak is that of the whole process when the first frames of the show are there, less that of a show of one square: of
brimlow-render (64-bit) and, on a virtual display, of the player of build/x86 (32-bit). The software rasteriser keeps
textures and buffers in the process, so what a show decodes to counts as follows: documents as they are inflated, meshes
twice, for the engine and for the driver, pictures with all their levels, four bytes a pixel. What a process has
behind its peak is what it goes on with; what the peak is above that was needed for loading alone.

Last comes a poster of brimlow-render: what its peak is above that of a small picture of the same frame, beside its
pixels. The software rasteriser has a surface of one tile in the process, colours and depth of four bytes each.
"""
import argparse
import os
import random
import re
import struct
import subprocess
import sys
import tempfile
import time
import zlib

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [os.path.join(HERE, '..', 'tests', 'player'), os.path.join(HERE, '..', 'tests', 'support')]
from packs import plate, png  # noqa: E402
from production import Production, placed  # noqa: E402
from start import build_helpers, noted  # noqa: E402
from driver import START, Display, Player  # noqa: E402

MIB = 1 << 20
DRIVER_PIXEL = 4        # bytes
GENERATED_SIDE = 256    # of generated pictures
ENOUGH_FRAMES = 30      # behind those of the loading screen
POSTER = 15360, 8640
POSTER_AT = '2'
TILE = 4096             # the largest side of the software rasteriser's surfaces


# ---- what a show decodes to ---------------------------------------------------------------------

def entries(path):
    """name -> bytes of a pack."""
    with open(path, 'rb') as file:
        content = file.read()
    found, at = {}, 3
    while content[at:at + 1] != b'\0':
        name, start, end = struct.unpack_from('>32sII', content, at)
        found.setdefault(name.rstrip(b'\0').decode('utf-8', 'replace'), content[start:end + 1])
        at += 40
    return found


def picture_size(content):
    """(width, height) of a PNG or a JPEG picture; None: it is neither."""
    if content.startswith(b'\x89PNG'):
        return struct.unpack_from('>II', content, 16)
    if content.startswith(b'\xff\xd8'):
        at = 2
        while at + 9 < len(content):
            kind, length = content[at + 1], struct.unpack_from('>H', content, at + 2)[0]
            if 0xC0 <= kind <= 0xCF and kind not in (0xC4, 0xC8, 0xCC):
                return struct.unpack_from('>HH', content, at + 5)[::-1]
            at += 2 + length
    return None


def with_levels(width, height):
    pixels = 0
    while True:
        pixels += width * height
        if width == height == 1:
            return pixels
        width, height = max(width // 2, 1), max(height // 2, 1)


def decoded_bytes(path):
    """(documents and meshes, pictures with their levels) of a pack, generated pictures included."""
    inflated = pictures = 0
    for name, content in entries(path).items():
        size = picture_size(content)
        if size:
            pictures += DRIVER_PIXEL * with_levels(*size)
        elif len(content) > 4 and content[4:5] == b'\x78':
            inflated += struct.unpack_from('<I', content)[0] * (1 if name.endswith('.xmlz') else 2)
        if name == 'demo.xmlz':
            text = zlib.decompress(content[4:])
            outputs = len(re.findall(rb' type="255"', text))
            pictures += outputs * DRIVER_PIXEL * with_levels(GENERATED_SIDE, GENERATED_SIDE)
    return inflated, pictures


# ---- shows --------------------------------------------------------------------------------------

def small_show(folder):
    show = Production()
    show.colour((1, 0, 0), 500)
    show.write(folder)
    return os.path.join(folder, 'demo.dpk')


def large_show(folder, pictures=50, meshes=100):
    """Pictures of 512 x 512 that do not pack, meshes of 16,641 points."""
    show, chance = Production(), random.Random(1)
    noise = chance.randbytes(3 * 512 * 512)
    look = show.material()
    objects = [placed(show.mesh(plate(128)), look) for _ in range(meshes)]
    show.layer(show.scene(*objects), 500, fov=60)
    for _ in range(pictures):
        show.image(png(512, 512, noise, level=0))
    show.write(folder)
    return os.path.join(folder, 'demo.dpk')


# ---- peaks --------------------------------------------------------------------------------------

def memory_of(process):
    """(most that was resident so far, what is resident now) of a process, bytes; zeros when it has ended."""
    try:
        with open('/proc/%d/status' % process, encoding='utf-8') as status:
            text = status.read()
    except OSError:
        return 0, 0
    return tuple(1024 * int(found.group(1)) if found else 0
                 for found in (re.search(r'^%s:\s*(\d+)' % name, text, re.M) for name in ('VmHWM', 'VmRSS')))


def peak_of_render(build, pack, size='64x36', at='0'):
    """Looked at while it runs: what wait4 tells counts this script, too."""
    peak = 0
    with tempfile.TemporaryDirectory() as folder:
        program = subprocess.Popen([os.path.join(build, 'brimlow-render'), '-q', '-y', '--path', 'fixed', '--size', size,
                                    '--at', at, '-o', os.path.join(folder, 'still.png'), pack],
                                   env=dict(os.environ, EGL_PLATFORM='surfaceless', LIBGL_ALWAYS_SOFTWARE='1'))
        while program.poll() is None:
            peak = max(peak, memory_of(program.pid)[0])
            time.sleep(0.001)
        assert program.returncode == 0, 'brimlow-render failed'
    return peak


def memory_of_player(build, pack, display, watch):
    """(the peak, what is resident after it) when some frames of the show have been drawn."""
    with tempfile.TemporaryDirectory() as folder:
        os.symlink(os.path.abspath(pack), os.path.join(folder, 'demo.dpk'))
        log = os.path.join(folder, 'times')
        with Player(display, os.path.join(os.path.dirname(build), 'x86', 'brimlow'), folder, LD_PRELOAD=watch,
                    START_TIMES=log) as player:
            player.choose(shaders=False)   # its music is not there, so the timer keeps the time
            player.click(*START)
            assert player.until(lambda: len([1 for what, _ in noted(log) if what == 'swap']) > ENOUGH_FRAMES), \
                'no picture came: %r' % player.lines
            return memory_of(player.process.pid)


def as_row(name, decoded, base, render, player):
    inflated, pictures = decoded
    less = [value - empty for value, empty in zip((render, *player), base)]
    return '%-24s %8.1f %8.1f %10.1f %5.2f x %10.1f %5.2f x %10.1f %5.2f x' % (
        name, inflated / MIB, pictures / MIB, less[0] / MIB, less[0] / max(sum(decoded), 1), less[1] / MIB,
        less[1] / max(sum(decoded), 1), less[2] / MIB, less[1] / max(less[2], 1))


def tell_poster(build, pack):
    width, height = POSTER
    more = peak_of_render(build, pack, '%dx%d' % POSTER, POSTER_AT) - peak_of_render(build, pack, at=POSTER_AT)
    pixels, surface = 3 * width * height, 8 * min(width, TILE) * min(height, TILE)
    print('A poster of %d x %d: %.1f MiB more than a small picture, %.2f x its pixels (%.1f MiB); with a surface %.1f MiB, '
          '%.2f x.' % (*POSTER, more / MIB, more / pixels, pixels / MIB, (pixels + surface) / MIB, more / (pixels + surface)))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('packs', nargs='*', metavar='PACK')
    parser.add_argument('--build', required=True)
    options = parser.parse_args()
    build = os.path.abspath(options.build)
    with tempfile.TemporaryDirectory(prefix='memory-') as folder, Display() as display:
        shows = [('small', small_show(folder))]
        shows += [(os.path.basename(pack), pack) for pack in options.packs]
        if not options.packs:
            os.mkdir(os.path.join(folder, 'large'))
            shows += [('First Light', os.path.join(build, 'productions', 'first-light', 'demo.dpk')),
                      ('50 pictures, 100 meshes', large_show(os.path.join(folder, 'large')))]
        _, watch = build_helpers(folder)
        print('%-24s %8s %8s %18s %18s %18s' % ('MiB', 'inflated', 'pictures', 'brimlow-render', 'player, peak', 'behind it'))
        base = None
        for name, pack in shows:
            render, player = peak_of_render(build, pack), memory_of_player(build, pack, display, watch)
            base = base or (render, *player)
            print(as_row(name, decoded_bytes(pack), base, render, player), flush=True)
        tell_poster(build, shows[1][1])
        print('The small show alone: %.1f, %.1f, %.1f MiB, which are taken off.' % tuple(value / MIB for value in base))
    return 0


if __name__ == '__main__':
    sys.exit(main())
