# SPDX-License-Identifier: GPL-3.0-or-later
"""The functions of the folder resource as files: each opens with the licence and
a comment that help can show, defines its name, hides no built-in function, has
an example that holds, and is typed in a transcript.

usage: resource_test.py PROGRAM ROOT
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAM = ROOT = None
HEAD = re.compile(r'# SPDX-License-Identifier: GPL-3\.0-or-later\n##\n(.*?)\n##\nfunction ([^\n]*)\n', re.S)
CONSOLE_WIDTH = 82


def typed(lines):
    """What the program shows, with nothing but its own resource files."""
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([PROGRAM, '--home', folder], input='\n'.join(lines) + '\n', text=True,
                              capture_output=True, cwd=folder, timeout=120)
    return done.stdout.split('\n')[:-1]


class Library(unittest.TestCase):
    def setUp(self):
        self.folder = os.path.join(ROOT, 'resource')
        self.texts = {}
        for name in sorted(os.listdir(self.folder)):
            self.assertTrue(name.endswith('.vrp'), name)
            with open(os.path.join(self.folder, name), encoding='ascii') as f:
                self.texts[name[:-4]] = f.read()
        self.public = {n: t for n, t in self.texts.items() if not n.endswith('_')}

    def test_there_are_many(self):
        self.assertGreaterEqual(len(self.public), 40)

    def test_each_file_opens_with_its_comment_and_its_function(self):
        for name, text in self.texts.items():
            head = HEAD.match(text)
            self.assertTrue(head, name)
            self.assertRegex(head.group(2), r'(^|= )%s(\(|$)' % name)
            self.assertRegex(head.group(1), r'^(\[[\w, ]*\] = )?%s(\(.*?\))?: ' % name)
            for line in text.split('\n'):
                self.assertLessEqual(len(line), 110, '%s: %s' % (name, line))
            for line in head.group(1).split('\n'):
                self.assertLessEqual(len(line), CONSOLE_WIDTH, '%s: %s' % (name, line))

    def test_each_is_listed(self):
        with open(os.path.join(ROOT, 'docs/resource.md')) as f:
            listed = re.findall(r'^\| `(?:\[.*?\] = )?(\w+)\(', f.read(), re.M)
        self.assertEqual(sorted(listed), sorted(self.public))

    def test_no_built_in_function_is_hidden(self):
        with open(os.path.join(ROOT, 'src/builtins/registry.cpp')) as f:
            built_in = set(re.findall(r'["<]"?(\$?\w+)"', f.read()))
        self.assertIn('sqrt', built_in)
        self.assertEqual(built_in & set(self.texts), set())

    def test_the_examples_hold(self):
        lines, names = [], []
        for name, text in self.public.items():
            for example in re.findall(r'^Example: (.*)$', text, re.M):
                self.assertIn(name + '(', example)
                expression, value = example.rsplit(' is ', 1)
                names.append(name)
                lines.append('u_=(%s); v_=[%s]; nrow(u_) == nrow(v_) && size(u_) == size(v_) && '
                             'all(reshape(abs(u_-v_) <= 1e-5*abs(v_)+1e-12))' % (expression, value))
                lines.append('clear u_, v_;')
        self.assertEqual(set(names), set(self.public))
        shown = typed(lines)
        self.assertEqual([(n, s) for n, s in zip(names, shown) if s.strip() != '1'], [])
        self.assertEqual(len(shown), len(names))

    def test_each_is_typed_in_a_transcript(self):
        folder = os.path.join(ROOT, 'tests/transcripts')
        text = ''
        for name in os.listdir(folder):
            if name.startswith('resource_'):
                with open(os.path.join(folder, name)) as f:
                    text += f.read()
        lines = '\n'.join(line for line in text.split('\n') if line.startswith('> '))
        self.assertEqual([n for n in self.public if not re.search(r'\b%s\b' % n, lines)], [])
        # Beside what it gives, how it fails.
        able = [n for n, t in self.public.items() if re.search(r'^Fails', t, re.M)]
        self.assertEqual([n for n in able if 'in %s;' % n not in text], [])


if __name__ == '__main__':
    PROGRAM, ROOT = os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2])
    unittest.main(argv=sys.argv[:1])
