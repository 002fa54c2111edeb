#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""The page of `velhost report` in a browser, as people see it: what it shows, that it runs and fetches
nothing, contrast, keyboard, phones, paper.

Usage: page_test.py VELHOST SOURCE-FOLDER
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import browser

VELHOST, ROOT = pathlib.Path(sys.argv.pop(1)).resolve(), pathlib.Path(sys.argv.pop(1)).resolve()
MACHINES = ROOT / "machines"

PHONE = 360
PAPER = 700  # A4 without its margins, at 96 pixels an inch
CONTRAST = 4.5  # WCAG 2.1, 1.4.3

HOSTILE = ("<script>document.title='hit'</script>", "\" onmouseover=\"document.title='hit'",
           "<img src=x onerror=\"document.title='hit'\">", "</style><style>*{display:none}</style>",
           "javascript:document.title='hit'", "&lt;b&gt;", "<!--", "]]>", "' autofocus onfocus='x",
           "\u202Eesrever", "\u05D0\u05D1\u05D2", "a\nb", "\u0007")

# Every element that has text of its own and can be seen, with its colours. Opens what can be opened.
COLOURS = """(() => {
  document.querySelectorAll("details").forEach(d => d.open = true);
  const rows = [];
  for (const e of document.querySelectorAll("body *")) {
    const own = [...e.childNodes].some(n => n.nodeType === 3 && n.data.trim());
    const box = e.getBoundingClientRect();
    if (!own || !e.checkVisibility() || box.right < 0) continue;
    let behind = e, back = "rgba(0, 0, 0, 0)";
    while (behind && back === "rgba(0, 0, 0, 0)") {
      back = getComputedStyle(behind).backgroundColor;
      behind = behind.parentElement;
    }
    rows.push([e.tagName + "." + e.className, getComputedStyle(e).color, back]);
  }
  return [...new Set(rows.map(r => JSON.stringify(r)))].map(r => JSON.parse(r));
})()"""

# What Tab has to reach, in the order of the document.
REACHABLE = """[...document.querySelectorAll("a[href], summary, [tabindex]")]
  .filter(e => e.checkVisibility()).map((e, i) => (e.dataset.place = i, i)).length"""
FOCUSED = """(() => {
  const e = document.activeElement, s = getComputedStyle(e);
  return [e.dataset.place ?? e.tagName, s.outlineStyle, parseFloat(s.outlineWidth)];
})()"""

# What goes over the right edge, but for what stands in a box that can be scrolled.
TOO_WIDE = """(() => {
  document.querySelectorAll("details").forEach(d => d.open = true);
  const scrolls = e => getComputedStyle(e.closest(".wide") ?? e).overflowX === "auto";
  const wide = [...document.querySelectorAll("body *")].filter(
    e => !e.closest("svg") && !scrolls(e) && e.getBoundingClientRect().right > innerWidth + 0.5);
  return [document.documentElement.scrollWidth, wide.map(e => e.outerHTML.slice(0, 120))];
})()"""

HEADINGS = """[...document.querySelectorAll("h1,h2,h3,h4,h5,h6")].map(h => Number(h.tagName[1]))"""


def luminance(colour):
    channels = [int(number) / 255 for number in re.findall(r"\d+", colour)[:3]]
    linear = [c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4 for c in channels]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(one, other):
    low, high = sorted((luminance(one), luminance(other)))
    return (high + 0.05) / (low + 0.05)


