"""Machines, programs and cables fail at any moment; afterwards all is as if they had not."""

import os
import random
import signal
import time

from lab import check, converge, survives, wait_until


def pair(lab, name):
    ann, bob = lab.host("alpha"), lab.host("beta")
    folder = ann.folder(name)
    for number in range(10):
        folder.write(f"start {number}", f"{number}", age=1000)
    here, there = ann.share(name), bob.subscribe(name)
    converge(here, there)
    return ann, bob, here, there


def scenario_down_and_back(lab):
    """One machine is down while the other works, then the other way round."""
    ann, bob, here, there = pair(lab, "Down")
    bob.stop()
    here.write("start 1", "changed", age=30)
    here.remove("start 2")
    here.rename("start 3", "moved 3")
    here.write("new", "new", age=30)
    here.wait_for_deletion("start 3")
    ann.stop()
    there.write("start 4", "changed by bob", age=30)
    there.write("of bob", "bob", age=30)
    bob.start()
    time.sleep(3)
    ann.start()
    converge(here, there)
    check(there.read("start 1") == "changed" and there.read("start 2") is None, "ann's day is lost")
    check(here.read("start 4") == "changed by bob" and here.read("of bob") == "bob",
          "bob's day is lost")


def scenario_sender_stops(lab):
    """The sender vanishes in the middle of a file and comes back."""
    ann, bob, here, there = pair(lab, "Halfway")
    ann.command("set", "BWLimitOut", "1000")
    here.write("large", bytes(range(256)) * (40 << 12), age=30)
    here.write("small", "small", age=30)

    def leftovers():
        return [path for path in there.root.glob(".large.*")]
    wait_until(lambda: any(path.stat().st_size > 1 << 18 for path in leftovers()), 60,
               "the transfer did not begin")
    ann.kill()
    check(not there.at("large").exists(), "half a file took the place of a whole one")
    time.sleep(2)
    ann.start()
    ann.command("set", "BWLimitOut", "0")
    converge(here, there, limit=180)
    check(not leftovers(), f"leftovers: {leftovers()}")
    check(here.at("large").stat().st_size == there.at("large").stat().st_size, "sizes differ")


def scenario_receiver_killed(lab):
    """The receiver is killed in the middle of a file; what lies there then is nobody's edit."""
    ann, bob, here, there = pair(lab, "Receiver")
    ann.command("set", "BWLimitOut", "2000")
    here.write("large", b"0123456789abcdef" * (2 << 20), age=30)
    wait_until(lambda: any(path.stat().st_size > 1 << 18 for path in there.root.glob(".large.*")),
               60, "the transfer did not begin")
    bob.kill()
    time.sleep(1)
    ann.command("set", "BWLimitOut", "0")
    bob.start()
    tree = converge(here, there, limit=180)
    check(not any(path.startswith(".large.") for path in tree), f"a leftover was shared: {tree}")


def transfers(pid):
    """The transfer tool's processes that copy files, of a program and of all its threads."""
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/children") as found:
            for child in found.read().split():
                yield from transfers(child)
                with open(f"/proc/{child}/cmdline", "rb") as command:
                    if b"--files-from" in command.read():
                        yield int(child)


def scenario_tool_killed(lab):
    """The transfer tool is killed hard in the middle of a file; what it leaves is nobody's file."""
    ann, bob, here, there = pair(lab, "Tool")
    ann.command("set", "BWLimitOut", "2000")
    here.write("large", b"0123456789abcdef" * (2 << 20), age=30)
    arriving = []

    def began():
        arriving[:] = [path for path in there.root.glob(".large.*")
                       if path.stat().st_size > 1 << 18]
        return arriving
    wait_until(began, 60, "the transfer did not begin")
    for pid in transfers(bob.zolvard.entered.pid):  # the one that writes first, or it tidies up
        os.kill(pid, signal.SIGKILL)
    there.write(".large.sample", "mine", age=30)
    ann.command("set", "BWLimitOut", "0")
    tree = converge(here, there, limit=180)
    check([path for path in tree if path.startswith(".large.")] == [".large.sample"],
          f"a leftover was shared: {tree}")
    trash = bob.seen(bob.home / ".local/share")
    check(any(trash.rglob(arriving[0].name)), f"{arriving[0].name} is in no Trash")


def scenario_cable(lab):
    """The cable is pulled while both work on, and put back."""
    ann, bob, here, there = pair(lab, "Cable")
    bob.connect(False)
    here.write("start 5", "ann without bob", age=30)
    there.write("start 6", "bob without ann", age=30)
    time.sleep(12)
    bob.connect(True)
    converge(here, there, limit=180)
    check(there.read("start 5") == "ann without bob" and here.read("start 6") == "bob without ann",
          "work without the network is lost")


def scenario_discovery_restarts(lab):
    """Avahi is restarted on one side, cleanly and not, and stays away for a while."""
    ann, bob, here, there = pair(lab, "Discovery")
    for number, how in enumerate((signal.SIGTERM, signal.SIGKILL)):
        ann.stop_avahi(how)
        here.write(f"start {number}", f"meanwhile {number}", age=30)
        time.sleep(3)
        ann.start_avahi()
        there.write(f"start {number + 7}", f"from bob {number}", age=30)
        converge(here, there, limit=120)
        check(there.read(f"start {number}") == f"meanwhile {number}", "ann's change is lost")


def scenario_killed(lab):
    """zolvard is killed again and again, at any moment, while both sides work."""
    ann, bob, here, there = pair(lab, "Killed")
    seed = random.randrange(1 << 32)
    chance = random.Random(seed)
    print(f"seed {seed}", flush=True)
    written = {}
    for turn in range(8):
        victim = chance.choice((ann, bob))
        for folder in (here, there):
            path = f"{folder.host.name}/{chance.randrange(6)}"
            written[path] = f"turn {turn} {chance.random()}"
            folder.write(path, written[path], age=chance.choice((0, 2)))
        time.sleep(chance.uniform(0, 4))
        victim.kill()
        time.sleep(chance.uniform(0, 1))
        victim.start()
    converge(here, there, limit=180)
    for path, content in written.items():
        check(here.read(path) == content, f"{path} is {here.read(path)!r}, not {content!r}")
    for number in range(10):
        check(survives(str(number), here, there), f"start {number} is lost")
