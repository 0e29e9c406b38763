#!/usr/bin/env python3
"""How long a viewer waits: from the command to the dialog, and from the button to the first frame of the show.

    start.py --build FOLDER [--quick] [--table]

FOLDER is build/native; the 32-bit player of build/x86 is measured with First Light on a virtual display, beside a bare
program that opens the same windows (bare_window.c), and beside what of the same start went into the driver and into
waiting for the sound device's first buffer ("driver"). Both have a few calls of theirs watched (start_times.c). "cold"
is without what the driver has kept of programs that it built before, as at the very first start. Prints what benchmark
programs print, for bench/run, or a table of medians.
"""
import argparse
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [os.path.join(HERE, '..', 'tests', 'player'), os.path.join(HERE, '..', 'tests', 'support')]
from driver import START, Display, Player  # noqa: E402

LIBRARIES = '/usr/lib/i386-linux-gnu'
KINDS = ('fixed', 'shaders', 'shaders, cold')


def compile_c(source, output, *options):
    subprocess.run(['gcc', '-m32', '-O2', '-o', output, os.path.join(HERE, source), *options], check=True)


def build_helpers(folder):
    """(the bare program, what watches calls)."""
    bare, watch = os.path.join(folder, 'bare_window'), os.path.join(folder, 'start_times.so')
    compile_c('bare_window.c', bare, '-L' + LIBRARIES, '-l:libSDL-1.2.so.0', '-l:libGL.so.1')
    compile_c('start_times.c', watch, '-shared', '-fPIC', '-ldl')
    return bare, watch


def noted(path):
    """(what, seconds) of the lines so far."""
    try:
        with open(path, encoding='utf-8') as file:
            lines = [line.split() for line in file.read().splitlines(True) if line.endswith('\n')]
    except OSError:
        return []
    return [(what, float(seconds)) for what, seconds in lines]


def first(lines, what, behind=None):
    """When that was first noted, behind the first line of another kind; None: not yet."""
    seen = behind is None
    for each, seconds in lines:
        if seen and each == what:
            return seconds
        seen = seen or each == behind
    return None


def needed(lines, behind):
    """Seconds in the driver and, where there is music, between the device's beginning and its first request."""
    music, sound = first(lines, 'music'), first(lines, 'sound')
    return first(lines, 'driver', behind) + (max(0.0, sound - music) if music and sound else 0.0)


def one_start(display, exe, show, watch, cache, kind=None):
    """Seconds: from the command to the dialog, from the button to the first frame of the show, of these in the driver and
    waiting for sound.

    Without a kind it is the bare program, whose first frame is all of its show."""
    with tempfile.TemporaryDirectory() as folder:
        log = os.path.join(folder, 'times')
        begin = time.monotonic()
        with Player(display, exe, show, LD_PRELOAD=watch, START_TIMES=log, MESA_SHADER_CACHE_DIR=cache or folder) as player:
            player.dialog()
            if kind:
                player.choose(shaders=kind != 'fixed')
            player.point(*START)
            player.press_button()
            pressed = time.monotonic()
            display.client().button(False)
            behind = 'music' if kind else None
            if not player.until(lambda: first(noted(log), 'driver', behind)):
                raise RuntimeError('no picture came: %r %r' % (player.lines, player.errors))
            lines = noted(log)
    return first(lines, 'plain') - begin, first(lines, 'swap', behind) - pressed, needed(lines, behind)


def measure(build, repeats):
    """(work, who) -> seconds, the repeats of all kinds by turns."""
    player = os.path.join(os.path.dirname(build), 'x86', 'brimlow')
    show = os.path.join(build, 'productions', 'first-light')
    times = {}

    def add(work, who, seconds):
        times.setdefault((work, who), []).append(seconds)

    with tempfile.TemporaryDirectory(prefix='start-') as folder, Display() as display:
        bare, watch = build_helpers(folder)
        cache = os.path.join(folder, 'cache')
        for kind in KINDS[:2] + (None,):   # what the driver keeps, and files in memory
            one_start(display, player if kind else bare, show, watch, cache, kind)
        for _ in range(repeats):
            dialog, window, _ = one_start(display, bare, show, watch, cache)
            add('dialog after the command', 'bare sdl', dialog)
            for kind in KINDS:
                ours, frame, driver = one_start(display, player, show, watch, None if kind.endswith('cold') else cache, kind)
                add('first frame after the button, ' + kind, 'ours', frame)
                add('first frame after the button, ' + kind, 'driver', driver)
                add('first frame after the button, ' + kind, 'bare sdl', window)
            add('dialog after the command', 'ours', ours)
    return times


def as_benchmarks(times):
    """What a benchmark program would print of them."""
    return {'benchmarks': [{'name': '%s/%s/real_time' % name, 'run_name': '%s/%s/real_time' % name, 'run_type': 'iteration',
                            'repetition_index': number, 'cpu_time': 0, 'real_time': seconds * 1e3, 'time_unit': 'ms'}
                           for name, repeats in times.items() for number, seconds in enumerate(repeats)]}


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('--build', required=True)
    parser.add_argument('--quick', action='store_true')
    parser.add_argument('--table', action='store_true')
    options = parser.parse_args()
    times = measure(os.path.abspath(options.build), 3 if options.quick else 20)
    if not options.table:
        print(json.dumps(as_benchmarks(times)))
        return 0
    for (work, who), repeats in sorted(times.items()):
        print('%-44s %-9s %7.1f ms  (%.1f to %.1f)' % (work, who, 1e3 * statistics.median(repeats), 1e3 * min(repeats),
                                                       1e3 * max(repeats)))
    return 0


if __name__ == '__main__':
    sys.exit(main())
