"""Drives the real brimlow-preview in a real window on a virtual display, by its control socket and by keys.

    with Display(1280, 900) as display, Preview(display, exe, 'show.lua', '--size', '320x180', '--paused') as preview:
        preview.ask('go', time=1.5)
        preview.settled()
        rgb = preview.picture()                 # a still of it: tools/test_brimlow_render.py has Picture
        preview.press('space')
        preview.refused('go', time=-1)          # the sentence that it answers

A window is driven by preview.press, preview.click and preview.drag. Everything that is started here is ended here, by
process id.
"""
import json
import os
import signal
import socket
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'player'))
from driver import PATIENCE, Display  # noqa: E402,F401

KEY_HELD = 0.05  # seconds


class Refused(Exception):
    """An answer that is not "ok"; its text is the sentence."""


class Control:
    """A client of the control socket."""

    def __init__(self, path, patience=PATIENCE):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(2 * patience)  # longer than what it is asked to wait for
        try:
            self.socket.connect(path)
        except OSError:
            self.socket.close()
            raise
        self.lines = self.socket.makefile('r', encoding='utf-8', newline='\n')
        self.count = 0

    def close(self):
        self.lines.close()
        self.socket.close()

    def say(self, line):
        """Sends a line as it is; the answer as it comes."""
        self.socket.sendall(line.encode('utf-8') + b'\n')
        return json.loads(self.lines.readline())

    def ask(self, what, **fields):
        """Asks, and gives the answer's fields; Refused where it is no."""
        self.count += 1
        answer = self.say(json.dumps({'do': what, 'id': self.count, **fields}))
        assert answer['id'] == self.count, answer
        if not answer['ok']:
            raise Refused(answer['error'])
        return answer


class Preview:
    """One run of the preview. `arguments` follow the program's name; keywords change its environment (None removes)."""

    def __init__(self, display, exe, *arguments, folder=None, **environment):
        self.display = display
        self.home = tempfile.TemporaryDirectory(prefix='brimlow-preview-')
        self.path = os.path.join(self.home.name, 'control')
        self.command = [os.path.abspath(exe), '--control', self.path, *map(str, arguments)]
        self.folder = folder
        self.environment = environment
        self.lines = []  # that it printed, when it has ended
        self.control = self.process = None

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.stop()
        self.home.cleanup()

    def start(self):
        """Starts it and waits for its socket, not for its first build."""
        self.output = tempfile.TemporaryFile('w+')
        environment = self.display.environment(HOME=self.home.name, **self.environment)
        self.process = subprocess.Popen(self.command, cwd=self.folder, env=environment, stdin=subprocess.DEVNULL,
                                        stdout=self.output, stderr=subprocess.STDOUT)
        end = time.monotonic() + PATIENCE
        while self.control is None:
            try:
                self.control = Control(self.path)
            except OSError:  # it is not there yet, or nobody listens yet
                if self.process.poll() is not None or time.monotonic() > end:
                    self.stop()
                    raise RuntimeError('the preview did not start: ' + '\n'.join(self.lines)) from None
                time.sleep(0.01)

    def stop(self):
        """Asks it to quit, and ends it where it does not; its exit status."""
        if self.process is None:
            return None
        if self.process.poll() is None:
            try:
                self.control.ask('quit')
                self.process.wait(PATIENCE)
            except (AttributeError, OSError, ValueError, Refused, subprocess.TimeoutExpired):
                self.process.send_signal(signal.SIGKILL)
                self.process.wait()
        if self.control:
            self.control.close()
            self.control = None
        self.lines = self.told().splitlines()
        self.output.close()
        status, self.process = self.process.wait(), None
        return status

    def told(self):
        """What it printed."""
        self.output.seek(0)
        return self.output.read()

    # ---- by the socket

    def ask(self, what, **fields):
        return self.control.ask(what, **fields)

    def refused(self, what, **fields):
        """The sentence with which something is refused; None: it was not."""
        try:
            self.ask(what, **fields)
            return None
        except Refused as no:
            return str(no)

    def status(self):
        return self.ask('status')

    def settled(self, seconds=PATIENCE):
        """Waits until nothing is under way and the picture is exact; the status then."""
        return self.ask('wait', **{'for': 'settled', 'timeout': seconds})

    def shown(self, change, seconds=PATIENCE):
        """Calls what changes a file, and waits for the new picture; the times of the reload."""
        before = self.status()['builds_shown']
        change()
        return self.ask('wait', **{'for': 'shown', 'number': before, 'timeout': seconds})

    def built(self, change, seconds=PATIENCE):
        """Calls what changes a file, and waits for what becomes of it, good or bad."""
        before = self.status()['build']['number']
        change()
        return self.ask('wait', **{'for': 'build', 'number': before, 'timeout': seconds})

    def errors(self):
        """(file, line, text) of each error of the latest build."""
        return [(one['file'], one.get('line', 0), one['text'])
                for one in self.ask('errors')['problems'] if one['severity'] == 'error']

    def still(self, path):
        return self.ask('still', file=path)

    def picture(self):
        """The bytes of a PNG file of the picture, which is exact."""
        path = os.path.join(self.home.name, 'still.png')
        self.still(path)
        with open(path, 'rb') as file:
            return file.read()

    # ---- by hand

    def window(self):
        """(x, y, width, height) of it."""
        windows = self.display.client().top_windows()
        return windows[0][2:]

    def turns(self, count=3):
        """Waits until the preview has gone round so many times: it answers once a turn."""
        for _ in range(count):
            self.status()

    def press(self, key, *held, ends=False):
        """Presses a key, with others held, as X names them: "space", "comma", "Left", "a", "Shift_L"."""
        client = self.display.client()
        client.focus(client.top_windows()[0][0])
        for name in (*held, key):
            client.key(name, True)
        time.sleep(KEY_HELD)
        for name in (key, *reversed(held)):
            client.key(name, False)
        if not ends:
            self.turns()

    def drawn(self, windows, seconds=5):
        """Waits until the window has been drawn twice since it was so often, once with what the hand did; it is drawn
        only when something happens, and then the wait is in vain."""
        self.until(lambda status: status['windows'] >= windows + 2, seconds)

    def point(self, x, y):
        """Moves the pointer to a place in the window."""
        windows = self.status()['windows']
        left, top, _, _ = self.window()
        self.display.client().move(left + int(x), top + int(y))
        self.drawn(windows)

    def click(self, x, y):
        self.point(x, y)
        self.button(True)
        self.button(False)

    def button(self, down):
        windows = self.status()['windows']
        self.display.client().button(down)
        self.drawn(windows)

    def drag(self, x, y, to_x, to_y, steps=5):
        self.point(x, y)
        self.button(True)
        for step in range(1, steps + 1):
            self.point(x + (to_x - x) * step / steps, y + (to_y - y) * step / steps)
        self.button(False)

    def until(self, what, seconds=PATIENCE):
        """Waits until what(status) is true; the status, or None when it never was."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            status = self.status()
            if what(status):
                return status
            time.sleep(0.02)
        return None

    def place(self, name):
        """Where something lies in the window: (x, y, width, height). The names are those that places() has."""
        return self.places()[name]

    def places(self):
        return {one['name']: (one['x'], one['y'], one['width'], one['height']) for one in self.ask('places')['places']}

    def click_picture(self, x, y):
        """Clicks what the picture shows at a pixel of it."""
        width, height = self.status()['size']
        left, top, shown_width, shown_height = self.place('picture')
        self.click(left + (x + 0.5) * shown_width / width, top + (y + 0.5) * shown_height / height)
