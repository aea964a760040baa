"""The command line: what is refused and how that is told, options that all commands have, help."""

import json
import os
import re
import signal
import subprocess
import unittest

from agent import DS2900, SOURCE, Case, faulty, run

HANDLES = ("EmersonIpmiIdentifier", "EmersonPmbusIdentifier")
JARGON = re.compile(r"TEXT|FLOAT|\[json|exception|basic_|At Most|required but|std::|::|e\+")


class Refusals(Case):
    def test_say_what_is_wrong_and_where_to_look(self):
        long = "x" * 5000
        for words, told, look in (
                ([], "a command is needed", ""),
                (["identfy", DS2900], 'no command "identfy" (did you mean identify?)', ""),
                (["monitro"], "did you mean monitor?", ""), (["dcotor"], "did you mean doctor?", ""),
                (["ident"], "did you mean identify?", ""), (["frobnicate"], '"frobnicate";', ""),
                (["-"], 'no command "-"', ""), (["types", "-"], '"-" is more than types', "types"),
                (["help", "simulat"], "did you mean simulate?", "help"),
                (["--libary", "x", "types"], 'no option "--libary" (did you mean --library?)', "types"),
                (["identify"], "SOURCE is required", "identify"),
                (["identify", ""], "SOURCE must not be empty", "identify"),
                (["identify", "--jsn"], 'no option "--jsn" (did you mean --json?)', "identify"),
                (["identify", "--frobnicate=5", DS2900], 'no option "--frobnicate";', "identify"),
                (["monitor", "--pol-interval", "1"], "did you mean --poll-interval?", "monitor"),
                (["call", DS2900, "--trac", "A=1"], "did you mean --trace?", "call"),
                (["identify", "--wait"], "--wait needs a value", "identify"),
                (["identify", "--mfr-id=", DS2900], "--mfr-id needs a value", ""),
                (["identify", "--wait", "1", "--wait", "2", DS2900], "more than once", "identify"),
                (["identify", "--wait", "-1", DS2900], "from 0 to 3200000000", "identify"),
                (["identify", "--wait", "nan", DS2900], '"nan" is not a number', "identify"),
                (["identify", "--record", "", DS2900], "must not be empty", "identify"),
                (["identify", "--json=maybe", DS2900], "--json takes no value but true", "identify"),
                (["simulate", ""], "a SCENARIO must not be empty", "simulate"),
                (["report", "x", "-o", ""], "a FILE must not be empty", "report"),
                (["--models", "", "types"], "--models: the name of a PATH must not be", "types"),
                (["models", ""], "FILE: the name of a FILE must not be empty", "models"),
                (["report", ""], "a RECORDING must not be empty", "report"),
                (["monitor", "--config", ""], "a FILE must not be empty", "monitor"),
                (["monitor", "--slot"], "--slot needs a value", "monitor"),
                (["monitor", "--slot", f"A={DS2900}", f"B={DS2900}"], "more than monitor", "monitor"),
                (["monitor", "--slot", f"A={DS2900}"], "--duration: is needed", "monitor"),
                (["monitor", "--slot", f"A={DS2900}", "--publish", ""], "not be empty", "monitor"),
                (["types", "x"], '"x" is more than types takes', "types"),
                (["identify", "--mfr-id", long, DS2900], "x...x", "identify"),
                ([long], "x...x", ""), (["types", "--" + long], "x...x", "types"),
                (["--trace", "EmersonPmbusIdentifier", "types"], "is not HANDLE=LEVELS", "types"),
                (["--trace", "Foo=1", "types"], f'no trace handle "Foo", only {", ".join(HANDLES)}',
                 "types")):
            with self.subTest(words):
                status, out, err = run(*words)
                self.assertEqual((status, out, len(err)), (2, b"", 1), err)
                self.assertIn(told, err[0])
                self.assertTrue(err[0].endswith(f"; see psu-agent help {look}".rstrip()), err[0])
                self.assertIsNone(JARGON.search(err[0]), err[0])
                self.assertLess(len(err[0]), 400)
        self.assertLess(len("".join(run("identify", long)[2])), 400)

    def test_a_record_file_that_is_a_source(self):
        image, link, hard = (self.folder / name for name in ("a.fru", "link", "hard"))
        image.write_bytes(DS2900.read_bytes())
        link.symlink_to(image)
        hard.hardlink_to(image)
        recording = self.folder / "psu.jsonl"
        run("identify", "--record", recording, DS2900)
        before = recording.read_bytes()
        for file in (image, link, hard, f"{self.folder}/./a.fru"):
            for words in (["identify"], ["monitor", "--duration", "1"]):
                source = f"A={image}" if words[0] == "monitor" else image
                words += ["--slot"] if words[0] == "monitor" else []
                self.refused(2, "would be overwritten", words[0], "--record", file, *words[1:],
                             source)
        self.refused(2, "overwritten", "identify", "--record", recording, f"replay:{recording}")
        self.refused(2, "overwritten", "identify", "--record", recording,
                     f"replay:{recording}#PowerSupply1")
        scenario = self.folder / "scenario.json"
        scenario.write_text(json.dumps({"duration": 1, "slots": [
            {"name": "A", "supply": {"image": "a.fru"}},
            {"name": "B", "supply": {"replay": "psu.jsonl"}}]}))
        for file in (image, hard, recording, scenario):
            self.refused(2, "overwritten", "simulate", "--record", file, scenario)
        self.refused(2, "overwritten", "report", "-o", recording, recording)
        fdl = image.with_suffix(".fdl")
        fdl.hardlink_to(image)
        self.refused(2, "overwritten", "identify", "--output", self.folder, DS2900, fdl)
        with open(image, "rb") as source:
            done = subprocess.run([os.environ["PSU_AGENT"], "identify", "--record", image, "-"],
                                  stdin=source, capture_output=True, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertEqual((image.read_bytes(), recording.read_bytes()),
                         (DS2900.read_bytes(), before))

    def test_closed_streams(self):
        agent = os.environ["PSU_AGENT"]
        for closed, words, told in ((0, "-", b"standard input: is closed\n"),
                                    (1, DS2900, b"standard output: cannot write")):
            done = subprocess.run([agent, "identify", words], capture_output=True, check=False,
                                  preexec_fn=lambda closed=closed: os.close(closed))
            self.assertEqual((done.returncode, done.stdout), (1, b""))
            self.assertIn(told, done.stderr)

    def test_what_was_interrupted(self):
        late = self.folder / "late.json"
        late.write_text(json.dumps({"duration": 3e9, "slots": [{"name": "A", "supply": None}]}))
        for words in (["simulate", late], ["identify", "--mfr-id", "ACME", "--wait", "3e9", DS2900]):
            for stop, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
                # The trace tells that the run has begun.
                with subprocess.Popen([os.environ["PSU_AGENT"], "--trace",
                                       "EmersonPmbusIdentifier=3", *words], text=True,
                                      stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) as agent:
                    agent.stderr.readline()
                    agent.send_signal(stop)
                    agent.communicate(timeout=60)
                    self.assertEqual(agent.returncode, status, words)


class Options(Case):
    def test_trace_takes_one_value_anywhere(self):
        setting = "EmersonPmbusIdentifier=4"
        told = run("--trace", setting, "identify", DS2900)
        self.assertEqual({line.split()[0] for line in told[2]}, {"EmersonPmbusIdentifier/4"})
        for words in (["identify", "--trace", setting, DS2900],
                      ["identify", DS2900, "--trace", setting],
                      [f"--trace={setting}", "identify", DS2900]):
            self.assertEqual(run(*words), told, words)
        both = run("identify", "--trace", "EmersonPmbusIdentifier=3", "--trace", setting, DS2900)
        self.assertEqual({line.split()[0] for line in both[2]},
                         {"EmersonPmbusIdentifier/3", "EmersonPmbusIdentifier/4"})
        listing = run("types")[1].decode()
        self.assertIn(f"Trace handles: {', '.join(HANDLES)}\nTrace levels: 0 ", listing)

    def test_record_to_standard_output(self):
        file = self.folder / "psu.jsonl"
        scenario = SOURCE / "samples" / "scenarios" / "swap-between-checks.json"
        for words in (["identify", DS2900], ["identify", "--json", DS2900, "none.fru"],
                      ["identify", "--table", DS2900], ["identify", "--explain", DS2900],
                      ["simulate", "--transcript", scenario],
                      ["monitor", "--duration", "3", "--slot", f"A={DS2900}"]):
            run(words[0], "--record", file, *words[1:])
            self.assertEqual(run(words[0], "--record", "-", *words[1:])[1], file.read_bytes(), words)

    def test_names_with_a_hash(self):
        image, recording = self.folder / "a#b", self.folder / "c#d"
        image.write_bytes(DS2900.read_bytes())
        fdl = run("identify", "--record", recording, image)
        self.assertEqual(fdl, run("identify", DS2900))
        for source in (recording, f"{recording}#PowerSupply1"):
            self.assertEqual(run("identify", f"replay:{source}"), fdl)
        self.refused(1, "there is no slot d in it", "identify",
                     f"replay:{recording.rename(self.folder / 'c')}#d")

    def test_unsupported_makers_are_told_with_those_that_are_not(self):
        self.refused(4, ': unsupportedManufacturer: MFR_ID "ACME" is not supported, only '
                     '"ARTESYN", "EMERSON"', "identify", "--mfr-id", "ACME   ", DS2900)


class FullDisk(Case):
    def test_lines_that_cannot_be_written_are_told_of_at_once(self):
        """And the slots are watched on: what is published is needed none the less."""
        with open("/dev/full", "w", encoding="ascii") as full:
            status, _, err = run("monitor", "--duration", "10", "--publish", self.folder, "--keep",
                                 "--slot", f"A={DS2900}", stdout=full)
        self.assertEqual((status, err[0]), (1, "psu-agent: standard output: cannot write: "
                                               "No space left on device"))
        self.assertTrue((self.folder / "A.fdl").exists())


class Help(unittest.TestCase):
    def test_help_of_a_command(self):
        self.assertEqual(run("help"), run("--help"))
        page = (SOURCE / "docs" / "psu-agent.1").read_text(encoding="utf-8")
        page = page[page.index(".Sh EXIT STATUS"):]
        for command in ("identify", "monitor", "simulate", "doctor", "call", "types", "help"):
            with self.subTest(command):
                status, out, err = run("help", command)
                self.assertEqual((status, out, err), run(command, "--help"))
                text = out.decode()
                self.assertIn(f"\nExamples:\n  $ psu-agent {command}", text)
                self.assertIn("man psu-agent", text)
                # The manual gives every exit status in the same words.
                rows = re.findall(r"^  (\d+) +(.*)$", text[text.index("\nExit status:\n"):], re.M)
                self.assertEqual([int(number) for number, _ in rows], [0, 1, 2, 3, 4, 130, 143])
                for number, meaning in rows:
                    self.assertIn(f".It {number}\n{meaning[0].upper()}{meaning[1:]}.\n", page)
