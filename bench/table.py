#!/usr/bin/env python3
"""Ours beside others', as a table: runs the benchmarks that rows ask for and prints their ratios.

    table.py --build FOLDER [SUBJECT ...] [--quick] [--write]      bench/run calls it so, with everything built
    table.py --results FOLDER [SUBJECT ...] [--write]              the same from times that a run has kept
    table.py --look [SUBJECT ...] [--quick] [--write]              nothing, but says what is wrong with the words

A subject is a file of bench/rows. Its lines:

    # a remark
    ! NAME=VALUE            in the environment of its programs
    ! program bench_other   measures with this program instead of bench_SUBJECT and bench_SUBJECT_gl
    ! script NAME.py ...    measures with a script of this folder, too, which prints what a benchmark program prints
    WORK | beside WHO | at most this ratio | the ratio before      "-" where there is none

WORK/ours and WORK/WHO are the two benchmarks of a row. Its ratio is that of the medians of their repetitions; behind it
stand the smallest and the largest ratio of two repetitions that ran beside each other, which say how far to trust it.
A goal that is missed is no error. A row whose benchmarks are not there, or a program that fails, makes the status 1.
"""
import argparse
import collections
import datetime
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
PAGE = os.path.join(ROOT, 'docs', 'performance.md')
UNITS = (('ns', 1.0), ('µs', 1e3), ('ms', 1e6), ('s', 1e9))
NANOSECONDS = {'ns': 1.0, 'us': 1e3, 'ms': 1e6, 's': 1e9}
SUFFIX = re.compile(r'/(real_time|process_time|manual_time|repeats:\d+|iterations:\d+|min_time:[\d.]+s?|threads:\d+)$')
NO_NUMBER = re.compile(r': -NaN\b')   # of counters: the programs write what no JSON has

Row = collections.namedtuple('Row', 'work who goal before')                           # numbers, or None
Subject = collections.namedtuple('Subject', 'name rows environment programs scripts')
Result = collections.namedtuple('Result', 'row ours theirs ratio lowest highest')     # times in nanoseconds


# ---- rows ---------------------------------------------------------------------------------------

def number_or_none(cell):
    return None if cell == '-' else float(cell)


def read_subject(name, text):
    """A subject from its file; ValueError says which line is wrong."""
    subject = Subject(name, [], {}, [], [])
    for number, line in enumerate(text.splitlines(), 1):
        where = 'bench/rows/%s.txt, line %d: ' % (name, number)
        line = line.strip()
        if line.startswith('!'):
            read_order(subject, line[1:].strip(), where)
        elif line and not line.startswith('#'):
            cells = [cell.strip() for cell in line.split('|')]
            if len(cells) != 4 or not cells[0] or not cells[1]:
                raise ValueError(where + 'a row is "WORK | beside WHO | at most this ratio | the ratio before"')
            try:
                subject.rows.append(Row(cells[0], cells[1], number_or_none(cells[2]), number_or_none(cells[3])))
            except ValueError:
                raise ValueError(where + 'the goal and the ratio before are numbers, or "-"') from None
    return subject


def read_order(subject, order, where):
    word, _, rest = order.partition(' ')
    if word == 'program' and rest:
        subject.programs.append(rest.strip())
    elif word == 'script' and rest:
        subject.scripts.append(rest.split())
    elif re.fullmatch(r'\w+=.*', order):
        name, _, value = order.partition('=')
        subject.environment[name] = value
    else:
        raise ValueError(where + 'behind "!" stands NAME=VALUE, "program NAME" or "script NAME.py"')


def read_subjects(folder, names):
    """Those of these names, all where there are none; ValueError: one is not there, or has a wrong line."""
    known = sorted(name[:-4] for name in os.listdir(folder) if name.endswith('.txt'))
    for name in names:
        if name not in known:
            raise ValueError('there is no subject "%s"; there are: %s' % (name, ', '.join(known)))
    subjects = []
    for name in known:
        if not names or name in names:
            with open(os.path.join(folder, name + '.txt'), encoding='utf-8') as file:
                subjects.append(read_subject(name, file.read()))
    return subjects


