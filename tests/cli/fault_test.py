#!/usr/bin/python3
"""Makes the n-th write, flush, resize or rename of varnokctl fail, for n from 1 on: it says so, nothing is lost.

    fault_test.py PROGRAM FAULT_LIBRARY
"""

import os
import sys

import cli_support
import make_book

KINDS = ("EIO", "ENOSPC", "SHORT")

MOST_CALLS = 100

# Which folder's calls fail, of how many people, and how they are saved. Enough that the buffers are written several
# times, few enough that the last call of a run has a number. Small photos take long, since they are enlarged: other
# threads work while one writes.
BACKUPS = {
    "vcf": ("", make_book.book(100, photo_every=5, photo_bytes=300_000), ("--set", "EXPORT_CONF_SHRINK=NO")),
    "csv": ("Documents", make_book.book(5000), ()),
    "zip": ("Documents", make_book.book(2000, photo_every=200), ()),
}
PEOPLE_BEFORE_IMPORT = 20
IMPORTED_PEOPLE = 250

library = ""


class Fault(cli_support.Case):
    def run_with_fault(self, home, folder, number, kind, *arguments):
        """The result, the call that failed ("" when there were fewer calls), and how many calls there were."""
        report = self.folder / "report"
        report.unlink(missing_ok=True)
        # The sanitizer's library wants to be the first; it works behind this one as well.
        options = ":".join(filter(None, [os.environ.get("ASAN_OPTIONS"), "verify_asan_link_order=0"]))
        result = home.run(*arguments, env={
            "LD_PRELOAD": library, "ASAN_OPTIONS": options, "VARNOK_FAULT_FOLDER": str(home.path / folder),
            "VARNOK_FAULT_NUMBER": str(number), "VARNOK_FAULT_KIND": kind, "VARNOK_FAULT_REPORT": str(report)})
        lines = report.read_text().splitlines()
        return result, lines[0] if len(lines) > 1 else "", int(lines[-1].split()[-1])

    def for_each_fault(self, template, folder, command, check):
        """Runs `command` with a fault in each of its first calls to files of `folder`, each in a copy of `template`."""
        copy = self.folder / "copy"
        calls = self.run_with_fault(template.copy_to(copy), folder, 0, "", *command)[2]
        numbers = min(calls, MOST_CALLS)
        met = 0
        for number in range(1, numbers + 1):
            for kind in KINDS:
                home = template.copy_to(copy)
                result, call, _ = self.run_with_fault(home, folder, number, kind, *command)
                met += call != ""
                with self.subTest(number=number, kind=kind, call=call, err=result.err):
                    self.assertDoneOrSaid(kind, call, result)
                    check(home, result)
        runs = numbers * len(KINDS)
        print(f"{calls} calls without a fault; {met} of {runs} faults were met")
        self.assertGreater(calls, 5)
        self.assertGreater(met, runs * 3 // 4)

    def assertDoneOrSaid(self, kind, call, result):
        # A write that takes a part of the bytes is no failure. A backup that is not known to be on the disk is one.
        if kind == "SHORT":
            self.assertEqual(result.code, 0)
        elif result.code != 0 or "/Documents" in call:
            self.assertSaysOneLine(result)

    def backup(self, kind):
        folder, book, options = BACKUPS[kind]
        command = (*cli_support.BACKUP[kind], *options, "--json", "--quiet")
        template = self.home_with_backup(book, command)
        earlier = template.backups()
        count = template.count()

        def check(home, result):
            self.assertNothingLost(home, earlier, {count})
            if result.code == 0:
                self.assertIn(result.json["name"], home.backups())
                # The time of a vCard backup may be what could not be stored.
                if kind != "vcf":
                    self.assertBackedUp(home, earlier)

        self.for_each_fault(template, folder, command, check)

    def test_backup(self):
        self.backup("vcf")

    def test_csv_backup(self):
        self.backup("csv")

    def test_zip_backup(self):
        self.backup("zip")

    def test_import(self):
        template = self.home_with_backup(make_book.book(PEOPLE_BEFORE_IMPORT))
        earlier = template.backups()
        file = str(self.file("book.vcf", make_book.book(IMPORTED_PEOPLE)))

        def check(home, result):
            more = IMPORTED_PEOPLE if result.code == 0 else 0
            self.assertNothingLost(home, earlier, {PEOPLE_BEFORE_IMPORT + more})

        self.for_each_fault(template, "", ("--quiet", "import", file), check)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    library = os.path.abspath(sys.argv.pop(2))
    cli_support.main()
