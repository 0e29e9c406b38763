#!/usr/bin/env python3
"""Drives brimlow-preview in a real window: by its socket, by keys and by the mouse.

    test_brimlow_preview.py BRIMLOW-PREVIEW BRIMLOW-MAKE BRIMLOW-RENDER ROOT

The show is a small one, written for the test: a plate of one colour before a background of another. What is drawn is
looked at in stills, and in the window's own pixels where the interface is the subject.
"""
import os
import re
import shlex
import shutil
import stat
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
for neighbour in ('player', 'support', 'tools'):
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', neighbour))
from preview import PATIENCE, Control, Display, Preview  # noqa: E402
from test_brimlow_render import Picture  # noqa: E402

PREVIEW = MAKE = RENDER = ROOT = ''
SIZE = ('160', '90')
WINDOW = (1200, 800)
SHOW = '''local solids = require "solids"
local colors = require "colors"

show { title = "A plate", bpm = 120 }

local paint = material { color = colors.plate }
local plate = scene "plate" {
    solids.box() { material = paint, at = { loop { linear(0, 1, "8s") }, 0, 0 } },
}
local sky = scene "sky" { solids.box() { material = paint, at = { 0, 0, 9 } } } -- behind the eye

track { sky { from = "0s", to = "8s", camera = { at = { 0, 0, 4 }, fov = 45, far = 100 }, clear = colors.sky } }
track { plate { from = "0s", to = "8s", camera = { at = { 0, 0, 4 }, fov = 45, far = 100 } } }
'''
COLORS = '''return { plate = { 1, 0, 0 }, sky = { 0, 0, 1 } }
'''
RED, GREEN, BLUE, BLACK = (255, 0, 0), (0, 255, 0), (0, 0, 255), (0, 0, 0)
CORNER, MIDDLE = (2, 2), (80, 45)


def near(color, other, most=3):
    return all(abs(a - b) <= most for a, b in zip(color, other))


class WithShow(unittest.TestCase):
    """One preview of one show for all cases of a class; each finds the show as it was written, paused after a second
    (a clear takes the colour that the frame before has set)."""
    show, colors, arguments = SHOW, COLORS, ('--paused',)

    @classmethod
    def setUpClass(cls):
        cls.place = tempfile.TemporaryDirectory(prefix='brimlow-preview-test-')
        cls.folder = os.path.join(cls.place.name, 'show')
        os.makedirs(cls.folder)
        cls.write('show.lua', cls.show)
        cls.write('colors.lua', cls.colors)
        cls.display = Display(*WINDOW).__enter__()
        try:
            cls.preview = Preview(cls.display, PREVIEW, '--size', 'x'.join(SIZE), '--window', '%dx%d' % WINDOW,
                                  *cls.arguments, cls.folder, folder=cls.place.name)
            cls.preview.start()
            cls.preview.settled()
        except BaseException:
            cls.tearDownClass()
            raise

    @classmethod
    def tearDownClass(cls):
        cls.preview.stop()
        cls.preview.home.cleanup()
        cls.display.__exit__()
        cls.place.cleanup()

    def setUp(self):
        self.assertIsNone(self.preview.process.poll(), self.preview.told())
        for name, text in (('show.lua', self.show), ('colors.lua', self.colors)):
            if self.read(name) != text:
                self.preview.shown(lambda: self.write(name, text))
        for request in ({'do': 'pause'}, {'do': 'loop', 'off': True}, {'do': 'mute', 'on': False},
                        {'do': 'tracks', 'mute': [], 'solo': []}, {'do': 'path', 'to': 'glsl'},
                        {'do': 'caps', 'to': ''}, {'do': 'select'}, {'do': 'camera', 'on': False},
                        {'do': 'go', 'time': 1}):
            self.preview.ask(request.pop('do'), **request)
        self.preview.settled()

    @classmethod
    def write(cls, name, text):
        with open(os.path.join(cls.folder, name), 'w', encoding='utf-8') as file:
            file.write(text)

    @classmethod
    def read(cls, name):
        with open(os.path.join(cls.folder, name), encoding='utf-8') as file:
            return file.read()

    def picture(self):
        path = os.path.join(self.place.name, 'still.png')
        self.preview.still(path)
        return Picture(path)

    def colors_seen(self):
        picture = self.picture()
        return picture.pixel(*CORNER), picture.pixel(*MIDDLE)

    def at(self):
        return self.preview.status()['time']


# ---- editing ------------------------------------------------------------------------------------

