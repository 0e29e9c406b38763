#!/usr/bin/env python3
"""Makes mistakes and reads what is said of them: test_mistakes.py PROGRAM [-v] [TITLE ...].

The tables are the texts beside this file: shows_*.txt are sources, packs.txt are documents. A row is

    == what somebody does wrong
    its lines, which stand in base.lua instead of the line "-- here stands the row"
    -> 2 error: there is no "mesch" ... did you mean "mesh"

"->" tells one line of `brimlow-make check`: where (a line of the row; "base 8": of base.lua; "colors.lua:3": of
another file; "-": nowhere), what, and texts that stand in it in this order. A row tells all lines that there are,
so that nothing is said twice, or beside the point. In front of the row's lines may stand

    @ whole            the row is the whole of show.lua, without base.lua
    @ file colors.lua  from here on the lines are those of this file; "@ file" alone goes back to the row
    @ change A => B    of packs: in the document, A, which stands there once, becomes B

With titles, or parts of them, only those rows are tried; -v prints what the program said.
"""
import concurrent.futures
import os
import re
import resource
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, '..', '..', 'support'))
sys.dont_write_bytecode = True
from packs import in_envelope, mesh_bytes, pack_bytes, png  # noqa: E402

FEWEST_ROWS = 170
MOST_SECONDS = 30  # of all processors together, so that other work beside does not count
PLACE = '-- here stands the row'
FONTS = {'letters.ttf': '/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf',
         'signs.otf': '/usr/share/fonts/opentype/urw-base35/StandardSymbolsPS.otf'}
SONG = os.path.join(HERE, '..', '..', '..', 'productions', 'first-light', 'first-light.ogg')


# ---- the tables -------------------------------------------------------------------------------------

class Row:
    def __init__(self, title, table, line):
        self.title, self.table, self.line = title, table, line
        self.whole, self.text, self.files, self.changes, self.expected = False, [], {}, [], []


def rows_of(name):
    rows, target = [], None
    with open(os.path.join(HERE, name), encoding='utf-8') as file:
        for number, line in enumerate(file.read().split('\n'), 1):
            if line.startswith('== '):
                rows.append(Row(line[3:], name, number))
                target = rows[-1].text
            elif not rows:
                continue
            elif line == '@ whole':
                rows[-1].whole = True
            elif line.startswith('@ file'):
                target = rows[-1].files.setdefault(line[7:], []) if line[7:] else rows[-1].text
            elif line.startswith('@ change '):
                rows[-1].changes.append((line[9:] + ' ').split(' => '))
            elif line.startswith('-> '):
                place, severity, texts = re.fullmatch(r'-> (.*?):? ?([Ee]rror|warning|note): (.*)', line).groups()
                rows[-1].expected.append((place, severity, texts.split(' ... ')))
            elif not (line == '' and rows[-1].expected):
                target.append(line)
    return rows


# ---- what lies in a show's folder -----------------------------------------------------------------

BALL = '\n'.join(['v 0 1 0', 'v 1 0 0', 'v 0 0 1', 'v -1 0 0', 'v 0 0 -1', 'v 0 -1 0', 'vt 0 0', 'vt 1 0', 'vt 0 1',
                  'o left', *('f %d/1 %d/2 %d/3' % f for f in ((1, 3, 2), (1, 2, 5), (1, 5, 4), (1, 4, 3))),
                  'o right', *('f %d/1 %d/2 %d/3' % f for f in ((6, 2, 3), (6, 5, 2), (6, 4, 5), (6, 3, 4)))]) + '\n'
JPEG = b'\xff\xd8\xff\xe0\x00\x10JFIF\0\1\1\0\0\1\0\1\0\0' + bytes(range(256)) * 4


def small_files():
    with open(os.path.join(HERE, '..', '..', 'player', 'tone.ogg'), 'rb') as file:
        tone = file.read()
    files = {'ball.obj': BALL.encode(), 'skin.png': png(16, 16), 'odd.png': png(20, 16), 'half.png': png(8, 8),
             'quarter.png': png(4, 4), 'tone.ogg': tone, 'song.mp3': b'ID3\4\0\0\0\0\0\0' + b'\xff\xfb\x90\0' * 500,
             'photo.obj': JPEG, 'torn.jpg': JPEG, 'notes.txt': b'A text.\n', 'empty.png': b'', 'empty.obj': b'',
             'points.obj': b'v 0 0 0\nv 1 0 0\nv 0 1 0\n', 'torn.png': png(16, 16)[:60], 'wide.png': png(4096, 2)}
    for face in ('xp', 'xn', 'yp', 'yn', 'zp', 'zn'):
        files['sky_%s.png' % face] = png(16, 16)
        if face != 'zn':
            files['hill_%s.png' % face] = png(16, 16)
        files['lake_%s.png' % face] = png(16 if face != 'yn' else 8, 16 if face != 'yn' else 8)
    return files


def write(path, content):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'wb') as file:
        file.write(content)


def make_show(row, folder, base, files):
    source = row.text if row.whole else base[:base.index(PLACE)] + row.text + base[base.index(PLACE) + 1:]
    text = '\n'.join(source) + '\n'
    for name, content in files.items():
        write(os.path.join(folder, name), content)
    for name, large in {**FONTS, 'long.ogg': SONG}.items():
        if name in text:
            shutil.copyfile(large, os.path.join(folder, name))
    for name, lines in row.files.items():
        write(os.path.join(folder, name), '\n'.join(lines).encode() + b'\n')
    write(os.path.join(folder, 'show.lua'), text.encode('utf-8', 'surrogateescape'))
    return 'show.lua'


