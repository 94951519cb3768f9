"""How changes are written down, and the list of those that no test can notice.

The list has paragraphs of reasons, and behind each, indented, the changes that
it is the reason of:

    The shorter copy is only a quicker one.

      resources/load_string.cc  CopyShort
        - if (length >= 32) {
        + if (length > 32) {

A change stands under its file and the function or variable that it is in. Lines
behind a `-` become those behind the next `+`; where a line is only deleted,
there is no `+`. Where equal lines of a function change equally, "occurrence 2"
behind the function means the second. Lines that begin with `#` are comments.
"""

import re

from mutants import Change, normal_lines

_PLACE = re.compile(r"(\S+)(?:  (\S.*?))?(?:  occurrence (\d+))?$")


class BadList(Exception):
    """Tells what is wrong with the list, and where."""


def written(change):
    """A change as it stands in the list."""
    place = f"  {change.path}"
    if change.place:
        place += f"  {change.place}"
    if change.ordinal > 1:
        place += f"  occurrence {change.ordinal}"
    return "\n".join([place, *(f"    - {line}" for line in change.old),
                      *(f"    + {line}" for line in change.new)])


def read(path):
    """{change: reason} of the list in a file."""
    reader = _Reader(path.name)
    for number, line in enumerate(path.read_text().splitlines(), 1):
        reader.take(number, line)
    reader.end()
    return reader.accepted


class _Reader:
    def __init__(self, name):
        self.accepted = {}
        self._name = name
        self._number = 0
        self._reason = []
        self._is_reason_open = False
        self._is_reason_used = True
        self._place = None      # (path, function, ordinal)
        self._is_place_used = True
        self._old, self._new = [], []

    def take(self, number, line):
        self._number = number
        text = line.strip()
        if text.startswith("#"):
            return
        if not text:
            self._end_change()
            self._is_reason_open = False
        elif not line.startswith(" "):
            self._take_reason(text)
        elif text[:2] == "- ":
            if self._new:
                self._end_change()
            self._need(self._place, "a change of no file")
            self._old += normal_lines(text[2:])
        elif text[:2] == "+ ":
            self._need(self._old, "a line that takes no line's place")
            self._new += normal_lines(text[2:])
        else:
            self._take_place(text)

    def end(self):
        self._end_change()
        self._need(self._is_place_used, "a place without a change")
        self._need(self._is_reason_used, "a reason without a change")

    def _need(self, condition, message):
        if not condition:
            raise BadList(f"{self._name}:{self._number}: {message}")

    def _take_reason(self, text):
        if not self._is_reason_open:
            self.end()
            self._reason, self._place = [], None
            self._is_reason_open, self._is_reason_used = True, False
        self._reason.append(text)

    def _take_place(self, text):
        self._end_change()
        self._need(self._reason, "a change without a reason")
        self._need(self._is_place_used, "a place without a change")
        match = _PLACE.match(text)
        self._need(match, "no place: FILE  FUNCTION")
        self._place = match[1], match[2] or "", int(match[3] or 1)
        self._is_reason_open = self._is_place_used = False

    def _end_change(self):
        if not self._old:
            return
        path, place, ordinal = self._place
        change = Change(path, place, tuple(self._old), tuple(self._new),
                        ordinal)
        self._need(change not in self.accepted, "the same change once more")
        self.accepted[change] = " ".join(self._reason)
        self._is_reason_used = self._is_place_used = True
        self._old, self._new = [], []
