# Completion of fins_panel and fins_plc: the sub-commands and options that their own help texts list, and file names.

_fins_words()
{
    "$@" --help 2>/dev/null | sed -n '/^\(Options\|Subcommands\):/,/^$/s/^  \([a-z-][a-z,-]*\).*/\1/p' | tr ',' '\n'
}

_fins()
{
    local current=${COMP_WORDS[COMP_CWORD]} command=("${COMP_WORDS[0]}") words word
    # Leading words that the help text of what stands before them lists are sub-commands.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        _fins_words "${command[@]}" | grep -qxF -e "$word" || break
        [[ $word == -* ]] || command+=("$word")
    done
    words=$(_fins_words "${command[@]}")
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current"; compgen -f -- "$current")
}

complete -o filenames -F _fins fins_panel fins_plc