# ---- times --------------------------------------------------------------------------------------

def times_of(results):
    """(work, who) -> the nanoseconds of its repetitions in their order, of what benchmark programs printed.

    CPU time, but where a benchmark measures the time that passes.
    """
    found = {}
    for run in results.get('benchmarks', []):
        if run.get('run_type', 'iteration') != 'iteration' or run.get('error_occurred'):
            continue
        name, passing = run.get('run_name', run['name']), False
        while SUFFIX.search(name):
            passing = passing or SUFFIX.search(name).group(1) in ('real_time', 'manual_time')
            name = SUFFIX.sub('', name)
        work, _, who = name.rpartition('/')
        time = run['real_time' if passing else 'cpu_time'] * NANOSECONDS[run.get('time_unit', 'ns')]
        repetitions = found.setdefault((work, who), {})
        repetitions[run.get('repetition_index', len(repetitions))] = time
    return {name: [time for _, time in sorted(times.items())] for name, times in found.items()}


def result_of(row, times):
    """None: one of the two was not measured."""
    ours, theirs = times.get((row.work, 'ours')), times.get((row.work, row.who))
    if not ours or not theirs:
        return None
    beside = [a / b for a, b in zip(ours, theirs)]
    middle, reference = statistics.median(ours), statistics.median(theirs)
    return Result(row, middle, reference, middle / reference, min(beside), max(beside))


# ---- the table ----------------------------------------------------------------------------------

def number(value):
    """With two digits behind the point, fewer where it is large."""
    return '%.2f' % value if value < 9.995 else '%.1f' % value if value < 99.95 else '%.0f' % value


def as_time(nanoseconds):
    name, size = next(((n, s) for n, s in reversed(UNITS) if nanoseconds >= s), UNITS[0])
    return number(nanoseconds / size) + ' ' + name


def verdict(result):
    """By the ratio as it is printed: 1.004 is 1.00."""
    if result.row.goal is None:
        return '-'
    return 'met' if float(number(result.ratio)) <= result.row.goal else 'missed'


HEADINGS = ('work', 'ours', 'beside', 'theirs', 'ratio', '(neighbours)', 'goal', 'is', 'before')


def cells_of(result):
    row = result.row
    return (row.work, as_time(result.ours), row.who, as_time(result.theirs), number(result.ratio),
            '(%s to %s)' % (number(result.lowest), number(result.highest)),
            '-' if row.goal is None else '%g' % row.goal, verdict(result),
            '-' if row.before is None else '%g' % row.before)


def plain_table(results):
    """For a terminal: columns of one width, numbers to the right."""
    lines = [HEADINGS] + [cells_of(result) for result in results]
    widths = [max(len(line[column]) for line in lines) for column in range(len(HEADINGS))]
    to_the_right = (1, 3, 4, 6, 8)
    return '\n'.join('  '.join(cell.rjust(width) if column in to_the_right else cell.ljust(width)
                               for column, (cell, width) in enumerate(zip(line, widths))).rstrip() for line in lines)


def page_table(results):
    """For the page: what the neighbours say stands with the ratio; a missed goal is bold."""
    lines = ['| work | ours | beside | theirs | ratio (neighbours) | goal | | before |',
             '|---|--:|---|--:|--:|--:|---|--:|']
    for result in results:
        work, ours, who, theirs, ratio, beside, goal, said, before = cells_of(result)
        said = {'missed': '**missed**', '-': ''}.get(said, said)
        lines.append('| %s |' % ' | '.join((work, ours, who, theirs, ratio + ' ' + beside, goal, said, before)))
    return '\n'.join(lines)


# ---- the page -----------------------------------------------------------------------------------

def between(page, name, text):
    """The page with `text` between its two marks of this name; None: it has none."""
    marks = re.compile(r'(<!-- bench: %s -->\n).*?(<!-- bench end -->)' % re.escape(name), re.S)
    return marks.sub(lambda m: m.group(1) + text + '\n' + m.group(2), page, count=1) if marks.search(page) else None


def first_match(pattern, text, otherwise):
    found = re.search(pattern, text, re.M)
    return found.group(1).strip() if found else otherwise


