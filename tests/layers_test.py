# SPDX-License-Identifier: GPL-3.0-or-later
"""Holds the folders of src/ to their order.

A folder includes only from itself and from the folders above it in LAYERS.
Headers of the window library appear in window/ alone. Every source file opens
with the licence line. The rules are first tried on a small tree made for the
purpose, so that a checker that finds nothing is itself a failure.

usage: layers_test.py ROOT
"""
import os
import re
import sys
import tempfile

LAYERS = ['base', 'values', 'numerics', 'console', 'display', 'eval', 'plot', 'files', 'builtins',
          'frontend', 'engine', 'terminal', 'window']
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)
WINDOW_LIBRARY = re.compile(r'^(Q[A-Z]\w*(\.h)?|Qt\w*/.*|q[a-z]+\.h)$')
LICENCE = 'SPDX-License-Identifier: GPL-3.0-or-later'
SOURCES = ('.h', '.cpp')
LICENSED = SOURCES + ('.py', '.sh', '.cmake', '.lua', '.vrp', 'CMakeLists.txt')
LICENSED_FOLDERS = ('src', 'tests', 'bench', 'scripts', 'resource')


def files_below(folder, endings):
    for path, folders, names in os.walk(folder):
        folders[:] = sorted(f for f in folders if f != '__pycache__')
        for name in sorted(names):
            if name.endswith(endings):
                yield os.path.join(path, name)


def read(path):
    with open(path, encoding='utf-8', errors='replace') as f:
        return f.read()


def faults_of_includes(source_root, path):
    """The faults of one file of src/, as sentences."""
    relative = os.path.relpath(path, source_root).replace(os.sep, '/')
    layer = relative.split('/')[0]
    if layer not in LAYERS:
        yield '%s: the folder "%s" is not in the list of layers' % (relative, layer)
        return
    for bracket, name in INCLUDE.findall(read(path)):
        if layer != 'window' and WINDOW_LIBRARY.match(name):
            yield '%s: includes %s, which belongs to window/' % (relative, name)
            continue
        target = name.split('/')[0]
        if bracket == '<' and target not in LAYERS:
            continue
        if '/' not in name or target not in LAYERS or '..' in name.split('/'):
            yield '%s: includes "%s", which is not written as FOLDER/FILE' % (relative, name)
        elif LAYERS.index(target) > LAYERS.index(layer):
            yield '%s: includes "%s", which lies below %s/ in the order of layers' % (relative, name, layer)


def has_licence(path):
    first = read(path).split('\n')[:2]
    return any(LICENCE in line for line in first)


def check(root):
    """Every fault of a project, and the number of files of src/ looked at."""
    source_root = os.path.join(root, 'src')
    faults, seen = [], 0
    for path in files_below(source_root, SOURCES):
        seen += 1
        faults += faults_of_includes(source_root, path)
    for folder in LICENSED_FOLDERS:
        for path in files_below(os.path.join(root, folder), LICENSED):
            if not has_licence(path):
                faults.append('%s: the licence line is missing' % os.path.relpath(path, root))
    return faults, seen


GOOD = {
    'src/base/text.h': '#include <string>\n#include "base/errors.h"\n',
    'src/values/value.cpp': '#include "values/value.h"\n#include "base/text.h"\n',
    'src/window/main.cpp': '#include <QWidget>\n#include "engine/calc.h"\n',
}
# A file that breaks one rule, and a word of the sentence that must be given for it.
BAD = [
    ('src/values/up.h', '#include "engine/calc.h"\n', 'lies below values/'),
    ('src/base/up.cpp', '  #  include "values/value.h"\n', 'lies below base/'),
    ('src/base/angle.h', '#include <values/value.h>\n', 'lies below base/'),
    ('src/plot/window.h', '#include <QPainter>\n', 'belongs to window/'),
    ('src/terminal/window.cpp', '#include <QtWidgets/QWidget>\n', 'belongs to window/'),
    ('src/engine/qt.cpp', '#include <qwidget.h>\n', 'belongs to window/'),
    ('src/eval/sideways.h', '#include "../values/value.h"\n', 'FOLDER/FILE'),
    ('src/eval/near.h', '#include "near_too.h"\n', 'FOLDER/FILE'),
    ('src/misc/new.h', '', 'not in the list'),
]


def write(root, name, text):
    path = os.path.join(root, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'w', encoding='utf-8') as f:
        f.write(text)


def faults_of_checker():
    """Tries the rules on trees whose faults are known."""
    licence = '// ' + LICENCE + '\n'
    faults = []
    with tempfile.TemporaryDirectory() as root:
        for name, text in GOOD.items():
            write(root, name, licence + text)
        found, seen = check(root)
        if found or seen != len(GOOD):
            faults.append('the checker finds fault with a good tree: %s' % found)
        for name, text, sentence in BAD:
            write(root, name, licence + text)
            found, _ = check(root)
            if len(found) != 1 or name[4:] not in found[0] or sentence not in found[0]:
                faults.append('the checker misses the fault in %s; found %s' % (name, found))
            os.remove(os.path.join(root, name))
        write(root, 'src/base/bare.h', '#pragma once\n')
        found, _ = check(root)
        if found != ['src/base/bare.h: the licence line is missing']:
            faults.append('the checker misses a missing licence line; found %s' % found)
    return faults


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    faults, seen = check(sys.argv[1])
    if not seen:
        faults.append('no sources found')
    faults += faults_of_checker()
    for fault in faults:
        print(fault)
    print('%d files, %d faults' % (seen, len(faults)))
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main())
