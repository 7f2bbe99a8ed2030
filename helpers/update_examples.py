#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes what the program shows into the examples of the help texts.

usage: helpers/update_examples.py [PROGRAM] [FILE...]

The program is build/bin/vorpen-cli unless another one is given. The examples
of all topics, or of the given files, are typed into it. An example that fails
is named, since few are meant to; look at what has changed before you keep it.
"""
import os
import sys

from help_files import Session, read_sections, topic_files, typed_lines


def replace_example(path, lines):
    """The file with other lines in its example."""
    kept, skipping = [], False
    with open(path, encoding='utf-8') as file:
        for line in file.read().splitlines():
            if line and not line[0].isspace():
                skipping = line.partition(':')[0] == 'example'
                if skipping:
                    kept += ['example:'] + ['  ' + text if text else '' for text in lines]
            if not skipping:
                kept.append(line)
    with open(path, 'w', encoding='utf-8') as file:
        file.write('\n'.join(kept) + '\n')


def update(program, path):
    """What has become of the example: kept, changed, or none."""
    example = read_sections(path).get('example')
    if example is None:
        return 'none'
    session = Session(program, typed_lines(example))
    if session.failed:
        print('fails: ' + os.path.relpath(path))
    if session.lines == example:
        return 'kept'
    replace_example(path, session.lines)
    return 'changed'


def main(arguments):
    here = os.path.dirname(os.path.abspath(__file__))
    program = os.path.join(os.path.dirname(here), 'build', 'bin', 'vorpen-cli')
    if arguments and not arguments[0].endswith('.txt'):
        program = arguments.pop(0)
    counts = {}
    for path in arguments or topic_files():
        result = update(os.path.abspath(program), path)
        counts[result] = counts.get(result, 0) + 1
    print(', '.join('%d %s' % (n, what) for what, n in sorted(counts.items())))


if __name__ == '__main__':
    main(sys.argv[1:])
