# SPDX-License-Identifier: GPL-3.0-or-later
"""What a user has is there again, however the program ends.

usage: desktop_session.py PROGRAM [options of unittest]
"""
import os
import signal

import program_on_desktop
import desktop_harness


class Session(program_on_desktop.ProgramTest):
    def begun(self, name):
        """A line for a script that tells that it runs."""
        return 'writetext("%s","yes"); ' % self.path(name)

    def test_variables_and_history_come_back(self):
        self.start()
        self.type('kept=40;')
        self.type('kept=kept+1;')
        self.assertEqual(self.end(), 0)
        self.start()
        self.assertEqual(self.tell('kept'), '41')
        # Over the line that has just been typed, to the last one of the former time.
        self.desktop.keys('Up', 'Up', 'Return')
        self.assertEqual(self.tell('kept'), '42')
        self.assertEqual(self.end(), 0)
        self.assertEqual(self.value_of('kept'), '42')

    def test_lines_typed_before_the_window_is_closed_run(self):
        self.start()
        self.tell('1')
        # All of it comes at once, as on a machine that is slow for a moment.
        self.program.send_signal(signal.SIGSTOP)
        self.type('kept=1;')
        self.type('kept=kept+1;')
        self.desktop.keys('alt+F4')
        self.program.send_signal(signal.SIGCONT)
        self.assertEqual(self.desktop.wait_for_end(self.program), 0)
        self.assertEqual(self.value_of('kept'), '2')

    def test_waits_end_with_the_window(self):
        self.start()
        for number, wait in enumerate(('wait', 'getclick(0)', 'plot(1:3,1:3); getclick(1)')):
            if number:
                self.start()
            self.type('v=%d; %s%s; late=1;' % (number, self.begun('run%d' % number), wait))
            self.told('run%d' % number)
            self.assertEqual(self.end(), 0, wait)
            self.assertEqual(self.value_of('v'), str(number), wait)

    def test_a_system_without_fonts_is_told_so(self):
        self.start()
        self.assertEqual(self.tell('7*7'), '49')
        self.assertNotIn('font', self.desktop.said('program'))
        self.assertEqual(self.end(), 0)
        fonts = self.path('fonts')
        with open(fonts, 'w') as file:
            file.write('<?xml version="1.0"?><fontconfig></fontconfig>\n')
        self.start(FONTCONFIG_FILE=fonts)
        self.assertEqual(self.tell('6*7'), '42')
        self.assertIn('no font was found', self.desktop.said('program'))
        self.assertEqual(self.end(), 0)

    def test_a_box_waits_for_its_answer(self):
        self.start()
        self.type('v=1; %smessageBox("look"); v=2;' % self.begun('run'))
        self.told('run')
        self.desktop.until(lambda: not self.desktop.has_focus(self.window), 'the box')
        self.desktop.keys('Return')
        self.desktop.focus(self.window)
        self.assertEqual(self.tell('v'), '2')
        self.program.terminate()
        self.desktop.wait_for_end(self.program)
        self.assertEqual(self.value_of('v'), '2')

    def test_a_large_matrix_is_asked_about(self):
        file = os.path.join(self.folder, 'vorpen_env.bin')
        for key, is_saved in (('Return', True), ('Escape', False)):
            self.start()
            self.type('small=3; big=zeros(100,100);')
            self.assertEqual(self.tell('small'), '3')
            self.desktop.close_window(self.window)
            self.desktop.focus(self.desktop.window('vorpen exit'))
            self.desktop.keys(key)
            self.assertEqual(self.desktop.wait_for_end(self.program), 0)
            self.assertEqual(os.path.exists(file), is_saved, key)
            if is_saved:
                self.assertEqual(self.value_of('small'), '3')
                os.remove(file)


if __name__ == '__main__':
    desktop_harness.main(__doc__)
