# bash completion for lumora: options, commands, and the displays the running agent wrote into
# its status file.

# The status file of this user's agent, if there is one.
_lumora_status_file() {
    local file="${XDG_STATE_HOME:-$HOME/.local/state}/lumora/status.json"
    [[ -r $file ]] || file="$HOME/Library/Application Support/Lumora/status.json"
    [[ -r $file ]] && printf '%s\n' "$file"
}

# One display word a line: what every agent understands, then the ids and names it wrote last.
# The file is pretty-printed, one key a line, so no JSON parser is needed.
_lumora_displays() {
    printf '%s\n' main builtin cursor
    local file
    file=$(_lumora_status_file) || return 0
    sed -n -e 's/^ *"id": \([0-9][0-9]*\),\{0,1\}$/\1/p' \
        -e 's/^ *"name": "\(.*\)",\{0,1\}$/\1/p' "$file" |
        sed -e 's/\\"/"/g' -e 's/\\\\/\\/g'
}

# Offers the candidates (one a line on standard input) that start with the current word,
# quoted for the shell.
_lumora_offer() {
    local candidate quoted
    while IFS= read -r candidate; do
        printf -v quoted '%q' "$candidate"
        [[ $quoted == "$1"* ]] && COMPREPLY+=("$quoted")
    done
}

_lumora() {
    local cur=${COMP_WORDS[COMP_CWORD]}
    local prev=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()

    # A file after --simulate=, --sim-state= and --render-panel=. bash usually splits the word
    # at the "=" (COMP_WORDBREAKS), so the option may be a word of its own.
    local option="" prefix="" file=$cur
    if [[ $cur == "=" ]]; then
        option=$prev file=""
    elif [[ $prev == "=" ]]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    elif [[ $cur == --*=* ]]; then
        option=${cur%%=*} prefix="${cur%%=*}=" file=${cur#*=}
    fi
    case $option in
        --simulate | --sim-state | --render-panel)
            local name
            while IFS= read -r name; do
                COMPREPLY+=("$prefix$name")
            done < <(compgen -f -- "$file")
            return 0
            ;;
    esac

    if [[ $cur == -* ]]; then
        _lumora_offer "$cur" < <(printf '%s\n' --simulate --simulate= --sim-state= --headless \
            --preview --render-panel= --list --json --print-status --help --version)
        [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace 2>/dev/null
        return 0
    fi

    # The command and the words after it; options and their files are left out.
    local words=() i
    for ((i = 1; i < COMP_CWORD; i++)); do
        local word=${COMP_WORDS[i]}
        if [[ $word == "=" ]]; then
            ((i++))
        elif [[ $word != -* ]]; then
            words+=("$word")
        fi
    done

    if [[ ${#words[@]} -eq 0 ]]; then
        _lumora_offer "$cur" < <(printf '%s\n' hidpi brightness brightness-up brightness-down \
            connect disconnect main mode dim ddc sleep-displays virtual status panel adaptive)
        return 0
    fi

    local place=${#words[@]}
    case ${words[0]}:$place in
        hidpi:1 | brightness:1 | brightness-up:1 | brightness-down:1 | connect:1 | \
            disconnect:1 | main:1 | mode:1 | dim:1 | ddc:1)
            _lumora_offer "$cur" < <(_lumora_displays)
            ;;
        hidpi:2 | connect:2 | panel:1)
            _lumora_offer "$cur" < <(printf '%s\n' on off)
            ;;
        ddc:2)
            # brightness, contrast, input, volume, mute, power
            _lumora_offer "$cur" < <(printf '%s\n' 0x10 0x12 0x60 0x62 0x8d 0xd6)
            ;;
        mode:3 | virtual:3)
            _lumora_offer "$cur" < <(printf '%s\n' hidpi lodpi)
            ;;
        adaptive:1)
            _lumora_offer "$cur" < <(printf '%s\n' off sync sensor schedule)
            ;;
    esac
    return 0
}

complete -F _lumora lumora
