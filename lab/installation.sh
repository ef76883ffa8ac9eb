#!/usr/bin/env bash
# Performs an installation in the prefix of lab/machine.sh, and shows its log and its exit code.
#
#   lab/installation.sh unattended CONFIGURATION_FILE
#   lab/installation.sh window LANGUAGE ONENOTE MACHINE FOLDER
#
# The one with a window goes through every state: the search for OneNote, the elevated installer fails, the user
# retries, it succeeds, the user starts OneNote. It saves a screenshot of each state in the folder, which is emptied
# first. ONENOTE says how OneNote is found:
#
#   running   with two windows, which close when they are asked; at the end it starts anew
#   stubborn  the same, but it ignores the request and is terminated, which takes a minute
#   absent    it is not on the machine, so there is nothing to see of the search; at the end it can't be started
#
# MACHINE is what the registry says of Office otherwise, a description in lab/office: on a machine with a 32-bit OneNote
# the user is asked first, and goes on.
#
# Needs a display and the built programs. Ends with the installer's exit code. What runs in the prefix is stopped before
# and after.
set -euo pipefail
cd -- "$(dirname "${BASH_SOURCE[0]}")/.." >/dev/null
. lab/languages.sh

installer=out/release/VellumkitInstaller.x64.exe
onenote=out/release/lab/onenote.exe
office=out/release/lab/office.exe
screenshots=()
pace=1 # seconds for a person to look at a state

fail() {
    echo "installation.sh: $*" >&2
    exit 1
}

in_wine() {
    lab/machine.sh wine "$@" | tr -d '\r'
}

log_text() {
    iconv -f UTF-16 -t UTF-8 "$log" 2>/dev/null | tr -d '\r'
}

show_result() { # EXIT_CODE
    [ -e "$log" ] || fail "the installer wrote no log, exit code $1"
    log_text
    echo
    echo "Exit code: $1"
    echo "Log: $log"
    [ ! -e "$record" ] || echo "What OneNote was asked: $record"
}

# Two minutes at most: a stubborn OneNote takes one.
await() { # WHAT COMMAND...
    local tries
    for ((tries = 0; tries < 1200; tries++)); do
        ! "${@:2}" || return 0
        sleep 0.1
    done
    fail "waited in vain for $1"
}

# An entry is in the file once the next one has begun.
# shellcheck disable=SC2317 # called by await
has_logged() { # TEXT
    log_text | grep -- " - $1" >/dev/null
}

# shellcheck disable=SC2317 # called by await
has_window() { # CLASS
    xdotool search --class "$1" >/dev/null 2>&1
}

# shellcheck disable=SC2317 # called by await
has_focus() { # CLASS
    local focused
    focused=$(xdotool getwindowfocus 2>/dev/null) &&
        xdotool search --onlyvisible --class "$1" | grep -x "$focused" >/dev/null
}

set_payload() { # EXIT_CODE
    sed -i "s/^ExitCode=.*/ExitCode=$1/" "$temporary/lab.ini"
}

# A busy machine paints late, and one control after the other: twice the same picture, and another one than before.
# shellcheck disable=SC2317 # called by await
shows_another_state() { # FILE
    local previous=${picture:-}
    import -window "$window" "$1"
    picture=$(identify -format '%#' "$1")
    [[ $picture = "$previous" && $picture != "${shown:-}" ]]
}

# The whole window must be seen.
save_screenshot() { # FILE
    local geometry
    sleep "$pace"
    window=$(xdotool search --onlyvisible --class "${installer##*/}")
    await "another state in the window" shows_another_state "$1"
    shown=$picture
    screenshots+=("$1")
    geometry=$(xdotool getwindowgeometry --shell "$window" | sed -n 's/^\(WIDTH\|HEIGHT\)=//p' | tr '\n' ' ')
    [ "$(identify -format '%w %h ' "$1")" = "$geometry" ] || fail "the display is too small for the window"
}

