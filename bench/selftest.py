"""Tries bench/arithmetic.py on figures whose result is known. Run it as scripts/bench --selftest."""

import unittest

from arithmetic import Outcome, best_peer, exponent, mark, net, share


def outcome(seconds, lines=100, text=1000, failure=None, stopped=False):
    return Outcome(seconds, failure, stopped, lines, text)


class BestPeerTest(unittest.TestCase):
    def test_the_fastest_counts(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3), "b": outcome(2)}), ("b", True))

    def test_who_writes_fewer_lines_is_no_bar_for_who_writes_them(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3), "b": outcome(2, lines=59)}), ("a", True))

    def test_who_leaves_out_most_of_the_text_is_none_either(self):
        self.assertEqual(best_peer(outcome(1), {"a": outcome(3), "b": outcome(2, text=499)}), ("a", True))

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


if __name__ == "__main__":
    unittest.main()
