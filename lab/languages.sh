# shellcheck shell=bash disable=SC2034 # to be sourced
# The languages of the window, in the lab.

languages=()
declare -A office_languages # the identifier by which Office names each
while read -r code _ lcid _; do
    languages+=("$code")
    office_languages[$code]=$lcid
done < <(grep '^[^#]' "$(dirname "${BASH_SOURCE[0]}")/../core/languages/languages.txt")

# The font that stands in for Segoe UI.
font_of() { # LANGUAGE
    case $1 in
    zh-CN) echo "Noto Sans CJK SC" ;;
    zh-TW) echo "Noto Sans CJK TC" ;;
    *) echo "Open Sans" ;;
    esac
}