save_desktop() { # FILE
    sleep "$pace"
    window=$(xdotool search --onlyvisible --name '^Lab - Wine desktop$')
    await "the desktop" shows_another_state "$1"
    screenshots+=("$1")
}

# Wine goes on to give the class object of a server that was terminated, unless its service is started anew.
forget_terminated_onenote() {
    in_wine net stop RpcSs >/dev/null
}

press() { # KEY...
    xdotool windowfocus --sync "$window" key "$@"
}

install_unattended() { # CONFIGURATION_FILE
    local configuration exit_code=0
    configuration=$(in_wine winepath -w "$1")
    echo "${installer##*/} /config \"$configuration\""
    lab/machine.sh wine "$installer" /config "$configuration" || exit_code=$?
    show_result "$exit_code"
    exit "$exit_code"
}

# OneNote takes its time to answer, so that the search lasts long enough for a picture.
provide_onenote() { # ONENOTE MACHINE
    local closing=obey
    [ "$1" != stubborn ] || closing=ignore
    cat >"$temporary/lab.ini" <<TEXT
[ElevatedInstaller]
ExitCode=-99
Milliseconds=5000
[OneNote]
Windows=2
Closing=$closing
Call=Item
Trouble=wait
Milliseconds=5000
TEXT
    in_wine "$onenote" /unregister
    in_wine "$office" "lab/office/$2.ini"
    [ "$1" != absent ] || return 0
    in_wine "$onenote" /register
    lab/machine.sh wine "$onenote" &
    await "OneNote" has_window onenote.exe
}

# shellcheck disable=SC2317 # called by await
has_begun_or_asks() {
    has_logged "Begin processing" || xdotool search --onlyvisible --name '^Vellumkit Installer$' >/dev/null 2>&1
}

answer_question() { # FILE
    save_screenshot "$1"
    press Tab space # from the first command link to the second one: continue
}

install_with_window() { # LANGUAGE ONENOTE MACHINE FOLDER
    local program exit_code=0
    rm -rf "$4"
    mkdir -p "$4"
    in_wine reg add 'HKCU\Software\Microsoft\Office\16.0\Common\LanguageResources' /v UILanguage /t REG_DWORD \
        /d "${office_languages[$1]}" /f >/dev/null
    provide_onenote "$2" "$3"

    lab/machine.sh wine "$installer" &
    program=$!
    await "the installation or a question" has_begun_or_asks
    has_logged "Begin processing" || answer_question "$4/question.png"
    if [ "$2" != absent ]; then
        await "the search for OneNote" has_logged "Found process 'onenote.exe'"
        save_screenshot "$4/checking.png"
    fi
    await "the installation" has_logged "State: Installing"
    save_screenshot "$4/installing.png"
    await "the failure" has_logged "ERROR: Installer reported failure"
    save_screenshot "$4/failed.png"
    set_payload 0
    press space # the focus is on Retry
    await "the success" has_logged "State: Complete"
    save_screenshot "$4/completed.png"
    [ "$2" != stubborn ] || forget_terminated_onenote
    press space # the focus is on Start OneNote
    wait "$program" || exit_code=$?
    if [ "$2" = absent ]; then
        await "the failed start" has_logged "ERROR: Failed to start OneNote"
    else
        await "the start" has_logged "Started OneNote"
        await "OneNote in front" has_focus onenote.exe
        save_desktop "$4/started.png"
    fi

    show_result "$exit_code"
    realpath "${screenshots[@]}" | sed 's/^/Screenshot: /'
    exit "$exit_code"
}

lab/machine.sh stop
temporary=$(in_wine winepath -u "$(in_wine cmd /c 'echo %TEMP%')")
log=$temporary/Vellumkit_Install.log
record=$temporary/onenote.log
rm -f "$log" "$record"
trap 'rm -f "$temporary/lab.ini"; lab/machine.sh stop' EXIT

case ${1:-} in
unattended) install_unattended "$2" ;;
window) install_with_window "${@:2}" ;;
*) fail "unattended or window?" ;;
esac
