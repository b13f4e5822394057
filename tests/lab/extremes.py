"""Very many files, and very long paths."""

import os
import time
from pathlib import Path

from disks import pair, said
from lab import check, converge, wait_until

LONGEST = 4095  # bytes of a path, its folder included; the system's 4,096 have a NUL at the end


def scenario_many_files(lab):
    """50,000 files in one directory arrive, change and go."""
    count = 50_000
    ann, bob = lab.host("alpha"), lab.host("beta")
    here = ann.folder("Many")
    here.mkdir("many")
    long_ago = time.time() - 5000
    for number in range(count):
        path = here.at(f"many/a file with a name, number {number}")
        path.write_text(f"{number}")
        os.utime(path, (long_ago, int(long_ago)))
        ann.own(path)
    here, there = ann.share("Many"), bob.subscribe("Many")
    target = there.at("many")
    wait_until(lambda: target.is_dir() and len(os.listdir(target)) == count, 180,
               lambda: f"only {len(os.listdir(target)) if target.is_dir() else 0} files arrived")
    converge(here, there)
    start = time.monotonic()
    there.write("many/a file with a name, number 777", "bob", age=3)
    wait_until(lambda: here.read("many/a file with a name, number 777") == "bob", 60,
               "an edit among many files did not travel")
    print(f"an edit among {count} files took {time.monotonic() - start:.1f} s", flush=True)
    here.remove("many")
    wait_until(lambda: not target.exists(), 180, "the directory was not deleted at bob's")
    trash = bob.seen(bob.home / ".local/share/Trash/files")
    kept = sum(len(names) for _, _, names in os.walk(trash))
    check(kept >= count, f"only {kept} files are in bob's Trash")


def make_deep(folder, size):
    """Writes a file whose path is `size` bytes long with its folder; returns it without."""
    path = "deep"
    size -= len(os.fsencode(folder.path)) + 1
    while len(path) < size - 210:
        path += "/" + "d" * 199
    path += "/" + "f" * (size - len(path) - 1)
    at = os.open(folder.root, os.O_DIRECTORY)
    *steps, name = path.split("/")
    for step in steps:
        try:
            os.mkdir(step, dir_fd=at)
        except FileExistsError:
            pass
        os.chown(step, folder.host.uid, folder.host.uid, dir_fd=at)
        below = os.open(step, os.O_DIRECTORY, dir_fd=at)
        os.close(at)
        at = below
    file = os.open(name, os.O_WRONLY | os.O_CREAT, 0o644, dir_fd=at)
    os.write(file, b"deep down")
    os.fchown(file, folder.host.uid, folder.host.uid)
    os.utime(file, (time.time() - 30, int(time.time()) - 30))
    os.close(file)
    os.close(at)
    return path


def read_deep(folder, path):
    """Reads a file whose path is too long for one call; none when it is not there."""
    at = os.open(folder.root, os.O_DIRECTORY)
    *steps, name = path.split("/")
    try:
        for step in steps:
            below = os.open(step, os.O_DIRECTORY, dir_fd=at)
            os.close(at)
            at = below
        file = os.open(name, os.O_RDONLY, dir_fd=at)
        content = os.read(file, 100)
        os.close(file)
        return content.decode()
    except OSError:
        return None
    finally:
        os.close(at)


def scenario_deep_paths(lab):
    """A path as long as the system takes arrives; one byte more is refused with a sentence, and
    nothing else happens. At the other's the folder's own path is longer."""
    ann, bob, here, there = pair(lab, "Deep", Path("/home/bob/a folder with a longer name/Deep"))
    longest = make_deep(here, LONGEST)
    wait_until(lambda: read_deep(there, longest) == "deep down", 90, "the longest path did not arrive")
    since = len(ann.log())
    beyond = make_deep(here, LONGEST + 1)
    here.write("after", "still works", age=5)
    said(ann, "longer than", since)
    wait_until(lambda: there.read("after") == "still works", 90, "one long path holds everything up")
    check(read_deep(there, beyond) is None, "a path too long for the system arrived")
    check(read_deep(here, beyond) == "deep down", "a file with a long path is gone")
    wait_until(lambda: not ann.pool("Deep")["missing"] and not bob.pool("Deep")["missing"], 30,
               "something is missing")
    there.write("one", "back", age=5)
    wait_until(lambda: here.read("one") == "back", 90, "nothing travels any more")
    check(ann.log()[since:].count("longer than") == 1, "the sentence is said again and again")

    here.remove("deep")
    wait_until(lambda: read_deep(there, longest) is None, 90, "the deletion did not travel")
    kept = [os.path.join(top, name) for top, _, names in os.walk(bob.seen(bob.home / ".local/share"))
            for name in names if name.startswith("ff")]
    check(kept, "the deep file cannot be had back")
