#!/usr/bin/env python3
"""Opens the pages of qnpp-explain in a browser, and compares what stands there with what must:

    page_test.py --explain QNPP-EXPLAIN [--screenshots FOLDER]

Counts as skipped where Chromium, its driver or Selenium is missing (Debian: chromium chromium-driver python3-selenium).
"""

import argparse
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    print("skipped: Selenium is not installed (Debian: python3-selenium)")
    sys.exit(77)
BROWSER, DRIVER = shutil.which("chromium"), shutil.which("chromedriver")
if not BROWSER or not DRIVER:
    print("skipped: Chromium is not installed (Debian: chromium chromium-driver)")
    sys.exit(77)

SOURCE = """\
#include "units.h"
#define TWICE(x) ((x) + (x))
#define SHOW(x) print(#x, TWICE(x))
SHOW(STEP);
#if STEP > 9
never();
#endif
STEPS;
"""
HEADER = "#ifndef UNITS_H\n#define UNITS_H\n#define STEP 3\n#endif\n"
# A source with all that the overview tells of.
OVERVIEW = {"all.txt": '#include "outer.h"\n#include <nowhere.h>\n#error told here\nUSED\n',
            "outer.h": '#include "inner.h"\n#define NEVER 1\n', "inner.h": "#define USED 2\n"}
# Of ten lines, one is skipped and six use macros, some within one another.
TEN_LINES = ("int NAME({0})(int x);", "  SHOW(LIMIT + {0});", "  plain text of line {0}, with nothing else in it", "#if LIMIT > {0}",
             "  y = TWICE(ADD({0}, LIMIT));", "#else", "  z = LIMIT;", "#endif", "  call(x, {0}); // a comment",
             "  return ADD(1, TWICE({0}));")
