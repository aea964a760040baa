"""`monitor` and `simulate` as a person runs them: lines, publishing, clean stop, refusals."""

import json
import os
import resource
import signal
import subprocess

from agent import DS2900, SAMPLES, Case, faulty, run

DS3000 = SAMPLES / "ds3000.fru"
# Makes the run a live one; nobody has such a bus.
NO_BUS = ("--slot", "Z=i2c:name=no such adapter")


class Simulate(Case):
    def scenario(self, document):
        file = self.folder / "scenario.json"
        file.write_text(document if isinstance(document, str) else json.dumps(document))
        return file

    def test_refusals_name_the_place(self):
        supply = {"image": str(DS2900)}
        slot = {"name": "A", "supply": supply}

        def events(*entries, **more):
            return {"duration": 9, "slots": [{**slot, **more, "events": list(entries)}]}

        table = [
            ([], "the document: [] is no object"),
            ({"slots": [slot]}, 'the key "duration" is missing'),
            ({"duration": -1, "slots": [slot]}, "duration: -1 is no number"),
            ({"duration": "1", "slots": [slot]}, 'duration: "1" is no number'),
            ({"duration": 1, "slots": []}, "slots: there must be a slot"),
            ({"duration": 1, "slots": {}}, "slots: {} is no array"),
            ({"duration": 1, "slots": [slot], "x": 1}, 'unknown key "x"'),
            ({"duration": 1, "slots": [slot, slot]}, 'slots[1].name: "A" is taken'),
            ({"duration": 1, "slots": [{**slot, "name": "a/b"}]}, 'slots[0].name: "a/b" is no name'),
            ({"duration": 1, "slots": [{"name": "A"}]}, 'slots[0]: the key "supply" is missing'),
            ({"duration": 1, "slots": [{"name": "A", "supply": {"image": "a\0b"}}]},
             'slots[0].supply.image: "a\\x00b" names no file'),
            ({"duration": 1, "slots": [{"name": "A", "supply": {"replay": ""}}]},
             'slots[0].supply.replay: "" names no file'),
            ({"duration": 1, "slots": [{"name": "A", "supply": {**supply, "mfrId": ""}}]},
             "slots[0].supply.mfrId: "),
            ({"duration": 1, "slots": [{"name": "A", "supply": {**supply, "mfrId": "\u0100"}}]},
             "above U+00FF"),
            (events({"at": 10, "action": "remove"}), "slots[0].events[0].at: 10 is later than the end"),
            (events({"at": 2, "action": "remove"}, {"at": 1, "action": "remove"}),
             "slots[0].events[1].at: 1 is earlier than the event before it"),
            (events({"at": 1, "action": "explode"}), 'events[0].action: "explode" is no action'),
            (events({"at": 1, "action": "nack", "byte": 1}), 'events[0]: unknown key "byte"'),
            (events({"at": 1, "action": "nack", "transactions": 0}), "transactions: 0 is no whole"),
            (events({"at": 1, "action": "flip", "byte": 33, "mask": 1}), "byte: 33 is no whole"),
            (events({"at": 1, "action": "flip", "byte": 3, "mask": 0}), "mask: 0 is no whole"),
            (events({"at": 1, "action": "count", "count": 1.5}), "count: 1.5 is no whole"),
            (events({"at": 1, "action": "insert", "supply": None}), "events[0].supply: only"),
        ]
        for document, message in table:
            self.refused(2, message, "simulate", self.scenario(document))
        self.refused(1, "scenario.json: slots[0].supply.image: ", "simulate", self.scenario(
            {"duration": 1, "slots": [{"name": "A", "supply": {"image": "none.fru"}}]}))
        for file, message in ((self.folder / "none.json", "none.json: cannot open: No such file"),
                              (self.folder, "is no regular file"),
                              ("/dev/zero", "/dev/zero: is no regular file")):
            self.refused(1, message, "simulate", file)

    def test_texts_that_are_no_scenario(self):
        file = self.folder / "scenario.json"
        deep = "[" * 80000
        for text, message in (
                ("", "no JSON from column 1 on"), ('{"duration": 1,\n "slots": ?', "line 2, column 11 on"),
                ('{"duration": "\\ud800"}', "no JSON from column"), ("1 2", "no JSON from column 3 on"),
                ('{"duration": ' + deep + "]" * 80000 + "}",
                 "duration" + "[0]" * 15 + ": nested deeper than 16 levels"),
                (deep, "[0]: nested deeper than 16 levels"),
                ('{"slots": [1, {"a": 1, "a": 2}]}', "slots[1].a: the key is there twice"),
                ("{" + ", ".join(f'"{i}": 1' for i in range(101)) + "}",
                 "100: the object has more than 100 keys"),
                ('{"duration": 1e999}', "duration: no number that can be held")):
            file.write_text(text)
            self.refused(2, message, "simulate", file)

    def test_more_than_memory_holds(self):
        def limited():
            resource.setrlimit(resource.RLIMIT_AS, (80 << 20, 80 << 20))

        if run("--version", preexec_fn=limited)[0] != 0:
            self.skipTest("what this build is instrumented with reserves more")
        file = self.folder / "scenario.json"
        file.write_text('{"duration": 1, "slots": [' + "[]," * 2000000 + "[]]}")
        self.assertEqual(run("simulate", file, preexec_fn=limited),
                         (1, b"", ["psu-agent: out of memory"]))

    def test_json_lines_and_transcript(self):
        _, out, _ = run("simulate", "--json", "--transcript", self.scenario(
            {"duration": 0.5, "slots": [{"name": "A", "supply": {"image": str(DS2900)}},
                                        {"name": "B", "supply": None}]}))
        lines = [json.loads(line) for line in out.splitlines()]
        supplies = {line["slot"]: line for line in lines if line["event"] == "supply"}
        self.assertEqual(supplies["A"]["descriptor"], "DS2900")
        self.assertEqual((supplies["B"]["verdict"], supplies["B"]["source"]), ("absent", None))
        transactions = [line for line in lines if line["event"] == "transaction"]
        self.assertEqual(sum(line["slot"] == "A" for line in transactions),
                         supplies["A"]["transactions"])
        header = transactions[2]
        self.assertEqual({**header, "time": 0}, {
            "time": 0, "slot": "A", "event": "transaction", "request": "pollForInsertion",
            "device": 88, "command": 176, "write": "0100", "readLength": 9,
            "read": "1001000000010000FE", "status": 3, "error": None})
        self.assertEqual({line["error"] for line in transactions if line["slot"] == "B"},
                         {"noAcknowledge"})

    def test_an_unsteady_slot_is_summed_up(self):
        events = [{"at": 10 * i, "action": "remove"} if i % 2 else
                  {"at": 10 * i, "action": "insert", "supply": {"image": str(DS2900)}}
                  for i in range(1, 16)]
        scenario = self.scenario({"duration": 2000, "slots": [
            {"name": "A", "supply": {"image": str(DS2900)}, "events": events}]})
        _, out, _ = run("simulate", scenario)
        lines = [line.split(" ", 2) for line in out.decode().splitlines()]
        verdicts = [line[2].split()[0] for line in lines]
        self.assertEqual(verdicts, ["identified", "absent"] * 3 + [
            "identified", "unsteady", "unsteady", "unsteady", "steady", "absent"])
        told = [line[2] for line in lines if line[2].startswith("unsteady")]
        self.assertIn("7 changes within 10 minutes", told[0])
        changes = [json.loads(line)["time"]
                   for line in run("simulate", "--json", scenario)[1].splitlines()][1:]
        self.assertEqual(len(changes), 15)
        begin = changes[6]
        counts = [sum(begin + after < time < begin + after + 60 for time in changes)
                  for after in (0, 60)]
        self.assertEqual(sum(counts), 8)
        self.assertEqual(told[1:], [f"unsteady {count} changes in the last minute"
                                    for count in counts])
        at = [float(line[0]) for line in lines]
        for got, wanted in zip(at[7:], (begin, begin + 60, begin + 120, changes[-1] + 600,
                                        changes[-1] + 600)):
            self.assertAlmostEqual(got, wanted, 2)

    def test_text_transcript(self):
        _, out, _ = run("simulate", "--transcript", self.scenario(
            {"duration": 0.1, "slots": [{"name": "A", "supply": {"image": str(DS2900)}}]}))
        transactions = [line.split(" ", 1)[1] for line in out.decode().splitlines()]
        self.assertEqual(transactions, [
            "A pollForInsertion 0x58 0x99 -> 07 45 4D 45 52 53 4F 4E",
            "A pollForInsertion 0x58 0xb0 write 01 00 -> 10 01 00 00 00 01 00 00 FE"])


