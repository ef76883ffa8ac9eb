#!/usr/bin/env bash
# Gives a program an Authenticode signature.
#
#   release/sign.sh PROGRAM NAME CERTIFICATE PASSWORD_FILE [TIMESTAMP_URL]
#
# The signature tells the name.
set -euo pipefail
program=$1
osslsigncode sign -pkcs12 "$3" -readpass "$4" -h sha256 -n "$2" ${5:+-ts "$5"} \
    -in "$program" -out "$program.signed"
chmod --reference="$program" "$program.signed"
mv "$program.signed" "$program"
