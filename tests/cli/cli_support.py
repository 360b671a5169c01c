"""What the tests of varnokctl share: homes that go away, runs with a fixed surrounding, and the promises that hold
after every failure.

A test script is called as `script.py PROGRAM [unittest arguments]`; it ends in `cli_support.main()`.
"""

import contextlib
import dataclasses
import json
import os
import pathlib
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

TIME_LIMIT = 120  # Seconds; only a program that hangs reaches it.

# Preferences that are set in a home before it is mistreated, and the time of its last vCard backup.
KEPT_SETTINGS = {"REMINDER": "YES", "EVERY": "WEEK"}
LAST_BACKUP = 981173106.5

# The command for a backup of each type.
BACKUP = {"vcf": ("backup", "--type", "vcf", "--single"), "csv": ("backup", "--type", "csv"),
          "zip": ("backup", "--type", "vcf", "--multiple")}

program = ""  # The path of varnokctl; main() sets it.


@dataclasses.dataclass
class Result:
    code: int
    out: str
    err: str

    @property
    def json(self):
        return json.loads(self.out)


def environment(extra=None):
    """Fixed, but for what a sanitised program or the loader needs from ours."""
    fixed = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "TZ": "UTC", "LC_ALL": "C.UTF-8", "HOME": "/nonexistent"}
    passed = {key: os.environ[key] for key in os.environ if key.endswith("SAN_OPTIONS") or key == "VARNOK_RESOURCES"}
    return {**fixed, **passed, **(extra or {})}


def start(*arguments, env=None, **options):
    """The running program, for tests that do something to it meanwhile."""
    pipes = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
    return subprocess.Popen([program, *arguments], env=environment(env), **{**pipes, **options})


def finish(process):
    out, err = process.communicate(timeout=TIME_LIMIT)
    return Result(process.returncode, out.decode(), err.decode())


def run(*arguments, env=None, stdin="", **options):
    done = subprocess.run([program, *arguments], env=environment(env), input=stdin.encode(), capture_output=True,
                          timeout=TIME_LIMIT, check=False, **options)
    return Result(done.returncode, done.stdout.decode(), done.stderr.decode())


class Home:
    """One folder for --home."""

    def __init__(self, path):
        self.path = pathlib.Path(path)
        self.documents = self.path / "Documents"
        self.contacts_file = self.path / "contacts.db"
        self.preferences_file = self.path / "preferences.db"

    def run(self, *arguments, **options):
        return run("--home", str(self.path), *arguments, **options)

    def start(self, *arguments, **options):
        return start("--home", str(self.path), *arguments, **options)

    def ok(self, *arguments, **options):
        """Runs a command that must succeed."""
        result = self.run(*arguments, **options)
        if result.code != 0:
            raise AssertionError(f"{' '.join(arguments)}: exit status {result.code}\n{result.err}")
        return result

    def json(self, *arguments, **options):
        return self.ok("--json", *arguments, **options).json

    def import_text(self, text):
        return self.json("import", "-", stdin=text)

    def count(self):
        return len(self.json("contacts"))

    def setting(self, key):
        return self.json("settings", "get", key)[key]

    def backups(self):
        """What the backups in the documents directory hold, by name; hidden ones too."""
        return {path.name: holding(path) for path in sorted(self.documents.iterdir()) if path.suffix[1:] in BACKUP}

    def stale_parts(self):
        return [path.name for path in self.documents.iterdir() if ".part-" in path.name]

    def copy_to(self, path):
        """A copy of the home, in place of what `path` held."""
        shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(self.path, path)
        return Home(path)


def holding(backup):
    """The bytes of a file; of an archive its cards, with their names but for the number that chance gave them."""
    if backup.suffix != ".zip":
        return backup.read_bytes()
    with zipfile.ZipFile(backup) as archive:
        return tuple((re.sub(r"\d+\.vcf$", "", card.filename), archive.read(card)) for card in archive.infolist())


