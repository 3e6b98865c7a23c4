# bash completion for callrecordingctl

_callrecordingctl() {
    local words=() word line candidates=() width=0
    # Bash has split --type=sip and a:b into several words.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        if [[ ${#words[@]} -gt 0 && ($word == [=:] || ${words[-1]} == *[=:]) ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
    done
    local current=${words[-1]:-}
    mapfile -t candidates < <("${COMP_WORDS[0]}" __complete "${words[@]}" 2>/dev/null)
    case ${candidates[0]:-} in
        :files) compopt -o default && return ;;
        :directories) compopt -o dirnames && return ;;
    esac
    compopt -o nosort 2>/dev/null
    [[ $current == --*= || ${candidates[0]:-} == --*=* ]] && current=${current#*=}
    for line in "${candidates[@]}"; do
        word=${line%%$'\t'*}
        ((${#word} > width)) && width=${#word}
    done
    COMPREPLY=()
    for line in "${candidates[@]}"; do
        word=${line%%$'\t'*}
        [[ $word == --*=* ]] && word=${word#*=}
        if ((${#candidates[@]} > 1)); then # Bash shows several candidates, and inserts none of the text.
            printf -v word '%-*s  (%s)' "$width" "$word" "${line#*$'\t'}"
        fi
        COMPREPLY+=("$word")
    done
}
complete -F _callrecordingctl callrecordingctl
