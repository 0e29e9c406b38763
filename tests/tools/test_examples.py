#!/usr/bin/env python3
"""Builds every example and every listing that the pages promise to run, without a warning, and looks whether
something is seen of each.

    test_examples.py BRIMLOW_MAKE BRIMLOW_RENDER ROOT

A listing runs when "<!-- runs -->" stands before it. It is a show.lua of its own, in a folder that
`brimlow-make new` made.
"""
import collections
import os
import re
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
from test_brimlow_render import Picture  # noqa: E402

MAKE = RENDER = ROOT = ''
LISTING = re.compile(r'^<!-- runs -->\n```lua\n(.*?)^```', re.S | re.M)
PAGES = ('docs/language.md', 'README.md')
MOMENT = ('--at', '1')
LEAST_SEEN = 0.01           # of a picture: pixels that have another colour than most
MOST_BYTES = 1_500_000      # of all pictures together


def run(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, universal_newlines=True)
    return done.returncode, done.stdout


def told_by_build(source, pack):
    """(status, what was told beside "Wrote ...") of a build."""
    status, output = run(MAKE, 'build', source, '-o', pack)
    return status, [line for line in output.splitlines() if not line.startswith('Wrote ')]


def part_seen(pack, *moment):
    picture = pack + '.png'
    status, output = run(RENDER, '-y', '--size', '160x90', *moment, '-o', picture, pack)
    if status != 0:
        raise AssertionError(output)
    rgb = Picture(picture).rgb
    pixels = collections.Counter(rgb[at:at + 3] for at in range(0, len(rgb), 3))
    return 1 - pixels.most_common(1)[0][1] * 3 / len(rgb)


def examples():
    folder = os.path.join(ROOT, 'productions', 'examples')
    return sorted(name for name in os.listdir(folder) if os.path.isdir(os.path.join(folder, name)))


class Examples(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.folder = place.name
        self.pack = os.path.join(self.folder, 'demo.dpk')

    def test_every_example_builds_in_silence_and_shows_something(self):
        self.assertGreater(len(examples()), 12)
        for name in examples():
            with self.subTest(name):
                source = os.path.join(ROOT, 'productions', 'examples', name)
                self.assertEqual(told_by_build(source, self.pack), (0, []))
                self.assertGreaterEqual(part_seen(self.pack, *MOMENT), LEAST_SEEN)

    def test_a_solid_that_is_given_a_table_says_what_to_write(self):
        for solid in ('ball', 'ring', 'tube', 'floor', 'wall', 'box'):
            source = os.path.join(self.folder, 'show.lua')
            with open(source, 'w', encoding='utf-8') as file:
                file.write('local solids = require "solids"\nlocal it = solids.%s { material = 1 }\n' % solid)
            told = '%s:2: error: solids.%s takes numbers, or nothing: write solids.%s() { material = ... }.'
            self.assertIn(told % (source, solid, solid), told_by_build(source, self.pack)[1])

    def test_the_loading_screen_of_its_example_shows_something(self):
        told_by_build(os.path.join(ROOT, 'productions', 'examples', 'loading'), self.pack)
        self.assertGreaterEqual(part_seen(self.pack, '--loading', '70'), LEAST_SEEN)

    def test_every_example_has_a_picture_and_a_place_on_the_page(self):
        folder = os.path.join(ROOT, 'docs', 'images', 'examples')
        self.assertEqual(sorted(os.listdir(folder)), [name + '.png' for name in examples()])
        self.assertLess(sum(os.path.getsize(os.path.join(folder, name)) for name in os.listdir(folder)), MOST_BYTES)
        with open(os.path.join(ROOT, 'docs', 'language.md'), encoding='utf-8') as file:
            page = file.read()
        lacking = [name for name in examples() if 'productions/examples/%s/show.lua' % name not in page]
        self.assertEqual(lacking, [])

    def test_listings_that_run_build_in_silence_and_show_something(self):
        for page in PAGES:
            with open(os.path.join(ROOT, page), encoding='utf-8') as file:
                listings = LISTING.findall(file.read())
            self.assertTrue(listings, page)
            for number, listing in enumerate(listings, 1):
                with self.subTest('%s, listing %d' % (page, number)):
                    show = os.path.join(self.folder, '%s-%d' % (os.path.basename(page), number))
                    self.assertEqual(run(MAKE, 'new', show)[0], 0)
                    with open(os.path.join(show, 'show.lua'), 'w', encoding='utf-8') as file:
                        file.write(listing)
                    self.assertEqual(told_by_build(show, self.pack), (0, []))
                    self.assertGreaterEqual(part_seen(self.pack, *MOMENT), LEAST_SEEN)


def main():
    global MAKE, RENDER, ROOT
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    MAKE, RENDER, ROOT = (os.path.abspath(path) for path in sys.argv[1:4])
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=1)


if __name__ == '__main__':
    main()
