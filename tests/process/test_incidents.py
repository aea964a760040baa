"""Incidents: what is kept of one ends, when it is replayed, in the verdict that it is named after."""

import json
import os
import random
import re

from agent import DS2900, SAMPLES, Case, faulty, run

DS3000 = SAMPLES / "ds3000.fru"
KINDS = [{"action": "nack"}, {"action": "hang"}, {"action": "count", "count": 0},
         {"action": "count", "count": 1}, {"action": "flip", "byte": 0, "mask": 255},
         {"action": "flip", "byte": 2, "mask": 255}, {"action": "nack", "transactions": 4},
         {"action": "hang", "transactions": 4}, {"action": "nack", "transactions": 9}]
# Longer answers than any: nothing is flipped.
NOTHING = {"action": "flip", "byte": 32, "mask": 255}


def pairs():
    """The events of slots with each kind of fault at each transaction, alone and in pairs."""
    for at in range(11):
        for one in KINDS:
            first = [{**NOTHING, "transactions": at}] * bool(at) + [one]
            yield first
            for two in KINDS:
                for gap in (0, 1, 4):
                    yield first + [{**NOTHING, "transactions": gap}] * bool(gap) + [two]


def life(chance):
    """The events of a random life of two minutes."""
    events = []
    for at in sorted(chance.uniform(0, 120) for _ in range(chance.randrange(12))):
        event = chance.choice([*KINDS, {"action": "remove"}, *(
            {"action": "insert", "supply": {"image": str(image)}} for image in (
                DS2900, DS3000, faulty("area-checksum"), faulty("area-version")))])
        events.append({"at": at, **event})
        if event["action"] in ("nack", "hang", "flip") and chance.random() < 0.5:
            events[-1]["transactions"] = chance.randrange(1, 60)
    return events


