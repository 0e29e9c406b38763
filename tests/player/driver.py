"""Drives the real player in a real window on a virtual display.

    with Display(1280, 1024) as display, Player(display, exe, folder) as player:
        player.click(*RESOLUTION[1])
        player.start()
        picture = player.screenshot()
        player.press('Escape')
        status = player.wait()

A display serves one player at a time. Nothing here trusts the clock of a busy machine: the
dialog's passes are counted (each sleeps once), windows and lines are waited for. Everything
that is started here is ended here, by process id.
"""
import os
import re
import select
import signal
import subprocess
import tempfile
import threading
import time

from x_client import XClient

TITLE = 'Brimlow Engine v1.0'
RULE = '=' * 74
DIALOG_SIZE = (461, 384)
PATIENCE = 60  # seconds that anything may take on a busy machine under the sanitizers

# The middle of what can be clicked in the dialog.
RESOLUTION = [(80, y) for y in (24, 48, 78, 110, 141, 173, 204, 234, 266, 298, 329, 360)]
ASPECT = [(224, y) for y in (22, 51, 83, 115)]
FULLSCREEN, ANTIALIASING, MUSIC, VERTEX_BUFFERS = [(289, y) for y in (20, 51, 82, 113)]
FIXED_PATH, SHADER_PATH = (320, 328), (320, 358)
START = (318, 217)

# What decides how SDL and Mesa behave: only a test sets it.
ENVIRONMENT_OF_TESTS = ('SDL_VIDEODRIVER', 'SDL_VIDEO_WINDOW_POS', 'SDL_VIDEO_CENTERED', 'AUDIODEV', 'XAUTHORITY',
                        'MESA_GL_VERSION_OVERRIDE', 'MESA_EXTENSION_OVERRIDE', 'GALLIUM_DRIVER')


class Display:
    """A private X server without a screen; it may lack OpenGL, or only its antialiasing."""

    def __init__(self, width=1280, height=1024, opengl=True, antialiasing=True):
        self.width, self.height = width, height
        self.options = [] if opengl else ['-extension', 'GLX']
        # Mesa has two renderers in software; the slow one knows no multisampling.
        self.settings = {'LIBGL_ALWAYS_SOFTWARE': '1', **({} if antialiasing else {'GALLIUM_DRIVER': 'softpipe'})}
        self.server = self.x = self.name = None

    def __enter__(self):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(
            ['Xvfb', '-displayfd', str(writing), '-screen', '0', '%dx%dx24' % (self.width, self.height),
             '-nolisten', 'tcp', '-noreset', '-ac', *self.options],
            env=dict(os.environ, **self.settings), pass_fds=[writing],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writing)
        text = b''
        while b'\n' not in text and select.select([reading], [], [], PATIENCE)[0]:
            got = os.read(reading, 64)
            if not got:
                break
            text += got
        os.close(reading)
        if b'\n' not in text:
            self.__exit__()
            raise RuntimeError('the virtual display did not start')
        self.name = ':%d' % int(text)
        return self

    def __exit__(self, *_):
        if self.x:
            self.x.close()
            self.x = None
        if self.server and self.server.poll() is None:
            self.server.terminate()
            try:
                self.server.wait(5)
            except subprocess.TimeoutExpired:
                self.server.kill()
                self.server.wait()

    def client(self):
        self.x = self.x or XClient(self.name)
        return self.x

    def environment(self, **changes):
        env = dict(os.environ, DISPLAY=self.name, SDL_AUDIODRIVER='dummy', LC_ALL='C')
        for gone in ENVIRONMENT_OF_TESTS:
            env.pop(gone, None)
        env.update(self.settings)
        for key, value in changes.items():
            if value is None:
                env.pop(key, None)
            else:
                env[key] = value
        return env

    def grab(self):
        """The whole screen."""
        return Picture(self.width, self.height, self.client().pixels(0, 0, self.width, self.height))


class Picture:
    """Packed RGB rows, top row first."""

    def __init__(self, width, height, rgb):
        self.width, self.height, self.rgb = width, height, rgb

    def __eq__(self, other):
        return (self.width, self.height, self.rgb) == (other.width, other.height, other.rgb)

    def pixel(self, x, y):
        o = (y * self.width + x) * 3
        return tuple(self.rgb[o:o + 3])

    def crop(self, x, y, width, height):
        rows = [self.rgb[((y + r) * self.width + x) * 3:((y + r) * self.width + x + width) * 3] for r in range(height)]
        return Picture(width, height, b''.join(rows))

    def save(self, path):
        with open(path, 'wb') as f:
            f.write(b'P6\n%d %d\n255\n' % (self.width, self.height) + self.rgb)


