# Completion of fins_panel, fins_hmi and fins_plc: the sub-commands, options and values of options that their own help
# texts list, the names of the project that the command line names, and file names.

# The labels of the options and sub-commands that the help text of a command lists, such as '--project FILE'.
_fins_labels()
{
    "$@" --help 2>/dev/null | sed -n '/^\(Options\|Subcommands\):/,/^$/{ /^  [a-z-]/{ s/^  //; s/  .*//; p } }'
}

_fins_words()
{
    _fins_labels "$@" | sed 's/[] [{=].*//' | tr ',' '\n'
}

# What stands behind option $1 in the help text of the command behind it, or of the program: FILE, {low,high}, or
# [={hex,line}] if it may be left out; nothing for a flag.
_fins_argument()
{
    local option=$1 argument='' label names
    shift
    while IFS= read -r label; do
        names=${label%%[[ =]*}
        [[ ,$names, == *,$option,* ]] || continue
        label=${label#"$names"}
        label=${label# }
        label=${label%% *}
        [[ -n $argument || $label == *: ]] || argument=$label
    done < <(_fins_labels "$@"; _fins_labels "$1")
    echo "$argument"
}

# Offers those lines of the standard input that begin with $1, with $2 behind each. No line is ever evaluated.
_fins_offer()
{
    local line
    while IFS= read -r line; do
        [[ -n $line && $line == "$1"* ]] && COMPREPLY+=("$line${2-}")
    done
}

# Offers the names of the project $2, of the kind $1: tags, recipes or groups.
_fins_offer_names()
{
    [[ -n $2 ]] && _fins_offer "$3" "${4-}" < <("${COMP_WORDS[0]}" complete "$1" --project "$2" 2>/dev/null)
    [[ -n ${4-} ]] && compopt -o nospace +o filenames 2>/dev/null # else '=' would be quoted
    return 0
}

_fins_offer_files() { _fins_offer "$1" < <(compgen -f -- "$1"); }

# Offers values for an option with the argument $1.
_fins_offer_values()
{
    case $1 in
        *\{*\}*)
            local choices=${1#*\{}
            _fins_offer "$3" < <(tr ',' '\n' <<<"${choices%%\}*}") ;;
        ITEM=VALUE) _fins_offer_names tags "$2" "$3" = ;;
        GROUP) _fins_offer_names groups "$2" "$3" ;;
        FILE | TEXT*) _fins_offer_files "$3" ;;
        FOLDER) _fins_offer "$3" < <(compgen -d -- "$3") ;;
    esac
}

# Offers what may stand where no option and no value of one does.
_fins_offer_positionals()
{
    local project=$1 current=$2
    shift 2
    if [[ $current == -* ]]; then
        _fins_offer "$current" < <(_fins_words "$@")
        return
    fi
    local commands
    commands=$(_fins_words "$@" | grep -v '^-')
    _fins_offer "$current" <<<"$commands"
    [[ -z $commands ]] || return 0
    case ${*:2} in
        write) _fins_offer_names tags "$project" "$current" = ;;
        watch | read | log | wait | bench | check | publish) _fins_offer_names tags "$project" "$current" ;;
        recipe\ list | types | copies) ;;
        recipe\ *)
            _fins_offer_names recipes "$project" "$current"
            _fins_offer_files "$current" ;;
        *) _fins_offer_files "$current" ;;
    esac
}

# Bash takes '=' for a word of its own: --trace=line is three words.
_fins()
{
    local i value word argument project='' current=${COMP_WORDS[COMP_CWORD]} command=("${COMP_WORDS[0]}")
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ $word == -* ]]; then
            argument=$(_fins_argument "$word" "${command[@]}")
            value=$((i + 1))
            if [[ ${COMP_WORDS[value]} == = ]]; then
                ((++value))
            elif [[ -z $argument || $argument == \[* ]]; then
                continue
            fi
            if ((COMP_CWORD <= value)); then
                _fins_offer_values "$argument" "$project" "${current#=}"
                return
            fi
            [[ $word == --project || $word == -p ]] && project=${COMP_WORDS[value]/#\~/$HOME}
            i=$value
        elif _fins_words "${command[@]}" | grep -xF -e "$word" >/dev/null; then
            command+=("$word")
        fi
    done
    [[ $current != = && ${COMP_WORDS[COMP_CWORD - 1]} != = ]] || return 0 # the value of a write
    _fins_offer_positionals "$project" "$current" "${command[@]}"
}

complete -o filenames -F _fins fins_panel fins_hmi fins_plc
