#!/usr/bin/python3
"""A backup of varnokctl is read by python3-vobject, by ical.js and by varnokctl itself, and compared with the people
that it was made of.

    interop_test.py PROGRAM FOLDER NODE

FOLDER is where ical.js is installed with read_with_ical.mjs beside it, NODE the program that runs it.
"""

import base64
import io
import json
import pathlib
import subprocess
import sys

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(TESTS / "cli"))

import cli_support  # noqa: E402

try:
    import vobject
except ImportError:
    vobject = None

SAMPLE = TESTS.parent / "resources" / "sample" / "people.vcf"
PHOTOS_AS_THEY_ARE = ("--set", "EXPORT_CONF_SHRINK=NO")

# What every reader should get right.
ODD_PEOPLE = r"""BEGIN:VCARD
VERSION:3.0
N:Only a number;;;;
TEL:*31#+1\;ext=5
END:VCARD
BEGIN:VCARD
VERSION:3.0
N:Markup <b>;&amp "quoted": = %41;;;
NOTE: blanks around and 100 % <i>\n\nEND:VCARD\nBEGIN:VCARD\n\n; 
EMAIL;TYPE=HOME:"odd one"@example.org
item1.URL:https://example.org/?a=1&b=2\;c#d:e
item1.X-ABLabel:odd label:"x"=y
item2.ADR:;;a\nb\;c;d;e;f;g
item2.X-ABLabel:Summer\;house
PHOTO;ENCODING=b;TYPE=PNG:iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==
END:VCARD
BEGIN:VCARD
VERSION:3.0
N:𝔘𝔫𝔦 مرحبا;שָׁלוֹם 👩‍👩‍👧 é;;;
NICKNAME:٠١٢ ‏x
BDAY:1604-03-15
NOTE:LONG
END:VCARD
""".replace("LONG", "Ring twice 二回。" * 5000)

# What only we can read, and what we lose, because the format's escapes are few.
LOSSY_PEOPLE = r"""BEGIN:VCARD
VERSION:3.0
N:Semi\;colon;Com\,ma;;;
ORG:Pipes\; Taps\, Ltd.;Floor
KIND:org
BDAY:1990-05-05T23:30:00Z
TITLE:First line\nsecond line
item1.TEL:2
item1.X-ABLabel:(null)
NOTE:C:\\new\\temp\\\;x\, y
X-SOCIALPROFILE;TYPE=weblog:a\,b
END:VCARD
"""
# By last name: what a property was, and what comes back.
LOSSES = {
    "Semi;colon": {
        # A semicolon in a name or an organisation moves what follows into the next field.
        "kABPersonLastNameProperty": ("Semi;colon", "Semi"),
        "kABPersonFirstNameProperty": ("Com,ma", "colon"),
        "kABPersonMiddleNameProperty": (None, "Com,ma"),
        "kABPersonOrganizationProperty": ("Pipes; Taps, Ltd.", "Pipes"),
        "kABPersonDepartmentProperty": ("Floor", " Taps, Ltd., Floor"),
        # A line break ends a job title.
        "kABPersonJobTitleProperty": ("First line\nsecond line", "First line"),
        # Backslashes are not escaped.
        "kABPersonNoteProperty": ("C:\\new\\temp\\;x, y", "C:\new\\temp\\;x, y"),
        # The time of a birthday is not written.
        "kABPersonBirthdayProperty": ("1990-05-05T23:30:00Z", "1990-05-05T12:00:00Z"),
    },
    "Pemberton-Smythe": {
        "kABPersonOrganizationProperty": ("Pemberton & Sons; Umbrellas, Ltd.", "Pemberton & Sons"),
        "kABPersonDepartmentProperty": ("Sales", " Umbrellas, Ltd., Sales"),
    },
}
NOT_WRITTEN = ["kABPersonKindProperty"]

TYPES = {"_$!<Work>!$_": "WORK", "_$!<Home>!$_": "HOME", "_$!<Mobile>!$_": "CELL", "_$!<Main>!$_": "MAIN",
         "_$!<Pager>!$_": "PAGER", None: "(null)"}
NAME_PARTS = ["kABPersonLastNameProperty", "kABPersonFirstNameProperty", "kABPersonMiddleNameProperty",
              "kABPersonPrefixProperty", "kABPersonSuffixProperty"]
