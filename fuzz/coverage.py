"""Tells which branches of the library a target's inputs miss.

    coverage.py PROGRAM CORPUS

PROGRAM is a target of the preset fuzz_coverage. It prints a line of figures,
and each branch that no input takes and that unreached.txt beside this file does
not list with a reason; then it fails. What a target is about stands in FILES.
"""

import fnmatch
import json
import os
import pathlib
import shutil
import subprocess
import sys

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

ROOT = pathlib.Path(__file__).resolve().parent.parent


def counts_of(program, corpus):
    """The counts of each region of the library, as llvm-cov exports them."""
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
    return json.loads(exported.stdout)['data'][0]


def branches_of(counts, files):
    """{(file, line, condition): [times true, times false]}, of all instances."""
    lines = {}
    branches = {}
    for function in counts['functions']:
        for branch in function.get('branches', []):
            name = function['filenames'][branch[6]]
            # The build names the project's folder as if it were its own.
            file = os.path.relpath(name, './build/fuzz_coverage')
            if file not in files:
                continue
            if file not in lines:
                lines[file] = (ROOT / file).read_text().splitlines()
            first, begin, last, end = branch[:4]
            text = '\n'.join(lines[file][first - 1:last])
            tail = len(lines[file][last - 1]) - end + 1
            condition = ' '.join(text[begin - 1:len(text) - tail].split())
            taken = branches.setdefault((file, first, begin, condition), [0, 0])
            taken[0] += branch[4]
            taken[1] += branch[5]
    return branches


def listed_for(target):
    """The rows 'file: condition true|false' of unreached.txt for a target."""
    listed = set()
    for row in (ROOT / 'fuzz/unreached.txt').read_text().splitlines():
        if row and not row.startswith('#'):
            pattern, branch = row.split(None, 1)
            if fnmatch.fnmatch(target, pattern):
                listed.add(branch)
    return listed


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    corpus = sys.argv[2]
    target = program.name
    files = [file for pattern, some in FILES.items()
             if fnmatch.fnmatch(target, pattern) for file in some]
    branches = branches_of(counts_of(program, corpus), files)
    listed = listed_for(target)
    reached = 0
    missed = []
    known = 0
    for (file, line, _, condition), taken in sorted(branches.items()):
        for times, way in zip(taken, ('true', 'false')):
            branch = f'{file}: {condition} {way}'
            if times:
                reached += 1
            elif branch in listed:
                known += 1
            else:
                missed.append(f'  {file}:{line}: {condition} is never {way}')
    print(f'figures: {target}: {reached} of {2 * len(branches)} branches '
          f'reached, {known} can\'t be', *missed, sep='\n', flush=True)
    # Trims and conversions have none.
    has_branches = target != 'text_fuzzer'
    sys.exit(1 if missed or has_branches != bool(reached) else 0)


if __name__ == '__main__':
    main()
