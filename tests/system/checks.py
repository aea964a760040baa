"""What befalls the service psu-agent in a machine's life, one check after the other.

Runs on a machine of its own, as root, beside the packages of this version and of the last one. Its
time is the machine's, and what is waited for has happened or the check fails.
"""

import grp
import os
import pathlib
import pwd
import signal
import subprocess
import threading
import time
import traceback

HERE = pathlib.Path(__file__).parent
UNIT = "psu-agent.service"
CONFIG = pathlib.Path("/etc/psu-agent.conf")
FOLDER = pathlib.Path("/run/psu-agent")
CGROUP = pathlib.Path("/sys/fs/cgroup/system.slice") / UNIT
MODULE = "psu_test_adapters"
GOOD = "i2c:name=test SMBus"
HANGING = "i2c:name=test hanging"
SPARES = 16
ROUNDS = 20


class Failed(Exception):
    """Something did not come out as it must; the text says what."""


def expect(holds, told):
    if not holds:
        raise Failed(told)


def tried(*words):
    """The exit status of a command, and what it says."""
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
    return done.returncode, done.stdout


def run(*words):
    """What a command says, which must succeed."""
    status, said = tried(*words)
    expect(status == 0, f"{' '.join(map(str, words))}: exit status {status}: {said}")
    return said


def shown(name):
    """A property of the service."""
    return run("systemctl", "show", "--property", name, "--value", UNIT).strip()


def seconds_until(what, condition, within=60.0):
    """Seconds until `condition` holds; asking costs time, too."""
    begin = time.monotonic()
    while not condition():
        expect(time.monotonic() < begin + within, f"not within {within} s: {what}")
        time.sleep(0.1)
    return time.monotonic() - begin


def fdl(slot):
    return FOLDER / f"{slot}.fdl"


def published(slot, model="DS2900"):
    """Whether the slot's FDL is there, and the model's."""
    try:
        return fdl(slot).read_bytes() == (HERE / f"{model}.fdl").read_bytes()
    except FileNotFoundError:
        return False


def status_is(text):
    return lambda: shown("StatusText") == text


def said_since(begin, text):
    """Whether the service's journal has `text` in what was said since the time `begin`."""
    return lambda: text in run("journalctl", "--unit", UNIT, "--since", f"@{begin:.6f}",
                               "--output", "cat", "--no-pager")


def configure(*slots, further=""):
    CONFIG.write_text("".join(f'slot = "{slot}"\n' for slot in slots) + further, encoding="ascii")


def image(model):
    return (HERE / f"{model.lower()}.image").read_text(encoding="ascii")


def plug_in():
    run("modprobe", MODULE, f"image={image('DS2900')}", f"spares={SPARES}")


def unplug():
    # A bus that is just being used does not go.
    seconds_until("the adapters go", lambda: tried("rmmod", MODULE)[0] == 0)


def swap(model):
    pathlib.Path(f"/sys/module/{MODULE}/parameters/image").write_text(image(model), encoding="ascii")


def forgive():
    """Has the service manager forget how often the service was started."""
    tried("systemctl", "reset-failed", UNIT)


def restart():
    """Starts the service anew, however often it was before."""
    forgive()
    run("systemctl", "restart", UNIT)


def watch(*slots, status):
    """Has the service watch these slots, with `status` in the end."""
    plug_in()
    swap("DS2900")
    configure(*slots)
    restart()
    seconds_until(status, status_is(status))


def watch_one():
    watch(f"A={GOOD}", status="1 slot: 1 identified")


def main_process():
    return int(shown("MainPID"))


def seconds_until_replaced(process):
    return seconds_until("the service runs anew", lambda: main_process() not in (0, process) and
                         shown("ActiveState") == "active")


class Reader(threading.Thread):
    """Looks every 10 ms whether a slot's FDL is there, within a `with`."""

    def __init__(self, slot):
        super().__init__(daemon=True)
        self.file = fdl(slot)
        self.looks = self.misses = 0
        self.ended = threading.Event()

    def run(self):
        while not self.ended.wait(0.01):
            self.looks += 1
            self.misses += not self.file.exists()

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.ended.set()
        self.join()

    def told(self):
        expect(self.misses == 0, f"{self.misses} of {self.looks} looks found no file")
        return f"no gap in {self.looks} looks"


def packages(version):
    return sorted((HERE / version).glob("*.deb"))


def install(version):
    run("dpkg", "--install", "--force-confdef", "--force-confold", *packages(version))


def purge():
    run("dpkg", "--purge", *{run("dpkg-deb", "--field", file, "Package").strip()
                             for version in ("last", "new") for file in packages(version)})


def is_known(database, name):
    try:
        return database(name) is not None
    except KeyError:
        return False


