#!/bin/bash
# usage: with-eds.sh COMMAND ARGUMENT...
# Runs a command with a session bus and a home of its own, where Evolution Data Server is started as
# soon as it is asked for; all of it ends with the command. Exits with 77 when it is not installed.
set -eu
missing() {
  echo "skipped: $1"
  exit 77
}
for service in Sources AddressBook; do
  ls /usr/share/dbus-1/services/org.gnome.evolution.dataserver."$service"*.service \
    > /dev/null 2>&1 || missing "Evolution Data Server is not installed"
done
command -v dbus-run-session > /dev/null || missing "dbus-run-session is not installed"

# The server's processes outlive the bus a little; here they do not.
if [ "${ZOLVAR_TEST_EDS:-}" = "" ] && unshare --pid --fork --mount-proc true 2> /dev/null; then
  export ZOLVAR_TEST_EDS=starting
  exec unshare --pid --fork --kill-child --mount-proc "$0" "$@"
fi

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
mkdir -m 700 "$home/run"
export ZOLVAR_TEST_EDS=1 HOME=$home XDG_RUNTIME_DIR=$home/run XDG_CONFIG_HOME=$home/config
export XDG_DATA_HOME=$home/data XDG_CACHE_HOME=$home/cache GSETTINGS_BACKEND=memory LC_ALL=C.UTF-8
# GIO keeps what it made for the server's objects: not a leak of the program's.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
dbus-run-session -- "$@"
