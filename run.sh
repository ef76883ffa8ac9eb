#!/usr/bin/env bash
# Shows the installer at work: installs what is missing, builds, and performs an installation.
set -euo pipefail

languages=(en zh-CN zh-TW cs nl fr de it nb pl pt-BR ru sk es tr mk)

usage() {
    cat <<TEXT
Usage: ./run.sh [--language CODE] [--dpi N]
       ./run.sh --config FILE
       ./run.sh gallery

Installs with a window, in a private Wine prefix: on this display, or without one on a virtual display. Goes through all
of its states by itself, then names a screenshot of each, the exit code and the log.

  --language CODE  the language that Microsoft Office has there (default: en), one of
                   ${languages[*]}
  --dpi N          the resolution of the screen (default: 96)
  --config FILE    installs without a window instead, with this configuration file for the elevated installer;
                   lab/sample.ini explains what its stand-in reads from there
  gallery          makes pictures of every screen in every language instead
  --help           this text
TEXT
}

misuse() {
    echo "run.sh: $*" >&2
    usage >&2
    exit 2
}

installation=window language=en dpi=96
while [ $# -gt 0 ]; do
    case $1 in
    --config | --language | --dpi) [ $# -ge 2 ] || misuse "$1 needs an argument" ;;&
    --config) installation=unattended config=$2; shift 2 ;;
    --language) language=$2; shift 2 ;;
    --dpi) dpi=$2; shift 2 ;;
    gallery) installation=none; shift ;;
    --help) usage; exit ;;
    *) misuse "unknown argument $1" ;;
    esac
done
[[ " ${languages[*]} " = *" $language "* ]] || misuse "unknown language $language"
[[ $dpi =~ ^[0-9]{2,3}$ && $dpi -ge 72 && $dpi -le 480 ]] || misuse "--dpi takes a number from 72 to 480"
if [ "$installation" = unattended ]; then
    [[ -f $config && -r $config ]] || { echo "run.sh: cannot read $config" >&2; exit 2; }
    config=$(realpath -- "$config")
fi

cd -- "$(dirname "$0")" >/dev/null
lab/machine.sh packages

case $installation in
window)
    lab/machine.sh build VellumkitInstaller onenote
    display=()
    xdotool getdisplaygeometry >/dev/null 2>&1 || display=(lab/machine.sh display)
    exec "${display[@]}" lab/installation.sh window "$language" "$dpi" out/screenshots
    ;;
unattended)
    lab/machine.sh build VellumkitInstaller
    exec lab/machine.sh display lab/installation.sh unattended "$config"
    ;;
none)
    lab/machine.sh build gallery
    exec lab/machine.sh display lab/gallery/gallery.sh
    ;;
esac
