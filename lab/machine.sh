#!/usr/bin/env bash
# The machine that builds and tests: Debian's packages, a private Wine prefix, a display.
#
#   lab/machine.sh packages [LIST]    installs what is missing, also of what lint.sh (lint), bench.sh (bench) or the
#                                     rehearsal of a roll-out (fleet) needs
#   lab/machine.sh build [TARGET...]  builds the release
#   lab/machine.sh wine PROGRAM...    runs a Windows program in a prefix
#   lab/machine.sh linux COMMAND...   runs a Linux command that starts Windows programs in a prefix itself
#   lab/machine.sh stop               ends what runs in a prefix
#   lab/machine.sh copy PREFIX        makes the prefix anew, a copy of that one, in which nothing may run
#   lab/machine.sh remove             ends what runs in a prefix, and removes it
#   lab/machine.sh display COMMAND... runs a command on a virtual display of its own, then stops the prefix
#
# The prefix is the one that VELLUMKIT_PREFIX names (default: "lab"). VELLUMKIT_DPI is the resolution of its screen
# (default: 96), and VELLUMKIT_FONT the font that stands in for "Segoe UI", which only Windows has; with an empty one
# there is none, and GDI+ has none at all on Debian 12. Debian 13's Wine finds its own Tahoma. VELLUMKIT_APPEARANCE is a
# file of further settings of Windows' registry (default: none). A prefix that has other settings is made anew, and what
# runs in it is ended. VELLUMKIT_LOCALE is the user's locale in Windows, as Debian names
# it (fr_CA; default: en_US). It is the one of all that run in the prefix.
#
# Everything it makes lies in out/, but for the packages and what runs in /tmp while it runs.
set -euo pipefail

root=$(cd -- "$(dirname "${BASH_SOURCE[0]}")/.." >/dev/null && pwd)
prefixes=$root/out/wine

# Package, and what the project takes from it.
packages=(
    cmake                        # cmake, ctest
    g++-mingw-w64-x86-64-posix   # the cross compiler; windres and ld come with it
    googletest                   # the sources of the test framework
    libwine-dev                  # oaidl.idl, which an interface definition imports
    mingw-w64-tools              # widl, which makes a type library and a header from it
    ninja-build
    wine wine64                  # runs the programs
    fonts-wine                   # Marlett, the signs on a window's caption buttons
    fonts-open-sans              # stands in for Segoe UI, and is a little wider
    fonts-noto-cjk               # the same for Chinese
    xvfb xauth                   # a display where there is none; xvfb-run
    xdotool                      # the user of ./run.sh, and who waits for Wine's desktop
    imagemagick                  # screenshots, contact sheets (lettered in Open Sans), comparison of pictures
    librsvg2-bin icoutils        # rsvg-convert and icotool, which render the artwork
    locales                      # localedef, and from what it makes the locale of another country
    python3                      # changes the sources one place at a time, and reads what the tests have reached; lists
                                 # what is linked in, and packs the tests for Windows
    git                          # tells ./release.sh whether a commit has the sources, and when it was made
    osslsigncode openssl         # signs the executable; makes the certificate with which a test does
    faketime                     # another day, on which a release must be the same
    ansible-core                 # rolls out to many machines
)
lint_packages=(clang-format-14 clang-tidy-14 shellcheck ansible-lint ansible) # the last has the Windows collection
bench_packages=(nsis gnuplot-nox strace)
fleet_packages=(gnuplot-nox)

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
    export LC_ALL=C.UTF-8 # the linker's map, which is read, speaks every language
    [ -f out/release/build.ninja ] || cmake --preset release
    cmake --build --preset release ${1:+--target "$@"}
}

# Windows' shared data (KUSER_SHARED_DATA) has one fixed address. About once in two thousand starts the randomised heap
# of a program lies there, and the start fails. Some containers forbid turning the randomisation off: it stays on there.
at_fixed_addresses=(setarch --addr-no-randomize)
"${at_fixed_addresses[@]}" true 2>/dev/null || at_fixed_addresses=()

