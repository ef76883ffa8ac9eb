#!/usr/bin/env bash
# Installs what is missing, holds the sources to .clang-format and .clang-tidy, the scripts to shellcheck and the playbook
# to ansible-lint. A source is analysed again only when something has changed.
set -euo pipefail
cd "$(dirname "$0")"
lab/machine.sh packages lint || {
    echo "lint.sh: the sources are held to clang-format 14 and clang-tidy 14; without them, lint on Debian 12" >&2
    exit 1
}
cmake --preset lint
exec cmake --build --preset lint
