#!/usr/bin/env bash
# Proves at length what ./test.sh proves by samples. Installs what is missing first.
set -euo pipefail
cd "$(dirname "$0")"

usage() {
    cat <<TEXT
Usage: ./prove.sh faults|hostile|endurance|mutations|coverage [--help | ARGUMENT...]

  faults     lets every call that the installer makes fail once, each in a run of its own, and writes docs/faults.md
  hostile    compares the installer's rules with an independent reading of them, on a million hostile inputs
  endurance  a thousand passes in one process, a hundred thousand paintings, two hundred installers at once
  mutations  changes the sources in hundreds of places, one at a time, and names the changes that no test notices
  coverage   names the lines that no test reaches

Each says with --help what it takes, and can be interrupted: what is done is kept in out/proof/.
TEXT
}

case ${1:-} in
faults | hostile | endurance | mutations | coverage) ;;
--help) usage; exit ;;
*) usage >&2; exit 2 ;;
esac
[ "${2:-}" = --help ] || lab/machine.sh packages
exec "proof/$1.sh" "${@:2}"
