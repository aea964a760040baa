# The man page knows the commands and options that --help knows, no more, no less.
import json
import os
import re
import subprocess
import unittest

from agent import SAMPLES, SOURCE

AGENT = os.environ["PSU_AGENT"]


def run(*arguments):
    return subprocess.run(arguments, capture_output=True, check=True, text=True).stdout


def helped(*command):
    """The options and the commands of a --help text."""
    text = run(AGENT, *command, "--help")
    commands = text.partition("\nSubcommands:\n")[2]
    return (set(re.findall(r"^  (?:-\w,)?(--[a-z-]+)", text, re.M)),
            set(re.findall(r"^  ([a-z-]+) ", commands, re.M)))


def paged():
    """The options of each section and subsection of the man page that has any."""
    text = (SOURCE / "docs" / "psu-agent.1").read_text(encoding="utf-8")
    sections = re.split(r"^\.S[hs] (.*)$", text, flags=re.M)[1:]
    return {title: {f"--{name}" for name in re.findall(r"^\.It (?:Fl h , )?Fl -([a-z-]+)", body, re.M)}
            for title, body in zip(sections[::2], sections[1::2])}


def flat():
    """The text of the page without its macros."""
    text = (SOURCE / "docs" / "psu-agent.1").read_text(encoding="utf-8")
    return " ".join(re.sub(r"^\.\S*", "", text, flags=re.M).split())


class ManPage(unittest.TestCase):
    def test_has_the_words_of_the_program(self):
        page = flat()
        handles, levels = run(AGENT, "types").splitlines()[:2]
        for handle in handles.removeprefix("Trace handles: ").split(", "):
            self.assertIn(handle, page)
        for level in levels.removeprefix("Trace levels: ").split(", "):
            self.assertIn(level, page)
        told = json.loads(run(AGENT, "identify", "--json", SAMPLES / "ds2900.fru"))
        self.assertIn(f": {', '.join(told)}. ", page)

    def test_has_the_commands_and_options_of_help(self):
        sections = paged()
        options, commands = helped()
        self.assertEqual(sections["OPTIONS"], options)
        self.assertGreaterEqual(len(commands), 6)
        for command in commands:
            with self.subTest(command):
                self.assertEqual(sections[command] | {"--help"}, helped(command)[0])
        titles = list(sections)
        documented = titles[titles.index("COMMANDS") + 1:titles.index("OPTIONS")]
        self.assertEqual(set(documented), commands)
