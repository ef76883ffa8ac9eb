#!/usr/bin/env bash
# On a display: lets a copy of the executable crash at the beginning of its entry point, and turns the address that Wine
# tells into file and line, as docs/release.md says.
#
#   tests/release/crash-address.sh BUILD
set -euo pipefail
root=$(realpath -- "$(dirname -- "$0")/../..")
program=$(realpath -- "$1")/VellumkitInstaller.x64.exe
symbols=$program.debug
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# An undefined instruction in the file where the entry point's code lies in memory.
entry=0x$(x86_64-w64-mingw32-nm "$symbols" | awk '$3 == "wWinMain" { print $1 }')
read -r address offset < <(x86_64-w64-mingw32-objdump --section-headers "$program" |
    awk '$2 == ".text" { print "0x" $4, "0x" $6 }')
cp "$program" "$folder/crashing.exe"
printf '\x0f\x0b' | dd of="$folder/crashing.exe" bs=1 seek=$((entry - address + offset)) conv=notrunc status=none
WINEDEBUG=-all,+seh,+module "$root/lab/machine.sh" wine "$folder/crashing.exe" 2>"$folder/trace" || true

# Both in the lines of Wine's trace: where it was loaded, and where it crashed.
base=$(sed -nE 's/.*mapping PE file L".*crashing\.exe" at (0x[0-9a-f]+)-.*/\1/p' "$folder/trace" | head -1)
crash=$(sed -nE 's/.*code=c000001d.* addr=(0x)?([0-9A-Fa-f]+).*/0x\2/p' "$folder/trace" | head -1)
[[ -n $base && -n $crash ]] || { echo "Wine tells no crash: loaded at '$base', crashed at '$crash'" >&2; exit 1; }

# The document's command, with this offset.
command=$(sed -n 's/^    \(x86_64-w64-mingw32-addr2line .*\)/\1/p' "$root/docs/release.md")
offset=$(printf '%#x' $((crash - base)))
[[ $command == *" + 0x1d9c40"* ]] || { echo "docs/release.md has no such command" >&2; exit 1; }
cd "${symbols%/*}"
found=$(eval "${command/0x1d9c40/$offset}")
line=$(grep -n 'WINAPI wWinMain' "$root/app/EntryPoint.cpp" | cut -d: -f1)
expected=wWinMain$'\n'/vellumkit/app/EntryPoint.cpp:$line
[ "$found" = "$expected" ] || { printf 'expected:\n%s\nfound:\n%s\n' "$expected" "$found" >&2; exit 1; }
echo "$crash - $base = $offset: $found"
