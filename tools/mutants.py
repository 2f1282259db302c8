#!/usr/bin/env python3
"""Mutation testing: changes the library's sources in many small ways, and looks whether a test fails for each.

    tools/mutants.py [--count 600] [--seed N] [--seconds S] [--at FILE:LINE]... [--record]

All mutants are in one build, below build/mutants: VX_MUTANT=17 in a test's environment switches number 17 on. A run
without a mutant tells which test programs come by each point; of these the quickest run first, that of the source's own
name before them. The first failure that repeats itself kills a mutant; so does a test that does not end. Results are
kept in build/mutants/state.json: a run goes on where the one before ended, and mutants that survived run again when a
test has changed. tests/equivalent_mutants.txt holds those that no test could see.
"""
import argparse
import concurrent.futures
import glob
import hashlib
import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from coverage import excepted_lines, read_exceptions  # noqa: E402
from mutate import Mutator  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
HOME = os.path.join(ROOT, 'build', 'mutants')
TREE = os.path.join(HOME, 'tree')
BUILD = os.path.join(HOME, 'build')
STATE = os.path.join(HOME, 'state.json')
EQUIVALENT = os.path.join(ROOT, 'tests', 'equivalent_mutants.txt')
SPINS_AFTER = 10  # seconds of the processor, or four times what the program takes otherwise
SLEEPS_AFTER = 10  # seconds in which none of its threads wants the processor
YIELDS_AFTER = 60  # seconds, or twenty times what the program takes of the processor otherwise
MOST_POINTS = 16384
NOT_RUN = ['tests/SupportTest']  # it tests the tests

SWITCH = r'''#pragma once
extern "C" char* getenv(const char*) noexcept(true);
extern "C" long syscall(long, ...) noexcept(true);
namespace vxmutants {
inline unsigned numberInEnvironment() {
    unsigned number = 0;
    if (const char* c = getenv("VX_MUTANT")) while (*c >= '0' && *c <= '9') number = number * 10 + unsigned(*c++ - '0');
    return number;
}
inline unsigned active = numberInEnvironment();
inline unsigned char seen[%(most)d];
struct Trace {
    ~Trace() {
        const char* const path = getenv("VX_MUTANT_TRACE");
        if (path == nullptr) return;
        const long file = syscall(%(openat)d, -100, path, 02001, 0);
        syscall(%(write)d, file, seen, sizeof seen);
        syscall(%(close)d, file);
    }
};
inline Trace trace;
inline bool isOn(unsigned number) {
    seen[number] = 1;
    return number == active;
}
template <unsigned kNumber>
__attribute__((always_inline)) constexpr bool is() {
    if (__builtin_is_constant_evaluated()) return false;
    return isOn(kNumber);
}
}  // namespace vxmutants
#define VX_MUTANT(number) ::vxmutants::is<number>()
'''
SYSCALLS = {'x86_64': {'openat': 257, 'write': 1, 'close': 3}, 'aarch64': {'openat': 56, 'write': 64, 'close': 57}}


def sources():
    """What is mutated: not the generated tables, and of the headers only those that players do not see."""
    found = glob.glob('subtitle/*.cpp', root_dir=ROOT) + glob.glob('subtitle/*/*.cpp', root_dir=ROOT) + \
        glob.glob('subtitle/*/*.h', root_dir=ROOT)
    return sorted(file for file in found if 'CharsetTables' not in file)


def read(path):
    with open(path, encoding='utf-8') as file:
        return file.read()


def write_if_changed(path, text):
    if os.path.exists(path) and read(path) == text:
        return
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'w', encoding='utf-8') as file:
        file.write(text)


def digest(paths):
    result = hashlib.sha256()
    for path in sorted(paths):
        result.update(path.encode() + b'\0')
        with open(path, 'rb') as file:
            result.update(file.read())
    return result.hexdigest()[:16]


class State:
    def __init__(self):
        self.data = {'dropped': {}, 'results': {}}
        if os.path.exists(STATE):
            self.data = json.loads(read(STATE))

    def save(self):
        os.makedirs(HOME, exist_ok=True)
        with open(STATE + '.new', 'w', encoding='utf-8') as file:
            json.dump(self.data, file, indent=1)
        os.replace(STATE + '.new', STATE)


# ---- the build ----

