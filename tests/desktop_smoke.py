# SPDX-License-Identifier: GPL-3.0-or-later
"""The desktop in short: what the tests of it stand on.

usage: desktop_smoke.py PROGRAM [options of unittest]
"""
import os
import subprocess

import desktop_harness

RED, BLUE, WHITE = (255, 0, 0), (0, 0, 255), (255, 255, 255)


class Harness(desktop_harness.DesktopTest):
    """The harness itself, with a window whose picture is known."""

    def show(self, title='A (plain) window', size='200x100'):
        path = os.path.join(self.desktop.home, 'picture.png')
        subprocess.run(['convert', '-size', size, 'xc:blue', '-fill', 'red', '-draw', 'rectangle 20,30 59,49', path],
                       check=True)
        program = self.desktop.run('display', '-title', title, path)
        return program, self.desktop.window(title)

    def test_a_window_is_found_and_its_pixels_are_read(self):
        _, window = self.show()
        self.assertEqual(self.desktop.geometry(window)[2:], (200, 100))
        self.desktop.until(lambda: self.desktop.picture(window).count(RED) == 40 * 20, 'the red box')
        picture = self.desktop.picture(window)
        self.assertEqual(picture.box(RED), (20, 30, 60, 50))
        self.assertEqual(picture.box_except(BLUE), (20, 30, 60, 50))
        self.assertEqual(picture.box(BLUE), (0, 0, 200, 100))
        self.assertIsNone(picture.box(WHITE))
        self.assertEqual((picture.at(20, 30), picture.at(19, 30)), (RED, BLUE))
        self.assertEqual(picture.crop(10, 20, 30, 40).box(RED), (10, 10, 20, 20))
        self.assertEqual(picture.colours(), {BLUE: 200 * 100 - 800, RED: 800})

    def test_keys_reach_the_window_that_has_the_focus(self):
        program, window = self.show()
        self.desktop.focus(window)
        self.desktop.type('q')
        self.assertEqual(self.desktop.wait_for_end(program), 0)
        self.desktop.no_window('A (plain) window')

    def test_the_clipboard_is_set_and_read(self):
        self.desktop.set_clipboard('eins\nzwei ä')
        self.assertEqual(self.desktop.clipboard(), 'eins\nzwei ä')

    def test_what_does_not_come_fails_with_a_picture(self):
        self.show()
        with self.assertRaises(AssertionError) as caught:
            self.desktop.window('Another', seconds=0.2)
        message = str(caught.exception)
        self.assertIn('not within 0.2 seconds: a window "Another"', message)
        self.assertIn("windows: ['A (plain) window']", message)
        path = message.split('screen: ')[1].splitlines()[0]
        with open(path, 'rb') as picture:
            self.assertEqual(picture.read(8), b'\x89PNG\r\n\x1a\n')
        os.remove(path)

    def test_a_program_that_ends_is_not_waited_for(self):
        self.desktop.run('false')
        with self.assertRaisesRegex(AssertionError, r'the program ended \(status 1\) before: a window "Any"'):
            self.desktop.window('Any')


class Program(desktop_harness.DesktopTest):
    TITLE = 'Vorpen 5a'

    def start(self, *arguments, **options):
        program = self.run_program(*arguments, **options)
        window = self.desktop.window(self.TITLE)
        self.desktop.focus(window)
        return program, window

    def content(self, name, folder=None):
        """What a file holds, once it is there."""
        path = os.path.join(folder or self.desktop.home, name)

        def read():
            try:
                with open(path) as file:
                    return file.read()
            except OSError:
                return ''
        return self.desktop.until(read, 'the file ' + path)

    def test_a_typed_line_is_shown_and_answered(self):
        _, window = self.start()
        pane = (0, 50, 800, 500)  # below the menu and the buttons
        height = lambda: (self.desktop.picture(window, pane).box_except(WHITE) or (0, 0, 0, 0))[3]
        prompt = self.desktop.until(height, 'a prompt')
        self.desktop.type('6*7\n')
        # The line, its answer and the next prompt are three rows.
        self.desktop.until(lambda: height() >= prompt + 2 * 12, 'two rows more')
        self.desktop.type('writetext("answer.txt",list(str(ans)))\n')
        self.assertEqual(self.content('answer.txt').strip(), '42')

    def test_a_session_is_kept(self):
        program, window = self.start()
        self.desktop.type('kept=17;writetext("done.txt",list("done"))\n')
        self.content('done.txt')
        self.desktop.close_window(window)
        self.assertEqual(self.desktop.wait_for_end(program), 0)
        self.assertIn('vorpen_env.bin', os.listdir(self.desktop.program_folder))
        self.desktop.end_programs()
        self.start()
        self.desktop.type('writetext("again.txt",list(str(kept)))\n')
        self.assertEqual(self.content('again.txt').strip(), '17')

    def test_a_script_is_run_in_its_directory(self):
        folder = os.path.join(self.desktop.home, 'a folder')
        os.mkdir(folder)
        with open(os.path.join(folder, 'first.vrp'), 'w') as script:
            script.write('x=6*7;\nwritetext("answer.txt",list(str(x)));\n')
        self.start(os.path.join(folder, 'first.vrp'))
        self.assertEqual(self.content('answer.txt', folder).strip(), '42')

    def test_its_icon_is_shown_in_the_task_bar(self):
        _, window = self.start()
        self.desktop.until(lambda: 'Icon (48 x 48)' in self.desktop.tool('xprop', '-id', str(window), '_NET_WM_ICON'),
                           'the icon')
        self.assertIn('"vorpen"', self.desktop.tool('xprop', '-id', str(window), 'WM_CLASS'))

    def test_options_are_for_the_terminal(self):
        done = subprocess.run([desktop_harness.PROGRAM, '--home', self.desktop.home, '-e', '6*7'], capture_output=True,
                              env=self.desktop.variables, timeout=desktop_harness.SECONDS)
        self.assertEqual((done.stdout.split()[:1], done.stderr, done.returncode), ([b'42'], b'', 0))

    def test_a_launcher_gives_it_no_terminal(self):
        self.desktop.run('sh', '-c', '"$0" </dev/null', self.desktop.place(desktop_harness.PROGRAM))
        self.desktop.window(self.TITLE)


if __name__ == '__main__':
    desktop_harness.main(__doc__)
