# SPDX-License-Identifier: GPL-3.0-or-later
"""The program at a terminal: keys go in, and what stands on the screen is read.

usage: terminal_session.py PROGRAM
"""
import codecs
import fcntl
import os
import pty
import random
import re
import select
import signal
import struct
import sys
import tempfile
import termios
import time
import unittest

import end_to_end

# Generous, since the same tests run under the sanitizers on a busy machine.
SECONDS = 60
UP, DOWN, RIGHT, LEFT, HOME, END, DELETE = (
    b'\x1b[A', b'\x1b[B', b'\x1b[C', b'\x1b[D', b'\x1b[H', b'\x1b[F', b'\x1b[3~')


class Screen:
    """Just enough of a terminal for what the program sends; anything else is a fault."""

    TOKEN = re.compile(r'\x1b\[([?0-9;]*)([A-Za-z])|[\r\n\b]|[^\x00-\x1f\x7f]+')

    def __init__(self, columns):
        self.columns = columns
        self.rows, self.row, self.column = [[]], 0, 0
        self.colours, self.style, self.modes, self.waiting = {}, '', set(), ''

    def feed(self, text):
        text = self.waiting + text
        unfinished = re.search(r'\x1b(\[[?0-9;]*)?$', text)
        self.waiting = unfinished.group() if unfinished else ''
        text = text[:len(text) - len(self.waiting)]
        at = 0
        while at < len(text):
            token = self.TOKEN.match(text, at)
            if not token:
                raise AssertionError('what no terminal knows: %r' % text[at:at + 20])
            at = token.end()
            if token.group(2):
                self.obey(token.group(1), token.group(2))
            elif token.group() == '\r':
                self.column = 0
            elif token.group() == '\n':
                self.next_row()
            elif token.group() == '\b':
                self.column = max(self.column - 1, 0)
            else:
                for character in token.group():
                    self.put(character)

    def next_row(self):
        self.row += 1
        if self.row == len(self.rows):
            self.rows.append([])

    def put(self, character):
        if self.column == self.columns:
            self.next_row()
            self.column = 0
        cells = self.rows[self.row]
        cells.extend(' ' * (self.column + 1 - len(cells)))
        cells[self.column] = character
        self.colours[self.row, self.column] = self.style
        self.column += 1

    def obey(self, parameters, final):
        if final in 'hl' and parameters.startswith('?'):
            (self.modes.add if final == 'h' else self.modes.discard)(parameters)
        elif final == 'm':
            self.style = '' if parameters in ('', '0') else parameters
        elif final in 'CD':
            step = int(parameters or 1)
            self.column = min(self.column + step, self.columns - 1) if final == 'C' else max(self.column - step, 0)
        elif final == 'A':
            self.row = max(self.row - int(parameters or 1), 0)
        elif final == 'K' and not parameters:
            del self.rows[self.row][self.column:]
        elif final == 'J' and not parameters:
            del self.rows[self.row][self.column:]
            del self.rows[self.row + 1:]
        elif (parameters, final) == ('2', 'J'):
            self.rows, self.row = [[]], 0
        elif (parameters, final) == ('', 'H'):
            self.row = self.column = 0
        else:
            raise AssertionError('unknown sequence %s%s' % (parameters, final))

    def lines(self):
        return [''.join(row).rstrip() for row in self.rows]

    def folded(self):
        return [' '.join(line.split()) for line in self.lines()]