class Monitor(Case):
    def test_prints_edges_only(self):
        status, out, err = run("monitor", "--slot", f"A={DS2900}", "--slot", f"B={DS3000}",
                               "--duration", "60")
        self.assertEqual((status, err), (0, []))
        self.assertEqual([line.split()[1:4] for line in out.decode().splitlines()],
                         [["A", "identified", "DS2900"], ["B", "identified", "DS3000"]])

    def test_publishes_until_it_is_stopped(self):
        (self.folder / "B.fdl").write_text("left by an earlier run")
        fdl = run("identify", DS2900)[1]
        for stop in (signal.SIGTERM, signal.SIGINT):
            with subprocess.Popen([os.environ["PSU_AGENT"], "monitor", "--publish", self.folder,
                                   "--slot", f"A={DS2900}", "--slot", f"B={faulty('unrecognised')}",
                                   *NO_BUS], stdout=subprocess.PIPE, text=True) as agent:
                lines = [agent.stdout.readline().split()[1:3] for _ in range(3)]
                self.assertCountEqual(lines, [["A", "identified"], ["B", "unrecognised"],
                                              ["Z", "unreachable"]])
                self.assertEqual([file.name for file in self.folder.glob("*.fdl")], ["A.fdl"])
                self.assertEqual((self.folder / "A.fdl").read_bytes(), fdl)
                agent.send_signal(stop)
                self.assertEqual(agent.wait(timeout=60), 0)
            self.assertEqual(list(self.folder.iterdir()), [])

    def test_a_run_that_was_killed_or_kept(self):
        fdl = run("identify", DS2900)[1]
        words = [os.environ["PSU_AGENT"], "monitor", "--publish", self.folder, "--keep",
                 "--slot", f"A={DS2900}", *NO_BUS]
        for stop, status in ((signal.SIGKILL, -9), (signal.SIGTERM, 0)):
            with subprocess.Popen(words, stdout=subprocess.PIPE, text=True) as agent:
                while "identified" not in agent.stdout.readline():
                    pass
                second = run("monitor", "--slot", f"A={DS2900}", "--publish", self.folder,
                             "--duration", "1")
                self.assertEqual((second[0], "another program does" in second[2][0]), (1, True))
                agent.send_signal(stop)
                self.assertEqual(agent.wait(timeout=60), status)
            self.assertEqual((self.folder / "A.fdl").read_bytes(), fdl)
        # The slot is another one now, and what it was called is published no longer.
        run("monitor", "--publish", self.folder, "--slot", f"B={DS3000}", "--duration", "1")
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_ends_when_nobody_reads(self):
        # Nothing else happens meanwhile that would make it look.
        with subprocess.Popen([os.environ["PSU_AGENT"], "monitor", "--publish", self.folder,
                               "--slot", f"A={DS2900}", *NO_BUS, "--poll-interval", "3600"],
                              stdout=subprocess.PIPE) as agent:
            agent.stdout.readline()
            agent.stdout.readline()
            agent.stdout.close()
            self.assertEqual(agent.wait(timeout=60), 0)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_exit_status(self):
        slot = ("--slot", f"A={DS2900}", "--duration", "1")
        for status, told, words in (
                (2, "--slot", ("--slot", "A")),
                (2, "--slot", ("--slot", f"a/b={DS2900}")),
                (2, "named twice", (*slot, "--slot", f"A={DS3000}")),
                (2, "standard input", (*slot, "--slot", "B=-", "--slot", "C=-")),
                (2, "poll-interval", (*slot, "--poll-interval", "0")),
                (2, "duration", ("--slot", f"A={DS2900}", "--duration", "-1")),
                (1, "Not a directory", (*slot, "--publish", DS2900)),
                (2, "--keep: needs --publish", (*slot, "--keep")),
                (2, "--duration: is needed", slot[:2]),
                (2, "--slot: no slot is named", ()),
                (2, "--hold", (*slot, "--publish", self.folder, "--hold", "-1")),
                (1, "nowhere", (*slot, "--publish", self.folder / "nowhere"))):
            self.refused(status, told, "monitor", *words)
        status, _, err = run("monitor", *slot, "--slot", "B=none.fru")
        self.assertEqual((status, "none.fru" in "".join(err)), (1, True))