class Editing(WithShow):
    def test_a_change_is_seen_at_the_same_time_while_the_show_plays(self):
        self.preview.ask('go', time=1)
        self.preview.ask('play')
        before = self.preview.status()
        self.preview.shown(lambda: self.write('colors.lua', COLORS.replace('{ 1, 0, 0 }', '{ 0, 1, 0 }')))
        after = self.preview.status()
        passed = after['now'] - before['now']
        self.assertTrue(after['playing'])
        self.assertGreater(after['time'], before['time'])
        self.assertLess(after['time'], before['time'] + passed + 0.5)
        self.assertEqual(self.colors_seen(), (BLUE, GREEN))

    def test_a_change_while_paused_is_seen_at_the_very_frame(self):
        self.preview.ask('go', frame=100)
        self.preview.settled()
        times = self.preview.shown(lambda: self.write('colors.lua', COLORS.replace('{ 0, 0, 1 }', '{ 0, 0, 0 }')))
        status = self.preview.settled()
        self.assertEqual((status['frame'], status['playing']), (100, False))
        self.assertEqual(self.colors_seen(), (BLACK, RED))
        self.assertLessEqual(times['noticed'], times['asked'])
        self.assertLess(times['asked'], times['built'])
        self.assertLess(times['built'], times['loaded'])
        self.assertLess(times['loaded'], times['shown'])

    def test_a_broken_source_shows_its_errors_and_the_last_good_picture_plays_on(self):
        self.preview.ask('go', time=1)
        self.preview.settled()
        good = self.picture().rgb
        window = self.window_pixels()
        built = self.preview.built(lambda: self.write('show.lua', SHOW.replace('colors.plate', 'colors.plait.x')))
        self.assertEqual((built['can_play'], built['errors']), (False, 1))
        (file, line, text), = self.preview.errors()
        self.assertEqual((file, line), ('show.lua', SHOW[:SHOW.index('colors.plate')].count('\n') + 1))
        self.assertIn('plait', text)
        self.assertEqual(self.picture().rgb, good)
        self.assertTrue(self.preview.until(lambda status: self.window_pixels() != window), 'the window tells nothing')
        self.preview.ask('play')
        self.assertTrue(self.preview.until(lambda status: status['time'] > 1.2))
        self.assertEqual(self.preview.status()['build']['errors'], 1)
        again = self.preview.built(lambda: self.write('show.lua', self.read('show.lua')))
        self.assertEqual((again['errors'], again['number']), (1, built['number'] + 1))
        self.preview.ask('pause')
        self.preview.ask('go', time=1)
        self.preview.shown(lambda: self.write('show.lua', SHOW))
        self.assertEqual(self.preview.errors(), [])
        self.assertEqual(self.picture().rgb, good)

    def window_pixels(self):
        return self.display.grab().rgb

    def test_half_a_source_is_not_built(self):
        number = self.preview.status()['build']['number']
        with open(os.path.join(self.folder, 'colors.lua'), 'w') as file:
            file.write('return {')
            file.flush()
            self.preview.turns(20)
            time.sleep(0.1)
            self.assertEqual(self.preview.status()['build']['number'], number)
            file.write(COLORS[len('return {'):])
        self.preview.ask('wait', **{'for': 'build', 'number': number})
        self.assertEqual(self.preview.errors(), [])

    def test_editors_that_write_beside_and_rename_are_seen(self):
        def replace():
            self.write('colors.lua.new', COLORS.replace('{ 1, 0, 0 }', '{ 0, 1, 0 }'))
            os.rename(os.path.join(self.folder, 'colors.lua.new'), os.path.join(self.folder, 'colors.lua'))
        self.preview.shown(replace)
        self.assertEqual(self.colors_seen(), (BLUE, GREEN))
        path = os.path.join(self.folder, 'colors.lua')
        self.preview.shown(lambda: subprocess.run(['sed', '-i', 's/0, 1, 0/0, 0, 0/', path], check=True))
        self.assertEqual(self.colors_seen(), (BLUE, BLACK))

    def test_a_file_that_is_missing_is_awaited(self):
        self.preview.built(lambda: self.write('show.lua', SHOW.replace('"colors"', '"shades"')))
        self.assertEqual(len(self.preview.errors()), 1)
        self.preview.shown(lambda: self.write('shades.lua', COLORS.replace('{ 1, 0, 0 }', '{ 0, 1, 0 }')))
        self.assertEqual(self.preview.errors(), [])
        self.assertEqual(self.colors_seen(), (BLUE, GREEN))
        os.remove(os.path.join(self.folder, 'shades.lua'))

    def test_what_was_chosen_survives_a_reload(self):
        self.preview.ask('loop', **{'from': 1, 'to': 3})
        self.preview.ask('tracks', mute=[1], solo=[2])
        self.preview.ask('mute', on=True)
        self.preview.ask('caps', to='no-vbo')
        self.preview.ask('path', to='fixed')
        self.preview.ask('go', time=1.5)
        self.preview.shown(lambda: self.write('colors.lua', COLORS.replace('{ 1, 0, 0 }', '{ 0, 1, 0 }')))
        status = self.preview.settled()
        self.assertEqual((status['time'], status['looping'], status['muted'], status['caps'], status['path']),
                         (1.5, [1, 3], True, 'no-vbo', 'fixed'))
        tracks = self.preview.ask('tracks')['tracks']
        self.assertEqual([(one['muted'], one['soloed']) for one in tracks], [(True, False), (False, True)])

    def test_the_picture_is_that_of_a_render(self):
        self.preview.shown(lambda: self.write('colors.lua', COLORS.replace('{ 1, 0, 0 }', '{ 0.2, 0.7, 0.4 }')))
        pack, still = (os.path.join(self.place.name, name) for name in ('demo.dpk', 'render.png'))
        subprocess.run([MAKE, 'build', os.path.join(self.folder, 'show.lua'), '-o', pack], check=True,
                       stdout=subprocess.DEVNULL)
        environment = self.display.environment()
        for frame in (0, 77, 480):
            self.preview.ask('go', frame=frame)
            subprocess.run([RENDER, '-y', '-q', '--size', 'x'.join(SIZE), '--at', '%df' % frame, '-o', still, pack],
                           check=True, env=environment)
            self.assertEqual(self.picture().rgb, Picture(still).rgb, 'frame %d' % frame)


