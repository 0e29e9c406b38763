#!/usr/bin/env python3
"""Drives brimlow-render: test_brimlow_render.py BRIMLOW-RENDER BRIMLOW MAN-PAGE.

Shows are small ones, made for the test; pictures are read here with zlib alone. Everything runs
on the software rasteriser, without a display but where a window is the subject.
"""
import array
import json
import os
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

for neighbour in ('player', 'support'):
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', neighbour))
from driver import Display, Player  # noqa: E402
from packs import in_envelope, pack_bytes, plate, png, quad  # noqa: E402
from production import ALPHA, DYNAMIC, GENMESH, Element, Production, dynamic, manipulator, placed  # noqa: E402

RENDER = PLAYER = MAN_PAGE = ''
TONE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'player', 'tone.ogg')
RED, GREEN, BLUE, WHITE = (1, 0, 0), (0, 1, 0), (0, 0, 1), (1, 1, 1)
SMALL = ('--size', '32x24')
LINEAR = 1  # the segment type "linear": parameter 0 times the time, plus parameter 1
RIPPLER = 2
LAKE = 0
SLOPE = 0.3  # of values that run with the time, per tick


# ---- pictures -----------------------------------------------------------------------------------

class Picture:
    """Packed RGB rows from the top, read from a PNG file of 8 bits and 3 channels."""

    def __init__(self, path):
        with open(path, 'rb') as file:
            self.chunks = self.chunks_of(file.read())
        self.width, self.height, depth, channels = struct.unpack_from('>IIBB', self.chunks[b'IHDR'])
        assert (depth, channels) == (8, 2), path
        self.rgb = self.unfiltered(zlib.decompress(self.chunks[b'IDAT']))

    @staticmethod
    def chunks_of(content):
        assert content[:8] == b'\x89PNG\r\n\x1a\n'
        chunks, at = {}, 8
        while at < len(content):
            size, = struct.unpack_from('>I', content, at)
            kind, data = content[at + 4:at + 8], content[at + 8:at + 8 + size]
            assert zlib.crc32(kind + data) == struct.unpack_from('>I', content, at + 8 + size)[0], kind
            chunks[kind] = chunks.get(kind, b'') + data
            at += size + 12
        return chunks

    def unfiltered(self, raw):
        row, out = 3 * self.width, bytearray()
        above = bytes(row)
        for y in range(self.height):
            kind, line = raw[y * (row + 1)], bytearray(raw[y * (row + 1) + 1:(y + 1) * (row + 1)])
            for i in range(row):
                left = line[i - 3] if i >= 3 else 0
                corner = above[i - 3] if i >= 3 else 0
                if kind == 4:
                    p = left + above[i] - corner
                    guess = min((left, above[i], corner), key=lambda v: abs(p - v))
                else:
                    guess = (0, left, above[i], (left + above[i]) // 2)[kind]
                line[i] = (line[i] + guess) & 255
            out += line
            above = line
        return bytes(out)

    def pixel(self, x, y):
        return tuple(self.rgb[(y * self.width + x) * 3:][:3])

    def differences(self, other):
        """How many bytes differ, and by how much at most."""
        assert (self.width, self.height) == (other.width, other.height)
        found = [abs(a - b) for a, b in zip(self.rgb, other.rgb)]
        return sum(1 for d in found if d), max(found)


# ---- shows ----------------------------------------------------------------------------------------

def two_colours(length=100, music=None):
    """Red for `length` ticks, then blue: at 10 frames a second and 100 ticks 10 red, 11 blue frames."""
    show = Production()
    show.colour(RED, length)
    show.colour(BLUE, length)
    show.music = music
    return show


def running(show):
    """A function of 0.3 for every tick, endless for our shows."""
    return show.function((LINEAR, 100000, SLOPE, 0))


def remembering():
    """Effects that remember the frames before: a lake, a colony and a rippled plate; 1.5 s."""
    show = Production()
    run = running(show)
    lake = show.effect(LAKE, run)
    colony = show.reference(2, show.dynamic_texture(2, run))
    light = show.values(0.2, 0.2, 0.2, 0.9, 0.9, 0.9, 10, 20, 0)
    water = show.material((0.3, 0.5, 0.9), lighting=1, light1=light)
    skin = show.material(WHITE, (colony,))
    red = show.material((1, 0.3, 0.1))
    objects = [placed(lake, water, GENMESH, at=(-15, -6, -30)),
               placed(show.mesh(quad(-3, 2, 3, 6, -12)), skin),
               placed(show.mesh(plate(6)), red, at=(2, -2, -8),
                      manipulators=[manipulator(RIPPLER, dynamic(run), 0.01, 3)])]
    show.layer(show.scene(*objects), length=150, fov=60, far=200)
    return show


def shapes(length=100):
    """A still picture with slanted edges, a texture and blending."""
    show = Production()
    picture = show.reference(1, show.image(png(2, 2, bytes((255, 255, 0, 0, 255, 255, 255, 0, 255, 40, 80, 120)))))
    back = show.material(WHITE, (picture,))
    glass = show.material((0.2, 0.9, 0.1, 0.5), blend=ALPHA)
    show.layer(show.scene(placed(show.mesh(quad(-9, -7, 9, 7, -10)), back, turned=(0, 0, 20)),
                          placed(show.mesh(plate(4)), glass, at=(0.5, 0.2, -4), turned=(25, 40, 10))),
               length=length, fov=60)
    return show


def into_a_texture(length=100):
    """A layer that draws into a texture, and one that shows it."""
    show = Production()
    image = show.image(png(16, 16, (0, 0, 0)))
    seen = show.material(WHITE, (show.reference(1, image),))
    show.colour(GREEN, length, mode=1, rtex=image)
    show.layer(show.scene(placed(show.mesh(quad()), seen)), length, track=2)
    return show


def out_of_the_past():
    """For a second a layer draws its colour, which changes, into a texture; it is shown for two seconds."""
    show = Production()
    image = show.image(png(16, 16, (0, 0, 0)))
    seen = show.material(WHITE, (show.reference(1, image),))
    rise = show.function((LINEAR, 100000, 0.01, 0))
    show.colour(BLUE, 200)
    show.layer(show.scene(placed(show.mesh(quad()), show.material((0.2, dynamic(rise), 0)))), 100, track=2, mode=1,
               rtex=image)
    show.layer(show.scene(placed(show.mesh(quad(0.25, 0.25, 0.75, 0.75)), seen)), 200, track=3)
    return show


def flicker(length=300):
    """Red and black in turns, each for a tenth of a second."""
    show = Production()
    red = show.function((0, 10, 1), (0, 10, 0), loop=1, end=20)
    show.layer(show.scene(placed(show.mesh(quad()), show.material((dynamic(red), 0, 0)))), length)
    return show


def own_program(vertex, fragment):
    return {'enable_glsl': 1, 'vertex_shader': Element('vertex_shader', content=vertex),
            'fragment_shader': Element('fragment_shader', content=fragment)}


def broken_programs(length=100):
    """Four materials: a sound one, one that does not compile, one that does not link, and one whose
    coordinates do not suit its picture."""
    show = Production()
    sound = 'attribute vec4 Position;\nvoid main(void)\n{\n  gl_Position = Position;\n}'
    crossed = 'attribute vec4 Position; varying vec3 a; void main(void) { a = vec3(1.0); gl_Position = Position; }'
    show.material(RED, **own_program(sound, 'void main(void)\n{\n  gl_FragColor = vec4(1.0);\n}'))
    show.material(RED, **own_program(sound, '\nvoid main(void)\n{\n  gl_FragColor = \x1b[7mnobody;\n}'))
    show.material(RED, **own_program(crossed, 'varying vec2 a; void main(void) { gl_FragColor = vec4(a, 1.0, 1.0); }'))
    picture = show.reference(1, show.image(png(2, 2)))
    show.material(RED, texture1=Element('texture1', value=picture, wrapmode=0, cgenmode=2, rotation=0, function=0))
    show.layer(show.scene(*(placed(show.mesh(quad()), material) for material in (1, 2, 3, 4))), length)
    return show


# ---- the program ------------------------------------------------------------------------------------

class RenderTest(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory(prefix='test_render_')
        self.addCleanup(self.directory.cleanup)
        self.folder = self.directory.name

    def path(self, *names):
        return os.path.join(self.folder, *names)

    @staticmethod
    def environment(**changes):
        env = dict(os.environ, LIBGL_ALWAYS_SOFTWARE='1', LC_ALL='C')
        env.pop('DISPLAY', None)
        env.update(changes)
        return env

    def render(self, *arguments, **environment):
        """Status, standard output (bytes), lines of standard error."""
        run = subprocess.run([RENDER, *arguments], cwd=self.folder, env=self.environment(**environment),
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=300)
        return run.returncode, run.stdout, run.stderr.decode().splitlines()

    def done(self, *arguments, **environment):
        """Renders successfully; gives standard output and the lines."""
        status, output, errors = self.render(*arguments, **environment)
        self.assertEqual(status, 0, errors)
        return output, errors

    def fails(self, status, line, *arguments, **environment):
        """The last line of standard error, which is the only one that says "Error"."""
        got, output, errors = self.render(*arguments, **environment)
        self.assertEqual((got, output, errors[-1:]), (status, b'', [line]))
        self.assertEqual([e for e in errors[:-1] if 'Error' in e], [])

    def names(self, folder):
        return sorted(os.listdir(self.path(folder)))

    def frames(self, folder):
        """The bytes of every file of a folder."""
        result = {}
        for name in self.names(folder):
            with open(self.path(folder, name), 'rb') as file:
                result[name] = file.read()
        return result

    def still(self, name, *arguments, **environment):
        self.done('-y', '--at', '0', '-o', name, *arguments, **environment)
        return Picture(self.path(name))


class CommandLineTest(RenderTest):
    def misuse(self, problem, *arguments):
        status, output, errors = self.render(*arguments)
        self.assertEqual((status, output, errors),
                         (2, b'', ['Error: %s. "brimlow-render --help" tells more.' % problem]))

    def test_help_and_version_go_to_standard_output(self):
        output, errors = self.done('--help')
        self.assertEqual(errors, [])
        self.assertEqual(self.done('-h'), (output, []))
        self.assertTrue(output.startswith(b'brimlow-render: '))
        self.assertTrue(all(len(line) <= 80 for line in output.decode().splitlines()))
        for version in ('--version', '-V'):
            self.assertEqual(self.done(version), (b'brimlow-render 1.0\n', []))

    def test_the_manual_page_has_the_options_of_the_help(self):
        with open(MAN_PAGE, encoding='utf-8') as file:
            page = file.read().replace('\\-', '-')
        pattern = r'(?<![\w-])--?[A-Za-z][a-z-]*'
        in_help = set(re.findall(r'^  (-\w|--[a-z-]+)(?:, (--[a-z-]+))?', self.done('--help')[0].decode(), re.M))
        in_help = {name for pair in in_help for name in pair if name}
        headed = set(re.findall(pattern, '\n'.join(l for l in page.splitlines() if l.startswith('.B'))))
        self.assertGreater(len(in_help), 20)
        self.assertEqual(in_help, headed)

    def test_every_misuse_is_one_line(self):
        size = '--size takes a size like 1280x720, each side 1 to 65535'
        time_like = ' takes a time like 12.5, 1:02.25, 750f or 40%'
        fps = '--fps takes frames a second like 60, 29.97 or 30000/1001, from 1/1000 to 1000'
        caps = ('--caps takes a list of no-vbo, no-pbo, no-npot, no-compression, no-combine4, no-combine3 and '
                'units=1 to units=4')
        name = '-o takes a name like show.mp4, still.png, frames/%05d.png or -'
        ending = 'the name of an output ends in .png, .mp4, .mkv or .webm, or is -; "%s" does not'
        place = ('the name of pictures has one place for their numbers, like frames/%%05d.png (%%%% is a per cent sign), '
                 'not "%s"')
        words = '--ffmpeg takes words for ffmpeg in one argument, like --ffmpeg "-preset slow"'
        compare = '--compare goes without %s: it renders the frames of its pictures again, at their size'
        loading = '--loading goes without %s: it shows the loading screen, not the production'
        own_names = ('two outputs have the same name: give -o, --contact-sheet, --times and --commands names of their '
                     'own')
        for problem, arguments in (
                ('nothing to do: give -o, --contact-sheet, --shots, --flashes, --times, --commands or --compare', []),
                ('unknown option --comands (did you mean --commands?)', ['--comands', 'a']),
                ('--commands takes the name of a file, or -, not ""', ['--commands', '']),
                ('--commands takes the name of a file, or -, and -o is an option', ['--commands', '-o', 'a.mp4']),
                ('unknown option --sise (did you mean --size?)', ['--sise', '3']),
                ('unknown option --szie (did you mean --size?)', ['--szie', '3']),
                ('unknown option --flash (did you mean --flashes?)', ['--flash']),
                ('unknown option --ouput (did you mean --output?)', ['--ouput=a.mp4']),
                ('unknown option -size (did you mean --size?)', ['-size', '640x480']),
                ('unknown option -help (did you mean --help?)', ['-help']),
                ('unknown option --wobble', ['--wobble']),
                ('unknown option --\\x1B[31m', ['--\x1b[31m']),
                ('unknown option -x', ['-x']),
                (size + ', and --fps is an option', ['--size', '--fps', '25']),
                (name + ', and --size=1x1 is an option', ['-o', '--size=1x1']),
                (name + ', and -V is an option', ['-o', '-V']),
                ('write -o a.png, without the equals sign', ['-o=a.png']),
                ('-h is given twice', ['-hh']),
                ('-y replaces files that exist, and -n keeps them: give one of the two', ['-yn', '-o', 'a.mp4']),
                (size, ['--size']),
                (size + ', not "640"', ['--size', '640']),
                (size + ', not "0x480"', ['--size', '0x480']),
                (size + ', not "640x70000"', ['--size', '640x70000']),
                (size + ', not "-1x5"', ['--size=-1x5']),
                (size + ', not "640x480x2"', ['--size=640x480x2']),
                ('--aspect takes auto, 4:3, 16:9 or 16:10, not "5:4"', ['--aspect', '5:4']),
                ('--path takes glsl or fixed, not "GLSL"', ['--path', 'GLSL']),
                ('--samples takes a number from 0 to 64, not "65"', ['--samples', '65']),
                ('--samples takes a number from 0 to 64, not "two"', ['--samples', 'two']),
                (caps + ', not "no-vbo,no-luck"', ['--caps', 'no-vbo,no-luck']),
                (caps + ', not "units=0"', ['--caps', 'units=0']),
                (caps + ', not "units=5"', ['--caps', 'units=5']),
                (caps + ', not ""', ['--caps', '']),
                ('--seed takes a number from 0 to 4294967295, not "4294967296"', ['--seed', '4294967296']),
                ('--tile takes a number of pixels from 16 to 65535, not "15"', ['--tile', '15']),
                (fps + ', not "0"', ['--fps', '0']),
                (fps + ', not "1001"', ['--fps', '1001']),
                (fps + ', not "25/0"', ['--fps', '25/0']),
                (fps + ', not "29.9701"', ['--fps', '29.9701']),
                ('--from' + time_like + ', not "soon"', ['--from', 'soon']),
                ('--from' + time_like + ', not "1:60"', ['--from', '1:60']),
                ('--from' + time_like + ', not "1:5"', ['--from', '1:5']),
                ('--to' + time_like + ', not "101%"', ['--to', '101%']),
                ('--to' + time_like + ', not "1.2345678"', ['--to', '1.2345678']),
                ('--to' + time_like + ', not "2.5f"', ['--to', '2.5f']),
                ('--at takes up to 1000 times like 12.5, 1:02.25, 750f or 40%, with commas between them, not "1,,2"',
                 ['--at', '1,,2']),
                ('--loading takes per cents from 0 to 100 with commas between them, not "101"', ['--loading', '101']),
                (name + ', not ""', ['-o', '']),
                (name, ['-o']),
                (name.replace('-o', '--output', 1), ['--output']),
                (ending % 'show.avi', ['-o', 'show.avi']),
                (ending % '.png', ['-o', '.png']),
                (ending % 'utput', ['-output', 'a.mp4']),
                (place % '%d-%d.png', ['-o', '%d-%d.png']),
                (place % '%s.png', ['-o', '%s.png']),
                ('--png-level takes a number from 0 (not packed) to 12 (the smallest), not "13"',
                 ['-o', '%d.png', '--png-level', '13']),
                ('--png-level takes a number from 0 (not packed) to 12 (the smallest), not "-1"',
                 ['-o', '%d.png', '--png-level=-1']),
                ('--png-level is for pictures, like -o frames/%05d.png', ['-o', 'a.mkv', '--png-level', '1']),
                ('--png-level is for pictures, like -o frames/%05d.png', ['--shots', 's', '--at', '1', '--png-level', '1']),
                ('--crf takes a number from 0 (the best) to 63, not "64"', ['-o', 'a.webm', '--crf', '64']),
                ('--crf of an .mp4 is at most 51, not 52', ['-o', 'a.mp4', '--crf', '52']),
                ('--crf is for .mp4 and .webm: an .mkv is without loss', ['-o', 'a.mkv', '--crf', '5']),
                ('--crf is for videos, like -o show.mp4', ['-o', '%d.png', '--crf', '5']),
                ('--ffmpeg is for videos, like -o show.mp4', ['-o', '-', '--ffmpeg', '-n']),
                (words + ', not "\'"', ['-o', 'a.mp4', '--ffmpeg', "'"]),
                (words, ['-o', 'a.mp4', '--ffmpeg']),
                ('--size 65535x65535 is too large for a .png, which has at most 18900 x 18900 pixels or as many in '
                 'another shape', ['--at', '1', '-o', 'a.png', '--size', '65535x65535']),
                ('-v tells more, and -q less: give one of the two', ['-vqo', 'a.mp4']),
                ('--contact-sheet takes the name of a .png file, not "sheet.jpg"', ['--contact-sheet', 'sheet.jpg']),
                ('--window takes no value', ['--window=yes']),
                ('--flashes is given twice', ['--flashes', '--flashes']),
                ('-o is given twice', ['--output', 'a.mp4', '-o', 'b.mp4']),
                ('--output is given twice', ['-oa.mp4', '--output', 'b.mp4']),
                ('one pack at a time: "a.dpk" and "b.dpk" are two', ['--flashes', 'a.dpk', 'b.dpk']),
                ('the name of the pack is empty', ['--flashes', '']),
                ('"show.mp4" stands where the pack does: write -o show.mp4', ['show.mp4']),
                (compare % '--flashes', ['--compare', 'd', '--flashes']),
                (compare % '--commands', ['--compare', 'd', '--commands', '-']),
                (compare % '--at', ['--compare', 'd', '--at', '1']),
                (compare % '--loading', ['--compare', 'd', '--loading', '1']),
                (compare % '--to', ['--compare', 'd', '--to', '1']),
                (compare % '-o', ['--compare', 'd', '-o', 'a.mp4']),
                (compare % '--size', ['--compare', 'd', *SMALL]),
                (loading % '--times', ['--loading', '5', '--times', 't.json']),
                (loading % '--commands', ['--loading', '5', '-o', 'a.png', '--commands', 'c.txt']),
                (loading % '--to', ['--loading', '5', '-o', 'a.png', '--to', '3']),
                (loading % '--from', ['--loading', '5', '-o', 'a.png', '--from', '3', '--to', '4']),
                (loading % '--at', ['--loading', '5', '-o', 'a.png', '--at', '1']),
                (loading % '--flashes', ['--loading', '5', '-o', 'a.png', '--flashes']),
                (loading % '--contact-sheet', ['--loading', '5', '--contact-sheet', 'a.png']),
                ('--loading needs -o, like --loading 70 -o loading.png', ['--loading', '5']),
                ('--at goes without --from: it names each of its moments', ['--at', '1', '-o', 'a.png', '--from', '1']),
                ('--at goes without --to: it names each of its moments', ['--at', '1', '--times', 't', '--to', '1']),
                ('--at makes stills, which go to .png files, not to "a.mp4"', ['--at', '1', '-o', 'a.mp4']),
                ('--loading makes stills, which go to .png files, not to "-"', ['--loading', '1', '-o', '-']),
                ('--flashes needs moving pictures, so it goes without --at; --from and --to choose a part',
                 ['--at', '1', '--flashes']),
                ('--shots needs --at, like --at 12.5 --shots d', ['--shots', 'd']),
                ('--shots needs a --size of 16:9, like 1920x1080', ['--shots', 'd', '--at', '1', '--size', '640x480']),
                (own_names, ['--at', '1', '-o', 'a.png', '--contact-sheet', './a.png']),
                (own_names, ['--commands', 'd/../a', '--times', 'a']),
                (own_names, ['-o', '-', '--commands', '-']),
                ('"d/a.png" is one picture: say which with --at, like --at 12.5, or name many, like d/a-%05d.png',
                 ['-o', 'd/a.png']),
                ('"a.png" is one picture, and 2 are asked for: give a name with a place for numbers, like a-%05d.png',
                 ['-o', 'a.png', '--at', '1,2'])):
            with self.subTest(arguments=arguments):
                self.misuse(problem, *arguments)
        self.assertEqual(os.listdir(self.folder), [])

    def test_moments_outside_of_the_production_are_misuse(self):
        two_colours().write(self.folder)
        ten = ('--fps', '10', *SMALL)
        self.fails(2, 'Error: --from (frame 21, 2.10 s) is behind the end: the last frame is 20 (2.00 s).',
                   *ten, '--from', '2.1', '-o', '%d.png')
        between = ('Error: there is no frame between --from and --to: the one begins with frame %s, the other ends before '
                   'frame %s.')
        self.fails(2, between % ('10 (1.00 s)', '10 (1.00 s)'), *ten, '--from', '1', '--to', '1', '-o', '%d.png')
        self.fails(2, between % ('15 (1.50 s)', '5 (0.50 s)'), *ten, '--from', '1.5', '--to', '5f', '-o', '%d.png')
        self.fails(2, 'Error: frame 21 (2.10 s) is behind the end: the last one is 20 (2.00 s).',
                   *ten, '--at', '0,2.1', '-o', '%d.png')

    def test_documents_that_cannot_be_played_end_with_the_players_line(self):
        sheet = ('--contact-sheet', 'a.png')
        show = shapes()
        show.entries['image1.png'] = b'no picture'
        show.write(self.folder)
        self.fails(1, 'Error: demo.xmlz: section 7 (image textures), record 1: cannot decode "image1.png".',
                   *sheet, 'demo.dpk')
        with open(self.path('cut.dpk'), 'wb') as file:
            file.write(pack_bytes({'demo.xmlz': in_envelope(b'<production/>')}))
        status, output, errors = self.render(*sheet, 'cut.dpk')
        self.assertEqual((status, output), (1, b''))
        self.assertTrue(errors[-1].startswith('Error: demo.xmlz: '), errors)
        with open(self.path('empty.dpk'), 'wb') as file:
            file.write(pack_bytes({'other': b'x'}))
        self.fails(1, 'Error: empty.dpk has no entry demo.xmlz, so there is nothing to show.', *sheet, 'empty.dpk')
        Production().write(self.folder, 'still.dpk')
        self.fails(1, 'Error: the production shows nothing.', *sheet, 'still.dpk')

    def test_what_is_no_pack_says_so_and_is_not_waited_for(self):
        sheet = ('--contact-sheet', 'a.png')
        no_file = 'a pack is a file, and this is a pipe or a device; "-" takes one from standard input.'
        no_pack = ' is no pack: a pack begins with the letters DP and holds a demo.xmlz'
        self.fails(1, 'Error: this folder has no pack, which is a file whose name ends in "dpk": name one behind the '
                   'options.', *sheet)
        self.fails(1, 'Error: cannot open missing.dpk: No such file or directory.', *sheet, 'missing.dpk')
        self.fails(1, 'Error: cannot open \\x1B[31m\\x0A.dpk: No such file or directory.', *sheet, '\x1b[31m\n.dpk')
        os.mkdir(self.path('folder.dpk'))
        self.fails(1, 'Error: folder.dpk/ has no pack, which is a file whose name ends in "dpk".', *sheet, 'folder.dpk')
        self.fails(1, 'Error: cannot open folder.dpk: it is a folder.', *sheet)
        os.mkfifo(self.path('pipe.dpk'))
        self.fails(1, 'Error: cannot open pipe.dpk: ' + no_file, *sheet, 'pipe.dpk')
        self.fails(1, 'Error: cannot open /dev/zero: ' + no_file, *sheet, '/dev/zero')
        for name, content, hint in (('text.dpk', b'hello', ''), ('none.dpk', b'', ''), ('zeros.dpk', bytes(200), ''),
                                    ('show.mp4', b'x' * 5000, '; an output is named behind -o')):
            with open(self.path(name), 'wb') as file:
                file.write(content)
            self.fails(1, 'Error: ' + name + no_pack + hint + '.', *sheet, name)

    def test_a_pack_with_other_first_bytes_is_played_as_the_player_does(self):
        two_colours().write(self.folder)
        with open(self.path('demo.dpk'), 'r+b') as file:
            file.write(b'XX\2')
        self.done('--at', '0', '-o', 'a.png', *SMALL)

    def test_a_folder_is_its_first_pack_with_the_music_there(self):
        for show, where in (('one', 'tone.ogg'), ('two', 'music/tone.ogg')):
            os.makedirs(self.path(show, 'music'))
            two_colours(10, 'tone.ogg').write(self.path(show), 'any-dpk')
            shutil.copy(TONE, self.path(show, where))
            for name in (show, show + '/'):
                _, errors = self.done('-y', '-o', show + '.mkv', *SMALL, name)
                self.assertEqual([line for line in errors if 'music' in line], [])

    def test_a_pack_comes_from_standard_input(self):
        two_colours(100, 'tone.ogg').write(self.folder)
        shutil.copy(TONE, self.path('tone.ogg'))
        self.done('--at', '0,1.5', '-o', 'file/%d.png', *SMALL)
        with open(self.path('demo.dpk'), 'rb') as file:
            pack = file.read()
        os.remove(self.path('demo.dpk'))
        before = os.listdir(tempfile.gettempdir())
        for name in ('stream/%d.png', '--times=t.json'):
            run = subprocess.run([RENDER, *SMALL, *(['--at', '0,1.5', '-o'] if name[0] == 's' else []), name, '-'],
                                 cwd=self.folder, env=self.environment(), input=pack, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, check=True, timeout=60)
            self.assertEqual([e for e in run.stderr.decode().splitlines() if 'Warning' in e], [])  # the music is found
        self.assertEqual(self.frames('stream'), self.frames('file'))
        self.assertEqual([n for n in os.listdir(tempfile.gettempdir()) if n not in before and 'brimlow-render-' in n],
                         [])
        self.fails(1, 'Error: standard input is no pack: a pack begins with the letters DP and holds a demo.xmlz.',
                   '--flashes', '-')
        self.fails(1, 'Error: cannot keep the pack of standard input in /nonexistent: No such file or directory.',
                   '--flashes', '-', TMPDIR='/nonexistent')

    def test_without_opengl_the_status_is_3(self):
        shapes().write(self.folder)
        self.fails(3, 'Error: this machine offers no OpenGL.', '--at', '0', '-o', 'a.png',
                   __EGL_VENDOR_LIBRARY_FILENAMES='/nonexistent')
        self.fails(3, 'Error: the driver has at most 4 samples a pixel, not the 64 of --samples.', '--at', '0', '-o', 'a.png',
                   '--samples', '64')
        status, output, errors = self.render('--at', '0', '-o', 'a.png', '--window')
        self.assertEqual((status, output, len(errors)), (3, b'', 1))
        self.assertRegex(errors[0], '^Error: there is no display: .*')


class CompletionTest(RenderTest):
    """What bash offers for a line that ends at the cursor."""
    SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'docs', 'completion',
                          'brimlow-render.bash')

    def offered(self, line):
        run = subprocess.run(['bash', '-uc', 'source "$0"; COMP_LINE=$1 COMP_POINT=${#1}; _brimlow_render; '
                              'printf "%s\\n" "${COMPREPLY[@]}"', self.SCRIPT, line], cwd=self.folder,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=True, timeout=60)
        self.assertEqual(run.stderr, b'')
        return sorted(run.stdout.decode().split())

    def test_names_of_options(self):
        self.assertEqual(self.offered('brimlow-render --s'), ['--samples', '--seed', '--shots', '--size'])
        self.assertEqual(self.offered('brimlow-render --flashes --ver'), ['--verbose', '--version'])
        in_help = set(re.findall('--[a-z-]+', ' '.join(re.findall('^  .{23}', self.done('--help')[0].decode(), re.M))))
        self.assertEqual(set(self.offered('build/native/brimlow-render -')), in_help)
        self.assertEqual(self.offered('brimlow-render --wobble'), [])

    def test_values_that_are_words(self):
        self.assertEqual(self.offered('brimlow-render --path '), ['fixed', 'glsl'])
        self.assertEqual(self.offered('brimlow-render --path=g'), ['glsl'])
        self.assertEqual(self.offered('brimlow-render demo.dpk --aspect 4'), ['4:3'])
        # Bash replaces what stands behind the last colon or equals sign.
        self.assertEqual(self.offered('brimlow-render --aspect 16:'), ['10', '9'])
        self.assertEqual(self.offered('brimlow-render --aspect=16:1'), ['10'])
        self.assertEqual(self.offered('brimlow-render --caps no-vbo,no-c'),
                         ['no-vbo,no-combine3', 'no-vbo,no-combine4', 'no-vbo,no-compression'])
        self.assertEqual(self.offered('brimlow-render --caps no-vbo,units='), ['1', '2', '3', '4'])
        self.assertEqual(self.offered('brimlow-render --size '), [])

    def test_files_are_those_that_suit(self):
        os.makedirs(self.path('shows.dpk'))
        os.mkdir(self.path('kept'))
        for name in ('demo.dpk', 'sheet.png', 'times.json', 'shows.dpk/a.dpk'):
            with open(self.path(name), 'w'):
                pass
        packs, everything = ['demo.dpk', 'kept', 'shows.dpk'], ['demo.dpk', 'kept', 'sheet.png', 'shows.dpk', 'times.json']
        for line, found in (('', packs), ('--flashes ', packs), ('-y d', ['demo.dpk']), ('shows.dpk/', ['shows.dpk/a.dpk']),
                            ('-o ', everything), ('--output=s', ['sheet.png', 'shows.dpk']), ('--times t', ['times.json']),
                            ('--contact-sheet ', ['kept', 'sheet.png', 'shows.dpk']),
                            ('--compare ', ['kept', 'shows.dpk']), ('--shots k', ['kept'])):
            with self.subTest(line=line):
                self.assertEqual(self.offered('brimlow-render ' + line), found)


class PictureTest(RenderTest):
    def test_the_first_pack_of_the_folder_is_taken_or_the_one_that_is_named(self):
        two_colours().write(self.folder)
        self.assertEqual(self.still('a.png', *SMALL).pixel(0, 0), (255, 0, 0))
        other = Production()
        other.colour(GREEN)
        os.mkdir(self.path('shows'))
        other.write(self.path('shows'), 'other.dpk')
        self.assertEqual(self.still('b.png', *SMALL, 'shows/other.dpk').pixel(0, 0), (0, 255, 0))
        self.assertEqual(self.still('c.png', *SMALL, '--', 'demo.dpk').pixel(0, 0), (255, 0, 0))

    def test_rows_come_from_the_top(self):
        show = Production()
        corner = show.scene(placed(show.mesh(quad()), show.material(BLUE)),
                            placed(show.mesh(quad(0, 0, 0.5, 0.25)), show.material(RED)))
        show.layer(corner)
        show.write(self.folder)
        picture = self.still('a.png', '--size', '64x40')
        self.assertEqual((picture.width, picture.height), (64, 40))
        self.assertEqual([picture.pixel(*p) for p in ((0, 0), (31, 9), (32, 0), (0, 10), (63, 39))],
                         [(255, 0, 0), (255, 0, 0), (0, 0, 255), (0, 0, 255), (0, 0, 255)])

    def test_frame_n_stands_at_n_divided_by_the_rate(self):
        two_colours().write(self.folder)
        self.done('-o', 'ten/%03d.png', '--fps', '10', *SMALL)
        self.assertEqual(self.names('ten'), ['%03d.png' % n for n in range(21)])
        colours = [Picture(self.path('ten', name)).pixel(5, 5) for name in self.names('ten')]
        self.assertEqual(colours, [(255, 0, 0)] * 10 + [(0, 0, 255)] * 11)
        # 30000/1001 a second: frame 29 at 0.9676 s is red, 30 at 1.001 s blue, 59 at 1.9687 s, 60 at 2.002 s.
        self.done('-o', 'ntsc/%d.png', '--fps', '30000/1001', '--from', '29f', '--to', '31f', *SMALL)
        self.assertEqual([Picture(self.path('ntsc', n)).pixel(0, 0) for n in ('29.png', '30.png')],
                         [(255, 0, 0), (0, 0, 255)])
        exact = self.done('-o', '-', '--fps', '30000/1001', *SMALL)[0]
        self.assertEqual(len(exact.split(b'FRAME\n')) - 1, 61)
        self.assertEqual(self.done('-o', '-', '--fps', '29.97', *SMALL)[0], exact)

    def test_segments_meet_without_a_gap_and_equal_the_whole(self):
        remembering().write(self.folder)
        options = ('--fps', '20', '--size', '64x48')
        self.done('-o', 'whole/%05d.png', *options)
        for first, last in (('0', '33.333%'), ('33.333%', '0.9'), ('0:00.9', '25f'), ('25f', '9:59')):
            self.done('-o', 'parts/%05d.png', '--from', first, '--to', last, *options)
        whole = self.frames('whole')
        self.assertEqual(len(whole), 31)
        self.assertGreater(len(set(whole.values())), 20)  # it moves
        self.assertEqual(self.frames('parts'), whole)

    def test_two_runs_give_the_same_bytes_on_both_paths(self):
        remembering().write(self.folder)
        for path in ('glsl', 'fixed'):
            for run in ('first', 'second'):
                self.done('-o', path + run + '/%d.png', '--fps', '25', '--size', '64x48', '--path', path)
            self.assertEqual(self.frames(path + 'first'), self.frames(path + 'second'))

    def test_pictures_are_packed_as_hard_as_is_asked_for(self):
        shapes().write(self.folder)
        sizes, pixels = [], []
        for level in (0, 1, 9):
            self.done('-o', '%d-%%d.png' % level, '--at', '5f', '--fps', '10', '--png-level', str(level),
                      '--size', '160x120')
            sizes.append(os.path.getsize(self.path('%d-5.png' % level)))
            pixels.append(Picture(self.path('%d-5.png' % level)).rgb)
        self.assertEqual(sizes, sorted(sizes, reverse=True))
        self.assertGreater(sizes[0], 2 * sizes[1])
        self.assertEqual(pixels, 3 * pixels[:1])

    def test_stills_are_the_frames_that_are_on_the_screen(self):
        remembering().write(self.folder)
        options = ('--fps', '20', '--size', '64x48')
        self.done('-o', 'whole/%05d.png', *options)
        self.done('-o', 'stills/%05d.png', '--at', '1.049999,0:00.1,50%,3f,3f', *options)
        whole = self.frames('whole')
        wanted = ['%05d.png' % n for n in (2, 3, 15, 20)]
        self.assertEqual(self.frames('stills'), {name: whole[name] for name in wanted})
        self.done('-o', 'last/%05d.png', '--at', '100%', *options)
        self.assertEqual(self.frames('last'), {'00030.png': whole['00030.png']})
        self.done('-o', '100%%.png', '--at', '3f', *options)
        with open(self.path('100%.png'), 'rb') as file:
            self.assertEqual(file.read(), whole['00003.png'])

    def test_pictures_say_which_driver_made_them(self):
        shapes().write(self.folder)
        _, errors = self.done('-v', '--at', '0', '-o', 'a.png', *SMALL)
        self.assertEqual(Picture(self.path('a.png')).chunks[b'tEXt'], b'Driver\0' + errors[0].encode())

    def test_frames_before_are_played_even_where_old_pictures_show_through(self):
        show = Production()
        show.colour(RED, 20)
        show.colour(GREEN, 80, space_before=0, track=1)
        show.sections[14][0].children[1].attributes['id'] = 0  # the second layer draws nothing ...
        show.layer(show.scene(placed(show.mesh(quad(0.5, 0, 1, 1)), show.material(BLUE))), 100, track=2)
        show.write(self.folder)
        options = ('--fps', '10', *SMALL)
        self.done('-o', 'whole/%d.png', *options)
        self.done('-o', 'one/%d.png', '--at', '0.7', *options)
        with open(self.path('whole', '7.png'), 'rb') as file:
            self.assertEqual(self.frames('one'), {'7.png': file.read()})

    def test_frames_before_are_played_for_what_they_draw_into_textures(self):
        out_of_the_past().write(self.folder)
        options = ('--fps', '20', *SMALL)
        self.done('-o', 'whole/%d.png', *options)
        self.done('-o', 'some/%d.png', '--at', '0.4,1.5', *options)
        whole = self.frames('whole')
        self.assertEqual(self.frames('some'), {name: whole[name] for name in ('8.png', '30.png')})
        self.assertEqual(Picture(self.path('some', '30.png')).pixel(16, 12)[0], 51)  # the texture is seen
        self.assertGreater(Picture(self.path('some', '30.png')).pixel(16, 12)[1], 230)  # as it was at 1 s

    def test_aspect_is_that_of_the_size_or_another(self):
        shapes().write(self.folder)
        pictures = {shape: self.still(shape.replace(':', '-') + '.png', '--size', '64x48', '--aspect', shape)
                    for shape in ('auto', '4:3', '16:9', '16:10')}
        self.assertEqual(pictures['auto'].rgb, pictures['4:3'].rgb)
        self.assertEqual(len({p.rgb for p in pictures.values()}), 3)

    def test_samples_smooth_the_edges(self):
        show = Production()
        show.layer(show.scene(placed(show.mesh(quad(-2, -2, 2, 2, -10)), show.material(WHITE), turned=(0, 0, 10))),
                   fov=60)
        show.write(self.folder)
        hard = self.still('hard.png', '--size', '64x48')
        soft = self.still('soft.png', '--size', '64x48', '--samples', '4')
        self.assertEqual(set(hard.rgb), {0, 255})
        self.assertTrue(set(soft.rgb) - {0, 255})

    def test_paths_and_lesser_cards_are_reported_as_the_player_does(self):
        shapes().write(self.folder)
        full = ['VBO support detected.', 'PBO support detected.', 'NPOT texture support detected.',
                'Texture compression support detected.']

        def report(*arguments):
            _, errors = self.done('-yv', '--at', '0', '-o', 'a.png', *SMALL, *arguments)
            rules = [i for i, line in enumerate(errors) if line == '=' * 74]
            return errors[rules[0] + 1:rules[1]]

        self.assertEqual(report(), full + ['Using GLSL shaders.'])
        fixed = report('--path', 'fixed')
        self.assertRegex(fixed[4], r'^Using 4 texture units( \+ (NV|ATI)_texture_env_combine[34]\.|\.)$')
        lesser = report('--path=fixed', '--caps=no-vbo,no-pbo,no-npot,no-compression,no-combine4,no-combine3,units=2')
        self.assertEqual(lesser, ['No VBO support.', 'No PBO support.', 'No NPOT texture support.',
                                  'No texture compression support.', 'Using 2 texture units.'])
        for cap, place in (('no-vbo', 0), ('no-pbo', 1), ('no-npot', 2), ('no-compression', 3)):
            changed = [i for i in range(4) if report('--caps', cap)[i] != full[i]]
            self.assertEqual(changed, [place], cap)

    def test_fewer_texture_units_change_the_picture(self):
        show = Production()
        red, blue = (show.reference(1, show.image(png(2, 2, c))) for c in ((255, 0, 0), (0, 0, 255)))
        show.layer(show.scene(placed(show.mesh(quad()), show.material(WHITE, (red, blue)))))
        show.write(self.folder)
        both = self.still('both.png', '--path', 'fixed', *SMALL)
        one = self.still('one.png', '--path', 'fixed', '--caps', 'units=1', *SMALL)
        self.assertNotEqual(both.rgb, one.rgb)

    def test_the_seed_moves_random_things_and_1_is_the_players(self):
        show = Production()
        lake = show.effect(LAKE, running(show))
        light = show.values(0.2, 0.2, 0.2, 0.9, 0.9, 0.9, 10, 20, 0)
        water = show.material((0.3, 0.5, 0.9), lighting=1, light1=light)
        show.layer(show.scene(placed(lake, water, GENMESH, at=(-15, -6, -30))), length=150, fov=60, far=200)
        show.write(self.folder)

        def picture(name, *arguments):
            self.done('--at', '1', '-o', name, '--size', '64x48', *arguments)
            return Picture(self.path(name)).rgb

        plain = picture('plain.png')
        self.assertEqual(picture('one.png', '--seed', '1'), plain)
        self.assertNotEqual(picture('two.png', '--seed', '2'), plain)

    def test_the_loading_screen_shows_its_first_second(self):
        show = two_colours()
        show.loading = two_colours(40)
        show.loading.prefix = 'loading_'
        loading = Production('loading_')
        loading.colour(GREEN, 49)
        loading.colour(BLUE, 52)
        show.loading = loading
        show.write(self.folder)
        _, errors = self.done('--loading', '75,0,0', '-o', 'l/%d.png', *SMALL)
        self.assertEqual(errors, ['Wrote l/0.png to l/75.png (2 pictures) from demo.dpk.'])
        self.assertEqual(self.names('l'), ['0.png', '75.png'])
        self.assertEqual([Picture(self.path('l', n)).pixel(9, 9) for n in self.names('l')], [(0, 255, 0), (0, 0, 255)])
        self.done('--loading', '100%', '-o', 'end.png', *SMALL)
        self.assertEqual(Picture(self.path('end.png')).pixel(9, 9), (0, 0, 255))
        two_colours().write(self.folder, 'plain.dpk')
        self.fails(1, 'Error: the pack has no loading screen.', '--loading', '5', '-o', 'a.png', 'plain.dpk')

    def test_a_loading_screen_that_draws_into_textures_has_no_tiles(self):
        show = two_colours()
        show.loading = Production('loading_')
        image = show.loading.image(png(16, 16, (0, 0, 0)))
        show.loading.colour(GREEN, 100, mode=1, rtex=image)
        show.write(self.folder)
        self.done('--loading', '5', '-o', 'a.png', *SMALL)
        self.fails(1, 'Error: the loading screen draws into textures, which cannot be done in tiles.',
                   '--loading', '5', '-o', 'b.png', '--tile', '16', *SMALL)

    def test_files_that_cannot_be_written_are_told(self):
        two_colours().write(self.folder)
        with open(self.path('file'), 'w'):
            pass
        self.fails(1, 'Error: cannot make the folder file: Not a directory.', *SMALL, '-o', 'file/%d.png')
        os.mkdir(self.path('0.png'))
        self.fails(1, 'Error: cannot write "0.png": Is a directory.', *SMALL, '--fps', '10', '-o', '%d.png')


class WordsTest(RenderTest):
    """What is said, and where."""

    def test_the_last_line_names_what_was_written_and_from_which_pack(self):
        two_colours().write(self.folder)
        os.mkdir(self.path('p'))
        shutil.copy(self.path('demo.dpk'), self.path('p', 'x.dpk'))
        ten = ('--fps', '10', '-y', *SMALL)
        for line, arguments in (
                ('Wrote a.png from demo.dpk.', ('--at', '0', '-o', 'a.png')),
                ('Wrote 3.png from p/x.dpk.', ('--at', '3f', '-o', '%d.png', 'p')),
                ('Wrote f/05.png to f/14.png (10 pictures) from demo.dpk.',
                 ('--from', '5f', '--to', '15f', '-o', 'f/%02d.png')),
                ('Wrote a.mp4 (21 frames, 2.10 s, without sound), s.png and t.json from demo.dpk.',
                 ('-o', 'a.mp4', '--contact-sheet', 's.png', '--times', 't.json')),
                ('Looked at 21 frames of demo.dpk, and wrote no file.', ('--flashes',))):
            self.assertEqual(self.done(*ten, *arguments)[1][-1], line)

    def test_the_frames_of_a_segment_are_counted_apart_from_those_before(self):
        two_colours().write(self.folder)
        ten = ('--fps', '10', '-y', *SMALL)
        for count, arguments in (('21 frames in ', ()), ('5 frames and 10 unseen ones in ', ('--from', '10f', '--to', '15f')),
                                 ('1 frame and 1 unseen one in ', ('--at', '1f'))):
            _, errors = self.done(*ten, '-o', '%d.png', *arguments)
            self.assertTrue(errors[-2].startswith(count), errors)

    def test_the_driver_and_its_capabilities_are_told_with_v_only(self):
        two_colours().write(self.folder)
        still = ('--at', '0', '-yo', 'a.png', *SMALL)
        _, plain = self.done(*still)
        self.assertEqual(len(plain), 2, plain)
        for more in ('-v', '--verbose'):
            _, lines = self.done(*still, more)
            self.assertIn('Using GLSL shaders.', lines)
            self.assertIn('OpenGL', lines[0])
            self.assertEqual(lines[-1], plain[-1])

    def test_quiet_tells_problems_only(self):
        two_colours(100, 'gone.ogg').write(self.folder)
        warning = 'Warning: the music gone.ogg is neither in this folder nor in music/.'
        for more in ('-q', '--quiet'):
            self.assertEqual(self.done(more, '-yo', 'a.mp4', '--size', '33x25'), (b'', [warning]))
        _, loud = self.done('-yo', 'a.mp4', '--size', '33x25')
        self.assertEqual((loud[1], len(loud)), (warning, 4))  # among what is told at the end
        os.mkdir(self.path('a.png'))
        status, output, errors = self.render('-q', '--at', '0', '-o', 'a.png', *SMALL)
        self.assertEqual((status, output, errors[-1]), (1, b'', 'Error: cannot write "a.png": Is a directory.'))

    def test_nothing_but_reports_and_pictures_comes_on_standard_output(self):
        flicker(100).write(self.folder)
        self.assertEqual(self.done('-o', '%d.png', '--fps', '10', *SMALL)[0], b'')
        status, stream, errors = self.render('-o', '-', '--flashes', '--fps', '50', *SMALL)
        self.assertEqual(status, 4)
        self.assertEqual(len(stream), stream.index(b'\n') + 1 + 51 * (6 + 32 * 24 * 3 // 2))
        self.assertIn('Flashes: more than three in a second (WCAG 2.3.1) at', errors)
        with open(self.path('demo.dpk'), 'rb') as file:  # of a pack that is cut the engine prints lines
            pack = file.read(60)
        with open(self.path('cut.dpk'), 'wb') as file:
            file.write(pack)
        damaged = 'Error: demo.xmlz: the document is damaged.'
        self.assertEqual(self.render('--flashes', 'cut.dpk'), (1, b'', [damaged]))
        status, output, errors = self.render('--flashes', '-v', 'cut.dpk')
        self.assertEqual((status, output, errors[-2:]), (1, b'', ['unexpected error', damaged]))

    def redirected(self, arguments, ending):
        run = subprocess.run(['sh', '-c', '"$0" "$@" ' + ending, RENDER, *arguments], cwd=self.folder,
                             env=self.environment(), stderr=subprocess.PIPE, stdout=subprocess.PIPE, timeout=60,
                             check=False)
        return run.returncode, run.stderr.decode().splitlines()[-1:]

    def test_standard_output_that_cannot_be_written_ends_with_a_line(self):
        two_colours().write(self.folder)
        self.done('--at', '0', '-o', 'kept/%d.png', *SMALL)
        for arguments in (['--help'], ['--version'], ['--flashes', *SMALL], ['--times', 't.json', *SMALL, '-y'],
                          ['--compare', 'kept'], ['-o', '-', '--fps', '2', *SMALL]):
            with self.subTest(arguments=arguments):
                for ending, reason in (('>/dev/full', 'No space left on device'), ('>&-', 'Bad file descriptor')):
                    status, last = self.redirected(arguments, ending)
                    self.assertEqual(status, 1)
                    self.assertEqual(last, ['Error: cannot write to standard output: %s.' % reason])

    def test_closed_descriptors_are_not_taken_for_files(self):
        two_colours().write(self.folder)
        self.assertEqual(self.redirected(['-q', '-o', 'a.mp4', '--fps', '10', *SMALL], '<&- >&- 2>&-'), (0, []))
        self.assertEqual(self.redirected(['--flashes', '-'], '<&-'),
                         (1, ['Error: cannot read standard input: Bad file descriptor.']))


class FileTest(RenderTest):
    """What becomes of files that are there, and of files that are not finished."""
    OUTPUTS = (('a.mkv', ('-o', 'a.mkv')), ('a.png', ('--at', '0', '-o', 'a.png')), ('1.png', ('-o', '%d.png')),
               ('a.json', ('--times', 'a.json')), ('sheet.png', ('--contact-sheet', 'sheet.png')),
               ('./x-160x90.png', ('--shots', '.', '--at', '0', '--size', '160x90')),
               ('5.png', ('--loading', '5,7', '-o', '%d.png')))

    def put(self, name, content=b'mine'):
        with open(self.path(name), 'wb') as file:
            file.write(content)

    def content(self, name):
        with open(self.path(name), 'rb') as file:
            return file.read()

    def show(self):
        show = two_colours()
        show.loading = Production('loading_')
        show.loading.colour(GREEN, 200)
        os.mkdir(self.path('p'))
        show.write(self.path('p'), 'x.dpk')
        return '--fps', '10', 'p/x.dpk'

    def test_what_exists_is_kept_unless_it_may_be_replaced(self):
        named = self.show()
        for name, options in self.OUTPUTS:
            options = (*(() if '--shots' in options else SMALL), *options, *named)
            for more in ((), ('-n',)):
                with self.subTest(name=name, more=more):
                    self.put(name)
                    self.fails(1, 'Error: %s exists; -y replaces what exists.' % name, *options, *more)
                    self.assertEqual(self.content(name), b'mine')
                    self.assertEqual(len(self.names('.')), 2)
            self.done('-y', *options)
            self.assertGreater(len(self.content(name)), 20)
            for made in self.names('.'):
                self.assertFalse(made.endswith('.part'))
                if made != 'p':
                    os.remove(self.path(made))

    def test_many_names_that_are_taken_are_counted(self):
        named = self.show()
        for number in (3, 4, 20):
            self.put('%d.png' % number)
        self.fails(1, 'Error: 3.png and 2 others exist; -y replaces what exists.', '-o', '%d.png', *SMALL, *named)
        self.done('-o', '%d.png', '--from', '5f', '--to', '20f', *SMALL, *named)
        self.assertEqual(self.content('20.png'), b'mine')

    def test_on_a_terminal_the_user_is_asked(self):
        named = self.show()
        command = [RENDER, '--at', '0', '-o', 'a.png', *SMALL, *named]
        for answer, status in ((b'n\n', 1), (b'\n', 1), (b'y\n', 0)):
            self.put('a.png')
            ours, theirs = os.openpty()
            run = subprocess.Popen(command, cwd=self.folder, env=self.environment(), stdin=theirs, stderr=theirs)
            os.close(theirs)
            said = b''
            while not said.endswith(b'[y/N] '):
                said += os.read(ours, 1000)
            self.assertEqual(said, b'a.png exists. Replace? [y/N] ')
            os.write(ours, answer)
            self.assertEqual(run.wait(60), status)
            self.assertEqual(self.content('a.png') == b'mine', status != 0)
            os.close(ours)
        self.put('a.png')
        ours, theirs = os.openpty()
        run = subprocess.run([*command, '-n'], cwd=self.folder, env=self.environment(), stdin=theirs, stderr=theirs,
                             timeout=60)
        self.assertEqual((run.returncode, self.content('a.png')), (1, b'mine'))
        os.close(theirs)
        os.close(ours)

    def test_ctrl_c_at_the_question_ends_the_program(self):
        named = self.show()
        self.put('0.png')
        ours, theirs = os.openpty()
        run = subprocess.Popen([RENDER, '--at', '0', '-o', '%d.png', *SMALL, *named], cwd=self.folder,
                               env=self.environment(), stdin=theirs, stderr=theirs)
        said = b''
        while not said.endswith(b'[y/N] '):
            said += os.read(ours, 1000)
        run.send_signal(signal.SIGINT)
        self.assertEqual(run.wait(60), -signal.SIGINT)
        os.close(theirs)
        os.close(ours)

    def test_a_file_that_may_not_be_written_is_not_replaced(self):
        named = self.show()
        self.put('a.mp4')
        os.chmod(self.path('a.mp4'), 0o444)
        os.chmod(self.folder, 0o777)
        program, somebody = RENDER, {}
        if os.geteuid() == 0:  # who may write everything; the other user may not look into our build folder
            elsewhere = tempfile.TemporaryDirectory(prefix='brimlow_')
            self.addCleanup(elsewhere.cleanup)
            os.chmod(elsewhere.name, 0o755)
            program, somebody = shutil.copy(RENDER, elsewhere.name), {'user': 65534}
        run = subprocess.run([program, '-yo', 'a.mp4', *SMALL, *named], cwd=self.folder, env=self.environment(),
                             stderr=subprocess.PIPE, timeout=60, check=False, **somebody)
        self.assertEqual((run.returncode, run.stderr.splitlines()[-1]),
                         (1, b'Error: cannot write "a.mp4": Permission denied.'))
        self.assertEqual((self.content('a.mp4'), self.names('.')), (b'mine', ['a.mp4', 'p']))

    def test_a_disk_that_is_full_fails_the_run(self):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_DFL)  # Python ignores it, a shell does not
            resource.setrlimit(resource.RLIMIT_FSIZE, (900, 900))

        named = self.show()
        show = Production()  # of noise, which becomes large files
        show.layer(show.scene(placed(show.mesh(quad()), show.material(WHITE, (show.reference(1, show.image(
            png(64, 64, os.urandom(64 * 64 * 3)))),)))), 200)
        show.write(self.path('p'), 'x.dpk')
        for name in ('a.mp4', 'a.mkv', 'a.webm', '%d.png'):
            with self.subTest(name=name):
                run = subprocess.run([RENDER, '-o', name, *SMALL, *named], cwd=self.folder, env=self.environment(),
                                     stderr=subprocess.PIPE, timeout=60, check=False, preexec_fn=limit)
                self.assertEqual(run.returncode, 1, run.stderr)
                self.assertIn(b'Error: ', run.stderr.splitlines()[-1])
                self.assertIn(b'File too large', run.stderr)
                self.assertEqual(self.names('.'), ['p'])

    def test_a_video_that_fails_leaves_the_old_one(self):
        named = self.show()
        self.put('a.mp4')
        self.put('ffmpeg', b'#!/bin/sh\nhead -c 100 >/dev/null\nexit 3\n')
        os.chmod(self.path('ffmpeg'), 0o700)
        status, _, errors = self.render('-yo', 'a.mp4', *SMALL, *named, PATH=self.folder + ':' + os.environ['PATH'])
        self.assertEqual((status, errors[-1]), (1, 'Error: ffmpeg could not make the video.'))
        self.assertEqual((self.content('a.mp4'), self.names('.')), (b'mine', ['a.mp4', 'ffmpeg', 'p']))

    def test_until_it_is_complete_a_video_stands_beside_the_old_one(self):
        two_colours(12000).write(self.folder)
        self.put('a.mkv')
        run = subprocess.Popen([RENDER, '-yo', 'a.mkv', '--size', '320x240'], cwd=self.folder, env=self.environment(),
                               stderr=subprocess.DEVNULL)
        try:
            end = time.monotonic() + 60
            while not [n for n in self.names('.') if re.fullmatch(r'a\.mkv\.%d-\d+\.part' % run.pid, n)]:
                self.assertLess(time.monotonic(), end)
                time.sleep(0.02)
            self.assertEqual(self.content('a.mkv'), b'mine')
        finally:
            run.send_signal(signal.SIGINT)
            run.wait(60)
        self.assertEqual([n for n in self.names('.') if n.endswith('.part')], [])

    def test_ctrl_c_before_the_first_picture_leaves_the_old_one(self):
        show = two_colours(12000)
        show.write(self.folder)
        self.put('a.mp4')
        run = subprocess.Popen([RENDER, '-yo', 'a.mp4', '--size', '320x240', '--from', '99%'], cwd=self.folder,
                               env=self.environment(), stderr=subprocess.DEVNULL)
        while not [n for n in self.names('.') if n.endswith('.part')]:
            time.sleep(0.01)
        run.send_signal(signal.SIGINT)
        self.assertEqual(run.wait(60), 130)
        self.assertEqual((self.content('a.mp4'), self.names('.')), (b'mine', ['a.mp4', 'demo.dpk']))


    def test_a_terminal_that_goes_away_ends_the_run_like_ctrl_c(self):
        two_colours(12000).write(self.folder)
        for begun, name in ((signal.SIG_DFL, 'a.mkv'), (signal.SIG_IGN, 'b.mkv')):
            run = subprocess.Popen([RENDER, '-o', name, '--size', '320x240', '--fps', '240'], cwd=self.folder,
                                   env=self.environment(), stderr=subprocess.DEVNULL,
                                   preexec_fn=lambda to=begun: signal.signal(signal.SIGHUP, to))
            while not [n for n in self.names('.') if n.endswith('.part')]:
                time.sleep(0.01)
            time.sleep(1)
            run.send_signal(signal.SIGHUP)
            if begun == signal.SIG_IGN:  # as nohup begins it
                with self.assertRaises(subprocess.TimeoutExpired):
                    run.wait(1)
                run.send_signal(signal.SIGINT)
            self.assertEqual(run.wait(60), 130)
            self.assertEqual([n for n in self.names('.') if n.endswith('.part')], [])


class TileTest(RenderTest):
    def test_a_picture_in_tiles_is_the_whole_picture(self):
        shapes().write(self.folder)
        for path in ('glsl', 'fixed'):
            whole = self.still('whole.png', '--size', '150x100', '--path', path)
            tiled = self.still('tiled.png', '--size', '150x100', '--path', path, '--tile', '41')
            count, most = whole.differences(tiled)
            self.assertLessEqual(count, len(whole.rgb) // 200, path)  # edges may round to the next pixel
            self.assertGreater(len(set(whole.rgb)), 10)
            self.assertLessEqual(sum(abs(a - b) for a, b in zip(whole.rgb, tiled.rgb)) / len(whole.rgb), 0.5)

    def test_effects_move_once_a_frame_in_tiles_too(self):
        remembering().write(self.folder)
        options = ('--at', '0.3,1.2', '--size', '120x90', '--fps', '20')
        self.done('-o', 'whole/%d.png', *options)
        self.done('-o', 'tiled/%d.png', '--tile', '50', *options)
        for name in self.names('whole'):
            whole, tiled = (Picture(self.path(folder, name)) for folder in ('whole', 'tiled'))
            count, _ = whole.differences(tiled)
            self.assertLess(count, len(whole.rgb) // 50, name)

    def test_tiles_begin_with_what_stood_before_the_frame(self):
        # A mesh before any material; a picture at two times, the first of which it shows already; a
        # first layer that keeps the view of the frame before.
        show = Production()
        wave = show.effect(1, show.function((0, 1000, 1)))
        bare = placed(wave, 0, GENMESH, at=(0, 0, 0), turned=(90, 0, 0), scaled=(.035, .035, -.035))
        surface = show.reference(DYNAMIC, show.dynamic_texture(0, *[show.function((1, 1000, 1, 0))] * 2))
        picture = show.material(textures=[(surface, 2)])
        left = placed(show.mesh(quad(0, 0, .5, .5)), picture)
        right = placed(show.mesh(quad(.5, .5, 1, 1)), picture)
        show.layer(show.scene(bare), 100)
        show.layer(show.scene(left), 100, mode=2)
        show.layer(show.scene(left), 100, track=2)
        show.layer(show.scene(right), 100, track=2, offset=50)
        show.layer(show.scene(right), 200, track=3, offset=90)
        show.write(self.folder)
        for path in ('glsl', 'fixed'):
            for at in ('0', '1.5'):
                options = ('--size', '96x64', '--path', path, '--at', at, '-yo')
                self.done(*options, 'whole.png')
                self.done(*options, 'tiled.png', '--tile', '32')
                whole, tiled = Picture(self.path('whole.png')), Picture(self.path('tiled.png'))
                count, _ = whole.differences(tiled)
                self.assertLess(count, len(whole.rgb) // 100, (path, at))
                self.assertGreater(len(set(whole.rgb)), 10)

    def test_sizes_above_the_drivers_limit_come_in_tiles(self):
        two_colours(10).write(self.folder)
        _, errors = self.done('--at', '0', '-o', 'wide.png', '--size', '17000x16')
        self.assertTrue(any(line.startswith('Rendering in ') for line in errors), errors)
        picture = Picture(self.path('wide.png'))
        self.assertEqual((picture.width, picture.height), (17000, 16))
        self.assertEqual(picture.rgb, bytes((255, 0, 0)) * (17000 * 16))

    def test_a_large_tile_is_read_in_parts(self):
        show = Production()
        bars = [(RED, quad(0, 0, 1, .07)), (GREEN, quad(0, .07, .64, .35)), (BLUE, quad(.3, .51, 1, 1))]
        show.layer(show.scene(*[placed(show.mesh(bar), show.material(color=color)) for color, bar in bars]), 100)
        show.write(self.folder)
        size = ('--size', '1800x1400')  # 7.6 MB, of which a tile has two thirds
        self.done('--at', '0', '-o', 'whole/%d.png', *size)
        self.done('--at', '0', '-o', 'tiled/%d.png', '--tile', '1300', *size)
        files = []
        for name in ('whole', 'tiled'):
            with open(self.path(name, '0.png'), 'rb') as file:
                files.append(file.read())
        self.assertEqual(*files)
        self.assertGreater(len(set(zlib.decompress(Picture.chunks_of(files[0])[b'IDAT']))), 2)

    def test_a_poster_takes_little_more_memory_than_its_pixels(self):
        two_colours(10).write(self.folder)
        peaks = {}
        for size in ('64x64', '6144x6144'):
            run = subprocess.Popen([RENDER, '-q', '--at', '0', '-o', size + '.png', '--size', size, '--tile', '512'],
                                   cwd=self.folder, env=self.environment())
            _, status, usage = os.wait4(run.pid, 0)
            run.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(run.returncode, 0)
            peaks[size] = usage.ru_maxrss * 1024
        pixels = 6144 * 6144 * 3
        self.assertLess((peaks['6144x6144'] - peaks['64x64']) / pixels, 1.3)

    def test_what_cannot_be_tiled_is_said_plainly(self):
        into_a_texture().write(self.folder)
        self.assertEqual(self.still('a.png', *SMALL).pixel(9, 9), (0, 255, 0))
        self.fails(1, 'Error: frame 0 cannot be rendered in tiles of 16 x 16: track 1 draws into a texture.',
                   '--at', '0', '-o', 'b.png', '--tile', '16', *SMALL)
        out_of_the_past().write(self.folder)
        self.fails(1, 'Error: frame 90 cannot be rendered in tiles of 16 x 16: track 3 shows a texture that layers '
                   'draw into.', '--at', '1.5', '-o', 'b.png', '--tile', '16', *SMALL)


class VideoTest(RenderTest):
    def probe(self, name):
        run = subprocess.run(['ffprobe', '-v', 'error', '-count_frames', '-show_streams', '-show_format', '-of', 'json',
                              self.path(name)], stdout=subprocess.PIPE, check=True)
        found = json.loads(run.stdout)
        return found['format'], {stream['codec_type']: stream for stream in found['streams']}

    def sound(self, name, rate=44100):
        """Left and right samples."""
        run = subprocess.run(['ffmpeg', '-v', 'error', '-i', self.path(name), '-f', 's16le', '-ac', '2', '-ar', str(rate),
                              '-'], stdout=subprocess.PIPE, check=True)
        samples = array.array('h', run.stdout)
        return samples[0::2], samples[1::2]

    def pictures(self, name):
        """All frames as they lie in the file, one behind the other."""
        run = subprocess.run(['ffmpeg', '-v', 'error', '-i', self.path(name), '-vsync', 'passthrough', '-f', 'rawvideo',
                              '-pix_fmt', 'rgb24', '-'], stdout=subprocess.PIPE, check=True)
        return run.stdout

    def put_show(self, length=100):
        two_colours(length, 'tone.ogg').write(self.folder)
        os.makedirs(self.path('music'), exist_ok=True)
        shutil.copy(TONE, self.path('music', 'tone.ogg'))

    def test_every_kind_has_the_right_frames_length_and_codecs(self):
        self.put_show()
        for name, video, audio in (('a.mp4', 'h264', 'aac'), ('a.mkv', 'ffv1', 'flac'), ('a.webm', 'vp9', 'opus')):
            with self.subTest(name=name):
                self.done('-o', name, '--fps', '20', '--size', '64x48')
                whole, streams = self.probe(name)
                self.assertEqual((streams['video']['codec_name'], streams['audio']['codec_name']), (video, audio))
                self.assertEqual((streams['video']['nb_read_frames'], streams['video']['r_frame_rate']), ('41', '20/1'))
                self.assertEqual((streams['video']['width'], streams['video']['height']), (64, 48))
                self.assertAlmostEqual(float(whole['duration']), 2.05, delta=0.03)

    def test_odd_sizes_become_even_where_colours_are_halved(self):
        self.put_show(100)
        for name, size in (('odd.mp4', (34, 26)), ('odd.webm', (34, 26)), ('odd.mkv', (33, 25))):
            _, errors = self.done('-o', name, '--size', '33x25', '--fps', '10')
            video = self.probe(name)[1]['video']
            self.assertEqual((video['width'], video['height']), size)
            self.assertEqual(video['pix_fmt'], 'yuv420p' if size[0] == 34 else 'bgr0')
            told = 'Such a video has even sides: it becomes 34 x 26, with the last column or row twice.'
            self.assertEqual(told in errors, size[0] == 34)
            pixels = self.pictures(name)[:34 * 26 * 3 if size[0] == 34 else 33 * 25 * 3]
            self.assertGreater(min(pixels[0::3]), 240)  # red up to the border
        self.done('-yo', 'odd.mp4', '--size', '33x25', '--fps', '10', '--ffmpeg', '-vf hue=s=0')  # in place of our filters
        video = self.probe('odd.mp4')[1]['video']
        self.assertEqual((video['width'], video['height']), (34, 26))

    def test_every_kind_begins_at_0(self):
        self.put_show()
        for name in ('a.mp4', 'a.mkv', 'a.webm'):
            self.done('-o', name, '--fps', '20', *SMALL)
            run = subprocess.run(['ffprobe', '-v', 'error', '-show_frames', '-of', 'json', self.path(name)],
                                 stdout=subprocess.PIPE, check=True)
            frames = json.loads(run.stdout)['frames']
            times = {kind: [float(f['pts_time']) for f in frames if f['media_type'] == kind]
                     for kind in ('video', 'audio')}
            self.assertEqual(times['video'][0], 0, name)
            self.assertAlmostEqual(times['video'][-1], 2, delta=0.001)
            self.assertAlmostEqual(times['audio'][0], 0, delta=0.0015)

    def test_the_encoder_takes_another_quality_and_more_words(self):
        shapes().write(self.folder)
        sizes = []
        for crf in ('5', '40'):
            for kind in ('.mp4', '.webm'):
                self.done('-o', crf + kind, '--crf', crf, '--fps', '10', '--size', '160x120')
                sizes.append(os.path.getsize(self.path(crf + kind)))
        self.assertLess(sizes[2], sizes[0])
        self.assertLess(sizes[3], sizes[1])
        self.done('-o', 'more.mp4', '--fps', '10', *SMALL, '--ffmpeg', '-metadata "title=A show" -r 5')
        whole, streams = self.probe('more.mp4')
        self.assertEqual((whole['tags']['title'], streams['video']['r_frame_rate']), ('A show', '5/1'))
        status, _, errors = self.render('-o', 'no.mp4', *SMALL, '--ffmpeg', '-wobble 3')
        self.assertEqual((status, errors[-1]), (1, 'Error: ffmpeg could not make the video.'))
        self.assertNotIn('no.mp4', self.names('.'))

    def test_the_sound_is_in_step_to_the_sample(self):
        self.put_show()
        self.done('-o', 'all.mkv', '--fps', '24', *SMALL)
        left, right = self.sound('all.mkv')
        frames = 2 * 24 + 1  # the last one begins at 2 s
        self.assertEqual(len(left), frames * 44100 // 24)
        self.assertGreater(max(left[22050:30000]), 15000)      # 441 Hz at half of full scale ...
        self.assertGreater(max(right[22050:30000]), 7500)      # ... and 882 Hz at a quarter
        self.assertLess(max(map(abs, left[44200:])), 2)         # silence behind its end
        crossings = [i for i in range(22050, 26460) if left[i - 1] < 0 <= left[i]]
        self.assertEqual(len(crossings), 44)                    # 0.1 s at 441 Hz
        # Frames 7 to 20 hold exactly the samples between their beginnings: 1837.5 a frame, rounded down.
        self.done('-o', 'part.mkv', '--fps', '24', '--from', '7f', '--to', '20f', *SMALL)
        self.assertEqual(self.sound('part.mkv')[0], left[7 * 44100 // 24:20 * 44100 // 24])
        self.done('-o', 'rest.mkv', '--fps', '24', '--from', '20f', *SMALL)
        self.assertEqual(self.sound('rest.mkv')[1], right[20 * 44100 // 24:])

    def test_segments_join_without_a_seam(self):
        self.put_show(150)
        options = ('--fps', '24', *SMALL)
        self.done('-o', 'whole.mkv', *options)
        with open(self.path('parts.txt'), 'w', encoding='utf-8') as parts:
            for first in range(0, 73, 25):
                name = 'part-%d.mkv' % first
                self.done('-o', name, '--from', '%df' % first, '--to', '%df' % (first + 25), *options)
                parts.write("file '%s'\n" % name)
        subprocess.run(['ffmpeg', '-v', 'error', '-f', 'concat', '-safe', '0', '-i', 'parts.txt', '-c', 'copy',
                        'joined.mkv'], cwd=self.folder, stdin=subprocess.DEVNULL, check=True)
        self.assertEqual(self.pictures('joined.mkv'), self.pictures('whole.mkv'))
        self.assertEqual(self.sound('joined.mkv'), self.sound('whole.mkv'))

    def test_videos_hold_the_frames_and_two_runs_are_equal(self):
        self.put_show()
        for name in ('a.mkv', 'b.mkv', 'a.mp4', 'b.mp4'):
            self.done('-o', name, '--fps', '50', *SMALL)
        for kind in ('.mkv', '.mp4'):
            with open(self.path('a' + kind), 'rb') as a, open(self.path('b' + kind), 'rb') as b:
                self.assertEqual(a.read(), b.read(), kind)
        size = 32 * 24
        self.assertEqual(self.pictures('a.mkv'), bytes((255, 0, 0)) * size * 50 + bytes((0, 0, 255)) * size * 51)

    def test_without_music_there_is_no_sound_and_missing_music_is_told(self):
        two_colours(10).write(self.folder)
        _, errors = self.done('-o', 'a.mkv', *SMALL)
        self.assertNotIn('audio', self.probe('a.mkv')[1])
        two_colours(100, 'gone.ogg').write(self.folder)
        _, errors = self.done('-o', 'b.mkv', *SMALL)
        self.assertIn('Warning: the music gone.ogg is neither in this folder nor in music/.', errors)
        self.assertNotIn('audio', self.probe('b.mkv')[1])
        two_colours(10, Element('music', file='')).write(self.folder)
        _, errors = self.done('-yo', 'b.mkv', *SMALL)
        self.assertIn("Warning: the music's file has an empty name.", errors)
        two_colours(100, 'gone.ogg').write(self.folder)
        os.mkdir(self.path('gone.ogg'))
        os.mkdir(self.path('music'))
        os.mkfifo(self.path('music', 'gone.ogg'))
        _, errors = self.done('-yo', 'b.mkv', *SMALL)
        self.assertRegex('\n'.join(errors), r'Warning: the music gone\.ogg is neither in this folder nor in music/ '
                         r'\(gone\.ogg: .+\)\.')
        with open(TONE, 'rb') as tone, open(self.path('cut.ogg'), 'wb') as cut:
            cut.write(tone.read(60))
        for name in ('demo.dpk', 'cut.ogg'):
            two_colours(10, name).write(self.folder)
            _, errors = self.done('-yo', 'c.mkv', *SMALL)
            self.assertIn('Warning: %s is no Ogg Vorbis file that can be decoded: the video has no sound.' % name,
                          errors)
            self.assertRegex(errors[-1], r'^Wrote c\.mkv \(7 frames, 0\.12 s, without sound\) from demo\.dpk\.$')

    def test_music_lies_beside_the_pack(self):
        self.put_show(10)
        elsewhere = self.path('elsewhere')
        os.mkdir(elsewhere)
        self.folder, folder = elsewhere, self.folder
        self.done('-o', 'a.mkv', *SMALL, os.path.join(folder, 'demo.dpk'))
        self.assertIn('audio', self.probe('a.mkv')[1])

    def test_without_ffmpeg_one_line_says_so(self):
        two_colours(10).write(self.folder)
        self.fails(1, 'Error: videos need the program ffmpeg, which is not installed.', '-o', 'a.mp4', *SMALL,
                   PATH='/nonexistent')
        self.fails(1, 'Error: cannot write "/proc/a.mp4": No such file or directory.', '-o', '/proc/a.mp4', *SMALL)
        self.assertEqual(self.names('.'), ['demo.dpk'])

    @staticmethod
    def told_until(terminal, pattern):
        """What a program writes to its terminal, until it matches or the program is over."""
        told = b''
        while not re.search(pattern, told):
            try:
                told += os.read(terminal, 1000)
            except OSError:  # nobody has it open any more
                break
        return told

    def test_ctrl_c_leaves_a_playable_file(self):
        show = two_colours(12000, 'tone.ogg')
        show.write(self.folder)
        shutil.copy(TONE, self.path('tone.ogg'))
        for name in ('cut.mp4', 'cut.mkv'):
            ours, theirs = os.openpty()  # where the progress is told at once
            run = subprocess.Popen([RENDER, '-o', name, '--size', '640x480'], cwd=self.folder, env=self.environment(),
                                   stderr=theirs, stdout=subprocess.DEVNULL)
            os.close(theirs)
            errors = self.told_until(ours, rb'\r(?:[5-9]\d|\d{3,}) of \d+ frames')
            run.send_signal(signal.SIGINT)
            errors += self.told_until(ours, b'$.')  # to its end
            os.close(ours)
            self.assertEqual(run.wait(60), 130, errors)
            self.assertRegex(errors.decode().splitlines()[-2], r'Stopped after \d+ of \d+ pictures\.$')
            self.assertRegex(errors.decode().splitlines()[-1], r'^Wrote %s \(\d+ frames, .* from demo\.dpk\.$' % name)
            _, streams = self.probe(name)
            frames = int(streams['video']['nb_read_frames'])
            told = int(re.search(r'after (\d+) of', errors.decode()).group(1))
            self.assertEqual(frames, told)
            self.assertLessEqual(abs(len(self.sound(name)[0]) - frames * 735), 22050)

    def test_the_stream_is_pure(self):
        two_colours().write(self.folder)
        output, errors = self.done('-o', '-', '--size', '33x25', '--fps', '5')
        header = b'YUV4MPEG2 W33 H25 F5:1 Ip A1:1 C420jpeg'
        self.assertTrue(output.startswith(header), output[:80])
        frame = 6 + 33 * 25 + 2 * 17 * 13
        self.assertEqual(len(output), output.index(b'\n') + 1 + 11 * frame)
        self.assertEqual(errors[-1], 'Wrote 11 frames to standard output from demo.dpk.')
        decoded = subprocess.run(['ffmpeg', '-v', 'error', '-i', '-', '-f', 'framecrc', '-'], input=output,
                                 stdout=subprocess.PIPE, check=True)
        self.assertEqual(len([line for line in decoded.stdout.splitlines() if not line.startswith(b'#')]), 11)

    def test_a_reader_that_goes_away_ends_the_run(self):
        two_colours(3000).write(self.folder)
        run = subprocess.Popen([RENDER, '-o', '-', *SMALL], cwd=self.folder, env=self.environment(),
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        run.stdout.read(100)
        run.stdout.close()
        errors = run.stderr.read().decode().splitlines()
        run.stderr.close()
        self.assertEqual(run.wait(60), 1)
        self.assertEqual(errors[-1], 'Error: whoever takes the pictures has stopped taking them.')


class ReportTest(RenderTest):
    def test_the_contact_sheet_has_stills_of_the_whole_show_or_those_asked_for(self):
        two_colours().write(self.folder)
        self.done('--contact-sheet', 'sheets/all.png', '--fps', '10', '--size', '64x48')
        everything = Picture(self.path('sheets', 'all.png'))
        seen = {everything.pixel(x, y) for x in range(0, everything.width, 7) for y in range(0, everything.height, 7)}
        self.assertTrue({(255, 0, 0), (0, 0, 255)} <= seen)
        self.done('--contact-sheet', 'one.png', '--at', '0.5', '--fps', '10', '--size', '64x48')
        one = Picture(self.path('one.png'))
        self.assertLess(one.width * one.height, everything.width * everything.height / 4)
        seen = {one.pixel(x, y) for x in range(0, one.width, 7) for y in range(0, one.height, 7)}
        self.assertIn((255, 0, 0), seen)
        self.assertNotIn((0, 0, 255), seen)

    def test_shots_come_in_the_sizes_of_a_release(self):
        shapes().write(self.folder)
        os.rename(self.path('demo.dpk'), self.path('star.dpk'))
        _, errors = self.done('--shots', 'shots', '--at', '0')
        names = self.names('shots')
        self.assertEqual([n[:-4] for n in names], ['star-160x90', 'star-1920x1080', 'star-400x225'])
        self.assertEqual(errors[-1], 'Wrote shots/%s, shots/%s and shots/%s from star.dpk.' % tuple(
            names[i] for i in (1, 2, 0)))
        self.assertLess(os.path.getsize(self.path('shots', names[2])), 65536)
        large = Picture(self.path('shots', 'star-1920x1080.png'))
        self.assertEqual((large.width, large.height), (1920, 1080))
        _, errors = self.done('--shots', 'many', '--at', '0,1', '--size', '320x180', '--fps', '10')
        self.assertEqual(errors[-1], 'Wrote 6 pictures in many from star.dpk.')
        self.assertEqual(len(self.names('many')), 6)
        self.assertIn('star-00010-160x90.png', self.names('many'))

    def test_flashes_are_counted_and_nothing_is_promised(self):
        flicker().write(self.folder)
        status, output, _ = self.render('--flashes', '--size', '64x48', '--fps', '50')
        self.assertEqual(status, 4)
        self.assertIn(b'red', output)
        self.assertRegex(output.decode(), r'0?0:0\d')
        self.assertIn(b'no guarantee', output)
        two_colours().write(self.folder)
        calm, _ = self.done('--flashes', '--size', '64x48', '--fps', '50')
        self.assertIn(b'no second has more than three', calm)
        self.assertIn(b'no guarantee', calm)

    def test_times_name_every_frame_and_the_slowest_moments(self):
        into_a_texture(1100).write(self.folder)
        output, _ = self.done('--times', 'reports/times.json', '--fps', '10', *SMALL)
        with open(self.path('reports', 'times.json'), encoding='utf-8') as file:
            report = json.load(file)
        self.assertEqual([f['frame'] for f in report['frames']], list(range(111)))
        self.assertEqual((report['path'], report['width'], report['height']), ('glsl', 32, 24))
        for frame in report['frames']:
            self.assertEqual([track['track'] for track in frame['tracks']], [1, 2])
            self.assertGreater(frame['cpu_ms'], 0)
            self.assertGreaterEqual(frame['cpu_ms'] + 1e-3, sum(track['cpu_ms'] for track in frame['tracks']))
            self.assertGreater(frame['gpu_ms'], 0)
        self.assertEqual(len(output.splitlines()), 10)

    def test_comparing_finds_what_has_changed(self):
        two_colours().write(self.folder)
        self.done('--at', '0.5,1.5', '-o', 'kept/%05d.png', '--size', '64x48')
        output, _ = self.done('--compare', 'kept')
        self.assertEqual(output.decode().splitlines(), ['00030.png: equal', '00090.png: equal'])
        show = Production()
        show.colour(RED, 100)
        show.colour(GREEN, 100)
        show.write(self.folder)
        status, output, _ = self.render('--compare', 'kept')
        self.assertEqual(status, 1)
        self.assertEqual(output.decode().splitlines()[0], '00030.png: equal')
        self.assertRegex(output.decode().splitlines()[1], '^00090.png: DIFFERENT, by 255.000 of 255 in the mean')
        self.assertEqual(self.names('kept'), ['00030.png', '00090.difference.png', '00090.new.png', '00090.png'])
        two_colours().write(self.folder)
        self.done('--compare', 'kept')
        self.assertEqual(self.names('kept'), ['00030.png', '00090.png'])
        os.mkdir(self.path('none'))
        self.fails(2, 'Error: none has no numbered pictures like 00750.png.', '--compare', 'none')
        status, _, errors = self.render('--compare', 'missing')
        self.assertEqual((status, len(errors)), (2, 1))


UNIT = '1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1'
OVER_ALL = '2 0 0 0 0 -2 0 0 0 0 -1 0 -1 1 0 1'   # (0, 0) is the upper left corner, (1, 1) the lower right one


class CommandsTest(RenderTest):
    PLAIN = ('--path', 'fixed', '--caps', 'no-vbo', '--fps', '10', *SMALL)   # no names of OpenGL in the text

    @staticmethod
    def block(track, layer, time, scene, view, state, colour):
        """What two_colours() draws at a time."""
        memory = ', '.join(what + ' in memory' for what in ('positions', 'normals', *['coordinates'] * 3, 'indices'))
        return ['track %d, layer %d: time %d, scene %d, 1 mesh' % (track, layer, time, scene), 'viewport 32 x 24',
                'clear color to 0 0 0 1 depth', '  view %d: projection %s, camera %s' % (view, OVER_ALL, UNIT),
                '  state %d: depth 0, cull 0, blend 2, line width 0, normalize 0, wireframe 0, color %s' % (state, colour),
                '    unit 1 picture 0, wrap 0', 'draw 1 x 6 indices with state %d, %s' % (state, memory), '    at ' + UNIT]

    def commands(self, name):
        with open(self.path(name), encoding='ascii') as file:
            return file.read()

    def test_the_frames_of_the_moments_are_written_below_their_number_and_time(self):
        two_colours().write(self.folder)
        output, errors = self.done('--at', '1.5,0.5', '--commands', 'new/commands.txt', *self.PLAIN)
        self.assertEqual((output, errors[-1]), (b'', 'Wrote new/commands.txt from demo.dpk.'))
        self.assertEqual(self.commands('new/commands.txt').splitlines(), [
            'frame 5, 0.50 s', '', *self.block(1, 1, 50, 1, 0, 0, '1 0 0 1'), '',
            'frame 15, 1.50 s', '', *self.block(1, 2, 50, 2, 0, 0, '0 0 1 1')])
        self.assertEqual(self.names('new'), ['commands.txt'])

    def test_every_track_has_a_heading(self):
        into_a_texture().write(self.folder)
        self.done('--at', '0.3', '--commands', 'a', *self.PLAIN)
        lines = self.commands('a').splitlines()
        self.assertEqual([line for line in lines if line.startswith('track')],
                         ['track 1, layer 1: time 30, scene 1, for image 1, 1 mesh',
                          'track 2, layer 1: time 30, scene 2, 1 mesh'])
        first, second = (lines.index(line) for line in lines if line.startswith('track'))
        self.assertIn('viewport 16 x 16', lines[first:second])
        self.assertRegex(lines[second + 1], '^copy 16 x 16 into texture [1-9]')
        self.assertEqual(lines[second + 2], 'viewport 32 x 24')

    def test_a_range_has_what_its_moments_have(self):
        remembering().write(self.folder)
        for path in ('glsl', 'fixed'):
            options = ('--path', path, '--fps', '10', *SMALL)
            self.done('--from', '3f', '--to', '5f', '--commands', path, *options)
            self.done('--at', '3f,4f', '--commands', 'stills', '-y', *options)
            self.assertEqual(self.commands(path), self.commands('stills'))
            self.assertEqual([l for l in self.commands(path).splitlines() if l.startswith('frame')],
                             ['frame 3, 0.30 s', 'frame 4, 0.40 s'])
        self.assertRegex(self.commands('glsl'), r'\n    program [1-9]\d*, light 1 at 10 20 0\n')
        self.assertNotIn('program', self.commands('fixed'))

    def test_the_frames_before_are_played(self):
        """An effect's mesh without a material is drawn with what the last one left."""
        show = Production()
        show.colour(GREEN, 50)
        show.layer(show.scene(placed(show.effect(LAKE, running(show)), 0, GENMESH)), 50)
        show.write(self.folder)
        self.done('--at', '0.8', '--commands', 'a', *self.PLAIN)
        self.assertIn('wireframe 0, color 0 1 0 1\n', self.commands('a'))

    def test_on_standard_output_reports_make_room_for_them(self):
        two_colours().write(self.folder)
        self.done('--at', '0.5', '--commands', 'a', *self.PLAIN)
        output, errors = self.done('--at', '0.5', '--commands', '-', '--times', 't', *self.PLAIN)
        self.assertEqual(output.decode(), self.commands('a'))
        self.assertTrue(any('CPU' in line for line in errors[:-1]), errors)
        self.assertEqual(errors[-1], 'Wrote t and commands to standard output from demo.dpk.')
        self.assertEqual(self.names('.'), ['a', 'demo.dpk', 't'])

    def test_pictures_are_what_they_are_without(self):
        out_of_the_past().write(self.folder)
        for name, more in (('with', ['--commands', 'a']), ('without', [])):
            self.done('--from', '0.8', '--to', '1.3', '-o', name + '/%d.png', '--fps', '10', *SMALL, *more)
        self.assertEqual(self.frames('with'), self.frames('without'))
        self.assertEqual(len(re.findall('^frame ', self.commands('a'), re.M)), 5)

    def test_with_a_contact_sheet_they_are_of_all_frames(self):
        two_colours().write(self.folder)
        self.done('--contact-sheet', 's.png', '--commands', 'a', *self.PLAIN)
        self.assertEqual(len(re.findall('^frame ', self.commands('a'), re.M)), 21)

    def test_each_tile_has_its_own(self):
        two_colours().write(self.folder)
        self.done('--at', '0.5', '--tile', '16', '--commands', 'a', *self.PLAIN)
        lines = self.commands('a').splitlines()
        tiles = [i for i, line in enumerate(lines) if line.startswith('tile')]
        self.assertEqual([lines[i] for i in tiles], ['tile 16 x 16 at 0, 0', 'tile 16 x 16 at 16, 0', 'tile 16 x 8 at 0, 16',
                                                     'tile 16 x 8 at 16, 16'])
        self.assertEqual([lines[i + 3] for i in tiles], ['viewport 16 x 16'] * 2 + ['viewport 16 x 8'] * 2)
        self.assertEqual(len([line for line in lines if line.startswith('draw ')]), 4)

    def test_what_is_there_is_asked_about_and_what_cannot_be_written_ends_the_run(self):
        two_colours().write(self.folder)
        with open(self.path('a'), 'w', encoding='ascii') as file:
            file.write('mine')
        options = ('--at', '0.5', *self.PLAIN)
        self.fails(1, 'Error: a exists; -y replaces what exists.', *options, '--commands', 'a')
        self.assertEqual(self.commands('a'), 'mine')
        self.done(*options, '-y', '--commands', 'a')
        self.assertTrue(self.commands('a').startswith('frame 5'))
        self.fails(1, 'Error: cannot write ".": Is a directory.', *options, '--commands', '.')
        self.fails(1, 'Error: cannot write "/dev/full": No space left on device.', *options, '--commands', '/dev/full')
        with open('/dev/full', 'wb') as full:
            run = subprocess.run([RENDER, *options, '--commands', '-'], cwd=self.folder, env=self.environment(),
                                 stdin=subprocess.DEVNULL, stdout=full, stderr=subprocess.PIPE, timeout=60, check=False)
        self.assertEqual((run.returncode, run.stderr.decode().splitlines()[-1]),
                         (1, 'Error: cannot write to standard output: No space left on device.'))
        self.assertEqual(self.names('.'), ['a', 'demo.dpk'])


class ShaderLogTest(RenderTest):
    PLACE = 'Warning: demo.xmlz: section 11 (materials), record '
    READING = (PLACE + '4, texture1: cgenmode 2 without a cube map: with shaders the material draws nothing.')

    def check_log(self, lines):
        """The explanations of broken_programs(), behind what its reader says of the third."""
        self.assertIn(self.READING, lines)
        lines = [line for line in lines if line != self.READING]
        begins = [i for i, line in enumerate(lines) if line.startswith(self.PLACE)]
        self.assertEqual([lines[i] for i in begins],
                         [self.PLACE + '2: fragment_shader does not compile:',
                          self.PLACE + '3: its program does not link:',
                          self.PLACE + '4: the generated program does not link:'], lines)
        compiling, linking, generated = (lines[i + 1:end] for i, end in zip(begins, [*begins[1:], len(lines)]))
        self.assertRegex(compiling[0], '^  .*4.*error')
        self.assertEqual(compiling[1], '    line 4: gl_FragColor = \\x1B[7mnobody;')
        self.assertRegex(linking[0], '^  .*vec[23]')
        self.assertRegex(generated[0], '^  .*TexCoordOut1')
        self.assertIn('  texture1 is no cube map: write cgenmode="0" or "1".', generated)
        self.assertNotIn('\x1b', ''.join(lines))

    def test_programs_that_do_not_build_are_explained_on_standard_error(self):
        broken_programs().write(self.folder)
        self.check_log(self.done('--at', '0', '-o', 'a.png', *SMALL)[1])
        errors = self.done('--at', '0', '-o', 'b.png', '--path', 'fixed', *SMALL)[1]
        self.assertEqual([e for e in errors if 'Warning' in e or 'link' in e], [self.READING])

    def test_programs_of_the_loading_screen_are_explained_too(self):
        show = two_colours()
        show.loading = broken_programs()
        show.loading.prefix = 'loading'
        show.write(self.folder)
        errors = self.done('--loading', '50', '-o', 'a.png', *SMALL)[1]
        self.assertTrue(any('loading.xmlz: section 11 (materials), record 3: its program' in e for e in errors), errors)

    def test_the_player_explains_them_only_where_the_environment_asks_for_it(self):
        broken_programs(1000).write(self.folder)
        for wanted in (None, '', '0', '1'):
            with self.subTest(wanted=wanted), Display(800, 600) as display, \
                    Player(display, PLAYER, self.folder, BRIMLOW_SHADER_LOG=wanted) as player:
                player.choose(music=False)
                self.assertTrue(player.start())
                if wanted == '1':
                    self.assertTrue(player.until(lambda: any('program does not link' in e for e in player.errors)))
                player.press('Escape')
                self.assertEqual(player.wait(), 0)
                self.assertIn('Bye!', player.lines)
                if wanted == '1':
                    self.check_log(player.errors)
                else:
                    self.assertEqual(player.errors, [self.READING])


class WindowTest(RenderTest):
    def test_a_window_shows_the_same_pictures(self):
        remembering().write(self.folder)
        options = ('--fps', '10', '--size', '64x48', '--to', '5f')
        self.done('-o', 'without/%d.png', *options)
        with Display(640, 480) as display:
            self.done('-o', 'within/%d.png', '--window', *options, DISPLAY=display.name)
        self.assertEqual(self.frames('within').keys(), self.frames('without').keys())
        for name in self.names('without'):
            self.assertEqual(Picture(self.path('within', name)).rgb, Picture(self.path('without', name)).rgb)

    def test_stills_equal_the_players_own_window(self):
        shapes(1000).write(self.folder)
        for shaders in (True, False):
            with self.subTest(shaders=shaders), Display(800, 600) as display, \
                    Player(display, PLAYER, self.folder) as player:
                player.choose(shaders=shaders, music=False)
                self.assertTrue(player.start())
                still = self.still('still.png', '--size', '320x240', '--path', 'glsl' if shaders else 'fixed')

                def shows_it():
                    window = player.window()
                    return window and window[3:] == (320, 240) and player.screenshot().rgb == still.rgb

                self.assertTrue(player.until(shows_it, 20), 'the pictures differ')
                player.press('Escape')


def main():
    global RENDER, PLAYER, MAN_PAGE
    RENDER, PLAYER, MAN_PAGE = (os.path.abspath(path) for path in sys.argv[1:4])
    del sys.argv[1:4]
    unittest.main(verbosity=1)


if __name__ == '__main__':
    main()
