# Completion of zelhost's command line in bash. What there is to complete, zelhost itself says: its help knows the
# commands and their options, its command "scenario list" the scenarios, its command "names" the sensors.

# _zelhost_listed HEADING [COMMAND]: the words in the first column below that heading of the help.
_zelhost_listed() {
    "$_zelhost_program" help ${2:+"$2"} 2>/dev/null |
        awk -v heading="$1" '
            /^[^ ]/ { inside = $0 ~ "^" heading }
            inside && /^  [-a-z]/ { sub(/^.*,--/, "--", $1); print $1 }'
}

# The options without a value.
_zelhost_flags() {
    "$_zelhost_program" help 2>/dev/null |
        awk '/^  -/ { sub(/^  /, ""); sub(/  .*/, ""); if (!/ /) { gsub(/,/, "\n"); print } }'
}

# The rows of a table, without its title.
_zelhost_rows() { "$_zelhost_program" "$@" 2>/dev/null | sed 1d; }

# Sets command, and asked: the options before the word that say which sensors there are. bash parts words at "=" and
# ":".
_zelhost_read() {
    local i word
    command=
    asked=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $word in
            = | :) ((++i)) ;;
            -*)
                if [[ $'\n'$flags$'\n' == *$'\n'"$word"$'\n'* ]]; then continue; fi
                if [[ ${COMP_WORDS[i + 1]-} == = ]]; then ((++i)); fi
                if ((++i < COMP_CWORD)); then
                    case $word in
                        --chip | --scenario | --provider | --namespace | --server | --servers)
                            asked+=("$word" "${COMP_WORDS[i]}")
                            ;;
                    esac
                fi
                ;;
            *) if [[ -z $command ]]; then command=$word; fi ;;
        esac
    done
}

# The candidates that begin with what is typed; readline quotes them as file names.
_zelhost_offer() {
    local each typed=${COMP_WORDS[COMP_CWORD]}
    typed=${typed//\\/}
    typed=${typed#[\"\']}
    compopt -o filenames
    while IFS= read -r each; do
        if [[ -n $each && $each != *\\* && $each == "$typed"* ]]; then COMPREPLY+=("$each"); fi
    done
}

_zelhost_words() { _zelhost_offer < <(printf '%s\n' "$@"); }

# Nobody is asked over the network because of a key.
_zelhost_sensors() {
    if [[ " ${asked[*]} " != *" --server"* ]]; then _zelhost_offer < <(_zelhost_rows names "${asked[@]}"); fi
}

_zelhost_files() {
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
}

_zelhost_arguments() {
    case $command in
        '' | help) _zelhost_offer < <(_zelhost_listed Commands) ;;
        sensors | get | modify | delete) _zelhost_sensors ;;
        record | diff) _zelhost_files ;;
        names | instances) _zelhost_words TQS_NumericSensor TQS_SystemEventLog ;;
        scenario)
            if [[ " ${COMP_WORDS[*]:0:COMP_CWORD} " == *" check "* ]]; then
                _zelhost_files
            else
                _zelhost_words list check
            fi
            ;;
    esac
}

_zelhost_scenarios() {
    if [[ ${COMP_WORDS[COMP_CWORD]} == */* ]]; then
        _zelhost_files
    else
        _zelhost_offer < <(_zelhost_rows scenario list | awk '{ print $1 }')
    fi
}

# _zelhost_value OPTION: what it may be; nothing for a number, a time or a text.
_zelhost_value() {
    case $1 in
        --format) _zelhost_words table json csv mof ;;
        --scenario) _zelhost_scenarios ;;
        --chip)
            _zelhost_files
            _zelhost_words system simulated linux
            ;;
        --provider | --schema | --provider-output | --to | --state | --servers | --password-file | --ca) _zelhost_files ;;
        --class) _zelhost_words TQS_NumericSensor TQS_SystemEventLog ;;
        --ignore) _zelhost_sensors ;;
        --type)
            _zelhost_words air-flow counter current fan humidity intrusion lock other power power-production presence \
                pressure smoke switch temperature unknown voltage
            ;;
        --sort) _zelhost_words severity ;;
        --color) _zelhost_words auto always never ;;
        --warn-on) _zelhost_words critical no-reading ;;
    esac
}

_zelhost() {
    local command asked flags before=${COMP_WORDS[COMP_CWORD - 1]} _zelhost_program=${COMP_WORDS[0]/#\~/$HOME}
    COMPREPLY=()
    flags=$(_zelhost_flags)
    _zelhost_read
    if [[ $before == -* && $'\n'$flags$'\n' != *$'\n'"$before"$'\n'* ]]; then
        _zelhost_value "$before"
    elif [[ ${COMP_WORDS[COMP_CWORD]} == -* ]]; then
        _zelhost_offer < <(_zelhost_listed Options "$command")
    else
        _zelhost_arguments
    fi
}

complete -F _zelhost zelhost
