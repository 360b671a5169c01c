#!/bin/sh
# Runs a program with a message bus, a home and the real Evolution Data Server of
# its own, and takes them away with it:
#
#   tests/support/with_private_bus.sh PROGRAM [ARGUMENT...]
#
# No other service of the machine can be started over this bus. Services that the
# bus starts get the bus's environment, so all of it is set before the bus is.
set -u

home=$(mktemp -d "${TMPDIR:-/tmp}/varnok-bus-XXXXXX") || exit 1
mkdir -m 700 "$home/run" "$home/services"
for service in /usr/share/dbus-1/services/org.gnome.evolution.dataserver.*.service; do
  ln -s "$service" "$home/services/"
done
cat >"$home/bus.conf" <<END
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=$home/run</listen>
  <servicedir>$home/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
END
export HOME="$home" XDG_DATA_HOME="$home/data" XDG_CONFIG_HOME="$home/config" XDG_CACHE_HOME="$home/cache"
export XDG_STATE_HOME="$home/state" XDG_RUNTIME_DIR="$home/run" GSETTINGS_BACKEND=memory GIO_USE_VFS=local
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS

dbus-run-session --config-file="$home/bus.conf" -- "$@"
status=$?

# Services end with their bus, a moment later.
tries=0
until rm -rf "$home" 2>/dev/null || [ "$tries" -ge 20 ]; do
  tries=$((tries + 1))
  sleep 0.2
done
exit "$status"