def inventory(name, instances, state="present", reason=None):
    """A document with one class of components."""
    return {"format": "vel-inventory/1", "machine": {"source": "file", "name": name},
            "collectors": [{"name": "C", "version": "1", "state": "answered", "reason": None}],
            "classes": [{"class": "KRXSG_Vpd", "collector": "C", "state": state,
                         "reason": reason, "instances": instances}]}


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.browser = browser.Browser()
        cls.pages = {
            "one machine": cls.report("one", MACHINES / "two-nodes.json"),
            "a silent SP": cls.report("silent", MACHINES / "sp-silent.json"),
            "slots": cls.report("slots", MACHINES / "memory-slots.json"),
            "nothing known": cls.report("empty", MACHINES / "empty-machine.json"),
            "two machines": cls.report("two", MACHINES / "two-nodes.json",
                                       MACHINES / "one-sp-everything.json"),
            "many": cls.report("many", *(MACHINES / (name + ".json") for name in (
                "two-nodes", "ordinary-server", "ordinary-server-silent-bmc", "faults",
                "ordinary-server-small-reads", "ckvm-send-fails", "smbios-cannot-open",
                "runtime-error"))),
            "hostile": cls.hostile(),
        }

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.folder.cleanup()

    @classmethod
    def path(cls, name):
        return pathlib.Path(cls.folder.name) / name

    @classmethod
    def report(cls, name, *files):
        page = cls.path(name + ".html")
        subprocess.run([VELHOST, "report", *files, "--output", page], check=True,
                       stdin=subprocess.DEVNULL)
        return page

    @classmethod
    def document(cls, name, document):
        path = cls.path(name)
        path.write_text(json.dumps(document), encoding="utf-8")
        return path

    @classmethod
    def hostile(cls):
        """Hostile texts wherever a text may stand, in a file of a hostile name too."""
        files = []
        for i, text in enumerate(HOSTILE):
            document = inventory(text, [{"Name": text, "PartNumber": text, "Vendor": text * 3,
                                         text: text}], "partial", text)
            document["classes"].append({**document["classes"][0], "class": "HOSTILE_" + text})
            document["classes"].append({**document["classes"][0], "class": "KRXSG_cKVM",
                                        "state": "failed", "instances": []})
            name = f"{i}-{text}.json".replace("/", "")
            files.append(cls.document(name, document))
        return cls.report("hostile", *files)

    def each(self, **look):
        """Opens each page; what is said of it has to stand within `with`."""
        for name, page in self.pages.items():
            self.browser.show(**look)
            self.browser.open(page)
            yield page, self.subTest(name)

    def text(self):
        return self.browser.evaluate("document.body.textContent")

    def test_nothing_runs_and_nothing_is_fetched(self):
        for page, case in self.each():
            with case:
                self.assertEqual([page.as_uri()], self.browser.requests)
                self.assertEqual([], self.browser.said)
                self.assertTrue(self.browser.evaluate("document.title").startswith("Firmware and parts"))
                self.assertEqual(0, self.browser.evaluate(
                    "document.querySelectorAll('script, img, iframe, object, embed, link, base, form')"
                    ".length"))
                self.assertEqual([], self.browser.evaluate(
                    "[...document.querySelectorAll('*')].flatMap(e => [...e.attributes])"
                    ".map(a => a.name).filter(n => n.startsWith('on') || n === 'style')"))
                self.assertEqual(1, self.browser.evaluate("document.querySelectorAll('style').length"))

    def test_what_a_machine_has_and_lacks_is_shown(self):
        self.browser.show()
        self.browser.open(self.pages["one machine"])
        cards = self.browser.evaluate(
            "[...document.querySelectorAll('section.box')].map(b => [b.querySelector('h3').innerText,"
            " [...b.querySelectorAll('.part')].map(p => p.querySelector('.title').innerText + "
            "(p.querySelector('.badge') ? ' ' + p.querySelector('.badge').innerText : ''))])")
        components = ["Power BackPlane", "DASD BackPlane", "DASD BackPlane"]
        self.assertEqual([
            ["Node 1", ["DIMM 1", "DIMM 2", "DIMM 3", "Power Supply 1", "Power Supply 2",
                        *components, "Processor Card", "Planar"]],
            ["Node 2", ["DIMM 4", "DIMM 5 not told", "DIMM 6 empty", "Power Supply 3 not told",
                        "Power Supply 4", *components, "Planar", "Processor Card unanswered"]],
            ["The whole machine", []]], cards)
        rows = self.browser.evaluate(
            "[...document.querySelectorAll('section.box:nth-of-type(1) .levels tbody tr')]"
            ".map(r => [...r.cells].map(c => c.innerText.split('\\n')[0]))")
        self.assertIn(["Main firmware of a service processor", "4", "YUOO73C", "2009-07-14"], rows)
        self.assertIn(["System BIOS or UEFI firmware, by node", "108", "ABC123", "2007-03-15"], rows)

    def test_hostile_texts_are_texts(self):
        self.browser.show()
        self.browser.open(self.pages["hostile"])
        text = self.text()
        for hostile in HOSTILE[:9]:
            self.assertIn(hostile, text)
        self.assertIn("\\u202Eesrever", text)
        self.assertIn("a\\nb", text)
        self.assertNotRegex(self.pages["hostile"].read_text(encoding="utf-8"), "[\u202E\u0007]")
        names = self.browser.evaluate(
            "[...document.querySelectorAll('section.machine > h2')].map(h => h.innerText)")
        self.assertEqual(len(HOSTILE), len(names))
        self.browser.press("Tab", 9)
        self.assertNotEqual("hit", self.browser.evaluate("document.title"))

    def test_a_text_of_ten_megabytes_is_cut(self):
        document = inventory("long", [{"Name": "DIMM 1", "PartNumber": "<" * 10_000_000}])
        page = self.report("long", self.document("long.json", document))
        self.assertLess(page.stat().st_size, 100_000)
        self.browser.show(width=PHONE)
        self.browser.open(page)
        self.assertIn("<<<...<<<", self.text())
        self.assertEqual([PHONE, []], self.browser.evaluate(TOO_WIDE))

    def test_contrast_is_enough_in_both_schemes(self):
        for look in ({"dark": False}, {"dark": True}, {"media": "print"}):
            backs = set()
            for page, case in self.each(**look):
                with case:
                    rows = self.browser.evaluate(COLOURS)
                    self.assertGreater(len(rows), 5)
                    backs |= {back for _, _, back in rows}
                    for what, colour, back in rows:
                        self.assertGreaterEqual(contrast(colour, back), CONTRAST,
                                                (look, what, colour, back))
            isDark = [luminance(back) < 0.2 for back in backs]
            self.assertEqual([look.get("dark", False)] * len(isDark), isDark)

    def test_the_keyboard_reaches_everything_and_one_sees_where_it_is(self):
        for page, case in self.each():
            with case:
                if page == self.pages["hostile"]:
                    continue  # the same once more, many times
                count = self.browser.evaluate(REACHABLE)
                self.assertGreater(count, 1)
                for place in range(count):
                    self.browser.press("Tab", 9)
                    where, style, width = self.browser.evaluate(FOCUSED)
                    self.assertEqual(str(place), where)
                    self.assertNotEqual("none", style, place)
                    self.assertGreaterEqual(width, 2, place)

    def test_the_keyboard_opens_a_part(self):
        self.browser.show()
        self.browser.open(self.pages["one machine"])
        self.browser.evaluate("document.querySelector('.part summary').focus()")
        self.browser.press("Enter", 13, "\r")
        self.assertTrue(self.browser.evaluate("document.querySelector('.part details').open"))
        self.assertIn("IdentifyingNumber", self.browser.evaluate(
            "document.querySelector('.part dl').innerText"))

    def test_the_first_link_leads_past_the_head(self):
        self.browser.show()
        self.browser.open(self.pages["many"])
        self.browser.press("Tab", 9)
        self.assertGreaterEqual(self.browser.evaluate(
            "document.activeElement.getBoundingClientRect().left"), 0)
        self.browser.press("Enter", 13, "\r")
        self.assertEqual("#content", self.browser.evaluate("location.hash"))

    def test_nothing_goes_over_the_edge_of_a_phone(self):
        for _, case in self.each(width=PHONE, height=740):
            with case:
                self.assertEqual([PHONE, []], self.browser.evaluate(TOO_WIDE))

    def test_nothing_goes_over_the_edge_of_paper(self):
        for _, case in self.each(width=PAPER, media="print"):
            with case:
                self.assertEqual([PAPER, []], self.browser.evaluate(TOO_WIDE))

    def test_headings_follow_each_other_and_links_lead_somewhere(self):
        for _, case in self.each():
            with case:
                levels = self.browser.evaluate(HEADINGS)
                self.assertEqual(1, levels.count(1))
                for before, after in zip([0, *levels], levels):
                    self.assertLessEqual(after, before + 1)
                self.assertEqual([], self.browser.evaluate(
                    "[...document.querySelectorAll('[href^=\"#\"]')].map(a => a.getAttribute('href'))"
                    ".filter(h => !document.getElementById(h.slice(1)))"))
                self.assertEqual([], self.browser.evaluate(
                    "(ids => ids.filter((id, i) => ids.indexOf(id) !== i))"
                    "([...document.querySelectorAll('[id]')].map(e => e.id))"))
                self.assertEqual(0, self.browser.evaluate(
                    "document.querySelectorAll('th:not([scope]), table:not(:has(thead))').length"))
                self.assertEqual("en", self.browser.evaluate("document.documentElement.lang"))
                self.assertEqual(1, self.browser.evaluate("document.querySelectorAll('main').length"))

    def test_states_differ_in_sign_and_word(self):
        self.browser.show()
        signs = {}
        for name in ("one machine", "many"):
            self.browser.open(self.pages[name])
            for word, sign in self.browser.evaluate(
                    "[...document.querySelectorAll('.badge')].map(b => [b.textContent.replace(/^\\d+ /,"
                    " ''), b.querySelector('use').getAttribute('href')])"):
                self.assertEqual(sign, signs.setdefault(word, sign))
        self.assertLessEqual({"present", "partial", "absent", "elsewhere", "unused", "unanswered",
                              "unreadable", "failed", "empty", "not told"}, set(signs))
        self.assertEqual(len(signs), len(set(signs.values())))

    def test_paper_has_every_machine(self):
        for page, case in self.each():
            with case:
                names = self.browser.evaluate(
                    "[...document.querySelectorAll('section.machine > h2')].map(h => h.innerText)")
                printed = self.path("page.pdf")
                printed.write_bytes(self.browser.pdf())
                text = subprocess.run(["pdftotext", printed, "-"], capture_output=True, check=True,
                                      encoding="utf-8").stdout
                if page == self.pages["hostile"]:
                    self.assertIn("javascript:document.title", text)
                    continue
                flat = " ".join(text.split())
                for name in names:
                    self.assertIn(name, flat)

    def test_a_large_machine_and_many_machines_stay_usable(self):
        dimms = [{"Name": f"Node {node}: DIMM {node}", "PartNumber": "R4G72", "SerialNumber": str(node)}
                 for node in range(1, 256)]
        large = self.report("large", self.document("large.json", inventory("255 nodes", dimms)))
        self.assertLess(large.stat().st_size, 500_000)
        many = self.report("hundred", *[MACHINES / "two-nodes.json"] * 100)
        self.assertLess(many.stat().st_size, 6_000_000)
        self.browser.show(width=PHONE)
        for page, boxes in ((large, 255), (many, 300)):
            self.browser.open(page)
            self.assertEqual(boxes, self.browser.evaluate(
                "document.querySelectorAll('section.box').length"))
            self.assertEqual(PHONE, self.browser.evaluate("document.documentElement.scrollWidth"))


if __name__ == "__main__":
    if browser.program() is None:
        print("SKIPPED: there is no Chromium (Debian: chromium-headless-shell)")
        sys.exit(77)
    unittest.main()
