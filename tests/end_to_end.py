# SPDX-License-Identifier: GPL-3.0-or-later
"""The terminal program from outside: its options, its streams, its exit status.

usage: end_to_end.py PROGRAM
"""
import os
import pty
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = None
# Generous, since the same tests run under the sanitizers on a busy machine.
SECONDS = 60


def environment(**extra):
    kept = {k: v for k, v in os.environ.items() if k not in ('DISPLAY', 'WAYLAND_DISPLAY', 'NO_COLOR')}
    return {**kept, **extra}


class Session(unittest.TestCase):
    """Each test has a folder of its own as working directory and home."""

    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = os.path.realpath(self.temporary.name)

    def tearDown(self):
        self.temporary.cleanup()

    def write(self, name, text):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, 'wb') as f:
            f.write(text if isinstance(text, bytes) else text.encode())
        return path

    def run_program(self, *options, typed=b'', home=True, cwd=None):
        """The output (bytes), standard error (text) and exit status."""
        command = [PROGRAM] + (['--home', self.folder] if home else []) + list(options)
        typed = typed if isinstance(typed, bytes) else typed.encode()
        done = subprocess.run(command, input=typed, capture_output=True, timeout=SECONDS,
                              cwd=cwd or self.folder, env=environment())
        self.assertGreaterEqual(done.returncode, 0, 'died of a signal: %s' % done.stderr.decode(errors='replace'))
        return done.stdout, done.stderr.decode(), done.returncode

    def shown(self, *options, status=0, **rest):
        """The lines of output, blanks folded; nothing may come on standard error."""
        out, err, got = self.run_program(*options, **rest)
        self.assertEqual((err, got), ('', status), out.decode())
        return [' '.join(line.split()) for line in out.decode().splitlines()]


class Options(Session):
    def test_version_and_help(self):
        self.assertRegex(self.shown('--version')[0], r'^vorpen-cli \d+\.\d+\.\d+$')
        text = '\n'.join(self.shown('--help'))
        for option in ('-e TEXT', '--echo', '--markup', '--home DIR', '--session', '--no-session', '--version',
                       '--help'):
            self.assertIn(option, text)

    def test_wrong_options(self):
        for words in (['--wrong'], ['-e'], ['--home'], ['a.vrp', 'b.vrp'], ['--home', '/no/such/directory']):
            out, err, status = self.run_program(*words, home=False)
            self.assertEqual((out, status), (b'', 2), words)
            self.assertTrue(err.startswith('vorpen-cli: '), err)

    def test_functions_that_come_with_the_program(self):
        self.assertEqual(self.shown('-e', 'gcd(12,18)'), ['6'])
        self.write('resource/gcd.vrp', 'function y = gcd(a, b)\n    y = 1234;\nend\n')
        self.assertEqual(self.shown('-e', 'gcd(12,18)'), ['1234'])

    def test_functions_of_a_home_with_any_name(self):
        self.folder = os.path.join(self.folder, 'Grüße {x}')
        self.write('resource/sq.vrp', 'function y = sq(x)\n    y = x^2;\nend\n')
        self.assertEqual(self.shown('-e', 'sq(3)'), ['9'])

    def test_functions_of_a_program_that_was_moved(self):
        moved = os.path.join(self.folder, 'prefix/bin/vorpen-cli')
        os.makedirs(os.path.dirname(moved))
        shutil.copy(PROGRAM, moved)
        command = [moved, '--home', self.folder, '-e', 'moved(2)']
        self.assertEqual(subprocess.run(command, capture_output=True, timeout=SECONDS).returncode, 1)
        self.write('prefix/share/vorpen/resource/moved.vrp', 'function y = moved(x)\n    y = x;\nend\n')
        self.assertEqual(subprocess.run(command, capture_output=True, timeout=SECONDS).stdout.strip(), b'2')

    def test_lines_of_e(self):
        self.assertEqual(self.shown('-e', 'x=3;', '-e', 'x+1'), ['4'])

    def test_e_leaves_standard_input_alone(self):
        self.assertEqual(self.shown('-e', '1', typed='2\n'), ['1'])

    def test_echo(self):
        self.assertEqual(self.shown('--echo', typed='x=3\n\nx;\nx+1\n'),
                         ['1> x=3', '3', '2>', '3> x;', '4> x+1', '4'])

    def test_echo_shows_braces_as_typed(self):
        self.assertEqual(self.shown('--echo', '-e', '"{r a}";')[0], '1> "{r a}";')

    def test_markup(self):
        self.assertEqual(self.shown('--echo', '--markup', '-e', '1+', status=1)[-1],
                         '{r dangling operator or more input needed}')
        self.assertEqual(self.shown('--echo', '--markup', '-e', '1')[0], '{g 1> {b:1')

    def test_no_markup_in_plain_output(self):
        self.assertEqual(self.shown('-e', '1+', status=1)[-1], 'dangling operator or more input needed')