class Lit(WithShow):
    """Slopes, light and depth: what the last bit of a number shows in."""
    show = '''local solids = require "solids"
local sun = light { at = { 3, 8, 9 }, ambient = { 0.2, 0.2, 0.2 }, diffuse = { 1, 0.9, 0.8 } }
local paint = material { color = { loop { linear(0.3, 1, "8s") }, 0.6, 0.9 }, light = sun }
local many = scene "many" {
    solids.ball() {
        material = paint, scale = 0.6,
        manipulators = { row(5, { step = { 1.1, 0.3, -1 }, turn = { 20, 30, 0 } }) },
    },
    solids.ring() { material = paint, rotation = { 30, linear(0, 300, "8s"), 20 }, scale = 1.4 },
}
track { many { from = "0s", to = "8s", camera = { at = { 1, 2, 4 }, rotation = { 20, -15, 10 }, fov = 65 } } }
'''

    def test_the_picture_is_that_of_a_render_in_every_pixel(self):
        pack, still = (os.path.join(self.place.name, name) for name in ('demo.dpk', 'render.png'))
        subprocess.run([MAKE, 'build', os.path.join(self.folder, 'show.lua'), '-o', pack], check=True,
                       stdout=subprocess.DEVNULL)
        for path in ('glsl', 'fixed'):
            self.preview.ask('path', to=path)
            for frame in (0, 200, 401):
                self.preview.ask('go', frame=frame)
                subprocess.run([RENDER, '-y', '-q', '--path', path, '--size', 'x'.join(SIZE), '--at', '%df' % frame,
                                '-o', still, pack], check=True, env=self.display.environment())
                self.assertEqual(self.picture().differences(Picture(still)), (0, 0), '%s, frame %d' % (path, frame))

    def test_the_window_shows_it_the_right_way_up(self):
        left, top, width, height = self.preview.place('picture')
        x_of_window, y_of_window = self.preview.window()[:2]
        still, window = self.picture(), self.display.grab()
        across, down = map(int, SIZE)

        def alike(row_of):
            """How many of 16 x 9 places the window shows as the still has them in another row."""
            places = [(x, y) for x in range(5, across, 10) for y in range(5, down, 10)]
            return sum(near(still.pixel(x, row_of(y)),
                            window.pixel(x_of_window + int(left + (x + 0.5) * width / across),
                                         y_of_window + int(top + (y + 0.5) * height / down)), 40)
                       for x, y in places)
        self.assertGreater(alike(lambda y: y), 136)
        self.assertLess(alike(lambda y: down - 1 - y), 120)


# ---- time ---------------------------------------------------------------------------------------