class Case(unittest.TestCase):
    """A test with a temporary folder of its own."""

    maxDiff = 4000

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="varnokctl-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def home(self, name="home"):
        return Home(self.folder / name)

    def file(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def home_with_backup(self, text, command=(*BACKUP["vcf"], "--set", "EXPORT_CONF_SHRINK=NO")):
        """A home with the people of `text`, KEPT_SETTINGS, LAST_BACKUP and the backup that `command` makes.

        A backup's name has its second. This waits for the next one, so that no other backup replaces it.
        """
        home = self.home()
        home.import_text(text)
        for key, value in KEPT_SETTINGS.items():
            home.ok("settings", "set", key, value)
        home.ok(*command, "--quiet")
        home.ok("settings", "set", "EXPORT_LAST", str(LAST_BACKUP))
        time.sleep(1.1)
        return home

    def assertSaysOneLine(self, result, code=1):
        """The way a command fails: one line on stderr that begins with the program's name, nothing on stdout."""
        self.assertEqual((result.code, result.out), (code, ""), result.err)
        self.assertRegex(result.err, r"\Avarnokctl: [^\n]{10,}\n\Z")

    def assertNothingLost(self, home, earlier, counts):
        """What holds after every failure.

        `earlier` are the backups that were there. Others hold the same book, so they are whole when they hold what
        one of these does. `counts` are the numbers of contacts that are right.
        """
        with self.subTest("backups"):
            self.assertWholeBackups(home, earlier)
        with self.subTest("contacts"):
            self.assertIn(home.count(), counts)
            with contextlib.closing(sqlite3.connect(home.contacts_file)) as database:
                self.assertEqual(database.execute("PRAGMA integrity_check").fetchall(), [("ok",)])
        with self.subTest("preferences"):
            settings = home.json("settings")
            self.assertEqual({key: settings[key]["value"] for key in KEPT_SETTINGS}, KEPT_SETTINGS)
            if not any(name.endswith(".vcf") for name in set(home.backups()) - set(earlier)):
                self.assertEqual(settings["EXPORT_LAST"]["value"], LAST_BACKUP)
        with self.subTest("stale parts"):
            self.assertEqual(home.stale_parts(), [])

    def assertWholeBackups(self, home, earlier):
        listed = {backup["name"]: backup["bytes"] for backup in home.json("backups", "--all")}
        there = home.backups()
        self.assertEqual(listed, {name: (home.documents / name).stat().st_size for name in there})
        whole = set(earlier.values())
        self.assertEqual([name for name, content in there.items() if content not in whole], [], "not whole")
        vcards = {name for name in earlier if name.endswith(".vcf")}
        self.assertLessEqual(vcards, set(there), "an earlier vCard backup is missing")
        self.assertEqual(types(earlier), types(there), "an earlier backup went before there was a newer one")

    def assertBackedUp(self, home, earlier):
        """What a backup that worked has changed: another vCard file and its time, or all of its type replaced."""
        new, gone = set(home.backups()) - set(earlier), set(earlier) - set(home.backups())
        self.assertEqual(len(new), 1)
        last = home.setting("EXPORT_LAST")["value"]
        if types(new) == {".vcf"}:
            self.assertEqual(gone, set())
            self.assertGreater(last, LAST_BACKUP)
        else:
            self.assertEqual(gone, {name for name in earlier if types([name]) == types(new)})
            self.assertEqual(last, LAST_BACKUP)


def types(names):
    return {pathlib.PurePath(name).suffix for name in names}


def main():
    global program
    if len(sys.argv) < 2:
        sys.exit(f"usage: {sys.argv[0]} PROGRAM [unittest arguments]")
    program = str(pathlib.Path(sys.argv.pop(1)).resolve())
    os.environ.pop("LANGUAGE", None)
    unittest.main(module="__main__", verbosity=2)
