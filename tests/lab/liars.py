"""A participant who lies: a transfer daemon and announcements made by hand. Every lie is refused
with a warning, and everything else goes on."""

import os
import shutil
import time

from lab import ZOLVAR, Process, always, check, converge, pair, wait_until

PORT = 49999
LIAR = "mallory@gamma.local"


def string_hash(text):
    """FNV-1a, as announcements hold it of the folder's name."""
    value = 2166136261
    for byte in text:
        value = (value ^ byte) * 16777619 & 0xffffffff
    return f"{value:08x}"


def row(log_time, path, mod_time, parent_time=0, parent_user="", fields=6):
    values = [log_time, parent_time, path, mod_time, parent_user, ""][:fields]
    quoted = [b'"' + (value if isinstance(value, bytes) else str(value).encode()).replace(b'"', b'""')
              + b'"' for value in values]
    return b",".join(quoted) + b"\n"


class Liar:
    """A host without zolvard that serves and announces whatever it is told to."""

    def __init__(self, lab):
        self.host = lab.host("gamma", zolvard=False)
        self.served = self.host.directory / "served"
        self.log = self.host.directory / "rsyncd.log"
        shutil.rmtree(self.served, ignore_errors=True)
        self.served.mkdir()
        for old in (self.host.directory / "services").iterdir():
            old.unlink()
        self.config = self.host.directory / "rsyncd.conf"
        self.config.write_text(f"use chroot = no\nlog file = {self.log}\nuid = root\ngid = root\n"
                               "munge symlinks = no\n")
        self.daemon = Process(self.host, ["rsync", "--daemon", "--no-detach", f"--port={PORT}",
                                          f"--config={self.config}"], self.host.directory / "rsync.out")

    def close(self):
        self.daemon.end()
        for announcement in (self.host.directory / "services").iterdir():
            announcement.unlink()

    def module(self, name):
        path = self.served / name
        (path / ".Zolvar").mkdir(parents=True)
        with open(self.config, "a") as file:
            file.write(f"[{name}]\npath = {path}\n")
        return path

    def announce(self, fsn, file="a", service=None, version=b"\0\0\0\2", **others):
        """Publishes, or publishes anew, with a digest never seen before."""
        values = {"v": version, "fsn": fsn, "logcs": os.urandom(16), **others}
        records = "".join(f'<txt-record value-format="binary-hex">{key}={value.hex()}</txt-record>'
                          for key, value in values.items() if value is not None)
        service = f"{service or f'{LIAR}:{PORT}'}/{string_hash(fsn)}"
        target = self.host.directory / "services" / f"{file}.service"
        temporary = self.host.directory / f"{file}.service"
        temporary.write_text(
            '<?xml version="1.0" standalone="no"?><!DOCTYPE service-group SYSTEM "avahi-service.dtd">'
            f"<service-group><name>{service}</name><service><type>_zolvar._tcp</type>"
            f"<port>{PORT}</port>{records}</service></service-group>")
        temporary.rename(target)

    def asked_for(self, text):
        return self.log.exists() and text in self.log.read_text(errors="replace")


