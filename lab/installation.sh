#!/usr/bin/env bash
# Performs an installation in the lab, and shows its exit code and its log.
#
#   lab/installation.sh unattended CONFIGURATION_FILE
#   lab/installation.sh window LANGUAGE DPI FOLDER
#
# The one with a window goes through every state: OneNote runs and is closed, the elevated installer fails, the user
# retries, it succeeds, the user closes the window. Of each state it saves a screenshot.
#
# Needs a display and the built programs. Ends with the installer's exit code.
set -euo pipefail
cd -- "$(dirname "${BASH_SOURCE[0]}")/.." >/dev/null

installer=out/release/VellumkitInstaller.x64.exe
pace=1 # seconds for a person to look at a state

fail() {
    echo "installation.sh: $*" >&2
    exit 1
}

in_wine() {
    lab/machine.sh wine "$@" | tr -d '\r'
}

find_log() {
    temporary=$(in_wine winepath -u "$(in_wine cmd /c 'echo %TEMP%')")
    log=$temporary/Vellumkit_Install.log
    rm -f "$log"
}

log_text() {
    iconv -f UTF-16 -t UTF-8 "$log" 2>/dev/null | tr -d '\r'
}

show_result() { # EXIT_CODE
    [ -e "$log" ] || fail "the installer wrote no log, exit code $1"
    echo "Exit code: $1"
    echo "Log: $log"
    log_text
    echo
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
    log_text | grep -q -- " - $1"
}

# shellcheck disable=SC2317 # called by await
has_window() { # CLASS
    xdotool search --class "$1" >/dev/null 2>&1
}

set_payload() { # EXIT_CODE
    printf '[ElevatedInstaller]\nExitCode=%s\nMilliseconds=2000\n' "$1" >"$temporary/lab.ini"
}

save_screenshot() { # FILE
    sleep "$pace"
    import -window Vellumkit "$1"
    echo "$1"
}

press() { # KEY...
    xdotool search --name '^Vellumkit$' windowfocus >/dev/null
    xdotool key "$@"
}

set_language() { # LANGUAGE
    # The identifiers by which Office names its languages.
    local -A ids=([en]=1033 [zh-CN]=2052 [zh-TW]=1028 [cs]=1029 [nl]=1043 [fr]=1036 [de]=1031 [it]=1040 [nb]=1044
        [pl]=1045 [pt-BR]=1046 [ru]=1049 [sk]=1051 [es]=3082 [tr]=1055 [mk]=1071)
    in_wine reg add 'HKCU\Software\Microsoft\Office\16.0\Common\LanguageResources' /v UILanguage /t REG_DWORD \
        /d "${ids[$1]}" /f >/dev/null
}

install_unattended() { # CONFIGURATION_FILE
    local configuration exit_code=0
    find_log
    configuration=$(in_wine winepath -w "$1")
    echo "${installer##*/} /config \"$configuration\""
    lab/machine.sh wine "$installer" /config "$configuration" || exit_code=$?
    show_result "$exit_code"
    exit "$exit_code"
}

install_with_window() { # LANGUAGE DPI FOLDER
    local font="Open Sans" program exit_code=0
    case $1 in
    zh-CN) font="Noto Sans CJK SC" ;;
    zh-TW) font="Noto Sans CJK TC" ;;
    esac
    export VELLUMKIT_DPI=$2 VELLUMKIT_FONT=$font VELLUMKIT_PREFIX=lab-$2-${font##* }
    set_language "$1"
    mkdir -p "$3"
    find_log
    trap 'rm -f "$temporary/lab.ini"; lab/machine.sh stop' EXIT
    set_payload -99

    lab/machine.sh wine out/release/lab/onenote.exe &
    await "OneNote" has_window onenote.exe
    lab/machine.sh wine "$installer" &
    program=$!
    await "the search for OneNote" has_logged "Found process 'onenote.exe'"
    save_screenshot "$3/checking.png"
    in_wine taskkill /im onenote.exe >/dev/null
    await "the installation" has_logged "State: Installing"
    save_screenshot "$3/installing.png"
    await "the failure" has_logged "ERROR: Installer reported failure"
    save_screenshot "$3/failed.png"
    set_payload 0
    press space # the focus is on Retry
    await "the success" has_logged "State: Complete"
    save_screenshot "$3/completed.png"
    press Tab space # from Start OneNote to Close

    wait "$program" || exit_code=$?
    show_result "$exit_code"
    exit "$exit_code"
}

case ${1:-} in
unattended) install_unattended "$2" ;;
window) install_with_window "$2" "$3" "$4" ;;
*) fail "unattended or window?" ;;
esac
