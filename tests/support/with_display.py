#!/usr/bin/env python3
"""Runs a command on a virtual display of its own and ends with its status.

    with_display.py COMMAND [ARGUMENT ...]
"""
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'player'))
from driver import Display  # noqa: E402


def main():
    with Display(800, 600) as display:
        return subprocess.call(sys.argv[1:], env=display.environment())


if __name__ == '__main__':
    sys.exit(main())
