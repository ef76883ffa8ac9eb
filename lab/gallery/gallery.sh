#!/usr/bin/env bash
# Pictures of every screen in every language, FOLDER/<DPI>/<language>-<screen>.png, and all of a resolution on a contact
# sheet, FOLDER/<DPI>-dpi.png, above 192 DPI those in English. At the first resolution also each button with the focus, as
# who uses the keyboard sees it: FOLDER/keyboard/en-<button>.png, and the same in a high-contrast theme and with the
# largest text of Windows: FOLDER/high-contrast, FOLDER/largest-text. The folder is emptied first.
#
#   lab/gallery/gallery.sh FOLDER DPI...    the resolutions in ascending order
#
# Needs a display and the built gallery.exe.
set -euo pipefail
cd -- "$(dirname "${BASH_SOURCE[0]}")/../.." >/dev/null
. lab/languages.sh

folder=$1
screens=(checking installing failed-read-resource failed-temporary-file completed)

languages_with() { # FONT
    local language
    for language in "${languages[@]}"; do
        [ "$(font_of "$language")" != "$1" ] || echo "$language"
    done
}

in_windows() { # FOLDER
    lab/machine.sh wine winepath -w "$1" | tr -d '\r'
}

take_pictures() { # DPI FONT
    local windows_folder picked
    export VELLUMKIT_DPI=$1 VELLUMKIT_FONT=$2
    mapfile -t picked < <(languages_with "$2")
    [ "${#picked[@]}" != 0 ] || return 0
    windows_folder=$(in_windows "$folder/$1")
    lab/machine.sh wine out/release/lab/gallery.exe "$windows_folder" "${picked[@]}"
}

take_keyboard_pictures() { # NAME DPI APPEARANCE
    local windows_folder
    export VELLUMKIT_DPI=$2 VELLUMKIT_FONT="Open Sans" VELLUMKIT_APPEARANCE=$3
    mkdir -p "$folder/$1"
    windows_folder=$(in_windows "$folder/$1")
    lab/machine.sh wine out/release/lab/gallery.exe /keyboard "$windows_folder" en
    echo "$folder/$1/"
}

make_contact_sheet() { # DPI
    local language screen shown=("${languages[@]}") tiles=()
    [ "$1" -le 192 ] || shown=(en) # ImageMagick's limits forbid a larger one
    for language in "${shown[@]}"; do
        for screen in "${screens[@]}"; do
            tiles+=("$folder/$1/$language-$screen.png")
        done
    done
    montage -label '%t' "${tiles[@]}" -tile "${#screens[@]}x" -geometry +6+6 -background '#d8d8d8' -depth 8 \
        "$folder/$1-dpi.png"
}

rm -rf "$folder"
for name in high-contrast largest-text; do
    take_keyboard_pictures "$name" "$2" "lab/gallery/$name.reg"
done
take_keyboard_pictures keyboard "$2" ""
for dpi in "${@:2}"; do
    mkdir -p "$folder/$dpi"
    for font in "Open Sans" "Noto Sans CJK SC" "Noto Sans CJK TC"; do
        take_pictures "$dpi" "$font"
    done
    make_contact_sheet "$dpi"
    echo "$folder/$dpi-dpi.png"
done
