# SPDX-License-Identifier: GPL-3.0-or-later
"""The help texts as files, and their examples as sessions of the program.

A file holds one topic in sections. A section begins with its name and a colon
at the start of a line; what is indented below belongs to it. docs/help.md
tells what the sections mean.
"""
import os
import re
import subprocess
import tempfile

FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'help')
ECHO = re.compile(r'^\s*\d+> ?(.*)$')


def topic_files():
    """All files but the notes on groups, in their order."""
    found = []
    for folder, _, names in os.walk(FOLDER):
        if os.path.basename(folder) != 'groups':
            found += [os.path.join(folder, name) for name in names if name.endswith('.txt')]
    return sorted(found)


def read_sections(path):
    """The sections of a file in their order, each a list of lines."""
    sections, current = {}, None
    with open(path, encoding='utf-8') as file:
        for line in file.read().splitlines():
            if line.startswith('#'):
                continue
            if line and not line[0].isspace():
                name, _, rest = line.partition(':')
                if name in sections:
                    raise ValueError('%s: section "%s" occurs twice' % (path, name))
                current = sections[name] = [rest.strip()] if rest.strip() else []
            elif current is not None:
                current.append(line[2:])
            elif line:
                raise ValueError('%s: text before the first section' % path)
    for lines in sections.values():
        while lines and not lines[-1]:
            lines.pop()
    return sections


def typed_lines(example):
    return [line[2:] for line in example if line.startswith('> ')]


class Session:
    """What the program shows for typed lines, in a folder of its own."""

    def __init__(self, program, typed):
        with tempfile.TemporaryDirectory() as folder:
            environment = {k: v for k, v in os.environ.items() if k not in ('DISPLAY', 'WAYLAND_DISPLAY')}
            done = subprocess.run([program, '--echo', '--no-session', '--home', folder],
                                  input='\n'.join(typed) + '\n', capture_output=True, text=True,
                                  cwd=folder, timeout=60, env=environment)
        if done.returncode < 0:
            raise RuntimeError('%s: died of signal %d' % (typed, -done.returncode))
        self.failed = done.returncode != 0
        self.lines = []
        for line in done.stdout.splitlines():
            echo = ECHO.match(line)
            self.lines.append('> ' + echo.group(1) if echo else line.rstrip())


def folded(lines):
    return [' '.join(line.split()) for line in lines if line.strip()]
