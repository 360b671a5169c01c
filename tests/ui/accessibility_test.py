#!/usr/bin/python3
"""varnok used by those who do not see it: what assistive technologies are told, and what they can do.

    accessibility_test.py VARNOK VARNOKCTL [unittest arguments]
"""

import signal
import unittest

import desktop_session
from desktop_session import CHECKED, ENABLED, NO_ROLE, wait_until

SWITCHES = {"check box", "toggle button", "switch"}
BUTTONS = {"push button", "button"}
RADIOS = {"radio button"}
ROWS = {"list item", *BUTTONS, *SWITCHES}
TIME_LIMIT = 60  # Seconds.


class Accessibility(unittest.TestCase):
    def setUp(self):
        self.session = desktop_session.Session(self, *desktop_session.programs, {"QT_QUICK_BACKEND": "software"})
        self.session.wait_for("Backup")

    def open(self, name, title):
        """Presses the element with this name; it leads to the page with this title."""
        self.assertTrue(self.session.wait_for(name).press(), name)
        self.session.wait_for(title, {"heading"})

    def check_page(self, roles):
        """Whatever can be operated says what it is; those expected, by name, are there once, with one of `roles`."""
        shown = self.session.elements()
        described = "\n".join(map(str, shown))
        # A scroll bar is known by its role, and which page it scrolls by where it is.
        nameless = [str(element) for element in shown if element.operable and element.role != "scroll bar" and
                    (element.name.strip(" ,") != element.name or not element.name or element.role in NO_ROLE)]
        self.assertEqual(nameless, [], f"without a name or a role in\n{described}")
        for name, fitting in roles.items():
            found = [element for element in shown if element.title == name and element.role in fitting]
            self.assertEqual(len(found), 1, f"{name} as {' or '.join(sorted(fitting))} in\n{described}")
            self.assertTrue(found[0].operable and ENABLED in found[0].states, str(found[0]))

    def test_controls_have_names_and_roles(self):
        self.check_page({"Backup": BUTTONS, "Settings": BUTTONS, "Import a vCard File": BUTTONS})
        self.open("Settings", "Settings")
        self.check_page({"Done": BUTTONS, "Format": ROWS, "Configure": ROWS, "Reminder": ROWS, "Repeat": ROWS,
                         "Delete Duplicate Contacts": ROWS, "Delete Contacts": ROWS, "Link Dropbox": BUTTONS})
        self.open("Format", "Format")
        self.check_page({"Done": BUTTONS})
        self.open("Done", "Settings")
        self.open("Configure", "Configure")
        self.check_page({"Done": BUTTONS, "One File per Contact": ROWS, "Phone Numbers": ROWS, "Notes": ROWS,
                         "Photos": ROWS})
        self.open("Done", "Settings")

    def test_switches_say_how_they_stand(self):
        self.open("Settings", "Settings")
        self.check_page({"Format": BUTTONS, "Configure": BUTTONS, "Reminder": SWITCHES, "Repeat": BUTTONS,
                         "Delete Duplicate Contacts": BUTTONS, "Delete Contacts": BUTTONS})
        self.open("Configure", "Configure")
        self.check_page({"Phone Numbers": SWITCHES, "Photos": SWITCHES})
        self.assertIn(CHECKED, self.session.wait_for("Phone Numbers").states)
        self.assertTrue(self.session.wait_for("Phone Numbers").press())
        wait_until(lambda: CHECKED not in self.session.wait_for("Phone Numbers").states, "the switch to be off")

    def test_the_lists_after_a_backup(self):
        self.assertTrue(self.session.wait_for("Backup", BUTTONS).press())
        self.assertTrue(self.session.wait_for("OK", BUTTONS).press())
        self.open("Settings", "Settings")
        self.open("Repeat", "Repeat")
        self.check_page({"Weekly": RADIOS, "Monthly": RADIOS})
        self.assertIn(CHECKED, self.session.wait_for("Monthly", RADIOS).states)
        self.assertTrue(self.session.wait_for("Weekly", RADIOS).press())
        wait_until(lambda: CHECKED in self.session.wait_for("Weekly", RADIOS).states, "the choice")
        self.open("Done", "Settings")
        self.assertEqual(self.session.setting("EVERY"), "WEEK")
        self.open("Restore a Backup", "Restore")
        self.check_page({"Edit": BUTTONS, "Close": BUTTONS})
        self.open("Close", "Settings")
        self.open("Delete Duplicate Contacts", "Remove Duplicates")
        self.check_page({"Remove Duplicates": BUTTONS})

    def test_people_to_delete_have_names(self):
        self.open("Settings", "Settings")
        self.open("Delete Contacts", "Delete Contacts")
        self.check_page({"Delete Selected": BUTTONS, "Delete All": BUTTONS})

    def test_a_switch_is_pressed(self):
        self.assertEqual(self.session.setting("EXPORT_CONF_PHONES"), "YES")
        self.open("Settings", "Settings")
        self.open("Configure", "Configure")
        self.assertTrue(self.session.wait_for("Phone Numbers").press())
        wait_until(lambda: self.session.setting("EXPORT_CONF_PHONES") == "NO", "the setting to be off")

    def test_backup_and_end(self):
        self.assertEqual(self.session.backups(), [])
        self.assertTrue(self.session.wait_for("Backup", BUTTONS).press())
        self.assertTrue(self.session.wait_for("OK", BUTTONS).press())
        self.session.wait_for("Send", BUTTONS)
        self.session.check_backup()
        self.session.varnok.send_signal(signal.SIGTERM)
        self.assertIn(self.session.varnok.wait(timeout=TIME_LIMIT), (0, -signal.SIGTERM))
        self.assertEqual(self.session.faults(), [])
        self.session.check_backup()


if __name__ == "__main__":
    desktop_session.main()