class Examples(Session):
    """Each script in examples/ shows what examples/expected/ holds, to the last digit."""
    FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'examples')

    def names(self, folder, ending):
        return sorted(n[:-len(ending)] for n in os.listdir(folder) if n.endswith(ending))

    def test_each_has_its_expected_output(self):
        names = self.names(self.FOLDER, '.vrp')
        self.assertGreaterEqual(len(names), 10)
        self.assertEqual(names, self.names(os.path.join(self.FOLDER, 'expected'), '.txt'))

    def test_output(self):
        for name in self.names(self.FOLDER, '.vrp'):
            with self.subTest(name):
                out, err, status = self.run_program(os.path.realpath(os.path.join(self.FOLDER, name + '.vrp')))
                with open(os.path.join(self.FOLDER, 'expected', name + '.txt'), encoding='utf-8') as f:
                    expected = f.read()
                shown = [line.rstrip() for line in out.decode().splitlines()]
                self.assertEqual(shown, expected.splitlines())
                self.assertEqual((err, status), ('', 0))


class ExitStatus(Session):
    def test_a_failed_line_is_remembered(self):
        self.assertEqual(self.shown(typed='1+\n2\n', status=1)[-1], '2')
        self.shown('-e', '1+', '-e', '2', status=1)
        self.shown(typed='1\n2\n', status=0)

    def test_output_that_cannot_be_written(self):
        with open('/dev/full', 'wb') as full:
            done = subprocess.run([PROGRAM, '--home', self.folder, '-e', '1'], stdout=full, stderr=subprocess.PIPE,
                                  timeout=SECONDS)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b'could not be written', done.stderr)


class Scripts(Session):
    def test_runs_in_its_directory(self):
        self.write('sub/a.vrp', 'use b\nx+1;;\n')
        self.write('sub/b.vrp', 'x=41;\n')
        self.assertEqual(self.shown('sub/a.vrp'), ['42'])
        self.assertEqual(self.shown(os.path.join(self.folder, 'sub', 'a.vrp'), cwd='/'), ['42'])

    def test_extension_may_be_left_out(self):
        self.write('a.vrp', '7;;\n')
        self.assertEqual(self.shown('a'), ['7'])

    def test_name_with_a_blank(self):
        self.write('my dir/my file.vrp', '8;;\n')
        self.assertEqual(self.shown('my dir/my file.vrp'), ['8'])

    def test_lines_of_e_come_first(self):
        self.write('a.vrp', 'x+1;;\n')
        self.assertEqual(self.shown('-e', 'x=1;', 'a.vrp'), ['2'])

    def test_missing_script(self):
        self.assertEqual(self.shown('nosuch', status=1), ["could not find script file 'nosuch.vrp'"])
        self.shown('no/such/file.vrp', status=1)

    def test_script_that_uses_itself(self):
        self.write('a.vrp', 'use a\n')
        lines = self.shown(typed='use a\n1+1\n', status=1)
        self.assertEqual(lines[-1], '2')
        self.assertGreater(len(lines), 1)

    def test_line_ends(self):
        self.write('a.vrp', b'x=1;\r\nx+1;;\r\n')
        self.assertEqual(self.shown('a.vrp'), ['2'])