class Time(WithShow):
    def test_the_socket_goes_plays_scrubs_and_loops(self):
        self.assertEqual(self.preview.ask('go', time=2.5)['frame'], 150)
        self.assertEqual(self.preview.ask('go', by=-1)['time'], 1.5)
        self.assertEqual(self.preview.ask('go', by_frames=3)['frame'], 93)
        self.assertEqual(self.preview.ask('go', frame=480)['frame'], 480)
        self.assertEqual(self.preview.ask('go', by=100)['frame'], 480)
        self.preview.ask('go', time=1)
        self.preview.ask('play')
        self.assertTrue(self.preview.until(lambda status: status['time'] > 1.1))
        self.assertEqual(self.preview.ask('scrub', time=4)['time'], 4)
        self.preview.turns(5)
        status = self.preview.status()
        self.assertEqual((status['time'], status['scrubbing'], status['playing']), (4, True, True))
        self.preview.ask('let_go')
        self.assertTrue(self.preview.until(lambda status: status['time'] > 4.1))
        self.assertEqual(self.preview.ask('loop', **{'from': 5, 'to': 5.3})['looping'], [5, 5.3])
        self.preview.ask('go', time=5)
        times = []

        def goes_round(status):
            times.append(status['time'])
            return sum(later < earlier for earlier, later in zip(times, times[1:])) == 3
        self.assertTrue(self.preview.until(goes_round), 'it did not go round')
        self.assertLess(max(times), 5.3 + 0.05)
        self.assertGreaterEqual(min(times), 5)
        self.assertIsNone(self.preview.ask('loop', off=True)['looping'])

    def test_keys_play_pause_jump_and_step(self):
        press = self.preview.press
        press('space')
        self.assertTrue(self.preview.until(lambda status: status['playing'] and status['time'] > 0.1))
        press('space')
        self.assertTrue(self.preview.until(lambda status: not status['playing']))
        self.preview.ask('go', time=2)
        for keys, frame in ((('Right',), 180), (('Left',), 120), (('Right', 'Shift_L'), 150), (('Left', 'Shift_L'), 120),
                            (('period',), 121), (('comma',), 120), (('comma',), 119), (('End',), 480), (('Home',), 0)):
            press(*keys)
            self.assertEqual(self.preview.status()['frame'], frame, keys)

    def test_keys_set_a_loop_and_mute(self):
        self.preview.ask('go', time=2)
        self.preview.press('a')
        self.preview.ask('go', time=3)
        self.preview.press('b')
        self.assertEqual(self.preview.status()['looping'], [2, 3])
        self.preview.press('x')
        self.assertIsNone(self.preview.status()['looping'])
        self.preview.press('m')
        self.assertTrue(self.preview.status()['muted'])
        self.preview.press('m')
        self.assertFalse(self.preview.status()['muted'])

    def test_a_drag_on_the_timeline_scrubs(self):
        x, y, width, _ = self.preview.place('timeline')
        self.preview.point(x + width * 0.25, y + 8)
        self.preview.button(True)
        self.preview.point(x + width * 0.5, y + 8)
        status = self.preview.status()
        self.assertTrue(status['scrubbing'])
        self.assertAlmostEqual(status['time'], 4, delta=0.1)
        self.preview.button(False)
        status = self.preview.status()
        self.assertFalse(status['scrubbing'])
        self.assertAlmostEqual(status['time'], 4, delta=0.1)

    def test_the_end_is_reached_and_playing_begins_again_there(self):
        self.preview.ask('go', time=7.9)
        self.preview.ask('play')
        self.assertTrue(self.preview.until(lambda status: not status['playing']))
        self.assertEqual(self.preview.status()['frame'], 480)
        self.preview.ask('play')
        self.assertTrue(self.preview.until(lambda status: 0 < status['time'] < 7))


# ---- what is drawn --------------------------------------------------------------------------------

