# SPDX-License-Identifier: GPL-3.0-or-later
"""Breakpoints on a desktop: the window that stops a script.

usage: desktop_debugger.py PROGRAM [options of unittest]
"""
import os

import program_on_desktop
import desktop_harness

RED = (170, 0, 0)
SCRIPT = """function y=area(r)
    s=r^2;
    v=1:20;
    y=pi*s;!
    writetext("%s",str(y))
    y=y+1;
end
"""


class Debugger(program_on_desktop.ProgramTest):
    def setUp(self):
        super().setUp()
        self.start()
        with open(os.path.join(self.desktop.home, 'area.vrp'), 'w') as script:
            script.write(SCRIPT % self.path('inside'))
        self.type('cd "%s"' % self.desktop.home)
        self.type('use area')

    def stop(self, title):
        """The debugger's window, once it has stopped there and has the keyboard."""
        pane = self.desktop.window(title)
        self.desktop.until(lambda: self.desktop.has_focus(pane), 'the keyboard in the debugger')
        return pane

    def button(self, pane, name):
        _, _, width, height = self.desktop.geometry(pane)
        self.desktop.click(width - {'Cont': 40, 'Step': 112, 'Halt': 184}[name], height - 25, pane)

    def goes_on(self):
        self.desktop.until(lambda: not [one for one in self.desktop.titles() if ' at line ' in one], 'no debugger')
        self.desktop.focus(self.window)

    def test_a_script_stops_and_goes_on(self):
        self.type('area(3)')
        pane = self.stop('Breakpoint at line 4 in area')
        # The line at which it stands is marked; names and values stand at the left.
        picture = self.desktop.settled(pane)
        mark = picture.box((0xFD, 0xFD, 0x96))
        self.assertGreater(mark[2] - mark[0], 100)
        self.assertGreater(mark[0], picture.width // 4)
        # What is typed into the console meanwhile does nothing.
        self.desktop.focus(self.window)
        self.desktop.type('lost=1\n')
        self.desktop.focus(pane)
        self.button(pane, 'Step')
        self.stop('Stepping at line 4')
        self.desktop.keys('Return')
        pane = self.stop('Stepping at line 5')
        self.assertEqual(self.told('inside'), '28.2743339')
        self.button(pane, 'Cont')
        self.goes_on()
        self.assertEqual(self.tell('ans'), '29.2743339')
        # "Halt" ends the run with a message.
        os.remove(self.path('inside'))
        self.type('area(4)')
        self.button(self.stop('Breakpoint at line 4 in area'), 'Halt')
        self.goes_on()
        self.desktop.until(lambda: self.desktop.picture(self.window).count(RED) > 100, 'a message in red')
        self.assertFalse(os.path.exists(self.path('inside')))
        # Its closing lets all run to the end; the next command stops again.
        self.type('area(5); area(6);')
        self.desktop.close_window(self.stop('Breakpoint at line 4 in area'))
        self.goes_on()
        self.assertEqual((self.tell('0'), self.told('inside')), ('0', '113.097336'))
        self.type('area(7)')
        self.stop('Breakpoint at line 4 in area')
        # Escape closes it, too.
        self.desktop.keys('Escape')
        self.goes_on()
        self.assertEqual((self.tell('0'), self.told('inside')), ('0', '153.93804'))
        self.assertEqual(self.end(), 0)
        self.assertIn('unrecognised name', self.value_of('lost'))

    def test_the_program_ends_while_a_script_stands(self):
        self.type('kept=42; area(3); late=1;')
        self.stop('Breakpoint at line 4 in area')
        self.desktop.close_window(self.window)
        self.assertEqual(self.desktop.wait_for_end(self.program), 0)
        self.assertEqual(self.value_of('kept'), '42')


if __name__ == '__main__':
    desktop_harness.main(__doc__)
