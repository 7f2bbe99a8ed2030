# SPDX-License-Identifier: GPL-3.0-or-later
"""Keys, clicks and lines at random: the program goes on, and keeps its session.

usage: desktop_monkey.py PROGRAM [options of unittest]

VORPEN_MONKEY_ROUNDS is the number of rounds of twenty actions each (5),
VORPEN_MONKEY_SEED makes other ones (1); a failure names both. It is run by hand,
as no two runs are the same: windows come and go at their own pace.
"""
import os
import random

import program_on_desktop
import desktop_harness

ROUNDS = int(os.environ.get('VORPEN_MONKEY_ROUNDS', '5'))
SEED = int(os.environ.get('VORPEN_MONKEY_SEED', '1'))

SCRIPT = """function y=scene()
    figure(1);
    fix;
    plot(0:10,0:10,"r2");
    axis(0,10,0,10);
    q=[text(2,3,"P"),text(5,8,"Q")];
    dragable(q);
    createButton("go","b",[10,90,30,20,0]);
    createButton("on","c",[30,90,30,20,0]);
    createButton("t","e",[50,90,30,20,0]);
    createButton("3","t",[70,90,30,20,0]);
    menu(list("Do","More"),list(list("stop->stops(3)","plot->plot(1:3)"),list("wait->pause(300)","reset->scene()")));
    y=1;
end
function y=stops(x)
    a=x^2;
    b=list('a',1:20);
    y=a+1;!
    y=y+1;
end
function y=onLDown(p)
    y=p[1];
end
function y=onMove(p)
    for i=1:20000
        y=sin(i);
    setmouse(y);
end
function y=onDragable(p,i)
    y=i;
end
function y=onButton(p,v)
    'monkey';;
    y=v[2];
end
function y=onRDown(p)
    close(1);
    y=scene();
end
function y=onKeyDown(p)
    y=getmouse('k');
    text(5,5,'key');
end
"""
LINES = ['1/3', 'x=1:5', 'plot(x,x^2)', 'fplot(sin(x);x,[0,9])', 'stops(2)', 'for i=1:2000000 { s=i; }', 'scene()',
         'pause(200)', '?sin', '1+', 'rnd(3)', "'abc'", 'getmouse', 'close(1)', 'figure(2)', 'subplot(2,2,1)', 'help',
         'L=list(1,2)', 'getclick(1)', 'x=getline("a")', 'axis(0,1,0,1)', 'wipe', 'replot', 'text(1,1,"a")', '']
KEYS = ['Return', 'Up', 'Down', 'Left', 'Right', 'Home', 'End', 'Prior', 'Next', 'Tab', 'BackSpace', 'Escape', 'Insert',
        'F1', 'F2', 'F3', 'F5', 'F6', 'F9', 'ctrl+c', 'ctrl+v', 'ctrl+space', 'ctrl+plus', 'ctrl+minus', 'alt+f', 'alt+r',
        'alt+v', 'alt+h', 'Alt_L', 'shift+Tab', 'space', 'a', 'parenleft', 'bracketright', 'less', 'greater', 'quotedbl',
        'braceleft', 'backslash', 'Pause', 'Menu', 'ctrl+Return', 'shift+Home', 'ctrl+a', 'ctrl+d', 'KP_Enter', 'KP_5']
FOREIGN_KEYS = ['EuroSign', 'ediaeresis', 'Greek_alpha', 'udiaeresis', 'ssharp', 'dead_acute', 'Hiragana']


