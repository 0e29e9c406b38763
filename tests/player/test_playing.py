#!/usr/bin/env python3
"""Playing a show: what is printed, the two clocks, the sound, the loading screen, and every way to end."""
import array
import math
import os
import unittest

import cases
from cases import BENCHMARK, FIXED_PATH_LINE, NO_BENCHMARK, PlayerTest, found, report
from packs import png, quad
from production import IMAGES, SCENES, Element, Production, dynamic, placed

AUDIO = 'Audio buffer size:8192'
ENDS = (BENCHMARK, 'Bye!')
DRAWN = 'GenerateLineIndexArray'  # printed whenever a wireframe is drawn with shaders for the first time
RATE = 44100

RED, GREEN, BLUE = (1, 0, 0), (0, 1, 0), (0, 0, 1)


def sound_to(path, delay=2):
    """The sound goes to a file, a buffer every `delay` ms: the audio clock leaps ahead."""
    return dict(SDL_AUDIODRIVER='disk', SDL_DISKAUDIOFILE=path, SDL_DISKAUDIODELAY=str(delay))


def colour_show(length, music=None, color=RED):
    show = Production()
    show.colour(color, length)
    show.music = music
    return show


def wireframe_scene(show):
    return show.scene(placed(show.mesh(quad()), show.material(RED, wireframe=1)))


