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

    def home(self, name="home"):
        return cli_support.Home(self.disk.folder / name)

    def with_less_and_less_room(self, home, command, check):
        """`check(result)` after every run. The command fails without room, and works with the most of it."""
        codes = []
        for room in ROOM:
            result = self.disk.run(home, room, *command)
            with self.subTest(room=room):
                if result.code != 0:
                    self.assertSaysOneLine(result)
                check(result)
            codes.append(result.code)
        print(" ".join(f"{room // KIB}K:{code}" for room, code in zip(ROOM, codes)))
        self.assertEqual((codes[0], codes[-1]), (0, 1))

    def test_backup(self):
        home = self.home_with_backup(make_book.book(PEOPLE))
        earlier = home.vcards()

        def check(result):
            self.assertNothingLost(home, earlier, {PEOPLE})
            self.assertEqual(len(home.vcards()), len(earlier) + (result.code == 0))
            home.keep_only(earlier)

        self.with_less_and_less_room(home, ("backup", "--quiet"), check)
        home.ok("backup")

    def test_import(self):
        home = self.home_with_backup(make_book.book(20))
        earlier = home.vcards()
        file = str(self.file("book.vcf", make_book.book(500)))
        count = 20

        def check(result):
            nonlocal count
            count += 500 if result.code == 0 else 0
            self.assertNothingLost(home, earlier, {count})

        self.with_less_and_less_room(home, ("import", "--quiet", file), check)
        home.ok("import", file)
        self.assertEqual(home.count(), count + 500)

    def test_settings(self):
        home = self.home_with_backup(make_book.book(3))
        earlier = home.vcards()

        def check(result):
            self.assertNothingLost(home, earlier, {3})
            self.assertEqual(home.setting("FILE_NAME")["value"], LONG_VALUE if result.code == 0 else "short")
            home.ok("settings", "set", "FILE_NAME", "short")

        home.ok("settings", "set", "FILE_NAME", "short")
        self.with_less_and_less_room(home, ("settings", "set", "FILE_NAME", LONG_VALUE), check)
        home.ok("settings", "set", "FILE_NAME", LONG_VALUE)


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
