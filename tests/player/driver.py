"""Drives the real player in a real window on a virtual display.

    with Display(1280, 1024) as display, Player(display, exe, folder) as player:
        player.click(*RESOLUTION[1])
        player.start()
        picture = player.screenshot()
        player.press('Escape')
        status = player.wait()

Everything that is started here is ended here, by process id.
"""
import ctypes
import os
import re
import select
import signal
import subprocess
import tempfile
import threading
import time

TITLE = 'Brimlow Engine v1.0'
RULE = '=' * 74

# The middle of what can be clicked in the dialog.
RESOLUTION = [(80, y) for y in (24, 48, 78, 110, 141, 173, 204, 234, 266, 298, 329, 360)]
ASPECT = [(224, y) for y in (22, 51, 83, 115)]
FULLSCREEN, ANTIALIASING, MUSIC, VERTEX_BUFFERS = [(289, y) for y in (20, 51, 82, 113)]
FIXED_PATH, SHADER_PATH = (320, 328), (320, 358)
START = (318, 217)


class Display:
    """A private X server without a screen."""

    def __init__(self, width=1280, height=1024):
        self.width, self.height = width, height
        self.server = None
        self.name = None

    def __enter__(self):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(
            ['Xvfb', '-displayfd', str(writing), '-screen', '0', '%dx%dx24' % (self.width, self.height),
             '-nolisten', 'tcp', '-noreset', '-ac'],
            pass_fds=[writing], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writing)
        text = b''
        while b'\n' not in text and select.select([reading], [], [], 30)[0]:
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
        if self.server and self.server.poll() is None:
            self.server.terminate()
            try:
                self.server.wait(5)
            except subprocess.TimeoutExpired:
                self.server.kill()
                self.server.wait()

    def environment(self, **changes):
        env = dict(os.environ, DISPLAY=self.name, SDL_AUDIODRIVER='dummy', LIBGL_ALWAYS_SOFTWARE='1', LC_ALL='C')
        for gone in ('SDL_VIDEODRIVER', 'SDL_VIDEO_WINDOW_POS', 'SDL_VIDEO_CENTERED', 'AUDIODEV', 'XAUTHORITY'):
            env.pop(gone, None)
        for key, value in changes.items():
            if value is None:
                env.pop(key, None)
            else:
                env[key] = value
        return env

    def xdotool(self, *words):
        done = subprocess.run(['xdotool'] + [str(w) for w in words], env=dict(os.environ, DISPLAY=self.name),
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, timeout=30)
        return done.stdout.decode()

    def grab(self):
        """The whole screen."""
        shot = subprocess.run(['import', '-window', 'root', '-depth', '8', 'ppm:-'],
                              env=dict(os.environ, DISPLAY=self.name), stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, timeout=30).stdout
        m = re.match(rb'P6\s+(\d+)\s+(\d+)\s+255\s', shot)
        return Picture(int(m.group(1)), int(m.group(2)), shot[m.end():])

    def ask_to_close(self, window):
        """What a window manager sends when the viewer closes a window."""
        x = ctypes.CDLL('libX11.so.6')
        x.XOpenDisplay.restype = ctypes.c_void_p
        x.XOpenDisplay.argtypes = [ctypes.c_char_p]
        x.XInternAtom.restype = ctypes.c_ulong
        x.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
        x.XSendEvent.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.c_void_p]
        x.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
        x.XCloseDisplay.argtypes = [ctypes.c_void_p]
        connection = x.XOpenDisplay(self.name.encode())
        client_message = 33
        event = (ctypes.c_long * 24)()  # XClientMessageEvent: type, serial, send_event, display, window, ...
        event[0] = client_message
        event[4] = window
        event[5] = x.XInternAtom(connection, b'WM_PROTOCOLS', 0)
        event[6] = 32
        event[7] = x.XInternAtom(connection, b'WM_DELETE_WINDOW', 0)
        x.XSendEvent(connection, window, 0, 0, ctypes.byref(event))
        x.XSync(connection, 0)
        x.XCloseDisplay(connection)


