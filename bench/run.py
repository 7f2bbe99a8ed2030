# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the workloads: our program, the plain C++ program of the same work, and
the peers that are installed, one after the other within the same minute.

usage: run.py BUILD_FOLDER [--table | --check | --alone] [WORKLOAD...]

A workload is a folder of `workloads/`; a word selects those that begin with
it. Each program of a folder prints lines `@KEY SECONDS`, one a measurement, and
`=KEY VALUE` for what it computed; `@KEY@PEER SECONDS` goes under another name.
Where there is one measurement of the whole process, PROCESSES names it.

--check  tiny sizes, no times: what our program computes is what the C++ program
         does. A line that ends in `# check: N` or `// check: N` has N for its
         number then.
--alone  without the peers
--table  the rows of docs/performance.md, from the runs before
"""
import json
import os
import re
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile

from goals import MIB, ROWS

HERE = os.path.dirname(os.path.abspath(__file__))
WORKLOADS = os.path.join(HERE, 'workloads')
PEERS = [('lua5.4', 'peer.lua', ['lua5.4']), ('luajit', 'peer.lua', ['luajit']),
         ('luajit', 'peer_luajit.lua', ['luajit']), ('python3', 'peer.py', ['python3']),
         ('pypy3', 'peer.py', ['pypy3']), ('numpy', 'peer_numpy.py', ['python3']),
         ('numexpr', 'peer_numexpr.py', ['python3']), ('node', 'peer.js', ['node']),
         ('octave', 'peer.m', ['octave-cli', '--norc', '-q']), ('R', 'peer.R', ['Rscript', '--vanilla']),
         ('gnuplot', 'peer.gp', ['gnuplot'])]
# Workloads that are measured from outside: the keys of time and of memory.
PROCESSES = {'w01': ('start', 'start memory'), 'w14': (None, 'memory'), 'w15': ('compile', None)}
ROUNDS = 3              # of our program and the C++ program, around the peers
PROCESS_RUNS = {'w01': 100}
SECONDS_FOR_ONE = 120
SAME = 1e-6             # relative difference of results


def system_program(name):
    """The system's own, and not a wrapper of some version manager."""
    path = os.path.join('/usr/bin', name)
    return path if os.path.exists(path) else shutil.which(name)


class Program:
    """One way to run a workload."""

    def __init__(self, name, command):
        self.name, self.command = name, command


def flags_of(source):
    with open(source) as f:
        found = re.search(r'^// flags: (.*)$', f.read(), re.M)
    return found.group(1).split() if found else []


def compiled(folder, file_name, optimisation):
    """The command of a C++ program; None where a library is missing."""
    # With names that do not depend on the folder, a compiler cache knows them again.
    name, flags = file_name[:-4], flags_of(os.path.join(folder, file_name))
    compiler = os.environ.get('CXX', 'g++')
    cache = [shutil.which('ccache')] if shutil.which('ccache') else []
    steps = [cache + [compiler, '-std=c++20', *optimisation, *[f for f in flags if not f.startswith('-l')], '-c',
                      file_name, '-o', name + '.o'],
             [compiler, name + '.o', '-o', name, *[f for f in flags if f.startswith('-l')]]]
    for step in steps:
        made = subprocess.run(step, cwd=folder, capture_output=True, text=True)
        if made.returncode:
            break
    if made.returncode:
        missing = re.search(r'(\S+): No such file|cannot find (\S+)', made.stderr)
        if not missing:
            sys.exit('%s/%s does not compile:\n%s' % (os.path.basename(folder), file_name, made.stderr))
        print('  %s is left out: %s is missing' % (file_name, missing.group(1) or missing.group(2)))
        return None
    return [os.path.join(folder, name)]


def with_check_sizes(text):
    return re.sub(r'[\d.]+(;?\s*(?:#|//) check: ([\d.]+))', lambda m: m.group(2) + m.group(1), text)


def prepared_folder(workload, parent, check):
    """A copy of a workload to work in, with the files that it makes itself."""
    shutil.copy(os.path.join(WORKLOADS, 'timed.h'), parent)
    folder = os.path.join(parent, workload)
    shutil.copytree(os.path.join(WORKLOADS, workload), folder)
    if check:
        for name in os.listdir(folder):
            path = os.path.join(folder, name)
            with open(path) as f:
                text = f.read()
            with open(path, 'w') as f:
                f.write(with_check_sizes(text))
    if os.path.exists(os.path.join(folder, 'prepare.py')):
        subprocess.run([system_program('python3'), 'prepare.py'], cwd=folder, check=True)
    return folder


def ours(build, folder):
    return Program('vorpen', [os.path.join(build, 'bin', 'vorpen-cli'), '--home', folder,
                              os.path.join(folder, 'script.vrp')])


