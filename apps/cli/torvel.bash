# Completion for bash. It asks the tool itself, so that it knows every command and option there is.
_torvel() {
    local tool=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} words=
    if ((COMP_CWORD == 1)); then
        words=$("$tool" --help 2>&1 | awk '/^  [a-z]/ {print $1}')
    elif [[ $word == -* ]]; then
        words=$("$tool" "${COMP_WORDS[1]}" --help 2>&1 | awk '/^  -/ {print $1}')
    else
        compopt -o default
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _torvel torvel
