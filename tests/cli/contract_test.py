#!/usr/bin/python3
"""What scripts and packagers rely on in varnokctl: its commands, its answers, and what it does to files.

    contract_test.py PROGRAM
"""

import contextlib
import email
import email.policy
import os
import pathlib
import pty
import re
import select
import signal
import sqlite3
import subprocess
import time

import cli_support
import make_book

TEXTS = pathlib.Path(__file__).resolve().parents[2] / "resources" / "texts"

INSTANT = r"\A\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ\Z"
BACKUP_NAME = r"\AVarnok-\d{4}-\d\d-\d\d-\d{6}-(\d+)\.vcf\Z"

THREE_PEOPLE = make_book.book(3)

# Every kind of value that a person can have.
RICH_CARD = """BEGIN:VCARD
VERSION:3.0
N:Lindqvist;Ada;Maren;Dr.;PhD
NICKNAME:Addie
ORG:Nordlicht;Optics
TITLE:Head
TEL;TYPE=CELL:+1 202 555 0101
item1.TEL:+1\\;2
item1.X-ABLabel:Summer house
TEL:3
EMAIL;TYPE=HOME:ada@example.org
URL;TYPE=WORK:https://example.org/
ADR;TYPE=HOME:;;12 Harbour Lane\\nApt 4;Springfield;IL;62701;Norway
ADR;TYPE=WORK:;;;Oslo;;;
item2.X-ABDATE:2009-09-01 12:34:56 +0000
item2.X-ABLabel:_$!<Anniversary>!$_
item3.X-ABRELATEDNAMES:Jonas
item3.X-ABLabel:_$!<Spouse>!$_
X-XMPP;TYPE=HOME;CHARSET=UTF-8:ada@chat.example
X-SOCIALPROFILE;TYPE=weblog:ada
BDAY:1984-02-29
NOTE:One\\nTwo
END:VCARD
"""
RICH_PROPERTIES = {
    "kABPersonFirstNameProperty": "Ada",
    "kABPersonLastNameProperty": "Lindqvist",
    "kABPersonMiddleNameProperty": "Maren",
    "kABPersonPrefixProperty": "Dr.",
    "kABPersonSuffixProperty": "PhD",
    "kABPersonNicknameProperty": "Addie",
    "kABPersonOrganizationProperty": "Nordlicht",
    "kABPersonDepartmentProperty": "Optics",
    "kABPersonJobTitleProperty": "Head",
    "kABPersonNoteProperty": "One\nTwo",
    "kABPersonBirthdayProperty": "1984-02-29T12:00:00Z",
    "kABPersonPhoneProperty": [{"label": "_$!<Mobile>!$_", "value": "+1 202 555 0101"},
                               {"label": "Summer house", "value": "+1;2"},
                               {"label": None, "value": "3"}],
    "kABPersonEmailProperty": [{"label": "_$!<Home>!$_", "value": "ada@example.org"}],
    "kABPersonURLProperty": [{"label": "_$!<Work>!$_", "value": "https://example.org/"}],
    "kABPersonAddressProperty": [{"label": "_$!<Home>!$_",
                                  "value": {"Street": "12 Harbour Lane\nApt 4", "City": "Springfield", "State": "IL",
                                            "ZIP": "62701", "Country": "Norway"}},
                                 {"label": "_$!<Work>!$_", "value": {"City": "Oslo"}}],
    "kABPersonDateProperty": [{"label": "_$!<Anniversary>!$_", "value": "2009-09-01T12:34:56Z"}],
    "kABPersonRelatedNamesProperty": [{"label": "_$!<Spouse>!$_", "value": "Jonas"}],
    "kABPersonInstantMessageProperty": [{"label": "_$!<Home>!$_",
                                         "value": {"service": "XMPP", "username": "ada@chat.example"}}],
    "kABPersonSocialProfileProperty": [{"label": None, "value": {"service": "weblog", "username": "ada"}}],
}


def text(key, language="en"):
    """A text of the application."""
    catalogue = (TEXTS / f"{language}.po").read_text(encoding="utf-8")
    pieces = re.search(rf'^msgid "{key}"\nmsgstr ((?:"[^\n]*"\n)+)', catalogue, re.M).group(1)
    return "".join(re.findall(r'"(.*)"', pieces)).replace('\\"', '"').replace("\\n", "\n")


