#!/usr/bin/env python3
"""Drives the dpk program: test_dpk.py PATH-OF-DPK.

Packs are made and read here with struct alone, so that the program is compared
with the format and not with itself."""

import os
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

DPK = ""


def make_pack(entries):
    start = 35 + 40 * len(entries)
    index, data = b"", b""
    for name, content in entries:
        end = (start + len(content) - 1) & 0xFFFFFFFF
        index += struct.pack(">32sII", name.encode(), start, end)
        data += content
        start += len(content)
    return b"DP\x01" + index + bytes(32) + data


class DpkTest(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory(prefix="test_dpk_")
        self.addCleanup(self.directory.cleanup)

    def path(self, name):
        return os.path.join(self.directory.name, name)

    def put(self, name, content):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(content)

    def get(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def dpk(self, *arguments):
        """Status, standard output, standard error."""
        run = subprocess.run([DPK, *arguments], cwd=self.directory.name, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, timeout=60)
        return run.returncode, run.stdout.decode(), run.stderr.decode()

    def check(self, arguments, status, output="", errors=""):
        self.assertEqual(self.dpk(*arguments), (status, output, errors))

    # ---- the command line

    def test_help_goes_to_standard_output(self):
        status, output, errors = self.dpk("--help")
        self.assertEqual((status, errors), (0, ""))
        for command in ("list", "extract", "write", "remove", "wrap", "unwrap"):
            self.assertIn("  dpk %s " % command, output)

    def test_wrong_command_lines_give_status_2(self):
        hint = ' "dpk --help" tells more.\n'
        self.check([], 2, errors="Error: a command is missing." + hint)
        self.check(["frob"], 2, errors="Error: unknown command frob." + hint)
        self.check(["list"], 2, errors="Error: list takes one pack." + hint)
        self.check(["list", "a", "b"], 2, errors="Error: list takes one pack." + hint)
        self.check(["extract"], 2, errors="Error: extract takes a pack." + hint)
        self.check(["write"], 2, errors="Error: write takes a pack and files." + hint)
        self.check(["write", "x.dpk"], 2, errors="Error: write takes a pack and files." + hint)
        self.check(["write", "x.dpk", "--frob", "a"], 2, errors="Error: unknown option --frob." + hint)
        self.check(["write", "x.dpk", "-C"], 2, errors="Error: -C needs a directory." + hint)
        self.check(["remove", "x.dpk"], 2, errors="Error: remove takes a pack and the names of entries." + hint)
        self.check(["wrap", "a"], 2, errors="Error: wrap takes a file and an entry." + hint)
        self.check(["unwrap", "a"], 2, errors="Error: unwrap takes an entry and a file." + hint)
        self.assertEqual(os.listdir(self.directory.name), [])

    # ---- list

    def test_list_shows_sizes_and_names(self):
        self.put("x.dpk", make_pack([("demo.xmlz", b"12345"), ("empty", b""), ("rock.png", b"x" * 1234)]))
        self.check(["list", "x.dpk"], 0, "         5  demo.xmlz\n         0  empty\n      1234  rock.png\n")

    def test_list_of_an_empty_pack_is_empty(self):
        self.put("x.dpk", make_pack([]))
        self.check(["list", "x.dpk"], 0)

    def test_list_names_damaged_entries(self):
        self.put("x.dpk", make_pack([("a", b"123"), ("b", b"45")])[:-1])
        self.check(["list", "x.dpk"], 1, "         3  a\n   damaged  b\n")

    def test_list_hides_control_characters(self):
        self.put("x.dpk", make_pack([("a\x1b[2Jb", b"")]))
        self.check(["list", "x.dpk"], 0, "         0  a?[2Jb\n")

    def test_packs_that_cannot_be_opened(self):
        os.mkdir(self.path("folder"))
        os.mkfifo(self.path("pipe"))
        for name in ("none.dpk", "folder", "pipe"):
            for command in (["list", name], ["extract", name], ["remove", name, "a"]):
                self.check(command, 1, errors="Error: cannot open %s!\n" % name)

    def test_a_file_that_does_not_begin_like_a_pack_is_read_with_a_warning(self):
        self.put("x.dpk", b"xyz" + make_pack([("a", b"1")])[3:])
        self.check(["list", "x.dpk"], 0, "         1  a\n", "Warning: x.dpk does not begin like a pack.\n")

    # ---- extract

    def test_extract_writes_all_entries_behind_the_prefix(self):
        self.put("x.dpk", make_pack([("a", b"one"), ("sky/up.png", b"\0\xff")]))
        os.mkdir(self.path("out"))
        self.check(["extract", "x.dpk", "out/"], 0)
        self.assertEqual(self.get("out/a"), b"one")
        self.assertEqual(self.get("out/sky/up.png"), b"\0\xff")
        self.check(["extract", "x.dpk", "out/pre_"], 0)
        self.assertEqual(self.get("out/pre_a"), b"one")
        self.check(["extract", "x.dpk"], 0)
        self.assertEqual(self.get("a"), b"one")
        self.assertEqual(os.stat(self.path("a")).st_mode & 0o777, 0o600)

    def test_extract_writes_only_the_entries_named(self):
        self.put("x.dpk", make_pack([("a", b"one"), ("b", b"two"), ("c", b"three")]))
        self.check(["extract", "x.dpk", "", "c", "none", "a"], 1,
                   errors='Error: the entry "none" is not in the pack.\n')
        self.assertEqual(sorted(os.listdir(self.directory.name)), ["a", "c", "x.dpk"])

    def test_extract_refuses_names_that_lead_elsewhere(self):
        self.put("in/x.dpk", make_pack([("../a", b"1"), ("/tmp/test_dpk_never", b"2"), ("b", b"3")]))
        status, output, errors = self.dpk("extract", "in/x.dpk", "in/")
        self.assertEqual((status, output), (1, ""))
        self.assertEqual(errors, 'Error: the name "../a" has ".." in it.\n'
                                 'Error: the name "/tmp/test_dpk_never" is absolute.\n')
        self.assertEqual(sorted(os.listdir(self.path("in"))), ["b", "x.dpk"])
        self.assertEqual(os.listdir(self.directory.name), ["in"])

    def test_extract_never_overwrites_the_pack(self):
        pack = make_pack([("x.dpk", b"1")])
        self.put("x.dpk", pack)
        self.check(["extract", "x.dpk"], 1, errors="Error: cannot write x.dpk: it is being read.\n")
        self.assertEqual(self.get("x.dpk"), pack)

    # ---- write

    def test_write_makes_a_pack_of_the_files_in_order(self):
        self.put("assets/b", b"three")
        self.put("a", b"one")
        self.check(["write", "x.dpk", "assets/b", "a"], 0)
        self.assertEqual(self.get("x.dpk"), make_pack([("b", b"three"), ("a", b"one")]))
        self.assertEqual(os.stat(self.path("x.dpk")).st_mode & 0o777, 0o600)

    def test_write_names_files_below_a_directory_as_given(self):
        self.put("assets/sky/up.png", b"up")
        self.put("a", b"one")
        self.check(["write", "x.dpk", "a", "-C", "assets", "sky/up.png"], 0)
        self.assertEqual(self.get("x.dpk"), make_pack([("a", b"one"), ("sky/up.png", b"up")]))

    def test_write_takes_names_that_look_like_options_behind_two_dashes(self):
        self.put("--keep", b"one")
        self.check(["write", "x.dpk", "--", "--keep"], 0)
        self.assertEqual(self.get("x.dpk"), make_pack([("--keep", b"one")]))

    def test_write_replaces_a_pack_whole(self):
        self.put("x.dpk", make_pack([("old", b"old")]))
        self.put("a", b"one")
        self.check(["write", "x.dpk", "a"], 0)
        self.assertEqual(self.get("x.dpk"), make_pack([("a", b"one")]))

    def test_write_keep_replaces_in_place_and_appends(self):
        self.put("x.dpk", make_pack([("a", b"1"), ("b", b"22"), ("a", b"hidden"), ("c", b"333")]))
        self.put("b", b"4444")
        self.put("d", b"55555")
        self.check(["write", "x.dpk", "--keep", "d", "b"], 0,
                   "count = 2\nNAME: a\nNAME: c\nsize=1\nsize of the file: 4\nsize=3\nsize of the file: 5\n")
        self.assertEqual(self.get("x.dpk"), make_pack([("a", b"1"), ("b", b"4444"), ("c", b"333"), ("d", b"55555")]))

    def test_write_keep_needs_the_pack(self):
        self.put("a", b"one")
        self.check(["write", "x.dpk", "--keep", "a"], 1, errors="Error: cannot open x.dpk!\n")
        self.assertFalse(os.path.exists(self.path("x.dpk")))

    def test_write_refuses_names_and_leaves_everything_alone(self):
        long_name = "n" * 32
        self.put("in/a", b"one")
        self.put("in/" + long_name, b"one")
        old = make_pack([("old", b"old")])
        self.put("x.dpk", old)
        self.check(["write", "x.dpk", "in/a", "in/" + long_name], 1,
                   errors='Error: the name "%s" is longer than 31 bytes.\n' % long_name)
        self.check(["write", "x.dpk", "-C", "in", "../in/a"], 1, errors='Error: the name "../in/a" has ".." in it.\n')
        self.check(["write", "x.dpk", "-C", "in", "/etc/passwd"], 1, errors='Error: the name "/etc/passwd" is absolute.\n')
        self.check(["write", "x.dpk", "in/"], 1, errors='Error: the name "" is empty.\n')
        self.check(["write", "x.dpk", "in/a", "-C", "in", "a"], 1, errors='Error: the name "a" is given twice.\n')
        self.check(["write", "x.dpk", "none"], 1, errors="Error: cannot open none: No such file or directory.\n")
        self.assertEqual(self.get("x.dpk"), old)

    def test_write_never_overwrites_what_is_no_pack(self):
        self.put("a.png", b"precious")
        self.put("b.png", b"two")
        self.check(["write", "a.png", "b.png"], 1, errors="Error: a.png exists and is no pack: it is left as it is.\n")
        self.check(["write", "a.png", "--keep", "b.png"], 1,
                   errors="Error: a.png exists and is no pack: it is left as it is.\n")
        self.assertEqual(self.get("a.png"), b"precious")

    def test_write_never_overwrites_a_file_that_goes_into_the_pack(self):
        pack = make_pack([("old", b"old")])
        self.put("x.dpk", pack)
        self.check(["write", "x.dpk", "./x.dpk"], 1, errors="Error: ./x.dpk is the pack to be written.\n")
        self.assertEqual(self.get("x.dpk"), pack)

    # ---- remove

    def test_remove_takes_entries_out(self):
        self.put("x.dpk", make_pack([("a", b"1"), ("b", b"22"), ("c", b"333")]))
        self.check(["remove", "x.dpk", "c", "a"], 0, "count = 1\nNAME: b\nsize=2\n")
        self.assertEqual(self.get("x.dpk"), make_pack([("b", b"22")]))

    def test_remove_of_a_missing_entry_changes_nothing(self):
        pack = make_pack([("a", b"1"), ("b", b"22")])
        self.put("x.dpk", pack)
        self.check(["remove", "x.dpk", "a", "none"], 1, errors='Error: the entry "none" is not in the pack.\n')
        self.assertEqual(self.get("x.dpk"), pack)

    # ---- envelopes

    def test_wrap_makes_an_envelope_that_inflates(self):
        for size in (0, 1, 100000):
            content = bytes(i * 7 & 255 for i in range(size))
            self.put("a.xml", content)
            self.check(["wrap", "a.xml", "a.xmlz"], 0)
            entry = self.get("a.xmlz")
            self.assertEqual(struct.unpack("<I", entry[:4])[0], size)
            self.assertEqual(zlib.decompress(entry[4:]), content)
            self.check(["unwrap", "a.xmlz", "b.xml"], 0)
            self.assertEqual(self.get("b.xml"), content)

    def test_unwrap_inflates_compressed_entries(self):
        content = b"<show>" + b"sea and sky " * 1000 + b"</show>"
        self.put("a.xmlz", struct.pack("<I", len(content)) + zlib.compress(content, 9))
        self.check(["unwrap", "a.xmlz", "a.xml"], 0)
        self.assertEqual(self.get("a.xml"), content)

    def test_unwrap_of_damaged_entries_writes_nothing(self):
        self.put("a.xmlz", struct.pack("<I", 5) + zlib.compress(b"four"))
        self.check(["unwrap", "a.xmlz", "a.xml"], 1, errors="Error: a.xmlz is damaged.\n")
        self.put("a.xmlz", struct.pack("<I", (1 << 28) + 1) + zlib.compress(b"four"))
        self.check(["unwrap", "a.xmlz", "a.xml"], 1, errors="Error: a.xmlz declares more than 256 MiB.\n")
        self.check(["unwrap", "none", "a.xml"], 1, errors="Error: cannot open none!\n")
        self.assertFalse(os.path.exists(self.path("a.xml")))

    def test_envelopes_never_overwrite_their_source(self):
        self.put("a", b"precious")
        self.check(["wrap", "a", "./a"], 1, errors="Error: ./a is the file that is being read.\n")
        self.assertEqual(self.get("a"), b"precious")


if __name__ == "__main__":
    DPK = os.path.abspath(sys.argv.pop(1))
    unittest.main()
