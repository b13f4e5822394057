"""Two people work on the same thing at the same time; nobody's work is lost."""

import time

from lab import TooLate, always, check, converge, pair, survives, wait_until


def disputed(path, *folders):
    for folder in folders:
        wait_until(lambda: len(folder.conflicts().get(path, ())) == 2, 60,
                   lambda: f"{folder}: no conflict over {path}: {folder.conflicts()}")


def scenario_edits(lab):
    """Concurrent edits are a conflict on both sides, which a choice resolves on both."""
    here, there = pair(lab, "Edits", used="base", dropped="base", untouched="base")
    for path in ("used", "dropped"):
        here.write(path, "ann's version", age=8)
        there.write(path, "bob's", age=5)
        disputed(path, here, there)
    check((here.read("used"), there.read("used")) == ("ann's version", "bob's"),
          "a conflict changed somebody's file")

    there.command("use", "used", there.version("used", local=False))
    wait_until(lambda: there.read("used") == "ann's version", 60, "the chosen version did not come")
    check(survives("bob's", there), "bob's version is gone")
    here.command("drop", "used", next(version["id"] for version in here.conflicts()["used"]
                                      if version["userId"] == there.host.user_id))
    there.command("drop", "dropped", there.version("dropped", local=True))
    tree = converge(here, there)
    check(here.read("used") == "ann's version", f"the conflict ended otherwise: {tree}")
    check(there.read("dropped") == "ann's version", f"the drop ended otherwise: {tree}")
    there.write("used", "goes on", age=2)
    converge(here, there)
    check(here.read("used") == "goes on", "no edit after the conflict")


def scenario_other_version(lab):
    """A version can be looked at before it is chosen."""
    here, there = pair(lab, "Fetch", text="base")
    here.write("text", "what ann wrote", age=8)
    there.write("text", "what bob wrote!", age=5)
    disputed("text", here, there)
    target = here.host.home / "bobs-text"
    here.command("fetch", "text", here.version("text", local=False), str(target))
    check(here.host.seen(target).read_text() == "what bob wrote!", "another version was fetched")
    check(here.read("text") == "what ann wrote", "fetching changed the folder")


def scenario_copied_by_hand(lab):
    """Before subscribing, bob had copied the folder with other file times and worked in it."""
    ann, bob = lab.host("alpha"), lab.host("beta")
    mine, his = ann.folder("Copied"), bob.folder("Copied")
    for number in range(5):
        mine.write(f"same {number}", f"content {number}", age=5000)
        his.write(f"same {number}", f"content {number}", age=3000)
    mine.write("both", "ann's text", age=5000)
    his.write("both", "bob's longer text", age=3000)
    his.write("only bob's", "bob", age=3000)
    here = ann.share("Copied")
    there = bob.subscribe("Copied")
    wait_until(lambda: here.read("only bob's") == "bob", 60, "bob's file did not come")
    converge(here, there, conflicts=None)
    for content in ("ann's text", "bob's longer text"):
        check(survives(content, here, there), f"{content!r} is lost")
    check({here.read("both"), there.read("both")} == {"ann's text", "bob's longer text"},
          "one of the two versions was replaced without a choice")


def scenario_edit_meets_arrival(lab):
    """Bob saves just when a newer version of the file arrives."""
    here, there = pair(lab, "Meeting", text="base")
    here.write("text", "ann's newer version", age=2)
    last = None
    end = time.monotonic() + 15
    while time.monotonic() < end:
        last = f"bob types on and on {time.monotonic()}"
        there.write("text", last)
        time.sleep(0.15)
    converge(here, there, conflicts=None)
    check(survives(last, here, there), "bob's last save is lost")
    check(survives("ann's newer version", here, there), "ann's version is lost")
    if "text" in here.conflicts():
        here.command("drop", "text", here.version("text", local=False))
        converge(here, there)


def scenario_edit_upon_arrival(lab):
    """Bob saves a file the moment it first appears, while the sync that brought it still runs."""
    here, there = pair(lab, "Eager")
    for number in range(30):
        here.write(f"note {number}", f"ann's {number}", age=1000)
    open_notes = set(range(30))

    def all_answered():
        for number in sorted(open_notes):
            if there.read(f"note {number}"):
                there.write(f"note {number}", f"bob's answer {number}", age=2)
                open_notes.discard(number)
        return not open_notes
    end = time.monotonic() + 60
    while not all_answered():
        if time.monotonic() > end:
            raise TooLate(f"the notes did not come: {open_notes}")
    converge(here, there, conflicts=None)
    for number in range(30):
        check(survives(f"bob's answer {number}", here, there), f"answer {number} is lost")


def scenario_deleted_and_added(lab):
    """Ann deletes a directory; bob has just added a file in it. His file stays."""
    here, there = pair(lab, "Added", **{"box/one": "1", "box/two": "2", "box/inner/three": "3"})
    there.host.stop()
    there.write("box/inner/from bob", "new", age=20)
    there.write("box/one", "edited by bob", age=20)
    here.remove("box")
    here.wait_for_deletion("box/inner/three")
    there.host.start()
    wait_until(lambda: here.read("box/inner/from bob") == "new", 90, "bob's file did not come back")
    converge(here, there, conflicts=None)
    check(there.read("box/inner/from bob") == "new", "bob's file was deleted")
    check(survives("edited by bob", here, there), "bob's edit is lost")
    check(there.read("box/two") is None, "the deletion did not reach bob")
    check("2" in there.host.kept().get("two", ()), "the deleted file is in no Trash")


def scenario_deleted_and_edited(lab):
    """One deletes what the other has just edited: the edit stays."""
    here, there = pair(lab, "Opposed", letter="draft")
    there.host.stop()
    there.write("letter", "bob's fair copy", age=20)
    here.remove("letter")
    here.wait_for_deletion("letter")
    there.host.start()
    converge(here, there, conflicts=None)
    check(survives("bob's fair copy", here, there), "the edit is lost")
    always(lambda: there.read("letter") == "bob's fair copy", 10, "the edited file was taken away")
