"""Whatever files are called, whatever they hold, and whatever is done to them."""

import os

from lab import always, check, converge, wait_until

NAMES = [
    " leading blank", "trailing blank ", "two  blanks", 'a "quoted" name', "it's", "comma, semi; colon:",
    "#hash", ";semicolon", "-dash", "--delete", "-", "back\\slash", "back\\#101slash", "trailing\\",
    "%HOME% %s", "[brackets]*?", "$(touch pwned)", "`touch pwned`", "tab\tinside", "ünïcödé-ß",
    "e\u0301 decomposed", "日本語", "🎈", ".hidden", "...", "..two", ".env.sample", ".name.AbCdEf",
    "name~", "x" * 200, "ä" * 100, "y" * 250, "&<>|", "a=b", "@ERROR: no", "2026/11/22 10:00:00 x",
]


def pair(lab, name):
    ann, bob = lab.host("alpha"), lab.host("beta")
    ann.folder(name)
    return ann, bob, ann.share(name), bob.subscribe(name)


def scenario_names(lab):
    """Names that have a meaning to somebody on the way arrive as they are, also as directories."""
    ann, bob, here, there = pair(lab, "Names")
    for index, name in enumerate(NAMES):
        here.write(name, f"content {index}", age=100 + index)
        if len(name.encode()) < 200:
            there.write(f"of bob/{name}/{name}", f"from bob {index}", age=100 + index)
    tree = converge(here, there, limit=120)
    for index, name in enumerate(NAMES):
        check(there.read(name) == f"content {index}", f"{name!r} is wrong at bob's")
        check(name in tree, f"{name!r} is missing")
    check(not any("pwned" == name for name in os.listdir(there.root)), "a name was run")
    for index, name in enumerate(NAMES):
        if index % 2:
            there.remove(name)
        else:
            there.write(name, f"changed {index}", age=20)
    converge(here, there, limit=120)
    for index, name in enumerate(NAMES):
        check(here.read(name) == (None if index % 2 else f"changed {index}"),
              f"{name!r}: the change did not travel")


def scenario_sizes(lab):
    """Nothing, a lot, and many."""
    ann, bob, here, there = pair(lab, "Sizes")
    here.write("empty", "", age=50)
    with open(here.at("large"), "wb") as file:
        block = os.urandom(1 << 20)
        for number in range(300):
            file.write(number.to_bytes(4, "big") + block[4:])
    ann.own(here.at("large"))
    os.utime(here.at("large"), (1, 1_600_000_000))
    for number in range(2000):
        there.write(f"many/{number % 20}/{number}", f"file {number}", age=50)
    converge(here, there, limit=300)
    check(there.at("large").stat().st_size == 300 << 20, "the large file has another size")
    there.at("large").write_bytes(b"now small")
    here.write("empty", "no more")
    converge(here, there)
    here.remove("many")
    converge(here, there)
    check(len(bob.kept()) >= 2000, "not all deleted files are in the Trash")


def scenario_kinds(lab):
    """Directories, links and files take each other's place."""
    ann, bob, here, there = pair(lab, "Kinds")
    for name in ("file to directory", "directory to file/inner", "file to link", "deep/er/est"):
        here.write(name, name, age=100)
    here.link("link", "deep/er")
    here.link("dangling", "nowhere")
    converge(here, there)
    here.remove("file to directory")
    here.write("file to directory/now inner", "new", age=20)
    there.remove("directory to file")
    there.write("directory to file", "a file now", age=20)
    here.remove("file to link")
    here.link("file to link", "deep")
    here.rename("deep", "shallow/deep")
    there.remove("link")
    there.link("link", "shallow")
    there.mkdir("new/empty/directories")
    tree = converge(here, there, limit=150)
    check(tree["directory to file"][0] == "file", f"still a directory: {tree}")
    check(tree["file to link"] == ("link", "deep"), f"no link: {tree}")
    check(tree["link"] == ("link", "shallow"), f"the link kept its target: {tree}")
    check(there.read("file to directory/now inner") == "new", "the directory's file is missing")
    check("new/empty/directories" in tree and "deep" not in tree, f"directories: {tree}")


def scenario_question(lab):
    """A file that vanished is a question; each of its answers is carried out."""
    ann, bob, here, there = pair(lab, "Question")
    ann.command("set", "HeadlessDeleteAnswer", "ask")
    try:
        here.write("asked", "precious", age=100)
        here.write("other", "stays", age=100)
        converge(here, there)
        here.remove("asked")
        wait_until(lambda: "asked" in str(ann.cli("question")), 60, "nobody asked")
        always(lambda: there.read("asked") == "precious", 6, "deleted before anyone had answered")
        check(ann.pool("Question")["state"] == "question open", f"it says {ann.pool('Question')}")
        ann.command("answer", "Question", "reget")
        wait_until(lambda: here.read("asked") == "precious", 60, "not fetched again")
        converge(here, there)  # gone before its arrival was noted, it would just be fetched again
        here.remove("asked")
        wait_until(lambda: "asked" in str(ann.cli("question")), 60, "nobody asked again")
        ann.command("answer", "Question", "delete")
        wait_until(lambda: there.read("asked") is None, 60, "not deleted at bob's")
        check("precious" in bob.kept().get("asked", ()), "bob's copy is in no Trash")
        converge(here, there)
    finally:
        ann.command("set", "HeadlessDeleteAnswer", "delete")
