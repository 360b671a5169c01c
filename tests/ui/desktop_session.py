"""A desktop of the test's own: a message bus, a display without a screen, assistive technologies, and varnok on it.

What a screen reader is told and does goes over the accessibility bus (org.a11y.atspi), as objects of `Element`.
"""

import contextlib
import dataclasses
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest

import dbus

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "cli"))

from session_bus import Bus, stop, wait_until  # noqa: E402

SAMPLE = pathlib.Path(__file__).resolve().parents[2] / "resources" / "sample" / "people.vcf"
SCREEN = (1024, 900)
LAUNCHERS = ("/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher")
TIME_LIMIT = 60  # Seconds, for a program that ends by itself.

programs = []  # The paths of varnok and varnokctl; main() sets them.

ATSPI = "org.a11y.atspi."
ROOT = "/org/a11y/atspi/accessible/root"
PROPERTIES = "org.freedesktop.DBus.Properties"
ON_SCREEN = dbus.UInt32(0)  # Coordinates are those of the whole screen.
# Numbers of states and of roles that say nothing, as the protocol counts them.
CHECKED, ENABLED, FOCUSABLE, SHOWING = 4, 8, 11, 25
NO_ROLE = {"invalid", "unknown", ""}


@dataclasses.dataclass(frozen=True)
class Element:
    """What a screen reader sees of one element at one moment; `place` is x, y, width and height on the screen."""

    role: str
    name: str
    states: frozenset
    actions: tuple
    place: tuple
    remote: object

    def __str__(self):
        return f"{self.role} “{self.name}” {', '.join(self.actions)} at {self.place}"

    @property
    def title(self):
        """The name, without the value that may follow."""
        return self.name.split(", ")[0]

    @property
    def operable(self):
        return FOCUSABLE in self.states or bool(set(self.actions) & {"Press", "Toggle"})

    @property
    def centre(self):
        x, y, width, height = self.place
        return x + width // 2, y + height // 2

    def act(self, *names):
        """Does the first of these actions that the element has; False without one."""
        for name in names:
            if name in self.actions:
                return bool(self.remote.DoAction(dbus.Int32(self.actions.index(name)),
                                                 dbus_interface=ATSPI + "Action"))
        return False

    def press(self):
        return self.act("Press", "Toggle")


