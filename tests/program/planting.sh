#!/usr/bin/env bash
# On a display: traces which libraries the front-end loads or looks for when it installs, without a window and with one,
# and then lets it install where libraries of ours lie under these names. See LibraryPlantingTest.cpp.
#
#   tests/program/planting.sh PROGRAM_TESTS
set -euo pipefail
machine=$(dirname "$0")/../../lab/machine.sh
tests=("$machine" wine "$1" --gtest_filter="*LibraryPlanting*")
trace=$(mktemp)
trap 'rm -f "$trace"' EXIT

WINEDEBUG=-all,+pid,trace+module "${tests[@]}" 2>"$trace"

# A line begins with the process. These four are there before the search begins: Windows keeps them ready as "known
# libraries", or has them in every process. Wine can be brought to look for them beside the program.
names=$(awk -F: '
    /build_module loaded L".*\\VellumkitInstaller\.x64\.exe"/ { front_end[$1] }
    $1 in front_end && match($0, /load_dll looking for L"[^"]*/) {
        name = tolower(substr($0, RSTART, RLENGTH))
        sub(/.*["\\]/, "", name)
        print name ~ /[.]/ ? name : name ".dll"
    }' "$trace" | sort -u | grep -vxE '(kernel32|kernelbase|msvcrt|ntdll)[.]dll' | tr '\n' ' ')
echo "Planted: $names"
VELLUMKIT_PLANTED=$names "${tests[@]}"
