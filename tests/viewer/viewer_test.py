# The CD's own viewer, in a real browser, on built trees.
#
# viewer_test.py FOLDER: the folder holds a DIGIFILM in 0, 1, 50, 51 and 160, each named by its number
# of pictures. Writes screenshots to it.
import shutil
import sys
import unittest
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

folder = Path(sys.argv.pop()).resolve()


class Viewer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        for flag in ('--headless=new', '--no-sandbox', '--disable-dev-shm-usage', '--lang=fr'):
            options.add_argument(flag)
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL'})
        cls.browser = webdriver.Chrome(options=options, service=Service('/usr/bin/chromedriver'))
        cls.addClassCleanup(cls.browser.quit)
        cls.run_script = cls.browser.execute_script

    def tearDown(self):
        # Tries that met no file are all that the browser may have to say.
        self.assertEqual([entry for entry in self.browser.get_log('browser')
                          if 'ERR_FILE_NOT_FOUND' not in entry['message']], [])

    def open(self, tree):
        self.browser.get((folder / tree / 'DIGIFILM/ORVELIN/photos.html').as_uri())
        self.until(lambda: 'Recherche' not in self.text('#status'))
        self.assertFalse(self.run_script('return document.body.scrollWidth > innerWidth'))

    def find(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.find(selector)[0].text

    def until(self, condition):
        WebDriverWait(self.browser, 20, 0.05).until(lambda _: condition())

    def shows(self, number, by=None):
        # Waits, after a key or a click, until that picture is the large one, decoded.
        if by and by[0] == '#':
            self.find(by)[0].click()
        elif by:
            ActionChains(self.browser).send_keys(by).perform()
        picture = self.find('#picture')[0]
        self.until(lambda: picture.get_attribute('alt') == f'Photo {number}')
        self.until(lambda: picture.get_property('complete') and picture.get_property('naturalWidth'))
        self.assertIn(f'/{number:03}.jpg', picture.get_attribute('src'))

    def says(self, *wanted):
        # Expects these roles and names in the accessibility tree.
        tree = self.browser.execute_cdp_cmd('Accessibility.getFullAXTree', {})['nodes']
        said = {(node['role']['value'], node.get('name', {}).get('value')) for node in tree}
        self.assertLessEqual(set(wanted), said)

    def test_finds_every_number_of_pictures(self):
        for count in (0, 1, 50, 51, 160):
            self.open(str(count))
            expected = {0: 'Aucune photo trouvée.', 1: '1 photo'}.get(count, f'{count} photos')
            self.assertEqual(self.text('#status'), expected)
            self.assertEqual(len(self.find('#grid li')), count)
            if count:
                self.run_script('window.print = () => document.title = "printed"')
                self.find('#print')[0].click()
                self.until(lambda: self.browser.title == 'printed')
            loaded = [image.get_property('naturalWidth') for image in self.find('#grid img')]
            self.assertTrue(all(loaded), 'all are there to print')
            self.browser.save_screenshot(folder / f'viewer-{count}.png')

    def test_passes_over_missing_numbers(self):
        shutil.copytree(folder / '160', folder / 'gaps')
        dcim = folder / 'gaps/DIGIFILM/dcim'
        for name in ('100k6230/001', '100k6230/007', '100k6230/008', '100k6230/050', '106k6230/160'):
            (dcim / f'{name}.jpg').unlink()
        shutil.rmtree(dcim / '102k6230')
        shutil.rmtree(dcim / '104k6230')
        self.open('gaps')
        self.until(lambda: self.text('#status') == '53 photos')
        self.find('#grid button')[5].click()
        for number, key in ((9, None), (6, Keys.LEFT), (2, Keys.HOME), (159, Keys.END)):
            self.shows(number, key)
        self.run_script('show(49)')
        self.shows(153, Keys.RIGHT)  # over two missing folders
        self.run_script('cells.set(++last, cellOf(last)); show(last)')  # gone since
        self.shows(159)

    def test_is_operated_by_keys_and_clicks(self):
        self.open('160')
        self.says(('heading', 'Vos photos'), ('list', 'Photos'), ('button', 'Photo 5'))
        self.find('#grid button')[4].send_keys(Keys.ENTER)
        self.shows(5)
        self.says(('dialog', 'Photo en grand'), ('image', 'Photo 5'), ('button', 'Fermer'))
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
        self.find('#close')[0].click()
        self.until(lambda: not full() and not self.find('#large')[0].is_displayed())
        self.until(lambda: self.browser.switch_to.active_element.text == '158')

    def test_plays_from_the_first_to_the_last_and_round(self):
        self.open('51')
        # The show's five seconds pass at once.
        self.run_script('const real = setTimeout; setTimeout = (act, ms) => real(act, ms / 200)')
        self.find('#play')[0].click()
        for number in (51, 2):
            self.until(lambda: self.find('#picture')[0].get_attribute('alt') == f'Photo {number}')
        self.find('#pause')[0].click()
        self.assertEqual(self.text('#pause'), 'Diaporama')


if __name__ == '__main__':
    unittest.main()
