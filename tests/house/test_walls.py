#!/usr/bin/env python3
"""Holds the walls of the house: who may include whom, that every header stands alone, that no type has two
definitions in one program, and that no program of ours is taken for a pack.

    test_walls.py ROOT COMPILER [FLAG ...]
"""
import concurrent.futures
import os
import re
import subprocess
import sys

ROOMS = ['content', 'anim', 'model', 'music', 'texgen', 'effects', 'render', 'shell']
SIDE_ROOMS = {'editing': ['content', 'model']}  # for the tools alone: no room includes it, and what it may include
DEVICES = {'_gl.cpp': re.compile(r'(?:GL/|GLES|EGL/|glew)', re.I),  # by the end of the names of files that may use them
           '_sdl.cpp': re.compile(r'SDL', re.I)}
FACES = {'music/device_sdl.cpp', 'shell/window_sdl.cpp'}  # another library: one new file in the place of each
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.M)
PROGRAM = re.compile(r'^\s*add_executable\((\S+)', re.M)

# A source's comments, literals and directives, which say nothing about its types.
NO_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|R"([^(\s"]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"'
                     r'|(?<![0-9a-fA-F])\'(?:\\.|[^\'\\\n])+\'|^[ \t]*#(?:[^\n\\]|\\.|\\\n)*', re.S | re.M)
TYPE = re.compile(r'(?:template\s*<[^{;]*?>\s*)?'
                  r'(?:(?:struct|class|union|enum)\b[^;{}()=]*\{|using\s+\w+\s*=|typedef\b)')
NAMED_AHEAD = re.compile(r'^\s*(?:struct|class|union|enum)\s+(\w+)(?:\s*:\s*\w+)?\s*;', re.M)


def sources(engine):
    for room in sorted(os.listdir(engine)):
        folder = os.path.join(engine, room)
        for name in sorted(os.listdir(folder)):
            if name.endswith(('.h', '.cpp')):
                with open(os.path.join(folder, name), encoding='utf-8') as f:
                    yield room, name, f.read()


def device_errors(name, text):
    return ['%s: includes %s, which is for files named *%s' % (name, included, ending)
            for included in INCLUDE.findall(text) for ending, device in DEVICES.items()
            if device.search(included) and not name.endswith(ending)]


def check_devices(root):
    """OpenGL and SDL stay in files of their names, in the engine and in the tools; SDL behind its two faces."""
    wrong = []
    for folder, _, names in os.walk(os.path.join(root, 'src')):
        for name in sorted(names):
            if name.endswith(('.h', '.cpp')):
                path = os.path.join(folder, name)
                with open(path, encoding='utf-8') as f:
                    wrong += device_errors(os.path.relpath(path, root), f.read())
                if name.endswith('_sdl.cpp') and os.path.relpath(path, os.path.join(root, 'src/engine')) not in FACES:
                    wrong.append('%s: SDL is in %s' % (os.path.relpath(path, root), ' and '.join(sorted(FACES))))
    return wrong


def check_includes(engine):
    wrong = []
    for room, name, text in sources(engine):
        if room not in ROOMS and room not in SIDE_ROOMS:
            wrong.append('%s/%s: "%s" is no room of the house' % (room, name, room))
            continue
        for included in INCLUDE.findall(text):
            other = included.split('/')[0]
            if room in SIDE_ROOMS:
                if other in ROOMS and other not in SIDE_ROOMS[room]:
                    wrong.append('%s/%s: includes %s, of which %s knows nothing' % (room, name, included, room))
                continue
            if other in SIDE_ROOMS:
                wrong.append('%s/%s: includes %s, which is for the tools alone' % (room, name, included))
            if other in ROOMS and ROOMS.index(other) > ROOMS.index(room):
                wrong.append('%s/%s: includes %s, which lies above it' % (room, name, included))
    return wrong


def check_headers(engine, compiler, flags):
    """Every header twice in a unit of its own: one that leans on another's includes, or lacks a guard, fails."""
    def check(header):
        unit = '#include "%s"\n#include "%s"\n' % (header, header)
        p = subprocess.run([compiler, '-std=c++20', '-fsyntax-only', '-Wall', '-Wextra', '-Werror', '-I', engine]
                           + flags + ['-x', 'c++', '-'], input=unit.encode(), stdout=subprocess.PIPE,
                           stderr=subprocess.STDOUT)
        return '%s does not compile alone:\n%s' % (header, p.stdout.decode()) if p.returncode else None

    headers = ['%s/%s' % (room, name) for room, name, _ in sources(engine) if name.endswith('.h')]
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        return [wrong for wrong in pool.map(check, headers) if wrong]


