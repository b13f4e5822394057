"""Real hosts on one machine: each has its own network, mounts, processes and host name, a system
bus, an Avahi daemon and a zolvard, and all are joined by one switch.

Everything a host runs lives in its process namespace, whose first process dies with this one, so
that nothing is left behind however the run ends. No name is used outside the namespaces: any
number of labs run at once. Needs root, iproute2, util-linux, dbus and avahi-daemon.
"""

import csv
import ctypes
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

PATIENCE = float(os.environ.get("ZOLVAR_LAB_PATIENCE", "1"))  # stretches every time limit
TIMEZONES = ["UTC", "Europe/Berlin", "America/St_Johns"]      # file times must not depend on it
USERS = {"alpha": ("ann", 1001), "beta": ("bob", 1002), "gamma": ("root", 0),
         "delta": ("dan", 1004)}  # name, uid
ZOLVAR = "/run/programs/bin/zolvar"
FIRST_PROCESS = ("import signal\nsignal.signal(signal.SIGCHLD, signal.SIG_IGN)\n"
                 "print('up', flush=True)\nwhile True: signal.pause()")


class Failed(Exception):
    """A condition that did not come about, or a command that did not do what it should."""


class TooLate(Failed):
    """What was waited for did not come in time."""


class Refused(Failed):
    """The command line said no; the text is its sentence."""


def why_not_here():
    """One sentence when this machine cannot hold a lab, else None."""
    if os.geteuid() != 0:
        return "the lab needs root"
    for tool in ("ip", "unshare", "nsenter", "dbus-daemon", "avahi-daemon", "rsync"):
        if not shutil.which(tool, path=search_path()):
            return f"the lab needs {tool}"
    trial = subprocess.run(["unshare", "-n", "-m", "-u", "-p", "-f", "--mount-proc",
                            "ip", "link", "add", "trial", "type", "veth", "peer", "name", "other"],
                           capture_output=True, text=True, env={"PATH": search_path()})
    return f"no namespaces here: {trial.stderr.strip()}" if trial.returncode else None


def search_path():
    return os.environ.get("PATH", "/usr/bin:/bin") + ":/usr/sbin:/sbin"


def die_with_parent():
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG


def wait_until(condition, limit, what):
    """Calls `condition` until it gives something true, which is returned."""
    end = time.monotonic() + limit * PATIENCE
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise TooLate(f"not within {limit * PATIENCE:.0f} s: {what() if callable(what) else what}")
        time.sleep(0.2)