class Talk:
    """A running program, its terminal and its screen."""

    def __init__(self, folder, *options, size=(80, 24), **environment):
        self.screen = Screen(size[0])
        self.raw = b''
        self.child, self.terminal = pty.fork()
        if self.child == 0:
            os.chdir(folder)
            variables = end_to_end.environment(**{'TERM': 'xterm-256color', **environment})
            variables.pop('COLORTERM', None) if 'COLORTERM' not in environment else None
            fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack('HHHH', size[1], size[0], 0, 0))
            os.execve(end_to_end.PROGRAM, [end_to_end.PROGRAM, '--home', folder, *options], variables)
        self.ended = False
        self.decoder = codecs.getincrementaldecoder('utf-8')('replace')

    def resize(self, columns, rows):
        self.screen.columns = columns
        fcntl.ioctl(self.terminal, termios.TIOCSWINSZ, struct.pack('HHHH', rows, columns, 0, 0))

    def fold(self, columns):
        """As resize, in a terminal that folds rows that are too long for it."""
        screen, rows = self.screen, []
        for number, cells in enumerate(screen.rows):
            if number == screen.row:
                screen.row, screen.column = len(rows) + screen.column // columns, screen.column % columns
            rows += [cells[at:at + columns] for at in range(0, max(len(cells), 1), columns)]
        screen.rows = rows + [[] for _ in range(screen.row + 1 - len(rows))]
        self.resize(columns, 5)

    def read(self, seconds):
        """Reads what comes within a time; False at the end of the program."""
        if not self.ended and select.select([self.terminal], [], [], seconds)[0]:
            try:
                piece = os.read(self.terminal, 65536)
            except OSError:
                piece = b''
            self.ended = not piece
            self.raw += piece
            self.screen.feed(self.decoder.decode(piece))
        return not self.ended

    def until(self, condition, what='?'):
        end = time.monotonic() + SECONDS
        while not condition():
            if time.monotonic() > end:
                raise AssertionError('no %s in time: %r' % (what, self.screen.lines()[-8:]))
            if not self.read(0.05) and not condition():
                raise AssertionError('the program ended before %s: %r' % (what, self.screen.lines()[-8:]))

    def prompt(self, number):
        self.until(lambda: self.screen.lines()[self.screen.row].rstrip() == '%d>' % number and
                   '?2004' in self.screen.modes, 'prompt %d' % number)

    def send(self, keys):
        keys = keys.encode() if isinstance(keys, str) else keys
        while keys:
            # The terminal's own buffer is small; what the program answers must be read meanwhile.
            _, writable, _ = select.select([], [self.terminal], [], 0.05)
            if writable:
                keys = keys[os.write(self.terminal, keys[:1024]):]
            self.read(0)

    def shows(self, line):
        self.until(lambda: line in self.screen.folded(), repr(line))

    def line_is(self, line):
        self.until(lambda: self.screen.lines()[self.screen.row] == line, repr(line))

    def runs(self):
        """Waits until a line has begun to run."""
        self.until(lambda: '?2004' not in self.screen.modes and
                   not termios.tcgetattr(self.terminal)[3] & termios.ECHO, 'the start')

    def is_sane(self):
        """Whether the terminal shows what is typed, by lines, and takes no paste marks."""
        local = termios.tcgetattr(self.terminal)[3]
        return bool(local & termios.ICANON and local & termios.ECHO and local & termios.ISIG) and \
            '?2004' not in self.screen.modes

    def end(self):
        """Waits for the end; the exit status, negative for a signal."""
        end = time.monotonic() + SECONDS
        while time.monotonic() < end:
            self.read(0.02)
            child, status = os.waitpid(self.child, os.WNOHANG)
            if child:
                while self.read(0.05) and select.select([self.terminal], [], [], 0.05)[0]:
                    pass
                self.child = None
                return os.waitstatus_to_exitcode(status)
        raise AssertionError('the program does not end: %r' % self.screen.lines()[-8:])

    def leave(self):
        # The key means this at a prompt only.
        if b'?2004h' in self.raw:
            self.until(lambda: '?2004' in self.screen.modes, 'a prompt')
        self.send(b'\x04')
        return self.end()

    def close(self):
        if self.child:
            os.kill(self.child, signal.SIGKILL)
            os.waitpid(self.child, 0)
        os.close(self.terminal)


class TerminalTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = os.path.realpath(temporary.name)

    def content(self, name):
        with open(os.path.join(self.folder, name), 'rb') as file:
            return file.read()

    def talk(self, *options, **rest):
        talk = Talk(self.folder, *(options or ('--no-session',)), **rest)
        self.addCleanup(talk.close)
        talk.prompt(1)
        return talk


