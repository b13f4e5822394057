"""What is told of a folder, and what one may decide about it beside conflicts."""

import time

from lab import Refused, check, converge, pair, wait_until


def state(folder):
    return folder.host.pool(folder.name)["state"]


def wait_for_state(text, *folders, limit=60):
    for folder in folders:
        wait_until(lambda: state(folder) == text, limit,
                   lambda: f"{folder}: '{state(folder)}' instead of '{text}'")


def scenario_restored(lab):
    """What a fetch replaced comes back, travels as a new change, and can be undone."""
    here, there = pair(lab, "Kept", letter="first")
    wait_for_state("in step", here, there)
    here.write("letter", "second", age=5)
    converge(here, there)

    def versions():
        return there.host.cli("versions", "Kept", "letter")
    wait_until(lambda: len(versions()) == 1, 30, lambda: f"not kept: {versions()}")
    kept = versions()
    there.command("restore", "letter", kept[0]["when"])
    check(there.read("letter") == "first", "not restored")
    wait_until(lambda: here.read("letter") == "first", 60, "a restored version did not travel")
    converge(here, there)
    check(there.host.command("conflicts", "Kept") == "", "a restored version made a conflict")
    kept = there.host.cli("versions", "Kept", "letter")
    there.command("restore", "letter", kept[0]["id"])
    wait_until(lambda: here.read("letter") == "second", 60, "the restore could not be undone")
    try:
        there.command("restore", "letter", "1999-01-01")
    except Refused:
        pass
    else:
        check(False, "a version that never was has been restored")
    wait_for_state("in step", here, there)


def scenario_paused(lab):
    """A paused folder neither fetches nor serves, also after a restart; then it catches up."""
    here, there = pair(lab, "Paused", file="text")
    there.command("pause", "--for", "1h")
    wait_for_state("paused", there)
    wait_for_state("alone", here)
    here.write("from ann", "a")
    there.write("from bob", "b")
    there.host.restart()
    wait_until(lambda: (there.host.pool("Paused") or {}).get("active"), 60, "it did not come back")
    time.sleep(8)
    check(state(there) == "paused", "the pause did not outlast a restart")
    check(not there.at("from ann").exists() and not here.at("from bob").exists(),
          "a paused folder was synced")
    there.command("resume")
    converge(here, there)
    wait_for_state("in step", here, there)


def scenario_reachable(lab):
    """Who is merely seen and who can be reached is told apart, with the reason."""
    here, there = pair(lab, "Seen", file="text")
    ann = next(each for each in there.host.cli("participants", "Seen") if not each["local"])
    check(ann["contact"] == "reachable", ann)
    here.host.connect(False)
    there.command("sync")

    def told():
        return [each for each in there.host.cli("participants", "Seen") if not each["local"]]
    wait_until(lambda: not told() or (told()[0]["contact"] == "unreachable" and told()[0]["reason"]),
               90, lambda: f"a dead participant is told as {told()}")
    check(state(there) in ("checking", "alone"), f"'{state(there)}' without anybody")
    here.host.connect(True)
    wait_for_state("in step", here, there, limit=150)


def scenario_limited(lab):
    """A changed limit holds for what is served from then on."""
    here, there = pair(lab, "Slow", file="text")
    here.host.command("set", "BWLimitOut", "100")
    time.sleep(3)
    here.write("big", "x" * 1_200_000, age=5)
    wait_until(lambda: state(there).startswith("fetching"), 60, "nothing is fetched")
    start = time.monotonic()
    wait_until(lambda: there.at("big").exists(), 60, "it does not come")
    check(time.monotonic() - start > 3, "1.2 MB at 100 KB/s came at once")
    here.host.command("set", "BWLimitOut", "")
    converge(here, there)
