#!/usr/bin/env bash
# Makes what is shipped, or a kit that tests it on Windows.
set -euo pipefail

usage() {
    cat <<TEXT
Usage: ./release.sh [--elevated-installer FILE] [--web-host HOST]
                    [--certificate FILE --password-file FILE [--timestamp-url URL]] [--dirty]
       ./release.sh --windows-tests [--dirty]

Installs what is missing, builds from nothing, and fills out/product/ with the installer, its symbols, the log reader,
the licences of what is linked in, a bill of materials and the SHA-256 sums of all these. The same commit makes the same
bytes.

  --elevated-installer FILE  the program to embed: 64-bit, its manifest requests administrator rights
                             (default: the stand-in of lab/)
  --web-host HOST            host of the product web site, which has the download of the 32-bit installer and the help
                             page (default: www.vellumkit.example)
  --certificate FILE         signs the executables with this certificate and its key (PKCS #12)
  --password-file FILE       has the certificate's password
  --timestamp-url URL        has the signature's time confirmed there (RFC 3161), so that it outlives the certificate
  --dirty                    also from sources that no commit has
  --windows-tests            makes out/windows-tests.zip instead: the executables with the defaults above, the tests and
                             the lab, for a Windows that can be thrown away
  --help                     this text
TEXT
}

fail() {
    echo "release.sh: $*" >&2
    exit 2
}

misuse() {
    usage >&2
    fail "$@"
}

readable() { # OPTION FILE
    [[ -f $2 && -r $2 ]] || fail "$1: cannot read $2"
    realpath -- "$2"
}

settings=() signature=() dirty=0 windows_tests=0
unset certificate password timestamps
while [ $# -gt 0 ]; do
    case $1 in
    --elevated-installer | --web-host | --certificate | --password-file | --timestamp-url)
        [ $# -ge 2 ] || misuse "$1 needs an argument"
        ;;&
    --elevated-installer)
        settings+=("-DVELLUMKIT_ELEVATED_INSTALLER=$(readable "$1" "$2")")
        shift 2
        ;;
    --web-host)
        [[ $2 =~ ^[A-Za-z0-9.-]+$ ]] || misuse "--web-host takes the name of a host"
        settings+=("-DVELLUMKIT_WEB_HOST=$2")
        shift 2
        ;;
    --certificate) certificate=$(readable "$1" "$2"); shift 2 ;;
    --password-file) password=$(readable "$1" "$2"); shift 2 ;;
    --timestamp-url) timestamps=$2; shift 2 ;;
    --dirty) dirty=1; shift ;;
    --windows-tests) windows_tests=1; shift ;;
    --help) usage; exit ;;
    *) misuse "unknown argument $1" ;;
    esac
done
if [ -v certificate ]; then
    [ -v password ] || misuse "--certificate needs --password-file"
    signature=("$certificate" "$password" ${timestamps+"$timestamps"})
elif [[ -v password || -v timestamps ]]; then
    misuse "--password-file and --timestamp-url are for a --certificate"
fi
[ "$windows_tests" = 0 ] || [ $((${#settings[@]} + ${#signature[@]})) = 0 ] ||
    misuse "the tests expect the stand-in and the default host, and no signature"

cd -- "$(dirname -- "$(realpath -- "$0")")" >/dev/null
# Another's language and settings would make another release, or none: the linker's map speaks every language.
export LC_ALL=C.UTF-8
unset CMAKE_CXX_COMPILER_LAUNCHER CXXFLAGS LDFLAGS
lab/machine.sh packages
if [ "$dirty" = 0 ]; then
    changes=$(git status --porcelain) ||
        fail "git can't tell whether a commit has these sources; --dirty builds them all the same"
    [ -z "$changes" ] || fail "no commit has these sources; --dirty builds them all the same:"$'\n'"$changes"
fi

# The time of what is built is that of its commit.
: "${SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || date +%s)}"
export SOURCE_DATE_EPOCH

build=out/product-build
rm -rf "$build"
cmake --preset release -B "$build" "${settings[@]}"
if [ "$windows_tests" = 1 ]; then
    cmake --build "$build"
    exec release/windows-tests.py "$build" out/windows-tests.zip
fi
cmake --build "$build" --target VellumkitInstaller VellumkitLog
release/assemble.sh "$build" out/product "${signature[@]}"
echo
cat out/product/SHA256SUMS
