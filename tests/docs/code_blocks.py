"""code_blocks.py TOP TABLE [HEADER...]
Fails unless each code block in README.md, CONTRIBUTING.md, SECURITY.md,
docs/*.md and the documents of examples/, below TOP, and in the /// comments of
the HEADERs, is one of these:

  - lines of one program below examples/, as they stand there, indentation
    apart. Where the section links to programs it is one of them. In a header,
    lines of a program in tests/reference/;
  - behind "prints:", the whole output that such a program states;
  - in TABLE, which tells what runs it or that it is no code.

`prints` and a text between backquotes is held to the same. Programs are what
CTest runs and compares: their CMakeLists.txt names them."""
import glob
import os
import re
import sys

import documents

LANGUAGES = {"cpp": (".cc", ".h"), "c": (".c",), "python": (".py",)}
PRINTS = re.compile(r"^(?://|#) It prints:$")


class Program:
    """A program below examples/: its lines, and what it says that it prints."""

    def __init__(self, path):
        self.path = path
        lines = documents.read(path)
        marks = [i for i, x in enumerate(lines) if PRINTS.match(x)]
        end = marks[0] if marks else len(lines)
        self.lines = [x.strip() for x in lines[:end]]
        self.output = [x.removeprefix("//").removeprefix("#").removeprefix(" ")
                       for x in lines[end + 1:]]

    def has(self, lines):
        wanted = [x.strip() for x in lines]
        return any(self.lines[i:i + len(wanted)] == wanted
                   for i in range(len(self.lines)))


def is_run(path):
    """Whether CTest runs a program, as CMake's file beside it tells."""
    folder, name = os.path.split(path)
    stem, extension = os.path.splitext(name)
    if os.path.basename(folder) == "host" or extension == ".h":
        return True  # tests/build/host_example.sh; headers of programs
    rules = "\n".join(documents.read(os.path.join(folder, "CMakeLists.txt")))
    function = r"korvan_(c_)?example(_program)?\("
    if os.path.basename(folder) == "reference":
        function = r"foreach\(header\b[^)]*\b"
    return re.search(rf"{function}{stem}\b", rules)


class Table:
    """The blocks that are no program's. Each row is

        DOCUMENT | how its first line begins, or "console" | what it is

    "in PATH" at the end tells where each of its lines stands and is run."""

    def __init__(self, top, path):
        self.top = top
        self.path = path
        self.rows = [[x.strip() for x in line.split(" | ")]
                     for line in documents.read(path)
                     if line.strip() and not line.startswith("#")]
        self.used = set()
        for row in self.rows:
            if len(row) != 3:
                raise SystemExit(f"{path}: {' | '.join(row)}: not three columns")

    def fault(self, document, block):
        """What is wrong with a block of another kind, or None."""
        first = block.lines[0].strip()
        for number, (where, start, what) in enumerate(self.rows):
            if where != document or not (first.startswith(start) or
                                         start == block.language == "console"):
                continue
            self.used.add(number)
            place = re.search(r"\bin (\S+)$", what)
            if not place:
                return None
            text = documents.read(os.path.join(self.top, place.group(1)))
            for line in block.lines:
                line = re.sub(r"  +# .*", "", line).strip()
                if not any(line in x for x in text):
                    return f"'{line}' is not in {place.group(1)}"
            return None
        return f"nobody runs it, and {self.path} does not list it"

    def idle(self):
        return [" | ".join(x) for i, x in enumerate(self.rows)
                if i not in self.used]


class Check:
    def __init__(self, top, table):
        self.top = top
        self.table = Table(top, table)
        self.faults = 0
        self.count = 0
        self.programs = self.programs_in("examples/*/**")
        self.reference = self.programs_in("tests/reference/*.cc")

    def programs_in(self, folder):
        found = {}
        for path in sorted(glob.glob(os.path.join(self.top, folder),
                                     recursive=True)):
            if path.endswith((".cc", ".c", ".py", ".h")):
                name = os.path.relpath(path, self.top)
                if is_run(path):
                    found[name] = Program(path)
                else:
                    self.complain(name, "no test runs it")
        return found

    def complain(self, where, what):
        print(f"{where}: {what}")
        self.faults += 1

    def linked(self, document, section):
        """The programs that a section links to, or else all."""
        found = []
        for part in section.parts:
            for target in documents.links(part) if isinstance(part, str) else []:
                path = os.path.normpath(
                    os.path.join(os.path.dirname(document), target))
                if path in self.programs:
                    found.append(self.programs[path])
        return found or list(self.programs.values())

    def look_at(self, document, section):
        linked = self.linked(document, section)
        shown = linked  # the programs that the last block may be from
        before = ""
        for part in section.parts:
            if isinstance(part, str):
                for text in re.findall(r"prints\s+`([^`]+)`", part):
                    self.count += 1
                    if [text] not in [x.output for x in shown]:
                        self.complain(document, f"no program prints '{text}'")
                before = part
                continue
            where = f"{document}:{part.line}"
            self.count += 1
            if not part.lines:
                self.complain(where, "an empty block")
            elif part.language in LANGUAGES:
                shown = self.programs_with(part, linked)
                if not shown:
                    self.complain(where, "not in a program below examples/, or "
                                  f"not in one of the section's: {part.lines[0]}")
            elif before.endswith("prints:"):
                if part.lines not in [x.output for x in shown]:
                    self.complain(where, "not what "
                                  f"{' or '.join(x.path for x in shown[:1])} "
                                  f"says that it prints: {part.lines[0]}")
            else:
                fault = self.table.fault(document, part)
                if fault:
                    self.complain(where, fault)

    def programs_with(self, block, programs):
        return [x for x in programs
                if x.path.endswith(LANGUAGES[block.language]) and
                x.has(block.lines)]

    def look_at_header(self, header):
        name = os.path.relpath(header, self.top)
        for block in documents.comment_blocks(documents.read(header)):
            self.count += 1
            if not self.programs_with(block, self.reference.values()):
                fault = self.table.fault(name, block)
                if fault:
                    self.complain(f"{name}:{block.line}", "not in a program of "
                                  f"tests/reference/: {block.lines[0]}")


def main(top, table, *headers):
    check = Check(top, table)
    for pattern in ("*.md", "docs/*.md", "examples/**/*.md"):
        for path in sorted(glob.glob(os.path.join(top, pattern),
                                     recursive=True)):
            for section in documents.sections(documents.read(path)):
                check.look_at(os.path.relpath(path, top), section)
    for header in headers:
        check.look_at_header(header)
    for row in check.table.idle():
        if headers or not row.startswith("include/"):
            check.complain(table, f"no such block: {row}")
    print(f"{check.count} code blocks")
    return 0 if check.count and not check.faults else 1


sys.exit(main(*sys.argv[1:]))