class Drawing(WithShow):
    def test_paths_cards_and_tracks_are_chosen_by_key_and_socket(self):
        self.preview.press('2')
        self.assertEqual(self.preview.settled()['path'], 'fixed')
        self.assertEqual(self.colors_seen(), (BLUE, RED))
        self.preview.press('1')
        self.assertEqual(self.preview.settled()['path'], 'glsl')
        self.preview.press('c')
        self.assertEqual(self.preview.settled()['caps'], 'no-vbo')
        self.assertEqual(self.preview.ask('caps', to='no-vbo,units=2')['caps'], 'no-vbo,units=2')
        self.preview.ask('tracks', mute=[2])
        self.assertEqual(self.colors_seen(), (BLUE, BLUE))
        self.preview.ask('tracks', mute=[])
        self.assertEqual(self.colors_seen(), (BLUE, RED))

    def test_tracks_have_their_clips(self):
        sky, plate = self.preview.ask('tracks')['tracks']
        self.assertEqual((sky['number'], plate['number']), (1, 2))
        clip, = plate['clips']
        self.assertEqual((clip['scene'], clip['from'], clip['to'], clip['active']), ('plate', 0, 8, True))
        self.assertEqual((clip['file'], clip['line']), ('show.lua', SHOW[:SHOW.index('track { plate')].count('\n') + 1))

    def test_a_click_selects_an_object_and_tells_its_line(self):
        line = SHOW[:SHOW.index('solids.box()')].count('\n') + 1
        answer = self.preview.ask('select', x=MIDDLE[0], y=MIDDLE[1])
        self.assertEqual(answer['selected'], 0)
        found = answer['objects'][0]
        self.assertEqual((found['track'], found['object'], found['file'], found['line']), (2, 1, 'show.lua', line))
        self.assertEqual(self.preview.ask('select', x=0, y=0)['objects'], [])
        self.assertIsNone(self.preview.status()['selected'])
        self.preview.click_picture(*MIDDLE)
        self.assertTrue(self.preview.until(lambda status: status['selected'] and status['selected']['line'] == line))
        self.preview.shown(lambda: self.write('show.lua', '\n' + SHOW))
        self.preview.ask('select', x=MIDDLE[0], y=MIDDLE[1])
        self.assertEqual(self.preview.status()['selected']['line'], line + 1)

    def test_moving_values_of_the_selected_object_are_told(self):
        self.assertIn('no object is selected', self.preview.refused('values'))
        self.preview.ask('go', time=4)
        self.preview.settled()
        self.preview.ask('select', x=MIDDLE[0], y=MIDDLE[1])
        answer = self.preview.ask('values', samples=5)
        self.assertEqual((answer['from'], answer['to']), (0, 8))
        x = next(value for value in answer['values'] if value['name'] == 'x')
        self.assertAlmostEqual(x['now'], 0.5, places=3)
        self.assertEqual(len(x['values']), 5)
        self.assertEqual(x['values'], sorted(x['values']))

    def test_a_still_is_saved_by_key_and_by_socket(self):
        self.preview.press('s')
        path = os.path.join(self.place.name, 'still-0001.png')
        self.assertTrue(os.path.exists(path))
        self.assertEqual(Picture(path).pixel(*CORNER), BLUE)
        os.remove(path)
        self.assertEqual(self.preview.ask('still')['file'], 'still-0001.png')
        os.remove(path)
        self.assertIn('nowhere', self.preview.refused('still', file='/nowhere/x.png'))

    def test_the_camera_is_taken_over_placed_and_copied(self):
        camera = self.preview.ask('camera', on=True)
        self.assertTrue(camera['on'])
        before = self.colors_seen()
        self.preview.ask('camera', position=[100, 0, 4])
        self.assertEqual(self.colors_seen(), (BLUE, BLUE))
        self.assertIn('100', self.preview.ask('camera', copy=True)['line'])
        self.assertFalse(self.preview.ask('camera', on=False)['on'])
        self.assertEqual(self.colors_seen(), before)

    def test_figures_memory_and_commands_are_told(self):
        self.assertGreater(self.preview.ask('figures')['cpu_ms'], 0)
        self.assertGreater(self.preview.ask('memory')['meshes']['count'], 0)
        self.assertGreater(self.preview.ask('names')['names'], 0)
        self.assertIn('draw 1 x 36 indices', self.preview.ask('commands')['text'])


# ---- numbers by hand ------------------------------------------------------------------------------

class Tries(WithShow):
    colors = 'return { plate = { try(0.25, 0, 1), 0, 0 }, sky = { 0, 0, 1 } }  -- a comment\n'

    def test_a_number_is_tried_and_written_and_nothing_else_changes(self):
        number, = self.preview.ask('tries')['tries']
        self.assertEqual((number['file'], number['line'], number['written'], number['least'], number['most']),
                         ('colors.lua', 1, 0.25, 0, 1))
        self.assertTrue(near(self.colors_seen()[1], (64, 0, 0)))
        self.preview.shown(lambda: self.preview.ask('try', file='colors.lua', site=0, value=0.75))
        self.assertTrue(near(self.colors_seen()[1], (191, 0, 0)))
        self.assertEqual(self.read('colors.lua'), self.colors)
        self.preview.shown(lambda: self.write('show.lua', SHOW.replace('A plate', 'The plate')))
        self.assertTrue(near(self.colors_seen()[1], (191, 0, 0)), 'a reload forgot the number')
        self.preview.ask('write_try', file='colors.lua', site=0)
        self.assertEqual(self.read('colors.lua'), self.colors.replace('0.25', '0.75'))
        self.preview.settled()
        self.assertTrue(near(self.colors_seen()[1], (191, 0, 0)))

    def test_a_slider_is_dragged_and_its_number_found_in_the_file(self):
        x, y, width, height = self.preview.place('slider colors.lua 0')
        self.preview.drag(x + width * 0.25, y + height / 2, x + width * 0.9, y + height / 2)
        self.assertTrue(self.preview.until(lambda status: self.preview.ask('tries')['tries'][0]['value'] > 0.8
                                           and not status['waits_for_build']))
        self.preview.settled()
        value = self.preview.ask('tries')['tries'][0]['value']
        self.assertAlmostEqual(value, 0.9, delta=0.05)
        self.assertTrue(near(self.colors_seen()[1], (round(value * 255), 0, 0)))
        x, y, width, height = self.preview.place('write colors.lua 0')
        self.preview.click(x + width / 2, y + height / 2)
        self.assertTrue(self.preview.until(lambda status: self.read('colors.lua') != self.colors))
        before, number, behind = re.fullmatch(r'(.*try\()([\d.]+)(, 0, 1\).*\n)', self.read('colors.lua')).groups()
        self.assertAlmostEqual(float(number), value, places=6)
        self.assertEqual(before + '0.25' + behind, self.colors)

    def test_what_cannot_be_tried_is_told(self):
        self.assertIn('goes from 0 to 1', self.preview.refused('try', file='colors.lua', site=0, value=1.5))
        self.assertIn('no number is tried there', self.preview.refused('try', file='colors.lua', site=1, value=0))
        self.assertIn('no number is tried there', self.preview.refused('write_try', file='../x', site=0))