class Editing(TerminalTest):
    def test_line_and_result(self):
        talk = self.talk()
        talk.send('x=3\r')
        talk.prompt(2)
        self.assertEqual(talk.screen.folded(), ['1> x=3', '3', '2>'])
        self.assertEqual(talk.leave(), 0)
        self.assertTrue(talk.is_sane())

    def test_caret_and_deletion(self):
        talk = self.talk()
        talk.send('1+3')
        talk.line_is('1> 1+3')
        talk.send(LEFT + b'2')
        talk.line_is('1> 1+23')
        talk.send(HOME + DELETE + b'5' + END + b'\x7f')
        talk.line_is('1> 5+2')
        self.assertEqual(talk.screen.column, 6)
        talk.send('\r')
        talk.shows('7')

    def test_keys_of_the_editor(self):
        talk = self.talk()
        talk.send(b'a=b+c\x02')
        talk.line_is('1> a=(b+c)')
        talk.send(b'\x1b[1;5D')
        talk.until(lambda: talk.screen.column == 9, 'the caret at the bracket')
        talk.send(b'\x1b')
        talk.line_is('1>')

    def test_history(self):
        talk = self.talk()
        for number, line in enumerate(('x=1;', 'y=2;', 'x+y')):
            talk.send(line + '\r')
            talk.prompt(number + 2)
        talk.send(UP)
        talk.line_is('4> x+y')
        talk.send(UP + UP)
        talk.line_is('4> x=1;')
        talk.send(DOWN)
        talk.line_is('4> y=2;')
        talk.send(b'\x1bx' + UP + UP)
        talk.line_is('4> x=1;')

    def test_history_of_the_former_session(self):
        first = self.talk('--session')
        first.send('x=17\r')
        first.prompt(2)
        self.assertEqual(first.leave(), 0)
        second = self.talk('--session')
        second.send(UP)
        second.line_is('1> x=17')

    def test_colours_of_quotes_and_of_the_matching_bracket(self):
        talk = self.talk()
        talk.send('x="a"+((1))')
        talk.line_is('1> x="a"+((1))')
        style = lambda column: talk.screen.colours[0, column]
        self.assertEqual(style(5), style(7))
        self.assertNotEqual(style(3), style(5))
        self.assertNotIn(style(9), (style(3), style(5)))   # the match of the last bracket
        self.assertEqual(style(10), style(5))

    def test_matching_brackets_follow_the_caret(self):
        talk = self.talk()
        talk.send('((1))')
        talk.line_is('1> ((1))')
        lit = talk.screen.colours[0, 3]
        talk.send(LEFT)
        talk.until(lambda: talk.screen.colours[0, 4] == lit and talk.screen.colours[0, 3] != lit, 'the inner one lit')

    def test_clear_screen(self):
        talk = self.talk()
        talk.send('x=3\r')
        talk.prompt(2)
        talk.send('y=\x0c')
        talk.until(lambda: talk.screen.lines() == ['2> y='], 'an empty screen')

    def test_control_c_drops_the_line(self):
        talk = self.talk()
        talk.send('1+\x03')
        talk.prompt(1)
        talk.send('5+2\r')
        talk.shows('7')

    def test_who_looks_for_the_way_out_is_told(self):
        talk = self.talk()
        talk.send('quit\r')
        talk.prompt(2)
        self.assertEqual(talk.screen.folded()[-2:], ['(Control+D leaves)', '2>'])
        talk.send('quit=5;\r')
        talk.prompt(3)
        talk.send('quit\r')
        talk.prompt(4)
        self.assertEqual(talk.screen.folded()[-2:], ['5', '4>'])

    def test_control_d_leaves_only_at_an_empty_line(self):
        talk = self.talk()
        talk.send(b'ab' + HOME + b'\x04')
        talk.line_is('1> b')
        talk.send(DELETE)
        talk.line_is('1>')
        self.assertEqual(talk.leave(), 0)

    def test_accents(self):
        talk = self.talk()
        talk.send('"h\u00e9\u20ac"' + '\r')
        talk.shows('h\u00e9\u20ac')

    def test_completion(self):
        talk = self.talk()
        talk.send('longname=5;\r')
        talk.prompt(2)
        talk.send('2+longn\t')
        talk.line_is('2> 2+longname')
        talk.send(b'\x1beigv')
        talk.send(b'\0')
        talk.shows('eigval eigvec eigvv')
        talk.line_is('2> eigv')
        talk.send(b'\x1b  \t')
        talk.until(lambda: talk.screen.column == 7, 'the place of a tab')

    def test_completion_of_paths(self):
        os.mkdir(os.path.join(self.folder, 'some folder'))
        open(os.path.join(self.folder, 'some folder', 'data.txt'), 'w').close()
        talk = self.talk()
        talk.send('x=load("so\t')
        talk.line_is('1> x=load("some folder/')
        talk.send(b'\0')
        talk.line_is('1> x=load("some folder/data.txt')

    def test_without_colours(self):
        talk = self.talk(NO_COLOR='1')
        talk.send('{r\r')
        talk.prompt(2)
        self.assertNotRegex(talk.raw, rb'\x1b\[[0-9;]*m')

    def test_depth_of_colours(self):
        for environment, style in (({'TERM': 'xterm'}, rb'\x1b\[3[0-7]m'), ({}, rb'\x1b\[38;5;'),
                                   ({'COLORTERM': 'truecolor'}, rb'\x1b\[38;2;')):
            self.assertRegex(self.talk(**environment).raw, style)

    def test_terminal_that_cannot_edit(self):
        talk = Talk(self.folder, '--no-session', TERM='dumb')
        self.addCleanup(talk.close)
        talk.until(lambda: talk.screen.lines()[-1] == '1>', 'the prompt')
        talk.send('1+1\n')
        talk.shows('2')
        self.assertNotIn(b'\x1b', talk.raw)


