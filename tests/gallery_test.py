# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the scripts of examples/gallery: each ends in silence and leaves one
figure, which is well-formed and, where rsvg-convert is installed, can be drawn.

usage: gallery_test.py PROGRAM
"""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

PROGRAM = None
# Generous, since the same tests run under the sanitizers on a busy machine.
SECONDS = 120
GALLERY = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'examples', 'gallery')
SVG = '{http://www.w3.org/2000/svg}'

# What each figure is there to show, as the least number of elements by kind.
SHOWS = {
    'bars': {'rect': 13, 'text': 24},
    'bessel': {'polyline': 3, 'circle': 6},
    'bifurcation': {'line': 50000},
    'butterfly': {'polyline': 1},
    'curves': {'polyline': 15, 'circle': 13},
    'cycloids': {'polyline': 3, 'circle': 5},
    'decades': {'polyline': 5, 'clipPath': 4},
    'error_bars': {'circle': 10, 'line': 50, 'polyline': 1},
    'filled': {'polygon': 2, 'polyline': 2},
    'fit': {'clipPath': 2, 'circle': 21},
    'fourier': {'polyline': 4},
    'histogram': {'rect': 30, 'polyline': 1},
    'labels': {'text': 50},
    'many_frames': {'clipPath': 25, 'polyline': 25},
    'phase_portrait': {'polyline': 8, 'circle': 8},
    'polar': {'circle': 4, 'polyline': 2},
    'resonance': {'polyline': 8, 'clipPath': 2},
    'shapes': {'polygon': 1, 'circle': 1, 'rect': 3},
    'snowflake': {'polygon': 1},
    'subplots': {'clipPath': 4, 'polyline': 4},
}


class Gallery(unittest.TestCase):
    def figure_of(self, name):
        """The bytes of the file that a script writes."""
        with tempfile.TemporaryDirectory() as home:
            script = shutil.copy(os.path.join(GALLERY, name + '.vrp'), home)
            kept = {k: v for k, v in os.environ.items() if k not in ('DISPLAY', 'WAYLAND_DISPLAY')}
            done = subprocess.run([PROGRAM, '--home', home, script], capture_output=True, text=True,
                                  timeout=SECONDS, env=kept)
            self.assertEqual((done.stdout, done.stderr, done.returncode), ('', '', 0))
            with open(os.path.join(home, name + '.svg'), 'rb') as f:
                return f.read()

    def test_every_script_has_something_to_show(self):
        names = sorted(n[:-4] for n in os.listdir(GALLERY) if n.endswith('.vrp'))
        self.assertEqual(names, sorted(SHOWS))

    def test_figures(self):
        for name, shows in SHOWS.items():
            with self.subTest(name):
                data = self.figure_of(name)
                root = xml.etree.ElementTree.fromstring(data)
                self.assertEqual((root.get('width'), root.get('height')), ('570', '406'))
                for kind, least in shows.items():
                    self.assertGreaterEqual(sum(1 for _ in root.iter(SVG + kind)), least, kind)
                self.check_can_be_drawn(data)

    def check_can_be_drawn(self, data):
        if not shutil.which('rsvg-convert'):
            return
        drawn = subprocess.run(['rsvg-convert', '-f', 'png'], input=data, capture_output=True, timeout=SECONDS)
        self.assertEqual((drawn.returncode, drawn.stderr), (0, b''))
        self.assertTrue(drawn.stdout.startswith(b'\x89PNG'))


if __name__ == '__main__':
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
