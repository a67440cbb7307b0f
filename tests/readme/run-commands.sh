#!/usr/bin/env bash
# Runs every command that stands in an "sh" block of a page, as a newcomer without a display would, one after another in
# one folder. A command that fails fails the test.
#
#   run-commands.sh <page> <folder>
set -euo pipefail
page=$1
cd "$2"
unset DISPLAY WAYLAND_DISPLAY

ran=0
while IFS= read -r command; do
  case "$command" in
    "" | "#"*) continue ;;
    "git clone "* | "cd "*) continue ;;           # the newcomer is there already
    ./test.sh | "./test.sh "*) continue ;;        # this very run
  esac
  echo "\$ $command"
  bash -euo pipefail -c "$command"
  ran=$((ran + 1))
done < <(sed -n '/^```sh$/,/^```$/{/^```/d;p}' "$page")

echo "$ran commands ran."
[ "$ran" -gt 0 ]