class Monkey(program_on_desktop.ProgramTest):
    def setUp(self):
        super().setUp()
        with open(os.path.join(self.desktop.home, 'monkey.vrp'), 'w') as script:
            script.write(SCRIPT)

        self.desktop.add_keys(*FOREIGN_KEYS)

    def begin(self):
        self.start()
        self.type('kept=4242')
        self.type('cd "%s"' % self.desktop.home)
        self.type('use monkey')
        self.type('scene();')

    def windows(self):
        """All that are seen; a search that meets one that goes away finds none."""
        def found():
            said = self.desktop.tool('xdotool', 'search', '--onlyvisible', '--name', '.', check=False)
            return [int(one) for one in said.split()]
        return self.desktop.until(found, 'a window', may_end=True)

    def place_in(self, window):
        # It may have gone meanwhile.
        said = self.desktop.tool('xwininfo', '-id', str(window), check=False)
        width, height = (int(said.split(word + ':')[1].split()[0]) if word in said else 100 for word in ('Width', 'Height'))
        x, y = self.random.randrange(width), self.random.randrange(height)
        is_console = window == self.window
        return (max(x, 100), y) if is_console and y < 22 else (x, y)

    def action(self, windows):
        """One thing that a user does, as words for xdotool."""
        window = self.random.choice(windows)
        x, y = map(str, self.place_in(window))
        move = ['mousemove', '--window', str(window), x, y]
        kind = self.random.randrange(10)
        if kind < 4:
            times = self.random.choice(['1', '1', '2'])
            return move + ['click', '--repeat', times, '--delay', '10', self.random.choice('1112345')]
        if kind == 4:
            u, v = map(str, self.place_in(window))
            return move + ['mousedown', '1', 'mousemove', '--window', str(window), u, v, 'mouseup', '1']
        if kind == 5:
            return move
        if kind == 6:
            return ['key', 'Escape', 'type', '--delay', '0', self.random.choice(LINES) + '\n']
        return ['key', '--delay', '1'] + [self.random.choice(KEYS + FOREIGN_KEYS) for _ in range(5)]

    def was_cleared(self):
        """Whether the menu's "Reset" was among what it did."""
        with open(os.path.join(self.folder, 'vorpen_comm.bin'), 'rb') as history:
            return b'clear reset' in history.read()

    def settle(self):
        """Ends whatever waits, so that the console answers."""
        times_at_rest = 0

        def rest():
            nonlocal times_at_rest
            for title in self.desktop.titles():
                if title not in ('Vorpen 5a', 'secondary Vorpen') and not title.startswith(('Figure', 'Vorpen 5a - busy')):
                    for window in self.desktop.search(title):
                        self.desktop.tool('xdotool', 'windowactivate', str(window), 'key', 'Escape', check=False)
            # A box without a title is met where the keyboard is. A button is held
            # down still where the window of a drag went away.
            self.desktop.tool('xdotool', 'mouseup', '1', 'key', 'Escape', check=False)
            self.desktop.tool('xdotool', 'windowactivate', str(self.window), 'key', 'Escape', 'Pause', check=False)
            is_idle = self.desktop.title(self.window) == self.TITLE and self.desktop.has_focus(self.window)
            # A window that something opened may still be on its way.
            times_at_rest = times_at_rest + 1 if is_idle else 0
            return times_at_rest > 1 or self.program.poll() is not None
        self.desktop.until(rest, 'a console at rest', may_end=True)

    def test_whatever_comes(self):
        self.random = random.Random(SEED)
        self.begin()
        for number in range(ROUNDS):
            windows = self.windows()
            for _ in range(20):
                words = self.action(windows)
                self.desktop.tool('xdotool', *words, check=False)
                if self.program.poll() is not None:
                    break
            self.settle()
            # It ends only when it is told to.
            if self.program.poll() is not None:
                self.assertEqual(self.program.returncode, 0, 'seed %d, round %d' % (SEED, number))
                self.assertTrue(self.value_of('kept') == '4242' or self.was_cleared())
                self.begin()
        self.settle()
        self.desktop.focus(self.window)
        self.desktop.keys('Pause', 'Escape')
        self.type('kept=4242')
        self.assertEqual(self.tell('kept'), '4242', 'seed %d, rounds %d' % (SEED, ROUNDS))
        self.assertEqual(self.end(), 0)
        self.assertEqual(self.value_of('kept'), '4242')


if __name__ == '__main__':
    desktop_harness.main(__doc__)