def limits(folder, optimisation):
    commands = (compiled(folder, name, optimisation) for name in sorted(os.listdir(folder))
                if name.startswith('limit') and name.endswith('.cpp'))
    return [Program('limit', command) for command in commands if command]


def peers(folder, absent):
    found = []
    for name in sorted(os.listdir(folder)):
        if name.startswith('peer_') and name.endswith('.cpp'):
            command = compiled(folder, name, ['-O3', '-march=native'])
            if command:
                found.append(Program(name[5:-4], command))
    for name, file_name, command in PEERS:
        path = os.path.join(folder, file_name)
        if not os.path.exists(path):
            continue
        interpreter = system_program(command[0])
        if interpreter:
            found.append(Program(name, [interpreter] + command[1:] + [path]))
        else:
            absent.add(name)
    return found


def failure_of(done):
    lines = done.stderr.strip().splitlines()
    return lines[-1][:100] if lines else 'exit status %d' % done.returncode


def lines_of(program, folder):
    """The fields of the lines "@KEY VALUE" and "=KEY VALUE"."""
    try:
        done = subprocess.run(program.command, cwd=folder, capture_output=True, text=True, timeout=SECONDS_FOR_ONE,
                              stdin=subprocess.DEVNULL)
    except subprocess.TimeoutExpired:
        print('  %s is left out: more than %d s' % (program.name, SECONDS_FOR_ONE))
        return []
    if done.returncode:
        if program.name in ('vorpen', 'limit'):
            sys.exit('%s: %s%s' % (' '.join(program.command), done.stdout, done.stderr))
        print('  %s is left out: %s' % (program.name, failure_of(done)))
        return []
    return [line.split() for line in done.stdout.splitlines() if line[:1] in '@=' and len(line.split()) == 2]


def process_figures(build, program, keys, runs):
    """Median time and peak memory of whole processes."""
    timer = os.path.join(build, 'bin', 'process-timer')
    done = subprocess.run([timer, str(runs)] + program.command, capture_output=True, text=True)
    if done.returncode:
        if program.name in ('vorpen', 'limit'):
            sys.exit(done.stderr)
        print('  %s is left out' % program.name)
        return {}
    median, _, peak = (float(x) for x in done.stdout.split())
    return {key: value for key, value in zip(keys, (median*1e-3, peak)) if key}


class Figures:
    """All measurements of a workload: key, program, values."""

    def __init__(self):
        self.values = {}

    def add(self, key, program, value):
        self.values.setdefault(key, {}).setdefault(program, []).append(value)

    def of(self, row):
        """Program and figure of a row, in the order of the measurements."""
        put_together = statistics.median if row.statistic == 'median' else min
        return {name: put_together(v) for name, v in self.values.get(row.key, {}).items()}


def measure(build, workload, absent, with_peers):
    figures = Figures()
    with tempfile.TemporaryDirectory(dir=build) as parent:
        folder = prepared_folder(workload, parent, False)
        programs = [ours(build, folder)] + limits(folder, ['-O3', '-march=native'])
        others = peers(folder, absent) if with_peers else []
        keys = PROCESSES.get(workload[:3])
        for r in range(ROUNDS):
            for program in programs + (others if r == 0 else []):
                if keys:
                    runs = PROCESS_RUNS.get(workload[:3], 3)
                    slow = program.name not in ('vorpen', 'limit', 'lua5.4', 'luajit')
                    found = process_figures(build, program, keys, 3 if slow else runs)
                    for key, value in found.items():
                        figures.add(key, program.name, value)
                    continue
                for key, value in lines_of(program, folder):
                    if key[0] == '@':
                        key, _, label = key[1:].partition('@')
                        figures.add(key, label or program.name, float(value))
    return figures


class Machine:
    """What else the machine did while we measured."""

    def __init__(self):
        self.start, self.own = self.jiffies(), self.own_seconds()

    @staticmethod
    def jiffies():
        with open('/proc/stat') as f:
            return [int(x) for x in f.readline().split()[1:9]]

    @staticmethod
    def own_seconds():
        use = [resource.getrusage(who) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)]
        return sum(u.ru_utime + u.ru_stime for u in use)

    def line(self):
        spent = [b - a for a, b in zip(self.start, self.jiffies())]
        total = max(sum(spent), 1)
        idle, stolen = (spent[3] + spent[4])/total, spent[7]/total
        mine = (self.own_seconds() - self.own)*os.sysconf('SC_CLK_TCK')/total
        return ('machine: load average %.1f on %d processors; others took %.0f %%, other machines on the same '
                'hardware %.0f %%%s' % (os.getloadavg()[0], os.cpu_count(),
                                        100*max(0, 1 - idle - stolen - mine), 100*stolen,
                                        '' if 1 - idle - mine < .1 else ' (only the ratios say something)'))