def always(condition, seconds, what):
    """The opposite of wait_until: `condition` must hold all the time."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not condition():
            raise Failed(what)
        time.sleep(0.2)


def check(truth, what):
    if not truth:
        raise Failed(what)


def remove_tree(path):
    """As far as it goes; many files at once, since some disks take milliseconds for each file whose
    place they give back."""
    subprocess.run("find . ! -type d -print0 | xargs -0r -P 32 -n 100 rm -f", shell=True, cwd=path,
                   stderr=subprocess.DEVNULL, check=False)
    shutil.rmtree(path, ignore_errors=True)


class Namespace:
    """A set of namespaces kept alive by one process."""

    def __init__(self):
        self.keeper = subprocess.Popen(
            ["unshare", "--net", "--mount", "--uts", "--ipc", "--pid", "--fork", "--kill-child",
             "--mount-proc", sys.executable, "-c", FIRST_PROCESS],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, preexec_fn=die_with_parent,
            env={"PATH": search_path()})
        check(self.keeper.stdout.readline() == b"up\n", "no namespaces to be had")
        self.pid = int(children(self.keeper.pid)[0])

    def enter(self, command, uid=0):
        return ["nsenter", "-t", str(self.pid), "-n", "-m", "-u", "-i", "-p",
                "-S", str(uid), "-G", str(uid), "--", *command]

    def shell(self, script, network_only=False):
        """Runs a script inside; with `network_only` process ids in it mean what they mean here."""
        enter = ["nsenter", "-t", str(self.pid), "-n"] if network_only else self.enter([])
        result = subprocess.run([*enter, "sh", "-e", "-c", script], capture_output=True,
                                text=True, env={"PATH": search_path()})
        check(result.returncode == 0, f"{script!r}: {result.stderr.strip()}")
        return result.stdout

    def close(self):
        self.keeper.kill()
        self.keeper.wait()


def children(pid):
    try:
        return Path(f"/proc/{pid}/task/{pid}/children").read_text().split()
    except OSError:
        return []


class Process:
    """A program on a host, in the foreground there, with its output in a file."""

    def __init__(self, host, command, output, uid=0):
        self.output = output
        with open(output, "ab") as sink:
            self.entered = subprocess.Popen(host.enter(command, uid), stdin=subprocess.DEVNULL,
                                            stdout=sink, stderr=sink, env=host.environment,
                                            preexec_fn=die_with_parent)

    def running(self):
        return self.entered.poll() is None

    def send(self, number):
        for pid in children(self.entered.pid):
            os.kill(int(pid), number)

    def end(self, number=signal.SIGTERM, limit=20):
        """Sends the signal and waits; returns the exit status."""
        if self.running():
            wait_until(lambda: children(self.entered.pid) or not self.running(), 5, "no process")
            self.send(number)
        try:
            return self.entered.wait(limit * PATIENCE)
        except subprocess.TimeoutExpired:
            raise Failed(f"{self.output}: still running {limit} s after signal {number}") from None


class Host(Namespace):
    """One machine with one user. Files are reached as that machine sees them."""

    def __init__(self, lab, name, pace):
        super().__init__()
        self.lab, self.name = lab, name
        self.user, self.uid = USERS[name]
        self.user_id = f"{self.user}@{name}.local"
        self.number = len(lab.hosts) + 1
        self.directory = lab.directory / name
        self.home = Path("/home") / self.user
        self.zolvard = None
        self.files = Path(f"/proc/{self.pid}/root")
        self.environment = {
            "PATH": search_path(), "HOME": str(self.home), "LOGNAME": self.user, "USER": self.user,
            "XDG_RUNTIME_DIR": f"/run/user/{self.uid}", "LANG": "C.UTF-8",
            "TZ": TIMEZONES[self.number % len(TIMEZONES)]}
        for key, value in os.environ.items():
            if key.startswith(("ASAN_", "UBSAN_", "TSAN_", "LSAN_")):
                self.environment[key] = value
        for folder in ("home", "services"):
            (self.directory / folder).mkdir(parents=True)
        self.own(self.directory / "home")
        self._prepare()
        self.bus = Process(self, ["dbus-daemon", "--system", "--nofork", "--nopidfile"],
                           self.directory / "bus.log")
        wait_until(lambda: (self.files / "run/dbus/system_bus_socket").exists(), 10, "no system bus")
        self.start_avahi()
        self.settings({"Pace": pace, "HeadlessDeleteAnswer": "delete"})

    def _prepare(self):
        texts = {
            "passwd": f"{self.user}:x:{self.uid}:{self.uid}::{self.home}:/bin/sh\n"
                      + Path("/etc/passwd").read_text(),
            "nsswitch.conf": "passwd: files\ngroup: files\n"
                             "hosts: files mdns4_minimal [NOTFOUND=return] dns\n",
            "hosts": f"127.0.0.1 localhost\n127.0.1.1 {self.name}\n",
            "resolv.conf": "",
            "avahi.conf": f"[server]\nhost-name={self.name}\nuse-ipv6=no\n[wide-area]\n"
                          "enable-wide-area=no\n[publish]\npublish-workstation=no\n",
        }
        for name, text in texts.items():
            (self.directory / name).write_text(text)
        binds = "\n".join(
            f'target=$(readlink -m /etc/{name}); mkdir -p "$(dirname "$target")"; '
            f'touch "$target"; mount --bind {self.directory}/{name} "$target"'
            for name in ("passwd", "nsswitch.conf", "hosts", "resolv.conf"))
        self.shell(f"""
            hostname {self.name}
            mount -t tmpfs -o mode=755 tmpfs /run
            mkdir -p -m 755 /run/dbus /run/avahi-daemon /run/user /run/lock /run/programs
            mkdir -m 700 /run/user/{self.uid}
            chown {self.uid}:{self.uid} /run/user/{self.uid}
            mount --bind {self.lab.programs.parent} /run/programs
            mount -t tmpfs -o mode=755 tmpfs /home
            mkdir {self.home}
            mount --bind {self.directory}/home {self.home}
            {binds}
            mount --bind {self.directory}/services /etc/avahi/services""")
        port = f"port{self.number}"
        self.lab.switch.shell(f"""
            ip link add {port} type veth peer name eth0 netns {self.pid}
            ip link set {port} master bridge up""", network_only=True)
        self.port = port
        self.shell(f"""
            ip link set lo up
            ip address add 10.77.0.{self.number}/24 dev eth0
            ip link set eth0 up
            ip route add default dev eth0""")

    # The machine.

    def start_avahi(self):
        self.avahi = Process(self, ["avahi-daemon", "--no-drop-root", "--no-chroot", "--no-rlimits",
                                    "-f", str(self.directory / "avahi.conf")],
                             self.directory / "avahi.log")

    def stop_avahi(self, number=signal.SIGTERM):
        self.avahi.end(number)

    def seen(self, path):
        """Where a path of this host can be reached from outside."""
        return self.files / str(path).lstrip("/")

    def own(self, *paths):
        """Gives to this host's user what the test has made."""
        for path in paths:
            os.chown(path, self.uid, self.uid, follow_symlinks=False)

    def connect(self, connected):
        """Plugs the network cable in, or pulls it at the switch."""
        self.lab.switch.shell(f"ip link set {self.port} {'up' if connected else 'down'}")

    def run(self, command, text=None, limit=60):
        """Runs a command as this host's user."""
        try:
            return subprocess.run(self.enter(command, self.uid), input=text, capture_output=True,
                                  text=True, env=self.environment, timeout=limit * PATIENCE)
        except subprocess.TimeoutExpired as error:
            raise TooLate(f"{self.name}: {error}") from None

    # zolvard and the command line.

    def settings(self, values):
        """Writes settings as they lie on disk; for while zolvard is not running."""
        path = self.seen(self.home / ".config/Zolvar/Zolvar.conf")
        path.parent.mkdir(parents=True, exist_ok=True)
        self.own(path.parent.parent, path.parent)
        path.write_text("[General]\n" + "".join(f"{key}={value}\n" for key, value in values.items()))
        self.own(path)

    def start(self):
        check(not self.zolvard, f"{self.name}: zolvard is running")
        self.zolvard = Process(self, ["/run/programs/bin/zolvard", "--debug"],
                               self.directory / "zolvard.log", self.uid)

        def answers():
            check(self.zolvard.running(), f"{self.name}: zolvard ended at start")
            return self.run([ZOLVAR, "status"]).returncode == 0
        wait_until(answers, 30, f"{self.name}: zolvard does not answer")

    def stop(self):
        """A clean stop, as at shut-down."""
        process, self.zolvard = self.zolvard, None
        status = process.end()
        check(status == 0, f"{self.name}: zolvard ended with status {status}")

    def kill(self):
        process, self.zolvard = self.zolvard, None
        process.end(signal.SIGKILL)

    def restart(self):
        self.stop()
        self.start()

    def command(self, *arguments, text=None, limit=60):
        result = self.run([ZOLVAR, *arguments], text, limit)
        if result.returncode == 1:
            raise Refused(result.stderr.strip())
        check(result.returncode == 0, f"{self.name}: zolvar {' '.join(arguments)}: status "
                                      f"{result.returncode}: {result.stderr.strip()}")
        return result.stdout

    def cli(self, *arguments):
        """A listing command's data."""
        return json.loads(self.command(*arguments, "--json"))

    def pool(self, name):
        return next((pool for pool in self.cli("list") if pool["name"] == name), None)

    def folder(self, name):
        """Where a folder of that name lies unless told otherwise; made, not shared yet."""
        folder = Folder(self, name, self.home / name)
        folder.root.mkdir(parents=True, exist_ok=True)
        self.own(folder.root)
        return folder

    def share(self, name, password=None, folder=None):
        folder = folder or self.home / name
        self._with_password(["share", str(folder)], password)
        return self.active(name, folder)

    def subscribe(self, name, password=None, folder=None, wait=True):
        folder = folder or self.home / name
        wait_until(lambda: (self.pool(name) or {}).get("announced"), 30,
                   f"{self.name} does not see {name}")
        self._with_password(["subscribe", name, str(folder)], password)
        return self.active(name, folder) if wait else Folder(self, name, folder)

    def _with_password(self, arguments, password):
        if password is not None:
            arguments.append("--password-stdin")
        self.command(*arguments, text=password and password + "\n")

    def active(self, name, folder=None):
        wait_until(lambda: (self.pool(name) or {}).get("active"), 120,
                   lambda: f"{self.name}: {name} is not active: {self.pool(name)}")
        return Folder(self, name, folder or self.home / name)

    def log(self):
        try:
            return (self.directory / "zolvard.log").read_text(errors="replace")
        except OSError:
            return ""

    def wait_for_log(self, text, limit=60, since=0):
        wait_until(lambda: text in self.log()[since:], limit, f"{self.name} never said {text!r}")

    def kept(self):
        """What this user can get back: file name → contents, of all Trash folders and versions."""
        share = self.seen(self.home / ".local/share")
        found = {}
        for top in (share / "Trash/files", share / "Zolvar/Trash", share / "Zolvar/versions"):
            for path in top.rglob("*"):
                if path.is_file() and not path.is_symlink() and path.stat().st_size < 1 << 20:
                    found.setdefault(path.name, set()).add(path.read_text(errors="replace"))
        return found


