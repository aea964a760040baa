# The metrics that a monitoring system reads while psu-agent watches.
import os
import subprocess

from agent import DS2900, Case


class MetricsFile(Case):
    def monitor(self, *arguments):
        """The metrics once a supply is identified."""
        file = self.folder / "psu.prom"
        with subprocess.Popen([os.environ["PSU_AGENT"], "monitor", "--metrics", file, *arguments],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as agent:
            self.assertTrue(any(" identified " in line for line in agent.stdout))
            metrics = file.read_text(encoding="utf-8")
            agent.terminate()
        self.assertEqual(list(self.folder.glob("*psu.prom*")), [])
        return metrics

    def test_is_there_while_slots_are_watched(self):
        # No machine has so many buses; the steady clock goes all the same.
        metrics = self.monitor("--slot", "A=i2c:1048575", "--slot", f"B={DS2900}")
        for line in ('psu_slot_verdict{slot="B",verdict="identified"} 1',
                     'psu_supply_info{slot="B",descriptor="DS2900",model="QLX-2900AC",'
                     'capacity="2900",serial_number="L1330K04287"} 1',
                     "psu_publishing_failures_total 0"):
            self.assertIn(f"{line}\n", metrics)
        checked = subprocess.run(["promtool", "check", "metrics"], input=metrics, text=True,
                                 capture_output=True, check=False)
        self.assertEqual((checked.returncode, checked.stdout, checked.stderr), (0, "", ""))

    def test_is_a_file(self):
        for name, told in (("", '"" names no file'), (f"{self.folder}/", "names no file")):
            self.refused(2, told, "monitor", "--slot", f"A={DS2900}", "--metrics", name)
        nowhere = self.folder / "nowhere" / "psu.prom"
        self.refused(1, "nowhere: cannot publish there: No such file or directory", "monitor",
                     "--slot", f"A={DS2900}", "--duration", "1", "--metrics", nowhere)