class Usage(cli_support.Case):
    WRONG = {
        "no command": [],
        "unknown command": ["frobnicate"],
        "unknown option": ["contacts", "--frobnicate"],
        "argument too many": ["contacts", "7", "8"],
        "no file": ["import"],
        "no identifier": ["contacts", "show"],
        "identifier that is no number": ["contacts", "show", "Ada"],
        "no key": ["settings", "get"],
        "no value": ["settings", "set", "EVERY"],
        "unknown store": ["--store", "cloud", "contacts"],
        "unknown backup type": ["backup", "--type", "xml"],
        "one file and many": ["backup", "--multiple", "--single"],
        "mail to nobody": ["backups", "mail", "x.vcf"],
        "no backup named": ["backups", "delete"],
        "--set of an unknown key": ["--set", "NO_SUCH_KEY=1", "contacts"],
        "--set without a value": ["--set", "EVERY", "contacts"],
        "--set of the platform's languages": ["--set", "AppleLanguages=de", "contacts"],
    }

    def test_wrong_usage(self):
        home = self.home()
        for name, arguments in self.WRONG.items():
            with self.subTest(name):
                result = home.run(*arguments)
                self.assertEqual((result.code, result.out), (2, ""))
                self.assertNotEqual(result.err, "")
                self.assertFalse(home.contacts_file.exists(), "wrong usage made a contact store")

    def test_help_and_version(self):
        for option in ("--help", "--version"):
            result = cli_support.run(option)
            self.assertEqual((result.code, result.err), (0, ""))
            self.assertIn("varnokctl", result.out)


class Places(cli_support.Case):
    def assertPlaces(self, arguments, env, data, config):
        result = cli_support.run(*arguments, "import", "-", stdin=THREE_PEOPLE, env=env)
        self.assertEqual(result.code, 0, result.err)
        for place in (data / "contacts.db", config / "preferences.db", data / "Documents"):
            self.assertTrue(place.exists(), f"{place} is missing")

    def test_where_everything_is_kept(self):
        root = self.folder
        xdg = {"XDG_DATA_HOME": str(root / "data"), "XDG_CONFIG_HOME": str(root / "config"),
               "XDG_STATE_HOME": str(root / "state")}
        relative = {key: "relative" for key in xdg}
        rows = {
            "--home": (["--home", str(root / "a")], {"VARNOK_HOME": str(root / "no"), **xdg}, root / "a", root / "a"),
            "VARNOK_HOME": ([], {"VARNOK_HOME": str(root / "b"), **xdg}, root / "b", root / "b"),
            "XDG variables": ([], xdg, root / "data/varnok", root / "config/varnok"),
            "neither": ([], {"HOME": str(root / "user")}, root / "user/.local/share/varnok",
                        root / "user/.config/varnok"),
            "relative XDG variables do not count": ([], {"HOME": str(root / "other"), **relative},
                                                    root / "other/.local/share/varnok", root / "other/.config/varnok"),
        }
        for name, row in rows.items():
            with self.subTest(name):
                self.assertPlaces(*row)
        self.assertFalse((root / "no").exists())

    def test_only_the_user_may_look(self):
        home = self.home("new")
        previous = os.umask(0o022)
        self.addCleanup(os.umask, previous)
        home.import_text(THREE_PEOPLE)
        home.ok("backup")
        home.ok("settings", "set", "EVERY", "WEEK")
        modes = {path.relative_to(home.path).as_posix(): f"{path.stat().st_mode & 0o777:o}"
                 for path in [home.path, *home.path.rglob("*")]}
        right = {name: "700" if (home.path / name).is_dir() else "600" for name in modes}
        self.assertEqual(modes, right)

    def test_languages(self):
        home = self.home()
        german = {"LC_ALL": "de_DE.UTF-8"}
        rows = {
            "--language": (["--language", "de,tr"], {}, "de"),
            "--language before LANGUAGE": (["--language", "it"], {"LANGUAGE": "fr", **german}, "it"),
            "the next one where there is no catalogue": (["--language", "xx,fr"], {}, "fr"),
            "LANGUAGE": ([], {"LANGUAGE": "tr:de", **german}, "tr"),
            "LC_ALL": ([], german, "de"),
            "LC_ALL before LC_MESSAGES": ([], {"LC_MESSAGES": "fr_FR.UTF-8", **german}, "de"),
            "LC_MESSAGES before LANG": ([], {"LC_ALL": "", "LC_MESSAGES": "es_ES", "LANG": "de_DE"}, "es"),
            "LANG": ([], {"LC_ALL": "", "LANG": "el_GR.UTF-8"}, "el"),
            "LANGUAGE does not count in the C locale": ([], {"LANGUAGE": "de", "LC_ALL": "C.UTF-8"}, "en"),
            "none": (["--language", "xx"], {}, "en"),
        }
        for name, (arguments, env, language) in rows.items():
            with self.subTest(name):
                self.assertIn(text("NOCONTACT", language), home.run(*arguments, "backup", env=env).err)


