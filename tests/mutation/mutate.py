"""mutate.py [FOLDER...] [options]

Puts small faults into the sources, one at a time, and tells which of them no
test notices. Fails if any but the accepted ones remains, or if an accepted one
is none. Results are kept while the tree stays the same: a run that was stopped
goes on where it stopped.
"""

import argparse
import collections
import concurrent.futures
import fcntl
import hashlib
import json
import os
import signal
import sys
import threading
import time

import accepted
import run
import syntax
from folders import KORVAN
from mutants import Change, Mutant, sample_tables


def main(arguments, project=KORVAN):
    options = parse(arguments, project)
    stop = threading.Event()
    try:
        return Session(project, options, stop).run()
    except (run.CannotRun, syntax.CannotParse, accepted.BadList) as problem:
        print(f"mutate: {problem}", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        print("mutate: stopped; the same command goes on", file=sys.stderr)
        return 130


def parse(arguments, project):
    parser = argparse.ArgumentParser(
        prog="scripts/mutate", description=__doc__.split("\n\n", 1)[1])
    parser.add_argument("folders", nargs="*", metavar="FOLDER",
                        help=f"{', '.join(project.folders)}; default: all")
    parser.add_argument("--file", metavar="PATH[:LINE]",
                        help="only the mutants of this file, of this line")
    parser.add_argument("--limit", type=int, metavar="N",
                        help="a sample of N mutants, always the same")
    parser.add_argument("--accepted", action="store_true",
                        help="run the accepted mutants, too: all must survive")
    parser.add_argument("--tables", action="store_true",
                        help="all mutants of tables, not only a sample")
    parser.add_argument("--list", action="store_true",
                        help="list the mutants and run nothing")
    parser.add_argument("--jobs", "-j", type=int, metavar="N",
                        default=os.cpu_count(),
                        help="mutants tried at the same time; default: one for "
                             "each core")
    options = parser.parse_args(arguments)
    unknown = set(options.folders) - set(project.folders)
    if unknown:
        parser.error(f"no folder {', '.join(sorted(unknown))}")
    options.folders = options.folders or list(project.folders)
    return options


class Results:
    """The verdicts on the mutants of one state of the tree, kept in a file."""

    def __init__(self, path, tree):
        self.verdicts = {}
        lines = path.read_text().splitlines() if path.exists() else []
        if lines[:1] == [tree]:
            for line in lines[1:]:
                self._take(line)
        else:
            path.write_text(tree)
        self._file = open(path, "a")
        self._lock = threading.Lock()

    def _take(self, line):
        try:
            path, place, old, new, ordinal, *verdict = json.loads(line)
        except ValueError:
            return      # the last line of a run that was killed
        change = Change(path, place, tuple(old), tuple(new), ordinal)
        self.verdicts[change] = verdict

    def add(self, change, verdict):
        with self._lock:
            self.verdicts[change] = list(verdict)
            self._file.write("\n" + json.dumps([*change, *verdict]))
            self._file.flush()

    def close(self):
        self._file.close()


class Session:
    def __init__(self, project, options, stop):
        self._project = project
        self._options = options
        self._stop = stop
        self._work = project.root / "build" / "mutation"
        self._workers = [
            run.Worker(project, self._work / f"worker{n}", stop)
            for n in range(1, options.jobs + 1)]
        self._accepted = accepted.read(project.accepted)
        self._shown = time.monotonic()

    def run(self):
        self._work.mkdir(parents=True, exist_ok=True)
        with open(self._work / "lock", "w") as lock:
            try:
                fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except BlockingIOError:
                raise run.CannotRun(
                    f"another run is at work in {self._work}") from None
            return self._run_alone()

    def _run_alone(self):
        self._say("copying and configuring the tree")
        self._workers[0].configure()
        mutants, stale = self._find_mutants()
        if self._options.list:
            for mutant in sum(mutants.values(), []):
                print(f"{mutant.path}:{mutant.line}\n"
                      f"{accepted.written(mutant.change)}\n")
            print(f"{sum(map(len, mutants.values()))} mutants")
            return 0
        results = Results(self._work / "results", self._digest_of_tree())
        try:
            for name, of_folder in mutants.items():
                self._judge(name, of_folder, results)
        finally:
            results.close()
        return self._report(mutants, stale, results.verdicts)

    @staticmethod
    def _say(text):
        print(f"mutate: {text}", file=sys.stderr, flush=True)

    def _digest_of_tree(self):
        """Of all that the verdicts depend on. Of the Python, only the ledger of
        costs judges."""
        root = self._project.root
        digest = hashlib.sha256(repr(self._project).encode())
        for path in run.files_of(root):
            if path == run.COSTS / "ledger.py" or (
                    path.suffix not in (".md", ".py") and
                    root / path != self._project.accepted):
                content = (root / path).read_bytes()
                digest.update(f"{path} {len(content)} ".encode() + content)
        return digest.hexdigest()

    # Which mutants.

    def _find_mutants(self):
        """({folder: mutants to look at}, accepted changes that are none)"""
        first = self._workers[0]
        parser = syntax.Parser(first.source, first.build_folder(
            self._project.rounds[0]) / "compile_commands.json")
        found = {}
        for name in self._options.folders:
            paths = [path.relative_to(first.source)
                     for pattern in self._project.folders[name].sources
                     for path in sorted(first.source.glob(pattern))]
            found[name] = [mutant for path in paths
                           for mutant in parser.mutants_of(str(path))]
        changes = {mutant.change for mutants in found.values()
                   for mutant in mutants}
        stale = {change: "no such mutant" for change in self._accepted
                 if change not in changes and self._is_run(change)}
        return self._select(found), stale

    def _is_run(self, change):
        folder = change.path.partition("/")[0]
        return (folder in self._options.folders or
                folder not in self._project.folders)

    def _select(self, found):
        selected = {}
        for name, mutants in found.items():
            sample = {mutant.change for mutant in
                      (mutants if self._options.tables
                       else sample_tables(mutants))}
            selected[name] = [
                mutant for mutant in mutants if self._is_in_file(mutant) and
                (mutant.change in sample or mutant.change in self._accepted)]
        if self._options.limit is not None:
            ranked = sorted(sum(selected.values(), []), key=Mutant.rank)
            kept = {mutant.change for mutant in ranked[:self._options.limit]}
            selected = {name: [mutant for mutant in mutants
                               if mutant.change in kept]
                        for name, mutants in selected.items()}
        return selected

    def _is_in_file(self, mutant):
        if self._options.file is None:
            return True
        path, _, line = self._options.file.partition(":")
        return mutant.path == path and (not line or mutant.line == int(line))

    # Judgement.

    def _judge(self, name, mutants, results):
        folder = self._project.folders[name]
        left = collections.deque(
            mutant for mutant in mutants
            if mutant.change not in results.verdicts and
            (self._options.accepted or mutant.change not in self._accepted))
        if not left:
            return
        count = len(left)
        self._say(f"{name}: building and testing without a mutant")

        def work(worker):
            try:
                if worker is not self._workers[0]:
                    worker.configure()
                worker.prepare(folder)
                while left:
                    try:
                        mutant = left.popleft()
                    except IndexError:      # another worker took the last
                        break
                    results.add(mutant.change, worker.judge(folder, mutant))
                    self._show_progress(name, count - len(left), count)
                worker.prepare(folder)
            except run.Stopped:
                pass                        # by another worker, which tells why
            except BaseException:
                self._stop.set()
                raise

        with concurrent.futures.ThreadPoolExecutor(len(self._workers)) as pool:
            futures = [pool.submit(work, worker) for worker in self._workers]
            try:
                for future in futures:
                    future.result()
            except KeyboardInterrupt:
                self._stop.set()
                raise

    def _show_progress(self, name, done, count):
        if time.monotonic() - self._shown > 30 or done == count:
            self._shown = time.monotonic()
            self._say(f"{name}: {done} of {count}")

    # Report.

    def _report(self, mutants, stale, verdicts):
        survivors = []
        columns = (run.KILLED, "by cost", run.EQUIVALENT,
                   run.NOT_COMPILED, run.SURVIVED, "accepted")
        table = [("folder", "mutants", *columns)]
        for name, of_folder in mutants.items():
            counts = collections.Counter()
            for mutant in of_folder:
                verdict, by = verdicts.get(mutant.change, (None, ""))
                if mutant.change not in self._accepted:
                    if by.startswith(run.BY_COST):
                        verdict = "by cost"
                    counts[verdict] += 1
                    if verdict == run.SURVIVED:
                        survivors.append(mutant)
                    continue
                counts["accepted"] += 1
                if verdict not in (run.SURVIVED, None):
                    stale[mutant.change] = f"{verdict} {by}".strip()
            table.append((name, len(of_folder),
                          *(counts[column] for column in columns)))
        for mutant in survivors:
            print(f"survived: {mutant.path}:{mutant.line}\n"
                  f"{accepted.written(mutant.change)}\n")
        for change, why in stale.items():
            print(f"accepted, but {why}:\n{accepted.written(change)}\n")
        for row in table:
            print(f"{row[0]:<12}" + "".join(f"{cell:>14}" for cell in row[1:]))
        total = sum(map(len, mutants.values()))
        count = sum(mutant.change in self._accepted
                    for mutant in sum(mutants.values(), []))
        print(f"{count} of {total} mutants are accepted, "
              f"{100 * count / max(total, 1):.1f} %.")
        return 1 if survivors or stale else 0


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    sys.exit(main(sys.argv[1:]))
