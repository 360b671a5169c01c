#!/usr/bin/python3
"""A CSV backup of varnokctl is read by Python's csv module.

    csv_test.py PROGRAM
"""

import csv
import io
import pathlib
import sys
import tempfile
import unittest

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(TESTS / "cli"))

import cli_support  # noqa: E402
import make_book  # noqa: E402

PEOPLE = """BEGIN:VCARD
VERSION:3.0
N:Işık;Ayşe;;Dr.;
ORG:ACME;Yazılım
TITLE:Mühendis
NICKNAME:Ay
BDAY:1990-05-17
TEL;TYPE=CELL:1
TEL;TYPE=CELL:2
TEL;TYPE=PAGER:3
EMAIL;TYPE=WORK:a@example.org
ADR;TYPE=HOME:;;Cadde 1\\nKat 2;İzmir;;35000;TR
URL;TYPE=WORK:https://example.org
NOTE:"Merhaba"\\, dedi;\\nson
END:VCARD
BEGIN:VCARD
VERSION:3.0
N:山田;太郎;;;
NOTE:東京
END:VCARD
"""

NAMES = ["Dr.", "Ayşe", "", "Işık", "", "ACME", "Yazılım", "Mühendis", "Ay"]
AYSE = [*NAMES, "1990-05-17", "", "2", "", "", "", "", "", "", "3", "", "a@example.org", "", "", "", "", "", "", "",
        "https://example.org", "", "Cadde 1 Kat 2 İzmir  35000 TR", '"Merhaba", dedi; son']
TARO = ["", "太郎", "", "山田", *[""] * 27, "東京"]

NAME_PROPERTIES = [f"kABPerson{part}Property" for part in ("Prefix", "FirstName", "MiddleName", "LastName", "Suffix",
                                                           "Organization", "Department", "JobTitle", "Nickname")]
PHONE_LABELS = ["_$!<Mobile>!$_", "iPhone", "_$!<Work>!$_", "_$!<Home>!$_", "_$!<Main>!$_", "_$!<HomeFAX>!$_",
                "_$!<WorkFAX>!$_", "_$!<Pager>!$_", "_$!<Other>!$_"]
ADDRESS_LABELS = ["_$!<Work>!$_", "_$!<Home>!$_"]
ADDRESS_KEYS = ["Street", "City", "State", "ZIP", "Country"]


def on_one_line(text):
    return text.replace("\n", " ").replace("\r", "")


def expected_row(properties):
    """The columns of a person without web addresses and anniversary, whose values have no commas."""
    def entries(name):
        return [(entry["label"], entry["value"]) for entry in properties.get(f"kABPerson{name}Property", [])]

    phones, addresses = dict(entries("Phone")), dict(entries("Address"))  # The last of a label wins.
    emails = [address for _, address in entries("Email")][:6]
    cleaned = [{**addresses[label], "Street": on_one_line(addresses[label].get("Street", "")).replace('"', "")}
               if label in addresses else None for label in ADDRESS_LABELS]
    return [*(properties.get(name, "") for name in NAME_PROPERTIES),
            properties.get("kABPersonBirthdayProperty", "")[:10], "",
            *(phones.get(label, "") for label in PHONE_LABELS),
            *emails, *[""] * (6 - len(emails)), *[""] * 3,
            *("" if address is None else " ".join(address.get(key, "") for key in ADDRESS_KEYS) for address in cleaned),
            on_one_line(properties.get("kABPersonNoteProperty", ""))]


class CrossReading(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="varnok-csv-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def backup(self, language):
        """The bytes of the only CSV file after a second backup has replaced the first."""
        home = cli_support.Home(self.folder / language)
        source = self.folder / "people.vcf"
        source.write_text(PEOPLE)
        home.ok("import", str(source))
        (home.documents / "Varnok-2001-01-01-000000-1.csv").write_text("older")
        home.ok("--language", language, "backup", "--type", "csv")
        [path] = home.documents.glob("*.csv")
        return path.read_bytes()

    def test_utf8(self):
        data = self.backup("en")
        self.assertEqual((data.count(b"\r"), data.count(b"\n")), (3, 0))
        header, *rows = csv.reader(io.StringIO(data.decode(), newline=""))
        self.assertEqual(header[:4], ["Prefix", "First Name", "Middle Name", "Last Name"])
        self.assertEqual(len(header), len(AYSE))
        self.assertEqual(rows, [AYSE, TARO])

    def test_whole_book(self):
        home = cli_support.Home(self.folder / "home")
        home.import_text(make_book.book(120))
        path = pathlib.Path(home.json("--language", "en", "backup", "--quiet", "--type", "csv")["path"])
        _, *rows = csv.reader(io.StringIO(path.read_bytes().decode(), newline=""))
        people = [home.json("contacts", "show", str(person["id"]))["properties"] for person in home.json("contacts")]
        self.assertEqual(rows, [expected_row(properties) for properties in people])

    def test_code_page(self):
        header, ayse, taro, end = self.backup("tr").split(b"\r")
        self.assertEqual(end, b"")
        self.assertTrue(header.decode("cp1254").startswith("Ön Ek,Ad,"))
        self.assertEqual(next(csv.reader([ayse.decode("cp1254")])), AYSE)
        self.assertEqual(next(csv.reader([taro.decode("utf-8")])), TARO)


if __name__ == "__main__":
    cli_support.main()
