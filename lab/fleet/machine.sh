#!/usr/bin/env bash
# A machine of the fleet: a Wine prefix that is a copy of another one, the model.
#
#   lab/fleet/machine.sh switch-on MACHINE MODEL CONDITION   as lab/fleet/conditions.txt has it
#   lab/fleet/machine.sh copy MACHINE FILE...                removes older logs too, as deploy/windows does
#   lab/fleet/machine.sh run MACHINE CONDITION PROGRAM...    ends with the program's exit code
#   lab/fleet/machine.sh clean MACHINE                       removes what was copied
#   lab/fleet/machine.sh switch-off MACHINE                  nothing is left of it
set -euo pipefail
cd -- "$(dirname "${BASH_SOURCE[0]}")/../.." >/dev/null

command=$1
export VELLUMKIT_PREFIX=$2
shift 2
drive=out/wine/$VELLUMKIT_PREFIX/drive_c
temporary=$drive/Temp
log=$temporary/Vellumkit_Install.log
programs='out\release\lab' # "start" takes a slash for an option

fail() {
    echo "machine.sh: $VELLUMKIT_PREFIX: $*" >&2
    exit 3
}

# The services of a prefix keep the output of its first program open.
in_wine() {
    lab/machine.sh wine "$@" </dev/null >>"$drive/output.txt" 2>&1
}

await() { # WHAT COMMAND...
    local tries
    for ((tries = 0; tries < 600; tries++)); do
        ! "${@:2}" || return 0
        sleep 0.1
    done
    fail "waited in vain for $1"
}

# shellcheck disable=SC2317 # called by await
has_started() {
    grep -s ^Started "$temporary/onenote.log" >/dev/null
}

# shellcheck disable=SC2317 # called by await
waits_for_elevated_installer() {
    iconv -f UTF-16 -t UTF-8 "$log" 2>/dev/null | grep '    Done[.]' >/dev/null
}

start_onenote() { # CLOSING
    printf '[OneNote]\r\nWindows=2\r\nClosing=%s\r\n' "$1" >"$temporary/lab.ini"
    in_wine start "$programs\\onenote.exe"
    await OneNote has_started
}

switch_on() { # MODEL CONDITION
    lab/machine.sh copy "$1"
    mkdir "$temporary"
    case $2 in
    absent | slow | dies | unplugged | refused | no-space | damaged) ;;
    obeying)
        in_wine "$programs\\onenote.exe" /register
        start_onenote obey
        ;;
    stubborn)
        in_wine "$programs\\onenote.exe" /register
        start_onenote ignore
        ;;
    unregistered) start_onenote ignore ;;
    datebookery) in_wine start "$programs\\datebk.exe" ;;
    office-32-bit) in_wine "$programs\\office.exe" lab/office/click-to-run-32-bit.ini ;;
    no-temp) rmdir "$temporary" ;;
    no-log) mkdir "$log" ;;
    no-folder) touch "$temporary/Vellumkit" ;;
    taken) mkdir -p "$temporary/Vellumkit/Vellumkit Installer.exe" ;;
    *) fail "unknown condition '$2'" ;;
    esac
}

copy() { # FILE...
    local name
    mkdir "$drive/Rollout"
    cp -- "$@" "$drive/Rollout"
    for name in Vellumkit_Install.log Vellumkit_Elev.log; do
        [ ! -f "$temporary/$name" ] || rm "$temporary/$name"
    done
}

run() { # CONDITION PROGRAM...
    if [ "$1" = dies ]; then
        in_wine "${@:2}" &
        await "the elevated installer" waits_for_elevated_installer
        lab/machine.sh stop
        exit 255 # as ssh does when nobody answers any more
    fi
    in_wine "${@:2}"
}

case $command in
switch-on) switch_on "$@" ;;
copy) copy "$@" ;;
run) run "$@" ;;
clean) rm -r "$drive/Rollout" ;;
switch-off) lab/machine.sh remove ;;
*) fail "unknown command '$command'" ;;
esac
