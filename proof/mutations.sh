#!/usr/bin/env bash
# Changes the sources one place at a time, and names the changes that no test notices: see docs/proof.md.
set -euo pipefail
cd "$(dirname "$0")/.."
exec nice -n 10 python3 proof/mutations/mutate.py "$@"
