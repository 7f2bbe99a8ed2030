# SPDX-License-Identifier: GPL-3.0-or-later
"""Figures on a desktop: with real keys, clicks and a window manager.

usage: desktop_figures.py PROGRAM [options of unittest]
"""
import os
import signal

import desktop_harness

RED, BLUE, WHITE, MAGENTA = (170, 0, 0), (0, 0, 100), (255, 255, 255), (170, 0, 170)
# The plot area of a figure as it opens, in its client area.
LEFT, TOP, RIGHT, BOTTOM = 57, 8, 541, 345


class FigureTest(desktop_harness.DesktopTest):
    VARIABLES = {}

    def setUp(self):
        super().setUp()
        self.program = self.run_program(**self.VARIABLES)
        self.console = self.desktop.window('Vorpen', exactly=False)
        self.desktop.focus(self.console)

    def type(self, line):
        self.desktop.type(line + '\n')

    def type_and_wait(self, line):
        """Types a line and waits for its end, when the console takes the keyboard."""
        self.type(line)
        self.tell('end of a line', 1)
        os.remove(self.path('end of a line'))
        self.desktop.settled(self.console)

    def path(self, name):
        return os.path.join(self.desktop.home, name + '.txt')

    def told(self, name):
        """What a script has written into a file; it is written with one line."""
        def text():
            try:
                with open(self.path(name)) as file:
                    return file.read().strip()
            except FileNotFoundError:
                return None
        return self.desktop.until(text, 'text of ' + name)

    def tell(self, name, value):
        self.type('writetext("%s",str(%s));' % (self.path(name), value))
        return self.told(name)

    def until_count(self, window, colour, least, what):
        self.desktop.until(lambda: self.desktop.picture(window).count(colour) >= least, what)


