"""A message bus of the test's own, and services on it that do what the test says (python3-dbusmock)."""

import contextlib
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

import dbus

MOCK = "org.freedesktop.DBus.Mock"
TIME_LIMIT = 30  # Seconds, until something that must come has come.

# Nothing is started on demand, so that what a test does not start is absent.
CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:dir={folder}</listen><servicedir>{folder}/services</servicedir>
<policy context="default"><allow send_destination="*"/><allow own="*"/><allow eavesdrop="true"/></policy></busconfig>
"""


def wait_until(happened, what):
    """What `happened` answers, once it is true."""
    end = time.monotonic() + TIME_LIMIT
    while time.monotonic() < end:
        if answer := happened():
            return answer
        time.sleep(0.02)
    raise AssertionError(f"still waiting for {what}")


class Bus:
    """Ends, with its services, when the test does."""

    def __init__(self, case):
        folder = tempfile.TemporaryDirectory(prefix="varnok-bus-")
        case.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "services").mkdir()
        configuration = self.folder / "bus.conf"
        configuration.write_text(CONFIGURATION.format(folder=folder.name))
        self.case = case
        self.daemon = self.start("dbus-daemon", "--nofork", "--print-address", f"--config-file={configuration}",
                                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.address = self.daemon.stdout.readline().decode().strip()
        self.connection = dbus.bus.BusConnection(self.address)

    @property
    def env(self):
        return {"DBUS_SESSION_BUS_ADDRESS": self.address}

    def start(self, *command, **options):
        process = subprocess.Popen(command, **options)
        self.case.addCleanup(stop, process)
        return process

    def mock(self, name, path, interface, *options, after=0):
        """A service; with `after` it comes that many seconds later."""
        log = self.folder / f"{name}-{time.monotonic_ns()}.log"
        environment = {**os.environ, **self.env}
        program = [sys.executable, "-m", "dbusmock", "--session", "--logfile", str(log), *options]
        program += [] if "--template" in options else [name, path, interface]
        process = self.start("sh", "-c", f'sleep {after}; exec "$@"', "sh", *program, env=environment)
        service = Service(self, process, name, path, interface, log)
        if not after:
            wait_until(lambda: self.connection.name_has_owner(name), name)
        return service

    def notifications(self, capabilities="body body-markup actions persistence", **options):
        return self.mock("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                         "org.freedesktop.Notifications", "--template", "notification_daemon", "--parameters",
                         f'{{"capabilities": "{capabilities}"}}', **options)

    def unit_manager(self):
        manager = self.mock("org.freedesktop.systemd1", "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager")
        for method, takes, gives, code in (
                ("EnableUnitFiles", "asbb", "ba(sss)", "ret = (True, dbus.Array([], signature='(sss)'))"),
                ("DisableUnitFiles", "asb", "a(sss)", "ret = dbus.Array([], signature='(sss)')"),
                ("Reload", "", "", ""),
                ("RestartUnit", "ss", "o", "ret = '/org/freedesktop/systemd1/job/1'"),
                ("StopUnit", "ss", "o", "ret = '/org/freedesktop/systemd1/job/2'")):
            manager.method(method, takes, gives, code)
        return manager

    def application(self):
        running = self.mock("io.varnok.Varnok", "/io/varnok/Varnok", "org.freedesktop.Application")
        running.method("ActivateAction", "sava{sv}", "", "")
        return running


class Service:
    def __init__(self, bus, process, name, path, interface, log):
        self.bus, self.process, self.log = bus, process, log
        self.name, self.path, self.interface = name, path, interface

    def mock(self):
        return dbus.Interface(self.bus.connection.get_object(self.name, self.path, introspect=False), MOCK)

    def method(self, name, takes, gives, code):
        self.mock().AddMethod(self.interface, name, takes, gives, code)

    def emit(self, name, signature, *arguments):
        self.mock().EmitSignal(self.interface, name, signature, dbus.Array(arguments, signature="v"))

    def hang(self):
        self.process.send_signal(signal.SIGSTOP)

    def die(self):
        stop(self.process)

    def calls(self, method=""):
        """The calls so far, each as the line of the log behind its time."""
        lines = self.log.read_text().splitlines() if self.log.exists() else []
        calls = [line.split(" ", 1)[1] for line in lines if not re.match(r"[\d.]+ emit ", line)]
        return [call for call in calls if call.split()[0] == method or not method]

    def wait_for(self, method):
        return wait_until(lambda: self.calls(method), method)


def stop(process):
    if process.stdout is not None:
        process.stdout.close()
    with contextlib.suppress(ProcessLookupError):
        process.kill()
    process.wait()
