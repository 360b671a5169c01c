#!/usr/bin/python3
"""Checks that every language has every text, and that its placeholders match.

    check_texts.py [--root DIR] [--used]

The keys are the constants of src/platform/text_key.h, English is the measure
for placeholders. One line per fault on stderr; exit status 1 when there is one.
With --used a constant that no source file uses is a fault as well.
"""

import argparse
import pathlib
import re
import sys

KEY_HEADER = "src/platform/text_key.h"
TEXT_FOLDER = "resources/texts"
REFERENCE = "en"

CONSTANT = re.compile(r'inline constexpr std::string_view (\w+) =\s*"([^"]*)";')
PO_LINE = re.compile(r'(?:(msgctxt|msgid|msgid_plural|msgstr(?:\[\d+\])?)\s+)?"((?:[^"\\]|\\.)*)"$')
PLACEHOLDER = re.compile(r"%%|%(?:(\d+)\$)?@")
# Texts go into web pages and mail bodies as they are.
MARKUP = re.compile(r"[<>&]")
ESCAPES = {"n": "\n", "t": "\t", "r": "\r", '"': '"', "\\": "\\"}


class Entry:
    """One message of a PO file: its fields by name, such as "msgstr[1]"."""

    def __init__(self, line):
        self.line = line
        self.fields = {}

    def key(self):
        return self.fields.get("msgid", "")

    def forms(self):
        return [text for name, text in self.fields.items() if name.startswith("msgstr")]


def unescaped(text):
    return re.sub(r"\\(.)", lambda match: ESCAPES.get(match.group(1), match.group(0)), text)


def parse_po(path, fault):
    """The entries of a PO file, the header first. Obsolete entries are comments."""
    entries = []
    field = None
    for number, raw in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        line = raw.strip()
        if not line or line.startswith("#"):
            continue
        match = PO_LINE.match(line)
        if not match or (not match.group(1) and field is None):
            fault(f"{path.name}:{number}: not a line of a PO file")
            continue
        if match.group(1):
            field = match.group(1)
            if field in ("msgid", "msgctxt") and (not entries or field in entries[-1].fields or entries[-1].forms()):
                entries.append(Entry(number))
        entries[-1].fields[field] = entries[-1].fields.get(field, "") + unescaped(match.group(2))
    return entries


def placeholders(text):
    """The argument numbers that a text uses, sorted; unnumbered ones count on."""
    numbers = []
    following = 1
    for match in PLACEHOLDER.finditer(text):
        if match.group(0) == "%%":
            continue
        if match.group(1):
            numbers.append(int(match.group(1)))
        else:
            numbers.append(following)
            following += 1
    return sorted(numbers)


def header_constants(root, fault):
    """The constants of text_key.h, key by identifier."""
    keys = {}
    for identifier, key in CONSTANT.findall((root / KEY_HEADER).read_text(encoding="utf-8")):
        if key in keys.values():
            fault(f"{KEY_HEADER}: key \"{key}\" stands twice")
        if identifier.rstrip("_") != re.sub(r"\W", "_", key).rstrip("_"):
            fault(f"{KEY_HEADER}: {identifier} is not named as its key \"{key}\"")
        keys[identifier] = key
    if not keys:
        fault(f"{KEY_HEADER}: no keys")
    return keys


def plural_count(entries):
    header = entries[0].fields.get("msgstr", "") if entries and not entries[0].key() else ""
    match = re.search(r"^Plural-Forms:\s*nplurals\s*=\s*(\d+)\s*;\s*plural\s*=\s*\S", header, re.MULTILINE)
    return int(match.group(1)) if match else None


def entries_by_key(name, entries, fault):
    result = {}
    for entry in entries:
        key = entry.key()
        if not key:
            continue
        if key in result:
            fault(f"{name}:{entry.line}: key \"{key}\" stands twice")
        result[key] = entry
    return result


def check_entry(where, entry, reference, plurals, fault):
    plural = "msgid_plural" in entry.fields
    if plural != ("msgid_plural" in reference.fields):
        fault(f"{where} has {'plural forms' if plural else 'no plural forms'}, unlike English")
        return
    expected = [f"msgstr[{index}]" for index in range(plurals or 0)] if plural else ["msgstr"]
    if [name for name in entry.fields if name.startswith("msgstr")] != expected:
        fault(f"{where} has {len(entry.forms())} forms, needs {len(expected)}")
    wanted = placeholders(reference.forms()[0]) if reference.forms() else []
    for form in entry.forms():
        if not form.strip():
            fault(f"{where} has an empty text")
        elif placeholders(form) != wanted:
            fault(f"{where} has placeholders {placeholders(form)}, English has {wanted}")
        if MARKUP.search(form):
            fault(f"{where} holds one of < > &")


def check_language(name, entries, keys, reference, fault):
    plurals = plural_count(entries)
    if plurals is None:
        fault(f"{name}: no Plural-Forms in the header")
    texts = entries_by_key(name, entries, fault)
    for key in keys:
        if key not in texts:
            fault(f"{name}: lacks \"{key}\"")
    for key, entry in texts.items():
        where = f"{name}:{entry.line}: \"{key}\""
        if key not in keys:
            fault(f"{where} is not a key of {KEY_HEADER}")
        elif key in reference:
            check_entry(where, entry, reference[key], plurals, fault)


def check_used(root, keys, fault):
    """Web pages name a key itself, as "%%KEY%%"; sources name the constant, or the key where it is a stored value too;
    the touch application's pages name the key."""
    sources = [path for pattern in ("*.h", "*.cpp", "*.qml") for path in (root / "src").rglob(pattern)
               if path != root / KEY_HEADER]
    code = "\n".join(path.read_text(encoding="utf-8") for path in sources)
    pages = "\n".join(path.read_text(encoding="utf-8", errors="replace")
                      for path in (root / "resources/Web").rglob("*") if path.is_file())
    used = set(re.findall(r"\btext_key::(\w+)", code))
    marked = set(re.findall(r"%%(\w+)%%", pages)) | set(re.findall(r'"([\w ]+)"', code))
    for identifier, key in keys.items():
        if identifier not in used and key not in marked:
            fault(f"{KEY_HEADER}: nothing uses {identifier}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", type=pathlib.Path, default=pathlib.Path(__file__).resolve().parent.parent)
    parser.add_argument("--used", action="store_true", help="a constant that nothing uses is a fault")
    arguments = parser.parse_args()

    faults = []
    keys = header_constants(arguments.root, faults.append)
    languages = {path.name: parse_po(path, faults.append)
                 for path in sorted((arguments.root / TEXT_FOLDER).glob("*.po"))}
    reference_name = REFERENCE + ".po"
    if reference_name not in languages:
        faults.append(f"{TEXT_FOLDER}: no {reference_name}")
    reference = entries_by_key(reference_name, languages.get(reference_name, []), lambda _: None)
    for name, entries in languages.items():
        check_language(name, entries, list(keys.values()), reference, faults.append)
    if arguments.used:
        check_used(arguments.root, keys, faults.append)

    for line in faults:
        print(f"check_texts: {line}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
