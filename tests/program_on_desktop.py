# SPDX-License-Identifier: GPL-3.0-or-later
"""The program on a desktop of its own, with a folder of its own.

A copy of the program runs from a folder that it can write to, so that its
session and its history are those of the test. What an expression gives is
learnt from a file that the program is told to write, what stands in a session
that was saved from the terminal program.
"""
import os
import shutil
import subprocess

import desktop_harness


class ProgramTest(desktop_harness.DesktopTest):
    TITLE = 'Vorpen 5a'
    programs = ('vorpen', 'vorpen-cli')

    def setUp(self):
        super().setUp()
        self.folder = os.path.join(self.desktop.home, 'program', 'bin')
        os.makedirs(self.folder)
        built = os.path.dirname(desktop_harness.PROGRAM)
        for name in self.programs:
            shutil.copy(os.path.join(built, name), self.folder)
        os.symlink(os.path.join(os.path.dirname(built), 'share'), os.path.join(self.desktop.home, 'program', 'share'))
        self.told_times = 0

    def start(self, *arguments, **options):
        """The console's window, which has the keyboard."""
        self.desktop.end_programs()
        self.program = self.desktop.run(os.path.join(self.folder, 'vorpen'), *arguments, **options)
        self.window = self.desktop.window(self.TITLE)
        self.desktop.focus(self.window)
        return self.window

    def end(self):
        """The exit status of the program, once its window is closed."""
        self.desktop.close_window(self.window)
        return self.desktop.wait_for_end(self.program)

    def type(self, line):
        self.desktop.type(line + '\n')

    def path(self, name):
        return os.path.join(self.desktop.home, name + '.txt')

    def told(self, name):
        """What a script has written with one line into a file."""
        def text():
            try:
                with open(self.path(name)) as file:
                    return file.read().strip()
            except FileNotFoundError:
                return None
        return self.desktop.until(text, 'text of ' + name)

    def tell(self, expression):
        """The value of an expression, as the console with the keyboard gives it."""
        self.told_times += 1
        name = 'told%d' % self.told_times
        self.type('writetext("%s",str(%s));' % (self.path(name), expression))
        return self.told(name)

    def value_of(self, expression):
        """What an expression gives in the session that was saved."""
        return subprocess.run([os.path.join(self.folder, 'vorpen-cli'), '--session', '-e', expression],
                              capture_output=True, text=True, stdin=subprocess.DEVNULL, timeout=60).stdout.strip()
