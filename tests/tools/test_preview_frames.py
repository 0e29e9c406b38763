#!/usr/bin/env python3
"""Any frame, exactly: however the preview comes to a frame, its picture is that of a run from the start.

    test_preview_frames.py stage_walk brimlow-preview brimlow-render brimlow-make SOURCE_ROOT [CASE ...]

Shows that remember in every way are walked through by stage_walk: in jumps, hand over hand, played with frames left
out, after reloads, with tracks off, from other cameras. Stills of the real preview are compared with brimlow-render's.
"""
import os
import random
import re
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
for neighbour in ('player', 'support', 'pictures', 'tools'):
    sys.path.insert(0, os.path.join(HERE, '..', neighbour))
import shows  # noqa: E402
from packs import plate, png, quad, sphere  # noqa: E402
from preview import Display, Preview  # noqa: E402
from production import DYNAMIC, GENMESH, IMAGE, TEXT, Production, dynamic, manipulator, placed  # noqa: E402
from test_brimlow_render import Picture, into_a_texture, out_of_the_past, remembering  # noqa: E402

WALK = PREVIEW = RENDER = MAKE = ROOT = ''
SECOND = 100  # ticks
LINEAR, UNKNOWN = 1, 9
TO_TEXTURE, QUARTER, CLEAR_DEPTH, LINK = 1, 5, 3, 2
RIPPLER = 2


# ---- shows ----------------------------------------------------------------------------------------

def moving(show, speed=0.02):
    """A small square that wanders over the screen from the left."""
    way = show.function((LINEAR, 100000, speed / SECOND * 10, 0))
    small = show.mesh(quad(0, 0, 0.2, 0.2))
    return placed(small, show.material((1, 0.6, 0.2)), at=(dynamic(way), 0.4, 0))


def every_effect():
    """All that draws from the random numbers, by turns and together; what is out of sight stands still."""
    show = Production()
    run = show.function((LINEAR, 100000, 0.3, 0))
    blink = show.function((0, 90, 1), (0, 70, 0), (0, 100000, 1))
    light = show.values(0.3, 0.3, 0.3, 0.9, 0.9, 0.9, 10, 20, 0)
    look = show.material((0.4, 0.7, 1), lighting=1, light1=light, depth_test=1)
    colony = show.material(textures=(show.reference(DYNAMIC, show.dynamic_texture(2, run, resolution='64x64')),))
    waters = [show.effect(kind, run) for kind in (0, 4, 1, 3)]
    ball = show.mesh(sphere(4, 6))
    seen = [placed(waters[0], look, GENMESH, at=(-15, -6, -40)),
            placed(waters[1], look, GENMESH, at=(-30, -14, -70), visibility=blink),
            placed(waters[2], look, GENMESH, at=(0, 2, -60)), placed(waters[3], look, GENMESH),
            placed(ball, look, at=(0, 0, -20), manipulators=[manipulator(3, 0, 0, 0, 0, 0, 0, 1, 1, 1,
                                                                          model=(1, waters[3]))])]
    pond = show.scene(*seen[:2])
    garden = show.scene(*seen[2:], placed(show.mesh(quad(-6, 1, -2, 5, -12)), colony),
                        placed(show.mesh(plate(6)), look, at=(3, -2, -9),
                               manipulators=[manipulator(RIPPLER, dynamic(run), 0.01, 3)]))
    for scene, length in ((pond, 150), (garden, 180), (pond, 120)):
        show.layer(scene, length, fov=60, far=300)
    show.layer(garden, 300, track=2, space_before=100, mode=CLEAR_DEPTH, fov=50, far=300)
    return show


def never_cleared():
    """Until the end nothing lies on the first track, which alone clears: all that was drawn stays."""
    show = Production()
    show.colour((0, 0, 0), 5, space_before=295)
    show.layer(show.scene(moving(show)), 300, track=2)
    return show


def cleared_at_times():
    show = Production()
    show.colour((0, 0, 0.4), 60)
    show.colour((0, 0.3, 0), 20, space_before=150)
    show.colour((0.2, 0, 0), 40, space_before=110)
    show.layer(show.scene(moving(show)), 450, track=2, mode=CLEAR_DEPTH)
    return show