class OutputTest(PlayerTest):
    """Standard output compared whole."""

    def assert_output(self, *lines, status=0, errors=(), **how):
        player, ended = self.run_through(**how)
        self.assert_lines(player.lines, *found(), *lines)
        self.assertEqual(player.errors, list(errors))
        self.assertEqual(ended, status)
        return player

    def test_a_show_with_music_on_both_paths_with_and_without_vertex_buffers(self):
        show = colour_show(3, 'tone.ogg')
        show.write(self.folder)
        self.put_tone()
        for shaders, path in ((True, 'Using GLSL shaders.'), (False, FIXED_PATH_LINE)):
            for buffers in (True, False):
                with self.subTest(shaders=shaders, buffers=buffers):
                    self.assert_output(*report(path, buffers=buffers), AUDIO, *ENDS,
                                       choices=dict(shaders=shaders, buffers=buffers))

    def test_music_off_says_nothing_of_music(self):
        colour_show(3, 'tone.ogg').write(self.folder)
        self.put_tone()
        self.assert_output(*report(), *ENDS, choices=dict(music=False))
        os.unlink(os.path.join(self.folder, 'tone.ogg'))  # nor of music that is missing
        self.assert_output(*report(), *ENDS, choices=dict(music=False))

    def test_a_show_without_music(self):
        for change in ('no section', 'no attribute'):
            show = colour_show(3)
            errors = []
            if change == 'no attribute':
                show.music = Element('music', tune='tone.ogg')
                errors = ['Warning: demo.xmlz: section 15 (music): attribute "file" is missing: there is no music.']
            show.write(self.folder)
            self.assert_output(*report(), *ENDS, errors=errors)

    def test_missing_music_is_named_as_the_show_names_it(self):
        colour_show(3, 'no/tune.ogg').write(self.folder)
        self.assert_output(*report(), 'Error: cannot open no/tune.ogg!', *ENDS)

    def test_a_folder_or_a_pipe_called_like_the_music_is_no_music(self):
        colour_show(3, 'tone.ogg').write(self.folder)
        os.mkdir(os.path.join(self.folder, 'tone.ogg'))
        self.assert_output(*report(), 'Error: cannot open tone.ogg!', *ENDS)
        os.mkdir(os.path.join(self.folder, 'music'))
        os.mkfifo(os.path.join(self.folder, 'music', 'tone.ogg'))
        self.assert_output(*report(), 'Error: cannot open tone.ogg!', *ENDS)
        os.unlink(os.path.join(self.folder, 'music', 'tone.ogg'))
        self.put_tone('music/tone.ogg')  # which the folder beside the pack does not hide
        self.assert_output(*report(), AUDIO, *ENDS)

    def test_a_sound_device_that_cannot_be_opened_ends_it(self):
        colour_show(3, 'tone.ogg').write(self.folder)
        self.put_tone()
        self.assert_output(*report(), status=1, errors=["Couldn't open audio: Couldn't open /none/file"],
                           **sound_to('/none/file'))
        player, status = self.run_through(SDL_AUDIODRIVER='no such driver')
        self.assertEqual((player.lines, status), ([*found(), *report()], 1))
        self.assertRegex(player.errors[-1], "^Couldn't open audio: ")

    def test_a_show_in_which_nothing_is_drawn_at_first_is_over_at_once(self):
        paused, elsewhere, nothing = Production(), Production(), Production()
        paused.colour(RED, 100, space_before=50)
        elsewhere.colour(RED, 100, track=2)
        nothing.layer(0, 100)
        start = 'Warning: demo.xmlz: section 14 (timeline): '
        for show, warning in ((paused, 'no track draws a scene at its beginning: the show is over at once.'),
                              (elsewhere, 'track 1 has no clip in its first second: the show is over at once.'),
                              (nothing, 'no track draws a scene at its beginning: the show is over at once.')):
            show.write(self.folder)
            self.assert_output(*report(), NO_BENCHMARK, 'Bye!', errors=[start + warning])

    def test_a_layer_without_length_is_shown_for_its_one_tick(self):
        colour_show(0).write(self.folder)
        self.assert_output(*report(), *ENDS)

    def test_dangling_references_are_warned_of_and_the_show_goes_on(self):
        show = Production()
        material = show.material((1, 1, dynamic(9)), textures=[12], light1=3)
        show.layer(show.scene(placed(4, material), placed(show.mesh(quad()), 8)), 3, clearcolor=5)
        show.layer(7, 3, track=2, mode=1, rtex=6)
        show.write(self.folder)
        warning = 'Warning: demo.xmlz: section %d (%s), record %d'
        self.assert_output(*report(), *ENDS, errors=[
            warning % (11, 'materials', 1) + ', blue: function 9 does not exist.',
            warning % (11, 'materials', 1) + ': texture1 12 does not exist.',
            warning % (11, 'materials', 1) + ': light1 3 does not exist.',
            warning % (13, 'scenes', 1) + ', object 1: object 4 does not exist.',
            warning % (13, 'scenes', 1) + ', object 2: material 8 does not exist.',
            warning % (14, 'timeline', 1) + ', clip 1: clearcolor 5 does not exist.',
            warning % (14, 'timeline', 2) + ', clip 1: id 7 does not exist.',
            warning % (14, 'timeline', 2) + ', clip 1: rtex 6 does not exist.'])

    @unittest.skipUnless(cases.is_sanitized(), 'a build without sanitizers')
    def test_nothing_of_the_players_own_is_lost_at_the_end(self):
        show = colour_show(3)
        show.loading = Production('loading_')
        show.loading.colour(GREEN, 100)
        for document in (show, show.loading):  # lakes and their like have a state of their own
            for kind in range(5):
                document.effect(kind, *[document.function((0, 100, 0.5))] * 2)
        show.write(self.folder)
        player, status = self.run_through(ASAN_OPTIONS='detect_leaks=1:exitcode=0')
        self.assert_lines(player.lines, *found(), *report(), *ENDS)
        self.assertEqual(status, 0)
        self.assertTrue(any('LeakSanitizer' in line for line in player.errors))  # SDL's and the driver's
        self.assertEqual([line for line in player.errors if 'src/engine/' in line], [])


