#!/usr/bin/env bash
# Lets every call that the installer makes fail once, each in a run of its own, and writes what came of it into
# docs/faults.md.
set -euo pipefail
cd -- "$(dirname "${BASH_SOURCE[0]}")/.." >/dev/null

usage() {
    cat <<TEXT
Usage: ./prove.sh faults [MACHINES | --help]

Runs the release on that many machines beside each other (default: 4) until every call of the plan has failed once,
which takes less than an hour on two cores. After an interruption, the same command goes on where it stopped; another
executable or judgement begins anew. Plan and results are in out/proof/faults/, the table is written into docs/faults.md. Fails when
a run shows what no run may show.
TEXT
}

case ${1:-4} in
--help) usage; exit ;;
[1-9] | [1-9][0-9]) machines=${1:-4} ;;
*) usage >&2; exit 2 ;;
esac

release=out/release
launcher=$release/proof/fault-launcher.exe

on_machine() { # NUMBER ARGUMENT...
    VELLUMKIT_PREFIX=faults$1 lab/machine.sh display lab/machine.sh wine "$launcher" "${@:2}"
}

lab/machine.sh build fault-launcher
# What came of a call depends on these.
version=$(cat $release/VellumkitInstaller.x64.exe $release/proof/fault.dll $release/lab/*.{exe,dll} \
    proof/faults/{Launcher,Outcome,ScenarioMachine,Session}.cpp | sha256sum | cut -c 1-16)
folder=out/proof/faults/$version
mkdir -p "$folder/results"
if [ ! -e "$folder/plan" ]; then
    on_machine 0 survey "$folder/plan.new"
    mv "$folder/plan.new" "$folder/plan"
fi
total=$(wc -l <"$folder/plan")

count_results() {
    find "$folder/results" -type f -exec cat {} + | sed -n '/\t[.]$/p' | cut -f 1-4 | sort -u | wc -l
}

stop_machines() {
    local machine
    for ((machine = 0; machine < machines; machine++)); do
        VELLUMKIT_PREFIX=faults$machine lab/machine.sh stop
    done
    wait
}

running=()
trap stop_machines EXIT
for ((machine = 0; machine < machines; machine++)); do
    on_machine "$machine" run "$folder/plan" "$folder/results" "$machine" "$machines" >"$folder/$machine.log" 2>&1 &
    running+=($!)
done

start=$SECONDS
before=$(count_results)
while [ -n "$(jobs -r)" ]; do
    sleep 5
    done=$(count_results)
    rate=$(((done - before) * 60 / (SECONDS - start)))
    left=$((rate > 0 ? (total - done) / rate : 0))
    printf '\r%d of %d calls have failed, %d a minute, %d minutes left  ' "$done" "$total" "$rate" "$left"
done
echo
failed=0
for process in "${running[@]}"; do
    wait "$process" || failed=1
done
if [ $failed != 0 ] || [ "$(count_results)" != "$total" ]; then
    tail -n 3 "$folder"/*.log >&2
    exit 1
fi
on_machine 0 document "$folder/results" docs/faults.md
