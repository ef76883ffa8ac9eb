#!/usr/bin/env bash
# Runs suites of a test program at length, one after the other: those alone that have not passed since it was built.
#
#   proof/suites.sh PROGRAM RESULTS SUITE...
set -euo pipefail
cd "$(dirname "$0")/.."
program=$1 results=$2
shift 2

mkdir -p "$results"
prefix=proof-$(basename "$program" .exe)
failed=0
for suite; do
    result=$results/$suite.txt
    # The executable that a program starts is built without it.
    if [ -e "$result" ] && [ -z "$(find "$program" "${program%/tests/*}" -maxdepth 1 -name '*.exe' -newer "$result")" ]; then
        echo "$suite has passed before."
    elif VELLUMKIT_PROOF=whole VELLUMKIT_PREFIX=$prefix nice -n 10 lab/machine.sh display \
        lab/machine.sh wine "$program" --gtest_filter="$suite.*" >"$result.failed" 2>&1 &&
        ! grep -q "Running 0 tests" "$result.failed"; then
        mv "$result.failed" "$result"
    else
        failed=1
        result+=.failed
    fi
    cat "$result"
done
exit "$failed"
