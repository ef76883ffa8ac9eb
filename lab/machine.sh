#!/usr/bin/env bash
# The machine that builds and tests: Debian's packages, a private Wine prefix, a display.
#
#   lab/machine.sh packages           installs what is missing
#   lab/machine.sh build [TARGET...]  builds the release
#   lab/machine.sh wine PROGRAM...    runs a Windows program in the prefix that VELLUMKIT_PREFIX names (default: "lab")
#   lab/machine.sh display COMMAND... runs a command on a virtual display, and ends what still runs in the prefixes
#
# Everything it makes lies in out/, but for the packages and what runs in /tmp while it runs.
set -euo pipefail

root=$(cd -- "$(dirname "${BASH_SOURCE[0]}")/.." >/dev/null && pwd)
prefixes=$root/out/wine

# Package, and what the project takes from it.
packages=(
    clang-format                 # the format check
    clang-tidy                   # the static analysis
    cmake                        # cmake, ctest
    g++-mingw-w64-x86-64-posix   # the cross compiler; windres and ld come with it
    googletest                   # the sources of the test framework
    ninja-build
    shellcheck                   # the check of the scripts
    wine wine64                  # runs the programs
    fonts-wine                   # Wine draws windows with it
    xvfb xauth                   # a display where there is none; xvfb-run
)

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

missing_packages() {
    local package
    for package in "${packages[@]}"; do
        [ "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" = "install ok installed" ] || echo "$package"
    done
}

install_packages() {
    local missing as_root=()
    missing=$(missing_packages | tr '\n' ' ')
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null || fail "cannot install without root or sudo: $missing"
        as_root=(sudo)
    fi
    echo "Installing $missing"
    mkdir -p "$root/out"
    # shellcheck disable=SC2086 # one word a package
    { "${as_root[@]}" apt-get -q update &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends install $missing
    } >"$root/out/packages.log" 2>&1 || fail "cannot install $missing(see out/packages.log)"
}

build() {
    cd "$root"
    [ -f out/release/build.ninja ] || cmake --preset release
    cmake --build --preset release ${1:+--target "$@"}
}

# Wine takes its home for Windows' user folders, caches and menus: it gets one of its own.
enter_prefix() {
    export WINEPREFIX=$prefixes/$1 WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES="winemenubuilder.exe,mscoree,mshtml="
    export LC_ALL=C.UTF-8 # file names are UTF-8, whatever the shell speaks
    export HOME=$prefixes/home XDG_CACHE_HOME=$prefixes/home XDG_CONFIG_HOME=$prefixes/home XDG_DATA_HOME=$prefixes/home
}

# A new prefix takes a while: one is made, the others are copies of it.
make_prefix() (
    mkdir -p "$prefixes/home"
    exec 9>"$prefixes/lock"
    flock 9
    if [ ! -e "$prefixes/base.made" ]; then
        rm -rf "$prefixes/base"
        enter_prefix base
        wineboot --init 9>&- >/dev/null 2>&1 || fail "Wine cannot make a prefix in $prefixes"
        wineserver --wait
        touch "$prefixes/base.made"
    fi
    if [ ! -e "$prefixes/$1.made" ]; then
        rm -rf "${prefixes:?}/$1"
        cp -a --reflink=auto "$prefixes/base" "$prefixes/$1"
        touch "$prefixes/$1.made"
    fi
)

run_wine() {
    local prefix=${VELLUMKIT_PREFIX:-lab}
    [ -e "$prefixes/$prefix.made" ] || make_prefix "$prefix"
    enter_prefix "$prefix"
    exec wine "$@"
}

run_on_virtual_display() {
    local made result=0
    [ -n "${VELLUMKIT_ON_VIRTUAL_DISPLAY:-}" ] ||
        VELLUMKIT_ON_VIRTUAL_DISPLAY=1 exec xvfb-run --auto-servernum "$0" display "$@"
    "$@" || result=$?
    for made in "$prefixes"/*.made; do
        WINEPREFIX=${made%.made} wineserver --kill || true # fails when nothing runs there
    done
    exit "$result"
}

command=${1:-}
shift || true
case $command in
packages) install_packages ;;
build) build "$@" ;;
wine) run_wine "$@" ;;
display) run_on_virtual_display "$@" ;;
*) fail "commands: packages, build, wine, display" ;;
esac
