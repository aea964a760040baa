"""What a terminal gets more than a file does, and `identify --table` and `--output`."""

import json
import os
import pty
import subprocess

from agent import DS2900, SAMPLES, Case, faulty, run

GOOD, BAD = "\x1b[32m", "\x1b[31m"


def at_terminal(*arguments, **variables):
    """What psu-agent writes to a terminal, which is both its outputs."""
    ours, theirs = pty.openpty()
    environment = {key: value for key, value in os.environ.items() if key != "NO_COLOR"}
    with subprocess.Popen([os.environ["PSU_AGENT"], *map(str, arguments)], stdin=subprocess.DEVNULL,
                          stdout=theirs, stderr=theirs,
                          env=environment | {"TERM": "xterm"} | variables) as agent:
        os.close(theirs)
        text = b""
        try:
            while chunk := os.read(ours, 65536):
                text += chunk
        except OSError:  # the other side is closed
            pass
        agent.wait(timeout=60)
    os.close(ours)
    return text.decode("latin-1").replace("\r\n", "\n")


class Terminal(Case):
    def test_headings_for_several(self):
        other = SAMPLES / "ds500.fru"
        fdls = [run("identify", image)[1].decode() for image in (DS2900, other)]
        self.assertEqual(at_terminal("identify", DS2900), fdls[0])
        self.assertEqual(at_terminal("identify", DS2900, other, NO_COLOR="1"),
                         f"== {DS2900} ==\n{fdls[0]}== {other} ==\n{fdls[1]}")
        self.assertEqual(run("identify", DS2900, other)[1].decode(), "".join(fdls))

    def test_colours(self):
        words = ("identify", "--table", DS2900, faulty("unrecognised"))
        text = at_terminal(*words)
        self.assertIn(f"{GOOD}identified\x1b[0m\n", text)
        self.assertIn(f"{BAD}unrecognised\x1b[0m\n", text)
        self.assertIn(f"{BAD}>> none of the",
                      at_terminal("identify", "--explain", faulty("unrecognised")))
        for variables in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            self.assertNotIn("\x1b", at_terminal(*words, **variables))
        self.assertIn("\x1b", at_terminal(*words, NO_COLOR=""))
        self.assertNotIn(b"\x1b", run(*words)[1])

    def test_progress(self):
        late = self.folder / "late.json"
        late.write_text(json.dumps({"duration": 3e9, "slots": [{"name": "A", "supply": None}]}))
        for words in (["simulate", late],
                      ["identify", "--mfr-id", "ACME", "--wait", "3e9", DS2900]):
            ours, theirs = pty.openpty()
            with subprocess.Popen([os.environ["PSU_AGENT"], *map(str, words)], stderr=theirs,
                                  stdout=subprocess.DEVNULL) as agent:
                os.close(theirs)
                text = os.read(ours, 100)
                agent.terminate()
                agent.wait(timeout=60)
            os.close(ours)
            self.assertRegex(text, rb"^\r\S.*( s are simulated|1 sources are done)")

    def test_names_are_escaped(self):
        image = self.folder / "a\x1b[31m\n\u00e9.fru"
        image.write_bytes(DS2900.read_bytes())
        for option in ("--explain", "--table"):
            out = run("identify", option, image)[1]
            self.assertIn(b"a\\x1B[31m\\x0A\\xC3\\xA9.fru", out)
            self.assertNotIn(b"\x1b", out)
        self.assertIn("a\\x1B[31m\\x0A", run("identify", f"{image}x")[2][0])
        self.assertIn("a\\x1B[31m\\x0A", run("identify", "--mfr-id", "ACME", image)[2][0])


class Table(Case):
    def test_table(self):
        status, out, err = run("identify", "--table", DS2900, faulty("quote"), "none.fru",
                               faulty("unrecognised"))
        head, *rows = [line.split() for line in out.decode().splitlines()]
        self.assertEqual((status, head), (1, ["SOURCE", "TYPE", "MODEL", "SERIAL", "VERDICT"]))
        self.assertEqual(rows[0], [str(DS2900), "DS2900", "QLX-2900AC", "L1330K04287", "identified"])
        self.assertEqual(rows[2], ["none.fru", "-", "-", "-", "-"])
        self.assertEqual((rows[3][1:3], rows[3][-1]), (["-", "-"], "unrecognised"))
        self.assertEqual(len(err), 3)

    def test_one_file_a_source(self):
        out, bad, recording = self.folder / "out", self.folder / "bad.fru", self.folder / "r.jsonl"
        bad.write_bytes(faulty("unrecognised").read_bytes())
        fdl = run("identify", "--record", recording, DS2900)[1]
        status, told, _ = run("identify", "--output", out, DS2900, bad,
                              f"replay:{recording}#PowerSupply1")
        self.assertEqual((status, told), (4, b""))
        files = {file.name: file.read_bytes() for file in out.iterdir()}
        self.assertEqual(files, {"ds2900.fdl": fdl, "r.jsonl-PowerSupply1.fdl": fdl})
        # What is not true any more is taken away; JSON is printed beside.
        gone = self.folder / "ds2900.fru"
        gone.write_bytes(bad.read_bytes())
        self.assertEqual(len(run("identify", "--json", "--output", out, gone)[1].splitlines()), 1)
        self.assertFalse((out / "ds2900.fdl").exists())
        self.refused(2, "have the same file", "identify", "--output", out, DS2900, gone)
        self.refused(1, "Not a directory", "identify", "--output", bad, DS2900)
        self.refused(1, "No such file", "identify", "--output", self.folder / "no" / "no", DS2900)
