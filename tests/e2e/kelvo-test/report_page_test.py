#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The page of kelvo-test report in a browser, used by keys.

What a test does in the page is a script of its own, which a copy of the page is given."""
import json
import re
import subprocess
import unittest
from urllib.parse import unquote

from program import PATIENCE
from recordings import PLAYED, RecordingCase

BESIDE = [
    (0.2, "s", "appears", "renderer", "Radio"),
    (3, "s", "command", "stop"),
    (9, "s", "report", "stateChanged", "Stopped"),
]
# Presses keys where the focus is; shows the text of an element; tells what came of it all.
TOOLS = """
const key = (name, more = {}) => document.activeElement.dispatchEvent(
    new KeyboardEvent('keydown', {key: name, bubbles: true, cancelable: true, ...more}));
const [speaker, radio] = document.querySelectorAll('.renderer');
const detail = document.getElementById('detail');
const told = group => group.querySelector('output').textContent;
const value = name => [...detail.querySelectorAll('dt')].find(term => term.textContent === name).nextSibling.textContent;
const inSight = () => document.querySelector('.lane svg').getAttribute('viewBox').split(' ').map(Number);
const press = what => { const button = detail.querySelector(`[data-do=${what}]`); button.focus(); button.click(); };
"""


class Page(RecordingCase):
    def browse(self, page, fragment=""):
        """The page as a browser has it in the end."""
        done = subprocess.run(["chromium", "--headless", "--no-sandbox", "--disable-gpu", f"--user-data-dir={self.folder}/browser",
                               "--dump-dom", f"file://{page}{fragment}"], capture_output=True, text=True, timeout=PATIENCE, check=True)
        return done.stdout

    def page_of(self, events):
        path = self.folder / "page.html"
        self.assertEqual(self.run_program("report", self.record(events), "-o", str(path)).code, 0)
        return path

    def use(self, script, events=None, fragment=""):
        """What a script returns that uses the page."""
        page = self.page_of(events or PLAYED + BESIDE)
        text = page.read_text(encoding="utf-8")
        # The page allows no script but its own.
        text = re.sub(r"<meta http-equiv=Content-Security-Policy[^>]*>", "", text)
        text = text.replace("</body>", f"<script>{{{TOOLS}const used = (() => {{{script}}})();"
                            "const answer = document.createElement('pre'); answer.id = 'answer';"
                            "answer.textContent = encodeURIComponent(JSON.stringify(used)); document.body.append(answer);}</script></body>")
        page.write_text(text, encoding="utf-8")
        answer = re.search(r'<pre id="answer">(.*?)</pre>', self.browse(page, fragment))
        self.assertIsNotNone(answer, "the script has failed")
        return json.loads(unquote(answer.group(1)))

    def test_the_page_may_run_its_script_and_no_other(self):
        page = self.page_of(PLAYED)
        self.assertIn('class="has-script"', self.browse(page))
        text = page.read_text(encoding="utf-8")
        page.write_text(text.replace("</body>", "<script>document.title = 'stolen'</script></body>"), encoding="utf-8")
        self.assertNotIn("<title>stolen", self.browse(page))

    def test_arrows_say_what_they_choose(self):
        self.assertEqual(self.use("""
            speaker.focus();
            const said = [];
            for (const name of ['ArrowRight', 'ArrowRight', 'ArrowRight', 'ArrowLeft', 'ArrowLeft', 'ArrowLeft']) {
                key(name);
                said.push(told(speaker));
            }
            return said;
            """), ["0.000 s to 1.100 s: Stopped", "1.000 s: playUri(http://h/a)", "1.100 s to 1.500 s: Transitioning",
                   "1.000 s: playUri(http://h/a)", "0.000 s to 1.100 s: Stopped", "0.000 s to 1.100 s: Stopped"])

    def test_the_first_that_is_chosen_is_in_sight(self):
        self.assertEqual(self.use("""
            speaker.focus();
            for (const name of ['+', '+', 'ArrowRight', 'ArrowRight'])
                key(name, {shiftKey: name !== '+'});
            radio.focus();
            key('ArrowRight');
            return told(radio);
            """), "9.000 s: Stopped")

    def test_zooming_stays_where_it_is_without_what_is_chosen(self):
        begin, _, length, _ = self.use("""
            speaker.focus();
            for (const name of ['ArrowRight', '+', '+', '+'])
                key(name);
            for (let i = 0; i < 40; ++i)
                key('ArrowRight', {shiftKey: true});
            key('+');
            return inSight();
            """)
        self.assertGreater(begin, 7.5)
        self.assertLess(length, 1)

    def test_an_event_is_opened_where_it_was_chosen(self):
        self.assertEqual(self.use("""
            radio.focus();
            key('Enter');
            const before = detail.hidden;
            speaker.focus();
            key('ArrowRight');
            key('ArrowRight');
            radio.focus();
            key('Enter');
            const elsewhere = detail.hidden;
            speaker.focus();
            key('Enter');
            return [before, elsewhere, detail.hidden, value('Name'), document.activeElement.id];
            """), [True, True, False, "playUri", "detail-title"])

    def test_going_from_event_to_event_stays_at_the_button(self):
        self.assertEqual(self.use("""
            speaker.focus();
            key('ArrowRight');
            key('Enter');
            const names = [value('Name')];
            for (const what of ['after', 'after', 'before']) {
                press(what);
                names.push(value('Name'), document.activeElement.dataset.do);
            }
            key('Escape');
            return [...names, detail.hidden, document.activeElement === speaker];
            """), ["stateChanged", "playUri", "after", "stateChanged", "after", "playUri", "before", True, True])

    def test_arguments_are_shown_letter_for_letter(self):
        arguments = [9007199254740993, {"a\U000e0041": ["\u202e,[\"\\", {}, []], "b": None}]
        shown = self.use("""
            document.querySelector('#e1').cells[4].click();
            return value('Arguments');
            """, events=[PLAYED[0], (1, "r", "command", "do", *arguments)])
        self.assertEqual(shown, '[\n  9007199254740993,\n  {\n    "a\\udb40\\udc41": [\n      "\\u202e,[\\"\\\\",\n      {},\n      []\n'
                                '    ],\n    "b": null\n  }\n]')

    def test_texts_of_others_stay_texts(self):
        hostile = "\"><img src=x onerror=\"document.title='stolen'\"><script>document.title='stolen'</script>"
        self.assertEqual(self.use("""
            document.querySelector('#e1').cells[4].click();
            speaker.focus();
            key('ArrowRight');
            return [document.images.length, document.title.includes('stolen'), value('Arguments').includes('<img'),
                    told(speaker).includes('<img')];
            """, events=[(0, "r", "appears", "renderer", hostile), (1, "r", "command", hostile, hostile)]),
            [0, False, True, True])

    def test_a_link_to_an_event_shows_it(self):
        many = [PLAYED[0]] + [(i / 100, "r", "command", "pause") for i in range(1, 6000)]
        self.assertEqual(self.use("""
            const open = [...document.querySelectorAll('details')].filter(one => one.open);
            return [open.length, open[0].contains(document.getElementById('e3000'))];
            """, events=many, fragment="#e3000"), [1, True])

    def test_the_wheel_zooms_with_a_key_and_up_and_down_only(self):
        self.assertEqual(self.use("""
            const turn = (deltaX, deltaY, ctrlKey) => {
                document.querySelector('.lane svg').dispatchEvent(
                    new WheelEvent('wheel', {deltaX, deltaY, ctrlKey, bubbles: true, cancelable: true}));
                return inSight()[2];
            };
            document.querySelector('[data-do=in]').click();
            return [inSight()[2], turn(0, -1, false), turn(1, 0, true), turn(0, -1, true) < inSight()[2] + 0.001];
            """), [4.5, 4.5, 4.5, True])


if __name__ == "__main__":
    unittest.main()
