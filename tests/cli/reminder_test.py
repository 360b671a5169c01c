#!/usr/bin/python3
"""The reminder on a desktop: the timer that fires it, the notification, the application that it opens.

    reminder_test.py PROGRAM
"""

import pathlib
import shutil
import time
from unittest import mock

import cli_support
import session_bus

DAY = 86400
DUE = 100 * DAY  # So long ago was the last backup where a reminder is due.


class Case(cli_support.Case):
    def setUp(self):
        super().setUp()
        self.bus = session_bus.Bus(self)
        self.user = self.home("user")
        self.config = self.folder / "config"
        self.env = {**self.bus.env, "XDG_CONFIG_HOME": str(self.config), "XDG_DATA_HOME": str(self.folder / "data"),
                    "XDG_STATE_HOME": str(self.folder / "state")}

    def plan(self, last_backup, every="WEEK"):
        for key, value in {"REMINDER": "YES", "EVERY": every, "EXPORT_LAST": int(time.time()) - last_backup}.items():
            self.user.ok("settings", "set", key, str(value))
        return self.schedule()

    def schedule(self):
        return self.user.json("reminder", "schedule", env=self.env)["pending"]

    def pending(self):
        return self.user.json("reminder", env=self.env)["pending"]

    def deliver(self, *options):
        return self.user.run("--json", "reminder", "deliver", *options, env=self.env)

    def start_delivery(self, notifications):
        process = self.user.start("--json", "reminder", "deliver", "--if-due", "--wait", env=self.env)
        self.addCleanup(session_bus.stop, process)
        notifications.wait_for("Notify")
        return process

    def files(self):
        """What the desktop keeps, relative to the directory for configuration."""
        return sorted(str(path.relative_to(self.config)) for path in self.config.rglob("*") if not path.is_dir())

    def content(self, ending):
        found = list(self.config.rglob("*" + ending))
        self.assertEqual(len(found), 1, found)
        return found[0].read_text()

    def log(self):
        return "".join(path.read_text() for path in (self.user.path / "log").iterdir())

    def assertQuick(self, begin, seconds=20):
        self.assertLess(time.monotonic() - begin, seconds)


class Timer(Case):
    def test_is_started_and_removed(self):
        manager = self.bus.unit_manager()
        planned = self.plan(0)
        timer, service = self.content(".timer"), self.content(".service")
        self.assertIn(f"OnCalendar={planned['fireDate'].replace('T', ' ').replace('Z', ' UTC')}\n", timer)
        self.assertIn(f'"--home" "{self.user.path}"', service)
        self.assertEqual([call.split()[0] for call in manager.calls()], ["EnableUnitFiles", "Reload", "RestartUnit"])
        self.user.ok("settings", "set", "REMINDER", "NO")
        self.assertIsNone(self.schedule())
        self.assertEqual(self.files(), [])
        self.assertEqual([call.split()[0] for call in manager.calls()[3:]],
                         ["StopUnit", "DisableUnitFiles", "Reload", "StopUnit"])

    def test_of_each_home_is_its_own(self):
        self.bus.unit_manager()
        self.plan(0)
        self.user = self.home("another")
        self.plan(0)
        self.assertEqual(len(self.files()), 4)

    def test_that_cannot_be_had_gives_way_to_an_entry(self):
        def dies(manager):
            manager.method("Reload", "", "", "import os; os._exit(1)")

        def refuses(manager):
            manager.method("EnableUnitFiles", "asbb", "", "raise dbus.exceptions.DBusException('no', name='a.b.c')")

        for name, spoil in {"hangs": lambda manager: manager.hang(), "dies": dies, "refuses": refuses}.items():
            with self.subTest(name):
                manager = self.bus.unit_manager()
                spoil(manager)
                begin = time.monotonic()
                self.assertIsNotNone(self.plan(0))
                self.assertQuick(begin)
                manager.die()
                self.assertEqual([pathlib.Path(file).suffix for file in self.files()], [".desktop"])
                self.assertIn("no timer", self.log())
        with self.subTest("comes back"):
            self.bus.unit_manager()
            self.plan(0)
            self.assertEqual([pathlib.Path(file).suffix for file in self.files()], [".service", ".timer"])

    def test_comes_again_after_each_showing(self):
        self.bus.unit_manager()
        self.bus.notifications()
        last = int(time.time()) - DUE
        self.plan(DUE)
        first = self.content(".timer")
        self.assertEqual(self.deliver("--if-due").code, 0)
        self.assertNotEqual(self.content(".timer"), first)
        following = time.strftime("%Y-%m-%d %H:%M", time.gmtime(last + 105 * DAY))
        self.assertIn(f"OnCalendar={following}", self.content(".timer"))


