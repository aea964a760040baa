"""The page of `report`: the data that it carries, and that nothing else can get into it."""

import base64
import hashlib
import json
import re
import unittest

from agent import DS2900, SAMPLES, Case, run

FIELDS = ("verdict", "reason", "mfrId", "descriptor", "manufacturerName", "productName", "partNumber",
          "productVersion", "serialNumber", "hwError", "suspect", "transactions", "fdl", "hint")
REQUEST = ("request", "device", "command", "write", "readLength", "read", "error")


def data(page):
    return json.loads(re.search(r'<script type="application/json" id="data">(.*?)</script>',
                                page.decode(), re.S).group(1))


def lived(lane):
    """The transactions of a lane: when each ended in microseconds, and what it was."""
    now, lives = 0, []
    for step, shape in zip(lane["at"], lane["shape"], strict=True):
        now += step
        lives.append((now, lane["shapes"][shape]))
    return lives


class Report(Case):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "night.jsonl"

    def lines(self):
        return [json.loads(line) for line in self.file.read_text().splitlines()]

    def page(self, *files):
        status, out, err = run("report", *(files or [self.file]))
        self.assertEqual((status, err), (0, []))
        return out

    def test_scenarios(self):
        """What is shown is what was recorded; without the recorded verdicts a replay gives them."""
        for scenario in sorted((SAMPLES / "scenarios").glob("*.json")):
            run("simulate", "--record", self.file, scenario)
            lines = self.lines()
            for kept in ({"supply", "act", "transaction", "start", "stop"}, {"transaction", "start"}):
                self.file.write_text("".join(
                    json.dumps(line) + "\n" for line in lines if line.get("event", "start") in kept))
                for lane in data(self.page())["lanes"]:
                    with self.subTest(scenario=scenario.name, slot=lane["slot"], kept=len(kept)):
                        self.compare(lane, [line for line in lines
                                            if line.get("slot") == lane["slot"]], "act" in kept)

    def compare(self, lane, lines, has_acts):
        def those(event):
            return [line for line in lines if line["event"] == event]
        self.assertEqual(lane["notes"], [])
        self.assertEqual([[supply[field] for field in FIELDS] for supply in lane["supplies"]],
                         [[supply[field] for field in FIELDS] for supply in those("supply")])
        for shown, told in zip(lane["supplies"], those("supply")):
            self.assertAlmostEqual(shown["time"], told["time"], 9)
        self.assertEqual([[shape[key] for key in REQUEST] for _, shape in lived(lane)],
                         [[line[key] for key in REQUEST] for line in those("transaction")])
        for (now, _), told in zip(lived(lane), those("transaction")):
            self.assertAlmostEqual(now / 1e6, told["time"], 5)
        self.assertEqual(len(lane["acts"]), len(those("act")) if has_acts else 0)
        self.assertTrue(all(shape["notes"] for shape in lane["shapes"]))

    def test_marks(self):
        scenario = SAMPLES / "scenarios" / "swap-beside-hanging-bus.json"
        run("simulate", "--record", self.file, scenario)
        lanes = {lane["slot"]: lane for lane in data(self.page())["lanes"]}
        marks = {slot[-1]: ([supply["swap"] for supply in lane["supplies"]].count(True),
                            len(lane["reviews"]), [shape["attempt"] for _, shape in lived(lane)
                                                   if shape["attempt"] > 1])
                 for slot, lane in lanes.items()}
        # A pull fails a check and its three retries; a hang does the same; one lost answer has one.
        self.assertEqual(marks["1"], (1, 0, [2, 3, 4]))
        self.assertEqual(marks["2"], (0, 0, [2, 3, 4]))
        self.assertEqual(marks["3"], (0, 3, [2, 2, 3]))
        self.assertEqual([act["text"] for act in lanes["PowerSupply2"]["acts"]],
                         ["hang, 9 transactions"])

    def test_a_kernel_trace(self):
        lanes = data(self.page(SAMPLES / "traces" / "machine.txt"))["lanes"]
        self.assertEqual([(lane["slot"], [supply["verdict"] for supply in lane["supplies"]])
                          for lane in lanes],
                         [("i2c-1", ["identified"]), ("i2c-3", ["unreachable"]), ("i2c-7", ["identified"])])
        lane, = data(self.page(SAMPLES / "traces" / "native.txt"))["lanes"]
        self.assertIn("no event for the reply of a block process call", lane["notes"][-1])
        self.assertGreater(len(lane["at"]), 1)

    def test_one_that_ends_early_is_shown_whole(self):
        run("identify", "--record", self.file, DS2900)
        lines = self.file.read_text().splitlines(True)
        self.file.write_text("".join(lines[:3] + lines[4:]))
        lane, = data(self.page())["lanes"]
        self.assertEqual(len(lane["at"]), len(lines) - 2)
        self.assertIn(f"the replay ends early: {self.file}:4: ", lane["notes"][0])

    def test_a_source_that_ended(self):
        first = self.folder / "first.jsonl"
        run("identify", "--record", first, DS2900)
        run("monitor", "--record", self.file, "--duration", 100, "--slot", f"A=replay:{first}")
        lane, = data(self.page())["lanes"]
        self.assertEqual(lane["notes"], [f"its source ended: {first}:10: the recording ends here"])

    def test_the_policy_names_the_script_and_the_style(self):
        run("identify", "--record", self.file, DS2900)
        page = self.page().decode()
        policy = re.search(r'Content-Security-Policy" content="([^"]*)"', page).group(1)
        self.assertTrue(policy.startswith("default-src 'none';"), policy)
        for tag, directive in (("script", "script-src"), ("style", "style-src")):
            content, = re.findall(rf"<{tag}>(.*?)</{tag}>", page, re.S)
            digest = base64.b64encode(hashlib.sha256(content.encode()).digest()).decode()
            self.assertIn(f"; {directive} 'sha256-{digest}'", policy)

    def test_no_text_can_end_the_data(self):
        evil = "</script><script>alert(1)</script><!--"
        run("simulate", "--record", self.file, SAMPLES / "scenarios" / "hanging-bus.json")
        lines = self.lines()
        for line in lines[1:]:
            line["slot"] = evil
            for key in ("failure", "reason", "source", "request", "serialNumber", "fdl"):
                if line.get(key):
                    line[key] = evil
        self.file.write_text("".join(json.dumps(line) + "\n" for line in lines))
        page = self.page()
        self.assertNotIn(b"alert(1)</script>", page)
        self.assertEqual(data(page)["lanes"][0]["slot"], evil)
        self.assertEqual(page.count(b"<"), self.page(SAMPLES / "traces" / "machine.txt").count(b"<"))

    def test_refusals(self):
        run("identify", "--record", self.file, DS2900)
        supply = {"time": 9, "slot": "A", "event": "supply", "source": None} | dict.fromkeys(FIELDS)
        good = supply | {"verdict": "absent", "suspect": [], "transactions": 1}
        for change, told in (({"verdict": None}, "verdict: "), ({"fdl": 7}, "fdl: 7"),
                             ({"suspect": "a"}, "suspect: "), ({"hwError": 0}, "hwError: 0"),
                             ({"transactions": -1}, "transactions: -1")):
            bad = self.folder / "bad.jsonl"
            bad.write_text(self.file.read_text() + json.dumps(good | change) + "\n")
            self.refused(1, f"{bad}:{len(bad.read_text().splitlines())}: {told}", "report", bad)
        self.refused(1, "cannot open", "report", self.folder / "none")
        self.refused(1, "cannot open for writing", "report", self.file, "-o", self.folder / "a" / "b")
        self.refused(1, "/dev/full: cannot write", "report", self.file, "-o", "/dev/full")
        self.refused(2, "RECORDING", "report")


if __name__ == "__main__":
    unittest.main()
