#!/usr/bin/env python3
"""The process around the show: Ctrl-C once and twice, and standard streams that are closed."""
import os
import signal

import cases
from cases import PlayerTest, found, report
from driver import START, TITLE, Player
from packs import png
from production import IMAGES, Element, Production

AUDIO = 'Audio buffer size:8192'


def colour_show(length, music=None):
    show = Production()
    show.colour((1, 0, 0), length)
    show.music = music
    return show


class InterruptTest(PlayerTest):
    def assert_goes_on(self, player):
        self.assertFalse(player.until(lambda: player.process.poll() is not None, 0.3))

    def test_the_first_closes_the_dialog(self):
        for which in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(which=which), self.player() as player:
                player.dialog()
                player.process.send_signal(which)
                self.assertEqual((player.wait(), player.lines), (0, [TITLE, 'Bye!']))

    def test_the_first_ends_a_playing_show_like_closing_its_window(self):
        colour_show(20000, 'tone.ogg').write(self.folder)
        self.put_tone()
        for which in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(which=which), self.player() as player:
                player.start()
                self.assertTrue(player.saw(AUDIO))
                player.process.send_signal(which)
                self.assertEqual((player.wait(), player.lines, player.errors), (0, [*found(), *report(), AUDIO], []))

    def load(self, player):
        """Starts a show that takes a while to load."""
        show = colour_show(20000, 'tone.ogg')
        show.entries['large.png'] = png(2048, 2048, (9, 9, 9))
        for _ in range(60):
            show.add(IMAGES, Element('image', filename='large.png', texture_format=0, texture_filter=1))
        show.write(self.folder)
        self.put_tone()
        player.load_on_one_core()
        player.start()

    def test_the_second_ends_it_at_once_while_it_loads(self):
        with self.player() as player:
            self.load(player)
            player.process.send_signal(signal.SIGINT)
            self.assert_goes_on(player)
            player.process.send_signal(signal.SIGINT)
            self.assertEqual(player.wait(), -signal.SIGINT)
            self.assertEqual(player.lines, [*found(), *report()])

    def test_the_second_ends_it_at_once_while_the_sound_device_hangs(self):
        colour_show(20000, 'tone.ogg').write(self.folder)
        self.put_tone()
        device = os.path.join(self.folder, 'device')
        os.mkfifo(device)  # which nobody reads: it does not even open
        with self.player(SDL_AUDIODRIVER='disk', SDL_DISKAUDIOFILE=device) as player:
            player.start()
            player.process.send_signal(signal.SIGINT)
            self.assert_goes_on(player)
            player.process.send_signal(signal.SIGTERM)
            self.assertEqual(player.wait(), -signal.SIGTERM)
            self.assertEqual(player.lines, [*found(), *report()])


class ClosedStreamsTest(PlayerTest):
    def test_the_show_plays_whatever_streams_are_closed(self):
        colour_show(3, 'tone.ogg').write(self.folder)
        self.put_tone()
        for closed in ('>&-', '<&- >&- 2>&-', '2>&-'):
            shell = ['-c', 'exec "$0" ' + closed, cases.exe]
            with self.subTest(closed=closed), Player(self.display, '/bin/sh', self.folder, shell) as player:
                player.click(*START)
                self.assertEqual((player.wait(), player.errors), (0, []))


if __name__ == '__main__':
    cases.main()
