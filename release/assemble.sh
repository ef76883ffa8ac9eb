#!/usr/bin/env bash
# Fills a folder with what is shipped of a build; what was there is removed first. The bill of materials tells the time
# of SOURCE_DATE_EPOCH.
#
#   release/assemble.sh BUILD FOLDER [CERTIFICATE PASSWORD_FILE [TIMESTAMP_URL]]
#
# With a certificate the executable is signed.
set -euo pipefail
here=$(dirname -- "$(realpath -- "$0")")
build=$1 folder=$2 program=VellumkitInstaller.x64.exe

rm -rf "$folder"
mkdir -p "$folder"
cp "$build/$program" "$build/$program.debug" "$here/../LICENSE" "$folder"
chmod -x "$folder/$program.debug"
[ $# = 2 ] || "$here/sign.sh" "$folder/$program" "${@:3}"
"$here/bill-of-materials.py" "$build" "$folder"
cd -- "$folder"
sums=$(find . -type f -printf '%P\n' | LC_ALL=C sort | xargs -d '\n' sha256sum)
echo "$sums" >SHA256SUMS