def scenario_announcements(lab):
    """Names that would be paths, configuration or rubbish never become folders."""
    ann, bob = lab.host("alpha"), lab.host("beta")
    liar = Liar(lab)
    lies = [b"../x", b"/etc", b"y" * 245, b"x\npath = /\n[evil]\nread only = no", b"trailing\\",
            b"%HOME%", b"global", b"..", b"a/b", b"c:d", b"[e]", b" f", b"g\x00h", b"\xff\xfe", b"",
            b"i\rj", b"k\x1b[2J"]
    for number, lie in enumerate(lies):
        liar.announce(lie, f"lie{number}", f"mallory{number}@gamma.local:{PORT}")
    hosts = [f"mallory@evil.example.com:{PORT}", f"mallory@10.1.2.3:{PORT}", "mallory@gamma.local:873",
             "mallory@gamma.local:99999999999", f"@gamma.local:{PORT}", "nothing of the kind",
             f"m@gamma.local -e sh:{PORT}", f"mallory@gamma.local:{PORT}/0"]
    for number, service in enumerate(hosts):
        liar.announce(b"Outside%d" % number, f"host{number}", service)
    liar.announce(b"Older", "older", version=None)
    liar.announce(b"Newer", "newer", version=b"\0\0\0\3")
    liar.announce(b"Short", "short", version=b"\0\0\2")
    liar.announce(b"Honest", "honest")
    ann.folder("True").write("file", "true", age=100)
    here, there = ann.share("True"), bob.subscribe("True")
    for host in (ann, bob):
        wait_until(lambda: host.pool("Honest"), 60, "the honest announcement was not seen")
    converge(here, there)
    for host in (ann, bob):
        names = {pool["name"] for pool in host.cli("list")}
        check(names <= {"True", "Honest", "Older", "Newer", "Short", *ann_folders(host)},
              f"{host.name} believes in {names}")
        check(host.zolvard.running(), f"{host.name} ended")
        configurations = list(host.seen(host.home / ".local/share/Zolvar").glob("instance-*.fpcfg"))
        check(len(configurations) == 1, f"configurations: {configurations}")
        check("evil" not in configurations[0].read_text(), "an announced name became configuration")
        check("warning: " in host.log(), f"{host.name} warned of nothing")
    # Protocols that we do not speak are not spoken to.
    for name in ("Older", "Newer", "Short"):
        module = liar.module(name)
        (module / "file").write_text("other protocol")
        if ann.pool(name) and ann.pool(name)["announced"]:
            ann.run([ZOLVAR, "subscribe", name, str(ann.home / name)])
    time.sleep(12)
    for name in ("Older", "Newer", "Short"):
        check(not ann.seen(ann.home / name / "file").exists() and not liar.asked_for(f"rsync on {name}"),
              f"synced with {name}")
        if ann.pool(name):
            ann.run([ZOLVAR, "unsubscribe", name])
    liar.close()


def ann_folders(host):
    """Folders of earlier scenarios, which are no longer taken part in."""
    return {pool["name"] for pool in host.cli("list") if pool["folder"]}


def scenario_logs(lab):
    """Paths that lead out of the folder, rows that are none, and times that cannot be."""
    liar = Liar(lab)
    module = liar.module("Gifts")
    here, there = pair(lab, "Gifts", hers="ann's")
    victim = here.host.seen(here.host.home / "victim")
    victim.mkdir()
    here.host.own(victim)
    here.link("alias", "../victim")
    now = int(time.time()) - 500
    year = now + 365 * 86400
    good = ["good", "deep/good", "after the rubbish"]
    rows = [row(now + 1, "good", now), row(now + 1, "deep/good", now)]
    bad = ["../escaped", "deep/../../escaped", f"{here.host.home}/escaped", "alias/escaped",
           "./escaped", "deep//escaped", "deep/.", "..", "", "escaped/", ".Zolvar/escaped",
           ".ZOLVAR/escaped.fplog", ".zolvar", f".Zolvar/{here.host.user_id}.fplog", "served link/escaped",
           "n" * 256, "d/" * 2100 + "x", b"nul\0byte", b"\xff\xfe\xfd", "carriage\rreturn"]
    rows += [row(now + 2, path, now) for path in bad]
    rows += [row(now + 3, "two fields", 0, fields=2), row(now + 3, "four fields", 0, fields=4),
             row("nan", "not a number", now), row("inf", "endless", now), row(-5, "negative", now),
             row(1e300, "too late", now), row(now + 3, "own child", now, now + 3),
             row(now + 3, "before its parent", now, now + 400, here.host.user_id),
             b'"unclosed, quote\n', b"\x00\x01\x02\xfe\xff" * 50 + b"\n", b"\n", b",,,,,,,,,,\n", b'"\n',
             row(now + 4, "after the rubbish", now),
             row(year, "future", now), row(year + 5, "future", now + 1, year)]
    log = module / ".Zolvar" / f"{LIAR}.fplog"
    log.write_bytes(b"".join(rows) + b'"%d","0","cut off' % (year + 6))
    for name in good + ["future", "escaped", "two fields", "four fields", "endless", "n" * 250]:
        path = module / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(f"mallory's {name}")
        os.utime(path, (now + (name == "future"), now + (name == "future")))
    (module / "served link").symlink_to(victim)
    (module / "alias").mkdir()
    (module / "alias/escaped").write_text("through a link of yours")
    (module / ".Zolvar/evil.sh").write_text("#!/bin/sh\n")
    (module / ".Zolvar/todos.plist").write_bytes(b"<plist>" + b"<array>" * 100000)
    (module / ".Zolvar/picture@gamma.local.tiff").write_bytes(b"II" * (1 << 20))
    (module / ".Zolvar/deeper").mkdir()
    (module / ".Zolvar/deeper/x@y.local.fplog").write_bytes(row(now, "deeper", now))
    marks = [len(folder.host.log()) for folder in (here, there)]
    liar.announce(b"Gifts")
    for folder, mark in zip((here, there), marks):
        for name in good + ["future"]:
            wait_until(lambda: folder.read(name) == f"mallory's {name}", 90,
                       lambda: f"{folder}: {name} did not come, missing "
                               f"{folder.host.cli('missing', 'Gifts')}")
        wait_until(lambda: not {*good, "future"} & set(folder.host.cli("missing", "Gifts")), 60,
                   lambda: f"{folder} still misses {folder.host.cli('missing', 'Gifts')}")
        check("warning: " in folder.host.log()[mark:], f"{folder.host.name} warned of nothing")
        outside = [path for path in folder.host.seen(folder.host.home).rglob("*escaped*") if path.is_file()]
        check(not outside, f"something got out: {outside}")
        wait_until(lambda: not {"evil.sh", "deeper", "picture@gamma.local.tiff"} &
                   set(os.listdir(folder.root / ".Zolvar")), 30,
                   lambda: f"left in the metadata folder: {os.listdir(folder.root / '.Zolvar')}")
    check(not any(victim.iterdir()), f"written through a link: {list(victim.iterdir())}")

    # The others go on, also upon what the liar dated in the future.
    there.write("future", "bob's edit of the future", age=2)
    there.write("hers", "bob's edit", age=2)
    here.write("new", "ann's new file", age=2)
    for folder in (here, there):
        wait_until(lambda: folder.read("future") == "bob's edit of the future" and
                   folder.read("hers") == "bob's edit" and folder.read("new") == "ann's new file", 60,
                   lambda: f"{folder} stands still: {folder.tree()}")
    liar.close()


