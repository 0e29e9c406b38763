#!/usr/bin/env python3
"""The arithmetic of bench/run without a benchmark: test_bench_table.py ROOT.

Times are written here as benchmark programs print them; nothing is built or installed."""

import json
import os
import subprocess
import sys
import tempfile
import unittest

ROOT = ""
PROGRAM = '''#!%s
import os, sys
with open(os.path.join(os.path.dirname(__file__), 'asked'), 'a') as file:
    file.write(os.environ.get('GALLIUM_NOOP', 'unset') + ' ' + ' '.join(sys.argv[1:]) + '\\n')
print('a line of the engine')
for option in sys.argv:
    if option.startswith('--benchmark_out='):
        with open(option.partition('=')[2], 'w') as file:
            file.write(%r)
sys.exit(%d)
'''
PAGE = "# Times\n<!-- bench: machine -->\nold\n<!-- bench end -->\nwords\n<!-- bench: blur -->\n<!-- bench end -->\nend\n"


def run(name, *times, unit="ns", real=0, backwards=False, **more):
    """What a program prints of one benchmark: its repetitions, and an aggregate that nobody asked for."""
    runs = [dict(name=name, run_name=name, run_type="iteration", repetition_index=n, cpu_time=time,
                 real_time=time + real, time_unit=unit, **more) for n, time in enumerate(times)]
    return (runs[::-1] if backwards else runs) + [dict(name=name + "_mean", run_name=name, run_type="aggregate",
                                                       cpu_time=12345, real_time=12345, time_unit=unit)]


class TableTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory(prefix="test_bench_table ")
        self.addCleanup(directory.cleanup)
        self.folder = directory.name
        for name in ("rows", "results", "build/bench"):
            os.makedirs(os.path.join(self.folder, name))
        self.put("page.md", PAGE)

    def path(self, name):
        return os.path.join(self.folder, name)

    def put(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def read(self, name):
        with open(self.path(name), encoding="utf-8") as file:
            return file.read()

    def put_program(self, name, runs, status=0):
        self.put("build/bench/" + name, PROGRAM % (sys.executable, json.dumps({"benchmarks": runs}), status))
        os.chmod(self.path("build/bench/" + name), 0o755)

    def table(self, *arguments, measured=False):
        """(status, lines of the table as lists of words between two blanks, what was wrong)."""
        way = ["--build", self.path("build")] if measured else ["--results", self.path("results")]
        done = subprocess.run([sys.executable, "-B", os.path.join(ROOT, "bench", "table.py"), *way, "--rows",
                               self.path("rows"), "--page", self.path("page.md"), "--today", "1999-12-31", *arguments],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        lines = [[cell.strip() for cell in line.split("  ") if cell.strip()]
                 for line in done.stdout.decode().splitlines()]
        return done.returncode, lines, done.stderr.decode()

    def table_of(self, rows, *runs):
        """The lines below the headings of one subject."""
        self.put("rows/blur.txt", rows)
        self.put("results/blur.json", json.dumps({"benchmarks": sum(runs, [])}))
        status, lines, wrong = self.table()
        return status, lines[2:], wrong

    def test_a_ratio_is_that_of_the_medians_and_stands_before_those_of_the_neighbours(self):
        status, lines, wrong = self.table_of(  # medians 200 and 100; neighbours 2, 0.5, 2.5
            "# said\nblur 256 | opencv | 1.5 | 14\n", run("blur 256/ours", 200, 100, 500),
            run("blur 256/opencv", 100, 200, 200, backwards=True))
        self.assertEqual(lines[0], ["blur 256", "200 ns", "opencv", "200 ns", "1.00", "(0.50 to 2.50)", "1.5", "met", "14"])
        self.assertEqual((status, wrong), (0, ""))

    def test_units_are_made_equal(self):
        _, lines, _ = self.table_of("a | b | - | -", run("a/ours", 1.5, unit="ms"), run("a/b", 3000, unit="us"))
        self.assertEqual(lines[0], ["a", "1.50 ms", "b", "3.00 ms", "0.50", "(0.50 to 0.50)", "-", "-", "-"])

    def test_a_goal_is_held_by_the_ratio_as_it_is_printed(self):
        _, lines, _ = self.table_of("a | b | 1 | 2\nc | b | 1 | 2.5", run("a/ours", 1004), run("a/b", 1000),
                                    run("c/ours", 1006), run("c/b", 1000))
        self.assertEqual([line[4:] for line in lines[:2]], [["1.00", "(1.00 to 1.00)", "1", "met", "2"],
                                                            ["1.01", "(1.01 to 1.01)", "1", "missed", "2.5"]])
        self.assertEqual(lines[3], ["2 rows: 1 goals met, 1 missed, 0 without a goal."])

    def test_a_missed_goal_is_no_error(self):
        self.assertEqual(self.table_of("a | b | 1 | 2", run("a/ours", 9), run("a/b", 1))[0], 0)

    def test_time_that_passes_counts_where_the_benchmark_says_so(self):
        _, lines, _ = self.table_of("load / all | b | - | -", run("load / all/ours/process_time/real_time", 10, real=30),
                                    run("load / all/b/iterations:3/manual_time/repeats:1", 10, real=70))
        self.assertEqual(lines[0][1:5], ["40.0 ns", "b", "80.0 ns", "0.50"])

    def test_a_row_without_its_benchmark_is_told(self):
        status, lines, wrong = self.table_of("a | b | 1 | 2\nc | b | 1 | 2", run("a/ours", 1), run("a/b", 1),
                                             run("c/b", 1, error_occurred=True, error_message="no"))
        self.assertEqual(status, 1)
        self.assertEqual(len([line for line in lines if line and line[0] == "a"]), 1)
        self.assertEqual(wrong, 'Sorry: bench/rows/blur.txt: nobody measured "c/ours" and "c/b".\n')

    def test_wrong_lines_of_rows_are_told_with_their_number(self):
        for line, said in (("a | b | 1", "a row is"), ("a | b | one | 2", "are numbers"), (" | b | 1 | 2", "a row is"),
                           ("! GALLIUM_NOOP", "NAME=VALUE"), ("! program", "NAME=VALUE")):
            status, lines, wrong = self.table_of("# first\n" + line + "\n")
            self.assertEqual((status, lines), (2, []))
            self.assertIn("bench/rows/blur.txt, line 2: ", wrong)
            self.assertIn(said, wrong)

    def test_an_unknown_subject_is_told_with_those_that_there_are(self):
        self.put("rows/blur.txt", "")
        self.put("rows/waves.txt", "")
        self.assertEqual(self.table("blurr"), (2, [], 'Sorry: there is no subject "blurr"; there are: blur, waves.\n'))

    def test_the_page_gets_tables_and_machine_between_its_marks(self):
        self.put("rows/blur.txt", "a | b | 1 | 2\nc | b | - | -")
        self.put("results/blur.json", json.dumps(
            {"benchmarks": run("a/ours", 3) + run("a/b", 2) + run("c/ours", 1) + run("c/b", 2)}))
        for _ in range(2):  # the second time over the first
            self.assertEqual(self.table("--write")[0], 0)
            head, _, rest = self.read("page.md").partition("<!-- bench: machine -->\nMeasured on 1999-12-31: ")
            self.assertEqual(head, "# Times\n")
            self.assertEqual(rest[rest.index("\n"):], """
<!-- bench end -->
words
<!-- bench: blur -->
| work | ours | beside | theirs | ratio (neighbours) | goal | | before |
|---|--:|---|--:|--:|--:|---|--:|
| a | 3.00 ns | b | 2.00 ns | 1.50 (1.50 to 1.50) | 1 | **missed** | 2 |
| c | 1.00 ns | b | 2.00 ns | 0.50 (0.50 to 0.50) | - |  | - |
<!-- bench end -->
end
""")

    def test_a_page_without_room_for_a_subject_is_told(self):
        self.put("rows/waves.txt", "")
        self.put("results/waves.json", "{}")
        status, _, wrong = self.table("--write")
        self.assertEqual(status, 1)
        self.assertIn('has no place for "waves": "<!-- bench: waves -->"', wrong)

    def test_programs_of_a_subject_run_with_its_environment_and_only_what_rows_need(self):
        self.put("rows/blur.txt", "! GALLIUM_NOOP=1\na (3) | b | 1 | 2\nc | b | - | -")
        self.put_program("bench_blur", run("a (3)/ours", 1) + run("a (3)/b", 1))
        self.put_program("bench_blur_gl", run("c/ours", 1) + run("c/b", 1))
        status, lines, wrong = self.table("--quick", measured=True)
        self.assertEqual((status, wrong, [line[0] for line in lines[2:4]]), (0, "", ["a (3)", "c"]))
        asked = self.read("build/bench/asked").splitlines()
        self.assertEqual(len(asked), 2)
        for line in asked:
            self.assertTrue(line.startswith("1 --benchmark_filter=^(a \\(3\\)|c)/ "), line)
            self.assertIn("--benchmark_repetitions=3", line)
        status, lines, _ = self.table()  # nothing was kept there
        self.assertEqual(status, 1)

    def test_times_of_a_run_are_kept(self):
        self.put("rows/blur.txt", "! program bench_other\na | b | 1 | 2")
        self.put_program("bench_other", run("a/ours", 1) + run("a/b", 4))
        measured = self.table(measured=True)[1]
        self.assertEqual(measured[2][4], "0.25")
        os.rename(self.path("build/bench/results/blur.json"), self.path("results/blur.json"))
        self.assertEqual(self.table()[1], measured)

    def test_counters_that_are_no_numbers_do_no_harm(self):
        self.put("rows/blur.txt", "a | b | 1 | 2")
        self.put_program("bench_blur", run("a/ours", 1, calls="?") + run("a/b", 4, calls="!"))
        program = self.read("build/bench/bench_blur").replace('"?"', "-NaN").replace('"!"', "NaN")
        self.put("build/bench/bench_blur", program)
        status, lines, wrong = self.table(measured=True)
        self.assertEqual((status, lines[2][4], wrong), (0, "0.25", ""))

    def test_a_program_that_fails_or_is_not_there_is_told(self):
        self.put("rows/blur.txt", "a | b | 1 | 2")
        self.assertIn("Sorry: bench_blur cannot be started: No such file", self.table(measured=True)[2])
        self.put_program("bench_blur", run("a/ours", 1) + run("a/b", 4), status=3)
        status, _, wrong = self.table(measured=True)
        self.assertEqual(status, 1)
        self.assertIn("Sorry: bench_blur: status 3.", wrong)
        self.put_program("bench_blur", run("a/ours", 1, error_occurred=True, error_message="no context"))
        self.assertIn("Sorry: bench_blur: a/ours: no context.", self.table(measured=True)[2])

    def test_the_page_of_the_house_has_room_for_every_subject(self):
        with open(os.path.join(ROOT, "docs", "performance.md"), encoding="utf-8") as file:
            page = file.read()
        subjects = [name[:-4] for name in os.listdir(os.path.join(ROOT, "bench", "rows")) if name.endswith(".txt")]
        self.assertEqual([name for name in subjects if "<!-- bench: %s -->\n" % name not in page], [])
        self.assertEqual(page.count("<!-- bench: "), page.count("<!-- bench end -->"))

    def test_the_rows_of_the_house_can_be_read(self):
        done = subprocess.run([sys.executable, "-B", os.path.join(ROOT, "bench", "table.py"), "--look"],
                              stderr=subprocess.PIPE, check=False)
        self.assertEqual((done.returncode, done.stderr.decode()), (0, ""))


if __name__ == "__main__":
    ROOT = os.path.abspath(sys.argv.pop(1))
    unittest.main()
