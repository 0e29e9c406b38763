#!/usr/bin/env python3
"""Follows the viewer's choices through the house: each is offered, asked for, drawn and explained.

    test_choices.py ROOT
"""
import ast
import os
import re
import struct
import sys

SHELL = ('src', 'engine', 'shell')
FIELD = re.compile(r'^    \w+ (\w+) = [^;]+;', re.M)
BOX = re.compile(r'\{\{(\d+), (\d+), (\d+), (\d+)\}, (\d+), &player_choices::(\w+)\}')
OFFERS = {'player_choices.cpp', 'dialog_logic.cpp'}  # the command line, the dialog
EDGE = 5  # the palette's colour of a box's edge


def fields(header):
    body = header[header.index('struct player_choices {'):]
    return FIELD.findall(body[:body.index('\n};')])


def check_fields(names, sources):
    """A choice that nobody offers, or that changes nothing."""
    offers = '\n'.join(text for name, text in sources.items() if name in OFFERS)
    askers = '\n'.join(text for name, text in sources.items() if name not in OFFERS)
    wrong = ['%s: neither the dialog nor the command line offers it' % name for name in names
             if not re.search(r'(?:choices\.|player_choices::)%s\b' % name, offers)]
    return wrong + ['%s: nobody asks for it' % name for name in names if not re.search(r'choices\.%s\b' % name, askers)]


# ---- the artwork ---------------------------------------------------------------------------------

def values(script, name):
    """The literal tuple that stands behind a name in draw.py."""
    found = re.search(r'^%s = (\(.*?\))(?:\s*#.*)?$' % name, script, re.M)
    return ast.literal_eval(found.group(1))


def pixel(bmp, x, y):
    """A palette index of a picture of 16 colours, whose rows come from the bottom."""
    begin, = struct.unpack_from('<I', bmp, 10)
    width, height, bits = struct.unpack_from('<ii2xH', bmp, 18)
    assert bits == 4, bits
    byte = bmp[begin + (height - 1 - y) * ((width * 4 + 31) // 32 * 4) + x // 2]
    return byte & 15 if x % 2 else byte >> 4


def check_boxes(boxes, script, background):
    labels, marks = values(script, 'OPTIONS'), values(script, 'MARK_Y')
    wrong = []
    if not len(boxes) == len(labels) == len(values(script, 'BOX_Y')):
        wrong.append('draw.py: %d check boxes have %d labels and %d pictures'
                     % (len(boxes), len(labels), len(values(script, 'BOX_Y'))))
    if [int(box[4]) for box in boxes] != list(marks):
        wrong.append('draw.py: the marks are drawn elsewhere than the dialog puts them')
    for left, top, right, _, _, name in boxes:
        middle = (int(left) + int(right)) // 2
        if EDGE not in (pixel(background, middle, int(top) - 1), pixel(background, middle, int(top))):
            wrong.append('background.bmp: there is no box for %s: run draw.py' % name)
    return wrong


def check_readme(readme, script):
    """Every label of the dialog is explained in its table."""
    table = readme[readme.index('| choice |'):]
    first = re.findall(r'^\| ([^|]*) \|', table[:table.index('\n\n')], re.M)
    explained = {name.strip() for cell in first for name in cell.split(',')}
    labels = values(script, 'OPTIONS') + values(script, 'ASPECTS') + values(script, 'PATHS')
    return ['README.md: "%s" is not explained' % label for label in labels
            if re.sub(r' \(.*\)', '', label) not in explained]


def check_the_checker():
    """It must find what it is for."""
    names = fields('struct player_choices {\n    int32_t a = 1; // on\n    bool b = false;\n};\n')
    assert names == ['a', 'b'], names
    sources = {'dialog_logic.cpp': '&player_choices::a', 'player_choices.cpp': 'choices.b = 1;', 'other.cpp': 'choices.a'}
    assert check_fields(names, sources) == ['b: nobody asks for it']
    assert check_fields(['a', 'c'], sources)[0].startswith('c: neither')
    script = "OPTIONS = ('Tall', 'Wide')\nASPECTS = ()\nPATHS = ('New (old)',)  # a note\n"
    assert check_readme('| choice |\n|---|\n| Tall, New | b |\n\n', script) == ['README.md: "Wide" is not explained']


def main():
    root = sys.argv[1]

    def read(*path):
        with open(os.path.join(root, *path), encoding='utf-8') as f:
            return f.read()

    check_the_checker()
    sources = {name: read(*SHELL, name) for name in os.listdir(os.path.join(root, *SHELL)) if name.endswith('.cpp')}
    names = fields(read(*SHELL, 'player_choices.h'))
    boxes = BOX.findall(sources['dialog_logic.cpp'])
    assert names and boxes
    script = read(*SHELL, 'artwork', 'draw.py')
    with open(os.path.join(root, *SHELL, 'artwork', 'background.bmp'), 'rb') as f:
        background = f.read()
    wrong = check_fields(names, sources) + check_boxes(boxes, script, background)
    wrong += check_readme(read('README.md'), script)
    for line in wrong:
        print(line)
    print('%d choices followed, %d faults' % (len(names), len(wrong)))
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