class ClockTest(PlayerTest):
    def played_seconds(self, first_line, length, music, **environment):
        """How long a show of `length` ticks went on after a line."""
        show = colour_show(length, music)
        show.layer(wireframe_scene(show), length, track=2)
        show.write(self.folder)
        player, status = self.run_through(**environment)
        self.assert_lines(player.lines[-2:], *ENDS)
        self.assertEqual(status, 0)
        return player.time_of('Benchmark') - player.time_of(first_line), player

    def test_the_audio_clock_follows_what_the_device_takes(self):
        self.put_tone()
        seconds, player = self.played_seconds(AUDIO, 3000, 'tone.ogg', **sound_to('/dev/null'))
        self.assertLess(seconds, 15, 'half a minute of sound was taken much faster')
        self.assertEqual(player.lines.count(AUDIO), 1)

    def test_music_that_is_no_ogg_is_silent_and_drives_the_clock(self):
        self.put('tone.ogg', b'RIFF and so on')
        sound = os.path.join(self.folder, 'sound')
        seconds, player = self.played_seconds(AUDIO, 3000, 'tone.ogg', **sound_to(sound))
        self.assertLess(seconds, 15)
        with open(sound, 'rb') as file:
            self.assertEqual(file.read().strip(b'\0'), b'')
        self.assertIn('Warning: demo.xmlz: section 15 (music): "tone.ogg" is no Ogg Vorbis file: it plays silent.',
                      player.errors)

    def test_music_that_the_decoder_refuses_is_silent_and_drives_the_clock(self):
        self.put('tone.ogg', b'OggS' + bytes(range(256)))
        seconds, player = self.played_seconds(AUDIO, 3000, 'tone.ogg', **sound_to('/dev/null'))
        self.assertLess(seconds, 15)

    def test_the_timer_goes_on_at_its_own_speed_when_the_music_is_missing(self):
        # Three seconds, or a blink on the audio clock; a line may be read late on a busy machine.
        seconds, player = self.played_seconds(DRAWN, 300, 'tone.ogg', **sound_to('/dev/null'))
        self.assertGreater(seconds, 0.8)
        self.assertIn('Error: cannot open tone.ogg!', player.lines)
        self.assertEqual(player.errors, [])  # the device was not opened

    def test_the_show_goes_on_after_its_music_has_ended(self):
        self.put_tone()  # one second, on a device that takes it in time
        seconds, player = self.played_seconds(AUDIO, 400, 'tone.ogg')
        self.assertGreater(seconds, 1.4)