# ---- the socket -----------------------------------------------------------------------------------

class Socket(WithShow):
    def test_what_is_wrong_is_one_sentence_and_changes_nothing(self):
        before = self.preview.status()
        for request, sentence in (
                ({'do': 'go', 'time': -0.1}, '"time" goes from 0 to 8.016666667.'),
                ({'do': 'go', 'frame': 481}, '"frame" goes from 0 to 480.'),
                ({'do': 'go'}, '"go" needs one of "time", "frame", "by" and "by_frames".'),
                ({'do': 'go', 'time': 1, 'frame': 2}, '"go" needs one of "time", "frame", "by" and "by_frames".'),
                ({'do': 'loop', 'from': 2, 'to': 1}, '"from" lies before "to".'),
                ({'do': 'loop', 'from': 2}, '"loop" needs "from" and "to", or "off": true.'),
                ({'do': 'mute'}, '"mute" needs "on".'),
                ({'do': 'path', 'to': 'vulcan'}, '"to" is "glsl" or "fixed".'),
                ({'do': 'tracks', 'mute': [3]}, 'there is no track 3: tracks go from 1 to 2.'),
                ({'do': 'tracks', 'mute': [1], 'solo': [0]}, 'there is no track 0: tracks go from 1 to 2.'),
                ({'do': 'select', 'x': 1}, '"select" needs "y".'),
                ({'do': 'select', 'x': 161, 'y': 0}, '"x" goes from 0 to 160.'),
                ({'do': 'wait', 'for': 'ever'}, '"for" is "settled", "build" or "shown".'),
                ({'do': 'wait', 'for': 'settled', 'timeout': 1e9}, '"timeout" goes from 0 to 3600.'),
                ({'do': 'wait', 'for': 'build', 'timeout': 0.05}, 'it has not happened within 0.05 seconds.'),
                ({'do': 'camera', 'copy': True}, 'no camera is flown: {"do":"camera","on":true} takes it over.')):
            fields = dict(request)
            self.assertEqual(self.preview.refused(fields.pop('do'), **fields), sentence, request)
        self.assertIn('"to" is a list of no-vbo', self.preview.refused('caps', to='no-vob'))
        after = self.preview.status()
        for name in ('frame', 'looping', 'muted', 'path', 'caps', 'selected', 'playing'):
            self.assertEqual(after[name], before[name], name)

    def test_a_line_is_answered_whatever_it_is(self):
        for line in ('', '  ', 'status', '[1]', '{"do":"status"', '{"do":"nothing of the kind"}', '\x1b[31m',
                     '{"do":"status","x":1}', '{"do":' + '[' * 1000, '{"do":"go","time":1e400}'):
            if line.strip():
                answer = self.preview.control.say(line)
                self.assertFalse(answer['ok'], line)
                self.assertRegex(answer['error'], r'^[^\n\x1b]{10,200}\.$')
        self.assertTrue(self.preview.status()['ok'])

    def test_answers_that_wait_do_not_hold_up_others(self):
        other = Control(self.preview.path)
        try:
            other.socket.sendall(b'{"do":"wait","for":"shown","id":"later"}\n{"do":"status","id":"now"}\n')
            self.assertIn('"id":"now"', other.lines.readline())
            self.preview.shown(lambda: self.write('colors.lua', COLORS.replace('{ 1, 0, 0 }', '{ 0, 1, 0 }')))
            self.assertIn('"id":"later"', other.lines.readline())
        finally:
            other.close()

    def test_who_waits_right_after_a_save_gets_its_picture(self):
        for plate, color in (('0, 1, 0', GREEN), ('0, 0, 0', BLACK), ('1, 1, 0', (255, 255, 0)), ('0, 1, 0', GREEN)):
            self.write('colors.lua', COLORS.replace('1, 0, 0', plate))
            self.assertEqual(self.colors_seen()[1], color)

    def test_the_socket_is_private_and_a_second_preview_does_not_take_it(self):
        mode = os.stat(self.preview.path).st_mode
        self.assertTrue(stat.S_ISSOCK(mode))
        self.assertEqual(stat.S_IMODE(mode), 0o600)
        done = subprocess.run([PREVIEW, '--control', self.preview.path, self.folder], env=self.display.environment(),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, universal_newlines=True, timeout=60)
        self.assertEqual(done.returncode, 1)
        self.assertIn('another program serves the socket', done.stdout)
        self.assertTrue(self.preview.status()['ok'])


