#!/usr/bin/env python3
"""Collects what the program says, and tells what a language lacks.

texts.py          writes src/ui/EngineTexts.inc, the sentences of the engine, and brings the tables
                  in resources/translations up to date with the sources
texts.py --check  changes nothing; fails when a table or the list is behind the sources, or when a
                  complete language lacks a text
"""

import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TABLES = ROOT / "resources/translations"
ENGINE_TEXTS = ROOT / "src/ui/EngineTexts.inc"
LANGUAGES = ("de", "he")
COMPLETE = ("de",)
LUPDATE = "/usr/lib/qt6/bin/lupdate"

# Where the engine words what a person reads; elsewhere it writes logs and files.
SPEAKING = {
    "app": "AddressFolders Application ConflictDecisions Contacts EnvironmentChecks FolderRules Operations "
           "OperationsDecisions OutcomeTexts Outcomes Pauses SettingRules SheetsController "
           "TransferToolCheck",
    "net": "KDPeer KDPeerAnnouncements ServerControl TransferDaemon",
    "pool": "KDFilePool KDFilePoolWork KDPoolState KDPoolStateBranches KDPoolStateHistory "
            "KDPoolStateScan KDPoolStateTodo KDPoolSync LogGuard SyncRun VersionFetch VersionStore",
    "platform/qt": "AutostartEntry AvahiPublication ChildKeeper PosixFileSystem PosixFolder "
                   "PosixProcessLauncher PosixTrash PosixTree SecretServiceStore SystemHosts",
    "util": "PathRules",
}
# What the engine puts together from pieces, and single words.
PUT_TOGETHER = (
    "Continue", "Cancel", "{} file", "{} files", "{} address", "{} addresses",
    "Deleted {} in '{}':", "Trashed {} in '{}':", "The folder '{}' is not shared: {}",
    "Its name differs from '{}' in case or blanks only, and both cannot be served.",
    "Merge Contacts in '{}'?", "loading changes", "socket connection failed.", "error in rsync protocol data stream",
    "some files could not be transferred", "authentication failed",
    "the transfer tools of the two computers do not understand each other",
    "a folder or file could not be opened",
    "a file could not be read or written; perhaps a disk is full, or its drive gone",
    "the transfer was ended", "there was not enough memory",
    "some files vanished over there before they could be fetched", "nothing came for too long",
    "the other computer did not answer in time", "the transfer tool was ended by signal {}",
    "the transfer tool ended with status {}",
)
NOT_SAID = ("{} {} in '{}':\\n", "{} at '{}'", "KDPeer with base path: ", "HasPassword-",
            "Will delete file as recorded in the logs here: ")
LITERAL = r'"((?:[^"\\\n]|\\.)*)"'
FOR_LOGS = re.compile(r"log_?\.(warning|error|debug)\(|InconsistencyError|require\(|static_assert")
SAYS = re.compile(r"\b(refusal|problem|warn|warnOnce|Alert|counted)\b|trouble_ =|return|sentence|"
                  r"reason =|\btext\b|buttons|KDErrorMessage =")


def literals(statement):
    """The literals with neighbours joined, as C++ joins them."""
    for match in re.finditer(rf"{LITERAL}(?:\s*{LITERAL})*", statement):
        yield "".join(re.findall(LITERAL, match.group(0)))


def sentences_of(source):
    text = re.sub(r"^\s*(//|#include).*$", "", source, flags=re.M)
    # Statements end at a semicolon outside of literals.
    for statement in re.split(rf";(?=(?:[^\"\n]|{LITERAL})*$)", text, flags=re.M):
        if statement is None:
            continue
        if FOR_LOGS.search(statement):
            continue
        found = list(literals(statement))
        if not found:
            continue
        is_failure = re.search(r"\b(fail|failed|failureFromErrno|refused)\(|[aA]ttempt = |Failure\{",
                               statement)
        if is_failure:
            for attempt in found[:1]:
                if re.match(r"(a|an|another|it|its|the|this|no) ", attempt):
                    yield attempt
                elif re.match(r"[a-z]+( |$)", attempt):
                    yield f"Could not {attempt.strip()} '{{}}'"
            for reason in found[1:]:
                if " " in reason.strip() and not re.match(r"[' ]", reason):
                    yield reason
        elif SAYS.search(statement):
            for each in found:
                is_sentence = re.match(r"[A-Z]|'?\{[0-9]?\}'? ", each) and re.search(r"[a-z]", each)
                if is_sentence and (" " in each or "-" in each) and each not in NOT_SAID:
                    yield each


def engine_texts():
    texts = set(PUT_TOGETHER)
    for folder, names in SPEAKING.items():
        for name in names.split():
            path = ROOT / "src" / folder / f"{name}.cpp"
            if path.exists():
                texts.update(sentences_of(path.read_text()))
    return sorted(text for text in texts if not re.search(r"[^.:][' ]$", text) or
                  re.search(r"\{\d?\}'", text))


def engine_list():
    lines = ["// What the engine says, collected by cmake/texts.py: do not change by hand.\n"]
    lines += [f'QT_TRANSLATE_NOOP("Zolvar", "{text}"),\n' for text in engine_texts()]
    return "".join(lines)


def update(table, folder):
    made = subprocess.run(
        [LUPDATE, "-silent", "-locations", "none", "-no-obsolete", "-source-language", "en",
         "-target-language", table.stem.split("_")[1], "-extensions", "cpp,h,inc",
         str(ROOT / "src/ui"), "-ts", str(folder / table.name)],
        capture_output=True, text=True)
    if made.returncode != 0:
        sys.exit(made.stderr)


def messages(path):
    """source text -> its translation's forms, all empty where it is unfinished."""
    found = {}
    for message in ET.parse(path).iter("message"):
        translation = message.find("translation")
        forms = [form.text or "" for form in translation.iter("numerusform")]
        forms = forms or [translation.text or ""]
        is_done = translation.get("type") != "unfinished"
        found[message.findtext("source")] = forms if is_done else [""] * len(forms)
    return found


def check():
    problems = []
    if ENGINE_TEXTS.read_text() != engine_list():
        problems.append("src/ui/EngineTexts.inc is behind the engine: run ./dev texts")
    with tempfile.TemporaryDirectory() as folder:
        for table in sorted(TABLES.glob("zolvar_*.ts")):
            copy = Path(folder) / table.name
            copy.write_bytes(table.read_bytes())
            update(copy, Path(folder))
            for source, forms in messages(copy).items():
                if table.stem.split("_")[1] in COMPLETE and not all(forms):
                    problems.append(f"{table.name} lacks: {source!r}")
                for form in filter(None, forms):
                    fields = lambda text: set(re.findall(r"%L?\d|%n", text))
                    extra = fields(form) - fields(source)
                    lost = fields(source) - fields(form) - {"%n"}
                    if extra or lost or form.count("&") > source.count("&"):
                        problems.append(f"{table.name}: {form!r} does not fit {source!r}")
    print("\n".join(problems))
    return 1 if problems else 0


def main():
    if "--check" in sys.argv:
        return check()
    ENGINE_TEXTS.write_text(engine_list())
    for language in LANGUAGES:
        update(TABLES / f"zolvar_{language}.ts", TABLES)
    for table in sorted(TABLES.glob("zolvar_*.ts")):
        lacking = [source for source, forms in messages(table).items() if not all(forms)]
        print(f"{table.name}: {len(messages(table))} texts, {len(lacking)} lacking")
    return 0


if __name__ == "__main__":
    sys.exit(main())