class Import(cli_support.Case):
    def test_answers(self):
        home = self.home()
        file = self.file("book.vcf", THREE_PEOPLE)
        self.assertEqual(home.json("import", str(file)), {"imported": 3, "skipped": 0, "warnings": []})
        result = home.ok("import", str(file))
        self.assertEqual((result.out, result.err), ("3 contacts imported\n", ""))
        self.assertEqual(home.count(), 6, "importing twice doubles")

    def test_standard_input_and_several_files(self):
        home = self.home()
        file = self.file("book.vcf", THREE_PEOPLE)
        self.assertEqual(home.json("import", str(file), "-", stdin=RICH_CARD)["imported"], 4)

    def test_card_that_cannot_be_read(self):
        home = self.home()
        card = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:{};;;;\r\nEND:VCARD\r\n"
        file = self.file("book.vcf", card.format("Ada") + "BEGIN:VCARD\r\nVERSION:3.0\r\nEND:VCARD\r\n" +
                         card.format("Bob"))
        result = home.ok("--json", "import", str(file))
        self.assertEqual(sorted(result.json), ["imported", "skipped", "warnings"])
        self.assertEqual((result.json["imported"], result.json["skipped"]), (2, 1))
        self.assertEqual(len(result.json["warnings"]), 1)
        self.assertRegex(result.json["warnings"][0], r"\b5\b")  # The line of its BEGIN.
        self.assertEqual(result.err, result.json["warnings"][0] + "\n")
        self.assertEqual([person["lastName"] for person in home.json("contacts")], ["Ada", "Bob"])

    def test_file_that_cannot_be_read_changes_nothing(self):
        home = self.home()
        home.import_text(THREE_PEOPLE)
        good = str(self.file("good.vcf", THREE_PEOPLE))
        bad = {"missing": str(self.folder / "missing.vcf"), "a folder": str(self.folder),
               "without cards": str(self.file("text.vcf", "hello\n")), "empty": str(self.file("empty.vcf", ""))}
        for name, file in bad.items():
            for files in ([file], [good, file], [file, good]):
                with self.subTest(name, files=len(files)):
                    result = home.run("import", *files)
                    self.assertSaysOneLine(result)
                    self.assertIn(file, result.err)
                    self.assertEqual(home.count(), 3)


