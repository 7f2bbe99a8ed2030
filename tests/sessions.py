# SPDX-License-Identifier: GPL-3.0-or-later
"""What the terminal program keeps from one run to the next, and what becomes of files in bad circumstances.

usage: sessions.py PROGRAM
"""
import os
import resource
import shutil
import signal
import struct
import subprocess
import sys
import time
import unittest

import end_to_end

ENV, HISTORY, PATHS = 'vorpen_env.bin', 'vorpen_comm.bin', 'vorpen_cd.bin'
QUESTION = 'vorpen exit: Large matrices will not be saved: ok to exit?'
NOBODY = 65534


def scalar(name, x):
    return struct.pack('<i', len(name)) + name.encode() + b'\0' + struct.pack('<4id', 1, 1, 0, 1, x)


END = struct.pack('<i', 0) + b'\0'


class Files:
    def get(self, name):
        with open(os.path.join(self.folder, name), 'rb') as f:
            return f.read()

    def names(self):
        return sorted(os.listdir(self.folder))

    def history(self):
        data, at, lines = self.get(HISTORY), 4, []
        for _ in range(struct.unpack_from('<i', data)[0]):
            length, = struct.unpack_from('<i', data, at)
            lines.append(data[at + 4:at + 4 + length].decode())
            at += length + 5
        self.assertEqual(at, len(data))
        return lines


class WhoKeepsASession(end_to_end.Session, Files):
    def test_piped_input_does_when_told(self):
        self.shown(typed='x=1.5;\n')
        self.assertEqual(self.names(), [])
        self.shown('--session', typed='x=1.5;\n')
        self.assertEqual(self.get(ENV), scalar('x', 1.5) + END)
        self.assertEqual(self.names(), sorted([ENV, HISTORY, PATHS]))
        self.assertEqual(self.shown('--session', typed='x\n'), ['1.5 = (3/2)'])
        self.assertEqual(self.shown(typed='x\n', status=1)[-1], "unrecognised name 'x'")
        self.shown('--no-session', typed='y=2;\n')
        self.assertEqual(self.get(ENV), scalar('x', 1.5) + END)

    def test_lines_of_e_and_scripts_do_when_told(self):
        self.write('a.vrp', 'x=x+1;\n')
        self.shown('-e', 'x=1;', '--session', 'a.vrp')
        self.assertEqual(self.get(ENV), scalar('x', 2) + END)
        self.assertEqual(self.shown('--session', '-e', 'x'), ['2'])
        # What was typed is remembered, the start of a script is not.
        self.assertEqual(self.history(), ['', 'x=1;', 'x'])
        self.shown('-e', 'x=7;', 'a.vrp')
        self.assertEqual(self.get(ENV), scalar('x', 2) + END)

    def test_files_are_those_of_home(self):
        self.write('home/keep', '')
        home = os.path.join(self.folder, 'home')
        self.shown('--session', '--home', home, typed='x=1;\n', home=False)
        self.assertEqual(sorted(os.listdir(home)), sorted(['keep', ENV, HISTORY, PATHS]))
        self.assertEqual(self.names(), ['home'])

    def test_a_failed_line_keeps_the_session(self):
        self.shown('--session', typed='x=1;\n1+\n', status=1)
        self.assertEqual(self.get(ENV), scalar('x', 1) + END)

    def test_history_goes_on(self):
        self.shown('--session', typed='a=1;\na=1;\nb=2;\n')
        self.shown('--session', typed='d=3;\n')
        self.assertEqual(self.history(), ['', 'a=1;', 'b=2;', 'd=3;'])

    def test_directory_comes_back(self):
        os.mkdir(os.path.join(self.folder, 'sub'))
        self.shown('--session', '-e', 'cd sub;')
        self.assertEqual(self.shown('--session', '-e', 'cd'), [self.folder + '/sub'])
        self.assertEqual(self.shown('-e', 'cd'), [self.folder])


