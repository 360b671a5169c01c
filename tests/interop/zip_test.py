#!/usr/bin/python3
"""A zip backup of varnokctl is tested by unzip, 7-Zip and Python, and its cards compared with those of a single file.

    zip_test.py PROGRAM
"""

import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest
import zipfile

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(TESTS / "cli"))

import cli_support  # noqa: E402
import make_book  # noqa: E402

ENVIRONMENT = {"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"}


def tool(*command):
    return subprocess.run(command, env=ENVIRONMENT, capture_output=True, timeout=cli_support.TIME_LIMIT, check=False)


def with_plain_dates(archive, copy):
    """A copy in which every entry is of the same proper date and time."""
    content = bytearray(archive.read_bytes())
    with zipfile.ZipFile(archive) as opened:
        at = opened.start_dir
        for entry in opened.infolist():
            for place in (entry.header_offset + 10, at + 12):
                content[place:place + 4] = struct.pack("<HH", 14 << 11 | 7 << 5, (2024 - 1980) << 9 | 3 << 5 | 5)
            at += 46 + sum(struct.unpack_from("<HHH", content, at + 28))
    copy.write_bytes(content)
    return copy


class Zip(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="varnok-zip-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def backups_of(self, book):
        """The paths of the zip and of the single file of the same people."""
        home = cli_support.Home(self.folder / "home")
        source = self.folder / "book.vcf"
        source.write_text(book, newline="")
        home.ok("import", str(source))
        for number in ("--single", "--multiple"):
            home.ok("--language", "en", "backup", number)
        [archive], [single] = home.documents.glob("*.zip"), home.documents.glob("*.vcf")
        return archive, single

    def check(self, count, book):
        archive, single = self.backups_of(book)
        for command in (("unzip", "-tq"), ("7z", "t")):
            done = tool(*command, str(archive))
            self.assertEqual(done.returncode, 0, done)
            self.assertEqual(done.stderr, b"")
        # 7-Zip finds the word of date and time odd when it is no date. It may find nothing else.
        done = tool("7z", "t", str(with_plain_dates(archive, self.folder / "dated.zip")))
        self.assertNotIn(b"WARNING", done.stdout)
        with zipfile.ZipFile(archive) as opened:
            self.assertEqual(len(opened.infolist()), count)
            self.assertIsNone(opened.testzip())
            cards = [opened.read(entry) for entry in opened.infolist()]
        self.assertEqual(b"".join(cards), single.read_bytes())
        return archive

    def test_three_extracted(self):
        archive = self.check(3, make_book.book(3, photo_every=1, photo_bytes=5000))
        with zipfile.ZipFile(archive) as opened:
            expected = {entry.filename: opened.read(entry) for entry in opened.infolist()}
        self.assertTrue(any(name.startswith("Şule 2 Çağlar") for name in expected), expected.keys())
        for number, command in enumerate((("unzip", "-q", "-d"), ("7z", "x"))):
            place = self.folder / str(number)
            if command[0] == "unzip":
                done = tool(*command, str(place), str(archive))
            else:
                done = tool(*command, f"-o{place}", str(archive))
            self.assertEqual(done.returncode, 0, done)
            self.assertEqual({path.name: path.read_bytes() for path in place.iterdir()}, expected)

    def test_more_than_a_plain_zip_holds(self):
        self.check(70_000, make_book.book(70_000))


if __name__ == "__main__":
    cli_support.main()
