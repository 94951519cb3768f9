#!/usr/bin/env python3
"""ledger.py [--update | --called] LEDGER COMPILER PROGRAM...

Runs the programs under callgrind, which counts the instructions of each of
their operations, and compares the counts with those in the file LEDGER.
--update writes them to LEDGER instead. --called compares what the C and C++
libraries took, too: LEDGER must then be of this machine.

LEDGER names the compiler that its counts hold for. COMPILER is the one that
built the programs; if it is another, nothing is run or compared.
"""

import argparse
import collections
import pathlib
import shutil
import subprocess
import sys
import tempfile

# By how many percent a count may differ from the ledger's, and one of what was
# called, which depends on where things lie in memory.
TOLERANCE = 3
CALLED_TOLERANCE = 10

HEAD = """\
# Instructions of fixed operations of the library, by scripts/cost --update.
# ours:   in libkorvan.so and libkorvan_platform.so. Only this is compared.
# called: in the C and C++ libraries, which choose their functions by the
#         processor.
# compiler: {compiler}
"""
COMPILER = "# compiler: "
COLUMNS = ("operation", "ours", "called")

Cost = collections.namedtuple("Cost", ["ours", "called"])


class Failure(Exception):
    """Ends the run; its text tells the user why."""


# Counting.

def own_costs(dump):
    """{object: instructions} of one dump, which has all names in full.

    A line that begins with a digit holds a position and a cost, and belongs to
    the object of the last "ob=" line. The one after a "calls=" line is the cost
    of a call, which the lines of the called function hold already.
    """
    costs = collections.Counter()
    total = None
    is_of_call = False
    for line in dump.splitlines():
        if line.startswith("ob="):
            obj = line.removeprefix("ob=")
        elif line.startswith("calls="):
            is_of_call = True
        elif line.startswith("totals: "):
            total = int(line.removeprefix("totals: "))
        elif line[:1].isdigit():
            if not is_of_call:
                costs[obj] += int(line.split()[1])
            is_of_call = False
    if sum(costs.values()) != total:
        raise Failure(f"callgrind counted {total}, {sum(costs.values())} read")
    return costs


def cost(dump, program):
    """The cost of a dump's operation. Instructions of the program itself, which
    only asks for the operation, are in neither figure."""
    ours = called = 0
    for obj, instructions in own_costs(dump).items():
        name = pathlib.PurePath(obj).name
        if name.startswith("libkorvan"):
            ours += instructions
        elif name != program:
            called += instructions
    if ours == 0:
        raise Failure(f"{operation(dump)} ran nothing of the library")
    return Cost(ours, called)


def operation(dump):
    """The name of a dump's operation; None for the dump at a program's end."""
    trigger = "desc: Trigger: Client Request: "
    for line in dump.splitlines():
        if line.startswith(trigger):
            return line.removeprefix(trigger)
    return None


def dumps(program, arguments):
    """The dumps of a run of the program, one for each operation, in order.

    It runs in a new folder under a short name and in an environment that is
    always the same: they shift the stack, and some functions of the C library
    go by addresses.
    """
    valgrind = shutil.which("valgrind")
    if valgrind is None:
        raise Failure("there is no valgrind here")
    with tempfile.TemporaryDirectory(prefix="korvan-cost-") as name:
        folder = pathlib.Path(name)
        (folder / program.name).symlink_to(program.resolve())
        run = subprocess.run(
            [valgrind, "--tool=callgrind", "--collect-atstart=no",
             "--compress-strings=no", "--compress-pos=no",
             "--callgrind-out-file=dump", f"./{program.name}", *arguments],
            cwd=folder, env={"LC_ALL": "C"}, capture_output=True, text=True,
            check=False)
        if run.returncode != 0:
            raise Failure(f"{program.name} failed:\n{run.stderr}")
        paths = sorted(folder.glob("dump.*"),
                       key=lambda path: int(path.suffix[1:]))
        return [path.read_text() for path in paths]


def count(programs, *arguments):
    """{operation: cost} of all programs, in the order in which they ran."""
    costs = {}
    for program in programs:
        for dump in dumps(program, arguments):
            name = operation(dump)
            if name is None:
                continue
            if name in costs:
                raise Failure(f"two operations are called {name}")
            costs[name] = cost(dump, program.name)
    return costs


# The ledger.

def written(compiler, costs):
    """The text of a ledger."""
    lines = [COLUMNS] + [(name, str(one.ours), str(one.called))
                         for name, one in costs.items()]
    widths = [max(map(len, column)) for column in zip(*lines)]
    return HEAD.format(compiler=compiler) + "\n" + "".join(
        f"{name:<{widths[0]}}  {ours:>{widths[1]}}  {called:>{widths[2]}}\n"
        for name, ours, called in lines)


def read(ledger):
    """A ledger's compiler, and its {operation: cost}."""
    compiler = None
    costs = {}
    for line in ledger.splitlines():
        if line.startswith(COMPILER):
            compiler = line.removeprefix(COMPILER)
        elif line and not line.startswith("#") and line.split() != [*COLUMNS]:
            name, ours, called = line.split()
            costs[name] = Cost(int(ours), int(called))
    return compiler, costs


def differences(kept, found, with_called=False):
    """A line for each operation that does not cost what it did."""
    lines = []
    for name in {**kept, **found}:
        if name not in found:
            lines.append(f"{name}: expected {kept[name].ours}, is missing")
        elif name not in kept:
            lines.append(f"{name}: not expected, found {found[name].ours}")
        else:
            compared = [("", TOLERANCE, kept[name].ours, found[name].ours)]
            if with_called:
                compared.append((" called", CALLED_TOLERANCE,
                                 kept[name].called, found[name].called))
            for what, tolerance, was, now in compared:
                if 100 * abs(now - was) > tolerance * was:
                    change = f" ({100 * (now - was) / was:+.1f} %)" if was else ""
                    lines.append(
                        f"{name}{what}: expected {was}, found {now}{change}")
    return lines


def compare(ledger, compiler, count_all, with_called=False):
    """Compares the costs that `count_all` returns with those of a ledger."""
    kept_compiler, kept = read(ledger)
    if compiler != kept_compiler:
        return (f"Nothing is compared: the figures are of {kept_compiler}, "
                f"this is {compiler}.")
    found = count_all()
    lines = differences(kept, found, with_called)
    if lines:
        raise Failure("\n".join(lines + [
            f"{len(lines)} of {len(found)} operations do not cost what "
            "bench/cost.txt says. If this is meant: scripts/cost --update"]))
    return f"{len(found)} operations cost what they did."


def main():
    parser = argparse.ArgumentParser()
    what = parser.add_mutually_exclusive_group()
    what.add_argument("--update", action="store_true")
    what.add_argument("--called", action="store_true")
    parser.add_argument("ledger", type=pathlib.Path)
    parser.add_argument("compiler")
    parser.add_argument("programs", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()
    try:
        if arguments.update:
            costs = count(arguments.programs)
            arguments.ledger.write_text(written(arguments.compiler, costs))
            print(f"{len(costs)} operations are in {arguments.ledger}.")
        else:
            print(compare(arguments.ledger.read_text(), arguments.compiler,
                          lambda: count(arguments.programs),
                          arguments.called))
    except Failure as failure:
        sys.exit(str(failure))


if __name__ == "__main__":
    main()
