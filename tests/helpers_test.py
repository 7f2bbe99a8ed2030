# SPDX-License-Identifier: GPL-3.0-or-later
"""The helper programs from outside, their data, and the examples of the texts.

usage: helpers_test.py PROGRAM HELP_PROGRAM LOOKUP_PROGRAM
"""
import math
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'helpers'))
from help_files import Session, folded, read_sections, topic_files, typed_lines  # noqa: E402

PROGRAM = HELP = LOOKUP = None
GRAVITATION = 6.6743e-11
ASTRONOMICAL_UNIT = 149597870700.0

# These wait for a user or need a picture, so that nobody can type them here.
BY_HAND = {'messageBox', 'getclick', 'getline', 'getpixel', 'loadBitmap', 'createButton', 'menu', 'snipImage',
           'debugtest', 'getkeyb', 'getch', 'help'}
# These show how something fails.
FAILING = {'assert', 'error', 'save', 'isdefined'}
SECTIONS = {'topic', 'title', 'forms', 'about', 'arguments', 'result', 'fails', 'group', 'more', 'example',
            'example by hand', 'see'}


class InFolder(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = self.temporary.name

    def tearDown(self):
        self.temporary.cleanup()

    def run_helper(self, program, arguments, answer, cwd=None):
        """The status and the text of the answer, None without one."""
        path = os.path.join(self.folder, answer)
        if os.path.exists(path):
            os.remove(path)
        done = subprocess.run([program] + list(arguments), cwd=cwd or self.folder, timeout=60, capture_output=True)
        self.assertGreaterEqual(done.returncode, 0)
        text = None
        if os.path.exists(path):
            with open(path, encoding='utf-8') as file:
                text = file.read()
        return done.returncode, text


class HelpProgram(InFolder):
    def help(self, *arguments):
        return self.run_helper(HELP, arguments, 'vorpenhelp.txt')

    def test_a_text_has_its_parts(self):
        status, text = self.help('poly')
        self.assertEqual(status, 0)
        for part in ('{*poly}  polynomial', '  poly(c, x)', '{*Arguments}', '{*Result}', '{*Fails}', '{*Example}',
                     '{g:poly([1, 0, 2], [0, 1, 2])', '    1 3 9', 'See also {=polyshow} {=interp}'):
            self.assertIn(part, text.split('\n'))

    def test_the_longer_text_has_more(self):
        short, long = self.help('sin')[1], self.help('sin', '??')[1]
        self.assertLess(len(short), len(long))
        self.assertIn('applied to each element', long)
        self.assertNotIn('applied to each element', short)
        self.assertEqual(self.help('sin', 'x')[1], short)

    def test_lines_fit_the_console(self):
        for name in self.topics():
            for line in self.help(name, '??')[1].split('\n'):
                # What the program shows in an example is as long as it is.
                if not line.startswith('    built-in version'):
                    self.assertLessEqual(len(line), 80, name + ': ' + line)

    def topics(self):
        done = subprocess.run([HELP, '--topics'], capture_output=True, text=True, timeout=60)
        self.assertEqual(done.returncode, 0)
        return done.stdout.split()

    def test_braces_stand_as_they_are(self):
        self.assertIn('{:  while condition { statements }', self.help('while')[1].split('\n'))

    def test_signs_and_capitals(self):
        self.assertIn('{*@+}', self.help('@+')[1])
        self.assertIn('seconds since tic', self.help('Toc')[1])
        self.assertIn('milliseconds since tic', self.help('toc')[1])

    def test_a_slip_of_the_keyboard(self):
        self.assertIn('{=sqrt}', self.help('sqr')[1])
        self.assertIn('{=plot}', self.help('polt')[1])

    def test_an_unknown_name_leaves_no_answer(self):
        for name in ('nothinglikethis', 'zz', '', '../functions/sin', 'x' * 5000, '{', '\n', 'elementwise'):
            self.assertEqual(self.help(name), (0, None), name)

    def test_what_cannot_be_written_is_a_failure(self):
        os.mkdir(os.path.join(self.folder, 'sub'))
        os.mkdir(os.path.join(self.folder, 'sub', 'vorpenhelp.txt'))
        done = subprocess.run([HELP, 'sin'], cwd=os.path.join(self.folder, 'sub'), timeout=60)
        self.assertEqual(done.returncode, 1)

    def test_wrong_arguments(self):
        self.assertEqual(self.help(), (2, None))
        self.assertEqual(self.help('sin', '??', 'more'), (2, None))

    def test_the_calculator_finds_its_helper(self):
        shown = folded(Session(PROGRAM, ['?sin']).lines)
        self.assertIn('sin, built-in function of type 3.', shown)
        self.assertIn('The sine of each element.', shown)

    def test_the_longer_text_on_two_marks(self):
        self.assertIn('The function is applied to each element', ' '.join(Session(PROGRAM, ['??sin']).lines))


class Installation(InFolder):
    """The places of an installation: bin, libexec/vorpen, share/vorpen."""

    def setUp(self):
        super().setUp()
        self.data = os.path.join(self.folder, 'share', 'vorpen')
        here = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'helpers')
        for name in ('help', 'properties'):
            shutil.copytree(os.path.join(here, name), os.path.join(self.data, name))
        for program, place in ((PROGRAM, 'bin'), (HELP, 'libexec/vorpen'), (LOOKUP, 'libexec/vorpen')):
            os.makedirs(os.path.join(self.folder, place), exist_ok=True)
            shutil.copy(program, os.path.join(self.folder, place))

    def test_helpers_and_data_are_found(self):
        # The texts of the source tree do not say this.
        with open(os.path.join(self.data, 'help', 'functions', 'sin.txt'), 'w', encoding='utf-8') as file:
            file.write('topic: sin\ntitle: installed\nabout: The installed text.\n')
        with open(os.path.join(self.data, 'properties', 'elements.txt'), 'w', encoding='utf-8') as file:
            file.write('columns: name density\nunits: - kg/m3\nnewium 5\n')
        program = os.path.join(self.folder, 'bin', os.path.basename(PROGRAM))
        shown = folded(Session(program, ['?sin', 'property("newium", "density")']).lines)
        self.assertIn('The installed text.', shown)
        self.assertEqual(shown[-1], '5')