# Wine takes its home for Windows' user folders, caches and menus: it gets one of its own.
enter_prefix() {
    export WINEPREFIX=$prefixes/$1 WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES="winemenubuilder.exe,winedbg.exe,mscoree,mshtml=" # a crash shall end a program
    export LC_ALL=C.UTF-8 # file names are UTF-8, whatever the shell speaks
    export XAUTHORITY=${XAUTHORITY:-${HOME:-}/.Xauthority} # of the display, found before the home is another one
    export HOME=$prefixes/home XDG_CACHE_HOME=$prefixes/home XDG_CONFIG_HOME=$prefixes/home XDG_DATA_HOME=$prefixes/home
}

# The settings of a prefix's screen. Programs run in a desktop window, which gives them captions and the focus without a
# window manager.
screen_settings() { # DPI FONT APPEARANCE
    cat <<TEXT
Windows Registry Editor Version 5.00

[HKEY_CURRENT_USER\Software\Wine\Explorer]
"Desktop"="Lab"

[HKEY_CURRENT_USER\Software\Wine\Explorer\Desktops]
"Lab"="1280x900"

[HKEY_CURRENT_USER\Control Panel\Desktop]
"LogPixels"=dword:$(printf %08x "$1")

[HKEY_CURRENT_USER\Software\Wine\Fonts]
"LogPixels"=dword:$(printf %08x "$1")
TEXT
    [ -z "$2" ] || cat <<TEXT

[HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements]
"Segoe UI"="$2"
"Microsoft Sans Serif"="$2"
TEXT
    [ -z "$3" ] || sed 1d "$3" # the line that says what such a file is
}

# The prefix that all others are copies of, since a new one takes a while.
make_base_prefix() {
    remove_prefix base
    enter_prefix base
    "${at_fixed_addresses[@]}" wineboot --init >/dev/null 2>&1 || fail "Wine cannot make a prefix in $prefixes"
    wineserver --wait
    cp /usr/share/wine/fonts/marlett.ttf "$WINEPREFIX/drive_c/windows/Fonts/" # Debian 12's Wine looks there only
    wine --version >"$prefixes/base.made"
}

# The copy shares its files, but for those that are written in place.
copy_prefix() { # FROM NAME
    remove_prefix "$2"
    cp -al "$prefixes/$1" "$prefixes/$2"
    cp --remove-destination "$prefixes/$1"/{*.reg,.update-timestamp} "$prefixes/$2"
    cp --remove-destination "$prefixes/$1"/drive_c/windows/*.ini "$prefixes/$2/drive_c/windows"
}

make_prefix() { # NAME SETTINGS
    copy_prefix base "$1"
    enter_prefix "$1"
    echo "$2" >"$WINEPREFIX/screen.reg"
    (cd "$WINEPREFIX" && "${at_fixed_addresses[@]}" wine regedit /S screen.reg) >/dev/null 2>&1 ||
        fail "Wine takes no settings"
    wineserver --wait
    echo "$2" >"$prefixes/$1.made"
}

# Ends what runs there, also what an interrupted script has left.
remove_prefix() ( # NAME
    enter_prefix "$1"
    [ ! -e "$WINEPREFIX" ] || wineserver --kill || true # fails when nothing runs there
    rm -rf "$WINEPREFIX.made" "$WINEPREFIX"
)

is_made() { # NAME CONTENT
    [ "$(cat "$prefixes/$1.made" 2>/dev/null)" = "$2" ]
}

# Makes the prefix if it is not there or has other settings. What runs on in the background must not keep the lock.
provide_prefix() ( # NAME
    dpi=${VELLUMKIT_DPI:-96}
    [[ $dpi =~ ^[1-9][0-9]{1,2}$ ]] || fail "VELLUMKIT_DPI is no resolution: $dpi"
    settings=$(screen_settings "$dpi" "${VELLUMKIT_FONT-Open Sans}" "${VELLUMKIT_APPEARANCE:-}")
    version=$(WINEDEBUG=-all wine --version) # which keeps Debian's script from asking for a 32-bit Wine
    mkdir -p "$prefixes/home"
    exec 9>"$prefixes/lock"
    flock 9
    is_made base "$version" || { rm -f "$prefixes"/*.made; (make_base_prefix 9>&-); }
    is_made "$1" "$settings" || make_prefix "$1" "$settings" 9>&-
)

# Windows' locale is the one that Wine is started in. An unfinished one does not get its name.
provide_locale() ( # NAME
    [[ $1 =~ ^[a-z]{2,3}_[A-Z]{2}$ ]] || fail "VELLUMKIT_LOCALE is no locale: $1"
    exec 9>"$prefixes/lock"
    flock 9
    made=$prefixes/locales/$1.UTF-8
    [ ! -e "$made" ] || exit 0
    rm -rf "$made.new"
    mkdir -p "$prefixes/locales"
    localedef --inputfile="$1" --charmap=UTF-8 "$made.new" || fail "cannot make the locale $1"
    mv "$made.new" "$made"
)

has_desktop() {
    xdotool search --onlyvisible --name '^Lab - Wine desktop$' >/dev/null 2>&1
}

await_desktop() {
    local tries
    for ((tries = 0; tries < 200; tries++)); do
        ! has_desktop || return 0
        sleep 0.1
    done
    return 1
}

# Wine starts its desktop for the first program that asks for a window, one of its own services perhaps, and waits ten
# seconds for it. When it has not come by then, the prefix shows no window at all until it is stopped. So the desktop is
# started first, one prefix after the other, and a prefix that does not show it is stopped and starts anew.
provide_desktop() ( # ENVIRONMENT
    ! has_desktop || exit 0
    exec 9>"$prefixes/lock"
    flock 9
    for attempt in 1 2 3; do
        "${at_fixed_addresses[@]}" env "$@" wine explorer /desktop >/dev/null 2>&1 9>&- &
        ! await_desktop || exit 0
        echo "${0##*/}: Wine showed no desktop ($attempt)" >&2
        wineserver --kill || true # fails when nothing runs there
    done
    fail "Wine shows no desktop"
)

