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

    def test_code_page(self):
        header, ayse, taro, end = self.backup("tr").split(b"\r")
        self.assertEqual(end, b"")
        self.assertTrue(header.decode("cp1254").startswith("Ön Ek,Ad,"))
        self.assertEqual(next(csv.reader([ayse.decode("cp1254")])), AYSE)
        self.assertEqual(next(csv.reader([taro.decode("utf-8")])), TARO)


if __name__ == "__main__":
    cli_support.main()
