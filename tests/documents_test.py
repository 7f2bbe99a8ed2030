# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the sessions that documents show: what they say has to be so.

A fenced block that begins with "> " is part of a session; the blocks of a
document are one. The lines are compared as in a transcript.

usage: documents_test.py TRANSCRIPTS DOCUMENT...
"""
import os
import subprocess
import sys
import tempfile

FENCE = '```'


def session_of(path):
    """The lines of all sessions of a document, in order."""
    session, block, inside = [], [], False
    with open(path, encoding='utf-8') as f:
        for line in f.read().splitlines():
            if not line.startswith(FENCE):
                if inside:
                    block.append(line)
                continue
            if inside and block and block[0].startswith('> '):
                session += block
            block, inside = [], not inside
    return session


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        cases = []
        for path in sys.argv[2:]:
            session = session_of(path)
            if not session:
                sys.exit(path + ': no session')
            cases.append(os.path.join(folder, os.path.basename(path) + '.case'))
            with open(cases[-1], 'w', encoding='utf-8') as f:
                f.write('\n'.join(['=== ' + os.path.basename(path)] + session) + '\n')
        sys.exit(subprocess.run([sys.argv[1]] + cases).returncode)


if __name__ == '__main__':
    main()
