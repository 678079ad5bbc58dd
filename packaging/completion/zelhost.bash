# Completion of zelhost's command line in bash. What there is to complete, zelhost itself says: its help knows the commands
# and their options, its command "scenario list" the scenarios, its command "names" the sensors.

# _zelhost_listed HEADING [COMMAND]: the words in the first column below that heading of the help.
_zelhost_listed() {
    "$_zelhost_program" help ${2:+"$2"} 2>/dev/null |
        awk -v heading="$1" '
            /^[^ ]/ { inside = $0 ~ "^" heading }
            inside && /^  [-a-z]/ { sub(/^.*,--/, "--", $1); print $1 }'
}

# The rows of a table, without its title.
_zelhost_rows() { "$_zelhost_program" "$@" 2>/dev/null | sed 1d; }

# Sets command, and asked: the options before the word that say which sensors there are.
_zelhost_read() {
    local i word
    command=
    asked=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $word in
            --chip | --scenario | --provider | --namespace)
                if ((i + 1 < COMP_CWORD)); then asked+=("$word" "${COMP_WORDS[i + 1]}"); fi
                ((++i))
                ;;
            -h | --help | -V | --version) ;;
            -*) ((++i)) ;;
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

_zelhost_files() {
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
}

_zelhost_arguments() {
    case $command in
        '' | help) _zelhost_offer < <(_zelhost_listed Commands) ;;
        get | modify | delete) _zelhost_offer < <(_zelhost_rows names "${asked[@]}") ;;
        names | instances) _zelhost_offer < <(printf '%s\n' TQS_NumericSensor TQS_SystemEventLog) ;;
        watch) _zelhost_offer < <(echo TQS_NumericSensor) ;;
        scenario)
            if [[ " ${COMP_WORDS[*]:0:COMP_CWORD} " == *" check "* ]]; then
                _zelhost_files
            else
                _zelhost_offer < <(printf '%s\n' list check)
            fi
            ;;
    esac
}

_zelhost() {
    local command asked _zelhost_program=${COMP_WORDS[0]/#\~/$HOME}
    COMPREPLY=()
    _zelhost_read
    case ${COMP_WORDS[COMP_CWORD - 1]} in
        --format) _zelhost_offer < <(printf '%s\n' table json mof) ;;
        --scenario)
            if [[ ${COMP_WORDS[COMP_CWORD]} == */* ]]; then
                _zelhost_files
            else
                _zelhost_offer < <(_zelhost_rows scenario list | awk '{ print $1 }')
            fi
            ;;
        --chip)
            _zelhost_files
            _zelhost_offer < <(printf '%s\n' system simulated)
            ;;
        --provider | --schema | --provider-output | --to | --password-file | --ca) _zelhost_files ;;
        --class) _zelhost_offer < <(printf '%s\n' TQS_NumericSensor TQS_SystemEventLog) ;;
        --provider-name | --namespace | --language | --interval | --count | --every | --last | --since | --match | \
            --server | --user | --timeout) ;;
        *)
            case ${COMP_WORDS[COMP_CWORD]} in
                -*) _zelhost_offer < <(_zelhost_listed Options "$command") ;;
                *) _zelhost_arguments ;;
            esac
            ;;
    esac
}

complete -F _zelhost zelhost
