# Tests the viewer on the CD in a real browser, on built trees.
#
# viewer_test.py ORVELIN-WORK OUTPUT: builds DigiFilms of 0, 1, 50, 51 and 160 pictures in OUTPUT, and
# leaves them and screenshots there.
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

work, folder = sys.argv.pop(1), Path(sys.argv.pop(1)).resolve()


class Viewer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(folder, ignore_errors=True)
        samples = sorted((Path(__file__).parents[1] / 'samples/photos').glob('IMG_*'))
        for count in (0, 1, 50, 51, 160):
            tree = folder / str(count)
            (tree / 'photos').mkdir(parents=True)
            for i in range(count):
                shutil.copy(samples[i % len(samples)], tree / 'photos' / str(i))
            # In memory: a build waits until everything is on its disk.
            base = '/dev/shm' if os.access('/dev/shm', os.W_OK) else None
            with tempfile.TemporaryDirectory(dir=base) as memory:
                subprocess.run([work, 'build', tree / 'photos', memory], check=True)
                shutil.copytree(memory, tree, dirs_exist_ok=True)
        options = webdriver.ChromeOptions()
        for flag in ('--headless=new', '--no-sandbox', '--disable-dev-shm-usage', '--lang=fr'):
            options.add_argument(flag)
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL'})
        cls.browser = webdriver.Chrome(options=options, service=Service('/usr/bin/chromedriver'))
        cls.addClassCleanup(cls.browser.quit)
        cls.run_script = cls.browser.execute_script

    def tearDown(self):
        # The browser may log failed tries to load a picture, nothing else.
        self.assertEqual([entry for entry in self.browser.get_log('browser')
                          if 'ERR_FILE_NOT_FOUND' not in entry['message']], [])

    def open(self, tree, page='photos.html'):
        self.browser.get((folder / tree / 'DIGIFILM/ORVELIN' / page).as_uri())
        self.until(lambda: 'Recherche' not in self.text('#status'))
        self.assertFalse(self.run_script('return document.body.scrollWidth > innerWidth'))

    def find(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.find(selector)[0].text

    def drawn(self):
        return self.run_script('return [...cells.keys()].filter(number => !isUndrawn(number))')

    def until(self, condition):
        WebDriverWait(self.browser, 20, 0.05).until(lambda _: condition())

    def shows(self, number, by=None):
        # Waits, after a key or a click, until that picture is the large one, decoded.
        if by and by[0] == '#':
            self.find(by)[0].click()
        elif by:
            self.browser.switch_to.active_element.send_keys(by)
        picture = self.find('#picture')[0]
        self.until(lambda: picture.get_attribute('alt') == f'Photo {number}')
        self.until(lambda: picture.get_property('complete') and picture.get_property('naturalWidth'))
        self.assertIn(f'/{number:03}.jpg', picture.get_attribute('src'))
        self.assertEqual(self.find('#save')[0].get_attribute('href'), picture.get_attribute('src'))

    def test_finds_every_number_of_pictures(self):
        shutil.copytree(folder / '51', folder / 'capitals')
        for path in sorted((folder / 'capitals/DIGIFILM').rglob('*'), reverse=True):
            path.rename(path.with_name(path.name.upper().replace('.HTML', '.HTM')))
        for tree, count in (('1', '1 photo'), ('50', '50 photos'), ('51', '51 photos'),
                            ('160', '160 photos'), ('capitals', '51 photos')):
            page, dcim = ('PHOTOS.HTM', 'DCIM') if tree == 'capitals' else ('photos.html', 'dcim')
            self.open(tree, page)
            self.assertEqual(self.text('#status'), count)
            self.assertTrue(self.find('#dcim')[0].get_attribute('href').endswith(f'/DIGIFILM/{dcim}/'))
            self.run_script('window.print = () => document.title = "printed"')
            self.find('#print')[0].click()
            self.until(lambda: self.browser.title == 'printed')
            self.assertEqual(len(self.drawn()), int(count.split()[0]), 'all are there to print')
            self.browser.save_screenshot(folder / f'viewer-{tree}.png')

    def test_reads_only_the_pictures_near_sight(self):
        count_loads = """const Real = Image; loads = 0; Image = function () {
          const image = new Real(); image.addEventListener('load', () => ++loads); return image; }"""
        self.browser.execute_cdp_cmd('Page.addScriptToEvaluateOnNewDocument', {'source': count_loads})
        self.open('160')
        self.until(lambda: len(self.drawn()) > 10 and self.run_script('return drawing === null'))
        self.assertEqual(self.drawn(), list(range(1, len(self.drawn()) + 1)))
        self.assertLess(self.run_script('return loads'), 80)
        self.run_script('scrollTo(0, document.body.scrollHeight)')
        self.until(lambda: 160 in self.drawn())
        self.assertNotIn(80, self.drawn())

    def test_leads_to_the_folder_if_it_shows_nothing(self):
        disable_script = 'Emulation.setScriptExecutionDisabled'
        self.addCleanup(self.browser.execute_cdp_cmd, disable_script, {'value': False})
        for disabled, text in ((False, 'Aucune photo trouvée.'), (True, 'ne peut pas montrer les photos')):
            self.browser.execute_cdp_cmd(disable_script, {'value': disabled})
            self.open('0')
            self.assertIn(text, self.text('body'))
            self.find('#dcim')[0].click()
            self.until(lambda: self.browser.current_url.endswith('/0/DIGIFILM/dcim/'))

    def test_passes_over_missing_numbers(self):
        shutil.copytree(folder / '160', folder / 'gaps')
        dcim = folder / 'gaps/DIGIFILM/dcim'
        for name in ('100k6230/001', '100k6230/007', '100k6230/008', '100k6230/050', '106k6230/160'):
            (dcim / f'{name}.jpg').unlink()
        shutil.rmtree(dcim / '102k6230')
        shutil.rmtree(dcim / '104k6230')
        self.open('gaps')
        self.until(lambda: self.text('#status') == '53 photos')
        self.find('#grid a')[5].click()
        for number, key in ((9, None), (6, Keys.LEFT), (2, Keys.HOME), (159, Keys.END)):
            self.shows(number, key)
        self.assertEqual(self.text('#caption'), 'Photo 159 (53 sur 53)')
        self.run_script('show(49)')
        self.shows(153, Keys.RIGHT)  # over two missing folders
        (dcim / '106k6230/155.jpg').unlink()
        self.shows(154, Keys.RIGHT)
        self.shows(156, Keys.RIGHT)

    def test_keeps_the_pictures_of_a_disc_that_is_taken_out(self):
        self.open('50')
        self.until(lambda: self.drawn() and self.run_script('return drawing === null'))
        dcim = folder / '50/DIGIFILM/dcim'
        dcim.rename(dcim.with_name('out'))
        self.run_script('show(45)')
        self.until(lambda: 'Le CD ne répond plus' in self.text('#caption'))
        dcim.with_name('out').rename(dcim)
        self.run_script('show(44)')
        self.until(lambda: self.text('#caption') == 'Photo 44 sur 50')

    def test_is_operated_by_keys_and_clicks(self):
        self.open('160')
        link, large = self.find('#grid a')[4], self.find('#large')[0]
        self.assertEqual((link.aria_role, link.accessible_name), ('link', 'Photo 5'))
        link.send_keys(Keys.ENTER)
        self.shows(5)
        self.assertEqual((large.aria_role, large.accessible_name), ('dialog', 'Photo en grand'))
        for number, by in ((6, Keys.RIGHT), (5, Keys.PAGE_UP), (1, Keys.HOME), (1, Keys.LEFT),
                           (160, Keys.END), (160, Keys.RIGHT), (159, '#previous'), (160, '#next'),
                           (159, Keys.LEFT), (158, Keys.LEFT)):
            self.shows(number, by)
        self.browser.save_screenshot(folder / 'viewer-large.png')
        full = lambda: self.run_script('return document.fullscreenElement !== null')
        for key in 'fFf':
            before = full()
            self.shows(158, key)
            self.until(lambda: full() != before)
        focused = lambda: self.browser.switch_to.active_element.text
        entries = self.run_script('return history.length')
        self.find('#close')[0].click()
        self.until(lambda: not full() and not large.is_displayed() and focused() == '158')
        self.shows(7, '#grid li:nth-child(7) a')
        self.shows(8, Keys.RIGHT)
        self.assertEqual(self.run_script('return history.length'), entries)
        self.until(lambda: self.browser.current_url.endswith('#photo=8'))
        self.browser.back()
        self.until(lambda: not large.is_displayed() and focused() == '8')
        self.browser.get('about:blank')
        self.browser.get((folder / '160/DIGIFILM/ORVELIN/photos.html').as_uri() + '#photo=8')
        self.shows(8)

    def test_plays_from_the_first_to_the_last_and_round(self):
        self.open('51')
        # Five seconds take half a second.
        self.run_script('const real = setTimeout; setTimeout = (act, ms) => real(act, ms / 10)')
        self.run_script('const really = show; shown = []; show = (n, d) => { shown.push(n); really(n, d) }')
        self.find('#play')[0].click()
        self.until(lambda: self.run_script('return shown[0]') == 1)
        self.run_script('show(50)')
        self.until(lambda: '50,51,1,2' in self.run_script('return String(shown)'))
        self.find('#pause')[0].click()
        self.assertEqual(self.text('#pause'), 'Diaporama')


unittest.main()
