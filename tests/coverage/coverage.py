"""Runs the test programs of a build that counts, and tells what of the library
none of them reaches.

    coverage.py BUILD

Fails where a line, one side of a branch, or a condition that decides nothing
by itself (MC/DC) is missing. A template counts once: what either width reaches
is reached. Conditions that are constant in an instantiation do not count there.
"""

import collections
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import ctest_programs

_LIBRARIES = ("libkorvan.so", "libkorvan_platform.so",
              "tests/pubkey/host_build/libkorvan.so")
_FOLDERS = ("oid/", "pubkey/", "resources/", "ini/", "platform/")
_CONDITION = 6  # the kind of a branch that is a condition of a decision


class Coverage:
    """What llvm-cov exported of the sources whose paths begin with one of
    `paths`, with the instantiations of a template merged."""

    def __init__(self, exported, lcov, source, paths=_FOLDERS):
        self._source = source
        self._paths = tuple(paths)
        self._texts = {}
        self._branches = {}                           # span: [true, false]
        self._decisions = {}                          # span: (flags, branches)
        self._lines = collections.defaultdict(int)    # (path, line): count
        for function in exported["data"][0]["functions"]:
            paths = [_in_source(path) for path in function["filenames"]]
            if paths[0].startswith(self._paths):
                self._take(function, paths)
        self._take_lines(lcov)

    def missing(self):
        """What is missing, each counted."""
        rows = collections.Counter()
        for (path, line), count in self._lines.items():
            if count == 0:
                rows[f"{path}  {self._lines_of(path)[line - 1].strip()}"
                     "  is never run"] += 1
        for span, counts in self._branches.items():
            for side, count in zip(("true", "false"), counts):
                if count == 0:
                    rows[f"{self._at(span)}  is never {side}"] += 1
        for span in self._decisions:
            for condition in self._undecided(span):
                rows[f"{self._at(condition)}  never decides by itself"] += 1
        return rows

    def sides(self):
        """How often each side of each branch was taken."""
        return [count for counts in self._branches.values()
                for count in counts]

    def figures(self):
        """How much there is, and how much of it is covered."""
        conditions = sum(len(self._conditions(span))
                         for span in self._decisions)
        undecided = sum(len(self._undecided(span)) for span in self._decisions)
        return (_share("lines", self._lines.values()),
                _share("branches", self.sides()),
                _share("conditions", [0] * undecided +
                       [1] * (conditions - undecided)))

    def _take(self, function, paths):
        for branch in function["branches"]:
            counts = self._branches.setdefault(
                (paths[branch[6]], *branch[:4]), [0, 0])
            counts[0] += branch[4]
            counts[1] += branch[5]
        # Clang has them from 18 on.
        for decision in function.get("mcdc_records", []):
            span = (paths[0], *decision[:4])
            flags, conditions = self._decisions.setdefault(
                span, ([False] * len(decision[-1]), set()))
            flags[:] = map(max, flags, decision[-1])
            conditions.update((paths[branch[6]], *branch[:4])
                              for branch in function["branches"]
                              if branch[8] == _CONDITION and
                              decision[:2] <= branch[:2] and
                              branch[2:4] <= decision[2:4])

    def _take_lines(self, lcov):
        path = ""
        for line in lcov.splitlines():
            if line.startswith("SF:"):
                path = _in_source(line[3:])
            elif line.startswith("DA:") and path.startswith(self._paths):
                number, count = line[3:].split(",")[:2]
                self._lines[path, int(number)] += int(count)

    def _conditions(self, span):
        # A condition that is constant in every instantiation has no branch.
        return sorted(self._decisions[span][1])

    def _undecided(self, span):
        flags = self._decisions[span][0]
        conditions = self._conditions(span)
        if len(conditions) == len(flags):
            return [condition for condition, decides in zip(conditions, flags)
                    if not decides]
        # Nobody tells which flags are those of constant conditions, which are
        # never set; of others that are missing, the decision is named.
        return [span] * (len(conditions) - sum(flags))

    def _lines_of(self, path):
        if path not in self._texts:
            self._texts[path] = (self._source /
                                 path).read_text().splitlines()
        return self._texts[path]

    def _at(self, span):
        path, first, begin, last, end = span
        lines = self._lines_of(path)[first - 1:last]
        lines[-1] = lines[-1][:end - 1]
        lines[0] = lines[0][begin - 1:]
        return f"{path}  {' '.join(' '.join(lines).split())}"


def _in_source(path):
    # Objects name their sources from the folder of the build: "build", or a
    # folder in the source's.
    return os.path.normpath(path.rpartition("/./")[2]).removeprefix("build/")


def _share(what, counts):
    counts = list(counts)
    covered = sum(count != 0 for count in counts)
    return (f"{what} {100 * covered / len(counts):.1f} % "
            f"({covered} of {len(counts)})")


def _run_programs(build, profiles):
    shutil.rmtree(profiles, ignore_errors=True)
    names = [test.name for test in ctest_programs.tests(build)
             if test.tool is None]
    chosen = "|".join(re.escape(name) for name in names)
    run = subprocess.run(
        ["ctest", "--test-dir", build, "--output-on-failure", "--jobs", "2",
         "--no-tests=error", "--tests-regex", f"^({chosen})$"],
        env={**os.environ, "LLVM_PROFILE_FILE": f"{profiles}/%m.profraw"},
        capture_output=True, text=True, check=False)
    if run.returncode != 0 or "***Skipped" in run.stdout:
        sys.exit(run.stdout + run.stderr)
    return len(names)


def _export(build, profile, form):
    first, *others = (build / library for library in _LIBRARIES)
    return subprocess.run(
        ["llvm-cov-19", "export", f"-format={form}", "-instr-profile", profile,
         first, *(f"-object={other}" for other in others)],
        capture_output=True, text=True, check=True).stdout


def require_none(missing):
    if missing:
        sys.exit("\n".join(sorted(missing.elements())))


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    profiles = build / "profiles"
    count = _run_programs(build, profiles)
    profile = build / "all.profdata"
    subprocess.run(["llvm-profdata-19", "merge", "-o", profile,
                    *profiles.glob("*.profraw")], check=True)
    coverage = Coverage(json.loads(_export(build, profile, "text")),
                        _export(build, profile, "lcov"),
                        pathlib.Path(__file__).resolve().parents[2])
    print(f"  {count} tests", *coverage.figures(), sep="\n  ")
    require_none(coverage.missing())


if __name__ == "__main__":
    main()