LONG = ("#define ADD(a, b) ((a) + (b))\n#define TWICE(x) ADD(x, x)\n#define NAME(n) name_##n\n"
        "#define SHOW(x) print(#x, TWICE(x))\n#define LIMIT 400\n" +
        "".join(TEN_LINES[number % 10].format(number // 10) + "\n" for number in range(10000)))


def browser(folder, scheme="light", has_scripts=True):
    options = webdriver.ChromeOptions()
    options.binary_location = BROWSER
    for flag in ("headless", "no-sandbox", "disable-gpu", "disable-quic", "no-first-run", "disable-background-networking",
                 "disable-component-update", "disable-sync", "window-size=1300,900", f"user-data-dir={folder}"):
        options.add_argument("--" + flag)
    if not has_scripts:
        options.add_experimental_option("prefs", {"profile.managed_default_content_settings.javascript": 2})
    driver = webdriver.Chrome(service=Service(DRIVER), options=options)
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                           {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
    return driver


class PageTest(unittest.TestCase):
    options = None

    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory(prefix="qnpp-page-")
        folder = pathlib.Path(cls.scratch.name)
        (folder / "main.txt").write_text(SOURCE)
        (folder / "units.h").write_text(HEADER)
        subprocess.run([cls.options.explain, "--html", "page.html", "main.txt"], cwd=folder, check=True)
        cls.folder = folder
        cls.page = (folder / "page.html").as_uri()
        cls.browser = browser(folder / "profile")

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.scratch.cleanup()

    def setUp(self):
        self.browser.get(self.page)

    def open_page(self, files, *words):
        """Opens the page of other sources, the first of which is the one that is explained."""
        for name, text in files.items():
            (self.folder / name).write_text(text)
        subprocess.run([self.options.explain, "--html", "other.html", *words, next(iter(files))], cwd=self.folder, check=True)
        self.browser.get((self.folder / "other.html").as_uri())

    def texts(self, selector):
        return [found.text for found in self.browser.find_elements(By.CSS_SELECTOR, selector)]

    def press(self, *keys):
        for key in keys:
            self.browser.switch_to.active_element.send_keys(key)

    def open_summaries(self):
        return [found.find_element(By.TAG_NAME, "summary").text
                for found in self.browser.find_elements(By.CSS_SELECTOR, "details.u[open]")]

    def test_needs_nothing_else_and_reports_nothing(self):
        self.assertEqual(self.browser.get_log("browser"), [])
        self.assertEqual(self.browser.execute_script("return performance.getEntriesByType('resource').length"), 0)

    def test_source_and_output_stand_side_by_side(self):
        row = self.browser.find_element(By.ID, "f1l4")
        self.assertEqual(row.find_element(By.CSS_SELECTOR, ".s").text, "SHOW(STEP);")
        self.assertEqual(row.find_element(By.CSS_SELECTOR, ".o").text,
                         '#line 4 "main.txt"\nprint("STEP", ((3) + (3)));')

    def test_skipped_lines_say_why(self):
        row = self.browser.find_element(By.ID, "f1l6")
        self.assertIn("skipped", row.get_attribute("class"))
        self.assertIn('skipped: "#if STEP > 9" at main.txt:5 is false: 3 > 9', self.texts(".why"))

    def test_keys_open_one_level_after_the_other_and_close_them_again(self):
        self.press("n")
        self.assertEqual(self.open_summaries(), [])
        self.press(Keys.ARROW_RIGHT)
        self.assertEqual(self.open_summaries(), ['SHOW(STEP) \u2192 print("STEP", ((3) + (3)))'])
        self.press(Keys.ARROW_RIGHT)
        self.assertEqual(self.open_summaries()[1:], ["STEP \u2192 3", "TWICE(3) \u2192 ((3) + (3))"])
        self.press(Keys.ARROW_LEFT)
        self.assertEqual(len(self.open_summaries()), 1)
        self.press("c")
        self.assertEqual(self.open_summaries(), [])

    def test_keys_go_from_use_to_use(self):
        self.press("n", "n")
        self.assertEqual(self.browser.switch_to.active_element.text, "STEP \u2192 3")
        self.press("p")
        self.assertTrue(self.browser.switch_to.active_element.text.startswith("SHOW(STEP)"))

    def test_the_mouse_opens_a_use(self):
        self.browser.find_element(By.CSS_SELECTOR, "#f1l4 .s a").click()
        self.assertEqual(len(self.open_summaries()), 1)
        self.assertIn("x = STEP \u2192 3", self.texts("details.u[open] > p"))

    def test_a_piece_of_the_output_tells_where_it_came_from(self):
        piece = self.browser.find_element(By.CSS_SELECTOR, "#f1l4 .o .j")
        self.assertEqual(piece.text, '"STEP"')
        self.assertEqual(piece.get_attribute("title"), "made by #x in SHOW (main.txt:3), used at main.txt:4")
        webdriver.ActionChains(self.browser).move_to_element(piece).perform()
        self.assertEqual(self.texts("#told"), [piece.get_attribute("title")])
        self.assertIn("lit", self.browser.find_element(By.CSS_SELECTOR, "#f1l4 .s a").get_attribute("class"))

    def test_a_name_that_is_no_macro_names_the_nearest(self):
        self.browser.find_element(By.ID, "f1l8")
        self.assertIn('STEPS is no macro; the nearest is "STEP" (units.h:3)', self.texts(".why"))

    def test_the_side_lists_macros_and_files(self):
        side = self.browser.find_element(By.TAG_NAME, "aside").text
        self.assertIn("units.h", side)
        self.assertIn("UNITS_H units.h:2\nonly asked for", side)
        self.assertIn("STEP units.h:3\nused 2\u00d7: 5, 4" if "5, 4" in side else "STEP units.h:3\nused 2\u00d7: 4, 5", side)

    def test_the_side_shows_includes_as_a_tree_messages_and_macros_that_are_never_used(self):
        self.open_page(OVERVIEW)
        self.assertEqual(self.texts("aside ul ul ul > li > a"), ["inner.h"])
        self.assertIn("Not found: #include <nowhere.h> all.txt:2", self.texts("aside p"))
        side = self.browser.find_element(By.TAG_NAME, "aside").text
        self.assertIn("NEVER outer.h:2\nnever used\n", side + "\n")
        self.assertIn("USED inner.h:1\nused 1\u00d7: 4", side)

    def test_messages_stand_below_their_lines(self):
        self.open_page(OVERVIEW)
        row = self.browser.find_element(By.ID, "f1l3")
        below = row.find_element(By.XPATH, "following-sibling::p")
        self.assertEqual(below.text, "all.txt:3: #error directive:  told here.")
        link = self.browser.find_element(By.PARTIAL_LINK_TEXT, "told here")
        self.assertEqual(link.get_attribute("href").rpartition("#")[2], below.get_attribute("id"))

    def test_ten_thousand_lines_open_in_less_than_a_second(self):
        self.open_page({"long.txt": LONG})
        self.assertEqual(len(self.browser.find_elements(By.ID, "f1l10005")), 1)
        times = []
        for _ in range(2):
            self.browser.execute_cdp_cmd("Performance.disable", {})
            self.browser.execute_cdp_cmd("Performance.enable", {})  # Time begins here.
            self.browser.refresh()
            metrics = self.browser.execute_cdp_cmd("Performance.getMetrics", {})["metrics"]
            times.append(next(metric["value"] for metric in metrics if metric["name"] == "ThreadTime"))
        loaded = self.browser.execute_script("return performance.getEntriesByType('navigation')[0].loadEventEnd") / 1000
        print(f"10,000 lines: {min(times):.2f} s of the main thread, loaded after {loaded:.2f} s")
        self.assertGreater(min(times), 0)
        # Not the time on the clock, which depends on what else runs on the machine.
        self.assertLess(min(times), 1)

    def test_what_is_left_out_is_said(self):
        self.open_page({"uses.txt": "#define A 1\nA\nA\n"}, "--most-uses=1")
        self.assertEqual(self.texts("details.u.top > summary"), ["A \u2192 1"])
        self.assertIn("Not taken apart here, for the size of the page. Ask for uses.txt:3 alone.", self.texts(".why"))
        # E2, the first E1 in it, and the first E0 in that.
        self.open_page({"doubled.txt": "#define E0 x\n#define E1 E0 E0\n#define E2 E1 E1\nE2\n"}, "--most-uses=3")
        self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, "details.u")), 3)
        notes = self.browser.find_elements(By.CSS_SELECTOR, "details.u p.faint")
        self.assertEqual([note.get_attribute("textContent") for note in notes],
                         ["Further uses are left out, for the size of the page: --most-uses shows more."] * 2)
        self.open_page({"steps.txt": "#define A 1\n" + "A\n" * 100}, "--most=50")
        said = self.browser.find_element(By.CSS_SELECTOR, "header .message").text
        self.assertRegex(said, r"^Nothing was written down from steps\.txt:\d+ on\. Ask for it by its lines, as in "
                               r"qnpp-explain --html FILE SOURCE:\d+-\d+, or for more by --most\.$")

    def test_on_paper_everything_is_open_and_nothing_is_a_button(self):
        self.browser.execute_script("dispatchEvent(new Event('beforeprint'))")
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print"})
        try:
            self.assertEqual(len(self.open_summaries()), 4)  # SHOW(STEP), STEP within it, TWICE(3), and STEP in the condition.
            for selector in ("aside", "#told", "#next"):
                self.assertFalse(self.browser.find_element(By.CSS_SELECTOR, selector).is_displayed(), selector)
        finally:
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": ""})
        self.browser.execute_script("dispatchEvent(new Event('afterprint'))")
        self.assertEqual(self.open_summaries(), [])

    def test_the_place_of_a_definition_leads_there(self):
        self.press("n", Keys.ARROW_RIGHT)
        self.browser.find_element(By.LINK_TEXT, "main.txt:3").click()
        self.assertTrue(self.browser.current_url.endswith("#f1l3"))

    def test_roles_names_and_contrast(self):
        for selector in ("main", "header", "aside[aria-label]", "html[lang]", "#told[role=status]", "a.skip-link"):
            self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, selector)), 1, selector)
        for scheme in ("light", "dark"):
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                         {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
            for selector in ("body", "a[href]", "button", ".why", ".a", ".j", ".m", ".n", ".skipped .s", ".faint", ".count",
                             "header p", "#told"):
                element = self.browser.find_element(By.CSS_SELECTOR, selector)
                # On the paper, on a panel, and where the line is marked.
                color, papers = self.browser.execute_script(
                    "const style = getComputedStyle(document.documentElement);"
                    "const probe = document.body.appendChild(document.createElement('div'));"
                    "const papers = ['--paper', '--panel', '--mark'].map((name) => {"
                    "  probe.style.color = style.getPropertyValue(name); return getComputedStyle(probe).color; });"
                    "probe.remove();"
                    "return [getComputedStyle(arguments[0]).color, papers]", element)
                for paper in papers:
                    self.assertGreaterEqual(contrast(color, paper), 4.5, f"{selector} on {paper} in {scheme}")
            ink, paper = self.browser.execute_script(
                "const style = getComputedStyle(document.body); return [style.color, style.backgroundColor]")
            self.assertEqual(brightness(ink) < brightness(paper), scheme == "light")

    def test_can_be_read_without_scripts(self):
        with tempfile.TemporaryDirectory(prefix="qnpp-page-") as folder:
            plain = browser(folder, has_scripts=False)
            try:
                plain.get(self.page)
                uses = plain.find_elements(By.CSS_SELECTOR, "details.u.top > summary")
                self.assertEqual([use.text.split(" ")[0] for use in uses], ["SHOW(STEP)", "STEP"])
                uses[0].click()
                self.assertIn("gives print(\"STEP\", TWICE(3))",
                              [p.text for p in plain.find_elements(By.CSS_SELECTOR, "details.u[open] > p")])
                self.assertFalse(plain.find_element(By.ID, "next").is_displayed())
            finally:
                plain.quit()

    def test_screenshots(self):
        if not self.options.screenshots:
            self.skipTest("no folder for them is given")
        folder = pathlib.Path(self.options.screenshots)
        folder.mkdir(parents=True, exist_ok=True)
        for scheme in ("light", "dark"):
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                         {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
            self.browser.get(self.page)
            self.press("n", Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
            self.browser.save_screenshot(str(folder / f"explain-{scheme}.png"))


def brightness(color):
    """The relative luminance of a colour, "rgb(r, g, b)", as the guidelines for accessible content define it."""
    parts = [int(part) / 255 for part in color[color.index("(") + 1:-1].split(",")[:3]]
    parts = [part / 12.92 if part <= 0.03928 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2]


def contrast(first, second):
    """The contrast ratio of two colours."""
    dark, light = sorted((brightness(first), brightness(second)))
    return (light + 0.05) / (dark + 0.05)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--explain", required=True)
    parser.add_argument("--screenshots")
    PageTest.options = parser.parse_args()
    PageTest.options.explain = str(pathlib.Path(PageTest.options.explain).resolve())
    unittest.main(argv=sys.argv[:1], verbosity=0)
