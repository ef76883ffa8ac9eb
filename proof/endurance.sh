#!/usr/bin/env bash
# Runs the real executable many times over and counts what it leaves behind.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = --help ]; then
    cat <<TEXT
Usage: ./prove.sh endurance

A thousand retries, a hundred thousand paintings and two hundred installers at once: about half an hour, most of it for
the paintings. What has passed is not run again until it is built anew. Results: out/proof/endurance/.
TEXT
    exit
fi

lab/machine.sh build endurance
exec proof/suites.sh out/release/tests/endurance.exe out/proof/endurance Retries Paintings ManyAtOnce