class PipedInput(Session):
    def test_each_line_is_typed(self):
        self.assertEqual(self.shown(typed='r=3; pi r^2\n'), ['28.2743339 = (9pi)'])

    def test_last_line_needs_no_end(self):
        self.assertEqual(self.shown(typed='1\n2'), ['1', '2'])

    def test_no_input(self):
        self.assertEqual(self.shown(typed=''), [])
        self.assertEqual(self.shown(typed='\n\n'), [])

    def test_line_ends_of_another_system(self):
        self.assertEqual(self.shown(typed='1\r\n2\r\n'), ['1', '2'])

    def test_line_of_a_megabyte(self):
        lines = self.shown(typed='1' + '+1' * 500000 + '\n2\n')
        self.assertEqual(lines[-2:], ['500001', '2'])

    def test_megabyte_of_one_name(self):
        self.assertEqual(self.shown(typed='x' * 1000000 + '\n2\n', status=1)[-1], '2')

    def test_unclosed_string(self):
        lines = self.shown(typed='"abc\n2\n', status=1)
        self.assertTrue(any('unterminated string' in line for line in lines), lines)
        self.assertEqual(lines[-1], '2')

    def test_zero_bytes(self):
        out, _, _ = self.run_program(typed=b'1\0 + 2\n\0\n2\n')
        self.assertEqual(out.split(b'\n')[-2], b'2')

    def test_bytes_above_127(self):
        self.assertEqual(self.shown(typed='"h\u00e9 \u20ac"\n'), ['h\u00e9 \u20ac'])
        out, _, _ = self.run_program(typed=b'\xff\xfe\x80\n"\xe9"\n2\n')
        self.assertEqual(out.decode().split('\n')[-3:], ['\u00e9', '2', ''])

    def test_deep_nesting(self):
        for opening, closing in (('(', ')'), ('[', ']'), ('{', '}'), ('sin(', ')'), ('-', '')):
            typed = opening * 100000 + '1' + closing * 100000 + '\n2\n'
            out, _, _ = self.run_program(typed=typed)
            self.assertEqual(out.decode().split('\n')[-2], '2', opening)


class TerminalSession(Session):
    """The program on a terminal of its own."""

    def talk(self, keys, *options):
        """Types the keys, each after a prompt, or with (pattern, keys) after what the pattern describes; the
        output as text."""
        child, terminal = pty.fork()
        if child == 0:
            os.chdir(self.folder)
            os.execve(PROGRAM, [PROGRAM, '--home', self.folder] + list(options), environment(TERM='xterm-256color'))
        shown = ''
        for key in keys:
            pattern, key = key if isinstance(key, tuple) else (r'> (\x1b\[0m)?$', key)
            shown += self.read_until(terminal, pattern)
            if callable(key):
                key(child)
            else:
                os.write(terminal, key.encode())
        shown += self.read_until(terminal, None)
        _, status = os.waitpid(child, 0)
        os.close(terminal)
        self.assertTrue(os.WIFEXITED(status), shown)
        self.status = os.WEXITSTATUS(status)
        return shown

    def read_until(self, terminal, pattern):
        shown, end = '', time.monotonic() + SECONDS
        while time.monotonic() < end:
            if not select.select([terminal], [], [], 1)[0]:
                continue
            try:
                piece = os.read(terminal, 65536)
            except OSError:
                piece = b''
            if not piece:
                return shown
            shown += piece.decode(errors='replace')
            if pattern and re.search(pattern, shown):
                return shown
        self.fail('no answer in time: %r' % shown)


class Terminal(TerminalSession):
    def test_prompt(self):
        shown = self.talk(['x=3\n', 'x+1\n', '\x04'], '--no-session')
        plain = re.sub(r'\x1b\[[?0-9;]*[A-Za-z]', '', shown).replace('\r', '').split('\n')
        folded = [' '.join(line.split()) for line in plain]
        self.assertEqual(folded, ['1> x=3', '3', '2> x+1', '4', '3>', ''])
        self.assertIn('\x1b[', shown)
        self.assertEqual(self.status, 0)

    def test_control_c_gives_up_the_line(self):
        shown = self.talk(['1+\x03', '5+2\n', '\x04'], '--no-session')
        self.assertIn('\n7', re.sub(r'\x1b\[[?0-9;]*[A-Za-z]|[ \r]', '', shown))
        self.assertEqual(self.status, 0)


if __name__ == '__main__':
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