def installation():
    """the packages bring user, group and a service that is off"""
    install("new")
    expect(is_known(pwd.getpwnam, "psu-agent"), "there is no user psu-agent")
    expect(tried("systemctl", "is-enabled", UNIT)[1].strip() == "disabled", "the service is enabled")
    expect(shown("ActiveState") == "inactive", "the service is started")
    run("modprobe", "i2c-dev")
    plug_in()
    seconds_until("the group of a bus is i2c", lambda: pathlib.Path("/dev/i2c-0").group() == "i2c")
    unplug()
    return ""


def nonsense_at_the_start():
    """a configuration that makes no sense is told by systemctl start"""
    begin = time.time()
    status, said = tried("systemctl", "start", UNIT)
    expect(status != 0 and "failed" in said, f"systemctl start: exit status {status}: {said}")
    expect(said_since(begin, "--slot: no slot is named")(), "the journal does not say why")
    took = seconds_until("the service is given up", lambda: shown("ActiveState") == "failed")
    return f"given up after {took:.1f} s"


def late_bus():
    """a bus that appears after the start is watched, and returns after it has gone"""
    configure(f"A={GOOD}")
    restart()
    seconds_until("unreachable", status_is("1 slot: 1 unreachable"))
    plug_in()
    seconds_until("the FDL is there", lambda: published("A"))
    appeared = fdl("A").stat().st_mtime - pathlib.Path("/dev/i2c-0").stat().st_mtime
    unplug()
    seconds_until("unreachable", status_is("1 slot: 1 unreachable"))
    expect(published("A"), "the FDL is not held while the bus is away")
    plug_in()
    seconds_until("identified", status_is("1 slot: 1 identified"))
    return f"FDL {appeared:.2f} s after the bus"


def reload():
    """a reload touches no slot that stays, and nonsense changes nothing"""
    watch_one()
    before, process = fdl("A").stat(), main_process()
    configure(f"A={GOOD}", "B=i2c:name=test spare 0")
    run("systemctl", "reload", UNIT)
    seconds_until("B's FDL is there", lambda: published("B"))
    configure(f"A={GOOD}", "nonsense")
    expect(tried("systemctl", "reload", UNIT)[0] != 0, "systemctl reload does not fail")
    begin = time.time()
    os.kill(process, signal.SIGHUP)
    seconds_until("the refusal", said_since(begin, f"{CONFIG}:2: slot: nonsense is not NAME=SOURCE"))
    expect(published("B"), "B's FDL has gone")
    configure(f"A={GOOD}")
    run("systemctl", "reload", UNIT)
    seconds_until("B's FDL goes", lambda: not fdl("B").exists())
    after = fdl("A").stat()
    expect((before.st_ino, before.st_mtime_ns) == (after.st_ino, after.st_mtime_ns),
           "A's FDL was touched")
    expect(main_process() == process, "the service was started anew")
    return ""


def stopped_process():
    """a process that is stopped is replaced by the watchdog, without a gap"""
    watch_one()
    process = main_process()
    with Reader("A") as reader:
        os.kill(process, signal.SIGSTOP)
        took = seconds_until_replaced(process)
        seconds_until("identified", status_is("1 slot: 1 identified"))
    return f"after {took:.1f} s, {reader.told()}"


def crashes():
    """kill -9 leaves no gap"""
    watch_one()
    with Reader("A") as reader:
        for _ in range(ROUNDS):
            forgive()
            process = main_process()
            os.kill(process, signal.SIGKILL)
            seconds_until_replaced(process)
    return f"{ROUNDS} kills, {reader.told()}"


def restarts():
    """a restart leaves no gap"""
    watch_one()
    with Reader("A") as reader:
        for _ in range(ROUNDS):
            restart()
    return f"{ROUNDS} restarts, {reader.told()}"


def unconfirmed_file():
    """a file that no verdict confirms is gone 15 s after the start"""
    watch_one()
    unplug()
    seconds_until("unreachable", status_is("1 slot: 1 unreachable"))
    process = main_process()
    os.kill(process, signal.SIGKILL)
    seconds_until_replaced(process)
    took = seconds_until("the file goes", lambda: not fdl("A").exists(), within=16)
    return f"after {took:.1f} s"


def full_folder():
    """where a folder is full at a swap the old supply's FDL goes, and the new one's comes"""
    run("systemctl", "stop", UNIT)
    FOLDER.mkdir()
    run("mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", FOLDER)
    watch_one()
    filler = FOLDER / "filler"
    with open(filler, "wb", buffering=0) as file:
        try:
            while file.write(bytes(4096)):
                pass
        except OSError:
            pass
    begin = time.time()
    swap("DS3000")
    gone = seconds_until("the old supply's FDL goes", lambda: not published("A"))
    seconds_until("the cause is told", said_since(begin, "No space left on device"))
    expect(not fdl("A").exists(), "there is a file that is no FDL")
    filler.unlink()
    came = seconds_until("the new supply's FDL comes", lambda: published("A", "DS3000"))
    run("systemctl", "stop", UNIT)
    run("umount", FOLDER)
    return f"gone {gone:.1f} s after the swap, there {came:.1f} s after there is room"


