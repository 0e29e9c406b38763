#!/usr/bin/env python3
"""Drives brimlow-make: test_brimlow_make.py PROGRAM MAN_PAGE.

Packs are made by tests/support/packs.py and read here with struct alone, so that the
program is compared with the format and not with itself."""

import json
import os
import re
import resource
import shutil
import signal
import stat
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
sys.dont_write_bytecode = True
from packs import in_envelope, pack_bytes  # noqa: E402

PROGRAM = ""
MAN_PAGE = ""
COMPLETION = ""
COMMANDS = ("new", "build", "check", "open", "diff", "graph", "inspect", "list", "extract", "add", "create", "remove", "wrap", "unwrap")
NOT_BEGINNING = ' is no pack: it does not begin with "DP" and the number 1.\n'
A_PIPE = "it is a pipe or a device and no file"


class MakeTest(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory(prefix="test_make_")
        self.addCleanup(self.directory.cleanup)
        self.folder = self.directory.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def put(self, name, content):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(content)

    def get(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def names(self, folder="."):
        return sorted(os.listdir(self.path(folder)))

    def mode(self, name):
        return os.stat(self.path(name)).st_mode & 0o777

    def make(self, *arguments, **more):
        """Status, standard output, standard error."""
        result = subprocess.run([PROGRAM, *arguments], cwd=self.folder, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, timeout=60, **more)
        return result.returncode, result.stdout.decode(), result.stderr.decode()

    def check(self, arguments, status, output="", errors="", **more):
        self.assertEqual(self.make(*arguments, **more), (status, output, errors), arguments)


class CommandLineTest(MakeTest):
    def test_help_is_there_for_the_program_and_for_every_command(self):
        for arguments in (["--help"], ["-h"], ["help"]):
            status, output, errors = self.make(*arguments)
            self.assertEqual((status, errors), (0, ""))
            for command in COMMANDS:
                self.assertIn("\n  %s " % command, output)
            self.assertEqual(len(re.findall(r"^  [a-z]+ [A-Z[]", output, re.M)), len(COMMANDS))
        for command in COMMANDS:
            status, output, errors = self.make(command, "--help")
            self.assertEqual((status, errors), (0, ""))
            self.assertTrue(output.startswith("brimlow-make %s " % command))
            self.assertTrue(all(len(line) <= 80 for line in output.splitlines()))
            self.check([command, "a", "-h", "b"], 0, output)
            self.check(["help", command], 0, output)

    def test_the_version(self):
        self.check(["--version"], 0, "brimlow-make 1.0\n")
        self.check(["-V"], 0, "brimlow-make 1.0\n")

    def test_the_manual_page_has_the_commands_and_options_of_the_help(self):
        with open(MAN_PAGE, encoding="utf-8") as file:
            page = file.read().replace("\\-", "-")
        # of the program and of every command: the options, and the line of arguments
        parts = re.split(r"^\.S[HS] ", page, flags=re.M)
        sections = {part.split("\n", 1)[0].strip('"'): part for part in parts}
        for command in ("", *COMMANDS):
            help_text = self.make(*([command] if command else []), "--help")[1]
            in_help = set(re.findall(r"^  (-{1,2}[A-Za-z-]+)", help_text, re.M))
            in_help |= set(re.findall(r"^  -\w, (--[a-z-]+)", help_text, re.M))
            part = sections["OPTIONS" if not command else command]
            headed = "\n".join(line for line in part.splitlines() if line.startswith(".B"))
            self.assertEqual(set(re.findall(r"(?<![\w-])--?[A-Za-z][a-z-]*", headed)), in_help, command)
        plain_lines = [re.sub(r"\\f[BIR]", "", line) for line in page.splitlines()]
        for command in COMMANDS:
            line = self.make(command, "--help")[1].splitlines()[0]
            self.assertIn(line.replace("brimlow-make ", "", 1), plain_lines)

    def test_wrong_command_lines_give_status_2(self):
        def misuse(arguments, problem, command=""):
            self.check(arguments, 2, errors='Error: %s. "brimlow-make %s--help" tells more.\n' % (problem, command))

        misuse([], "a command is missing")
        misuse(["frob"], "unknown command frob")
        misuse(["fr\x1bob"], "unknown command fr\\x1Bob")
        misuse(["exrtact", "x.dpk"], "unknown command exrtact (did you mean extract?)")
        misuse(["biuld"], "unknown command biuld (did you mean build?)")
        misuse(["build", "a", "b"], "build takes one show: its folder, or its source", "build ")
        misuse(["build", "-o"], "-o takes the name of a pack", "build ")
        misuse(["check", "-o", "a"], "check has no option -o", "check ")
        misuse(["open", "a.dpk"], "open needs -o, like -o show", "open ")
        misuse(["open", "a.dpk", "-o"], "-o takes the name of a folder", "open ")
        misuse(["diff", "a"], "diff takes two shows: the one before and the one after", "diff ")
        misuse(["diff", "a", ""], "a name of a file is empty", "diff ")
        misuse(["graph", "a"], "graph needs -o, like -o graph.svg", "graph ")
        misuse(["graph", "a", "-o", "a.png"],
               '-o takes the name of a drawing that ends in .svg or .dot, not "a.png"', "graph ")
        misuse(["inspect", "a", "-o", "a.dot"], '-o takes the name of a drawing that ends in .svg, not "a.dot"', "inspect ")
        for option, value, wants in (("--bpm", "9", "beats a minute from 10 to 1000"), ("--bpm", "fast",
                                     "beats a minute from 10 to 1000"), ("--beats-per-bar", "1.5", "a number from 1 to 64"),
                                     ("--first-beat", "-1", "seconds from 0 to 256")):
            misuse(["inspect", "a", option, value], '%s takes %s, not "%s"' % (option, wants, value), "inspect ")
        misuse(["new"], "new takes the folder of the show that is to be made", "new ")
        misuse(["new", ""], "a name of a file is empty", "new ")
        misuse(["new", "--forec", "a"], "unknown option --forec", "new ")
        misuse(["list", "--jsn", "a"], "unknown option --jsn (did you mean --json?)", "list ")
        misuse(["extract", "-fx", "a"], "unknown option -fx", "extract ")
        misuse(["--frob"], "unknown option --frob")
        misuse(["--force", "list", "a"], "--force stands behind a command")
        misuse(["list"], "list takes one pack", "list ")
        misuse(["list", "a", "b"], "list takes one pack", "list ")
        misuse(["list", ""], "a name of a file is empty", "list ")
        misuse(["list", "--force", "a"], "list has no option --force", "list ")
        misuse(["list", "--version"], "list has no option --version", "list ")
        misuse(["extract"], "extract takes a pack", "extract ")
        misuse(["extract", "-C", "x", "a"], "extract has no option -C", "extract ")
        misuse(["extract", "a", "--prefix"], "--prefix takes a text", "extract ")
        misuse(["extract", "a", "--force=1"], "--force takes no value", "extract ")
        for command in ("add", "create"):
            misuse([command], command + " takes a pack and files", command + " ")
            misuse([command, "x.dpk"], command + " takes a pack and files", command + " ")
            misuse([command, "x.dpk", "--frob", "a"], "unknown option --frob", command + " ")
            misuse([command, "x.dpk", "-C"], "-C takes a folder", command + " ")
            misuse([command, "x.dpk", "--prefix", "a", "a"], command + " has no option --prefix", command + " ")
        misuse(["add", "-f", "x.dpk", "a"], "add has no option -f", "add ")
        misuse(["remove", "x.dpk"], "remove takes a pack and the names of entries", "remove ")
        misuse(["remove", "x.dpk", "-f", "a"], "remove has no option -f", "remove ")
        misuse(["wrap", "a"], "wrap takes a file and an entry", "wrap ")
        misuse(["wrap", "a", "b", "c"], "wrap takes a file and an entry", "wrap ")
        misuse(["wrap", "a", ""], "a name of a file is empty", "wrap ")
        misuse(["unwrap", "a"], "unwrap takes an entry and a file", "unwrap ")
        self.assertEqual(self.names(), [])


class CompletionTest(MakeTest):
    """What bash offers for a line that ends at the cursor."""

    def offered(self, line):
        run = subprocess.run(["bash", "-uc", "source \"$0\"; PATH=$2:$PATH COMP_LINE=$1 COMP_POINT=${#1}; _brimlow_make; "
                              "printf \"%s\\n\" \"${COMPREPLY[@]}\"", COMPLETION, line, os.path.dirname(PROGRAM)],
                             cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=True, timeout=60)
        self.assertEqual(run.stderr, b"")
        return sorted(name for name in run.stdout.decode().split("\n") if name)

    def test_commands_and_options(self):
        self.assertEqual(self.offered("brimlow-make "), sorted(COMMANDS + ("help",)))
        self.assertEqual(self.offered("brimlow-make ex"), ["extract"])
        self.assertEqual(self.offered("brimlow-make help wr"), ["wrap"])
        self.assertEqual(self.offered("brimlow-make --"), ["--help", "--version"])
        self.assertEqual(self.offered("brimlow-make extract --"), ["--force", "--help", "--prefix"])
        self.assertEqual(self.offered("brimlow-make list a.dpk --j"), ["--json"])
        self.assertEqual(self.offered("brimlow-make frob "), [])

    def test_arguments_are_offered_what_suits_their_place(self):
        os.makedirs(self.path("out"))
        self.put("a.dpk", pack_bytes([("one", b"1"), ("two words", b"22"), ("other", b"")]))
        self.put("sky.png", b"")
        self.put("show.lua", b"")
        packs, files = ["a.dpk", "out"], ["a.dpk", "out", "show.lua", "sky.png"]
        for line, found in (("list ", packs), ("list --json ", packs), ("list a.dpk ", []), ("extract ", packs),
                            ("extract a.dpk ", ["out"]), ("extract -f a.dpk out o", ["one", "other"]),
                            ("extract a.dpk --prefix x ", ["out"]), ("extract a.dpk --prefix ", []),
                            ("remove a.dpk ", ["one", "other", "two words"]), ("remove a.dpk one t", ["two words"]),
                            ("remove none.dpk ", []), ("add a.dpk ", files), ("add a.dpk x y sk", ["sky.png"]),
                            ("add a.dpk -C ", ["out"]), ("add -C out a", ["a.dpk"]), ("add --directory=o", ["out"]),
                            ("new ", ["out"]), ("wrap ", files), ("build ", ["out", "show.lua"]),
                            ("build -o ", packs), ("check ", ["a.dpk", "out", "show.lua"])):
            with self.subTest(line=line):
                self.assertEqual(self.offered("brimlow-make " + line), found)


class NewTest(MakeTest):
    def test_a_new_show_has_a_source_its_files_and_what_editors_read(self):
        told = "%s holds a show now. To play it:\n\n    cd %s\n    brimlow-make build\n    brimlow\n"
        self.check(["new", "first"], 0, told % ("first", "first"))
        self.check(["new", "deep/my show"], 0, told % ("deep/my show", "'deep/my show'"))
        for name in ("show.lua", "README.md", ".luarc.json", "gem.obj", "gem.png", "DejaVuSans.ttf"):
            with self.subTest(name=name):
                self.assertGreater(len(self.get("deep/my show/" + name)), 100)
        self.assertEqual(self.get("deep/my show/gem.png")[:4], b"\x89PNG")
        self.assertEqual(json.loads(self.get("deep/my show/.luarc.json"))["workspace.library"], [".brimlow"])

    def test_an_empty_folder_becomes_a_show_and_others_are_left_alone(self):
        os.mkdir(self.path("empty"))
        self.assertEqual(self.make("new", "empty")[0], 0)
        before = self.names("empty")
        self.put("mine/.hidden", b"precious")
        for folder in ("empty", "mine"):
            self.check(["new", folder], 1, errors="Error: %s holds something: it is left as it is. "
                                                  "Name a folder that is new or empty.\n" % folder)
        self.assertEqual((self.names("empty"), self.names("mine")), (before, [".hidden"]))
        self.put("file", b"precious")
        for folder in ("file", "file/below"):
            self.check(["new", folder], 1, errors="Error: cannot make the folder %s: Not a directory.\n" % folder)
        self.assertEqual(self.get("file"), b"precious")


SHOW = """show { title = "Small", bpm = 120 }
local stone = material { color = "#4080ff" }
local block = shape { positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, triangles = {{1, 2, 3}} }
local all = scene "all" { block { material = stone } }
track { all { from = "0s", to = "4s", camera = camera { at = {0, 0, 5}, look_at = {0, 0, 0} } } }
"""
TUNE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "player", "tone.ogg")


class ShowTest(MakeTest):
    def setUp(self):
        super().setUp()
        self.put("a/show.lua", SHOW.encode())

    def put_line(self, name, line, text):
        """The source with another line in place of one of its own."""
        lines = SHOW.splitlines()
        lines[line - 1] = text
        self.put(name, "\n".join(lines).encode())

    def entries(self, pack):
        status, output, errors = self.make("list", "--json", pack)
        self.assertEqual((status, errors), (0, ""))
        return [entry["name"] for entry in json.loads(output)["entries"]]


class BuildTest(ShowTest):
    def test_the_pack_lies_beside_the_source(self):
        size = "Wrote %s: 2 entries, [0-9]+ bytes.\n"
        for arguments, below, pack in ((["a"], ".", "a/demo.dpk"), (["a/show.lua"], ".", "a/demo.dpk"),
                                       ([], "a", "demo.dpk"), (["show.lua"], "a", "demo.dpk"),
                                       ([self.path("a")], ".", self.path("a/demo.dpk"))):
            with self.subTest(arguments=arguments):
                run = subprocess.run([PROGRAM, "build", *arguments], cwd=self.path(below), stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE, timeout=60)
                self.assertEqual((run.returncode, run.stderr), (0, b""))
                self.assertRegex(run.stdout.decode(), "^" + size % re.escape(pack) + "$")
                self.assertEqual(self.entries("a/demo.dpk")[0], "demo.xmlz")
                self.assertEqual(self.names("a"), ["demo.dpk", "show.lua"])
                os.remove(self.path("a/demo.dpk"))

    def test_a_new_show_builds_and_nothing_is_wrong_with_it(self):
        self.assertEqual(self.make("new", "b")[0], 0)
        status, output, errors = self.make("build", "b")
        self.assertEqual((status, errors), (0, ""))
        self.assertTrue(output.startswith("Wrote b/demo.dpk: "), output)
        self.check(["check", "b"], 0, "no problems\n")
        self.check(["check", "b/demo.dpk"], 0, "no problems\n")

    def test_elsewhere_the_music_comes_along(self):
        for name in ("tune.ogg", "music/tune.ogg"):
            self.put_line("a/show.lua", 1, 'show { title = "Small", music = "%s" }' % name)
            shutil.rmtree(self.path("out"), ignore_errors=True)
            os.makedirs(os.path.dirname(self.path("a/" + name)), exist_ok=True)
            shutil.copy(TUNE, self.path("a/" + name))
            os.mkdir(self.path("out"))
            status, output, errors = self.make("build", "a", "-o", "out/x.dpk")
            self.assertEqual(status, 0, errors)
            self.assertRegex(errors, "^(a/show.lua:1: note: .*\n1 note\n)?$") # it is shorter than the show
            self.assertRegex(output, "^Wrote out/x.dpk: 2 entries, [0-9]+ bytes, and the music beside it, out/%s.\n$" % name)
            self.assertEqual(self.get("out/" + name), self.get("a/" + name))
            # beside the source it is there already
            self.assertNotIn("music", self.make("build", "a")[1])

    def test_a_file_that_is_no_music_is_not_replaced_by_it(self):
        self.put_line("a/show.lua", 1, 'show { title = "Small", music = "tune.ogg" }')
        shutil.copy(TUNE, self.path("a/tune.ogg"))
        self.put("out/tune.ogg", b"precious")
        status, _, errors = self.make("build", "a", "-o", "out/x.dpk")
        self.assertEqual(status, 1)
        self.assertIn("Error: out/tune.ogg exists and is no music: it is left as it is.\n", errors)
        self.assertEqual((self.names("out"), self.get("out/tune.ogg")), (["tune.ogg"], b"precious"))
        self.put("out/tune.ogg", b"OggS of another day")
        self.assertEqual(self.make("build", "a", "-o", "out/x.dpk")[0], 0)
        self.assertEqual(self.get("out/tune.ogg"), self.get("a/tune.ogg"))

    def test_the_same_source_makes_the_same_bytes(self):
        self.put("b/show.lua", SHOW.encode())
        self.assertEqual(self.make("build", "a")[0], 0)
        german = dict(os.environ, LC_ALL="de_DE.UTF-8", TZ="Asia/Tokyo")
        self.assertEqual(self.make("build", "b", env=german)[0], 0)
        self.assertEqual(self.get("a/demo.dpk"), self.get("b/demo.dpk"))

    def test_with_an_error_nothing_is_written(self):
        self.put("a/demo.dpk", pack_bytes([("old", b"1")]))
        self.put_line("a/show.lua", 4, 'local all = scen "all" { block { material = stone } }')
        for arguments, place in ((["a"], "a/show.lua"), (["a/show.lua"], "a/show.lua")):
            status, output, errors = self.make("build", *arguments)
            self.assertEqual((status, output), (1, ""))
            self.assertRegex(errors, r'^%s:4: error: .*"scene".*\n1 error\n$' % place)
        self.assertEqual(self.entries("a/demo.dpk"), ["old"])
        status, output, errors = self.make("build", "--json", "a")
        told = json.loads(output)
        self.assertEqual((status, errors, told["errors"], "pack" in told), (1, "", 1, False))
        self.assertEqual((told["problems"][0]["file"], told["problems"][0]["line"]), ("a/show.lua", 4))

    def test_json_tells_what_was_written(self):
        self.put_line("a/show.lua", 1, 'show { title = "Small" } print("built \\7 with care")')
        status, output, errors = self.make("build", "--json", "a")
        self.assertEqual((status, errors), (0, "built \\x07 with care\n"))
        told = json.loads(output)
        self.assertEqual(told, {"problems": [], "errors": 0, "warnings": 0, "notes": 0, "pack": "a/demo.dpk",
                                "entries": 2, "bytes": len(self.get("a/demo.dpk"))})
        self.assertTrue(self.make("build", "a")[1].startswith("built \\x07 with care\nWrote "))

    def test_what_is_no_pack_is_never_replaced(self):
        self.check(["build", "a", "-o", "a/show.lua"], 1,
                   errors="Error: a/show.lua exists and is no pack: it is left as it is.\n")
        self.assertEqual(self.get("a/show.lua"), SHOW.encode())
        self.check(["build", "a", "-o", "none/x.dpk"], 1,
                   errors="Error: cannot write none/x.dpk: No such file or directory.\n")
        self.assertEqual(self.make("build", "a", "-o", "x.pack")[2],
                         'Warning: the player finds packs whose names end in "dpk", and x.pack does not.\n')

    def test_what_is_no_source_is_told(self):
        os.mkdir(self.path("empty"))
        missing = 'Error: there is no show.lua in the folder %s: "brimlow-make new" makes a show to begin with.\n'
        for command in ("build", "check"):
            self.check([command, "empty"], 1, errors=missing % "empty")
            self.check([command], 1, errors=missing % ".")
            self.check([command, "none.lua"], 1, errors="Error: cannot open none.lua: No such file or directory.\n")
        self.check(["build", "none"], 1, errors="Error: cannot open none: No such file or directory.\n")


class CheckTest(ShowTest):
    def test_a_source_is_checked_and_nothing_is_written(self):
        self.check(["check", "a"], 0, "no problems\n")
        self.check(["check", "a/show.lua"], 0, "no problems\n")
        self.check(["check", "--json", "a"], 0, '{"problems":[],"errors":0,"warnings":0,"notes":0}\n')
        self.put_line("a/show.lua", 4, "frob()")
        status, output, errors = self.make("check", "a")
        self.assertEqual((status, errors), (1, ""))
        self.assertRegex(output, r"^a/show.lua:4: error: .*\n(.*\n)*[1-9] errors?.*\n$")
        self.assertEqual(self.names("a"), ["show.lua"])

    def test_what_the_documents_tell_has_lines_of_the_source(self):
        self.put_line("a/show.lua", 1, 'show { title = "Small", music = "none.ogg" }')
        status, output, errors = self.make("check", "--json", "a")
        self.assertEqual(errors, "")
        self.assertGreater(len(json.loads(output)["problems"]), 0)

    def test_of_a_pack_the_place_is_a_record(self):
        self.put("x.dpk", pack_bytes([("demo.xmlz", in_envelope(b"<production><a/></production>")), ("odd", b"1")]))
        status, output, errors = self.make("check", "x.dpk")
        self.assertEqual((status, errors), (1, ""))
        self.assertRegex(output, r"^demo\.xmlz: (.*: )?error: ")
        self.assertRegex(output.splitlines()[-1], r"^[1-9][0-9]* errors?(, .*)?$")
        self.put("note.txt", b"no pack at all")
        self.check(["check", "note.txt"], 1, errors='Error: note.txt is neither a pack nor a source (a folder, or a file '
                                                    'that ends in ".lua").\n')

    def test_colors_are_for_terminals_that_want_them(self):
        self.put_line("a/show.lua", 4, "frob()")

        def told(**environment):
            controller, terminal = os.openpty()
            env = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
            run = subprocess.run([PROGRAM, "check", "a"], cwd=self.folder, stdout=terminal, timeout=60,
                                 env={**env, "TERM": "xterm", **environment})
            os.close(terminal)
            with os.fdopen(controller, "rb") as screen:
                self.assertEqual(run.returncode, 1)
                return screen.read1()
        self.assertIn(b"\x1b[1ma/show.lua:4:\x1b[0m \x1b[1;31merror:\x1b[0m ", told())
        self.assertIn(b"a/show.lua:4: error: ", told(NO_COLOR="1"))
        self.assertIn(b"\x1b[1m", told(NO_COLOR=""))
        self.assertIn(b"a/show.lua:4: error: ", told(TERM="dumb"))


class OpenTest(ShowTest):
    def test_what_is_opened_builds_again(self):
        self.assertEqual(self.make("new", "b")[0], 0)
        for show in ("a", "b"):
            self.assertEqual(self.make("build", show)[0], 0)
            status, output, errors = self.make("open", show + "/demo.dpk", "-o", show + "-again")
            self.assertEqual((status, errors), (0, ""))
            self.assertRegex(output, "^Opened %s/demo.dpk into %s-again: [0-9]+ files.\n$" % (show, show))
            self.check(["diff", show + "/demo.dpk", show + "-again"], 0)
        self.assertEqual(self.names(), ["a", "a-again", "b", "b-again"])

    def test_a_show_that_the_player_only_warns_of_builds_again(self):
        sections = "".join("<s%d/>" % number for number in range(1, 13))
        clip = '<clip id="1" space_before="0" length="400" offset="0" type="0" clearcolor="0">%s</clip>' % (
            '<v type="static" value="1"/>' * 8)
        text = '<p>%s<scenes><scene name=""/></scenes><t>%s</t><music file="tune.ogg"/></p>' % (
            sections, ("<track>%s</track>" % clip) * 34)
        self.put("many/demo.dpk", pack_bytes([("demo.xmlz", in_envelope(text.encode())), ("a/.mesh", b"1"), ("b/.mesh", b"2")]))
        self.put("many/tune.ogg", b"no sound")
        self.assertEqual(self.make("open", "many/demo.dpk", "-o", "again")[::2], (0, ""))
        self.assertEqual(self.get("again/tune.ogg"), b"no sound")
        self.assertEqual(self.make("build", "again")[0], 0)
        self.check(["diff", "many/demo.dpk", "again/demo.dpk"], 0)

    def test_a_damaged_document_is_told(self):
        self.put("bad.dpk", pack_bytes([("demo.xmlz", in_envelope(b"<p/>")[:-3])]))
        self.check(["open", "bad.dpk", "-o", "c"], 0, "Opened bad.dpk into c: 1 files.\n",
                   'Warning: the document "demo.xmlz" is damaged: it is left out.\n')

    def test_folders_that_hold_something_are_left_alone(self):
        self.assertEqual(self.make("build", "a")[0], 0)
        self.put("mine/x", b"precious")
        self.check(["open", "a/demo.dpk", "-o", "mine"], 1,
                   errors="Error: mine exists and holds something: name a new folder.\n")
        self.assertEqual(self.names("mine"), ["x"])
        self.check(["open", "none.dpk", "-o", "c"], 1, errors="Error: cannot open none.dpk: No such file or directory.\n")
        self.check(["open", "a/show.lua", "-o", "c"], 1, errors="Error: a/show.lua is no pack.\n")
        self.assertEqual(self.names(), ["a", "mine"])


class DiffTest(ShowTest):
    def test_shows_are_sources_or_packs(self):
        self.assertEqual(self.make("build", "a")[0], 0)
        for before, after in (("a", "a"), ("a", "a/demo.dpk"), ("a/demo.dpk", "a/show.lua")):
            self.check(["diff", before, after], 0)
        self.put_line("b/show.lua", 2, 'local stone = material { color = "#4080fe" }')
        status, output, errors = self.make("diff", "a/demo.dpk", "b")
        self.assertEqual((status, errors), (1, ""))
        self.assertRegex(output, r"^(demo\.xmlz: .*\n)+$")
        status, output, errors = self.make("diff", "--json", "a/demo.dpk", "b")
        self.assertEqual((status, errors, json.loads(output)["equal"]), (1, "", False))
        self.assertTrue(json.loads(self.make("diff", "--json", "a", "a/demo.dpk")[1])["equal"])

    def test_a_show_that_does_not_build_says_why(self):
        self.put_line("b/show.lua", 4, "frob()")
        for command in (["diff", "a", "b"], ["diff", "b", "a"], ["graph", "b", "-o", "x.svg"]):
            status, output, errors = self.make(*command)
            self.assertEqual((status, output), (1, ""))
            self.assertRegex(errors, r"^b/show\.lua:4: error: ")
        self.check(["diff", "a", "none.dpk"], 1, errors="Error: cannot open none.dpk: No such file or directory.\n")
        self.assertEqual(self.names(), ["a", "b"])


class GraphTest(ShowTest):
    def test_drawings_are_for_dot_or_laid_out(self):
        self.check(["graph", "a", "-o", "x.dot"], 0, "Wrote x.dot.\n")
        self.assertIn(b"digraph", self.get("x.dot"))
        self.assertIn(b"<B>all</B>", self.get("x.dot"))
        self.check(["graph", "a/show.lua", "-o", "x.svg"], 0, "Wrote x.svg.\n")
        self.assertIn(b"</svg>", self.get("x.svg"))
        self.check(["graph", "--textures", "a", "-o", "y.dot"], 0, "Wrote y.dot.\n")
        self.assertNotIn(b"<B>all</B>", self.get("y.dot"))
        self.assertEqual(self.make("build", "a")[0], 0)
        self.check(["graph", "a/demo.dpk", "-o", "x.dot"], 0, "Wrote x.dot.\n")
        self.check(["graph", "a", "-o", "none/x.dot"], 1,
                   errors="Error: cannot write none/x.dot: No such file or directory.\n")

    def test_without_a_document_or_dot_a_line_says_so(self):
        self.put("x.dpk", pack_bytes([("a", b"1")]))
        self.check(["graph", "x.dpk", "-o", "x.svg"], 1, errors='Error: x.dpk has no document that can be drawn: '
                                                                '"brimlow-make check" tells more.\n')
        status, output, errors = self.make("graph", "a", "-o", "x.svg", env=dict(os.environ, PATH="/nowhere"))
        self.assertEqual((status, output, errors.count("\n")), (1, "", 1))
        self.assertIn("graphviz", errors)
        self.assertEqual(self.names(), ["a", "x.dpk"])


class InspectTest(ShowTest):
    def test_files_and_entries(self):
        self.assertEqual(self.make("new", "b")[0], 0)
        self.assertEqual(self.make("build", "b")[0], 0)
        status, output, errors = self.make("inspect", "b/gem.png")
        self.assertEqual((status, errors), (0, ""))
        self.assertIn("256 x 256", output)
        told = json.loads(self.make("inspect", "--json", "b/demo.dpk", "demo.xmlz")[1])
        self.assertEqual((told["name"], told["kind"]), ("demo.xmlz", "document"))
        self.check(["inspect", "b/demo.dpk", "none"], 1, errors='Error: the pack has no entry "none".\n')
        status, output, errors = self.make("inspect", "none")
        self.assertEqual((status, output, errors.count("\n"), errors[:7]), (1, "", 1, "Error: "))

    def test_models_and_fonts(self):
        with open(self.path("leaf.obj"), "w") as file:
            file.write("o leaf\nv 0 0 0\nv 1 0 0\nv 0 2 0\nf 1 2 3\n")
        status, output, errors = self.make("inspect", "leaf.obj")
        self.assertEqual((status, errors), (0, ""))
        self.assertIn("leaf.obj: a model, ", output)
        self.assertIn('node "leaf"', output)
        told = json.loads(self.make("inspect", "--json", "leaf.obj")[1])
        self.assertEqual((told["kind"], told["model"]["box"]["high"]), ("model", [1, 2, 0]))
        told = json.loads(self.make("inspect", "--json", "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf")[1])
        self.assertEqual((told["kind"], told["font"]["family"], told["font"]["lacking"]), ("font", "DejaVu Sans", []))
        for name in ("broken.glb", "broken.ttf"):
            with open(self.path(name), "wb") as file:
                file.write(b"glTF and then words")
            status, output, errors = self.make("inspect", name)
            self.assertEqual((status, output.count("  error: "), errors), (1, 1, ""))

    def test_music_is_drawn_with_its_beats(self):
        shutil.copy(TUNE, self.path("tune.ogg"))
        for more in ([], ["--bpm", "128.5", "--beats-per-bar", "3", "--first-beat", "0.25"]):
            status, output, errors = self.make("inspect", "tune.ogg", "-o", "x.svg", *more)
            self.assertEqual((status, errors, output.splitlines()[-1]), (0, "", "Wrote x.svg."))
            self.assertIn(b"</svg>", self.get("x.svg"))
            os.remove(self.path("x.svg"))
        status, output, errors = self.make("inspect", "a/show.lua", "-o", "x.svg")
        self.assertEqual((status, errors.count("\n")), (1, 1))
        self.assertTrue(errors.startswith("Error: only music files are drawn, and a/show.lua "), errors)
        self.assertFalse(os.path.exists(self.path("x.svg")))


class OutputTest(MakeTest):
    """Standard output and standard error that take nothing."""

    def setUp(self):
        super().setUp()
        self.put("x.dpk", pack_bytes([("a", b"1")]))
        self.put("b", b"22")

    def lost(self, *arguments, stdout=None, redirect=""):
        result = subprocess.run(["sh", "-c", '"$0" "$@" ' + redirect, PROGRAM, *arguments], cwd=self.folder,
                                stdout=stdout or subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)
        return result.returncode, result.stderr.decode()

    def test_output_that_cannot_be_written_is_a_line_and_status_1(self):
        for arguments in (["list", "x.dpk"], ["--help"], ["--version"], ["add", "x.dpk", "b"]):
            self.assertEqual(self.lost(*arguments, redirect=">/dev/full"),
                             (1, "Error: cannot write to standard output: No space left on device.\n"))
            self.assertEqual(self.lost(*arguments, redirect=">&-"),
                             (1, "Error: cannot write to standard output: Bad file descriptor.\n"))

    def test_a_reader_that_goes_away_is_a_line_and_status_1(self):
        reader, writer = os.pipe()
        os.close(reader)
        with os.fdopen(writer, "wb") as pipe:
            self.assertEqual(self.lost("list", "x.dpk", stdout=pipe),
                             (1, "Error: cannot write to standard output: Broken pipe.\n"))

    def test_what_prints_nothing_needs_no_output(self):
        self.assertEqual(self.lost("extract", "x.dpk", "out", redirect=">&-"), (0, ""))
        self.assertEqual(self.get("out/a"), b"1")

    def test_closed_streams_never_lead_lines_into_a_pack(self):
        for redirect in (">&-", "2>&-", "<&-", "<&- >&-", "<&- >&- 2>&-"):
            self.put("x.dpk", pack_bytes([("a", b"1")]))
            self.lost("add", "x.dpk", "b", redirect=redirect)
            self.assertEqual(self.get("x.dpk"), pack_bytes([("a", b"1"), ("b", b"22")]), redirect)
        self.assertEqual(self.names(), ["b", "x.dpk"])
        # with a line of standard error that has no place to go
        self.assertEqual(self.lost("add", "x.dpk", "none", redirect="<&- >&- 2>&-")[0], 1)
        self.assertEqual(self.get("x.dpk"), pack_bytes([("a", b"1"), ("b", b"22")]))


class ListTest(MakeTest):
    def test_list_shows_sizes_and_names(self):
        self.put("x.dpk", pack_bytes([("demo.xmlz", b"12345"), ("empty", b""), ("rock.png", b"x" * 1234)]))
        self.check(["list", "x.dpk"], 0, "         5  demo.xmlz\n         0  empty\n      1234  rock.png\n")

    def test_list_as_json(self):
        self.put("x.dpk", pack_bytes([("a \"b\"", b"123"), (b"\x9b", b""), ("c", b"45")])[:-1])
        status, output, errors = self.make("list", "--json", "x.dpk")
        self.assertEqual((status, errors), (1, "Error: x.dpk is damaged: 1 of its 3 entries do not lie inside it.\n"))
        self.assertEqual(json.loads(output), {"entries": [{"name": "a \"b\"", "damaged": False, "size": 3},
                                                          {"name": "\ufffd", "damaged": False, "size": 0},
                                                          {"name": "c", "damaged": True}]})
        self.put("x.dpk", pack_bytes([]))
        self.check(["list", "--json", "x.dpk"], 0, '{"entries":[]}\n')

    def test_list_of_an_empty_pack_is_empty(self):
        self.put("x.dpk", pack_bytes([]))
        self.check(["list", "x.dpk"], 0)

    def test_list_names_damaged_entries_and_says_how_many(self):
        self.put("x.dpk", pack_bytes([("a", b"123"), ("b", b"45")])[:-1])
        self.check(["list", "x.dpk"], 1, "         3  a\n   damaged  b\n",
                   "Error: x.dpk is damaged: 1 of its 2 entries do not lie inside it.\n")

    def test_names_never_reach_a_terminal_raw(self):
        self.put("x.dpk", pack_bytes([("a\x1b[2Jb", b""), ("\u00e9\u4e16", b""), (b"\x9b7\xff\n", b"")]))
        self.check(["list", "x.dpk"], 0, "         0  a\\x1B[2Jb\n         0  \u00e9\u4e16\n         0  \\x9B7\\xFF\\x0A\n")
        self.check(["list", "a\x07.dpk"], 1, errors="Error: cannot open a\\x07.dpk: No such file or directory.\n")
        self.check(["remove", "x.dpk", "\x1b[0m"], 1, errors='Error: the entry "\\x1B[0m" is not in the pack.\n')
        self.put("y.dpk", pack_bytes([("\x07", b"1"), ("x", b"")])[:-1])
        self.check(["extract", "y.dpk", "", "\x07"], 1, errors='Error: the entry "\\x07" is damaged.\n')

    def test_packs_that_cannot_be_opened_give_the_reason(self):
        os.mkdir(self.path("folder"))
        os.mkfifo(self.path("pipe"))
        self.put("a", b"1")
        for name, reason in (("none.dpk", "No such file or directory"), ("folder", "it is a folder"),
                             ("pipe", A_PIPE), ("/dev/zero", A_PIPE), ("a/x.dpk", "Not a directory")):
            for command in (["list", name], ["extract", name], ["remove", name, "a"], ["add", name, "a"]):
                if name == "none.dpk" and command[0] == "add":
                    continue # which makes it
                self.check(command, 1, errors="Error: cannot open %s: %s.\n" % (name, reason))
        self.assertEqual(self.names(), ["a", "folder", "pipe"])

    def test_a_file_that_does_not_begin_like_a_pack_is_read_with_a_warning_when_it_is_sound(self):
        self.put("x.dpk", b"xyz" + pack_bytes([("a", b"1")])[3:])
        self.check(["list", "x.dpk"], 0, "         1  a\n", "Warning: x.dpk does not begin like a pack.\n")
        self.put("x.dpk", b"xyz" + pack_bytes([("a", b"1")])[3:-1])
        self.check(["list", "x.dpk"], 1, errors="Error: x.dpk" + NOT_BEGINNING)

    def test_files_that_are_no_packs_say_so(self):
        self.put("a.png", b"\x89PNG\r\n\x1a\n" + bytes(range(256)) * 4)
        self.put("empty", b"")
        for command in (["list"], ["extract"], ["remove"], ["add"]):
            more = ["a"] if command[0] in ("remove", "add") else []
            self.put("a", b"1")
            self.check(command + ["a.png"] + more, 1, errors="Error: a.png" + NOT_BEGINNING)
            self.check(command + ["empty"] + more, 1, errors="Error: empty is no pack: it is empty.\n")

    def test_every_truncated_pack_is_one_line_and_status_1(self):
        pack = pack_bytes([("a", b"123"), ("b", b"4567")])
        self.put("c", b"new")
        for length in range(len(pack)):
            self.put("x.dpk", pack[:length])
            for command in (["list", "x.dpk"], ["extract", "x.dpk", "out"], ["add", "x.dpk", "c"],
                            ["remove", "x.dpk", "a"]):
                status, _, errors = self.make(*command)
                self.assertEqual((status, errors.count("\n")), (1, 1), (length, command, errors))
                self.assertIn("x.dpk" if length < 115 or command[0] in ("list", "extract") else '"', errors)
            self.assertEqual(self.get("x.dpk"), pack[:length])
            if length < 115: # 35 + 2 * 40
                self.assertEqual(self.names(), ["c", "x.dpk"])
            else:
                self.assertEqual(self.names("out"), ["a"] if length >= 118 else [])
                shutil.rmtree(self.path("out"))

    def test_an_index_without_an_end_says_so(self):
        self.put("x.dpk", pack_bytes([("a", b"123")])[:3 + 40 + 31])
        self.check(["list", "x.dpk"], 1, errors="Error: x.dpk is cut off: its list of entries has no end.\n")


class ExtractTest(MakeTest):
    def setUp(self):
        super().setUp()
        self.put("x.dpk", pack_bytes([("a", b"one"), ("sky/up.png", b"\0\xff")]))

    def test_a_folder_is_made_and_needs_no_slash(self):
        for folder in ("out", "slash/", "deep/er", "./here/"):
            self.check(["extract", "x.dpk", folder], 0)
            self.assertEqual(self.names(folder), ["a", "sky"])
            self.assertEqual(self.get(folder + "/a"), b"one")
            self.assertEqual(self.get(folder + "/sky/up.png"), b"\0\xff")
        self.check(["extract", "x.dpk"], 0)
        self.assertEqual(self.get("a"), b"one")
        self.assertEqual(self.mode("a"), 0o600)
        os.mkdir(self.path("there"))
        os.symlink("there", self.path("link"))
        self.check(["extract", "x.dpk", "link"], 0) # the user's own link is followed
        self.assertEqual(self.names("there"), ["a", "sky"])

    def test_a_prefix_stands_in_front_of_every_name(self):
        self.check(["extract", "x.dpk", "out", "--prefix", "pre_"], 0)
        self.assertEqual(self.names("out"), ["pre_a", "pre_sky"])
        self.check(["extract", "--prefix=far/pre_", "x.dpk", "", "a"], 0)
        self.assertEqual(self.names("far"), ["pre_a"])

    def test_only_the_entries_named_are_written(self):
        self.check(["extract", "x.dpk", "out", "a", "none", "a"], 1, errors='Error: the entry "none" is not in the pack.\n')
        self.assertEqual(self.names("out"), ["a"])

    def test_nothing_is_written_when_a_file_exists(self):
        self.put("out/a", b"precious")
        self.check(["extract", "x.dpk", "out"], 1,
                   errors='Error: out/a exists: nothing is written. "--force" replaces what exists.\n')
        self.assertEqual(self.names("out"), ["a"])
        self.put("out/sky/up.png", b"precious too")
        self.check(["extract", "x.dpk", "out"], 1,
                   errors='Error: out/a exists, and so do 1 more: nothing is written. "--force" replaces what exists.\n')
        self.assertEqual((self.get("out/a"), self.get("out/sky/up.png")), (b"precious", b"precious too"))
        os.remove(self.path("out/a"))
        os.symlink("nowhere", self.path("out/a"))
        self.check(["extract", "x.dpk", "out", "a"], 1,
                   errors='Error: out/a exists: nothing is written. "--force" replaces what exists.\n')

    def test_force_replaces_files_and_their_bytes_alone(self):
        self.put("out/a", b"what was there, and longer")
        os.chmod(self.path("out/a"), 0o644)
        for force in ("-f", "--force"):
            self.check(["extract", force, "x.dpk", "out"], 0)
            self.assertEqual(self.get("out/a"), b"one")
            self.assertEqual(self.mode("out/a"), 0o644)

    def test_names_that_lead_elsewhere_are_left_out(self):
        self.put("in/y.dpk", pack_bytes([("../a", b"1"), ("/tmp/test_make_never", b"2"), ("b", b"3")]))
        os.remove(self.path("x.dpk"))
        self.put("a", b"precious") # where the first name leads
        self.check(["extract", "in/y.dpk", "in"], 1,
                   errors='Error: the name "../a" has ".." in it.\n'
                          'Error: the name "/tmp/test_make_never" is absolute.\n')
        self.assertEqual(self.names("in"), ["b", "y.dpk"])
        self.assertEqual(self.names(), ["a", "in"])
        self.assertEqual(self.get("a"), b"precious")

    def test_two_names_of_one_file_do_not_replace_each_other(self):
        self.put("x.dpk", pack_bytes([("a", b"one"), ("./a", b"two")]))
        self.check(["extract", "x.dpk", "out"], 1, errors="Error: cannot write out/./a: File exists.\n")
        self.assertEqual(self.get("out/a"), b"one")

    def test_symbolic_links_are_not_passed_through(self):
        os.makedirs(self.path("out"))
        os.mkdir(self.path("elsewhere"))
        os.symlink("../elsewhere", self.path("out/sky"))
        os.symlink("../elsewhere/a", self.path("out/a"))
        self.check(["extract", "-f", "x.dpk", "out"], 1,
                   errors="Error: cannot write out/a: it is a symbolic link.\nError: out/sky is a symbolic link.\n")
        self.assertEqual(self.names("elsewhere"), [])

    def test_the_pack_is_never_replaced(self):
        pack = pack_bytes([("x.dpk", b"1")])
        self.put("x.dpk", pack)
        self.check(["extract", "-f", "x.dpk"], 1, errors="Error: cannot write x.dpk: it is being read.\n")
        self.assertEqual(self.get("x.dpk"), pack)

    def test_folders_that_cannot_be_made_give_the_reason(self):
        self.put("file", b"1")
        self.check(["extract", "x.dpk", "file/out"], 1, errors="Error: cannot make the folder file/out/: Not a directory.\n")

    def test_what_is_sound_of_a_damaged_pack_is_written(self):
        self.put("x.dpk", pack_bytes([("a", b"123"), ("b", b"45"), ("c", b"6")])[:-2])
        self.check(["extract", "x.dpk", "out"], 1,
                   errors="Error: x.dpk is damaged: 2 of its 3 entries do not lie inside it.\n")
        self.assertEqual(self.names("out"), ["a"])
        self.check(["extract", "x.dpk", "other", "a"], 0)
        self.check(["extract", "x.dpk", "third", "b"], 1, errors='Error: the entry "b" is damaged.\n')

    def test_of_two_entries_with_one_name_the_first_counts(self):
        self.put("x.dpk", pack_bytes([("a", b"first"), ("a", b"second")]))
        self.check(["extract", "x.dpk", "out"], 0)
        self.assertEqual(self.get("out/a"), b"first")


class CreateTest(MakeTest):
    def test_create_makes_a_pack_of_the_files_in_order(self):
        self.put("assets/b", b"three")
        self.put("a", b"one")
        self.check(["create", "x.dpk", "assets/b", "a"], 0)
        self.assertEqual(self.get("x.dpk"), pack_bytes([("b", b"three"), ("a", b"one")]))
        self.assertEqual(self.mode("x.dpk"), 0o600)

    def test_files_below_a_folder_are_named_as_given(self):
        self.put("assets/sky/up.png", b"up")
        self.put("a", b"one")
        self.check(["create", "x.dpk", "a", "-C", "assets", "sky/up.png"], 0)
        self.assertEqual(self.get("x.dpk"), pack_bytes([("a", b"one"), ("sky/up.png", b"up")]))
        self.check(["create", "y.dpk", "-C", "assets/", "././sky/up.png", "-C", ".", "a"], 0)
        self.assertEqual(self.get("y.dpk"), pack_bytes([("sky/up.png", b"up"), ("a", b"one")]))

    def test_names_that_look_like_options_stand_behind_two_dashes(self):
        self.put("--force", b"one")
        self.put("-", b"two")
        self.check(["create", "x.dpk", "-", "--", "--force"], 0)
        self.assertEqual(self.get("x.dpk"), pack_bytes([("-", b"two"), ("--force", b"one")]))
        self.check(["remove", "x.dpk", "--", "--force"], 0, "count = 1\nNAME: -\nsize=3\n")

    def test_a_pack_that_exists_is_replaced_only_by_force(self):
        old = pack_bytes([("old", b"old")])
        self.put("x.dpk", old)
        os.chmod(self.path("x.dpk"), 0o644)
        self.put("a", b"one")
        self.check(["create", "x.dpk", "a"], 1, errors='Error: x.dpk exists: it is left as it is. "--force" replaces it.\n')
        self.assertEqual(self.get("x.dpk"), old)
        for force in ("--force", "-f"):
            self.check(["create", force, "x.dpk", "a"], 0)
            self.assertEqual(self.get("x.dpk"), pack_bytes([("a", b"one")]))
            self.assertEqual(self.mode("x.dpk"), 0o644)
        self.put("empty.dpk", b"")
        self.check(["create", "-f", "empty.dpk", "a"], 0)

    def test_names_are_refused_and_everything_is_left_alone(self):
        long_name = "n" * 32
        self.put("in/a", b"one")
        self.put("in/" + long_name, b"one")
        before = self.names()
        for command in ("create", "add"):
            self.check([command, "x.dpk", "in/a", "in/" + long_name], 1,
                       errors='Error: the name "%s" is longer than 31 bytes.\n' % long_name)
            self.check([command, "x.dpk", "-C", "in", "../in/a"], 1, errors='Error: the name "../in/a" has ".." in it.\n')
            self.check([command, "x.dpk", "-C", "in", "/etc/passwd"], 1, errors='Error: the name "/etc/passwd" is absolute.\n')
            self.check([command, "x.dpk", "in/"], 1,
                       errors='Error: "in/" is a folder: files go into a pack one by one.\n')
            self.check([command, "x.dpk", ""], 1, errors='Error: the name "" is empty.\n')
            self.check([command, "x.dpk", "in/a", "-C", "in", "a"], 1, errors='Error: the name "a" is given twice.\n')
            output = "count = 0\n" if command == "add" else ""
            self.check([command, "x.dpk", "none"], 1, output, "Error: cannot open none: No such file or directory.\n")
            self.check([command, "x.dpk", "in"], 1, output, "Error: cannot open in: it is a folder.\n")
        self.assertEqual(self.names(), before)

    def test_what_is_no_pack_is_never_replaced(self):
        self.put("a.png", b"precious")
        self.put("b.png", b"two")
        os.mkdir(self.path("folder.dpk"))
        for force in ([], ["--force"]):
            self.check(["create", *force, "a.png", "b.png"], 1,
                       errors="Error: a.png exists and is no pack: it is left as it is.\n")
            self.check(["create", *force, "folder.dpk", "b.png"], 1,
                       errors="Error: cannot write folder.dpk: it is a folder.\n")
            self.check(["create", *force, "/dev/full", "b.png"], 1, errors="Error: cannot write /dev/full: %s.\n" % A_PIPE)
        self.assertEqual(self.get("a.png"), b"precious")

    def test_a_file_that_goes_into_the_pack_is_never_replaced_by_it(self):
        pack = pack_bytes([("old", b"old")])
        self.put("x.dpk", pack)
        os.link(self.path("x.dpk"), self.path("hard"))
        self.check(["create", "-f", "x.dpk", "./x.dpk"], 1, errors="Error: ./x.dpk is the pack to be written.\n")
        self.check(["create", "-f", "x.dpk", "hard"], 1, errors="Error: hard is the pack to be written.\n")
        self.assertEqual(self.get("x.dpk"), pack)

    def test_a_name_that_the_player_does_not_find_is_warned_of(self):
        self.put("a", b"one")
        for command, output in (("create", ""), ("add", "count = 0\nsize of the file: 3\n")):
            for name in ("x.dpk.old", "dk", "x.DPK"):
                self.check([command, name, "a"], 0, output,
                           'Warning: the player finds packs whose names end in "dpk", and %s does not.\n' % name)
                os.remove(self.path(name))
            for name in ("dpk", "mydpk", "x.dpk"):
                self.check([command, name, "a"], 0, output)
                os.remove(self.path(name))


class AddTest(MakeTest):
    def test_add_replaces_in_place_and_appends(self):
        self.put("x.dpk", pack_bytes([("a", b"1"), ("b", b"22"), ("a", b"hidden"), ("c", b"333")]))
        self.put("b", b"4444")
        self.put("d", b"55555")
        self.put("e", b"")
        self.check(["add", "x.dpk", "d", "b", "e"], 0,
                   "count = 2\nNAME: a\nNAME: c\nsize=1\nsize of the file: 4\nsize=3\n"
                   "size of the file: 5\nsize of the file: 0\n")
        self.assertEqual(self.get("x.dpk"), pack_bytes([("a", b"1"), ("b", b"4444"), ("c", b"333"), ("d", b"55555"),
                                                       ("e", b"")]))

    def test_add_makes_a_pack_when_there_is_none(self):
        self.put("a", b"one")
        self.check(["add", "x.dpk", "a"], 0, "count = 0\nsize of the file: 3\n")
        self.assertEqual(self.get("x.dpk"), pack_bytes([("a", b"one")]))
        self.assertEqual(self.mode("x.dpk"), 0o600)

    def test_add_leaves_what_is_no_pack_alone(self):
        self.put("a.png", b"precious")
        self.put("b.png", b"two")
        self.check(["add", "a.png", "b.png"], 1, errors="Error: a.png" + NOT_BEGINNING)
        self.put("x.dpk", b"xyz" + pack_bytes([("a", b"1")])[3:])
        self.check(["add", "x.dpk", "b.png"], 1, errors="Error: x.dpk" + NOT_BEGINNING)
        self.assertEqual(self.get("a.png"), b"precious")

    def test_a_damaged_entry_can_be_replaced_or_removed(self):
        pack = pack_bytes([("a", b"123"), ("b", b"45")])[:-1]
        self.put("x.dpk", pack)
        self.put("b", b"whole")
        self.check(["add", "x.dpk", "b"], 0, "count = 1\nNAME: a\nsize=3\nsize of the file: 5\n")
        self.assertEqual(self.get("x.dpk"), pack_bytes([("a", b"123"), ("b", b"whole")]))
        self.put("x.dpk", pack)
        self.check(["remove", "x.dpk", "b"], 0, "count = 1\nNAME: a\nsize=3\n")
        self.assertEqual(self.get("x.dpk"), pack_bytes([("a", b"123")]))

    def test_remove_takes_entries_out(self):
        self.put("x.dpk", pack_bytes([("a", b"1"), ("b", b"22"), ("c", b"333"), ("a", b"hidden")]))
        self.check(["remove", "x.dpk", "c", "a"], 0, "count = 1\nNAME: b\nsize=2\n")
        self.assertEqual(self.get("x.dpk"), pack_bytes([("b", b"22")]))
        self.check(["remove", "x.dpk", "b"], 0, "count = 0\n")
        self.assertEqual(self.get("x.dpk"), pack_bytes([]))

    def test_remove_of_a_missing_entry_changes_nothing(self):
        pack = pack_bytes([("a", b"1"), ("b", b"22")])
        self.put("x.dpk", pack)
        self.check(["remove", "x.dpk", "a", "none"], 1, errors='Error: the entry "none" is not in the pack.\n')
        self.check(["remove", "x.dpk", "a", "a"], 1, errors='Error: the name "a" is given twice.\n')
        self.assertEqual(self.get("x.dpk"), pack)


class SafeWritingTest(MakeTest):
    """Whatever goes wrong, the old pack is whole and nothing else is left."""

    def setUp(self):
        super().setUp()
        self.pack = pack_bytes([("a", b"1")])
        self.put("x.dpk", self.pack)

    def check_unchanged(self, *others):
        self.assertEqual(self.get("x.dpk"), self.pack)
        self.assertEqual(self.names(), sorted(("x.dpk",) + others))

    def test_a_full_disk(self):
        def little_room():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000))
        self.put("large", bytes(300000))
        line = "Error: cannot write x.dpk: File too large.\n"
        for command in (["add", "x.dpk", "large"], ["create", "-f", "x.dpk", "large"]):
            status, _, errors = self.make(*command, preexec_fn=little_room)
            self.assertEqual((status, errors), (1, line))
            self.check_unchanged("large")
        self.check(["wrap", "large", "e"], 1, errors="Error: cannot write e: File too large.\n", preexec_fn=little_room)
        self.put("y.dpk", pack_bytes([("b", bytes(300000))]))
        self.check(["extract", "y.dpk", "out"], 1, errors="Error: cannot write out/b: File too large.\n",
                   preexec_fn=little_room)
        self.assertEqual(self.names("out"), [])

    def test_a_signal_in_the_middle(self):
        with open(self.path("large"), "wb") as file:
            file.truncate(3 << 30) # a hole, which takes no space
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            program = subprocess.Popen([PROGRAM, "add", "x.dpk", "large"], cwd=self.folder, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.PIPE)
            while len(self.names()) == 2 and program.poll() is None:
                time.sleep(0.001)
            self.assertIsNone(program.poll())
            program.send_signal(number)
            errors = program.communicate(timeout=60)[1].decode()
            self.assertEqual((program.returncode, errors), (-number, "Error: cannot write x.dpk: it was interrupted.\n"))
            self.check_unchanged("large")

    def test_a_folder_that_takes_no_new_files(self):
        program = self.path("program")
        shutil.copy(PROGRAM, program)
        os.mkdir(self.path("closed"))
        self.put("closed/x.dpk", self.pack)
        self.put("open/x.dpk", self.pack)
        self.put("b", b"22")
        os.chmod(self.path("closed/x.dpk"), 0o666)
        os.chmod(self.path("open/x.dpk"), 0o444)
        os.chmod(self.path("closed"), 0o555)
        os.chmod(self.path("open"), 0o777)
        os.chmod(self.folder, 0o755)

        def nobody():
            if os.geteuid() == 0:
                os.setgroups([])
                os.setgid(65534)
                os.setuid(65534)
        for pack in ("closed/x.dpk", "open/x.dpk"): # one that is read-only itself stays, too
            result = subprocess.run([program, "add", pack, "b"], cwd=self.folder, preexec_fn=nobody,
                                    stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=60)
            self.assertEqual((result.returncode, result.stderr.decode()),
                             (1, "Error: cannot write %s: Permission denied.\n" % pack))
            self.assertEqual(self.get(pack), self.pack)
            self.assertEqual(self.names(os.path.dirname(pack)), ["x.dpk"])

    def test_permissions_and_symbolic_links_stay(self):
        self.put("far/y.dpk", self.pack)
        os.chmod(self.path("far/y.dpk"), 0o640)
        os.symlink("far/y.dpk", self.path("link.dpk"))
        self.put("b", b"22")
        self.assertEqual(self.make("add", "link.dpk", "b")[0], 0)
        self.assertEqual(self.get("far/y.dpk"), pack_bytes([("a", b"1"), ("b", b"22")]))
        self.assertEqual(self.mode("far/y.dpk"), 0o640)
        self.assertTrue(os.path.islink(self.path("link.dpk")))
        self.assertEqual(self.make("remove", "link.dpk", "b")[0], 0)
        self.assertEqual(self.get("far/y.dpk"), self.pack)
        os.symlink("far/new.dpk", self.path("dangling.dpk"))
        self.assertEqual(self.make("create", "dangling.dpk", "b")[0], 0)
        self.assertEqual(self.get("far/new.dpk"), pack_bytes([("b", b"22")]))

    def test_no_name_on_the_way_is_a_pack(self):
        with open(self.path("large"), "wb") as file:
            file.truncate(3 << 30)
        program = subprocess.Popen([PROGRAM, "add", "x.dpk", "large"], cwd=self.folder, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        while len(self.names()) == 2 and program.poll() is None:
            time.sleep(0.001)
        names = self.names()
        program.terminate()
        program.wait(timeout=60)
        self.assertEqual(len(names), 3)
        self.assertEqual([name for name in names if name.endswith("dpk")], ["x.dpk"])


class EnvelopeTest(MakeTest):
    def test_wrap_makes_an_envelope_that_inflates(self):
        for size in (0, 1, 100000):
            content = bytes(i * 7 & 255 for i in range(size))
            self.put("a.xml", content)
            self.check(["wrap", "-f", "a.xml", "a.xmlz"], 0)
            entry = self.get("a.xmlz")
            self.assertEqual(struct.unpack("<I", entry[:4])[0], size)
            self.assertEqual(zlib.decompress(entry[4:]), content)
            self.check(["unwrap", "--force", "a.xmlz", "b.xml"], 0)
            self.assertEqual(self.get("b.xml"), content)

    def test_unwrap_inflates_compressed_entries(self):
        content = b"<show>" + b"sea and sky " * 1000 + b"</show>"
        self.put("a.xmlz", in_envelope(content))
        self.check(["unwrap", "a.xmlz", "a.xml"], 0, preexec_fn=lambda: os.umask(0o027))
        self.assertEqual(self.get("a.xml"), content)
        self.assertEqual(self.mode("a.xml"), 0o640)

    def test_unwrap_of_damaged_entries_writes_nothing(self):
        for entry in (in_envelope(b"four", 5), b"", b"<production>", in_envelope(b"four", (1 << 28) + 1)):
            self.put("a.xmlz", entry)
            status, output, errors = self.make("unwrap", "a.xmlz", "a.xml")
            self.assertEqual((status, output, errors.count("\n")), (1, "", 1))
            self.assertTrue(errors.startswith("Error: a.xmlz "))
        self.assertEqual(self.names(), ["a.xmlz"])

    def test_sources_that_cannot_be_read_give_the_reason(self):
        os.mkdir(self.path("folder"))
        os.mkfifo(self.path("pipe"))
        for command in ("wrap", "unwrap"):
            self.check([command, "none", "a"], 1, errors="Error: cannot open none: No such file or directory.\n")
            self.check([command, "folder", "a"], 1, errors="Error: cannot open folder: it is a folder.\n")
            self.check([command, "pipe", "a"], 1, errors="Error: cannot open pipe: %s.\n" % A_PIPE)
        self.assertEqual(self.names(), ["folder", "pipe"])

    def test_what_exists_is_replaced_only_by_force(self):
        self.put("a", b"new")
        self.put("b", b"precious")
        os.chmod(self.path("b"), 0o604)
        line = 'Error: b exists: it is left as it is. "--force" replaces it.\n'
        self.check(["wrap", "a", "b"], 1, errors=line)
        self.check(["wrap", "a", "c"], 0)
        self.check(["unwrap", "c", "b"], 1, errors=line)
        self.assertEqual(self.get("b"), b"precious")
        self.check(["unwrap", "-f", "c", "b"], 0)
        self.assertEqual(self.get("b"), b"new")
        self.assertEqual(self.mode("b"), 0o604)
        self.check(["wrap", "-f", "a", "/dev/full"], 1, errors="Error: cannot write /dev/full: %s.\n" % A_PIPE)
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/full").st_mode))

    def test_envelopes_never_replace_their_source(self):
        self.put("a", b"precious")
        for command in ("wrap", "unwrap"):
            self.check([command, "-f", "a", "./a"], 1, errors="Error: ./a is the file that is being read.\n")
        self.assertEqual(self.get("a"), b"precious")


if __name__ == "__main__":
    MAN_PAGE = os.path.abspath(sys.argv.pop(2))
    COMPLETION = os.path.join(os.path.dirname(MAN_PAGE), "..", "completion", "brimlow-make.bash")
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
