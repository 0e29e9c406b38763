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

ROOMS = ['content', 'anim', 'model', 'music', 'texgen', 'effects', 'render', 'shell']  # of the player, from below
PLACES = {  # every other folder below src, and of which others each knows something
    'editing': ['content', 'model'],
    'authoring': [],  # what its rooms share
    'authoring/asset': ['authoring', 'content', 'model'],
    'authoring/curve': ['authoring', 'anim', 'model'],
    'authoring/show': ['authoring', 'authoring/asset', 'authoring/curve', 'content', 'model'],
    'authoring/check': ['authoring', 'authoring/asset', 'content', 'anim', 'model', 'texgen', 'effects'],
    'authoring/open': ['authoring', 'authoring/show', 'authoring/curve', 'content', 'anim', 'model', 'editing'],
    'authoring/lua': ['authoring', 'authoring/asset', 'authoring/curve', 'authoring/show', 'authoring/check', 'content',
                      'model'],
    'tools/common': ['authoring', 'content'],
    'tools/make': ['tools/common', 'authoring', 'authoring/asset', 'authoring/show', 'authoring/check',
                   'authoring/open', 'authoring/lua', 'content', 'editing'],
    'tools/frames': ['tools/common', 'content', 'model', 'render', 'shell'],
    'tools/render': ['tools/common', 'tools/frames', 'authoring'] + [room for room in ROOMS if room not in ('anim', 'music')],
    'tools/preview': ['tools/common', 'tools/frames', 'authoring', 'authoring/asset', 'authoring/lua', 'authoring/show',
                      'authoring/check', 'content', 'anim', 'model', 'music', 'effects', 'texgen', 'render', 'shell'],
    'tools/pages': ['tools/common', 'tools/make', 'tools/render', 'tools/preview', 'authoring/show', 'authoring/curve'],
}
LIBRARIES = [  # headers that are neither ours nor the language's, and the places or ends of files that may use them
    (r'SDL', ('_sdl.cpp',)), (r'GL/glu\.h', ('authoring/asset/',)), (r'GL/|GLES|glew', ('_gl.cpp',)),
    (r'EGL/', ('_gl.cpp',)), (r'zlib\.h', ('content/', 'authoring/show/')),
    (r'libdeflate\.h', ('tools/frames/',)), (r'spng\.h', ('authoring/asset/', 'tools/frames/')), (r'lua\w*\.h', ('authoring/lua/',)),
    (r'assimp/|ft2build|FT_', ('authoring/asset/',)), (r'stb/stb_image\.h', ('model/', 'authoring/asset/')),
    (r'stb/stb_image_resize\.h', ('authoring/asset/',)), (r'stb/stb_image_write\.h', ('tools/frames/',)), (r'stb/stb_truetype\.h', ('tools/render/',)),
    (r'stb/stb_vorbis\.h', ('music/', 'authoring/asset/', 'tools/preview/', 'tools/render/')),
    (r'nlohmann/', ('authoring/check/', 'tools/make/', 'tools/preview/', 'tools/render/')),
    (r'sys/|(unistd|fcntl|strings|dirent|poll|spawn|getopt|locale|emmintrin|immintrin|pthread|sched)\.h$', ('',)),  # the system's own
    (r'imgui', ('tools/preview/interface*', 'tools/preview/window_sdl.cpp')),
    (r'[a-z_]+$', ('',))]  # the language's
FACES = {'music/device_sdl.cpp', 'shell/window_sdl.cpp',  # the player's, and the preview's:
         'tools/preview/device_sdl.cpp', 'tools/preview/window_sdl.cpp'}  # another library: one new file in the place of each
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.M)
OWN = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.M)
FOREIGN = re.compile(r'^\s*#\s*include\s*("?)<?([^"<>\s]+)', re.M)  # the last also the name of a macro
PROGRAM = re.compile(r'^\s*add_executable\((\S+)', re.M)

# A source's comments, literals and directives, which say nothing about its types.
NO_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|R"([^(\s"]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"'
                     r'|(?<![0-9a-fA-F])\'(?:\\.|[^\'\\\n])+\'|^[ \t]*#(?:[^\n\\]|\\.|\\\n)*', re.S | re.M)
TYPE = re.compile(r'(?:template\s*<[^{;]*?>\s*)?'
                  r'(?:(?:struct|class|union|enum)\b[^;{}()=]*\{|using\s+\w+\s*=|typedef\b)')
NAMED_AHEAD = re.compile(r'^\s*(?:struct|class|union|enum)\s+(\w+)(?:\s*:\s*\w+)?\s*;', re.M)


def place_of(folder):
    """'model' of src/engine/model, 'authoring/show' of src/authoring/show."""
    place = folder.replace(os.sep, '/')
    return place[len('engine/'):] if place.startswith('engine/') else place


def sources(root):
    """(place, name, text) of every file of our own that is compiled into programs."""
    top = os.path.join(root, 'src')
    for folder, folders, names in os.walk(top):
        folders.sort()
        for name in sorted(names):
            if name.endswith(('.h', '.cpp')):
                with open(os.path.join(folder, name), encoding='utf-8') as f:
                    yield place_of(os.path.relpath(folder, top)), name, f.read()


