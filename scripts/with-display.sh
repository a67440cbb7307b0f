#!/usr/bin/env bash
# Runs a command in a fresh virtual X display with a window manager, and ends both with it.
#
#   scripts/with-display.sh command [arguments]
set -euo pipefail

if [ "$#" -eq 0 ]; then
  echo "usage: $0 command [arguments]" >&2
  exit 2
fi

work=$(mktemp -d)
cleanup() {
  kill "${wm_pid:-}" "${server_pid:-}" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

# The server picks a free display number itself and writes it down once it accepts connections.
mkfifo "$work/display"
Xvfb -displayfd 3 -screen 0 1400x900x24 -nolisten tcp 3>"$work/display" 2>"$work/server.log" &
server_pid=$!
if ! read -r -t 30 number <"$work/display"; then
  echo "The virtual X server did not start:" >&2
  cat "$work/server.log" >&2
  exit 1
fi
export DISPLAY=":$number"
unset WAYLAND_DISPLAY

openbox --sm-disable >/dev/null 2>&1 &
wm_pid=$!

status=0
"$@" || status=$?
exit "$status"
