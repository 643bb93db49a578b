# Completion for kef: words of the command itself, then files.
_kef() {
    local current=${COMP_WORDS[COMP_CWORD]} words
    if [ "$COMP_CWORD" = 1 ]; then
        words="$(kef --words 2>/dev/null) --help --version"
    else
        words="$(kef --words "${COMP_WORDS[1]}" 2>/dev/null) --help"
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    if [ "$COMP_CWORD" -gt 1 ] && [[ $current != -* ]]; then
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -o filenames -F _kef kef
