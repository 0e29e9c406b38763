#!/usr/bin/env python3
"""Draws small shows again and compares them with the stills kept here, on both paths.

    test_pictures.py BRIMLOW_RENDER BRIMLOW_MAKE WORKFOLDER [--update] [NAME ...]

The stills stand in stills/NAME-PATH/FRAME.png. They are copied to WORKFOLDER and compared there by
`brimlow-render --compare`, which leaves a picture of each difference beside them. --update draws them
anew, for when a change is meant: look at them, and say in the commit what changed and why.
"""
import os
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True
from shows import FRAMES_PER_SECOND, HERE, SHOWS, SOURCES, STILLS  # noqa: E402

STORE = os.path.join(HERE, 'stills')
PATHS = ('glsl', 'fixed')


def render(program, path, pack, *more):
    done = subprocess.run([program, '--path', path, '--fps', str(FRAMES_PER_SECOND), *more, pack],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, universal_newlines=True)
    return done.returncode, done.stdout


def build(tool, name, folder):
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    pack = os.path.join(folder, 'demo.dpk')
    if name in SHOWS:
        SHOWS[name](folder)
        return pack
    done = subprocess.run([tool, 'build', SOURCES[name], '-o', pack], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, universal_newlines=True)
    if done.returncode != 0:
        sys.exit(done.stdout)
    return pack


def update(program, name, path, pack):
    stills = os.path.join(STORE, '%s-%s' % (name, path))
    shutil.rmtree(stills, ignore_errors=True)
    os.makedirs(stills)
    moments = ','.join('%df' % frame for frame in STILLS[name])
    status, output = render(program, path, pack, '--size', '320x240', '--at', moments, '-o', stills + '/%05d.png')
    if status == 0:
        print('%s-%s: %d stills' % (name, path, len(os.listdir(stills))))
    else:
        print(output)
    return status == 0


def compare(program, name, path, pack, work):
    stills = os.path.join(work, '%s-%s' % (name, path))
    shutil.rmtree(stills, ignore_errors=True)
    shutil.copytree(os.path.join(STORE, '%s-%s' % (name, path)), stills)
    kept = sorted(int(f[:-4]) for f in os.listdir(stills))
    if kept != sorted(STILLS[name]):
        print('%s-%s: there are stills of the frames %s, not of %s' % (name, path, kept, sorted(STILLS[name])))
        return False
    status, output = render(program, path, pack, '--compare', stills)
    if status == 0:
        shutil.rmtree(stills)
        return True
    print('%s-%s: status %d\n%s' % (name, path, status, output))
    print('Differences lie in %s; test_pictures.py --update keeps the new pictures.' % stills)
    return False


def main():
    arguments = [a for a in sys.argv[1:] if a != '--update']
    if len(arguments) < 3 or any(name not in STILLS for name in arguments[3:]):
        sys.exit(__doc__)
    program, tool, work = arguments[:3]
    good = True
    for name in arguments[3:] or STILLS:
        pack = build(tool, name, os.path.join(work, name))
        for path in PATHS:
            if '--update' in sys.argv[1:]:
                good = update(program, name, path, pack) and good
            else:
                good = compare(program, name, path, pack, work) and good
    return 0 if good else 1


if __name__ == '__main__':
    sys.exit(main())
