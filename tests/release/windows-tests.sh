#!/usr/bin/env bash
# On a display of 96 DPI: packs the tests for Windows and lets cmd.exe run a few of them, as there. Some pass, one can't
# on a screen of another resolution, one fails. A machine that is not to be thrown away is left alone.
#
#   tests/release/windows-tests.sh BUILD
set -euo pipefail
root=$(realpath -- "$(dirname -- "$0")/../..")
build=$(realpath -- "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
kit="$folder/a kit/vellumkit-windows-tests"
results=$kit/results

fail() {
    echo "windows-tests.sh: $*" >&2
    exit 1
}

run_tests() { # CODE ARGUMENT...
    local code=0
    rm -rf "$results"
    "$root/lab/machine.sh" wine cmd /c "Z:${kit//\//\\}\\run-tests.cmd" "${@:2}" >"$folder/output" 2>&1 || code=$?
    cat "$folder/output"
    [ "$code" = "$1" ] || fail "ended with $code instead of $1: ${*:2}"
}

in_wine() {
    "$root/lab/machine.sh" wine "$@" >/dev/null 2>&1
}

# Also what an interrupted run has left.
undo() {
    in_wine reg delete 'HKCR\OneNote.Application' /f || true
    in_wine reg delete 'HKCU\Control Panel\Desktop\WindowMetrics' /v AppliedDPI /f || true
    in_wine cmd /c 'rmdir /s /q %USERPROFILE%\OneDrive' || true
}

undo
export SOURCE_DATE_EPOCH=1700000000
"$root/release/windows-tests.py" "$build" "$folder/tests.zip"
faketime -f +400d "$root/release/windows-tests.py" "$build" "$folder/again.zip"
cmp "$folder/tests.zip" "$folder/again.zip" || fail "another day makes another kit"
python3 -m zipfile --extract "$folder/tests.zip" "$folder/a kit"
! grep -qvP '\r$' "$kit/run-tests.cmd" || fail "a line of run-tests.cmd does not end as on Windows"

run_tests 2
[ ! -e "$results" ] || fail "it has run without being told that the machine can be thrown away"
in_wine reg add 'HKCR\OneNote.Application' /f
run_tests 2 /throw-away
undo
grep -q 'has Microsoft Office' "$folder/output" || fail "Office is not told"

documents=$("$root/lab/machine.sh" wine cmd /c 'mkdir %USERPROFILE%\OneDrive & echo %USERPROFILE%\OneDrive')
documents=$("$root/lab/machine.sh" wine winepath -u "${documents%$'\r'}")
touch "$documents"/{1..51}.txt
run_tests 2 /throw-away
grep -q 'has 51 documents' "$folder/output" || fail "the documents are not told"
undo

run_tests 0 /throw-away 'CommandLine*:WindowLayout*:Executable.IsLoaded*:VellumkitLog.TellsItsExitCode'
for program in unit-tests window-tests program-tests; do
    grep -q '<testcase ' "$results/$program.xml" || fail "$program has not run a test"
done
identify "$results"/screens/en-*.png
iconv -f UTF-16 -t UTF-8 "$results/Vellumkit_Install.log" | grep --text 'State: Complete' >/dev/null ||
    fail "the installer has left no log"
[ -z "$(ls "$results/failures")" ] || fail "a test that has passed counts as a failure"

run_tests 1 /throw-away NoSuchTest
grep -q 'No test of this name has run: "NoSuchTest"' "$folder/output" || fail "a test that is not there has run"

# A screen of another resolution, and an executable that is not of the version that it should be.
in_wine reg add 'HKCU\Control Panel\Desktop\WindowMetrics' /v AppliedDPI /t REG_DWORD /d 192 /f
mkdir "$kit/9.9.9"
cp "$kit/VellumkitInstaller.x64.exe" "$kit/9.9.9"
VELLUMKIT_VERSION=9.9.9 run_tests 1 /throw-away 'WindowLayout*:*AnUnattendedInstallation*/WithoutOffice'
grep -q 'the screen has 96 DPI, and the tests want 192' "$results/window-tests.txt" ||
    fail "the resolution is not that of Windows"
identify "$results"/failures/*WithoutOffice.png
iconv -f UTF-16 -t UTF-8 "$results"/failures/*WithoutOffice.log | grep --text 'State: Complete' >/dev/null ||
    fail "a failure has left no log"
undo
