# SPDX-License-Identifier: GPL-3.0-or-later
"""The Debian package: what is in it, and the programs where it puts them.

usage: package_test.py BUILD_FOLDER [--system] [options of unittest]

The package is made, installed below a folder, tried and removed. With --system
(as root) it is installed in this system too, and removed from it.
"""
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import end_to_end

BUILD, IN_SYSTEM = None, False
SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SECONDS = 120


def run(*command, **options):
    """What a command prints; a status other than 0 is a failure."""
    path = os.environ['PATH'] + ':/usr/sbin:/sbin'
    done = subprocess.run(command, capture_output=True, timeout=SECONDS, text=True, errors='replace',
                          env={**end_to_end.environment(), 'PATH': path, 'LC_ALL': 'C.UTF-8'}, **options)
    if done.returncode != 0:
        raise AssertionError('%s: status %d\n%s%s' % (' '.join(command), done.returncode, done.stdout, done.stderr))
    return done.stdout


def files_below(folder):
    return sorted(os.path.relpath(os.path.join(place, name), folder)
                  for place, _, names in os.walk(folder) for name in names)


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        missing = [tool for tool in ('cpack', 'dpkg-deb', 'dpkg-shlibdeps') if not shutil.which(tool)]
        if missing:
            raise unittest.SkipTest('no package can be made here, for want of ' + ', '.join(missing))
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.folder = os.path.realpath(temporary.name)
        run('cpack', '-G', 'DEB', '-B', os.path.join(cls.folder, 'made'), cwd=BUILD)
        cls.package, = glob.glob(os.path.join(cls.folder, 'made', '*.deb'))
        cls.root = os.path.join(cls.folder, 'root')
        cls.install()

    @classmethod
    def install(cls):
        os.makedirs(os.path.join(cls.root, 'var/lib/dpkg/info'))
        os.makedirs(os.path.join(cls.root, 'var/lib/dpkg/updates'))
        open(os.path.join(cls.root, 'var/lib/dpkg/status'), 'w').close()
        if os.geteuid() == 0:
            cls.dpkg('--install', cls.package)
        else:
            run('dpkg-deb', '--extract', cls.package, cls.root)

    @classmethod
    def dpkg(cls, *arguments):
        # What it depends on is that of this system, not of the folder.
        run('dpkg', '--root=' + cls.root, '--log=/dev/null', '--force-depends', '--force-unsafe-io', *arguments)

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.home = os.path.realpath(temporary.name)

    def installed(self, path):
        return os.path.join(self.root, path)

    def answers(self, *lines, program='usr/bin/vorpen-cli'):
        typed = [word for line in lines for word in ('-e', line)]
        return run(self.installed(program), '--home', self.home, *typed, cwd=self.home)

    def validate(self, *command):
        if not shutil.which(command[0]):
            self.skipTest('%s is not installed' % command[0])
        return run(*command)

    # ---- What is in it

    def test_everything_has_its_place(self):
        files = files_below(os.path.join(self.root, 'usr'))
        for name in ('bin/vorpen-cli', 'libexec/vorpen/VorpenHelp', 'libexec/vorpen/lookup',
                     'share/vorpen/help/functions/sin.txt', 'share/vorpen/properties/elements.txt',
                     'share/vorpen/resource/isprime.vrp', 'share/man/man1/vorpen-cli.1.gz',
                     'share/doc/vorpen/copyright', 'share/doc/vorpen/examples/tour.vrp',
                     'share/doc/vorpen/examples/gallery/bars.vrp'):
            self.assertIn(name, files)
        if 'bin/vorpen' in files:
            for name in ('share/applications/vorpen.desktop', 'share/mime/packages/vorpen.xml',
                         'share/metainfo/vorpen.metainfo.xml', 'share/man/man1/vorpen.1.gz',
                         'share/icons/hicolor/scalable/apps/vorpen.svg', 'share/icons/hicolor/48x48/apps/vorpen.png'):
                self.assertIn(name, files)
        for folder in ('resource', 'helpers/help', 'helpers/properties'):
            for name in files_below(os.path.join(SOURCE, folder)):
                self.assertIn(os.path.join('share/vorpen', os.path.basename(folder), name), files)

    def test_nothing_else_is_in_it(self):
        owned = [path for path in
                 re.findall(r'\./(usr/\S+[^/\s])$', run('dpkg-deb', '--contents', self.package), re.MULTILINE)]
        self.assertFalse([name for name in owned if re.search(r'test|gtest|benchmark|\.(a|h|cmake|cpp|py)$', name)
                          and not name.endswith('.txt') and not name.endswith('.vrp')])

    def test_only_programs_can_be_executed_and_nobody_else_can_write(self):
        for line in run('dpkg-deb', '--contents', self.package).splitlines():
            mode, owner, name = line.split()[0], line.split()[1], line.split()[-1]
            self.assertEqual(owner, 'root/root', line)
            is_program = re.match(r'\./usr/(bin|libexec/vorpen)/.', name)
            self.assertEqual(mode, '-rwxr-xr-x' if is_program else 'drwxr-xr-x' if name.endswith('/') else
                             '-rw-r--r--', line)

    def test_programs_do_not_know_where_they_were_built(self):
        for name in glob.glob(self.installed('usr/bin/*')) + glob.glob(self.installed('usr/libexec/vorpen/*')):
            with open(name, 'rb') as program:
                self.assertNotIn(SOURCE.encode(), program.read(), name)

    def test_it_says_what_it_is_and_needs(self):
        field = {name: run('dpkg-deb', '--field', self.package, name).strip()
                 for name in ('Package', 'Version', 'Section', 'Depends', 'Description')}
        with open(os.path.join(SOURCE, 'CMakeLists.txt')) as settings:
            version = re.search(r'project\(vorpen VERSION (\S+)', settings.read()).group(1)
        self.assertEqual((field['Package'], field['Version'], field['Section']), ('vorpen', version, 'math'))
        for name in ('libc6', 'libopenblas0', 'fonts-liberation'):
            self.assertRegex(field['Depends'], r'(^|, )%s\b' % name)
        if os.path.exists(self.installed('usr/bin/vorpen')):
            self.assertIn('libqt6widgets6', field['Depends'])
        self.assertTrue(field['Description'].startswith('scientific calculator'))
        self.assertEqual(run(self.installed('usr/bin/vorpen-cli'), '--version'), 'vorpen-cli %s\n' % version)

    # ---- What desktops and readers of manuals are told

    def test_the_desktop_entry_is_valid(self):
        self.assertEqual(self.validate('desktop-file-validate', os.path.join(SOURCE, 'packaging/vorpen.desktop')), '')

    def test_xml_is_well_formed(self):
        self.validate('xmllint', '--noout', os.path.join(SOURCE, 'packaging/vorpen.xml'),
                      os.path.join(SOURCE, 'packaging/vorpen.svg'),
                      os.path.join(BUILD, 'packaging/vorpen.metainfo.xml'))

    def test_the_metainfo_is_valid(self):
        self.validate('appstreamcli', 'validate', '--no-net', os.path.join(BUILD, 'packaging/vorpen.metainfo.xml'))

    def test_scripts_are_known_by_their_ending(self):
        if not shutil.which('update-mime-database'):
            self.skipTest('update-mime-database is not installed')
        packages = os.path.join(self.home, 'mime/packages')
        os.makedirs(packages)
        shutil.copy(os.path.join(SOURCE, 'packaging/vorpen.xml'), packages)
        run('update-mime-database', os.path.dirname(packages))
        with open(os.path.join(self.home, 'mime/globs2')) as globs:
            self.assertIn('50:text/x-vorpen-script:*.vrp\n', globs.read())

    def test_manuals_name_every_option(self):
        usage = run(self.installed('usr/bin/vorpen-cli'), '--help')
        with open(os.path.join(SOURCE, 'packaging/vorpen-cli.1.in')) as manual:
            text = manual.read().replace('\\', '')
        options = set(re.findall(r'(?<![\w-])--?[a-z][a-z-]*', usage))
        self.assertGreater(len(options), 6)
        self.assertEqual([one for one in options if one not in text], [])

    # ---- The programs where they are installed

    def test_it_computes(self):
        self.assertIn('3.14159265', self.answers('pi'))
        self.assertIn('-2', self.answers('det([1,2;3,4])'))

    def test_the_help_program_is_found(self):
        self.assertIn('sine', self.answers('?sin'))

    def test_the_property_database_is_found(self):
        self.assertIn('1811', self.answers('property iron melting_point'))

    def test_functions_of_the_library_are_found(self):
        self.assertEqual(self.answers('factors(2026)').split(), ['2', '1013'])

    def test_it_runs_through_a_link_too(self):
        link = os.path.join(self.home, 'calculator')
        os.symlink(self.installed('usr/bin/vorpen-cli'), link)
        self.assertIn('1013', run(link, '--home', self.home, '-e', 'factors(2026)', cwd=self.home))

    def test_it_writes_into_its_home_alone(self):
        before = files_below(self.root)
        self.answers('?sin', 'property iron melting_point', 'x=1')
        run(self.installed('usr/bin/vorpen-cli'), '--home', self.home, '--session', '-e', 'x=1', cwd=self.home)
        self.assertEqual(files_below(self.root), before)

    def test_an_installation_without_a_package_is_the_same(self):
        prefix = os.path.join(self.folder, 'prefix')
        run('cmake', '--install', BUILD, '--prefix', prefix)
        files = files_below(prefix)
        self.assertIn('share/doc/vorpen/LICENSE', files)
        files.remove('share/doc/vorpen/LICENSE')
        self.assertEqual(files, files_below(self.installed('usr')))
        self.assertIn('1013', run(os.path.join(prefix, 'bin/vorpen-cli'), '--home', self.home, '-e', 'factors(2026)'))

    @unittest.skipUnless(os.geteuid() == 0, 'only root can')
    def test_when_it_is_removed_nothing_is_left(self):
        root, Package.root = self.root, os.path.join(self.folder, 'another')
        self.addCleanup(setattr, Package, 'root', root)
        self.install()
        self.assertTrue(os.path.exists(self.installed('usr/bin/vorpen-cli')))
        self.dpkg('--purge', 'vorpen')
        self.assertEqual([name for name in files_below(self.root) if not name.startswith('var/lib/dpkg/')], [])
        self.assertFalse(os.path.exists(self.installed('usr/bin')))


