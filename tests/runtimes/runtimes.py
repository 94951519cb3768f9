"""Tells which test programs do not run under each tool that looks at them.

    runtimes.py CMAKE BUILD LIST WORK

Fails where a program runs under a tool neither by itself nor is listed, or is
listed though it runs. BUILD is a tree that is built with valgrind. What the
other tools run is what trees in WORK would run, which are configured as BUILD
is, but for what their presets change.
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

_CHANGED_BY = {
    "address": "-DKORVAN_SANITIZE=address,undefined",
    "thread": "-DKORVAN_SANITIZE=thread",
    "coverage": "-DCMAKE_BUILD_TYPE=Debug",
}
_STARTS_THREADS = re.compile(r"\b(pthread_create|_ZNSt6thread15_M_start_thread)")


def _configure(cmake, build, tree, change):
    if not tree.exists():
        # With what was found out about the compiler, it takes a second.
        (tree / "CMakeFiles").mkdir(parents=True)
        cache = (build / "CMakeCache.txt").read_text()
        (tree / "CMakeCache.txt").write_text(
            re.sub(r"^CMAKE_CACHEFILE_DIR:.*\n", "", cache,
                   flags=re.MULTILINE))
        for found in (build / "CMakeFiles").glob("[0-9]*"):
            shutil.copytree(found, tree / "CMakeFiles" / found.name)
    source = pathlib.Path(__file__).resolve().parents[2]
    run = subprocess.run([cmake, "-S", source, "-B", tree, change],
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
    for tool, change in _CHANGED_BY.items():
        _configure(cmake, build, work / tool, change)
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
