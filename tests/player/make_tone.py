#!/usr/bin/env python3
"""Makes tone.ogg: one second, 441 Hz on the left at half of full scale, 882 Hz on the right at a quarter.

Needs oggenc (Debian: vorbis-tools). Only whoever changes the tone runs this.
"""
import math
import os
import struct
import subprocess

RATE = 44100
HERE = os.path.dirname(os.path.abspath(__file__))


def sample(i):
    return [round(32767 * level * math.sin(2 * math.pi * pitch * i / RATE))
            for level, pitch in ((0.5, 441), (0.25, 882))]


def main():
    raw = b''.join(struct.pack('<hh', *sample(i)) for i in range(RATE))
    subprocess.run(['oggenc', '-Q', '-r', '-R', str(RATE), '-C', '2', '-B', '16', '-q', '1', '--discard-comments',
                    '-s', '1', '-o', os.path.join(HERE, 'tone.ogg'), '-'], input=raw, check=True)


if __name__ == '__main__':
    main()
