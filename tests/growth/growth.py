#!/usr/bin/env python3
"""growth.py PROGRAM PART

Runs the program `growth` under callgrind on inputs of some sizes, and fails
where an operation takes too many instructions for twice the input: more than
2.2 times as many where its work should be linear, and 1.1 times what n log n
gives where it has to order names; 1.6 times where large texts have keys in no
order.
"""

import collections
import math
import os
import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).parents[2] / "bench" / "cost"))

import ledger  # noqa: E402

# Of inputs, in bytes; a campaign adds the larger ones.
SIZES = (1 << 16, 1 << 17)
LARGE = (1 << 20, 1 << 21, 1 << 25, 1 << 26)
# What is done once, for an input of any size: to bind a symbol, for example.
CONSTANT = 5000
NOISE = 1.1
# Keys in no order are entered in runs of a million lines. Each of the second run
# costs half as much again as one of the first, which meets no other keys.
SECOND_RUN = 1 << 23
STEP = 1.6


def most(growth, size):
    """How many times as much twice `size` may take as `size` does."""
    if growth == "linear":
        return NOISE * 2
    step = STEP if growth == "in_runs" and size >= SECOND_RUN else NOISE
    return step * 2 * math.log(2 * size) / math.log(size)


def compare(costs):
    """(a line for each operation that grows too fast,
    {growth: the highest ratio and where}, the number of operations)."""
    if not costs:
        raise ledger.Failure("no operation was counted")
    operations = collections.defaultdict(dict)
    for name, cost in costs.items():
        operation, growth, size = name.rsplit("/", 2)
        operations[operation, growth][int(size)] = cost.ours + cost.called
    lines = []
    highest = {}
    for (operation, growth), by_size in operations.items():
        sizes = [size for size in by_size if 2 * size in by_size]
        if not sizes:
            raise ledger.Failure(f"{operation} has no size and its double")
        for size in sizes:
            small, large = by_size[size], by_size[2 * size]
            if large > most(growth, size) * small + CONSTANT:
                lines.append(f"{operation}: {small} instructions for {size} "
                             f"bytes, {large} for twice as many: "
                             f"{large / small:.2f} times")
            if small > 10 * CONSTANT:
                highest[growth] = max(
                    highest.get(growth, (0, "")),
                    (large / small, f"{operation} of {2 * size} bytes"))
    return lines, highest, len(operations)


def main(program, part):
    sizes = SIZES + (LARGE if "KORVAN_CAMPAIGN" in os.environ else ())
    try:
        costs = ledger.count([pathlib.Path(program)], part, *map(str, sizes))
        lines, highest, count = compare(costs)
        if lines:
            raise ledger.Failure("\n".join(lines))
    except ledger.Failure as failure:
        return str(failure)
    print(f"figures: {part}: {count} operations; twice the input takes at most "
          + ", ".join(f"{ratio:.2f} times where {growth} ({where})"
                      for growth, (ratio, where) in sorted(highest.items())))
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
