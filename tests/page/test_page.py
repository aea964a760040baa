"""The page of `psu-agent report` in a browser: what is drawn, zoom, clicks, hostile recordings."""

import collections
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from browser import Browser

SOURCE = pathlib.Path(__file__).resolve().parents[2]
AGENT = os.environ["PSU_AGENT"]
SCENARIO = SOURCE / "samples" / "scenarios" / "swap-beside-hanging-bus.json"
PICTURES = pathlib.Path(os.environ.get("PSU_PAGE_PICTURES", tempfile.gettempdir()))


def agent(*arguments):
    return subprocess.run([AGENT, *map(str, arguments)], check=True, stdout=subprocess.PIPE).stdout


def told(scenario):
    """The lines of a scenario: its supplies, and its transactions."""
    lines = [json.loads(line) for line in agent("simulate", "--json", "--transcript", scenario).splitlines()]
    return ([line for line in lines if line["event"] == "supply"],
            [line for line in lines if line["event"] == "transaction"])


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)
        cls.recording = cls.folder / "night.jsonl"
        agent("simulate", "--record", cls.recording, SCENARIO)
        cls.page = cls.folder / "night.html"
        agent("report", cls.recording, "-o", cls.page)
        cls.supplies, cls.transactions = told(SCENARIO)
        cls.slots = sorted({line["slot"] for line in cls.transactions})

    def setUp(self):
        self.browser.media()
        self.show(self.page)

    def show(self, page):
        self.browser.open(page)
        self.assertEqual(self.browser.logged(), [])

    def boxes(self, selector):
        """Where the elements are in the window: the middle of each, and its text or title."""
        return self.browser.run("""
            document.getElementById('chart').scrollIntoView();
            return [...document.querySelectorAll(arguments[0])].map(each => {
              const box = each.getBoundingClientRect(), text = each.querySelector('text');
              return [box.x + box.width / 2, box.y + box.height / 2, text ? text.textContent : ''];
            });""", selector)

    def ticks(self, lane):
        """Where the ticks of a lane are in the window, as long as each is drawn."""
        return self.browser.run("""
            document.getElementById('chart').scrollIntoView();
            const path = document.querySelectorAll('path.ok')[arguments[0]];
            const box = document.getElementById('lanes').getBoundingClientRect();
            return [...path.getAttribute('d').matchAll(/M([\\d.]+),([\\d.]+)/g)].map(
              each => [box.x + Number(each[1]), box.y + Number(each[2]) - 2]);""", lane)

    def range(self):
        return [float(number) for number in re.findall(r"([\d.]+) s", self.browser.text("#range"))]

    def table(self, name):
        return self.browser.run("""
            return [...document.querySelectorAll(arguments[0] + ' tr')].map(
              row => [...row.children].map(cell => cell.textContent));""", f"#{name}")

    def test_what_is_drawn(self):
        names = self.browser.run(
            "return [...document.querySelectorAll('.lane-name')].map(each => each.firstChild.data)")
        self.assertEqual(names, self.slots)
        bars = collections.Counter(
            self.browser.run("""return [...document.querySelectorAll('#lanes g.bar')].map(
                each => each.querySelector('title').textContent.split('  ')[1].split(':')[0])"""))
        self.assertEqual(bars, collections.Counter(line["verdict"] for line in self.supplies))
        for number, slot in enumerate(self.slots):
            self.assertEqual(len(self.ticks(number)),
                             sum(line["slot"] == slot for line in self.transactions))
        self.assertEqual(self.browser.count("#lanes .swap"), 1)
        self.assertGreater(self.browser.count("#lanes .act"), 0)
        for kind in {line["error"] for line in self.transactions} - {None}:
            self.assertGreater(self.browser.count(f"#lanes .k-{kind}"), 0, kind)

    def test_tables_count_what_was_recorded(self):
        rows = self.table("verdicts")[1:]
        self.assertEqual([[row[1], row[2], row[3], row[4]] for row in rows],
                         [[line["slot"], line["verdict"], line["descriptor"] or "",
                           line["serialNumber"] or ""] for line in sorted(
                             self.supplies, key=lambda line: line["time"])])
        head, *rows = self.table("failures")
        for row in rows:
            count = dict(zip(head, row))
            errors = collections.Counter(line["error"] for line in self.transactions
                                         if line["slot"] == row[0] and line["error"])
            self.assertEqual((count["Transactions"], count["Failures"], count.get("timeout", "0")),
                             (str(sum(line["slot"] == row[0] for line in self.transactions)),
                              str(errors.total()), str(errors["timeout"])))

    def test_each_kind_has_a_shape_and_a_colour_of_its_own(self):
        header = (SOURCE / "host" / "smbus" / "ErrorKind.h").read_text()
        kinds = re.findall(r'^    \{ErrorKind::\w+, "(\w+)"', header, re.M)
        looks = {kind: self.browser.run("""
            const mark = document.querySelector('#legend .k-' + arguments[0]);
            return [mark.getAttribute('d'), getComputedStyle(mark).stroke];""", kind) for kind in kinds}
        self.assertEqual(len({shape for shape, _ in looks.values()}), len(kinds))
        # A ring and a cross may share a colour, a shape and a colour may not.
        self.assertGreaterEqual(len({colour for _, colour in looks.values()}), len(kinds) - 1)

    def test_zoom_and_pan(self):
        start, end = whole = self.range()
        x, y = self.ticks(0)[10]
        for name, act, check in (
                ("+", lambda: self.browser.press("+"), lambda a, b: b - a < (end - start) * .6),
                ("right", lambda: self.browser.press("ArrowRight"), lambda a, b: a > start + 1),
                ("left", lambda: self.browser.press("ArrowLeft", "ArrowLeft", "ArrowLeft"),
                 lambda a, b: b < end - 1),
                ("all", lambda: self.browser.press("0"), lambda a, b: [a, b] == whole),
                ("wheel", lambda: self.browser.wheel(x, y, -300), lambda a, b: b - a < end - start - 1),
                ("drag", lambda: self.browser.drag((x, y), (x - 90, y)), lambda a, b: a > 0),
                ("home", lambda: self.browser.press("Home"), lambda a, b: [a, b] == whole),
                ("mark", lambda: self.browser.drag((x, y), (x + 200, y), "Shift"),
                 lambda a, b: b - a < (end - start) * .25)):
            act()
            self.assertTrue(check(*self.range()), (name, self.range()))
        self.browser.run("document.getElementById('show-all').click()")
        self.browser.frame()
        self.assertEqual(self.range(), whole)

    def test_a_zoom_keeps_what_is_under_the_mouse(self):
        """The tick that the wheel is turned over stays there, and is told apart from its neighbours."""
        x, y = self.ticks(1)[15]
        for _ in range(8):
            self.browser.wheel(x, y, -300)
        self.assertLess(min(abs(place[0] - x) for place in self.ticks(1)), 3)

    def test_a_click_on_a_tick(self):
        line = [each for each in self.transactions if each["slot"] == self.slots[1]][12]
        self.browser.click(*self.ticks(1)[12])
        text = self.browser.text("#details")
        for part in (f"{line['time']:.3f} s", self.slots[1], line["request"], "command 0xB0",
                     line["write"][:2] + " " + line["write"][2:], "FRU data from 0x" + line["write"][2:],
                     "What the handler made of it"):
            self.assertIn(part, text)
        self.assertIn(" ".join(re.findall("..", line["read"]))[:47],
                      self.browser.text("#details pre"))

    def test_a_click_on_a_bar(self):
        bars = self.boxes("#lanes g.v-identified")
        self.browser.click(*bars[0][:2])
        first = next(line for line in self.supplies if line["slot"] == self.slots[0])
        self.assertEqual(self.browser.text("#details pre").strip(), first["fdl"].strip())
        self.assertIn(first["productName"], self.browser.text("#details"))

    def test_where_ticks_cannot_be_told_apart_all_are_told(self):
        self.browser.click(*self.ticks(0)[5])
        self.assertIn("transactions here", self.browser.text("#details h3"))
        self.browser.run("document.querySelector('#details li button').click()")
        self.assertIn("transaction", self.browser.text("#details h3"))

    def test_the_keyboard_reaches_everything(self):
        slot = self.slots[1]
        failed = [line for line in self.transactions if line["slot"] == slot and line["error"]]
        self.browser.press("ArrowDown", "f", "f")
        self.assertIn(f"{failed[1]['time']:.3f} s", self.browser.text("#details h3"))
        self.browser.press("p")
        self.assertIn(slot, self.browser.text("#details h3"))
        self.browser.press("Escape", "v")
        verdicts = [line for line in self.supplies if line["slot"] == slot]
        self.assertIn(f"{slot}: {verdicts[0]['verdict']}", self.browser.text("#details h3"))
        self.browser.press("v", "Enter")
        self.assertIn(f"{slot}: {verdicts[1]['verdict']}", self.browser.text("#details h3"))
        self.assertLess(*(abs(each - verdicts[1]["time"]) for each in (self.range()[0], 0)))

    def test_light_dark_and_print(self):
        papers = {}
        for scheme, kind in (("light", ""), ("dark", ""), ("dark", "print")):
            self.browser.media(scheme, kind)
            papers[scheme + kind] = self.browser.run(
                "return getComputedStyle(document.body).backgroundColor")
            self.browser.screenshot(PICTURES / f"page-{scheme}{kind}.png")
        self.assertEqual(papers["darkprint"], "rgb(255, 255, 255)")
        self.assertEqual(len(set(papers.values())), 3)
        self.assertEqual(self.browser.run(
            "return getComputedStyle(document.getElementById('controls')).display"), "none")
        self.assertGreater(len(self.browser.devtools("Page.printToPDF", landscape=True)["data"]), 10000)

    def hostile(self):
        """A recording in which every text that a supply or a file has is markup."""
        image = bytearray((SOURCE / "samples" / "ds2900.fru").read_bytes())
        for field, text in ((b"EMERSON   ", b"<i>&lt;</i"), (b"L1330K04287", b"<b>7</b><u>")):
            image[image.index(field):][:0]
            start = image.index(field)
            image[start:start + len(field)] = text
        named = bytearray((SOURCE / "samples" / "ds2900.fru").read_bytes())
        start = named.index(b"2900W AC POWER SUPPLY")
        named[start:start + 21] = b"<img src=x onerror=a>"
        slots = []
        for number, fru in enumerate((image, named)):
            end = 8 + fru[9] * 8 - 1
            fru[end] = -sum(fru[8:end]) % 256
            (self.folder / f"{number}.fru").write_bytes(fru)
            slots.append({"name": f"S{number}", "supply": {"image": f"{number}.fru"}})
        slots += [{"name": "S2", "supply": {"image": "0.fru", "mfrId": "<s>"}},
                  {"name": "S3", "supply": None}]
        scenario = self.folder / "hostile.json"
        scenario.write_text(json.dumps({"duration": 3, "slots": slots}))
        plain = self.folder / "plain.jsonl"
        agent("simulate", "--record", plain, scenario)
        recording = self.folder / "<img src=x onerror=document.title=1>.jsonl"
        names = {"S0": "</script><script>document.title='a'</script>", "S1": "<img src=x onerror=b>",
                 "S2": "\u202e<!--<script>", "S3": "]]>{{c}}${d}\\u003cb>\"'"}
        lines = [json.loads(line) for line in plain.read_text().splitlines()]
        for line in lines[1:]:
            line["slot"] = names[line["slot"]]
            if line.get("failure"):
                line["failure"] = "<svg onload=document.title='e'>"
            if line.get("request"):
                line["request"] += "<h1>"
            if "source" in line:
                line["source"] = "<iframe src=javascript:document.title='f'>"
        recording.write_text("".join(json.dumps(line) + "\n" for line in lines))
        return recording

    def test_nothing_hostile_becomes_markup_or_runs(self):
        recording = self.hostile()
        page = self.folder / "hostile.html"
        agent("report", recording, recording, "-o", page)
        self.show(page)
        before = self.browser.run("return document.title")
        told_texts = ""
        for _ in range(8):
            self.browser.press("v")
            told_texts += self.browser.text("#details")
            self.browser.press("n", "f", "n", "ArrowDown")
        for selector in ("img", "b", "i", "u", "s", "iframe", "svg[onload]", "#chart h1"):
            self.assertEqual(self.browser.count(selector), 0, selector)
        self.assertEqual((self.browser.count("script"), self.browser.run("return document.title")),
                         (2, before))
        told_texts += self.browser.text("body") + self.browser.run(
            "return document.getElementById('lanes').textContent")
        for text in ("<b>7</b><u>", "<img src=x onerror=a>", "<script>document.title='a'</script>",
                     "\\x202E<!--<script>", "]]>{{c}}${d}\\u003cb>\"'", "onerror=document.title=1>.jsonl"):
            self.assertIn(text, told_texts)
        self.assertEqual(self.browser.logged(), [])

    def test_the_policy_lets_nothing_else_run_or_load(self):
        ran = self.browser.run("""
            const inline = document.createElement('script');
            inline.textContent = 'document.title = "ran"';
            document.body.append(inline);
            const handler = document.createElement('div');
            handler.setAttribute('onclick', 'document.title = "clicked"');
            document.body.append(handler);
            handler.click();
            handler.setAttribute('style', 'width: 7px');
            const image = document.createElement('img');
            image.src = 'data:image/gif;base64,R0lGODlhAQABAAAAACw=';
            document.body.append(image);
            return [document.title, handler.clientWidth];""")
        self.assertEqual(ran[0], "Power supplies: what happened")
        self.assertNotEqual(ran[1], 7)
        told_of = " ".join(self.browser.logged())
        for directive in ("script-src", "style-src", "default-src"):
            self.assertIn(directive, told_of)
        self.assertEqual(re.findall(r"https?://[^\s'\"<]+", self.page.read_text()),
                         ["http://www.w3.org/2000/svg"])

    def test_an_hour_of_sixteen_slots(self):
        scenario = self.folder / "hour.json"
        scenario.write_text(json.dumps({"duration": 3600, "slots": [
            {"name": f"PowerSupply{number}",
             "supply": {"image": str(SOURCE / "samples" / "ds2900.fru")} if number % 4 else None,
             "events": [{"at": 60.5 * each, "action": ("nack", "hang")[each % 2],
                         "transactions": 1 + each % 5} for each in range(1, 59)]}
            for number in range(1, 17)]}))
        recording, page = self.folder / "hour.jsonl", self.folder / "hour.html"
        agent("simulate", "--record", recording, scenario)
        agent("report", recording, "-o", page)
        self.show(page)
        drawn = self.browser.run("""
            const start = performance.now();
            document.getElementById('zoom-in').click();
            return new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() =>
              done([performance.getEntriesByName('drawn')[0].startTime, performance.now() - start]))));""")
        counted = re.search(r"16 slots, ([\d,]+) transactions", self.browser.text("#summary"))
        self.assertGreater(int(counted.group(1).replace(",", "")), 55000)
        # What is far away is summed up before it is drawn.
        for _ in range(3):
            self.assertLess(self.browser.count("#chart *"), 6000)
            self.browser.press("+", "+", "+")
        self.browser.screenshot(PICTURES / "page-hour.png")
        print(f"\nan hour of 16 slots: {page.stat().st_size / 1e6:.2f} MB, drawn {drawn[0]:.0f} ms "
              f"after it was opened, zoomed in {drawn[1]:.0f} ms", flush=True)


if __name__ == "__main__":
    unittest.main()
