#!/usr/bin/env python3
"""Two people, two machines, one folder: what Zolvar does, shown on a virtual network.

Started by ./dev demo; takes about a minute or two and leaves nothing behind.
"""

import argparse
import sys
import textwrap

import lab


def say(text):
    print("\n" + textwrap.fill(" ".join(text.split()), 78), flush=True)


def step(title):
    print(f"\n\033[1m{f'── {title} '.ljust(78, '─')}\033[0m", flush=True)


def typed(host, command, output=""):
    print(f"  {host.user}@{host.name}$ {command}", flush=True)
    for line in output.splitlines():
        print(f"    {line}", flush=True)


def show(folder):
    """The folder as its user sees it."""
    lines = []
    for path in sorted(folder.tree()):
        content = folder.read(path) if folder.at(path).is_file() else ""
        lines.append(f"{path:24} {content.splitlines()[0] if content else ''}".rstrip())
    typed(folder.host, f"ls ~/{folder.name}", "\n".join(lines))


def write(folder, path, content, age=0):
    folder.write(path, content + "\n", age)
    typed(folder.host, f"echo {content!r} > ~/{folder.name}/{path}")


def zolvar(host, *arguments):
    typed(host, " ".join(("zolvar", *arguments)), host.command(*arguments))


def play(hosts):
    step("Two machines on one network")
    say("""alpha belongs to ann and beta to bob. Each runs zolvard. There is no server and no
        account, and neither knows the other yet.""")
    ann, bob = hosts.host("alpha"), hosts.host("beta")

    step("Ann shares a folder")
    recipes = ann.folder("Recipes")
    write(recipes, "pancakes.txt", "flour, milk, two eggs", age=60)
    write(recipes, "soup/leek.txt", "leek, potatoes, cream", age=60)
    here = ann.share("Recipes")
    typed(ann, "zolvar share ~/Recipes")

    step("Bob sees it by name and subscribes; the files arrive")
    lab.wait_until(lambda: (bob.pool("Recipes") or {}).get("announced"), 30, "no announcement")
    zolvar(bob, "list")
    there = bob.subscribe("Recipes")
    typed(bob, "zolvar subscribe Recipes ~/Recipes")
    lab.converge(here, there)
    show(there)

    step("Bob edits; his change travels by itself")
    write(there, "pancakes.txt", "flour, milk, three eggs")
    lab.converge(here, there)
    show(here)

    step("Ann renames a file; on bob's machine it is renamed too")
    here.rename("soup/leek.txt", "soup/vichyssoise.txt")
    typed(ann, "mv ~/Recipes/soup/leek.txt ~/Recipes/soup/vichyssoise.txt")
    lab.converge(here, there)
    show(there)
    say("A file that was removed elsewhere goes to the Trash here, not away for good.")

    step("Both edit one file at the same moment")
    write(here, "pancakes.txt", "oat flour, milk, three eggs", age=4)
    write(there, "pancakes.txt", "flour, buttermilk, three eggs", age=2)
    lab.wait_until(lambda: "pancakes.txt" in here.conflicts() and "pancakes.txt" in there.conflicts(),
                   60, "no conflict")
    say("Neither is overwritten: the file has two versions now, each user still has the own one, "
        "and both are told.")
    zolvar(ann, "conflicts", "Recipes")
    show(here)
    show(there)

    step("Ann prefers bob's version and drops her own")
    zolvar(ann, "drop", "Recipes", "pancakes.txt", here.version("pancakes.txt", local=True))
    lab.converge(here, there)
    show(here)
    for host in (ann, bob):
        lab.wait_until(lambda: host.pool("Recipes")["state"] == "in step", 60, "not in step")
    zolvar(bob, "list")
    say("One version again, on both machines. Ann's is in her Trash, in case she changes her mind.")

    step("That was all")
    say("On two real machines it is the same: see README.md. Nothing of this demonstration is left "
        "on your machine.")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", required=True)
    programs = parser.parse_args().programs
    reason = lab.why_not_here()
    if reason:
        sys.exit(f"No demonstration here: {reason}.")
    with lab.Lab(programs) as hosts:
        try:
            play(hosts)
        except lab.Failed as failure:
            hosts.report()
            sys.exit(f"This should not have happened: {failure}")


if __name__ == "__main__":
    main()
