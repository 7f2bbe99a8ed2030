#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the scripts of examples/gallery and puts their figures on one sheet.

usage: contact_sheet.py PROGRAM FILE.png [COLUMNS [NAME...]]

Needs rsvg-convert. That renderer knows less of SVG than browsers do, so the
figures are put into other words for it: it draws no list of points with a
comma at its end, has no vertical alignment of text, and takes another size of
type where none is named.
"""
import base64
import os
import re
import subprocess
import sys
import tempfile

WIDTH, HEIGHT = 570, 406
FONT_SIZE = 16
# From the middle and the top of small letters down to the base line.
BELOW = {'auto': 0, 'middle': 5, 'hanging': 12}


def gallery():
    return os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'examples', 'gallery')


def figures(program, names):
    """The SVG text of each script's figure, by name."""
    found = {}
    for name in names:
        with tempfile.TemporaryDirectory() as home:
            script = os.path.join(home, name + '.vrp')
            with open(os.path.join(gallery(), name + '.vrp')) as f, open(script, 'w') as copy:
                copy.write(f.read())
            done = subprocess.run([program, '--home', home, script], capture_output=True, text=True, timeout=120)
            if done.returncode or done.stdout or done.stderr:
                sys.exit('%s: %s%s' % (name, done.stdout, done.stderr))
            with open(os.path.join(home, name + '.svg')) as f:
                found[name] = f.read()
    return found


def reworded(svg):
    lines, below = [], 0
    for line in svg.replace(', \n"', '\n"').split('\n'):
        group = re.search(r'dominant-baseline:(\w+)', line)
        if group:
            below = BELOW[group.group(1)]
        if line.startswith('<text '):
            line = re.sub(r' y="(-?\d+)"', lambda m: ' y="%d"' % (int(m.group(1)) + below), line, count=1)
        lines.append(line)
    text = '\n'.join(lines)
    return text.replace('stroke="black"', 'font-size="%d" font-family="Times New Roman, Liberation Serif, serif" '
                                          'stroke="black"' % FONT_SIZE, 1)


def rendered(svg):
    return subprocess.run(['rsvg-convert', '--unlimited', '-b', 'white'], input=reworded(svg).encode(),
                          capture_output=True, check=True).stdout


def sheet(pictures, columns):
    rows = -(-len(pictures) // columns)
    out = ['<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" '
           'width="%d" height="%d">' % (columns * WIDTH, rows * HEIGHT)]
    for k, picture in enumerate(pictures):
        out.append('<image x="%d" y="%d" width="%d" height="%d" xlink:href="data:image/png;base64,%s"/>'
                   % (k % columns * WIDTH, k // columns * HEIGHT, WIDTH, HEIGHT, base64.b64encode(picture).decode()))
    return '\n'.join(out + ['</svg>'])


def main(program, target, columns='4', *names):
    names = names or sorted(n[:-4] for n in os.listdir(gallery()) if n.endswith('.vrp'))
    pictures = [rendered(svg) for svg in figures(os.path.abspath(program), names).values()]
    whole = sheet(pictures, int(columns))
    scale = ['-z', '0.5'] if int(columns) > 2 else []
    with open(target, 'wb') as f:
        f.write(subprocess.run(['rsvg-convert', '--unlimited', '-b', 'white'] + scale, input=whole.encode(),
                               capture_output=True, check=True).stdout)


if __name__ == '__main__':
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
