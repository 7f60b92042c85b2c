"""Tries what is concluded from figures on some whose result is known. Run it as scripts/bench --selftest."""

import pathlib
import re
import tempfile
import unittest

import compare
import side_by_side
from arithmetic import Outcome, best_peer, exponent, mark, net, share
from bench import split_at_dashes
from programs import Run, Series, as_one
from workloads import WORKLOADS, Workload, prepare


def outcome(seconds, lines=100, text=1000, failure=None, stopped=False, said=0):
    return Outcome(seconds, failure, stopped, lines, text, said)


class BestPeerTest(unittest.TestCase):
    def test_the_fastest_counts(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3), "b": outcome(2)}), ("b", True))

    def test_who_writes_fewer_lines_is_no_bar_for_who_writes_them(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3), "b": outcome(2, lines=59)}), ("a", True))

    def test_who_leaves_out_most_of_the_text_is_none_either(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3), "b": outcome(2, text=499)}), ("a", True))

    def test_who_reports_only_the_first_of_many_mistakes_is_none_either(self):
        peers = {"a": outcome(3, failure="error", said=100), "b": outcome(2, failure="error", said=59)}
        self.assertEqual(best_peer(outcome(1, failure="error", said=100), peers), ("a", True))

    def test_warnings_that_only_qnpp_gives_do_not_matter(self):
        self.assertEqual(best_peer(outcome(1, said=1), {"a": outcome(3, said=1), "b": outcome(2)}), ("b", True))

    def test_blanks_and_backslashes_written_otherwise_do_not_matter(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3), "b": outcome(2, lines=60, text=500)}), ("b", True))

    def test_where_nobody_writes_as_much_the_fastest_counts_and_it_is_told(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3, lines=1), "b": outcome(2, lines=1)}), ("b", False))

    def test_who_refuses_the_source_is_left_out(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3), "b": outcome(2, failure="status 1")}), ("a", True))
        self.assertEqual(best_peer(outcome(1), {"b": outcome(2, failure="status 1")}), (None, False))

    def test_where_qnpp_reports_errors_too_it_is_not(self):
        peers = {"a": outcome(3), "b": outcome(2, failure="status 1"), "c": outcome(1, failure="SIGSEGV", stopped=True)}
        self.assertEqual(best_peer(outcome(1, failure="status 1"), peers), ("b", True))

    def test_nobody_has_to_write_anything_where_qnpp_writes_nothing(self):
        nothing = outcome(1, lines=0, text=0)
        self.assertEqual(best_peer(nothing, {"a": nothing}), ("a", True))
        self.assertEqual(share(nothing, nothing), 1)


class ShareTest(unittest.TestCase):
    def test_it_is_that_of_the_lines_unless_they_are_there(self):
        self.assertAlmostEqual(share(outcome(1, lines=25, text=1000), outcome(1)), 0.25)
        self.assertAlmostEqual(share(outcome(1, lines=95, text=400), outcome(1)), 0.4)
        self.assertAlmostEqual(share(outcome(1, said=1), outcome(1, failure="error", said=100)), 0.01)


class MarkTest(unittest.TestCase):
    def test_it_tells_on_which_side_of_the_limits_a_ratio_is(self):
        expected = {0.5: "", 0.9: "tie", 1.0: "tie", 1.14: "tie", 1.2: "slower", 1.31: "behind", None: ""}
        self.assertEqual({ratio: mark(ratio) for ratio in expected}, expected)


class ExponentTest(unittest.TestCase):
    def test_powers_are_found(self):
        sizes = [10, 20, 40, 80]
        for power in (0, 1, 1.5, 2, 3):
            self.assertAlmostEqual(exponent(sizes, [0.01 * size ** power for size in sizes]), power)

    def test_only_the_three_largest_count(self):
        self.assertAlmostEqual(exponent([10, 20, 40, 80], [7, 4, 16, 64]), 2)
        self.assertAlmostEqual(exponent([80, 40, 20, 10], [64, 16, 4, 7]), 2)

    def test_a_point_beside_the_line_moves_it_by_its_share(self):
        # Logarithms to base 2: x is 1, 2, 3 and y is 1, 2, 4, so the slope is (-1 * 1 + 1 * 4) / 2.
        self.assertAlmostEqual(exponent([2, 4, 8], [2, 4, 16]), 1.5)

    def test_two_points_will_do(self):
        self.assertAlmostEqual(exponent([1, 2], [1, 2]), 1)


