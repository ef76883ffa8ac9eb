#!/usr/bin/env bash
# Compares the installer's rules with an independent reading of them, on more than a million hostile inputs.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = --help ]; then
    cat <<TEXT
Usage: ./prove.sh hostile [SEED]

Takes about ten minutes. A run that was interrupted begins anew. What each subject got is in out/proof/hostile/SEED.txt.
One subject again: VELLUMKIT_SEED=SEED lab/machine.sh display lab/machine.sh wine out/checked/tests/hostile-input.exe
--gtest_filter='HostileCommandLine.*'
TEXT
    exit
fi

export VELLUMKIT_SEED=${1:-1}
results=out/proof/hostile/$VELLUMKIT_SEED.txt
mkdir -p "${results%/*}"
nice -n 10 cmake --workflow --preset hostile | tee "$results"
awk '/\[  INPUTS  \]/ { sum += $5 } END { print sum, "inputs" }' "$results" | tee -a "$results"
