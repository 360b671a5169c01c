#!/usr/bin/python3
"""The whole application driven from outside, through `varnokctl shell`: every screen, what leads to it and what leads
back, over a real store, real files and real preferences.

    shell_test.py PROGRAM
"""

import fcntl
import json
import os
import pty
import select
import signal
import struct
import subprocess
import termios
import time

import cli_support
import make_book

PEOPLE = make_book.book(6)


class Shell:
    """A running `varnokctl shell --json`: one request, one answer."""

    def __init__(self, home, *arguments, env=None):
        self.process = cli_support.start("--home", str(home.path), *arguments, "shell", "--json", env=env,
                                         stdin=subprocess.PIPE, text=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(cli_support.TIME_LIMIT)
        self.process.stdout.close()
        self.process.stderr.close()

    def line(self, text):
        self.process.stdin.write(text + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def ask(self, do, **members):
        return self.line(json.dumps({"do": do, **members}))

    def do(self, do, **members):
        """A request that must be taken."""
        answer = self.ask(do, **members)
        assert answer["ok"], (do, members, answer)
        return answer

    def tap(self, control, **members):
        return self.do("tap", control=control, **members)

    def wait(self):
        return self.do("wait", seconds=30)

    def back_up(self):
        self.tap("btn_Backup" if not self.do("show")["controls"]["btn_Backup"]["hidden"] else "btn_Export")
        screen = self.wait()
        while screen["alert"]:
            screen = self.do("answer", index=0)
        return self.wait()


def row_of(screen, title):
    """The place of the row with that text or button."""
    for section, table in enumerate(screen["sections"]):
        for row, cell in enumerate(table["rows"]):
            if title in (cell["text"], cell["button"] and cell["button"]["title"]):
                return {"section": section, "row": row}
    raise AssertionError(f"no row {title}: {screen['sections']}")


def at(answer, *path):
    for step in path:
        answer = answer[step]
    return answer


class Screens(cli_support.Case):
    def book(self, text=PEOPLE):
        home = self.home()
        home.import_text(text)
        return home

    def test_a_backup_from_the_first_screen_to_the_mail(self):
        home = self.book()
        with Shell(home, "--language", "en") as shell:
            screen = shell.do("show")
            self.assertEqual((screen["screen"], screen["presented"]), ("VarnokViewController", ["VarnokViewController"]))
            self.assertFalse(screen["controls"]["btn_Backup"]["hidden"])
            self.assertTrue(screen["controls"]["btn_Cancel"]["hidden"])
            self.assertEqual(screen["controls"]["progress"]["maxValue"], 6)
            screen = shell.tap("btn_Backup")
            screen = shell.wait()
            self.assertEqual(screen["alert"]["buttons"], ["OK"])
            self.assertFalse(shell.ask("tap", control="btn_Send")["ok"])  # The alert is in front.
            screen = shell.do("answer", index=0)
            screen = shell.tap("btn_Send")
            name = next(home.documents.glob("*.vcf")).name
            self.assertEqual(screen["mail"]["attachment"]["name"], name)
            self.assertEqual(screen["mail"]["attachment"]["mimeType"], "text/x-vcard;charset=UTF-8")
            screen = shell.do("mail", result="sent")
            self.assertIsNone(screen["mail"])
            self.assertEqual(len(screen["alert"]["buttons"]), 1)
            shell.do("answer", index=0)
            self.assertTrue(shell.do("quit")["ok"])
            self.assertEqual(shell.process.wait(cli_support.TIME_LIMIT), 0)

    def test_settings_fields_type_and_reminder(self):
        home = self.book()
        with Shell(home, "--language", "en") as shell:
            screen = shell.tap("btn_Settings")
            self.assertEqual(screen["presented"], ["VarnokViewController", "VarnokSettingsViewController"])
            plain = [section["header"] for section in screen["sections"]]
            screen = shell.do("select", section=0, row=0)
            self.assertEqual(screen["screen"], "ExportTypeViewController")
            screen = shell.do("select", section=0, row=1)
            self.assertEqual([row["checked"] for row in screen["sections"][0]["rows"]], [False, True])
            screen = shell.tap("onTap_Done")
            changed = screen["sections"][0]["rows"][0]["detail"]
            self.assertNotEqual(changed, "csv")  # The text for it.
            screen = shell.do("select", section=0, row=1)
            self.assertEqual(screen["screen"], "ExportTypeConfigurationViewController")
            self.assertFalse(shell.do("switch", section=0, row=0, on=False)["sections"][0]["rows"][0]["switch"]["on"])
            shell.tap("onTap_Done")
            every = {"section": 2, "row": 1}
            shell.do("switch", section=2, row=0, on=True)
            self.assertEqual(shell.do("select", **every)["screen"], "ReminderViewController")
            shell.do("select", section=0, row=0)
            screen = shell.tap("onTap_Done")
            self.assertEqual(shell.tap("onClick_Done")["screen"], "VarnokViewController")
            screen = shell.tap("btn_Settings")  # Opened again: the stored value as it is.
            self.assertEqual(screen["sections"][0]["rows"][0]["detail"], "csv")
            self.assertEqual([section["header"] for section in screen["sections"]], plain)
        stored = home.json("settings")
        self.assertEqual(stored["EXPORT_TYPE"], {"value": "csv", "from": "stored"})
        self.assertEqual(stored["EXPORT_CONF_PHONES"]["value"], "NO")
        self.assertEqual(stored["EVERY"]["value"], "WEEK")
        pending = home.json("reminder")["pending"]
        self.assertEqual(pending["repeat"], "WEEK")

    def test_the_first_close_offers_reminders_once(self):
        home = self.book()
        with Shell(home, "--language", "en") as shell:
            shell.tap("btn_Settings")
            self.assertEqual(len(shell.tap("onClick_Done")["alert"]["buttons"]), 2)
            screen = shell.do("answer", index=1)
            self.assertTrue(screen["sections"][2]["rows"][0]["switch"]["on"])
            self.assertEqual(shell.tap("onClick_Done")["screen"], "VarnokViewController")
            self.assertEqual(shell.tap("btn_Settings")["screen"], "VarnokSettingsViewController")
            self.assertEqual(shell.tap("onClick_Done")["screen"], "VarnokViewController")

    def test_duplicates_are_reviewed_and_cleared(self):
        home = self.book(PEOPLE + PEOPLE)
        with Shell(home, "--language", "en") as shell:
            shell.back_up()
            settings = shell.tap("btn_Settings")
            place = row_of(settings, "Delete Duplicate Contacts")
            shell.do("press", **place)
            screen = shell.wait()
            self.assertEqual(screen["screen"], "DuplicateRecordsTableViewController")
            self.assertIn("6", screen["header"])
            self.assertEqual(len(screen["sections"][0]["rows"]), 6)
            shell.tap("clearDuplicates")
            self.assertEqual(shell.wait()["screen"], "VarnokSettingsViewController")
            self.assertEqual(home.count(), 6)
            shell.do("press", **place)
            screen = shell.wait()
            self.assertEqual(screen["screen"], "VarnokSettingsViewController")
            self.assertIsNone(screen["overlay"])

    def test_chosen_contacts_and_then_all_are_removed(self):
        home = self.book()
        with Shell(home, "--language", "en") as shell:
            settings = shell.tap("btn_Settings")
            for section, table in enumerate(settings["sections"]):
                if len(table["rows"]) == 2 and table["rows"][0]["button"] and table["rows"][1]["accessory"] == 1:
                    shell.do("select", section=section, row=1)
            screen = shell.wait()
            self.assertEqual(screen["screen"], "RemoveRecordsViewController")
            self.assertIsNone(shell.tap("trash", segment=0)["alert"])  # Nothing is marked.
            self.assertTrue(shell.do("mark", section=0, row=0, on=True)["sections"][0]["rows"][0]["marked"])
            self.assertEqual(len(shell.tap("trash", segment=0)["alert"]["buttons"]), 2)
            shell.do("answer", index=0)
            self.assertEqual(home.count(), 6)
            shell.tap("trash", segment=0)
            shell.do("answer", index=1)
            shell.wait()
            self.assertEqual(home.count(), 5)
            self.assertEqual(shell.tap("trash", segment=1)["actionSheet"]["destructive"], 0)
            shell.do("answer", index=0)
            self.assertEqual(len(shell.wait()["alert"]["buttons"]), 1)
            shell.do("answer", index=0)
            self.assertEqual(shell.tap("close")["screen"], "VarnokSettingsViewController")
        self.assertEqual(home.count(), 0)

    def test_the_list_of_backups_keeps_the_last_one(self):
        home = self.book()
        with Shell(home, "--language", "en") as shell:
            shell.back_up()
            (home.documents / "older.vcf").write_text("BEGIN:VCARD\r\nEND:VCARD\r\n")
            settings = shell.tap("btn_Settings")
            screen = shell.do("press", **row_of(settings, "Restore a Backup"))
            self.assertEqual(screen["screen"], "RestoreBackupViewController")
            rows = [row["text"] for row in screen["sections"][0]["rows"]]
            self.assertEqual(len(rows), 2)
            last = next(i for i, text in enumerate(rows) if text.startswith("Varnok-"))
            self.assertIsNotNone(shell.do("delete", section=0, row=last)["alert"])
            shell.do("answer", index=0)
            self.assertIsNone(shell.do("delete", section=0, row=1 - last)["alert"])
            self.assertFalse((home.documents / "older.vcf").exists())
            sheet = shell.do("select", section=0, row=0)["actionSheet"]
            self.assertEqual(sheet["buttons"][:2], ["Email", "Dropbox"])
            screen = shell.do("answer", index=0)
            self.assertEqual(screen["mail"]["html"], False)
            self.assertIsNone(shell.do("mail", result="cancelled")["mail"])
            self.assertEqual(shell.tap("close")["screen"], "VarnokSettingsViewController")

    def test_the_web_access_goes_on_and_off(self):
        home = self.book()
        with Shell(home, "--language", "en") as shell:
            shell.back_up()
            settings = shell.tap("btn_Settings")
            server, address = {"section": 2, "row": 0}, ("sections", 2, "rows", 1, "text")
            if not settings["sections"][2]["rows"][0]["switch"]["enabled"]:
                self.assertFalse(shell.ask("switch", **server, on=True)["ok"])
                self.skipTest("this machine has no local network")
            self.assertRegex(at(shell.do("switch", **server, on=True), *address), r"\Ahttp://[0-9.]+:8080\Z")
            self.assertTrue(shell.wait()["sections"][2]["rows"][0]["switch"]["on"])  # A server is no work left.
            self.assertEqual(at(shell.do("switch", **server, on=False), *address), "")

    def test_everybody_is_removed_from_the_settings_after_a_question(self):
        home = self.book()
        with Shell(home, "--language", "en") as shell:
            place = row_of(shell.tap("btn_Settings"), "Delete All Contacts")
            sheet = shell.do("press", **place)["actionSheet"]
            self.assertEqual((sheet["tag"], sheet["destructive"], sheet["cancel"]), (2, 0, 1))
            self.assertIsNone(shell.do("answer", index=1)["alert"])
            self.assertEqual(home.count(), 6)
            shell.do("press", **place)
            shell.do("answer", index=0)
            self.assertEqual(len(shell.wait()["alert"]["buttons"]), 1)
            self.assertEqual(home.count(), 0)
            shell.do("answer", index=0)
            # Without a backup no search for duplicates begins.
            self.assertIsNone(shell.do("press", **row_of(shell.do("show"), "Delete Duplicate Contacts"))["overlay"])

    def test_mail_given_up_and_a_file_handed_over(self):
        home = self.book()
        opener = self.file("xdg-open", "#!/bin/sh\nprintf %s \"$1\" > \"$(dirname \"$0\")/opened\"\n")
        opener.chmod(0o755)
        with Shell(home, "--language", "en", env={"PATH": f"{self.folder}:/usr/bin:/bin"}) as shell:
            shell.back_up()
            shell.tap("btn_Send")
            screen = shell.do("mail", result="failed")
            self.assertTrue(screen["controls"]["btn_Send"]["hidden"])  # Ready for another backup.
            shell.do("press", **row_of(shell.tap("btn_Settings"), "Restore a Backup"))
            shell.do("select", section=0, row=0)
            shell.do("answer", index=2)
            shell.wait()
            backup = next(home.documents.glob("*.vcf"))
            self.assertEqual((self.folder / "opened").read_text(), str(backup))

    def test_a_reminder_that_was_opened_asks_for_a_vcard(self):
        home = self.book()
        home.ok("settings", "set", "EXPORT_TYPE", "csv")
        with Shell(home) as shell:
            shell.do("event", name="localNotification", state="active")
            self.assertEqual(home.setting("EXPORT_TYPE")["value"], "csv")
            shell.do("event", name="localNotification", state="inactive")
        self.assertEqual(home.setting("EXPORT_TYPE")["value"], "vcf")

    def test_linking_dropbox_asks_for_a_browser(self):
        with Shell(self.book(), "--language", "en", env={"VARNOK_DROPBOX_API": "http://127.0.0.1:9"}) as shell:
            settings = shell.tap("btn_Settings")
            self.assertIsNone(settings["openURL"])
            place = row_of(settings, "Dropbox")
            self.assertEqual(settings["sections"][place["section"]]["rows"][0]["segments"], ["Link Dropbox"])
            self.assertIn("code_challenge=", shell.do("press", **place)["openURL"])

    def test_what_is_not_there_is_refused_in_words(self):
        home = self.book()
        with Shell(home) as shell:
            for line in ("", "[]", "{", '{"do":7}', '{"do":"fly"}', '{"do":"tap"}', '{"do":"tap","control":"nowhere"}',
                         '{"do":"tap","control":"btn_Cancel"}', '{"do":"tap","control":"btn_Backup","segment":1}',
                         '{"do":"select","section":0,"row":0}', '{"do":"select","section":99999999999,"row":0}',
                         '{"do":"answer","index":0}', '{"do":"mail","result":"sent"}', '{"do":"wait","seconds":-1}',
                         '{"do":"event","name":"x"}', '{"do":"switch","section":0,"row":0,"on":1}'):
                answer = shell.line(line)
                self.assertFalse(answer["ok"], line)
                self.assertTrue(answer["error"], line)
            shell.do("event", name="applicationDidBecomeActive")
            shell.do("event", name="openURL", url="db-nobody://x")
            shell.do("event", name="localNotification", state="inactive")
            self.assertEqual(shell.do("show")["screen"], "VarnokViewController")

    def test_cancel_leaves_no_file(self):
        home = self.book(make_book.book(3000))
        with Shell(home) as shell:
            shell.tap("btn_Backup")
            shell.ask("tap", control="btn_Cancel")
            screen = shell.wait()
            self.assertTrue(screen["controls"]["btn_Cancel"]["hidden"])
            # The run may have ended before the tap.
            if screen["controls"]["btn_Send"]["hidden"]:
                self.assertEqual(list(home.documents.iterdir()), [])


class Conversation(cli_support.Case):
    def test_a_person_picks_by_number_and_letter_in_40_columns(self):
        home = self.home()
        home.import_text(PEOPLE)
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 40, 0, 0))
        process = subprocess.Popen([cli_support.program, "--home", str(home.path), "--language", "en", "shell"],
                                   stdin=slave, stdout=slave, stderr=slave, env=cli_support.environment())
        os.close(slave)
        seen = self.read(master, "q quit > ")
        self.assertIn("6 contacts", seen.lower())
        settings = next(line.split()[0] for line in seen.splitlines() if "[Settings]" in line)
        os.write(master, settings.encode() + b"\n")
        seen = self.read(master, "q quit > ")
        self.assertTrue(all(len(line.rstrip("\r")) <= 40 for line in seen.splitlines()[1:]), seen)
        os.write(master, b"nonsense\n")
        self.assertIn("no such choice", self.read(master, "q quit > "))
        os.write(master, b"1\n")
        self.assertIn("(x)", self.read(master, "q quit > "))
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(cli_support.TIME_LIMIT), 130)
        os.close(master)

    @staticmethod
    def read(master, until):
        text = ""
        end = time.monotonic() + cli_support.TIME_LIMIT
        while until not in text and time.monotonic() < end:
            if select.select([master], [], [], 1)[0]:
                text += os.read(master, 65536).decode(errors="replace")
        return text


if __name__ == "__main__":
    cli_support.main()
