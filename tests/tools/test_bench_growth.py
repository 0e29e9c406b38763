#!/usr/bin/env python3
"""What bench/growth.py makes of times: exponents, and the page with them: test_bench_growth.py ROOT."""

import argparse
import os
import re
import sys
import unittest
import xml.etree.ElementTree

sys.dont_write_bytecode = True
ROOT = os.path.abspath(sys.argv.pop(1))
sys.path.insert(0, os.path.join(ROOT, "bench"))
import growth  # noqa: E402
import growth_page  # noqa: E402

SVG = "{http://www.w3.org/2000/svg}"


def curve(time_of, largest=4096, whole=False):
    made = growth.Curve("a curve", largest, None, whole)
    made.times = [time_of(size) for size in made.sizes]
    return made


class GrowthTest(unittest.TestCase):
    def test_sizes_end_with_the_largest_and_its_halves(self):
        self.assertEqual(growth.sizes_up_to(4096, 1), [1, 2, 8, 32, 128, 512, 1024, 2048, 4096])
        self.assertEqual(growth.sizes_up_to(32, 1), [1, 4, 8, 16, 32])
        self.assertEqual(growth.sizes_up_to(100000, 24)[-4:], [12500, 25000, 50000, 100000])
        self.assertEqual(growth.sizes_up_to(100000, 24)[0], 24)

    def test_an_exponent_is_that_of_the_power(self):
        for power in (0, 0.5, 1, 1.5, 2):
            self.assertAlmostEqual(growth.exponent(curve(lambda n, p=power: 3e-6 * n ** p)), power)

    def test_only_the_large_end_counts(self):
        self.assertAlmostEqual(growth.exponent(curve(lambda n: n * 1e-6 if n >= 512 else 1.0 / n)), 1)

    def test_what_a_program_takes_for_the_smallest_show_is_no_growth(self):
        whole, alone = (growth.exponent(curve(lambda n: 5e-3 + 1e-5 * (n - 1) ** 1.5, whole=w)) for w in (True, False))
        self.assertAlmostEqual(whole, 1.5, places=2)
        self.assertLess(alone, 1.49)

    def test_a_program_that_hardly_grows_has_no_exponent_of_noise(self):
        self.assertLess(growth.exponent(curve(lambda n: 1e-2 + 1e-9 * n ** 1.5, whole=True)), 0.1)

    def test_the_table_of_costs_has_what_was_measured(self):
        alone, whole = curve(lambda n: n * 2e-6), curve(lambda n: 1e-2 + (n - 1) * 3e-6, whole=True)
        alone.name, whole.name = "models", "objects"
        self.assertEqual(growth.costs_table([("A frame", "objects", [alone]), ("brimlow-make build", "things", [whole])]),
                         "| thing | each |\n|---|--:|\n| an object that stands still | 2.00 µs |\n"
                         "| building: an object | 3.00 µs |")

    def test_words_pick_plots_and_curves(self):
        everything = growth.plots(growth.Bench(""))
        self.assertEqual(growth.chosen(everything, []), everything)
        self.assertEqual([[curve.name for curve in curves] for _, _, curves in growth.chosen(everything, ["WATERS"])],
                         [["waters"]])
        self.assertEqual({title for title, _, _ in growth.chosen(everything, ["reading"])},
                         {"Reading records", "Reading a text"})
        self.assertEqual(growth.chosen(everything, ["nothing such"]), [])

    def test_what_cannot_be_measured_is_told(self):
        def told(plots=(), write=False, quick=False):
            options = argparse.Namespace(build="nowhere", plots=list(plots), write=write, quick=quick)
            bench = growth.Bench(options.build)
            return growth.fault_of(options, bench, growth.chosen(growth.plots(bench), options.plots))
        self.assertEqual(told(), "nowhere/bench/bench_growth is missing: ninja -C nowhere bench_growth")
        self.assertIn('no plot and no curve has "x9" or "y9" in its name; there are: A frame; ', told(["x9", "y9"]))
        for chosen in ({"plots": ["waters"]}, {"quick": True}):
            self.assertEqual(told(write=True, **chosen),
                             "--write puts all curves into the page: it goes without PLOT and --quick")

    def test_every_cost_is_a_curve_that_there_is(self):
        known = {(title, each.name) for title, _, curves in growth.plots(growth.Bench("")) for each in curves}
        self.assertEqual([cost[:2] for cost in growth.COSTS if cost[:2] not in known], [])

    def test_the_page_has_every_plot_with_its_curves_and_exponents(self):
        plots = [("A frame & more", "objects", [("models", [(1, 1e-6), (1000, 1e-3)], 1.0),
                                                ("texts", [(1, 1e-5), (1000, 2e-2)], 1.1)]),
                 ("Reading", "bytes", [("all", [(1024, 1e-4)], 0.0)])]
        root = xml.etree.ElementTree.fromstring(growth_page.page(plots))
        words = [text.text for text in root.iter(SVG + "text")]
        for word in ("A frame & more", "time by objects", "models: 1.00", "texts: 1.10", "Reading", "all: 0.00", "1k", "10k",
                     "1 ms", "100 µs"):
            self.assertIn(word, words)
        self.assertLess(words.index("1k"), words.index("10k"))
        self.assertEqual(len(list(root.iter(SVG + "polyline"))), 3)
        self.assertEqual(len(list(root.iter(SVG + "circle"))), 5)

    def test_a_linear_curve_runs_along_the_thin_lines(self):
        text = growth_page.page([("A", "n", [("a", [(1, 1e-6), (1000, 1e-3)], 1.0)])])
        (ax, ay), (bx, by) = [tuple(map(float, p.split(","))) for p in re.search(r'points="(.*?)"', text).group(1).split()]
        lines = [tuple(map(float, found)) for found in re.findall(
            r'class="linear" x1="([\d.]+)" y1="([\d.]+)" x2="([\d.]+)" y2="([\d.]+)"', text)]
        self.assertIn((ax, ay, bx, by), lines)  # from corner to corner
        for x1, y1, x2, y2 in lines:
            self.assertAlmostEqual((y2 - y1) / (x2 - x1), (by - ay) / (bx - ax), places=2)


if __name__ == "__main__":
    unittest.main()
