"""Disks that are full, read-only or closed: each time a sentence says so, nothing is lost, and
when the disk is better everything goes on without anybody's doing. All users here are ordinary
ones: permissions would mean nothing to root."""

import os
import time

from lab import always, check, converge, survives, wait_until


def small_disk(host, megabytes):
    """A disk of its own, where the host's user may put a folder; returns its path."""
    place = host.home / f"disk{len(list(host.seen(host.home).glob('disk*')))}"
    host.shell(f"mkdir {place}\nmount -t tmpfs -o size={megabytes}m,mode=755,uid={host.uid},"
               f"gid={host.uid} tmpfs {place}")
    return place


def pair(lab, name, folder=None, files=()):
    ann, bob = lab.host("alpha"), lab.host("beta")
    here = ann.folder(name)
    for path, content in {"one": "1", "deep/two": "2", **dict(files)}.items():
        here.write(path, content, age=1000)
    here, there = ann.share(name), bob.subscribe(name, folder=folder)
    converge(here, there)
    return ann, bob, here, there


def said(host, text, since):
    host.wait_for_log(text, 90, since)


def scenario_full_disk(lab):
    """The receiver's disk is full to the last byte, in the middle of his own work too."""
    bob = lab.host("beta")
    disk = small_disk(bob, 12)
    ann, bob, here, there = pair(lab, "Full", disk / "Full", {"of bob": "short"})
    since = len(bob.log())
    here.write("large", os.urandom(20 << 20), age=30)
    said(bob, "No space left on device", since)
    wait_until(lambda: (bob.pool("Full") or {}).get("missing") == 1, 60,
               lambda: f"the large file is not said to be missing: {bob.pool('Full')}")

    ballast = bob.seen(disk / "ballast")
    with open(ballast, "wb", buffering=0) as file:
        try:
            while True:
                file.write(bytes(1 << 12))
        except OSError:
            pass
    since = len(bob.log())
    here.write("one", "ann, while bob's disk was full", age=5)
    here.write("new", "new while bob's disk was full", age=5)
    here.remove("deep/two")
    there.at("of bob").write_text("bob, on a full disk")  # fits into the block it has
    bob.own(there.at("of bob"))
    said(bob, "No space left on device", since)
    always(lambda: bob.zolvard.running() and there.read("of bob") == "bob, on a full disk", 15,
           "bob's work did not outlast the full disk")
    check(there.read("one") in ("1", "ann, while bob's disk was full"), "half a file is there")

    bob.shell(f"mount -o remount,size=100m {disk}")
    ballast.unlink()
    converge(here, there, limit=180)
    check(here.read("of bob") == "bob, on a full disk", "bob's edit did not travel")
    check(there.read("one") == "ann, while bob's disk was full", "ann's edit did not arrive")
    check(there.at("large").stat().st_size == 20 << 20, "the large file did not arrive")
    check(not list(there.root.glob(".large.*")), "leftovers of the transfers remain")
    check("2" in bob.kept().get("two", ()) or list(bob.seen(disk).glob(".Trash-*/files/two")),
          "the deleted file is in no Trash")


def scenario_full_support(lab):
    """The disk is full on which the program keeps its own records, not the folder's."""
    ann, bob, here, there = pair(lab, "Records")
    since = len(bob.log())
    bob.stop()
    place = bob.home / ".local/share"
    bob.shell(f"""cp -a {place} {place}.before
        mount -t tmpfs -o size=1m,mode=700,uid={bob.uid},gid={bob.uid} tmpfs {place}
        cp -a {place}.before/. {place}/
        head -c 2000000 /dev/zero > {place}/ballast || true""")
    bob.start()
    here.write("one", "ann 2", age=5)
    here.write("three", "3", age=5)
    there.write("deep/two", "bob 2", age=5)
    there.write("of bob", "bob's", age=5)
    # Without room for what an arriving file replaces, nothing is replaced.
    said(bob, "keep_backup failed", since)
    always(lambda: there.read("one") == "1" and there.read("deep/two") == "bob 2", 10,
           "files changed while nothing could be recorded")
    bob.seen(place / "ballast").unlink()
    converge(here, there, limit=120)
    for number in range(2):
        check(there.read("one") == "ann 2" and there.read("three") == "3", "ann's edits are lost")
        check(here.read("deep/two") == "bob 2" and here.read("of bob") == "bob's",
              "bob's edits are lost")
        if number == 0:
            bob.restart()
            converge(here, there)


