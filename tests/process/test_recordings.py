"""Recordings: a replay is the recorded run again, and a bad recording is refused by its line."""

import json

from agent import DS2900, SAMPLES, Case, run

HEADER = '{"format":"psu-agent recording","version":1}\n'
GOOD = ('{"time":0.5,"slot":"A","event":"transaction","request":"pollForInsertion","device":88,'
        '"command":153,"write":null,"readLength":8,"read":"07454D4552534F4E","status":3,'
        '"failure":null}\n')
STOP = '{"time":0.1,"reason":null,"slot":"A","event":"stop"}\n'


def changed(key, value):
    return json.dumps(json.loads(GOOD) | {key: value}) + "\n"


def failed(entries):
    return json.dumps(json.loads(GOOD) | {"read": None, "status": 2} | entries) + "\n"


def lines_of(text, event):
    return [entry for entry in map(json.loads, text.splitlines()) if entry.get("event") == event]


class Recordings(Case):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "psu.jsonl"

    def record(self, scenario):
        """Makes the file a recording of the scenario; what was printed."""
        status, out, err = run("simulate", "--json", "--record", self.file, scenario)
        self.assertEqual((status, err), (0, []))
        return out.decode()

    def test_identify_waits_for_what_comes_later(self):
        scenario = self.folder / "late.json"
        scenario.write_text(json.dumps({"duration": 6, "slots": [
            {"name": "A", "supply": None, "events": [
                {"at": 2.5, "action": "insert", "supply": {"image": str(DS2900)}}]}]}))
        self.record(scenario)
        for wait, status in (("0", 3), ("1", 3), ("5", 0)):
            self.assertEqual(run("identify", "--wait", wait, f"replay:{self.file}")[0], status, wait)

    def test_replays_are_exact(self):
        """What each scenario's buses did gives the same events when it is replayed, and recorded
        once more it gives the same recording."""
        again = self.folder / "again.jsonl"

        def told(slot, text, event):
            return [entry | {"source": None, "reason": None} for entry in lines_of(text, event)
                    if entry["slot"] == slot]

        for scenario in sorted((SAMPLES / "scenarios").glob("*.json")):
            with self.subTest(scenario.name):
                out = self.record(scenario)
                text = self.file.read_text()
                self.assertEqual(lines_of(text, "supply"), lines_of(out, "supply"))
                slots = sorted({entry["slot"] for entry in lines_of(text, "transaction")})
                status, replayed, err = run(
                    "monitor", "--json", "--duration", json.loads(scenario.read_text())["duration"],
                    "--record", again,
                    *(word for slot in slots
                      for word in ("--slot", f"{slot}=replay:{self.file}#{slot}")))
                self.assertEqual((status, err), (0, []))
                for slot in slots:
                    self.assertEqual(told(slot, replayed.decode(), "supply"),
                                     told(slot, out, "supply"))
                    for event in ("start", "transaction", "supply", "stop"):
                        self.assertEqual(told(slot, again.read_text(), event),
                                         told(slot, text, event))

    def test_what_is_done_to_a_slot(self):
        """Acts stand where they happen, in the order of the slot's times."""
        scenario = self.folder / "acts.json"
        scenario.write_text(json.dumps({"duration": 9, "slots": [
            {"name": "A", "supply": {"image": str(DS2900)}, "events": [
                {"at": 4, "action": "remove"},
                {"at": 5, "action": "nack", "transactions": 2},
                {"at": 6, "action": "insert", "supply": {"image": str(DS2900)}}]}]}))
        self.record(scenario)
        lines = [json.loads(line) for line in self.file.read_text().splitlines()[1:]]
        self.assertEqual([line["time"] for line in lines], sorted(line["time"] for line in lines))
        self.assertEqual(
            [(line["time"], line["action"], line["supply"], line["transactions"])
             for line in lines if line["event"] == "act"],
            [(4, "remove", None, None), (5, "nack", None, 2), (6, "insert", str(DS2900), None)])
        self.assertEqual([line["event"] for line in (lines[0], lines[-1])], ["start", "stop"])
        self.assertEqual((lines[0]["pollInterval"], lines[0]["reviewInterval"]), (1, 60))

    def test_identify_and_simulate_take_them(self):
        told = run("identify", "--record", self.file, DS2900)
        self.assertEqual(run("identify", f"replay:{self.file}"), told)
        scenario = self.file.with_name("scenario.json")
        scenario.write_text(json.dumps({"duration": 5, "slots": [
            {"name": "B", "supply": {"replay": f"{self.file.name}#PowerSupply1"}}]}))
        status, out, err = run("simulate", scenario)
        end = len(self.file.read_text().splitlines())
        self.assertEqual((status, err, len(out.splitlines())),
                         (0, [f"psu-agent: B: {self.file}:{end}: the recording ends here"], 1))
        self.assertIn(b" B identified DS2900 L1330K04287", out)

    def test_one_that_ends_early_holds_nobody_up(self):
        run("identify", "--record", self.file, DS2900)
        self.file.write_text("".join(self.file.read_text().splitlines(True)[:4]))
        for others in ([], ["i2c:1048575"]):
            status, out, err = run("identify", f"replay:{self.file}", *others, timeout=60)
            self.assertEqual((status, out, err[-1]),
                             (1, b"", f"psu-agent: replay:{self.file}: no outcome"))

    def test_an_end_is_that_slots_alone(self):
        """Whatever a replay cannot answer stops its own slot, and is told once."""
        ends = ":2: the recording ends here"
        for text, told in (
                (HEADER + GOOD, ends), (HEADER + GOOD[:-1], ends),
                (HEADER + GOOD + GOOD[:40], ends + "; the file's last line is cut"),
                (HEADER + changed("command", 152),
                 ":2: the recorded request (device 0x58, command 0x98, nothing written, 8 bytes "
                 "read) is not the one that is asked for (device 0x58, command 0x99, nothing "
                 "written, 8 bytes read)")):
            with self.subTest(told=told):
                self.file.write_text(text)
                replay = f"replay:{self.file}"
                self.assertEqual(run("identify", replay),
                                 (1, b"", [f"psu-agent: {self.file}{told}",
                                           f"psu-agent: {replay}: no outcome"]))
                status, out, err = run("monitor", "--duration", 9, "--slot", f"A={replay}",
                                       "--slot", f"B={DS2900}")
                self.assertEqual((status, err), (0, [f"psu-agent: A: {self.file}{told}"]))
                self.assertIn(b" B identified DS2900", out)
                self.assertNotIn(b" A ", out)

    def test_kinds_of_errors(self):
        """A recording without kinds is one of before there were any."""
        again = self.folder / "again.jsonl"
        for line, kind in (({"failure": "no acknowledge"}, "noAcknowledge"),
                           ({"failure": "i2c-7: no acknowledge"}, "other"),
                           ({"failure": "?", "error": "arbitrationLost"}, "arbitrationLost")):
            self.file.write_text(HEADER + failed(line))
            run("identify", "--record", again, f"replay:{self.file}")
            self.assertEqual(lines_of(again.read_text(), "transaction")[0]["error"], kind)

    def test_refusals_name_the_line(self):
        for text, told in (
                ("", ":1: "), (HEADER.replace("1}", "2}"), ":1: version: 2"),
                (HEADER.replace(" rec", " wreck"), "format: "),
                (HEADER[:20], ":1: no JSON"), (HEADER, "there is no transaction"),
                (HEADER + GOOD[:40] + "\n" + GOOD, ":2: no JSON"),
                (HEADER + GOOD + "{\n", ":3: no JSON"), (HEADER + "x" * 70000 + "\n", ":2: longer"),
                (HEADER + changed("colour", 1), ':2: the document: unknown key "colour"'),
                (HEADER + changed("event", "colour"), ':2: event: "colour" is no event'),
                (HEADER + changed("event", "stop"), ':2: the document: unknown key "request"'),
                (HEADER + STOP.replace('"reason":null,', ""), ':2: the document: the key "reason"'),
                (HEADER + GOOD + STOP, ":3: time: earlier than line 2"), (HEADER + STOP, "no transaction"),
                (HEADER + changed("time", -1), ":2: time: -1"),
                (HEADER + changed("device", 128), ":2: device: 128"),
                (HEADER + changed("command", 256), ":2: command: 256"),
                (HEADER + changed("readLength", 0), ":2: readLength: 0"),
                (HEADER + changed("readLength", 4), ":2: read: "), (HEADER + changed("read", None), ":2: read: "),
                (HEADER + changed("read", "0"), ":2: read: "), (HEADER + changed("read", "0x"), ":2: read: "),
                (HEADER + changed("write", "0x10"), ":2: write: "), (HEADER + changed("slot", 7), ":2: slot: 7"),
                (HEADER + changed("status", 1), ":2: status: 1"), (HEADER + changed("failure", 1), ":2: failure: 1"),
                (HEADER + failed({"error": "colour"}), ':2: error: "colour" is no kind of error'),
                (HEADER + failed({"error": None}), ":2: error: "),
                (HEADER + changed("error", "timeout"), ":2: error: "),
                (HEADER + GOOD + GOOD.replace("0.5", "0.4"), ":3: time: "),
                (HEADER + GOOD + GOOD.replace("A", "B", 1), "name one of its slots as FILE#SLOT: A, B")):
            self.file.write_text(text)
            self.refused(1, told, "identify", f"replay:{self.file}")
        self.assertEqual(run("identify", "--record", "/dev/full", DS2900)[0], 1)
        self.assertIn("no slot C in it, only A, B", run("identify", f"replay:{self.file}#C")[2][0])
