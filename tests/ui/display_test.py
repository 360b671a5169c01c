#!/usr/bin/python3
"""varnok on a real display server, drawn by OpenGL and used with a mouse.

    display_test.py VARNOK VARNOKCTL [unittest arguments]
"""

import subprocess
import unittest

from PIL import ImageGrab

import desktop_session
from desktop_session import wait_until

# OpenGL of the processor, wherever this runs; the scene graph says what it draws with.
OPENGL = {"LIBGL_ALWAYS_SOFTWARE": "1", "QSG_RHI_BACKEND": "opengl", "QSG_INFO": "1"}
ACCENT, FILL, WINDOW = (0x0b, 0x6b, 0x60), (0x0c, 0x74, 0x68), (0xf2, 0xf4, 0xf3)  # Of the light theme.
COLOURS = 40  # Fewer are no page with smooth texts.


class Display(unittest.TestCase):
    def setUp(self):
        self.session = desktop_session.Session(self, *desktop_session.programs, OPENGL)

    def colours(self, place):
        """How many pixels have which colour within `place`, as the display has it now."""
        x, y, width, height = place
        picture = ImageGrab.grab(bbox=(x, y, x + width, y + height), xdisplay=self.session.environment["DISPLAY"])
        return {colour: count for count, colour in picture.convert("RGB").getcolors(width * height)}

    def click(self, element):
        x, y = map(str, element.centre)
        subprocess.run(["xdotool", "mousemove", x, y, "click", "1"], env=self.session.environment, check=True,
                       timeout=desktop_session.TIME_LIMIT)

    def test_backup_by_mouse(self):
        button = self.session.wait_for("Backup", {"push button"})
        _, _, width, height = button.place
        # A disc that touches neither the ring around it nor its own text.
        wait_until(lambda: self.colours(button.place).get(FILL, 0) > width * height / 4, "the button's colour")
        page = self.colours((0, 0, 420, 800))
        self.assertGreater(len(page), COLOURS)
        self.assertGreater(page[WINDOW], 420 * 800 / 4)
        self.assertIn("opengl", self.session.complaints.read_text().lower())

        self.click(button)
        self.click(self.session.wait_for("OK", {"push button"}))
        self.session.wait_for("Send", {"push button"})
        self.session.check_backup()
        # All is done: the ring is whole.
        wait_until(lambda: self.colours(button.place).get(ACCENT, 0) > 3 * width, "the ring")
        self.assertEqual(self.session.faults(), [])


if __name__ == "__main__":
    desktop_session.main()
