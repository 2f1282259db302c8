#!/usr/bin/env python3
"""What the tests run of the library: lines and branches of each file below subtitle/, without the generated tables.

    tools/coverage.py BUILD PROFILES [--record]

A template's line or branch side counts when one of its instantiations runs it. tests/coverage_exceptions.txt holds what
no test can run: a row `FILE | TEXT | WHY` excepts the lines of FILE that contain TEXT, with the branches on them, and
`FILE | FIRST ... LAST | WHY` all lines from one that contains FIRST up to the next that contains LAST.
Fails below the bounds, and for exceptions that name nothing uncovered.
"""
import argparse
import glob
import json
import os
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
EXCEPTIONS = os.path.join(ROOT, 'tests', 'coverage_exceptions.txt')
LINES, BRANCHES = 99.5, 99.0  # percent


def export(build, profiles):
    merged = os.path.join(build, 'coverage.profdata')
    found = glob.glob(os.path.join(profiles, '*.profraw'))
    if not found:
        sys.exit('coverage: the tests have left no profiles')
    subprocess.run(['llvm-profdata-14', 'merge', '-sparse', '-o', merged] + found, check=True)
    tests = [path for path in glob.glob(os.path.join(build, 'tests', '**', '*Test'), recursive=True)
             if os.path.isfile(path) and os.access(path, os.X_OK)]
    objects = [argument for path in tests for argument in ('-object', path)]
    answer = subprocess.run(['llvm-cov-14', 'export', '-format=text', '-skip-expansions', '-instr-profile', merged,
                             '-ignore-filename-regex', '(^/usr/|/build/|/tests/|/tools/|/platform/|CharsetTables)',
                             os.path.join(build, 'libvxsubtitle.so')] + objects, check=True, stdout=subprocess.PIPE)
    return json.loads(answer.stdout)['data'][0]


def is_counted(path):
    return path.startswith(os.path.join(ROOT, 'subtitle', '')) and 'CharsetTables' not in path


def gather(data):
    """file -> ({line: count}, {(line, column, end line, end column): [true, false]})"""
    files = {}
    for function in data['functions']:
        names = function['filenames']
        for region in function['regions']:
            line, column, end, end_column, count, file, _, kind = region
            if kind != 0 or not is_counted(names[file]):
                continue
            lines, _ = files.setdefault(names[file], ({}, {}))
            lines.setdefault((line, column, end, end_column), 0)
            lines[line, column, end, end_column] += count
        for branch in function['branches']:
            line, column, end, end_column, true, false, file, _, _ = branch
            if not is_counted(names[file]):
                continue
            _, branches = files.setdefault(names[file], ({}, {}))
            sides = branches.setdefault((line, column, end, end_column), [0, 0])
            sides[0] += true
            sides[1] += false
    return files


def line_counts(regions, source):
    """Each line's count is that of the innermost region at the line's first character, or of one that begins there."""
    counts = {}
    # outer regions first: an inner one begins later or ends earlier
    for (line, column, end, end_column), count in sorted(regions.items(), key=lambda r: (r[0][:2], [-x for x in r[0][2:]])):
        for at in range(line, end + 1):
            text = source[at - 1]
            begin = column - 1 if at == line else 0
            stop = end_column - 1 if at == end else len(text)
            inside = text[begin:stop].split('//')[0].strip()
            if inside in ('', '}', '{', '};', '});', '})', 'else'):
                continue
            if at == line and text[:begin].strip() and at in counts:  # begins within the line: the better of both
                counts[at] = max(counts[at], count)
            else:
                counts[at] = count
    return counts


def read_exceptions():
    """(file, text, why) each."""
    found = []
    if os.path.exists(EXCEPTIONS):
        with open(EXCEPTIONS, encoding='utf-8') as file:
            for row in file:
                if row.strip() and not row.startswith('#'):
                    found.append(tuple(part.strip() for part in row.split(' | ')))
    return found


def excepted_lines(name, source, exceptions):
    """line -> the entry that excepts it"""
    lines = {}
    for entry in exceptions:
        if entry[0] != name:
            continue
        first, _, last = entry[1].partition(' ... ')
        inside = False
        for number, text in enumerate(source, 1):
            inside = inside or first in text
            if inside:
                lines.setdefault(number, entry)
                inside = bool(last) and last not in text
    return lines


def share(hit, total):
    return 100.0 * hit / total if total else 100.0


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument('build')
    arguments.add_argument('profiles')
    arguments.add_argument('--record', action='store_true', help='the table goes into docs/quality.md')
    options = arguments.parse_args()

    exceptions = read_exceptions()
    used = set()
    rows, missed = [], []
    totals = [0, 0, 0, 0]
    for path, (regions, branches) in sorted(gather(export(options.build, options.profiles)).items()):
        name = os.path.relpath(path, ROOT)
        with open(path, encoding='utf-8') as file:
            source = file.read().split('\n')

        by_line = excepted_lines(name, source, exceptions)

        def excepted(line):
            if line in by_line:
                used.add(by_line[line])
            return line in by_line

        counts = line_counts(regions, source)
        uncovered = {line for line, count in counts.items() if count == 0}
        lines = len(counts)
        for line in sorted(uncovered):
            if excepted(line):
                uncovered.discard(line)
            else:
                missed.append(f'{name}:{line}: not run: {source[line - 1].strip()}')
        sides = open_sides = 0
        for (line, column, end, end_column), counted in sorted(branches.items()):
            text = source[line - 1]
            condition = text[column - 1:end_column - 1] if end == line else text[column - 1:]
            # decided by the compiler, in every instantiation
            if counted == [0, 0] and ('if constexpr' in text or condition.startswith(('kWidth', 'TextView<Enc>::kWidth'))):
                continue
            for side, count in zip(('true', 'false'), counted):
                sides += 1
                if count == 0 and 'if constexpr' not in text and not excepted(line):
                    open_sides += 1
                    missed.append(f'{name}:{line}: never {side}: {condition}    in: {text.strip()}')
        rows.append((name, lines, lines - len(uncovered), sides, sides - open_sides))
        for i, value in enumerate(rows[-1][1:]):
            totals[i] += value

    def row(label, lines, hit, sides, hit_sides):
        return (f'| {label} | {lines} | {share(hit, lines):.1f} % | {sides} | {share(hit_sides, sides):.1f} % |')

    table = ['| file | lines | run | sides of branches | taken |', '|---|---|---|---|---|']
    table += [row(f'`{name}`', *figures) for name, *figures in rows]
    table.append(row('**all**', *totals))
    print('\n'.join(table) + '\n')
    print('\n'.join(missed) if missed else 'Nothing is missed.')
    failed = share(totals[1], totals[0]) < LINES or share(totals[3], totals[2]) < BRANCHES
    if failed:
        print(f'coverage: below {LINES} % of the lines or {BRANCHES} % of the branches', file=sys.stderr)
    for entry in exceptions:
        if entry not in used:
            print(f'coverage: {EXCEPTIONS}: nothing uncovered there: {entry[0]} | {entry[1]}', file=sys.stderr)
            failed = True
    if options.record:
        subprocess.run([os.path.join(ROOT, 'tools', 'write_table.sh'), os.path.join(ROOT, 'docs', 'quality.md'),
                        'coverage'], input='\n'.join(table) + '\n', text=True, check=True)
    return 1 if failed else 0


if __name__ == '__main__':
    sys.exit(main())
