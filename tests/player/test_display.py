#!/usr/bin/env python3
"""From the dialog's choices to the OpenGL window: its size and shape, the report, what happens without."""
import cases
from cases import BENCHMARK, FIXED_PATH_LINE, PlayerTest, found, report
from driver import RULE, TITLE, Display
from packs import quad
from production import Production, placed

ENDS = (BENCHMARK, 'Bye!')
SLOW_PBO = ('PBO support detected, but it may be slow (opengl version is lower than 2.1), so i disable it. '
            'Use -forcepbo to enable it.')
RETRY = 'Failed to create opengl context, trying without antialiasing.'
NO_DRIVER = 'Error: failed to create opengl context, please install OpenGL driver.'
OTHER_RESOLUTION = 'Error: failed to create opengl context, please try another resolution.'


def short_show(length=3):
    show = Production()
    show.colour((1, 0, 0), length)
    return show


class DisplayTest(PlayerTest):
    def setUp(self):
        super().setUp()
        short_show().write(self.folder)

    def report_of(self, *arguments, choices=None, **environment):
        """The lines between what is found and the benchmark of a short show."""
        player, status = self.run_through(*arguments, choices=choices, **environment)
        self.assertEqual((status, player.errors), (0, []))
        self.assertEqual(player.lines[:3], found())
        self.assert_lines(player.lines[-2:], *ENDS)
        return player.lines[3:-2]

    def assert_refused(self, *lines, choices=None, **environment):
        """OpenGL failures print these lines and end with status 0."""
        player, status = self.run_through(choices=choices, **environment)
        self.assertEqual((player.lines, player.errors, status), ([*found(), *lines], [], 0))

    # ---- the report

    def test_the_report_depends_on_the_path_and_on_the_vertex_buffers(self):
        for choices, lines in ((dict(), report()),
                               (dict(buffers=False), report(buffers=False)),
                               (dict(shaders=False), report(FIXED_PATH_LINE)),
                               (dict(shaders=False, buffers=False), report(FIXED_PATH_LINE, buffers=False))):
            with self.subTest(**choices):
                self.assertEqual(self.report_of(choices=choices), lines)

    def test_one_combiner_extension_at_most_is_used(self):
        no_nv, no_ati = '-GL_NV_texture_env_combine4', '-GL_ATI_texture_env_combine3'
        for without, fixed, shaders in (
                (no_ati, FIXED_PATH_LINE, []),
                (no_nv, 'Using 4 texture units + ATI_texture_env_combine3.', []),
                (no_nv + ' ' + no_ati, 'Using 4 texture units.', ['.'])):
            with self.subTest(without=without):
                self.assertEqual(self.report_of(choices=dict(shaders=False), MESA_EXTENSION_OVERRIDE=without),
                                 report(fixed))
                self.assertEqual(self.report_of(MESA_EXTENSION_OVERRIDE=without),
                                 report('Using GLSL shaders.', *shaders))

    def test_missing_extensions_are_no_errors(self):
        # Without the second Mesa calls itself 1.5, so the version is fixed.
        lines = self.report_of(
            MESA_EXTENSION_OVERRIDE='-GL_ARB_pixel_buffer_object -GL_ARB_texture_non_power_of_two',
            MESA_GL_VERSION_OVERRIDE='2.1')
        self.assertEqual(lines, [RULE, 'VBO support detected.', 'No PBO support.', 'No NPOT texture support.',
                                 'Texture compression support detected.', 'Using GLSL shaders.', RULE])

    def test_pixel_buffers_are_forced_by_the_first_argument_alone(self):
        for arguments, line in (((), SLOW_PBO), (('-forcepbo',), 'PBO support detected.'),
                                (('-forcepboXYZ', 'x'), 'PBO support detected.'), (('x', '-forcepbo'), SLOW_PBO),
                                (('-forcepb',), SLOW_PBO), (('forcepbo',), SLOW_PBO)):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.report_of(*arguments, MESA_GL_VERSION_OVERRIDE='2.0')[2], line)

    def test_without_shader_entry_points_the_fixed_path_is_taken(self):
        lines = self.report_of(MESA_GL_VERSION_OVERRIDE='1.3')
        self.assertEqual(lines[-3:], ['No GLSL support.', FIXED_PATH_LINE, RULE])

    # ---- no window

    def test_opengl_below_1_3_is_refused(self):
        self.assert_refused('Error: OpenGL 1.3 required, please install a proper OpenGL driver.',
                            MESA_GL_VERSION_OVERRIDE='1.2')

    def test_a_screen_that_is_too_small_asks_for_another_resolution(self):
        larger = dict(row=5, fullscreen=True)
        self.assert_refused(OTHER_RESOLUTION, choices=dict(larger, antialiasing=False))
        self.assert_refused(RETRY, OTHER_RESOLUTION, choices=dict(larger, antialiasing=True))

    def test_without_opengl_a_driver_is_asked_for(self):
        with Display(480, 400, opengl=False) as bare:
            self.display = bare
            self.assert_refused(RETRY, NO_DRIVER)
            self.assert_refused(NO_DRIVER, choices=dict())

    def test_a_driver_without_antialiasing_gets_a_second_try(self):
        with Display(480, 400, antialiasing=False) as plain:
            self.display = plain
            self.assertEqual(self.report_of(), [RETRY, 'Success! :)', *report()])
            self.assertEqual(self.report_of(choices=dict()), report())