def fed_back():
    """A texture that shows itself, smaller, in each frame."""
    show = Production()
    echo = show.image(png(64, 64, (0, 0, 60)))
    seen = show.material(textures=(show.reference(IMAGE, echo),))
    square = show.mesh(quad())
    show.layer(show.scene(placed(square, seen, at=(0.02, 0.02, 0), scaled=(0.93, 0.93, 1)), moving(show)), 350,
               mode=TO_TEXTURE, rtex=echo)
    show.layer(show.scene(placed(square, seen)), 350, track=2)
    return show


def of_several_sizes():
    """A texture that is drawn into at half the screen's size, at its own size then, and long afterwards not at all."""
    show = Production()
    target = show.image(png(32, 32, (90, 0, 0)), filtering=2)
    seen = show.material(textures=(show.reference(IMAGE, target),))
    thing = show.scene(moving(show))
    for mode, length, pause in ((TO_TEXTURE, 50, 40), (QUARTER, 60, 20), (TO_TEXTURE, 70, 30)):
        show.layer(thing, length, mode=mode, rtex=target, space_before=pause)
    show.colour((0, 0.1, 0.2), 500, track=2)
    show.layer(show.scene(placed(show.mesh(quad(0.1, 0.1, 0.8, 0.9)), seen)), 500, track=3)
    return show


def without_materials():
    """A water and letters that are drawn with what others have left, which changes as others come and go."""
    show = Production()
    run = show.function((LINEAR, 100000, 0.3, 0))
    surface = show.reference(DYNAMIC, show.dynamic_texture(1, run))
    checked = show.reference(IMAGE, show.image(shows.picture(16, shows.checks)))
    looks = [show.material((1, 0.5, 0.2), (surface,)), show.material((0.3, 1, 0.4), (checked,)), show.material((0.5, 0.5, 1))]
    blinks = [show.function(*((0, 40 + 13 * n, float((step + n) % 2)) for step in range(12)), loop=1, end=500)
              for n in range(3)]
    ball = show.mesh(sphere(4, 6))
    others = [placed(ball, look, at=(-3 + 3 * n, 2, -9), visibility=blink)
              for n, (look, blink) in enumerate(zip(looks, blinks))]
    show.font(show.mesh(quad(0, 0, 0.7, 1)), 0, width=0.8)
    show.layer(show.scene(placed(show.effect(0, run), 0, GENMESH, at=(-15, -7, -40)), *others,
                          placed(0, 0, TEXT, 1, 'AB', at=(-1, -1, -8))), 400, fov=60, far=200)
    return show


def left_behind():
    """A water shows the moving picture of a ball that is long out of sight, as it was then."""
    show = Production()
    run = show.function((LINEAR, 100000, 0.3, 0))
    surface = show.reference(DYNAMIC, show.dynamic_texture(1, run))
    short = show.function((0, 33, 1), (0, 100000, 0))
    ball = placed(show.mesh(sphere(4, 6)), show.material((1, 1, 1), (surface,)), at=(0, 0, -9), visibility=short)
    show.layer(show.scene(placed(show.effect(1, run), 0, GENMESH, at=(-15, -7, -40)), ball), 400, fov=60, far=200)
    return show


def left_on():
    """Without shaders, units behind the first empty one keep the picture of an earlier material, however long ago."""
    show = Production()
    checked = show.reference(IMAGE, show.image(shows.picture(16, shows.checks)))
    square = show.mesh(quad(0, 0, 0.4, 0.4))
    short = show.function((0, 33, 1), (0, 100000, 0))
    plain, both = show.material((1, 0.5, 0.2)), show.material(textures=(checked, checked))
    show.layer(show.scene(placed(square, plain, at=(0.5, 0.5, 0)), placed(square, both, visibility=short)), 300)
    return show


def odd_functions():
    """Functions of an unknown formula answer 1 once, and then what they answered before."""
    show = Production()
    odd = show.function((0, 70, 0.2), (UNKNOWN, 60, 1, 2, 3), (0, 50, 0.6), (UNKNOWN, 100000, 3))
    square = show.mesh(quad(0, 0, 0.3, 0.3))
    look = show.material((dynamic(odd), 0.4, 0.8))
    show.layer(show.scene(*(placed(square, look, at=(x, 0.2, 0), time_offset=5 * n, scaled=(dynamic(odd), 1, 1))
                            for n, x in enumerate((0, 0.3, 0.6)))), 300)
    return show