class Pasting(TerminalTest):
    def paste(self, talk, text):
        talk.send(b'\x1b[200~' + text.encode() + b'\x1b[201~')

    def test_one_line_goes_into_the_line(self):
        talk = self.talk()
        self.paste(talk, '1+1\n')
        talk.line_is('1> 1+1')
        talk.send('\r')
        talk.shows('2')

    def test_several_lines_run_at_once(self):
        talk = self.talk()
        self.paste(talk, 's=0;\nfor k=1:4\n    s=s+k;\nx=s;\n')
        talk.prompt(2)
        talk.send('s\r')
        talk.shows('10')

    def test_the_line_being_typed_stays(self):
        talk = self.talk()
        talk.send('y=')
        talk.line_is('1> y=')
        self.paste(talk, 'x=1;\nz=2;')
        talk.until(lambda: talk.screen.lines()[talk.screen.row] == '2> y=', 'the line')

    def test_ten_megabytes_of_one_line(self):
        talk = self.talk()
        self.paste(talk, 'x=' + '1+' * 5000000 + '1')
        talk.until(lambda: talk.screen.lines()[talk.screen.row].endswith('+1+1'), 'the end of the line')
        talk.send('\x03')
        talk.prompt(1)
        talk.send('2+2\r')
        talk.until(lambda: talk.screen.folded()[-2] == '4', 'an answer')

    def test_ten_megabytes_of_lines(self):
        talk = self.talk()
        self.paste(talk, 'x=1;\n' * 2000000 + 'y=7;\n')
        talk.prompt(2)
        talk.send('y\r')
        talk.shows('7')


