#!/usr/bin/python3
"""Runs a program with a message bus and a home of its own, which is the session's and the system's bus to it.

    private_bus.py PROGRAM ARGUMENT...

Nothing is started by the bus itself: a service is there when the program starts it.
"""

import os
import subprocess
import sys
import tempfile

CONFIGURATION = """<busconfig>
  <type>session</type>
  <listen>unix:path={}/bus</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def surrounding(folder):
    """A home with nothing in it; what the desktop installed for all users does not count."""
    places = {"HOME": "home", "XDG_CONFIG_HOME": "config", "XDG_DATA_HOME": "data", "XDG_CACHE_HOME": "cache",
              "XDG_STATE_HOME": "state", "XDG_RUNTIME_DIR": "runtime", "XDG_CONFIG_DIRS": "no-config",
              "XDG_DATA_DIRS": "no-data", "XDG_DESKTOP_PORTAL_DIR": "portals"}
    env = {key: value for key, value in os.environ.items() if not key.startswith(("XDG_", "DBUS_"))}
    for variable, name in places.items():
        env[variable] = os.path.join(folder, name)
        os.mkdir(env[variable], 0o700)
    for name in ("DISPLAY", "WAYLAND_DISPLAY", "KDE_SESSION_VERSION", "GNOME_DESKTOP_SESSION_ID", "DESKTOP_SESSION"):
        env.pop(name, None)
    # The types of files and what the services' settings look like are the system's.
    for name in ("mime", "glib-2.0"):
        os.symlink(f"/usr/share/{name}", os.path.join(env["XDG_DATA_DIRS"], name))
    return {**env, "XDG_CURRENT_DESKTOP": "mock", "GIO_USE_VFS": "local", "GSETTINGS_BACKEND": "memory",
            "NO_AT_BRIDGE": "1", "LC_ALL": "C.UTF-8"}


def main():
    with tempfile.TemporaryDirectory(prefix="varnok-bus-") as folder:
        env = surrounding(folder)
        configuration = os.path.join(folder, "bus.conf")
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION.format(folder))
        bus = subprocess.Popen(["dbus-daemon", "--config-file", configuration, "--nofork", "--print-address"], env=env,
                               stdout=subprocess.PIPE, text=True)
        try:
            address = bus.stdout.readline().strip()
            env["DBUS_SESSION_BUS_ADDRESS"] = env["DBUS_SYSTEM_BUS_ADDRESS"] = address
            return subprocess.run(sys.argv[1:], env=env, check=False).returncode
        finally:
            bus.terminate()
            bus.wait()


if __name__ == "__main__":
    sys.exit(main())
