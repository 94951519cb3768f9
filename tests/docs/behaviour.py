"""behaviour.py TOP [LOG...]
Fails unless docs/behaviour.md has for each exported function a row for each kind
of promise, and each row names tests that stand in the sources. With logs of runs
of CTest, fails, too, where one of these tests did not run and pass there, or
passed for one width of the two that it is built for."""
import pathlib
import re
import subprocess
import sys

import documents

SYMBOLS = ("tests/binary/exported_symbols.txt",
           "tests/binary/exported_platform_symbols.txt")
KINDS = ("Errors", "Ownership", "Threads", "Exceptions")
NAME = re.compile(r"`([^`]+)`")
# A case of Google Test, as its source and as its log name it.
CASE = re.compile(r"\bTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)")
PASSED_CASE = re.compile(r"^\[ {7}OK \] (?:\w+/)?(\w+\.\w+)", re.MULTILINE)
# A test of CTest, which has a name of its own.
ADDED = re.compile(r"(?:korvan_\w*test|add_test)\(\s*(?:NAME\s+)?([\w${}]+)")
# A source that is built for both widths, narrow_NAME and wide_NAME.
TWINS = re.compile(r"korvan_ini_test\((\w+)(?![^)]*\b(?:NARROW|WIDE)\b)")
RUN = re.compile(r"^\d+/\d+ Testing: (\S+)$", re.MULTILINE)


def exported_functions(symbols):
    """The names of the exported functions, of two widths the narrow one's."""
    demangled = subprocess.run(
        ["c++filt"], input=pathlib.Path(symbols).read_text(), text=True,
        capture_output=True, check=True).stdout
    names = set()
    for line in demangled.splitlines():
        # Of C only a name is left. Data has none, but a class or namespace.
        name = re.match(r"(.*?operator\(\)|[^(]+)\(|(\w+)$", line)
        if name:
            narrow = re.sub(r"\b(CIni\w+)W\b", r"\1A", name[1] or name[2])
            names.add(narrow.removeprefix("korvan::")
                      .replace("ci_less_w", "ci_less_a"))
    return names


def rows(top):
    """{function: {kind: (line, [test])}} of the document."""
    found = {}
    functions = []
    for number, line in enumerate(
            documents.read(pathlib.Path(top) / "docs/behaviour.md"), 1):
        if line.startswith("### "):
            functions = NAME.findall(line)
            for function in functions:
                if function in found:
                    raise SystemExit(f"line {number}: {function} stands twice")
                found[function] = {}
        elif line.startswith("| ") and functions:
            cells = [cell.strip() for cell in line.strip("|").split("|")]
            if cells[0] in KINDS:
                for function in functions:
                    found[function][cells[0]] = (number,
                                                 NAME.findall(cells[-1]))
    return found


def tests_in_sources(top):
    tests = set()
    for path in pathlib.Path(top, "tests").rglob("*"):
        if path.suffix == ".cc":
            tests |= {".".join(case) for case in CASE.findall(path.read_text())}
        elif path.name == "CMakeLists.txt":
            tests |= set(ADDED.findall(path.read_text()))
    return tests


def tests_that_passed(top, logs):
    """The cases and tests that the logs of runs of CTest say passed."""
    text = "".join(pathlib.Path(log).read_text(errors="replace")
                   for log in logs)
    twins = TWINS.findall(
        pathlib.Path(top, "tests/ini/CMakeLists.txt").read_text())
    passed = set()
    of_program = {}
    for part in re.split(r"^(?=\d+/\d+ Testing: )", text, flags=re.MULTILINE):
        name = RUN.search(part)
        if name and re.search(r"^Test Passed\.$", part, re.MULTILINE):
            passed.add(name.group(1))
            of_program[name.group(1)] = set(PASSED_CASE.findall(part))
    for twin in twins:
        narrow = of_program.pop(f"narrow_{twin}", set())
        passed |= narrow & of_program.pop(f"wide_{twin}", set())
    return passed.union(*of_program.values())


def faults(top, logs):
    found = rows(top)
    functions = set()
    for symbols in SYMBOLS:
        functions |= exported_functions(pathlib.Path(top, symbols))
    if not functions:
        yield "no function is exported"
    for function in sorted(functions - set(found)):
        yield f"{function} is not in docs/behaviour.md"
    for function in sorted(set(found) - functions):
        yield f"{function} in docs/behaviour.md is not exported"
    known = tests_in_sources(top)
    passed = tests_that_passed(top, logs) if logs else None
    for function, kinds in found.items():
        for kind in KINDS:
            number, tests = kinds.get(kind, (0, []))
            if not tests:
                yield f"{function}: no test of its {kind.lower()} is named"
            for test in tests:
                if test not in known:
                    yield f"line {number}: there is no test {test}"
                elif passed is not None and test not in passed:
                    yield f"line {number}: {test} did not run and pass"


def main(top, *logs):
    lines = list(dict.fromkeys(faults(top, logs)))
    print("\n".join(lines) if lines else "{} functions, {} promises, "
          "{} tests".format(*counts(top)))
    return 1 if lines else 0


def counts(top):
    found = rows(top)
    promises = [row for kinds in found.values() for row in kinds.values()]
    return (len(found), len(promises),
            len({test for _, tests in promises for test in tests}))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
