#!/usr/bin/env python3
"""How evenly a show runs: of each of its scenes the slowest frame beside the median.

    hitches.py [--build FOLDER] [--pack PACK] [--size 640x480] [--fps 5] [--cold-show] [--scenes]

Plays First Light from its start on both paths, with the driver's cache of shaders empty ("new") and full ("known"), as
the player does: everything is warmed while it is loaded (--cold-show: not). A scene lasts from one beginning of a clip
to the next. Each is played twice in one process. In the second play nothing is new to the driver, so what its frames
cost is the show's own; what a frame costs more the first time is a hitch ("own": above the goal in the second
play, too). --scenes prints a row for each scene, not only the worst. Needs bench_hitches_gl (ninja bench_hitches_gl).
Times are processor time of all threads.
"""
import argparse
import os
import statistics
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
GOAL = 2.0        # slowest frame over the scene's median
LEAST_FRAMES = 4  # of a scene: fewer have no median worth the name, and belong to the scene behind them


def play(options, path, cache):
    """What the program prints, as lists of words."""
    command = [os.path.join(options.build, 'bench', 'bench_hitches_gl'), options.pack, path,
               'cold' if options.cold_show else 'warmed', *options.size.split('x'), str(options.fps), '2']
    environment = dict(os.environ, EGL_PLATFORM='surfaceless', MESA_SHADER_CACHE_DIR=cache)
    done = subprocess.run(command, env=environment, stdout=subprocess.PIPE, text=True, check=True)
    return [line.split() for line in done.stdout.splitlines()]


def scenes_of(lines, ticks):
    """Each (begin, end) in ticks, with frames enough at `ticks`."""
    begins = sorted({int(words[2]) for words in lines if words[0] == 'layer'})
    begin = begins[0]
    for end in begins[1:] + [max(ticks) + 1]:
        if sum(begin <= tick < end for tick in ticks) >= LEAST_FRAMES:
            yield begin, end
            begin = end


def frames_of(lines, number):
    return {int(words[2]): float(words[3]) for words in lines if words[0] == 'frame' and int(words[1]) == number}


def time_text(tick):
    return '%d:%04.1f' % (tick // 6000, tick % 6000 / 100)


def rows_of(lines):
    """Of each scene: its begin, frames, median, the slowest, its time, and what that frame costs in the second play."""
    first, second = frames_of(lines, 0), frames_of(lines, 1)
    for begin, end in scenes_of(lines, first):
        inside = [tick for tick in first if begin <= tick < end]
        slowest = max(inside, key=first.get)
        yield begin, len(inside), statistics.median(first[tick] for tick in inside), first[slowest], slowest, \
            second[slowest]


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('--build', default=os.path.join(ROOT, 'build', 'native'))
    parser.add_argument('--pack', help='instead of First Light')
    parser.add_argument('--size', default='640x480')
    parser.add_argument('--fps', type=int, default=5)
    parser.add_argument('--cold-show', action='store_true', help='nothing is warmed')
    parser.add_argument('--scenes', action='store_true', help='a row for each scene')
    options = parser.parse_args()
    options.pack = options.pack or os.path.join(options.build, 'productions', 'first-light', 'demo.dpk')
    missed = 0
    print('path    cache  loading  warming | scenes  above %.0f  own | the worst: at   slowest   median  ratio  again'
          % GOAL)
    for path in ('fixed', 'shaders'):
        with tempfile.TemporaryDirectory() as cache:
            for state in ('new', 'known'):
                lines = play(options, path, cache)
                times = {words[0]: float(words[1]) for words in lines if words[0] in ('load', 'warm')}
                rows = sorted(rows_of(lines), key=lambda row: row[3] / row[2], reverse=True)
                above = sum(row[3] > GOAL * row[2] for row in rows)
                own = sum(row[3] > GOAL * row[2] and row[5] > GOAL * row[2] for row in rows)
                missed += above - own
                for n, (begin, _, median, slowest, tick, again) in enumerate(rows if options.scenes else rows[:1]):
                    head = '%-7s %-5s %6.0f ms %5.0f ms | %6d %8d %4d |' % (
                        path, state, times['load'], times.get('warm', 0), len(rows), above, own)
                    print('%s %12s %6.1f ms %5.1f ms %6.2f %6.1f' % (
                        head if n == 0 else ' ' * (len(head) - 1) + '|', time_text(tick), slowest, median,
                        slowest / median, again))
                sys.stdout.flush()
    print('No scene waits for the driver.' if missed == 0 else
          '%d scenes have a frame above %.0f times their median that waits for the driver.' % (missed, GOAL))


if __name__ == '__main__':
    main()