class Sizes(TerminalTest):
    def test_line_longer_than_the_screen(self):
        talk = self.talk(size=(20, 10))
        talk.send('1' + '+1' * 30)
        talk.until(lambda: talk.screen.lines()[0].endswith('+1+1'), 'the end of the line')
        self.assertEqual(len(talk.screen.lines()), 1)
        self.assertLess(talk.screen.column, 20)
        talk.send(HOME)
        talk.until(lambda: talk.screen.lines()[0].startswith('1> 1+1'), 'its start')
        talk.send('\r')
        talk.shows('31')

    def test_resize(self):
        talk = self.talk()
        talk.send('1' + '+1' * 20)
        talk.line_is('1> 1' + '+1' * 20)
        talk.resize(12, 5)
        talk.until(lambda: len(talk.screen.lines()[talk.screen.row]) < 12, 'a shorter row')
        talk.resize(100, 30)
        talk.line_is('1> 1' + '+1' * 20)

    def test_rows_that_the_terminal_folded_are_gone(self):
        talk = self.talk()
        talk.send('7\r')
        talk.prompt(2)
        talk.send('1' + '+1' * 20)
        talk.line_is('2> 1' + '+1' * 20)
        talk.fold(12)
        talk.until(lambda: len(talk.screen.lines()) == 3 and talk.screen.lines()[2].endswith('+1'), 'one row')
        self.assertEqual(talk.screen.folded()[:2], ['1> 7', '7'])

    def test_rows_that_the_terminal_cut_stay(self):
        talk = self.talk(XTERM_VERSION='XTerm(379)')
        talk.send('7\r')
        talk.prompt(2)
        talk.send('1' + '+1' * 20)
        talk.line_is('2> 1' + '+1' * 20)
        talk.resize(12, 5)
        talk.until(lambda: len(talk.screen.lines()[2]) < 12, 'a shorter row')
        self.assertEqual(talk.screen.folded()[:2], ['1> 7', '7'])

    def test_one_by_one(self):
        talk = Talk(self.folder, '--no-session', size=(1, 1))
        self.addCleanup(talk.close)
        talk.until(lambda: '?2004' in talk.screen.modes, 'the prompt')
        talk.send('x=5;\r')
        talk.send('sysCommand("echo done > file")\r')
        talk.until(lambda: os.path.exists(os.path.join(self.folder, 'file')), 'the file')


class Interrupting(TerminalTest):
    def interrupted(self, line, *before):
        """Seconds from Control+C to the prompt."""
        talk = self.talk()
        for number, text in enumerate((*before, line)):
            talk.prompt(number + 1)
            talk.send(text + '\r')
        end = time.monotonic() + 0.5
        while time.monotonic() < end:
            talk.read(0.05)
        talk.send('\x03')
        talk.prompt(len(before) + 2)
        talk.shows('interrupted')
        self.assertIn('interrupted', talk.screen.folded())
        self.assertNotIn('^C', ''.join(talk.screen.lines()))
        self.assertEqual(talk.leave(), 1)

    def functions(self, text):
        with open(os.path.join(self.folder, 'functions.vrp'), 'w') as file:
            file.write(text)

    def test_loops(self):
        self.interrupted('while 1 {}')
        self.interrupted('for i=1:1000000000 { x=i; };')

    def test_calls(self):
        self.interrupted('f(45);', 'f(n) := n<2 ? n :: f(n-1)+f(n-2)')
        self.functions('function y=f(n)\n    if n<2\n        y=n;\n    else\n        y=f(n-1)+f(n-2);\nend\n')
        self.interrupted('f(45);', 'use functions')
        self.functions('function y=f(n)\n    a=[n,n];\n    if n<2\n        y=n;\n    else\n        y=f(n-1)+f(n-2);\nend\n')
        self.interrupted('f(45);', 'use functions')

    def test_arrays(self):
        self.interrupted('while 1 { b=sin(a)+cos(a)+exp(a); };', 'a=1:10000000;')

    def test_numerical_methods(self):
        self.functions('function y=slow(x)\n    y=x-0.5;\n    for k=1:3000000\n        y=y+0*k;\nend\n')
        for call in ('integ(slow,[0,1e6])', 'fmin(slow,[0,1])', 'differ(slow,1:100000)'):
            self.interrupted(call, 'use functions')

    def test_waiting(self):
        self.interrupted('pause(100000)')
        self.interrupted('wait(100000)')
        self.interrupted('getch')
        self.interrupted('getline("")')

    def test_the_rest_of_the_program_goes_on(self):
        talk = self.talk()
        talk.send('x=1;\r')
        talk.prompt(2)
        # The interrupt may come before the first round.
        talk.send('while 1 { x=x+1; };\r')
        talk.until(lambda: '?2004' not in talk.screen.modes, 'the start')
        talk.send('\x03')
        talk.prompt(3)
        talk.send('x>0\r')
        talk.shows('1')

    def test_a_computation_that_looks_at_nothing_can_be_left(self):
        talk = self.talk('--session')
        talk.send('x=4;\r')
        talk.prompt(2)
        talk.send('m=ones([2500,2500]);\r')
        talk.prompt(3)
        for number, seconds in enumerate((0.2, 0.4, 0.8, 1.6), 3):
            talk.send('eigval(m);\r')
            talk.runs()
            time.sleep(seconds)
            talk.send('\x03')
            time.sleep(0.1)
            talk.send('\x03')
            talk.until(lambda: talk.ended or '%d>' % (number + 1) in talk.screen.folded(), 'the end')
            if talk.ended:
                break
            # On a slow machine that may have come before the computation, which then is not begun.
            self.assertIn('interrupted', talk.screen.folded())
        self.assertIn(talk.end(), (130,))
        self.assertTrue(talk.is_sane())
        again = self.talk('--session')
        again.send('x\r')
        again.shows('4')


