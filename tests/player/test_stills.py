#!/usr/bin/env python3
"""The player's window compared with a still: a picture that does not move, on both paths.

The stills of tests/pictures are drawn by brimlow-render, which is no 32-bit program and has no window; this one
has to look the same in the player. The rule is that of tests/pictures/README.md: at most 1.0 of 255, the mean
difference of the worst colour.
"""
import os
import struct
import sys
import zlib

import cases
from cases import PlayerTest
from driver import Picture

sys.path.insert(0, os.path.join(cases.HERE, '..', 'pictures'))
import shows  # noqa: E402

STILLS = os.path.join(cases.HERE, '..', 'pictures', 'stills')
TOLERANCE = 1.0
SECONDS = 20  # that the picture may take to come


def unfiltered(kind, row, above):
    """A row of a PNG of three bytes a pixel."""
    result = bytearray(row)
    for i, byte in enumerate(row):
        left, up, corner = (result[i - 3] if i > 2 else 0), above[i], (above[i - 3] if i > 2 else 0)
        guess = left + up - corner
        paeth = min((left, up, corner), key=lambda near: abs(guess - near))
        result[i] = byte + (0, left, up, (left + up) // 2, paeth)[kind] & 255
    return result


def read_png(path):
    """A PNG of eight bits a colour, without transparency."""
    with open(path, 'rb') as file:
        data = file.read()
    width, height, depth, colours = struct.unpack('>IIBB', data[16:26])
    assert (depth, colours) == (8, 2), path
    at, packed = 8, b''
    while at < len(data):
        size, kind = struct.unpack('>I4s', data[at:at + 8])
        packed += data[at + 8:at + 8 + size] if kind == b'IDAT' else b''
        at += size + 12
    raw, rows = zlib.decompress(packed), [bytes(3 * width)]
    for y in range(height):
        begin = y * (3 * width + 1)
        rows.append(unfiltered(raw[begin], raw[begin + 1:begin + 1 + 3 * width], rows[-1]))
    return Picture(width, height, b''.join(rows[1:]))


def mean_difference(one, other):
    """Of the worst colour; pictures of different sizes are as different as can be."""
    if (one.width, one.height) != (other.width, other.height):
        return 255.0
    pairs = [zip(one.rgb[c::3], other.rgb[c::3]) for c in range(3)]
    return max(sum(abs(a - b) for a, b in colour) for colour in pairs) / (one.width * one.height)


class StillTest(PlayerTest):
    def assert_held(self, path, **choices):
        shows.SHOWS['held'](self.folder)
        wanted = read_png(os.path.join(STILLS, 'held-' + path, '00000.png'))
        with self.player() as player:
            player.choose(row=1, **choices)
            self.assertTrue(player.start(), player.lines)
            seen = []

            def is_there():
                seen.append(mean_difference(player.screenshot(), wanted))
                return seen[-1] <= TOLERANCE
            self.assertTrue(player.until(is_there, SECONDS), 'the least difference is %s' % min(seen, default=None))

    def test_the_still_is_in_the_window_with_generated_shaders(self):
        self.assert_held('glsl')

    def test_the_still_is_in_the_window_on_the_fixed_path(self):
        self.assert_held('fixed', shaders=False)

    def test_the_still_is_in_the_window_without_vertex_buffers(self):
        self.assert_held('glsl', buffers=False)


if __name__ == '__main__':
    cases.main()
