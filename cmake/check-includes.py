#!/usr/bin/env python3
"""Arrows between the folders of src point one way. Says each include that points the other way,
and each header of Qt or GLib outside the folders that may know them."""

import re
import sys
from pathlib import Path

LAYERS = ["util", "platform", "log", "pool", "net", "addressbook", "app", "cli", "ui"]
KNOW_QT = ("platform/qt", "cli", "ui")
KNOW_GLIB = ("platform/qt", "addressbook/eds")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')

source = Path(__file__).resolve().parent.parent / "src"
found = []
for file in sorted(source.rglob("*")):
    if file.suffix not in (".h", ".cpp"):
        continue
    place = file.relative_to(source)
    layer = place.parts[0]
    knows_qt = str(place).startswith(KNOW_QT)
    for number, line in enumerate(file.read_text().splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        bracket, header = match.groups()
        target = header.split("/")[0]
        problem = None
        if bracket == "<":
            if re.match(r"Q[A-Z]|Qt|qt|q[a-z]+\.h", header) and not knows_qt:
                problem = "a Qt header has no place here"
            if re.match(r"(glib|gio|libebook)", header) and not str(place).startswith(KNOW_GLIB):
                problem = "a header of GLib has no place here"
        elif target in LAYERS:
            serves = str(place) == "ui/main.cpp" and target == "cli"  # the control socket's server
            if LAYERS.index(target) > LAYERS.index(layer) or (
                layer == "ui" and target == "cli" and not serves
            ):
                problem = f"{layer} must not know {target}"
            elif header.startswith("platform/qt/") and not knows_qt:
                problem = "only the programs choose the real platform"
        if problem:
            found.append(f"{file}:{number}: {header}: {problem}")
print("\n".join(found) or "every include points the right way")
sys.exit(1 if found else 0)