class Folder:
    """One synced folder as it lies on one host."""

    def __init__(self, host, name, path):
        self.host, self.name, self.path = host, name, Path(path)
        self.root = host.seen(path)

    def __str__(self):
        return f"{self.host.name}:{self.path}"

    def at(self, relative):
        return self.root / relative

    def write(self, relative, content, age=0):
        """`age` in seconds sets the file's time back, so that no scan takes it for unfinished."""
        path = self.at(relative)
        self.mkdir(path.parent.relative_to(self.root))
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        self.host.own(path)
        if age:
            os.utime(path, (time.time() - age, int(time.time()) - age))
        return path

    def mkdir(self, relative):
        path = self.at(relative)
        if not path.is_dir():
            self.mkdir(path.parent.relative_to(self.root))
            path.mkdir(exist_ok=True)
            self.host.own(path)

    def link(self, relative, target):
        self.at(relative).symlink_to(target)
        self.host.own(self.at(relative))

    def read(self, relative):
        try:
            return self.at(relative).read_text(errors="replace")
        except OSError:
            return None

    def tree(self):
        """Relative path → what lies there: kind, and content and time, or link target."""
        found = {}
        for directory, folders, files in os.walk(self.root):
            for name in folders + files:
                path = os.path.join(directory, name)
                relative = os.path.relpath(path, self.root)
                if relative.lower().startswith(".zolvar"):
                    continue
                try:
                    if os.path.islink(path):
                        found[relative] = ("link", os.readlink(path))
                    elif os.path.isdir(path):
                        found[relative] = ("directory",)
                    else:
                        facts = os.stat(path)
                        with open(path, "rb") as file:
                            digest = hash(file.read(1 << 22))
                        found[relative] = ("file", facts.st_size, int(facts.st_mtime), digest)
                except OSError:
                    found[relative] = ("vanished",)
        return found

    def conflicts(self):
        return {conflict["path"]: conflict["versions"]
                for conflict in self.host.cli("conflicts", self.name)}

    def rename(self, old, new):
        self.mkdir(self.at(new).parent.relative_to(self.root))
        self.at(old).rename(self.at(new))

    def remove(self, relative):
        path = self.at(relative)
        if not path.is_dir() or path.is_symlink():
            path.unlink()
            return
        # Again while zolvard is making files in it.
        wait_until(lambda: remove_tree(path) or not path.exists(), 60, f"{path} cannot be removed")

    def wait_for_deletion(self, relative):
        """Until this host's own log says that the file is deleted."""
        log = self.root / ".Zolvar" / f"{self.host.user_id}.fplog"

        def last_time():
            with open(log, newline="", errors="replace") as file:
                return [row[3] for row in csv.reader(file) if len(row) > 3 and row[2] == relative][-1:]
        wait_until(lambda: last_time() == ["0"], 60, f"{self}: no deletion of {relative} was logged")

    def version(self, relative, local):
        """The id of the version that this host's user has, or of one that she has not."""
        return next(version["id"] for version in self.conflicts()[relative]
                    if bool(version["local"]) == local)

    def command(self, verb, *arguments):
        return self.host.command(verb, self.name, *arguments)


