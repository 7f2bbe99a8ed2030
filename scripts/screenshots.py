#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the pictures of the windows in docs/images, on a desktop without a screen.

usage: screenshots.py PROGRAM
"""
import os
import shutil
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, 'tests'))
import desktop_harness  # noqa: E402

CONSOLE = """r=3; A=pi r^2
1/3+1/4
sqrt(2)/3
x=1:5; x^2+1
inv([1,2;3,4])
f(t):=exp(-t)cos(3t)
integ(f,[0,2])
fzero(x^3-2;x,[0,2])
1+
"""
FIGURE = """t=linspace(0,10,200);
plot(t,exp(-t/4)*cos(3t),"b2"); axis(0,10,-1,1.2);
createButton("again","b",[55,95,18,9,0]);
createButton("grid","c",[76,95,18,9,0]);
menu(list("&Curve","&View"),list(list("sine->plot(t,sin(t))"),list("all->axis()")));
"""
SCRIPT = """function y=area(r)
    s=r^2;
    v=1:20;
    y=pi*s;!
    y=y+1;
end
"""


def main(program):
    images = os.path.join(ROOT, 'docs', 'images')
    with desktop_harness.Desktop() as desktop:
        # A folder with a short name, as it is seen; the program writes beside itself.
        home = os.path.join(desktop.home, 'bin')
        os.makedirs(home)
        for name in ('vorpen', 'vorpen-cli'):
            shutil.copy(os.path.join(os.path.dirname(os.path.abspath(program)), name), home)
        with open(os.path.join(home, 'area.vrp'), 'w') as script:
            script.write(SCRIPT)
        desktop.run(os.path.join(home, 'vorpen'), cwd='/')
        console = desktop.window('Vorpen 5a')
        desktop.focus(console)

        def save(name, window):
            time.sleep(1)
            path = os.path.join(images, name + '.png')
            desktop.settled(window, 60).save(path)
            subprocess.run(['convert', path, '+dither', '-colors', '128', '-strip', 'png8:' + path], check=True)

        desktop.type(CONSOLE)
        save('console', console)
        desktop.type(FIGURE)
        save('figure', desktop.window('Figure 1'))
        desktop.type('close(0);\ncd "%s"\nuse area\narea(3)\n' % home)
        save('debugger', desktop.window('Breakpoint at line 4 in area'))


if __name__ == '__main__':
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