class Killing(TerminalTest):
    def test_signals_at_the_prompt_save_and_leave(self):
        for sent in (signal.SIGTERM, signal.SIGHUP):
            talk = self.talk('--session')
            talk.send('x=%d;\r' % sent)
            talk.prompt(2)
            os.kill(talk.child, sent)
            self.assertEqual(talk.end(), 0)
            self.assertTrue(talk.is_sane())
            again = self.talk('--session')
            again.send('x\r')
            again.shows('%d' % sent)
            self.assertEqual(again.leave(), 0)

    def test_crash_at_the_prompt(self):
        for sent in (signal.SIGSEGV, signal.SIGABRT, signal.SIGQUIT):
            talk = self.talk()
            os.kill(talk.child, sent)
            self.assertNotEqual(talk.end(), 0)
            self.assertTrue(talk.is_sane())

    def test_killed_in_the_middle(self):
        first = self.talk('--session')
        first.send('x=41;\r')
        first.prompt(2)
        self.assertEqual(first.leave(), 0)
        names = ('vorpen_env.bin', 'vorpen_comm.bin', 'vorpen_cd.bin')
        read = lambda: [self.content(name) for name in names]
        former = read()
        for sent in (signal.SIGKILL, signal.SIGTERM, signal.SIGSEGV):
            talk = self.talk('--session')
            talk.send('x=1; while 1 {}\r')
            talk.until(lambda: '?2004' not in talk.screen.modes, 'the start')
            time.sleep(0.3)
            os.kill(talk.child, sent)
            self.assertNotEqual(talk.end(), 0)
            # Nothing can answer the first one; a shell brings the terminal back.
            self.assertTrue(sent == signal.SIGKILL or talk.is_sane())
            self.assertEqual(read(), former)


class AskingTheUser(TerminalTest):
    def test_getline(self):
        talk = self.talk()
        talk.send('x=getline("your name?");\r')
        talk.shows('your name?')
        talk.until(lambda: '?2004' in talk.screen.modes, 'the line')
        talk.send(b'Abx' + b'\x7f' + b'a\r')
        talk.prompt(2)
        self.assertEqual(talk.screen.folded(), ['1> x=getline("your name?");', 'your name?', 'Aba', '2>'])
        talk.send('size(x)\r')
        talk.shows('3')

    def test_getch(self):
        talk = self.talk()
        talk.send('key=getch;\r')
        talk.until(lambda: not termios.tcgetattr(talk.terminal)[3] & termios.ICANON and
                   '?2004' not in talk.screen.modes, 'the wait')
        talk.send('q')
        talk.prompt(2)
        talk.send('key\r')
        talk.shows('113')

    def test_message_box(self):
        talk = self.talk()
        talk.send('x=1; messageBox("hello"); x=2;\r')
        talk.shows('hello [Enter]')
        talk.send('abc')
        talk.send('\r')
        talk.prompt(2)
        self.assertEqual(talk.screen.folded(), ['1> x=1; messageBox("hello"); x=2;', 'hello [Enter]', '2>'])
        talk.send('x\r')
        talk.shows('2')

    def test_message_box_ends_at_an_interrupt(self):
        talk = self.talk()
        talk.send('x=1; messageBox("hello"); x=2;\r')
        talk.shows('hello [Enter]')
        talk.send('\x03')
        talk.prompt(2)
        self.assertIn('interrupted', talk.screen.folded())
        talk.send('x\r')
        talk.shows('1')

    def test_from_a_pipe(self):
        session = end_to_end.Session()
        session.folder = self.folder
        self.assertEqual(session.shown(typed='x=getline("");\nabc\nkey=getch\nAsize(x)\n'), ['abc', 'A', '65', '3'])
        self.assertEqual(session.shown(typed='getch', status=1), ['in getch: end of input'])
        out, err, status = session.run_program(typed='messageBox("hello");\n7\n')
        self.assertEqual((out.split(), err, status), ([b'7'], 'hello\n', 0))


