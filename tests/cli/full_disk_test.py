#!/usr/bin/python3
"""Backup, import and settings on a disk that has less and less room: a clear error, nothing lost, and all is well again
when there is room.

    full_disk_test.py PROGRAM

The disk is a small tmpfs. Without the right to mount one, here or in a namespace of its own, the size of files is
limited instead (RLIMIT_FSIZE), and the test says so.
"""

import os
import resource
import signal
import subprocess
import sys
import tempfile

import cli_support
import make_book

KIB = 1024
DISK_SIZE = 12 << 20
ROOM = [KIB * room for room in (4096, 2048, 1024, 512, 256, 128, 64, 32, 16, 8, 4, 0)]
PEOPLE = 2000

# The book of each type. Small photos take long, since they are enlarged: other threads work while one writes.
BOOKS = {"vcf": make_book.book(PEOPLE), "csv": make_book.book(PEOPLE), "zip": make_book.book(PEOPLE, photo_every=100)}
IN_NAMESPACE = "VARNOK_TEST_IN_NAMESPACE"
LONG_VALUE = "x" * 60_000  # Needs room of its own.


class SmallDisk:
    """A tmpfs at a folder."""

    def __init__(self, folder):
        self.folder = folder
        self.filler = folder / "filler"
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={DISK_SIZE}", "tmpfs", folder], check=True)

    def run(self, home, room, *arguments):
        """Runs with `room` bytes free, and gives the other room back."""
        statistics = os.statvfs(self.folder)
        with open(self.filler, "wb") as filler:
            os.posix_fallocate(filler.fileno(), 0, max(1, statistics.f_bavail * statistics.f_bsize - room))
        try:
            return home.run(*arguments)
        finally:
            self.filler.unlink()

    def close(self):
        subprocess.run(["umount", self.folder], check=True)


class SmallFiles:
    """No file may grow beyond the room; the next best thing to a full disk."""

    def __init__(self, folder):
        self.folder = folder

    def run(self, home, room, *arguments):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (room, resource.RLIM_INFINITY))

        return home.run(*arguments, preexec_fn=limit)

    def close(self):
        pass


class FullDisk(cli_support.Case):
    disk_type = SmallDisk

    def setUp(self):
        super().setUp()
        folder = self.folder / "disk"
        folder.mkdir()
        self.disk = self.disk_type(folder)
        self.addCleanup(self.disk.close)

    def with_less_and_less_room(self, template, command, check):
        """`check(home, result)` after every run, each in a copy of `template` on the disk.

        The command fails without room, works with the most of it, and once more in the home where it failed last.
        """
        codes = []
        for room in ROOM:
            home = template.copy_to(self.disk.folder / "home")
            result = self.disk.run(home, room, *command)
            with self.subTest(room=room):
                if result.code != 0:
                    self.assertSaysOneLine(result)
                check(home, result)
            codes.append(result.code)
        print(" ".join(f"{room // KIB}K:{code}" for room, code in zip(ROOM, codes)))
        self.assertEqual((codes[0], codes[-1]), (0, 1))
        check(home, home.ok(*command))

    def backup(self, kind):
        command = (*cli_support.BACKUP[kind], "--quiet")
        template = self.home_with_backup(BOOKS[kind], command)
        earlier = template.backups()

        def check(home, result):
            self.assertNothingLost(home, earlier, {PEOPLE})
            if result.code == 0:
                self.assertBackedUp(home, earlier)
            else:
                self.assertEqual(home.backups(), earlier)

        self.with_less_and_less_room(template, command, check)

    def test_backup(self):
        self.backup("vcf")

    def test_csv_backup(self):
        self.backup("csv")

    def test_zip_backup(self):
        self.backup("zip")

    def test_import(self):
        template = self.home_with_backup(make_book.book(20))
        earlier = template.backups()
        file = str(self.file("book.vcf", make_book.book(500)))

        def check(home, result):
            self.assertNothingLost(home, earlier, {520 if result.code == 0 else 20})

        self.with_less_and_less_room(template, ("import", "--quiet", file), check)

    def test_settings(self):
        template = self.home_with_backup(make_book.book(3))
        earlier = template.backups()
        template.ok("settings", "set", "FILE_NAME", "short")

        def check(home, result):
            self.assertNothingLost(home, earlier, {3})
            self.assertEqual(home.setting("FILE_NAME")["value"], LONG_VALUE if result.code == 0 else "short")

        self.with_less_and_less_room(template, ("settings", "set", "FILE_NAME", LONG_VALUE), check)


def may_mount(namespace):
    with tempfile.TemporaryDirectory() as folder:
        script = f'mount -t tmpfs tmpfs "{folder}" && umount "{folder}"'
        return subprocess.run([*namespace, "sh", "-c", script], capture_output=True, check=False).returncode == 0


def enter_namespace():
    """Runs this script once more where its mounts are its own and go with it. Returns when that cannot be done."""
    namespaces = (["unshare", "--mount"], ["unshare", "--user", "--map-root-user", "--mount"])
    namespace = next(filter(may_mount, namespaces), None)
    if namespace is not None:
        os.execvpe("unshare", [*namespace, sys.executable, *sys.argv], {**os.environ, IN_NAMESPACE: "1"})


if __name__ == "__main__":
    if IN_NAMESPACE not in os.environ:
        enter_namespace()
        print("A tmpfs cannot be mounted here; the size of files is limited instead.", file=sys.stderr)
        FullDisk.disk_type = SmallFiles
    cli_support.main()