class OwnHelper(InFolder):
    """A helper in the program's directory takes the place of the installed one."""

    def ask(self, home, script, line):
        folder = os.path.join(self.folder, 'sub')
        os.makedirs(folder)
        for name in ('VorpenHelp', 'lookup'):
            with open(os.path.join(folder, name), 'w', encoding='utf-8') as file:
                file.write('#!/bin/sh\n' + script + '\n')
            os.chmod(os.path.join(folder, name), 0o755)
        done = subprocess.run([PROGRAM, '--home', home, '-e', line], cwd=self.folder, capture_output=True, text=True,
                              stdin=subprocess.DEVNULL, timeout=60)
        self.assertEqual(done.stderr, '')
        return folded(done.stdout.splitlines())

    def test_in_a_directory_given_by_a_relative_path(self):
        script = 'echo "$0 $*" > "$(dirname "$0")/vorpenhelp.txt"'
        path = os.path.join(os.path.realpath(self.folder), 'sub', 'VorpenHelp')
        self.assertEqual(self.ask('sub', script, '??zz'), ['not recognized', path + ' zz ??'])

    def test_its_answer_stands_in_its_working_directory_too(self):
        shown = self.ask(os.path.join(self.folder, 'sub'), 'echo here > vorpenhelp.txt', '?zz')
        self.assertEqual(shown, ['not recognized', 'here'])

    def test_a_helper_that_hangs(self):
        self.assertEqual(self.ask('sub', 'sleep 1000', '?zz'), ['not recognized', '(further help unavailable)'])

    def test_a_helper_that_writes_without_end(self):
        shown = self.ask('sub', 'yes | tee property_result.txt', 'property("a", "b")')
        self.assertEqual(shown, ['problem with database lookup'])


class Texts(unittest.TestCase):
    def test_each_file_has_known_sections(self):
        for path in topic_files():
            sections = read_sections(path)
            with self.subTest(path):
                self.assertLessEqual(set(sections), SECTIONS)
                for needed in ('topic', 'title', 'about'):
                    self.assertTrue(sections.get(needed), needed)
                examples = [k for k in sections if k.startswith('example')]
                self.assertEqual(len(examples), 0 if sections['topic'] == ['topics'] else 1)
                for example in examples:
                    self.assertTrue(typed_lines(sections[example]))

    def test_groups_have_a_note(self):
        for path in topic_files():
            for group in read_sections(path).get('group', []):
                note = os.path.join(os.path.dirname(path), '..', 'groups', group + '.txt')
                self.assertTrue(os.path.exists(note), path)

    def test_examples_show_what_is_written(self):
        for path in topic_files():
            sections = read_sections(path)
            names = set(sections['topic'][0].split())
            if 'example by hand' in sections:
                self.assertTrue(names & BY_HAND, path)
                continue
            example = sections.get('example')
            if not example:
                continue
            session = Session(PROGRAM, typed_lines(example))
            with self.subTest(path):
                self.assertEqual(folded(session.lines), folded(example))
                self.assertTrue(not session.failed or names & FAILING, 'the example fails')