# ---- the page ---------------------------------------------------------------------------------------

class Page(WithShow):
    """What docs/preview.md shows is what happens."""

    def listing(self, language):
        with open(os.path.join(ROOT, 'docs', 'preview.md'), encoding='utf-8') as file:
            page = file.read()
        listing, behind = re.search(r'^<!-- runs: %s -->\n```\w+\n(.*?)^```\n(.*?)^#' % language, page, re.S | re.M).groups()
        shown = ''.join(line[4:] + '\n' for line in behind.splitlines() if line.startswith('    '))
        still = os.path.join(self.place.name, 'still.png')
        return listing.replace('/tmp/still.png', still), shown.replace('/tmp/still.png', still)

    def run_listing(self, listing, *command):
        path = os.path.join(self.place.name, 'listing')
        with open(path, 'w') as file:
            file.write(listing)
        done = subprocess.run([*command, path], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60,
                              env=dict(os.environ, PREVIEW=self.preview.path), universal_newlines=True)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def test_the_example_for_shells_runs(self):
        listing, shown = self.listing('shell')
        self.assertEqual(self.run_listing(listing, 'sh'), shown)
        self.assertEqual(Picture(os.path.join(self.place.name, 'still.png')).pixel(*CORNER), BLUE)

    def test_the_example_for_python_runs(self):
        told = self.run_listing(self.listing('python')[0], sys.executable)
        self.assertRegex(told, r'^seen after \d+ ms\n$')
        self.assertEqual(self.read('show.lua'), SHOW.replace('fov = 45', 'fov = 60'))
# ---- the editor -----------------------------------------------------------------------------------

class Opening(unittest.TestCase):
    """Two plates, one before the other: where a double click leads."""
    SHOW = '''local solids = require "solids"
local paint = material { color = { 1, 0, 0 } }
local plates = scene "plates" {
    solids.box() { material = paint, at = { 0, 0, -2 } },
    solids.box() { material = paint },
}
track { plates { from = "0s", to = "8s", camera = { at = { 0, 0, 4 }, fov = 45, far = 100 } } }
'''
    FAR, NEAR = 4, 5

    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.told = os.path.join(place.name, 'told')
        editor = os.path.join(place.name, 'editor')
        with open(editor, 'w') as file:
            file.write('#!/bin/sh\nto=%s\necho "$2:$1" > "$to.new"; mv "$to.new" "$to"\n' % shlex.quote(self.told))
        os.chmod(editor, 0o700)
        with open(os.path.join(place.name, 'show.lua'), 'w') as file:
            file.write(self.SHOW)
        display = Display(*WINDOW).__enter__()
        self.addCleanup(display.__exit__)
        self.preview = Preview(display, PREVIEW, '--size', 'x'.join(SIZE), '--window', '%dx%d' % WINDOW, '--paused',
                               place.name, EDITOR=shlex.quote(editor) + ' {line} {file}', VISUAL=None).__enter__()
        self.addCleanup(self.preview.__exit__)
        self.preview.settled()

    def double_click(self):
        """The line that the editor was opened at; None: the clicks came too close together or too far apart."""
        left, top, width, height = self.preview.place('picture')
        self.preview.point(left + width / 2, top + height / 2)
        for down in (True, False, True, False):
            self.preview.display.client().button(down)
            time.sleep(0.05)
        end = time.monotonic() + 5
        while not os.path.exists(self.told) and time.monotonic() < end:
            time.sleep(0.02)
        if not os.path.exists(self.told):
            return None
        with open(self.told) as file:
            path, line = file.read().strip().rsplit(':', 1)
        os.remove(self.told)
        self.assertEqual(os.path.basename(path), 'show.lua')
        return int(line)

    def opened(self, *selected):
        """The same, with what lies in the middle selected so many times before; again where the clicks were none."""
        for _ in range(10):
            self.preview.ask('select')
            for place in selected:
                self.preview.ask('select', x=place[0], y=place[1])
            line = self.double_click()
            if line is not None:
                return line
            time.sleep(0.5)  # what comes is no third click
        return None

    def test_a_double_click_opens_what_it_finds_or_what_was_selected_there(self):
        self.assertEqual(self.opened(), self.NEAR)
        self.assertEqual(self.opened(MIDDLE), self.NEAR)
        self.assertEqual(self.opened(MIDDLE, MIDDLE), self.FAR)


