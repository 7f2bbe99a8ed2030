# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures how the time of commands grows with the size of their data, and lets
the program draw it.

usage: sweep.py BUILD_FOLDER PICTURE_FOLDER [FAMILY...]

For each family a script is run at each size and prints the seconds of one step
several times; the shortest counts. The program itself (growth.vrp) draws
PICTURE_FOLDER/growth_FAMILY.svg: the times beside a line that grows as they
should. A step in the times, or a slope above that of the line, is a fault.
"""
import math
import os
import subprocess
import sys
import tempfile
from typing import Callable, NamedTuple

HERE = os.path.dirname(os.path.abspath(__file__))
REPETITIONS_SECONDS = .3      # for each size, as far as one step is shorter
MOST_REPETITIONS = 200


def half_decades(first, last):
    """1000, 3162, 10000, ..."""
    count = round(2*math.log10(last/first))
    return [int(round(first*10**(k/2))) for k in range(count + 1)]


def powers_of_2(first, last):
    return [2**k for k in range(first, last + 1)]


def linear(n):
    return n


def n_log_n(n):
    return n*math.log(n)


def cubic(n):
    return float(n)**3


class Family(NamedTuple):
    title: str
    counts: str
    law: Callable[[int], float]
    law_name: str
    sizes: list
    before: str       # lines that prepare, with N for the size
    step: str         # lines that are measured


FRACTIONS = 'k = 0:(N-1)\nx = k*0.618033988749895\nx -= floor(x)\n'
SQUARES = ('k = 0:(N*N-1)\nv = k*0.618033988749895\nv -= floor(v)\nA = reshape(v, [N, N])\nB = A + A\'\nM = A\n'
           'for i=1:N;\n    A[i,i] += 10\n')
WORDS = "w = list('word0')\nfor i=1:(N-1);\n    w ,= ['word', trim(str(i*7919 mod 10007))]\ntx = join(w, ' ')\n"

FAMILIES = {
    'loop': Family('a loop on scalars, s += i*i*0.5 + 1', 'passes', linear, 'n', half_decades(1e3, 1e7),
                   's = 0.0\n', 's = 0.0\nfor i=1:N;\n    s += i*i*0.5 + 1\n'),
    'expression': Family('an array expression, sqrt(x)*exp(-x) + 1', 'elements', linear, 'n', half_decades(1e3, 1e7),
                         FRACTIONS + 'y = x\n', 'y = sqrt(x)*exp(-x) + 1\n'),
    'selection': Family('a selection, x[x>0.5 & x<0.75]', 'elements', linear, 'n', half_decades(1e3, 1e7),
                        FRACTIONS + 'y = x\n', 'y = x[x>0.5 & x<0.75]\n'),
    'sort': Family('sort(x)', 'elements', n_log_n, 'n log n', half_decades(1e3, 1e7), FRACTIONS + 'y = x\n',
                   'y = sort(x)\n'),
    'unique': Family('unique(x)', 'elements', n_log_n, 'n log n', half_decades(1e3, 1e7),
                     FRACTIONS + 'x = floor(x*N/10)\ny = x\n', 'y = unique(x)\n'),
    'product': Family('a product of matrices', 'rows', cubic, 'n^{3}', [50, 100, 200, 400, 800, 1600], SQUARES,
                      'M = A . B\n'),
    'solve': Family('solve(A, b)', 'rows', cubic, 'n^{3}', [50, 100, 200, 400, 800, 1600],
                    SQUARES + 'b = B[:,1]\n', 'M = solve(A, b)\n'),
    'fft': Family('fft(x)', 'points', n_log_n, 'n log n', powers_of_2(10, 22), FRACTIONS + 'y = fft(x)\n',
                  'y = fft(x)\n'),
    'words': Family('split and join', 'words', linear, 'n', half_decades(1e3, 1e6), WORDS,
                    "w = split(tx)\ntx = join(w, ' ')\n"),
    'files': Family('qsave and qload', 'elements', linear, 'n', half_decades(1e3, 1e7), FRACTIONS + 'y = x\n',
                    "qsave('v.jmt', x)\ny = qload('v.jmt')\n"),
    'tables': Family('load of a text', 'numbers', linear, 'n', half_decades(1e3, 3e6),
                     'y = [0.0]\n', "y = load('table.txt')\n"),
    'figure': Family('plot and print', 'points', linear, 'n', half_decades(1e3, 1e7),
                     FRACTIONS + 'y = sin(k/N*20)\n', "plot(k, y)\nprint('v.svg');\n"),
    'texts': Family('texts in a figure', 'texts', linear, 'n', [100, 1000, 3000, 10000, 30000, 60000], '',
                    "plot([0,1], [0,1])\nfor i=1:N;\n    text(i/N, 0.5, 'a')\n"),
}


def script(family, n, repetitions):
    lines = family.before + 'for r=1:%d;\n    tic\n' % repetitions
    lines += ''.join('    %s\n' % line for line in family.step.splitlines())
    return (lines + "    t = Toc\n    disp(['@ ', str(t, 9)])\n").replace('N', str(n))


def run(program, folder, text):
    path = os.path.join(folder, 'step.vrp')
    with open(path, 'w') as f:
        f.write('t = 0.0\n' + text)
    done = subprocess.run([program, '--home', folder, path], capture_output=True, text=True, timeout=600)
    times = [float(line.split()[1]) for line in done.stdout.splitlines() if line.startswith('@ ')]
    if done.returncode or not times:
        sys.exit(text + done.stdout + done.stderr)
    return times


def write_table(folder, n):
    with open(os.path.join(folder, 'table.txt'), 'w') as f:
        for r in range(n//10):
            f.write(' '.join('%.9g' % (((10*r + c)*0.618033988749895 % 1)*1000) for c in range(10)) + '\n')


def seconds_of(program, folder, family, n):
    first = min(run(program, folder, script(family, n, 2)))
    repetitions = min(MOST_REPETITIONS, max(3, int(REPETITIONS_SECONDS/max(first, 1e-6))))
    return min([first] + run(program, folder, script(family, n, repetitions)))


def draw(program, folder, family, rows, picture):
    """The line goes through the largest size, where overheads count least."""
    n, last = rows[-1]
    with open(os.path.join(folder, 'growth.txt'), 'w') as f:
        for size, seconds in rows:
            f.write('%d %.9g %.9g\n' % (size, seconds, last*family.law(size)/family.law(n)))
    with open(os.path.join(folder, 'growth_texts.txt'), 'w') as f:
        f.write('%s\n%s\ngrowth with %s\n' % (family.title, family.counts, family.law_name))
    with open(os.path.join(HERE, 'growth.vrp')) as source, open(os.path.join(folder, 'growth.vrp'), 'w') as copy:
        copy.write(source.read())
    done = subprocess.run([program, '--home', folder, os.path.join(folder, 'growth.vrp')], capture_output=True, text=True)
    if done.returncode:
        sys.exit(done.stdout + done.stderr)
    with open(os.path.join(folder, 'growth.svg')) as source, open(picture, 'w') as copy:
        copy.write(source.read())


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    build, pictures, wanted = os.path.abspath(sys.argv[1]), sys.argv[2], sys.argv[3:]
    program = os.path.join(build, 'bin', 'vorpen-cli')
    os.makedirs(pictures, exist_ok=True)
    for name, family in FAMILIES.items():
        if wanted and name not in wanted:
            continue
        with tempfile.TemporaryDirectory(dir=build) as folder:
            rows = []
            for n in family.sizes:
                if name == 'tables':
                    write_table(folder, n)
                rows.append((n, seconds_of(program, folder, family, n)))
            draw(program, folder, family, rows, os.path.join(pictures, 'growth_%s.svg' % name))
        growth = [rows[k + 1][1]/rows[k][1]/(family.law(rows[k + 1][0])/family.law(rows[k][0]))
                  for k in range(len(rows) - 1)]
        print('%-10s' % name + '  '.join('%g: %.3g s' % row for row in rows), flush=True)
        print('          against growth with %s, from size to size: %s'
              % (family.law_name, ' '.join('%.2f' % g for g in growth)), flush=True)


if __name__ == '__main__':
    main()