def copy_tree():
    """Everything but the mutated files, which come later; unchanged files stay as they are."""
    mutated = set(sources())
    for folder, folders, files in os.walk(ROOT):
        relative = os.path.relpath(folder, ROOT)
        folders[:] = [f for f in folders if f not in ('.git', 'build', '__pycache__')]
        for name in files:
            path = os.path.normpath(os.path.join(relative, name))
            if path in mutated or name == '.git':
                continue
            source, target = os.path.join(ROOT, path), os.path.join(TREE, path)
            if os.path.exists(target) and os.path.getmtime(target) >= os.path.getmtime(source):
                continue
            os.makedirs(os.path.dirname(target), exist_ok=True)
            shutil.copy(source, target)
    machine = os.uname().machine
    write_if_changed(os.path.join(HOME, 'switch.h'), SWITCH % {'most': MOST_POINTS, **SYSCALLS[machine]})


def mutate(dropped):
    """All files, by name. Numbers begin with 1, and for each file anew, so that few files change with another."""
    files, number = {}, 1
    for file in sources():
        text = read(os.path.join(ROOT, file))
        own = set(dropped.get(file, {}).get('points', []))
        files[file] = Mutator(file, text, number, own)
        number = -(-files[file].next_number // 64) * 64
    if number > MOST_POINTS:
        sys.exit(f'mutants: {number} points are too many')
    return files


def build(state, jobs):
    """Builds all mutants. What does not compile is dropped, and remembered as long as its file stays as it is."""
    copy_tree()
    dropped = state.data['dropped']
    for file in sources():
        now = digest([os.path.join(ROOT, file)])
        if dropped.get(file, {}).get('digest') != now:
            dropped[file] = {'digest': now, 'points': []}
    prepare(mutate(dropped))
    subprocess.run(
        ['cmake', '-S', TREE, '-B', BUILD, '-G', 'Ninja', '--log-level=WARNING', '-DCMAKE_BUILD_TYPE=Debug',
         f'-DCMAKE_CXX_FLAGS_DEBUG=-O1 -w -include {HOME}/switch.h', '-DVXSUBTITLE_BUILD_TOOLS=OFF',
         '-DVXSUBTITLE_WERROR=OFF'], check=True, stdout=subprocess.DEVNULL)
    every = subprocess.run(['ninja', '-C', BUILD, '-t', 'targets', 'all'], stdout=subprocess.PIPE, text=True, check=True)
    tests = [name for name in re.findall(r'^(tests/[\w/]+Test): ', every.stdout, re.M) if name not in NOT_RUN]
    target = ['vxsubtitle_objects']
    while True:
        files = mutate(dropped)
        prepare(files)
        done = subprocess.run(['ninja', '-C', BUILD, '-k', '0', '-j', str(jobs)] + target,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors='replace')
        if done.returncode == 0 and target == tests:
            return files
        if done.returncode == 0:
            target = tests
            continue
        before = sum(len(entry['points']) for entry in dropped.values())
        for path, line, column in set(re.findall(r'^([^\s:]+):(\d+):(\d+): (?:fatal )?error', done.stdout, re.M) +
                                      re.findall(r'^([^\s:]+):(\d+):(\d+):   (?:required|in .constexpr. exp)',
                                                 done.stdout, re.M)):
            file = os.path.relpath(os.path.join(BUILD, path), TREE)
            if file in files:
                for point in files[file].points_at(int(line), int(column)):
                    if point.identity not in dropped[file]['points']:
                        dropped[file]['points'].append(point.identity)
        after = sum(len(entry['points']) for entry in dropped.values())
        if after == before:
            print(done.stdout[-6000:], file=sys.stderr)
            sys.exit('mutants: the build fails, and not because of a mutant')
        print(f'{after - before} mutants do not compile', flush=True)
        state.save()


def compiled_lines(file):
    """The lines of a file that this machine's compiler gets to see."""
    folders = ['-I' + TREE, '-I' + os.path.join(TREE, 'platform/host/include'), '-isystem', '/usr/include/android']
    done = subprocess.run(['c++', '-std=c++17', '-E', '-fdirectives-only', *folders, os.path.join(ROOT, file)],
                          stdout=subprocess.PIPE, text=True, check=True)
    lines, here, number = set(), False, 0
    for text in done.stdout.split('\n'):
        marker = re.match(r'# (\d+) "(.*)"', text)
        if marker:
            number, here = int(marker[1]), marker[2] == os.path.join(ROOT, file)
            continue
        if here and text.strip():
            lines.add(number)
        number += 1
    return lines


def countable(points):
    """Without those that the compiler evaluates under a static_assert, and those that it never sees on this machine."""
    by_compiler = [entry for entry in read_exceptions() if entry[2].startswith('compile time')]
    texts = {file: read(os.path.join(ROOT, file)) for file in {point.file for point in points}}
    proven = {file: excepted_lines(file, text.split('\n'), by_compiler) for file, text in texts.items()}
    seen = {file: compiled_lines(file) for file, text in texts.items() if re.search(r'^ *#if', text, re.M)}
    return [point for point in points if point.line not in proven[point.file]
            and (point.file not in seen or point.line in seen[point.file])]


def prepare(files):
    for file, mutator in files.items():
        write_if_changed(os.path.join(TREE, file), mutator.text)


# ---- the tests ----

class Life:
    """Watches a process: whether it hangs shows in what it takes of the processor, however busy the machine is."""

    def __init__(self, pid):
        self.folder, self.seconds = f'/proc/{pid}', 0.0
        self.began = self.awake = time.monotonic()

    def fields(self, task):
        """The state and what follows it."""
        try:
            return read(f'{self.folder}{task}/stat').rpartition(') ')[2].split()
        except (FileNotFoundError, ProcessLookupError):
            return ['Z'] + ['0'] * 20

    def hangs(self, usual):
        fields = self.fields('')
        seconds = (int(fields[11]) + int(fields[12])) / os.sysconf('SC_CLK_TCK')
        now = time.monotonic()
        if seconds > self.seconds or now - self.awake > SLEEPS_AFTER / 2 and self.wants_to_run():
            self.awake = now
        self.seconds = max(seconds, self.seconds)
        return (seconds > max(SPINS_AFTER, 4 * usual) or now - self.awake > SLEEPS_AFTER
                or now - self.began > max(YIELDS_AFTER, 20 * usual))

    def wants_to_run(self):
        tasks = glob.glob(self.folder + '/task/*')
        return any(self.fields(task[len(self.folder):])[0] in 'RD' for task in tasks)


class Program:
    def __init__(self, path):
        self.path, self.name = path, os.path.basename(path)
        self.seconds, self.seen, self.filter = 60.0, bytes(MOST_POINTS), '*'  # seconds of the processor

    def run(self, number, trace=None):
        """('passed', 'failed' or 'hung', the seconds that it took, what was printed)."""
        environment = dict(os.environ, VX_MUTANT=str(number), GTEST_COLOR='no', GTEST_FILTER=self.filter)
        if trace:
            environment['VX_MUTANT_TRACE'] = trace
        else:
            environment['GTEST_FAIL_FAST'] = '1'
        with tempfile.TemporaryFile('w+', errors='replace') as out:
            process = subprocess.Popen([self.path], cwd=os.path.dirname(self.path), env=environment, stdin=subprocess.DEVNULL,
                                       stdout=out if trace else subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                       start_new_session=True)
            life, pause = Life(process.pid), 0.005
            result = ''
            while not result:
                try:
                    result = 'passed' if process.wait(pause) == 0 else 'failed'
                except subprocess.TimeoutExpired:
                    result = 'hung' if life.hangs(self.seconds) else ''
                pause = min(2 * pause, 0.2)
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
            out.seek(0)
            return result, life.seconds, out.read()

    def try_out(self):
        """Without a mutant: what it comes by, and how long that takes. Cases that fail are left out from now on."""
        trace = os.path.join(HOME, 'trace.' + self.name)
        failing = set()
        while True:
            open(trace, 'wb').close()
            result, self.seconds, out = self.run(0, trace)
            more = set(re.findall(r'^\[  FAILED  \] ([^\s,]+)', out, re.M)) - failing
            if result != 'failed' or not more:
                break
            failing |= more
            self.filter = '*:-' + ':'.join(sorted(failing))
        seen = 0
        with open(trace, 'rb') as file:
            while len(chunk := file.read(MOST_POINTS)) == MOST_POINTS:
                seen |= int.from_bytes(chunk, 'little')
        self.seen = seen.to_bytes(MOST_POINTS, 'little')
        os.remove(trace)
        for case in sorted(failing):
            print(f'mutants: {self.name}: {case} fails without a mutant, and is left out')
        return result

    def recall_or_try_out(self):
        """The same; what a program without failing cases came by is kept as long as it and the library stay as they are."""
        note = os.path.join(HOME, 'traces', self.name)
        version = digest([self.path] + glob.glob(os.path.join(BUILD, '**', 'libvxsubtitle*.so'), recursive=True))
        if os.path.exists(note):
            with open(note, 'rb') as file:
                if file.readline().decode().split() == [version, 'passed']:
                    self.seconds, self.seen = float(file.readline()), file.read()
                    return 'passed'
        result = self.try_out()
        if result == 'passed' and self.filter == '*':
            os.makedirs(os.path.dirname(note), exist_ok=True)
            with open(note, 'wb') as file:
                file.write(f'{version} passed\n{self.seconds}\n'.encode() + self.seen)
        return result


def programs(jobs):
    """The test programs, with what each comes by."""
    found = [Program(path) for path in glob.glob(os.path.join(BUILD, 'tests', '**', '*Test'), recursive=True)
             if os.path.isfile(path) and os.access(path, os.X_OK) and os.path.relpath(path, BUILD) not in NOT_RUN]
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        results = list(pool.map(Program.recall_or_try_out, found))
    for program, result in zip(found, results):
        if result != 'passed':
            print(f'mutants: {program.name} {result} without a mutant, and is left out')
    return [p for p, r in zip(found, results) if r == 'passed']


def try_mutant(point, all_programs):
    """(result, the program that told)."""
    stem = os.path.splitext(os.path.basename(point.file))[0]
    those = [p for p in all_programs if p.seen[point.number]]
    if not those:
        return 'not reached', ''
    for program in sorted(those, key=lambda p: (not p.name.startswith(stem), p.seconds)):
        result = program.run(point.number)[0]
        # on a busy machine a failure may be chance, and no program ends in time
        if result == 'failed' and program.run(point.number)[0] == 'failed':
            return 'killed', program.name
        if result == 'hung' and program.run(0)[0] == 'passed':
            return 'hung', program.name
    return 'survived', ''


# ---- what is chosen, and what is known ----

def equivalents():
    """The identities in the reviewed list: blocks of `in:`, `line:`, `change:` and `why:`."""
    found = {}
    if not os.path.exists(EQUIVALENT):
        return found
    for block in re.split(r'\n\s*\n', read(EQUIVALENT)):
        fields = dict(re.findall(r'^(in|line|change|why): +(.*)$', block, re.M))
        if not fields:
            continue
        if set(fields) != {'in', 'line', 'change', 'why'}:
            sys.exit(f'mutants: {EQUIVALENT}: incomplete:\n{block}')
        for change in fields['change'].split('; '):
            found[f"{fields['in']}\t{fields['line']}\t{change}"] = fields['why']
    return found


def choose(points, count, seed):
    """`count` points: lines by lot, and of a line's points one. Each draws its own number, so that an edit elsewhere
    changes nothing about it."""
    def lot(text):
        return hashlib.sha256(f'{seed}\t{text}'.encode()).digest()

    by_line = {}
    for point in sorted(points, key=lambda p: lot(p.identity)):
        by_line.setdefault((point.file, point.line), []).append(point)
    lines = sorted(by_line.values(), key=lambda of_line: lot(f'{of_line[0].file}\t{of_line[0].source}'))
    rounds = [[of_line[turn] for of_line in lines if turn < len(of_line)] for turn in range(max(map(len, lines), default=0))]
    return [point for of_turn in rounds for point in of_turn][:count]


def room_of(file):
    return os.path.dirname(file) + '/'


def table(points, results):
    rows = {}
    for point in points:
        rows.setdefault(room_of(point.file), []).append(results[point.identity])
    columns = ['killed', 'hung', 'survived', 'not reached', 'equivalent']
    lines = ['| folder | mutants | killed | killed by hanging | survived | not reached | equivalent | of those that count |',
             '|---|---|---|---|---|---|---|---|']
    everything = [r for row in rows.values() for r in row]
    for name, row in sorted(rows.items()) + [('**all**', everything)]:
        dead = row.count('killed') + row.count('hung')
        counted = len(row) - row.count('equivalent')
        share = f'{100 * dead / counted:.1f} %' if counted else '-'
        label = name if name.startswith('**') else f'`{name}`'
        lines.append(f'| {label} | {len(row)} | ' + ' | '.join(str(row.count(c)) for c in columns) + f' | {share} |')
    return lines


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument('--count', type=int, default=600)
    arguments.add_argument('--seed', type=int)
    arguments.add_argument('--seconds', type=float, default=1e9, help='no further mutants are begun after these')
    arguments.add_argument('--jobs', type=int, default=os.cpu_count())
    arguments.add_argument('--at', action='append', default=[], help='FILE:LINE or FILE: the mutants there, all of them')
    arguments.add_argument('--record', action='store_true', help='the table goes into docs/quality.md')
    options = arguments.parse_args()
    if options.seed is None:
        options.seed = random.randrange(1000000)

    state = State()
    files = build(state, options.jobs)
    state.save()
    points = countable([point for mutator in files.values() for point in mutator.points])
    omitted = sum(len(entry['points']) for entry in state.data['dropped'].values())
    print(f'{len(points)} mutants in the build, {omitted} more do not compile', flush=True)

    equivalent = equivalents()
    for identity in sorted(equivalent.keys() - {point.identity for point in points}):
        print('mutants: tests/equivalent_mutants.txt names none: ' + identity.replace('\t', ' | '))

    if options.at:
        chosen = [p for p in points if p.file in options.at or f'{p.file}:{p.line}' in options.at]
    else:
        chosen = choose(points, options.count, options.seed)
        print(f'seed {options.seed}', flush=True)

    tests = digest(path for path in glob.glob(os.path.join(ROOT, 'tests', '**', '*.*'), recursive=True)
                   if os.path.isfile(path) and path != EQUIVALENT)
    library = {file: digest([os.path.join(ROOT, file)]) for file in files}
    known, results, waiting = state.data['results'], {}, []
    for point in chosen:
        entry = known.get(point.identity)
        if point.identity in equivalent:
            results[point.identity] = 'equivalent'
        elif entry and entry['library'] == library[point.file] and (
                entry['result'] in ('killed', 'hung') or entry['tests'] == tests):
            results[point.identity] = entry['result']
        else:
            waiting.append(point)

    start = time.monotonic()
    if waiting:
        all_programs = programs(options.jobs)
        print(f'{len(all_programs)} test programs, together {sum(p.seconds for p in all_programs):.0f} s', flush=True)
        ends = start + options.seconds

        def run(point):
            if time.monotonic() > ends:
                return point, None, ''
            return point, *try_mutant(point, all_programs)

        with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            for done in concurrent.futures.as_completed([pool.submit(run, point) for point in waiting]):
                point, result, program = done.result()
                if result is None:
                    continue
                results[point.identity] = result
                known[point.identity] = {'result': result, 'by': program, 'library': library[point.file], 'tests': tests}
                if result not in ('killed', 'hung'):
                    print(f'{point.file}:{point.line}: {result}: {point.change}\n    {point.source}', flush=True)
                state.save()
                if len(results) % 20 == 0:
                    print(f'-- {len(results)} of {len(chosen)}, {time.monotonic() - start:.0f} s', flush=True)
        state.save()

    tried = [point for point in chosen if point.identity in results]
    if options.at:
        for point in tried:
            print(f'{point.file}:{point.line}: {results[point.identity]}: {point.change} (VX_MUTANT={point.number})')
        return 0
    survivors = [p for p in tried if results[p.identity] in ('survived', 'not reached')]
    print('\nSurvivors:' if survivors else '\nNo survivors.')
    for point in sorted(survivors, key=lambda p: p.number):
        print(f'{point.file}:{point.line}: {results[point.identity]}: {point.change} (VX_MUTANT={point.number})')
        print(f'    {point.source}')
    if len(tried) < len(chosen):
        print(f'{len(chosen) - len(tried)} of {len(chosen)} were not tried; the next run with this seed goes on')
    lines = table(tried, results) + ['', f'Seed {options.seed}.']
    print('\n' + '\n'.join(lines))
    if options.record:
        subprocess.run([os.path.join(ROOT, 'tools', 'write_table.sh'), os.path.join(ROOT, 'docs', 'quality.md'),
                        'mutants'], input='\n'.join(lines) + '\n', text=True, check=True)
    return 1 if survivors else 0


if __name__ == '__main__':
    sys.exit(main())
