# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop of its own for tests of programs with windows.

A Desktop is an X server without a screen (Xvfb), a window manager (openbox)
and an empty home for the programs that are run in it. Keys and the mouse go in
through xdotool, as from a person; pictures come out through ImageMagick. All of
it ends with the test, also when the test is killed.

Nothing here sleeps and hopes: each step waits until what it waits for is the
case, and fails with a sentence and a picture of the screen when it does not
come in time. A test is written like this:

    class Console(desktop_harness.DesktopTest):
        def test_a_sum_is_shown(self):
            self.run_program()
            window = self.desktop.window('Vorpen')
            self.desktop.focus(window)
            self.desktop.type('1+2\\n')
            self.desktop.until(lambda: self.desktop.picture(window).count(RED) > 20, 'a red 3')

    if __name__ == '__main__':
        desktop_harness.main(__doc__)

Pixels are counted from the upper left corner of the window, or of the screen
where no window is named; a colour is (red, green, blue), 0 to 255; a box is
(left, top, right, bottom), the last two being the first pixel outside.
"""
import ctypes
import functools
import os
import pty
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = None
# Generous, since the machine may be busy; what comes is met at once.
SECONDS = 60
TOOLS = {'Xvfb': 'xvfb', 'openbox': 'openbox', 'xdotool': 'xdotool', 'import': 'imagemagick', 'xclip': 'xclip',
         'xwininfo': 'x11-utils', 'xkbcomp': 'x11-xkb-utils'}


def die_with_parent():
    """Runs in a child: a test that is killed leaves no server and no window behind."""
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG


class Picture:
    """The pixels of a window, of a part of one, or of the screen."""

    def __init__(self, width, height, data):
        self.width, self.height, self.data = width, height, bytes(data)
        # Four bytes a pixel, the last being without meaning (255).
        self.pixels = memoryview(self.data).cast('I')
        assert len(self.pixels) == width * height, (width, height, len(data))

    @staticmethod
    def cell(colour):
        return int.from_bytes(bytes(colour) + b'\xff', sys.byteorder)

    def at(self, x, y):
        return tuple(self.data[4 * (y * self.width + x):][:3])

    def rows(self):
        return (self.pixels[y * self.width:(y + 1) * self.width].tolist() for y in range(self.height))

    def count(self, colour):
        return self.pixels.tolist().count(self.cell(colour))

    def colours(self):
        """Each colour with the number of its pixels, the most frequent first."""
        counts = {}
        for cell in self.pixels:
            counts[cell] = counts.get(cell, 0) + 1
        ordered = sorted(counts.items(), key=lambda one: -one[1])
        return {tuple(cell.to_bytes(4, sys.byteorder)[:3]): count for cell, count in ordered}

    def box(self, *colours):
        """The smallest box that holds all pixels of these colours; None without any."""
        return self.box_where({self.cell(colour) for colour in colours}.__contains__)

    def box_except(self, *colours):
        """The smallest box that holds all pixels of any other colour; None without any."""
        others = {self.cell(colour) for colour in colours}
        return self.box_where(lambda cell: cell not in others)

    def box_where(self, wanted):
        found = None
        for y, row in enumerate(self.rows()):
            if not any(wanted(cell) for cell in set(row)):
                continue
            left = next(x for x in range(self.width) if wanted(row[x]))
            right = next(x for x in range(self.width, 0, -1) if wanted(row[x - 1]))
            found = (min(left, found[0]), found[1], max(right, found[2]), y + 1) if found else (left, y, right, y + 1)
        return found

    def crop(self, left, top, right, bottom):
        left, top = max(left, 0), max(top, 0)
        right, bottom = min(right, self.width), min(bottom, self.height)
        lines = [self.data[4 * (y * self.width + left):4 * (y * self.width + right)] for y in range(top, bottom)]
        return Picture(right - left, bottom - top, b''.join(lines))

    def save(self, path):
        subprocess.run(['convert', '-size', '%dx%d' % (self.width, self.height), '-depth', '8', 'rgba:-',
                        'png24:' + path], input=self.data, check=True, timeout=SECONDS)
        return path

    def __eq__(self, other):
        return isinstance(other, Picture) and (self.width, self.data) == (other.width, other.data)


class Desktop:
    """An X server with a window manager, and a home for programs; use it with "with"."""

    def __init__(self, width=1280, height=1024):
        self.width, self.height = width, height
        self.name = 'desktop'  # of the pictures of failures

    def __enter__(self):
        missing = [package for tool, package in TOOLS.items() if not shutil.which(tool)]
        if missing:
            raise RuntimeError('these packages are needed: ' + ' '.join(missing))
        self.folder = tempfile.TemporaryDirectory(prefix='vorpen-desktop-')
        self.programs, self.services = [], []
        try:
            self.home = self.new_home()
            display = self.start_server()
            self.variables = {
                **{key: value for key, value in os.environ.items()
                   if not key.startswith(('QT_', 'XDG_', 'WAYLAND_', 'DBUS_')) and key != 'XAUTHORITY'},
                'DISPLAY': display, 'LC_ALL': 'C.UTF-8', 'QT_QPA_PLATFORM': 'xcb', 'NO_AT_BRIDGE': '1'}
            # A window that is shown before the window manager has come up for good is never
            # seen; this it starts when it has.
            ready = os.path.join(self.folder.name, 'window-manager-is-ready')
            self.start_service('openbox', '--startup', 'touch ' + ready)
            self.until(lambda: os.path.exists(ready), 'window manager')
        except BaseException:
            self.__exit__(*sys.exc_info())
            raise
        return self

    def __exit__(self, *failure):
        try:
            self.end_programs()
        finally:
            self.end_services()

    def end_services(self):
        for service in reversed(self.services):
            service.kill()
            service.wait()
        self.folder.cleanup()

    # ---- What runs

    def start_server(self):
        reading, writing = os.pipe()
        self.start_service('Xvfb', '-displayfd', str(writing), '-screen', '0', '%dx%dx24' % (self.width, self.height),
                           '-nolisten', 'tcp', '-noreset', pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError('Xvfb does not start:\n' + self.said('Xvfb'))
        return ':' + number

    def start_service(self, *command, **options):
        with open(os.path.join(self.folder.name, command[0] + '.log'), 'wb') as log:
            self.services.append(subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, env=getattr(self, 'variables', None),
                preexec_fn=die_with_parent, **options))

    def said(self, name):
        with open(os.path.join(self.folder.name, name + '.log'), errors='replace') as log:
            return log.read()

    def new_home(self):
        """An empty home for the programs that are run from now on."""
        self.home = tempfile.mkdtemp(dir=self.folder.name)
        return self.home

    @property
    def program_folder(self):
        """Where a program keeps its files: it stands there itself, since that may be written to."""
        return os.path.join(self.home, 'bin')

    def place(self, program):
        """Puts a program of the build with its helpers into the home; the path of it there."""
        source, name = os.path.split(program)
        if not os.path.isdir(self.program_folder):
            os.mkdir(self.program_folder)
            os.symlink(os.path.join(os.path.dirname(source), 'share'), os.path.join(self.home, 'share'))
            for one in (name, 'vorpen-cli', 'VorpenHelp', 'lookup'):
                if os.path.exists(os.path.join(source, one)):
                    shutil.copy(os.path.join(source, one), self.program_folder)
        return os.path.join(self.program_folder, name)

    def run(self, *command, cwd=None, **variables):
        """Starts a program as one would in a terminal of this desktop."""
        terminal, its_end = pty.openpty()
        path = os.path.join(self.folder.name, 'program.log')
        with open(path, 'ab') as log:
            program = subprocess.Popen(
                command, stdin=its_end, stdout=log, stderr=log, cwd=cwd or self.home, preexec_fn=die_with_parent,
                start_new_session=True,
                env={**self.variables, 'HOME': self.home, 'XDG_DATA_HOME': os.path.join(self.home, 'data'),
                     'XDG_CONFIG_HOME': os.path.join(self.home, 'config'),
                     'XDG_CACHE_HOME': os.path.join(self.home, 'cache'), **variables})
        os.close(its_end)
        program.terminal = terminal
        self.programs.append(program)
        return program

    def end_programs(self):
        for program in self.programs:
            try:
                # With whatever it started itself; the group outlives its leader.
                os.killpg(program.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            program.wait()
            os.close(program.terminal)
        if self.programs and self.services:
            self.programs.clear()
            # The server takes a moment to notice; the next test shall not meet them.
            self.until(lambda: not self.titles(), 'end of all windows')

    def wait_for_end(self, program):
        """The exit status of a program that ends by itself."""
        self.until(lambda: program.poll() is not None, 'end of the program', may_end=True)
        return program.returncode

    def tool(self, *command, check=True, **options):
        """What a tool prints."""
        done = subprocess.run(command, capture_output=True, timeout=SECONDS, env=self.variables, **options)
        if check and done.returncode != 0:
            self.fail('%s: %s' % (' '.join(command), done.stderr.decode(errors='replace').strip()))
        return done.stdout.decode(errors='replace')

    # ---- Waiting and failing

    def until(self, condition, what, seconds=SECONDS, may_end=False):
        """Waits until a condition holds and answers what it gives."""
        end = time.monotonic() + seconds
        pause = 0.005
        while True:
            # Asked for first: what a program does just before its end counts.
            ended = [one for one in self.programs if one.poll() is not None]
            answer = condition()
            if answer:
                return answer
            if ended and not may_end:
                self.fail('the program ended (status %d) before: %s' % (ended[0].returncode, what))
            if time.monotonic() > end:
                self.fail('not within %g seconds: %s' % (seconds, what))
            time.sleep(pause)
            pause = min(2 * pause, 0.1)

    def settled(self, window=None, seconds=SECONDS):
        """The picture, once two in a row are alike; only for looking at it, a test waits for what it expects."""
        last = [None]

        def still():
            former, last[0] = last[0], self.picture(window)
            return last[0] if former == last[0] else None
        return self.until(still, 'a picture that stands still', seconds)

    def fail(self, message):
        raise AssertionError('%s\n%s' % (message, self.evidence()))

    def evidence(self):
        """Where the picture of the screen is, which windows there are, and what the program said."""
        try:
            self.evidence_taken = True
            folder = os.environ.get('VORPEN_DESKTOP_PICTURES') or tempfile.gettempdir()
            os.makedirs(folder, exist_ok=True)
            path = os.path.join(folder, '%s-%d.png' % (self.name, os.getpid()))
            self.picture().save(path)
            said = self.said('program') if os.path.exists(os.path.join(self.folder.name, 'program.log')) else ''
            return 'screen: %s\nwindows: %s\nthe program said: %s' % (path, self.titles(), said[-2000:] or 'nothing')
        except Exception as failure:
            return 'screen: no picture (%s)' % failure

    # ---- Windows

    def search(self, title, exactly=True):
        # xdotool takes an extended regular expression.
        pattern = re.sub(r'([][\\.*^$+?(){}|])', r'\\\1', title)
        pattern = '^%s$' % pattern if exactly else pattern
        return [int(line) for line in
                self.tool('xdotool', 'search', '--onlyvisible', '--name', pattern, check=False).split()]

    def titles(self):
        windows = self.tool('xdotool', 'search', '--onlyvisible', '--name', '.', check=False).split()
        return [self.tool('xdotool', 'getwindowname', one, check=False).strip() for one in windows]

    def window(self, title, exactly=True, seconds=SECONDS):
        """The window of this title, once it is shown; the last of several."""
        return self.until(lambda: self.search(title, exactly), 'a window "%s"' % title, seconds)[-1]

    def no_window(self, title, exactly=True):
        self.until(lambda: not self.search(title, exactly), 'no window "%s" any more' % title, may_end=True)

    def geometry(self, window):
        """Left, top, width and height of what a window shows, without its frame."""
        # xdotool tells a place that counts the frame twice.
        said = self.tool('xwininfo', '-id', str(window))
        return tuple(int(re.search(key + r':\s+(-?\d+)', said).group(1))
                     for key in ('Absolute upper-left X', 'Absolute upper-left Y', 'Width', 'Height'))

    def has_focus(self, window):
        return self.tool('xdotool', 'getwindowfocus', check=False).strip() == str(window)

    def focus(self, window):
        self.tool('xdotool', 'windowactivate', str(window))
        self.until(lambda: self.has_focus(window), 'focus of "%s"' % self.title(window))

    def title(self, window):
        return self.tool('xdotool', 'getwindowname', str(window), check=False).strip()

    def move_window(self, window, left, top):
        self.tool('xdotool', 'windowmove', str(window), str(left), str(top))
        # The frame of the window manager lies outside.
        self.until(lambda: abs(self.geometry(window)[0] - left) < 60 and abs(self.geometry(window)[1] - top) < 60,
                   'window at %d, %d' % (left, top))

    def resize_window(self, window, width, height):
        """What the window shows gets this size, or the nearest that it allows."""
        before = self.geometry(window)[2:]
        self.tool('xdotool', 'windowsize', str(window), str(width), str(height))
        self.until(lambda: self.geometry(window)[2:] == (width, height) or self.geometry(window)[2:] != before,
                   'window of %d by %d pixels' % (width, height))

    def close_window(self, window):
        """As with the cross of its frame."""
        self.focus(window)
        self.keys('alt+F4')

    # ---- Keys, mouse and clipboard

    def type(self, text):
        """Types into the window that has the focus; a line feed is Enter."""
        self.tool('xdotool', 'type', '--delay', '1', '--', text)

    def keys(self, *names):
        """Presses keys by name: "Return", "Up", "ctrl+c", "shift+Home", "F1"."""
        self.tool('xdotool', 'key', '--delay', '1', '--', *names)

    def add_keys(self, *names):
        """Puts characters onto keys that have none.

        xdotool puts what the keyboard lacks onto a key for as long as it types it. At each
        such change the window manager binds all of its keys anew, and a click meanwhile waits
        for that, with all that comes after it.
        """
        display = self.variables['DISPLAY']
        keymap = self.tool('xkbcomp', display, '-')
        symbols = keymap.index('{', keymap.index('xkb_symbols')) + 1
        taken = set(re.findall(r'key\s+(<\w+>)', keymap[symbols:]))
        unused = [key for key in re.findall(r'(<I\d+>) = ', keymap) if key not in taken]
        added = ''.join('\nkey %s { [ %s ] };' % pair for pair in zip(unused, names))
        self.tool('xkbcomp', '-w0', '-', display, input=(keymap[:symbols] + added + keymap[symbols:]).encode())

    def move(self, x, y, window=None):
        where = ['--window', str(window)] if window else []
        self.tool('xdotool', 'mousemove', *where, str(x), str(y))

    def press(self, button=1):
        self.tool('xdotool', 'mousedown', str(button))

    def release(self, button=1):
        self.tool('xdotool', 'mouseup', str(button))

    def click(self, x, y, window=None, button=1, times=1, modifier=None):
        self.move(x, y, window)
        if modifier:
            self.tool('xdotool', 'keydown', modifier)
        self.tool('xdotool', 'click', '--repeat', str(times), '--delay', '30', str(button))
        if modifier:
            self.tool('xdotool', 'keyup', modifier)

    def scroll(self, steps, x, y, window=None):
        """Turns the wheel over a point, downwards for positive steps."""
        self.click(x, y, window, button=5 if steps > 0 else 4, times=abs(steps))

    def drag(self, points, window=None, button=1):
        """Goes from point to point with the button held down."""
        self.move(*points[0], window)
        self.press(button)
        for point in points[1:]:
            self.move(*point, window)
        self.release(button)

    def clipboard(self, selection='clipboard'):
        return self.tool('xclip', '-selection', selection, '-out', check=False)

    def set_clipboard(self, text, selection='clipboard'):
        # It stays to serve the text, so it must not hold our pipe for its answer.
        subprocess.run(['xclip', '-selection', selection, '-in'], input=text.encode(), stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, env=self.variables, check=True, timeout=SECONDS)
        self.until(lambda: self.clipboard(selection) == text, 'text on the clipboard')

    # ---- Pictures

    def picture(self, window=None, box=None):
        """What is on the screen, in a window's area or all of it; box is a part of that."""
        done = subprocess.run(['import', '-silent', '-window', 'root', '-depth', '8', 'rgba:-'], capture_output=True,
                              timeout=SECONDS, env=self.variables, check=True)
        whole = Picture(self.width, self.height, done.stdout)
        if window is not None:
            left, top, width, height = self.geometry(window)
            whole = whole.crop(left, top, left + width, top + height)
        return whole.crop(*box) if box else whole

    def save(self, path, window=None):
        return self.picture(window).save(path)


