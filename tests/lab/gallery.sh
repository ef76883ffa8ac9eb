#!/usr/bin/env bash
# On a display of 120 DPI: makes the gallery, and looks at what the focus, a high-contrast theme and the largest text
# change in the window.
#
#   tests/lab/gallery.sh FOLDER
set -euo pipefail
folder=$1
"$(dirname "$0")/../../lab/gallery/gallery.sh" "$folder" 120

# In the client area, worked out by hand.
painted=500x209+0+0 # all above the buttons
start_onenote=150x33+169+209
close=150x33+325+209

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

# Beside and below the client area of 500 by 250 pixels is a frame of the same thickness.
client_part() { # FILE AREA FORMAT
    local width
    width=$(identify -format '%w' "$folder/$1")
    convert "$folder/$1" -gravity south -chop "0x$(((width - 500) / 2))" -gravity south -crop 500x250+0+0 +repage \
        -gravity northwest -crop "$2" +repage -alpha off -format "$3" info:
}

pixels() { # FILE AREA
    client_part "$1" "$2" '%#'
}

expect_same() { # FILE FILE AREA
    [ "$(pixels "$1" "$3")" = "$(pixels "$2" "$3")" ] || fail "$1 and $2 differ in $3"
}

expect_other() { # FILE FILE AREA
    [ "$(pixels "$1" "$3")" != "$(pixels "$2" "$3")" ] || fail "$1 and $2 are the same in $3"
}

expect_colour() { # FILE X Y COLOUR
    local colour
    colour=$(client_part "$1" "1x1+$2+$3" '%[hex:p{0,0}]')
    [ "$colour" = "$4" ] || fail "$1 has $colour at $2, $3, not $4"
}

expect_other keyboard/en-close.png keyboard/en-start-onenote.png "$close"
expect_other keyboard/en-close.png keyboard/en-start-onenote.png "$start_onenote"
expect_same keyboard/en-close.png keyboard/en-start-onenote.png "$painted"

expect_colour high-contrast/en-close.png 345 216 000000 # beside the caption of Close
expect_colour high-contrast/en-close.png 490 10 FFFFFF
expect_colour high-contrast/en-close.png 10 240 F0F0F0
for picture in en-close en-retry; do
    expect_same {keyboard,high-contrast}/$picture.png "$painted"
    expect_same {keyboard,largest-text}/$picture.png 500x250+0+0
done
expect_other {keyboard,high-contrast}/en-close.png "$close"

mapfile -t heights < <(identify -format '%h\n' "$folder"/{keyboard,largest-text}/en-close.png)
[ "${heights[0]}" -lt "${heights[1]}" ] || fail "the title has not grown: ${heights[*]} pixels"
