# The shells offer what the program says may stand at the end of a command line.
import os
import subprocess

from agent import SAMPLES, SOURCE, Case, run

COMPLETION = SOURCE / "packaging" / "completion"
OFFER = SOURCE / "tests" / "process" / "completion"
SHELLS = {"bash": ["bash"], "fish": ["fish", "--no-config"], "zsh": ["zsh", "-f"]}
BUS = """P: /devices/virtual/i2c-dev/i2c-7
N: i2c-7
E: SUBSYSTEM=i2c-dev
A: name=SMBus of the chassis\\n
"""
OFFERED = {
    "psu-agent mon": {"monitor"},
    "psu-agent compl": set(),
    "psu-agent --lib": {"--library"},
    "psu-agent --library nowhere mon": {"monitor"},
    "psu-agent --trace EmersonI": {"EmersonIpmiIdentifier="},
    "psu-agent identify --rec": {"--record"},
    "psu-agent identify --json two": {"two.jsonl"},
    "psu-agent identify --mfr-id two": set(),
    "psu-agent identify --record two": {"two.jsonl"},
    "psu-agent identify two.jsonl i": {"i2c:7"},
    "psu-agent identify replay:tw": {"replay:two.jsonl"},
    "psu-agent identify replay:two.jsonl#": {
        "replay:two.jsonl#BeforeCheck", "replay:two.jsonl#BeforeChunk"},
    "psu-agent monitor --publish fo": {"folder"},
    "psu-agent monitor --slot A=i": {"A=i2c:7"},
    "psu-agent monitor --slot A=tw": {"A=two.jsonl"},
    "psu-agent call ds2900.fru /conf": {"/config", "/config/PowerSupply1"},
    "psu-agent call i2c:7 /conf": set(),
}


class Completion(Case):
    def setUp(self):
        super().setUp()
        self.folder.joinpath("bin").mkdir()
        buses = self.folder / "buses"
        buses.write_text(BUS, encoding="utf-8")
        agent = self.folder / "bin" / "psu-agent"
        # umockdev is loaded before a sanitizer's runtime, which else refuses to start.
        agent.write_text('#!/bin/sh\nexport ASAN_OPTIONS=verify_asan_link_order=0\n'
                         f'exec umockdev-run --device {buses} -- '
                         f'{os.environ["PSU_AGENT"]} "$@"\n', encoding="utf-8")
        agent.chmod(0o755)
        self.folder.joinpath("folder").mkdir()
        self.folder.joinpath("ds2900.fru").write_bytes(SAMPLES.joinpath("ds2900.fru").read_bytes())
        status, _, err = run("simulate", "--record", self.folder / "two.jsonl",
                             SAMPLES / "scenarios" / "swap-while-read.json")
        self.assertEqual(status, 0, err)

    def offered(self, shell):
        """What the shell offers behind each line."""
        path = f"{self.folder / 'bin'}:{os.environ['PATH']}"
        done = subprocess.run(
            [*SHELLS[shell], OFFER / f"offer.{shell}", COMPLETION / f"psu-agent.{shell}", *OFFERED],
            cwd=self.folder, env=os.environ | {"PATH": path, "HOME": str(self.folder)},
            stdin=subprocess.DEVNULL, capture_output=True, check=True, text=True)
        offered = {}
        for line in done.stdout.splitlines():
            if line.startswith("\t"):
                offered[last].add(line.strip().rstrip("/"))
            else:
                last = line
                offered[last] = set()
        return offered

    def test_each_shell_offers_the_same(self):
        for shell in SHELLS:
            with self.subTest(shell):
                self.assertEqual(self.offered(shell), OFFERED)
