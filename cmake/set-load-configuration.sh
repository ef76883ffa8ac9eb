#!/usr/bin/env bash
# Points the header of an executable at its load configuration, which fills a section of its own (see
# app/LoadConfiguration.cpp). The linker can't.
#
#   cmake/set-load-configuration.sh OBJDUMP PROGRAM
set -euo pipefail
objdump=$1 program=$2

number_at() { # OFFSET BYTES
    echo $((0x$(od --address-radix=n --endian=little --format="x$2" --skip-bytes="$1" --read-bytes="$2" "$program" |
        tr -d ' ')))
}

put_32_bits_at() { # OFFSET VALUE
    local escapes
    escapes=$(printf '\\x%02x' $(($2 & 255)) $(($2 >> 8 & 255)) $(($2 >> 16 & 255)) $(($2 >> 24 & 255)))
    printf '%b' "$escapes" | dd of="$program" bs=1 seek="$1" conv=notrunc status=none
}

# The sum of all 16-bit words with its carries put back in, and the file's size.
change_checksum() { # OFFSET ADDED_32_BITS...
    local at=$1 size sum added
    size=$(stat --format=%s "$program")
    sum=$(($(number_at "$at" 4) - size))
    for added in "${@:2}"; do
        sum=$((sum + (added & 65535) + (added >> 16)))
    done
    while [ $((sum >> 16)) != 0 ]; do
        sum=$(((sum & 65535) + (sum >> 16)))
    done
    put_32_bits_at "$at" $((sum + size))
}

section=$("$objdump" --section-headers "$program" | awk '$2 == ".ldcfg" { print "0x" $4, "0x" $6 }')
[ -n "$section" ] || { echo "${0##*/}: $program has no load configuration" >&2; exit 1; }
read -r address offset <<<"$section"
header=$(number_at 60 4)
directory=$((header + 216)) # IMAGE_DIRECTORY_ENTRY_LOAD_CONFIG of a 64-bit program
[ "$(number_at $directory 4)" = 0 ] || { echo "${0##*/}: the header of $program names one already" >&2; exit 1; }
address=$((address - $(number_at $((header + 48)) 8)))
size=$(number_at "$((offset))" 4)
put_32_bits_at $directory $address
put_32_bits_at $((directory + 4)) "$size"
change_checksum $((header + 88)) $address "$size"