ADDRESS_KEYS = ["Street", "City", "State", "ZIP", "Country"]


def people_of(home):
    return [home.json("contacts", "show", str(person["id"])) for person in home.json("contacts")]


def photos_in(text):
    """The bytes of each card's photo, or None, straight from the lines of the vCard text."""
    cards = text.replace("\r\n", "\n").replace("\n ", "").split("BEGIN:VCARD\n")[1:]
    encoded = [[line.split(":", 1)[1] for line in card.split("\n") if line.startswith("PHOTO")] for card in cards]
    return [base64.b64decode(lines[0]) if lines else None for lines in encoded]


class Reader:
    """A stranger's reader. Each of them takes texts apart at commas, since backups have no backslash before them."""

    def whole(self, part):
        """The pieces of a part of a name, an address or an organisation, together again."""
        return part if isinstance(part, str) else ",".join(part)

    def organization(self, parts):
        """A semicolon in an organisation looks like the one before the department; readers drop empty departments."""
        return ";".join(self.whole(part) for part in parts).rstrip(";")


class VObject(Reader):
    """What python3-vobject makes of a backup. It drops what stands behind a comma in a text."""

    def cards(self, text):
        return [self.card(card) for card in vobject.readComponents(io.StringIO(text, newline=""))]

    def text(self, value):
        return value.split(",")[0]

    note = text
    address_label = staticmethod(lambda label: label)

    def card(self, card):
        lines = list(card.lines())
        labels = {line.group: line.value for line in lines if line.name == "X-ABLABEL"}

        def values(name):
            return [line.value for line in lines if line.name == name]

        def entries(name, value=lambda line: line.value):
            return [((line.params.get("TYPE") or line.singletonparams or [labels.get(line.group)])[0], value(line))
                    for line in lines if line.name == name]

        def address(line):
            parts = [line.value.street, line.value.city, line.value.region, line.value.code, line.value.country]
            return [self.whole(part) for part in parts]

        name = values("N")[0]
        parts = [name.family, name.given, name.additional, name.prefix, name.suffix]
        return {"name": [self.whole(part) for part in parts], "phones": entries("TEL"), "emails": entries("EMAIL"),
                "urls": entries("URL"), "related": entries("X-ABRELATEDNAMES"),
                "addresses": entries("ADR", address), "notes": values("NOTE"), "nicknames": values("NICKNAME"),
                "titles": values("TITLE"), "birthdays": values("BDAY"), "photos": values("PHOTO"),
                "organization": self.organization(values("ORG")[0])}


class ICal(Reader):
    """What ical.js makes of a backup, from its JSON.

    It keeps the backslash before a semicolon in a note, and drops a type that stands without "TYPE=", as addresses
    have it; so labels of addresses are not compared.
    """

    def __init__(self, folder, node):
        self.folder = folder
        self.node = node

    def cards(self, text):
        file = pathlib.Path(self.folder) / "backup.vcf"
        file.write_bytes(text.encode())
        done = subprocess.run([self.node, "read_with_ical.mjs", str(file)], cwd=self.folder, capture_output=True,
                              check=False)
        if done.returncode != 0:
            raise AssertionError("ical.js cannot read the backup:\n" + done.stderr.decode())
        return [self.card(properties) for _, properties, _ in json.loads(done.stdout)]

    def text(self, value):
        return value

    def note(self, value):
        return value.replace(";", "\\;")

    def address_label(self, _):
        return None

    def card(self, properties):
        labels = {about["group"]: values[0] for name, about, _, *values in properties if name == "x-ablabel"}

        def values(wanted):
            return [self.whole(values) for name, _, _, *values in properties if name == wanted]

        def entries(wanted, value=self.whole):
            return [(about.get("type") or labels.get(about.get("group")), value(values))
                    for name, about, _, *values in properties if name == wanted]

        def structured(wanted):
            return [[self.whole(part) for part in values[0]] for name, _, _, *values in properties if name == wanted]

        return {"name": structured("n")[0], "phones": entries("tel"), "emails": entries("email"),
                "urls": entries("url"), "related": entries("x-abrelatednames"),
                "addresses": [(None, address[2:]) for address in structured("adr")], "notes": values("note"),
                "nicknames": values("nickname"), "titles": values("title"), "birthdays": values("bday"),
                "photos": [base64.b64decode(photo) for photo in values("photo")],
                "organization": self.organization(structured("org")[0])}


