"""Kernel traces as sources: each replays to the verdicts of the run that was traced."""

import json

from agent import DS2900, SAMPLES, Case, run

ERRORS = {"noAcknowledge": -6, "timeout": -110, "badCount": -71}
TRACES = SAMPLES / "traces"


def digits(data):
    return "-".join(f"{byte:02x}" for byte in data)


def traced(entries, buses, before="       psu-agent-1412    [002] ....."):
    """What the kernel writes of these transactions, the slots being plain I2C adapters."""
    lines = ["# tracer: nop", "#"]
    for entry in entries:
        bus, length = buses[entry["slot"]], entry["readLength"]
        command = bytes([entry["command"]]) + bytes.fromhex(entry["write"] or "")
        events = [f"i2c_write: i2c-{bus} #0 a=058 f=0000 l={len(command)} [{digits(command)}]",
                  f"i2c_read: i2c-{bus} #1 a=058 f=0001 l={length}"]
        if entry["status"] == 3:
            events += [f"i2c_reply: i2c-{bus} #1 a=058 f=0001 l={length} "
                       f"[{digits(bytes.fromhex(entry['read']))}]", f"i2c_result: i2c-{bus} n=2 ret=2"]
        else:
            events.append(f"i2c_result: i2c-{bus} n=2 ret={ERRORS[entry['error']]}")
        lines += [f"{before} {4211.5 + entry['time']:.6f}: {event}" for event in events]
    return "\n".join(lines) + "\n"


def verdicts(out, slot):
    return [[entry[key] for key in ("verdict", "descriptor", "serialNumber", "fdl")]
            for entry in map(json.loads, out.splitlines())
            if entry["slot"] == slot and entry["event"] == "supply"]


class Traces(Case):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "trace"

    def simulated(self, scenario):
        out = run("simulate", "--json", "--transcript", scenario)[1]
        return out, [entry for entry in map(json.loads, out.splitlines())
                     if entry["event"] == "transaction"]

    def test_scenarios_as_the_kernel_would_tell_them(self):
        for scenario in sorted((SAMPLES / "scenarios").glob("*.json")):
            with self.subTest(scenario.name):
                out, entries = self.simulated(scenario)
                slots = sorted({entry["slot"] for entry in entries})
                buses = {slot: 3 + number for number, slot in enumerate(slots)}
                self.file.write_text(traced(entries, buses))
                status, replayed, _ = run(
                    "monitor", "--json", "--duration", json.loads(scenario.read_text())["duration"],
                    *(word for slot in slots
                      for word in ("--slot", f"{slot}=replay:{self.file}#i2c-{buses[slot]}")))
                self.assertEqual(status, 0)
                for slot in slots:
                    self.assertEqual(verdicts(replayed, slot), verdicts(out, slot), slot)

    def test_what_asks_for_other_things_in_between(self):
        """Another program's longer reads, and its reads of other commands, do not matter."""
        _, entries = self.simulated(SAMPLES / "scenarios" / "swap-between-checks.json")
        other = {"command": 0x9A, "write": None, "readLength": 3, "read": "024142", "status": 3}
        several = []
        for entry in entries:
            read = entry["read"] + "AA" * (33 - entry["readLength"])
            several += [entry | {"readLength": 33, "read": read}, entry | other]
        self.file.write_text(traced(several, {"PowerSupply1": 0}, "other-1  [000]"))
        out = run("monitor", "--duration", 10, "--slot", f"A=replay:{self.file}")[1]
        self.assertEqual([line.split()[2:] for line in out.decode().splitlines()],
                         [["identified", "DS2900", "L1330K04287"],
                          ["identified", "DS3000", "K1308B01173"]])

    def test_ends_where_more_is_needed_than_is_known(self):
        _, entries = self.simulated(SAMPLES / "scenarios" / "update.json")
        short = [entry | {"readLength": 5, "read": entry["read"][:10]} for entry in entries]
        for lines, told in (
                (traced(short, {"PowerSupply1": 0}), ":6: only 5 bytes of the answer are known, of 8 "),
                (traced(entries[1:8], {"PowerSupply1": 0}), ": from here on there is no answer to the "
                 "request (device 0x58, command 0x99, nothing written, 8 bytes read)")):
            self.file.write_text(lines)
            status, _, err = run("identify", f"replay:{self.file}")
            self.assertEqual(status, 1)
            self.assertIn(told, err[0])

    def test_captured_on_a_kernel(self):
        """One run, as it was recorded and as the kernel told of it."""
        for bus, slot in ((1, "A"), (3, "C"), (7, "B")):
            told = [run("identify", f"replay:{TRACES / file}")
                    for file in (f"machine.jsonl#{slot}", f"machine.txt#i2c-{bus}")]
            self.assertEqual([each[:2] for each in told], [told[0][:2]] * 2)
            self.assertEqual(told[0][0], 4 if slot == "C" else 0)
        self.refused(1, "name one of its slots as FILE#SLOT: i2c-1, i2c-3, i2c-7",
                     "identify", f"replay:{TRACES / 'machine.txt'}")
        status, _, err = run("identify", f"replay:{TRACES / 'native.txt'}")
        self.assertEqual(status, 1)
        self.assertIn("no event for the reply of a block process call", err[0])

    def test_refusals(self):
        line = "a-1 [000] 1.0: i2c_read: i2c-1 #1 a=058 f=0001 l=1\n"
        for text, told in (
                ("hello\n", ":1: no recording, and no trace"), (b"\x17\x08Dtracing6\0", "trace-cmd report"),
                (line, "there is no transaction in it"), ("#\n" + line.replace("l=1", "l="), ":2: i2c_read"),
                (line.replace("1.0", "12"), ":1: i2c_read does not stand behind")):
            self.file.write_bytes(text if isinstance(text, bytes) else text.encode())
            self.refused(1, told, "identify", f"replay:{self.file}")