class WindowTest(PlayerTest):
    screen = (1280, 1024)

    def setUp(self):
        super().setUp()
        # Seen from (0, 0, 2) under 90 degrees the quad is half as high as the window.
        show = Production()
        square = show.mesh(quad(-1, -1, 1, 1))
        show.layer(show.scene(placed(square, show.material((1, 1, 1)))), 10000, camera=(0, 0, -2, 0, 0, 0), fov=90)
        show.write(self.folder)

    def play(self, **choices):
        """The window's place in the running show, and the width and height of the quad in it."""
        with self.player() as player:
            if choices:
                player.choose(music=True, **choices)
            self.assertTrue(player.start(), player.lines)
            size = {}

            def is_drawn():
                picture = player.screenshot()
                middle = picture.height // 2
                size['width'] = sum(picture.pixel(x, middle)[0] > 127 for x in range(picture.width))
                size['height'] = sum(picture.pixel(picture.width // 2, y)[0] > 127 for y in range(picture.height))
                return size['width'] and size['height']
            self.assertTrue(player.until(is_drawn), player.lines)
            return player.window()[1:], size['width'], size['height']

    def assert_quad(self, played, width, height):
        self.assertAlmostEqual(played[1], width, delta=1)
        self.assertAlmostEqual(played[2], height, delta=1)

    def test_the_defaults_fill_the_screen(self):
        played = self.play()
        self.assertEqual(played[0], (0, 0, 1280, 1024))
        self.assert_quad(played, 512, 512)

    def test_the_size_is_the_rows_and_the_shape_the_aspects(self):
        sizes = (320, 240), (400, 300), (512, 384), (640, 480), (800, 600), (1024, 768), (1280, 720), (1280, 1024)
        for row, size in enumerate(sizes, 1):
            aspect = row % 4
            shape = (size[0] / size[1], 4 / 3, 16 / 9, 1.6)[aspect]
            with self.subTest(row=row, aspect=aspect):
                played = self.play(row=row, aspect=aspect)
                self.assertEqual(played[0][2:], size)
                self.assert_quad(played, size[0] / shape / 2, size[1] / 2)

    def test_a_window_may_be_larger_than_the_screen(self):
        for row, size in ((9, (1440, 900)), (10, (1600, 1200)), (11, (1920, 1080))):
            with self.subTest(row=row), self.player() as player:
                player.choose(row=row)
                self.assertTrue(player.start(), player.lines)
                self.assertEqual(player.window()[3:], size)
                player.close()
                self.assertEqual((player.wait(), player.lines[0]), (0, TITLE))


if __name__ == '__main__':
    cases.main()