def survives(content, *folders):
    """Whether some user can still lay hands on `content`, in a folder or among what was kept."""
    for folder in folders:
        for path in folder.root.rglob("*"):
            if path.is_file() and not path.is_symlink() and ".Zolvar" not in path.parts:
                if content == path.read_text(errors="replace"):
                    return True
        if any(content in contents for contents in folder.host.kept().values()):
            return True
    return False


def amount(value):
    return value if isinstance(value, int) else len(value)


def pair(lab, name, **files):
    """The folder with these files, shared on alpha, subscribed to on beta, and the same on both."""
    ann, bob = lab.host("alpha"), lab.host("beta")
    folder = ann.folder(name)
    for path, content in files.items():
        folder.write(path, content, age=1000)
    here, there = ann.share(name), bob.subscribe(name)
    converge(here, there)
    return here, there


def converge(*folders, limit=90, conflicts=0):
    """Waits until all folders hold the same files, nothing is missing, and as many files as told
    are in conflict (None: any number, whose contents may differ). Returns the tree."""

    def difference():
        trees = [folder.tree() for folder in folders]
        disputed = set()
        for folder in folders:
            pool = folder.host.pool(folder.name)
            if not pool or not pool["active"]:
                return f"{folder} is not active: {pool}"
            if amount(pool["missing"]):
                return f"{folder} misses {folder.host.cli('missing', folder.name)}"
            if conflicts is None:
                disputed.update(folder.conflicts())
            elif amount(pool["conflicts"]) != conflicts:
                return f"{folder} has {pool['conflicts']} conflicts"
        for folder, tree in zip(folders[1:], trees[1:]):
            paths = {path for path in trees[0].keys() | tree.keys()
                     if path not in disputed and trees[0].get(path) != tree.get(path)}
            if paths:
                return (f"{folders[0]} and {folder} differ: " + ", ".join(
                    f"{path!r}: {trees[0].get(path)} / {tree.get(path)}" for path in sorted(paths)[:5]))
        return None

    wait_until(lambda: difference() is None, limit, difference)
    return folders[0].tree()


