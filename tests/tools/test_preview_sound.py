#!/usr/bin/env python3
"""Holds the sound of brimlow-preview to its picture, to the sample, with a device that writes what it is given to a file.

    test_preview_sound.py BRIMLOW-PREVIEW ROOT

What the music's own samples are is recorded first, by playing it from its beginning.
"""
import os
import shutil
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
for neighbour in ('player', 'support'):
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', neighbour))
from preview import Display, Preview  # noqa: E402

PREVIEW = ROOT = ''
RATE = 44100
PAIR = 4     # bytes
BUFFER = 1024 * PAIR
SHOW = '''show { title = "A tune", bpm = 120, music = "tune.ogg" }
local sky = scene "sky" {}
track { sky { from = "0s", to = "8s", camera = { at = { 0, 0, 4 }, fov = 45, far = 100 } } }
'''


def runs_of(sound):
    """What sounded between silences: (number of its first buffer, bytes)."""
    runs, silent = [], True
    for at in range(0, len(sound) - BUFFER + 1, BUFFER):
        buffer = sound[at:at + BUFFER]
        is_silent = not any(buffer)
        if not is_silent and silent:
            runs.append((at // BUFFER, bytearray()))
        if not is_silent:
            runs[-1][1].extend(buffer)
        silent = is_silent
    return runs


def sample_at(seconds):
    return int(seconds * RATE + 1e-6)


class Sound(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.place = tempfile.TemporaryDirectory(prefix='brimlow-preview-sound-')
        shutil.copyfile(os.path.join(ROOT, 'productions', 'first-light', 'first-light.ogg'),
                        os.path.join(cls.place.name, 'tune.ogg'))
        with open(os.path.join(cls.place.name, 'show.lua'), 'w', encoding='utf-8') as file:
            file.write(SHOW)
        cls.display = Display(800, 600).__enter__()

    @classmethod
    def tearDownClass(cls):
        cls.display.__exit__()
        cls.place.cleanup()

    def preview(self, driver, **environment):
        return Preview(self.display, PREVIEW, '--size', '64x36', '--window', '640x480', '--paused', self.place.name,
                       folder=self.place.name, SDL_AUDIODRIVER=driver, **environment)

    def play(self, preview, seconds):
        """Plays for at least so long, and pauses; where it stood before."""
        start = preview.status()['time']
        preview.ask('play')
        self.pass_time(preview, seconds)
        preview.ask('pause')
        self.be_silent(preview)
        return start

    def decoded(self, preview):
        """Waits until all the music is there: the thread that decodes it computes, or waits for a processor, until then."""
        def computes():
            states = set()
            for task in os.listdir('/proc/%d/task' % preview.process.pid):
                try:
                    with open('/proc/%d/task/%s/stat' % (preview.process.pid, task)) as file:
                        states.add(file.read().rsplit(')', 1)[1].split()[0])
                except OSError:  # it has ended
                    continue
            return bool(states & {'R', 'D'})
        at_rest = 0  # looks in a row
        while at_rest < 10:
            time.sleep(0.05)
            at_rest = 0 if computes() else at_rest + 1

    def be_silent(self, preview):
        for _ in range(2):  # the first may have waited since before the pause
            self.pass_time(preview, 0)

    def same(self, sound, expected, what):
        """What was recorded of the music may end earlier than a sound of which a busy machine made more."""
        self.assertGreater(len(expected), 0.25 * RATE * PAIR, what)
        self.assertTrue(sound[:len(expected)] == expected, what)  # their bytes would fill pages

    def pass_time(self, preview, seconds):
        """What sounds is counted by the device, which may be slow."""
        size = os.path.getsize(self.file)
        enough = size + int(seconds * RATE) * PAIR + 2 * BUFFER
        self.assertTrue(preview.until(lambda _: os.path.getsize(self.file) >= enough))

    def test_what_sounds_is_what_the_picture_shows(self):
        self.file = os.path.join(self.place.name, 'sound')
        starts = []
        with self.preview('disk', SDL_DISKAUDIOFILE=self.file) as preview:
            preview.settled()
            self.decoded(preview)
            self.play(preview, 4)                       # run 0: the music from its beginning
            preview.ask('go', time=1.5)
            starts.append(self.play(preview, 0.5))      # a jump
            self.assertGreater(preview.status()['time'], 1.6)
            starts.append(self.play(preview, 0.3))      # from where it was paused
            preview.ask('scrub', time=2)
            preview.ask('play')
            self.pass_time(preview, 0.3)                # silent: a hand holds it
            preview.ask('scrub', time=0.5)
            preview.ask('let_go')
            self.pass_time(preview, 0.3)
            preview.ask('pause')
            self.be_silent(preview)
            starts.append(0.5)
            preview.ask('loop', **{'from': 1, 'to': 1.31})
            preview.ask('go', time=1.2)
            starts.append(self.play(preview, 1.5))      # around a loop
            preview.ask('loop', off=True)
            preview.ask('go', time=0.25)
            preview.ask('play')
            self.pass_time(preview, 0.3)
            preview.ask('mute', on=True)
            self.pass_time(preview, 0.3)
            preview.ask('mute', on=False)
            self.pass_time(preview, 0.3)
            preview.ask('pause')
            self.assertEqual(preview.stop(), 0)
        with open(self.file, 'rb') as file:
            runs = runs_of(file.read())
        self.assertEqual(len(runs), 7)
        music = runs[0][1]
        self.assertGreater(len(music), 4 * RATE * PAIR)
        for number, start in ((1, starts[0]), (2, starts[1]), (3, starts[2])):
            at = sample_at(start) * PAIR
            length = len(runs[number][1])
            self.same(runs[number][1], music[at:at + length], 'run %d, from %f s' % (number, start))
        turn = music[sample_at(1) * PAIR:sample_at(1.31) * PAIR]
        looped = music[sample_at(starts[3]) * PAIR:sample_at(1.31) * PAIR] + (len(runs[4][1]) // len(turn) + 1) * turn
        self.same(runs[4][1], looped[:len(runs[4][1])], 'the loop')
        self.assertGreater(len(runs[4][1]), 3 * len(turn))
        (first, before), (again, after) = runs[5:]
        at = sample_at(0.25) * PAIR
        self.same(before, music[at:at + len(before)], 'before it was muted')
        at += (again - first) * BUFFER  # time went on while it was muted
        self.same(after, music[at:at + len(after)], 'after it was muted')

    def test_without_a_device_a_steady_clock_counts(self):
        with self.preview('nonsense') as preview:
            preview.settled()
            preview.ask('play')
            begun = preview.until(lambda status: status['time'] > 0.2)
            self.assertTrue(begun)

            def is_steady(later):  # a busy machine draws a frame late; a clock that is wrong departs further and further
                shown, passed = (later[name] - begun[name] for name in ('time', 'now'))
                return passed > 1 and abs(shown - passed) < 0.25
            self.assertTrue(preview.until(is_steady, 6))
            self.assertEqual(preview.stop(), 0)


def main():
    global PREVIEW, ROOT
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    PREVIEW, ROOT = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=[sys.argv[0]] + sys.argv[3:])


if __name__ == '__main__':
    main()
