"""What surrounds the program: the desktop's notices, its clock, its addresses, a second instance."""

import json
import signal
import time

from lab import Process, ZOLVAR, check, converge, pair, wait_until

NOTICES_STUB = "/run/programs/tests/lab/notices-stub"
TIME_SERVER = """
import socket, struct, sys, time
server = socket.create_server(("", 37))
while True:
    client, _ = server.accept()
    now = struct.pack(">I", int(time.time()) + 2208988800 + int(sys.argv[1]))
    client.sendall(now[:int(sys.argv[2])])
    client.close()
"""


class Desktop:
    """A session bus on a host, and a notification service that records what it is sent."""

    def __init__(self, host):
        self.host = host
        self.address = f"unix:path=/run/user/{host.uid}/bus"
        self.output = host.directory / "notices.json"
        host.environment["DBUS_SESSION_BUS_ADDRESS"] = self.address
        Process(host, ["dbus-daemon", "--session", "--nofork", "--nopidfile",
                       f"--address={self.address}"], host.directory / "session.log", host.uid)
        wait_until(lambda: host.seen(f"/run/user/{host.uid}/bus").exists(), 10, "no session bus")
        self.start()

    def start(self):
        self.service = Process(self.host, [NOTICES_STUB], self.output, self.host.uid)
        wait_until(lambda: "true" in self.send("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                               "org.freedesktop.DBus.NameHasOwner",
                                               "string:org.freedesktop.Notifications"),
                   10, "no notification service")

    def send(self, destination, path, method, *arguments):
        return self.host.run(["dbus-send", "--session", "--print-reply", f"--dest={destination}",
                              path, method, *arguments]).stdout

    def told(self):
        """Everything so far, notices and closings."""
        return [json.loads(line) for line in self.output.read_text().splitlines()
                if line.startswith("{")]

    def notices(self, words, since=0):
        return [notice for notice in self.told()[since:]
                if words in notice.get("title", "") + "\n" + notice.get("text", "")]

    def wait_for(self, words, since=0, limit=60):
        return wait_until(lambda: self.notices(words, since), limit,
                          lambda: f"no notice with {words!r}: {self.told()}")[-1]

    def click(self, notice):
        self.send("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                  "zolvar.lab.Click", f"uint32:{notice['id']}")


def with_desktop(lab, name):
    host = lab.host(name, zolvard=False)
    if not hasattr(host, "desktop"):
        if host.zolvard:
            host.stop()
        host.desktop = Desktop(host)
    return lab.host(name)


def scenario_notices(lab):
    """Ten syncs are one notice that is brought up to date; a conflict stays and can be clicked."""
    ann, bob = lab.host("alpha"), with_desktop(lab, "beta")
    desktop = bob.desktop
    here = ann.folder("Notes")
    here.write("first", "1", age=100)
    ann.share("Notes")
    there = bob.subscribe("Notes")
    converge(here, there)
    desktop.wait_for("Got 1 file in 'Notes':")
    for number in range(4):
        before = len(desktop.told())
        here.write(f"a <b> & {number}", "x", age=10)
        converge(here, there)
        notice = desktop.wait_for("Got 1 file in 'Notes':", since=before)
        check(f"a &lt;b&gt; &amp; {number}" in notice["text"], f"the name came as {notice}")
    got = desktop.notices("Got 1 file in 'Notes':")
    check(len({notice["id"] for notice in got}) == 1, f"notices are stacked: {got}")
    check(all(notice["replaces"] for notice in got[1:]), f"a notice replaces none: {got}")

    bob.connect(False)
    here.write("first", "of ann", age=20)
    there.write("first", "of bob", age=10)
    wait_until(lambda: "of bob" == there.read("first"), 10, "not written")
    bob.connect(True)
    notice = desktop.wait_for("Conflict in Folder 'Notes':", limit=120)
    check(notice["text"] == "'first' has 2 different/conflicting versions.", f"it says {notice}")
    check(notice["timeout"] == 0 and notice["actions"].startswith("default "), f"it is {notice}")
    desktop.click(notice)

    # The service goes, things happen, another one comes.
    desktop.service.end()
    here.write("unseen", "x", age=10)
    wait_until(lambda: there.read("unseen") == "x", 60, "unseen did not arrive")
    check(bob.cli("status"), "zolvard does not answer")
    before = len(desktop.told())
    desktop.start()
    here.write("seen", "x", age=10)
    desktop.wait_for("\nseen", since=before)
    # The sync of "unseen" may still have been ending when the new service came.
    notice = desktop.notices("Got 1 file in 'Notes':", since=before)[0]
    check(notice["replaces"] == 0, f"the new service knows no old notice: {notice}")


def scenario_clock(lab):
    """A clock that is off is told; a time server that sends too little does no harm."""
    ann, bob = lab.host("alpha"), with_desktop(lab, "beta")
    desktop = bob.desktop
    bob.command("set", "TimeServer1", "alpha.local")
    bob.command("set", "TimeServer2", "none")
    for offset, size, said in ((100, 4, "System clock is bad! "), (100, 2, "Could not read data"),
                               (0, 4, "badSeconds = ")):
        server = Process(ann, ["python3", "-c", TIME_SERVER, str(offset), str(size)],
                         ann.directory / "time.log")
        wait_until(lambda: ":37 " in ann.run(["ss", "-ltn"]).stdout, 10, "no time server")
        marks = len(bob.log()), len(desktop.told())
        bob.restart()
        bob.wait_for_log(said, since=marks[0])
        if said.startswith("System"):
            notice = desktop.wait_for("The computer's clock is off!", since=marks[1])
            check(notice["urgency"] == 2, f"the notice is {notice}")
            # The way there takes time as well, on a busy machine seconds.
            check(any(f"is currently off by {seconds}" in notice["text"]
                      for seconds in range(90, 101)), f"the notice is {notice}")
            since = len(bob.log())
            desktop.click(notice)
            bob.wait_for_log("no settings of the date and time", since=since)
            bob.restart()
            check({"closed": notice["id"]} in desktop.told(), "it stayed after the program's end")
        else:
            check(not desktop.notices("clock", since=marks[1]), "a notice without reason")
        server.end(9)
    check(bob.cli("status"), "zolvard does not answer")


def scenario_addresses(lab):
    """A host that gets another address serves from there, and its peers find it again."""
    here, there = pair(lab, "Moving", first="1")
    bob = there.host

    def daemon():
        found = bob.run(["sh", "-c", "cat ~/.local/share/Zolvar/*.fppid"]).stdout.split()
        return found[0] if found else None
    first = wait_until(daemon, 20, "no transfer daemon")
    bob.shell("ip address add 10.77.0.152/24 dev eth0")
    second = wait_until(lambda: daemon() not in (None, first) and daemon(), 30,
                        "the transfer daemon was not started anew")
    there.write("after one more address", "x", age=10)
    converge(here, there)
    bob.shell(f"ip address del 10.77.0.{bob.number}/24 dev eth0\n"
              "ip address show dev eth0 | grep -q 10.77.0.152 || "
              "ip address add 10.77.0.152/24 dev eth0\n"
              "ip route replace default dev eth0")
    wait_until(lambda: daemon() not in (None, first, second), 30,
               "the transfer daemon was not started anew")
    there.write("after the move", "x", age=10)
    here.write("towards the new place", "x", age=10)
    converge(here, there, limit=120)


def scenario_second_instance(lab):
    """A second zolvard ends the first one and goes on with its folders."""
    ann = lab.host("alpha")
    folder = ann.folder("Kept on")
    folder.write("file", "x", age=100)
    ann.share("Kept on")
    first, ann.zolvard = ann.zolvard, None
    try:
        ann.start()
    except Exception:
        ann.zolvard = ann.zolvard or first
        raise
    check(first.entered.wait(30) == 0, "the first one did not end cleanly")
    ann.active("Kept on")
    # Somebody else's process that holds the lock is left alone.
    ann.stop()
    lock = ann.home / ".local/share/Zolvar/zolvar.lock"
    stranger = Process(ann, ["flock", "-o", str(lock), "sh", "-c", f"pgrep flock > {lock}; sleep 600"],
                       ann.directory / "stranger.log", ann.uid)
    wait_until(lambda: ann.seen(lock).read_text().strip() in ann.run(["pgrep", "flock"]).stdout
               .split(), 10, "no stranger")
    second = ann.run(["/run/programs/bin/zolvard"])
    check(second.returncode == 1 and "running already" in second.stderr, f"it said {second}")
    check(stranger.running(), "a stranger was ended")
    stranger.end(9)
    ann.start()


def scenario_hanging_discovery(lab):
    """An avahi-daemon that hangs makes nobody wait but who looks for others."""
    here, there = pair(lab, "Patience", first="1")
    ann = here.host
    ann.avahi.send(signal.SIGSTOP)
    try:
        here.write("during the hang", "2", age=10)
        wait_until(lambda: "during the hang" in ann.log(), 30, "the change was not seen")
        for _ in range(10):
            start = time.monotonic()
            ann.cli("status")
            check(time.monotonic() - start < 8, "zolvard waits for avahi-daemon")
            time.sleep(0.3)
    finally:
        ann.avahi.send(signal.SIGCONT)
    converge(here, there)


def scenario_autostart(lab):
    """The window enters itself into what the desktop starts, once, and wherever it has moved to."""
    bob = lab.host("beta")
    bob.stop()
    entry = bob.seen(bob.home / ".config/autostart/zolvar.desktop")
    moved = "/home/moved"
    bob.shell(f"mkdir {moved}; mount --bind /run/programs/bin {moved}")
    bob.environment["QT_QPA_PLATFORM"] = "offscreen"
    seen = []
    for folder in ("/run/programs/bin", "/run/programs/bin", moved):
        window = Process(bob, [f"{folder}/zolvar-desktop", "--hidden"],
                         bob.directory / "window.log", bob.uid)
        command = f'\nExec="{folder}/zolvar-desktop" --hidden\n'
        wait_until(lambda: entry.exists() and command in entry.read_text(), 30,
                   lambda: f"no entry for {folder}: {entry.exists() and entry.read_text()}")
        wait_until(lambda: bob.run([ZOLVAR, "status"]).returncode == 0, 30, "it does not answer")
        seen.append(entry.stat().st_mtime_ns)
        # As at the end of a session: it shall be there in the next one.
        check(window.end() == 0, "the window did not end cleanly")
        check(entry.exists(), "the entry went with the session")
    check(seen[0] == seen[1], "an entry in order was written again")
    check(len(list(entry.parent.iterdir())) == 1, "there are two entries")
    bob.start()