def foreign_errors(path, text):
    """Libraries that a file may not know. A library that no row names belongs into one."""
    wrong = []
    for quote, included in FOREIGN.findall(text):
        ours = ('',) if quote else ()
        ends = next((ends for pattern, ends in LIBRARIES if re.match(pattern, included)), ours)
        if not any(path.startswith(end.rstrip('*')) if end.endswith(('/', '*')) or not end else path.endswith(end)
                   for end in ends):
            wrong.append('%s: includes %s, which is for %s' % (path, included, ', '.join(ends) or 'nobody'))
    return wrong


def check_libraries(root):
    """Each library of the system stays where it is asked: OpenGL and SDL in files of their names, SDL behind its two
    faces, those that read an author's files in one room."""
    wrong = []
    for place, name, text in sources(root):
        path = place + '/' + name
        wrong += foreign_errors(path, text)
        if name.endswith('_sdl.cpp') and path not in FACES:
            wrong.append('%s: SDL is in %s' % (path, ' and '.join(sorted(FACES))))
    return wrong


def include_errors(place, name, text):
    if place not in PLACES and place not in ROOMS:
        return ['%s/%s: "%s" is no room of the house' % (place, name, place)]
    allowed = PLACES[place] if place in PLACES else ROOMS[:ROOMS.index(place)]
    wrong = []
    for included in OWN.findall(text):
        other = included.rpartition('/')[0] or place
        if other != place and other not in allowed:
            wrong.append('%s/%s: includes %s, of which %s knows nothing' % (place, name, included, place))
    return wrong


def check_includes(root):
    return [wrong for source in sources(root) for wrong in include_errors(*source)]


def check_headers(root, compiler, flags):
    """Every header twice in a unit of its own: one that leans on another's includes, or lacks a guard, fails."""
    def check(header):
        unit = '#include "%s"\n#include "%s"\n' % (header, header)
        p = subprocess.run([compiler, '-std=c++20', '-fsyntax-only', '-Wall', '-Wextra', '-Werror',
                            '-I', os.path.join(root, 'src', 'engine'), '-I', os.path.join(root, 'src')]
                           + flags + ['-x', 'c++', '-'], input=unit.encode(), stdout=subprocess.PIPE,
                           stderr=subprocess.STDOUT)
        return '%s does not compile alone:\n%s' % (header, p.stdout.decode()) if p.returncode else None

    headers = ['%s/%s' % (place, name) for place, name, _ in sources(root) if name.endswith('.h')]
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
    def foreign(path, *headers):
        return foreign_errors(path, ''.join('#include %s\n' % header for header in headers))

    assert not foreign('shell/a_sdl.cpp', '<SDL/SDL.h>') and not foreign('render/a_gl.cpp', '<GL/glew.h>')
    assert foreign('render/a_gl.cpp', '<SDL/SDL.h>') and foreign('shell/a_sdl.cpp', '<EGL/egl.h>')
    assert foreign('render/a_gl.h', '<GL/glew.h>') and foreign('shell/a.cpp', '"SDL.h"')
    assert not foreign('render/a.cpp', '"content/matrix.h"', '"shell/display_gl.h"', '<vector>', '<sys/stat.h>')
    assert not foreign('authoring/asset/a_gl.cpp', '<GL/glu.h>') and foreign('render/a_gl.cpp', '<GL/glu.h>')
    assert not foreign('authoring/asset/a.cpp', '<ft2build.h>', 'FT_FREETYPE_H', '<assimp/scene.h>', '<spng.h>')
    assert len(foreign('authoring/show/a.cpp', '<ft2build.h>', 'FT_FREETYPE_H', '<assimp/scene.h>', '<spng.h>')) == 4
    assert not foreign('authoring/lua/a.cpp', '<lua.hpp>') and foreign('authoring/check/a.cpp', '<lua.hpp>')
    assert foreign('content/a.cpp', '<nobody/knows.h>') == ['content/a.cpp: includes nobody/knows.h, which is for nobody']

    def own(place, included):
        return include_errors(place, 'a.cpp', '#include "%s"\n' % included)

    assert not own('model', 'anim/b.h') and own('model', 'render/b.h') and own('attic', 'content/b.h')
    assert own('model', 'authoring/problem.h') and own('shell', 'tools/common/b.h') and own('shell', 'editing/b.h')
    assert own('editing', 'anim/b.h') and not own('tools/make', 'b.h')
    assert own('authoring/check', 'authoring/show/b.h') and own('authoring/show', 'authoring/lua/b.h')
    assert not own('authoring/show', 'authoring/asset/b.h') and not own('authoring/show', 'authoring/problem.h')
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
    check_the_checker()
    wrong = (check_includes(root) + check_libraries(root) + check_headers(root, compiler, flags)
             + check_local_types(root) + check_programs(root))
    for line in wrong:
        print(line)
    print('%d files checked, %d broken walls' % (len(list(sources(root))), len(wrong)))
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main())
