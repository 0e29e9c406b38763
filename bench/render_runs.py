#!/usr/bin/env python3
"""Whole runs of brimlow-render: what they take, and how busy they keep the processors.

    render_runs.py BRIMLOW-RENDER PACK [--repeats 5] [--from 10] [--to 18] [--size 640x360] [--fps 30] [--only WORDS]
                   [--beside ANOTHER-BRIMLOW-RENDER]

Renders a part of a show to everything that comes out, and in one to four processes that share the software rasteriser's
threads in different ways. Repetitions take turns. Printed are medians: the time that passed, the processors' time (ours
and that of encoders), how many processors were busy, and the best of the times that passed, which says most where the
machine has other work.
"""
import argparse
import os
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

OUTPUTS = {'drawing alone': '-', 'pictures': '%05d.png', 'pictures, level 6': '%05d.png', '.mkv': 'a.mkv',
           '.mp4': 'a.mp4'}
PROCESSES = {'%d of %s threads' % (count, threads or 'all'): (count, threads)
             for count, threads in ((1, ''), (1, '0'), (1, '1'), (1, '2'), (2, ''), (2, '0'), (2, '1'), (4, '0'))}


def command_lines(given, work, folder, program):
    """One for each process."""
    count, _ = PROCESSES.get(work, (1, ''))
    span = (given.end - given.begin) / count
    for part in range(count):
        words = [program, '-qy', '--size', given.size, '--fps', given.fps, '-o',
                 OUTPUTS.get(work, '%05d.png'), '--from', '%.3f' % (given.begin + part * span),
                 '--to', '%.3f' % (given.begin + (part + 1) * span)]
        if 'level 6' in work:
            words += ['--png-level', '6']
        yield words if words[7] == '-' else words[:7] + [os.path.join(folder, words[7])] + words[8:]


def processor_seconds():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def run(given, work, program):
    """Seconds that passed, and those of the processors."""
    environment = dict(os.environ, LIBGL_ALWAYS_SOFTWARE='1')
    environment.pop('LP_NUM_THREADS', None)
    if PROCESSES.get(work, (1, ''))[1]:
        environment['LP_NUM_THREADS'] = PROCESSES[work][1]
    folder = tempfile.mkdtemp(prefix='render_runs_')
    before, begin = processor_seconds(), time.monotonic()
    running = [subprocess.Popen(words + [given.pack], env=environment, stdout=subprocess.DEVNULL)
               for words in command_lines(given, work, folder, program)]
    if any([process.wait() for process in running]):
        sys.exit('"%s" failed' % work)
    passed = time.monotonic() - begin
    shutil.rmtree(folder)
    return passed, processor_seconds() - before


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument('program')
    parser.add_argument('pack')
    parser.add_argument('--repeats', type=int, default=5)
    parser.add_argument('--from', dest='begin', type=float, default=10)
    parser.add_argument('--to', dest='end', type=float, default=18)
    parser.add_argument('--size', default='640x360')
    parser.add_argument('--fps', default='30')
    parser.add_argument('--only', default='')
    parser.add_argument('--beside')
    given = parser.parse_args()
    programs = {'': given.program, **({', beside': given.beside} if given.beside else {})}
    works = [(work, name) for work in [*OUTPUTS, *PROCESSES] if given.only in work
             for name in programs if not (name and 'level' in work)]
    for program in programs.values():
        if not os.access(program, os.X_OK):
            parser.error('%s is no program: "ninja -C build/native brimlow-render" makes one' % program)
    if not works:
        parser.error('no work has "%s" in its name; there are: %s' % (given.only, '; '.join([*OUTPUTS, *PROCESSES])))
    times = {key: [] for key in works}
    for _ in range(given.repeats):
        for key in works:
            times[key].append(run(given, key[0], programs[key[1]]))
    print('%-32s %8s %8s %6s %8s' % ('', 'passed s', 'used s', 'busy', 'best s'))
    for (work, name), pairs in times.items():
        passed, used = (statistics.median(pair[i] for pair in pairs) for i in (0, 1))
        print('%-32s %8.2f %8.2f %6.2f %8.2f' % (work + name, passed, used, used / passed, min(p for p, _ in pairs)))


if __name__ == '__main__':
    main()
