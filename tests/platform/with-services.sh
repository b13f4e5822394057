#!/bin/bash
# usage: with-services.sh COMMAND ARGUMENT...
# Runs a command where it may do what it likes to the services: in a network, mount, host name and
# process namespace of its own, with a network device, a system bus, avahi-daemon, a session bus and,
# where gnome-keyring is installed, an unlocked keyring. All of it ends with the command. Exits with 77 when this machine cannot.
set -u
missing() {
  echo "skipped: $1"
  exit 77
}

if [ -z "${ZOLVAR_TEST_SERVICES:-}" ]; then
  [ "$(id -u)" = 0 ] || missing "needs root"
  for tool in ip unshare avahi-daemon dbus-daemon dbus-run-session dbus-send; do
    command -v "$tool" > /dev/null || missing "$tool is not installed"
  done
  unshare -n -m -u true 2> /dev/null || missing "this machine allows no namespaces"
  export ZOLVAR_TEST_SERVICES=starting
  exec unshare --net --mount --uts --pid --fork --kill-child --mount-proc "$0" "$@"
fi

set -e
hostname servicetest
mount -t tmpfs none /run
mkdir -p /run/dbus /run/user /run/home /run/tmp
chmod 700 /run/user
export HOME=/run/home XDG_RUNTIME_DIR=/run/user XDG_CONFIG_HOME=/run/home/config
export XDG_DATA_HOME=/run/home/data TMPDIR=/run/tmp LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS

ip link set lo up
ip link add zv0 type veth peer name zv1
ip addr add 10.78.0.1/24 dev zv0
ip link set zv0 up
ip link set zv1 up
ip route add 224.0.0.0/4 dev zv0

dbus-daemon --system --fork
export ZOLVAR_TEST_AVAHI=/run/avahi.conf
printf '[server]\nhost-name=servicetest\nuse-ipv6=no\n[publish]\n[rlimits]\n' > "$ZOLVAR_TEST_AVAHI"
avahi-daemon -D --no-drop-root --no-chroot --no-rlimits -f "$ZOLVAR_TEST_AVAHI"

# libsecret ends its private main loops before GLib has tidied up behind its proxies.
echo 'leak:g_malloc0' > /run/known-leaks
export LSAN_OPTIONS=suppressions=/run/known-leaks:print_suppressions=0

export ZOLVAR_TEST_SERVICES=1
if command -v gnome-keyring-daemon > /dev/null; then
  export ZOLVAR_TEST_KEYRING=1
fi
# shellcheck disable=SC2016
dbus-run-session -- bash -c '
  if [ -n "${ZOLVAR_TEST_KEYRING:-}" ]; then
    printf secret | gnome-keyring-daemon --unlock --components=secrets > /dev/null 2>&1
  fi
  "$@"' _ "$@"
