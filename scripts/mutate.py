#!/usr/bin/env python3
"""Changes single lines of the engine at random and says which changes no test notices.

    scripts/mutate.py [--count 300] [--seed 1] [--rooms shell,music,render,model] [--jobs 2]
                      [--scratch DIR] [--report FILE] [--list] [FILE:LINE ...]

Each change is one line: another comparison, operator, number, constant or order, or a
statement left out. It is built in a copy of the tree and met by the tests, the quickest
first, until one fails. A change that does not compile is replaced by another one.

The report has a line per change: killed by which test, or SURVIVED, then the place and both
lines. With FILE:LINE only changes of these lines are tried, all of them. --list prints the
changes without trying them. A survivor is a hole in the tests unless it is equal in effect.

Needs what ./check needs (run that first); a change takes 5 to 90 seconds.
"""
import argparse
import concurrent.futures
import os
import queue
import random
import re
import shutil
import subprocess
import sys
import threading

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
ENGINE = 'src/engine'
BUILD_TIMEOUT = 600
TEST_TIMEOUT = 300

# Test programs that need no display take seconds; those that open windows come behind them.
UNIT_TESTS = ['content', 'anim', 'model', 'texgen', 'effects', 'render', 'music', 'shell', 'record', 'player_calls']
WINDOW_TESTS = ['gl', 'pictures', 'player_stills', 'player_process', 'player_playing', 'player_broken',
                'player_dialog', 'player_display']
TARGETS = {'gl': ['test_gl'], 'pictures': ['brimlow-render', 'first_light'], 'player_calls': ['test_player_calls']}

SWAPS = [
    ('<=', ['<']), ('>=', ['>']), ('==', ['!=']), ('!=', ['==']), ('&&', ['||']), ('||', ['&&']),
    (' < ', [' <= ', ' > ']), (' > ', [' >= ', ' < ']), (' + ', [' - ']), (' - ', [' + ']), (' * ', [' / ']),
    (' / ', [' * ']), (' % ', [' / ']), ('++', ['--']), ('+= ', ['-= ']), ('-= ', ['+= ']), (' ? ', [' || true ? ']),
    ('true', ['false']), ('false', ['true']), ('std::min', ['std::max']),
    ('std::max', ['std::min']), ('break;', [';']),
    (' & ', [' | ']), (' << ', [' >> ']), (' >> ', [' << ']),
]
NAMES = [
    ('GL_LINEAR', 'GL_NEAREST'), ('GL_NEAREST', 'GL_LINEAR'), ('GL_RGB', 'GL_RGBA'), ('GL_RGBA', 'GL_RGB'),
    ('GL_TEXTURE_WRAP_S', 'GL_TEXTURE_WRAP_T'), ('GL_TEXTURE_MIN_FILTER', 'GL_TEXTURE_MAG_FILTER'),
    ('GL_TEXTURE_2D', 'GL_TEXTURE_CUBE_MAP'), ('GL_TEXTURE_CUBE_MAP', 'GL_TEXTURE_2D'), ('glEnable', 'glDisable'),
    ('glDisable', 'glEnable'), ('GL_MODULATE', 'GL_ADD'), ('GL_ADD', 'GL_MODULATE'), ('GL_REPLACE', 'GL_MODULATE'),
    ('GL_SRC_ALPHA', 'GL_ONE'), ('GL_ONE', 'GL_ZERO'), ('GL_PREVIOUS', 'GL_TEXTURE'), ('GL_AMBIENT', 'GL_DIFFUSE'),
    ('GL_DIFFUSE', 'GL_AMBIENT'), ('GL_NICEST', 'GL_FASTEST'), ('GL_FASTEST', 'GL_NICEST'), ('GL_S', 'GL_T'),
    ('GL_LIGHT0', 'GL_LIGHT1'), ('GL_ARRAY_BUFFER', 'GL_ELEMENT_ARRAY_BUFFER'), ('GL_STATIC_DRAW', 'GL_STREAM_DRAW'),
    ('GL_COLOR_BUFFER_BIT', 'GL_DEPTH_BUFFER_BIT'), ('GL_FOG_START', 'GL_FOG_END'), ('x', 'y'), ('width', 'height'),
    ('height', 'width'), ('red', 'green'), ('begin', 'end'), ('offset', 'length'),
]
NUMBER = re.compile(r'(?<![\w.])(\d+\.\d+f?|\d+)(?![\w.])')
STATEMENT = re.compile(r'^\s+(?!return\b|const\b|static\b|auto\b|using\b|case\b|else\b|for\b|if\b)[\w:>.\[\]()*-]+'
                       r'(?:\(.*\)| [-+|&*/]?= .*|\+\+)\s*;$')
DECLARATION = re.compile(r'^\s+[\w:<>]+[&*]? +[&*]?\w+ ?(?:=|\{|;|\()')
SKIPPED = re.compile(r'^\s*(?:#|//|static_assert|assert\(|using |}|{|$|template|extern|\*|public:)')


