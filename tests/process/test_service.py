"""`monitor` as a service: its configuration file, SIGHUP, the service manager, the journal."""

import json
import os
import shutil
import signal
import socket
import subprocess

from agent import DS2900, SAMPLES, Case, faulty, run
from test_model_files import FAMILY

DS3000 = SAMPLES / "ds3000.fru"
# Makes the run a live one; nobody has such a bus.
NO_BUS = "i2c:name=no such adapter"


def options(*command):
    return {line.split()[0] for line in run(*command, "--help")[1].decode().splitlines()
            if line.startswith("  --")}


class Config(Case):
    def config(self, text):
        file = self.folder / "psu.conf"
        file.write_text(text)
        return file

    def test_refusals_name_file_line_and_key(self):
        slot = f'slot = "A={DS2900}"\nduration = 1\n'
        for text, told in (
                ("", "psu.conf: --slot: no slot is named"),
                ("# nothing\n\n; here\n", "psu.conf: --slot: no slot is named"),
                (slot + "color = red", "psu.conf:3: color: there is no such key"),
                (slot + "config = x", "psu.conf:3: config: there is no such key"),
                (slot + "help", "psu.conf:3: help: there is no such key"),
                (slot + "a.b = 1", 'psu.conf:3: "a.b = 1" is not KEY = VALUE'),
                (slot + "[monitor]", 'psu.conf:3: "[monitor]" is not KEY = VALUE'),
                (slot + "=", 'psu.conf:3: "=" is not KEY = VALUE'),
                (slot + "hold=", 'psu.conf:3: hold: "" is not a number'),
                (slot + "\nhold = soon", 'psu.conf:4: hold: "soon" is not a number'),
                (slot + "hold = 1\nhold = 1", "psu.conf:4: hold: the key is there twice"),
                (slot + "hold = [1, 2]", "psu.conf:3: hold: has more values than one"),
                (slot + "json = true false", "psu.conf:3: json: has more values than one"),
                (slot + "json = 2", 'psu.conf:3: json: is true or false, not "2"'),
                *((slot + key + " = []", f"psu.conf:3: {key}: has no value")
                  for key in ("json", "slot", "hold", "publish")),
                *((slot + f"slot = {name}=i2c:1", f"psu.conf:3: slot: a slot cannot be called {name}")
                  for name in ("config", "status", "cell", "IdentifierFactory")),
                (slot + "poll-interval = 0", "psu.conf:3: poll-interval: "),
                (slot + "json = maybe", 'psu.conf:3: json: is true or false, not "maybe"'),
                (slot + "slot = A", "psu.conf:3: slot: A is not NAME=SOURCE"),
                (slot + 'slot = ["B=-",\n"a/b=-"]', "psu.conf:3: slot: a/b=- is not NAME=SOURCE"),
                (slot + 'slot = ["B=-",', "is not KEY = VALUE"),
                (slot + slot, "psu.conf:3: slot: the slot A is named twice"),
                (slot + "slot = B=i2c:x", "psu.conf:3: slot: i2c:x is not i2c:N"),
                (slot + "slot = B=i2c:9\nslot = C=i2c:/dev/i2c-9",
                 "psu.conf:4: slot: i2c-9 is named twice"),
                (slot + "keep = true", "psu.conf: --keep: needs --publish"),
                (f"slot = A={DS2900}", "psu.conf: --duration: is needed"),
                (slot + "\0\xff\n", "psu.conf:3: ")):
            for check in ((), ("--check",)):
                self.refused(2, told, "monitor", "--config", self.config(text), *check)
        self.refused(1, "none.conf: cannot open: No such file", "monitor", "--config",
                     self.folder / "none.conf")
        self.refused(1, "is no regular file", "monitor", "--config", self.folder)
        self.refused(2, "psu.conf:3: hold: ", "monitor", "--hold", "5", "--config",
                     self.config(slot + "hold = soon"))

    def test_a_file_that_may_not_be_read(self):
        file = self.config("")
        file.chmod(0)
        # Root may read all, but for its capabilities.
        bare = ["setpriv", "--bounding-set=-all", "--inh-caps=-all"] if os.geteuid() == 0 else []
        done = subprocess.run([*bare, os.environ["PSU_AGENT"], "monitor", "--check", "--config",
                               file], capture_output=True, check=False)
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        self.assertIn(b"psu.conf: cannot be read: Permission denied", done.stderr)

    def test_the_packaged_file_shows_every_key(self):
        packaged = (SAMPLES.parent / "packaging" / "psu-agent.conf").read_text()
        shown = [line[1:] for line in packaged.splitlines()
                 if line.startswith("#") and line[1:2] not in ("", " ")]
        status, out, err = run("monitor", "--check", "--config", self.config("\n".join(shown)))
        self.assertEqual((status, out, err),
                         (0, b"the configuration is sound: PowerSupply1 PowerSupply2\n", []))
        self.assertEqual({"--" + line.split(" = ")[0] for line in shown},
                         options("monitor") - options() - {"--check", "--config"})

    def test_the_command_line_wins(self):
        file = self.config(f'slot = [ # ] not yet\n "A={DS2900}", # the first\n  "B={DS3000}"]\n\n'
                           'duration = 3\njson = true\n')
        _, out, err = run("monitor", "--config", file)
        self.assertEqual((len(out.splitlines()), err), (2, []))
        self.assertTrue(out.startswith(b'{"time":'))
        _, out, err = run("monitor", "--config", file, "--slot", f"C={DS3000}", "--json=false")
        self.assertEqual(([line.split()[1:3] for line in out.decode().splitlines()], err),
                         ([["C", "identified"]], []))


    def test_a_hash_in_quotes_is_no_comment(self):
        recording = self.folder / "two.jsonl"
        run("simulate", "--record", recording, SAMPLES / "scenarios" / "isolation.json")
        for quote in "\"'":
            for start, end in (("", ""), ("[", "]"), ("[\n", "\n] # two")):
                slot = f"{quote}A=replay:{recording}#PowerSupply2{quote}"
                status, out, err = run("monitor", "--check", "--config", self.config(
                    f"slot = {start}{slot}{end} # the second\nduration = 1\n"))
                self.assertEqual((status, out, err), (0, b"the configuration is sound: A\n", []))
        status, out, _ = run("monitor", "--config", self.folder / "psu.conf")
        self.assertEqual((status, out.split()[1:3]), (0, [b"A", b"identified"]))


