"""Contacts in step between address books of both kinds: a folder of cards, and the desktop's server."""

import json
import os
import shutil
import subprocess
import time

from lab import Process, check, converge, wait_until

EXTENSION = ".zolvaraddresses"
QUIET = 45  # seconds in which nothing may be logged
FACTORY = "/usr/libexec/evolution-addressbook-factory"
PYTHON = "/usr/bin/python3"  # the one that knows the desktop's libraries
CLIENT = """
import gi, json, sys
for name in ("EBook", "EBookContacts", "EDataServer"):
    gi.require_version(name, "1.2")
from gi.repository import EBook, EBookContacts, EDataServer
verb, *rest = sys.argv[1:]
source = EDataServer.SourceRegistry.new_sync(None).ref_builtin_address_book()
client = EBook.BookClient.connect_sync(source, 0xFFFFFFFF, None)
def found():
    everyone = '(contains "x-evolution-any-field" "")'
    return client.get_contacts_sync(everyone, None)[1]
def text(contact):
    return contact.to_string(EBookContacts.VCardFormat(1))
def named(name):
    return next(each for each in found() if each.get_property("full-name") == name)
if verb == "list":
    print(json.dumps({each.get_property("full-name"): text(each) for each in found()}))
elif verb == "add":
    client.add_contact_sync(EBookContacts.Contact.new_from_vcard(rest[0]), 0, None)
elif verb == "change":
    name, old, new = rest
    before = named(name)
    after = EBookContacts.Contact.new_from_vcard(text(before).replace(old, new))
    client.modify_contact_sync(after, 0, None)
elif verb == "remove":
    client.remove_contact_sync(named(rest[0]), 0, None)
"""


def card(name, group, phone):
    first, last = name.split(" ")
    categories = f"CATEGORIES:{group}\r\n" if group else ""
    return (f"BEGIN:VCARD\r\nVERSION:3.0\r\nUID:{first}-{last}-{time.time_ns()}\r\nFN:{name}\r\n"
            f"N:{last};{first};;;\r\nTEL;TYPE=CELL:{phone}\r\nX-OWN-WORD:kept\r\n{categories}"
            "END:VCARD\r\n")


class CardFolder:
    """Cards in files, as other programs keep them."""

    setting = "folder"

    def __init__(self, host):
        self.host, self.root = host, host.seen(host.home / ".local/share/contacts")

    def prepare(self):
        for folder in (self.root.parent.parent, self.root.parent, self.root):
            folder.mkdir(exist_ok=True)
            self.host.own(folder)

    def files(self):
        for path in self.root.glob("*.vcf"):
            text = path.read_text()
            yield path, text, next(line[3:] for line in text.splitlines() if line.startswith("FN:"))

    def people(self):
        return {name: text for _, text, name in self.files()}

    def save(self, path, text):
        aside = path.with_suffix(".tmp")
        aside.write_text(text, newline="")
        self.host.own(aside)
        aside.rename(path)

    def add(self, text):
        self.save(self.root / f"card{time.time_ns()}.vcf", text)

    def change(self, name, old, new):
        path, text = next((path, text) for path, text, each in self.files() if each == name)
        check(old in text, f"{old} is not in {text}")
        self.save(path, text.replace(old, new))

    def remove(self, name):
        next(path for path, _, each in self.files() if each == name).unlink()

    def touch(self):
        for path, text, _ in self.files():
            self.save(path, text)


class Server:
    """The desktop's address book, in a session of the host's user."""

    setting = "eds"

    def __init__(self, host):
        self.host = host

    def prepare(self):
        address = f"unix:path=/run/user/{self.host.uid}/bus"
        self.host.environment.update(DBUS_SESSION_BUS_ADDRESS=address, GSETTINGS_BACKEND="memory")
        self.bus = Process(self.host, ["dbus-daemon", "--session", "--nofork", "--address=" + address],
                           self.host.directory / "session.log", self.host.uid)
        wait_until(lambda: self.host.seen(f"/run/user/{self.host.uid}/bus").exists(), 10, "no bus")

    def ask(self, *arguments):
        result = self.host.run([PYTHON, "-c", CLIENT, *arguments])
        check(result.returncode == 0, f"the server: {result.stderr}")
        return result.stdout

    def people(self):
        return json.loads(self.ask("list"))

    def add(self, text):
        self.ask("add", text)

    def change(self, name, old, new):
        self.ask("change", name, old, new)

    def remove(self, name):
        self.ask("remove", name)

    def touch(self):
        self.people()


def open_book(lab, name, kind):
    """The host, running with an address book of the kind."""
    host = lab.host(name, zolvard=False)
    book = kind(host)
    if not host.zolvard:
        book.prepare()
        host.settings({"Pace": "quick", "HeadlessDeleteAnswer": "delete",
                       "AddressBook": kind.setting})
        host.start()
    return book


def share(book, group):
    wait_until(lambda: book.host.run(["/run/programs/bin/zolvar", "share", "--addresses",
                                      group]).returncode == 0, 30, "the group cannot be shared")
    return place(book.host, group)


