"""Which test programs CTest runs in a build, and under what."""

import collections
import json
import pathlib
import re
import subprocess
import tempfile

# `tool` is None where the program runs by itself.
Test = collections.namedtuple("Test", "name program tool")

# A test in a file of CTest, or one of a program whose cases are not known yet.
_ADDED = re.compile(r'^ *add_test\((?:\[=+\[.*?\]=+\] "([^"]*)"|(\S+)_NOT_BUILT )',
                    re.MULTILINE)


def tests(build):
    """The tests of a built tree that run a program built from its tests."""
    folder = pathlib.Path(build).resolve()
    # From elsewhere: even when it only shows the tests of a tree, CTest takes
    # the place of the log of the run that may be asking.
    with tempfile.TemporaryDirectory() as elsewhere:
        pathlib.Path(elsewhere, "CTestTestfile.cmake").write_text(
            f'subdirs("{folder}")\n')
        shown = subprocess.run(
            ["ctest", "--test-dir", elsewhere, "--show-only=json-v1"],
            capture_output=True, text=True, check=True).stdout
    found = []
    for test in json.loads(shown)["tests"]:
        command = test.get("command", [])
        programs = [argument for argument in command
                    if argument.startswith(f"{folder}/tests/")]
        if not programs:
            continue
        program = pathlib.Path(programs[0])
        if command[0] == programs[0]:
            found.append(Test(test["name"], program, None))
        elif pathlib.Path(command[0]).name == "valgrind":
            found.append(Test(test["name"], program, "valgrind"))
    return found


def configured(build):
    """The names of the programs that a tree would run that is not built."""
    folder = pathlib.Path(build).resolve()
    found = set()
    for file in (folder / "tests").rglob("*.cmake"):
        for command, not_built in _ADDED.findall(file.read_text()):
            if not_built:
                found.add(not_built)
            elif command.startswith(f"{folder}/tests/"):
                found.add(pathlib.Path(command).name)
    return found
