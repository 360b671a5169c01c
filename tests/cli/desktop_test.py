#!/usr/bin/python3
"""The commands that reach the desktop: the reminder, and a backup handed to another application.

    desktop_test.py PROGRAM
"""

import time

import cli_support
import make_book

DAY = 86400


def utc(seconds):
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(seconds))


class Reminder(cli_support.Case):
    def setUp(self):
        super().setUp()
        self.user = self.home()

    def choose(self, **settings):
        for key, value in settings.items():
            self.user.ok("settings", "set", key, str(value))

    def pending(self, *command):
        return self.user.json("reminder", *command)["pending"]

    def test_is_planned_and_removed(self):
        self.assertIsNone(self.pending())
        self.assertIsNone(self.pending("deliver"))
        last = int(time.time())
        self.choose(REMINDER="YES", EVERY="WEEK", EXPORT_LAST=last)
        planned = self.pending("schedule")
        self.assertEqual(set(planned), {"fireDate", "repeat", "alertBody", "alertAction"})
        self.assertEqual((planned["fireDate"], planned["repeat"]), (utc(last + 7 * DAY), "WEEK"))
        self.choose(REMINDER="NO")
        self.assertEqual(self.pending(), planned)  # Until it is planned afresh.
        self.assertIsNone(self.pending("schedule"))

    def test_that_is_due_is_delivered_once_and_comes_again(self):
        last = int(time.time()) - 100 * DAY
        self.choose(REMINDER="YES", EVERY="WEEK", EXPORT_LAST=last)
        self.assertEqual(self.pending("schedule")["fireDate"], utc(last + 7 * DAY))
        delivered = self.user.json("reminder", "deliver")
        self.assertIn(time.strftime("%d %b %Y", time.gmtime(last)), delivered["delivered"]["alertBody"])
        self.assertEqual(delivered["delivered"]["alertAction"], "Backup")
        self.assertEqual(delivered["pending"]["fireDate"], utc(last + 105 * DAY))
        self.assertEqual(self.pending("deliver")["fireDate"], utc(last + 105 * DAY))  # Early: its time stays.

    def test_is_text_in_the_users_language(self):
        self.choose(REMINDER="YES")
        text = self.user.ok("--language", "de", "reminder", "schedule").out
        self.assertRegex(text, r"\A\d{4}-\d\d-\d\d \d\d:\d\d  MONTH  Ihre Kontakte ")
        self.assertTrue(self.user.ok("reminder", "deliver").out.startswith("Ihre Kontakte "))

    def test_that_cannot_be_stored_is_an_error(self):
        self.choose(REMINDER="YES")
        (self.user.path / "reminder.json").mkdir()
        self.assertSaysOneLine(self.user.run("reminder", "schedule"))


class HandOver(cli_support.Case):
    def setUp(self):
        super().setUp()
        self.user = self.home()
        self.user.import_text(make_book.book(2))
        self.backup = self.user.json("backup")

    def opener(self, script):
        """A search path in which xdg-open is `script`."""
        program = self.file("xdg-open", f"#!/bin/sh\n{script}\n")
        program.chmod(0o755)
        return {"PATH": f"{self.folder}:/usr/bin:/bin"}

    def test_gives_the_file_to_the_desktop(self):
        opened = self.folder / "opened"
        env = self.opener(f'printf %s "$1" > "{opened}"')
        self.assertEqual(self.user.json("backups", "open", self.backup["name"], env=env), {"result": "opened"})
        self.assertEqual(opened.read_text(), self.backup["path"])

    def test_failures_are_told(self):
        self.assertSaysOneLine(self.user.run("backups", "open", "none.vcf"))
        for env in (self.opener("exit 3"), {"PATH": "/nonexistent"}):
            self.assertSaysOneLine(self.user.run("backups", "open", self.backup["name"], env=env))


if __name__ == "__main__":
    cli_support.main()
