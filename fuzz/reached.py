"""Tells which branches of the library a target's inputs miss.

    reached.py PROGRAM CORPUS

PROGRAM is a target of the preset fuzz_coverage. Prints a line of figures, and
fails where a branch is missed that unreached.txt beside this file does not list,
and where it lists one that is reached. What a target is about stands in FILES.
"""

import collections
import fnmatch
import json
import os
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / 'tests/coverage'), str(ROOT / 'tests/support')]
import coverage
import reasons

# The sources whose branches a target's inputs must take.
FILES = {
    '*_ini_reader_fuzzer': [
        'ini/reader.h', 'ini/key_run.h', 'ini/line.h', 'ini/trim.h',
        'ini/twins.h'],
    # Files of bytes are narrow.
    'narrow_ini_reader_fuzzer': ['ini/file_stream.h'],
    '*_ini_writer_fuzzer': ['ini/writer.h', 'ini/stream_area.h'],
    '*_ini_editing_fuzzer': ['ini/ini_file.inc', 'ini/named_nodes.h'],
    'narrow_ini_editing_fuzzer': ['ini/ini_file_a.cc'],
    'wide_ini_editing_fuzzer': ['ini/ini_file_w.cc'],
    'text_fuzzer': ['ini/text.cc'],
    'oid_lookup_fuzzer': [
        'oid/lookup.cc', 'oid/names.cc', 'oid/names.h', 'oid/keys.h',
        'oid/hash_codes.h', 'oid/index.h', 'oid/perfect_hash.h',
        'oid/row_chains.h', 'resources/load_string.cc', 'resources/texts.h'],
    'asn1_record_fuzzer': ['platform/asn1_record.cc'],
    'convert_public_key_fuzzer': ['pubkey/convert_public_key_info.cc'],
    'encode_public_key_fuzzer': [
        'pubkey/encode_public_key.cc', 'pubkey/output_buffer.h'],
}


def export_of(program, corpus):
    """What llvm-cov exports of the library, after a run of the corpus."""
    profiles = program.parents[2] / 'profiles' / program.name
    shutil.rmtree(profiles, ignore_errors=True)
    # Each library and the program writes a file of its own.
    run = subprocess.run(
        [program, '-runs=0', '-timeout=60', corpus],
        env={**os.environ, 'LLVM_PROFILE_FILE': f'{profiles}/%m.profraw'},
        capture_output=True, text=True, check=False)
    if run.returncode != 0:
        sys.exit(run.stderr[-2000:])
    merged = profiles / 'merged.profdata'
    subprocess.run(
        ['llvm-profdata', 'merge', '-o', merged, *profiles.glob('*.profraw')],
        check=True)
    build = program.parents[2]
    libraries = [build / name for name in ('libkorvan.so',
                                           'libkorvan_platform.so')]
    exported = subprocess.run(
        ['llvm-cov', 'export', '-instr-profile', merged, libraries[0],
         '-object', libraries[1]],
        capture_output=True, text=True, check=True)
    return json.loads(exported.stdout)


def listed_for(target, rows, targets):
    """The rows of unreached.txt for a target, without its name."""
    listed = collections.Counter()
    for row, count in rows.items():
        pattern, branch = row.split(None, 1)
        if not fnmatch.filter(targets, pattern):
            sys.exit(f'unreached.txt: no target {pattern}')
        if fnmatch.fnmatchcase(target, pattern):
            listed[branch] += count
    return listed


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    corpus = sys.argv[2]
    target = program.name
    files = {file for pattern, some in FILES.items()
             if fnmatch.fnmatchcase(target, pattern) for file in some}
    if not files:
        sys.exit(f'{target}: FILES in fuzz/reached.py does not say what it is '
                 'about')
    for file in files:
        if not (ROOT / file).is_file():
            sys.exit(f'FILES in fuzz/reached.py: there is no {file}')
    found = coverage.Coverage(export_of(program, corpus), '', ROOT, files)
    sides = found.sides()
    reached = sum(count != 0 for count in sides)
    unreached = ROOT / 'fuzz/unreached.txt'
    targets = [path.name for path in (ROOT / 'fuzz').glob('*/corpus/*')]
    listed = listed_for(target, reasons.read(unreached), targets)
    print(f'figures: {target}: {reached} of {len(sides)} branches reached, '
          f"{listed.total()} can't be", flush=True)
    reasons.compare(found.missing(), unreached, f'reached by {target}', listed)
    # Trims and conversions have none.
    if target != 'text_fuzzer' and not sides:
        sys.exit(f'{target}: no branches in {", ".join(sorted(files))}')


if __name__ == '__main__':
    main()
