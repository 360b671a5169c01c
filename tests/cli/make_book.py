#!/usr/bin/python3
"""Prints an invented address book as vCard 3.0, the same for the same arguments.

    make_book.py COUNT [--photo-every N] [--photo-bytes BYTES] > book.vcf

Names in several scripts, platform and custom labels, notes with escapes, and
addresses. Every twentieth block of people has three that repeat an earlier one,
which makes 15 % duplicates.
"""

import argparse
import base64
import random

# 16 by 16 pixels, baseline.
SMALL_JPEG = base64.b64decode("""
/9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAA0JCgsKCA0LCgsODg0PEyAVExISEyccHhcgLikxMC4pLSwzOko+MzZGNywtQFdBRkxO
UlNSMj5aYVpQYEpRUk//2wBDAQ4ODhMREyYVFSZPNS01T09PT09PT09PT09PT09PT09PT09PT09PT09PT09PT09PT09PT09PT09P
T09PT09PT0//wAARCAAQABADASIAAhEBAxEB/8QAFgABAQEAAAAAAAAAAAAAAAAAAAME/8QAHxAAAgIBBAMAAAAAAAAAAAAAAQMC
EQQABSFBImGB/8QAFAEBAAAAAAAAAAAAAAAAAAAAAv/EAB0RAAAFBQAAAAAAAAAAAAAAAAAREhQhAhMkMWH/2gAMAwEAAhEDEQA/
AK7Dt6c5rZZFmCgPAcWTffzTftvTgtVLHsQaD4HmiK7+6xYbW4zA5LDCdVx2PemY1uSwucwznVc9D1p38klQE0rbLTO+kP/Z
""")

# First name, last name, city, street.
NAMES = [
    ("Ada", "Lindqvist", "Springfield", "Harbour Lane"),
    ("Jürgen", "Großmann", "Görlitz", "Straße der Uhren"),
    ("Şule", "Çağlar", "İzmir", "Çınaraltı Sokağı"),
    ("Ελένη", "Παπαδοπούλου", "Ναύπλιο", "Οδός Ελιάς"),
    ("Наталья", "Воробьёва", "Тверь", "Тихая улица"),
    ("נועה", "בן־דוד", "חיפה", "רחוב הזית"),
    ("ليلى", "المنصوري", "العين", "شارع الواحة"),
    ("अनन्या", "शर्मा", "जयपुर", "नीम मार्ग"),
    ("小明", "王", "杭州", "梧桐路"),
    ("花子", "佐藤", "松本市", "桜町"),
    ("서연", "김", "전주시", "은행나무길"),
    ("Zoë 🎸", "van der Meer", "Leiden", "Tulpgracht"),
]
TYPES = ["CELL", "HOME", "WORK", "MAIN", "PAGER"]
LABELS = ["iPhone", "_$!<Other>!$_", "_$!<WorkFAX>!$_", "Summer house", "Ferienhaus; hinten", "別荘", "(null)"]
NOTES = [
    "Allergic to nuts\\; prefers tea.\\nSays \"clear skies\" for goodbye.",
    "Keys: left drawer\\, 2nd shelf",
    "釣り仲間。\\n集合は五時\\;駅前。",
    "Ring twice " * 40,
]
DUPLICATES_IN_TWENTY = (6, 12, 18)
DISTANCE = 5  # From a duplicate back to the person that it repeats.


def photo(size=0):
    """A JPEG of at least `size` bytes: the small one, filled up with comment segments."""
    comments = b""
    while (missing := size - len(SMALL_JPEG) - len(comments)) > 0:
        segment = max(4, min(missing, 65000))
        comments += b"\xff\xfe" + (segment - 2).to_bytes(2, "big") + bytes(segment - 4)
    return SMALL_JPEG[:2] + comments + SMALL_JPEG[2:]


def entries(chance, name, values):
    """Lines of one property: with a TYPE, as an item with a label, or bare."""
    lines = []
    for value in values:
        kind = chance.random()
        if kind < 0.6:
            lines.append(f"{name};TYPE={TYPES[int(chance.random() * len(TYPES))]}:{value}")
        elif kind < 0.9:
            item = f"item{len(lines) + 1}"
            lines += [f"{item}.{name}:{value}", f"{item}.X-ABLabel:{LABELS[int(chance.random() * len(LABELS))]}"]
        else:
            lines.append(f"{name}:{value}")
    return lines


def card(index, photo_bytes):
    """The lines between VERSION and END of the person at `index`."""
    chance = random.Random(index)
    first, last, city, street = NAMES[index % len(NAMES)]
    lines = [f"N:{last};{first} {index};;;", f"FN:{first} {index} {last}"]
    lines += entries(chance, "TEL", [f"+1 202 555 {n:04}" for n in range(index % 3 + 1)])
    lines += entries(chance, "EMAIL", [f"person{index}.{n}@example.org" for n in range(index % 2 + 1)])
    if index % 3 == 0:
        lines += entries(chance, "ADR", [f";;{street} {index}\\nback door;{city};;{index:05};"])
    if index % 4 == 1:
        lines.append(f"NOTE:{NOTES[index // 4 % len(NOTES)]}")
    if index % 5 == 2:
        lines.append(f"BDAY:{1920 + index % 90}-{index % 12 + 1:02}-{index % 28 + 1:02}")
    if index % 7 == 3:
        lines.append(f"ORG:Firm {index};Room {index % 40}")
    if photo_bytes is not None:
        lines.append("PHOTO;ENCODING=b;TYPE=JPEG:" + base64.b64encode(photo(photo_bytes)).decode())
    return lines


def book(count, photo_every=0, photo_bytes=0):
    """The whole book as text. Without `photo_every` nobody has a photo."""
    lines = []
    for position in range(count):
        index = position - DISTANCE if position % 20 in DUPLICATES_IN_TWENTY else position
        pictured = photo_every > 0 and index % photo_every == 0
        lines += ["BEGIN:VCARD", "VERSION:3.0", *card(index, photo_bytes if pictured else None), "END:VCARD"]
    return "".join(line + "\r\n" for line in lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("count", type=int)
    parser.add_argument("--photo-every", type=int, default=0, help="every N-th person has a photo")
    parser.add_argument("--photo-bytes", type=int, default=0, help="the size that photos are filled up to")
    options = parser.parse_args()
    print(book(options.count, options.photo_every, options.photo_bytes), end="")


if __name__ == "__main__":
    main()
