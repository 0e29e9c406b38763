"""What the test files of the player share: a display for the file, a folder for the case, whole outputs.

Each file runs by itself: python3 tests/player/test_dialog.py PLAYER [unittest's arguments]
"""
import os
import sys
import tempfile
import unittest

from driver import RULE, TITLE, Display, Player

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, '..', 'support'))  # packs.py, production.py
BENCHMARK = r'Benchmark result: \d+\.\d\d fps'
NO_BENCHMARK = r'Benchmark result: -?nan fps'  # no frame in no time

exe = os.path.abspath(sys.argv[1])  # the player under test


def is_sanitized():
    with open(exe, 'rb') as file:
        return b'__asan_init' in file.read()


class PlayerTest(unittest.TestCase):
    screen = (480, 400)

    @classmethod
    def setUpClass(cls):
        cls.display = cls.enterClassContext(Display(*cls.screen))

    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory(prefix='brimlow_'))

    def put(self, name, content=b''):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, 'wb') as file:
            file.write(content)
        return path

    def put_tone(self, name='tone.ogg'):
        with open(os.path.join(HERE, 'tone.ogg'), 'rb') as file:
            return self.put(name, file.read())

    def player(self, *arguments, **environment):
        return Player(self.display, exe, self.folder, arguments, **environment)

    def run_through(self, *arguments, choices=None, **environment):
        """Starts the show in the folder, with choices or with the dialog's defaults, to its end.

        Gives the player and its exit status.
        """
        with self.player(*arguments, **environment) as player:
            if choices is not None:
                player.choose(**choices)
            player.start()
            status = player.wait()
            self.assertIsNotNone(status, 'it never ended: %r' % player.lines)
            return player, status

    def assert_lines(self, lines, *expected):
        """The whole output; an expected line that begins with "Benchmark" is a pattern."""
        self.assertEqual(len(lines), len(expected), lines)
        for line, wanted in zip(lines, expected):
            if wanted.startswith('Benchmark'):
                self.assertRegex(line, '^%s$' % wanted)
            else:
                self.assertEqual(line, wanted, lines)


def found(name='demo.dpk'):
    """What is printed before the window opens."""
    return [TITLE, 'Found %s.' % name, 'Starting the demo.']


def report(*path, buffers=True):
    """The capability report of the test machines' driver."""
    vbo = ['VBO support detected.'] if buffers else []
    return [RULE, *vbo, 'PBO support detected.', 'NPOT texture support detected.',
            'Texture compression support detected.', *(path or ['Using GLSL shaders.']), RULE]


FIXED_PATH_LINE = 'Using 4 texture units + NV_texture_env_combine4.'


def main():
    # Leaks are not looked for: by design nothing but what the shutdown names is freed at the end, SDL
    # keeps the dialog's surfaces, and the OpenGL driver keeps a little of its own. One case of
    # test_playing.py looks for leaks of the player's own all the same.
    os.environ.setdefault('ASAN_OPTIONS', 'detect_leaks=0')
    unittest.main(module='__main__', argv=sys.argv[:1] + sys.argv[2:])
