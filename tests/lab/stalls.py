"""Programs that stop without ending and a network that stops without being cut: everybody else goes
on, a sentence says why something waits, and when it goes on all is as if it had not."""

import ctypes
import fcntl
import os
import signal
import socket
import struct
import subprocess
import sys
import threading
import time
from pathlib import Path

from lab import check, children, converge, die_with_parent, search_path, wait_until

STANDSTILL = 120  # seconds
SETNS_NETWORK = 0x40000000
SIOCETHTOOL, CHECKSUMS, SEGMENTATION, GENERIC = 0x8946, 0x17, 0x1f, 0x24


def pair(lab, first, second, name, files=10):
    one, two = lab.host(first), lab.host(second)
    folder = one.folder(name)
    for number in range(files):
        folder.write(f"start {number}", f"{number}", age=1000)
    here, there = one.share(name), two.subscribe(name)
    converge(here, there)
    return one, two, here, there


def family(pid):
    """The process, its children and theirs, in this machine's numbers."""
    return [pid] + [each for child in children(pid) for each in family(int(child))]


def program(host):
    return int(children(host.zolvard.entered.pid)[0])


def signal_all(pids, number):
    for pid in pids:
        try:
            os.kill(pid, number)
        except ProcessLookupError:
            pass  # a run that ended meanwhile


