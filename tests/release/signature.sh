#!/usr/bin/env bash
# On a display: signs copies of the executables with a certificate that is made for it, verifies the signatures, and lets
# the copies install and read the log. A copy of the installer that has another bit does not verify.
#
#   tests/release/signature.sh BUILD
set -euo pipefail
root=$(realpath -- "$(dirname -- "$0")/../..")
build=$(realpath -- "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
    echo "signature.sh: $*" >&2
    exit 1
}

verifies() { # PROGRAM
    osslsigncode verify -CAfile "$folder/certificate.pem" -in "$1" >"$folder/verified" 2>&1
}

echo "some password" >"$folder/password"
openssl req -x509 -newkey rsa:2048 -noenc -days 2 -subj "/CN=Vellumkit test" -addext extendedKeyUsage=codeSigning \
    -keyout "$folder/key.pem" -out "$folder/certificate.pem" 2>"$folder/openssl" || { cat "$folder/openssl"; exit 1; }
openssl pkcs12 -export -inkey "$folder/key.pem" -in "$folder/certificate.pem" -passout "file:$folder/password" \
    -out "$folder/certificate.p12"

SOURCE_DATE_EPOCH=0 "$root/release/assemble.sh" "$build" "$folder/product" "$folder/certificate.p12" "$folder/password"
program=$folder/product/VellumkitInstaller.x64.exe
reader=$folder/product/VellumkitLog.exe
for signed in "$program=Vellumkit Installer" "$reader=Vellumkit Log Reader"; do
    verifies "${signed%=*}" || { cat "$folder/verified"; fail "${signed%=*} does not verify"; }
    grep -q "Text description: ${signed#*=}\$" "$folder/verified" || fail "the signature does not tell ${signed#*=}"
    ! verifies "$build/$(basename "${signed%=*}")" || fail "an executable without a signature verifies"
done
(cd "$folder/product" && sha256sum --check --quiet SHA256SUMS) || fail "the sums are not those of the signed executables"

# In the middle of what is embedded.
cp "$program" "$folder/changed.exe"
at=$(($(stat --format=%s "$program") / 2))
byte=$(od --address-radix=n --format=u1 --skip-bytes=$at --read-bytes=1 "$program")
printf '%b' "\\x$(printf %02x $((byte ^ 1)))" | dd of="$folder/changed.exe" bs=1 seek=$at conv=notrunc status=none
[ "$(cmp -l "$program" "$folder/changed.exe" | wc -l)" = 1 ] || fail "the copy does not differ in one byte"
! verifies "$folder/changed.exe" || fail "a changed executable verifies"

temporary=$("$root/lab/machine.sh" wine winepath -u \
    "$("$root/lab/machine.sh" wine cmd /c 'echo %TEMP%' | tr -d '\r')" | tr -d '\r')
rm -rf "$temporary/Vellumkit"
touch "$folder/configuration.ini"
"$root/lab/machine.sh" wine "$program" /config "Z:${folder//\//\\}\\configuration.ini" ||
    fail "the signed executable ends with $?"
cmp "$build/lab/elevated-installer.exe" "$temporary/Vellumkit/Vellumkit Installer.exe"
"$root/lab/machine.sh" wine "$reader" "Z:${temporary//\//\\}\\Vellumkit_Install.log" ||
    fail "the signed log reader ends with $?"
echo "signed, verified, installed, read"
