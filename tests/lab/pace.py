"""How soon a saved file is on the other machine, what an idle folder costs, and what stays out of a
folder."""

import statistics
import time
from pathlib import Path

from lab import TooLate, always, check, children, converge, pair, wait_until

SAMPLES = 20
EVERY = 10  # seconds between two saves
IDLE_FILES = 100_000
IDLE_SECONDS = 60
IDLE_SHARE = 0.001  # of one core


def scenario_quick_pace(lab):
    """At quick pace a save is there in two and a half seconds."""
    here, there = pair(lab, "Quick", start="start")
    delays = []
    for number in range(SAMPLES):
        sender, receiver = (here, there) if number % 2 else (there, here)
        begin = time.monotonic()
        sender.write(f"saved {number}", f"{number}")
        wait_until(lambda: receiver.read(f"saved {number}") == f"{number}", 30,
                   f"save {number} did not arrive")
        delays.append(time.monotonic() - begin)
        time.sleep(max(0, EVERY - delays[-1]))
    print(f"  median {statistics.median(delays):.2f} s, longest {max(delays):.2f} s: "
          + " ".join(f"{delay:.1f}" for delay in delays), flush=True)
    if statistics.median(delays) > 2.5 or max(delays) >= 5:
        raise TooLate("saves travel too slowly")


def processor_seconds(host):
    """What zolvard's threads have used so far."""
    pid = children(host.zolvard.entered.pid)[0]
    return sum(int((task / "schedstat").read_text().split()[0])
               for task in Path(f"/proc/{pid}/task").iterdir()) / 1e9


def scenario_idle(lab):
    """A folder in which nothing happens costs nothing, at either pace."""
    hosts = [lab.host("alpha"), lab.host("gamma", pace="normal")]
    for host in hosts:
        folder = host.folder("Idle " + host.name)
        for number in range(IDLE_FILES // 1000):
            folder.mkdir(f"{number}")
            for file in range(1000):
                (folder.root / f"{number}/{file}").touch()
        host.shell(f"chown -R {host.uid} '{folder.path}'")
        host.share("Idle " + host.name)
    time.sleep(45)  # observed by now, and looked at as a whole once more
    before = [processor_seconds(host) for host in hosts]
    time.sleep(IDLE_SECONDS)
    for host, start in zip(hosts, before):
        share = (processor_seconds(host) - start) / IDLE_SECONDS
        print(f"  {host.name}: {share * 100:.3f} % of a core", flush=True)
        check(share <= IDLE_SHARE, f"{host.name}: an idle folder costs {share * 100:.2f} %")
    late = hosts[0].folder("Idle alpha")
    late.write("7/late", "late", age=30)
    wait_until(lambda: "7/late" in late.at(f".Zolvar/{hosts[0].user_id}.fplog").read_text(), 30,
               "a change in the idle folder was not found")


def scenario_ignore_rules(lab):
    """What the rules name is never sent, fetched or deleted; taking the rules back sends it."""
    here, there = pair(lab, "Rules", kept="kept", **{"tracked.tmp": "tracked"})

    here.write(".zolvarignore", "*.tmp\nbuild/\n", age=30)
    wait_until(lambda: there.read(".zolvarignore"), 60, "the rules did not arrive")
    time.sleep(3)
    here.write("own.tmp", "ann's", age=30)
    here.write("build/deep/made", "made", age=30)
    here.write("tracked.tmp", "changed", age=30)
    there.remove("tracked.tmp")
    here.write("after", "after", age=30)
    wait_until(lambda: there.read("after"), 60, "the rest does not travel")
    always(lambda: there.read("own.tmp") is None and not there.at("build").exists()
           and there.read("tracked.tmp") is None, 8, "something ignored travelled")
    check(here.read("tracked.tmp") == "changed", "an ignored file was touched")
    check(not there.host.cli("question"), "an ignored file's deletion was asked about")

    there.write(".zolvarignore", "# nothing\n", age=15)
    wait_until(lambda: there.read("own.tmp") == "ann's" and there.read("build/deep/made"), 90,
               "what is no longer ignored does not travel")
