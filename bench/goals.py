# SPDX-License-Identifier: GPL-3.0-or-later
"""What each workload measures, and how fast it shall be.

One row for each figure: workload, key, what it is, the goal in seconds (in MiB
for memory), what the time is judged against and the largest ratio to that, how
the runs are put together, and why the goal is not reached, where it is not.

A time in seconds depends on the machine and on who else uses it, the ratio to
a program that ran in the same minute hardly does: a goal counts as reached by
either. `limit` is the plain C++ program of the workload, any other name a
peer. A goal that is met by far is raised.
"""
from typing import NamedTuple

MIB = 'MiB'


class Row(NamedTuple):
    workload: str
    key: str
    title: str
    goal: float
    against: str
    ratio: float
    statistic: str = 'best'
    unit: str = 's'
    reason: str = ''


ROWS = [
    Row('w01', 'start', 'start and one expression', .002, 'limit', 3.4, 'median'),
    Row('w01', 'start memory', 'peak memory of that', 6, 'limit', 4.4, 'median', MIB),
    Row('w02', 'sum', 'sum of 1e7 terms in a loop', .070, 'limit', 8.5,
        reason='57 machine instructions a round: 22 for the loop, 21 for three nodes of arithmetic, 14 for the assignment'),
    Row('w02', 'collatz', 'Collatz sequences to 3e4', .055, 'limit', 18,
        reason='148 machine instructions a round: 31 for the block of two statements, 29 for the loop with its condition, 27 for the choice, 26 for the remainder, 26 for assignments and arithmetic'),
    Row('w03', 'sieve', 'sieve of 2e6', .045, 'limit', 8.2),
    Row('w03', 'matmul', 'product of 200 rows in the language', .075, 'limit', 13,
        reason='99 machine instructions in the innermost round: 43 for two elements with the checks of their indices and their product, 25 for the loop, 14 for the assignment'),
    Row('w04', 'fib', 'fib(24), recursive', .0022, 'limit', 9.7,
        reason='110 machine instructions a call, 52 of them for the call itself: signature, debugger, depth, room on the stack and a wish for attention are looked at'),
    Row('w04', 'quick', 'function of one line, 1e6 calls', .008, 'limit', 5.9),
    Row('w05', 'fma', '`a+b*p-d/q`, 1e7', .018, 'limit', 1.4),
    Row('w05', 'sincos', '`sin(x)^2+cos(x)^2`, 1e7', .056, 'limit', 3.7),
    Row('w05', 'sqrtexp', '`sqrt(x)*exp(-x)`, 1e7', .029, 'limit', 3.3),
    Row('w05', 'mask', '`x[x>0.5 & x<0.75]`, 1e7', .0085, 'limit', 1.7),
    Row('w05', 'sum', '`sum`, 1e7, in order', .0085, 'limit', 1.05),
    Row('w05', 'mean', '`mean`, 1e7, in order', .0085, 'limit', 1.05),
    Row('w05', 'max', '`max`, 1e7', .0023, 'limit', 1.5),
    Row('w05', 'cumsum', '`cumsum`, 1e7', .0090, 'limit', 1.09),
    Row('w05', 'small', '`a+b*p-d/q`, 100 elements, 1e5 times', .010, 'limit', 3.1,
        reason='one pass of 13 ns for each operation, 33 ns for the quotients, where the limit makes one pass of all; 24 ns for the round'),
    Row('w06', 'grow', '`x ,= i`, 1e5 times', .003, 'limit', 3.5),
    Row('w07', 'mul1000', 'product, 1000 rows', .020, 'limit', 1.05),
    Row('w07', 'mul2000', 'product, 2000 rows', .156, 'limit', 1.05),
    Row('w07', 'solve', '`solve`, 1000 rows', .013, 'limit', 1.2),
    Row('w07', 'det', '`det`, 1000 rows', .013, 'limit', 1.2),
    Row('w07', 'inv', '`inv`, 500 rows', .0080, 'limit', 1.2),
    Row('w07', 'eigval', '`eigval`, 400 rows', .0195, 'GSL', 1.05),
    Row('w07', 'eigvec', '`eigvec`, 400 rows', .098, 'GSL', 1.05,
        reason='nearly all is the library\'s own QR steps, which turn the columns of the vectors pair by pair'),
    Row('w08', 'fft', '`fft`, 2^20 points', .030, 'limit', 3),
    Row('w09', 'sort', '`sort`, 1e6', .020, 'limit', 1.4),
    Row('w09', 'unique', '`unique`, 1e6', .016, 'limit', 1.5),
    Row('w09', 'sortind', '`sortind`, 1e6', .034, 'limit', 1.1),
    Row('w10', 'split', '`split`, 1e5 words', .005, 'limit', 2.2,
        reason='two allocations for each word, its value and its codes, and the release of the former ones'),
    Row('w10', 'join', '`join`, 1e5 words', .0025, 'limit', 1.3,
        reason='each word is fetched from memory in two steps, its value and its codes; and the codes become '
               'doubles when they are stored in a variable of that type'),
    Row('w10', 'str', '`str`, 1e5 numbers', .014, 'limit', 2.2),
    Row('w11', 'integ', '`integ`, 1000 times', .020, 'limit', 1.16,
        reason='of counted instructions 64 % are the library\'s own work, 13 % the sine, the rest the way of a point to the nodes of the function'),
    Row('w11', 'fzero', '`fzero`, 1e5 times', .026, 'limit', 2.0),
    Row('w11', 'ode', '`ode`, van der Pol to t = 100', .0010, 'limit', 4.5,
        reason='1150 machine instructions for a call of the function, of which the numbers of its array take 400 and pow 145; the rest is its setting up as an array, point and answer'),
    Row('w11', 'lsfit', '`lsfit`, 1000 points, 4 parameters', .0006, 'limit', 1.6),
    Row('w12', 'load', '`load`, 1e6 numbers', .040, 'limit', 1.25, 'median'),
    Row('w12', 'write', '`qsave`, 6e6 numbers', .012, 'limit', 1.3, 'median',
        reason='the copy into the system\'s cache; numbers lie 16 bytes behind the head of the file, so that they '
               'pass through an aligned buffer; a file that is replaced while the disk still writes it is waited for'),
    Row('w12', 'read', '`qload`, 6e6 numbers', .010, 'limit', 1.15, 'median'),
    Row('w13', 'svg', '`plot` and `print` of 1e5 points', .004, 'limit', 3.6),
    Row('w13', 'texts', '2e4 texts in one figure', .025, 'limit', 12),
    Row('w14', 'memory', 'peak memory, `x` and `y=f(x)` of 1e7', 162, 'limit', 1.05, 'median', MIB),
    Row('w15', 'compile', 'compile and run 10,000 lines', .3, 'python3', 1, 'median'),
]