class DamagedFiles(end_to_end.Session, Files):
    def test_messages(self):
        self.write(ENV, scalar('x', 3) + b'\1')
        self.write(PATHS, b'\1\0\0\0')
        self.write(HISTORY, b'\1\0\0')
        out, err, status = self.run_program('--session', typed='x\n')
        self.assertEqual(err, 'vorpen startup: problem loading previous session\n'
                              'vorpen startup: problem loading path list\n')
        self.assertEqual((out.strip(), status), (b'3', 0))
        # The files are whole again.
        self.assertEqual(self.shown('--session', typed='x\n'), ['3'])

    def test_rubbish(self):
        for length in list(range(0, 40)) + [1000, 100000]:
            rubbish = bytes((i * 7919 >> 3) & 255 for i in range(length))
            for name in (ENV, HISTORY, PATHS):
                self.write(name, rubbish)
            out, _, status = self.run_program('--session', typed='1+1\n')
            self.assertEqual((out.strip(), status), (b'2', 0), length)

    def test_directories_in_their_place(self):
        for name in (ENV, HISTORY, PATHS):
            os.mkdir(os.path.join(self.folder, name))
        out, _, status = self.run_program('--session', typed='1+1\n')
        self.assertEqual((out.strip(), status), (b'2', 0))


class BadCircumstances(end_to_end.Session, Files):
    def run_limited(self, *options, typed='', user=None, most=None, cwd=None):
        def limit():
            if most is not None:
                resource.setrlimit(resource.RLIMIT_FSIZE, (most, most))
        done = subprocess.run([end_to_end.PROGRAM, '--home', self.folder] + list(options), input=typed.encode(),
                              capture_output=True, timeout=end_to_end.SECONDS, cwd=cwd or self.folder, user=user,
                              preexec_fn=limit, env=end_to_end.environment())
        self.assertGreaterEqual(done.returncode, 0, 'died of a signal: %s' % done.stderr)
        return [' '.join(line.split()) for line in done.stdout.decode().splitlines()], done.stderr.decode()

    def test_a_file_may_not_grow(self):
        self.shown('--session', typed='x=1;\nqsave("v",[1,2,3]);writetext("t","former");\n')
        former = {name: self.get(name) for name in self.names()}
        out, err = self.run_limited(
            '--session', most=1000,
            typed='y=zeros([1,2000]);\nqsave("v",y)\nwritetext("t",y)\nf=fopen("h","w");\nfwrite(f,y)\nfclose(f)\n1+1\n')
        self.assertIn('could not write the whole value', out)
        self.assertIn('in writetext: cannot write t', out)
        self.assertIn('in fclose: the file could not be written in full', out)
        self.assertEqual(out[-1], '2')
        self.assertEqual(err, 'vorpen exit: the session could not be saved; the former one is kept\n')
        for name in (ENV, 'v.jmt', 't.txt'):
            self.assertEqual(self.get(name), former[name])
        self.assertEqual(self.names(), sorted(list(former) + ['h.txt']))

    def test_a_full_disk(self):
        disk = os.path.join(self.folder, 'disk')
        os.mkdir(disk)
        if shutil.which('mount') is None or subprocess.run(
                ['mount', '-t', 'tmpfs', '-o', 'size=64k', 'none', disk], capture_output=True).returncode:
            self.skipTest('no small file system to be had')
        try:
            self.folder = disk
            self.shown('--session', typed='x=1;\nqsave("v",[1,2,3]);\n')
            former = {name: self.get(name) for name in self.names()}
            out, err = self.run_limited('--session', typed='y=zeros([1,9999]);\nqsave("v",y)\nqload("v")\n')
            self.assertEqual(out, ['could not write the whole value', '1 2 3'])
            self.assertIn('the session could not be saved', err)
            self.assertEqual(self.get(ENV), former[ENV])
            self.assertEqual(self.get('v.jmt'), former['v.jmt'])
            self.assertEqual(self.names(), sorted(former))
        finally:
            subprocess.run(['umount', disk])
            self.folder = os.path.dirname(disk)

    def test_files_that_belong_to_others(self):
        if os.getuid() != 0:
            self.skipTest('needs a second user')
        if not os.access(end_to_end.PROGRAM, os.X_OK) or subprocess.run(
                [end_to_end.PROGRAM, '--version'], user=NOBODY, capture_output=True).returncode:
            self.skipTest('the second user may not run the program')
        self.write(ENV, scalar('x', 3) + END)
        for name in ('secret.txt', 'secret.jmt', 'secret.vrp'):
            os.chmod(self.write(name, b'1 2\n'), 0o600)
        os.chmod(self.write('readonly.txt', b'former\n'), 0o444)
        os.chmod(self.folder, 0o755)
        names = self.names()
        out, err = self.run_limited(
            '--session', user=NOBODY,
            typed='x\nload("secret")\nL=readtext("secret");\nqload("secret")\ndispfile("secret")\n'
                  'fopen("secret","q")\nqsave("new",1)\nwritetext("readonly","x")\nf=fopen("readonly","w");\n'
                  'fwrite(f,"x")\nfopen("readonly","aq")\n1+1\n')
        self.assertEqual(out, ['3'] + ['could not open input file'] * 4 + [
            '[]', 'could not open output file', 'in writetext: cannot open readonly', 'file not open', '[]', '2'])
        self.assertEqual(err, '')
        self.assertEqual(self.names(), names)
        self.assertEqual(self.get('readonly.txt'), b'former\n')
        # A session that may not be read is like none.
        os.chmod(os.path.join(self.folder, ENV), 0o600)
        out, err = self.run_limited('--session', user=NOBODY, typed='x\n')
        self.assertEqual((out[-1], err), ("unrecognised name 'x'", ''))

    def test_a_pipe_that_nobody_reads(self):
        os.mkfifo(os.path.join(self.folder, 'p.txt'))
        lines = self.shown('--session', status=1, typed=(
            'sysCommand("head -c 1 p.txt > /dev/null &");\nf=fopen("p","w");\nfor k=1:200; fwrite(f,ones([1,5000]));\n'
            'pause(300);\nfor k=1:20; fwrite(f,ones([1,5000]));\nfclose(f)\n1+1\n'))
        self.assertEqual(lines, ['in fclose: the file could not be written in full', '2'])
        self.assertTrue(os.path.exists(os.path.join(self.folder, ENV)))

    def test_killed_in_the_middle(self):
        self.shown('--session', typed='x=1;\n')
        former = self.get(ENV)
        running = subprocess.Popen([end_to_end.PROGRAM, '--home', self.folder, '--session'], stdin=subprocess.PIPE)
        running.stdin.write(b'x=2;\n')
        running.stdin.flush()
        time.sleep(0.1)
        running.kill()
        running.wait()
        running.stdin.close()
        self.assertEqual(self.get(ENV), former)

    def test_a_million_columns(self):
        self.write('w.txt', '1 ' * 1000000 + '\n' + '2 ' * 1000000)
        self.assertEqual(self.shown(typed='x=load("w"); [nrow(x),ncol(x)]\n'), ['2 1000000'])