def scenario_read_only(lab):
    """The receiver's disk becomes read-only while it is in use, and writable again."""
    bob = lab.host("beta")
    disk = small_disk(bob, 50)
    ann, bob, here, there = pair(lab, "Fixed", disk / "Fixed")
    since = len(bob.log())
    bob.shell(f"mount -o remount,ro {disk}")
    here.write("one", "ann, while bob could not write", age=5)
    here.write("three", "3", age=5)
    here.remove("deep/two")
    said(bob, "Read-only file system", since)
    always(lambda: bob.zolvard.running() and there.read("deep/two") == "2", 10,
           "a read-only folder changed")
    check(here.read("one") == "ann, while bob could not write", "ann's edit is lost")
    check(len(bob.log()) - since < 100_000, "bob's log is flooded")
    bob.shell(f"mount -o remount,rw {disk}")
    converge(here, there, limit=120)
    check(there.read("one") == "ann, while bob could not write", "ann's edit did not arrive")


def scenario_permissions(lab):
    """Files and directories are closed to their own user, on both sides, and opened again."""
    files = {"locked/inner": "inner", "secret": "secret", "locked/deeper/inmost": "inmost"}
    ann, bob, here, there = pair(lab, "Permits", files=files)
    since = {host: len(host.log()) for host in (ann, bob)}
    there.at("locked").chmod(0)  # bob's program cannot even look
    here.write("locked/inner", "ann 2", age=5)
    here.write("locked/new", "new", age=5)
    here.write("hidden", "unreadable at ann's", age=5).chmod(0)
    here.write("plain", "travels all the same", age=5)
    wait_until(lambda: there.read("plain") == "travels all the same", 90,
               "one closed directory holds everything up")
    said(bob, "ermission denied", since[bob])
    always(lambda: here.read("locked/deeper/inmost") == "inmost", 12,
           "what bob cannot see was taken for deleted")

    here.root.chmod(0)  # now the sender's folder as a whole
    time.sleep(6)
    check(ann.zolvard.running() and there.read("secret") == "secret",
          "what ann cannot see was taken for deleted")
    said(ann, "'Permits' is not accessible", since[ann])
    here.root.chmod(0o755)
    here.at("hidden").chmod(0o644)
    there.at("locked").chmod(0o755)
    converge(here, there, limit=150)
    check(there.read("hidden") == "unreadable at ann's" and there.read("locked/new") == "new",
          "what was closed did not travel afterwards")

    # Without the right to write, a directory keeps its files; the transfer tool opens it for what
    # it brings, and closes it again at its end.
    there.at("locked").chmod(0o555)
    since[bob] = len(bob.log())
    here.write("locked/late", "late", age=5)
    here.remove("locked/inner")
    here.write("secret", "changed", age=5)
    wait_until(lambda: there.read("secret") == "changed", 90, "one directory holds everything up")
    said(bob, "Could not move to the Trash 'Permits/locked/inner'", since[bob])
    wait_until(lambda: not bob.pool("Permits")["syncing"], 60, "bob's sync does not end")
    check(there.read("locked/inner") == "ann 2", "deleted in a directory that cannot be written")
    check(here.read("locked/inner") is None, "the deletion was undone")
    there.at("locked").chmod(0o755)
    converge(here, there, limit=150)
    check(there.read("locked/late") == "late" and there.read("locked/inner") is None,
          "what was held up did not arrive")


def scenario_directory_in_the_way(lab):
    """Where one made a file the other made a directory, with work in it."""
    ann, bob, here, there = pair(lab, "Way")
    bob.stop()
    there.write("report/draft", "bob's draft", age=20)
    here.write("report", "ann's report", age=10)
    here.write("other", "arrives", age=10)
    bob.start()
    wait_until(lambda: there.read("other") == "arrives", 90, "one path holds everything up")
    # What lives in a directory keeps it: the file, which is a logged version, makes way.
    wait_until(lambda: here.read("report/draft") == "bob's draft", 60, "the draft does not arrive")
    converge(here, there, limit=120, conflicts=None)
    check(there.read("report/draft") == "bob's draft", "the draft was moved")
    check(survives("ann's report", here), "ann's report is lost")