class Contacts(cli_support.Case):
    def test_list(self):
        home = self.home()
        self.assertEqual(home.json("contacts"), [])
        home.import_text(RICH_CARD + "BEGIN:VCARD\nVERSION:3.0\nORG:Firm\nEND:VCARD\n")
        people = home.json("contacts")
        self.assertEqual([{**person, "id": 0} for person in people],
                         [{"id": 0, "name": "Ada", "lastName": "Lindqvist"}, {"id": 0, "name": "", "lastName": ""}])
        first, second = (person["id"] for person in people)
        self.assertEqual(home.ok("contacts").out, f"{first}\tAda\tLindqvist\n{second}\t\t\n")

    def test_show(self):
        home = self.home()
        home.import_text(RICH_CARD)
        identifier = home.json("contacts")[0]["id"]
        self.assertEqual(home.json("contacts", "show", str(identifier)),
                         {"id": identifier, "properties": RICH_PROPERTIES, "image": None})
        shown = home.ok("contacts", "show", str(identifier)).out
        self.assertIn("kABPersonFirstNameProperty: Ada\n", shown)
        self.assertIn("kABPersonPhoneProperty [Summer house]: +1;2\n", shown)

    def test_image(self):
        home = self.home()
        home.import_text(make_book.book(1, photo_every=1, photo_bytes=2000))
        identifier = home.json("contacts")[0]["id"]
        self.assertEqual(home.json("contacts", "show", str(identifier))["image"], {"type": "jpeg", "bytes": 2000})

    def test_nobody_has_this_identifier(self):
        self.assertSaysOneLine(self.home().run("contacts", "show", "4711"))

    def test_text_cannot_command_the_terminal(self):
        home = self.home()
        home.import_text("BEGIN:VCARD\nVERSION:3.0\nN:La\u009b31mst;Fi\x1b[31m\x07rst;;;\nEND:VCARD\n")
        person = home.json("contacts")[0]
        for command in (["contacts"], ["contacts", "show", str(person["id"])]):
            self.assertNotRegex(home.ok(*command).out, "[\x00-\x08\x0b-\x1f\x7f-\x9f]")
        self.assertEqual((person["name"], person["lastName"]), ("Fi\x1b[31m\x07rst", "La\u009b31mst"))


class Backup(cli_support.Case):
    def test_answers(self):
        home = self.home()
        home.import_text(THREE_PEOPLE)
        result = home.ok("--json", "backup")
        answer = result.json
        path = home.documents / answer["name"]
        self.assertEqual(re.match(BACKUP_NAME, answer["name"]).group(1), "3")
        self.assertEqual({**answer, "seconds": 0},
                         {"path": str(path), "name": path.name, "type": "vcf", "contacts": 3,
                          "bytes": path.stat().st_size, "seconds": 0})
        self.assertIsInstance(answer["seconds"], (int, float))
        content = path.read_bytes()
        self.assertEqual(content.count(b"BEGIN:VCARD\r\n"), 3)
        self.assertTrue(content.endswith(b"END:VCARD\r\n\n"))
        self.assertIn(text("FIRSTBACKUPALERTMESSAGE"), result.err)
        again = home.ok("backup")
        self.assertEqual(again.err, "", "the advice after the first backup is given once")
        self.assertIn("3 contacts", again.out)

    def test_options_before_and_after_the_command(self):
        home = self.home()
        home.import_text(THREE_PEOPLE)
        for arguments in (["--json", "--quiet", "backup"], ["backup", "--json", "--quiet"]):
            result = home.ok(*arguments)
            self.assertEqual((result.json["contacts"], result.err), (3, ""))
        self.assertEqual(home.ok("backups", "--json").json, home.ok("--json", "backups").json)

    def test_set_counts_for_this_run_only(self):
        home = self.home()
        home.import_text(RICH_CARD)
        name = home.json("backup", "--set", "EXPORT_CONF_NOTES=NO", "--set", "EXPORT_CONF_PHONES=NO")["name"]
        content = (home.documents / name).read_text(encoding="utf-8")
        self.assertNotRegex(content, "NOTE|TEL")
        self.assertIn("EMAIL", content)
        self.assertEqual(home.setting("EXPORT_CONF_NOTES"), {"value": "YES", "from": "registered"})

    def test_type_is_set_in_other_words(self):
        home = self.home()
        home.import_text(THREE_PEOPLE)
        for setting in (["EXPORT_TYPE", "csv"], ["multipleVCF", "YES"]):
            home.ok("settings", "set", *setting)
        self.assertEqual(home.json("backup", "--type", "vcf", "--single")["type"], "vcf")
        self.assertEqual(home.setting("EXPORT_TYPE"), {"value": "csv", "from": "stored"})

    def test_program_ends_while_progress_is_on_its_way(self):
        home = self.home()
        home.import_text(THREE_PEOPLE)
        for _ in range(40):
            home.ok("backup", "--quiet")

    def test_empty_book(self):
        home = self.home()
        result = home.run("backup")
        self.assertSaysOneLine(result)
        self.assertIn(text("NOCONTACT"), result.err)
        self.assertEqual(list(home.documents.iterdir()), [])

    def test_size_warning_is_answered_with_cancel(self):
        home = self.home()
        home.import_text(make_book.book(40, photo_every=1, photo_bytes=80_000))
        command = ("backup", "--set", "EXPORT_CONF_SHRINK=NO", "--json")
        result = home.ok(*command)
        self.assertGreater(result.json["bytes"], 3 << 20)
        self.assertIn(text("EXPORT_SIZE_WARNING"), result.err)
        self.assertEqual((home.documents / result.json["name"]).read_bytes().count(b"PHOTO"), 40)
        self.assertEqual(home.setting("EXPORT_CONF_PHOTOS")["from"], "registered")
        self.assertEqual(home.ok(*command, "--quiet").err, "")

    def test_failure_is_said_even_when_quiet(self):
        self.assertSaysOneLine(self.home().run("--quiet", "--json", "backup"))

    def test_progress_bar_only_on_a_terminal(self):
        home = self.home()
        home.import_text(make_book.book(50, photo_every=1))
        home.ok("backup")
        self.assertEqual(home.ok("backup").err, "")
        self.assertIn(" %", self.on_a_terminal(home, "backup"))
        self.assertEqual(self.on_a_terminal(home, "backup", "--quiet"), "")

    def on_a_terminal(self, home, *arguments):
        """What the program writes to stderr when that is a terminal."""
        ours, theirs = pty.openpty()
        process = home.start(*arguments, stdout=subprocess.DEVNULL, stderr=theirs)
        os.close(theirs)
        written = b""
        with contextlib.suppress(OSError):  # The terminal's end.
            while select.select([ours], [], [], cli_support.TIME_LIMIT)[0] and (piece := os.read(ours, 4096)):
                written += piece
        os.close(ours)
        self.assertEqual(process.wait(cli_support.TIME_LIMIT), 0)
        return written.decode()