class Notification(Case):
    def test_names_the_last_backup_and_has_a_button(self):
        notifications = self.bus.notifications()
        self.plan(DUE)
        process = self.start_delivery(notifications)
        notify = notifications.calls("Notify")[0]
        entry = '"desktop-entry": "io.varnok.Varnok"'
        for part in ('"Varnok"', "Backup", entry, "sound-name", '"default"', '"reminder"'):
            self.assertIn(part, notify)
        self.assertIn(time.strftime("%d %b %Y", time.gmtime(time.time() - DUE)), notify)
        notifications.emit("NotificationClosed", "uu", 7, 2)  # Of somebody else.
        notifications.emit("NotificationClosed", "uu", 1, 2)
        done = cli_support.finish(process)
        self.assertEqual((done.code, done.json["notified"]), (0, True), done.err)

    def test_opens_the_application_that_runs(self):
        for action in ("default", "reminder"):
            with self.subTest(action):
                notifications, application = self.bus.notifications(), self.bus.application()
                self.user = self.home(action)
                self.in_usual_places()
                process = self.start_delivery(notifications)
                notifications.emit("ActivationToken", "us", 1, "token-7")
                notifications.emit("ActionInvoked", "us", 1, action)
                notifications.emit("NotificationClosed", "uu", 1, 3)
                self.assertEqual(cli_support.finish(process).code, 0)
                call = application.calls("ActivateAction")[0]
                self.assertIn('"reminder"', call)
                self.assertIn("token-7", call)
                notifications.die()
                application.die()

    def in_usual_places(self):
        """A due reminder where no --home is given: only there the application has a name on the bus."""
        self.user = cli_support.Home(self.folder / "data")
        self.user.run = lambda *arguments, **options: cli_support.run(*arguments, **{**options, "env": self.env})
        self.user.start = lambda *arguments, **options: cli_support.start(*arguments, **{**options, "env": self.env})
        self.plan(DUE)

    def test_without_an_application_to_open_says_so(self):
        # The program alone, as where the application is not installed.
        alone = shutil.copy(cli_support.program, self.folder / "varnokctl")
        self.enterContext(mock.patch.object(cli_support, "program", str(alone)))
        notifications = self.bus.notifications()
        for usual in (False, True):
            with self.subTest(usual=usual):
                if usual:
                    self.in_usual_places()
                else:
                    self.plan(DUE)
                shown = len(notifications.calls("Notify"))
                process = self.user.start("reminder", "deliver", "--if-due", "--wait", env=self.env)
                session_bus.wait_until(lambda: len(notifications.calls("Notify")) > shown, "the notification")
                notifications.emit("ActionInvoked", "us", shown + 1, "reminder")
                done = cli_support.finish(process)
                self.assertEqual(done.code, 1)
                self.assertIn("not installed", done.err)
                self.assertNotIn(time.strftime("%Y-%m-%dT%H", time.gmtime(time.time() - DUE + 7 * DAY)),
                                 self.pending()["fireDate"])

    def test_is_not_shown_before_its_time_nor_twice(self):
        notifications = self.bus.notifications()
        self.plan(0)
        self.assertEqual(self.deliver("--if-due").json["pending"], self.pending())
        self.plan(DUE)
        for _ in range(2):
            self.assertEqual(self.deliver("--if-due").code, 0)
        self.assertEqual(len(notifications.calls("Notify")), 1)

    def test_of_a_service_without_buttons_or_markup(self):
        notifications = self.bus.notifications(capabilities="body")
        self.plan(DUE)
        self.assertEqual(self.deliver().json["notified"], True)
        notify = notifications.calls("Notify")[0]
        self.assertNotIn("desktop-entry", notify)  # A sender that has gone would take it along.
        self.assertNotIn('"default"', notify)

    def test_waits_for_a_service_that_comes_later(self):
        self.plan(DUE)
        notifications = self.bus.notifications(after=1)
        process = self.start_delivery(notifications)
        notifications.emit("NotificationClosed", "uu", 1, 2)
        self.assertEqual(cli_support.finish(process).json["notified"], True)

    def test_that_nobody_shows_stays_due(self):
        planned = self.plan(DUE)

        def dies(service):
            service.method("Notify", "susssasa{sv}i", "u", "import os; os._exit(1)")

        for name, spoil in {"absent": lambda service: service.die(), "hangs": lambda service: service.hang(),
                            "dies": dies}.items():
            with self.subTest(name):
                notifications = self.bus.notifications()
                spoil(notifications)
                begin = time.monotonic()
                result = self.deliver("--if-due")
                self.assertQuick(begin)
                self.assertSaysOneLine(result)
                self.assertEqual(self.pending(), planned)
                notifications.die()
        with self.subTest("on request it is printed"):
            self.assertEqual(self.deliver().json["notified"], False)
            self.assertIn("printed only", self.log())
            self.assertNotEqual(self.pending(), planned)

    def test_whose_service_dies_later_was_shown(self):
        notifications = self.bus.notifications()
        planned = self.plan(DUE)
        process = self.start_delivery(notifications)
        session_bus.wait_until(lambda: self.pending() != planned, "the next showing")
        notifications.die()
        self.assertEqual(cli_support.finish(process).code, 0)
        self.assertIn("notification service has gone", self.log())

    def test_ends_with_the_bus(self):
        notifications = self.bus.notifications()
        planned = self.plan(DUE)
        process = self.start_delivery(notifications)
        session_bus.wait_until(lambda: self.pending() != planned, "the next showing")
        session_bus.stop(self.bus.daemon)
        self.assertEqual(cli_support.finish(process).code, 0)


if __name__ == "__main__":
    cli_support.main()
