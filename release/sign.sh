#!/usr/bin/env bash
# Gives a program an Authenticode signature.
#
#   release/sign.sh PROGRAM CERTIFICATE PASSWORD_FILE [TIMESTAMP_URL]
set -euo pipefail
program=$1
osslsigncode sign -pkcs12 "$2" -readpass "$3" -h sha256 -n "Vellumkit Installer" ${4:+-ts "$4"} \
    -in "$program" -out "$program.signed"
chmod --reference="$program" "$program.signed"
mv "$program.signed" "$program"