def place(host, group):
    name = group + EXTENSION
    return host.active(name, host.home / "Public/Zolvar" / name)


def subscribe(book, group):
    name = group + EXTENSION
    wait_until(lambda: (book.host.pool(name) or {}).get("announced"), 30, "not announced")
    book.host.command("subscribe", name)
    return place(book.host, group)


def wait_for(book, name, words, limit=60):
    """Until the person is there, with the words on the card; None: until it is gone."""
    def arrived():
        text = book.people().get(name)
        return text is None if words is None else text is not None and words in text
    wait_until(arrived, limit, lambda: f"{book.host.name}: {name}: {book.people()}")


def logs(*folders):
    return {str(path): path.stat().st_size for folder in folders
            for path in (folder.root / ".Zolvar").glob("*.fplog")}


def life(mine, theirs, group):
    """A contact added, changed and deleted on either side, then silence."""
    mine.add(card("Lee Young", group, "+1 100"))
    mine.add(card("Max Old", group, "+1 200"))
    mine.add(card("Not Shared", "", "+1 300"))
    here = share(mine, group)
    there = subscribe(theirs, group)
    wait_for(theirs, "Lee Young", "+1 100")
    wait_for(theirs, "Max Old", "X-OWN-WORD")
    check("Not Shared" not in theirs.people(), "somebody of no group was shared")

    mine.change("Lee Young", "+1 100", "+1 111")
    wait_for(theirs, "Lee Young", "+1 111")
    theirs.change("Lee Young", "+1 111", "+1 122")
    wait_for(mine, "Lee Young", "+1 122")
    theirs.add(card("Eve New", group, "+1 400"))
    wait_for(mine, "Eve New", "+1 400")
    mine.remove("Max Old")
    wait_for(theirs, "Max Old", None)
    theirs.remove("Eve New")
    wait_for(mine, "Eve New", None)
    check(set(mine.people()) == {"Lee Young", "Not Shared"}, f"{mine.people().keys()}")

    converge(here, there)

    def at_rest():
        found = logs(here, there)
        time.sleep(6)
        return found == logs(here, there) and found
    before = wait_until(at_rest, 60, "the logs do not come to rest")
    end = time.monotonic() + QUIET
    while time.monotonic() < end:
        mine.touch()
        theirs.touch()
        time.sleep(5)
    check(logs(here, there) == before, "something was logged while nothing changed")
    for folder in (here, there):
        folder.host.restart()
    place(here.host, group)
    place(there.host, group)
    converge(here, there)
    time.sleep(5)
    check(logs(here, there) == before, "something was logged by a new start")


def scenario_folders_of_cards(lab):
    """Contacts travel between two folders of cards, and nothing echoes."""
    life(open_book(lab, "alpha", CardFolder), open_book(lab, "beta", CardFolder), "Friends")


def scenario_merging(lab):
    """Somebody of a like name is to be merged, not doubled, and no card is lost meanwhile."""
    mine, theirs = open_book(lab, "alpha", CardFolder), open_book(lab, "beta", CardFolder)
    theirs.add(card("Anne Leeds", "", "+1 500"))
    mine.add(card("Ann Lee", "Team", "+1 600"))
    theirs.add(card("Sam Same", "", "+1 800"))
    mine.add(card("Sam Same", "Team", "+1 700"))
    here = share(mine, "Team")
    there = subscribe(theirs, "Team")
    theirs.host.wait_for_log("Others have contacts whose names are like those")
    wait_for(theirs, "Anne Leeds", "Team")
    check("Ann Lee" not in theirs.people(), "the contact was doubled")
    theirs.change("Anne Leeds", "+1 500", "+1 501")
    wait_for(mine, "Anne Leeds", "+1 501")
    wait_for(mine, "Ann Lee", "+1 600")

    theirs.change("Sam Same", "+1 800", "+1 801")
    wait_until(lambda: any("+1 801" in file.read_text() for file in here.root.glob("*.vcf")), 60,
               "the other Sam has no file")
    converge(here, there)
    check("+1 700" in mine.people()["Sam Same"], "a namesake's card has taken another's place")
    theirs.change("Sam Same", "+1 801", "+1 801\nTEL;TYPE=HOME:+1 700")
    wait_for(mine, "Sam Same", "+1 801")
    check("+1 700" in mine.people()["Sam Same"], "the merged card is poorer")
    mine.change("Sam Same", "+1 801", "+1 802")
    wait_for(theirs, "Sam Same", "+1 802")
    converge(here, there)


def scenario_server_and_folder(lab):
    """Contacts travel between a folder of cards and the desktop's server."""
    lacks = None if os.path.exists(FACTORY) else "Evolution Data Server"
    known = subprocess.run([PYTHON, "-c", CLIENT.split("from gi")[0]], capture_output=True)
    if not lacks and (known.returncode or not shutil.which("dbus-daemon")):
        lacks = "gir1.2-ebook-1.2"
    if lacks:
        print(f"left out: {lacks} is not installed", flush=True)
        return
    life(open_book(lab, "gamma", CardFolder), open_book(lab, "delta", Server), "Club")
