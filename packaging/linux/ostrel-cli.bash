# Completion of ostrel-cli for bash. The options come from the program's own help.
_ostrel_cli() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} program=${COMP_WORDS[0]}
    local command=${COMP_WORDS[1]}
    COMPREPLY=()
    # "--format=b" comes as three words.
    if [ "$current" = "=" ]; then
        current=
    elif [ "$previous" = "=" ]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "devices record replay generate transmit convert show statistics --help --version" \
            -- "$current")
        return
    fi
    case $previous in
    -f | --format | --input-format | --record-format)
        mapfile -t COMPREPLY < <(compgen -W "candump asc csv blf trc pcapng" -- "$current")
        return
        ;;
    --times)
        mapfile -t COMPREPLY < <(compgen -W "absolute relative delta" -- "$current")
        return
        ;;
    --fd-standard)
        mapfile -t COMPREPLY < <(compgen -W "iso bosch" -- "$current")
        return
        ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$("$program" "$command" --help 2>/dev/null |
            grep -oE '^ +-[^<]*' | grep -oE -- '--?[a-z0-9-]+')" -- "$current")
        return
    fi
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
}
complete -F _ostrel_cli ostrel-cli