class NetTest(unittest.TestCase):
    def test_the_start_is_taken_off_and_something_stays(self):
        self.assertAlmostEqual(net(0.5, 0.1), 0.4)
        self.assertGreater(net(0.1, 0.2), 0)


class WorkloadRowTest(unittest.TestCase):
    """Of qnpp, which takes 1 s and writes 100 lines, and two peers."""

    def row(self, factor=1, runs=1, against_all=False, failures=None):
        workload = Workload("w", "", "", None, bar=0.5, aim=0.2, against_all=against_all, runs=runs, memory_goal=8)
        failures = failures or {}
        seconds = {"qnpp": 1.0, "slow": 4.0, "brief": 2.0}
        series = {name: Series([Run(value, 0, value, 9.0, failures.get(name))]) for name, value in seconds.items()}
        written = {"qnpp": (100, 1000), "slow": (90, 1000), "brief": (10, 1000)}
        return side_by_side.workload_row(workload, 3_000_000, series, written, factor)

    def test_who_writes_less_is_no_bar_but_is_shown_with_its_share_and_its_ratio(self):
        row = self.row()
        self.assertEqual((row["best_peer"], row["ratio"]), ("slow", 0.25))
        self.assertEqual((row["fastest_peer"], row["ratio_to_fastest"]), ("brief", 0.5))
        self.assertEqual(side_by_side.time_cell(row, "brief"), "2.000 (10 %)")
        self.assertEqual(side_by_side.time_cell(row, "slow"), "4.000")

    def test_it_is_the_bar_where_that_is_the_point(self):
        row = self.row(against_all=True)
        self.assertEqual((side_by_side.best_cell(row), row["ratio"]), ("brief", 0.5))

    def test_where_nobody_writes_as_much_the_fastest_is_the_bar_with_a_star(self):
        row = self.row(failures={"slow": "status 1"})
        self.assertEqual((side_by_side.best_cell(row), row["ratio"]), ("brief *", 0.5))
        self.assertEqual(side_by_side.time_cell(row, "slow"), "status 1")

    def test_the_table_tells_what_was_missed(self):
        row = self.row()
        self.assertEqual((row["bar_met"], row["aim_met"], row["memory_goal_met"]), (True, False, False))
        text = side_by_side.tables([row], ["qnpp", "slow", "brief"])
        self.assertRegex(text, r"\| +slow \| +0\.25 \| +0\.5 \| +0\.2 not yet \| +0\.50 \|")
        self.assertIn("8 MISSED", text)

    def test_a_ratio_above_the_bar_is_missed(self):
        row = self.row(failures={"slow": "status 1"})
        self.assertTrue(row["bar_met"])
        row = side_by_side.workload_row(Workload("w", "", "", None, bar=0.4), 1, {
            "qnpp": Series([Run(1, 0, 1, 1, None)]), "a": Series([Run(2, 0, 2, 1, None)])},
            {"qnpp": (1, 1), "a": (1, 1)}, 1)
        self.assertEqual(side_by_side.limit_cell(row, "bar", " MISSED"), "0.4 MISSED")

    def test_other_sizes_are_held_against_nothing(self):
        row = self.row(factor=0.5)
        self.assertEqual((row["bar_met"], row["aim_met"], row["memory_goal_met"]), (None, None, None))

    def test_a_hundred_runs_read_a_hundred_times_as_much(self):
        self.assertEqual(self.row(runs=100)["bytes_read"], 300_000_000)
        self.assertEqual(self.row(runs=100, factor=0.5)["bytes_read"], 150_000_000)

    def test_where_qnpp_fails_there_is_no_ratio(self):
        row = self.row(failures={"qnpp": "SIGSEGV"})
        self.assertEqual((row["ratio"], row["bar_met"]), (None, None))


class RunsAsOneTest(unittest.TestCase):
    def test_times_add_up_and_a_failure_stays(self):
        one = as_one([Run(1, 2, 4, 8, None), Run(1, 1, 3, 9, "status 2", "why"), Run(1, 1, 1, 1, None)])
        self.assertEqual(one, Run(3, 4, 8, 9, "status 2", "why"))