def scenario_own_log(lab):
    """Older, shorter and rewritten copies of somebody's log take nothing from it."""
    liar = Liar(lab)
    module = liar.module("Logs")
    here, there = pair(lab, "Logs", hers="ann's")
    for turn in range(3):
        here.write("hers", f"edit {turn}", age=8 - turn)
        there.write(f"his {turn}", "bob's", age=8)
        converge(here, there)
    name = f"{here.host.user_id}.fplog"
    own = here.root / ".Zolvar" / name
    whole = own.read_bytes()
    lines = whole.splitlines(keepends=True)
    check(len(lines) >= 4, f"too short a log for this: {whole}")
    now = int(time.time())
    copies = {
        "an older": b"".join(lines[:2]),
        "a shorter": whole[:len(whole) // 2 + 3],
        "an empty": b"",
        "a rewritten": b"".join(lines[:1]) + row(now - 400, "made up", now - 400) + b"".join(lines[2:]),
    }
    for number, (what, content) in enumerate(copies.items()):
        served = module / ".Zolvar" / name
        served.write_bytes(content)
        os.utime(served, (now + 100 + 50 * number,) * 2)
        liar.announce(b"Logs")
        wait_until(lambda: liar.asked_for("Logs/.Zolvar"), 60, "nobody loaded the logs")
        here.write("hers", f"with {what} copy about", age=2)
        wait_until(lambda: there.read("hers") == f"with {what} copy about", 90,
                   f"ann's edits no longer arrive with {what} copy about")
        for folder in (here, there):
            wait_until(lambda: all(line in (folder.root / ".Zolvar" / name).read_bytes()
                                   for line in lines), 60, f"{folder} lost lines to {what} copy")
    check(here.read("hers") == there.read("hers") and here.read("his 0") == "bob's",
          "files changed with the logs")
    liar.close()


def scenario_impostor(lab):
    """Somebody announces a folder under ann's own id: hers is not overwritten."""
    liar = Liar(lab)
    module = liar.module("Mine")
    here, there = pair(lab, "Mine", hers="ann's")
    shutil.copytree(here.root, module, dirs_exist_ok=True, symlinks=True)
    liar.announce(b"Mine", service=f"{here.host.user_id}:{PORT + 1}")
    always(lambda: here.read("hers") == "ann's" and here.host.zolvard.running(), 12,
           "the impostor changed something")
    liar.close()
