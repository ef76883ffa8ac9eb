#!/usr/bin/env bash
# Shows the installer at work: installs what is missing, builds, and performs an unattended installation.
set -euo pipefail
cd "$(dirname "$0")"

usage() {
    cat <<'TEXT'
Usage: ./run.sh [--config FILE]

Performs an unattended installation in a private Wine prefix, then prints the exit code and the log.

  --config FILE   the configuration file, given to the elevated installer (default: lab/sample.ini);
                  what the stand-in for the elevated installer reads from it is explained there
  --help          this text
TEXT
}

config=lab/sample.ini
while [ $# -gt 0 ]; do
    case $1 in
    --config) [ $# -ge 2 ] || { usage >&2; exit 2; }
        config=$2; shift 2 ;;
    --help) usage; exit ;;
    *) usage >&2; exit 2 ;;
    esac
done
[ -r "$config" ] || { echo "run.sh: cannot read $config" >&2; exit 2; }

lab/machine.sh packages
lab/machine.sh build VellumkitInstaller
windows_path=$(lab/machine.sh wine winepath -w "$(realpath "$config")" | tr -d '\r')
temporary_folder=$(lab/machine.sh wine cmd /c 'echo %TEMP%' | tr -d '\r')
log=$(lab/machine.sh wine winepath -u "$temporary_folder\\Vellumkit_Install.log" | tr -d '\r')

echo "VellumkitInstaller.x64.exe /config \"$windows_path\""
exit_code=0
lab/machine.sh wine out/release/VellumkitInstaller.x64.exe /config "$windows_path" || exit_code=$?
echo "Exit code: $exit_code"
echo "Log: $log"
iconv -f UTF-16 -t UTF-8 "$log" | tr -d '\r'
echo
exit "$exit_code"
