#!/usr/bin/env bash
# Shows the installer at work: installs what is missing, builds, and performs an unattended installation.
set -euo pipefail

usage() {
    cat <<'TEXT'
Usage: ./run.sh [--config FILE]

Performs an unattended installation in a private Wine prefix, then prints the exit code and the log.

  --config FILE   the configuration file, given to the elevated installer (default: lab/sample.ini);
                  what the stand-in for the elevated installer reads from it is explained there
  --help          this text
TEXT
}

config=$(dirname "$0")/lab/sample.ini
while [ $# -gt 0 ]; do
    case $1 in
    --config) [ $# -ge 2 ] || { usage >&2; exit 2; }
        config=$2; shift 2 ;;
    --help) usage; exit ;;
    *) echo "run.sh: unknown option $1" >&2; usage >&2; exit 2 ;;
    esac
done
if [ ! -f "$config" ] || [ ! -r "$config" ]; then
    echo "run.sh: cannot read $config" >&2
    exit 2
fi
config=$(realpath -- "$config")

cd -- "$(dirname "$0")" >/dev/null
lab/machine.sh packages
lab/machine.sh build VellumkitInstaller
windows_path=$(lab/machine.sh wine winepath -w "$config" | tr -d '\r')
temporary_folder=$(lab/machine.sh wine cmd /c 'echo %TEMP%' | tr -d '\r')
log=$(lab/machine.sh wine winepath -u "$temporary_folder\\Vellumkit_Install.log" | tr -d '\r')
rm -f "$log"

echo "VellumkitInstaller.x64.exe /config \"$windows_path\""
exit_code=0
lab/machine.sh wine out/release/VellumkitInstaller.x64.exe /config "$windows_path" || exit_code=$?
[ -e "$log" ] || { echo "run.sh: the installer wrote no log, exit code $exit_code" >&2; exit 1; }
echo "Exit code: $exit_code"
echo "Log: $log"
iconv -f UTF-16 -t UTF-8 "$log" | tr -d '\r'
echo
exit "$exit_code"