class Session:
    """Ends, with every process of it, when the test does."""

    def __init__(self, case, varnok, varnokctl, graphics):
        """`graphics` are the variables that choose how varnok draws."""
        folder = tempfile.TemporaryDirectory(prefix="varnok-desktop-")
        case.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.home = self.folder / "home"
        (self.folder / "run").mkdir(mode=0o700)
        self.bus = Bus(case)
        self.environment = {
            "PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "TZ": "UTC", "LC_ALL": "C.UTF-8", "HOME": folder.name,
            "XDG_RUNTIME_DIR": str(self.folder / "run"), "GSETTINGS_BACKEND": "memory", "GIO_USE_VFS": "local",
            **{key: value for key, value in os.environ.items() if key.endswith("SAN_OPTIONS")}, **self.bus.env}
        self.case, self.varnokctl = case, varnokctl
        self.environment["DISPLAY"] = self.start_display()
        self.accessibility = self.start_accessibility()
        subprocess.run([varnokctl, "--home", str(self.home), "import", str(SAMPLE)], env=self.environment,
                       stdout=subprocess.DEVNULL, timeout=TIME_LIMIT, check=True)
        self.complaints = self.folder / "varnok.log"
        with self.complaints.open("wb") as log:
            self.varnok = self.bus.start(
                varnok, "--home", str(self.home), "--language", "en", stdin=subprocess.DEVNULL, stderr=log,
                env={**self.environment, "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", **graphics})
        self.application = wait_until(self.find_application, "varnok on the accessibility bus")

    def start_display(self):
        reading, writing = os.pipe()
        self.bus.start("Xvfb", "-displayfd", str(writing), "-nolisten", "tcp", "-screen", "0",
                       f"{SCREEN[0]}x{SCREEN[1]}x24", pass_fds=(writing,), stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, env=self.environment)
        os.close(writing)
        with os.fdopen(reading) as number:
            return f":{number.readline().strip()}"

    def start_accessibility(self):
        launcher = next(path for path in LAUNCHERS if os.path.exists(path))
        process = subprocess.Popen([launcher, "--launch-immediately"], env=self.environment,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        # Asked to end, it takes the bus with it that it has started.
        self.case.addCleanup(end_gently, process)
        wait_until(lambda: self.bus.connection.name_has_owner("org.a11y.Bus"), "org.a11y.Bus")
        launched = self.bus.connection.get_object("org.a11y.Bus", "/org/a11y/bus", introspect=False)
        address = wait_until(lambda: str(launched.GetAddress(dbus_interface="org.a11y.Bus")), "the accessibility bus")
        connection = dbus.bus.BusConnection(address)
        self.case.addCleanup(connection.close)
        # Applications are to find the registry there.
        connection.start_service_by_name(ATSPI + "Registry")
        return connection

    def find_application(self):
        if self.varnok.poll() is not None:
            raise AssertionError(f"varnok ended with {self.varnok.returncode}: {self.complaints.read_text()}")
        for name in self.accessibility.list_names():
            if name.startswith(":") and self.process_of(name) == self.varnok.pid:
                return self.accessibility.get_object(name, ROOT, introspect=False)
        return None

    def process_of(self, name):
        bus = self.accessibility.get_object("org.freedesktop.DBus", "/", introspect=False)
        try:
            return bus.GetConnectionUnixProcessID(name, dbus_interface="org.freedesktop.DBus")
        except dbus.DBusException:  # It has gone meanwhile.
            return None

    def elements(self):
        """Everything that is shown at this moment, a parent before its children."""
        found = []
        with contextlib.suppress(dbus.DBusException):  # An element that went meanwhile: what was seen is enough.
            self.visit(self.application, found, 0)
        return found

    def visit(self, remote, found, depth):
        for name, path in remote.GetChildren(dbus_interface=ATSPI + "Accessible"):
            if depth > 40 or path == "/org/a11y/atspi/null":
                continue
            child = self.accessibility.get_object(name, path, introspect=False)
            element = self.describe(child)
            if SHOWING in element.states:
                found.append(element)
            self.visit(child, found, depth + 1)

    @staticmethod
    def describe(remote):
        accessible = dbus.Interface(remote, ATSPI + "Accessible")
        low, high = accessible.GetState()
        bits = int(low) | int(high) << 32
        interfaces = {str(name) for name in accessible.GetInterfaces()}
        actions, place = (), (0, 0, 0, 0)
        if ATSPI + "Action" in interfaces:
            actions = tuple(str(action[0]) for action in remote.GetActions(dbus_interface=ATSPI + "Action"))
        if ATSPI + "Component" in interfaces:
            extents = remote.GetExtents(ON_SCREEN, dbus_interface=ATSPI + "Component")
            place = tuple(int(number) for number in extents)
        return Element(str(accessible.GetRoleName()), str(remote.Get(ATSPI + "Accessible", "Name",
                                                                     dbus_interface=PROPERTIES)),
                       frozenset(bit for bit in range(64) if bits >> bit & 1), actions, place, remote)

    def wait_for(self, title, roles=None):
        """The last element with this title and one of `roles`, which is on the page in front.

        It is where it stays: pages slide in.
        """
        seen = []

        def there():
            before = seen[-1] if seen else None
            fitting = [element for element in self.elements()
                       if element.title == title and (roles is None or element.role in roles)]
            seen.append(fitting[-1] if fitting else None)
            return seen[-1] if seen[-1] and before and before.place == seen[-1].place else None
        try:
            return wait_until(there, f"“{title}”")
        except AssertionError as late:
            raise AssertionError("\n".join([str(late), *map(str, self.elements())])) from late

    def setting(self, key):
        told = subprocess.run([self.varnokctl, "--home", str(self.home), "--json", "settings", "get", key],
                              env=self.environment, stdout=subprocess.PIPE, timeout=TIME_LIMIT, check=True).stdout
        return json.loads(told)[key]["value"]

    def backups(self):
        documents = self.home / "Documents"
        return [path.read_text() for path in documents.glob("[!.]*.vcf")]

    def check_backup(self):
        """One file, of everybody."""
        people = SAMPLE.read_text().count("BEGIN:VCARD")
        self.case.assertEqual([text.count("BEGIN:VCARD") for text in self.backups()], [people])

    def faults(self):
        """Lines of varnok's output that tell of a fault in it or in its pages."""
        lines = self.complaints.read_text(errors="replace").splitlines()
        return [line for line in lines if re.search(r"Sanitizer|runtime error:|\.qml:\d+", line)]


def end_gently(process):
    process.send_signal(signal.SIGTERM)
    with contextlib.suppress(subprocess.TimeoutExpired):
        process.wait(timeout=5)
    stop(process)


def main():
    if len(sys.argv) < 3:
        sys.exit(f"usage: {sys.argv[0]} VARNOK VARNOKCTL [unittest arguments]")
    programs.extend(str(pathlib.Path(sys.argv.pop(1)).resolve()) for _ in range(2))
    unittest.main(module="__main__", verbosity=2)