# ---- beginning and ending -------------------------------------------------------------------------

class Running(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = place.name

    def run_preview(self, *arguments, **environment):
        done = subprocess.run([PREVIEW, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, cwd=self.folder,
                              universal_newlines=True, timeout=60,
                              env=dict({key: value for key, value in os.environ.items()
                                        if key not in ('DISPLAY', 'WAYLAND_DISPLAY', 'SDL_VIDEODRIVER')}, **environment))
        return done.returncode, done.stdout

    def test_help_version_and_mistakes_need_no_display(self):
        self.assertEqual(self.run_preview('-V'), (0, 'brimlow-preview 1.0\n'))
        status, text = self.run_preview('--help')
        self.assertEqual(status, 0)
        self.assertTrue(text.startswith('brimlow-preview: plays a show while it is being written.\n'))
        self.assertEqual(self.run_preview('--paus'), (
            2, 'Error: unknown option --paus (did you mean --paused?). "brimlow-preview --help" tells more.\n'))
        self.assertEqual(self.run_preview('no.lua'), (1, 'Error: cannot open no.lua: No such file or directory.\n'))
        self.assertEqual(self.run_preview(), (1, 'Error: . has neither a show.lua nor a pack.\n'))

    def test_no_display_is_status_3(self):
        with open(os.path.join(self.folder, 'show.lua'), 'w') as file:
            file.write(SHOW)
        status, text = self.run_preview()
        self.assertEqual(status, 3)
        self.assertEqual(
            text, 'Error: no window can be opened: neither DISPLAY nor WAYLAND_DISPLAY leads to one.\n')

    def test_a_signal_ends_it_as_escape_does(self):
        with open(os.path.join(self.folder, 'show.lua'), 'w') as file:
            file.write('show { title = "nothing" }\n')
        with Display(640, 480) as display, Preview(display, PREVIEW, self.folder) as preview:
            preview.ask('status')
            preview.process.terminate()
            self.assertEqual(preview.process.wait(PATIENCE), 0)
            self.assertFalse(os.path.exists(preview.path))

    def test_a_pack_is_played_and_read_again_when_it_is_replaced(self):
        source, pack = (os.path.join(self.folder, name) for name in ('show.lua', 'demo.dpk'))

        def build(color):
            with open(os.path.join(self.folder, 'colors.lua'), 'w') as file:
                file.write(COLORS.replace('{ 0, 0, 1 }', color))
            subprocess.run([MAKE, 'build', source, '-o', pack], check=True, stdout=subprocess.DEVNULL)
        with open(source, 'w') as file:
            file.write(SHOW)
        build('{ 0, 0, 1 }')
        still = os.path.join(self.folder, 'still.png')
        with Display(800, 600) as display, \
                Preview(display, PREVIEW, '--size', 'x'.join(SIZE), '--paused', '--at', '50%', pack) as preview:
            self.assertEqual(preview.settled()['frame'], 240)
            preview.still(still)
            self.assertEqual(Picture(still).pixel(*CORNER), BLUE)
            preview.shown(lambda: build('{ 0, 1, 0 }'))
            preview.still(still)
            self.assertEqual(Picture(still).pixel(*CORNER), GREEN)
            preview.press('Escape', ends=True)
            self.assertEqual(preview.process.wait(PATIENCE), 0)
            self.assertFalse(os.path.exists(preview.path))

    def test_a_show_that_is_broken_from_the_beginning_waits_to_be_mended(self):
        source = os.path.join(self.folder, 'show.lua')
        with open(source, 'w') as file:
            file.write('show { tilte = "x" }\n')
        with open(os.path.join(self.folder, 'colors.lua'), 'w') as file:
            file.write(COLORS)
        with Display(800, 600) as display, Preview(display, PREVIEW, '--size', 'x'.join(SIZE), self.folder) as preview:
            preview.ask('wait', **{'for': 'build', 'number': 0, 'timeout': 60})
            self.assertTrue(preview.errors())
            self.assertIn('there is no show yet', preview.refused('go', time=0))
            self.assertIn('there is no show yet', preview.refused('wait', **{'for': 'settled'}))
            preview.shown(lambda: shutil.copyfile(self.written(SHOW), source))
            self.assertTrue(preview.status()['playing'])
            self.assertEqual(preview.stop(), 0)

    def written(self, text):
        path = os.path.join(self.folder, 'text')
        with open(path, 'w') as file:
            file.write(text)
        return path


def main():
    global PREVIEW, MAKE, RENDER, ROOT
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    PREVIEW, MAKE, RENDER, ROOT = (os.path.abspath(path) for path in sys.argv[1:5])
    unittest.main(argv=[sys.argv[0]] + sys.argv[5:])


if __name__ == '__main__':
    main()
