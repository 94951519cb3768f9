"""Shows that the ledger's comparison can fail, and what it reads of a dump."""

import unittest

import ledger
from ledger import Cost

COMPILER = "g++ 12.2.0, x86_64-linux-gnu"
KEPT = {
    "find/hit": Cost(1000, 70),
    "load/16": Cost(20000, 9),
    "save": Cost(50, 0),
}

DUMP = """\
# callgrind format
version: 1
part: 2
desc: Trigger: Client Request: find/hit

positions: line
events: Ir
summary: 1157

ob=/home/someone/build/oid_cost
fl=oid_cost.cc
fn=main
10 100
cob=/home/someone/build/libkorvan.so.1.0.0
cfi=oid/lookup.cc
cfn=korvan::FindOIDInfo
calls=3 200
11 1054

ob=/home/someone/build/libkorvan.so.1.0.0
fl=oid/lookup.cc
fn=korvan::FindOIDInfo
200 900
fi=oid/keys.h
30 80
fe=oid/lookup.cc
cob=/usr/lib/x86_64-linux-gnu/libc.so.6
cfi=strcasecmp.c
cfn=strcasecmp
calls=2 7
201 54
cob=/home/someone/build/libkorvan_platform.so.1.0.0
cfi=last_error.cc
cfn=SetLastError
calls=1 5
201 20
202 2

ob=/home/someone/build/libkorvan_platform.so.1.0.0
fl=last_error.cc
fn=SetLastError
5 20

ob=/usr/lib/x86_64-linux-gnu/libc.so.6
fl=strcasecmp.c
fn=strcasecmp
7 54

ob=???
fl=???
fn=0x0000000004d5e204
0 1

totals: 1157
"""


def compare(found, compiler=COMPILER):
    return ledger.compare(ledger.written(COMPILER, KEPT), compiler,
                          lambda: found)


class Comparison(unittest.TestCase):
    def assertFails(self, found, *lines):
        with self.assertRaises(ledger.Failure) as failed:
            compare(found)
        self.assertEqual(str(failed.exception).splitlines()[:-1], [*lines])

    def test_takes_the_same_costs(self):
        self.assertEqual(compare(KEPT), "3 operations cost what they did.")

    def test_takes_a_difference_of_two_percent(self):
        compare({**KEPT, "find/hit": Cost(1020, 70)})
        compare({**KEPT, "find/hit": Cost(980, 70)})

    def test_takes_three_percent_but_no_more(self):
        compare({**KEPT, "find/hit": Cost(1030, 70)})
        compare({**KEPT, "find/hit": Cost(970, 70)})
        self.assertFails({**KEPT, "find/hit": Cost(1031, 70)},
                         "find/hit: expected 1000, found 1031 (+3.1 %)")
        self.assertFails({**KEPT, "find/hit": Cost(969, 70)},
                         "find/hit: expected 1000, found 969 (-3.1 %)")

    def test_names_every_operation_that_differs_by_four_percent(self):
        self.assertFails(
            {**KEPT, "find/hit": Cost(1040, 70), "save": Cost(48, 0)},
            "find/hit: expected 1000, found 1040 (+4.0 %)",
            "save: expected 50, found 48 (-4.0 %)")

    def test_takes_any_difference_in_the_libraries_called(self):
        compare({**KEPT, "find/hit": Cost(1000, 7000)})

    def test_compares_the_libraries_called_when_asked(self):
        def differences(called):
            return ledger.differences(KEPT, {**KEPT, "find/hit":
                                             Cost(1000, called)}, True)
        self.assertEqual(differences(77), [])
        self.assertEqual(differences(63), [])
        self.assertEqual(differences(78), [
            "find/hit called: expected 70, found 78 (+11.4 %)"])
        self.assertEqual(differences(62), [
            "find/hit called: expected 70, found 62 (-11.4 %)"])

    def test_compares_a_first_call_of_a_library(self):
        self.assertEqual(
            ledger.differences({"find": Cost(9, 0)}, {"find": Cost(9, 5)}, True),
            ["find called: expected 0, found 5"])

    def test_misses_an_operation(self):
        found = dict(KEPT)
        del found["load/16"]
        self.assertFails(found, "load/16: expected 20000, is missing")

    def test_notes_an_operation_too_many(self):
        self.assertFails({**KEPT, "destroy": Cost(5, 5)},
                         "destroy: not expected, found 5")

    def test_runs_nothing_with_another_compiler(self):
        told = ledger.compare(ledger.written(COMPILER, KEPT), "g++ 13.1.0, x",
                              lambda: self.fail("it ran"))
        self.assertEqual(told, f"Nothing is compared: the figures are of "
                               f"{COMPILER}, this is g++ 13.1.0, x.")


class Ledger(unittest.TestCase):
    def test_is_read_as_it_was_written(self):
        self.assertEqual(ledger.read(ledger.written(COMPILER, KEPT)),
                         (COMPILER, KEPT))


class Dump(unittest.TestCase):
    def test_costs_each_object_its_own_instructions(self):
        self.assertEqual(ledger.own_costs(DUMP), {
            "/home/someone/build/oid_cost": 100,
            "/home/someone/build/libkorvan.so.1.0.0": 982,
            "/home/someone/build/libkorvan_platform.so.1.0.0": 20,
            "/usr/lib/x86_64-linux-gnu/libc.so.6": 54,
            "???": 1})

    def test_counts_neither_figure_for_the_program(self):
        self.assertEqual(ledger.cost(DUMP, "oid_cost"), Cost(1002, 55))

    def test_must_hold_what_its_total_says(self):
        with self.assertRaises(ledger.Failure):
            ledger.own_costs(DUMP.replace("200 900", "200 899"))

    def test_must_have_instructions_of_the_library(self):
        with self.assertRaises(ledger.Failure):
            ledger.cost(DUMP.replace("libkorvan", "libother"), "oid_cost")

    def test_is_named_after_its_operation(self):
        self.assertEqual(ledger.operation(DUMP), "find/hit")
        self.assertIsNone(
            ledger.operation("desc: Trigger: Program termination\n"))


if __name__ == "__main__":
    unittest.main()