class RunningBackup(cli_support.Case):
    """What happens to a backup while it is being made. Small photos take long, since they are enlarged."""

    def setUp(self):
        super().setUp()
        self.book = self.home()
        self.book.import_text(make_book.book(150, photo_every=1))

    def running(self, kind="vcf"):
        """A backup that has begun to write."""
        process = self.book.start(*cli_support.BACKUP[kind], "--json", "--quiet")
        until = time.monotonic() + cli_support.TIME_LIMIT
        while not (self.book.documents.exists() and self.book.stale_parts()):
            self.assertIsNone(process.poll(), "the backup has ended before it could be watched")
            self.assertLess(time.monotonic(), until)
            time.sleep(0.001)
        return process

    def test_second_backup_is_refused(self):
        process = self.running()
        process.send_signal(signal.SIGSTOP)
        try:
            self.assertEqual(self.book.json("backups", "--all"), [], "a half file is listed")
            result = self.book.run("backup")
        finally:
            process.send_signal(signal.SIGCONT)
        self.assertSaysOneLine(result)
        self.assertIn(text("BACKUP_BUSY"), result.err)
        first = cli_support.finish(process)
        self.assertEqual(first.code, 0, first.err)
        self.assertEqual(first.json["contacts"], 150)
        self.assertEqual(list(self.book.backups()), [first.json["name"]])

    def test_interrupt_is_the_cancel_button(self):
        for kind in ("vcf", "zip", "csv"):
            if kind == "csv":  # Has no photos, but must take long too.
                self.book.import_text(make_book.book(30_000))
            quick = (*cli_support.BACKUP[kind], "--set", "EXPORT_CONF_PHOTOS=NO")
            self.book.ok(*quick)
            earlier = self.book.backups()
            last = self.book.setting("EXPORT_LAST")
            for number in (signal.SIGINT, signal.SIGTERM):
                with self.subTest(kind, signal=number.name):
                    process = self.running(kind)
                    process.send_signal(number)
                    result = cli_support.finish(process)
                    self.assertEqual((result.code, result.out), (130, ""))
                    self.assertEqual((self.book.backups(), self.book.stale_parts()), (earlier, []))
                    self.assertEqual(self.book.setting("EXPORT_LAST"), last)
            self.book.ok(*quick)


