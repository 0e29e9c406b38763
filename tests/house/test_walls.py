#!/usr/bin/env python3
"""Holds the walls of the house: who may include whom, that every header stands alone, and that no program of ours
is taken for a pack.

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


def check_the_checker():
    """The rules must catch what they are for."""
    assert not device_errors('a_sdl.cpp', '#include <SDL/SDL.h>')
    assert not device_errors('a_gl.cpp', '#include <GL/glew.h>')
    assert device_errors('a_gl.cpp', '#include <SDL/SDL.h>') and device_errors('a_sdl.cpp', '#include <EGL/egl.h>')
    assert device_errors('a_gl.h', '#include <GL/glew.h>') and device_errors('a.cpp', '#include "SDL.h"')
    assert not device_errors('a.cpp', '#include "content/matrix.h"\n#include "shell/display_gl.h"')
    assert PROGRAM.findall('add_executable(dpk ${sources})\n  add_executable(a-b c.cpp)') == ['dpk', 'a-b']
    assert INCLUDE.findall('#include <GL/glew.h>\n  #  include "shell/log.h"') == ['GL/glew.h', 'shell/log.h']


def main():
    root, compiler, flags = sys.argv[1], sys.argv[2], sys.argv[3:]
    engine = os.path.join(root, 'src', 'engine')
    check_the_checker()
    wrong = check_includes(engine) + check_devices(root) + check_headers(engine, compiler, flags) + check_programs(root)
    for line in wrong:
        print(line)
    print('%d files checked, %d broken walls' % (len(list(sources(engine))), len(wrong)))
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
