#!/usr/bin/env bash
# Compares the installer's rules with an independent reading of them, on more than a million hostile inputs.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = --help ]; then
    cat <<TEXT
Usage: ./prove.sh hostile [SEED]

Takes less than half an hour, in the build that ends at undefined behaviour. What has passed is not run again until it is
built anew. Results: out/proof/hostile/SEED/.
TEXT
    exit
fi

[ -f out/checked/build.ninja ] || cmake --preset checked
cmake --build --preset hostile
export VELLUMKIT_SEED=${1:-1}
results=out/proof/hostile/$VELLUMKIT_SEED
mapfile -t suites < <(sed -n 's/^TEST(\(.*\),.*/\1/p' proof/hostile/*.cpp)
proof/suites.sh out/checked/tests/hostile-input.exe "$results" "${suites[@]}"
awk '/^\[  INPUTS  \]/ { sum += $4 } END { print sum, "inputs, none of which was read otherwise" }' "$results"/*.txt
