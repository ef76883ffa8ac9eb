#!/usr/bin/env bash
# Makes a release from a commit in a folder with a blank in its name, more than a year later, and compares it with what
# a build comes to: executables, symbols, bill of materials, licences, sums. Refused is what no commit has.
#
#   tests/release/reproducible.sh BUILD [COMPILER_CACHE]
#
# A cache may have named the sources in other words in the build's symbols: they and the sums are left out then.
set -euo pipefail
root=$(realpath -- "$(dirname -- "$0")/../..")
build=$(realpath -- "$1")
# The linker sorts by the names of files: a build must not depend on which side of /usr it lies.
if [[ $build < /usr ]]; then other=/var/tmp; else other=/tmp; fi
folder=$(mktemp -d -p "$other")
trap 'rm -rf "$folder"' EXIT
time_of_commit=1700000000
unset SOURCE_DATE_EPOCH # a caller's

copy="$folder/another folder"
mkdir "$copy"
tar -C "$root" --exclude=./out --exclude=./.git -c . | tar -C "$copy" --no-same-owner -x
export GIT_CONFIG_GLOBAL=/dev/null GIT_AUTHOR_DATE="$time_of_commit +0000" GIT_COMMITTER_DATE="$time_of_commit +0000"
git -C "$copy" init -q
git -C "$copy" add .
git -C "$copy" -c user.name=Test -c user.email=test@vellumkit.example commit -q -m "Copy the sources"

touch "$copy/changed"
if "$copy/release.sh" >"$folder/refused" 2>&1 || ! grep -qxF '?? changed' "$folder/refused"; then
    cat "$folder/refused"
    echo "a file that no commit has is not refused" >&2
    exit 1
fi
rm "$copy/changed"

faketime -f +400d "$copy/release.sh" >"$folder/made" 2>&1 || { cat "$folder/made"; exit 1; }
SOURCE_DATE_EPOCH=$time_of_commit "$root/release/assemble.sh" "$build" "$folder/expected"
left_out=()
[ -z "${2:-}" ] || left_out=(--exclude='*.debug' --exclude=SHA256SUMS)
diff -r "${left_out[@]}" "$folder/expected" "$copy/out/product"
cat "$copy/out/product/SHA256SUMS"
