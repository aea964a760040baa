"""What README and docs/ show in `console` blocks is what the commands print."""

import os
import re
import shlex
import subprocess
import unittest

from agent import SOURCE

AGENT = os.environ["PSU_AGENT"]
# `$ psu-agent ...`, then what it prints; a line `...` stands for any lines.
COMMAND = re.compile(r"^\$ (.*)$")


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
    pattern = "\n".join(".*" if line == "..." else re.escape(line) for line in shown)
    return re.fullmatch(pattern, "\n".join(printed), re.S)


class Docs(unittest.TestCase):
    def test_console_blocks(self):
        count = 0
        for page in [SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))]:
            for command, shown in commands(page.read_text()):
                words = shlex.split(command)
                with self.subTest(page=page.name, command=command):
                    self.assertEqual(words[0], "psu-agent")
                    ran = subprocess.run([AGENT, *words[1:]], cwd=SOURCE, text=True, timeout=60,
                                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                         check=False)
                    self.assertTrue(matches(shown, ran.stdout.splitlines()), ran.stdout)
                    count += 1
        self.assertGreater(count, 0)

    def test_every_kind_of_error_is_told(self):
        table = (SOURCE / "host" / "smbus" / "ErrorKind.h").read_text()
        kinds = re.findall(r'^    \{ErrorKind::\w+, "(\w+)"', table, re.M)
        self.assertIn("noAcknowledge", kinds)
        for page in ("faults.md", "psu-agent.1"):
            words = re.findall(r"\w+", (SOURCE / "docs" / page).read_text())
            self.assertEqual([kind for kind in kinds if kind not in words], [], page)

    def test_every_scenario_is_shown(self):
        page = (SOURCE / "docs" / "scenarios.md").read_text()
        for scenario in sorted((SOURCE / "samples" / "scenarios").glob("*.json")):
            self.assertIn(f"$ psu-agent simulate samples/scenarios/{scenario.name}\n", page)
