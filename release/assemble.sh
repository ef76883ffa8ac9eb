#!/usr/bin/env bash
# Fills a folder with what is shipped of a build; what was there is removed first. The bill of materials tells the time
# of SOURCE_DATE_EPOCH.
#
#   release/assemble.sh BUILD FOLDER [CERTIFICATE PASSWORD_FILE [TIMESTAMP_URL]]
#
# With a certificate the executables are signed.
set -euo pipefail
here=$(dirname -- "$(realpath -- "$0")")
build=$1 folder=$2 installer=VellumkitInstaller.x64.exe reader=VellumkitLog.exe

rm -rf "$folder"
mkdir -p "$folder"
cp "$build/$installer" "$build/$installer.debug" "$build/$reader" "$here/../LICENSE" "$folder"
chmod -x "$folder/$installer.debug"
if [ $# -gt 2 ]; then
    "$here/sign.sh" "$folder/$installer" "Vellumkit Installer" "${@:3}"
    "$here/sign.sh" "$folder/$reader" "Vellumkit Log Reader" "${@:3}"
fi
"$here/bill-of-materials.py" "$build" "$folder"
cd -- "$folder"
sums=$(find . -type f -printf '%P\n' | LC_ALL=C sort | xargs -d '\n' sha256sum)
echo "$sums" >SHA256SUMS
