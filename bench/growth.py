#!/usr/bin/env python3
"""How time grows with the size of a show: measures, prints an exponent for every curve, and draws them on one page.

    growth.py --build FOLDER [--write] [--draw FILE.svg] [--quick] [PLOT ...]

FOLDER is a build with bench_growth, brimlow-make and brimlow-render in it (build/native). Shows of growing size are made
in a temporary folder (growth_shows.py). In a plot both axes are logarithmic: a straight line is a power, and the thin
lines behind it are those of exponent 1. The exponent of a curve is that of its large end, the sizes from an eighth
of the largest one on; of whole programs, less what they take for the smallest show. Above 1.15 it is told, and the status
is 1. With --quick there are fewer sizes, and they are smaller. --write draws docs/images/growth.svg, and puts what
single things cost into docs/performance.md.
"""
import argparse
import math
import os
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
import growth_shows as shows  # noqa: E402
from growth_page import page  # noqa: E402
from table import PAGE, as_time, between  # noqa: E402

LINEAR = 1.15  # the largest exponent that counts as linear: caches end, while counted instructions grow with 1.01
REPEATS = 3    # of a program
MEMORY = '/dev/shm' if os.access('/dev/shm', os.W_OK) else None   # a disk has growth of its own: thousands of files

DRAWING = os.path.join(os.path.dirname(PAGE), 'images', 'growth.svg')

# What docs/performance.md says of single things: the plot, the curve, and what it is for who makes a show.
COSTS = (('A frame', 'model placer', 'a copy by the model placer'),
         ('A frame', 'XYZ multiplier', 'a copy by the XYZ multiplier'),
         ('A frame', 'X multiplier', 'a copy by the X multiplier'),
         ('A frame', 'models', 'an object that stands still'),
         ('A frame', 'moving models', 'an object with three numbers that move'),
         ('A frame', 'texts', 'a text of 32 letters'),
         ('A frame', 'waters', 'a lake of 30 × 30 points that moves'),
         ('A frame', 'rippler', 'a point that the rippler moves'),
         ('A frame', 'one object each', 'a track with an object'),
         ('Reading records', 'meshes (entries)', 'loading: a small mesh of its own entry'),
         ('Reading records', 'images (entries)', 'loading: a picture of 4 × 4 of its own entry'),
         ('Reading records', 'materials', 'loading: a material\'s record'),
         ('Reading records', 'scenes', 'loading: a scene of one object'),
         ('Reading a text', 'flat elements', 'loading: a byte of the document'),
         ('brimlow-make build', 'objects', 'building: an object'),
         ('brimlow-make build', 'materials', 'building: an object with a material of its own'),
         ('brimlow-make build', 'curves', 'building: an object with a curve of its own'),
         ('brimlow-make build', 'shapes', 'building: an object with a shape of its own'))


# ---- what is measured ---------------------------------------------------------------------------