class Backups(cli_support.Case):
    def setUp(self):
        super().setUp()
        self.book = self.home()
        self.book.import_text(THREE_PEOPLE)
        self.last = self.book.json("backup")["name"]
        documents = self.book.documents
        self.content = (documents / self.last).read_bytes()
        (documents / "folder").mkdir()
        self.earlier = "folder/Varnok-2001-02-03-040506-3.vcf"
        for name in (self.earlier, "a.csv", "b.zip", "c.txt"):
            (documents / name).write_bytes(self.content)
            os.utime(documents / name, (981173106, 981173106))

    def test_list(self):
        (self.book.documents / ".Varnok-1.vcf.part-abcdef").write_bytes(self.content)
        listed = self.book.json("backups")
        self.assertRegex(listed[0]["modified"], INSTANT)
        row = {"bytes": len(self.content), "modified": "2001-02-03T04:05:06Z", "last": False}
        documents = str(self.book.documents)
        self.assertEqual(listed, [
            {**row, "path": f"{documents}/{self.last}", "name": self.last, "modified": listed[0]["modified"],
             "last": True},
            {**row, "path": f"{documents}/{self.earlier}", "name": self.earlier}])
        self.assertCountEqual([backup["name"] for backup in self.book.json("backups", "--all")],
                              [self.last, self.earlier, "a.csv", "b.zip"])
        self.assertEqual([line.count(self.last) for line in self.book.ok("backups").out.splitlines()], [1, 0])

    def test_delete(self):
        result = self.book.run("backups", "delete", self.last)
        self.assertSaysOneLine(result)
        self.assertIn(text("LAST_BACKUP_ERROR_MESSAGE"), result.err)
        self.assertEqual(self.book.json("backups", "delete", self.earlier), {"result": "deleted"})
        self.assertEqual([backup["name"] for backup in self.book.json("backups")], [self.last])

    def test_names_from_elsewhere_are_refused(self):
        documents = self.book.documents
        self.file("private.vcf", "secret")
        names = ["../contacts.db", "../../private.vcf", f"../Documents/{self.earlier}", f"./{self.earlier}",
                 f"folder/../{self.earlier}", str(documents / self.earlier), "folder", "", "c.txt", "none.vcf"]
        (self.folder / "link.vcf").symlink_to(self.folder / "private.vcf")
        (documents / "link.vcf").symlink_to(self.folder / "private.vcf")
        env = self.stand_in()
        before = sorted(str(path) for path in self.folder.rglob("*"))
        for name in [*names, "link.vcf"]:
            with self.subTest(name):
                self.assertSaysOneLine(self.book.run("backups", "delete", name))
                self.assertSaysOneLine(self.book.run("backups", "mail", name, "--to", "a@example.org", env=env))
        self.assertEqual(sorted(str(path) for path in self.folder.rglob("*")), before)

    def stand_in(self, ending="exit 0"):
        """A mail program that keeps what it is given."""
        program = self.file("sendmail", f'#!/bin/sh\ncat > "{self.folder}/message"\n'
                                        f'echo "$@" > "{self.folder}/arguments"\n{ending}\n')
        program.chmod(0o755)
        return {"VARNOK_SENDMAIL": str(program)}

    def test_mail(self):
        result = self.book.ok("--json", "backups", "mail", self.earlier, "--to", "ada@example.org", "bob@example.org",
                              env=self.stand_in())
        self.assertEqual(result.json, {"result": "sent"})
        self.assertEqual((self.folder / "arguments").read_text(), "-i -t\n")
        message = email.message_from_bytes((self.folder / "message").read_bytes(), policy=email.policy.default)
        self.assertEqual(message.defects, [])
        self.assertEqual([address.addr_spec for address in message["To"].addresses],
                         ["ada@example.org", "bob@example.org"])
        self.assertEqual(message["Subject"], text("Varnok"))
        self.assertEqual(message.get_body().get_content().strip(), text("BACKUP_MAIL_BODY"))
        attachment, = message.iter_attachments()
        self.assertEqual(attachment.get_filename(), pathlib.PurePath(self.earlier).name)
        self.assertEqual(attachment.get_content_type(), "text/x-vcard")
        self.assertEqual(attachment.get_payload(decode=True), self.content)

    def test_mail_that_does_not_go_out(self):
        rows = {
            "the program fails": ("ada@example.org", self.stand_in("exit 75")),
            "there is no program": ("ada@example.org", {"VARNOK_SENDMAIL": str(self.folder / "none")}),
        }
        for name, (address, env) in rows.items():
            with self.subTest(name):
                self.assertSaysOneLine(self.book.run("backups", "mail", self.last, "--to", address, env=env))

    def test_address_cannot_smuggle_in_another(self):
        for address in ("ada@example.org\nBcc: eve@example.org", "ada@example.org\r\n\r\nHello"):
            with self.subTest(address):
                self.assertSaysOneLine(
                    self.book.run("backups", "mail", self.last, "--to", address, env=self.stand_in()))
                self.assertFalse((self.folder / "message").exists())


