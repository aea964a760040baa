# How the process tests run psu-agent.
import os
import pathlib
import subprocess

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
