"""Builds mutants and runs tests on them, in a copy of the tree."""

import filecmp
import hashlib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import time

# Of the memory and of a file of what a mutant runs, in bytes.
MEMORY = 4 << 30
FILE_SIZE = 1 << 30
# In seconds: how long a command may print nothing. Tests may be silent so many
# times as long as without a mutant, but in any case a little.
BUILD_LIMIT = 600
BASELINE_LIMIT = 1800
TEST_FACTOR = 6
TEST_LEAST = 5
# A test that takes less runs before all that take more: most mutants fail it.
QUICK = 0.5

# Where the programs stand that count instructions, and what compares them.
COSTS = pathlib.Path("bench", "cost")
# Begins what a verdict comes from where only the instructions differ.
BY_COST = "cost"

KILLED, SURVIVED = "killed", "survived"
EQUIVALENT, NOT_COMPILED = "equivalent", "not compiled"


class CannotRun(Exception):
    """Tells why nothing can be said of any mutant."""


class Stopped(Exception):
    """Ends a worker when the whole run is stopped."""


def files_of(root):
    """The files of a tree, from its root, without what is built."""
    found = []
    for folder, folders, names in os.walk(root):
        if pathlib.Path(folder) == root:
            folders[:] = set(folders) - {"build", ".git", ".cache"}
            names = set(names) - {".git"}
        found += [pathlib.Path(folder, name).relative_to(root)
                  for name in names]
    return sorted(found)


def update_copy(root, copy):
    """Makes `copy` a copy of the tree. Files that are equal are left alone, so
    that what was built of them stays valid."""
    wanted = files_of(root)
    for path in wanted:
        if not (copy / path).is_file() or not filecmp.cmp(
                root / path, copy / path, shallow=False):
            (copy / path).parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(root / path, copy / path)
            shutil.copymode(root / path, copy / path)
    for path in set(files_of(copy)) - set(wanted):
        (copy / path).unlink()