def wiped_folder():
    """what somebody removes from the folder comes again"""
    watch_one()
    for file in FOLDER.iterdir():
        file.unlink()
    took = seconds_until("the FDL comes again", lambda: published("A"))
    return f"after {took:.2f} s"


def removed_folder():
    """a folder that somebody removes comes again, and with it what was in it"""
    watch_one()
    run("rm", "-r", FOLDER)
    took = seconds_until("the FDL comes again", lambda: published("A"))
    return f"after {took:.2f} s"


def hanging_bus():
    """a bus that hangs keeps neither the start nor the end nor another slot"""
    plug_in()
    configure(f"A={GOOD}", f"B={HANGING}")
    begin = time.monotonic()
    restart()
    started = time.monotonic() - begin
    expect(started < 7, f"the start took {started:.1f} s")
    seconds_until("a verdict each", status_is("2 slots: 1 identified, 1 unreachable"))
    begin = time.monotonic()
    run("systemctl", "stop", UNIT)
    ended = time.monotonic() - begin
    expect(shown("Result") == "success", f"the service ended as: {shown('Result')}")
    expect(ended < 1, f"the end took {ended:.1f} s")
    expect(not FOLDER.exists(), "what was published is there yet")
    return f"started in {started:.1f} s, ended in {ended:.2f} s"


def an_hour():
    """an hour with 16 slots takes no more memory at its end"""
    watch(*(f"S{number}=i2c:name=test spare {number}" for number in range(SPARES)),
          status=f"{SPARES} slots: {SPARES} identified")

    def figures():
        memory = (CGROUP / "memory.current").read_text(encoding="ascii")
        status = pathlib.Path(f"/proc/{main_process()}/status").read_text(encoding="ascii")
        resident = status.split("VmRSS:")[1].split()[0]
        spent = (CGROUP / "cpu.stat").read_text(encoding="ascii").split()[1]
        return int(memory) // 1024, int(resident), int(spent) / 1e6

    time.sleep(60)
    _, resident_before, spent_before = figures()
    time.sleep(3600)
    memory, resident, spent = figures()
    expect(resident < resident_before + 512,
           f"{resident_before} KiB resident before, {resident} after")
    return (f"{spent - spent_before:.2f} s of the processor, {memory} KiB, {resident} KiB resident, "
            f"{resident_before} before")


def removal():
    """nothing is left of packages that are purged"""
    purge()
    left = run("find", "/", "-xdev", "(", "-path", HERE, "-o", "-path", "/proc", "-o", "-path", "/sys",
               "-o", "-path", "/usr/lib/modules", ")", "-prune", "-o", "-name", "*psu?agent*", "-print")
    left += run("find", "/run", "-name", "*psu?agent*")
    expect(not left, f"left over: {left}")
    expect(not is_known(grp.getgrnam, "i2c"), "the group i2c is left over")
    expect(not is_known(pwd.getpwnam, "psu-agent"), "the user psu-agent is left over")
    return ""


def upgrade():
    """from the last version, and of a service that runs, without a gap"""
    # The last version expected others to have made it.
    run("groupadd", "--force", "--system", "i2c")
    install("last")
    settings = pathlib.Path("/etc/default/psu-agent")
    settings.write_text('PSU_AGENT_SLOTS="--slot A=i2c:0"\n', encoding="ascii")
    run("systemctl", "enable", "--now", UNIT)
    seconds_until("the last version's FDL is there", lambda: published("A"))
    install("new")
    expect(not settings.exists(), f"{settings} is there yet")
    expect(tried("systemctl", "is-enabled", UNIT)[1].strip() == "enabled", "the service is off")
    configure(f"A={GOOD}")
    restart()
    seconds_until("the FDL is there", lambda: published("A"))
    process = main_process()
    with Reader("A") as reader:
        install("new")
        seconds_until_replaced(process)
        seconds_until("identified", status_is("1 slot: 1 identified"))
    purge()
    return reader.told()


CHECKS = (installation, nonsense_at_the_start, late_bus, reload, stopped_process, crashes, restarts,
          unconfirmed_file, full_folder, wiped_folder, removed_folder, hanging_bus, an_hour, removal,
          upgrade)


def main():
    failures = 0
    for check in CHECKS:
        begin = time.time()
        try:
            told = check()
            print(f"passed: {check.__name__}: {check.__doc__}{told and f' ({told})'}", flush=True)
        except Exception as error:  # Whatever it is, the next check is worth its run.
            failures += 1
            told = error if isinstance(error, Failed) else traceback.format_exc()
            print(f"FAILED: {check.__name__}: {check.__doc__}: {told}", flush=True)
            print(tried("journalctl", "--since", f"@{begin:.6f}", "--no-pager", "--lines", "40")[1],
                  flush=True)
    print(f"test-system: {'failed' if failures else 'passed'}", flush=True)


if __name__ == "__main__":
    main()
