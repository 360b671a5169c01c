#!/usr/bin/python3
"""Pictures of the pages against those that were found good:

    compare_screenshots.py PROGRAM DIRECTORY [--update]

PROGRAM is ui_screenshots. DIRECTORY, for pictures and differences, is emptied first. With --update the pictures become
the references, at a quarter of their size: what a font's hinting does to an edge is not compared.
"""

import argparse
import pathlib
import shutil
import subprocess
import sys

from PIL import Image, ImageChops, ImageStat

REFERENCES = pathlib.Path(__file__).resolve().parent / "pictures"
TIME_LIMIT = 240  # Seconds.

# The pages that are compared of each look. Whether there is a network is seen in the settings, in the part about
# access over it, and the time of the last backup below it: there, only the lines above or under these are.
WHOLE = (0, 9999)
PAGES = {
    "390x844-en-light": {"02-ready": WHOLE, "05-settings": (0, 380), "08-fields": WHOLE, "15-delete-contacts": WHOLE},
    "1024x768-de-dark": {"06-settings-end": (200, 640)},
    "390x844-he-dark": {"06-settings-end": (300, 720)},
}

SHRINK = 4
NOTICED = 24  # Levels of 255 by which a pixel may differ in any channel.
SHARE = 0.002  # Of all pixels, those that may differ by more.
MEAN = 0.5  # Levels by which pixels may differ on average.


def take(program, directory):
    """All pictures, the looks at the same time: they wait more than they work."""
    running = []
    try:
        for look in PAGES:
            size, language, scheme = look.split("-")
            running.append(subprocess.Popen([program, str(directory), f"SIZE={size}", f"SCHEME={scheme}",
                                             f"LANGUAGE={language}"]))
        return all([process.wait(timeout=TIME_LIMIT) == 0 for process in running])
    finally:
        for process in running:
            process.kill()
            process.wait()


def small(path, lines):
    with Image.open(path) as picture:
        compared = picture.convert("RGB").crop((0, lines[0], picture.width, min(lines[1], picture.height)))
        return compared.reduce(SHRINK)


def difference(name, lines, directory):
    """What is wrong with a picture, as one line; nothing when it is as it was."""
    reference, taken = REFERENCES / f"{name}.png", directory / f"{name}.png"
    if not taken.exists():
        return f"{name}: not taken"
    if not reference.exists():
        return f"{name}: there is no {reference}"
    with Image.open(reference) as file:
        before = file.convert("RGB")
    now = small(taken, lines)
    if before.size != now.size:
        return f"{name}: {now.size} instead of {before.size}"
    change = ImageChops.difference(before, now)
    mean = sum(ImageStat.Stat(change).mean) / 3
    red, green, blue = change.split()
    worst = ImageChops.lighter(ImageChops.lighter(red, green), blue)
    noticed = sum(worst.histogram()[NOTICED + 1:]) / (now.width * now.height)
    if mean <= MEAN and noticed <= SHARE:
        return None
    shown = directory / f"{name}-difference.png"
    show(before, now, worst, shown)
    return f"{name}: {noticed:.1%} of the pixels differ, {mean:.2f} levels on average; see {shown}"


def show(before, now, worst, path):
    """Then, now, and where they differ, side by side at four times their size."""
    sheet = Image.new("RGB", (3 * now.width, now.height))
    marked = worst.point(lambda level: 255 if level > NOTICED else level).convert("RGB")
    for column, picture in enumerate((before, now, marked)):
        sheet.paste(picture, (column * now.width, 0))
    sheet.resize((sheet.width * SHRINK, sheet.height * SHRINK), Image.NEAREST).save(path)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("directory", type=pathlib.Path)
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()

    shutil.rmtree(arguments.directory, ignore_errors=True)
    arguments.directory.mkdir(parents=True)
    if not take(arguments.program, arguments.directory):
        sys.exit("The pictures could not be taken, or the pages complained.")
    names = {f"{look}-{page}": lines for look, pages in PAGES.items() for page, lines in pages.items()}
    if arguments.update:
        shutil.rmtree(REFERENCES, ignore_errors=True)
        REFERENCES.mkdir()
        for name, lines in names.items():
            small(arguments.directory / f"{name}.png", lines).save(REFERENCES / f"{name}.png", optimize=True)
        return
    wrong = [line for line in (difference(name, lines, arguments.directory) for name, lines in names.items()) if line]
    print(f"{len(names) - len(wrong)} of {len(names)} pictures are as they were.")
    if wrong:
        sys.exit("\n".join(wrong))


if __name__ == "__main__":
    main()
