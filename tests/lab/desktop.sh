#!/usr/bin/env bash
# On a display: a prefix whose first window was asked for without one, so that no program of it can show a window from
# then on, is started anew. Prints "started" and the desktop's title.
set -euo pipefail
machine=$(dirname "$0")/../../lab/machine.sh
env -u DISPLAY -u VELLUMKIT_ON_VIRTUAL_DISPLAY "$machine" wine winver || true # it has no window, and ends
"$machine" wine cmd /c echo started
xdotool search --onlyvisible --name "Wine desktop" getwindowname
