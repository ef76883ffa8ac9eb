#!/usr/bin/env bash
# Rehearses with the machines of conditions.txt, and shows the exit code, what is said of the last machine, and how the
# first machine's installer was called.
#
#   rehearsal.sh FOLDER
set -euo pipefail
here=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
"$here/../../lab/fleet/fleet.sh" "$here/conditions.txt" "$1" || echo "It ends with $?"
tail -n 1 "$1/collected/results.csv"
iconv -f UTF-16 -t UTF-8 "$1/collected/install/$VELLUMKIT_PREFIX-01.log" | tr -d '\r' | grep -ao 'Command line: .*'