def late_colours():
    """A clear colour takes effect at the next clear: each frame begins with the one of the frame before."""
    show = Production()
    rise = show.function((LINEAR, 200, 0.005, 0), (0, 100000, 0.3))
    night = show.values(0, 0, 0, dynamic(rise), 0.2, 0.4, 0, 0, 0)
    show.layer(show.scene(moving(show)), 300, clearcolor=night)
    return show


def after_a_loading_screen():
    """A swarm and a colony of the loading screen draw from the random numbers first."""
    show = every_effect()
    show.loading = Production('loading_')
    show.loading.effect(3, 0)
    surface = show.loading.dynamic_texture(2, 0, resolution='64x64', bpp='8')
    skin = show.loading.material(textures=(show.loading.reference(DYNAMIC, surface),))
    show.loading.layer(show.loading.scene(placed(show.loading.mesh(quad()), skin)), 100)
    return show


def swarm_alone():
    """Without a colony, which begins the random numbers anew, a swarm lies where the loading screen left them."""
    show = Production()
    run = show.function((LINEAR, 100000, 0.3, 0))
    swarm = show.effect(3, run)
    look = show.material((0.4, 0.7, 1))
    show.layer(show.scene(placed(show.mesh(sphere(4, 6)), look, at=(0, 0, -20), manipulators=[
        manipulator(3, 0, 0, 0, 0, 0, 0, 1, 1, 1, model=(1, swarm))])), 300, fov=60, far=300)
    show.loading = after_a_loading_screen().loading
    return show


SHOWS = {'remembering': remembering, 'into_a_texture': into_a_texture, 'out_of_the_past': out_of_the_past,
         'every_effect': every_effect, 'never_cleared': never_cleared, 'cleared_at_times': cleared_at_times,
         'fed_back': fed_back, 'of_several_sizes': of_several_sizes, 'without_materials': without_materials,
         'left_behind': left_behind, 'left_on': left_on, 'odd_functions': odd_functions, 'late_colours': late_colours,
         'after_a_loading_screen': after_a_loading_screen, 'swarm_alone': swarm_alone}
RATES = ('60', '30000/1001', '125')  # at the last one some ticks are shown twice
FORGETFUL = (('late_colours', 'glsl'), ('late_colours', 'fixed'), ('left_on', 'glsl'))