class Figures(FigureTest):
    def test_a_plot_opens_a_window_and_the_keyboard_stays(self):
        self.type('plot([0,1],[0,1],"r2")')
        figure = self.desktop.window('Figure 1')
        self.until_count(figure, RED, 500, 'a red line')
        self.assertEqual(self.desktop.geometry(figure)[2:], (570, 406))
        left, top, right, bottom = self.desktop.picture(figure).box(RED)
        self.assertLess(abs(left - LEFT), 4)
        self.assertLess(abs(right - RIGHT), 4)
        self.assertTrue(self.desktop.has_focus(self.console))
        # What is typed next does not cover the figure either.
        self.assertEqual(self.tell('sum', '1+2'), '3')
        self.until_count(figure, RED, 500, 'the red line again')
        self.assertTrue(self.desktop.has_focus(self.console))

    def test_a_new_size_draws_the_figure_anew(self):
        self.type('plot([0,1],[0,1],"r2")')
        figure = self.desktop.window('Figure 1')
        self.until_count(figure, RED, 500, 'a red line')
        self.desktop.resize_window(figure, 800, 500)
        self.desktop.until(lambda: self.desktop.picture(figure).box(RED)[2] > 740, 'a wider line')

    def test_events_reach_their_functions(self):
        self.type('fix; plot([0,10],[0,10],"r2"); axis(0,10,0,10);')
        self.type('function y=onLDown(p); writetext("%s",str(round(p))); y=1; end' % self.path('event'))
        figure = self.desktop.window('Figure 1')
        self.until_count(figure, RED, 500, 'a red line')
        self.desktop.click((LEFT + RIGHT) // 2, BOTTOM - (BOTTOM - TOP) // 5, figure)
        self.assertEqual(self.told('event'), '5 2')
        self.desktop.until(lambda: self.desktop.has_focus(figure), 'focus of the figure')
        self.desktop.focus(self.console)
        self.type_and_wait('function y=onKeyDown(p); writetext("%s",str(getmouse("k"))); y=1; end' % self.path('event2'))
        self.desktop.focus(figure)
        # A question for the key lets events through, so the key is held down.
        self.desktop.tool('xdotool', 'keydown', 'Left')
        self.assertEqual(self.told('event2'), '37')
        self.desktop.tool('xdotool', 'keyup', 'Left')

    def test_each_event_has_its_function(self):
        names = ('onMove', 'onLDown', 'onLUp', 'onLDouble', 'onRDown', 'onRUp', 'onDrag', 'onDragable', 'onKeyDown',
                 'onButton')
        self.type('seen=zeros(1,10); fix; plot([0,10],[0,10],"r2"); axis(0,10,0,10); q=text(8,2,"Q"); dragable(q);')
        self.type('createButton("go","b",[10,90,30,20,0]);')
        for k, name in enumerate(names, 1):
            self.type('function y=%s(p,j); global seen; seen[%d]=seen[%d]+1; y=1; end' % (name, k, k))
        figure = self.desktop.window('Figure 1')
        self.until_count(figure, RED, 500, 'a red line')
        self.assertEqual(self.tell('defined', 'seen'), ' '.join('0' * 10))
        self.desktop.settled(figure)
        centre = (LEFT + RIGHT) // 2, (TOP + BOTTOM) // 2
        item = LEFT + (RIGHT - LEFT) * 8 // 10, BOTTOM - (BOTTOM - TOP) * 2 // 10
        self.desktop.click(*centre, figure)
        self.desktop.click(*centre, figure, button=3)
        self.desktop.click(*centre, figure, times=2)
        self.desktop.drag([(400, 100), (420, 110)], figure)
        self.desktop.drag([item, (item[0] - 40, item[1] - 40)], figure)
        self.desktop.until(lambda: self.desktop.has_focus(figure), 'focus of the figure')
        self.desktop.keys('a')
        self.desktop.click(LEFT + 80, TOP + 60, figure)
        self.desktop.focus(self.console)
        seen = dict(zip(names, map(int, self.tell('all', 'seen').split())))
        self.assertEqual({name: seen[name] for name in names if name not in ('onMove', 'onDrag', 'onDragable')},
                         {'onLDown': 4, 'onLUp': 5, 'onLDouble': 1, 'onRDown': 1, 'onRUp': 1, 'onKeyDown': 1,
                          'onButton': 1})
        # Once when it is picked, and when it is moved.
        self.assertGreaterEqual(seen['onDragable'], 2)
        self.assertGreaterEqual(min(seen['onMove'], seen['onDrag']), 1)
        self.assertEqual(self.tell('moved', 'getmouse("i")==q'), '1')

    def test_what_comes_while_a_function_computes_comes_later(self):
        self.type('figure; function y=onLDown(p); tic; while toc<2500 {y=1;}; end')
        self.type('function y=onLUp(p); writetext("%s",str(getmouse("l"))); y=1; end' % self.path('up'))
        figure = self.desktop.window('Figure 1')
        self.desktop.settled(figure)
        self.desktop.click(200, 200, figure)
        self.assertEqual(self.told('up'), '0')
        # A window whose cross was clicked meanwhile closes too.
        self.desktop.move(220, 200, figure)
        self.desktop.press()
        self.desktop.window('busy', exactly=False)
        self.desktop.close_window(figure)
        self.desktop.release()
        self.desktop.no_window('Figure 1')

    def test_what_is_done_in_a_figure_comes_behind_the_line_typed_before(self):
        self.type_and_wait('figure;')
        figure = self.desktop.window('Figure 1')
        self.desktop.settled(figure)
        # Two clicks at one place might be a double click.
        for name, line, place in (
                ('event', 'function y=onLDown(p); writetext("%s","heard"); y=1; end', (200, 200)),
                ('wait', 'getclick(0); writetext("%s","heard");', (300, 250)),
                ('once', 's=0; function y=onLUp(p); global s; s=s+1; writetext("%s",str(s)); y=1; end', (400, 200))):
            # All of it comes at once, as on a machine that is slow for a moment.
            self.desktop.focus(self.console)
            self.program.send_signal(signal.SIGSTOP)
            self.type(line % self.path(name))
            self.desktop.click(*place, figure)
            self.program.send_signal(signal.SIGCONT)
            self.assertEqual(self.told(name), '1' if name == 'once' else 'heard')
        self.desktop.focus(self.console)
        self.assertEqual(self.tell('all', 's'), '1')

    def test_the_cursor_of_a_function_follows_the_mouse(self):
        self.type('fplot(x/10;x,[0,10],"r")')
        figure = self.desktop.window('Figure 1')
        self.until_count(figure, RED, 300, 'a red line')
        for x in (200, 300):
            self.desktop.move(x, 200, figure)
            self.desktop.until(lambda: self.desktop.picture(figure).at(x, BOTTOM - 60) == MAGENTA, 'a hairline')
        self.assertNotEqual(self.desktop.picture(figure).at(200, BOTTOM - 60), MAGENTA)

    def test_controls_and_menus(self):
        self.type('figure; createButton("go","b",[10,90,30,20,0]);')
        self.type('function y=onButton(p,v); writetext("%s",str(v[2]+7)); y=1; end' % self.path('pressed'))
        figure = self.desktop.window('Figure 1')
        self.desktop.settled(figure)
        self.desktop.click(LEFT + 80, TOP + 60, figure)
        self.assertEqual(self.told('pressed'), '7')
        self.desktop.focus(self.console)
        self.type('menu(list("Do"),list(list("it->writetext(\'%s\',str(1+1))")));' % self.path('pressed2'))
        self.desktop.until(lambda: self.desktop.geometry(figure)[3] > 406, 'room for the menu')
        self.desktop.click(15, 8, figure)
        self.desktop.keys('Down', 'Return')
        self.assertEqual(self.told('pressed2'), '2')

    def test_a_script_shows_what_it_draws_while_it_waits(self):
        self.type('plot([0,1],[0,1],"r2"); pause(1500); plot([0,1],[1,0],"b2"); done=1;')
        figure = self.desktop.window('Figure 1')
        self.until_count(figure, RED, 500, 'the first line')
        self.until_count(figure, BLUE, 300, 'the second line')

    def test_a_figure_closes_alone(self):
        self.type_and_wait('figure(1); figure(2);')
        second = self.desktop.window('Figure 2')
        self.desktop.close_window(second)
        self.desktop.no_window('Figure 2')
        self.desktop.window('Figure 1')
        self.desktop.focus(self.console)
        self.assertEqual(self.tell('left', 'close(2)'), '0')
        self.type('close(0);')
        self.desktop.no_window('Figure 1')

    def test_the_program_ends_with_figures_open(self):
        self.type('figure(1); plot(1:3,1:3); figure(2);')
        self.desktop.window('Figure 2')
        self.desktop.close_window(self.console)
        self.assertEqual(self.desktop.wait_for_end(self.program), 0)


class FinerFigures(FigureTest):
    """On a screen with two dots to a pixel."""
    VARIABLES = {'QT_SCALE_FACTOR': '2'}

    def test_lines_are_as_fine_as_the_screen_and_the_mouse_finds_them(self):
        self.type('plot([0,10],[0,2],"r2"); fix; axis(0,10,0,10);')
        figure = self.desktop.window('Figure 1')
        self.until_count(figure, RED, 1000, 'a red line')
        self.assertEqual(self.desktop.geometry(figure)[2:], (2 * 570, 2 * 406))
        picture = self.desktop.settled(figure)
        left, top, right, bottom = picture.box(RED)
        heights = {next(y for y in range(top, bottom) if picture.at(x, y) == RED) for x in range(left + 10, right - 10)}
        # Each row of dots is met, and not only every other one.
        self.assertEqual(len(heights), max(heights) - min(heights) + 1)
        self.type('function y=onLDown(p); writetext("%s",str(round(p))); y=1; end' % self.path('event'))
        self.desktop.settled(figure)
        self.desktop.click(LEFT + RIGHT, 2 * BOTTOM - 2 * (BOTTOM - TOP) // 5, figure)
        self.assertEqual(self.told('event'), '5 2')

    def test_the_cursor_leaves_no_trace(self):
        self.type('fplot(x/10;x,[0,10],"r")')
        figure = self.desktop.window('Figure 1')
        self.until_count(figure, RED, 600, 'a red line')
        for x in (300, 500, 400):
            self.desktop.move(x, 400, figure)
            self.desktop.until(lambda: self.desktop.picture(figure).at(x, 2 * BOTTOM - 60) == MAGENTA, 'a hairline')
        upright = self.desktop.settled(figure).crop(2 * LEFT, 2 * BOTTOM - 60, 2 * RIGHT, 2 * BOTTOM - 59)
        self.assertEqual(upright.count(MAGENTA), 2)


if __name__ == '__main__':
    desktop_harness.main(__doc__)