class Change:
    def __init__(self, path, line, before, after):
        self.path, self.line, self.before, self.after = path, line, before, after
        self.room = path[len(ENGINE) + 1:].split('/')[0]

    def describe(self):
        return '%s:%d\n    - %s\n    + %s' % (self.path, self.line, self.before.strip(), self.after.strip())


def code_spans(text):
    """The parts of a line that are code: neither quoted nor comment."""
    spans, start, quote, i = [], 0, None, 0
    while i < len(text):
        c = text[i]
        if quote:
            if c == '\\':
                i += 1
            elif c == quote:
                quote, start = None, i + 1
        elif c in '"\'' and not (c == "'" and i and text[i - 1].isdigit()):
            spans.append((start, i))
            quote = c
        elif text.startswith('//', i):
            break
        i += 1
    if not quote:
        spans.append((start, i))
    return spans


def other_numbers(number):
    if '.' in number:
        tail = 'f' if number.endswith('f') else ''
        value = float(number.rstrip('f'))
        return ['%r%s' % (value * 1.25 if value else 1.0, tail)]
    value = int(number)
    return [str(value + 1)] + ([str(value - 1)] if value > 1 else [])


def changes_of_line(text):
    """All one-line changes of a line, as new texts."""
    if SKIPPED.match(text):
        return []
    found = []
    for begin, end in code_spans(text):
        part = text[begin:end]
        for old, news in SWAPS:
            at = part.find(old)
            while at >= 0:
                found += [text[:begin + at] + new + text[begin + at + len(old):] for new in news]
                at = part.find(old, at + len(old))
        for old, new in NAMES:
            found += [text[:begin + m.start()] + new + text[begin + m.end():]
                      for m in re.finditer(r'(?<![\w.:>])%s(?!\w)' % old if len(old) > 1 else r'\b%s\b' % old, part)]
        found += [text[:begin + m.start()] + text[begin + m.end():] for m in re.finditer(r'(?<=[ (])!(?!=)', part)]
        for m in NUMBER.finditer(part):
            found += [text[:begin + m.start()] + new + text[begin + m.end():] for new in other_numbers(m.group(1))]
    if STATEMENT.match(text) and not DECLARATION.match(text):
        found.append(re.match(r'\s*', text).group() + ';')
    return sorted(set(new for new in found if new != text))


def all_changes(rooms):
    changes = []
    for room in rooms:
        folder = os.path.join(ROOT, ENGINE, room)
        for name in sorted(os.listdir(folder)):
            if not name.endswith(('.cpp', '.h')):
                continue
            path = '%s/%s/%s' % (ENGINE, room, name)
            with open(os.path.join(ROOT, path), encoding='utf-8') as f:
                for number, text in enumerate(f.read().split('\n'), 1):
                    changes += [Change(path, number, text, new) for new in changes_of_line(text)]
    return changes


def draw_in_turn(changes, rooms, seed):
    """Endless random choice: the rooms in turn, within a room every line alike, no line twice."""
    dice = random.Random(seed)
    lines = {room: {} for room in rooms}
    for change in changes:
        lines[change.room].setdefault((change.path, change.line), []).append(change)
    orders = {room: dice.sample(sorted(lines[room]), len(lines[room])) for room in rooms}
    while any(orders.values()):
        for room in rooms:
            if orders[room]:
                yield dice.choice(lines[room][orders[room].pop()])


