#!/usr/bin/env bash
# On a display: a prefix whose first window was asked for without one, so that no program of it can show a window from
# then on, is started anew. Prints "started" and the desktop's title.
set -euo pipefail
machine=$(dirname "$0")/../../lab/machine.sh
without_display=(env -u DISPLAY -u VELLUMKIT_ON_VIRTUAL_DISPLAY "$machine" wine)
output=$(mktemp)
trap 'rm -f "$output"' EXIT
exec 8> >("${without_display[@]}" cmd >"$output" 2>/dev/null) # the prefix stays in use while this script runs
until [ -s "$output" ]; do sleep 0.1; done # it says what it is; then it runs
"${without_display[@]}" winver || true                 # has no window, and ends
"$machine" wine cmd /c echo started
xdotool search --onlyvisible --name "Wine desktop" getwindowname