class Shows(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = place.name

    def pack(self, name):
        if name in SHOWS:
            SHOWS[name]().write(self.folder)
        else:
            shows.SHOWS[name](self.folder)
        return os.path.join(self.folder, 'demo.dpk')


class Walks(Shows):
    def walk(self, pack, *more):
        done = subprocess.run([WALK, pack, '--spread', *more], capture_output=True, text=True, timeout=300)
        self.assertEqual(done.returncode, 0, done.stdout[-2000:] + done.stderr[-2000:])
        return done.stdout

    def test_every_way_to_a_frame_gives_the_picture_of_a_straight_run(self):
        for n, name in enumerate((*SHOWS, *shows.SHOWS)):
            pack = self.pack(name)
            for path in ('glsl', 'fixed'):
                with self.subTest(show=name, path=path):
                    told = self.walk(pack, '--path', path, '--fps', RATES[n % len(RATES)], '--frames', '60', '--steps',
                                     '16', '--size', '64x48', '--seed', str(n + 1))
                    self.assertIn(': forgets,' if (name, path) in FORGETFUL else ': remembers,' if name in SHOWS else ':', told)

    def test_where_nothing_is_remembered_no_picture_comes_roughly_first(self):
        told = self.walk(self.pack('late_colours'), '--steps', '24', '--budget', '0.001', '--size', '64x48')
        self.assertIn(' 0 roughly first', told)

    def test_above_the_bound_of_memory_every_other_state_goes(self):
        pack = self.pack('effects')
        options = ('--steps', '16', '--size', '64x48', '--frames', '60', '--fps', '20')
        counts = []
        for more in ((), ('--memory', '600000')):
            states, taken = re.search(r'(\d+) states of (\d+) bytes', self.walk(pack, *options, *more)).groups()
            counts.append((int(states), int(taken)))
        self.assertGreater(counts[0][1], 600000)
        self.assertLessEqual(counts[1][1], 600000)
        self.assertGreater(counts[0][0], counts[1][0])

    def test_pictures_that_take_too_long_come_roughly_first_and_settle(self):
        told = self.walk(self.pack('every_effect'), '--steps', '24', '--budget', '0.001', '--size', '64x48')
        self.assertNotIn(' 0 roughly first', told)


class Stills(Shows):
    def rendered(self, pack, times, *options):
        """The pictures of brimlow-render, by time."""
        for file in os.listdir(self.folder):
            if file.startswith('still-'):
                os.remove(os.path.join(self.folder, file))
        command = [RENDER, pack, '-q', '--at', ','.join(times), '-o',
                   os.path.join(self.folder, 'still-%d.png'), *options]
        subprocess.run(command, check=True, capture_output=True, timeout=300)
        files = sorted((f for f in os.listdir(self.folder) if f.startswith('still-')),
                       key=lambda f: int(f.split('-')[1].split('.')[0]))
        ordered = sorted(times, key=float)
        self.assertEqual(len(files), len(times))
        return {time: Picture(os.path.join(self.folder, file)).rgb for time, file in zip(ordered, files)}

    def shown(self, preview, time):
        preview.ask('go', time=float(time))
        preview.settled(120)
        path = os.path.join(self.folder, 'shown.png')
        preview.still(path)
        return Picture(path).rgb

    def compare(self, show, pack, times, *options):
        wanted = self.rendered(pack, times, *options)
        order = random.Random(7).sample(times, len(times))
        with Display(1000, 700) as display, Preview(display, PREVIEW, show, '--paused', '--mute', *options) as preview:
            preview.settled(120)
            for time in order:
                self.assertEqual(self.shown(preview, time), wanted[time], 'at %s s' % time)
            preview.ask('reload')
            for time in reversed(order):
                self.assertEqual(self.shown(preview, time), wanted[time], 'at %s s after a reload' % time)
            for time in order:
                preview.ask('scrub', time=float(time))
            preview.ask('let_go')
            preview.settled(120)
            self.assertEqual(self.shown(preview, order[0]), wanted[order[0]], 'after scrubbing')
            preview.ask('play')
            self.assertIsNotNone(preview.until(lambda status: status['frame'] > 0 and status['playing']))
            preview.ask('pause')
            self.assertEqual(self.shown(preview, order[1]), wanted[order[1]], 'after playing')

    def test_stills_of_the_preview_are_those_of_brimlow_render(self):
        for name, path, rate in (('every_effect', 'glsl', '60'), ('every_effect', 'fixed', '30'),
                                 ('fed_back', 'glsl', '60'), ('of_several_sizes', 'fixed', '25'),
                                 ('never_cleared', 'glsl', '24'), ('after_a_loading_screen', 'glsl', '60'),
                                 ('swarm_alone', 'fixed', '60')):
            with self.subTest(show=name, path=path):
                pack = self.pack(name)
                self.compare(pack, pack, ['0', '0.5', '1.25', '1.9', '2.5', '2.9'], '--size', '160x120', '--path', path,
                             '--fps', rate)

    def test_stills_of_the_bundled_show_are_those_of_brimlow_render(self):
        source = os.path.join(ROOT, 'productions', 'first-light')
        pack = os.path.join(self.folder, 'demo.dpk')
        subprocess.run([MAKE, 'build', source, '-o', pack], check=True, capture_output=True, timeout=300)
        for path in ('glsl', 'fixed'):
            with self.subTest(path=path):
                self.compare(source, pack, ['3.5', '17', '33.3', '41', '58.75', '66'], '--size', '160x90', '--path', path)


def main():
    global WALK, PREVIEW, RENDER, MAKE, ROOT
    WALK, PREVIEW, RENDER, MAKE, ROOT = (os.path.abspath(path) for path in sys.argv[1:6])
    del sys.argv[1:6]
    unittest.main(verbosity=1)


if __name__ == '__main__':
    main()
