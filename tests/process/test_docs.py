"""The commands that README, docs/, manual and help show work, and print what is shown."""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

from agent import SAMPLES, SOURCE
from test_model_files import FAMILY

AGENT = os.environ["PSU_AGENT"]
# `$ ... psu-agent ...`, then what it prints; a line `...` stands for any lines, and within a line for
# any text.
COMMAND = re.compile(r"^\$ (.*)$")
# What is there in place of what the pages' other commands name, where they are tried.
STAND_INS = (
    (re.compile(r"--new i2c:7 >mine\.json"), "--new samples/faulty/unrecognised.fru >draft.json"),
    (re.compile(r"\bi2c:7\b|/usr/share/doc/psu-agent/examples/ds2900\.fru|\bsupply\.fru\b"),
     "samples/ds2900.fru"),
    (re.compile(r"\bi2c:8\b"), "samples/ds500.fru"),
    (re.compile(r"replay:\S+-unreachable\.jsonl"),
     "replay:samples/incidents/PowerSupply1-11.973-unreachable.jsonl"),
    (re.compile(r"\bswap\.json\b"), "samples/scenarios/swap-between-checks.json"),
    (re.compile(r" /(run|var)/"), " "))


def commands(text):
    """Yields each command of the console blocks in `text` with the output that is shown."""
    for block in re.findall(r"^```console\n(.*?)^```$", text, re.M | re.S):
        command, shown = None, []
        for line in block.splitlines():
            start = COMMAND.match(line)
            if start and command:
                yield command, shown
            if start:
                command, shown = start.group(1), []
            else:
                shown.append(line)
        yield command, shown


def matches(shown, printed):
    pattern = "\n".join(".*" if line == "..." else re.escape(line).replace(r"\.\.\.", "[^\n]*")
                        for line in shown)
    return re.fullmatch(pattern, "\n".join(printed), re.S)


# Where the program is called as the pages call it.
BIN = tempfile.TemporaryDirectory()
os.symlink(AGENT, os.path.join(BIN.name, "psu-agent"))


def run(command, folder):
    return subprocess.run(command, cwd=folder, shell=True, text=True, timeout=60, check=False,
                          env=os.environ | {"PATH": f"{BIN.name}:{os.environ['PATH']}"},
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def other_commands():
    """Yields each command that pages, manual and help show without what it prints, and where."""
    for page in [SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))]:
        if page.name == "adding-a-model.md":
            # Its steps lead from one to the next: test_model_files.py goes them.
            continue
        for block in re.findall(r"^```sh\n(.*?)^```$", page.read_text(), re.M | re.S):
            for command in re.findall(r"^(?:\$ )?(psu-agent.*|mkdir.*)$", block, re.M):
                yield command, page.name
    manual = (SOURCE / "docs" / "psu-agent.1").read_text()
    for command in re.findall(r"^\.Dl [$#] (psu-agent.*|mkdir.*)$", manual, re.M):
        yield command, "psu-agent.1"
    programs = re.findall(r"^  ([a-z]+) ", run("psu-agent --help", None).stdout.partition(
        "\nSubcommands:\n")[2].partition("\n\n")[0], re.M)
    for program in ("", *programs):
        for command in re.findall(r"^  \$ (.*)$", run(f"psu-agent help {program}", None).stdout, re.M):
            yield command, f"help {program}"


class Docs(unittest.TestCase):
    def test_console_blocks(self):
        count = 0
        for page in [SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))]:
            for command, shown in commands(page.read_text()):
                with self.subTest(page=page.name, command=command):
                    self.assertIn("psu-agent", command)
                    ran = run(command, SOURCE)
                    self.assertTrue(matches(shown, ran.stdout.splitlines()), ran.stdout)
                    count += 1
        self.assertGreater(count, 0)

    def test_other_commands_work(self):
        with tempfile.TemporaryDirectory() as folder:
            os.symlink(SAMPLES, os.path.join(folder, "samples"))
            os.makedirs(os.path.join(folder, "lib", "prometheus", "node-exporter"))
            pathlib.Path(folder, "mine.json").write_text(json.dumps(FAMILY))
            # Those that come later read what is recorded by those before.
            commands_of = dict.fromkeys(other_commands())
            self.assertGreater(len(commands_of), 20)
            for command, page in commands_of:
                # An adapter to look at is what nobody can lend.
                is_doctor = " doctor" in command
                for named, there in () if is_doctor else STAND_INS:
                    command = named.sub(there, command)
                if " monitor " in command and "--duration" not in command:
                    command += " --duration 2"
                with self.subTest(page=page, command=command):
                    ran = run(command, folder)
                    self.assertIn(ran.returncode, (0, 1) if is_doctor else (0,), ran.stdout)

    def test_every_kind_of_error_is_told(self):
        table = (SOURCE / "host" / "smbus" / "ErrorKind.h").read_text()
        kinds = re.findall(r'^    \{ErrorKind::\w+, "(\w+)"', table, re.M)
        self.assertIn("noAcknowledge", kinds)
        for page in ("faults.md", "psu-agent.1"):
            words = re.findall(r"\w+", (SOURCE / "docs" / page).read_text())
            self.assertEqual([kind for kind in kinds if kind not in words], [], page)

    def test_every_verdict_is_explained(self):
        table = (SOURCE / "host" / "hardware" / "Verdict.h").read_text()
        verdicts = re.findall(r'VerdictRow\{Verdict::\w+, "(\w+)"', table)
        self.assertEqual(verdicts.pop(), "identified")
        self.assertGreater(len(verdicts), 6)
        docs = SOURCE / "docs"
        headings = "".join(re.findall(r"^## .*$", (docs / "troubleshooting.md").read_text(), re.M))
        items = re.findall(r"^\.It (\w+)$", (docs / "psu-agent.1").read_text(), re.M)
        for verdict in verdicts:
            self.assertIn(f"`{verdict}`", headings)
            self.assertIn(verdict, items)

    def test_every_scenario_is_shown(self):
        page = (SOURCE / "docs" / "scenarios.md").read_text()
        for scenario in sorted((SOURCE / "samples" / "scenarios").glob("*.json")):
            self.assertIn(f"$ psu-agent simulate samples/scenarios/{scenario.name}\n", page)
