"""The ordinary life of a shared folder, at the pace that everybody has."""

from lab import check, converge, wait_until


def scenario_first_share(lab):
    """What one user shares arrives at the other, and each one's changes reach the other."""
    ann, bob = lab.host("alpha", pace="normal"), lab.host("beta", pace="normal")
    plans = ann.folder("Plans")
    old = plans.write("garden.txt", "beans", age=100000).stat().st_mtime
    plans.write("house/roof.txt", "slate", age=5000)
    plans.write("house/cellar/wine.txt", "red", age=5000)
    plans.mkdir("empty")
    plans.link("link", "house/roof.txt")
    here = ann.share("Plans")
    there = bob.subscribe("Plans")
    tree = converge(here, there, limit=240)
    check(tree["garden.txt"][2] == int(old), f"the file's time did not come along: {tree}")
    check(tree["link"] == ("link", "house/roof.txt"), f"no link: {tree}")
    check(there.at("empty").is_dir(), "the empty directory is missing")

    # Both edit, other files; just now, so that the rule for files still being written counts.
    here.write("garden.txt", "beans and peas")
    there.write("house/roof.txt", "straw and slate")
    there.write("house/door.txt", "oak")
    converge(here, there, limit=300)
    check(there.read("garden.txt") == "beans and peas", "ann's edit was lost")
    check(here.read("house/roof.txt") == "straw and slate", "bob's edit was lost")

    # One renames, deletes and moves a directory; the other's copies go to the Trash.
    here.rename("garden.txt", "orchard.txt")
    here.remove("house/door.txt")
    here.rename("house/cellar", "cellar")
    converge(here, there, limit=400)
    check(there.read("orchard.txt") == "beans and peas", "the renamed file did not come")
    check(there.read("garden.txt") is None, "the old name is still there")
    check("oak" in bob.kept().get("door.txt", ()), "the deleted file is in no Trash")

    # Both machines go down; what was changed meanwhile travels when they are back.
    ann.stop()
    bob.stop()
    here.write("while-down.txt", "ann's", age=60)
    there.write("orchard.txt", "plums", age=60)
    ann.start()
    bob.start()
    wait_until(lambda: here.read("orchard.txt") == "plums", 300, "bob's change did not travel")
    converge(here, there, limit=300)
    check(there.read("while-down.txt") == "ann's", "ann's file did not travel")
