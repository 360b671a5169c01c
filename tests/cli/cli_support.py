"""What the tests of varnokctl share: homes that go away, runs with a fixed surrounding, and the promises that hold
after every failure.

A test script is called as `script.py PROGRAM [unittest arguments]`; it ends in `cli_support.main()`.
"""

import contextlib
import dataclasses
import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

TIME_LIMIT = 120  # Seconds; only a program that hangs reaches it.

# Preferences that are set in a home before it is mistreated.
KEPT_SETTINGS = {"REMINDER": "YES", "EVERY": "WEEK"}

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

    def vcards(self):
        """The contents of the vCard files in the documents directory, by name; hidden ones too."""
        return {path.name: path.read_bytes() for path in sorted(self.documents.glob("*.vcf"))}

    def stale_parts(self):
        return [path.name for path in self.documents.iterdir() if ".part-" in path.name]

    def keep_only(self, names):
        """Deletes the other vCard files, behind the program's back."""
        for name in self.vcards():
            if name not in names:
                (self.documents / name).unlink()

    def copy_to(self, path):
        """A copy of the home, in place of what `path` held."""
        shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(self.path, path)
        return Home(path)


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

    def home_with_backup(self, text):
        """A home with the people of `text`, KEPT_SETTINGS, and one backup with photos as they are.

        A backup's name has its second. This waits for the next one, so that no other backup replaces it.
        """
        home = self.home()
        home.import_text(text)
        for key, value in KEPT_SETTINGS.items():
            home.ok("settings", "set", key, value)
        home.ok("backup", "--quiet", "--set", "EXPORT_CONF_SHRINK=NO")
        time.sleep(1.1)
        return home

    def assertSaysOneLine(self, result, code=1):
        """The way a command fails: one line on stderr that begins with the program's name, nothing on stdout."""
        self.assertEqual((result.code, result.out), (code, ""), result.err)
        self.assertRegex(result.err, r"\Avarnokctl: [^\n]{10,}\n\Z")

    def assertNothingLost(self, home, earlier, counts):
        """What holds after every failure.

        `earlier` are the backups that must be there, contents by name. A backup beside them holds the same book, so
        it is whole when its bytes are theirs. `counts` are the numbers of contacts that are right.
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
        with self.subTest("stale parts"):
            self.assertEqual(home.stale_parts(), [])

    def assertWholeBackups(self, home, earlier):
        listed = {backup["name"]: backup["bytes"] for backup in home.json("backups", "--all")}
        there = home.vcards()
        self.assertEqual(listed, {name: len(content) for name, content in there.items()})
        self.assertLessEqual(set(earlier), set(there), "an earlier backup is missing")
        whole = set(earlier.values())
        self.assertEqual([name for name, content in there.items() if content not in whole], [], "not whole")


def main():
    global program
    if len(sys.argv) < 2:
        sys.exit(f"usage: {sys.argv[0]} PROGRAM [unittest arguments]")
    program = str(pathlib.Path(sys.argv.pop(1)).resolve())
    os.environ.pop("LANGUAGE", None)
    unittest.main(module="__main__", verbosity=2)
