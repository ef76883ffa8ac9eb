#!/usr/bin/env bash
# Renders logo.svg to logo.png, which the window shows, and vellumkit.ico, both in this folder.
#
#   resources/render-artwork.sh        renders them
#   resources/render-artwork.sh check  fails when one of them does not look as logo.svg would be rendered now
set -euo pipefail
cd -- "$(dirname "${BASH_SOURCE[0]}")" >/dev/null

icon_sizes=(16 20 24 32 40 48 64 256)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

render() { # FOLDER
    local size frames=()
    for size in "${icon_sizes[@]}"; do
        # Without the background that the renderer notes: what reads such a note takes longer than the picture.
        rsvg-convert --width "$size" --height "$size" logo.svg |
            convert png:- -define png:exclude-chunks=all -define png:color-type=6 "$work/$size.png"
        frames+=("$work/$size.png")
    done
    # The larger ones stay PNGs inside the icon, a tenth of their size.
    local large=("${frames[@]:4}")
    icotool --create --output "$1/vellumkit.ico" "${frames[@]:0:4}" "${large[@]/#/--raw=}"
    cp "$work/64.png" "$1/logo.png"
}

# Another version of the renderer may round a pixel at an edge in another way. The rendered file comes first: without
# transparency in the first one, compare looks at none.
looks_like() { # FILE RENDERED_FILE
    local different
    different=$(compare -metric AE -fuzz 2% "$2" "$1" null: 2>&1) || true
    [ "$different" = 0 ] || { echo "$1 is not what logo.svg renders to ($different pixels)" >&2; return 1; }
}

check() {
    local size frame=0 sizes
    mkdir "$work/now"
    render "$work/now"
    sizes=$(identify -format '%w ' vellumkit.ico)
    [ "$sizes" = "${icon_sizes[*]} " ] || { echo "vellumkit.ico has the sizes $sizes" >&2; return 1; }
    looks_like logo.png "$work/now/logo.png"
    for size in "${icon_sizes[@]}"; do
        looks_like "vellumkit.ico[$frame]" "$work/$size.png"
        frame=$((frame + 1))
    done
}

case ${1:-} in
"") render . ;;
check) check ;;
*) echo "usage: $0 [check]" >&2; exit 2 ;;
esac
