"""What a literal is changed to."""

import re

_INTEGER = re.compile(r"(0[xX][0-9A-Fa-f']+|[0-9][0-9']*)([uUlLzZ]*)$")
_STRING = re.compile(r"((?:u8|[uUL])?\")(.*)(\")$", re.DOTALL)
_UNIT = re.compile(r"\\x[0-9A-Fa-f]+|\\.|.", re.DOTALL)
_CHARACTER = re.compile(r"((?:u8|[uUL])?)'(.+)'$", re.DOTALL)
_ESCAPES = {r"\0": [r"\1"], r"\n": [r"\r", " "], r"\r": [r"\n"],
            r"\t": [" "], " ": [r"\t"], r"\\": ["/"], r"\'": ['"']}


def changed_integers(token):
    """One more, one less and nothing; of a hexadecimal number with one bit, the
    next bit and nothing."""
    match = _INTEGER.match(token)
    if match is None:
        return []
    digits, suffix = match[1].replace("'", ""), match[2]
    is_hexadecimal = digits[:2] in ("0x", "0X")
    value = int(digits, 16 if is_hexadecimal else 10)
    if is_hexadecimal and value.bit_count() == 1:
        top = value == 0x80000000
        values = [value >> 1 if top else value << 1, 0]
    else:
        most = 0xFFFFFFFF if value <= 0xFFFFFFFF else (1 << 64) - 1
        values = [value - 1] if value == most else [value + 1, value - 1]
        if value > 1 and not is_hexadecimal:
            values.append(0)
    form = "0x{:x}" if is_hexadecimal else "{}"
    return [form.format(changed) + suffix for changed in values
            if changed >= 0 or not (is_hexadecimal or suffix)]


def changed_characters(token):
    """The other case of a letter, and the neighbour."""
    prefix, body = _CHARACTER.match(token).groups()
    if body in _ESCAPES:
        changed = _ESCAPES[body]
    elif len(body) > 1:
        changed = ["?"]
    else:
        changed = [body.swapcase()] if body.isalpha() else []
        neighbour = chr(ord(body) + 1)
        changed.append({"'": r"\'", "\\": r"\\"}.get(neighbour, neighbour))
    return [f"{prefix}'{body}'" for body in changed]


def characters(token):
    """(what stands before, [character, ...], what stands behind) of a string
    literal."""
    before, body, behind = _STRING.match(token).groups()
    return before, _UNIT.findall(body), behind


def other(unit):
    """Another letter or digit; None if `unit` is neither."""
    if unit.isdigit():
        return str((int(unit) + 1) % 10)
    return unit.swapcase() if len(unit) == 1 and unit.isalpha() else None


def changed_strings(token):
    """Without the last character, without the first, with one letter or digit
    changed, and empty."""
    before, units, behind = characters(token)
    if not units:
        return [f"{before}?{behind}"]
    place = next((i for i, unit in enumerate(units) if other(unit)), 0)
    edited = list(units)
    edited[place] = other(units[place]) or ("!" if units[0] == "?" else "?")
    changed = [units[:-1], units[1:], edited, []]
    return [before + "".join(new) + behind for new in changed]
