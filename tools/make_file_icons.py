#!/usr/bin/python3
"""Writes resources/images/*.png, the pictures of the file lists.

Run it after changing a drawing. Drawn four times as large and reduced, so that
edges are smooth. Needs python3-pil.
"""

import pathlib

from PIL import Image, ImageDraw

TARGET = pathlib.Path(__file__).resolve().parent.parent / "resources" / "images"
SIDE = 64  # Pixels.
SCALE = 4

PAPER, EDGE, FOLD = "#ffffff", "#8a94a6", "#dfe4ec"


class Canvas:
    """A picture whose drawing operations count in pixels of the reduced one."""

    def __init__(self):
        self.image = Image.new("RGBA", (SIDE * SCALE, SIDE * SCALE), (0, 0, 0, 0))
        self.draw = ImageDraw.Draw(self.image)

    def polygon(self, points, fill):
        self.draw.polygon([(x * SCALE, y * SCALE) for x, y in points], fill=fill)

    def box(self, left, top, right, bottom, fill, radius=0):
        self.draw.rounded_rectangle([left * SCALE, top * SCALE, right * SCALE - 1, bottom * SCALE - 1],
                                    radius * SCALE, fill=fill)

    def disc(self, x, y, radius, fill):
        self.draw.ellipse([(x - radius) * SCALE, (y - radius) * SCALE, (x + radius) * SCALE - 1,
                           (y + radius) * SCALE - 1], fill=fill)

    def save(self, name):
        self.image.resize((SIDE, SIDE), Image.LANCZOS).save(TARGET / name, optimize=True)


def paper(canvas):
    outline = [(12, 4), (40, 4), (54, 18), (54, 60), (12, 60)]
    canvas.polygon(outline, EDGE)
    canvas.polygon([(14, 6), (39, 6), (52, 19), (52, 58), (14, 58)], PAPER)
    canvas.polygon([(39, 6), (39, 19), (52, 19)], FOLD)


def lines(canvas, colour="#5b6b84"):
    for row, right in enumerate((46, 42, 46, 36)):
        canvas.box(20, 26 + 7 * row, right, 29 + 7 * row, colour)


def contact(canvas):
    paper(canvas)
    canvas.disc(33, 31, 7, "#2f7dd1")
    canvas.box(20, 41, 46, 53, "#2f7dd1", radius=6)


def table(canvas):
    paper(canvas)
    canvas.box(19, 25, 47, 53, "#2e9e5b")
    for row in range(3):
        for column in range(2):
            canvas.box(21 + 13 * column, 27 + 8 * row + row, 32 + 13 * column, 34 + 8 * row + row, PAPER)


def archive(canvas):
    paper(canvas)
    for row in range(7):
        canvas.box(28 if row % 2 else 33, 8 + 4 * row, 33 if row % 2 else 38, 12 + 4 * row, "#c9852b")
    canvas.box(27, 37, 39, 53, "#c9852b", radius=3)
    canvas.box(31, 43, 35, 49, PAPER)


def text(canvas):
    paper(canvas)
    lines(canvas)


def picture(canvas):
    paper(canvas)
    canvas.box(18, 26, 48, 52, "#bfe0f7")
    canvas.disc(40, 33, 4, "#f4b942")
    canvas.polygon([(18, 52), (29, 36), (38, 47), (42, 42), (48, 52)], "#4f9a5f")


def sound(canvas):
    paper(canvas)
    canvas.box(38, 24, 41, 47, "#8a4fbf")
    canvas.box(26, 24, 41, 29, "#8a4fbf")
    canvas.box(26, 24, 29, 50, "#8a4fbf")
    canvas.disc(25, 50, 4.5, "#8a4fbf")
    canvas.disc(37, 47, 4.5, "#8a4fbf")


def film(canvas):
    paper(canvas)
    canvas.box(18, 28, 48, 50, "#444c5c", radius=3)
    canvas.polygon([(28, 32), (28, 46), (41, 39)], PAPER)


def folder(canvas):
    canvas.box(6, 14, 30, 30, "#d99a2b", radius=4)
    canvas.box(6, 20, 58, 54, "#d99a2b", radius=4)
    canvas.box(6, 26, 58, 54, "#f2b84b", radius=4)


def unknown(canvas):
    paper(canvas)
    lines(canvas, FOLD)


def main():
    TARGET.mkdir(parents=True, exist_ok=True)
    for draw in (archive, contact, film, folder, picture, sound, table, text, unknown):
        canvas = Canvas()
        draw(canvas)
        canvas.save(draw.__name__ + ".png")


if __name__ == "__main__":
    main()
