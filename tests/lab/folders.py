"""Folders that move, vanish and come back, and a port that somebody else has."""

import os
import time

from lab import Failed, Process, Refused, always, check, converge, wait_until


def pair(lab, name, **options):
    ann, bob = lab.host("alpha"), lab.host("beta")
    folder = ann.folder(name)
    folder.write("one", "1", age=1000)
    folder.write("deep/two", "2", age=1000)
    here, there = ann.share(name), bob.subscribe(name, **options)
    converge(here, there)
    return ann, bob, here, there


def scenario_port_taken(lab):
    """Another program has the port; the next one serves."""
    ann = lab.host("alpha", zolvard=False)
    taken = Process(ann, ["python3", "-c", "import socket, signal; s = socket.socket(); "
                          "s.bind(('', 49999)); s.listen(); signal.pause()"], ann.directory / "taken")
    time.sleep(1)
    ann, bob, here, there = pair(lab, "Ports")
    check(ann.cli("status")["port"] == 50000, f"{ann.cli('status')}")
    there.write("one", "through another port", age=5)
    here.write("deep/two", "through another port as well", age=5)
    converge(here, there)
    taken.end()


def scenario_moved(lab):
    """A folder is moved while it is watched, and while nothing runs."""
    ann, bob, here, there = pair(lab, "Moves")

    def at(place):
        here.path, here.root = place, ann.seen(place)
        wait_until(lambda: ann.pool("Moves")["folder"] == str(place), 60,
                   lambda: f"not followed to {place}: {ann.pool('Moves')}")

    for turn, running in enumerate((True, False)):
        place = ann.home / f"drawer {turn}" / "Moves"
        if not running:
            ann.stop()
        target = ann.seen(place)
        target.parent.mkdir()
        ann.own(target.parent)
        here.root.rename(target)
        if not running:
            ann.start()
        at(place)
        here.write("one", f"moved {turn}", age=5)
        converge(here, there)
        there.write("deep/two", f"to the new place {turn}", age=5)
        converge(here, there)
        check(here.read("deep/two") == f"to the new place {turn}", "not written to the new place")
    # A load of logs that was starting at that moment may have put them there; no file goes there.
    old = ann.seen(ann.home / "Moves")
    check(not old.exists() or os.listdir(old) == [".Zolvar"], "the old place was made again")


def scenario_removed(lab):
    """A folder that was removed stays removed, and nothing is deleted anywhere else."""
    ann, bob, here, there = pair(lab, "Removed")
    before = here.tree()
    there.remove(".")
    here.write("new", "after", age=5)
    always(lambda: all(path in here.tree() for path in before), 15, "files were deleted at ann's")
    check(not there.root.exists(), "the removed folder was made again")
    bob.restart()
    time.sleep(5)
    check(not there.root.exists(), "the removed folder was made again after a restart")
    check(all(path in here.tree() for path in before), "files were deleted at ann's")


def scenario_unmounted(lab):
    """A folder on a disk that is unmounted is not an empty folder."""
    ann, bob = lab.host("alpha"), lab.host("beta")
    disk, place = bob.home / "disk", bob.home / "mounted"
    bob.shell(f"mkdir -p {disk}/Mounts {place}; chown -R {bob.uid}:{bob.uid} {disk} {place}\nmount --bind {disk} {place}")
    ann, bob, here, there = pair(lab, "Mounts", folder=place / "Mounts")
    before = here.tree()
    bob.shell(f"umount -l {place}")
    here.write("one", "while unmounted", age=5)
    always(lambda: here.tree().keys() >= before.keys(), 12, "files were deleted at ann's")
    check(not bob.seen(place / "Mounts").exists(), "the folder was made on the wrong disk")
    bob.restart()
    always(lambda: here.tree().keys() >= before.keys(), 8, "files were deleted after the restart")
    check(not bob.seen(place / "Mounts").exists(), "the folder was made on the wrong disk")
    bob.shell(f"mount --bind {disk} {place}")
    if not bob.pool("Mounts")["active"]:
        bob.restart()
    converge(here, there)
    check(there.read("one") == "while unmounted", "ann's edit did not arrive")


def scenario_emptied(lab):
    """A folder whose metadata folder is gone too is not taken for one whose files were deleted."""
    ann, bob, here, there = pair(lab, "Emptied")
    for path in there.root.iterdir():
        there.remove(path.name)
    always(lambda: here.read("one") == "1" and here.read("deep/two") == "2", 15,
           "files were deleted at ann's")


def scenario_remove_and_refuse(lab):
    """What cannot be shared is refused with a sentence; a removed folder goes to the Trash."""
    ann, bob, here, there = pair(lab, "Refuses")
    for name in ("with:colon", "percent%", "bracket[", "Refuses/deep", "trailing "):
        ann.folder(name)
        try:
            ann.command("share", str(ann.home / name))
        except Refused as refusal:
            check(len(str(refusal)) > 10, f"{name!r} was refused without a sentence")
        else:
            raise Failed(f"{name!r} was shared")
    bob.command("remove", "Refuses", "--yes")
    wait_until(lambda: not there.root.exists(), 30, "the folder is still there")
    check("2" in bob.kept().get("two", ()),
          "the removed folder is in no Trash")
    always(lambda: here.read("deep/two") == "2", 5, "removing here deleted there")
