#!/usr/bin/env bash
# Performs an installation in the prefix of lab/machine.sh, and shows its log and its exit code.
#
#   lab/installation.sh unattended CONFIGURATION_FILE
#   lab/installation.sh window LANGUAGE FOLDER
#
# The one with a window goes through every state: OneNote runs and is closed, the elevated installer fails, the user
# retries, it succeeds, the user closes the window. It saves a screenshot of each state in the folder, which is emptied
# first.
#
# Needs a display and the built programs. Ends with the installer's exit code. What runs in the prefix is stopped before
# and after.
set -euo pipefail
cd -- "$(dirname "${BASH_SOURCE[0]}")/.." >/dev/null
. lab/languages.sh

installer=out/release/VellumkitInstaller.x64.exe
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
}

await() { # WHAT COMMAND...
    local tries
    for ((tries = 0; tries < 300; tries++)); do
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

set_payload() { # EXIT_CODE
    printf '[ElevatedInstaller]\nExitCode=%s\nMilliseconds=5000\n' "$1" >"$temporary/lab.ini"
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
    geometry=$(xdotool getwindowgeometry --shell "$window" | sed -n 's/^\(WIDTH\|HEIGHT\)=//p' | tr '\n' ' ')
    [ "$(identify -format '%w %h ' "$1")" = "$geometry" ] || fail "the display is too small for the window"
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

install_with_window() { # LANGUAGE FOLDER
    local program exit_code=0
    rm -rf "$2"
    mkdir -p "$2"
    in_wine reg add 'HKCU\Software\Microsoft\Office\16.0\Common\LanguageResources' /v UILanguage /t REG_DWORD \
        /d "${office_languages[$1]}" /f >/dev/null
    set_payload -99

    lab/machine.sh wine out/release/lab/onenote.exe &
    await "OneNote" has_window onenote.exe
    lab/machine.sh wine "$installer" &
    program=$!
    await "the search for OneNote" has_logged "Found process 'onenote.exe'"
    save_screenshot "$2/checking.png"
    in_wine taskkill /im onenote.exe >/dev/null
    await "the installation" has_logged "State: Installing"
    save_screenshot "$2/installing.png"
    await "the failure" has_logged "ERROR: Installer reported failure"
    save_screenshot "$2/failed.png"
    set_payload 0
    press space # the focus is on Retry
    await "the success" has_logged "State: Complete"
    save_screenshot "$2/completed.png"
    press Tab space # from Start OneNote to Close

    wait "$program" || exit_code=$?
    show_result "$exit_code"
    printf 'Screenshot: %s\n' "$(realpath "$2")"/{checking,installing,failed,completed}.png
    exit "$exit_code"
}

lab/machine.sh stop
temporary=$(in_wine winepath -u "$(in_wine cmd /c 'echo %TEMP%')")
log=$temporary/Vellumkit_Install.log
rm -f "$log"
trap 'rm -f "$temporary/lab.ini"; lab/machine.sh stop' EXIT

case ${1:-} in
unattended) install_unattended "$2" ;;
window) install_with_window "$2" "$3" ;;
*) fail "unattended or window?" ;;
esac
