"""Who does not know the password gets nothing, and both sides say so."""

from lab import Refused, check, converge, wait_until


def password_in_force(host, password):
    """Until the transfer daemon asks for that password."""
    def found():
        return any(password.encode() in path.read_bytes()
                   for path in host.seen(host.home / ".local/share/Zolvar").glob("*")
                   if path.is_file())
    wait_until(found, 30, f"{host.name}'s new password does not reach the transfer daemon")


def auth_failed(host, since):
    host.wait_for_log("Auth failed syncing", limit=60, since=since)


def scenario_right(lab):
    """With the same password on both sides all is as without one."""
    ann, bob = lab.host("alpha"), lab.host("beta")
    ann.folder("Open sesame").write("secret", "of ann", age=100)
    here = ann.share("Open sesame", password='a "long" pass#word; ü')
    wait_until(lambda: bob.pool("Open sesame"), 30, "not announced")
    there = bob.subscribe("Open sesame", password='a "long" pass#word; ü')
    converge(here, there)
    there.write("secret", "of both", age=10)
    converge(here, there)
    check(here.read("secret") == "of both", "bob's edit did not arrive")
    # The files that hold a password are the user's alone.
    for host in (ann, bob):
        for path in host.seen(host.home).rglob("*"):
            if path.is_file() and b"pass#word" in path.read_bytes():
                check(path.stat().st_mode & 0o077 == 0, f"{path} can be read by others")


def scenario_wrong_then_right(lab):
    """A wrong password fetches nothing; the right one, given later, everything."""
    ann, bob = lab.host("alpha"), lab.host("beta")
    ann.folder("Guess").write("secret", "of ann", age=100)
    here = ann.share("Guess", password="right")
    marks = len(ann.log()), len(bob.log())
    there = bob.subscribe("Guess", password="wrong", wait=False)
    auth_failed(bob, marks[1])
    check(there.read("secret") is None, "the file came with a wrong password")
    bob.command("password", "Guess", text="right\n")
    bob.active("Guess")
    converge(here, there)

    # Both take part; then one of them changes the password.
    marks = len(ann.log()), len(bob.log())
    ann.command("password", "Guess", text="changed\n")
    password_in_force(ann, "changed")
    here.write("secret", "after the change", age=10)
    there.write("other", "bob's", age=10)
    auth_failed(ann, marks[0])
    auth_failed(bob, marks[1])
    check(there.read("secret") == "of ann", "the edit came with an old password")
    check(here.read("other") is None, "a file came from one with an old password")
    bob.command("password", "Guess", text="changed\n")
    converge(here, there)


def scenario_none_on_one_side(lab):
    """No password on one side: neither side gets anything, and both say so."""
    ann, bob = lab.host("alpha"), lab.host("beta")
    ann.folder("Half").write("secret", "of ann", age=100)
    here = ann.share("Half")
    there = bob.subscribe("Half")
    converge(here, there)
    marks = len(ann.log()), len(bob.log())
    ann.command("password", "Half", text="brand new\n")
    password_in_force(ann, "brand new")
    here.write("secret", "changed", age=10)
    there.write("other", "bob's", age=10)
    auth_failed(ann, marks[0])
    auth_failed(bob, marks[1])
    check(there.read("secret") == "of ann" and here.read("other") is None, "something was fetched")
    ann.command("password", "Half", text="")
    converge(here, there)


def scenario_bad_password(lab):
    """A password that no file of passwords can carry is refused with a sentence."""
    ann = lab.host("alpha")
    ann.folder("Refuse")
    ann.share("Refuse", password="good")
    for password in ("with\ttab", "x" * 501):
        try:
            ann.command("password", "Refuse", text=password + "\n")
        except Refused as refusal:
            check(str(refusal), "refused without a sentence")
        else:
            check(False, f"accepted: {password!r}")