def machine(today):
    """A line on what was measured with."""
    with open('/proc/cpuinfo', encoding='utf-8') as file:
        processor = file.read()
    known = first_match(r'^flags\s*:(.*)', processor, '').split()
    held = os.environ.get('BRIMLOW_INSTRUCTIONS')
    best = held if held in ('plain', 'sse2') else 'AVX2' if 'avx2' in known else 'SSE2' if 'sse2' in known else 'none'
    compiler = subprocess.run(['c++', '--version'], stdout=subprocess.PIPE, check=False).stdout.decode()
    return 'Measured on %s: %s, %d cores, vectors by %s; %s.' % (
        today, first_match(r'^model name\s*:(.*)', processor, 'an unknown processor'), os.cpu_count() or 1, best,
        first_match(r'^(.*)$', compiler, 'an unknown compiler'))


def write_page(path, tables, today):
    """Puts the tables and the machine where the page has room for them; what it lacks room for."""
    with open(path, encoding='utf-8') as file:
        page = file.read()
    lacking = []
    for name, text in [('machine', machine(today))] + tables:
        changed = between(page, name, text)
        if changed is None:
            lacking.append('%s has no place for "%s": "<!-- bench: %s -->" and, on a line below, "<!-- bench end -->"'
                           % (os.path.relpath(path, ROOT), name, name))
        page = changed or page
    with open(path, 'w', encoding='utf-8') as file:
        file.write(page)
    return lacking


# ---- measuring ----------------------------------------------------------------------------------

def only(rows):
    """The filter that runs what these rows need."""
    works = sorted({re.sub(r'([.^$*+?()\[\]{}|\\])', r'\\\1', row.work) for row in rows})
    return '^(%s)/' % '|'.join(works)


def programs_of(subject, build):
    """Paths of what measures a subject; missing ones are told when they cannot be started."""
    folder = os.path.join(build, 'bench')
    if subject.programs:
        return [os.path.join(folder, name) for name in subject.programs]
    usual = [os.path.join(folder, 'bench_' + subject.name + kind) for kind in ('', '_gl')]
    there = [path for path in usual if os.path.exists(path)]
    return there if there or subject.scripts else usual[:1]


def commands_of(subject, build, quick):
    options = ['--benchmark_filter=' + only(subject.rows), '--benchmark_out_format=json',
               '--benchmark_enable_random_interleaving=true', '--benchmark_repetitions=%d' % (3 if quick else 9)]
    options += ['--benchmark_min_time=0.05'] if quick else []
    commands = [[path] + options for path in programs_of(subject, build)]
    scripts = [[sys.executable, os.path.join(HERE, name), *arguments, '--build', build] + (['--quick'] if quick else [])
               for name, *arguments in subject.scripts]
    return commands + scripts


def run_one(command, environment):
    """(what it measured as a dictionary, what was wrong); one of them is empty.

    Programs write their times into a file, since the engine prints lines of its own; scripts print them."""
    name = next(os.path.basename(part) for part in command if part != sys.executable)
    with tempfile.TemporaryDirectory() as folder:
        times = os.path.join(folder, 'times.json')
        more = [] if command[0] == sys.executable else ['--benchmark_out=' + times]
        try:
            done = subprocess.run(command + more, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        except OSError as error:
            return {}, '%s cannot be started: %s' % (name, error.strerror)
        text = done.stdout.decode('utf-8', 'replace')
        if more:
            text = read_if_there(times)
    return results_from(name, text, done)


def read_if_there(path):
    try:
        with open(path, encoding='utf-8', errors='replace') as file:
            return file.read()
    except OSError:
        return ''


def results_from(name, text, done):
    """The same pair, of the text of its times and of a program that has ended."""
    said = done.stderr.decode('utf-8', 'replace').strip().splitlines()
    try:
        results = json.loads(NO_NUMBER.sub(': 0', text) or '{}')
    except ValueError:
        return {}, '%s printed no times: %s' % (name, said[-1] if said else 'status %d' % done.returncode)
    failed = [run.get('name', '') + ': ' + run.get('error_message', '') for run in results.get('benchmarks', [])
              if run.get('error_occurred')]
    if done.returncode != 0 or failed:
        return results, '%s: %s' % (name, failed[0] if failed else 'status %d. %s' % (done.returncode, ' '.join(said[-1:])))
    return results, ''


def measure(subject, build, quick):
    """Runs what a subject needs; (all that its programs printed as one dictionary, what was wrong)."""
    environment = dict(os.environ, EGL_PLATFORM='surfaceless')
    environment.update(subject.environment)
    together, wrong = {'benchmarks': []}, []
    for command in commands_of(subject, build, quick):
        results, problem = run_one(command, environment)
        together['benchmarks'] += results.get('benchmarks', [])
        wrong += [problem] if problem else []
    return together, wrong


def kept(subject, folder):
    """What a run before has kept of a subject; the same pair."""
    try:
        with open(os.path.join(folder, subject.name + '.json'), encoding='utf-8') as file:
            return json.load(file), []
    except (OSError, ValueError) as error:
        return {}, ['%s: %s' % (subject.name, error)]


def keep(subject, folder, results):
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, subject.name + '.json'), 'w', encoding='utf-8') as file:
        json.dump(results, file)