class Settings(cli_support.Case):
    def test_list(self):
        home = self.home()
        home.ok("settings", "set", "EVERY", "WEEK")
        settings = home.json("settings", "--set", "REMINDER=YES")
        self.assertEqual(settings["EVERY"], {"value": "WEEK", "from": "stored"})
        self.assertEqual(settings["REMINDER"], {"value": "YES", "from": "run"})
        self.assertEqual(settings["EXPORT_TYPE"], {"value": "vcf", "from": "registered"})
        for key, setting in settings.items():
            self.assertEqual(sorted(setting), ["from", "value"], key)
            self.assertIn(setting["from"], ["stored", "registered", "run", None], key)
            self.assertEqual(home.json("settings", "get", key, "--set", "REMINDER=YES"), {key: setting})
        lines = home.ok("settings").out.splitlines()
        self.assertEqual([line.split()[0] for line in lines], list(settings))

    def test_set_get_reset(self):
        home = self.home()
        rows = [("EXPORT_TYPE", "csv", "csv"), ("EVERY", "WEEK", "WEEK"), ("EXPORT_CONF_NOTES", "NO", "NO"),
                ("multipleVCF", "YES", True), ("vnk.export.itemCount", "12", 12), ("FILE_NAME", "ä\n\"b\"", "ä\n\"b\""),
                ("EXPORT_LAST", "1.5", 1.5)]
        for key, value, stored in rows:
            with self.subTest(key):
                before = home.setting(key)
                changed = {key: {"value": stored, "from": "stored"}}
                self.assertEqual(home.json("settings", "set", key, value), changed)
                self.assertEqual(home.json("settings", "get", key), changed)
                self.assertEqual(home.json("settings", "reset", key), {key: before})
                self.assertEqual(home.setting(key), before)
        home.ok("settings", "set", "EVERY", "WEEK")
        self.assertEqual(home.ok("settings", "get", "EVERY").out, "WEEK\n")

    def test_values_that_a_key_cannot_hold(self):
        home = self.home()
        rows = [("EXPORT_TYPE", "xml"), ("EXPORT_TYPE", "VCF"), ("EVERY", "DAY"), ("REMINDER", "maybe"),
                ("REMINDER", "yes"), ("EXPORT_CONF_PHOTOS", ""), ("multipleVCF", "1"), ("vnk.export.itemCount", "1.5"),
                ("EXPORT_LAST", "yesterday"), ("EXPORT_LAST", "nan"), ("AppleLanguages", "de"), ("NO_SUCH_KEY", "YES")]
        for key, value in rows:
            with self.subTest(key, value=value):
                result = home.run("settings", "set", key, value)
                self.assertSaysOneLine(result)
                self.assertIn(key, result.err)
        for command in ("get", "reset"):
            self.assertSaysOneLine(home.run("settings", command, "NO_SUCH_KEY"))
        self.assertEqual([key for key, setting in home.json("settings").items() if setting["from"] == "stored"], [])

    def test_set_of_a_run_is_not_checked_and_not_stored(self):
        home = self.home()
        home.ok("settings", "set", "EVERY", "WEEK")
        before = home.preferences_file.read_bytes()
        for setting in ("EVERY=DAY", "EXPORT_TYPE=xml", "REMINDER=maybe", "FILE_NAME=", "FILE_NAME=a=b"):
            key, value = setting.split("=", 1)
            self.assertEqual(home.json("settings", "get", key, "--set", setting),
                             {key: {"value": value, "from": "run"}})
        self.assertEqual(home.json("settings", "get", "EVERY", "--set", "EVERY=A", "--set", "EVERY=B"),
                         {"EVERY": {"value": "B", "from": "run"}})
        self.assertEqual(home.preferences_file.read_bytes(), before)