class Curve:
    """`measure(folder, n)` gives seconds; `whole` says that it is a program's, whose start counts in."""

    def __init__(self, name, largest, measure, whole=False, smallest=None):
        self.name, self.measure, self.whole = name, measure, whole
        self.sizes = sizes_up_to(largest, smallest or max(largest // 4096, 1))
        self.times = []


def sizes_up_to(largest, smallest):
    """The largest and its halves to an eighth, then quarters."""
    sizes, step = [largest], largest
    while step > smallest:
        step = step // 2 if len(sizes) < 4 else step // 4
        sizes.insert(0, max(step, smallest))
    return sizes


class Bench:
    """The programs of a build."""

    def __init__(self, build):
        self.engine = os.path.join(build, 'bench', 'bench_growth')
        self.make = os.path.join(build, 'brimlow-make')
        self.render = os.path.join(build, 'brimlow-render')

    def step(self, name, make):
        """Seconds of one step of the engine with a show."""
        def measure(folder, n):
            done = subprocess.run([self.engine, name, make(folder, n)], stdout=subprocess.PIPE, check=True)
            return int(done.stdout) / 1e9
        return measure

    def program(self, *commands):
        """Seconds of CPU time of the last of these commands, the fewest of some runs; the others prepare each run."""
        def measure(folder, n):
            lists = [command(folder, n) for command in commands]
            return min([run(each, folder) for each in lists][-1] for _ in range(REPEATS))
        return measure


def run(command, folder):
    """Seconds of CPU time, of both kinds."""
    with open(os.path.join(folder, 'said'), 'wb') as said:
        program = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=said, stderr=said,
                                   env=dict(os.environ, EGL_PLATFORM='surfaceless', GALLIUM_NOOP='1'))
        _, status, used = os.wait4(program.pid, 0)
        program.returncode = os.waitstatus_to_exitcode(status)
    if program.returncode != 0:
        with open(os.path.join(folder, 'said'), encoding='utf-8', errors='replace') as said:
            raise RuntimeError('%s ended with %d: %s' % (' '.join(command[:3]), program.returncode, said.read()[-500:]))
    return used.ru_utime + used.ru_stime


def plots(bench):
    """(title, what the sizes count, curves), in the order of the page."""
    def frame(name, largest, make):
        return Curve(name, largest, bench.step('frame', make))

    def reading(*names, largest=4096):
        return [Curve(name, largest, bench.step('read', shows.RECORDS[name])) for name in names]

    def text(name, make):
        return Curve(name, 1 << 24, bench.step('tree', make), smallest=1 << 10)

    def building(name, largest=4096):
        return Curve(name, largest, bench.program(
            lambda folder, n: [bench.make, 'build', '-o', 'demo.dpk', shows.source(name)(folder, n)]), whole=True)

    def opened(name, *command):
        return Curve(name, 4096, bench.program(
            lambda folder, n: [bench.make, 'build', '-o', 'demo.dpk', shows.source('shapes')(folder, n)],
            lambda folder, n: ['rm', '-rf', 'opened'], lambda folder, n: [bench.make, *command]), whole=True)

    def of_entries(name, *command):
        return Curve(name, 4000, bench.program(
            lambda folder, n: ['rm', '-rf', os.path.basename(shows.pack_of(folder, max(n, 2))) + '.out'],
            lambda folder, n: [bench.make, *command]), whole=True)

    def drawn(name, largest, make):
        return Curve(name, largest, bench.program(
            lambda folder, n: [bench.render, '-q', '-y', '--path', 'fixed', '--size', '64x36', '--at', '0', '-o',
                               'still.png', make(folder, n)]), whole=True)

    create = Curve('create', 4000, bench.program(
        lambda folder, n: [bench.make, 'create', '-f', 'made.dpk', *shows.files_of(folder, n)]), whole=True)
    add = Curve('add', 4000, bench.program(
        lambda folder, n: [bench.make, 'create', '-f', 'made.dpk', *shows.files_of(folder, n)[:1]],
        lambda folder, n: [bench.make, 'add', 'made.dpk', *shows.files_of(folder, n)]), whole=True)
    return [
        ('A frame', 'copies of an object', [
            frame('XYZ multiplier', 100000, shows.xyz_copies), frame('X multiplier', 100000, shows.x_copies),
            frame('model placer', 100000, shows.placed_copies)]),
        ('A frame', 'objects', [
            frame('models', 4096, shows.model_objects), frame('moving models', 1365, shows.moving_objects),
            frame('texts', 4096, shows.text_objects), frame('waters', 1024, shows.effect_objects)]),
        ('A frame', 'tracks', [frame('one object each', 32, shows.tracks)]),
        ('What a moment shows', 'tracks, clips', [
            Curve('tracks', 32, bench.step('layers', shows.tracks)),
            Curve('clips', 8192, bench.step('layers', shows.clips))]),
        ('A frame', 'points', [frame('rippler', 65535, shows.rippled_points)]),
        ('Reading records', 'records', reading('generators', 'chained nodes', 'texture nodes',
                                               'dynamic textures')),
        ('Reading records', 'records', reading('meshes (entries)', 'images (entries)', 'cube maps')),
        ('Reading records', 'records', reading('functions', 'values', 'references', 'materials')),
        ('Reading records', 'records', reading('fonts', 'mesh effects', 'scenes')
         + reading('clips', largest=8192)),
        ('Reading a text', 'bytes', [text('flat elements', shows.flat_text),
                                     text('nested elements', shows.nested_text),
                                     text('attributes', shows.attribute_text),
                                     text('one long text', shows.content_text)]),
        ('brimlow-make build', 'things', [building('objects'), building('shapes'), building('materials'),
                                          building('curves')]),
        ('brimlow-make build', 'things', [building('clips'), building('generated', 1024)]),
        ('brimlow-make, of a show', 'shapes', [opened('check', 'check', 'demo.dpk'),
                                               opened('open', 'open', 'demo.dpk', '-o', 'opened'),
                                               opened('diff', 'diff', 'demo.dpk', 'demo.dpk')]),
        ('brimlow-make, of a pack', 'entries', [of_entries('list', 'list', 'demo.dpk'),
                                                of_entries('extract', 'extract', '-f', 'demo.dpk', 'demo.dpk.out'),
                                                create, add]),
        ('brimlow-render, a still', 'records', [drawn('images', 4000, shows.RECORDS['images (entries)']),
                                                drawn('meshes', 4000, shows.RECORDS['meshes (entries)']),
                                                drawn('materials', 4000, shows.RECORDS['materials']),
                                                drawn('texture nodes', 512, shows.RECORDS['chained nodes'])]),
        ('brimlow-render, a still', 'copies, objects', [drawn('copies', 100000, shows.xyz_copies),
                                                        drawn('objects', 4096, shows.model_objects),
                                                        drawn('texts', 4096, shows.text_objects)]),
    ]


# ---- measuring ----------------------------------------------------------------------------------

def measure(curve, quick):
    if quick:
        curve.sizes = [max(size // 16, 1) for size in curve.sizes[-3:]]
    curve.times = []
    for size in curve.sizes:
        with tempfile.TemporaryDirectory(prefix='growth ', dir=MEMORY) as folder:
            curve.times.append(curve.measure(folder, size))


def exponent(curve):
    """The slope of the best line through the logarithms at the large end."""
    start = curve.times[0] if curve.whole and curve.times[-1] > 2 * curve.times[0] else 0.0
    points = [(math.log(size), math.log(time - start)) for size, time in zip(curve.sizes, curve.times)
              if size * 8 >= curve.sizes[-1] and time > start]
    if len(points) < 2:
        return 0.0
    middle = sum(x for x, _ in points) / len(points)
    return sum((x - middle) * y for x, y in points) / sum((x - middle) ** 2 for x, _ in points)


def each_of(curve):
    """Seconds that one of them takes."""
    return (curve.times[-1] - (curve.times[0] if curve.whole else 0)) / curve.sizes[-1]


def line_of(title, unit, curve):
    each = each_of(curve)
    return '%-26s %-26s %9d %-18s %10.3f ms %10.3f us each  exponent %.2f%s' % (
        title, curve.name, curve.sizes[-1], unit, 1e3 * curve.times[-1], 1e6 * each, exponent(curve),
        '  (more than linear)' if exponent(curve) > LINEAR else '')


def costs_table(measured):
    """Of (title, unit, curves): the rows of COSTS that were measured."""
    known = {(title, curve.name): curve for title, _, curves in measured for curve in curves}
    rows = ['| %s | %s |' % (words, as_time(1e9 * each_of(known[title, name]))) for title, name, words in COSTS
            if (title, name) in known]
    return '\n'.join(['| thing | each |', '|---|--:|'] + rows)


def write_page(measured):
    with open(PAGE, encoding='utf-8') as file:
        text = between(file.read(), 'costs', costs_table(measured))
    assert text, 'docs/performance.md has no place for "costs"'
    with open(PAGE, 'w', encoding='utf-8') as file:
        file.write(text)


def chosen(all_plots, words):
    """The plots with the curves that one of the words stands in, in the title or in the name; without words all."""
    plots_left = [(title, unit, [curve for curve in curves if not words or any(
        word.lower() in (title + ' ' + curve.name).lower() for word in words)]) for title, unit, curves in all_plots]
    return [plot for plot in plots_left if plot[2]]


def fault_of(options, bench, wanted):
    """Why nothing can be measured, as a sentence; "" where it can."""
    if not wanted:
        return 'no plot and no curve has %s in its name; there are: %s' % (
            ' or '.join('"%s"' % word for word in options.plots), '; '.join(dict.fromkeys(plot[0] for plot in plots(bench))))
    if options.write and (options.plots or options.quick):
        return '--write puts all curves into the page: it goes without PLOT and --quick'
    for program in (bench.engine, bench.make, bench.render):
        if not os.access(program, os.X_OK):
            return '%s is missing: ninja -C %s %s' % (program, options.build, os.path.basename(program))
    return ''


def measure_all(wanted, quick):
    """Measures and prints; the curves that grow too fast."""
    steep = []
    for title, unit, curves in wanted:
        for curve in curves:
            measure(curve, quick)
            print(line_of(title, unit, curve), flush=True)
            steep += [curve] if exponent(curve) > LINEAR else []
    return steep


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('plots', nargs='*', metavar='PLOT', help='words of a title or of a curve; without any all')
    parser.add_argument('--build', required=True)
    parser.add_argument('--draw', metavar='FILE.svg')
    parser.add_argument('--write', action='store_true')
    parser.add_argument('--quick', action='store_true')
    options = parser.parse_args()
    bench = Bench(os.path.abspath(options.build))
    wanted = chosen(plots(bench), options.plots)
    fault = fault_of(options, bench, wanted)
    if fault:
        parser.error(fault)
    steep = measure_all(wanted, options.quick)
    if options.write:
        write_page(wanted)
    for drawing in [options.draw] * bool(options.draw) + [DRAWING] * options.write:
        with open(drawing, 'w', encoding='utf-8') as file:
            file.write(page([(title, unit, [(curve.name, list(zip(curve.sizes, curve.times)), exponent(curve))
                                            for curve in curves]) for title, unit, curves in wanted]))
    print('%d curves, %d of them more than linear.' % (sum(len(curves) for _, _, curves in wanted), len(steep)))
    return 1 if steep else 0


if __name__ == '__main__':
    sys.exit(main())
