"""Three machines that are never all awake."""

from lab import amount, check, converge, survives, wait_until


def three(lab, name):
    hosts = [lab.host(host) for host in ("alpha", "beta", "gamma")]
    hosts[0].folder(name).write("text", "base", age=1000)
    folders = [hosts[0].share(name)] + [host.subscribe(name) for host in hosts[1:]]
    converge(*folders)
    return hosts, folders


def scenario_through_a_third(lab):
    """The author's edit reaches the third from the second, after the author has left."""
    (ann, bob, cem), (here, there, yonder) = three(lab, "Relay")
    cem.stop()
    here.write("text", "ann's edit", age=10)
    here.write("more", "ann's file", age=10)
    converge(here, there)
    ann.stop()
    cem.start()
    converge(there, yonder)
    check(yonder.read("text") == "ann's edit", "the edit did not reach gamma")
    # An edit of gamma's upon it reaches alpha through beta in turn.
    yonder.write("text", "cem's edit of it", age=5)
    converge(there, yonder)
    cem.stop()
    ann.start()
    converge(here, there)
    check(here.read("text") == "cem's edit of it", "the edit did not come back to alpha")
    cem.start()
    converge(here, there, yonder)


def scenario_all_edit(lab):
    """Three versions of one file; everyone sees all three, and two choices settle it."""
    hosts, folders = three(lab, "Triple")
    for folder, age in zip(folders, (9, 6, 3)):
        folder.write("text", f"by {folder.host.user} {'.' * age}", age=age)
    for folder in folders:
        wait_until(lambda: len(folder.conflicts().get("text", ())) == 3, 90,
                   lambda: f"{folder}: {folder.conflicts()}")
    chosen = folders[1].read("text")
    for folder, victim in ((folders[2], hosts[2]), (folders[0], hosts[0])):
        version = next(version["id"] for version in folder.conflicts()["text"]
                       if version["userId"] == victim.user_id)
        folder.command("drop", "text", version)
    wait_until(lambda: all(folder.read("text") == chosen for folder in folders), 90,
               lambda: f"{[folder.read('text') for folder in folders]}")
    converge(*folders)
    for folder, age in zip(folders, (9, 6, 3)):
        check(survives(f"by {folder.host.user} {'.' * age}", *folders), "a version is lost")


def scenario_busy(lab):
    """All three work at once in one folder, and one subscribes to a second one."""
    hosts, folders = three(lab, "Busy")
    hosts[2].folder("Aside").write("aside", "cem", age=100)
    aside = [hosts[2].share("Aside"), hosts[0].subscribe("Aside")]
    for turn in range(4):
        for folder in folders:
            folder.write(f"{folder.host.name}/{turn}", f"{turn}")
            folder.write(f"{folder.host.name}/again", f"turn {turn}")
    converge(*folders, limit=150)
    converge(*aside)
    for host in hosts:
        pools = {pool["name"]: pool for pool in host.cli("list")}
        check(amount(pools["Busy"]["participants"]) >= 2, f"participants: {pools}")
