# How the process tests run psu-agent.
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["PSU_SOURCE_DIR"])
SAMPLES = pathlib.Path(os.environ["PSU_SAMPLES"])
DS2900 = SAMPLES / "ds2900.fru"


def faulty(name):
    return SAMPLES / "faulty" / f"{name}.fru"


def run(*arguments, stdin=b"", **options):
    """The exit status of psu-agent with these arguments, its stdout, and its lines on stderr."""
    done = subprocess.run([os.environ["PSU_AGENT"], *map(str, arguments)], input=stdin,
                          stderr=subprocess.PIPE, check=False,
                          **{"stdout": subprocess.PIPE} | options)
    return done.returncode, done.stdout, done.stderr.decode("utf-8", "replace").splitlines()


def models():
    """The short names of all descriptor types that the plug-in registers."""
    return {each["shortName"] for each in json.loads(run("types", "--json")[1])
            if each["name"].startswith("Emerson::IpmiIdentifier::")}


class Case(unittest.TestCase):
    """Tests with a folder for each."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def refused(self, status, told, *arguments):
        """psu-agent ends with `status` and one line on stderr, which has `told` in it."""
        with self.subTest(arguments, told=told):
            got, out, err = run(*arguments)
            self.assertEqual((got, out, len(err)), (status, b"", 1), err)
            self.assertIn(told, err[0])