class Prompt(end_to_end.TerminalSession, Files):
    def test_keeps_a_session(self):
        self.talk(['x=1.5;\n', 'x;\n', '\x04'])
        self.assertEqual(self.get(ENV), scalar('x', 1.5) + END)
        self.assertEqual(self.history(), ['', 'x=1.5;', 'x;'])
        self.assertIn('(3/2)', self.talk(['x\n', '\x04']))

    def test_keeps_none_when_told(self):
        self.talk(['x=1.5;\n', '\x04'], '--no-session')
        self.assertEqual(self.names(), [])

    def test_question_about_large_matrices(self):
        self.talk(['x=1;\n', '\x04'])
        former = self.get(ENV)
        asked = r'ok to exit\? \[y/n\] $'
        self.assertIn(QUESTION, self.talk(['x=2; y=zeros([100,100]);\n', '\x04', (asked, 'what\n'), (asked, 'Cancel\n')]))
        self.assertEqual(self.get(ENV), former)
        self.talk(['x=2; y=zeros([100,100]);\n', '\x04', (asked, 'ok\n')])
        self.assertEqual(self.get(ENV), scalar('x', 2) + END)
        # No answer is the one that saves.
        for answer, x in (('\x04', 3), ('\x03', 4)):
            self.talk(['x=%d; y=zeros([100,100]);\n' % x, '\x04', (asked, answer)])
            self.assertEqual(self.get(ENV), scalar('x', x) + END)

    def test_a_request_to_end_saves_without_a_question(self):
        self.talk(['x=5; y=zeros([100,100]);\n', lambda child: os.kill(child, signal.SIGTERM)])
        self.assertEqual(self.get(ENV), scalar('x', 5) + END)

    def test_control_c_ends_a_command_of_the_system_alone(self):
        shown = self.talk(['x=sysCommand("echo ready; while :; do sleep 0.1; done");\n', ('ready\r\n', '\x03'), 'x+41\n', '\x04'])
        self.assertIn('42', shown)
        self.assertEqual(self.get(ENV), scalar('x', 1) + END)


if __name__ == '__main__':
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    end_to_end.PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
