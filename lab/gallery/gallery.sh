#!/usr/bin/env bash
# Pictures of every screen in every language: out/gallery/<DPI>/<language>-<screen>.png, and all of a resolution on one
# contact sheet, out/gallery/<DPI>-dpi.png. Runs on a display: lab/machine.sh display lab/gallery/gallery.sh
set -euo pipefail
cd -- "$(dirname "${BASH_SOURCE[0]}")/../.." >/dev/null

gallery=out/gallery
languages=(en zh-CN zh-TW cs nl fr de it nb pl pt-BR ru sk es tr mk)
screens=(checking installing failed-read-resource failed-temporary-file completed)

take_pictures() { # DPI FONT LANGUAGE...
    local folder=$gallery/$1
    mkdir -p "$folder"
    export VELLUMKIT_DPI=$1 VELLUMKIT_FONT=$2 VELLUMKIT_PREFIX=gallery-$1-${2##* }
    lab/machine.sh wine out/release/lab/gallery.exe "$(lab/machine.sh wine winepath -w "$folder" | tr -d '\r')" "${@:3}"
    lab/machine.sh stop # its desktop would lie under the next one
}

make_contact_sheet() { # DPI
    local language screen tiles=()
    for language in "${languages[@]}"; do
        for screen in "${screens[@]}"; do
            tiles+=("$gallery/$1/$language-$screen.png")
        done
    done
    montage -label '%t' "${tiles[@]}" -tile "${#screens[@]}x" -geometry +6+6 -background '#d8d8d8' -depth 8 "$gallery/$1-dpi.png"
}

rm -rf "$gallery"
for dpi in 96 144 192; do
    take_pictures "$dpi" "Open Sans" en cs nl fr de it nb pl pt-BR ru sk es tr mk
    take_pictures "$dpi" "Noto Sans CJK SC" zh-CN
    take_pictures "$dpi" "Noto Sans CJK TC" zh-TW
    make_contact_sheet "$dpi"
    echo "$gallery/$dpi-dpi.png"
done