def number(value):
    return '%.0f' % value if value >= 100 else '%.3g' % value


def is_reached(row, ours_value, judge):
    return ours_value <= row.goal or (judge is not None and ours_value <= judge*row.ratio)


def show(workload, figures):
    for row in ROWS:
        found = figures.of(row)
        if row.workload != workload[:3] or 'vorpen' not in found:
            continue
        mine = found.pop('vorpen')
        others = '  '.join('%s %s (%.2f)' % (name, number(v), mine/v) for name, v in
                           sorted(found.items(), key=lambda item: (item[0] != 'limit', item[1])) if v > 0)
        print('  %-13s %8s %-3s  goal %s (%.2f)%s  %s'
              % (row.key, number(mine), row.unit, number(row.goal), mine/row.goal,
                 '' if is_reached(row, mine, found.get(row.against)) else ' not reached', others))


def results_file(build):
    return os.path.join(build, 'bench.json')


def stored_results(build):
    if not os.path.exists(results_file(build)):
        return {}
    with open(results_file(build)) as f:
        return json.load(f)


def store(build, workload, figures):
    results = stored_results(build)
    results[workload[:3]] = figures.values
    with open(results_file(build), 'w') as f:
        json.dump(results, f, indent=1)


def print_table(build):
    results = stored_results(build)
    if not results:
        sys.exit('There are no results yet: run scripts/bench first')
    print('| workload | goal | figure | / goal | limit | / limit | best peer | / peer | reached |')
    print('|---|---|---|---|---|---|---|---|---|')
    for row in ROWS:
        figures = Figures()
        figures.values = results.get(row.workload, {})
        found = figures.of(row)
        if 'vorpen' not in found:
            continue
        mine, limit = found.pop('vorpen'), found.pop('limit', None)
        judge = limit if row.against == 'limit' else found.get(row.against)
        best = min(found, key=found.get, default=None)
        reached = 'yes' if mine <= row.goal else 'by ratio' if is_reached(row, mine, judge) else \
            'no: ' + row.reason if row.reason else 'no'
        print('| %s %s%s | %s | **%s** | %.2f | %s | %s | %s | %s | %s |' % (
            row.workload, row.title, ', MiB' if row.unit == MIB else '', number(row.goal), number(mine),
            mine/row.goal, number(limit) if limit else '', '%.2f' % (mine/limit) if limit else '',
            '%s %s' % (best, number(found[best])) if best else '', '%.2f' % (mine/found[best]) if best else '',
            reached))


def check(build, workload):
    """What differs, as text; empty when all agrees."""
    with tempfile.TemporaryDirectory() as parent:
        folder = prepared_folder(workload, parent, True)
        values = {}
        for program in [ours(build, folder)] + limits(folder, ['-O0']):
            for key, value in lines_of(program, folder):
                if key[0] == '=':
                    values.setdefault(key[1:], {})[program.name] = float(value)
    if workload[:3] not in PROCESSES and not values and workload[:3] != 'w13':
        return 'nothing was computed'
    faults = []
    for key, found in values.items():
        mine, limit = found.get('vorpen'), found.get('limit')
        if mine is None:
            faults.append('%s: ours says nothing' % key)
        elif limit is not None and abs(mine - limit) > SAME*max(abs(mine), abs(limit)):
            faults.append('%s: ours %.17g, C++ %.17g' % (key, mine, limit))
    return '; '.join(faults)


def main():
    arguments = sys.argv[1:]
    options = {a for a in arguments if a.startswith('--')}
    words = [a for a in arguments if not a.startswith('--')]
    if not words or not options <= {'--check', '--table', '--alone'}:
        sys.exit(__doc__)
    build, wanted = os.path.abspath(words[0]), words[1:]
    if '--table' in options:
        return print_table(build)
    faults, absent, machine = 0, set(), Machine()
    names = [n for n in sorted(os.listdir(WORKLOADS)) if os.path.isdir(os.path.join(WORKLOADS, n))]
    for workload in [n for n in names if not wanted or any(n.startswith(w) for w in wanted)]:
        print(workload, flush=True)
        if '--check' in options:
            fault = check(build, workload)
            print('  ' + (fault or 'agrees'))
            faults += bool(fault)
            continue
        figures = measure(build, workload, absent, '--alone' not in options)
        show(workload, figures)
        if '--alone' not in options:
            store(build, workload, figures)
    if '--check' not in options:
        print(machine.line())
        if absent:
            print('not installed: %s (scripts/bench --peers installs them)' % ', '.join(sorted(absent)))
    sys.exit(1 if faults else 0)


if __name__ == '__main__':
    main()
