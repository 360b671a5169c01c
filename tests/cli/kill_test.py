#!/usr/bin/python3
"""Kills varnokctl at random moments of a backup and of an import: nothing is lost, and nothing half is left.

    kill_test.py PROGRAM

VARNOK_TEST_SEED repeats a run's moments, as far as the machine repeats its own.
"""

import os
import random
import statistics
import time

import cli_support
import make_book

PEOPLE = 2000
PEOPLE_BEFORE_IMPORT = 40
KILLS_OF_IMPORT = 200

# How often, of what, and how. Small photos take long, since they are enlarged: other threads work while one writes.
BACKUPS = {
    "vcf": (200, make_book.book(PEOPLE, photo_every=10, photo_bytes=5000), ("--set", "EXPORT_CONF_SHRINK=NO")),
    "csv": (40, make_book.book(PEOPLE), ()),
    "zip": (40, make_book.book(PEOPLE, photo_every=200), ()),
}

# The last moment, as a part of the normal duration: some runs end by themselves.
LATEST = 1.15


def duration(action):
    """The usual seconds of `action`, once its files are warm."""
    seconds = []
    for _ in range(4):
        begin = time.monotonic()
        action()
        seconds.append(time.monotonic() - begin)
    return statistics.median(seconds[1:])


class Kill(cli_support.Case):
    @classmethod
    def setUpClass(cls):
        seed = int(os.environ.get("VARNOK_TEST_SEED") or random.randrange(1 << 32))
        print(f"seed {seed}")
        cls.chance = random.Random(seed)

    def kill(self, home, arguments, longest):
        """True when the program was still running."""
        process = home.start(*arguments)
        time.sleep(self.chance.uniform(0, longest))
        process.kill()
        return cli_support.finish(process).code != 0

    def assertMostHitTheRun(self, killed, kills):
        """Moments that all came too late would show nothing."""
        print(f"{killed} of {kills} runs were killed, the others had ended")
        self.assertGreater(killed, kills // 4)

    def backup(self, kind):
        kills, book, options = BACKUPS[kind]
        command = (*cli_support.BACKUP[kind], *options, "--quiet")
        template = self.home_with_backup(book, command)
        earlier = template.backups()
        copy = self.folder / "copy"
        longest = LATEST * duration(lambda: template.copy_to(copy).ok(*command))
        killed = 0
        parts = 0
        for trial in range(kills):
            home = template.copy_to(copy)
            with self.subTest(trial=trial):
                killed += self.kill(home, command, longest)
                parts += len(home.stale_parts())
                self.assertNothingLost(home, earlier, {PEOPLE})
        print(f"{parts} runs left a file behind that was not finished")
        self.assertMostHitTheRun(killed, kills)
        self.assertGreater(parts, 0)
        home = template.copy_to(copy)
        self.kill(home, command, longest / 2)
        home.ok(*command)
        self.assertEqual(home.stale_parts(), [])

    def test_backup(self):
        self.backup("vcf")

    def test_csv_backup(self):
        self.backup("csv")

    def test_zip_backup(self):
        self.backup("zip")

    def test_import(self):
        before = self.home_with_backup(make_book.book(PEOPLE_BEFORE_IMPORT))
        earlier = before.backups()
        file = str(self.file("book.vcf", make_book.book(PEOPLE)))
        copy = self.folder / "copy"
        longest = LATEST * duration(lambda: before.copy_to(copy).ok("import", file))
        killed = 0
        for trial in range(KILLS_OF_IMPORT):
            with self.subTest(trial=trial):
                home = before.copy_to(copy)
                killed += self.kill(home, ("import", file), longest)
                self.assertNothingLost(home, earlier, {PEOPLE_BEFORE_IMPORT, PEOPLE_BEFORE_IMPORT + PEOPLE})
        self.assertMostHitTheRun(killed, KILLS_OF_IMPORT)


if __name__ == "__main__":
    cli_support.main()
