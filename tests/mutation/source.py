"""The tokens of a C++ source, which the changes are made from.

A source is read as bytes, a character each, so a place in its text is the byte
offset that libclang tells.
"""

import bisect
import collections
import re

Token = collections.namedtuple("Token", "kind start end text")

_OPERATORS = ("<=>", "->*", "...", "<<=", ">>=", "::", "->", "++", "--", "<<",
              ">>", "<=", ">=", "==", "!=", "&&", "||", "+=", "-=", "*=", "/=",
              "%=", "&=", "|=", "^=", ".*")
_TOKEN = re.compile(
    r"(?P<directive>^[ \t]*#(?:\\\n|[^\n])*)"
    r"|(?P<space>[ \t]+|\n|//[^\n]*|/\*[\s\S]*?\*/)"
    r"|(?P<raw>(?:u8|[uUL])?R\"(?P<mark>[^(]*)\([\s\S]*?\)(?P=mark)\")"
    r"|(?P<string>(?:u8|[uUL])?\"(?:\\.|[^\"\\])*\")"
    r"|(?P<character>(?:u8|[uUL])?'(?:\\.|[^'\\])+')"
    r"|(?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)"
    r"|(?P<name>[A-Za-z_]\w*)"
    r"|(?P<operator>" + "|".join(map(re.escape, _OPERATORS)) + r"|[\s\S])",
    re.MULTILINE)
_KINDS = ("raw", "string", "character", "number", "name", "operator")


def tokenize(text):
    """The tokens of a text, without comments and preprocessor lines."""
    tokens = []
    for match in _TOKEN.finditer(text):
        for kind in _KINDS:
            if match[kind] is not None:
                tokens.append(Token(kind, match.start(), match.end(), match[0]))
    return tokens


class Source:
    """A source text with its tokens, and the partner of each bracket."""

    def __init__(self, path, text):
        self.path = path
        self.text = text
        self.tokens = tokenize(text)
        self.partners = {}
        self._starts = [token.start for token in self.tokens]
        open_brackets = []
        for i, token in enumerate(self.tokens):
            if token.kind != "operator":
                continue
            if token.text in "([{":
                open_brackets.append(i)
            elif token.text in ")]}" and open_brackets:
                partner = open_brackets.pop()
                self.partners[i], self.partners[partner] = partner, i

    def line_of(self, offset):
        return self.text.count("\n", 0, offset) + 1

    def first_from(self, offset):
        """The number of the first token that starts at `offset` or later."""
        return bisect.bisect_left(self._starts, offset)

    def token_at(self, offset):
        """The number of the token that starts at `offset`, or -1."""
        i = self.first_from(offset)
        found = i < len(self.tokens) and self.tokens[i].start == offset
        return i if found else -1

    def word(self, i):
        """The text of token `i`, empty where there is none."""
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def tokens_between(self, start, end):
        """The numbers of the tokens that start in that part of the text."""
        return range(self.first_from(start), self.first_from(end))

    def split(self, first, end, separator):
        """The parts of the tokens `first` to `end`, exclusively, between the
        separators that stand in no bracket: pairs of the numbers of their first
        and last tokens."""
        parts = []
        begin = i = first
        while i < end:
            if self.tokens[i].kind == "operator" and (
                    self.tokens[i].text == separator):
                if i > begin:
                    parts.append((begin, i - 1))
                begin = i + 1
            elif self.partners.get(i, -1) > i:
                i = self.partners[i]
            i += 1
        if end > begin:
            parts.append((begin, end - 1))
        return parts
