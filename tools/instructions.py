#!/usr/bin/env python3
"""Counts the instructions of the library's own code for each operation of bench/Instructions.cpp, under callgrind:
tools/instructions.py PROGRAM [--record REASON]

Holds them against bench/instructions.txt: 3 % more or less fails, and so does an operation that is new or gone. Fewer are
no fault, but have to be recorded, so that they stay. With --record the counts are written there, and REASON with them.
The C library is not counted: which of its functions run hangs on the processor.
"""

import datetime
import os
import re
import subprocess
import sys
import tempfile

RECORDED = 'bench/instructions.txt'
TOLERANCE = 0.03
HEAD = '''# Instructions of the library's own code for each operation of bench/Instructions.cpp. `make instructions` holds the
# counts to 3 %; make instructions RECORD=1 REASON='what changed' writes them anew. The reasons so far:
#
'''


def run(program, folder):
    """One dump file for each operation, in their order."""
    out = os.path.join(folder, 'out')
    command = ['valgrind', '-q', '--tool=callgrind', '--combine-dumps=no',
               '--callgrind-out-file=' + out, program]
    # one environment and no late binding: counts repeat exactly
    subprocess.run(command, check=True, env={'PATH': os.environ['PATH'], 'LD_BIND_NOW': '1'})
    dumps = [name for name in os.listdir(folder) if re.fullmatch(r'out\.\d+', name)]
    return [os.path.join(folder, name) for name in sorted(dumps, key=lambda name: int(name.split('.')[1]))]


def is_own(function):
    """Whether a function of the program is the library's: neither the bench's nor a C function that it interposes."""
    name = re.split(r'[(<]', function)[0]
    return '::' in name and not re.search(r'\b(bench|test|samples|host)::', name)


class Names:
    """Callgrind's names: "(id) name" where one stands first, "(id)" from then on."""

    def __init__(self):
        self.names = {}

    def of(self, text):
        number, name = re.fullmatch(r'\((\d+)\)(?: (.*))?', text).groups()
        if name:
            self.names[number] = name
        return self.names[number]


def count(path, program):
    """The operation of a dump, and its instructions."""
    objects, functions = Names(), Names()
    operation = None
    in_program = own = called = False
    total = 0
    with open(path, encoding='utf-8', errors='replace') as dump:
        for line in dump:
            key, _, value = line.rstrip('\n').partition('=')
            if line.startswith('desc: Trigger: Client Request: '):
                operation = line.split(': ', 3)[3].strip()
            elif key == 'ob':
                in_program = os.path.basename(objects.of(value)) == os.path.basename(program)
            elif key == 'cob':
                objects.of(value)
            elif key == 'fn':
                own = is_own(functions.of(value))
            elif key == 'cfn':
                functions.of(value)
            elif key == 'calls':
                called = True
            elif line[0].isdigit() or line[0] in '+-*':
                if in_program and own and not called:
                    total += int(line.split()[1])
                called = False
    return operation, total


def read_recorded():
    counts, reasons = {}, []
    if os.path.exists(RECORDED):
        with open(RECORDED, encoding='utf-8') as file:
            for line in file:
                if re.match(r'# \d{4}-', line):
                    reasons.append(line)
                elif line[0] not in '#\n':
                    instructions, operation = line.split(None, 1)
                    counts[operation.strip()] = int(instructions)
    return counts, reasons


def record(counts, reasons, reason):
    reasons.append(f'# {datetime.date.today()}: {reason}\n')
    with open(RECORDED, 'w', encoding='utf-8') as file:
        file.write(HEAD + ''.join(reasons) + '\n')
        file.writelines(f'{instructions:>10}  {operation}\n' for operation, instructions in counts.items())


def compare(counts, recorded):
    """Prints every operation; answers how many are outside the tolerance."""
    outside = 0
    for operation in list(counts) + [name for name in recorded if name not in counts]:
        new, old = counts.get(operation), recorded.get(operation)
        if new is None or old is None:
            change = 'gone' if new is None else 'new'
            bad = True
        else:
            bad = abs(new - old) > TOLERANCE * old
            change = f'{100 * (new - old) / old:+.1f} %' if old else ''
        outside += bad
        print(f'{new if new is not None else "":>12} {old if old is not None else "":>12} {change:>9}'
              f'{"  <<<" if bad else "     "} {operation}')
    return outside


def main(arguments):
    program = arguments[0]
    reason = arguments[2].strip() if arguments[1:2] == ['--record'] and len(arguments) > 2 else None
    if arguments[1:] and not reason:
        sys.exit("instructions: say why the counts change: make instructions RECORD=1 REASON='what changed'")
    with tempfile.TemporaryDirectory() as folder:
        counts = dict(count(path, program) for path in run(program, folder))
    counts.pop(None, None)
    recorded, reasons = read_recorded()
    print(f'{"now":>12} {"recorded":>12} {"change":>9}')
    outside = compare(counts, recorded)
    if reason:
        record(counts, reasons, reason)
    elif outside:
        sys.exit(f'instructions: {outside} outside 3 %. Where that is meant, record it with its reason: '
                 "make instructions RECORD=1 REASON='what changed'")


if __name__ == '__main__':
    main(sys.argv[1:])
