#!/usr/bin/env bash
# Rolls the installer out to the machines of a table of conditions, as deploy/install.yml does it with real ones, reads
# the logs that were collected, and compares what was found with what the table expects.
#
#   lab/fleet/fleet.sh CONDITIONS FOLDER
#
# The folder is made anew; lab/fleet/report.py tells what comes to lie in it. VELLUMKIT_PREFIX names the prefix that is
# the model of the machines, whose names begin with it; they are gone in the end. Ends with 1 when an outcome is not the
# expected one. Needs the built programs, and no display.
set -euo pipefail
conditions=$(realpath -- "$1") folder=$(realpath --canonicalize-missing -- "$2")
cd -- "$(dirname "${BASH_SOURCE[0]}")/../.." >/dev/null
model=$VELLUMKIT_PREFIX

each_machine() { # AT_ONCE COMMAND ARGUMENT...
    local at_once=$1
    xargs --max-procs "$at_once" --max-lines=1 lab/fleet/machine.sh "${@:2}"
}

switch_off() {
    echo "Switching them off"
    cut -d ' ' -f 1 "$folder/machines.txt" | each_machine 20 switch-off
    lab/machine.sh stop
}

# Ansible keeps nothing outside the folder.
roll_out() {
    local result=0
    env LC_ALL=C.UTF-8 PYTHONDONTWRITEBYTECODE=1 ANSIBLE_CONFIG=lab/fleet/ansible.cfg ANSIBLE_HOME="$folder/ansible" \
        ANSIBLE_LOCAL_TEMP="$folder/ansible" ANSIBLE_REMOTE_TMP="$folder/ansible" \
        ansible-playbook --inventory "$folder/inventory.json" deploy/install.yml || result=$?
    [[ $result =~ ^[024]$ ]] || exit "$result" # 2: some have failed; 4: some were not reached
}

rm -rf "$folder"
mkdir -p "$folder"
python3 lab/fleet/inventory.py "$conditions" "$model" "$folder"
echo "Switching $(wc -l <"$folder/machines.txt") machines on"
lab/machine.sh wine regedit /S lab/fleet/machine.reg >/dev/null 2>&1
lab/machine.sh stop
trap switch_off EXIT
sed "s/ / $model /" "$folder/machines.txt" | each_machine 4 switch-on
roll_out
(cd "$folder" && "$OLDPWD/lab/machine.sh" wine "$OLDPWD/out/release/VellumkitLog.exe" /csv 'collected\install' \
    >logs.csv 2>reader.txt) || true # some logs tell of a failure
python3 lab/fleet/report.py "$conditions" "$model" "$folder"