def times_from(subject, options):
    """Measured now and kept, or measured before; the same pair."""
    if options.results:
        return kept(subject, options.results)
    measured, problems = measure(subject, options.build, options.quick)
    keep(subject, os.path.join(options.build, 'bench', 'results'), measured)
    return measured, problems


def results_of(subject, times):
    """(results of the rows, a line for each that was not measured)."""
    pairs = [(row, result_of(row, times)) for row in subject.rows]
    missing = ['bench/rows/%s.txt: nobody measured %s' % (subject.name, ' and '.join(
        '"%s/%s"' % (row.work, who) for who in ('ours', row.who) if not times.get((row.work, who))))
               for row, result in pairs if result is None]
    return [result for _, result in pairs if result], missing


def closing_line(results):
    said = [verdict(result) for result in results]
    return '%d rows: %d goals met, %d missed, %d without a goal.' % (
        len(said), said.count('met'), said.count('missed'), said.count('-'))


# ---- the command line ---------------------------------------------------------------------------

def read_arguments():
    parser = argparse.ArgumentParser(prog='bench/run', usage='%(prog)s [SUBJECT ...] [--quick] [--write]',
                                     description='Measures our work beside that of others and prints a table.')
    parser.add_argument('subjects', nargs='*', metavar='SUBJECT', help='files of bench/rows; without any all of them')
    parser.add_argument('--quick', action='store_true', help='three short repetitions: whether all runs, not how fast')
    parser.add_argument('--write', action='store_true', help='put the tables into docs/performance.md')
    way = parser.add_mutually_exclusive_group(required=True)
    way.add_argument('--build', help=argparse.SUPPRESS)
    way.add_argument('--results', help=argparse.SUPPRESS)
    way.add_argument('--look', action='store_true', help=argparse.SUPPRESS)
    parser.add_argument('--rows', default=os.path.join(HERE, 'rows'), help=argparse.SUPPRESS)
    parser.add_argument('--page', default=PAGE, help=argparse.SUPPRESS)
    parser.add_argument('--today', default=datetime.date.today().isoformat(), help=argparse.SUPPRESS)
    return parser.parse_args()


def main():
    options = read_arguments()
    try:
        subjects = read_subjects(options.rows, options.subjects)
    except ValueError as error:
        sys.stderr.write('Sorry: %s.\n' % error)
        return 2
    if options.look:
        return 0
    wrong, tables, everything = [], [], []
    for subject in subjects:
        measured, problems = times_from(subject, options)
        results, missing = results_of(subject, times_of(measured))
        wrong += problems + missing
        everything += results
        tables.append((subject.name, page_table(results)))
        print('%s\n%s\n' % (subject.name, plain_table(results)), flush=True)
    wrong += write_page(options.page, tables, options.today) if options.write else []
    print(closing_line(everything))
    for line in wrong:
        sys.stderr.write('Sorry: %s.\n' % line)
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