class Incidents(Case):
    def setUp(self):
        super().setUp()
        self.incidents = self.folder / "incidents"
        self.incidents.mkdir()

    def simulate(self, slots, duration, *options):
        scenario = self.folder / "scenario.json"
        scenario.write_text(json.dumps({"duration": duration, "slots": slots}))
        status, _, err = run("simulate", *options, "--incidents", self.incidents, scenario)
        self.assertEqual((status, err), (0, []))

    def replay_all(self):
        """Replays what is in the folder, checks it, and empties the folder; the number of files."""
        files = sorted(self.incidents.iterdir())
        self.assertLess(len(files), 100)
        if not files:
            return 0
        status, out, err = run("monitor", "--json", "--duration", 4000, *(
            word for number, file in enumerate(files)
            for word in ("--slot", f"S{number}=replay:{file}")))
        self.assertEqual(status, 0)
        self.assertEqual([line for line in err if not line.endswith("the recording ends here")], [])
        told = [json.loads(line) for line in out.decode().splitlines()]
        for number, file in enumerate(files):
            with self.subTest(file.name, life=file.read_text()):
                lines = [json.loads(line) for line in file.read_text().splitlines()[1:]]
                (start, *_), (incident,) = (
                    [line for line in lines if line["event"] == event]
                    for event in ("start", "incident"))
                verdicts = [(line["time"] + start["time"], line["verdict"]) for line in told
                            if line["slot"] == f"S{number}"]
                then = [verdict for time, verdict in verdicts if time <= incident["time"] + 1e-6]
                self.assertEqual(then[-1], file.stem.rsplit("-", 1)[1])
                last = [line["verdict"] for line in lines if line["event"] == "supply"][-1]
                self.assertEqual(verdicts[-1][1], last)
                self.assertLess(os.path.getsize(file), 200_000)
            file.unlink()
        return len(files)

    def test_scenarios(self):
        count = 0
        for scenario in sorted((SAMPLES / "scenarios").glob("*.json")):
            self.assertEqual(run("simulate", "--incidents", self.incidents, scenario)[0], 0)
            count += self.replay_all()
        self.assertGreater(count, 5)

    def test_fault_sweep(self):
        lives = list(pairs())
        count = 0
        for first in range(0, len(lives), 90):
            self.simulate([{"name": f"A{number}", "supply": {"image": str(DS2900)},
                            "events": [{"at": 0, **event} for event in events]}
                           for number, events in enumerate(lives[first:first + 90])], 40)
            count += self.replay_all()
        self.assertGreater(count, 100)
        print("incidents of the fault sweep:", count)

    def test_random_lives(self):
        chance = random.Random(17)
        images = [DS2900, DS3000, faulty("area-checksum")]
        count = 0
        for _ in range(25):
            self.simulate([{"name": f"A{number}", "supply": {"image": str(chance.choice(images))},
                            "events": life(chance)} for number in range(40)], 150)
            count += self.replay_all()
        self.assertGreater(count, 500)
        print("incidents of random lives:", count)

    def test_a_long_night(self):
        """Hours of the same cost nothing, and the end of them is replayed."""
        self.simulate([{"name": "A", "supply": {"image": str(DS2900)},
                        "events": [{"at": 30000, "action": "hang", "transactions": 20}]},
                       {"name": "B", "supply": {"image": str(faulty("area-checksum"))},
                        "events": [{"at": 30000, "action": "hang", "transactions": 40}]}], 30040)
        names = sorted(file.name for file in self.incidents.iterdir())
        self.assertEqual([name.split("-")[0] for name in names], ["A", "B", "B"])
        for name in names:
            text = (self.incidents / name).read_text()
            self.assertLess(len(text.splitlines()), 256 + 150)
        self.replay_all()

    def test_a_redacted_night(self):
        """What was told before a recording begins is known by its pseudonym."""
        self.simulate([{"name": "A", "supply": {"image": str(faulty("unrecognised"))}, "events": [
            {"at": 30000, "action": "hang", "transactions": 20}]}], 30040, "--redact")
        self.assertEqual(self.replay_all(), 2)

    def test_one_a_minute(self):
        self.simulate([{"name": "A", "supply": {"image": str(DS2900)}, "events": [
            event for at in range(10, 200, 20) for event in (
                {"at": at, "action": "remove"},
                {"at": at + 10, "action": "insert", "supply": {"image": str(DS2900)}})]}], 200)
        times = sorted(float(file.name.split("-")[1]) for file in self.incidents.iterdir())
        self.assertGreater(len(times), 1)
        self.assertTrue(all(two - one >= 60 for one, two in zip(times, times[1:])), times)

    def test_unsteady(self):
        """Told when the verdict changes for the seventh time in ten minutes, whatever it is then."""
        self.simulate([{"name": "A", "supply": None, "events": [
            event for at in (10, 35, 55, 85) for event in (
                {"at": at, "action": "insert", "supply": {"image": str(DS2900)}},
                {"at": at + 10, "action": "remove"})][:-1]}], 120)
        causes = {file.name.rsplit("-", 1)[1]: line["cause"] for file in self.incidents.iterdir()
                  for line in map(json.loads, file.read_text().splitlines()[1:])
                  if line["event"] == "incident"}
        self.assertEqual(causes, {"absent.jsonl": "lost", "identified.jsonl": "unsteady"})
        self.replay_all()

    def test_room(self):
        """The oldest go first; what is no incident stays."""
        others = ["notes.txt", "A-1.000-colour.jsonl", "A-1.000-absent.json", ".x-1-absent.jsonl"]
        for name in others:
            (self.incidents / name).write_text("x")
        for number in range(120):
            file = self.incidents / f"A-{number}.000-absent.jsonl"
            file.write_text("x" * (1_000_000 if number == 119 else 10))
            os.utime(file, (1e9 + number, 1e9 + number))
        # A run that was killed while it wrote one.
        (self.incidents / ".A-2.000-absent.jsonl.new").write_text("x")
        slot = {"name": "B", "supply": {"image": str(faulty("area-checksum"))}}
        self.simulate([slot], 5)
        kept = {file.name for file in self.incidents.iterdir()} - set(others)
        self.assertEqual(len(kept), 100)
        self.assertEqual({name for name in kept if name.startswith("A")},
                         {f"A-{number}.000-absent.jsonl" for number in range(21, 120)})
        self.assertTrue(set(others) <= {file.name for file in self.incidents.iterdir()})
        for number in range(60, 80):
            (self.incidents / f"A-{number}.000-absent.jsonl").write_text("x" * 1_000_000)
        self.simulate([slot], 6)
        self.assertLess(sum(file.stat().st_size for file in self.incidents.iterdir()), 20_000_010)

    def test_redacted(self):
        """Nothing of a serial number is left, and a replay comes to the same verdicts."""
        record = {redact: self.folder / f"record{redact}.jsonl" for redact in ("", "--redact")}

        def lines(redact, event):
            return sorted(
                (line for line in map(json.loads, record[redact].read_text().splitlines()[1:])
                 if line["event"] == event), key=lambda line: (line["slot"], line["time"]))

        def told(output):
            return [(line["time"], line["slot"], line["verdict"])
                    for line in map(json.loads, output.decode().splitlines())]

        seen = {}
        for scenario in sorted((SAMPLES / "scenarios").glob("*.json")):
            with self.subTest(scenario.name):
                replayed = {}
                for redact, file in record.items():
                    self.assertEqual(run("simulate", "--record", file, "--incidents",
                                         self.incidents, *redact.split(), scenario)[0], 0)
                    slots = sorted({line["slot"] for line in lines(redact, "transaction")})
                    status, out, err = run("monitor", "--json", "--duration", 100, *(
                        word for slot in slots
                        for word in ("--slot", f"{slot}=replay:{file}#{slot}")))
                    self.assertEqual(status, 0)
                    for line in err:
                        self.assertTrue(line.endswith("the recording ends here"), line)
                    replayed[redact] = told(out)
                self.assertEqual(replayed["--redact"], replayed[""])
                texts = [file.read_text() for file in (record["--redact"],
                                                       *self.incidents.iterdir())]
                self.compare_areas(lines("", "transaction"), lines("--redact", "transaction"))
                for plain, other in zip(lines("", "supply"), lines("--redact", "supply")):
                    serial, pseudonym = plain["serialNumber"], other["serialNumber"]
                    if serial:
                        self.assertEqual(len(serial), len(pseudonym))
                        self.assertEqual(seen.setdefault(serial, pseudonym), pseudonym)
                        self.assertIn(pseudonym, other["fdl"] or pseudonym)
                        for text in texts:
                            self.assertNotIn(serial, text)
                            self.assertNotIn(serial[:8].encode().hex().upper(), text.upper())
                self.replay_all()
        self.assertGreater(len(seen), 3)

    def compare_areas(self, plain, redacted):
        """What stands before an area's texts is as it was."""
        def bytes_of(line):
            block = bytes.fromhex(line["read"] or "")
            return block[1:1 + block[0]] if block else b""

        start = 0
        for one, other in zip(plain, redacted, strict=True):
            offset = int(one["write"][2:], 16) if one["write"] else None
            if offset == 0 and bytes_of(one):
                start = bytes_of(one)[4] * 8
            elif offset is not None and start <= offset < start + 3:
                self.assertEqual(bytes_of(one)[:start + 3 - offset],
                                 bytes_of(other)[:start + 3 - offset])

    def test_redacted_page(self):
        scenario = SAMPLES / "scenarios" / "swap-beside-hanging-bus.json"
        record = self.folder / "record.jsonl"
        self.assertEqual(run("simulate", "--record", record, "--incidents", self.incidents,
                             scenario)[0], 0)
        for file in (record, *self.incidents.iterdir()):
            pages = []
            for redact in ([], ["--redact"]):
                status, out, err = run("report", *redact, file)
                self.assertEqual((status, err), (0, []))
                pages.append(out.decode())
            serials = set(re.findall(r'serialNumber":"(\w+)"', file.read_text()))
            self.assertTrue(serials)
            for serial in serials:
                for text in (serial, serial.encode().hex().upper()):
                    self.assertIn(text, pages[0])
                    self.assertNotIn(text, pages[1])
            self.assertEqual(*(re.findall(r'"verdict":"\w+"', page) for page in pages))

    def test_refusals(self):
        scenario = SAMPLES / "scenarios" / "update.json"
        self.refused(1, "nowhere", "simulate", "--incidents", self.folder / "nowhere", scenario)
        trace = SAMPLES / "traces" / "machine.txt"
        self.refused(1, f"{trace}: a kernel trace", "report", "--redact", trace)
