#!/usr/bin/env python3
"""Holds the drawing of the house to what the includes say, and its files to include each other in no circle.

    test_house.py ROOT
"""
import os
import sys

sys.dont_write_bytecode = True
import house  # noqa: E402

DRAW = 'python3 tests/house/house.py . --draw'


def check_drawing(root):
    """Stale as soon as a room, an arrow between rooms or what a room knows is another."""
    with open(os.path.join(root, *house.DRAWING), encoding='utf-8') as file:
        if file.read() == house.drawing_of(root):
            return []
    return ['docs/house.svg is not the house of this tree, which is\n%sdraw it again: %s, and look at it'
            % (house.as_text(list(house.sources(root))), DRAW)]


def check_rooms(root):
    """Every room of the house stands in the table of docs/architecture.md."""
    with open(os.path.join(root, 'docs', 'architecture.md'), encoding='utf-8') as file:
        known = house.what_they_know(file.read())
    return ['docs/architecture.md does not say what the room %s knows' % room
            for room in house.rooms_of(list(house.sources(root))) if room not in known]


def check_circles(root):
    """Of a header and the source of its name, a unit, each can be understood without those that include it."""
    return house.circles(list(house.sources(root)))


# Files as they might be: model and render include each other's rooms, two files of a tool each other.
HOUSE = [('model/a.h', '#pragma once\n'), ('model/a.cpp', '#include "model/a.h"\n#include <GL/glew.h>\n'),
         ('model/b.cpp', '  #  include "render/c.h"\n'), ('render/c.h', '#include "model/a.h"\n'),
         ('tools/make/d.h', '#include "e.h"\n'), ('tools/make/e.h', ''),
         ('tools/make/e.cpp', '#include "content/f.h"\n'),
         ('content/f.h', ''), ('attic/g.cpp', '#include "content/f.h"\n')]


def check_the_checker():
    """The rules must catch what they are for."""
    assert house.rooms_of(HOUSE) == ['content', 'model', 'render', 'tools/make', 'attic']
    assert house.arrows(HOUSE) == {'content': set(), 'model': {'render'}, 'render': {'model'}, 'attic': {'content'},
                                   'tools/make': {'content'}}
    assert house.as_text(HOUSE).splitlines()[3] == 'model           -> render (up!)', house.as_text(HOUSE)
    assert house.circles(HOUSE) == []
    ends = HOUSE + [('model/a.cpp', '#include "render/c.h"\n'), ('tools/make/e.cpp', '#include "d.h"\n')]
    assert house.circles(ends) == [
        'a circle: model/a.cpp includes render/c.h, render/c.h includes model/a.h. '
        'What they share belongs into a file below them.',
        'a circle: tools/make/d.h includes tools/make/e.h, tools/make/e.cpp includes tools/make/d.h. '
        'What they share belongs into a file below them.'], house.circles(ends)
    longer = [('a/%d.cpp' % n, '#include "a/%d.h"\n' % ((n + 1) % 4)) for n in range(4)]
    longer.append(('a/4.cpp', '#include "a/0.h"\n'))
    assert len(house.circles(longer)) == 1 and house.circles(longer)[0].count('includes') == 4
    page = '| room | what it knows |\n|---|---|\n| `model` | *records* < all |\n'
    drawing = house.as_svg(HOUSE, page)
    assert '>records &lt; all<' in drawing and '>brimlow-make<' in drawing and drawing.count('class="floor tools"') == 1
    assert '>texts<' in house.as_svg([('authoring/lua/a.h', '')], '| `authoring/lua` | texts |\n')
    assert drawing.count('class="up head"') == 1 and drawing.count('class="down head"') == 3
    assert drawing != house.as_svg(HOUSE + [('content/f.cpp', '#include "attic/g.h"\n')], page)
    assert drawing == house.as_svg(HOUSE + [('model/h.cpp', '#include "render/c.h"\n')], page)


def main():
    root = sys.argv[1]
    check_the_checker()
    wrong = check_rooms(root) + check_circles(root) + check_drawing(root)
    for line in wrong:
        print(line)
    print('%d files looked at, %d faults' % (len(list(house.sources(root))), len(wrong)))
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