def check_programs(root):
    """The player takes the first file of its folder whose name ends in "dpk": none of its neighbours may."""
    with open(os.path.join(root, 'CMakeLists.txt'), encoding='utf-8') as f:
        return ['the program %s has the name of a pack' % name for name in PROGRAM.findall(f.read())
                if name.endswith('dpk')]


def types_at_file_scope(text):
    """The first line of each type that a source defines outside every namespace."""
    code = NO_CODE.sub(lambda match: re.sub(r'[^\n]', ' ', match.group(0)), text)
    depth = 0
    begun = 0
    for line in re.finditer(r'^.*$', code, re.M):
        found = TYPE.match(code, line.start()) if depth == 0 and line.start() >= begun else None
        if found:
            begun = found.end()
            yield text[line.start():line.end()].strip()
        depth += sum({'{': 1, '(': 1, '}': -1, ')': -1}.get(c, 0) for c in line.group(0))


def check_local_types(root):
    """A type of one source file stands in an unnamed namespace: another file may have one of the same name, and two
    different definitions in one program are undefined. Not so a type that an included header names ahead."""
    texts = {}
    for top in ('src', 'tests', 'bench'):
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in names:
                if name.endswith(('.h', '.cpp')):
                    path = os.path.join(folder, name)
                    with open(path, encoding='utf-8') as f:
                        texts[os.path.relpath(path, root)] = f.read()
    ahead = {path: NAMED_AHEAD.findall(text) for path, text in texts.items() if path.endswith('.h')}
    wrong = []
    for path in sorted(p for p in texts if p.endswith('.cpp')):
        included = tuple('/' + name for name in INCLUDE.findall(texts[path]))
        known = {name for header, names in ahead.items() if header.endswith(included) for name in names}
        wrong += ['%s: "%s" stands outside an unnamed namespace' % (path, line)
                  for line in types_at_file_scope(texts[path]) if not known.intersection(re.findall(r'\w+', line)[:3])]
    return wrong


def check_the_checker():
    """The rules must catch what they are for."""
    assert not device_errors('a_sdl.cpp', '#include <SDL/SDL.h>')
    assert not device_errors('a_gl.cpp', '#include <GL/glew.h>')
    assert device_errors('a_gl.cpp', '#include <SDL/SDL.h>') and device_errors('a_sdl.cpp', '#include <EGL/egl.h>')
    assert device_errors('a_gl.h', '#include <GL/glew.h>') and device_errors('a.cpp', '#include "SDL.h"')
    assert not device_errors('a.cpp', '#include "content/matrix.h"\n#include "shell/display_gl.h"')
    types = ['struct a {\n};', 'enum b : uint32_t { c };', 'using d = e<decltype([] { f(); })>;',
             'template <typename g>\nstruct h {\n};', 'typedef int i;', "struct j : k { char l = '{'; };"]
    others = ['namespace {\nstruct a {\n};\n}', 'struct b;', 'struct c d = {};',
              'enum e f(int g)\n{\nstruct h {\n};\n}', '// struct i {', 'using std::j;',
              'static const k l[] = {\n{1}};', '#define M struct n { };']
    assert list(types_at_file_scope('\n'.join(others + types + others))) == [t.split('\n')[0] for t in types]
    assert PROGRAM.findall('add_executable(dpk ${sources})\n  add_executable(a-b c.cpp)') == ['dpk', 'a-b']
    assert INCLUDE.findall('#include <GL/glew.h>\n  #  include "shell/log.h"') == ['GL/glew.h', 'shell/log.h']


def main():
    root, compiler, flags = sys.argv[1], sys.argv[2], sys.argv[3:]
    engine = os.path.join(root, 'src', 'engine')
    check_the_checker()
    wrong = check_includes(engine) + check_devices(root) + check_headers(engine, compiler, flags) + check_programs(root)
    wrong = (check_includes(engine) + check_headers(engine, compiler, flags) + check_local_types(root)
             + check_programs(root))
    for line in wrong:
        print(line)
    print('%d files checked, %d broken walls' % (len(list(sources(engine))), len(wrong)))
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