class Picture:
    """Packed RGB rows, top row first."""

    def __init__(self, width, height, rgb):
        self.width, self.height, self.rgb = width, height, rgb

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
    """One run of the player, its output read line by line as it comes."""

    def __init__(self, display, exe, folder, arguments=(), **environment):
        self.display = display
        self.command = [os.path.abspath(exe)] + list(arguments)
        self.folder = folder
        self.environment = environment
        self.lines, self.errors = [], []

    def __enter__(self):
        self.home = tempfile.TemporaryDirectory()
        env = self.display.environment(HOME=self.home.name, **self.environment)
        self.process = subprocess.Popen(self.command, cwd=self.folder, env=env, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.readers = [threading.Thread(target=self._read, args=pair, daemon=True)
                        for pair in ((self.process.stdout, self.lines), (self.process.stderr, self.errors))]
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
    def _read(stream, lines):
        for line in stream:
            lines.append(line.decode('utf-8', 'replace').rstrip('\n'))

    def until(self, what, seconds=30):
        """Waits until what() is true; false when it never was or the player has ended."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if what():
                return True
            if self.process.poll() is not None:
                return bool(what())
            time.sleep(0.02)
        return False

    def saw(self, line, seconds=30):
        return self.until(lambda: line in self.lines, seconds)

    def window(self):
        """The window's id and place: (id, x, y, width, height), or None."""
        for number in self.display.xdotool('search', '--onlyvisible', '--name', '^%s$' % TITLE).split():
            fields = dict(line.split('=', 1) for line in
                          self.display.xdotool('getwindowgeometry', '--shell', number).split() if '=' in line)
            if 'WIDTH' in fields:
                return (int(number),) + tuple(int(fields[k]) for k in ('X', 'Y', 'WIDTH', 'HEIGHT'))
        return None

    def dialog(self, seconds=30):
        """Waits for the settings dialog; gives its window."""
        found = []
        assert self.until(lambda: found.append(self.window()) or (found[-1] and found[-1][3:] == (461, 384)),
                          seconds), 'no dialog: %r %r' % (self.lines, self.errors)
        time.sleep(0.15)
        return found[-1]

    def point(self, x, y):
        _, left, top, _, _ = self.dialog()
        self.display.xdotool('mousemove', left + x, top + y, 'sleep', '0.08')

    def press_button(self):
        self.display.xdotool('mousedown', 1, 'sleep', '0.1')

    def release_button(self):
        self.display.xdotool('mouseup', 1, 'sleep', '0.1')

    def click(self, x, y):
        self.point(x, y)
        self.press_button()
        self.release_button()

    def start(self):
        """Presses the start button and waits for the OpenGL window and its report."""
        self.click(*START)
        return self.until(lambda: self.lines.count(RULE) == 2)

    def choose(self, row=1, aspect=0, fullscreen=False, antialiasing=False, music=True, buffers=True, shaders=True):
        """Brings the dialog from its defaults to these choices."""
        for wanted, place in ((row, RESOLUTION[row]), (aspect, ASPECT[aspect]), (not fullscreen, FULLSCREEN),
                              (not antialiasing, ANTIALIASING), (not music, MUSIC), (not buffers, VERTEX_BUFFERS),
                              (not shaders, FIXED_PATH)):
            if wanted:
                self.click(*place)

    def screenshot(self):
        """The window's picture."""
        _, x, y, width, height = self.window()
        return self.display.grab().crop(x, y, width, height)

    def press(self, key, seconds=0.3):
        window = self.window()
        if window:
            self.display.xdotool('windowfocus', window[0], 'sleep', '0.05')
        self.display.xdotool('keydown', key, 'sleep', str(seconds), 'keyup', key)

    def close(self):
        self.display.ask_to_close(self.window()[0])

    def wait(self, seconds=60):
        """The exit status; None when the player would not end."""
        try:
            status = self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            return None
        for reader in self.readers:
            reader.join(5)
        return status
