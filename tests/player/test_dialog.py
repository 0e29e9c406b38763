#!/usr/bin/env python3
"""The settings dialog, the choice of the sound driver before it and of the pack behind it."""
import os
import struct
import subprocess

import cases
from cases import NO_BENCHMARK, PlayerTest, found, report
from driver import (ANTIALIASING, ASPECT, FIXED_PATH, FULLSCREEN, MUSIC, RESOLUTION, SHADER_PATH, START, TITLE,
                    VERTEX_BUFFERS, Picture)
from packs import pack_bytes

ARTWORK = os.path.join(cases.HERE, '..', '..', 'src', 'engine', 'shell', 'artwork')
KEY_INDEX = 15  # transparent in the pictures with a key

RESOLUTION_Y = (9, 35, 66, 97, 128, 159, 191, 222, 253, 284, 315, 347)
ASPECT_Y = (8, 39, 70, 102)
PATH_Y = (315, 346)
BOX_Y = (10, 40, 71, 103)
NOWHERE = (440, 290)


class Bitmap:
    """A 16-colour bitmap file: rows of palette indices, top row first."""

    def __init__(self, name):
        with open(os.path.join(ARTWORK, name), 'rb') as file:
            data = file.read()
        offset, = struct.unpack_from('<I', data, 10)
        self.width, self.height = struct.unpack_from('<ii', data, 18)
        self.palette = [data[54 + 4 * i:57 + 4 * i][::-1] for i in range(16)]
        stride = ((self.width + 1) // 2 + 3) // 4 * 4
        self.rows = []
        for y in reversed(range(self.height)):
            row = data[offset + stride * y:offset + stride * (y + 1)]
            self.rows.append([nibble for byte in row for nibble in (byte >> 4, byte & 15)][:self.width])

    def draw(self, canvas, left, top, keyed):
        for y, row in enumerate(self.rows):
            for x, index in enumerate(row):
                if not (keyed and index == KEY_INDEX):
                    canvas[top + y][left + x] = self.palette[index]


class Artwork:
    """Draws what the dialog must look like, from the same files and by the same places."""

    def __init__(self):
        self.background, self.resolution, self.aspect, self.path, self.check, self.pressed = (
            Bitmap(name + '.bmp') for name in ('background', 'resolution', 'aspect', 'path', 'check', 'start_pressed'))

    def dialog(self, row=0, aspect=0, path=1, boxes=(1, 1, 1, 1), pressed=False):
        canvas = [[None] * self.background.width for _ in range(self.background.height)]
        self.background.draw(canvas, 0, 0, False)
        self.resolution.draw(canvas, 6, RESOLUTION_Y[row], True)
        self.aspect.draw(canvas, 185, ASPECT_Y[aspect], True)
        self.path.draw(canvas, 207, PATH_Y[path], True)
        for y, ticked in zip(BOX_Y, boxes):
            if ticked:
                self.check.draw(canvas, 279, y, True)
        if pressed:
            self.pressed.draw(canvas, 196, 188, False)
        return Picture(self.background.width, self.background.height, b''.join(b''.join(line) for line in canvas))


class DialogTest(PlayerTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.artwork = Artwork()

    def assert_looks(self, player, **choices):
        wanted = self.artwork.dialog(**choices)
        self.assertTrue(player.until(lambda: player.screenshot() == wanted, 5), 'the dialog does not show %r' % choices)

    def assert_closes(self, player, *lines):
        """Closing ends it, with these lines on standard output and no others."""
        player.close()
        self.assertEqual(player.wait(), 0)
        self.assertEqual(player.lines, [*lines, 'Bye!'])
        self.assertEqual(player.errors, [])

    # ---- what it shows

    def test_it_opens_with_everything_on_and_no_key_does_anything(self):
        with self.player() as player:
            player.dialog()
            self.assertEqual(player.title(), TITLE)
            self.assert_looks(player, row=0, aspect=0, path=1, boxes=(1, 1, 1, 1))
            for key in ('Escape', 'Return', 'space'):
                player.press(key, 0.15)
            self.assert_looks(player)
            self.assert_closes(player, TITLE)

    def test_every_row_and_box_takes_its_effect(self):
        with self.player() as player:
            player.dialog()
            for row in (*range(1, 12), 0):
                player.click(*RESOLUTION[row])
                self.assert_looks(player, row=row)
            for aspect in (1, 2, 3, 0):
                player.click(*ASPECT[aspect])
                self.assert_looks(player, aspect=aspect)
            player.click(*FIXED_PATH)
            self.assert_looks(player, path=0)
            player.click(*SHADER_PATH)
            self.assert_looks(player, path=1)
            boxes = [1, 1, 1, 1]
            for box in (0, 1, 2, 3, 2, 0, 1, 3):
                player.click(*(FULLSCREEN, ANTIALIASING, MUSIC, VERTEX_BUFFERS)[box])
                boxes[box] ^= 1
                self.assert_looks(player, boxes=boxes)
            self.assert_closes(player, TITLE)

    def test_the_edges_of_the_regions_are_irregular(self):
        with self.player() as player:
            player.dialog()
            for nothing in ((200, 5), (80, 14), (7, 24), (168, 24), (224, 9), (224, 131), (211, 328), (434, 328),
                            (320, 315), (320, 342), (320, 373), (282, 20), (296, 20), (289, 13), (289, 27)):
                player.click(*nothing)
                self.assert_looks(player)
            for place, choices in (((167, 34), dict(row=1)), ((8, 33), dict(row=0)), ((80, 345), dict(row=11)),
                                   ((80, 344), dict(row=10)), ((80, 15), dict(row=0)), ((261, 36), dict(aspect=1)),
                                   ((186, 35), dict(aspect=0)), ((212, 340), dict(path=0)), ((433, 344), dict(path=1)),
                                   ((295, 26), dict(boxes=(0, 1, 1, 1))), ((283, 14), dict(boxes=(1, 1, 1, 1))),
                                   ((283, 120), dict(boxes=(1, 1, 1, 0))), ((295, 106), dict(boxes=(1, 1, 1, 1)))):
                player.click(*place)
                self.assert_looks(player, **choices)
            # Below the window, and so below the last row.
            player.point(80, 330)
            player.press_button()
            player.point(80, 395)
            player.release_button()
            self.assert_looks(player, row=11)

    # ---- dragging

    def test_a_box_toggles_once_a_press_and_the_lists_follow_the_pointer(self):
        with self.player() as player:
            player.point(*MUSIC)
            player.press_button()
            player.passes(12)
            self.assert_looks(player, boxes=(1, 1, 0, 1))
            for elsewhere in (NOWHERE, MUSIC, VERTEX_BUFFERS):  # one latch for all four
                player.point(*elsewhere)
            self.assert_looks(player, boxes=(1, 1, 0, 1))
            player.point(*RESOLUTION[3])
            self.assert_looks(player, row=3, boxes=(1, 1, 0, 1))
            player.point(*RESOLUTION[8])
            self.assert_looks(player, row=8, boxes=(1, 1, 0, 1))
            player.point(*ASPECT[2])
            player.point(*FIXED_PATH)
            self.assert_looks(player, row=8, aspect=2, path=0, boxes=(1, 1, 0, 1))
            player.release_button()
            player.click(*VERTEX_BUFFERS)
            self.assert_looks(player, row=8, aspect=2, path=0, boxes=(1, 1, 0, 0))

    def test_the_start_button_starts_where_it_is_let_go(self):
        with self.player() as player:
            player.point(*START)
            player.press_button()
            self.assert_looks(player, pressed=True)
            player.point(*NOWHERE)
            self.assert_looks(player)
            player.release_button()
            player.passes(5)
            player.point(*START)  # over it, but nothing is held
            player.passes(5)
            self.assert_looks(player)
            self.assertEqual(player.lines, [TITLE])

            player.press_button()
            player.point(*NOWHERE)
            player.point(*START)
            self.assert_looks(player, pressed=True)
            player.release_button()
            self.assertEqual(player.wait(), 1)
            self.assertEqual(player.lines, [TITLE, 'Sux... no dpk file.'])

    def test_a_press_that_is_dragged_onto_the_start_button_starts_too(self):
        with self.player() as player:
            player.point(*NOWHERE)
            player.press_button()
            self.assert_looks(player)
            player.point(*START)
            self.assert_looks(player, pressed=True)
            player.release_button()
            self.assertEqual(player.wait(), 1)
            self.assertEqual(player.lines, [TITLE, 'Sux... no dpk file.'])

    # ---- the sound driver

    def test_the_sound_driver_is_steered_away_from_the_sound_server(self):
        changed, unset = 'Changing SDL_AUDIODRIVER from pulse to alsa.', 'Changing SDL_AUDIODRIVER to alsa.'
        for driver, lines in (('pulse', [changed]), ('pulseaudio', [changed]), ('puls', []), ('PULSE', []),
                              ('esd', []), ('', []), (None, [unset])):
            with self.subTest(driver=driver), self.player(SDL_AUDIODRIVER=driver) as player:
                player.dialog()
                self.assert_closes(player, *lines, TITLE)

    # ---- the pack

    def start_with_files(self, *names):
        for name in names:
            self.put(name, pack_bytes({}))
        player, status = self.run_through()
        return player.lines, status

    def test_only_names_that_end_in_dpk_are_packs(self):
        lines, status = self.start_with_files('notes.DPK', 'demo.dpk.old', 'pk', 'demo.dp')
        self.assertEqual((lines, status), ([TITLE, 'Sux... no dpk file.'], 1))

    def test_a_name_needs_no_dot_and_a_pack_no_documents(self):
        lines, status = self.start_with_files('dpk')
        self.assert_lines(lines, *found('dpk'), *report(), NO_BENCHMARK, 'Bye!')
        self.assertEqual(status, 0)

    def test_the_first_pack_of_the_directory_is_taken(self):
        names = ['z.dpk', 'a.dpk', 'mydpk', 'm.dpk']
        lines, status = self.start_with_files(*names)
        first = next(name for name in os.listdir(self.folder) if name in names)  # in the directory's own order
        self.assert_lines(lines, *found(first), *report(), NO_BENCHMARK, 'Bye!')
        self.assertEqual(status, 0)

    def test_packs_that_cannot_be_read(self):
        os.symlink('nothing', os.path.join(self.folder, 'gone.dpk'))
        player, status = self.run_through()
        self.assertEqual((player.lines, status), ([TITLE, 'Found gone.dpk.', 'Error: cannot open gone.dpk!'], 1))

    # ---- no display

    def test_without_a_display_one_line_says_so(self):
        for display in (None, ':4711'):
            env = self.display.environment()
            env.pop('DISPLAY')
            if display:
                env['DISPLAY'] = display
            done = subprocess.run([cases.exe], env=env, cwd=self.folder, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, timeout=60)
            lines = done.stdout.decode().splitlines()
            self.assertEqual((done.returncode, lines[:-1], done.stderr), (1, [TITLE], b''))
            self.assertRegex(lines[-1], '^Error: cannot open the display: .+')


if __name__ == '__main__':
    cases.main()
