#!/usr/bin/env python3
"""Drives ./play with a player that only tells where it was started: test_play.py ROOT.

Nothing is installed or built: those two steps are replaced."""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = ""
STEPS = '''
need() { echo "$@" >>needed; }
build_preset() { echo "$@" >>built; }
'''
PLAYER = '''#!/bin/sh
echo "player in $(pwd -P)"
for name in *dpk .*dpk; do [ ! -e "$name" ] || echo "pack $name: $(cat "$name")"; done
for name in tune.ogg music/tune.ogg sub/tune.ogg .hidden; do [ ! -e "$name" ] || echo "has $name: $(cat "$name")"; done
for name in * .*; do [ -e "$name" ] || [ ! -L "$name" ] || echo "broken link $name"; done
exit 7
'''
VIRTUAL = '#!/bin/sh\nshift; echo "virtual in $1, shots in $2"; exit 7\n'
ALL_OF_IT = ["has tune.ogg: beside", "has music/tune.ogg: below", "has sub/tune.ogg: elsewhere", "has .hidden: yes"]


class PlayTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory(prefix="test_play ")  # a blank, which must not matter
        self.addCleanup(directory.cleanup)
        self.folder = os.path.realpath(directory.name)
        self.home = os.path.join(self.folder, "home of play")
        self.put("home of play/build/x86/brimlow", PLAYER, 0o755)
        self.put("home of play/build/native/productions/first-light/demo.dpk", "bundled")
        self.put_steps("")
        self.put("home of play/scripts/play-virtual.sh", VIRTUAL, 0o755)
        shutil.copy(os.path.join(ROOT, "play"), self.home)

    def put(self, name, text, mode=0o644):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, mode)

    def put_steps(self, more):
        with open(os.path.join(ROOT, "scripts", "setup.sh"), encoding="utf-8") as file:
            self.put("home of play/scripts/setup.sh", file.read() + STEPS + more + "\n")

    def put_show(self, folder, *packs):
        for pack in packs:
            self.put("%s/%s" % (folder, pack), "I am " + pack)
        self.put(folder + "/tune.ogg", "beside")
        self.put(folder + "/music/tune.ogg", "below")
        self.put(folder + "/sub/tune.ogg", "elsewhere")
        self.put(folder + "/.hidden", "yes")

    def play(self, *arguments, below=".", display=":0", program=None, user=None, steps=None):
        """Status, lines of standard output, standard error."""
        if steps:
            self.put_steps(steps)
        environment = dict(os.environ, SDL_AUDIODRIVER="dummy", DISPLAY=display, CDPATH=self.folder)
        result = subprocess.run([program or os.path.join(self.home, "play"), *arguments], env=environment,
                                cwd=os.path.join(self.folder, below), stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                timeout=60, user=user)
        return result.returncode, result.stdout.decode().splitlines(), result.stderr.decode()

    def plays(self, folder, title, packs, *arguments, others=(), **more):
        status, lines, errors = self.play(*arguments, **more)
        self.assertEqual((status, errors), (7, ""))
        self.assertEqual(lines[:2], ["== playing " + title, "player in " + os.path.join(self.folder, folder)])
        self.assertEqual(lines[2:], ["pack " + pack for pack in packs] + list(others))

    def refuses(self, line, *arguments, **more):
        self.assertEqual(self.play(*arguments, **more), (2, [], "Sorry: %s\n" % line))
        self.assertFalse(os.path.exists(os.path.join(self.home, "built")))

    def built(self):
        with open(os.path.join(self.home, "built"), encoding="utf-8") as file:
            return file.read()

    def needed(self):
        """The packages that were asked for, each time."""
        with open(os.path.join(self.home, "needed"), encoding="utf-8") as file:
            return file.read().splitlines()

    def test_without_argument_the_bundled_show_is_built_and_played(self):
        self.plays("home of play/build/native/productions/first-light", "first-light", ["demo.dpk: bundled"])
        self.assertEqual(self.built(), "native OFF first_light\nx86 OFF brimlow\n")

    def test_where_there_is_no_32_bit_player_all_is_one_build(self):
        self.put("home of play/build/native/brimlow", PLAYER, 0o755)
        status, lines, errors = self.play(steps='need() { echo "$@" >>needed; case $* in *i386*) return 1 ;; esac; }')
        self.assertEqual((status, errors), (7, ""))
        self.assertEqual(lines[0], "== 32-bit libraries cannot be had here: playing with the 64-bit build.")
        self.assertEqual(self.built(), "native OFF first_light\nnative OFF brimlow\n")
        self.put_show("my show", "a.dpk")
        self.play("my show")
        self.assertEqual([["libassimp-dev" in line, "i386" in line] for line in self.needed()],
                         [[True, True], [True, False], [False, True], [True, False]])  # the 64-bit build has all tools

    def test_who_plays_waits_for_no_packages_of_others(self):
        self.put_show("my show", "a.dpk")
        self.play("my show")
        self.play()
        for_one, for_bundled = self.needed()
        for package in ("libsdl1.2-dev", "g++", "zlib1g:i386"):
            self.assertIn(package, for_one.split())
            self.assertIn(package, for_bundled.split())
        for package in ("libassimp-dev", "liblua5.4-dev"):
            self.assertNotIn(package, for_one.split())
            self.assertIn(package, for_bundled.split())
        for package in ("python3", "graphviz", "doctest-dev", "assimp-testmodels", "xvfb"):
            self.assertNotIn(package, for_bundled.split())

    def test_a_build_that_fails_is_a_line(self):
        for failing, line in (("native", "First Light cannot be built (build/native.log)."),
                              ("x86", "the build failed (build/x86.log).")):
            status, _, errors = self.play(steps='build_preset() { [ "$1" != %s ]; }' % failing)
            self.assertEqual((status, errors), (1, "Sorry: %s\n" % line))

    def test_a_folder_is_played_where_it_is(self):
        self.put_show("my show", "a.dpk")
        expected = ("my show", "my show", ["a.dpk: I am a.dpk"])
        self.plays(*expected, "my show", others=ALL_OF_IT)
        self.assertEqual(self.built(), "x86 OFF brimlow\n")
        whole = os.path.join(self.folder, "my show")
        self.plays("my show", whole, ["a.dpk: I am a.dpk"], whole, others=ALL_OF_IT)
        self.plays("my show", "../my show/", ["a.dpk: I am a.dpk"], "../my show/", below="my show", others=ALL_OF_IT)
        self.plays("my show", ".", ["a.dpk: I am a.dpk"], ".", below="my show", others=ALL_OF_IT)
        os.symlink("my show", os.path.join(self.folder, "link"))
        self.plays("my show", "link", ["a.dpk: I am a.dpk"], "link", others=ALL_OF_IT)

    def test_names_that_look_like_options_stand_behind_two_dashes(self):
        self.put_show("-f", "mydpk")
        self.plays("-f", "-f", ["mydpk: I am mydpk"], "--", "-f", others=ALL_OF_IT)
        self.plays("-f", "./-f", ["mydpk: I am mydpk"], "./-f", others=ALL_OF_IT)

    def test_a_pack_alone_is_played_where_it_is(self):
        self.put_show("my show", "a.dpk")
        self.plays("my show", "my show/a.dpk", ["a.dpk: I am a.dpk"], "my show/a.dpk", others=ALL_OF_IT)
        self.plays("my show", "a.dpk", ["a.dpk: I am a.dpk"], "a.dpk", below="my show", others=ALL_OF_IT)

    def test_a_pack_among_others_is_set_apart_with_its_music(self):
        self.put_show("my show", "a.dpk", "b c.dpk", ".d.dpk", "e.dpk")
        folders = set()
        for name in ("a.dpk", "b c.dpk", ".d.dpk", "e.dpk", "a.dpk"):
            status, lines, errors = self.play("my show/" + name)
            self.assertEqual((status, errors, lines[0]), (7, "", "== playing my show/" + name))
            self.assertTrue(lines[1].startswith("player in %s/build/one-pack/" % self.home), lines[1])
            self.assertEqual(lines[2:], ["pack %s: I am %s" % (name, name)] + ALL_OF_IT)
            folders.add(lines[1])
        self.assertEqual(len(folders), 4)
        # a second time what is there now counts
        os.remove(os.path.join(self.folder, "my show", "tune.ogg"))
        os.remove(os.path.join(self.folder, "my show", ".hidden"))
        os.remove(os.path.join(self.folder, "my show", ".d.dpk"))
        self.put("my show/a.dpk", "I am new")
        self.assertEqual(self.play("my show/a.dpk")[1][2:], ["pack a.dpk: I am new"] + ALL_OF_IT[1:3])
        self.assertTrue(os.path.exists(os.path.join(self.folder, "my show", "b c.dpk")))

    def test_without_a_display_the_show_plays_on_a_virtual_one(self):
        self.put_show("my show", "a.dpk")
        for arguments, title, folder in (
                ([], "first-light", self.home + "/build/native/productions/first-light"),
                (["my show"], "my show", self.folder + "/my show")):
            status, lines, errors = self.play(*arguments, display="")
            self.assertEqual((status, errors), (7, ""))
            self.assertEqual(lines, ["== no display: playing %s on a virtual one" % title,
                                     "virtual in %s, shots in build/screenshots" % folder])

    def test_a_link_to_the_script_plays_too(self):
        os.symlink("home of play/play", os.path.join(self.folder, "player"))
        self.put_show("my show", "a.dpk")
        self.plays("my show", "my show", ["a.dpk: I am a.dpk"], "my show", others=ALL_OF_IT,
                   program=os.path.join(self.folder, "player"))

    def test_help(self):
        for option in ("-h", "--help"):
            status, lines, errors = self.play(option)
            self.assertEqual((status, errors, lines[0]), (0, "", "usage: ./play [FOLDER|PACK]"))
        self.assertFalse(os.path.exists(os.path.join(self.home, "built")))

    def test_mistakes_are_one_line_before_anything_is_built(self):
        self.put_show("empty")
        self.put("notes.txt", "")
        self.put("x.DPK", "")
        os.mkfifo(os.path.join(self.folder, "pipe.dpk"))
        self.refuses("there is no folder or pack none.", "none")
        self.refuses("there is no folder or pack empty/none.dpk.", "empty/none.dpk")
        self.refuses('there is no pack in empty: no name there ends in "dpk".', "empty")
        self.refuses('notes.txt is no pack: its name does not end in "dpk".', "notes.txt")
        self.refuses('x.DPK is no pack: its name does not end in "dpk".', "x.DPK")
        self.refuses("pipe.dpk is neither a folder nor a file.", "pipe.dpk")
        self.refuses("the name of a folder or pack is empty.", "")
        self.refuses("one show at a time: ./play takes one folder or one pack, and got 2.", "a", "b")
        self.refuses('there is no option "-x". "./play --help" tells more.', "-x")
        self.refuses('there is no option "--fullscreen". "./play --help" tells more.', "--fullscreen")

    def test_what_cannot_be_read_says_so(self):
        self.put_show("shut", "a.dpk")
        self.put("open/a.dpk", "", 0o000)
        os.chmod(os.path.join(self.folder, "shut"), 0o000)
        os.chmod(self.folder, 0o755)
        user = 65534 if os.geteuid() == 0 else None
        self.refuses("the folder shut cannot be read.", "shut", user=user)
        self.refuses("the pack open/a.dpk cannot be read.", "open/a.dpk", user=user)
        os.chmod(os.path.join(self.folder, "shut"), 0o755)

    def test_a_preset_has_again_what_playing_left_out_of_the_build(self):
        with open(os.path.join(ROOT, "scripts", "setup.sh"), encoding="utf-8") as file:
            left_out = re.findall(r"-D (BRIMLOW_\w+)=", file.read())
        with open(os.path.join(ROOT, "CMakePresets.json"), encoding="utf-8") as file:
            base = json.load(file)["configurePresets"][0]
        self.assertEqual(base["name"], "base")
        self.assertEqual(len(left_out), 2)
        for option in left_out:  # or it would stay as it was found in the folder
            self.assertEqual(base["cacheVariables"].get(option), "ON")


if __name__ == "__main__":
    ROOT = os.path.abspath(sys.argv.pop(1))
    unittest.main()
