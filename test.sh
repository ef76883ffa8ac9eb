#!/usr/bin/env bash
# Installs what is missing, builds the release and runs every test. Arguments go to ctest: ./test.sh -R UnitTests
set -euo pipefail
cd "$(dirname "$0")"
lab/machine.sh packages
lab/machine.sh build
exec ctest --preset release "$@"