run_in_prefix() { # COMMAND...
    local prefix=${VELLUMKIT_PREFIX:-lab} locale=()
    provide_prefix "$prefix"
    if [ -n "${VELLUMKIT_LOCALE:-}" ]; then
        provide_locale "$VELLUMKIT_LOCALE"
        locale=(LOCPATH="$prefixes/locales" LC_ALL="$VELLUMKIT_LOCALE.UTF-8")
    fi
    enter_prefix "$prefix"
    [ -z "${VELLUMKIT_ON_VIRTUAL_DISPLAY:-}" ] || provide_desktop "${locale[@]}"
    exec "${at_fixed_addresses[@]}" env "${locale[@]}" "$@"
}

stop_wine() {
    enter_prefix "${VELLUMKIT_PREFIX:-lab}"
    wineserver --kill || true # fails when nothing runs there
}

copy_made_prefix() { # FROM
    local name=${VELLUMKIT_PREFIX:-lab}
    copy_prefix "$1" "$name"
    cp "$prefixes/$1.made" "$prefixes/$name.made"
}

# Each looks for a free display from a number of its own: of many that begin at the same one, xvfb-run lets those that
# lose ten times run on a display of another, which does not take them.
run_on_virtual_display() {
    local result=0
    [ -n "${VELLUMKIT_ON_VIRTUAL_DISPLAY:-}" ] ||
        VELLUMKIT_ON_VIRTUAL_DISPLAY=1 exec xvfb-run --server-num=$((100 + $$ % 50000)) --auto-servernum \
            --server-args="-screen 0 1280x900x24" "$0" display "$@"
    "$@" || result=$?
    stop_wine
    exit "$result"
}

command=${1:-}
shift || true
case $command in
packages)
    case ${1:-} in
    lint) packages+=("${lint_packages[@]}") ;;
    bench) packages+=("${bench_packages[@]}") ;;
    fleet) packages+=("${fleet_packages[@]}") ;;
    '') ;;
    *) fail "lists: lint, bench, fleet" ;;
    esac
    install_packages
    ;;
build) build "$@" ;;
wine) run_in_prefix wine "$@" ;;
linux) run_in_prefix "$@" ;;
stop) stop_wine ;;
copy) copy_made_prefix "$1" ;;
remove) remove_prefix "${VELLUMKIT_PREFIX:-lab}" ;;
display) run_on_virtual_display "$@" ;;
*) fail "commands: packages, build, wine, linux, stop, copy, remove, display" ;;
esac
