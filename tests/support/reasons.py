"""Lists of what is left out: paragraphs of reasons and, behind each, indented,
the rows that it is the reason of. Lines that begin with `#` are comments."""

import collections
import sys


def read(path):
    """The rows of a list, counted."""
    rows = collections.Counter()
    has_reason = False
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        if not line.startswith(" "):
            has_reason = True
        elif has_reason:
            rows[line.strip()] += 1
        else:
            sys.exit(f"{path.name}:{number}: a row without a reason")
    return rows


def compare(left_out, path, done, listed=None):
    """Ends the program unless what is left out is what the list has, or, of a
    list that is for several, those of its rows that are `listed`."""
    if listed is None:
        listed = read(path)
    wrong = [f"not {done}, nor listed in {path.name}: {row}"
             for row in sorted((left_out - listed).elements())]
    wrong += [f"listed in {path.name}, but {done} or gone: {row}"
              for row in sorted((listed - left_out).elements())]
    if wrong:
        sys.exit("\n".join(wrong))