class InSystem(unittest.TestCase):
    """Where the triggers of other packages run, and paths are what they are."""

    def setUp(self):
        if not IN_SYSTEM:
            self.skipTest('not asked for')
        if os.geteuid() != 0:
            self.skipTest('only root can')
        if 'installed' in subprocess.run(['dpkg-query', '-W', '-f=${db:Status-Status}', 'vorpen'],
                                         capture_output=True, text=True).stdout:
            self.skipTest('vorpen is installed here')
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.home = os.path.realpath(temporary.name)

    def shown(self, *command):
        done = subprocess.run(command, capture_output=True, text=True, timeout=SECONDS, cwd=self.home,
                              stdin=subprocess.DEVNULL, env={**end_to_end.environment(), 'HOME': self.home})
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def test_it_is_installed_tried_and_removed(self):
        run('cpack', '-G', 'DEB', '-B', os.path.join(self.home, 'made'), cwd=BUILD)
        package, = glob.glob(os.path.join(self.home, 'made', '*.deb'))
        self.addCleanup(subprocess.run, ['dpkg', '--purge', 'vorpen'], capture_output=True)
        run('dpkg', '--install', package)
        files = [name for name in run('dpkg', '--listfiles', 'vorpen').split() if 'vorpen' in name]
        self.assertIn('1013', self.shown('vorpen-cli', '-e', 'factors(2026)'))
        self.assertIn('sine', self.shown('vorpen-cli', '-e', '?sin'))
        # A program of the system keeps its files with its user.
        self.shown('vorpen-cli', '--session', '-e', 'x=1')
        self.assertTrue(os.path.exists(os.path.join(self.home, '.local/share/vorpen/vorpen_env.bin')))
        self.assertEqual(sorted(files), sorted(name for name in run('dpkg', '--listfiles', 'vorpen').split()
                                               if 'vorpen' in name and os.path.exists(name)))
        if shutil.which('update-desktop-database'):
            with open('/usr/share/applications/mimeinfo.cache') as cache:
                self.assertIn('text/x-vorpen-script=vorpen.desktop;', cache.read())
        if shutil.which('update-mime-database'):
            with open('/usr/share/mime/globs2') as globs:
                self.assertIn('text/x-vorpen-script:*.vrp', globs.read())
        run('dpkg', '--purge', 'vorpen')
        self.assertEqual([name for name in files if os.path.exists(name)], [])
        with open('/usr/share/mime/globs2') as globs:
            self.assertNotIn('vorpen', globs.read())


if __name__ == '__main__':
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    BUILD = os.path.abspath(sys.argv.pop(1))
    if '--system' in sys.argv:
        IN_SYSTEM = True
        sys.argv.remove('--system')
    unittest.main(verbosity=2)