class Service(Case):
    def start(self, watchdog, *words):
        """A monitor under a service manager, whose socket is `self.manager`."""
        self.manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(self.manager.close)
        self.manager.settimeout(60)
        self.manager.bind(str(self.folder / "notify"))
        agent = subprocess.Popen(
            [os.environ["PSU_AGENT"], "monitor", *map(str, words)], text=True,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_DFL),
            env={**os.environ, "NOTIFY_SOCKET": str(self.folder / "notify"),
                 "WATCHDOG_USEC": str(watchdog)})
        self.addCleanup(agent.__exit__, None, None, None)
        self.addCleanup(agent.kill)
        return agent

    def told(self, last):
        """What the service manager is told up to `last`."""
        told = []
        while last not in told:
            told.append(self.manager.recv(4096).decode())
        return told

    def test_readiness_reload_and_end(self):
        config = self.folder / "psu.conf"
        other = f'slot = "Z={NO_BUS}"\n'
        published = self.folder / "fdl"
        published.mkdir()
        config.write_text(f'slot = "A={DS2900}"\nslot = "B={DS3000}"\n{other}'
                          f'publish = "{published}"\n')
        agent = self.start(60_000_000, "--config", config)
        self.assertEqual(self.told("READY=1")[-2],
                         "STATUS=3 slots: 2 identified, 1 unreachable")
        self.assertEqual(sorted(agent.stdout.readline().split()[1] for _ in range(3)),
                         ["A", "B", "Z"])
        before = (published / "A.fdl").stat()

        # B has gone, C has come, A is not touched; what is settled at the start stays.
        settled = {"publish": '"/other"', "metrics": '"/other/a.prom"', "record": '"/other/r"',
                   "incidents": '"/other"', "redact": "true", "duration": "9", "json": "true"}
        config.write_text(f'slot = "A={DS2900}"\nslot = "C={DS3000}"\n' + other + "".join(
            f"{key} = {value}\n" for key, value in settled.items()))
        agent.send_signal(signal.SIGHUP)
        told = self.told("STATUS=3 slots: 2 identified, 1 unreachable")
        self.assertEqual([line for line in told if not line.startswith("STATUS=")],
                         ["RELOADING=1", "READY=1"])
        self.assertEqual(agent.stdout.readline().split()[1:3], ["C", "identified"])
        self.assertEqual(sorted(file.name for file in published.glob("*.fdl")),
                         ["A.fdl", "C.fdl"])
        self.assertEqual((published / "A.fdl").stat(), before)
        for key in settled:
            self.assertIn(f"{key}: changes at the next start only", agent.stderr.readline())
        self.assertIn("configuration read again: 3 slots: ", agent.stderr.readline())

        # What does not make sense changes nothing.
        config.write_text(other + "slot = nonsense\n")
        agent.send_signal(signal.SIGHUP)
        self.told("READY=1")
        self.assertIn(f"{config}:2: slot: nonsense is not NAME=SOURCE", agent.stderr.readline())
        self.assertEqual((published / "A.fdl").stat(), before)

        agent.send_signal(signal.SIGTERM)
        self.told("STOPPING=1")
        self.assertEqual(agent.wait(timeout=60), 0)
        self.assertEqual(list(published.iterdir()), [])

    def test_model_files_are_read_again(self):
        """A supply that was unrecognised is known at once; of a file that is refused the models
        stay."""
        models = self.folder / "models"
        models.mkdir()
        agent = self.start(60_000_000, "--review-interval", 3600, "--models", models, "--slot",
                           f"A={faulty('unrecognised')}", "--slot", f"Z={NO_BUS}")
        self.told("READY=1")
        self.assertEqual({agent.stdout.readline().split()[2] for _ in range(2)},
                         {"unrecognised", "unreachable"})
        file = models / "new.json"
        file.write_text(json.dumps(FAMILY))
        agent.send_signal(signal.SIGHUP)
        self.assertEqual(agent.stdout.readline().split()[1:3], ["A", "identified"])
        self.assertIn("configuration read again: ", agent.stderr.readline())
        file.write_text("{}")
        agent.send_signal(signal.SIGHUP)
        self.assertIn(f"{file}: the document: the key \"keyField\" is missing; its models stay as they were",
                      agent.stderr.readline())
        agent.send_signal(signal.SIGTERM)
        self.assertEqual(agent.wait(timeout=60), 0)

    def test_the_watchdog_is_fed(self):
        agent = self.start(20_000, "--slot", f"Z={NO_BUS}")
        for _ in range(5):
            self.told("WATCHDOG=1")
        agent.send_signal(signal.SIGHUP)
        self.told("STOPPING=1")
        self.assertEqual(agent.wait(timeout=60), 0)

    def test_a_folder_that_cannot_be_made_is_left_to_the_service_manager(self):
        published = self.folder / "made" / "fdl"
        published.mkdir(parents=True)
        agent = self.start(60_000_000, "--slot", f"Z={NO_BUS}", "--poll-interval", "0.01",
                           "--publish", published)
        self.told("READY=1")
        shutil.rmtree(published.parent)
        self.told("STOPPING=1")
        self.assertEqual(agent.wait(timeout=60), 1)
        self.assertIn(f"{published}: has gone and cannot be made: ", agent.stderr.read())

    def test_lines_of_the_journal_have_priorities(self):
        scenario = SAMPLES / "scenarios" / "insertion-and-removal.json"
        with open(self.folder / "journal", "w+b") as journal:
            status = os.fstat(journal.fileno())
            stream = {"JOURNAL_STREAM": f"{status.st_dev}:{status.st_ino}"}
            run("simulate", scenario, stdout=journal, env={**os.environ, **stream})
            journal.seek(0)
            lines = [line.split() for line in journal.read().decode().splitlines()]
            self.assertEqual([(line[0][:3], line[2]) for line in lines],
                             [("<6>", "absent"), ("<6>", "identified"),
                              ("<4>", "absent"), ("<6>", "identified")])
            told = subprocess.run([os.environ["PSU_AGENT"], "identify", "none.fru"],
                                  stderr=journal, check=False, env={**os.environ, **stream})
            self.assertEqual(told.returncode, 1)
            journal.seek(0)
            self.assertIn(b"<3>psu-agent: none.fru: ", journal.read())