class DesktopTest(unittest.TestCase):
    """The tests of a class share a desktop; each has a home and programs of its own."""

    @classmethod
    def setUpClass(cls):
        cls.desktop = Desktop()
        cls.desktop.__enter__()
        cls.addClassCleanup(cls.desktop.__exit__)

    def __init_subclass__(cls):
        for name, test in list(vars(cls).items()):
            if name.startswith('test'):
                setattr(cls, name, cls.with_evidence(test))

    @staticmethod
    def with_evidence(test):
        @functools.wraps(test)
        def run(self):
            self.desktop.evidence_taken = False
            try:
                test(self)
            except unittest.SkipTest:
                raise
            except Exception as failure:
                if not self.desktop.evidence_taken:
                    failure.add_note(self.desktop.evidence())
                raise
        return run

    def setUp(self):
        self.desktop.name = self.id().replace('__main__.', '')
        self.desktop.new_home()
        self.addCleanup(self.desktop.end_programs)

    def run_program(self, *arguments, **options):
        return self.desktop.run(self.desktop.place(PROGRAM), *arguments, **options)


def main(usage):
    """The tests of the file that calls this: FILE PROGRAM [options of unittest]."""
    global PROGRAM
    if len(sys.argv) < 2:
        sys.exit(usage)
    # A test file is "__main__", so the module that it imported is this one.
    sys.modules['desktop_harness'].PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
