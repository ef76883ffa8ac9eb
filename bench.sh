#!/usr/bin/env bash
# Measures the installer against one that NSIS makes: see docs/benchmarks.md.
set -euo pipefail
cd "$(dirname "$0")"

usage() {
    cat <<TEXT
Usage: ./bench.sh [--pairs N] [GROUP...]

Installs what is missing, builds, makes an installer with NSIS that does the same, and measures both: pair by pair, in
one Wine prefix, on a virtual display. Leave the machine alone meanwhile. Results: out/bench/results.md, results.tsv
(every number) and ratios.svg.

Without a group it measures all of them, which takes about a quarter of an hour. With fifteen pairs at least it also
writes table and chart into docs/benchmarks.md and docs/pictures/ then. Payloads of up to 256 MB take 1.8 GB in
out/bench/, and a build of their own.

  --pairs N  how often each of the two is measured (default: 15; 3 to try a change)
  --help     this text

Groups: ${groups[*]}
TEXT
}

misuse() {
    usage >&2
    echo "bench.sh: $*" >&2
    exit 2
}

mapfile -t groups < <(sed -n 's/.*Measure("\([a-z]*\)".*/\1/p' bench/rows.py | uniq)
pairs=15
picked=()
while [ $# -gt 0 ]; do
    case $1 in
    --pairs)
        [[ ${2:-} =~ ^[1-9][0-9]{0,2}$ ]] || misuse "--pairs takes a number from 1 to 999"
        pairs=$2
        shift 2
        ;;
    --help) usage; exit ;;
    *)
        [[ $1 != *' '* && " ${groups[*]} " = *" $1 "* ]] || misuse "unknown group '$1'"
        picked+=("$1")
        shift
        ;;
    esac
done

folder=$PWD/out/bench
document=()
sizes=()
[ ${#picked[@]} != 0 ] || [ "$pairs" -lt 15 ] || document=(docs/benchmarks.md docs/pictures/benchmarks.svg)
[ ${#picked[@]} != 0 ] || picked=("${groups[@]}")
[[ " ${picked[*]} " != *" payload "* && " ${picked[*]} " != *" extraction "* ]] || sizes=(1 16 64 256)

lab/machine.sh packages bench
lab/machine.sh build VellumkitInstaller elevated-installer office workloads window-times
python3 bench/make.py "$folder" out/release/lab/elevated-installer.exe "${sizes[@]}"
for size in "${sizes[@]}"; do
    cmake --preset release -B "$folder/product" -DVELLUMKIT_ELEVATED_INSTALLER="$folder/payload-$size.exe" >/dev/null
    cmake --build "$folder/product" --target VellumkitInstaller
    cp "$folder/product/VellumkitInstaller.x64.exe" "$folder/installer-$size.exe"
done
VELLUMKIT_PREFIX=bench lab/machine.sh display \
    lab/machine.sh linux python3 bench/measure.py "$folder" "$folder/peer.exe" "$pairs" "${picked[@]}"
python3 bench/report.py "$folder" "${document[@]}"
