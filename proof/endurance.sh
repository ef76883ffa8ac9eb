#!/usr/bin/env bash
# Runs the real executable many times over and counts what it leaves behind.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = --help ]; then
    cat <<TEXT
Usage: ./prove.sh endurance

A thousand retries, a hundred thousand paintings and two hundred installers at once: about half an hour, most of it for
the paintings. A run that was interrupted goes on with what is not done. What each did is in out/proof/endurance/.
TEXT
    exit
fi

program=out/release/tests/endurance.exe
results=out/proof/endurance
mkdir -p "$results"
lab/machine.sh build "$(basename "$program" .exe)"
failed=0
for suite in Retries Paintings ManyAtOnce; do
    result=$results/$suite.txt
    if [ "$result" -nt "$program" ] && [ "$result" -nt out/release/VellumkitInstaller.x64.exe ]; then
        echo "$suite: done before"
    elif VELLUMKIT_PROOF=whole VELLUMKIT_PREFIX=endurance nice -n 10 lab/machine.sh display \
        lab/machine.sh wine "$program" --gtest_filter="$suite.*" >"$result.new" 2>&1; then
        mv "$result.new" "$result"
    else
        failed=1
        result=$result.new
    fi
    cat "$result"
done
exit "$failed"
