#!/usr/bin/env bash
# Holds the program's includes to the order of its floors: a file includes what stands on its own floor or below it, no
# two files include each other, directly or through others, and only ui/ includes GDI+.
#
#   tests/includes.sh [ROOT]
#
# Names every include that breaks this, and fails.
set -euo pipefail
export LC_ALL=C # in which tsort speaks below
cd -- "${1:-$(dirname "${BASH_SOURCE[0]}")/..}" >/dev/null

floors=(core checks install ui app) # from the lowest
failed=0

complain() {
    echo "$*"
    failed=1
}

# FILE:LINE:FLOOR/INCLUDED for every include of a project's file.
includes_of() { # FLOOR
    { grep -rnE '^ *# *include *["<][^">]*/' "$1" || true; } | sed -E 's/ *# *include *["<]([^">]*).*/\1/'
}

hold() { # FLOOR MAY_INCLUDE
    [ -d "$1" ] || complain "there is no folder $1/"
    while IFS=: read -r file line included; do
        [[ $2 = *" ${included%%/*} "* ]] || complain "$file:$line includes $included, which stands above $1/"
    done < <(includes_of "$1")
    [ "$1" = ui ] || while IFS=: read -r file line _; do
        complain "$file:$line includes gdiplus.h outside ui/"
    done < <(grep -rnE '^ *# *include *["<]gdiplus' "$1")
}

below=
for floor in "${floors[@]}"; do
    below+=" $floor "
    hold "$floor" "$below"
done
hold support " core  support " # the log reader, on the lowest floor

# tsort names the files of a circle.
circles=$(for floor in "${floors[@]}" support; do includes_of "$floor"; done | sed 's/:[0-9]*:/ /' | tsort 2>&1 >/dev/null) ||
    complain "$circles"

exit "$failed"
