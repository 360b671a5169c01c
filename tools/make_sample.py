#!/usr/bin/python3
"""Writes resources/sample/people.vcf, the address book that a newcomer may load.

Run it after changing sample_people.py or sample_portraits.py. The same sources
and the same Pillow give the same bytes; --check only compares, --sheet FILE
writes all portraits into one picture to look at. Needs python3-pil.
"""

import argparse
import base64
import io
import pathlib
import sys

from PIL import Image

import sample_portraits
from sample_people import PEOPLE

TARGET = pathlib.Path(__file__).resolve().parent.parent / "resources" / "sample" / "people.vcf"
LINE = 75  # Bytes, the most a line holds before it is folded.

# Labels with a vCard type of their own, and the stored form of those without.
TYPES = {"home": "HOME", "work": "WORK", "mobile": "CELL", "main": "MAIN", "pager": "PAGER"}
LABELS = {
    "home fax": "_$!<HomeFAX>!$_",
    "work fax": "_$!<WorkFAX>!$_",
    "other": "_$!<Other>!$_",
    "home page": "_$!<HomePage>!$_",
    "anniversary": "_$!<Anniversary>!$_",
}

# How a picture must be turned for storing, so that its orientation turns it back.
STORED_TURN = {1: None, 3: Image.Transpose.ROTATE_180, 6: Image.Transpose.ROTATE_90, 8: Image.Transpose.ROTATE_270}
ORIENTATION_TAG = 0x0112


def escaped(text):
    return text.replace("\\", "\\\\").replace(";", "\\;").replace(",", "\\,").replace("\n", "\\n")


def folded(line):
    """The line in pieces of at most LINE bytes; no character is torn."""
    pieces, piece = [], b""
    for character in line:
        encoded = character.encode()
        if len(piece) + len(encoded) > LINE:
            pieces.append(piece)
            piece = b" "
        piece += encoded
    return b"\r\n".join(pieces + [piece]) + b"\r\n"


def photo_line(look, how):
    picture = sample_portraits.portrait(look, how.get("size", 400))
    out = io.BytesIO()
    if how.get("format") == "png":
        if how.get("transparent"):
            picture = sample_portraits.portrait({**look, "background": None}, how["size"])
        picture.save(out, "PNG", optimize=True)
        kind = "PNG"
    else:
        orientation = how.get("orientation", 1)
        if STORED_TURN[orientation] is not None:
            picture = picture.transpose(STORED_TURN[orientation])
        exif = Image.Exif()
        exif[ORIENTATION_TAG] = orientation
        picture.save(out, "JPEG", quality=86, optimize=True, exif=exif.tobytes() if orientation != 1 else b"")
        kind = "JPEG"
    return f"PHOTO;ENCODING=b;TYPE={kind}:" + base64.b64encode(out.getvalue()).decode()


class Card:
    def __init__(self):
        self.lines = []
        self.items = 0

    def add(self, name, value):
        self.lines.append(f"{name}:{value}")

    def labelled(self, name, label, value, parameters=""):
        """A typed line, a plain one without a label, or a group of value and label."""
        if label in TYPES:
            self.add(f"{name};TYPE={TYPES[label]}{parameters}", value)
        elif label is None:
            self.add(name + parameters, value)
        else:
            self.items += 1
            self.add(f"item{self.items}.{name}{parameters}", value)
            self.add(f"item{self.items}.X-ABLabel", escaped(LABELS.get(label, label)))


def display_name(person):
    if person.get("company"):
        return person["org"][0]
    order = ("last", "first") if person.get("order") == "east" else ("prefix", "first", "middle", "last", "suffix")
    name = " ".join(person[part] for part in order if part in person)
    return name or person.get("nickname", "") or person.get("org", ("",))[0]


def add_name(card, person):
    card.add("N", ";".join(escaped(person.get(part, "")) for part in ("last", "first", "middle", "prefix", "suffix")))
    card.add("FN", escaped(display_name(person)))
    if "nickname" in person:
        card.add("NICKNAME", escaped(person["nickname"]))
    if "phonetic" in person:
        first, last = person["phonetic"]
        card.add("X-PHONETIC-FIRST-NAME", escaped(first))
        card.add("X-PHONETIC-LAST-NAME", escaped(last))
    if "org" in person:
        card.add("ORG", ";".join(escaped(part) for part in person["org"]))
    if "title" in person:
        card.add("TITLE", escaped(person["title"]))
    if person.get("company"):
        card.add("X-ABShowAs", "COMPANY")


def add_lists(card, person):
    for key, name in (("phones", "TEL"), ("emails", "EMAIL"), ("urls", "URL")):
        for label, value in person.get(key, []):
            card.labelled(name, label, escaped(value))
    for label, parts in person.get("addresses", []):
        card.labelled("ADR", label, ";".join(["", ""] + [escaped(part) for part in parts]))
    for label, value in person.get("dates", []):
        card.labelled("X-ABDATE", label, value, ";CHARSET=UTF-8")
    for label, value in person.get("related", []):
        card.labelled("X-ABRELATEDNAMES", label, escaped(value))
    for label, service, user in person.get("messages", []):
        card.labelled(f"X-{service}", label, escaped(user), ";CHARSET=UTF-8")
    for service, user in person.get("social", []):
        card.add(f"X-SOCIALPROFILE;TYPE={service}", escaped(user))


def card_of(person):
    card = Card()
    card.add("BEGIN", "VCARD")
    card.add("VERSION", "3.0")
    add_name(card, person)
    add_lists(card, person)
    if "birthday" in person:
        card.add("BDAY", person["birthday"])
    if "note" in person:
        card.add("NOTE", escaped(person["note"]))
    if "look" in person:
        card.lines.append(photo_line(person["look"], person.get("picture", {})))
    card.add("END", "VCARD")
    return b"".join(folded(line) for line in card.lines)


def contact_sheet(columns=6, side=256):
    looks = [person["look"] for person in PEOPLE if "look" in person]
    sheet = Image.new("RGB", (columns * side, -(-len(looks) // columns) * side), "white")
    for i, look in enumerate(looks):
        sheet.paste(sample_portraits.portrait(look, side), (i % columns * side, i // columns * side))
    return sheet


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true", help="fail unless the file is up to date")
    parser.add_argument("--sheet", metavar="FILE", help="write the portraits into one picture")
    options = parser.parse_args()
    if options.sheet:
        contact_sheet().save(options.sheet)
        return 0
    book = b"".join(card_of(person) for person in PEOPLE)
    if options.check:
        return 0 if TARGET.read_bytes() == book else "people.vcf is not what make_sample.py writes"
    TARGET.write_bytes(book)
    return 0


if __name__ == "__main__":
    sys.exit(main())