def place_in_show(place, row, base):
    first = 0 if row.whole else base.index(PLACE)
    if place == '-':
        return 'show.lua:'
    if place.startswith('base '):
        number = int(place[5:])
        return 'show.lua:%d:' % (number if number <= first else number + len(row.text) - 1)
    return 'show.lua:%d:' % (int(place) + first) if place.isdigit() else place + ':'


# ---- packs ------------------------------------------------------------------------------------------

def base_entries():
    square = mesh_bytes([(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0)], [(0, 0), (1, 0), (1, 1), (0, 1)],
                        [0, 1, 2, 0, 2, 3])
    with open(os.path.join(HERE, 'base.xml'), encoding='utf-8') as file:
        return {'demo.xmlz': file.read(), 'square.mesh': in_envelope(square), 'skin.png': png(16, 16)}


def make_pack(row, folder, base, _):
    """The document with the row's changes; its lines are Python, which may change `document`, `entries` or `pack`."""
    entries = base_entries()
    document = entries['demo.xmlz']
    for old, new in row.changes:
        assert document.count(old) == 1, (row.title, old, document.count(old))
        document = document.replace(old, new.rstrip())
    entries['demo.xmlz'] = in_envelope(document.encode())
    names = {'document': document, 'entries': entries, 'in_envelope': in_envelope, 'png': png,
             'mesh_bytes': mesh_bytes, 'pack_bytes': pack_bytes}
    exec('\n'.join(row.text), names)  # our own table
    if names['document'] != document:
        entries['demo.xmlz'] = in_envelope(names['document'].encode())
    write(os.path.join(folder, 'demo.dpk'), names.get('pack') or pack_bytes(names['entries']))
    return 'demo.dpk'


# ---- trying -------------------------------------------------------------------------------------------

def holds(text, parts):
    at = 0
    for part in parts:
        at = text.find(part, at)
        if at < 0:
            return False
        at += len(part)
    return True


def differences(row, lines, status, base):
    is_pack = row.table == 'packs.txt'
    wrong = []
    rest = list(lines)
    for place, severity, parts in row.expected:
        where = (place + ': ' if is_pack and place != '-' else '' if is_pack
                 else place_in_show(place, row, base) + ' ') + severity + ': '
        found = next((line for line in rest if line.startswith(where) and holds(line[len(where):], parts)), None)
        if found is None:
            wrong.append('missing: %s%s' % (where, ' ... '.join(parts)))
        else:
            rest.remove(found)
    wrong += ['said:    ' + line for line in rest]
    if status != (1 if any(severity in ('error', 'Error') for _, severity, _ in row.expected) else 0):
        wrong.append('the exit status is %d' % status)
    return wrong


def try_row(row, program, base, files):
    with tempfile.TemporaryDirectory(prefix='test_mistakes_') as folder:
        make = make_pack if row.table == 'packs.txt' else make_show
        name = make(row, folder, base, files)
        result = subprocess.run([program, 'check', name], cwd=folder, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, timeout=60)
    lines = [line for line in result.stdout.decode('utf-8', 'replace').split('\n') if line]
    if lines and re.fullmatch(r'(\d+ (error|warning|note)s?(, )?)+|no problems', lines[-1]):
        lines.pop()
    return lines, differences(row, lines, result.returncode, base)


def main():
    program, wanted = os.path.abspath(sys.argv[1]), [a for a in sys.argv[2:] if a != '-v']
    loud = '-v' in sys.argv[2:]
    tables = sorted(name for name in os.listdir(HERE) if name.endswith('.txt'))
    rows = [row for name in tables for row in rows_of(name)]
    titles = [row.title for row in rows]
    bad = len(rows) < FEWEST_ROWS
    if bad:
        print('The tables have %d rows, and should have %d.' % (len(rows), FEWEST_ROWS))
    for title in sorted(set(title for title in titles if titles.count(title) > 1)):
        bad = True
        print('Two rows are called "%s".' % title)
    rows = [row for row in rows if not wanted or any(part in row.table + ' ' + row.title for part in wanted)]
    with open(os.path.join(HERE, 'base.lua'), encoding='utf-8') as file:
        base = file.read().rstrip('\n').split('\n')
    files = small_files()
    with concurrent.futures.ThreadPoolExecutor(max(2, os.cpu_count() or 2)) as pool:
        results = list(pool.map(lambda row: try_row(row, program, base, files), rows))
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    took = used.ru_utime + used.ru_stime
    wrong_rows = 0
    for row, (lines, wrong) in zip(rows, results):
        wrong_rows += bool(wrong)
        if loud or wrong:
            print('%s:%d: %s%s' % (row.table, row.line, row.title, '' if wrong else ': as it should be'))
        for line in lines if loud else []:
            print('    | ' + line)
        for line in wrong:
            print('    ' + line)
    print('%d mistakes, %d told wrongly, %.1f s' % (len(rows), wrong_rows, took))
    return 1 if bad or wrong_rows or took > MOST_SECONDS else 0


if __name__ == '__main__':
    sys.exit(main())
