"""What the driver asks of the X server, by ctypes: a pointer, a keyboard, windows and pictures.

One XClient is one connection and belongs to one thread.
"""
import ctypes
import functools
from ctypes import POINTER, byref, c_char_p, c_int, c_long, c_uint, c_ulong, c_void_p

CURRENT_TIME, CLIENT_MESSAGE, FOCUS_PARENT, VIEWABLE, ALL_PLANES, Z_PIXMAP = 0, 33, 2, 2, c_ulong(-1), 2


class Attributes(ctypes.Structure):
    """XWindowAttributes."""
    _fields_ = ([(name, c_int) for name in ('x', 'y', 'width', 'height', 'border_width', 'depth')]
                + [('visual', c_void_p), ('root', c_ulong), ('window_class', c_int)]
                + [(name, c_int) for name in ('bit_gravity', 'win_gravity', 'backing_store')]
                + [('backing_planes', c_ulong), ('backing_pixel', c_ulong), ('save_under', c_int),
                   ('colormap', c_ulong), ('map_installed', c_int), ('map_state', c_int), ('rest', c_long * 8)])


class Image(ctypes.Structure):
    """The head of XImage."""
    _fields_ = ([(name, c_int) for name in ('width', 'height', 'offset', 'format')] + [('data', c_void_p)]
                + [(name, c_int) for name in ('byte_order', 'unit', 'bit_order', 'pad', 'depth', 'bytes_per_line',
                                              'bits_per_pixel')])


ErrorHandler = ctypes.CFUNCTYPE(c_int, c_void_p, c_void_p)
ignore_error = ErrorHandler(lambda display, error: 0)  # a window may go while it is asked about


@functools.lru_cache(None)
def libraries():
    x, test = ctypes.CDLL('libX11.so.6'), ctypes.CDLL('libXtst.so.6')
    for name, result, arguments in (
            ('XOpenDisplay', c_void_p, (c_char_p,)), ('XCloseDisplay', c_int, (c_void_p,)),
            ('XDefaultRootWindow', c_ulong, (c_void_p,)), ('XSync', c_int, (c_void_p, c_int)),
            ('XSetErrorHandler', c_void_p, (ErrorHandler,)), ('XFree', c_int, (c_void_p,)),
            ('XStringToKeysym', c_ulong, (c_char_p,)), ('XKeysymToKeycode', ctypes.c_ubyte, (c_void_p, c_ulong)),
            ('XInternAtom', c_ulong, (c_void_p, c_char_p, c_int)),
            ('XQueryTree', c_int, (c_void_p, c_ulong, POINTER(c_ulong), POINTER(c_ulong), POINTER(POINTER(c_ulong)),
                                   POINTER(c_uint))),
            ('XFetchName', c_int, (c_void_p, c_ulong, POINTER(c_void_p))),
            ('XGetWindowAttributes', c_int, (c_void_p, c_ulong, POINTER(Attributes))),
            ('XSetInputFocus', c_int, (c_void_p, c_ulong, c_int, c_ulong)),
            ('XSendEvent', c_int, (c_void_p, c_ulong, c_int, c_long, c_void_p)),
            ('XGetImage', POINTER(Image), (c_void_p, c_ulong, c_int, c_int, c_uint, c_uint, c_ulong, c_int)),
            ('XDestroyImage', c_int, (POINTER(Image),))):
        function = getattr(x, name)
        function.restype, function.argtypes = result, arguments
    test.XTestFakeMotionEvent.argtypes = (c_void_p, c_int, c_int, c_int, c_ulong)
    test.XTestFakeButtonEvent.argtypes = (c_void_p, c_uint, c_int, c_ulong)
    test.XTestFakeKeyEvent.argtypes = (c_void_p, c_uint, c_int, c_ulong)
    x.XInitThreads()
    x.XSetErrorHandler(ignore_error)
    return x, test


class XClient:
    def __init__(self, name):
        self.x, self.test = libraries()
        self.connection = self.x.XOpenDisplay(name.encode())
        if not self.connection:
            raise RuntimeError('no connection to display ' + name)
        self.root = self.x.XDefaultRootWindow(self.connection)

    def close(self):
        self.x.XCloseDisplay(self.connection)

    def sync(self):
        """Returns when the server has done everything that was asked of it."""
        self.x.XSync(self.connection, 0)

    # ---- input

    def move(self, x, y):
        self.test.XTestFakeMotionEvent(self.connection, -1, x, y, 0)
        self.sync()

    def button(self, down):
        self.test.XTestFakeButtonEvent(self.connection, 1, down, 0)
        self.sync()

    def key(self, name, down):
        code = self.x.XKeysymToKeycode(self.connection, self.x.XStringToKeysym(name.encode()))
        self.test.XTestFakeKeyEvent(self.connection, code, down, 0)
        self.sync()

    def focus(self, window):
        self.x.XSetInputFocus(self.connection, window, FOCUS_PARENT, CURRENT_TIME)
        self.sync()

    def ask_to_close(self, window):
        """What a window manager sends when the viewer closes a window."""
        event = (c_long * 24)()  # XClientMessageEvent: type, serial, send_event, display, window, ...
        event[0] = CLIENT_MESSAGE
        event[4] = window
        event[5] = self.x.XInternAtom(self.connection, b'WM_PROTOCOLS', 0)
        event[6] = 32
        event[7] = self.x.XInternAtom(self.connection, b'WM_DELETE_WINDOW', 0)
        self.x.XSendEvent(self.connection, window, 0, 0, byref(event))
        self.sync()

    # ---- windows

    def top_windows(self):
        """Every visible window of the screen's own: (id, name, x, y, width, height), the topmost first."""
        root, parent, count, list_of = c_ulong(), c_ulong(), c_uint(), POINTER(c_ulong)()
        if not self.x.XQueryTree(self.connection, self.root, byref(root), byref(parent), byref(list_of),
                                 byref(count)):
            return []
        windows = list_of[:count.value]
        if count.value:
            self.x.XFree(ctypes.cast(list_of, c_void_p))
        found = []
        for window in reversed(windows):
            at = Attributes()
            if self.x.XGetWindowAttributes(self.connection, window, byref(at)) and at.map_state == VIEWABLE:
                found.append((window, self.name_of(window), at.x, at.y, at.width, at.height))
        return found

    def name_of(self, window):
        text = c_void_p()
        if not self.x.XFetchName(self.connection, window, byref(text)) or not text.value:
            return ''
        name = ctypes.string_at(text.value).decode('utf-8', 'replace')
        self.x.XFree(text)
        return name

    # ---- pictures

    def pixels(self, x, y, width, height):
        """A rectangle of the screen as packed RGB rows."""
        image = self.x.XGetImage(self.connection, self.root, x, y, width, height, ALL_PLANES, Z_PIXMAP)
        if not image:
            raise RuntimeError('no picture of %d x %d at %d, %d' % (width, height, x, y))
        head = image.contents
        assert head.bits_per_pixel == 32 and head.byte_order == 0, 'a screen of an unknown format'
        rows = ctypes.string_at(head.data, head.bytes_per_line * height)
        if head.bytes_per_line != 4 * width:
            rows = b''.join(rows[head.bytes_per_line * r:head.bytes_per_line * r + 4 * width] for r in range(height))
        self.x.XDestroyImage(image)
        rgb = bytearray(3 * width * height)
        rgb[0::3], rgb[1::3], rgb[2::3] = rows[2::4], rows[1::4], rows[0::4]
        return bytes(rgb)