def table_of(name):
    """The rows of a data set by name, numbers as numbers."""
    folder = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'helpers', 'properties')
    columns, rows = [], {}
    with open(os.path.join(folder, name + '.txt'), encoding='utf-8') as file:
        for line in file:
            if line.startswith('columns:'):
                columns = line.split()[1:]
            elif line.startswith('units:'):
                assert len(line.split()) - 1 == len(columns), name
            elif line.strip() and not line.startswith('#'):
                cells = line.split()
                assert len(cells) == len(columns), line
                row = dict(zip(columns, cells))
                assert row['name'] not in rows, line
                for key, cell in row.items():
                    try:
                        row[key] = float(cell)
                    except ValueError:
                        pass
                rows[row['name']] = {k: v for k, v in row.items() if v != '-'}
    return rows


class Properties(unittest.TestCase):
    def near(self, value, wanted, relative, what):
        self.assertLess(abs(value / wanted - 1), relative, what)

    def test_elements_are_in_order(self):
        elements = list(table_of('elements').values())
        self.assertEqual([row['number'] for row in elements], list(range(1, 119)))
        self.assertEqual(len({row['symbol'] for row in elements}), 118)
        # The pairs whose heavier isotopes come first (Ar K, Co Ni, Te I, Th Pa)
        # and the mass numbers of the heavy elements break the order of masses.
        exceptions = [(a['symbol'], b['symbol']) for a, b in zip(elements[:92], elements[1:92])
                      if a['mass'] >= b['mass']]
        self.assertEqual(exceptions, [('Ar', 'K'), ('Co', 'Ni'), ('Te', 'I'), ('Th', 'Pa')])

    def test_elements_melt_below_their_boiling_point(self):
        for name, row in table_of('elements').items():
            if 'melting_point' in row and 'boiling_point' in row:
                self.assertLess(row['melting_point'], row['boiling_point'], name)
            self.assertTrue(1.5 < row['mass'] / row['number'] < 2.65 or name == 'hydrogen', name)

    def test_gases_have_the_density_of_their_molar_volume(self):
        molar_volume = 8.314462618 * 273.15 / 101325
        elements = table_of('elements')
        for name, atoms in (('hydrogen', 2), ('helium', 1), ('nitrogen', 2), ('oxygen', 2), ('fluorine', 2), ('neon', 1),
                            ('chlorine', 2), ('argon', 1), ('krypton', 1), ('xenon', 1)):
            density = atoms * elements[name]['mass'] * 1e-3 / molar_volume
            self.near(elements[name]['density'], density, 0.02, name)

    def test_planets_are_as_dense_as_mass_and_volume_say(self):
        # The small ones are far from round and badly known.
        for name in ('stars', 'planets', 'dwarf_planets', 'moons'):
            for body, row in table_of(name).items():
                volume = 4 / 3 * math.pi * row['radius'] ** 3
                relative = 0.03 if body in ('phobos', 'deimos') else 0.01
                self.near(row['density'], row['mass'] / volume, relative, body)
                if 'gravity' in row:
                    self.near(row['gravity'], GRAVITATION * row['mass'] / row['radius'] ** 2, 0.02, body)

    def test_keplers_third_law(self):
        sun = table_of('stars')['sun']
        planets = table_of('planets')
        for name, row in {**planets, **table_of('dwarf_planets')}.items():
            law = 4 * math.pi ** 2 * row['semi_major_axis'] ** 3 / row['period'] ** 2
            self.near(law, GRAVITATION * sun['mass'], 0.02, name)
        centres = {**planets, **table_of('dwarf_planets')}
        for name, row in table_of('moons').items():
            law = 4 * math.pi ** 2 * row['semi_major_axis'] ** 3 / row['period'] ** 2
            self.near(law, GRAVITATION * (centres[row['planet']]['mass'] + row['mass']), 0.02, name)

    def test_planets_come_from_the_sun_outwards(self):
        axes = [row['semi_major_axis'] for row in table_of('planets').values()]
        self.assertEqual(axes, sorted(axes))
        self.near(table_of('planets')['earth']['semi_major_axis'], ASTRONOMICAL_UNIT, 1e-4, 'earth')

    def test_substances(self):
        elements = {row['symbol']: row['mass'] for row in table_of('elements').values()}
        elements['D'] = 2.014
        for name, row in table_of('substances').items():
            if 'refractive_index' in row:
                self.assertTrue(1 < row['refractive_index'] < 2.5, name)
            if 'melting_point' in row and 'boiling_point' in row:
                self.assertLess(row['melting_point'], row['boiling_point'], name)
            if 'formula' in row:
                mass, rest = 0, row['formula']
                while rest:
                    length = 2 if rest[:2] in elements else 1
                    symbol, rest = rest[:length], rest[length:]
                    digits = len(rest) - len(rest.lstrip('0123456789'))
                    mass += elements[symbol] * int(rest[:digits] or 1)
                    rest = rest[digits:]
                self.near(row['molar_mass'], mass, 1e-3, name)

    def test_metals_follow_dulong_and_petit(self):
        substances, elements = table_of('substances'), table_of('elements')
        for name in ('iron', 'copper', 'aluminium', 'gold', 'silver', 'lead', 'tin', 'zinc', 'nickel', 'titanium',
                     'tungsten', 'magnesium', 'platinum', 'sodium', 'chromium', 'cobalt', 'mercury'):
            molar = substances[name]['specific_heat'] * elements[name]['mass'] * 1e-3
            self.near(molar, 3 * 8.314462618, 0.15, name)