class Workshop:
    """A copy of the tree with a build of its own."""

    def __init__(self, folder):
        self.tree, self.build = os.path.join(folder, 'tree'), os.path.join(folder, 'build')
        files = subprocess.run(['git', '-C', ROOT, 'ls-files', '-z', '-co', '--exclude-standard'], check=True,
                               stdout=subprocess.PIPE).stdout.decode().split('\0')
        self.forget_all_but(set(files))
        for name in filter(None, files):
            source, target = os.path.join(ROOT, name), os.path.join(self.tree, name)
            os.makedirs(os.path.dirname(target), exist_ok=True)
            if not os.path.exists(target) or open(source, 'rb').read() != open(target, 'rb').read():
                shutil.copyfile(source, target)
        self.call(['cmake', '-S', self.tree, '-B', self.build, '-G', 'Ninja', '-D', 'CMAKE_BUILD_TYPE=Release', '-D',
                   'CMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG', '-D', 'CMAKE_CXX_FLAGS=-Wno-error -w'], BUILD_TIMEOUT)
        self.tests = self.known_tests()
        if self.call(['ninja', '-C', self.build], 3600) != 0:
            raise SystemExit('the tree does not build in %s' % folder)

    def forget_all_but(self, files):
        """Takes away what an earlier run copied and the tree no longer has."""
        for folder, _, names in os.walk(self.tree):
            for name in names:
                path = os.path.join(folder, name)
                if os.path.relpath(path, self.tree) not in files:
                    os.unlink(path)

    @staticmethod
    def call(command, timeout):
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   stdin=subprocess.DEVNULL, start_new_session=True)
        try:
            return process.wait(timeout)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, 9)
            process.wait()
            return None

    def known_tests(self):
        listing = subprocess.run(['ctest', '--test-dir', self.build, '-N'], stdout=subprocess.PIPE).stdout.decode()
        return re.findall(r'Test +#\d+: (\S+)', listing)

    def stages(self, room):
        """Lists of tests: one by one the quick ones, then together those that mostly wait in windows."""
        first = [t for t in (room, 'record', 'player_calls') if t in self.tests]
        units = [t for t in self.tests if t in UNIT_TESTS and t not in first]
        return [[t] for t in first + units] + [[t for t in WINDOW_TESTS if t in self.tests]]

    def failing(self, tests):
        """The first of the tests that fails or does not end; '' when all pass."""
        status = self.call(['ctest', '--test-dir', self.build, '-j', '4', '--stop-on-failure', '-R',
                            '^(%s)$' % '|'.join(tests)], TEST_TIMEOUT)
        if status == 0:
            return ''
        try:
            with open(os.path.join(self.build, 'Testing', 'Temporary', 'LastTestsFailed.log')) as f:
                return f.readline().strip().partition(':')[2] or '/'.join(tests)
        except OSError:
            return '/'.join(tests)

    def targets_of(self, test):
        if test in TARGETS:
            return TARGETS[test]
        return ['brimlow'] if test.startswith('player_') else ['test_' + test]

    def write(self, change, text):
        path = os.path.join(self.tree, change.path)
        with open(path, encoding='utf-8') as f:
            lines = f.read().split('\n')
        lines[change.line - 1] = text
        with open(path, 'w', encoding='utf-8') as f:
            f.write('\n'.join(lines))

    def attempt(self, change):
        """The name of the test that noticed; "" when none did; None when it does not build."""
        self.write(change, change.after)
        try:
            for tests in self.stages(change.room):
                targets = sorted(set(target for test in tests for target in self.targets_of(test)))
                if self.call(['ninja', '-C', self.build] + targets, BUILD_TIMEOUT) != 0:
                    return None
                failed = self.failing(tests)
                if failed:
                    return failed
            return ''
        finally:
            self.write(change, change.before)


class Campaign:
    def __init__(self, options, source):
        self.options, self.source, self.lock = options, source, threading.Lock()
        self.survivors, self.killed, self.unbuildable = [], 0, 0
        self.workshops = queue.Queue()

    def tried(self):
        return self.killed + len(self.survivors)

    def record(self, change, result, report):
        with self.lock:
            if result is None:
                self.unbuildable += 1
                return
            if result:
                self.killed += 1
            else:
                self.survivors.append(change)
            report.write('%s %s\n' % ('killed by %s:' % result if result else 'SURVIVED', change.describe()))
            report.flush()
            print('%d tried, %d survived' % (self.tried(), len(self.survivors)), flush=True)

    def worker(self, report):
        workshop = self.workshops.get()
        while True:
            with self.lock:
                change = next(self.source, None) if self.tried() < self.options.count else None
            if change is None:
                return
            self.record(change, workshop.attempt(change), report)


def chosen_places(changes, places):
    wanted = set()
    for place in places:
        path, _, line = place.rpartition(':')
        wanted.add((path, int(line)))
    return [c for c in changes if (c.path, c.line) in wanted]


def parse():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('--count', type=int, default=300)
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--rooms', default='shell,music,render,model')
    parser.add_argument('--jobs', type=int, default=2)
    parser.add_argument('--scratch', default=os.path.join(ROOT, 'build', 'mutate'))
    parser.add_argument('--report', help='report.txt in the scratch folder')
    parser.add_argument('--list', action='store_true')
    parser.add_argument('places', nargs='*', metavar='FILE:LINE')
    return parser.parse_args()


def main():
    options = parse()
    rooms = options.rooms.split(',')
    changes = all_changes(rooms)
    if options.places:
        changes = chosen_places(changes, options.places)
        source, options.count = iter(changes), len(changes)
    else:
        source = draw_in_turn(changes, rooms, options.seed)
    if options.list:
        for _, change in zip(range(options.count), source):
            print(change.describe())
        return 0
    os.makedirs(options.scratch, exist_ok=True)
    options.report = options.report or os.path.join(options.scratch, 'report.txt')
    campaign = Campaign(options, source)
    for number in range(options.jobs):
        workshop = Workshop(os.path.join(options.scratch, 'workshop-%d' % (number + 1)))
        failing = [name for name in map(workshop.failing, workshop.stages(rooms[0])) if name]
        if failing:
            raise SystemExit('without any change these tests fail: %s' % ' '.join(failing))
        campaign.workshops.put(workshop)
    with open(options.report, 'w', encoding='utf-8') as report, \
            concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for done in [pool.submit(campaign.worker, report) for _ in range(options.jobs)]:
            done.result()
        report.write('%d changes, %d killed, %d survived (%d more did not build)\n' % (
            campaign.tried(), campaign.killed, len(campaign.survivors), campaign.unbuildable))
    for change in campaign.survivors:
        print('SURVIVED ' + change.describe())
    return 1 if campaign.survivors else 0


if __name__ == '__main__':
    sys.exit(main())