class TokensTest(unittest.TestCase):
    def difference(self, expected, found):
        return compare.difference(compare.tokens(expected), compare.tokens(found))

    def test_blanks_lines_and_line_directives_do_not_matter(self):
        self.assertIsNone(self.difference(b'#line 1 "a.c"\na+b ;\n\n', b'# 1 "a.c" 3\na + b\n;'))

    def test_a_blank_between_two_tokens_that_would_merge_does(self):
        for one, other in (("+ +", "++"), ("a b", "ab"), ("- ->", "-- >"), ("1 .e", "1.e"), ("1e +1", "1e+1")):
            self.assertIsNotNone(self.difference(one.encode(), other.encode()), one)

    def test_a_blank_in_a_literal_does(self):
        self.assertIsNotNone(self.difference(b'"a b"', b'"a  b"'))
        self.assertIsNotNone(self.difference(b"' '", b"'  '"))
        self.assertIsNone(self.difference(rb'"a\" b" c', rb'"a\" b"  c'))

    def test_the_first_difference_is_told(self):
        self.assertEqual(self.difference(b"a b c", b"a x c"), "at token 2 x instead of b")
        self.assertEqual(self.difference(b"a b", b"a"), "at token 2 the end instead of b")
        self.assertEqual(self.difference(b"a", b"a b"), "at token 2 b instead of the end")


class FileTableTest(unittest.TestCase):
    def test_it_tells_who_made_the_same_of_the_file(self):
        series = {name: Series([Run(value, 0, value, 5.0, failure)])
                  for name, value, failure in (("qnpp", 1, None), ("a", 2, None), ("b", 4, None), ("c", 1, "status 1"))}
        written = dict.fromkeys(series, (10, 100))
        row = {"workload": "f.c", **side_by_side.figures(series, written, 2_000_000), "options": ["-DX"],
               "difference": {"qnpp": None, "a": "at token 2 x instead of y", "b": None}}
        text = side_by_side.file_table(row, list(series))
        self.assertRegex(text, r"\| a +\| +2\.000 \| +0\.50 \| +5\.0 \| at token 2 x instead of y \|")
        self.assertRegex(text, r"\| b +\| +4\.000 \| +0\.25 \| +5\.0 \| +as qnpp \|")
        self.assertRegex(text, r"\| c +\| status 1 \| +- \| status 1 \| +- \|")
        self.assertIn("f.c, 2.0 MB without what it includes, options: -DX\n", text)
        self.assertIn("Best peer: a, ratio 0.50\n", text)


class CommandLineTest(unittest.TestCase):
    def test_what_follows_two_dashes_is_for_the_programs(self):
        self.assertEqual(split_at_dashes(["--file", "a", "--", "-I", "b", "--"]), (["--file", "a"], ["-I", "b", "--"]))
        self.assertEqual(split_at_dashes(["--growth"]), (["--growth"], []))


class InputsTest(unittest.TestCase):
    """The workloads at a thousandth of their size."""

    def text_of(self, name):
        workload = next(one for one in WORKLOADS if one.name == name)
        with tempfile.TemporaryDirectory() as folder:
            return (prepare(workload, 0.001, pathlib.Path(folder)).folder / "input.c").read_text()

    def test_names_differ_and_aims_are_beyond_bars(self):
        self.assertEqual(len({one.name for one in WORKLOADS}), len(WORKLOADS))
        for one in WORKLOADS:
            self.assertTrue(one.bar is None and one.aim is None or one.aim < one.bar, one.name)

    def test_every_four_lines_are_a_conditional(self):
        lines = self.text_of("ifs").splitlines()[22:]
        self.assertGreater(len(lines), 40)
        for number in range(0, len(lines), 4):
            self.assertRegex(lines[number], r"^#if defined\(\w+\) (&&|\|\|) \(defined \w+ (&&|\|\|) VERSION > \d+\)$")
            self.assertRegex(lines[number + 2], r"^#elif ")
            self.assertEqual(lines[number + 3], "#endif")

    def test_mixed_code_has_everything_and_closes_what_it_opens(self):
        text = self.text_of("mixed")
        for part in (r"^/\*$", r"^// ", r"^#define LIMIT_1 ", r"^#if 0$", r"^#ifdef ", r"^#else$", r"MAX\(",
                     r'report\(.*\\"'):
            self.assertRegex(text, re.compile(part, re.MULTILINE))
        self.assertEqual(len(re.findall(r"^#if", text, re.MULTILINE)), len(re.findall(r"^#endif", text, re.MULTILINE)))

    def test_each_argument_is_a_macro(self):
        arguments = re.search(r"total = SUM\((.*)\);", self.text_of("args40k"))[1].split(", ")
        self.assertEqual(len(arguments), 40)
        self.assertTrue(all(re.fullmatch(r"VALUE_\d+", argument) for argument in arguments))

    def test_each_of_the_macros_is_used_twice_on_average(self):
        lines = self.text_of("macros100k").splitlines()
        self.assertEqual([sum(line.startswith("#define") for line in lines), len(lines)], [100, 200])


if __name__ == "__main__":
    unittest.main()
