"""Mutants: one small change of a source each, how they are written down, and
those of tables of data."""

import collections
import dataclasses
import hashlib
import re
import zlib

import literals

# A change as a reader of the source sees it: the whole lines before and after,
# without indentation. `ordinal` counts equal changes of equal lines in one
# place, from 1.
Change = collections.namedtuple("Change", "path place old new ordinal")

# Of the mutants of each table, this share is tried, and at least so many of its
# rows and of its cells: what holds for one row holds for its like.
TABLE_SHARE = 0.05
TABLE_LEAST = 3


def normal_lines(text):
    """The lines of a text that are not blank, with single blanks."""
    lines = (" ".join(line.split()) for line in text.splitlines())
    return tuple(line for line in lines if line)


@dataclasses.dataclass
class Mutant:
    path: str
    start: int      # the characters from here ...
    end: int        # ... to here, exclusively,
    text: str       # are replaced by these
    line: int
    table: str      # which rows or cells of a table it is one of, or ""
    change: Change

    def applied_to(self, text):
        return text[:self.start] + self.text + text[self.end:]

    def rank(self):
        """A number that only the change decides: samples are the lowest."""
        return hashlib.sha256(repr(self.change).encode()).hexdigest()


class Mutants:
    """Collects the mutants of one source, each once."""

    def __init__(self, source):
        self.source = source
        self._edits = {}

    def add(self, start, end, text, place, table=""):
        """Proposes to replace the characters `start` to `end` by `text`."""
        whole = self.source.text
        # Without the characters that stay, equal results are equal edits.
        while start < end and text and whole[start] == text[0]:
            start, text = start + 1, text[1:]
        while start < end and text and whole[end - 1] == text[-1]:
            end, text = end - 1, text[:-1]
        if start < end or text:
            self._edits.setdefault((start, end, text), (place, table))

    def found(self):
        whole = self.source.text
        counts = collections.Counter()
        mutants = []
        for (start, end, text), (place, table) in sorted(self._edits.items()):
            first = whole.rfind("\n", 0, start) + 1
            last = whole.find("\n", end) % (len(whole) + 1)
            # The end of a block tells nothing without what it stands behind.
            while whole[first:last].strip() in ("}", "};"):
                first = whole.rfind("\n", 0, first - 1) + 1
            change = Change(
                self.source.path, place, normal_lines(whole[first:last]),
                normal_lines(whole[first:start] + text + whole[end:last]), 1)
            counts[change] += 1
            mutants.append(Mutant(
                self.source.path, start, end, text, self.source.line_of(start),
                table, change._replace(ordinal=counts[change])))
        return [mutant for mutant in mutants
                if mutant.change.old != mutant.change.new]


def sample_tables(mutants):
    """Leaves out most mutants of tables."""
    groups = collections.defaultdict(list)
    for mutant in mutants:
        if mutant.table:
            groups[mutant.path, mutant.table].append(mutant)
    kept = set()
    for group in groups.values():
        count = max(TABLE_LEAST, round(TABLE_SHARE * len(group)))
        group.sort(key=Mutant.rank)
        kept.update(mutant.change for mutant in group[:count])
    return [mutant for mutant in mutants
            if not mutant.table or mutant.change in kept]


def add_table(mutants, rows, name, separator):
    """Adds the mutants of a table: rows left out, rows exchanged with the next,
    cells edited. `rows` are pairs of numbers of tokens."""
    source = mutants.source
    tokens = source.tokens
    for (first, last), following in zip(rows, rows[1:] + [None]):
        start, end = tokens[first].start, tokens[last].end
        has_separator = separator and source.word(last + 1) == separator
        mutants.add(start, tokens[last + 1].end if has_separator else end, "",
                    name, f"{name} rows")
        if following is not None:
            next_start = tokens[following[0]].start
            next_end = tokens[following[1]].end
            mutants.add(start, next_end, source.text[next_start:next_end] +
                        source.text[end:next_start] + source.text[start:end],
                        name, f"{name} rows")
        for i in range(first, last + 1):
            for text in _changed_cell(tokens[i], source.word(i + 1)):
                mutants.add(tokens[i].start, tokens[i].end, text, name,
                            f"{name} cells")


def _changed_cell(token, following):
    if token.kind == "string":
        before, units, behind = literals.characters(token.text)
        if not units:
            return
        # Any one character will do, but not the same one of every row.
        place = zlib.crc32(token.text.encode()) % len(units)
        yield before + "".join(units[:place] + units[place + 1:]) + behind
        if literals.other(units[place]):
            units[place] = literals.other(units[place])
            yield before + "".join(units) + behind
    elif token.kind == "number":
        yield literals.changed_integers(token.text)[0]
    elif re.match(r"k[A-Z]|[A-Z_0-9]+$", token.text) and following not in "([":
        yield f"({token.text} + 1)"


def add_rows_of_macros(mutants):
    """Adds those of a file that holds calls of macros, `ROW(...) ROW(...)`, and
    nothing else."""
    source = mutants.source
    rows = []
    i = 0
    while i < len(source.tokens):
        last = source.partners.get(i + 1, i)
        rows.append((i, last))
        i = last + 1
    add_table(mutants, rows, "", separator="")
