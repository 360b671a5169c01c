#!/usr/bin/python3
"""The clean-up from outside: duplicates, removal, and kills in the middle of both.

    cleanup_test.py PROGRAM

VARNOK_TEST_SEED repeats a run's moments, as far as the machine repeats its own.
"""

import os
import random
import statistics
import time

import cli_support
import make_book

KILLS = 40
PEOPLE = 3000

# The last moment, as a part of the normal duration: some runs end by themselves.
LATEST = 1.1


def card(*lines):
    return "\r\n".join(["BEGIN:VCARD", "VERSION:3.0", *lines, "END:VCARD", ""])


ADA = card("N:Lovelace;Ada;;;", "TEL;TYPE=CELL:555", "TEL:556", "BDAY:1984-02-29")
BOB = card("N:;Bob;;;", "EMAIL;TYPE=HOME:bob@example.org")
EVE = card("N:;Eve;;;")
BOOK = ADA + BOB + EVE + ADA + BOB + ADA
ADA_KEY = {"firstName": "Ada", "lastName": "Lovelace", "middleName": None, "prefix": None, "suffix": None,
           "nickname": None, "organization": None, "jobTitle": None, "department": None, "birthday": "1984-02-29",
           "emails": [], "phones": [{"label": "_$!<Mobile>!$_", "value": "555"}, {"label": None, "value": "556"}]}
BOB_KEY = {**dict.fromkeys(ADA_KEY), "firstName": "Bob", "phones": [],
           "emails": [{"label": "_$!<Home>!$_", "value": "bob@example.org"}]}
FOUND = {"groups": [{"key": ADA_KEY, "counter": "2", "kept": 1, "duplicates": [4, 6]},
                    {"key": BOB_KEY, "counter": "1", "kept": 2, "duplicates": [5]}],
         "duplicateRecords": [4, 5, 6], "removed": 0}


class Clean(cli_support.Case):
    def book(self):
        home = self.home()
        home.import_text(BOOK)
        return home

    def ids(self, home):
        return [person["id"] for person in home.json("contacts")]

    def test_duplicates(self):
        home = self.book()
        self.assertEqual(home.json("duplicates"), FOUND)
        self.assertEqual(home.ok("duplicates").out, "1\tAda Lovelace\t4 6\n2\tBob\t5\n")
        self.assertSaysOneLine(home.run("duplicates", "--remove", "--yes"))  # No backup.
        self.assertEqual(home.count(), 6)
        home.ok("backup", "--type", "csv")
        self.assertSaysOneLine(home.run("duplicates", "--remove", "--yes"))  # No vCard backup.
        home.ok("backup")
        self.assertEqual(home.json("duplicates", "--remove", "--yes"), {**FOUND, "removed": 3})
        self.assertEqual(self.ids(home), [1, 2, 3])
        nobody = {"groups": [], "duplicateRecords": [], "removed": 0}
        self.assertEqual(home.json("duplicates", "--remove"), nobody)  # No question either.

    def test_questions(self):
        answers = {"y\n": True, "YES\n": True, " y": True, "n\n": False, "\n": False, "": False, "yesterday\n": False}
        commands = {("duplicates", "--remove"): 3, ("contacts", "remove", "2", "3"): 4, ("contacts", "remove", "--all"): 0}
        before = self.book()
        before.ok("backup")
        for command, left in commands.items():
            for answer, yes in answers.items():
                with self.subTest(command=command, answer=answer):
                    home = before.copy_to(self.folder / "copy")
                    result = home.run(*command, stdin=answer)
                    self.assertEqual(result.code, 0 if yes else 1)
                    self.assertIn(" [y/N] ", result.err)
                    self.assertEqual(home.count(), left if yes else 6)

    def test_contacts_remove(self):
        home = self.book()
        self.assertSaysOneLine(home.run("contacts", "remove", "1", "7", "--yes"))
        self.assertEqual(home.count(), 6)
        self.assertEqual(home.json("contacts", "remove", "2", "4", "2", "--yes"), {"removed": 2})
        self.assertEqual(self.ids(home), [1, 3, 5, 6])
        self.assertEqual(home.json("contacts", "remove", "--all", "--yes"), {"removed": 4})
        self.assertEqual(home.json("contacts", "remove", "--all"), {"removed": 0})

    def test_wrong_usage(self):
        home = self.home()
        for command in (["contacts", "remove"], ["contacts", "remove", "1", "--all"], ["contacts", "remove", "Ada"],
                        ["contacts", "remove", "99999999999"], ["duplicates", "--yes"], ["duplicates", "1"]):
            with self.subTest(command=command):
                result = home.run(*command)
                self.assertEqual((result.code, result.out), (2, ""))
                self.assertFalse(home.contacts_file.exists())

    def test_a_damaged_book(self):
        home = self.home_with_backup(make_book.book(400))
        content = bytearray(home.contacts_file.read_bytes())
        content[8192:-4096] = b"\xa5" * (len(content) - 12288)
        home.contacts_file.write_bytes(content)
        for command in (["duplicates"], ["duplicates", "--remove", "--yes"], ["contacts", "remove", "--all", "--yes"]):
            with self.subTest(command=command):
                self.assertSaysOneLine(home.run(*command))
        self.assertEqual(home.contacts_file.read_bytes(), content)


class Kill(cli_support.Case):
    def kill(self, *command):
        """Kills the command at random moments: everybody is there, or those whom it leaves when nobody stops it."""
        seed = int(os.environ.get("VARNOK_TEST_SEED") or random.randrange(1 << 32))
        print(f"seed {seed}")
        chance = random.Random(seed)
        book = make_book.book(PEOPLE)
        before = self.home_with_backup(book + book)
        earlier = before.backups()
        everybody = before.count()
        seconds = []
        for _ in range(3):
            copy = before.copy_to(self.folder / "copy")
            begin = time.monotonic()
            copy.ok(*command)
            seconds.append(time.monotonic() - begin)
        left = copy.count()
        self.assertLess(left, everybody)
        killed = 0
        for trial in range(KILLS):
            with self.subTest(trial=trial):
                home = before.copy_to(self.folder / "copy")
                process = home.start(*command)
                time.sleep(chance.uniform(0, LATEST * statistics.median(seconds)))
                process.kill()
                process.communicate(timeout=cli_support.TIME_LIMIT)
                killed += process.returncode != 0
                self.assertNothingLost(home, earlier, {everybody, left})
        print(f"{killed} of {KILLS} runs were killed, the others had ended")
        self.assertGreater(killed, KILLS // 4)

    def test_duplicates(self):
        self.kill("duplicates", "--remove", "--yes")

    def test_remove_all(self):
        self.kill("contacts", "remove", "--all", "--yes")


if __name__ == "__main__":
    cli_support.main()