class SoundTest(PlayerTest):
    """What reaches the device."""

    def sound_of(self, music):
        """Left and right channel of the first seconds."""
        colour_show(300, music).write(self.folder)
        sound = os.path.join(self.folder, 'sound')
        player, status = self.run_through(**sound_to(sound))
        self.assertEqual(status, 0)
        self.assertIn(AUDIO, player.lines)
        samples = array.array('h')
        with open(sound, 'rb') as file:
            content = file.read()
        buffer = 4 * 8192
        while content[:buffer] == bytes(buffer):  # SDL begins with silence until it is told to play
            content = content[buffer:]
        samples.frombytes(content[:len(content) // 4 * 4])
        return samples[0::2], samples[1::2]

    def assert_tone(self, samples, pitch, level):
        """The sound is a sine of this pitch and level."""
        part = samples[8800:17600]
        parts = [sum(s * f(2 * math.pi * pitch * i / RATE) for i, s in enumerate(part)) for f in (math.sin, math.cos)]
        self.assertAlmostEqual(math.hypot(*parts) * 2 / len(part) / 32767, level, delta=0.05 * level)

    def assert_music(self, channels):
        for samples, pitch, level in zip(channels, (441, 882), (0.5, 0.25)):
            self.assert_tone(samples, pitch, level)
            self.assertEqual(set(samples[RATE + 1024:]), {0})  # played once, then silence

    def test_the_music_sounds_once_in_both_channels(self):
        self.put_tone()
        self.assert_music(self.sound_of('tone.ogg'))

    def test_music_is_found_in_the_folder_music_as_well(self):
        self.put_tone('music/tone.ogg')
        self.assert_music(self.sound_of('tone.ogg'))

    def test_music_beside_the_pack_comes_before_the_folder_music(self):
        self.put_tone('music/tone.ogg')
        self.put('tone.ogg', b'no music')
        self.assertEqual(self.sound_of('tone.ogg'), (array.array('h'), array.array('h')))


class LeavingTest(PlayerTest):
    def begin(self, player):
        self.assertTrue(player.start(), player.lines)
        self.assertTrue(player.saw(AUDIO))
        self.assertTrue(player.until(lambda: player.screenshot().pixel(160, 120) == (255, 0, 0)))

    def setUp(self):
        super().setUp()
        colour_show(20000, 'tone.ogg').write(self.folder)
        self.put_tone()

    def test_escape_ends_it_without_a_benchmark_and_no_other_key_does(self):
        with self.player() as player:
            self.begin(player)
            for key in ('space', 'Return', 'q', 'F1'):
                player.press(key, 0.15)
            self.assertIsNone(player.process.poll())
            player.press('Escape')
            self.assertEqual(player.wait(), 0)
            self.assertEqual(player.lines, [*found(), *report(), AUDIO, 'Bye!'])
            self.assertEqual(player.errors, [])

    def test_escape_ends_it_in_a_window_too(self):
        with self.player() as player:
            player.choose(music=True)
            self.begin(player)
            player.press('Escape')
            self.assertEqual(player.wait(), 0)
            self.assertEqual(player.lines, [*found(), *report(), AUDIO, 'Bye!'])

    def test_closing_the_window_ends_it_without_a_word(self):
        with self.player() as player:
            self.begin(player)
            player.close()
            self.assertEqual(player.wait(), 0)
            self.assertEqual(player.lines, [*found(), *report(), AUDIO])
            self.assertEqual(player.errors, [])


class LoadingTest(PlayerTest):
    """The loading screen: red for the first half of the work, green for the second; the show is blue."""

    def loading_screen(self):
        loading = Production('loading_')
        loading.colour(RED, 50)
        loading.colour(GREEN, 50)
        loading.layer(wireframe_scene(loading), 100, track=2)
        return loading

    def slow_show(self):
        show = colour_show(10000, None, BLUE)
        show.entries['large.png'] = png(1024, 1024, (9, 9, 9))
        for _ in range(80):
            show.add(IMAGES, Element('image', filename='large.png', texture_format=0, texture_filter=1))
        show.loading = self.loading_screen()
        return show

    def colours(self, player, until):
        """The colours that the screen went through, each named once as it came."""
        names = {(0, 0, 0): 'black', (255, 0, 0): 'red', (0, 255, 0): 'green', (0, 0, 255): 'blue'}
        seen = []

        def is_there():
            rgb = self.display.client().pixels(100, 100, 1, 1)
            name = names.get(tuple(rgb))
            if name and name not in seen[-1:]:
                seen.append(name)
            return name == until
        self.assertTrue(player.until(is_there), '%r %r' % (seen, player.lines))
        return seen

    def test_a_slow_show_has_its_loading_screen_which_follows_the_progress(self):
        self.slow_show().write(self.folder)
        with self.player() as player:
            player.load_on_one_core()
            self.assertTrue(player.start(), player.lines)
            seen = self.colours(player, 'blue')
            self.assertEqual([name for name in seen if name != 'black'], ['red', 'green', 'blue'])
            self.assertEqual(player.lines, [*found(), *report(), DRAWN])
            self.assertEqual(player.errors, [])

    def test_a_fast_show_never_shows_it(self):
        show = colour_show(3)
        show.loading = self.loading_screen()
        show.write(self.folder)
        # A machine may lose 50 ms anywhere, so one run of three must do without.
        outputs = []
        while len(outputs) < 3 and not any(DRAWN not in lines for lines in outputs):
            outputs.append(self.run_through()[0].lines)
        self.assert_lines(outputs[-1], *found(), *report(), *ENDS)

    def test_closing_the_window_while_it_loads_is_seen_when_it_plays(self):
        show = self.slow_show()
        show.music = 'tone.ogg'
        show.write(self.folder)
        self.put_tone()
        with self.player() as player:
            player.load_on_one_core()
            self.assertTrue(player.start(), player.lines)
            self.colours(player, 'red')
            player.close()
            self.assertEqual(player.wait(), 0)
            self.assertEqual(player.lines, [*found(), *report(), DRAWN, AUDIO])

    def test_a_slow_show_without_a_loading_screen_stays_black(self):
        show = self.slow_show()
        show.loading = None
        show.write(self.folder)
        with self.player() as player:
            self.assertTrue(player.start(), player.lines)
            self.assertIn(self.colours(player, 'blue'), (['black', 'blue'], ['blue']))

    def test_a_broken_loading_screen_ends_it(self):
        show = colour_show(3, 'tone.ogg')
        show.entries['loading.xmlz'] = b'\x05\0\0\0nothing that inflates'
        show.write(self.folder)
        self.put_tone()
        player, status = self.run_through()
        self.assertEqual((player.lines, player.errors, status),
                         ([*found(), *report(), 'Error: loading.xmlz: the document is not compressed (no envelope).'], [], 1))

        show = colour_show(3, 'tone.ogg')
        show.loading = self.loading_screen()
        show.loading.sections[SCENES][1].children[0].attributes.pop('material')
        show.write(self.folder)
        player, status = self.run_through()
        self.assertEqual((player.lines, player.errors, status), (
            [*found(), *report(),
             'Error: loading.xmlz: section 13 (scenes), record 2, object 1: attribute "material" is missing.'], [], 1))


if __name__ == '__main__':
    cases.main()
