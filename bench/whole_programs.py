# SPDX-License-Identifier: GPL-3.0-or-later
"""Times whole programs: ours and the same work in other languages.

Each workload is run by each program that is installed; what counts is the
ratio to a peer that ran in the same minute. With FOLDER in `scripts/` a
workload is a script and its peers: script.vrp, peer.lua, peer.py, peer.cpp.

usage: whole_programs.py BUILD_FOLDER [WORKLOAD...]
"""
import os
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
PEERS = [('script.vrp', 'vorpen'), ('peer.lua', 'lua5.4'), ('peer.py', 'python3')]
RUNS = 15
RUNS_OF_START = 200
# Wall time in milliseconds and peak memory in MiB that we want to stay within.
GOALS = {'start': (2, 6), 'compile 10,000 lines': (300, None)}


def interpreters(build):
    """The programs that are there, by the name that heads their row."""
    found = {'vorpen': os.path.join(build, 'bin', 'vorpen-cli')}
    for name in ('lua5.4', 'luajit', 'python3'):
        # The system's own, and not a wrapper of some version manager.
        path = '/usr/bin/' + name if os.path.exists('/usr/bin/' + name) else shutil.which(name)
        if path:
            found[name] = path
    return found


def timed(build, runs, command):
    """Median and shortest wall time in ms, peak memory in MiB."""
    timer = os.path.join(build, 'bin', 'process-timer')
    done = subprocess.run([timer, str(runs)] + command, capture_output=True, text=True)
    if done.returncode:
        raise RuntimeError('%s: %s' % (' '.join(command)[:80], done.stderr.strip()))
    return [float(x) for x in done.stdout.split()]


def show(workload, rows):
    ours = rows[0][1]
    print('\n%s%s' % (workload, '' if workload not in GOALS else
                      '   (goal %s ms%s)' % (GOALS[workload][0],
                                             ', %s MiB' % GOALS[workload][1] if GOALS[workload][1] else '')))
    for name, median, shortest, peak in rows:
        print('  %-10s median %9.3f ms  shortest %9.3f ms  peak %7.2f MiB  ours/this %6.2f'
              % (name, median, shortest, peak, ours / median))


def compiled_peer(folder, source, name='limit'):
    program = os.path.join(folder, name)
    subprocess.run([os.environ.get('CXX', 'g++'), '-O3', '-std=c++20', '-o', program, source], check=True)
    return program


def start(build, folder):
    programs = interpreters(build)
    source = os.path.join(folder, 'one.cpp')
    with open(source, 'w') as f:
        f.write('#include <cstdio>\nint main() { std::puts("1"); }\n')
    commands = [('vorpen', [programs['vorpen'], '--home', folder, '-e', '1']),
                ('C++', [compiled_peer(folder, source)])]
    for name, option, text in (('lua5.4', '-e', 'print(1)'), ('luajit', '-e', 'print(1)'),
                               ('python3', '-c', 'print(1)')):
        if name in programs:
            commands.append((name, [programs[name], option, text]))
    return [(name, *timed(build, RUNS_OF_START, command)) for name, command in commands]


def lines_of_script(language):
    """10,000 assignments, no two alike, in a language's own words."""
    prefix = {'vrp': '', 'lua': 'math.', 'py': 'math.'}[language]
    power = {'vrp': '^', 'lua': '^', 'py': '**'}[language]
    end = {'vrp': ';', 'lua': '', 'py': ''}[language]
    if language == 'py':
        yield 'import math'
    names = ['value_%d' % i for i in range(50)]
    for i, name in enumerate(names):
        yield '%s = %g%s' % (name, 0.01 * i, end)
    for i in range(10000 - len(names)):
        a, b, c, d = (names[(i * k + k) % len(names)] for k in (1, 7, 11, 13))
        yield '%s = %ssin(%s + %g*%s)/(1 + %s%s2) - %scos(%g)*(%s - %d)%s' % (
            a, prefix, b, 0.5 + 0.001 * i, c, d, power, prefix, 0.25 + i, c, i % 17, end)


def compile_lines(build, folder):
    programs = interpreters(build)
    rows = []
    for ending, name in (('vrp', 'vorpen'), ('lua', 'lua5.4'), ('py', 'python3')):
        if name not in programs:
            continue
        path = os.path.join(folder, 'lines.' + ending)
        with open(path, 'w') as f:
            f.write('\n'.join(lines_of_script(ending)) + '\n')
        home = ['--home', folder] if name == 'vorpen' else []
        rows.append((name, *timed(build, RUNS, [programs[name]] + home + [path])))
    return rows


def run_script_folder(build, folder, source):
    programs = interpreters(build)
    rows = []
    for file_name, name in PEERS:
        path = os.path.join(source, file_name)
        if os.path.exists(path) and name in programs:
            home = ['--home', folder] if name == 'vorpen' else []
            rows.append((name, *timed(build, RUNS, [programs[name]] + home + [path])))
    path = os.path.join(source, 'peer.cpp')
    if os.path.exists(path):
        rows.append(('C++', *timed(build, RUNS, [compiled_peer(folder, path)])))
    return rows


def workloads():
    yield 'start', start
    yield 'compile 10,000 lines', compile_lines
    scripts = os.path.join(HERE, 'scripts')
    for name in sorted(os.listdir(scripts)) if os.path.isdir(scripts) else []:
        source = os.path.join(scripts, name)
        yield name, lambda build, folder, source=source: run_script_folder(build, folder, source)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    build, wanted = os.path.abspath(sys.argv[1]), sys.argv[2:]
    for name, run in workloads():
        if wanted and not any(name.startswith(w) for w in wanted):
            continue
        with tempfile.TemporaryDirectory() as folder:
            show(name, run(build, folder))


if __name__ == '__main__':
    main()
