#!/usr/bin/python3
"""Makes the n-th write, flush, resize or rename of varnokctl fail, for n from 1 to 100: it says so, nothing is lost.

    fault_test.py PROGRAM FAULT_LIBRARY
"""

import os
import sys

import cli_support
import make_book

NUMBERS = range(1, 101)
KINDS = ("EIO", "ENOSPC", "SHORT")

# Enough that most numbers are met, few enough that the last call of a run has one.
BACKUP_PEOPLE = 100
PEOPLE_BEFORE_IMPORT = 20
IMPORTED_PEOPLE = 250

library = ""


class Fault(cli_support.Case):
    def run_with_fault(self, home, number, kind, *arguments):
        """The result, the call that failed ("" when there were fewer calls), and how many calls there were."""
        report = self.folder / "report"
        report.unlink(missing_ok=True)
        # The sanitizer's library wants to be the first; it works behind this one as well.
        options = ":".join(filter(None, [os.environ.get("ASAN_OPTIONS"), "verify_asan_link_order=0"]))
        result = home.run(*arguments, env={
            "LD_PRELOAD": library, "ASAN_OPTIONS": options, "VARNOK_FAULT_FOLDER": str(home.path),
            "VARNOK_FAULT_NUMBER": str(number), "VARNOK_FAULT_KIND": kind, "VARNOK_FAULT_REPORT": str(report)})
        lines = report.read_text().splitlines()
        return result, lines[0] if len(lines) > 1 else "", int(lines[-1].split()[-1])

    def for_each_fault(self, home_of_run, command, check):
        """Runs `command` with every fault, each in a home that `home_of_run()` answers."""
        calls = self.run_with_fault(home_of_run(), 0, "", *command)[2]
        met = 0
        for number in NUMBERS:
            for kind in KINDS:
                home = home_of_run()
                result, call, _ = self.run_with_fault(home, number, kind, *command)
                met += call != ""
                with self.subTest(number=number, kind=kind, call=call, err=result.err):
                    self.assertDoneOrSaid(kind, call, result)
                    check(home, result)
        runs = len(NUMBERS) * len(KINDS)
        print(f"{calls} calls without a fault; {met} of {runs} faults were met")
        self.assertGreater(met, runs * 3 // 4)

    def assertDoneOrSaid(self, kind, call, result):
        # A write that takes a part of the bytes is no failure. A backup that is not known to be on the disk is one.
        if kind == "SHORT":
            self.assertEqual(result.code, 0)
        elif result.code != 0 or "/Documents" in call:
            self.assertSaysOneLine(result)

    def test_backup(self):
        home = self.home_with_backup(make_book.book(BACKUP_PEOPLE, photo_every=5, photo_bytes=300_000))
        earlier = home.vcards()

        def without_later_backups():
            home.keep_only(earlier)
            return home

        def check(home, result):
            self.assertNothingLost(home, earlier, {BACKUP_PEOPLE})
            if result.code == 0:
                self.assertIn(result.json["name"], home.vcards())

        command = ("--json", "--quiet", "backup", "--set", "EXPORT_CONF_SHRINK=NO")
        self.for_each_fault(without_later_backups, command, check)

    def test_import(self):
        template = self.home_with_backup(make_book.book(PEOPLE_BEFORE_IMPORT))
        earlier = template.vcards()
        file = str(self.file("book.vcf", make_book.book(IMPORTED_PEOPLE)))

        def check(home, result):
            more = IMPORTED_PEOPLE if result.code == 0 else 0
            self.assertNothingLost(home, earlier, {PEOPLE_BEFORE_IMPORT + more})

        self.for_each_fault(lambda: template.copy_to(self.folder / "copy"), ("--quiet", "import", file), check)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    library = os.path.abspath(sys.argv.pop(2))
    cli_support.main()
