#!/usr/bin/env bash
# Shows the installer at work: installs what is missing, builds, and performs an installation.
set -euo pipefail

here=$(dirname -- "$(realpath -- "$0")")
. "$here/lab/languages.sh"

usage() {
    cat <<TEXT
Usage: ./run.sh [--language CODE] [--dpi N] [--onenote running|stubborn|absent | --machine NAME]
       ./run.sh --config FILE
       ./run.sh gallery
       ./run.sh fleet

Installs with a window, in a private Wine prefix: on this display, or without one on a virtual display. Goes through all
of its states by itself, then shows the log and names the exit code and a screenshot of each state. One at a time. Leave
mouse and keyboard alone meanwhile.

  --language CODE  the language that Microsoft Office has there (default: en), one of
                   ${languages[*]}
  --dpi N          the resolution of the screen, 72 to 288 (default: 96); the desktop has 1280 by 900 pixels
  --onenote STATE  how the installation finds OneNote, a stand-in: running, and it closes when it is asked (default);
                   stubborn, so that it is terminated after a minute; absent, so that there is no search to be seen,
                   and it can't be started at the end
  --machine NAME   what the registry says of OneNote and Office on the machine, which has no OneNote running; on some
                   of these the installer asks first whether to go on, and is told to; one of
$(machines | fold -s -w 96 | sed 's/^/                   /; s/ *$//')
  --config FILE    installs without a window instead, with this configuration file for the elevated installer;
                   lab/sample.ini explains what its stand-in reads from there
  gallery          makes pictures of every screen in every language instead, at 96 to 288 DPI, and of the window in a
                   high-contrast theme and with the largest text of Windows
  fleet            rolls out to the machines of lab/fleet/conditions.txt instead, with Ansible as to real ones, and
                   compares what the log reader finds with what was prepared: out/fleet/results.md and timeline.svg;
                   ends with 1 when something else came of a machine, and takes about three minutes
  --help           this text
TEXT
}

fail() {
    echo "run.sh: $*" >&2
    exit 2
}

machines() {
    basename -s .ini -a -- "$here"/lab/office/*.ini | paste -s -d ' '
}

misuse() {
    usage >&2
    fail "$@"
}

mode=window language=en dpi=96 settings=0
unset config onenote machine
while [ $# -gt 0 ]; do
    case $1 in
    --config | --language | --dpi | --onenote | --machine) [ $# -ge 2 ] || misuse "$1 needs an argument" ;;&
    --config) config=$2; shift 2 ;;
    --language) language=$2 settings=1; shift 2 ;;
    --dpi) dpi=$2 settings=1; shift 2 ;;
    --onenote) onenote=$2 settings=1; shift 2 ;;
    --machine) machine=$2 settings=1; shift 2 ;;
    gallery | fleet) mode=$1; shift ;;
    --help) usage; exit ;;
    *) misuse "unknown argument $1" ;;
    esac
done
if [ -v config ]; then
    [ "$mode" = window ] || misuse "only the installation takes a configuration file"
    mode=unattended
fi
[ "$mode" = window ] || [ "$settings" = 0 ] ||
    misuse "--language, --dpi, --onenote and --machine are for the installation with a window"
if [ -v machine ]; then
    [ ! -v onenote ] || misuse "--machine and --onenote both say what OneNote is"
    [[ $machine =~ ^[a-z0-9-]+$ && -f $here/lab/office/$machine.ini ]] || misuse "unknown machine '$machine'"
    onenote=absent
fi
: "${onenote=running}"
[[ $language =~ ^[A-Za-z-]+$ && -v office_languages[$language] ]] || misuse "unknown language '$language'"
[[ $dpi =~ ^[1-9][0-9]{1,2}$ && $dpi -ge 72 && $dpi -le 288 ]] || misuse "--dpi takes a number from 72 to 288"
[[ $onenote =~ ^(running|stubborn|absent)$ ]] || misuse "--onenote takes running, stubborn or absent"
if [ "$mode" = unattended ]; then
    [[ -f $config && -r $config ]] || fail "cannot read $config"
    config=$(realpath -- "$config")
fi

cd -- "$here" >/dev/null
lists=()
[ "$mode" != fleet ] || lists=(fleet)
lab/machine.sh packages "${lists[@]}"

case $mode in
window)
    lab/machine.sh build VellumkitInstaller onenote office
    VELLUMKIT_FONT=$(font_of "$language")
    export VELLUMKIT_FONT VELLUMKIT_DPI=$dpi VELLUMKIT_PREFIX=lab-$language-$dpi
    display=()
    xdotool getdisplaygeometry >/dev/null 2>&1 || display=(lab/machine.sh display)
    exec "${display[@]}" lab/installation.sh window "$language" "$onenote" "${machine:-no-office}" \
        "out/screenshots/$language-$dpi${machine:+-$machine}"
    ;;
unattended)
    lab/machine.sh build VellumkitInstaller
    exec lab/machine.sh display lab/installation.sh unattended "$config"
    ;;
gallery)
    lab/machine.sh build gallery
    VELLUMKIT_PREFIX=gallery exec lab/machine.sh display lab/gallery/gallery.sh out/gallery 96 144 192 240 288
    ;;
fleet)
    lab/machine.sh build VellumkitInstaller VellumkitLog onenote datebk office
    result=0
    VELLUMKIT_PREFIX=fleet lab/fleet/fleet.sh lab/fleet/conditions.txt out/fleet || result=$?
    [ ! -e out/fleet/results.md ] || echo "Table: $here/out/fleet/results.md"
    if [ -s out/fleet/timeline.dat ]; then # empty when no installer has begun
        (cd out/fleet && gnuplot "$here/lab/fleet/timeline.gnuplot")
        echo "Chart: $here/out/fleet/timeline.svg"
    fi
    exit "$result"
    ;;
esac