class Player:
    """One run of the player, its output read line by line as it comes.

    `arguments` follow the program's name; keywords change its environment (None removes).
    """

    def __init__(self, display, exe, folder, arguments=(), **environment):
        self.display = display
        self.command = [os.path.abspath(exe)] + list(arguments)
        self.folder = folder
        self.environment = environment
        self.lines, self.errors = [], []
        self.line_times = []  # when each of `lines` was read, on the monotonic clock
        self.place = None     # of the dialog

    def __enter__(self):
        self.home = tempfile.TemporaryDirectory()
        env = self.display.environment(HOME=self.home.name, **self.environment)
        self.process = subprocess.Popen(self.command, cwd=self.folder, env=env, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.readers = [threading.Thread(target=self._read, args=arguments, daemon=True)
                        for arguments in ((self.process.stdout, self.lines, self.line_times),
                                          (self.process.stderr, self.errors, []))]
        for reader in self.readers:
            reader.start()
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()
        for reader in self.readers:
            reader.join(5)
        self.process.stdout.close()
        self.process.stderr.close()
        self.home.cleanup()

    @staticmethod
    def _read(stream, lines, times):
        for line in stream:
            times.append(time.monotonic())
            lines.append(line.decode('utf-8', 'replace').rstrip('\n'))

    def until(self, what, seconds=PATIENCE):
        """Waits until what() is true; false when it never was or the player has ended."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if what():
                return True
            if self.process.poll() is not None:
                for reader in self.readers:
                    reader.join(5)
                return bool(what())
            time.sleep(0.01)
        return False

    def saw(self, line, seconds=PATIENCE):
        return self.until(lambda: line in self.lines, seconds)

    def time_of(self, pattern):
        """When the first line that matches was read; None: there is none."""
        return next((at for line, at in zip(self.lines, self.line_times) if re.match(pattern, line)), None)

    # ---- windows

    def window(self):
        """The player's window, which is the topmost: (id, x, y, width, height), or None."""
        windows = self.display.client().top_windows()
        return windows[0][:1] + windows[0][2:] if windows else None

    def title(self):
        """The title that the player gave its window."""
        return next((name for _, name, *_ in self.display.client().top_windows() if name), None)

    def screenshot(self):
        """The window's picture, as far as it lies on the screen."""
        _, x, y, width, height = self.window()
        left, top = max(x, 0), max(y, 0)
        right, bottom = min(x + width, self.display.width), min(y + height, self.display.height)
        return Picture(right - left, bottom - top, self.display.client().pixels(left, top, right - left, bottom - top))

    # ---- the dialog

    def dialog(self):
        """Waits for the settings dialog to be drawn; gives its window."""
        if self.place:
            return self.place
        assert self.until(self._dialog_is_drawn), 'no dialog: %r %r' % (self.lines, self.errors)
        self.place = self.window()
        return self.place

    def _dialog_is_drawn(self):
        window = self.window()
        if not window or window[3:] != DIALOG_SIZE:
            return False
        _, x, y, _, _ = window
        return self.display.client().pixels(x + START[0] - 40, y + START[1], 40, 1) != bytes(120)

    def passes(self, count=3):
        """Waits until the dialog has slept `count` times, once a pass.

        What the server had done before is looked at in the second pass at the latest.
        """
        first = self._sleeps()
        self.until(lambda: self._sleeps() - first >= count)

    def _sleeps(self):
        try:
            with open('/proc/%d/task/%d/status' % (self.process.pid, self.process.pid)) as status:
                return int(re.search(r'^voluntary_ctxt_switches:\s*(\d+)', status.read(), re.M).group(1))
        except (OSError, AttributeError):  # it has ended
            return 1 << 60

    def point(self, x, y):
        """Moves the pointer to a place in the dialog."""
        _, left, top, _, _ = self.dialog()
        self.display.client().move(left + x, top + y)
        self.passes()

    def press_button(self):
        self.display.client().button(True)
        self.passes()

    def release_button(self):
        self.display.client().button(False)
        self.passes()

    def click(self, x, y):
        _, left, top, _, _ = self.dialog()
        self.display.client().move(left + x, top + y)
        self.press_button()
        self.release_button()

    def start(self):
        """Presses the start button; true when the OpenGL window has come and its report is out."""
        self.click(*START)
        return self.until(lambda: self.lines.count(RULE) == 2)

    def choose(self, row=1, aspect=0, fullscreen=False, antialiasing=False, music=True, buffers=True, shaders=True):
        """Brings the dialog from its defaults to these choices."""
        for wanted, place in ((row, RESOLUTION[row]), (aspect, ASPECT[aspect]), (not fullscreen, FULLSCREEN),
                              (not antialiasing, ANTIALIASING), (not music, MUSIC), (not buffers, VERTEX_BUFFERS),
                              (not shaders, FIXED_PATH)):
            if wanted:
                self.click(*place)

    def load_on_one_core(self):
        """Loading takes as long on machines of many cores. Before it begins."""
        os.sched_setaffinity(self.process.pid, {min(os.sched_getaffinity(0))})

    # ---- playing

    def press(self, key, seconds=PATIENCE):
        """Holds a key down in the player's window, for some seconds or until the player has ended.

        Keys are looked at once a frame, so a short press is easily missed.
        """
        client = self.display.client()
        window = self.window()
        if window:
            client.focus(window[0])
        client.key(key, True)
        self.until(lambda: False, seconds)
        client.key(key, False)

    def close(self):
        """Closes the window as a viewer does."""
        self.passes(2)  # SDL forgets what came before the dialog's first pass
        for window in self.display.client().top_windows():
            self.display.client().ask_to_close(window[0])

    def wait(self, seconds=PATIENCE):
        """The exit status; None when the player would not end."""
        try:
            status = self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            return None
        for reader in self.readers:
            reader.join(5)
        return status