class DamagedFiles(cli_support.Case):
    """A file that the program cannot understand is reported, and stays byte for byte as it is."""

    def assertRefused(self, home, file, command):
        before = file.read_bytes()
        backups = home.backups()
        result = home.run(*command)
        self.assertSaysOneLine(result)
        self.assertIn(str(file), result.err)
        self.assertEqual(file.read_bytes(), before)
        self.assertEqual((home.backups(), home.stale_parts()), (backups, []))

    def sql(self, file, statement):
        with contextlib.closing(sqlite3.connect(file)) as database:
            database.execute(statement)
            database.commit()

    def test_contacts(self):
        template = self.home_with_backup(make_book.book(300))
        size = template.contacts_file.stat().st_size
        everything = ("contacts", "backup", "import")
        damages = {
            "garbage": (everything, lambda file: file.write_bytes(os.urandom(8192))),
            "some text": (everything, lambda file: file.write_text("Dear diary")),
            "cut to half": (everything, lambda file: os.truncate(file, size // 2)),
            "damaged pages": (everything, lambda file: self.overwrite(file, 4096, size - 4096)),
            "newer version": (everything, lambda file: self.sql(file, "PRAGMA user_version = 99")),
            "another program's database": (everything, lambda file: self.sql(file, "PRAGMA application_id = 7")),
            # Only those who read every page can see it.
            "cut inside the last page": (("backup",), lambda file: os.truncate(file, size - 1000)),
        }
        more = str(self.file("more.vcf", THREE_PEOPLE))
        for name, (commands, damage) in damages.items():
            home = template.copy_to(self.folder / "copy")
            damage(home.contacts_file)
            for command in commands:
                with self.subTest(name, command=command):
                    files = [more] if command == "import" else []
                    self.assertRefused(home, home.contacts_file, [command, *files])

    def overwrite(self, file, start, end):
        with open(file, "r+b") as stream:
            stream.seek(start)
            stream.write(b"\xa5" * (end - start))

    def test_preferences(self):
        template = self.home_with_backup(THREE_PEOPLE)
        damages = {
            "garbage": lambda file: file.write_bytes(os.urandom(500)),
            "some text": lambda file: file.write_text("Dear diary, today nothing happened at all."),
            "damaged beginning": lambda file: self.overwrite(file, 0, 4),
            "newer version": lambda file: self.overwrite(file, 8, 12),
        }
        for name, damage in damages.items():
            home = template.copy_to(self.folder / "copy")
            damage(home.preferences_file)
            for command in (["settings"], ["settings", "set", "EVERY", "WEEK"], ["backup"]):
                with self.subTest(name, command=command):
                    self.assertRefused(home, home.preferences_file, command)

    def test_torn_end_of_the_preferences_is_harmless(self):
        template = self.home_with_backup(THREE_PEOPLE)
        size = template.preferences_file.stat().st_size
        template.ok("settings", "set", "FILE_NAME", "torn" * 20)
        for end in range(size + 1, template.preferences_file.stat().st_size):
            home = template.copy_to(self.folder / "copy")
            os.truncate(home.preferences_file, end)
            with self.subTest(end=end):
                self.assertEqual(home.setting("EVERY")["value"], "WEEK")
                self.assertEqual(home.json("settings", "set", "REMINDER", "NO")["REMINDER"]["value"], "NO")
                self.assertEqual(home.setting("EVERY")["value"], "WEEK")


if __name__ == "__main__":
    cli_support.main()
