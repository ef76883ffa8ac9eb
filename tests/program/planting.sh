#!/usr/bin/env bash
# On a display: traces which libraries the front-end loads or looks for when it installs, without a window and with one,
# and then lets it install where libraries of ours lie under these names too. See LibraryPlantingTest.cpp.
#
#   tests/program/planting.sh PROGRAM_TESTS
set -euo pipefail
machine=$(dirname "$0")/../../lab/machine.sh
program_tests=$1
trace=$(mktemp)
trap 'rm -f "$trace"' EXIT

run() { # FILTER
    "$machine" wine "$program_tests" --gtest_filter="$1"
}

WINEDEBUG=-all,+pid,trace+module run '*LibraryPlanting*-*Another*' 2>"$trace"

# A line begins with the process. These four are there before the search begins: Windows keeps them ready as "known
# libraries", or has them in every process. Wine can be brought to look for them beside the program.
names=$(awk -F: '
    /build_module loaded L".*\\VellumkitInstaller\.x64\.exe"/ { front_end[$1] }
    $1 in front_end && match($0, /load_dll looking for L"[^"]*/) {
        name = tolower(substr($0, RSTART, RLENGTH))
        sub(/.*["\\]/, "", name)
        print name ~ /[.]/ ? name : name ".dll"
    }' "$trace" | sort -u | grep -vxE '(kernel32|kernelbase|msvcrt|ntdll)[.]dll' | tr '\n' ' ')
echo "Traced: $names"
# Without these the trace has not seen the front-end work. The last one is what a test lets it look for in vain.
[[ $names == *gdiplus.dll* && $names == *" shcore.dll"* && $names == *xhcore.dll* ]] ||
    { echo "the trace lacks libraries that the front-end looks for" >&2; exit 1; }
VELLUMKIT_PLANTED=$names run '*LibraryPlanting*'
