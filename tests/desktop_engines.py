# SPDX-License-Identifier: GPL-3.0-or-later
"""Two calculators in one program.

usage: desktop_engines.py PROGRAM [options of unittest]
"""
import program_on_desktop
import desktop_harness

RED = (170, 0, 0)
SECOND = 'secondary Vorpen'


class Engines(program_on_desktop.ProgramTest):
    def setUp(self):
        super().setUp()
        self.start()

    def launch(self):
        self.desktop.focus(self.window)
        self.desktop.keys('alt+r', 'l')
        second = self.desktop.window(SECOND)
        self.desktop.focus(second)
        return second

    def test_each_has_its_own(self):
        self.type('x=1')
        second = self.launch()
        first_place, second_place = self.desktop.geometry(self.window), self.desktop.geometry(second)
        self.assertEqual([b - a for a, b in zip(first_place, second_place)], [20, 20, 0, 0])
        # Variables are their own, and so is what is printed.
        self.type('x=2')
        self.type('y=3')
        self.desktop.move_window(second, 100, 400)
        self.desktop.focus(self.window)
        self.assertEqual(self.tell('x'), '1')
        self.type('y')
        self.desktop.until(lambda: self.desktop.picture(self.window).count(RED) > 50, 'an unknown name in the first')
        self.desktop.focus(second)
        self.assertEqual(self.tell('x+y'), '5')
        self.assertLess(self.desktop.picture(second).count(RED), 20)
        # Events of a figure go to the functions of whoever has it; the figure stays.
        self.type('plot([0,1],[0,1],"r2");')
        figure = self.desktop.window('Figure 1')
        self.desktop.close_window(second)
        self.desktop.no_window(SECOND)
        self.desktop.until(lambda: self.desktop.picture(figure).count(RED) > 300, 'the figure')
        self.desktop.focus(self.window)
        self.assertEqual(self.tell('x+10'), '11')
        # Events reach the engine that is left.
        self.type('function y=onLDown(p); writetext("%s",str(x)); y=1; end' % self.path('event'))
        self.desktop.click(300, 200, figure)
        self.assertEqual(self.told('event'), '1')
        self.assertEqual(self.end(), 0)
        self.assertEqual(self.value_of('x'), '1')

    def test_the_end_of_the_first_ends_all(self):
        self.type('x=7')
        second = self.launch()
        # Also from within a run of the second, whatever that is doing.
        self.type('while 1 { }')
        self.desktop.until(lambda: 'busy' in self.desktop.title(second), 'a run')
        self.desktop.focus(self.window)
        self.desktop.close_window(self.window)
        self.assertEqual(self.desktop.wait_for_end(self.program), 0)
        self.assertEqual(self.value_of('x'), '7')

    def test_a_run_in_one_leaves_the_other_waiting(self):
        second = self.launch()
        self.type('pause(1500); a=1;')
        self.desktop.focus(self.window)
        # Typed while the other waits: kept or done at once, but not lost.
        self.type('b=2;')
        self.assertEqual(self.tell('b'), '2')
        self.desktop.focus(second)
        self.assertEqual(self.tell('a'), '1')
        self.desktop.close_window(second)
        self.desktop.no_window(SECOND)
        self.assertEqual(self.end(), 0)


if __name__ == '__main__':
    desktop_harness.main(__doc__)
