#!/usr/bin/python3
"""A service of the desktop for the tests. Prints a line for what it is asked, and takes commands, one a line.

    stand_in.py portal             the real portal before a backend that answers as it is told:
                                   answer 0|1|2|never, die, quit
    stand_in.py screensaver        delay MILLISECONDS, die, quit
    stand_in.py logind             python-dbusmock's; inhibitors, die, quit
    stand_in.py networkmanager     python-dbusmock's; set STATE CONNECTIVITY TYPE, die, quit
    stand_in.py silent NAME        has the name and answers nothing

The first line is "ready". The end of its input ends it and what it started.
"""

import os
import subprocess
import sys
import time

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

PORTAL = "org.freedesktop.portal.Desktop"
BACKEND = "org.freedesktop.impl.portal.desktop.mock"
IMPLEMENTED = "org.freedesktop.impl.portal."
PORTAL_PROGRAM = "/usr/libexec/xdg-desktop-portal"
TIME_LIMIT = 20  # Seconds, for a service to start.


def say(*words):
    print(*words, sep="\t", flush=True)


def session_bus():
    return dbus.SessionBus(mainloop=dbus.mainloop.glib.DBusGMainLoop(set_as_default=True))


def start(bus, name, arguments):
    """The program's process, once it has the name on the bus."""
    process = subprocess.Popen(arguments, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    deadline = time.monotonic() + TIME_LIMIT
    while not bus.name_has_owner(name):
        if process.poll() is not None or time.monotonic() > deadline:
            sys.exit(f"{name} did not start")
        time.sleep(0.02)
    return process


class Program:
    """A service that another program is; this one only controls it."""

    process = None

    def die(self):
        self.process.kill()
        self.process.wait()
        say("died")

    def end(self):
        if self.process is not None and self.process.poll() is None:
            self.process.kill()
            self.process.wait()


class Question(dbus.service.Object):
    """What the backend shows until the portal closes it."""

    def __init__(self, bus, path, closed):
        super().__init__(bus, path)
        self.closed = closed

    @dbus.service.method(IMPLEMENTED + "Request")
    def Close(self):
        self.closed()
        self.remove_from_connection()


class Backend(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/org/freedesktop/portal/desktop")
        self.bus = bus
        self.answer = 0

    def ask(self, handle, results, done):
        question = Question(self.bus, handle, lambda: say("closed"))
        if self.answer is not None:
            question.remove_from_connection()
            done(dbus.UInt32(self.answer), dbus.Dictionary(results if self.answer == 0 else {}, signature="sv"))

    @dbus.service.method(IMPLEMENTED + "Email", in_signature="ossa{sv}", out_signature="ua{sv}",
                         async_callbacks=("done", "failed"))
    def ComposeEmail(self, handle, app, window, options, done, failed):
        addresses = [str(options.get("address", "")), *map(str, options.get("addresses", []))]
        say("compose", ",".join(filter(None, addresses)), options["subject"], options["body"],
            *(f"{path}={open(path, encoding='utf-8').read()}" for path in options.get("attachments", [])))
        self.ask(handle, {}, done)

    @dbus.service.method(IMPLEMENTED + "AppChooser", in_signature="ossasa{sv}", out_signature="ua{sv}",
                         async_callbacks=("done", "failed"))
    def ChooseApplication(self, handle, app, window, choices, options, done, failed):
        say("choose", ",".join(choices))
        self.ask(handle, {"choice": "viewer"}, done)

    @dbus.service.method(IMPLEMENTED + "FileChooser", in_signature="osssa{sv}", out_signature="ua{sv}",
                         async_callbacks=("done", "failed"))
    def OpenFile(self, handle, app, window, title, options, done, failed):
        kinds = ",".join(f"{kind} {' '.join(text for _, text in patterns)}" for kind, patterns in options["filters"])
        say("files", title, "several" if options["multiple"] else "one", kinds)
        self.ask(handle, {"uris": ["file:///tmp/a%20b.vcf", "file:///tmp/c.vcf"]}, done)

    @dbus.service.method(IMPLEMENTED + "Inhibit", in_signature="ossua{sv}", out_signature="",
                         async_callbacks=("done", "failed"))
    def Inhibit(self, handle, app, window, flags, options, done, failed):
        Question(self.bus, handle, lambda: say("released"))
        say("inhibit", int(flags), options["reason"])
        if self.answer == 0:
            done()
        elif self.answer is not None:
            failed(dbus.DBusException("no"))


class Portal(Program):
    def __init__(self, bus):
        folder = os.environ["XDG_DESKTOP_PORTAL_DIR"]
        with open(os.path.join(folder, "mock.portal"), "w", encoding="utf-8") as file:
            interfaces = ";".join(IMPLEMENTED + name for name in ("Email", "AppChooser", "FileChooser", "Inhibit"))
            file.write(f"[portal]\nDBusName={BACKEND}\nInterfaces={interfaces}\nUseIn=mock\n")
        self.name = dbus.service.BusName(BACKEND, bus)
        self.backend = Backend(bus)
        # Its questions of the backend are answered meanwhile.
        self.process = subprocess.Popen([PORTAL_PROGRAM], stdin=subprocess.DEVNULL, stdout=sys.stderr)
        deadline = time.monotonic() + TIME_LIMIT
        while not bus.name_has_owner(PORTAL):
            if self.process.poll() is not None or time.monotonic() > deadline:
                sys.exit("the portal did not start")
            GLib.MainContext.default().iteration(False)
            time.sleep(0.02)

    def command(self, word, *arguments):
        if word == "answer":
            self.backend.answer = None if arguments[0] == "never" else int(arguments[0])
            say("done")


class ScreenSaver(dbus.service.Object):
    def __init__(self, bus):
        self.name = dbus.service.BusName("org.freedesktop.ScreenSaver", bus)
        super().__init__(bus, "/org/freedesktop/ScreenSaver")
        self.delay = 0
        self.last = 100
        self.held = set()

    @dbus.service.method("org.freedesktop.ScreenSaver", in_signature="ss", out_signature="u",
                         async_callbacks=("done", "failed"), sender_keyword="sender")
    def Inhibit(self, application, reason, done, failed, sender):
        self.last += 1
        say("inhibit", self.last)
        self.held.add(self.last)
        self.connection.watch_name_owner(sender, lambda owner, cookie=self.last: owner or self.release(cookie))
        GLib.timeout_add(self.delay, lambda cookie: done(dbus.UInt32(cookie)), self.last)

    @dbus.service.method("org.freedesktop.ScreenSaver", in_signature="u", out_signature="")
    def UnInhibit(self, cookie):
        self.release(int(cookie))

    def release(self, cookie):
        if cookie in self.held:
            self.held.remove(cookie)
            say("released", cookie)

    def command(self, word, *arguments):
        if word == "delay":
            self.delay = int(arguments[0])
            say("done")

    def die(self):
        say("died")
        os._exit(0)

    def end(self):
        pass


class Logind(Program):
    NAME = "org.freedesktop.login1"

    def __init__(self, bus):
        self.process = start(bus, self.NAME, [sys.executable, "-m", "dbusmock", "--system", "--template", "logind"])
        self.manager = dbus.Interface(bus.get_object(self.NAME, "/org/freedesktop/login1"), self.NAME + ".Manager")

    def command(self, word, *_arguments):
        if word == "inhibitors":
            say("inhibitors", *(f"{who}: {what}" for what, who, *_ in self.manager.ListInhibitors()))


class NetworkManager(Program):
    NAME = "org.freedesktop.NetworkManager"

    def __init__(self, bus):
        self.process = start(bus, self.NAME,
                             [sys.executable, "-m", "dbusmock", "--system", "--template", "networkmanager"])
        self.mock = dbus.Interface(bus.get_object(self.NAME, "/org/freedesktop/NetworkManager"),
                                   "org.freedesktop.DBus.Mock")
        self.mock.AddProperty(self.NAME, "PrimaryConnectionType", "802-11-wireless")

    def set(self, state, connectivity, kind=""):
        self.mock.UpdateProperties(self.NAME, {"State": dbus.UInt32(int(state)), "Connectivity": dbus.UInt32(int(connectivity)),
                                          "PrimaryConnectionType": kind})

    def command(self, word, *arguments):
        if word == "set":
            self.set(*arguments)
            say("done")


def silent(name):
    bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
    bus.request_name(name)
    say("ready")
    sys.stdin.read()


def main():
    kinds = {"portal": Portal, "screensaver": ScreenSaver, "logind": Logind, "networkmanager": NetworkManager}
    if sys.argv[1] == "silent":
        return silent(sys.argv[2])
    service = kinds[sys.argv[1]](session_bus())
    loop = GLib.MainLoop()
    commands = open(0, "rb", buffering=0)  # One at a time: what waits in a buffer wakes nobody.

    def read(_source, _condition):
        words = commands.readline().decode().split()
        if not words or words[0] == "quit":
            loop.quit()
        elif words[0] == "die":
            service.die()
        else:
            service.command(*words)
        return True

    GLib.io_add_watch(GLib.IOChannel.unix_new(0), GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, read)
    say("ready")
    try:
        loop.run()
    finally:
        service.end()


if __name__ == "__main__":
    main()