class LookupProgram(InFolder):
    def look(self, *arguments):
        return self.run_helper(LOOKUP, arguments, 'property_result.txt')

    def lines(self, query):
        status, text = self.look(query)
        self.assertEqual(status, 0, query)
        lines = text.split('\n')
        self.assertEqual(lines.pop(), '')
        self.assertFalse(lines[0].startswith('\\'))
        return lines[1:]

    def test_numbers(self):
        for query, number in (('iron_density', '7870'), ('Iron_Density', '7870'), ('Fe_density', '7870'),
                              ('iron density', '7870'), ('water_specific_heat', '4181.8'), ('earth_radius', '6371000'),
                              ('carbon_dioxide_molar_mass', '44.009'), ('carbon_mass', '12.011'),
                              ('mercury_mass', '200.592'), ('planet_mercury_mass', '3.301e23'),
                              ('iron_atomic_number', '26'), ('pluto_period', '7.824384e9')):
            self.assertEqual(self.lines(query), [number], query)

    def test_other_words_for_a_property(self):
        for query, other in (('iron_melting', 'iron_melting_point'), ('earth_distance', 'earth_semi_major_axis'),
                             ('water_heat_capacity', 'water_specific_heat'), ('diamond_n', 'diamond_refractive_index')):
            self.assertEqual(self.lines(query), self.lines(other))

    def test_tables(self):
        pairs = self.lines('water_density_table')
        self.assertEqual(pairs[:3], ['\\pairs', '11', '0 999.84'])
        self.assertEqual(len(pairs), 13)
        self.assertEqual(self.lines('water_viscosity'), self.lines('water_viscosity_table'))
        self.assertEqual(self.lines('water_density_50'), ['988.04'])
        self.assertEqual(self.lines('water_density_55'), ['985.62'])
        for query in ('water_density_-1', 'water_density_101', 'water_density_nan', 'water_density_x'):
            self.assertEqual(self.look(query), (1, None), query)

    def test_sets(self):
        self.assertEqual(self.lines('elements_names')[:3], ['\\table', '118', 'hydrogen'])
        self.assertEqual(self.lines('planets_mass')[:3], ['\\pairs', '8', '1 3.301e+23'])

    def test_what_is_known(self):
        lines = self.lines('iron_properties')
        self.assertEqual(int(lines[1]), len(lines) - 2)
        self.assertIn('density  7870 kg/m3', lines)
        self.assertIn('thermal_conductivity  80.4 W/(m.K)', lines)

    def test_formulas(self):
        self.assertEqual(self.lines('formula water'), ['\\table', '1', 'H2O'])
        self.assertEqual(self.lines('formula carbon dioxide'), ['\\table', '1', 'CO2'])
        self.assertEqual(self.lines('formula iron'), ['\\table', '1', 'Fe'])
        self.assertEqual(self.lines('water_formula'), ['\\table', '1', 'H2O'])

    def test_what_is_not_known(self):
        for query in ('', '_', 'iron', 'iron_', '_density', 'iron_nothing', 'nothing_density', 'formula ', 'formula x',
                      'water_boils_', 'a' * 10000, '_' * 3000, '\\table', '../elements_mass'):
            self.assertEqual(self.look(query), (1, None), query[:40])
        self.assertEqual(self.look(), (2, None))
        self.assertEqual(self.look('a', 'b'), (2, None))

    def test_the_calculator_takes_all_three_kinds(self):
        shown = Session(PROGRAM, ['property("iron", "density")', 'property water formula', 'x << water density 50',
                                  'x', 't = property("water", "density table"); shape(t)', 't[3, 2]',
                                  'n = property("planets", "names"); shape(n)', 'n[3, :]',
                                  'property("iron", "nothing")']).lines
        self.assertEqual([line.split(' = ')[0] for line in folded(shown) if not line.startswith('> ')],
                         ['7870', 'H2O', '988.04', '988.04', '11 2', '998.21', '8 7', 'earth',
                          'problem with database lookup'])


if __name__ == '__main__':
    LOOKUP, HELP, PROGRAM = (os.path.abspath(sys.argv.pop()) for _ in range(3))
    unittest.main()
