"""Shows that growth.py can fail."""

import unittest

import growth
from growth import ledger

Cost = ledger.Cost
SMALL = 1_000_000


def grown(kind, ratio, size=1024):
    return growth.compare({
        f"load/text/{kind}/{size}": Cost(SMALL - 1000, 1000),
        f"load/text/{kind}/{2 * size}": Cost(int(SMALL * ratio) - 1000, 1000)})


class Comparison(unittest.TestCase):
    def test_linear_work_may_double(self):
        self.assertEqual(grown("linear", 2), (
            [], {"linear": (2, "load/text of 2048 bytes")}, 1))

    def test_linear_work_may_not_grow_faster(self):
        lines, _, _ = grown("linear", 2.21)
        self.assertEqual(lines, [
            "load/text: 1000000 instructions for 1024 bytes, 2210000 for twice "
            "as many: 2.21 times"])

    def test_ordering_may_take_a_little_more(self):
        self.assertEqual(grown("ordered", 2.4)[0], [])
        self.assertNotEqual(grown("ordered", 2.43)[0], [])
        self.assertNotEqual(grown("ordered", 2.4, 1 << 22)[0], [])

    def test_a_second_run_of_keys_may_cost_more(self):
        self.assertEqual(grown("in_runs", 3.3, 1 << 25)[0], [])
        self.assertNotEqual(grown("in_runs", 3.4, 1 << 25)[0], [])
        self.assertNotEqual(grown("in_runs", 2.43, 1 << 22)[0], [])
        self.assertNotEqual(grown("ordered", 2.43, 1 << 25)[0], [])

    def test_what_is_done_once_does_not_count(self):
        self.assertEqual(growth.compare({
            "find/linear/8": Cost(100, 0),
            "find/linear/16": Cost(5000, 0)}), ([], {}, 1))

    def test_no_operation_is_a_failure(self):
        with self.assertRaises(ledger.Failure):
            growth.compare({})

    def test_a_size_alone_is_a_failure(self):
        with self.assertRaises(ledger.Failure):
            growth.compare({"find/linear/8": Cost(100, 0),
                            "find/linear/17": Cost(100, 0)})


if __name__ == "__main__":
    unittest.main()
