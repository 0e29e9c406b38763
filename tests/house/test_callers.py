#!/usr/bin/env python3
"""Finds functions of src that nothing but tests call.

    test_callers.py ROOT

Whoever is reached from a program's main, or from `editing` (the room for who makes documents), has a caller.
Going by names: a function counts as called where its name stands in the body of one that is called, or outside
of every body (a table, a header). So it may miss one, and never blames one that has a caller.
"""
import os
import re
import sys

LIBRARY_OF_TOOLS = 'editing'  # its functions are for programs that may be yet to come
OBSERVERS = {'sandbox_steps'}  # what no program asks, and tests could not tell otherwise
COMMENT_OR_TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.S)
WORD = re.compile(r'[A-Za-z_]\w*')
# A head stands at the line's begin and ends in a parenthesis; its body lies between braces at lines' begins.
BODY = re.compile(r'^(?!struct|enum|union|namespace|class|using|static_assert)(?P<head>[A-Za-z\[][^;{}=]*\))'
                  r'(?: const)?\s*\n\{\n(?P<body>.*?)^\}', re.M | re.S)
DECLARATION = re.compile(r'^(?!using|struct|enum|static_assert|constexpr|extern const)[A-Za-z\[][^;{}=()]*?'
                         r'\b(?P<name>[a-z]\w*)\([^;{}]*\);', re.M)
NO_BODY = re.compile(r'^(?![ \t])[^\n;{}=]*\([^;{}=]*\)(?:;| \{ \}$)', re.M)  # declared, or empty
NAME = re.compile(r'([A-Za-z_]\w*)\s*\(')


def code_of(path):
    """The text without comments and strings."""
    with open(path, encoding='utf-8') as f:
        return COMMENT_OR_TEXT.sub('""', f.read())


def name_of(head):
    """The name in "static bool name(int a)"; attributes in brackets before it have parentheses, too."""
    found = NAME.search(re.sub(r'\[\[.*?\]\]', '', head))
    return found.group(1) if found else None


class house:
    def __init__(self):
        self.declared = {}   # name: the header that offers it
        self.bodies = {}     # name: words of all its bodies
        self.called = set()  # words that stand where they count by themselves

    def read(self, text, path, is_root):
        rest = text
        for found in BODY.finditer(text):
            words = set(WORD.findall(found.group('body')))
            name = name_of(found.group('head'))
            if is_root or name is None or name == 'main':
                self.called |= words
            else:
                self.bodies.setdefault(name, set()).update(words)
            rest = rest.replace(found.group(0), '')
        if path.endswith('.h'):
            for found in DECLARATION.finditer(rest):
                if not is_root:
                    self.declared[found.group('name')] = path
            rest = DECLARATION.sub('', rest)
        self.called |= set(WORD.findall(NO_BODY.sub('', rest)))

    def reach(self):
        waiting = [name for name in self.bodies if name in self.called]
        reached = set(waiting)
        while waiting:
            for word in self.bodies[waiting.pop()]:
                if word in self.bodies and word not in reached:
                    reached.add(word)
                    waiting.append(word)
        return reached

    def uncalled(self):
        reached = self.reach()
        return sorted('%s: %s has no caller but tests' % (path, name) for name, path in self.declared.items()
                      if name in self.bodies and name not in reached and name not in OBSERVERS)


def read_house(root):
    h = house()
    for folder, _, names in sorted(os.walk(os.path.join(root, 'src'))):
        for name in sorted(names):
            if name.endswith(('.h', '.cpp')):
                path = os.path.join(folder, name)
                h.read(code_of(path), os.path.relpath(path, root), os.path.basename(folder) == LIBRARY_OF_TOOLS)
    return h


def check_the_checker():
    """It must find what it is for, and blame nobody else."""
    h = house()
    h.read('bool used(int a);\nint deep();\n[[nodiscard]] int lost(int a);\nvoid by_the_lost();\nvoid listed();\n',
           'src/engine/a.h', False)
    h.read('constexpr entry table[] = {{listed, 1}};\n'
           'static int helper(int a)\n{\n    return deep() + a;\n}\n\n'
           'bool used(int a)\n{\n    return helper(a) > 0;\n}\n\n'
           'int deep()\n{\n    return 1;\n}\n\n'
           'int lost(int a)\n{\n    of(a);\n    return used(a);\n}\n\nstatic void of(float) { }\n\n'
           'static void of(int)\n{\n    by_the_lost();\n}\n\nvoid by_the_lost()\n{\n}\n\nvoid listed()\n{\n}\n', 'a.cpp', False)
    h.read('int main()\n{\n    return used(3);\n}\n', 'main.cpp', False)
    assert [line.split()[1] for line in h.uncalled()] == ['by_the_lost', 'lost'], h.uncalled()


def main():
    check_the_checker()
    h = read_house(sys.argv[1])
    uncalled = h.uncalled()
    for line in uncalled:
        print(line)
    print('%d functions checked, %d without a caller' % (len(h.declared), len(uncalled)))
    return 1 if uncalled else 0


if __name__ == '__main__':
    sys.exit(main())
