"""The window itself, on a virtual screen of one host, beside a host without any."""

import signal
import time

from lab import Process, TooLate, check, converge, wait_until

DESKTOP = "/run/programs/bin/zolvar-desktop"


class Screen:
    """A virtual screen of a host, and the keys that its user presses there."""

    def __init__(self, host):
        self.host = host
        output = host.directory / "screen"
        self.server = Process(host, ["Xvfb", "-displayfd", "1", "-screen", "0", "1280x900x24", "-ac",
                                     "-nolisten", "tcp"], output)
        numbers = lambda: [word for word in output.read_text().split() if word.isdigit()]
        wait_until(numbers, 30, "no virtual screen")
        host.environment.update(DISPLAY=f":{numbers()[-1]}", QT_QPA_PLATFORM="xcb")

    def start(self):
        """Starts the window's program and waits until it answers and is seen."""
        host = self.host
        host.zolvard = Process(host, [DESKTOP, "--debug"], host.directory / "zolvard.log", host.uid)
        wait_until(lambda: host.run(["/run/programs/bin/zolvar", "status"]).returncode == 0, 60,
                   "the window's program does not answer")
        wait_until(self.windows, 60, "no window is seen")

    def windows(self):
        found = self.host.run(["xdotool", "search", "--onlyvisible", "--class", "zolvar"])
        return sorted(found.stdout.split(), key=int)  # the newest has the highest number

    def press(self, *keys):
        for key in keys:
            # There is no window manager: the newest window, which may be a sheet, gets the keys.
            for window in self.windows()[-1:]:
                self.host.run(["xdotool", "windowfocus", window])
            pressed = self.host.run(["xdotool", "key", key])
            check(pressed.returncode == 0, f"cannot press {key}: {pressed.stderr}")
            time.sleep(0.7)  # what the key opens gets the next one

    def press_until(self, done, what, *keys, limit=60):
        """Presses the keys, again every few seconds: a busy machine may not have been ready."""
        def pressed():
            if not done():
                self.press(*keys)
                try:
                    wait_until(done, 5, what)
                except TooLate:
                    return False
            return True
        wait_until(pressed, limit, what)

    def end(self):
        self.server.end()


def scenario_window(lab):
    """A file comes to the window's host, and a conflict is settled by its user's keys."""
    ann, bob = lab.host("alpha", zolvard=False), lab.host("beta")
    bob.folder("Plans").write("garden.txt", "beans", age=5000)
    there = bob.share("Plans")
    screen = Screen(ann)
    screen.start()
    autostart = ann.seen(ann.home / ".config/autostart/zolvar.desktop")
    wait_until(autostart.exists, 30, "the window's program does not start at login")
    screen.press_until(lambda: len(screen.windows()) == 1, "the first steps do not close", "Escape")
    here = ann.subscribe("Plans")
    converge(here, there)
    check(here.read("garden.txt") == "beans", "the file did not come")

    # A second start shows the first one's window, and ends.
    second = ann.run([DESKTOP], limit=30)
    check(second.returncode == 0, f"the second start: {second.returncode} {second.stderr}")
    check(ann.zolvard.running(), "the second start ended the first")

    here.write("garden.txt", "ann's peas", age=8)
    there.write("garden.txt", "bob's leeks", age=5)
    wait_until(lambda: len(here.conflicts().get("garden.txt", ())) == 2, 90, "no conflict")
    # To the conflicts, all files, "Keep Mine", and yes.
    screen.press_until(lambda: not here.conflicts(), "the window did not settle the conflict",
                       "Escape", "ctrl+3", "ctrl+a", "alt+k", "alt+k", limit=120)
    converge(here, there, limit=180)
    check(there.read("garden.txt") == "ann's peas", "not ann's version went on")

    # The last language of the preferences is chosen: the window is made anew, and works on.
    old = screen.windows()
    screen.press_until(lambda: screen.windows() and not set(old) & set(screen.windows()),
                       "no window in another language", "Escape", "ctrl+comma", "End", "Return")
    there.write("leeks.txt", "two rows", age=5)
    wait_until(lambda: here.read("leeks.txt") == "two rows", 90, "nothing comes any more")
    check(ann.zolvard.running(), "the other language ended the program")

    # The system's end says nothing about the next login; the user's own does.
    check(ann.zolvard.end(signal.SIGTERM) == 0, "no clean end by the system")
    check(autostart.exists(), "the system's end took the program from the login")
    screen.start()
    process, ann.zolvard = ann.zolvard, None
    screen.press_until(lambda: not process.running(), "the window does not quit",
                       "Escape", "ctrl+q")
    check(process.end() == 0, "no clean end by the user")
    check(not autostart.exists(), "the user's end left the program at the login")
    screen.end()
