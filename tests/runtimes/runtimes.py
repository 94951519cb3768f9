"""Tells which test programs do not run under each tool that looks at them.

    runtimes.py CMAKE BUILD LIST WORK

Fails where a program runs under a tool neither by itself nor is listed, or is
listed though it runs. BUILD is a tree that is built with valgrind. What the
other tools run is what trees in WORK would run, which are configured by the
tools' presets.
"""

import collections
import pathlib
import re
import shutil
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import ctest_programs
import reasons

_PRESETS = {
    "address": ["asan"],
    "thread": ["tsan"],
    # By the Clang that is there for the others: without the counters, which it
    # does not know all, the programs are the same.
    "coverage": ["coverage", "-DCMAKE_CXX_COMPILER=clang++",
                 "-DCMAKE_CXX_FLAGS="],
}
_STARTS_THREADS = re.compile(r"\b(pthread_create|_ZNSt6thread15_M_start_thread)")


def _configure(cmake, tree, preset):
    # A program that is gone would still be in its file.
    shutil.rmtree(tree / "tests", ignore_errors=True)
    source = pathlib.Path(__file__).resolve().parents[2]
    run = subprocess.run([cmake, "--preset", *preset, "-S", source, "-B", tree],
                         capture_output=True, text=True, check=False)
    if run.returncode != 0:
        sys.exit(run.stdout + run.stderr)


def _threaded(tree):
    # ThreadSanitizer's preset builds and runs what this target needs.
    rule = re.search(r"^build tests/threaded_tests: phony (.*)$",
                     (tree / "build.ninja").read_text(), re.MULTILINE)
    return {pathlib.Path(program).name for program in rule[1].split()}


def _starts_threads(program):
    symbols = subprocess.run(["nm", "--dynamic", "--undefined-only", program],
                             capture_output=True, text=True, check=True).stdout
    return _STARTS_THREADS.search(symbols) is not None


def main():
    cmake, build, accepted, work = sys.argv[1:]
    build, accepted, work = map(pathlib.Path, (build, accepted, work))
    tests = ctest_programs.tests(build)
    programs = {test.program.name: test.program for test in tests
                if test.tool is None}
    run = {"valgrind": {test.program.name for test in tests
                        if test.tool == "valgrind"}}
    for tool, preset in _PRESETS.items():
        _configure(cmake, work / tool, preset)
        run[tool] = ctest_programs.configured(work / tool)
    run["thread"] &= _threaded(work / "thread")

    left_out = collections.Counter()
    for tool, by_tool in run.items():
        for name, program in programs.items():
            is_for_it = tool != "thread" or _starts_threads(program)
            if is_for_it and name not in by_tool:
                left_out[f"{tool}  {name}"] += 1
    print(f"{len(programs)} programs; under " +
          ", ".join(f"{tool} {len(by_tool & programs.keys())}"
                    for tool, by_tool in run.items()))
    reasons.compare(left_out, accepted, "run")


if __name__ == "__main__":
    main()
