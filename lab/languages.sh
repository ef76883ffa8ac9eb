# shellcheck shell=bash disable=SC2034 # to be sourced
# The languages of the window, in the lab.

languages=(en zh-CN zh-TW cs nl fr de it nb pl pt-BR ru sk es tr mk)

# The identifier by which Office names each.
declare -A office_languages=([en]=1033 [zh-CN]=2052 [zh-TW]=1028 [cs]=1029 [nl]=1043 [fr]=1036 [de]=1031 [it]=1040
    [nb]=1044 [pl]=1045 [pt-BR]=1046 [ru]=1049 [sk]=1051 [es]=3082 [tr]=1055 [mk]=1071)

# The font that stands in for Segoe UI.
font_of() { # LANGUAGE
    case $1 in
    zh-CN) echo "Noto Sans CJK SC" ;;
    zh-TW) echo "Noto Sans CJK TC" ;;
    *) echo "Open Sans" ;;
    esac
}