class TypingAhead(TerminalTest):
    def test_keys_during_a_run_are_for_the_next_prompt(self):
        talk = self.talk()
        talk.send('pause(700); x=3\r')
        talk.runs()
        talk.send('x+4' + 'y' + '\x7f' + '\r' + 'half')
        talk.until(lambda: talk.screen.lines()[talk.screen.row] == '3> half', 'the second line')
        self.assertEqual(talk.screen.folded(), ['1> pause(700); x=3', '3', '2> x+4', '7', '3> half'])

    def test_they_are_not_shown_between_the_output(self):
        talk = self.talk()
        talk.send('for i=1:3 { pause(300); i };\r')
        talk.runs()
        talk.send('zzz')
        talk.until(lambda: talk.screen.lines()[talk.screen.row] == '2> zzz', 'the keys')
        self.assertEqual(talk.screen.folded(), ['1> for i=1:3 { pause(300); i };', '1', '2', '3', '2> zzz'])

    def test_an_interrupt_drops_them(self):
        talk = self.talk()
        talk.send('while 1 {}\r')
        talk.runs()
        talk.send('1+1\r')
        talk.send('\x03')
        talk.prompt(2)
        self.assertEqual(talk.screen.folded(), ['1> while 1 {}', 'interrupted', '2>'])

    def test_a_question_shows_what_is_typed(self):
        talk = self.talk('--session')
        talk.send('cd clear\r')
        talk.until(lambda: talk.screen.lines()[talk.screen.row].rstrip().endswith('[y/n]'), 'the question')
        self.assertTrue(talk.is_sane())
        talk.send('n\n')
        talk.prompt(2)

    def test_the_terminal_after_each_end(self):
        talk = self.talk()
        talk.send('while 1 {}\r')
        talk.runs()
        self.assertFalse(termios.tcgetattr(talk.terminal)[3] & termios.ECHO)
        os.kill(talk.child, signal.SIGTERM)
        self.assertNotEqual(talk.end(), 0)
        self.assertTrue(talk.is_sane())


class LongRuns(TerminalTest):
    def test_sign_of_life(self):
        talk = self.talk()
        talk.send('for i=1:3 { pause(900); };\r')
        talk.until(lambda: re.search(rb'running [12] s, (33|66) % done', talk.raw), 'the sign')
        talk.prompt(2)
        self.assertEqual(talk.screen.folded(), ['1> for i=1:3 { pause(900); };', '2>'])

    def test_none_in_a_pipe(self):
        session = end_to_end.Session()
        session.folder = self.folder
        self.assertEqual(session.shown('-e', 'pause(1500);'), [])


class AnyInput(TerminalTest):
    def test_random_keys(self):
        source = random.Random(3)
        talk = Talk(self.folder, '--no-session')
        self.addCleanup(talk.close)
        talk.prompt(1)
        # Without the keys that leave, stop or run a line; those have tests of their own.
        kept = [byte for byte in range(256) if byte not in (4, 10, 13, 26)]
        pieces = [b'\x1b[', b'\x1bO', UP, DOWN, HOME, b'\x1b[1;5D', b'\xc3', b'\xe2\x82', b'((', b'\x1b[200~', b'\x1b[201~']
        for _ in range(60):
            talk.send(b''.join(source.choice(pieces) if source.random() < 0.3 else bytes([source.choice(kept)])
                               for _ in range(40)))
            talk.read(0)
        talk.send(b'\x1b[201~')
        time.sleep(0.2)
        talk.send(b'\x03')
        talk.until(lambda: re.match(r'\d+>$', talk.screen.lines()[talk.screen.row]), 'a prompt')
        talk.send('123456+1\r')
        talk.shows('123457')


if __name__ == '__main__':
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    end_to_end.PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