def expected_card(person, photo, reader):
    """The person as `reader` should have read the card."""
    properties = person["properties"]

    def texts(name, seen=reader.text):
        return [seen(properties[name])] if name in properties else []

    def entries(name, seen=reader.text):
        return [(TYPES.get(entry["label"], entry["label"]), seen(entry["value"])) for entry in properties.get(name, [])]

    addresses = [(reader.address_label(label), [value.get(key, "") for key in ADDRESS_KEYS])
                 for label, value in entries("kABPersonAddressProperty", lambda value: value)]
    return {"name": [properties.get(part, "") for part in NAME_PARTS],
            "phones": entries("kABPersonPhoneProperty"), "emails": entries("kABPersonEmailProperty"),
            "urls": entries("kABPersonURLProperty", lambda value: value),
            "related": entries("kABPersonRelatedNamesProperty", lambda value: value), "addresses": addresses,
            "notes": texts("kABPersonNoteProperty", reader.note), "nicknames": texts("kABPersonNicknameProperty"),
            "titles": texts("kABPersonJobTitleProperty"),
            "birthdays": texts("kABPersonBirthdayProperty", lambda instant: instant[:10]),
            "photos": [] if photo is None else [photo],
            "organization": reader.organization([properties.get("kABPersonOrganizationProperty", ""),
                                                 properties.get("kABPersonDepartmentProperty", "")])}


class CrossReading(cli_support.Case):
    def assertReads(self, reader):
        home = self.home()
        sources = [ODD_PEOPLE, SAMPLE.read_text(encoding="utf-8")]
        for source in sources:
            home.import_text(source)
        path = home.json("backup", "--quiet", *PHOTOS_AS_THEY_ARE)["path"]
        people = people_of(home)
        photos = [photo for source in sources for photo in photos_in(source)]
        cards = reader.cards(pathlib.Path(path).read_bytes().decode())
        self.assertEqual(len(cards), len(people))
        self.assertGreater(sum(photo is not None for photo in photos), 10)
        for person, photo, card in zip(people, photos, cards):
            expected = expected_card(person, photo, reader)
            for name, value in expected.items():
                with self.subTest(person=expected["name"], field=name):
                    self.assertEqual(card[name], value)

    def test_vobject(self):
        if vobject is None:
            self.fail(f"{sys.executable} cannot import vobject: install python3-vobject")
        self.assertReads(VObject())

    def test_ical(self):
        self.assertReads(ICal(*reader_arguments))


class RoundTrip(cli_support.Case):
    def test_another_home_gets_the_same_people(self):
        first = self.home("first")
        second = self.home("second")
        for source in (LOSSY_PEOPLE, ODD_PEOPLE, SAMPLE.read_text(encoding="utf-8")):
            first.import_text(source)
        path = first.json("backup", "--quiet", *PHOTOS_AS_THEY_ARE)["path"]
        self.assertEqual(second.json("import", path)["warnings"], [])
        before = people_of(first)
        after = people_of(second)
        self.assertEqual(len(after), len(before))
        for one, other in zip(before, after):
            with self.subTest(person=one["properties"].get("kABPersonLastNameProperty")):
                self.lose(one["properties"])
                self.assertEqual({**other, "id": 0}, {**one, "id": 0})

    def lose(self, properties):
        for name in NOT_WRITTEN:
            properties.pop(name, None)
        for name, (before, after) in LOSSES.get(properties.get("kABPersonLastNameProperty"), {}).items():
            self.assertEqual(properties.pop(name, None), before)
            if after is not None:
                properties[name] = after

    def test_nothing_more_is_lost_the_second_time(self):
        contents = []
        source = SAMPLE
        for generation in range(3):
            home = self.home(f"generation{generation}")
            home.ok("import", str(source))
            source = pathlib.Path(home.json("backup", "--quiet", *PHOTOS_AS_THEY_ARE)["path"])
            contents.append(source.read_bytes())
        self.assertEqual(contents[2], contents[1])


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    reader_arguments = (sys.argv.pop(2), sys.argv.pop(2))
    cli_support.main()