class Lab:
    """The hosts of one test run, and their switch. Use with `with`."""

    def __init__(self, programs, keep=False):
        self.programs = Path(programs).resolve()
        self.keep = keep or bool(os.environ.get("ZOLVAR_LAB_KEEP"))
        self.hosts = {}

    def __enter__(self):
        for old in Path(tempfile.gettempdir()).glob("zolvar-lab-*"):  # left by a run that was killed
            owner = old.name.split("-")[2]
            if owner.isdigit() and not os.path.exists(f"/proc/{owner}"):
                shutil.rmtree(old, ignore_errors=True)
        self.directory = Path(tempfile.mkdtemp(prefix=f"zolvar-lab-{os.getpid()}-"))
        self.directory.chmod(0o755)  # the system bus runs as another user
        self.switch = Namespace()
        self.switch.shell("ip link add bridge type bridge forward_delay 0 mcast_snooping 0\n"
                          "ip link set bridge up")
        return self

    def host(self, name, pace="quick", zolvard=True):
        """The host of that name, made at the first call; its zolvard runs unless told otherwise."""
        if name not in self.hosts:
            self.hosts[name] = Host(self, name, pace)
        host = self.hosts[name]
        if zolvard and not host.zolvard:
            host.start()
        return host

    def tidy(self):
        """Between two scenarios: nobody takes part in anything any more."""
        for host in self.hosts.values():
            for pool in host.cli("list") if host.zolvard else []:
                if pool["active"]:
                    host.command("unsubscribe", pool["name"])

    def report(self, lines=40):
        """What the hosts have to say about a failure."""
        for host in self.hosts.values():
            print(f"--- {host.name}: last lines of its log")
            print("\n".join(host.log().splitlines()[-lines:]))
            if host.zolvard and host.zolvard.running():
                print(f"--- {host.name}: folders")
                print(host.run([ZOLVAR, "list", "--json"]).stdout.strip())
        sys.stdout.flush()

    def __exit__(self, *_):
        for host in self.hosts.values():
            host.close()
        self.switch.close()
        if self.keep:
            print(f"kept: {self.directory}")
        else:
            remove_tree(self.directory)