class Cable:
    """Puts a relay between a host and the switch; what the host's network does is up to it."""

    def __init__(self, lab, host):
        self.host = host
        relayed = f"relay{host.number}"
        lab.switch.shell(f"""
            ip link set {host.port} nomaster
            ip link add {relayed} type veth peer name {relayed}s
            ip link set {relayed} up
            ip link set {relayed}s master bridge up""", network_only=True)
        # Without these the kernel hands over segments that are too large for a device, and leaves
        # the checksums to it.
        for pid, device in ((host.pid, "eth0"), (lab.switch.pid, host.port), (lab.switch.pid, relayed),
                            (lab.switch.pid, f"{relayed}s")):
            self.without_offloads(pid, device)
        for other in lab.hosts.values():
            self.without_offloads(other.pid, "eth0")
        self.process = subprocess.Popen(
            lab.switch.enter([sys.executable, str(Path(__file__).with_name("relay.py")),
                              host.port, relayed]),
            stdin=subprocess.PIPE, stdout=open(host.directory / "relay.log", "wb"),
            stderr=subprocess.STDOUT, text=True, env={"PATH": search_path()},
            preexec_fn=die_with_parent)
        wait_until(lambda: "up" in self.said(), 10, "no relay")

    @staticmethod
    def without_offloads(pid, device):
        def change():
            with open(f"/proc/{pid}/ns/net", "rb") as network:
                check(ctypes.CDLL(None).setns(network.fileno(), SETNS_NETWORK) == 0, "no network")
            with socket.socket() as any_socket:
                for feature in (SEGMENTATION, GENERIC, CHECKSUMS):
                    value = ctypes.create_string_buffer(struct.pack("II", feature, 0))
                    request = struct.pack("16sP", device.encode(), ctypes.addressof(value))
                    fcntl.ioctl(any_socket, SIOCETHTOOL, request)
            done.append(device)
        done = []
        thread = threading.Thread(target=change)  # which alone goes into the other network
        thread.start()
        thread.join()
        check(done, f"{device} keeps its offloads")

    def said(self):
        return (self.host.directory / "relay.log").read_text(errors="replace")

    def tell(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()

    def close(self, lab):
        self.process.kill()
        self.process.wait()
        lab.switch.shell(f"ip link del relay{self.host.number}\n"
                         f"ip link set {self.host.port} master bridge", network_only=True)


def scenario_standstill(lab):
    """For two minutes stand still: a whole program with its children, a transfer daemon in the middle
    of a file, and somebody's network. Those who still run work on."""
    dan, bob, slow, copy = pair(lab, "delta", "beta", "Cut")
    cable = Cable(lab, dan)
    ann, bob, here, there = pair(lab, "alpha", "beta", "Stopped")
    bob, carol, mine, hers = pair(lab, "beta", "gamma", "Frozen")
    lab.host("alpha").command("set", "BWLimitOut", "1000")
    since = len(bob.log())
    here.write("large", os.urandom(20 << 20), age=30)
    wait_until(lambda: any(path.stat().st_size > 1 << 18 for path in there.root.glob(".large.*")), 60,
               "the transfer did not begin")

    # The daemon leaves the program's family when it starts; it is found by its name.
    daemons = [pid for pid in processes_in(ann) if "--daemon" in command_line(pid)]
    check(daemons, "ann's transfer daemon was not found")
    stopped = [each for daemon in daemons for each in family(daemon)]
    frozen = family(program(carol))
    signal_all(stopped, signal.SIGSTOP)
    signal_all(frozen, signal.SIGSTOP)
    cable.tell("stall")
    start = time.monotonic()
    try:
        here.write("start 1", "ann, while her daemon stood still", age=5)
        there.write("start 2", "bob, while ann's daemon stood still", age=5)
        mine.write("start 3", "bob, while carol stood still", age=5)
        hers.write("start 4", "carol's, saved while nothing looked", age=5)
        slow.write("start 5", "dan, without a network", age=5)
        copy.write("start 6", "bob, without dan's network", age=5)
        bob.wait_for_log("stood still for too long", 90, since)
        # A folder is not scanned while it is synced; now it is, and she can still fetch.
        wait_until(lambda: here.read("start 2") == "bob, while ann's daemon stood still", 60,
                   "ann's program waits for her daemon")
        check(not there.at("large").exists(), "half a file took the place of a whole one")
        for host in (ann, bob, dan):
            began = time.monotonic()
            host.cli("list")
            check(time.monotonic() - began < 10, f"{host.name}'s program hardly answers")
        time.sleep(max(0, STANDSTILL - (time.monotonic() - start)))
    finally:
        signal_all(frozen, signal.SIGCONT)
        signal_all(stopped, signal.SIGCONT)
        cable.tell("go")
    lab.host("alpha").command("set", "BWLimitOut", "0")
    converge(here, there, limit=180)
    converge(mine, hers, limit=120)
    converge(slow, copy, limit=120)
    check(there.at("large").stat().st_size == 20 << 20, "the large file did not arrive")
    check(not list(there.root.glob(".large.*")), "leftovers remain")
    for folder, path, content in ((there, "start 1", "ann, while her daemon stood still"),
                                  (hers, "start 3", "bob, while carol stood still"),
                                  (mine, "start 4", "carol's, saved while nothing looked"),
                                  (copy, "start 5", "dan, without a network"),
                                  (slow, "start 6", "bob, without dan's network")):
        check(folder.read(path) == content, f"{folder}: {path} is {folder.read(path)!r}")
    cable.close(lab)


def processes_in(host):
    """All processes of a host, in this machine's numbers."""
    namespace = os.readlink(f"/proc/{host.pid}/ns/pid")

    def belongs(pid):
        try:
            return os.readlink(f"/proc/{pid}/ns/pid") == namespace
        except OSError:
            return False
    return [int(pid) for pid in os.listdir("/proc") if pid.isdigit() and belongs(pid)]


def command_line(pid):
    try:
        return Path(f"/proc/{pid}/cmdline").read_bytes().decode(errors="replace").split("\0")
    except OSError:
        return []


def scenario_bad_network(lab):
    """A network that is slow, loses a tenth and cuts every connection for a while."""
    ann, dan, here, there = pair(lab, "alpha", "delta", "Slow")
    cable = Cable(lab, dan)
    cable.tell("delay 0.15 0.1")
    for number in range(100):
        here.write(f"many/{number}", f"content {number}" * 100, age=30)
    there.write("of dan", "dan's", age=30)
    converge(here, there, limit=120)
    cable.tell("lose 0.1")
    here.write("start 1", "ann, on a bad line", age=5)
    there.write("start 2", "dan, on a bad line", age=5)
    converge(here, there, limit=150)

    cable.tell("lose 0")
    cable.tell("delay 0.02 0")
    cable.tell("reset 3")
    since = len(dan.log())
    here.write("large", os.urandom(3 << 20), age=30)
    here.write("start 3", "ann, while connections were cut", age=5)
    there.write("start 4", "dan, while connections were cut", age=5)
    wait_until(lambda: cable.said().count("reset a connection") >= 3, 120,
               lambda: f"not cut: {cable.said()}")
    wait_until(lambda: "onnection reset" in dan.log()[since:] + ann.log(), 30,
               "nobody says that a connection was reset")
    converge(here, there, limit=150)
    check(there.read("start 1") == "ann, on a bad line", "ann's edit is lost")
    check(here.read("start 2") == "dan, on a bad line", "dan's edit is lost")
    check(there.at("large").stat().st_size == 3 << 20, "the large file did not arrive")
    cable.close(lab)
