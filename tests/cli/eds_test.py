#!/usr/bin/python3
"""varnokctl over the desktop's address book, with the real Evolution Data Server on a bus of its own:

    with_private_bus.sh eds_test.py PROGRAM
"""

import os
import pathlib
import signal
import subprocess
import threading
import time

import cli_support
import make_book

SAMPLE = pathlib.Path(__file__).resolve().parents[2] / "resources" / "sample" / "people.vcf"
SURROUNDING = ("HOME", "DBUS_SESSION_BUS_ADDRESS", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME",
               "XDG_RUNTIME_DIR")
BUS = ("--session", "--print-reply=literal", "--dest=org.freedesktop.DBus", "/")
SERVICE = "org.gnome.evolution.dataserver."


def ask_bus(member, *arguments):
    return subprocess.run(["dbus-send", *BUS, f"org.freedesktop.DBus.{member}", *arguments],
                          capture_output=True, text=True, check=False).stdout.split()


def service_pids():
    names = [name for name in ask_bus("ListNames") if name.startswith(SERVICE)]
    answers = [ask_bus("GetConnectionUnixProcessID", f"string:{name}") for name in names]
    return {int(answer[-1]) for answer in answers if answer}


def signal_service(number, pids=None):
    for pid in pids or service_pids():
        os.kill(pid, number)


class Desktop(cli_support.Case):
    def setUp(self):
        super().setUp()
        self.user = self.home()
        self.surrounding = {name: os.environ[name] for name in SURROUNDING if name in os.environ}
        self.eds("contacts", "remove", "--all", "--yes")

    def eds(self, *arguments, **options):
        return self.user.run("--store", "eds", *arguments, env=self.surrounding, **options)

    def json(self, *arguments, **options):
        result = self.eds("--json", *arguments, **options)
        self.assertEqual(result.code, 0, result.err)
        return result.json

    def people(self, *store):
        """Every property of everybody, without the identifiers."""
        arguments = ("--json", *(store or ("--store", "eds")))
        ids = [person["id"] for person in self.user.run(*arguments, "contacts", env=self.surrounding).json]
        shown = [self.user.run(*arguments, "contacts", "show", str(number), env=self.surrounding).json for number in ids]
        return [(person["properties"], person["image"]) for person in shown]

    def test_people_are_as_in_the_embedded_book(self):
        self.assertEqual(self.json("import", str(SAMPLE))["imported"], 41)
        self.user.ok("import", str(SAMPLE))
        self.assertEqual(self.people(), self.people("--store", "sqlite"))
        made = [self.json("backup"), self.user.json("backup")]
        content = [pathlib.Path(backup["path"]).read_text() for backup in made]
        self.assertEqual(made[0]["contacts"], 41)
        self.assertEqual(content[0], content[1])

    def test_stores_are_listed(self):
        stores = self.user.run("--json", "stores", env=self.surrounding).json["stores"]
        self.assertEqual(stores[0], {"store": "sqlite", "name": "Varnok", "default": True, "writable": True})
        system = [store for store in stores[1:] if store["default"]]
        self.assertEqual([store["writable"] for store in system], [True])
        listed = self.user.run("--store", system[0]["store"], "contacts", env=self.surrounding)
        self.assertEqual((listed.code, listed.out), (0, ""), listed.err)

    def test_a_preference_chooses_the_store(self):
        self.json("import", "-", stdin="BEGIN:VCARD\nFN:Ada\nEND:VCARD\n")
        self.assertEqual(self.user.json("contacts"), [])
        self.user.ok("settings", "set", "CONTACT_STORE", "eds")
        chosen = self.user.run("--json", "contacts", env=self.surrounding).json
        self.assertEqual([person["name"] for person in chosen], ["Ada"])
        self.assertEqual(self.user.json("--store", "sqlite", "contacts"), [])

    def test_a_wrong_name_is_said(self):
        result = self.user.run("--store", "eds:nobody's", "contacts", env=self.surrounding)
        self.assertSaysOneLine(result)
        self.assertIn('"nobody\'s"', result.err)
        self.assertEqual(self.user.run("--store", "paper", "contacts").code, 2)

    def test_without_a_bus_it_says_so_at_once(self):
        for command in (("contacts",), ("backup",), ("import", str(SAMPLE))):
            began = time.monotonic()
            result = self.user.run("--store", "eds", *command)
            self.assertSaysOneLine(result)
            self.assertIn("bus", result.err)
            self.assertLess(time.monotonic() - began, 5)
        stores = self.user.run("--json", "stores")
        self.assertEqual([store["store"] for store in stores.json["stores"]], ["sqlite"])
        self.assertIn("bus", stores.err)

    def test_a_bus_that_is_gone_is_said(self):
        result = self.user.run("--store", "eds", "contacts",
                               env={**self.surrounding, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent/bus"})
        self.assertSaysOneLine(result)

    def test_a_service_that_stands_still_is_given_up(self):
        self.expect_death()
        self.json("import", str(SAMPLE))
        pids = service_pids()
        signal_service(signal.SIGSTOP, pids)
        try:
            for command in (("contacts",), ("backup",), ("import", str(SAMPLE))):
                began = time.monotonic()
                self.assertSaysOneLine(self.eds(*command, "--quiet"))
                self.assertLess(time.monotonic() - began, 10)
        finally:
            signal_service(signal.SIGCONT, pids)
        self.assertEqual(len(self.json("contacts")), 41)

    def expect_death(self):
        """The libraries forget some memory when their service ends; what is ours is looked for elsewhere."""
        self.surrounding["ASAN_OPTIONS"] = "detect_leaks=0"

    def test_a_service_that_dies_during_a_save_loses_nobody(self):
        self.expect_death()
        self.json("import", str(SAMPLE))
        before = self.json("contacts")
        book = self.file("book.vcf", make_book.book(1500))
        for delay in (0.1, 0.5, 0.9):
            pids = service_pids()
            killer = threading.Timer(delay, signal_service, (signal.SIGKILL, pids))
            killer.start()
            result = self.eds("import", str(book))
            killer.join()
            if result.code != 0:
                self.assertSaysOneLine(result)
            count = len(self.json("contacts"))
            self.assertGreaterEqual(count, 41 + 1500 * (result.code == 0))
            self.eds("contacts", "remove", "--yes", *map(str, self.new_ids()))
        self.assertEqual(self.json("contacts"), before)

    def new_ids(self):
        return [person["id"] for person in self.json("contacts")][41:]

    def test_a_backup_of_a_service_that_dies_is_whole_or_none(self):
        self.expect_death()
        self.json("import", "-", stdin=make_book.book(1500))
        for delay in (0.02, 0.1, 0.2):
            killer = threading.Timer(delay, signal_service, (signal.SIGKILL, service_pids()))
            killer.start()
            result = self.eds("--json", "backup")
            killer.join()
            if result.code == 0:
                self.assertEqual(pathlib.Path(result.json["path"]).read_text().count("BEGIN:VCARD"), 1500)
            else:
                self.assertSaysOneLine(result)
        self.assertEqual(self.user.stale_parts(), [])


if __name__ == "__main__":
    cli_support.main()