class Worker:
    """A copy of the tree with its builds, where one mutant is tried at a
    time."""

    def __init__(self, project, path, stop):
        self.source = path / "source"
        self._project = project
        self._path = path
        self._stop = stop
        self._temporary = path / "temporary"
        self._log = path / "log"
        self._environment = dict(os.environ, TMPDIR=str(self._temporary),
                                 GTEST_FAIL_FAST="1")
        self._originals = {}        # texts of the sources, by their paths
        self._changed = None        # the source that a mutant was put into
        self._limits = {}           # of the tests of each round
        self._longest_silence = 0   # of the last command
        self._quick = {}            # the names of each round's quick tests
        self._verdicts = {}         # by the bytes of the libraries

    def build_folder(self, round_):
        return self._path / round_.build

    def configure(self):
        """Copies the tree and configures its builds."""
        self._path.mkdir(parents=True, exist_ok=True)
        self._originals = {}
        update_copy(self._project.root, self.source)
        for round_ in self._project.rounds:
            self._must_pass("configured", round_, [
                "cmake", "-S", self.source, "-B", self.build_folder(round_),
                *round_.configure])

    def prepare(self, folder):
        """Builds and runs a folder's tests without a mutant. If they fail then,
        before the first mutant or after the last, no verdict holds."""
        self._restore()
        for round_ in self._rounds(folder):
            self._must_pass("built", round_,
                            self._build_command(round_, folder))
        for round_ in self._rounds(folder):
            self._must_pass("tested", round_,
                            self._test_command(round_, folder, "--update"))
            self._limits[round_] = max(TEST_LEAST,
                                       TEST_FACTOR * self._longest_silence)
            self._quick[round_] = _alternatives(
                name for name, seconds in re.findall(
                    r"Test +#\d+: (\S+) \.+ +Passed +([0-9.]+) sec",
                    self._output()) if float(seconds) < QUICK)
        self._verdicts = {self._digest(): (EQUIVALENT, "")}

    def judge(self, folder, mutant):
        """(verdict, what the verdict comes from)"""
        if self._changed != mutant.path:
            self._restore()
        if mutant.path not in self._originals:
            self._originals[mutant.path] = (
                self.source / mutant.path).read_text("latin-1")
        text = self._originals[mutant.path]
        self._write(mutant.path, mutant.applied_to(text))
        self._changed = mutant.path
        first = self._project.rounds[0]
        command = self._build_command(first, folder)
        if self._run(first, command, BUILD_LIMIT) != 0:
            return NOT_COMPILED, self._first_error()
        # Different mutants may make the same code.
        digest = self._digest()
        if digest not in self._verdicts:
            self._verdicts[digest] = self._test(folder)
        return self._verdicts[digest]

    def _test(self, folder):
        built = {self._project.rounds[0].build}
        for round_ in self._rounds(folder):
            command = self._build_command(round_, folder)
            if round_.build not in built and (
                    self._run(round_, command, BUILD_LIMIT) != 0):
                # The compiler may see a fault only there.
                return KILLED, f"{round_.build}: {self._first_error()}"
            built.add(round_.build)
            status = 0
            for command in self._commands_in_turn(round_, folder):
                if status == 0:
                    status = self._run(round_, command, self._limits[round_])
            if status is None:
                return KILLED, f"{round_.build}: time limit"
            if status != 0 and round_.counts_costs:
                return KILLED, f"{BY_COST}: {self._differing_cost()}"
            if status != 0:
                return KILLED, f"{round_.build}: {self._failed_test()}"
        return SURVIVED, ""

    def _rounds(self, folder):
        return [round_ for round_ in self._project.rounds
                if folder.costs or not round_.counts_costs]

    def _build_command(self, round_, folder):
        return ["cmake", "--build", self.build_folder(round_), "--parallel",
                "1", "--target", *_programs(round_, folder)]

    def _commands_in_turn(self, round_, folder):
        command = self._test_command(round_, folder, "--called")
        quick = self._quick[round_]
        if round_.counts_costs or not quick:
            return [command]
        return [[*command[:-1], quick],
                [*command, "-E", quick, "--no-tests=ignore"]]

    def _test_command(self, round_, folder, *options):
        """`options` are for the ledger of costs. The names of tests end it."""
        if round_.counts_costs:
            programs = [self.build_folder(round_) / COSTS / name
                        for name in folder.costs]
            return ["python3", "-B", self.source / COSTS / "ledger.py",
                    *options, self._path / "ledger", "one", *programs]
        names = [re.escape(program) for program in _programs(round_, folder)]
        if not round_.suffix:
            names += [rf"{suite}\..*" for suite in folder.suites]
        return ["ctest", "--test-dir", self.build_folder(round_),
                "--stop-on-failure", "--no-tests=error", "--output-on-failure",
                "-R", f"^({'|'.join(names)}){round_.suffix}$"]

    def _write(self, path, text):
        (self.source / path).write_text(text, "latin-1")

    def _restore(self):
        if self._changed is not None:
            self._write(self._changed, self._originals[self._changed])
            self._changed = None

    def _digest(self):
        """What the libraries of the first build consist of."""
        folder = self.build_folder(self._project.rounds[0])
        digest = hashlib.sha256()
        for path in sorted(folder.rglob("*.so*")):
            if path.is_file() and not path.is_symlink():
                digest.update(path.read_bytes())
        return digest.digest()

    def _must_pass(self, what, round_, command):
        if self._run(round_, command, BASELINE_LIMIT) != 0:
            raise CannotRun(f"without a mutant '{round_.build}' can't be {what}"
                            f":\n{self._output()[-3000:]}")

    def _run(self, round_, command, limit):
        """The status of a command, None if it prints nothing for longer than
        `limit`. All that it started is ended."""
        shutil.rmtree(self._temporary, ignore_errors=True)
        self._temporary.mkdir()
        limits = [f"--fsize={FILE_SIZE}", "--core=0"]
        if round_.limits_memory:
            limits.append(f"--as={MEMORY}")
        with open(self._log, "wb") as log:
            process = subprocess.Popen(
                ["prlimit", *limits, "--", *command], cwd=self.source,
                env=self._environment, stdin=subprocess.DEVNULL, stdout=log,
                stderr=subprocess.STDOUT, start_new_session=True)
        printed, since = 0, time.monotonic()
        self._longest_silence = 0
        try:
            # The process is not reaped yet, so its group still is its own.
            has_ended = False
            while not has_ended and time.monotonic() - since < limit:
                if self._stop.is_set():
                    raise Stopped
                time.sleep(0.01)
                has_ended = os.waitid(os.P_PID, process.pid, os.WEXITED |
                                      os.WNOHANG | os.WNOWAIT) is not None
                self._longest_silence = max(self._longest_silence,
                                            time.monotonic() - since)
                if self._log.stat().st_size != printed:
                    printed = self._log.stat().st_size
                    since = time.monotonic()
        finally:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
        return process.returncode if has_ended else None

    def _output(self):
        return self._log.read_text(errors="replace")

    def _first_error(self):
        match = re.search(r".*\berror: .*", self._output())
        return match[0].strip() if match else "the build failed"

    def _differing_cost(self):
        """The first line of the ledger that tells of one, or of the end of what
        counts: it came to its own end without a mutant."""
        output = self._output()
        line = (re.search(r".*: (not )?expected.*", output) or
                re.search(r".+", output))
        return line[0] if line else "the counting failed"

    def _failed_test(self):
        match = re.search(r"tests FAILED:\n\s*\d+ - (\S+)", self._output())
        return match[1] if match else "the tests failed"


def _alternatives(names):
    """The pattern of just these names; empty if there are none."""
    escaped = "|".join(map(re.escape, names))
    return f"^({escaped})$" if escaped else ""


def _programs(round_, folder):
    """The targets that a round needs."""
    if round_.counts_costs:
        return list(folder.costs)
    return [name for name in folder.programs if name not in round_.lacks]
