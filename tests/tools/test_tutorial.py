#!/usr/bin/env python3
"""Does what docs/making-a-show.md says, in a fresh folder, and compares what is shown with what the page shows.

    test_tutorial.py FOLDER_OF_PROGRAMS ROOT [--write]

Commands stand behind "$ " in blocks of `console`; below each is what it shows, and "..." stands for any lines. How many
bytes something has is not compared. `<!-- write: FILE -->`, `<!-- append: FILE -->` and
`<!-- first line: FILE -->` before a listing say what becomes of it. --write puts what is shown into the page.
"""
import os
import re
import subprocess
import sys
import tempfile

BLOCK = re.compile(r'^(?:<!-- ([a-z ]+): (\S+) -->\n)?```(\w+)\n(.*?)^```\n', re.S | re.M)
COUNTS = re.compile(r'[\d,]+(?= (?:bytes|seconds))|^ +\d+(?=  )', re.M)


def commands_of(block):
    """(command, what is shown) of each command of a console block."""
    parts = re.split(r'^\$ (.*)\n', block, flags=re.M)
    assert parts[0] == '', 'a console block begins with "$ "'
    return list(zip(parts[1::2], parts[2::2]))


def is_shown(expected, shown):
    """Whether lines are those that the page has, in which "..." stands for any."""
    pattern = ''.join('(?:.*\n)*' if line == '...' else re.escape(line) + '\n'
                      for line in COUNTS.sub('N', expected).splitlines())
    return re.fullmatch(pattern, COUNTS.sub('N', shown)) is not None


def carry_out(command, folder, environment):
    """(what is shown, the folder it ends in) of a command of a shell."""
    done = subprocess.run(['bash', '-c', command + '; status=$?; pwd > "$PLACE"; exit $status'], cwd=folder,
                          env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, universal_newlines=True)
    with open(environment['PLACE']) as file:
        return done.stdout, file.read().strip()


def put(how, path, text):
    with open(path, encoding='utf-8') as file:
        old = file.read() if how != 'write' else ''
    new = {'write': text, 'append': old + text, 'first line': text + old.partition('\n')[2]}[how]
    with open(path, 'w', encoding='utf-8') as file:
        file.write(new)


def follow(page, folder, environment):
    """Goes through the page; the lines that differ, and the page with what was shown."""
    wrong, count, written = [], 0, page
    for how, name, kind, block in BLOCK.findall(page):
        if how:
            path = os.path.join(folder, name)
            open(path, 'a').close()
            put(how, path, block)
        if kind != 'console':
            continue
        new = ''
        for command, expected in commands_of(block):
            count += 1
            shown, folder = carry_out(command, folder, environment)
            good = is_shown(expected, shown)
            if not good:
                wrong.append('$ %s\n%s--- the page has:\n%s' % (command, shown, expected))
            new += '$ %s\n%s' % (command, expected if good else shown)
        written = written.replace(block, new, 1)
    return wrong, count, written


def check_the_checker():
    assert commands_of('$ a\n1\n2\n$ b\n') == [('a', '1\n2\n'), ('b', '')]
    assert is_shown('a\n...\n', 'a\nb\nc\n') and not is_shown('a\n', 'b\n') and not is_shown('', 'b\n')
    assert is_shown('x: 12 bytes\n', 'x: 7 bytes\n') and not is_shown('x: 12 entries\n', 'x: 7 entries\n')
    assert not is_shown('x:12: no\n', 'x:13: no\n')


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    check_the_checker()
    programs, root = (os.path.abspath(path) for path in sys.argv[1:3])
    path = os.path.join(root, 'docs', 'making-a-show.md')
    with open(path, encoding='utf-8') as file:
        page = file.read()
    with tempfile.TemporaryDirectory() as place:
        folder = os.path.join(place, 'work')
        os.makedirs(folder)
        environment = dict(os.environ, BRIMLOW=root, PATH=programs + ':' + os.environ['PATH'], LC_ALL='C',
                           PLACE=os.path.join(place, 'place'))
        wrong, count, written = follow(page, folder, environment)
    if '--write' in sys.argv:
        with open(path, 'w', encoding='utf-8') as file:
            file.write(written)
    for line in wrong:
        print(line)
    print('%d commands run, %d show something else' % (count, len(wrong)))
    return 1 if wrong or count == 0 else 0


if __name__ == '__main__':
    sys.exit(main())
