#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes what the program shows into the examples of the help texts.

usage: helpers/update_examples.py [PROGRAM] [FILE...]

The program is build/bin/vorpen-cli unless another one is given. The examples
of all topics, or of the given files, are typed into it. An example that needs
a function which is not there yet becomes an "example pending" without output,
and an "example" again once it is there. An example that fails is named, since
few are meant to; look at what has changed before you keep it.
"""
import os
import sys

from help_files import Session, read_sections, topic_files, typed_lines

KINDS = ('example', 'example pending')


def replace_example(path, kind, lines):
    """The file with its example under another name and with other lines."""
    kept, skipping, done = [], False, False
    with open(path, encoding='utf-8') as file:
        for line in file.read().splitlines():
            starts = line and not line[0].isspace()
            if starts:
                skipping = line.partition(':')[0] in KINDS
                if skipping and not done:
                    kept += [kind + ':'] + ['  ' + text if text else '' for text in lines]
                    done = True
            if not skipping:
                kept.append(line)
    with open(path, 'w', encoding='utf-8') as file:
        file.write('\n'.join(kept) + '\n')


def update(program, path):
    """What has become of the example: kept, changed, pending, or none."""
    sections = read_sections(path)
    for kind in KINDS:
        if kind not in sections:
            continue
        typed = typed_lines(sections[kind])
        session = Session(program, typed)
        new = ('example', session.lines) if session.available else ('example pending', ['> ' + t for t in typed])
        if session.failed and session.available:
            print('fails: ' + os.path.relpath(path))
        if new != (kind, sections[kind]):
            replace_example(path, *new)
            return 'changed' if session.available else 'pending'
        return 'kept' if session.available else 'pending'
    return 'none'


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
