# SPDX-License-Identifier: GPL-3.0-or-later
"""The console's window with real keys and clicks.

usage: desktop_console.py PROGRAM [options of unittest]
"""
import os
import shutil
import signal
import subprocess

import desktop_harness

GREEN, BLUE, RED, BLACK, SELECTED = (0, 100, 0), (0, 0, 100), (170, 0, 0), (0, 0, 0), (253, 253, 150)
TITLE = 'Vorpen 5a'
STRIP = 24


class Console(desktop_harness.DesktopTest):
    """A console in a folder of its own, so that its session is its own."""

    def setUp(self):
        super().setUp()
        self.folder = os.path.join(self.desktop.home, 'program', 'bin')
        os.makedirs(self.folder)
        built = os.path.dirname(desktop_harness.PROGRAM)
        for name in ('vorpen', 'vorpen-cli'):
            shutil.copy(os.path.join(built, name), self.folder)
        os.symlink(os.path.join(os.path.dirname(built), 'share'), os.path.join(self.desktop.home, 'program', 'share'))

    def start(self, *arguments, **options):
        self.desktop.end_programs()
        self.program = self.desktop.run(os.path.join(self.folder, 'vorpen'), *arguments, **options)
        self.window = self.desktop.window(TITLE)
        self.desktop.focus(self.window)
        self.desktop.until(lambda: self.first_white() is not None, 'the white pane')
        self.desktop.until(lambda: self.row(0).count(GREEN) > 5, 'the first prompt')

    def pane(self):
        """The picture from the strip down."""
        whole = self.desktop.picture(self.window)
        top = self.menu_height + STRIP
        return whole.crop(0, top, whole.width, whole.height)

    def first_white(self):
        """Where the pane begins: it is white, and only it. None before it is painted."""
        whole = self.desktop.picture(self.window)
        return next((y for y in range(80) if whole.at(1, y) == (255, 255, 255)), None)

    @property
    def menu_height(self):
        return self.first_white() - STRIP

    def row(self, number, height=21):
        pane = self.pane()
        return pane.crop(0, 1 + number * height, pane.width - 20, 1 + (number + 1) * height)

    def until_row(self, number, colour, what):
        self.desktop.until(lambda: self.row(number).count(colour) > 5, what)

    def until_saved(self):
        self.assertTrue(os.path.exists(os.path.join(self.folder, 'vorpen_env.bin')))

    def value_of(self, expression):
        """What the session that was saved holds."""
        return subprocess.run([os.path.join(self.folder, 'vorpen-cli'), '--session', '-e', expression],
                              capture_output=True, text=True, stdin=subprocess.DEVNULL, timeout=60).stdout.strip()

    def test_a_line_is_answered_and_kept(self):
        self.start()
        self.assertEqual(self.desktop.geometry(self.window)[2:], (840, 600))
        self.desktop.type('kept=6*7\n')
        self.until_row(0, BLUE, 'the echo')
        self.until_row(2, GREEN, 'the next prompt')
        self.assertGreater(self.row(1).count(BLUE) + self.row(1).count(BLACK), 5)
        self.assertIsNone(self.row(3).box_except((255, 255, 255)))
        self.desktop.close_window(self.window)
        self.assertEqual(self.desktop.wait_for_end(self.program), 0)
        self.assertEqual(self.value_of('kept'), '42')

    def test_errors_are_red_and_arrows_recall(self):
        self.start()
        self.desktop.type('1+\n')
        self.until_row(2, RED, 'a message in red')
        self.desktop.keys('Up')
        self.desktop.type('1\n')
        self.until_row(5, GREEN, 'the prompt behind the mended line')

    def test_keys_ask_what_the_program_is(self):
        self.start()
        for key, end in (('alt+question', 'Return'), ('alt+slash', 'Escape')):
            self.desktop.keys(key)
            about = self.desktop.window('About Vorpen')
            self.desktop.until(lambda: self.desktop.has_focus(about), 'the keyboard in the box')
            self.desktop.keys(end)
            self.desktop.no_window('About Vorpen')
            self.desktop.until(lambda: self.desktop.has_focus(self.window), 'the keyboard in the console')

    def test_a_text_is_pasted(self):
        self.start()
        self.desktop.set_clipboard('=6*7\n')
        self.desktop.type('kept')
        self.desktop.keys('ctrl+v', 'F5', 'Return')
        self.until_row(2, GREEN, 'the prompt behind the answer')
        self.desktop.close_window(self.window)
        self.assertEqual(self.desktop.wait_for_end(self.program), 0)
        self.assertEqual(self.value_of('kept'), '42')

    def test_selection_copy_and_double_click(self):
        self.start()
        self.desktop.type('x=3\n')
        self.until_row(2, GREEN, 'the second prompt')
        x, y = 60, self.menu_height + STRIP + 10
        self.desktop.click(x, y, self.window)
        self.until_row(0, SELECTED, 'the selected line')
        self.desktop.keys('ctrl+c')
        self.desktop.until(lambda: self.desktop.clipboard() == 'x=3\r\n', 'the line on the clipboard')
        self.desktop.click(x, y, self.window, times=2)
        self.until_row(4, GREEN, 'the prompt behind the line that ran again')

    def test_the_clipboard_runs(self):
        self.start()
        self.desktop.set_clipboard('a=1;;\nb=2;;\n')
        self.desktop.keys('F9')
        self.until_row(2, GREEN, 'the prompt behind two answers')
        self.desktop.click(430, self.menu_height + 12, self.window)
        self.until_row(4, GREEN, 'the prompt behind two more')

    def test_menus_by_keys(self):
        self.start()
        self.desktop.keys('alt+h')
        self.desktop.keys('b')
        self.until_row(1, BLACK, 'the help')
        self.desktop.keys('alt+h', 'a')
        about = self.desktop.window('About Vorpen')
        self.desktop.until(lambda: self.desktop.has_focus(about), 'the keyboard in the box')
        self.desktop.keys('Return')
        self.desktop.no_window('About Vorpen')
        self.desktop.keys('alt+f', 'x')
        self.assertEqual(self.desktop.wait_for_end(self.program), 0)

    def test_the_keyboard_comes_back_from_the_menus(self):
        self.start()
        top = self.menu_height
        # What a menu or the list of folders lies over when it is open.
        below = (0, top, 600, top + STRIP)
        closed = self.desktop.picture(self.window, below)
        for number, keys in enumerate((['alt+h', 'Escape', 'Escape'], ['Alt_L', 'alt+h', 'Escape', 'Escape'],
                                       ['Alt_L', 'alt+h', 'alt+v', 'Escape', 'Escape'], ['Alt_L', 'Alt_L'],
                                       ['Alt_L', 'alt+v', 'Alt_L', 'Escape'], ['F6', 'Escape', 'alt+h', 'Escape'])):
            for key in keys:
                # A key that meets a window on its way out is lost.
                before = self.desktop.picture(self.window, below)
                opens = key in ('alt+h', 'alt+v', 'F6')
                self.desktop.keys(key)
                self.desktop.until(lambda: (self.desktop.picture(self.window, below) != before) if opens
                                   else self.desktop.picture(self.window, below) == closed, 'the answer to ' + key)
            self.desktop.keys('Escape')
            self.desktop.type('1;\n')
            self.until_row(number + 1, GREEN, 'the prompt behind a line typed after ' + ', '.join(keys))

    def test_a_folder_is_typed_into_its_box(self):
        first, second = (os.path.join(self.desktop.home, 'w', name) for name in ('alpha', 'beta'))
        os.makedirs(first)
        os.makedirs(second)
        self.start()
        self.desktop.type('cd "%s"\n' % first)
        self.until_row(2, GREEN, 'the next prompt')
        self.desktop.type('cd ?\n')
        box = self.desktop.window('cd ...')
        self.desktop.until(lambda: self.desktop.has_focus(box), 'the keyboard in the box')
        _, _, width, height = self.desktop.geometry(box)
        below = (0, height - 35, width // 2, height)
        before = self.desktop.picture(box, below)
        self.desktop.type(second)
        self.desktop.until(lambda: self.desktop.picture(box, below) != before, 'the list of what fits')
        self.desktop.keys('Return')
        self.desktop.no_window('cd ...')
        # The list that the box opened keeps the keyboard until the box is no more.
        self.until_row(4, GREEN, 'the prompt behind the box')
        self.desktop.focus(self.window)
        self.desktop.type('w=cd("");\n')
        self.until_row(5, GREEN, 'the prompt behind the new folder')
        self.desktop.close_window(self.window)
        self.desktop.wait_for_end(self.program)
        self.assertEqual(self.value_of('w'), second)

    def test_a_run_is_watched_and_ended(self):
        self.start()
        self.desktop.type('k=0; while 1 { k=k+1; }\n')
        self.desktop.until(lambda: 'busy' in self.desktop.title(self.window), 'a title that says so')
        self.desktop.type('1+1\n')
        self.desktop.keys('Escape')
        self.desktop.until(lambda: self.desktop.title(self.window) == TITLE, 'the plain title')
        self.until_row(1, RED, '"interrupted"')
        self.until_row(4, GREEN, 'the prompt behind the line typed meanwhile')

    def test_closing_ends_what_runs(self):
        for line in ('while 1 { }', 'pause(1e6)', 's=getline("?")', 'k=getch'):
            self.start()
            begun = os.path.join(self.folder, 'begun.txt')
            self.desktop.type('v=5; n=writetext("%s","here"); %s\n' % (begun, line))
            self.desktop.until(lambda: os.path.exists(begun), 'the run')
            os.remove(begun)
            self.desktop.close_window(self.window)
            self.assertEqual(self.desktop.wait_for_end(self.program), 0, line)
            self.assertEqual(self.value_of('v'), '5', line)
            os.remove(os.path.join(self.folder, 'vorpen_env.bin'))

    def test_a_request_to_end_saves(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            self.start()
            self.desktop.type('v=%d; while 1 { }\n' % number)
            self.desktop.until(lambda: 'busy' in self.desktop.title(self.window), 'a run')
            self.program.send_signal(number)
            self.desktop.wait_for_end(self.program)
            self.assertEqual(self.value_of('v'), str(int(number)))

    def test_a_lost_display_saves(self):
        self.start()
        self.desktop.type('v=9\n')
        self.until_row(2, GREEN, 'the prompt')
        self.desktop.tool('xdotool', 'windowkill', str(self.window))
        self.desktop.wait_for_end(self.program)
        self.assertEqual(self.value_of('v'), '9')

    def test_a_question_at_the_end_loses_nothing(self):
        def lose_display(box):
            self.desktop.tool('xdotool', 'windowkill', str(box))
        for number, end in enumerate((lambda box: self.program.send_signal(signal.SIGTERM), lose_display,
                                      lambda box: self.desktop.keys('Return'))):
            self.start()
            self.desktop.type('v=%d; big=zeros(100,101);\n' % number)
            self.until_row(1, GREEN, 'the prompt')
            self.desktop.close_window(self.window)
            box = self.desktop.window('vorpen exit')
            self.desktop.until(lambda: self.desktop.has_focus(box), 'the keyboard in the box')
            end(box)
            self.desktop.wait_for_end(self.program)
            self.assertEqual(self.value_of('v'), str(number))

    def test_a_script_runs_and_the_window_stays(self):
        folder = os.path.join(self.desktop.home, 'a folder')
        os.makedirs(folder)
        with open(os.path.join(folder, 'it.vrp'), 'w') as script:
            script.write('here=cd("");;\n')
        self.start('a folder/it.vrp')
        self.until_row(2, GREEN, 'the line that runs the script')
        self.desktop.type('v=1\n')
        self.desktop.close_window(self.window)
        self.assertEqual(self.desktop.wait_for_end(self.program), 0)
        self.assertEqual(self.value_of('v'), '1')

    def test_a_second_console(self):
        self.start()
        self.desktop.keys('alt+r', 'l')
        second = self.desktop.window('secondary Vorpen')
        self.desktop.focus(second)
        self.desktop.type('v=2\n')
        self.desktop.close_window(second)
        self.desktop.no_window('secondary Vorpen')
        self.desktop.focus(self.window)
        self.desktop.type('v=1\n')
        self.until_row(2, GREEN, 'the prompt')
        self.desktop.close_window(self.window)
        self.desktop.wait_for_end(self.program)
        self.assertEqual(self.value_of('v'), '1')


class Handover(desktop_harness.DesktopTest):
    """When the terminal program takes over."""

    def said(self, *arguments, stdin=subprocess.DEVNULL, variables=None, **options):
        return subprocess.run([desktop_harness.PROGRAM, *arguments], stdin=stdin, capture_output=True, text=True,
                              env=self.desktop.variables | (variables or {}), timeout=60, **options)

    def test_options_belong_to_the_terminal_program(self):
        self.assertEqual(self.said('-e', '6*7').stdout.strip(), '42')
        self.assertTrue(self.said('--version').stdout.startswith('vorpen-cli '))
        self.assertEqual(self.said('--nonsense').returncode, 2)

    def test_so_does_piped_input(self):
        done = subprocess.run([desktop_harness.PROGRAM], input='6*7\n', capture_output=True, text=True,
                              env=self.desktop.variables, timeout=60)
        self.assertEqual(done.stdout.strip(), '42')

    def test_and_a_machine_without_a_display(self):
        script = os.path.join(self.desktop.home, 'it.vrp')
        with open(script, 'w') as file:
            file.write('6*7;;\n')
        for display in ('', ':9999'):
            for platform in ('', 'xcb'):
                done = self.said(script, variables={'DISPLAY': display, 'QT_QPA_PLATFORM': platform})
                self.assertEqual((done.stdout.strip(), done.returncode), ('42', 0), (display, platform))


if __name__ == '__main__':
    desktop_harness.main(__doc__)
